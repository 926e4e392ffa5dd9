// The line that shows how far a long command is.

#include "tarnmail/pages/ProgressBar.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>

namespace tarn::host {
namespace {

TEST(ProgressLine, ShowsPerCent) {
  EXPECT_EQ(ProgressLine(0), "[" + std::string(40, ' ') + "]   0%");
  EXPECT_EQ(ProgressLine(50), "[" + std::string(20, '#') + std::string(20, ' ') + "]  50%");
  EXPECT_EQ(ProgressLine(100), "[" + std::string(40, '#') + "] 100%");
  EXPECT_EQ(ProgressLine(-1), ProgressLine(0));
  EXPECT_EQ(ProgressLine(101), ProgressLine(100));
}

// Waits for a text rather than for a time.
class Shown {
 public:
  ProgressPlace place(std::chrono::milliseconds before) {
    ProgressPlace place;
    place.isTerminal = true;
    place.before = before;
    place.write = [this](std::string_view text) {
      const std::lock_guard lock(mutex_);
      text_ += text;
      changed_.notify_all();
    };
    return place;
  }
  void waitFor(const std::string& part) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return text_.find(part) != std::string::npos; });
  }
  const std::string& text() const { return text_; }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::string text_;
};

TEST(ProgressBar, ShowsItsLineAndTakesItAway) {
  Shown shown;
  {
    ProgressBar bar(shown.place(std::chrono::milliseconds(0)));
    shown.waitFor("\r" + ProgressLine(0));
    bar.set(42);
    shown.waitFor("\r" + ProgressLine(42));
  }
  EXPECT_TRUE(shown.text().ends_with("\r\x1B[K"));
}

TEST(ProgressBar, ShowsNothingOfAShortCommand) {
  Shown shown;
  {
    ProgressBar bar(shown.place(std::chrono::hours(1)));
    bar.set(42);
  }
  EXPECT_EQ(shown.text(), "");
}

TEST(ProgressBar, ShowsNothingWithoutATerminal) {
  Shown shown;
  {
    ProgressPlace place = shown.place(std::chrono::milliseconds(0));
    place.isTerminal = false;
    ProgressBar bar(place);
    bar.set(42);
  }
  EXPECT_EQ(shown.text(), "");
}

}  // namespace
}  // namespace tarn::host
