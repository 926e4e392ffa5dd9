// MeasuredProcess.h - what a program and the processes that it starts cost.
#ifndef TARN_BENCH_MEASUREDPROCESS_H
#define TARN_BENCH_MEASUREDPROCESS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tarn::bench {

struct ProcessCost {
  int exitStatus = -1;                   // -1 when a signal ended it
  double seconds = 0;                    // of the processor
  std::optional<uint64_t> instructions;  // none where the processor counts none
  uint64_t peakKilobytes = 0;            // of the largest process
  bool tookTooLong = false;              // ended after `mostSeconds`
};

// Does the work in a process of its own: the peak that Measure tells of a program is at least what
// the caller had before.
void InAnotherProcess(const std::function<void()>& work);

// Runs the program with its output thrown away. Throws std::runtime_error when it cannot be
// started.
ProcessCost Measure(const std::vector<std::string>& command, unsigned mostSeconds);

}  // namespace tarn::bench

#endif
