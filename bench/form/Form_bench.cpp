// Loading a form of many properties: the time per key should not grow with the number of keys.
#include <benchmark/benchmark.h>

#include <string>

#include "form/FormFile.h"

namespace {

using cvn73100::FormFile;
using cvn73100::MemoryPropertyBag;
using cvn73100::Variant;

std::string FormOf(std::int64_t keys) {
  MemoryPropertyBag bag;
  for (std::int64_t i = 0; i < keys; ++i) bag.Set("Key" + std::to_string(i), Variant(static_cast<std::int32_t>(i)));
  return FormFile::ToJson(bag);
}

void BM_FormLoad(benchmark::State& state) {
  const std::string text = FormOf(state.range(0));
  for (auto _ : state) {
    MemoryPropertyBag bag;
    FormFile::FromJson(text, bag);
    benchmark::DoNotOptimize(bag.Entries().data());
  }
  state.counters["keys"] = static_cast<double>(state.range(0));
}
BENCHMARK(BM_FormLoad)->Arg(1000)->Arg(40000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
