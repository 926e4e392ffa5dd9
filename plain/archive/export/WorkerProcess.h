// WorkerProcess.h - a worker as the export sees it. One folder a system implements it.
#ifndef TARN_ARCHIVE_WORKERPROCESS_H
#define TARN_ARCHIVE_WORKERPROCESS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "archive/export/Beat.h"
#include "siblings/client/Channel.h"

namespace tarn::archive {

struct WorkerPlan {
  std::filesystem::path program;  // that runs RunWorker() when its first word is kWorkerWord
  std::filesystem::path beat;     // the file of its beats
  uint64_t memory = 0;
};

class WorkerProcess {
 public:
  // Throws std::system_error where no process can be had, host::Failure where no file for its
  // beats.
  explicit WorkerProcess(const WorkerPlan& plan);
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;
  // Lets it end by itself, as it does when it is not asked for more, and kills it after two
  // seconds.
  ~WorkerProcess();

  pages::Channel& channel() { return channel_; }
  Beat& beat() { return beat_; }

  // Kills it unless it has ended by itself, and tells how it ended: "was killed by signal 11",
  // "ran out of memory", "ended with exit status 1".
  std::string end();

 private:
  void letEnd();
  // Waits for its end, without memory: the status that the system has of it, if that is known.
  std::optional<int> stop();

  Beat beat_;
  pages::Channel channel_;
  int process_ = 0;
};

// Those that have something to say or have ended, as places in the list; none after that time.
std::vector<size_t> WaitForWorkers(const std::vector<WorkerProcess*>& workers,
                                   std::chrono::milliseconds limit);

// The program that runs.
std::filesystem::path OwnProgram();

}  // namespace tarn::archive

#endif
