#include "EndingSignals.h"

#include <windows.h>

namespace tarn::host {
namespace {

void (*cleanUpAtEnd)() = nullptr;  // set before the handler is

// Runs on a thread of its own. The system's own handler, which is next, ends the process.
BOOL WINAPI CleanUp(DWORD) {
  cleanUpAtEnd();
  return FALSE;
}

}  // namespace

void WatchEndingSignals(void (*cleanUp)()) {
  cleanUpAtEnd = cleanUp;
  SetConsoleCtrlHandler(CleanUp, TRUE);
}

void EndChildren() {}

}  // namespace tarn::host
