// What the micro benchmarks work on: a made-up fleet as `orxkdb sample` writes it, in every form
// that one of them starts from. Made once, when it is first asked for.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "model/config_handle.h"
#include "records/data_buffer.h"

namespace orx::bench {

struct Sample {
  std::string text;                     // the backup
  std::vector<std::string_view> lines;  // of it, without their ends
  std::vector<DataBuffer> records;
  std::vector<CMConfigHandle> handles;      // object, parent and model of each record, but no null
  std::vector<std::string> attributeTexts;  // of each object
};

[[nodiscard]] const Sample& sample();

// The records of a fleet, in the order of a shuffled deck or in that of their keys.
enum class Order { key, random };
[[nodiscard]] std::vector<DataBuffer> sampleRecords(std::uint32_t objects, Order order);

// One iteration is `work` for each item; what it returns is kept alive. `bytes` counts what the
// work on all items reads or writes; 0: that would say nothing.
template <typename Items, typename Work>
void measureEach(benchmark::State& state, const Items& items, std::size_t bytes, Work work) {
  for (auto _ : state) {
    for (const auto& item : items) benchmark::DoNotOptimize(work(item));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(items.size()));
  if (bytes > 0) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
  }
}

}  // namespace orx::bench
