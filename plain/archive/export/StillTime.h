// StillTime.h - how long a worker has done nothing.
#ifndef TARN_ARCHIVE_STILLTIME_H
#define TARN_ARCHIVE_STILLTIME_H

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace tarn::archive {

// Looks come many times a second. Where one comes late, the export itself did not run, and its
// workers may not have run either: of that time little counts.
class StillTime {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kMostOfALook{500};

  void begin(Clock::time_point now, uint64_t beat = 0) {
    last_ = now;
    beat_ = beat;
    time_ = {};
  }

  // With the worker's beat as it is now.
  void look(Clock::time_point now, uint64_t beat) {
    if (beat != beat_) return begin(now, beat);
    time_ += std::min<Clock::duration>(now - last_, kMostOfALook);
    last_ = now;
  }

  Clock::duration time() const { return time_; }

 private:
  Clock::time_point last_;
  uint64_t beat_ = 0;
  Clock::duration time_{};
};

}  // namespace tarn::archive

#endif
