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

// Unknown: memory or the work allowed ran out.
enum class Answer { Covers, CoversNot, Unknown };

Answer AskFace(void* context, const char* faceName, std::u16string_view text) {
  LogFont record;
  const std::u16string_view name = SetFaceName(record, faceName);
  const Font font(record);
  if (font.get() == nullptr) return Answer::Unknown;
  const auto glyphs = AllocateBlock<uint16_t>(text.size(), TARN_HERE);
  if (!glyphs) return Answer::Unknown;
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

// The answer given before, or null.
const RtfCoverageAnswer* Recall(RtfFontTable& table, std::u16string_view text) {
  RtfCoverageMemo& memo = table.coverage;
  if (memo.count != table.count) {
    memo.answers = {};
    memo.count = table.count;
  }
  if (text.empty()) return nullptr;
  for (const RtfCoverageAnswer& answer : memo.answers) {
    if (std::u16string_view(answer.text.data(), answer.length) == text) return &answer;
  }
  return nullptr;
}

void Remember(RtfFontTable& table, std::u16string_view text, bool covered, uint32_t fontNumber) {
  RtfCoverageMemo& memo = table.coverage;
  RtfCoverageAnswer& answer = memo.answers[memo.next];
  if (text.size() > answer.text.size()) return;
  std::copy(text.begin(), text.end(), answer.text.begin());
  answer.length = static_cast<uint32_t>(text.size());
  answer.covered = covered;
  answer.fontNumber = fontNumber;
  memo.next = (memo.next + 1) % memo.answers.size();
}

// False when the work for the table is used up. The last piece may go beyond.
bool Spend(RtfFontTable& table, uint64_t work) {
  if (table.coverage.work >= kMaxCoverageWork) return false;
  table.coverage.work += std::min(work, kMaxCoverageWork);
  return true;
}

// One search, after which each face has been asked until one covers the text.
struct Search {
  RtfFontTable& table;
  void* context;
  std::u16string_view text;
  bool isCertain = true;  // no answer was unknown

  bool covers(const char* faceName) {
    const Answer answer =
        Spend(table, text.size()) ? AskFace(context, faceName, text) : Answer::Unknown;
    if (answer == Answer::Unknown) isCertain = false;
    return answer == Answer::Covers;
  }

  Answer inTable(uint32_t& fontNumber) {
    for (int32_t i = 0; i < table.count; ++i) {
      if (!Spend(table, 1)) return Answer::Unknown;
      const RtfFontEntry& entry = table.entries[i];
      if (entry.name == nullptr || !covers(entry.name)) continue;
      fontNumber = entry.number;
      return Answer::Covers;
    }
    return Answer::CoversNot;
  }

  Answer amongFallbacks(uint32_t& fontNumber) {
    for (const char* const name : kFallbackFaces) {
      if (!Spend(table, 1)) return Answer::Unknown;
      if (HoldsFace(table, name) || !covers(name)) continue;
      const int32_t status = AddRtfFont(table, name, "", 0, 0, fontNumber);
      return status == StatusOk ? Answer::Covers : Answer::Unknown;
    }
    return isCertain ? Answer::CoversNot : Answer::Unknown;
  }
};

}  // namespace

int32_t FontCoversText(void* context, const char* faceName, const char16_t* text, uint64_t length) {
  if (faceName == nullptr || (text == nullptr && length != 0)) return 0;
  return AskFace(context, faceName, {text, length}) == Answer::Covers ? 1 : 0;
}

int32_t FindFontForText(RtfFontTable& table, const char16_t* text, uint64_t length,
                        uint32_t& fontNumber) {
  if (text == nullptr && length != 0) return 0;
  const std::u16string_view units(text, length);
  if (const RtfCoverageAnswer* const known = Recall(table, units); known != nullptr) {
    if (known->covered) fontNumber = known->fontNumber;
    return known->covered ? 1 : 0;
  }
  if (!Spend(table, 0)) return 0;
  const DeviceContext context;
  if (context.get() == nullptr) return 0;
  Search search{table, context.get(), units};
  Answer answer = search.inTable(fontNumber);
  if (answer == Answer::CoversNot) answer = search.amongFallbacks(fontNumber);
  if (answer != Answer::Unknown) {
    Remember(table, units, answer == Answer::Covers, fontNumber);
  }
  return answer == Answer::Covers ? 1 : 0;
}

}  // namespace tarn
