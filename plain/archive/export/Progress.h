// Progress.h - how far an export is: a line that changes on a terminal, a line a source elsewhere.
#ifndef TARN_ARCHIVE_PROGRESS_H
#define TARN_ARCHIVE_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

namespace tarn::archive {

// Takes away what is shown in the line of a terminal.
inline constexpr const char* kClearLine = "\r\x1b[K";

class Progress {
 public:
  // On standard error; `isTerminal` says what that is.
  explicit Progress(bool isTerminal);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  // Clears its line.
  ~Progress();

  // Items that are known to come.
  void expect(uint64_t items) { expected_ += items; }
  void done(uint64_t items, uint64_t bytes);
  // A source is through.
  void tell(const std::string& source, uint64_t items);

 private:
  void show();

  bool isTerminal_;
  std::chrono::steady_clock::time_point begin_;
  std::chrono::steady_clock::time_point shown_;
  uint64_t expected_ = 0;
  uint64_t items_ = 0;
  uint64_t bytes_ = 0;
};

// "1234 of 20000 items, 56 MB, 12 MB/s, 0:03:20 left"; what is not known yet is left out.
std::string ProgressText(uint64_t items, uint64_t expected, uint64_t bytes, uint64_t milliseconds);

}  // namespace tarn::archive

#endif
