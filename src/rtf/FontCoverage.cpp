#include "rtf/FontCoverage.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <tuple>

#include "Internal/Tarnclasses_.h"
#include "Platform/CodePages.h"
#include "Platform/GlyphCoverage.h"

namespace tarn {
namespace {

// The second "Symbol" is only ever reached when the first did not cover the text. Both stay: what
// is tried, and in which order, is how documents were made so far.
constexpr std::array<const char*, 6> kFallbackFaces = {"Arial",  "Symbol", "MS Gothic",
                                                       "Batang", "Gulim",  "Symbol"};

// LOGFONTW.
struct LogFont {
  int32_t height = 0;
  int32_t width = 0;
  int32_t escapement = 0;
  int32_t orientation = 0;
  int32_t weight = 0;
  std::array<uint8_t, 8> styles{};
  std::array<char16_t, 32> faceName{};
};
static_assert(sizeof(LogFont) == 92 && offsetof(LogFont, faceName) == 28);

class DeviceContext {
 public:
  DeviceContext() : context_(KernelCreateDC(0, TARN_HERE)) {}
  DeviceContext(const DeviceContext&) = delete;
  DeviceContext& operator=(const DeviceContext&) = delete;
  ~DeviceContext() {
    if (context_ != nullptr) KernelDeleteDC(context_, TARN_HERE);
  }
  void* get() const { return context_; }

 private:
  void* context_;
};

class Font {
 public:
  explicit Font(const LogFont& record) : font_(KernelCreateFont(&record, TARN_HERE)) {}
  Font(const Font&) = delete;
  Font& operator=(const Font&) = delete;
  ~Font() {
    if (font_ != nullptr) KernelDeleteFont(font_, TARN_HERE);
  }
  void* get() const { return font_; }

 private:
  void* font_;
};

// The units of the face name in the record.
std::u16string_view SetFaceName(LogFont& record, const char* faceName) {
  constexpr size_t kMostBytes = std::tuple_size_v<decltype(record.faceName)> - 1;
  size_t bytes = 0;
  while (bytes < kMostBytes && faceName[bytes] != '\0') ++bytes;
  const int32_t units =
      platform::BytesToUtf16(platform::AnsiCodePage(), {faceName, bytes}, record.faceName.data(),
                             static_cast<int32_t>(kMostBytes));
  return {record.faceName.data(), static_cast<size_t>(units)};
}

// Unknown: the font could not be made, which counts as a font that does not cover the text.
enum class Answer { Covers, CoversNot, Unknown, NoMemory };

Answer AskFace(void* context, const char* faceName, std::u16string_view text) {
  LogFont record;
  const std::u16string_view name = SetFaceName(record, faceName);
  const Font font(record);
  if (font.get() == nullptr) return Answer::Unknown;
  const auto glyphs = AllocateBlock<uint16_t>(text.size(), TARN_HERE);
  if (!glyphs) return Answer::NoMemory;
  const bool covers = platform::FontHasGlyphs({.context = context,
                                               .font = font.get(),
                                               .faceName = name,
                                               .text = text,
                                               .glyphs = glyphs.get()});
  return covers ? Answer::Covers : Answer::CoversNot;
}

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

// `name` is plain ASCII; case counts in no other letters.
bool HoldsFace(const RtfFontTable& table, std::string_view name) {
  return std::any_of(table.entries, table.entries + table.count, [name](const RtfFontEntry& entry) {
    if (entry.name == nullptr) return false;
    size_t at = 0;
    while (at < name.size() && LowerAscii(entry.name[at]) == LowerAscii(name[at])) ++at;
    return at == name.size() && entry.name[at] == '\0';
  });
}

// False when the work for the table is used up. The last step may go beyond.
bool Spend(RtfFontTable& table, uint64_t work) {
  if (table.coverageWork >= kMaxCoverageWork) return false;
  table.coverageWork += std::min(work, kMaxCoverageWork);
  return true;
}

// One search, after which each face has been asked until one covered the text. Once the work
// allowed is used up, none covers it. All answers are 1, 0 or -1; 1 sets `fontNumber`.
struct Search {
  RtfFontTable& table;
  void* context;
  std::u16string_view text;
  bool hasWork = true;       // no step was refused
  bool knowsAnswers = true;  // every font could be made

  int32_t inTable(int32_t first, uint32_t& fontNumber) {
    for (int32_t i = first; i < table.count; ++i) {
      const int32_t covered = covers(table.entries[i].name);
      if (covered == StatusOk) fontNumber = table.entries[i].number;
      if (covered != StatusFailed) return covered;
    }
    return StatusFailed;
  }

  int32_t amongFallbacks(uint32_t& fontNumber) {
    for (const char* const name : kFallbackFaces) {
      if (HoldsFace(table, name)) continue;
      const int32_t covered = covers(name);
      if (covered == StatusOk) return AddRtfFont(table, name, "", 0, 0, fontNumber);
      if (covered != StatusFailed) return covered;
    }
    return StatusFailed;
  }

 private:
  // A font without a name covers nothing.
  int32_t covers(const char* faceName) {
    hasWork = Spend(table, faceName == nullptr ? 1 : 1 + text.size());
    if (!hasWork || faceName == nullptr) return StatusFailed;
    switch (AskFace(context, faceName, text)) {
      case Answer::Covers:
        return StatusOk;
      case Answer::NoMemory:
        return StatusOutOfMemory;
      case Answer::Unknown:
        knowsAnswers = false;
        break;
      case Answer::CoversNot:
        break;
    }
    return StatusFailed;
  }
};

}  // namespace

int32_t FontCoversText(void* context, const char* faceName, const char16_t* text, uint64_t length) {
  if (context == nullptr || faceName == nullptr || (text == nullptr && length != 0)) return 0;
  return AskFace(context, faceName, {text, length}) == Answer::Covers ? 1 : 0;
}

int32_t FindFontForText(RtfFontTable& table, const char16_t* text, uint64_t length,
                        uint32_t& fontNumber) {
  if (text == nullptr && length != 0) return 0;
  const std::u16string_view units(text, length);
  const RtfCoverageAnswer* const known = table.coverage.find(units);
  if (known != nullptr && known->covered) {
    fontNumber = known->fontNumber;
    return 1;
  }
  const int32_t asked = known == nullptr ? 0 : known->asked;
  if (known != nullptr && asked == table.count) return 0;
  if (table.coverageWork >= kMaxCoverageWork) return 0;

  const DeviceContext context;
  if (context.get() == nullptr) return 0;
  Search search{table, context.get(), units};
  int32_t found = search.inTable(asked, fontNumber);
  // Where the table's old entries were asked, so were the fallbacks.
  if (found == StatusFailed && known == nullptr) found = search.amongFallbacks(fontNumber);
  if (found < StatusFailed) return found;
  const bool covered = found == StatusOk;
  if (search.hasWork && search.knowsAnswers) {
    table.coverage.keep(units, {covered, covered ? fontNumber : 0, table.count});
  }
  return found;
}

}  // namespace tarn
