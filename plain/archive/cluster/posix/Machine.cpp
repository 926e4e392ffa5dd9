#include "archive/cluster/Machine.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <system_error>

namespace tarn::archive {
namespace {

constexpr std::array<int, 3> kSignals = {SIGTERM, SIGINT, SIGHUP};

std::atomic<bool> isAskedToStop = false;
std::array<struct sigaction, kSignals.size()> before;

void Note(int) { isAskedToStop = true; }

std::string TextOf(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// "BOOT-NAMESPACE-": numbers of processes mean one process each there, at a time.
std::string HomeOfProcesses() {
  std::string boot = TextOf("/proc/sys/kernel/random/boot_id");
  std::erase_if(boot, [](char sign) { return sign == '-' || sign == '\n'; });
  std::error_code error;
  // "pid:[4026531836]"
  std::string space = std::filesystem::read_symlink("/proc/self/ns/pid", error).string();
  std::erase_if(space, [](char sign) { return sign < '0' || sign > '9'; });
  return boot.empty() || space.empty() ? "" : boot + "-" + space + "-";
}

// When a process was started, in ticks of the kernel; empty where there is none.
std::string StartOf(const std::string& number) {
  const std::string text = TextOf("/proc/" + number + "/stat");
  // After the name of the program, which may have any signs in it: the third field and so on.
  const size_t name = text.rfind(')');
  if (name == std::string::npos) return "";
  std::istringstream fields(text.substr(name + 1));
  constexpr int kThird = 3;
  constexpr int kStart = 22;
  std::string field;
  for (int at = kThird; at <= kStart; ++at) fields >> field;
  return fields ? field : "";
}

}  // namespace

StopSignals::StopSignals() {
  isAskedToStop = false;
  for (size_t at = 0; at < kSignals.size(); ++at) {
    sigaction(kSignals[at], nullptr, &before[at]);
    if (before[at].sa_handler == SIG_IGN) continue;
    struct sigaction action = {};
    action.sa_handler = Note;
    sigemptyset(&action.sa_mask);
    sigaction(kSignals[at], &action, nullptr);
  }
}

StopSignals::~StopSignals() {
  for (size_t at = 0; at < kSignals.size(); ++at) sigaction(kSignals[at], &before[at], nullptr);
}

bool StopSignals::isAsked() { return isAskedToStop; }

std::string HostName() {
  std::array<char, 256> name = {};
  if (gethostname(name.data(), name.size() - 1) != 0) return "";
  return name.data();
}

std::string UniqueName() {
  constexpr int kWords = 4;
  constexpr const char* kDigits = "0123456789abcdef";
  std::random_device random;
  std::string name;
  for (int word = 0; word < kWords; ++word) {
    for (unsigned bits = random(), digit = 0; digit < 8; ++digit, bits >>= 4) {
      name += kDigits[bits & 15];
    }
  }
  return name;
}

std::string ProcessName() {
  const std::string home = HomeOfProcesses();
  const std::string number = std::to_string(getpid());
  const std::string start = StartOf(number);
  return home.empty() || start.empty() ? "" : home + number + "-" + start;
}

bool HasEnded(const std::string& process) {
  const std::string home = HomeOfProcesses();
  if (home.empty() || !process.starts_with(home)) return false;
  const size_t dash = process.find('-', home.size());
  if (dash == std::string::npos) return false;
  const std::string number = process.substr(home.size(), dash - home.size());
  pid_t id = 0;
  const auto read = std::from_chars(number.data(), number.data() + number.size(), id);
  if (read.ec != std::errc() || read.ptr != number.data() + number.size() || id <= 0) return false;
  if (kill(id, 0) != 0 && errno == ESRCH) return true;
  const std::string start = StartOf(number);
  return !start.empty() && start != process.substr(dash + 1);
}

void SyncFolder(const std::filesystem::path& folder) {
  const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0) return;
  (void)fsync(file);
  close(file);
}

}  // namespace tarn::archive
