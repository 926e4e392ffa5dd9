#include "Attempts.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <future>
#include <map>
#include <system_error>
#include <thread>

#include "siblings/client/Descriptor.h"

namespace tarn::test {
namespace {

using pages::Descriptor;

bool Open(const std::string& path) {
  return static_cast<bool>(Descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC)));
}

bool Write(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  return file && write(file.get(), "x", 1) == 1;
}

bool Remove(const std::string& path) { return unlink(path.c_str()) == 0; }

bool Connect(const std::string& port) {
  const Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(std::stoi(port)));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return socket &&
         connect(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
}

bool Truncate(const std::string& path) { return truncate(path.c_str(), 3) == 0; }

// A file of a tebibyte, which takes no room.
bool Grow(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  return file && ftruncate(file.get(), off_t{1} << 40) == 0;
}

bool CutByOpening(const std::string& path) {
  return static_cast<bool>(Descriptor(::open(path.c_str(), O_RDONLY | O_TRUNC | O_CLOEXEC)));
}

bool ChangeMode(const std::string& path) { return chmod(path.c_str(), 0600) == 0; }

bool MakeSocket(const std::string&) {
  return static_cast<bool>(Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)));
}

bool Signal(const std::string& process) { return kill(std::stoi(process), 0) == 0; }

bool SignalParent(const std::string&) { return kill(getppid(), 0) == 0; }

bool Execute(const std::string& path) {
  const pid_t child = vfork();
  if (child == 0) {
    execl(path.c_str(), path.c_str(), nullptr);
    _exit(127);
  }
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

bool Fork(const std::string&) {
  const pid_t child = fork();
  if (child == 0) _exit(0);
  return child > 0 && waitpid(child, nullptr, 0) == child;
}

bool Trace(const std::string& process) {
  return ptrace(PTRACE_ATTACH, std::stoi(process), nullptr, nullptr) == 0;
}

bool Peek(const std::string& place) {
  const size_t comma = place.find(',');
  char byte = 0;
  const iovec own = {&byte, 1};
  const iovec other = {reinterpret_cast<void*>(std::stoull(place.substr(comma + 1))), 1};
  return process_vm_readv(std::stoi(place), &own, 1, &other, 1, 0) == 1;
}

bool Thread(const std::string&) {
  try {
    bool ran = false;
    std::thread([&ran] { ran = true; }).join();
    return ran;
  } catch (const std::system_error&) {
    return false;
  }
}

// Waits until somebody asks it to make a socket.
class EarlyThread {
 public:
  void start() {
    std::thread([this] {
      question_.get_future().wait();
      answer_.set_value(MakeSocket(""));
    }).detach();
  }

  bool ask() {
    question_.set_value();
    return answer_.get_future().get();
  }

 private:
  std::promise<void> question_;
  std::promise<bool> answer_;
};

EarlyThread& TheEarlyThread() {
  static EarlyThread thread;
  return thread;
}

bool AskEarlyThread(const std::string&) { return TheEarlyThread().ask(); }

}  // namespace

void StartEarlyThread() { TheEarlyThread().start(); }

std::optional<std::string> Attempt(const std::string& what, const std::string& with) {
  static const std::map<std::string, bool (*)(const std::string&)> attempts = {
      {"open", Open},           {"write", Write},       {"remove", Remove},
      {"connect", Connect},     {"socket", MakeSocket}, {"signal", Signal},
      {"parent", SignalParent}, {"exec", Execute},      {"fork", Fork},
      {"truncate", Truncate},   {"cut", CutByOpening},  {"chmod", ChangeMode},
      {"trace", Trace},         {"thread", Thread},     {"early", AskEarlyThread},
      {"peek", Peek},           {"grow", Grow},
  };
  const auto found = attempts.find(what);
  if (found == attempts.end()) return std::nullopt;
  return found->second(with) ? "done" : "refused";
}

}  // namespace tarn::test
