// One scan over the bytes of a "\fonttbl" group. Braces are counted, control words outside of the
// three that matter are passed over, and everything else in a font's group is its name.
#include "rtf/RtfFontTable.h"

#include <algorithm>

#include "rtf/CharsetCodePages.h"
#include "rtf/RtfNumbers.h"

namespace tarn {
namespace {

constexpr std::string_view kCharset = "fcharset";
constexpr std::string_view kCodePage = "fcpg";

bool EndsWord(char byte) { return byte == ' ' || byte == '\\' || byte == '{' || byte == '}'; }

bool EndsName(char byte) { return byte == '"' || byte == '\\' || byte == '{' || byte == '}'; }

// False for the bytes between names, too.
bool BeginsName(char byte) {
  return !EndsName(byte) && byte != '\n' && byte != '\r' && byte != ' ' && byte != ';';
}

// The bytes before the first that ends something.
template <typename Ends>
std::string_view Until(std::string_view text, Ends ends) {
  size_t size = 0;
  while (size < text.size() && !ends(text[size])) ++size;
  return text.substr(0, size);
}

class FontTableParser {
 public:
  FontTableParser(RtfFontTable& table, std::string_view text) : table_(table), rest_(text) {}

  // On success `text` is what comes after the table.
  Status parse(std::string_view& text) {
    while (status_.ok() && !closed_ && !rest_.empty()) step();
    if (status_.ok()) text = rest_;
    return status_;
  }

 private:
  void step() {
    const char byte = rest_.front();
    if (depth_ == 1 && BeginsName(byte)) return takeName(true);
    rest_.remove_prefix(1);
    if (byte == '{') {
      if (++depth_ == 1) entry_.number = kNoRtfFont;
    } else if (byte == '}') {
      closeGroup();
    } else if (byte == '\\') {
      takeWord();
    } else if (depth_ == 1 && byte == '"') {
      takeName(false);
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
    if (rest_.size() < 2) {
      status_ = StatusNotSupported;
    } else if (rest_[0] == 'f' && IsRtfDigit(rest_[1])) {
      rest_.remove_prefix(1);
      entry_.number = TakeRtfNumber(rest_);
    } else if (rest_.starts_with(kCharset)) {
      rest_.remove_prefix(kCharset.size());
      takeCharset(TakeRtfNumber(rest_));
    } else if (rest_.starts_with(kCodePage)) {
      rest_.remove_prefix(kCodePage.size());
      entry_.codePage = TakeRtfNumber(rest_);
    } else {
      rest_.remove_prefix(1);
      rest_.remove_prefix(Until(rest_, EndsWord).size());
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

  // Takes the name at the front. Only names without quotes end at a semicolon. The last name of a
  // group is the font's.
  void takeName(bool endsAtSemicolon) {
    const std::string_view name = Until(rest_, [endsAtSemicolon](char byte) {
      return EndsName(byte) || (endsAtSemicolon && byte == ';');
    });
    name_ = CopyRtfFontName(name);
    if (!name_) status_ = StatusOutOfMemory;
    rest_.remove_prefix(name.size());
    if (rest_.starts_with('"') || rest_.starts_with(';')) rest_.remove_prefix(1);
  }

  RtfFontTable& table_;
  std::string_view rest_;
  RtfFontEntry entry_;
  KernelBlock<char> name_;
  int64_t depth_ = 0;
  bool closed_ = false;  // the table's own brace has passed
  Status status_;
};

}  // namespace

RtfFontTable::~RtfFontTable() { ReleaseRtfFontTable(*this); }

Status ParseRtfFontTable(RtfFontTable& table, std::string_view& text) {
  return FontTableParser(table, text).parse(text);
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
