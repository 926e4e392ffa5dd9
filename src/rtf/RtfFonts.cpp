#include "rtf/RtfFonts.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <span>
#include <utility>

#include "Common/ByteSearch.h"
#include "rtf/CharsetCodePages.h"
#include "rtf/FontCoverage.h"
#include "rtf/RtfNumbers.h"

namespace tarn {
namespace {

// What a document without a font table gets, before its first font: a form feed is where "\f" would
// be. Documents made so far look that way, and comparisons rely on it.
constexpr std::string_view kEmptyTable = "\x0Conttbl}";

// The second "Symbol" is only ever reached when the first did not cover the text. Both stay: what
// is tried, and in which order, is how documents were made so far.
constexpr std::array<const char*, 6> kCommonFaces = {"Arial",  "Symbol", "MS Gothic",
                                                     "Batang", "Gulim",  "Symbol"};

// What follows the first occurrence of a word, the word included; empty without one.
std::string_view From(std::string_view text, std::string_view word) {
  const size_t at = FindBytes(text, word);
  return at == std::string_view::npos ? std::string_view() : text.substr(at);
}

std::optional<uint32_t> FindNumber(std::string_view text, std::string_view word) {
  std::string_view from = From(text, word);
  if (from.empty()) return std::nullopt;
  from.remove_prefix(word.size());
  return TakeRtfNumber(from);
}

NewRtfFont FontOfCharset(const CharsetCodePage& row) {
  switch (row.charset) {
    case 0:
    case 178:
    case 204:
    case 238:
      return {"Arial", "swiss", row.codePage, row.charset};
    case 2:
      return {"Symbol", "nil", row.codePage, row.charset};
    case 128:
      return {"MS Gothic", "swiss", row.codePage, row.charset};
    default:
      return {"Batang", "swiss", row.codePage, row.charset};
  }
}

// As TrackedBuffer::reserve, but a host that refuses its budget leaves the contents alone, too.
bool ReserveKeeping(TrackedBuffer<char>& buffer, uint64_t count) {
  if (buffer.hasBlock() && buffer.capacity() >= count) return true;
  const uint64_t held = buffer.meter().current;
  if (!buffer.count(buffer.increment() + count).ok()) return false;
  if (buffer.reserve(count) != nullptr) return true;
  buffer.count(held).ignore();
  return false;
}

}  // namespace

RtfFonts::RtfFonts(KernelArray<RtfFontEntry> entries) {
  table_.entries = std::move(entries);
  table_.nextNumber = table_.entries.empty() ? 0 : table_.entries.back().number + 1;
}

void RtfFonts::setAnsiCodePage(uint32_t codePage) {
  table_.ansiCodePage = codePage;
  foundCount_ = 0;
}

Status RtfFonts::prepare(std::string_view document) {
  if (table_.parsed) return StatusOk;
  if (const auto number = FindNumber(document, "\\ansicpg")) setAnsiCodePage(*number);
  if (const auto number = FindNumber(document, "\\deff")) table_.defaultFont = *number;
  const std::string_view start = From(document, "\\fonttbl");
  if (!start.empty()) return readDocumentTable(document.size() - start.size(), start);
  const std::string_view from = From(document, "\\from");
  if (from.empty()) return StatusNotSupported;
  table_.nextNumber = 0;
  table_.tableStart = table_.tableEnd = document.size() - from.size();
  return StatusOk;
}

Status RtfFonts::readDocumentTable(size_t offset, std::string_view text) {
  table_.tableStart = offset;
  std::string_view rest = text;
  if (const Status status = ParseRtfFontTable(table_, rest); !status.ok()) return status;
  const size_t size = text.size() - rest.size();
  table_.tableText.clear();
  if (const Status status = table_.tableText.append(text.data(), size); !status.ok()) return status;
  table_.tableEnd = offset + size;
  table_.nextNumber = table_.entries.empty() ? 0 : table_.entries.back().number + 1;
  table_.parsed = true;
  return StatusOk;
}

Status RtfFonts::readTable(std::string_view& text) {
  if (const Status status = ParseRtfFontTable(table_, text); !status.ok()) return status;
  for (; indexed_ < table_.count(); ++indexed_) {
    const RtfFontEntry& entry = table_.entries[indexed_];
    if (codePages_.find(entry.number) != nullptr) continue;
    if (!codePages_.add(entry.number, entry.codePage)) return StatusOutOfMemory;
  }
  return StatusOk;
}

const uint32_t* RtfFonts::codePageOf(uint32_t number) const {
  return number == kNoRtfFont ? nullptr : codePages_.find(number);
}

// What was found is kept: entries only ever come after it, so it stays the first.
std::optional<uint32_t> RtfFonts::findCarrier(uint32_t codePage) {
  for (const Found& found : std::span(found_).first(std::min(foundCount_, found_.size()))) {
    if (found.codePage == codePage) return found.number;
  }
  for (const RtfFontEntry& entry : table_.entries) {
    ++fontSteps_;
    const bool isOfDocument = entry.codePage == 0 && codePage == table_.ansiCodePage;
    if (entry.codePage != codePage && !isOfDocument) continue;
    found_[foundCount_++ % found_.size()] = {codePage, entry.number};
    return entry.number;
  }
  return std::nullopt;
}

Status RtfFonts::forCodePage(uint32_t codePage, uint32_t& number) {
  if (const auto carrier = findCarrier(codePage)) {
    number = *carrier;
    return StatusOk;
  }
  for (const CharsetCodePage& row : CharsetCodePageTable) {
    if (row.codePage == codePage) return add(FontOfCharset(row), number);
  }
  return StatusBadArgument;
}

Status RtfFonts::defaultFont(uint32_t& number) {
  if (table_.defaultFont == kNoRtfFont) {
    const Status status = forCodePage(table_.ansiCodePage, table_.defaultFont);
    if (!status.ok()) return status;
  }
  number = table_.defaultFont;
  return StatusOk;
}

Status RtfFonts::add(const NewRtfFont& font, uint32_t& number) {
  std::array<char, 100> group;
  const int needed = std::snprintf(group.data(), group.size(), "{\\f%d \\%s \\fcharset%d %s}",
                                   static_cast<int32_t>(table_.nextNumber), font.familyWord,
                                   static_cast<int32_t>(font.charset), font.faceName);
  if (needed < 0) return StatusOutOfMemory;
  const size_t size = std::min(static_cast<size_t>(needed), group.size() - 1);
  group[size - 1] = '}';  // a name that is cut off leaves no group open

  TrackedBuffer<char>& text = table_.tableText;
  const uint64_t held = text.length();
  const uint64_t before = held == 0 ? kEmptyTable.size() : held;
  KernelBlock<char> name = CopyRtfFontName(font.faceName);
  if (!name || !table_.entries.reserve(table_.count() + 1) ||
      !ReserveKeeping(text, before + size)) {
    return StatusOutOfMemory;
  }
  if (held == 0) std::copy(kEmptyTable.begin(), kEmptyTable.end(), text.data());
  text[before + size - 1] = text[before - 1];
  std::memcpy(text.data() + before - 1, group.data(), size);
  text.setLength(before + size);

  number = table_.nextNumber++;
  table_.entries.put({number, font.codePage, font.charset, name.take()});
  table_.changed = true;
  return StatusOk;
}

// One search, after which each face has been asked until one covered the text. Once the work
// allowed is used up, none covers it.
class RtfFonts::GlyphSearch {
 public:
  GlyphSearch(RtfFonts& fonts, std::u16string_view text) : fonts_(fonts), text_(text) {}

  bool hasContext() const { return context_.get() != nullptr; }

  // StatusOk, StatusFailed or StatusOutOfMemory.
  Status inTable(size_t first, uint32_t& number) {
    for (const RtfFontEntry& entry : std::span(fonts_.table_.entries).subspan(first)) {
      const Status covered = covers(entry.name);
      if (covered.ok()) number = entry.number;
      if (covered != StatusFailed) return covered;
    }
    return StatusFailed;
  }

  Status amongCommonFaces(uint32_t& number) {
    for (const char* const face : kCommonFaces) {
      if (tableHas(face)) continue;
      const Status covered = covers(face);
      if (covered.ok()) return fonts_.add({face, "", 0, 0}, number);
      if (covered != StatusFailed) return covered;
    }
    return StatusFailed;
  }

  // Whether another search with this one's fonts would end like it.
  bool isConclusive() const { return hasWork_ && knowsAnswers_; }

 private:
  bool tableHas(std::string_view face) const {
    const KernelArray<RtfFontEntry>& entries = fonts_.table_.entries;
    return std::any_of(entries.begin(), entries.end(), [face](const RtfFontEntry& entry) {
      if (entry.name == nullptr) return false;
      // A name may be as long as the document.
      const std::string_view start(entry.name, strnlen(entry.name, face.size() + 1));
      return EqualsIgnoringCase(start, face);
    });
  }

  // A font without a name covers nothing.
  Status covers(const char* faceName) {
    hasWork_ = fonts_.spend(faceName == nullptr ? 1 : 1 + text_.size());
    if (!hasWork_ || faceName == nullptr) return StatusFailed;
    switch (AskFace(context_.get(), faceName, text_)) {
      case FaceAnswer::Covers:
        return StatusOk;
      case FaceAnswer::NoMemory:
        return StatusOutOfMemory;
      case FaceAnswer::Unknown:
        knowsAnswers_ = false;
        break;
      case FaceAnswer::CoversNot:
        break;
    }
    return StatusFailed;
  }

  RtfFonts& fonts_;
  const std::u16string_view text_;
  const DeviceContext context_;
  bool hasWork_ = true;       // no step was refused
  bool knowsAnswers_ = true;  // every font could be made
};

// False when the work for the table is used up. The last step may go beyond.
bool RtfFonts::spend(uint64_t work) {
  if (coverageWork_ >= kMaxCoverageWork) return false;
  coverageWork_ += std::min(work, kMaxCoverageWork);
  return true;
}

Status RtfFonts::forGlyphs(std::u16string_view text, uint32_t& number) {
  const RtfCoverageAnswer* const known = covered_.find(text);
  if (known != nullptr && known->covered) {
    number = known->fontNumber;
    return StatusOk;
  }
  const size_t asked = known == nullptr ? 0 : known->asked;
  if (known != nullptr && asked == table_.count()) return StatusFailed;
  if (coverageWork_ >= kMaxCoverageWork) return StatusFailed;

  GlyphSearch search(*this, text);
  if (!search.hasContext()) return StatusFailed;
  Status found = search.inTable(asked, number);
  // Where the table's old entries were asked, so were the common faces.
  if (found == StatusFailed && known == nullptr) found = search.amongCommonFaces(number);
  if (found == StatusOutOfMemory) return found;
  if (search.isConclusive()) {
    covered_.keep(text, {found.ok(), found.ok() ? number : 0, table_.count()});
  }
  return found;
}

void RtfFonts::release() {
  ReleaseRtfFontTable(table_);
  codePages_.clear();
  indexed_ = 0;
  foundCount_ = 0;
  covered_.clear();
  coverageWork_ = 0;
}

Status PrepareRtfFontTable(RtfFonts& fonts, const char* text, uint64_t length) {
  return fonts.prepare(text == nullptr ? std::string_view() : std::string_view(text, length));
}

Status FontForCodePage(RtfFonts& fonts, uint32_t codePage, uint32_t& fontNumber) {
  return fonts.forCodePage(codePage, fontNumber);
}

Status AddRtfFont(RtfFonts& fonts, const NewRtfFont& font, uint32_t& fontNumber) {
  return fonts.add(font, fontNumber);
}

Status FindFontForText(RtfFonts& fonts, const char16_t* text, uint64_t length,
                       uint32_t& fontNumber) {
  if (text == nullptr && length != 0) return StatusFailed;
  return fonts.forGlyphs(std::u16string_view(text, length), fontNumber);
}

}  // namespace tarn
