#include <benchmark/benchmark.h>

#include <nlohmann/json.hpp>
#include <string>

#include "orvane/report/csv_report_builder.h"
#include "orvane/report/html/html_report_builder.h"
#include "tests/report/sample_reports.h"

namespace {

using orvane::OrvaneReport;

/// Ten hours, 360,000 points per curve.
const OrvaneReport& report() {
  static const OrvaneReport kReport = orvane::test::longProgrammeReport(10);
  return kReport;
}

const std::string& reportText() {
  static const std::string kText = orvane::encodeJSON(report());
  return kText;
}

void countBytes(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void writeRecord(benchmark::State& state) {
  if (nlohmann::json::parse(reportText())["fullFile"]["momentaryCurve"].size() != 360'000)
    state.SkipWithError("the record is not complete");
  for (auto _ : state) benchmark::DoNotOptimize(orvane::encodeJSON(report()));
  countBytes(state, reportText().size());
}
BENCHMARK(writeRecord)->Unit(benchmark::kMillisecond);

void readRecord(benchmark::State& state) {
  if (orvane::decodeJSON<OrvaneReport>(reportText()) != report())
    state.SkipWithError("the record does not come back");
  for (auto _ : state) benchmark::DoNotOptimize(orvane::decodeJSON<OrvaneReport>(reportText()));
  countBytes(state, reportText().size());
}
BENCHMARK(readRecord)->Unit(benchmark::kMillisecond);

void readTreeByPeer(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(nlohmann::json::parse(reportText()));
  countBytes(state, reportText().size());
}
BENCHMARK(readTreeByPeer)->Unit(benchmark::kMillisecond);

void writeTreeByPeer(benchmark::State& state) {
  const auto tree = nlohmann::json::parse(reportText());
  for (auto _ : state) benchmark::DoNotOptimize(tree.dump());
  countBytes(state, reportText().size());
}
BENCHMARK(writeTreeByPeer)->Unit(benchmark::kMillisecond);

void renderPage(benchmark::State& state) {
  std::size_t size = 0;
  for (auto _ : state) size = orvane::HTMLReportBuilder::build(report(), {"en", "UTC"}).size();
  state.counters["bytes"] = static_cast<double>(size);
}
BENCHMARK(renderPage)->Unit(benchmark::kMillisecond);

void renderTable(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(orvane::CSVReportBuilder::build(report()));
}
BENCHMARK(renderTable)->Unit(benchmark::kMicrosecond);

}  // namespace
