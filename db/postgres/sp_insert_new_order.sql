-- SPDX-License-Identifier: MIT
-- sp_insert_new_order: writes one new client order into OMSTrade_File and
-- returns its order number and creation time. The desk calls it with named
-- arguments and sends only what the order sets, so every parameter has a
-- default; an argument left out takes the value below.
--
-- Numbering: an order that comes with a number (m_order_no not empty) keeps
-- it; otherwise it gets the next value of oms_order_no_seq as eight digits
-- ("00000042"), stepping over numbers that are already in the table. A
-- number that is already taken, a missing account or symbol, or a quantity
-- that is not above zero makes the insert fail: the error reaches the
-- caller and, the function being one statement, nothing of the order stays.
--
-- m_createtime is the server's clock when the order is written, which is
-- also its DateTime_Created and DateTime_Modified.
CREATE OR REPLACE FUNCTION sp_insert_new_order(
    m_account         TEXT DEFAULT NULL,
    m_symbol          TEXT DEFAULT NULL,
    m_order_type      INTEGER DEFAULT 0,
    m_quantity        INTEGER DEFAULT NULL,
    m_limit_price     DOUBLE PRECISION DEFAULT 0,
    m_user_no         TEXT DEFAULT NULL,
    m_status          TEXT DEFAULT 'Pend',
    m_operatorflag    TEXT DEFAULT 'C',
    m_filled          INTEGER DEFAULT 0,
    INOUT m_order_no  TEXT DEFAULT NULL,
    m_open_close      INTEGER DEFAULT 0,
    m_short_sell      INTEGER DEFAULT 0,
    m_instruction     INTEGER DEFAULT 0,
    m_price1          DOUBLE PRECISION DEFAULT 0,
    m_price2          DOUBLE PRECISION DEFAULT 0,
    m_hedge           INTEGER DEFAULT 0,
    m_origin          INTEGER DEFAULT 0,
    m_working         DOUBLE PRECISION DEFAULT 0,
    m_netproceed      DOUBLE PRECISION DEFAULT 0,
    m_creditChange    DOUBLE PRECISION DEFAULT 0,
    m_reference       TEXT DEFAULT NULL,
    m_exchange        TEXT DEFAULT NULL,
    m_original_no     TEXT DEFAULT NULL,
    m_basket_id       TEXT DEFAULT NULL,
    m_wave_id         TEXT DEFAULT NULL,
    m_system_ref      TEXT DEFAULT NULL,
    OUT m_createtime  TIMESTAMP(3))
LANGUAGE plpgsql
AS $$
BEGIN
    m_createtime := clock_timestamp()::TIMESTAMP(3);
    IF m_order_no IS NULL OR m_order_no = '' THEN
        LOOP
            m_order_no := nextval('oms_order_no_seq')::TEXT;
            IF length(m_order_no) < 8 THEN
                m_order_no := lpad(m_order_no, 8, '0');
            END IF;
            EXIT WHEN NOT EXISTS (SELECT 1 FROM OMSTrade_File WHERE Order_No = m_order_no);
        END LOOP;
    END IF;
    INSERT INTO OMSTrade_File (
        Order_No, Account, Symbol, Order_Type, Quantity, Limit_Price, User_No, Status, operatorflag,
        Fill, Open_Close, short_sell, instruction, price1, price2, Hedge, Origin, working, netproceed,
        creditchange, reference, Exchange, Original_no, BasketID, WaveID, SystemRef,
        DateTime_Created, DateTime_Modified)
    VALUES (
        m_order_no, m_account, m_symbol, m_order_type, m_quantity, m_limit_price, m_user_no, m_status,
        m_operatorflag, m_filled, m_open_close, m_short_sell, m_instruction, m_price1, m_price2, m_hedge,
        m_origin, round(m_working)::INTEGER, m_netproceed, m_creditChange, m_reference, m_exchange,
        m_original_no, m_basket_id, m_wave_id, m_system_ref, m_createtime, m_createtime);
END;
$$;
