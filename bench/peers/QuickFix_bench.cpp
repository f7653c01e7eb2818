// SPDX-License-Identifier: MIT
// The peer for the order-message benchmarks: QuickFIX reading the same order
// content as a FIX message (each field under the FIX tag of the same meaning)
// without a data dictionary, and writing it out again. Its headers need
// C++14, so this program is built on its own and shares only the content.
#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <quickfix/Message.h>

#include "bench/OrderMessage.h"

namespace {

// A complete FIX 4.4 execution report: begin string, body length, message
// type, the 25 fields, checksum. Frame fields are what FIX needs to parse.
std::string fixText(const bench::OrderField (&fields)[bench::kOrderFieldCount])
{
    const char soh = '\x01';
    std::string body = "35=8";
    body += soh;
    for (const bench::OrderField& f : fields) {
        body += std::to_string(f.fixTag);
        body += '=';
        body += f.value;
        body += soh;
    }
    std::string text = "8=FIX.4.4";
    text += soh;
    text += "9=" + std::to_string(body.size());
    text += soh;
    text += body;
    unsigned sum = 0;
    for (const char c : text)
        sum += static_cast<unsigned char>(c);
    std::array<char, 8> checksum {};
    std::snprintf(checksum.data(), checksum.size(), "%03u", sum % 256);
    text += "10=";
    text += checksum.data();
    text += soh;
    return text;
}

const std::string& orderText()
{
    static const std::string text = fixText(bench::kOrderFields);
    return text;
}

const std::string& updateText()
{
    static const std::string text = fixText(bench::kUpdateFields);
    return text;
}

// A fresh message per parse, as a record is built per message.
void BM_Parse(benchmark::State& state)
{
    const std::string& text = orderText();
    for (auto _ : state) {
        FIX::Message message;
        message.setString(text, false, nullptr);
        benchmark::DoNotOptimize(&message);
    }
    FIX::Message check;
    check.setString(text, false, nullptr);
    if (check.getField(58) != bench::kOrderFields[4].value)
        state.SkipWithError("QuickFIX did not read the client name");
}
BENCHMARK(BM_Parse)->Name("message/TexchOrder from text@quickfix");
BENCHMARK(BM_Parse)->Name("message/TomsOrder from text@quickfix");

// The next update read into a message already held.
void BM_Reparse(benchmark::State& state)
{
    const std::string* texts[2] = { &updateText(), &orderText() };
    FIX::Message message;
    message.setString(orderText(), false, nullptr);
    std::size_t next = 0;
    for (auto _ : state) {
        message.setString(*texts[next], false, nullptr);
        next ^= 1;
    }
    benchmark::DoNotOptimize(&message);
}
BENCHMARK(BM_Reparse)->Name("message/apply update + notify@quickfix");

// The first toString after a parse: QuickFIX keeps each field's text once it
// has been written, so every timed call gets a freshly parsed message.
void BM_FirstToString(benchmark::State& state)
{
    constexpr std::size_t batch = 512;
    std::vector<FIX::Message> messages(batch);
    const auto parseAll = [&messages] {
        for (FIX::Message& m : messages)
            m.setString(orderText(), false, nullptr);
    };
    parseAll();
    std::size_t next = 0;
    for (auto _ : state) {
        if (next == batch) {
            state.PauseTiming();
            parseAll();
            next = 0;
            state.ResumeTiming();
        }
        std::string text = messages[next++].toString();
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK(BM_FirstToString)->Name("message/DDSImageMessage@quickfix");

} // namespace

BENCHMARK_MAIN();
