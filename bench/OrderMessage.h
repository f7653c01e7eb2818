// SPDX-License-Identifier: MIT
// The order update every message benchmark reads: a partly filled stop order
// for a client with a Chinese name, as the OMS servers send it, and the next
// update of the same order. Plain C++14 so that the peers' programs, which
// cannot be built as C++20, read exactly the same content.
#pragma once

#include <cstddef>
#include <string>

namespace bench {

// One field: our tag, the FIX tag carrying the same meaning (a user-defined
// tag from 5000 up where FIX has none), and the value as UTF-8.
struct OrderField
{
    int tag;
    int fixTag;
    const char* value;
};

constexpr std::size_t kOrderFieldCount = 25;

// The first image of the order: 25 pairs, two prices (limit and stop), the
// option words (stop + auction + FOK on a limit order; work order, pre-trade
// allocation, CD order), principal and hedge words, attributes as comma text.
constexpr OrderField kOrderFields[kOrderFieldCount] = {
    { 6, 11, "OMS000123" },
    { 7, 37, "E88001" },
    { 0, 55, "0700.HK" },
    { 10, 1, "C00081" },
    { 25, 58, "陳大文" },
    { 11, 54, "0" },
    { 13, 50, "D01" },
    { 4, 38, "2000" },
    { 3, 44, "345.6" },
    { 41, 99, "340.2" },
    { 5, 39, "2" },
    { 34, 14, "400" },
    { 40, 5040, "2818" },
    { 489, 5489, "16393" },
    { 46, 528, "12" },
    { 47, 77, "1" },
    { 101, 5101, "0" },
    { 20, 207, "SEHK" },
    { 15, 526, "R20240131-0007" },
    { 33, 60, "20240131-09:30:00" },
    { 74, 5074, "SPT:1" },
    { 418, 5418, "RUN07" },
    { 487, 5487, "InvestorID=77,PTA=A1/B2,MSEQ=12" },
    { 495, 432, "20261231" },
    { 1119, 5119, "20240131-09:35:12" },
};

// The next update of the same order: more filled, amended price, later time.
constexpr OrderField kUpdateFields[kOrderFieldCount] = {
    { 6, 11, "OMS000123" },
    { 7, 37, "E88001" },
    { 0, 55, "0700.HK" },
    { 10, 1, "C00081" },
    { 25, 58, "陳大文" },
    { 11, 54, "0" },
    { 13, 50, "D01" },
    { 4, 38, "2000" },
    { 3, 44, "345.8" },
    { 41, 99, "340.2" },
    { 5, 39, "2" },
    { 34, 14, "1200" },
    { 40, 5040, "2818" },
    { 489, 5489, "16393" },
    { 46, 528, "12" },
    { 47, 77, "1" },
    { 101, 5101, "0" },
    { 20, 207, "SEHK" },
    { 15, 526, "R20240131-0007" },
    { 33, 60, "20240131-09:30:00" },
    { 74, 5074, "SPT:1" },
    { 418, 5418, "RUN07" },
    { 487, 5487, "InvestorID=77,PTA=A1/B2,MSEQ=12" },
    { 495, 432, "20261231" },
    { 1119, 5119, "20240131-09:41:03" },
};

// The OMS form as UTF-8: header token, then "tag|value|" for each field.
inline std::string omsText(const OrderField (&fields)[kOrderFieldCount])
{
    std::string text = "H|";
    for (const OrderField& f : fields) {
        text += std::to_string(f.tag);
        text += '|';
        text += f.value;
        text += '|';
    }
    return text;
}

} // namespace bench
