#include "archive/catalogue/PdfText.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "archive/catalogue/Catalogue.h"

namespace tarn::archive {
namespace {

constexpr rlim_t kMostSeconds = 20;              // of the processor
constexpr rlim_t kMostMemory = rlim_t{1} << 30;  // of addresses
constexpr const char* kProgram = "pdftotext";

class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { close(); }

  int number() const { return number_; }
  bool isOpen() const { return number_ >= 0; }
  void set(int number) { number_ = number; }
  void close() {
    if (isOpen()) ::close(number_);
    number_ = -1;
  }

 private:
  int number_;
};

std::string FoundProgram() {
  const char* const paths = std::getenv("PATH");
  std::string_view rest = paths == nullptr ? "/usr/bin:/bin" : paths;
  while (!rest.empty()) {
    const std::string_view folder = rest.substr(0, rest.find(':'));
    rest.remove_prefix(folder.size() < rest.size() ? folder.size() + 1 : folder.size());
    // A folder that is not written from the root depends on where the command runs.
    if (!folder.starts_with('/')) continue;
    std::string program = std::string(folder) + '/' + kProgram;
    if (access(program.c_str(), X_OK) == 0) return program;
  }
  return {};
}

const std::string& Program() {
  static const std::string program = FoundProgram();
  return program;
}

bool WriteWhole(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

// The bytes as a file without a name, at its start; -1 where they cannot be had.
int FileOf(ByteSource& bytes) {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  std::string name = (folder / "tarnmail-XXXXXX").string();
  const int file = mkostemp(name.data(), O_CLOEXEC);
  if (file < 0) return -1;
  unlink(name.c_str());
  std::array<char, 65536> room;
  size_t total = 0;
  for (;;) {
    const Outcome<size_t> got = bytes.read(room);
    if (got && *got == 0) break;
    if (got) total += *got;
    if (!got || total > kMostPdf || !WriteWhole(file, {room.data(), *got})) {
      close(file);
      return -1;
    }
  }
  lseek(file, 0, SEEK_SET);
  return file;
}

#if defined(__x86_64__)
constexpr uint32_t kMachine = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr uint32_t kMachine = AUDIT_ARCH_AARCH64;
#else
constexpr uint32_t kMachine = 0;
#endif

// From here to the end of the process no socket is made. Told as an error, which the program takes.
bool ForbidSockets() {
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return false;
  if constexpr (kMachine == 0) return true;
  constexpr uint32_t kRefused = SECCOMP_RET_ERRNO | EACCES;
  sock_filter rules[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, kMachine, 1, 0),
      BPF_STMT(BPF_RET | BPF_K, kRefused),
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      // The numbers of x32 on x86-64 begin there.
      BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, 0x40000000, 3, 0),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_socket, 2, 0),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_io_uring_setup, 1, 0),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
      BPF_STMT(BPF_RET | BPF_K, kRefused),
  };
  const sock_fprog program{static_cast<unsigned short>(std::size(rules)), rules};
  return prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) == 0;
}

bool Limit(__rlimit_resource what, rlim_t most) {
  // What the process is forbidden already stays so.
  rlimit limit{};
  if (getrlimit(what, &limit) != 0) return false;
  const rlim_t least = std::min(most, limit.rlim_max);
  limit = {least, least};
  return setrlimit(what, &limit) == 0;
}

// In the new process, which has but one thread and may not allocate.
[[noreturn]] void BecomeProgram(const char* program, int input, int output, int nowhere) {
  // Numbers of standard streams are taken, so that none of these is overwritten.
  const bool isReady = dup2(input, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0 &&
                       dup2(nowhere, STDERR_FILENO) >= 0 && prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 &&
                       Limit(RLIMIT_CPU, kMostSeconds) && Limit(RLIMIT_AS, kMostMemory) &&
                       Limit(RLIMIT_CORE, 0) && ForbidSockets();
  if (isReady) {
    char name[] = "pdftotext";
    char quiet[] = "-q";
    char encoding[] = "-enc";
    char utf8[] = "UTF-8";
    char noBreaks[] = "-nopgbrk";
    char standardInput[] = "-";
    char standardOutput[] = "-";
    char* words[] = {name, quiet, encoding, utf8, noBreaks, standardInput, standardOutput, nullptr};
    char language[] = "LC_ALL=C";
    char* environment[] = {language, nullptr};
    execve(program, words, environment);
  }
  _exit(127);
}

struct Answer {
  std::string text;
  bool isWhole = false;  // it ended, or more was said than is wanted
};

Answer ReadAnswer(int output, std::chrono::milliseconds time) {
  Answer answer;
  std::array<char, 65536> room;
  const auto end = std::chrono::steady_clock::now() + std::min(time, kMostPdfTime);
  while (answer.text.size() <= kMostCatalogueText) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        end - std::chrono::steady_clock::now());
    if (left.count() <= 0) return answer;
    pollfd waiting{output, POLLIN, 0};
    const int ready = poll(&waiting, 1, static_cast<int>(left.count()));
    if (ready < 0 && errno != EINTR) return answer;
    if (ready <= 0) continue;
    const ssize_t got = read(output, room.data(), room.size());
    if (got < 0 && errno != EINTR) return answer;
    if (got == 0) break;
    if (got > 0) answer.text.append(room.data(), static_cast<size_t>(got));
  }
  answer.isWhole = true;
  return answer;
}

int WaitFor(pid_t process) {
  int status = 0;
  while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

}  // namespace

bool CanReadPdf() { return !Program().empty(); }

std::string TextOfPdf(ByteSource& bytes, std::chrono::milliseconds time) {
  if (!CanReadPdf()) return {};
  const Descriptor input(FileOf(bytes));
  const Descriptor nowhere(open("/dev/null", O_WRONLY | O_CLOEXEC));
  int ends[2];
  if (!input.isOpen() || !nowhere.isOpen() || pipe2(ends, O_CLOEXEC) != 0) return {};
  const Descriptor output(ends[0]);
  Descriptor toProgram(ends[1]);
  const pid_t process = fork();
  if (process < 0) return {};
  if (process == 0) {
    BecomeProgram(Program().c_str(), input.number(), toProgram.number(), nowhere.number());
  }
  toProgram.close();
  Answer answer = ReadAnswer(output.number(), time);
  const bool isEnough = answer.text.size() > kMostCatalogueText;
  if (!answer.isWhole || isEnough) kill(process, SIGKILL);
  const int status = WaitFor(process);
  const bool isGood = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  // A text that was broken off by a limit would differ from one run to the next.
  if (!isGood && !isEnough) return {};
  answer.text.resize(CutCatalogueText(answer.text).size());
  return std::move(answer.text);
}

}  // namespace tarn::archive
