// Growth.h - how the cost of some work grows with its size.
#ifndef TARN_BENCH_GROWTH_H
#define TARN_BENCH_GROWTH_H

#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <ctime>

namespace tarn::bench {

// Runs work(0), work(1) and work(2), of sizes n, 2n and 4n, in turn, and shows the ratios of their
// processor times: 2 and 2 for work in proportion to its size, 4 and 4 for its square.
template <typename Work>
void MeasureGrowth(benchmark::State& state, const Work& work) {
  std::array<double, 3> ticks = {};
  for (auto _ : state) {
    for (size_t size = 0; size < ticks.size(); ++size) {
      const std::clock_t start = std::clock();
      work(size);
      ticks[size] += static_cast<double>(std::clock() - start);
    }
  }
  state.counters["2n/n"] = ticks[1] / ticks[0];
  state.counters["4n/2n"] = ticks[2] / ticks[1];
}

}  // namespace tarn::bench

#endif
