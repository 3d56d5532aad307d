// The lists that a rebuild and a merge hold in memory: filled, sorted, taken apart into objects.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "micro/sample.h"
#include "restore/record_lists.h"

namespace orx::bench {

namespace {

constexpr std::uint32_t objects = 50000;

const std::vector<DataBuffer>& records(Order order) {
  static const std::vector<DataBuffer> inKeyOrder = sampleRecords(objects, Order::key);
  static const std::vector<DataBuffer> shuffled = sampleRecords(objects, Order::random);
  return order == Order::key ? inKeyOrder : shuffled;
}

// Spread as a rebuild does it.
void fill(RecordLists& lists, Order order) {
  for (const DataBuffer& record : records(order)) {
    lists.append(static_cast<std::uint32_t>(static_cast<std::int32_t>(record.objectHandle())),
                 record);
  }
}

// Empties the lists; the number of objects that were there.
std::size_t gather(RecordLists& lists) {
  std::size_t count = 0;
  BigDataRecord object;
  for (std::size_t number = 0; number < RecordLists::count; ++number) {
    while (myGetNextAndDestroy(lists[number], object) != 0) {
      benchmark::DoNotOptimize(object.attributeText.data());
      object.attributeText.clear();
      ++count;
    }
  }
  return count;
}

void countRecords(benchmark::State& state) {
  const auto count = static_cast<std::int64_t>(records(Order::key).size());
  state.SetItemsProcessed(state.iterations() * count);
  state.SetBytesProcessed(state.iterations() * count *
                          static_cast<std::int64_t>(data_layout::recordSize));
}

void fillLists(benchmark::State& state) {
  RecordLists lists;
  for (auto _ : state) {
    fill(lists, Order::key);
    state.PauseTiming();
    (void)gather(lists);
    state.ResumeTiming();
  }
  countRecords(state);
}

void sortFilledLists(benchmark::State& state, Order order) {
  RecordLists lists;
  for (auto _ : state) {
    state.PauseTiming();
    (void)gather(lists);
    fill(lists, order);
    state.ResumeTiming();
    sortLists(lists);
  }
  countRecords(state);
}

void sortSorted(benchmark::State& state) {
  sortFilledLists(state, Order::key);
}
void sortShuffled(benchmark::State& state) {
  sortFilledLists(state, Order::random);
}

void gatherObjects(benchmark::State& state) {
  RecordLists lists;
  for (auto _ : state) {
    state.PauseTiming();
    fill(lists, Order::random);
    sortLists(lists);
    state.ResumeTiming();
    benchmark::DoNotOptimize(gather(lists));
  }
  countRecords(state);
}

BENCHMARK(fillLists)->Name("restore/fillLists");
BENCHMARK(sortSorted)->Name("restore/sortLists, in key order");
BENCHMARK(sortShuffled)->Name("restore/sortLists, in random order");
BENCHMARK(gatherObjects)->Name("restore/gatherObjects");

}  // namespace
}  // namespace orx::bench
