// Conversation.h - one request to a helper, up to its answer.
//
// All of it throws PageFailure. A HelperRefusal is an answer, and the helper goes on; after any
// other exception it is to be ended.
#ifndef TARN_SIBLINGS_CLIENT_CONVERSATION_H
#define TARN_SIBLINGS_CLIENT_CONVERSATION_H

#include <chrono>
#include <string>
#include <string_view>

#include "FolderFiles.h"
#include "HelperProcess.h"
#include "PageHelper.h"
#include "Protocol.h"
#include "TimeBudget.h"

namespace tarn::pages {

// The helper is well and has refused, or has been stopped.
class HelperRefusal : public PageFailure {
 public:
  using PageFailure::PageFailure;
};

// What a helper says, short enough for a message, and in characters that do a terminal no harm.
std::string OneLine(std::string_view text);

// Something that a helper in its right mind does not say.
[[noreturn]] void ThrowNonsense(const std::string& helper);

class Conversation {
 public:
  // `helper` is its name, for messages.
  Conversation(HelperProcess& process, std::string helper, const HelperLimits& limits);
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;
  ~Conversation();

  void offer(const FolderFiles& files) { files_ = &files; }
  void report(const ProgressCall& progress) { progress_ = &progress; }
  // The whole conversation is at its cost.
  void spendOf(TimeBudget& budget);

  template <class Answer, class Request>
  Answer ask(const Request& request, int file = -1) {
    send(Encode(request), file);
    const std::string message = waitFor(Answer::kKind);
    Answer answer;
    if (!Decode(message, answer)) throwNonsense();
    if (isStopped_) throwStopped();
    return answer;
  }

  [[noreturn]] void throwNonsense() const { ThrowNonsense(helper_); }

 private:
  using Clock = std::chrono::steady_clock;

  void send(const std::string& message, int file);
  // The next message of that kind; answers all others.
  std::string waitFor(MessageKind wanted);
  void waitForMessage();
  [[noreturn]] void throwTooLong() const;
  void answerFileRequest(const std::string& message);
  void answerProgress(const std::string& message);
  void lookAtMemory();
  [[noreturn]] void throwFailed(const std::string& message) const;
  [[noreturn]] void throwStopped() const;
  [[noreturn]] void throwTooLarge() const;
  [[noreturn]] void throwDied() const;

  HelperProcess& process_;
  const std::string helper_;
  const HelperLimits limits_;
  Clock::time_point start_;  // later by what callbacks took
  Clock::time_point deadline_;
  TimeBudget* budget_ = nullptr;
  const FolderFiles* files_ = nullptr;
  const ProgressCall* progress_ = nullptr;
  Clock::time_point nextLook_;
  int32_t lastPercent_ = -1;
  uint64_t given_ = 0;  // bytes of the folder's files
  bool isStopped_ = false;
};

}  // namespace tarn::pages

#endif
