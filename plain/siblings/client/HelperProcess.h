// HelperProcess.h - a helper that runs: started, watched, ended.
#ifndef TARN_SIBLINGS_CLIENT_HELPERPROCESS_H
#define TARN_SIBLINGS_CLIENT_HELPERPROCESS_H

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>

#include "Channel.h"
#include "HelperCall.h"
#include "ProcessHandle.h"

namespace tarn::pages {

// How it ended. Neither is known when this process does not wait for its children itself.
struct Ending {
  std::string how;     // for a person, as "was killed by signal 11"
  int exitStatus = 0;  // when no signal killed it
};

struct HelperPlan {
  std::filesystem::path program;  // absolute
  HelperWall wall = HelperWall::None;
  uint64_t memory = 0;
  std::filesystem::path temporary;  // where its folder is made; empty: the system's
};

class HelperProcess {
 public:
  // Starts it; whether it can do anything is seen from its first message. Throws std::system_error.
  explicit HelperProcess(const HelperPlan& plan);
  HelperProcess(const HelperProcess&) = delete;
  HelperProcess& operator=(const HelperProcess&) = delete;
  // Kills it and waits until it is gone, with all that it started.
  ~HelperProcess();

  Channel& channel() { return channel_; }

  // Takes its first message, from which it is known among this machine's processes.
  Heard receiveFirst(std::string& message);

  // Has its end of the channel been closed?
  bool isGone() const;

  // What it has in memory now, in bytes; 0 before its first message, or when it is gone.
  uint64_t memoryNow() const;

  // Waits so long for it to end by itself, kills it if it has not, and waits until it is gone.
  Ending end(std::chrono::milliseconds patience = std::chrono::milliseconds(0));

  // The last line it wrote to its standard error.
  std::string lastWords() const;

 private:
  void start(const HelperPlan& plan, const Channel& theirs);
  void makeFolder(const std::filesystem::path& temporary);

  Channel channel_;
  Descriptor words_;         // its standard error, as a pipe that never makes it wait
  Descriptor process_;       // the helper itself, once its first message is there
  Descriptor memory_;        // its statm
  ProcessId child_ = 0;      // the helper, or bubblewrap around it; 0 when it has been waited for
  Descriptor childProcess_;  // the same
  std::filesystem::path folder_;  // its own outside of namespaces; removed with it
};

}  // namespace tarn::pages

#endif
