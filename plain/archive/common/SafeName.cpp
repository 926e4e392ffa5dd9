#include "archive/common/SafeName.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>

#include "Platform/Characters.h"
#include "Platform/Utf8.h"
#include "archive/common/FoldedText.h"

namespace tarn::archive {
namespace {

// Nobody sees these; they change how the rest is shown.
bool IsUnseen(char32_t character) {
  constexpr platform::CodePointRange kSeparatorsAndDirections[] = {{0x2028, 0x202E}};
  return platform::IsIn(kSeparatorsAndDirections, character) ||
         u_hasBinaryProperty(static_cast<UChar32>(character), UCHAR_DEFAULT_IGNORABLE_CODE_POINT);
}

bool IsForbidden(char32_t character) {
  constexpr std::u32string_view kForbidden = U"/\\:*?\"<>|";
  return character < 0x20 || (character >= 0x7F && character <= 0x9F) ||
         kForbidden.find(character) != std::u32string_view::npos;
}

// Windows opens a device whatever follows the dot.
bool IsDevice(std::string_view name) {
  std::string base = Folded(name.substr(0, name.find('.')));
  base.erase(base.find_last_not_of(' ') + 1);
  constexpr std::array<std::string_view, 7> kDevices = {"con",     "prn",    "aux",   "nul",
                                                        "conout$", "conin$", "clock$"};
  if (std::find(kDevices.begin(), kDevices.end(), base) != kDevices.end()) return true;
  // Folding has made digits of superscript ones.
  return base.size() == 4 && (base.starts_with("com") || base.starts_with("lpt")) &&
         base[3] >= '0' && base[3] <= '9';
}

// Cuts after a whole character.
void CutTo(std::string& text, size_t bytes) {
  if (text.size() <= bytes) return;
  while (bytes != 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80) --bytes;
  text.resize(bytes);
}

void TrimEnd(std::string& text) { text.erase(text.find_last_not_of(". ") + 1); }

// Where the extension begins, with its dot; the end of a name without one.
size_t ExtensionOf(std::string_view name) {
  constexpr size_t kLongestExtension = 16;
  const size_t dot = name.rfind('.');
  const bool isOne = dot != std::string_view::npos && dot != 0 && dot + 1 < name.size() &&
                     name.size() - dot <= kLongestExtension;
  return isOne ? dot : name.size();
}

// Before the extension; what the whole would be too long by goes from the rest.
std::string WithSuffix(const std::string& name, const std::string& suffix) {
  const size_t dot = ExtensionOf(name);
  const std::string extension = name.substr(dot);
  std::string base = name.substr(0, dot);
  CutTo(base, kLongestSafeName - suffix.size() - extension.size());
  TrimEnd(base);
  return base + suffix + extension;
}

std::string Cleaned(std::string_view name) {
  std::string clean;
  while (!name.empty()) {
    const platform::Character character = platform::FirstCharacter(name);
    if (!character.isWellFormed || IsForbidden(character.codePoint)) {
      clean += '_';
    } else if (!IsUnseen(character.codePoint)) {
      clean += name.substr(0, character.size);
    }
    name.remove_prefix(character.size);
  }
  clean.erase(0, clean.find_first_not_of(".- "));
  TrimEnd(clean);
  return clean;
}

}  // namespace

std::string SafeName(std::string_view name, std::string_view otherwise) {
  // No character becomes longer, and what is cut off the end would be cut all the same; but the
  // extension is there.
  constexpr size_t kLooked = 4096;
  std::string clean;
  if (name.size() > 2 * kLooked) {
    clean = Cleaned(std::string(name.substr(0, kLooked)) +
                    std::string(name.substr(name.size() - kLooked)));
  } else {
    clean = Cleaned(name);
  }
  if (clean.empty()) clean = otherwise;
  if (IsDevice(clean)) clean.insert(0, "_");
  if (clean.size() > kLongestSafeName) clean = WithSuffix(clean, "");
  // What was cut off may have been all that told it from one.
  if (IsDevice(clean)) clean.insert(0, "_");
  return clean;
}

void UniqueNames::take(std::string_view name) { folded_.insert(Folded(name)); }

std::string UniqueNames::make(const std::string& name) {
  if (folded_.insert(Folded(name)).second) return name;
  std::string unique = WithSuffix(name, " (2)");
  size_t& number = numbers_.try_emplace(Folded(unique), 1).first->second;
  do {
    unique = WithSuffix(name, " (" + std::to_string(++number) + ")");
  } while (!folded_.insert(Folded(unique)).second);
  return unique;
}

}  // namespace tarn::archive
