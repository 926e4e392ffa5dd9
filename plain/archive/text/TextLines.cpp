#include "archive/text/TextLines.h"

#include <algorithm>
#include <array>

#include "Platform/Characters.h"
#include "Platform/Utf8.h"
#include "archive/text/CountWhile.h"
#include "archive/text/TerminalText.h"

namespace tarn::archive {
namespace {

constexpr std::string_view kNoBreakSpace = "\xC2\xA0";
constexpr size_t kFewestColumns = 16;  // of a text, however deep it is quoted

// Spaces of several widths, soft hyphens, joiners, marks of order and of bytes.
constexpr std::string_view kBlankCharacters[] = {" ",
                                                 "\t",
                                                 "\r",
                                                 "\n",
                                                 "\f",
                                                 "\xC2\xA0",
                                                 "\xC2\xAD",
                                                 "\xCD\x8F",
                                                 "\xE1\xA0\x8E",
                                                 "\xE2\x80\x87",
                                                 "\xE2\x80\x8A",
                                                 "\xE2\x80\x8B",
                                                 "\xE2\x80\x8C",
                                                 "\xE2\x80\x8D",
                                                 "\xE2\x80\x8E",
                                                 "\xE2\x80\x8F",
                                                 "\xE2\x80\xAF",
                                                 "\xE2\x81\xA0",
                                                 "\xEF\xBB\xBF"};

// Characters that begin no line.
bool ClosesSomething(char32_t point) {
  static constexpr char32_t kClosing[] = {0x3001, 0x3002, 0x300B, 0x300D, 0x300F, 0x3011, 0xFF01,
                                          0xFF09, 0xFF0C, 0xFF0E, 0xFF1A, 0xFF1B, 0xFF1F, 0xFF5D};
  return std::binary_search(std::begin(kClosing), std::end(kClosing), point);
}

// Breaks one line; its pieces have no spaces at their ends.
class LineBreaker {
 public:
  LineBreaker(std::string_view text, size_t first, size_t others)
      : text_(text), most_(first), others_(others) {}

  template <typename Take>
  void run(const Take& take) {
    // Most lines are short enough whatever is in them.
    const bool isShort = text_.size() <= most_;
    if (isShort &&
        CountWhile(text_, [](auto c) { return (c >= ' ') & (c < 0x7F); }) == text_.size()) {
      return take(text_);
    }
    bool wasWide = false;
    while (at_ < text_.size()) {
      const platform::Character character = platform::FirstCharacter(text_.substr(at_));
      const size_t columns = platform::TerminalColumns(character.codePoint);
      const bool isWide = columns == 2;
      const bool isSpace = character.codePoint == ' ';
      if (!isSpace && (isWide || wasWide) && !ClosesSomething(character.codePoint)) noteBreak(0);
      if (!isSpace && columns_ + columns > most_ && break_ != 0) {
        take(text_.substr(start_, break_ - start_));
        startAt(break_ + skip_);
      }
      if (isSpace) noteBreak(character.size);
      at_ += character.size;
      columns_ += columns;
      wasWide = isWide;
    }
    take(text_.substr(start_));
  }

 private:
  // The line may end before this place, and go on after what is skipped.
  void noteBreak(size_t skip) {
    if (at_ == start_) return;
    break_ = at_;
    skip_ = skip;
    columnsAtNext_ = columns_ + (skip != 0 ? 1 : 0);
  }

  void startAt(size_t place) {
    start_ = place;
    columns_ -= columnsAtNext_;
    break_ = 0;
    most_ = others_;
  }

  std::string_view text_;
  size_t most_;
  size_t others_;
  size_t at_ = 0;
  size_t start_ = 0;
  size_t columns_ = 0;
  size_t break_ = 0;  // 0 for none
  size_t skip_ = 0;
  size_t columnsAtNext_ = 0;
};

std::string_view WithoutSpacesAfter(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

// The part of the prefix that both have, as between two paragraphs of one quote.
std::string_view SharedPrefix(std::string_view left, std::string_view right) {
  const size_t most = std::min(left.size(), right.size());
  const auto end =
      std::mismatch(left.begin(), left.begin() + static_cast<ptrdiff_t>(most), right.begin());
  return left.substr(0, static_cast<size_t>(end.first - left.begin()));
}

class LineWriter {
 public:
  explicit LineWriter(size_t width) : width_(width == 0 ? SIZE_MAX : width) {}

  void add(const TextParagraph& paragraph) {
    if (paragraph.hasBlankBefore) {
      addBlank(SharedPrefix(lastPrefix_, paragraph.prefix));
    }
    std::string_view prefix = paragraph.firstPrefix;
    for (std::string_view rest = paragraph.text;;) {
      const size_t end = std::min(rest.find('\n'), rest.size());
      addLine(rest.substr(0, end), paragraph, prefix);
      prefix = paragraph.prefix;
      if (end == rest.size()) break;
      rest.remove_prefix(end + 1);
    }
    lastPrefix_ = paragraph.prefix;
  }

  std::string take() { return std::move(lines_); }

 private:
  void addLine(std::string_view text, const TextParagraph& paragraph, std::string_view prefix) {
    if (!paragraph.isAsIs && WithoutBlanks(text).empty()) return addBlank(paragraph.prefix);
    if (paragraph.isAsIs) return put(prefix, text);
    LineBreaker(text, room(prefix), room(paragraph.prefix)).run([&](std::string_view piece) {
      put(prefix, piece);
      prefix = paragraph.prefix;
    });
  }

  size_t room(std::string_view prefix) const {
    const size_t taken = Columns(prefix);
    return width_ > taken + kFewestColumns ? width_ - taken : kFewestColumns;
  }

  void put(std::string_view prefix, std::string_view text) {
    text = WithoutSpacesAfter(text);
    const size_t start = lines_.size();
    lines_ += prefix;
    while (!text.empty()) {
      const size_t plain = std::min(text.find(kNoBreakSpace), text.size());
      lines_ += text.substr(0, plain);
      text.remove_prefix(plain);
      if (text.empty()) break;
      lines_ += ' ';
      text.remove_prefix(kNoBreakSpace.size());
    }
    while (lines_.size() > start && lines_.back() == ' ') lines_.pop_back();
    // Text as it is may have blank lines too, but none at the front.
    isBlank_ = lines_.size() == start;
    if (!isBlank_ || start != 0) lines_ += '\n';
  }

  void addBlank(std::string_view prefix) {
    if (isBlank_) return;
    lines_ += WithoutSpacesAfter(prefix);
    lines_ += '\n';
    isBlank_ = true;
  }

  const size_t width_;
  std::string lines_;
  std::string lastPrefix_;
  bool isBlank_ = true;  // the last line; there is none at the front
};

}  // namespace

std::string_view WithoutBlanks(std::string_view text) {
  for (bool isDone = false; !isDone;) {
    isDone = true;
    for (const std::string_view blank : kBlankCharacters) {
      if (text.starts_with(blank)) {
        text.remove_prefix(blank.size());
        isDone = false;
      }
      if (text.ends_with(blank)) {
        text.remove_suffix(blank.size());
        isDone = false;
      }
    }
  }
  return text;
}

std::string LinesOf(const std::vector<TextParagraph>& paragraphs, size_t width) {
  LineWriter writer(width);
  for (const TextParagraph& paragraph : paragraphs) writer.add(paragraph);
  return writer.take();
}

}  // namespace tarn::archive
