#include "StandardStreams.h"

#include <windows.h>

#include "WriteAll.h"

namespace tarn::host {
namespace {

bool IsConsole(DWORD stream) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(stream), &mode) != 0;
}

}  // namespace

void PrepareStandardStreams() {
  for (const DWORD stream : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
    // A parent may leave the number of a handle that this process does not have, and a file that is
    // opened later may get that number.
    DWORD flags = 0;
    if (GetHandleInformation(GetStdHandle(stream), &flags) == 0) {
      SetStdHandle(stream, INVALID_HANDLE_VALUE);
    }
  }
}

bool StandardOutputIsTerminal() { return IsConsole(STD_OUTPUT_HANDLE); }

bool StandardErrorIsTerminal() { return IsConsole(STD_ERROR_HANDLE); }

std::error_code WriteStandardOutput(std::string_view bytes) {
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  if (output == nullptr || output == INVALID_HANDLE_VALUE) {
    return {ERROR_INVALID_HANDLE, std::system_category()};
  }
  return WriteAll(output, bytes);
}

void WriteStandardError(std::string_view bytes) {
  const HANDLE output = GetStdHandle(STD_ERROR_HANDLE);
  if (output == nullptr || output == INVALID_HANDLE_VALUE) return;
  (void)WriteAll(output, bytes);
}

}  // namespace tarn::host
