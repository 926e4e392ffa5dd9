#include "archive/cluster/Machine.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <random>

namespace tarn::archive {
namespace {

constexpr std::array<int, 3> kSignals = {SIGTERM, SIGINT, SIGHUP};

std::atomic<bool> isAskedToStop = false;
std::array<struct sigaction, kSignals.size()> before;

void Note(int) { isAskedToStop = true; }

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

void SyncFolder(const std::filesystem::path& folder) {
  const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0) return;
  (void)fsync(file);
  close(file);
}

}  // namespace tarn::archive
