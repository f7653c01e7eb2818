// SPDX-License-Identifier: MIT
// What a dealer's blotter pays per order message: building exchange and
// client orders from the OMS servers' tagged text, applying the next update
// to a watched order, writing the order back, and its instruction remark.
// The "@floor" runs are the least any parser can do with the same text.
#include <array>
#include <charconv>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QString>

#include "bench/BenchGoals.h"
#include "bench/OrderMessage.h"
#include "qalpack/model/exchData.h"
#include "qalpack/model/omsData.h"

namespace {

const QString& orderText()
{
    static const QString text = QString::fromStdString(bench::omsText(bench::kOrderFields));
    return text;
}

const QString& updateText()
{
    static const QString text = QString::fromStdString(bench::omsText(bench::kUpdateFields));
    return text;
}

void BM_ExchOrderFromMessage(benchmark::State& state)
{
    const QString& text = orderText();
    for (auto _ : state) {
        qal::TexchOrder order(text);
        benchmark::DoNotOptimize(order.Price);
    }
}
BENCHMARK(BM_ExchOrderFromMessage)->Name("message/TexchOrder from text");

void BM_ClientOrderFromMessage(benchmark::State& state)
{
    const QString& text = orderText();
    for (auto _ : state) {
        qal::TomsOrder order(text);
        benchmark::DoNotOptimize(order.Price);
    }
    bench::setGoals(state, { { "quickfix", 1.0 }, { "floor", 3.0 } });
}
BENCHMARK(BM_ClientOrderFromMessage)->Name("message/TomsOrder from text");

// A watched order takes the next update: every pair through updateField,
// then its one subscriber (a blotter row) is told. Updates alternate so that
// every apply really changes the record.
void BM_ApplyUpdate(benchmark::State& state)
{
    qal::TomsOrder order(orderText());
    int redraws = 0;
    int row = 0;
    order.RegisterCallback([&redraws](void*, void*) { ++redraws; }, &row);
    const QString* texts[2] = { &updateText(), &orderText() };
    std::size_t next = 0;
    for (auto _ : state) {
        order.applyMessage(*texts[next]);
        order.NotifierUpdate();
        next ^= 1;
    }
    benchmark::DoNotOptimize(redraws);
}
BENCHMARK(BM_ApplyUpdate)->Name("message/apply update + notify");

void BM_ImageMessage(benchmark::State& state)
{
    const qal::TomsOrder order(orderText());
    for (auto _ : state) {
        QString image = order.DDSImageMessage();
        benchmark::DoNotOptimize(image.data());
    }
    bench::setGoals(state, { { "quickfix", 1.0 } });
}
BENCHMARK(BM_ImageMessage)->Name("message/DDSImageMessage");

// A client order with nearly every instruction a remark can show.
void BM_Remark(benchmark::State& state)
{
    qal::TomsOrder order(orderText());
    order.ShortSell = 1;
    order.OrderOption |= qal::OptionManualOrder | qal::OptionEnhanced | qal::OptionFAK
        | qal::OptionGoodTillDate | qal::OptionApprovalRequested;
    order.Option489 |= qal::Opt489OpenEnd | qal::Opt489Void | qal::Opt489StopPrice | qal::Opt489Algo;
    order.AlgoCommand = QStringLiteral("OAOGroup=7;SEQ=2;ACTDATE=20240131;ACTTIME=093000");
    order.OpenClose = 1;
    order.GTCDetails.SetCommaText(QStringLiteral("20240131,345.6,2000"));
    order.setAttribute(qal::OrderAttribute::Dealer, QStringLiteral("D07"));
    for (auto _ : state) {
        QString remark = order.GetRemark();
        benchmark::DoNotOptimize(remark.data());
    }
}
BENCHMARK(BM_Remark)->Name("message/GetRemark, many instructions");

// The floor: one pass over the UTF-8 text, the tag read with from_chars, the
// value kept as a view; nothing converted, nothing allocated.
struct FieldView
{
    int tag = 0;
    std::string_view value;
};

std::size_t splitFloor(std::string_view text, std::array<FieldView, 64>& out)
{
    const char* p = text.data();
    const char* const end = p + text.size();
    while (p != end && *p != '|')
        ++p;
    if (p == end)
        return 0;
    ++p;
    std::size_t count = 0;
    while (p != end && count < out.size()) {
        int tag = 0;
        p = std::from_chars(p, end, tag).ptr;
        while (p != end && *p != '|')
            ++p;
        if (p == end)
            break;
        const char* const value = ++p;
        while (p != end && *p != '|')
            ++p;
        out[count++] = { tag, std::string_view(value, static_cast<std::size_t>(p - value)) };
        if (p != end)
            ++p;
    }
    return count;
}

void BM_FloorSplit(benchmark::State& state)
{
    const std::string text = bench::omsText(bench::kOrderFields);
    std::array<FieldView, 64> fields;
    for (auto _ : state) {
        benchmark::DoNotOptimize(splitFloor(text, fields));
        benchmark::ClobberMemory();
    }
    if (splitFloor(text, fields) != bench::kOrderFieldCount)
        state.SkipWithError("the floor split lost fields");
}
BENCHMARK(BM_FloorSplit)->Name("message/TomsOrder from text@floor");

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
