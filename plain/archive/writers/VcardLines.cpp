#include "archive/writers/VcardLines.h"

#include <algorithm>

#include "archive/writers/ItemText.h"

namespace tarn::archive {
namespace {

constexpr size_t kLongestLine = 75;

// How many of the first bytes end between characters.
size_t WholeCharacters(std::string_view text, size_t most) {
  if (text.size() <= most) return text.size();
  while (most != 0 && (static_cast<unsigned char>(text[most]) & 0xC0) == 0x80) --most;
  return most;
}

}  // namespace

void VcardLines::put(std::string_view name, std::string_view value) {
  std::string line(name);
  line += ':';
  line += value;
  std::string_view rest = line;
  size_t most = kLongestLine;
  while (rest.size() > most) {
    const size_t size = WholeCharacters(rest, most);
    out_.put(rest.substr(0, size)).put("\r\n ");
    rest.remove_prefix(size);
    most = kLongestLine - 1;
  }
  out_.put(rest).put("\r\n");
}

void VcardLines::putText(std::string_view name, std::string_view text) {
  const std::string escaped = EscapedVcardText(text);
  if (!escaped.empty()) put(name, escaped);
}

void VcardLines::putComponents(std::string_view name,
                               std::initializer_list<std::string_view> components) {
  if (std::all_of(components.begin(), components.end(),
                  [](std::string_view component) { return component.empty(); })) {
    return;
  }
  std::string value;
  for (const std::string_view& component : components) {
    if (&component != components.begin()) value += ';';
    value += EscapedVcardText(component);
  }
  put(name, value);
}

std::string EscapedVcardText(std::string_view text) {
  std::string escaped;
  for (const char c : ManyLines(text)) {
    if (c == '\n') {
      escaped += "\\n";
      continue;
    }
    if (c == '\\' || c == ',' || c == ';') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

}  // namespace tarn::archive
