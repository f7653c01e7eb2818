-- SPDX-License-Identifier: MIT
-- The order database on PostgreSQL: client orders, exchange orders, trades,
-- order requests and futures request states as the blotters load them; the
-- users, entitlements and exchange destinations of the logon; the accounts
-- and their per-dealer shortcuts. Identifiers are unquoted, so they fold to
-- lower case and the loaders' mixed-case SQL finds them.
--
-- Safe to run again: it creates only what is missing and changes no row.
-- Everything goes into the first schema of the search path.
--
-- Constraints that refuse a bad order (a save then fails and writes nothing):
--   OMSTrade_File.Account   NOT NULL and not empty
--   OMSTrade_File.Symbol    NOT NULL and not empty
--   OMSTrade_File.Quantity  NOT NULL and > 0
--   OMSTrade_File.Order_No  unique (an order number given twice)

-- Client orders, one per order entered; numbered by sp_insert_new_order.
CREATE TABLE IF NOT EXISTS OMSTrade_File (
    Order_No          VARCHAR(32)  NOT NULL PRIMARY KEY,
    Account           VARCHAR(32)  NOT NULL CHECK (Account <> ''),
    Order_Type        INTEGER      NOT NULL DEFAULT 0,   -- 0 buy, 1 sell
    Symbol            VARCHAR(32)  NOT NULL CHECK (Symbol <> ''),
    Quantity          INTEGER      NOT NULL CHECK (Quantity > 0),
    Limit_Price       DOUBLE PRECISION NOT NULL DEFAULT 0,
    User_No           VARCHAR(32),
    Runner            VARCHAR(32),                      -- dealer who entered it for User_No
    Hedge             INTEGER      NOT NULL DEFAULT 0,
    Origin            INTEGER      NOT NULL DEFAULT 0,
    Open_Close        INTEGER,
    Fill              INTEGER,
    short_sell        INTEGER,
    instruction       INTEGER,
    instruction1      INTEGER,
    price1            DOUBLE PRECISION,
    price2            DOUBLE PRECISION,
    price4            DOUBLE PRECISION,
    operatorflag      VARCHAR(4),
    DateTime_Created  TIMESTAMP(3) NOT NULL DEFAULT LOCALTIMESTAMP(3),
    DateTime_Modified TIMESTAMP(3) NOT NULL DEFAULT LOCALTIMESTAMP(3),
    working           INTEGER      NOT NULL DEFAULT 0,
    creditchange      DOUBLE PRECISION NOT NULL DEFAULT 0,
    netproceed        DOUBLE PRECISION NOT NULL DEFAULT 0,
    reference         VARCHAR(64),
    Exchange          VARCHAR(8),
    Original_no       VARCHAR(32),
    BasketID          VARCHAR(32),
    WaveID            VARCHAR(32),
    SystemRef         VARCHAR(64),
    approvalChange    DOUBLE PRECISION,
    approvalApplied   DOUBLE PRECISION,
    approvalID        VARCHAR(32),
    rejectID          VARCHAR(32),
    Message           TEXT,
    currency          VARCHAR(3),
    held              DOUBLE PRECISION,
    reqStatus         INTEGER,
    CompSystemRef     TEXT,
    Status            VARCHAR(16),
    StatusFlags       INTEGER
);
CREATE INDEX IF NOT EXISTS OMSTrade_File_User_No ON OMSTrade_File (User_No);
CREATE INDEX IF NOT EXISTS OMSTrade_File_Runner ON OMSTrade_File (Runner);
CREATE INDEX IF NOT EXISTS OMSTrade_File_Exchange ON OMSTrade_File (Exchange, Order_No);

-- Exchange orders: what went to the exchange for a client order (one or
-- more: an amended or re-routed order has several). The client order's side
-- is read from OMSTrade_File through the join, so it is not repeated here.
CREATE TABLE IF NOT EXISTS Exch_File (
    Exch_No           VARCHAR(32)  NOT NULL PRIMARY KEY,
    Order_No          VARCHAR(32)  NOT NULL,
    Account           VARCHAR(32),
    Symbol            VARCHAR(32),
    Quantity          INTEGER      NOT NULL DEFAULT 0,
    Price             DOUBLE PRECISION NOT NULL DEFAULT 0,
    User_No           VARCHAR(32),
    Hedge             INTEGER      NOT NULL DEFAULT 0,
    Origin            INTEGER      NOT NULL DEFAULT 0,
    Shortsell         INTEGER,
    DateTime_Created  TIMESTAMP(3) NOT NULL DEFAULT LOCALTIMESTAMP(3),
    DateTime_Modified TIMESTAMP(3) NOT NULL DEFAULT LOCALTIMESTAMP(3),
    Exchange          VARCHAR(8),
    ExchangeDest      VARCHAR(16),
    Remark            TEXT,
    Status            VARCHAR(16)
);
CREATE INDEX IF NOT EXISTS Exch_File_Order ON Exch_File (Order_No, DateTime_Created);
CREATE INDEX IF NOT EXISTS Exch_File_User_No ON Exch_File (User_No);
CREATE INDEX IF NOT EXISTS Exch_File_Exchange ON Exch_File (Exchange);

-- Trades (executions), each on an exchange order. Trade_Type 0 is an
-- exchange trade; any other value a trade booked by hand (1 odd lot,
-- 2 manual, 3 pre-opening, 4 overseas).
CREATE TABLE IF NOT EXISTS Trans_File (
    Tran_No           VARCHAR(32)  NOT NULL PRIMARY KEY,
    Exch_No           VARCHAR(32)  NOT NULL,
    Account           VARCHAR(32),
    Symbol            VARCHAR(32),
    Quantity          INTEGER      NOT NULL CHECK (Quantity > 0),
    Trans_Price       DOUBLE PRECISION NOT NULL DEFAULT 0,
    User_No           VARCHAR(32),
    Order_Type        INTEGER      NOT NULL DEFAULT 0,
    Hedge             INTEGER      NOT NULL DEFAULT 0,
    Origin            INTEGER      NOT NULL DEFAULT 0,
    Shortsell         INTEGER,
    Trade_Type        INTEGER      NOT NULL DEFAULT 0,
    BrokerID          VARCHAR(16),
    DateTime_Created  TIMESTAMP(3) NOT NULL DEFAULT LOCALTIMESTAMP(3),
    Status            VARCHAR(16)
);
CREATE INDEX IF NOT EXISTS Trans_File_Created ON Trans_File (DateTime_Created);
CREATE INDEX IF NOT EXISTS Trans_File_Exch_No ON Trans_File (Exch_No);
CREATE INDEX IF NOT EXISTS Trans_File_User_No ON Trans_File (User_No);
CREATE INDEX IF NOT EXISTS Trans_File_Manual ON Trans_File (Exch_No, DateTime_Created) WHERE Trade_Type <> 0;

-- Order requests (new, amend, cancel) waiting on the dealing desk.
CREATE TABLE IF NOT EXISTS omsREQ (
    req_No            VARCHAR(32)  NOT NULL PRIMARY KEY,
    Order_No          VARCHAR(32),
    Account           VARCHAR(32),
    Order_Type        INTEGER,
    Symbol            VARCHAR(32),
    Quantity          INTEGER      NOT NULL DEFAULT 0,
    Limit_Price       DOUBLE PRECISION NOT NULL DEFAULT 0,
    User_No           VARCHAR(32),
    command           VARCHAR(16),
    lastuser          VARCHAR(32),
    DateTime_Created  TIMESTAMP(3) NOT NULL DEFAULT LOCALTIMESTAMP(3),
    DateTime_Modified TIMESTAMP(3) NOT NULL DEFAULT LOCALTIMESTAMP(3),
    instruction       INTEGER,
    instruction1      INTEGER,
    Exchange          VARCHAR(8),
    Message           TEXT,
    operatorflag      VARCHAR(4),
    SystemRef         VARCHAR(64),
    Short_sell        INTEGER
);
CREATE INDEX IF NOT EXISTS omsREQ_User_No ON omsREQ (User_No);

-- States of futures order requests, one row per sub-order of an order.
CREATE TABLE IF NOT EXISTS mftsorder_state (
    Order_No          VARCHAR(32)  NOT NULL,
    SubOrderNo        VARCHAR(32)  NOT NULL,
    Account           VARCHAR(32),
    Order_Type        INTEGER      NOT NULL DEFAULT 0,
    Symbol            VARCHAR(32),
    Quantity          INTEGER      NOT NULL DEFAULT 0,
    Price             DOUBLE PRECISION NOT NULL DEFAULT 0,
    User_No           VARCHAR(32),
    Hedge             INTEGER      NOT NULL DEFAULT 0,
    Origin            INTEGER      NOT NULL DEFAULT 0,
    Last_Operation    VARCHAR(16),
    Shortsell         INTEGER,
    DateTime_Created  TIMESTAMP(3) NOT NULL DEFAULT LOCALTIMESTAMP(3),
    DateTime_Modified TIMESTAMP(3) NOT NULL DEFAULT LOCALTIMESTAMP(3),
    Exchange          VARCHAR(8),
    ExchangeDest      VARCHAR(16),
    Status            VARCHAR(16),
    PRIMARY KEY (Order_No, SubOrderNo)
);
CREATE INDEX IF NOT EXISTS mftsorder_state_Exchange ON mftsorder_state (Exchange, DateTime_Created);
CREATE INDEX IF NOT EXISTS mftsorder_state_Created ON mftsorder_state (DateTime_Created);

-- Users of the desk. member lists the users whose orders this user may see.
CREATE TABLE IF NOT EXISTS User_File (
    User_No           VARCHAR(32)  NOT NULL PRIMARY KEY,
    Full_name         VARCHAR(80),
    AdminUser         INTEGER      NOT NULL DEFAULT 0,
    member            TEXT,
    DummyAc           VARCHAR(32),
    Active            BOOLEAN      NOT NULL DEFAULT TRUE
);

-- Entitlements: UserType 0 rows belong to the user named in account, other
-- types to an account. Only Enabled = 1 rows count.
CREATE TABLE IF NOT EXISTS AccountEntitle (
    account           VARCHAR(32)  NOT NULL,
    UserType          INTEGER      NOT NULL DEFAULT 0,
    EntitlementID     VARCHAR(32)  NOT NULL,
    Enabled           INTEGER      NOT NULL DEFAULT 1,
    PRIMARY KEY (account, UserType, EntitlementID)
);

-- Exchange destinations, in the order the order screens list them.
CREATE TABLE IF NOT EXISTS orsconfig (
    Seq               INTEGER      NOT NULL PRIMARY KEY,
    Exch_dest         VARCHAR(16)  NOT NULL,
    Exchange          VARCHAR(8),
    Description       VARCHAR(80)
);

-- Trading accounts. User_No is the dealer (or client) who owns the account.
CREATE TABLE IF NOT EXISTS Account_File (
    Account           VARCHAR(32)  NOT NULL PRIMARY KEY,
    User_No           VARCHAR(32),
    First_Name        VARCHAR(64),
    Last_Name         VARCHAR(64),
    Acct_Name         VARCHAR(128),
    Chinese_Name      VARCHAR(64),
    Day_Phone         VARCHAR(32),
    Home_Phone        VARCHAR(32),
    Mobile            VARCHAR(32),
    Fax               VARCHAR(32),
    Email             VARCHAR(128),
    Client_ID         VARCHAR(32),
    CommRate          DOUBLE PRECISION NOT NULL DEFAULT 0,
    Min_Comm          DOUBLE PRECISION NOT NULL DEFAULT 0,
    Account_Comm      DOUBLE PRECISION NOT NULL DEFAULT 0,
    Suspended         INTEGER      NOT NULL DEFAULT 0
);
CREATE INDEX IF NOT EXISTS Account_File_User_No ON Account_File (User_No);

-- A dealer's shortcut for an account: unique per dealer, one per account.
CREATE TABLE IF NOT EXISTS Account_ShortCut (
    User_No           VARCHAR(32)  NOT NULL,
    ShortCut          VARCHAR(16)  NOT NULL CHECK (ShortCut <> ''),
    Account           VARCHAR(32)  NOT NULL,
    PRIMARY KEY (User_No, ShortCut),
    UNIQUE (Account, User_No)
);

-- Order numbers handed out by sp_insert_new_order.
CREATE SEQUENCE IF NOT EXISTS oms_order_no_seq;
