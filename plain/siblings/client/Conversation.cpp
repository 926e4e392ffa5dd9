#include "Conversation.h"

#include <algorithm>
#include <utility>

namespace tarn::pages {
namespace {

using std::chrono::milliseconds;

// How often a helper's memory is looked at while it is busy.
constexpr milliseconds kBetweenLooks(20);
// For a helper whose end of the channel is closed: it is about to end.
constexpr milliseconds kPatienceAtEnd(1'000);

std::string MegabytesInWords(uint64_t bytes) {
  const uint64_t megabytes = bytes >> 20;
  return megabytes % 1024 == 0 ? std::to_string(megabytes >> 10) + " GB"
                               : std::to_string(megabytes) + " MB";
}

std::string InWords(milliseconds time) {
  const int64_t count = time.count();
  return count % 1000 == 0 ? std::to_string(count / 1000) + " s" : std::to_string(count) + " ms";
}

}  // namespace

std::string OneLine(std::string_view text) {
  constexpr size_t kMost = 300;
  std::string line(text.substr(0, kMost));
  for (char& c : line) {
    if (c < 0x20 || c > 0x7E) c = '?';
  }
  return line;
}

void ThrowNonsense(const std::string& helper) {
  throw PageFailure(Trouble::HelperDied, helper + " gave an answer that makes no sense");
}

Conversation::Conversation(HelperProcess& process, std::string helper, const HelperLimits& limits)
    : process_(process),
      helper_(std::move(helper)),
      limits_(limits),
      start_(Clock::now()),
      deadline_(start_ + limits.timePerDocument),
      nextLook_(start_ + kBetweenLooks) {}

Conversation::~Conversation() {
  if (budget_ != nullptr) budget_->spend(Clock::now() - start_);
}

void Conversation::spendOf(TimeBudget& budget) {
  budget_ = &budget;
  deadline_ = std::min(deadline_, start_ + budget.left());
}

void Conversation::send(const std::string& message, int file) {
  if (!process_.channel().send(message, file)) throwDied();
}

std::string Conversation::waitFor(MessageKind wanted) {
  std::string message;
  for (;;) {
    waitForMessage();
    const Heard heard = process_.channel().receive(message);
    if (heard == Heard::End) throwDied();
    if (heard == Heard::Nonsense) throwNonsense();
    if (IsOfKind(message, wanted)) return message;
    if (IsOfKind(message, MessageKind::FileRequest)) {
      answerFileRequest(message);
    } else if (IsOfKind(message, MessageKind::ProgressReport)) {
      answerProgress(message);
    } else if (IsOfKind(message, MessageKind::Failed)) {
      throwFailed(message);
    } else {
      throwNonsense();
    }
  }
}

void Conversation::waitForMessage() {
  for (;;) {
    const Clock::time_point now = Clock::now();
    if (now >= deadline_) throwTooLong();
    if (now >= nextLook_) lookAtMemory();
    const auto left = std::chrono::ceil<milliseconds>(std::min(deadline_, nextLook_) - now);
    if (process_.channel().waitForMessage(std::max(left, milliseconds(0)))) return;
  }
}

void Conversation::throwTooLong() const {
  if (deadline_ - start_ >= limits_.timePerDocument) {
    throw PageFailure(Trouble::TooLong,
                      "the document takes longer than " + InWords(limits_.timePerDocument));
  }
  throw PageFailure(Trouble::TooLong, "the pages of the document take longer than " +
                                          InWords(budget_->total()) + " together");
}

void Conversation::lookAtMemory() {
  nextLook_ = Clock::now() + kBetweenLooks;
  if (process_.memoryNow() > limits_.memory) throwTooLarge();
}

void Conversation::throwTooLarge() const {
  throw PageFailure(Trouble::TooLarge,
                    "the document takes more memory than " + MegabytesInWords(limits_.memory));
}

void Conversation::answerFileRequest(const std::string& message) {
  FileRequest request;
  if (!Decode(message, request)) throwNonsense();
  std::optional<CopiedFile> copy;
  if (files_ != nullptr) copy = files_->copyOf(request.name);
  if (copy) {
    // A helper can keep all of them.
    given_ += copy->size;
    if (given_ > limits_.memory) throwTooLarge();
    send(Encode(FileAnswer{true, copy->size}), copy->file.get());
  } else {
    send(Encode(FileAnswer{}), -1);
  }
}

void Conversation::answerProgress(const std::string& message) {
  ProgressReport report;
  // Whoever goes on for ever does not do so in callbacks, whose time is not counted.
  if (!Decode(message, report) || progress_ == nullptr || !*progress_ ||
      report.percent <= lastPercent_ || report.percent > 100) {
    throwNonsense();
  }
  lastPercent_ = report.percent;
  const Clock::time_point before = Clock::now();
  if (!(*progress_)(report.percent)) isStopped_ = true;
  const Clock::duration taken = Clock::now() - before;
  start_ += taken;
  deadline_ += taken;
  send(Encode(ProgressAnswer{!isStopped_}), -1);
}

void Conversation::throwFailed(const std::string& message) const {
  Failed failed;
  if (!Decode(message, failed)) throwNonsense();
  if (isStopped_) throwStopped();
  throw HelperRefusal(failed.trouble, OneLine(failed.line));
}

void Conversation::throwStopped() const { throw HelperRefusal(Trouble::Stopped, "stopped"); }

void Conversation::throwDied() const {
  const Ending ending = process_.end(kPatienceAtEnd);
  throw PageFailure(Trouble::HelperDied, helper_ + " " +
                                             (ending.how.empty() ? "ended" : ending.how) +
                                             " in the middle of the document");
}

}  // namespace tarn::pages
