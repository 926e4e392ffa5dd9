#include "support/Environment.h"

#include <stdlib.h>

#include <filesystem>

namespace tarn::test {
namespace {

std::wstring Widen(const std::string& text) {
  return std::filesystem::path(std::u8string(text.begin(), text.end())).wstring();
}

}  // namespace

const char* const kTempVariable = "TMP";

// The runtime library hands it on to the system.
void SetVariable(const char* name, const char* value) {
  ::_wputenv_s(Widen(name).c_str(), value == nullptr ? L"" : Widen(value).c_str());
}

std::optional<std::string> GetVariable(const char* name) {
  const wchar_t* const value = ::_wgetenv(Widen(name).c_str());
  if (value == nullptr) return std::nullopt;
  const std::u8string text = std::filesystem::path(value).u8string();
  return std::string(text.begin(), text.end());
}

}  // namespace tarn::test
