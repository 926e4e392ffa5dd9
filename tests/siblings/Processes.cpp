#include "siblings/Processes.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace tarn::test {
namespace {

namespace fs = std::filesystem;

// "STATE PARENT ..." of a process or a thread by its folder; empty when there is none any more.
std::string StateOf(const fs::path& folder) {
  std::ifstream file(folder / "stat");
  std::string text;
  std::getline(file, text, '\0');
  // "PID (NAME) STATE PARENT ...", where the name may hold anything.
  const size_t end = text.rfind(')');
  return end == std::string::npos ? "" : text.substr(end + 2);
}

// 0 when there is no such process any more.
pid_t ParentOf(pid_t process) {
  const std::string state = StateOf("/proc/" + std::to_string(process));
  return state.empty() ? 0 : static_cast<pid_t>(std::atoi(state.c_str() + 2));
}

std::vector<pid_t> AllProcesses() {
  std::vector<pid_t> processes;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; })) {
      processes.push_back(static_cast<pid_t>(std::stoi(name)));
    }
  }
  return processes;
}

bool IsProgramIn(pid_t process, std::string_view folder) {
  std::ifstream file("/proc/" + std::to_string(process) + "/cmdline");
  std::string program;
  std::getline(file, program, '\0');
  return program.starts_with(folder);
}

// In that state, or ended.
bool AllThreadsAre(char state, pid_t process) {
  std::error_code error;
  const fs::path threads = "/proc/" + std::to_string(process) + "/task";
  for (const fs::directory_entry& thread : fs::directory_iterator(threads, error)) {
    const std::string found = StateOf(thread.path());
    if (!found.empty() && found[0] != state && found[0] != 'Z') return false;
  }
  return true;
}

}  // namespace

std::vector<pid_t> DescendantsOf(pid_t process, std::string_view folder) {
  std::vector<pid_t> found;
  for (const pid_t candidate : AllProcesses()) {
    pid_t ancestor = ParentOf(candidate);
    while (ancestor > 1 && ancestor != process) ancestor = ParentOf(ancestor);
    if (ancestor == process && IsProgramIn(candidate, folder)) found.push_back(candidate);
  }
  return found;
}

bool IsAsleep(pid_t process) { return AllThreadsAre('S', process); }
bool IsStopped(pid_t process) { return AllThreadsAre('T', process); }

}  // namespace tarn::test
