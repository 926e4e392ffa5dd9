// ProgressBar.h - a line on a terminal that shows how far a long command is.
#ifndef TARN_TARNMAIL_PAGES_PROGRESSBAR_H
#define TARN_TARNMAIL_PAGES_PROGRESSBAR_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace tarn::host {

struct ProgressPlace {
  bool isTerminal = false;
  std::chrono::milliseconds before = std::chrono::seconds(1);  // nothing is shown before
  std::function<void(std::string_view)> write;
};

// Standard error.
ProgressPlace UsualProgressPlace();

// "[########            ]  42%"
std::string ProgressLine(int percent);

// A thread shows the line, so that it is seen while nothing else can report; there is none where no
// terminal is. The end takes the line away.
class ProgressBar {
 public:
  explicit ProgressBar(ProgressPlace place = UsualProgressPlace());
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();

  void set(int percent);

 private:
  void show();

  const ProgressPlace place_;
  std::mutex mutex_;
  std::condition_variable changed_;
  int percent_ = 0;
  bool isDone_ = false;
  std::thread thread_;
};

}  // namespace tarn::host

#endif
