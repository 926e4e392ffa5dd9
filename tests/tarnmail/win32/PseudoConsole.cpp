// Pseudo consoles are there from Windows 10 1809 on.
#undef NTDDI_VERSION
#define NTDDI_VERSION 0x0A000006
#include "tarnmail/win32/PseudoConsole.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <thread>
#include <vector>

#include "tarnmail/win32/CommandLine.h"

namespace tarn::test {
namespace {

constexpr DWORD kMinute = 60000;
constexpr COORD kSize = {200, 50};

std::string ReadToTheEnd(HANDLE pipe) {
  std::string bytes;
  char part[4096];
  DWORD got = 0;
  while (ReadFile(pipe, part, sizeof part, &got, nullptr) != 0) bytes.append(part, got);
  return bytes;
}

void RunIn(HPCON console, const ProgramCall& call) {
  SIZE_T size = 0;
  InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
  std::vector<char> block(size);
  const auto list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(block.data());
  ASSERT_NE(InitializeProcThreadAttributeList(list, 1, 0, &size), 0);
  ASSERT_NE(UpdateProcThreadAttribute(list, 0, PROC_THREAD_ATTRIBUTE_PSEUDOCONSOLE, console,
                                      sizeof console, nullptr, nullptr),
            0);
  STARTUPINFOEXW startup = {};
  startup.StartupInfo.cb = sizeof startup;
  startup.lpAttributeList = list;
  std::wstring line = CommandLine(call);
  std::wstring environment = EnvironmentBlock(call.environment);
  PROCESS_INFORMATION process = {};
  const BOOL started =
      CreateProcessW(call.program.c_str(), line.data(), nullptr, nullptr, FALSE,
                     CREATE_UNICODE_ENVIRONMENT | EXTENDED_STARTUPINFO_PRESENT, environment.data(),
                     call.workingDirectory.c_str(), &startup.StartupInfo, &process);
  DeleteProcThreadAttributeList(list);
  ASSERT_NE(started, 0) << GetLastError();
  if (WaitForSingleObject(process.hProcess, kMinute) != WAIT_OBJECT_0) {
    TerminateProcess(process.hProcess, 1);
    WaitForSingleObject(process.hProcess, INFINITE);
  }
  DWORD status = 1;
  EXPECT_NE(GetExitCodeProcess(process.hProcess, &status), 0);
  EXPECT_EQ(status, 0u);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
}

}  // namespace

std::string ShownByConsole(const ProgramCall& call) {
  HANDLE keys[2] = {};
  HANDLE screen[2] = {};
  EXPECT_NE(CreatePipe(&keys[0], &keys[1], nullptr, 0), 0);
  EXPECT_NE(CreatePipe(&screen[0], &screen[1], nullptr, 0), 0);
  HPCON console = nullptr;
  EXPECT_EQ(CreatePseudoConsole(kSize, keys[0], screen[1], 0, &console), S_OK);
  CloseHandle(keys[0]);
  CloseHandle(screen[1]);
  std::string shown;
  std::thread reader([&] { shown = ReadToTheEnd(screen[0]); });
  if (console != nullptr) {
    RunIn(console, call);
    ClosePseudoConsole(console);
  }
  reader.join();
  CloseHandle(keys[1]);
  CloseHandle(screen[0]);
  return shown;
}

}  // namespace tarn::test
