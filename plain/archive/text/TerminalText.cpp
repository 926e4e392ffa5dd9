#include "archive/text/TerminalText.h"

#include "Platform/Characters.h"
#include "Platform/Utf8.h"
#include "archive/text/Charsets.h"

namespace tarn::archive {
namespace {

constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

bool EndsALine(char32_t point) {
  return (point >= 0x0A && point <= 0x0D) || point == 0x85 || point == 0x2028 || point == 0x2029;
}

bool IsControl(char32_t point) { return point < 0x20 || (point >= 0x7F && point < 0xA0); }

// Marks that change the direction of writing.
constexpr platform::CodePointRange kLeftOut[] = {
    {0x061C, 0x061C}, {0x200E, 0x200F}, {0x202A, 0x202E}, {0x2066, 0x2069}, {0xFEFF, 0xFEFF},
};

// Printable ASCII at the front, which is most of most mail.
size_t PlainRun(std::string_view text) {
  size_t at = 0;
  while (at < text.size() && text[at] >= ' ' && text[at] < 0x7F) ++at;
  return at;
}

std::string Harmless(std::string_view text, char lineEnd, char tab) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    if (const size_t run = PlainRun(text); run != 0) {
      shown += text.substr(0, run);
      text.remove_prefix(run);
      continue;
    }
    const platform::Character character = platform::FirstCharacter(text);
    const char32_t point = character.codePoint;
    const size_t size = text.starts_with("\r\n") ? 2 : character.size;
    if (EndsALine(point)) {
      shown += lineEnd;
    } else if (point == '\t') {
      shown += tab;
    } else if (!character.isWellFormed || IsControl(point)) {
      shown += kReplacement;
    } else if (!platform::IsIn(kLeftOut, point)) {
      shown += text.substr(0, size);
    }
    text.remove_prefix(size);
  }
  return shown;
}

}  // namespace

std::string HarmlessText(std::string_view text) { return Harmless(text, '\n', '\t'); }

std::string HarmlessLine(std::string_view text) { return Harmless(text, ' ', ' '); }

size_t Columns(std::string_view text) {
  size_t columns = 0;
  while (!text.empty()) {
    if (const size_t run = PlainRun(text); run != 0) {
      columns += run;
      text.remove_prefix(run);
      continue;
    }
    const platform::Character character = platform::FirstCharacter(text);
    columns += platform::TerminalColumns(character.codePoint);
    text.remove_prefix(character.size);
  }
  return columns;
}

std::string CutToColumns(std::string_view text, size_t columns) {
  if (columns == 0) return {};
  size_t used = 0;
  size_t kept = 0;  // bytes before an ellipsis that would fit
  for (size_t at = 0; at < text.size();) {
    const platform::Character character = platform::FirstCharacter(text.substr(at));
    used += platform::TerminalColumns(character.codePoint);
    at += character.size;
    if (used > columns) return std::string(text.substr(0, kept)).append(kEllipsis);
    if (used < columns) kept = at;
  }
  return std::string(text);
}

}  // namespace tarn::archive
