#include "archive/export/Progress.h"

#include <array>
#include <cstdio>

#include "console/StandardStreams.h"
#include "console/Text.h"

namespace tarn::archive {
namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr uint64_t kMegabyte = 1'000'000;

}  // namespace

std::string ProgressText(uint64_t items, uint64_t expected, uint64_t bytes, uint64_t elapsed) {
  std::string text = std::to_string(items);
  if (expected > items) text += " of " + std::to_string(expected);
  text += " items, " + std::to_string(bytes / kMegabyte) + " MB";
  if (elapsed == 0) return text;
  const uint64_t rate = bytes / kMegabyte * 1000 / elapsed;
  if (rate != 0) text += ", " + std::to_string(rate) + " MB/s";
  if (items == 0 || expected <= items) return text;
  const uint64_t left = (expected - items) * elapsed / items / 1000;
  std::array<char, 64> clock;
  std::snprintf(clock.data(), clock.size(), ", %llu:%02llu:%02llu left",
                static_cast<unsigned long long>(left / 3600),
                static_cast<unsigned long long>(left / 60 % 60),
                static_cast<unsigned long long>(left % 60));
  return text + clock.data();
}

Progress::Progress(bool isTerminal) : isTerminal_(isTerminal), begin_(steady_clock::now()) {}

Progress::~Progress() {
  if (isTerminal_) host::WriteStandardError(kClearLine);
}

void Progress::done(uint64_t items, uint64_t bytes) {
  items_ += items;
  bytes_ += bytes;
  show();
}

void Progress::tell(const std::string& source, uint64_t items) {
  if (isTerminal_) return;
  host::WriteStandardError("tarnmail: " + host::Printable(source) + ": " + std::to_string(items) +
                           (items == 1 ? " item\n" : " items\n"));
}

void Progress::show() {
  if (!isTerminal_) return;
  constexpr milliseconds kPause(200);
  const auto now = steady_clock::now();
  if (now - shown_ < kPause) return;
  shown_ = now;
  const auto elapsed = duration_cast<milliseconds>(now - begin_).count();
  host::WriteStandardError(kClearLine +
                           ProgressText(items_, expected_, bytes_, static_cast<uint64_t>(elapsed)));
}

}  // namespace tarn::archive
