#include "archive/export/WorkerProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <system_error>
#include <vector>

#include "archive/export/Staging.h"
#include "archive/export/WorkerMessages.h"

namespace tarn::archive {
namespace {

Beat OpenBeat(const std::filesystem::path& path) {
  Outcome<Beat> beat = Beat::open(path);
  if (!beat) CheckStaged(beat.trouble());
  return std::move(*beat);
}

}  // namespace

WorkerProcess::WorkerProcess(const WorkerPlan& plan) : beat_(OpenBeat(plan.beat)) {
  auto [ours, theirs] = pages::Channel::pair();
  channel_ = std::move(ours);
  // dup2 to its own number would keep the mark that closes it.
  const pages::Descriptor socket(fcntl(theirs.descriptor(), F_DUPFD_CLOEXEC, kWorkerSocket + 1));
  std::vector<std::string> words = {plan.program.string(), kWorkerWord, std::to_string(plan.memory),
                                    plan.beat.string()};
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, socket.get(), kWorkerSocket);
  posix_spawn_file_actions_addclosefrom_np(&actions, kWorkerSocket + 1);
  const int error =
      posix_spawn(&process_, words.front().c_str(), &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    process_ = 0;
    throw std::system_error(error, std::generic_category(), plan.program.string());
  }
}

WorkerProcess::~WorkerProcess() {
  if (process_ == 0) return;
  letEnd();
  (void)stop();
}

void WorkerProcess::letEnd() {
  constexpr int kMoments = 2000;
  constexpr timespec kMoment = {0, 1'000'000};
  channel_.close();
  for (int i = 0; i < kMoments; ++i) {
    siginfo_t ended = {};
    if (waitid(P_PID, static_cast<id_t>(process_), &ended, WEXITED | WNOHANG | WNOWAIT) != 0 ||
        ended.si_pid != 0) {
      return;
    }
    nanosleep(&kMoment, nullptr);
  }
}

std::string WorkerProcess::end() {
  if (process_ == 0) return {};
  const std::optional<int> status = stop();
  if (!status) return "ended";
  if (WIFSIGNALED(*status)) return "was killed by signal " + std::to_string(WTERMSIG(*status));
  if (WEXITSTATUS(*status) == kOutOfMemory) return "ran out of memory";
  return "ended with exit status " + std::to_string(WEXITSTATUS(*status));
}

std::optional<int> WorkerProcess::stop() {
  const bool wasGone = channel_.isClosed();
  channel_.close();
  int status = 0;
  pid_t waited = 0;
  // One whose end of the channel is closed is about to end, and how is worth knowing.
  if (!wasGone) kill(process_, SIGKILL);
  do {
    waited = waitpid(process_, &status, 0);
  } while (waited < 0 && errno == EINTR);
  process_ = 0;
  return waited < 0 ? std::nullopt : std::optional(status);
}

std::vector<size_t> WaitForWorkers(const std::vector<WorkerProcess*>& workers,
                                   std::chrono::milliseconds limit) {
  std::vector<pollfd> entries;
  entries.reserve(workers.size());
  for (WorkerProcess* const worker : workers) {
    entries.push_back({worker->channel().descriptor(), POLLIN, 0});
  }
  std::vector<size_t> ready;
  if (poll(entries.data(), entries.size(), static_cast<int>(limit.count())) <= 0) return ready;
  for (size_t index = 0; index < entries.size(); ++index) {
    if (entries[index].revents != 0) ready.push_back(index);
  }
  return ready;
}

std::filesystem::path OwnProgram() { return std::filesystem::read_symlink("/proc/self/exe"); }

}  // namespace tarn::archive
