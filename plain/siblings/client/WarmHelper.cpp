#include "WarmHelper.h"

#include <chrono>
#include <utility>

#include "Protocol.h"

namespace tarn::pages {
namespace {

// Whatever limit documents have.
constexpr std::chrono::milliseconds kTimeToStart(120'000);
constexpr std::chrono::milliseconds kPatienceAfterStart(1'000);

}  // namespace

WarmHelper::WarmHelper(const HelperOptions& options, const char* name)
    : options_(options),
      name_(name),
      program_(std::filesystem::absolute(options.programs) / name),
      walls_(options.walls) {}

void WarmHelper::prepare() {
  if (isRunning() || (options_.sandbox && walls_.empty())) return;
  const HelperWall wall = firstWall();
  if (!IsProgram(program_) || (wall == HelperWall::Namespaces && !FindBubblewrap())) return;
  try {
    spawn(wall);
    isStarting_ = true;
  } catch (const std::system_error&) {
    process_.reset();
  }
}

void WarmHelper::makeReady() {
  if (isStarting_ && !isRunning()) isStarting_ = false;
  if (!isStarting_) {
    if (isRunning() && process_->memoryNow() <= options_.limits.memory / 2) return;
    process_.reset();
  }
  if (!IsProgram(program_)) {
    throw PageFailure(Trouble::NotInstalled, "there is no program " + program_.string());
  }
  try {
    startBehindSomeWall();
  } catch (const std::system_error& error) {
    process_.reset();
    throw PageFailure(Trouble::HelperDied, name_ + " cannot start: " + error.what());
  } catch (...) {
    process_.reset();
    throw;
  }
}

HelperWall WarmHelper::firstWall() const {
  if (!options_.sandbox) return HelperWall::None;
  return walls_.front() == Wall::Namespaces ? HelperWall::Namespaces : HelperWall::SystemCalls;
}

void WarmHelper::startBehindSomeWall() {
  if (!options_.sandbox) {
    if (!start(HelperWall::None)) throw PageFailure(Trouble::NoSandbox, whyNot_);
    return;
  }
  while (!walls_.empty()) {
    if (start(firstWall())) return;
    walls_.erase(walls_.begin());
  }
  const std::string reason = whyNot_.empty() ? "" : " (" + whyNot_ + ")";
  throw PageFailure(Trouble::NoSandbox, name_ + " cannot be kept apart on this machine" + reason +
                                            "; --no-sandbox does without");
}

void WarmHelper::spawn(HelperWall wall) {
  ++starts_;
  process_ = std::make_unique<HelperProcess>(
      HelperPlan{program_, wall, options_.limits.memory, options_.temporary});
}

bool WarmHelper::start(HelperWall wall) {
  if (!std::exchange(isStarting_, false)) {
    if (wall == HelperWall::Namespaces && !FindBubblewrap()) {
      whyNot_ = "there is no bwrap";
      return false;
    }
    spawn(wall);
  }
  if (!waitForFirstMessage()) throw PageFailure(Trouble::TooLong, name_ + " does not start");
  const bool isReady = readFirstMessage(wall);
  if (!isReady) process_.reset();
  return isReady;
}

bool WarmHelper::waitForFirstMessage() const {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point deadline = Clock::now() + kTimeToStart;
  while (Clock::now() < deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    if (process_->channel().waitForMessage(left)) return true;
  }
  return false;
}

bool WarmHelper::readFirstMessage(HelperWall wall) {
  std::string message;
  if (process_->receiveFirst(message) == Heard::Message) {
    Ready ready;
    if (Decode(message, ready)) return true;
    Failed failed;
    if (!Decode(message, failed)) ThrowNonsense(name_);
    whyNot_ = OneLine(failed.line);
    if (failed.trouble == Trouble::NoSandbox) return false;
    throw PageFailure(failed.trouble, whyNot_);
  }
  const Ending ending = process_->end(kPatienceAfterStart);
  whyNot_ = OneLine(process_->lastWords());
  if (wall == HelperWall::Namespaces && ending.exitStatus == kNoNamespacesStatus) return false;
  throw PageFailure(Trouble::NotInstalled,
                    name_ + " cannot start: " + (whyNot_.empty() ? ending.how : whyNot_));
}

}  // namespace tarn::pages
