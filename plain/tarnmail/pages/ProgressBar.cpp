#include "pages/ProgressBar.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "console/StandardStreams.h"

namespace tarn::host {

ProgressPlace UsualProgressPlace() {
  ProgressPlace place;
  place.isTerminal = StandardErrorIsTerminal();
  place.write = WriteStandardError;
  return place;
}

std::string ProgressLine(int percent) {
  constexpr size_t kWidth = 40;
  percent = std::clamp(percent, 0, 100);
  const size_t done = kWidth * static_cast<size_t>(percent) / 100;
  const std::string number = std::to_string(percent);
  return "[" + std::string(done, '#') + std::string(kWidth - done, ' ') + "]" +
         std::string(4 - number.size(), ' ') + number + "%";
}

ProgressBar::ProgressBar(ProgressPlace place) : place_(std::move(place)) {
  if (!place_.isTerminal) return;
  try {
    thread_ = std::thread(&ProgressBar::show, this);
  } catch (const std::system_error&) {
    return;
  }
}

ProgressBar::~ProgressBar() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    isDone_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void ProgressBar::set(int percent) {
  const std::lock_guard lock(mutex_);
  percent_ = percent;
}

void ProgressBar::show() {
  constexpr auto kBetween = std::chrono::milliseconds(100);
  const auto isDone = [this] { return isDone_; };
  std::unique_lock lock(mutex_);
  if (changed_.wait_for(lock, place_.before, isDone)) return;
  do {
    place_.write("\r" + ProgressLine(percent_));
  } while (!changed_.wait_for(lock, kBetween, isDone));
  place_.write("\r\x1B[K");
}

}  // namespace tarn::host
