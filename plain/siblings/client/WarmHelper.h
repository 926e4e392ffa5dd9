// WarmHelper.h - one of the two helper programs: started when it is needed, within the first wall
// that the machine allows, kept while it is well, and ended when it is not.
#ifndef TARN_SIBLINGS_CLIENT_WARMHELPER_H
#define TARN_SIBLINGS_CLIENT_WARMHELPER_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "Conversation.h"
#include "HelperProcess.h"
#include "PageHelper.h"

namespace tarn::pages {

class WarmHelper {
 public:
  // `name` is the program's.
  WarmHelper(const HelperOptions& options, const char* name);

  // Starts it unless it runs, without waiting until it is ready. Failures come to light later.
  void prepare();

  // Waits until it is ready, and starts it unless it runs. One that ended since the last document,
  // or has kept much memory from it, is replaced. Throws PageFailure.
  void makeReady();

  bool isRunning() const { return process_ != nullptr && !process_->isGone(); }
  // How many processes there have been.
  uint64_t starts() const { return starts_; }

  // Runs work(conversation). The helper outlives its refusals, and ends with anything else that is
  // thrown; what comes out is PageFailure, or what callbacks throw.
  template <class Work>
  auto converse(const Work& work) {
    try {
      Conversation conversation(*process_, name_, options_.limits);
      return work(conversation);
    } catch (const HelperRefusal&) {
      throw;
    } catch (const std::system_error& error) {
      process_.reset();
      throw PageFailure(Trouble::HelperDied, name_ + ": " + error.what());
    } catch (...) {
      process_.reset();
      throw;
    }
  }

 private:
  HelperWall firstWall() const;
  // Throws std::system_error.
  void spawn(HelperWall wall);
  // Waits until it is ready within the wall. False when the machine does not allow that wall;
  // whyNot_ says why.
  bool start(HelperWall wall);
  // False when there is none in time.
  bool waitForFirstMessage() const;
  bool readFirstMessage(HelperWall wall);
  void startBehindSomeWall();

  const HelperOptions& options_;
  const std::string name_;
  const std::filesystem::path program_;
  std::vector<Wall> walls_;  // without those that the machine has been seen not to allow
  std::string whyNot_;       // of the last of those
  std::unique_ptr<HelperProcess> process_;
  uint64_t starts_ = 0;
  bool isStarting_ = false;  // with the first of walls_; it has not said yet that it is ready
};

}  // namespace tarn::pages

#endif
