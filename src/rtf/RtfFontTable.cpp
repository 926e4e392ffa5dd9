// One scan over the bytes of a "\fonttbl" group. Braces are counted, control words outside of the
// three that matter are passed over, and everything else in a font's group is its name.
#include "rtf/RtfFontTable.h"

#include <algorithm>

#include "Common/ByteSearch.h"
#include "rtf/CharsetCodePages.h"
#include "rtf/RtfNumbers.h"

namespace tarn {
namespace {

constexpr std::string_view kCharset = "fcharset";
constexpr std::string_view kCodePage = "fcpg";

bool EndsWord(char byte) { return byte == ' ' || byte == '\\' || byte == '{' || byte == '}'; }

bool EndsName(char byte) { return byte == '"' || byte == '\\' || byte == '{' || byte == '}'; }

// False for the bytes between names, which begin none.
bool BeginsName(char byte) { return byte != '\n' && byte != '\r' && byte != ' ' && byte != ';'; }

class FontTableParser {
 public:
  FontTableParser(RtfFontTable& table, const char* cursor, const char* end)
      : table_(table), at_(cursor), end_(end) {}

  // StatusOk with the place after what was read in `cursor`, or the failure.
  int32_t parse(const char*& cursor) {
    while (status_ == StatusOk && !closed_ && at_ < end_) step();
    if (status_ == StatusOk) cursor = at_;
    return status_;
  }

 private:
  void step() {
    const char byte = *at_++;
    if (byte == '{') {
      if (++depth_ == 1) entry_.number = kNoRtfFont;
    } else if (byte == '}') {
      closeGroup();
    } else if (byte == '\\') {
      takeWord();
    } else if (depth_ == 1 && byte == '"') {
      takeName(at_, false);
    } else if (depth_ == 1 && BeginsName(byte)) {
      takeName(at_ - 1, true);
    }
  }

  void closeGroup() {
    --depth_;
    if (depth_ == 0) appendEntry();
    closed_ = depth_ < 0;
  }

  void appendEntry() {
    entry_.name = name_.get();
    KernelArray<RtfFontEntry>& entries = table_.entries;
    if (entries.size() >= kMaxRtfFonts || !entries.reserve(entries.size() + 1)) {
      status_ = StatusOutOfMemory;
      return;
    }
    entries.put(entry_);
    name_.take();
    entry_ = {};
  }

  // A backslash that fewer than two bytes follow is a document cut off in the middle of a word.
  void takeWord() {
    if (end_ - at_ < 2) {
      status_ = StatusNotSupported;
    } else if (*at_ == 'f' && IsRtfDigit(at_[1])) {
      ++at_;
      entry_.number = TakeRtfNumber(at_, end_);
    } else if (StartsWith(at_, end_, kCharset)) {
      at_ += kCharset.size();
      takeCharset(TakeRtfNumber(at_, end_));
    } else if (StartsWith(at_, end_, kCodePage)) {
      at_ += kCodePage.size();
      entry_.codePage = TakeRtfNumber(at_, end_);
    } else {
      ++at_;
      while (at_ < end_ && !EndsWord(*at_)) ++at_;
    }
  }

  // A charset that the list lacks says nothing about the code page.
  void takeCharset(uint32_t charset) {
    for (const CharsetCodePage& row : CharsetCodePageTable) {
      if (row.charset > charset) return;
      if (row.charset == charset) {
        entry_.codePage = row.codePage;
        return;
      }
    }
  }

  // Takes the name that begins at `start`; the cursor is after its first byte or its opening quote.
  // Only names without quotes end at a semicolon. The last name of a group is the font's.
  void takeName(const char* start, bool endsAtSemicolon) {
    while (at_ < end_ && !EndsName(*at_) && !(endsAtSemicolon && *at_ == ';')) ++at_;
    name_ = CopyRtfFontName(std::string_view(start, static_cast<size_t>(at_ - start)));
    if (!name_) status_ = StatusOutOfMemory;
    if (at_ < end_ && (*at_ == '"' || *at_ == ';')) ++at_;
  }

  RtfFontTable& table_;
  const char* at_;
  const char* const end_;
  RtfFontEntry entry_;
  KernelBlock<char> name_;
  int64_t depth_ = 0;
  bool closed_ = false;  // the table's own brace has passed
  int32_t status_ = StatusOk;
};

}  // namespace

RtfFontTable::~RtfFontTable() { ReleaseRtfFontTable(*this); }

int32_t ParseRtfFontTable(RtfFontTable& table, const char*& cursor, const char* end) {
  return FontTableParser(table, cursor, end).parse(cursor);
}

void ReleaseRtfFontTable(RtfFontTable& table) {
  for (const RtfFontEntry& entry : table.entries) {
    if (entry.name != nullptr) KernelFree(entry.name, TARN_HERE);
  }
  table.entries.clear();
}

KernelBlock<char> CopyRtfFontName(std::string_view name) {
  auto copy = AllocateBlock<char>(name.size() + 1, TARN_HERE);
  if (!copy) return copy;
  std::copy(name.begin(), name.end(), copy.get());
  copy[name.size()] = '\0';
  return copy;
}

}  // namespace tarn
