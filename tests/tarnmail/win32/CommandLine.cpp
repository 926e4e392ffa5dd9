#include "tarnmail/win32/CommandLine.h"

#include <windows.h>

#include <cwchar>
#include <map>

namespace tarn::test {
namespace {

// Quotes always; backslashes count only before a quote.
std::wstring Quoted(const std::wstring& word) {
  std::wstring text = L"\"";
  size_t backslashes = 0;
  for (const wchar_t unit : word) {
    if (unit == L'\\') {
      ++backslashes;
      continue;
    }
    if (unit == L'"') ++backslashes;
    text.append(unit == L'"' ? 2 * backslashes - 1 : backslashes, L'\\');
    text += unit;
    backslashes = 0;
  }
  text.append(2 * backslashes, L'\\');
  return text + L"\"";
}

struct WithoutCase {
  bool operator()(const std::wstring& a, const std::wstring& b) const {
    return _wcsicmp(a.c_str(), b.c_str()) < 0;
  }
};

}  // namespace

std::wstring WideFromTestText(const std::string& text) {
  std::wstring wide;
  for (size_t i = 0; i < text.size();) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
    unsigned codePoint = length == 1 ? byte : byte & (0xFFu >> (length + 1));
    for (size_t k = 1; k < length; ++k) {
      codePoint = (codePoint << 6) | (static_cast<unsigned char>(text.at(i + k)) & 0x3Fu);
    }
    if (codePoint >= 0x10000) {
      wide += static_cast<wchar_t>(0xD800 + ((codePoint - 0x10000) >> 10));
      codePoint = 0xDC00 + ((codePoint - 0x10000) & 0x3FF);
    }
    wide += static_cast<wchar_t>(codePoint);
    i += length;
  }
  return wide;
}

std::wstring CommandLine(const ProgramCall& call) {
  std::wstring line = L"\"" + call.program.native() + L"\"";
  for (const std::string& argument : call.arguments) {
    line += L" " + Quoted(WideFromTestText(argument));
  }
  return line;
}

std::wstring EnvironmentBlock(const std::vector<std::pair<std::string, std::string>>& added) {
  std::map<std::wstring, std::wstring, WithoutCase> variables;
  wchar_t* const own = GetEnvironmentStringsW();
  for (const wchar_t* entry = own; *entry != L'\0'; entry += std::wcslen(entry) + 1) {
    // Names of the shell's own begin with "=".
    const wchar_t* const equals = std::wcschr(entry + 1, L'=');
    if (equals != nullptr) variables[std::wstring(entry, equals)] = equals + 1;
  }
  FreeEnvironmentStringsW(own);
  for (const auto& [name, value] : added) {
    variables[WideFromTestText(name)] = WideFromTestText(value);
  }
  std::wstring block;
  for (const auto& [name, value] : variables) block += name + L"=" + value + L'\0';
  return block + L'\0';
}

}  // namespace tarn::test
