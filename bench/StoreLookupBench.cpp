// Lookups in a store of a million nodes. "first" opens the store and looks one node up, "warm"
// looks nodes up whose pages were loaded before. The counter "reads" counts what the first lookup
// reads: it has to be the height of the tree, 5 for a million nodes in full pages, and the
// benchmark fails otherwise.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <memory>

#include "Tarnbase/PlainKernel.h"
#include "pststore/DbContext.h"
#include "support/TempDirectory.h"
#include "support/pst/PstFileBuilder.h"

namespace {

constexpr uint32_t kNodes = 1000000;
constexpr uint64_t kHeight = 5;

uint32_t NodeId(uint32_t index) { return (index + 1) << 5 | 0x04; }

class MillionNodes {
 public:
  MillionNodes() : path_(directory_.path() / "million.pst") {
    tarn::test::PstFileBuilder file({}, path_);
    for (uint32_t i = 0; i < kNodes; ++i) file.node(NodeId(i), 0, 0);
    file.finish();
  }
  std::shared_ptr<pststore::db_context> open() const {
    return pststore::open_database(path_.u16string().c_str());
  }

 private:
  tarn::test::TempDirectory directory_;
  std::filesystem::path path_;
};

const MillionNodes& Store() {
  static const MillionNodes store;
  return store;
}

// Whether a first lookup succeeds when the given read of it fails.
bool SurvivesFailureOf(uint64_t read) {
  const auto context = Store().open();
  PlainKernelFailAt(PlainKernelFaultRead, read);
  bool survives = true;
  try {
    context->lookup_node_info(NodeId(kNodes / 2));
  } catch (const std::out_of_range&) {
    survives = false;
  }
  PlainKernelFailAt(PlainKernelFaultRead, 0);
  return survives;
}

void First(benchmark::State& state) {
  uint64_t reads = 0;
  while (!SurvivesFailureOf(reads + 1)) ++reads;
  if (reads != kHeight) state.SkipWithError("a lookup reads more than its way down");
  uint32_t index = 0;
  for ([[maybe_unused]] auto _ : state) {
    index = (index + 7919) % kNodes;
    benchmark::DoNotOptimize(Store().open()->lookup_node_info(NodeId(index)));
  }
  state.counters["reads"] = static_cast<double>(reads);
}

void Warm(benchmark::State& state) {
  const auto context = Store().open();
  for (uint32_t i = 0; i < kNodes; ++i) context->lookup_node_info(NodeId(i));
  uint32_t index = 0;
  for ([[maybe_unused]] auto _ : state) {
    index = (index + 7919) % kNodes;
    benchmark::DoNotOptimize(context->lookup_node_info(NodeId(index)));
  }
}

BENCHMARK(First);
BENCHMARK(Warm);

}  // namespace
