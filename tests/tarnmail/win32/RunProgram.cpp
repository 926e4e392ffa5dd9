#include "tarnmail/RunProgram.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>

#include "support/TempDirectory.h"
#include "tarnmail/win32/CommandLine.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;

constexpr DWORD kMinute = 60000;

struct Closer {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
// A handle that children inherit, or INVALID_HANDLE_VALUE, whose closing does nothing.
using Handle = std::unique_ptr<void, Closer>;

SECURITY_ATTRIBUTES* Inherited() {
  static SECURITY_ATTRIBUTES attributes = {sizeof attributes, nullptr, TRUE};
  return &attributes;
}

Handle Open(const fs::path& path, DWORD access, DWORD disposition) {
  return Handle(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, Inherited(),
                            disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// What the program reads, and the test's end of it: no handle without anything to write.
Handle OpenStandardInput(const ProgramCall& call, Handle& writing) {
  if (!call.standardInput) return Open("NUL", GENERIC_READ, OPEN_EXISTING);
  HANDLE ends[2] = {};
  EXPECT_NE(CreatePipe(&ends[0], &ends[1], Inherited(), 0), 0);
  writing.reset(ends[1]);
  return Handle(ends[0]);
}

// A program that ends without reading all leaves a broken pipe, which is no failure of the test.
void Feed(Handle& writing, std::string_view bytes) {
  DWORD written = 0;
  while (!bytes.empty() && WriteFile(writing.get(), bytes.data(), static_cast<DWORD>(bytes.size()),
                                     &written, nullptr) != 0) {
    bytes.remove_prefix(written);
  }
  writing.reset(INVALID_HANDLE_VALUE);
}

// The writing end of a pipe that nobody reads.
Handle BrokenPipe() {
  HANDLE reading = nullptr;
  HANDLE writing = nullptr;
  EXPECT_NE(CreatePipe(&reading, &writing, Inherited(), 0), 0);
  CloseHandle(reading);
  return Handle(writing);
}

Handle OpenStandardOutput(StandardOutput kind, const fs::path& captureFile) {
  switch (kind) {
    case StandardOutput::Closed:
      return Handle(INVALID_HANDLE_VALUE);
    case StandardOutput::BrokenPipe:
      return BrokenPipe();
    case StandardOutput::TakesNothing:
      Open(captureFile, GENERIC_WRITE, CREATE_ALWAYS);
      return Open(captureFile, GENERIC_READ, OPEN_EXISTING);
    default:
      return Open(captureFile, GENERIC_WRITE, CREATE_ALWAYS);
  }
}

// The handles that the program gets, and nothing else that happens to be inheritable.
class HandleList {
 public:
  explicit HandleList(std::vector<HANDLE> handles) : handles_(std::move(handles)) {
    handles_.erase(std::remove(handles_.begin(), handles_.end(), INVALID_HANDLE_VALUE),
                   handles_.end());
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    block_.resize(size);
    EXPECT_NE(InitializeProcThreadAttributeList(list(), 1, 0, &size), 0);
    EXPECT_NE(
        UpdateProcThreadAttribute(list(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles_.data(),
                                  handles_.size() * sizeof(HANDLE), nullptr, nullptr),
        0);
  }
  HandleList(const HandleList&) = delete;
  HandleList& operator=(const HandleList&) = delete;
  ~HandleList() { DeleteProcThreadAttributeList(list()); }

  LPPROC_THREAD_ATTRIBUTE_LIST list() {
    return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(block_.data());
  }

 private:
  std::vector<HANDLE> handles_;
  std::vector<char> block_;
};

// Wine (8.0) says once in thousands of starts on a busy machine that the new process has failed
// before its program began.
BOOL StartTwice(const std::function<BOOL()>& start) {
  if (start() != 0) return TRUE;
  return GetLastError() == ERROR_INTERNAL_ERROR ? start() : FALSE;
}

// The exit status, or -1 for a program that had to be ended or that an exception of the system
// ended.
int WaitFor(HANDLE process) {
  DWORD status = 0;
  if (WaitForSingleObject(process, kMinute) != WAIT_OBJECT_0) {
    TerminateProcess(process, static_cast<UINT>(-1));
    WaitForSingleObject(process, INFINITE);
    return -1;
  }
  EXPECT_NE(GetExitCodeProcess(process, &status), 0);
  return status <= 0xFF ? static_cast<int>(status) : -1;
}

}  // namespace

ProgramResult RunProgram(const ProgramCall& call) {
  const TempDirectory captured;
  const fs::path outFile = captured.path() / "out";
  const fs::path errFile = captured.path() / "err";
  ProgramResult result;
  {
    Handle toInput(INVALID_HANDLE_VALUE);
    Handle input = OpenStandardInput(call, toInput);
    const Handle output = OpenStandardOutput(call.standardOutput, outFile);
    const Handle error = Open(errFile, GENERIC_WRITE, CREATE_ALWAYS);
    HandleList handles({input.get(), output.get(), error.get()});
    STARTUPINFOEXW startup = {};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdInput = input.get();
    startup.StartupInfo.hStdOutput = output.get();
    startup.StartupInfo.hStdError = error.get();
    startup.lpAttributeList = handles.list();
    std::wstring line = CommandLine(call);
    std::wstring environment = EnvironmentBlock(call.environment);
    PROCESS_INFORMATION process = {};
    const auto start = [&] {
      return CreateProcessW(call.program.c_str(), line.data(), nullptr, nullptr, TRUE,
                            CREATE_UNICODE_ENVIRONMENT | EXTENDED_STARTUPINFO_PRESENT,
                            environment.data(),
                            call.workingDirectory.empty() ? nullptr : call.workingDirectory.c_str(),
                            &startup.StartupInfo, &process);
    };
    if (StartTwice(start) == 0) {
      ADD_FAILURE() << call.program << " could not be started: " << GetLastError();
      return result;
    }
    CloseHandle(process.hThread);
    // The program has its own.
    input.reset(INVALID_HANDLE_VALUE);
    Feed(toInput, call.standardInput.value_or(""));
    result.exitStatus = WaitFor(process.hProcess);
    CloseHandle(process.hProcess);
  }
  if (call.standardOutput == StandardOutput::Captured) result.out = ReadWholeFile(outFile);
  result.err = ReadWholeFile(errFile);
  return result;
}

}  // namespace tarn::test
