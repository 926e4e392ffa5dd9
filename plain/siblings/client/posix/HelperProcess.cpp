#include "siblings/client/HelperProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "siblings/client/ProcessHandle.h"

namespace tarn::pages {
namespace {

namespace fs = std::filesystem;

void Check(int error, const char* what) {
  if (error != 0) throw std::system_error(error, std::generic_category(), what);
}

// Nothing of this process but its language goes along.
std::vector<std::string> HelperEnvironment(const fs::path& folder) {
  std::vector<std::string> entries = {"PATH=/usr/bin:/bin", "HOME=" + folder.string(),
                                      "TMPDIR=" + folder.string()};
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string_view text = *entry;
    if (text.starts_with("LANG=") || text.starts_with("LC_")) entries.emplace_back(text);
  }
  return entries;
}

std::vector<char*> Pointers(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}

// What a new process starts with: its files, its signals, a session of its own.
class SpawnPlan {
 public:
  SpawnPlan(int socket, int words) {
    Check(posix_spawn_file_actions_init(&actions_), "posix_spawn");
    Check(posix_spawnattr_init(&attributes_), "posix_spawn");
    add(posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
    add(posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0));
    add(posix_spawn_file_actions_adddup2(&actions_, words, STDERR_FILENO));
    add(posix_spawn_file_actions_adddup2(&actions_, socket, kHelperSocket));
    add(posix_spawn_file_actions_addclosefrom_np(&actions_, kHelperSocket + 1));
    sigset_t signals;
    sigemptyset(&signals);
    add(posix_spawnattr_setsigmask(&attributes_, &signals));
    sigfillset(&signals);
    add(posix_spawnattr_setsigdefault(&attributes_, &signals));
    // Ctrl-C at the terminal is for this process alone.
    constexpr int kFlags = POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
    add(posix_spawnattr_setflags(&attributes_, static_cast<short>(kFlags)));
  }
  SpawnPlan(const SpawnPlan&) = delete;
  SpawnPlan& operator=(const SpawnPlan&) = delete;
  ~SpawnPlan() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }

  pid_t start(std::vector<std::string> words, std::vector<std::string> environment) const {
    pid_t child = 0;
    Check(posix_spawn(&child, words.front().c_str(), &actions_, &attributes_,
                      Pointers(words).data(), Pointers(environment).data()),
          words.front().c_str());
    return child;
  }

 private:
  static void add(int error) { Check(error, "posix_spawn"); }

  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

// The file, or a copy of it whose number is above those that a new process gets under fixed
// numbers.
Descriptor AboveFixedNumbers(int file) {
  return Descriptor(fcntl(file, F_DUPFD_CLOEXEC, kHelperSocket + 1));
}

// Bubblewrap ends with 128 and the number of the signal that killed what it ran.
std::string HowItEnded(int status) {
  constexpr int kKilled = 128;
  if (WIFEXITED(status) && WEXITSTATUS(status) > kKilled && WEXITSTATUS(status) <= kKilled + 64) {
    return "was killed by signal " + std::to_string(WEXITSTATUS(status) - kKilled);
  }
  if (WIFSIGNALED(status)) return "was killed by signal " + std::to_string(WTERMSIG(status));
  return "ended with exit status " + std::to_string(WEXITSTATUS(status));
}

// A process that was killed is gone sooner; it may be held up by a disk, but not by its document.
constexpr std::chrono::milliseconds kTimeToVanish(10'000);

bool Reap(pid_t child, int& status) {
  pid_t waited = 0;
  do {
    waited = waitpid(child, &status, 0);
  } while (waited < 0 && errno == EINTR);
  return waited == child;
}

}  // namespace

HelperProcess::HelperProcess(const HelperPlan& plan) {
  auto [ours, theirs] = Channel::pair();
  channel_ = std::move(ours);
  channel_.askForSender(true);
  try {
    start(plan, theirs);
  } catch (...) {
    end();
    throw;
  }
}

HelperProcess::~HelperProcess() { end(); }

void HelperProcess::start(const HelperPlan& plan, const Channel& theirs) {
  int pipeEnds[2];
  if (pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) Check(errno, "pipe");
  words_ = Descriptor(pipeEnds[0]);
  const Descriptor lowWords(pipeEnds[1]);
  const Descriptor words = AboveFixedNumbers(lowWords.get());
  const Descriptor socket = AboveFixedNumbers(theirs.descriptor());
  if (!words || !socket) Check(errno, "dup");

  HelperCall call = {getpid(), plan.memory, plan.wall, kFolderInNamespaces};
  std::vector<std::string> command;
  if (plan.wall == HelperWall::Namespaces) {
    // Processes there have numbers of their own, and end with bubblewrap, which ends with this one.
    call.parent = 0;
    const auto bubblewrap = FindBubblewrap();
    if (!bubblewrap) Check(ENOENT, "bwrap");
    command = BubblewrapCommand(*bubblewrap, plan.program, plan.memory / 4);
  } else {
    makeFolder(plan.temporary);
    call.folder = folder_;
    command = {plan.program.string()};
  }
  for (std::string& word : HelperArguments(call)) command.push_back(std::move(word));
  child_ = SpawnPlan(socket.get(), words.get())
               .start(std::move(command), HelperEnvironment(call.folder));
  childProcess_ = OpenProcess(child_);
  if (!childProcess_) {
    const int error = errno;
    kill(child_, SIGKILL);
    Check(error, "pidfd_open");
  }
}

void HelperProcess::makeFolder(const fs::path& temporary) {
  const fs::path parent = temporary.empty() ? fs::temp_directory_path() : temporary;
  std::string name = (fs::absolute(parent) / "tarnmail-helper.XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) Check(errno, "a temporary folder");
  folder_ = name;
}

Heard HelperProcess::receiveFirst(std::string& message) {
  pid_t sender = 0;
  const Heard heard = channel_.receiveFrom(message, sender);
  channel_.askForSender(false);
  if (heard == Heard::Message && sender > 0) {
    process_ = OpenProcess(sender);
    const std::string statm = "/proc/" + std::to_string(sender) + "/statm";
    memory_ = Descriptor(open(statm.c_str(), O_RDONLY | O_CLOEXEC));
  }
  return heard;
}

bool HelperProcess::isGone() const { return channel_.isClosed(); }

uint64_t HelperProcess::memoryNow() const {
  // "SIZE RESIDENT SHARED ...", in pages.
  std::array<char, 128> room;
  const ssize_t got = memory_ ? pread(memory_.get(), room.data(), room.size(), 0) : 0;
  if (got <= 0) return 0;
  const char* const first = room.data();
  const char* const last = first + got;
  const char* const space = std::find(first, last, ' ');
  uint64_t pages = 0;
  if (space != last) std::from_chars(space + 1, last, pages);
  return pages * static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
}

Ending HelperProcess::end(std::chrono::milliseconds patience) {
  Ending ending;
  channel_.close();
  if (child_ != 0) {
    (void)WaitForProcess(childProcess_, patience);
    KillProcess(process_);
    KillProcess(childProcess_);
    int status = 0;
    if (Reap(std::exchange(child_, 0), status)) {
      ending.how = HowItEnded(status);
      ending.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
    }
    // Within bubblewrap the helper is no child of this process, but has been killed as well.
    if (process_) (void)WaitForProcess(process_, kTimeToVanish);
  }
  process_.close();
  childProcess_.close();
  memory_.close();
  std::error_code ignored;
  if (!folder_.empty()) fs::remove_all(std::exchange(folder_, {}), ignored);
  return ending;
}

std::string HelperProcess::lastWords() const {
  std::string words(65'536, '\0');
  const ssize_t got = words_ ? read(words_.get(), words.data(), words.size()) : 0;
  words.resize(got > 0 ? static_cast<size_t>(got) : 0);
  while (!words.empty() && words.back() == '\n') words.pop_back();
  return words.substr(words.rfind('\n') + 1);
}

}  // namespace tarn::pages
