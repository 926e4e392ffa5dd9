// Calibration.h - how many bytes cost as much time as a message by itself.
#ifndef TARN_ARCHIVE_CALIBRATION_H
#define TARN_ARCHIVE_CALIBRATION_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarn::archive {

// Where nobody knows better. Stores with messages of 6, 48 and 240 KB, exported as tasks to html,
// to html without a catalogue and to mbox, take the time of 9,800 to 10,800 bytes for a message
// by itself; to html, eml, text and json 18,700. Laying out PDFs takes far more.
inline constexpr uint64_t kUsualMessageCost = 10'000;

// A task that was done.
struct TimedTask {
  double bytes = 0;
  double messages = 0;
  double seconds = 0;
};

// That cost with which bytes and messages explain the times best, from 1 to 16 MiB. None where they
// tell nothing: fewer than two tasks, or all with the same share of messages.
std::optional<uint64_t> MessageCostOf(const std::vector<TimedTask>& tasks);

// From the log of attempts of an export by many machines, or from its manifest, where the log is
// beside the folder. Throws host::Failure (Usage) where that tells nothing.
uint64_t CalibratedCost(const std::string& path);

}  // namespace tarn::archive

#endif
