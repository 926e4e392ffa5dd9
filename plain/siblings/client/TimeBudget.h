// TimeBudget.h - the time that all pages of a document may take together: the limit of a request,
// and a sixtieth of it for each page that is asked for. A page that is asked for again counts
// again.
#ifndef TARN_SIBLINGS_CLIENT_TIMEBUDGET_H
#define TARN_SIBLINGS_CLIENT_TIMEBUDGET_H

#include <chrono>
#include <cstdint>

namespace tarn::pages {

class TimeBudget {
 public:
  using Duration = std::chrono::steady_clock::duration;

  TimeBudget() = default;
  explicit TimeBudget(std::chrono::milliseconds limit) : limit_(limit), total_(limit) {}

  void ask(int32_t pages) { total_ += limit_ * pages / kSharesOfLimit; }
  void spend(Duration time) { spent_ += time; }

  Duration left() const { return total_ - spent_; }
  // All of it, for messages.
  std::chrono::milliseconds total() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(total_);
  }

 private:
  static constexpr int64_t kSharesOfLimit = 60;

  Duration limit_{};
  Duration total_{};
  Duration spent_{};
};

}  // namespace tarn::pages

#endif
