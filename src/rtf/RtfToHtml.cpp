// The scan has a head, which only collects code pages and fonts, and a body, which writes. In the
// body a step is a byte, a line end or a control word; before each of them the output sees to its
// room (RtfScanOutput.h), so that a step need not. Stretches of plain bytes are copied at once, in
// as many steps as they have bytes.
//
// No byte is looked at more often than a small number of times: every step moves the cursor on, and
// what a step costs does not depend on what was met before, be it fonts or open groups.
//
// Memory: the output is at most twice as long as the text, as an escape of 4 bytes becomes a
// reference of 8 (more only where a code page makes two units of one byte). Besides it there are 4
// bytes for each escape of the longest hex run, 8 for each group that changes the code page, and
// for each of at most kMaxRtfFonts fonts its entry, its name and 8 bytes to find it by. The block
// of the output doubles as it grows, but not beyond twice the text; those of the groups and of the
// numbers of fonts grow by half.
#include "rtf/RtfToHtml.h"

#include <algorithm>

#include "rtf/FindAnyByte.h"
#include "rtf/RtfCodePageStack.h"
#include "rtf/RtfControlWords.h"
#include "rtf/RtfFonts.h"
#include "rtf/RtfHexRun.h"
#include "rtf/RtfNumbers.h"
#include "rtf/RtfScanOutput.h"

namespace tarn {
namespace {

constexpr uint32_t kNone = UINT32_MAX;

// The output of a text, but for code pages that make two units of one byte.
constexpr uint64_t kMostPerByte = 2;
constexpr uint64_t kSpareBytes = 4 * RtfScanOutput::kGrowth;

constexpr std::string_view kBlockEnd = "\\htmlrtf0";

// The loop through a dropped block ends so many bytes before the end, and sees no "\htmlrtf0"
// there.
constexpr size_t kBlockTail = 9;

uint32_t CodePageOfLanguage(uint32_t language) {
  switch (language) {
    case 1033:
      return 1252;
    case 1041:
      return 932;
    case 1049:
      return 1251;
    default:
      return language;  // tried as a code page, which it hardly ever is
  }
}

class RtfScan {
 public:
  explicit RtfScan(std::string_view text) : rest_(text) {}

  Status run() {
    if (!output_.start(kMostPerByte * rest_.size() + kSpareBytes)) return StatusOutOfMemory;
    const Status status = scanHead();
    return status.ok() ? scanBody() : status;
  }

  bool finish(SizedBytes& text) { return output_.finish(text); }

 private:
  // At a "{" that a tag follows at once.
  bool startsTagGroup() const {
    const std::string_view after = rest_.substr(1);
    return after.starts_with('\\') && FindRtfControlWord(after).action == RtfWordAction::Tag;
  }

  void lookUpFont(uint32_t number) {
    if (const uint32_t* const codePage = fonts_.codePageOf(number)) fontCodePage_ = *codePage;
  }

  void takeLanguage() { languageCodePage_ = CodePageOfLanguage(TakeRtfNumber(rest_)); }

  void goToBrace() { rest_.remove_prefix(std::min(rest_.find('}'), rest_.size())); }

  Status scanHead();
  Status takeHeadWord();
  Status scanBody();
  Status takeStep();
  Status takeWord();
  Status act(RtfWordAction action, std::string_view word);
  void takeLineEnd(char other);
  Status takeTag();
  Status dropBlock();
  Status stepInBlock();
  void takeBlockWord();
  void takeUnicode(std::string_view word);
  Status takeHexRun(std::string_view word);

  std::string_view rest_;  // from the next byte on
  RtfScanOutput output_;
  uint32_t ansiCodePage_ = kNone;
  uint32_t fontCodePage_ = kNone;
  uint32_t languageCodePage_ = kNone;
  uint32_t pendingTag_ = kNone;
  uint32_t defaultFont_ = kNone;
  uint32_t currentFont_ = kNone;
  bool hasCurrentFont_ = false;
  RtfCodePageStack stack_;
  RtfFonts fonts_;
};

// After whatever it finds the head steps over one byte more, so that of two words in a row, as in
// "\ansicpg1252\deff0", only the first is seen.
Status RtfScan::scanHead() {
  while (true) {
    rest_.remove_prefix(FindAnyByte<'{', '\\'>(rest_));
    if (rest_.empty()) break;
    if (rest_.front() == '\\') {
      if (const Status status = takeHeadWord(); !status.ok()) return status;
    } else if (startsTagGroup()) {
      break;
    }
    if (!rest_.empty()) rest_.remove_prefix(1);
  }
  lookUpFont(hasCurrentFont_ ? currentFont_ : defaultFont_);
  return stack_.push(fontCodePage_) ? StatusOk : StatusOutOfMemory;
}

// Steps over those words only that the head knows.
Status RtfScan::takeHeadWord() {
  const RtfControlWord& word = FindRtfControlWord(rest_);
  switch (word.action) {
    case RtfWordAction::AnsiCodePage:
      rest_.remove_prefix(word.text.size());
      ansiCodePage_ = TakeRtfNumber(rest_);
      break;
    case RtfWordAction::DefaultFont:
      rest_.remove_prefix(word.text.size());
      defaultFont_ = TakeRtfNumber(rest_);
      break;
    case RtfWordAction::Font:
      rest_.remove_prefix(word.text.size());
      currentFont_ = TakeRtfNumber(rest_);
      hasCurrentFont_ = true;
      break;
    case RtfWordAction::FontTable:
      rest_.remove_prefix(word.text.size());
      return fonts_.readTable(rest_);
    default:
      break;
  }
  return StatusOk;
}

Status RtfScan::scanBody() {
  while (!rest_.empty()) {
    const size_t plain = FindAnyByte<'{', '}', '\\', '\r', '\n'>(rest_);
    if (!output_.copyInSteps(rest_.substr(0, plain))) return StatusOutOfMemory;
    rest_.remove_prefix(plain);
    if (rest_.empty()) break;
    if (!output_.makeRoom()) return StatusOutOfMemory;
    if (const Status status = takeStep(); !status.ok()) return status;
  }
  return StatusOk;
}

Status RtfScan::takeStep() {
  switch (rest_.front()) {
    case '{':
      if (!stack_.push(fontCodePage_)) return StatusOutOfMemory;
      rest_.remove_prefix(1);
      break;
    case '}':
      rest_.remove_prefix(1);
      stack_.pop(fontCodePage_);
      break;
    case '\r':
      takeLineEnd('\n');
      break;
    case '\n':
      takeLineEnd('\r');
      break;
    default:
      return takeWord();
  }
  return StatusOk;
}

// A pair of line end bytes, in either order, is layout of the RTF; a single one is text.
void RtfScan::takeLineEnd(char other) {
  const char byte = rest_.front();
  rest_.remove_prefix(1);
  if (rest_.starts_with(other)) {
    rest_.remove_prefix(1);
  } else {
    output_.put(byte);
  }
}

Status RtfScan::takeWord() {
  const std::string_view at = rest_;
  const RtfControlWord& word = FindRtfControlWord(at);
  output_.write(word.written);
  rest_.remove_prefix(word.text.size());
  return act(word.action, at);
}

// Does what is left to do once the word is stepped over; `word` begins with its backslash.
Status RtfScan::act(RtfWordAction action, std::string_view word) {
  switch (action) {
    case RtfWordAction::None:
      break;
    case RtfWordAction::EatSpace:
      EatRtfSpace(rest_);
      break;
    case RtfWordAction::SkipParameter:
    case RtfWordAction::DefaultFont:
      TakeRtfNumber(rest_);
      break;
    case RtfWordAction::Tag:
      return takeTag();
    case RtfWordAction::ReplacedTag:
      pendingTag_ = TakeRtfNumber(rest_);
      break;
    case RtfWordAction::Font:
      lookUpFont(TakeRtfNumber(rest_));
      break;
    case RtfWordAction::HexRun:
      return takeHexRun(word);
    case RtfWordAction::SkipToBrace:
      goToBrace();
      break;
    case RtfWordAction::SkipBlock:
      return dropBlock();
    case RtfWordAction::AnsiCodePage:
      ansiCodePage_ = TakeRtfNumber(rest_);
      break;
    case RtfWordAction::Language:
      takeLanguage();
      break;
    case RtfWordAction::FontTable:
      // The table's own brace is read with it, so that its group stays on the stack.
      return fonts_.readTable(rest_);
    case RtfWordAction::Unicode:
      takeUnicode(word);
      break;
  }
  return StatusOk;
}

// After "\*\htmltag". The text of a tag is text like any other, unless its replacement has just
// been written; then the group is dropped. What its "{" put on the stack stays there.
Status RtfScan::takeTag() {
  const uint32_t number = TakeRtfNumber(rest_);
  if (number == pendingTag_) {
    goToBrace();
    if (!stack_.push(fontCodePage_)) return StatusOutOfMemory;
    if (!rest_.empty()) {
      stack_.pop(fontCodePage_);
      rest_.remove_prefix(1);
    }
  }
  pendingTag_ = kNone;
  return StatusOk;
}

// After "\htmlrtf", with whatever follows it: a closing word that has no block opens one. Text is
// dropped, but fonts, languages and groups count. Without an end, the last bytes are text again.
Status RtfScan::dropBlock() {
  while (rest_.size() > kBlockTail) {
    rest_.remove_prefix(FindAnyByte<'{', '}', '\\'>(rest_.substr(0, rest_.size() - kBlockTail)));
    if (rest_.size() <= kBlockTail) break;
    if (rest_.starts_with(kBlockEnd)) {
      rest_.remove_prefix(kBlockEnd.size());
      break;
    }
    if (const Status status = stepInBlock(); !status.ok()) return status;
  }
  EatRtfSpace(rest_);
  return StatusOk;
}

Status RtfScan::stepInBlock() {
  switch (rest_.front()) {
    case '{':
      rest_.remove_prefix(1);
      return stack_.push(fontCodePage_) ? StatusOk : StatusOutOfMemory;
    case '}':
      rest_.remove_prefix(1);
      stack_.pop(fontCodePage_);
      return StatusOk;
    default:
      takeBlockWord();
      return StatusOk;
  }
}

// Any other word than these is stepped into: what comes after its backslash is dropped byte by
// byte.
void RtfScan::takeBlockWord() {
  const RtfControlWord& word = FindRtfControlWord(rest_);
  switch (word.action) {
    case RtfWordAction::Language:
      rest_.remove_prefix(word.text.size());
      takeLanguage();
      break;
    case RtfWordAction::Font:
      rest_.remove_prefix(word.text.size());
      lookUpFont(TakeRtfNumber(rest_));
      break;
    default:
      rest_.remove_prefix(1);
      break;
  }
}

// Writes the number two bytes after the backslash, and steps over the character that readers
// without Unicode show. No sign is understood: "\u-4064?" writes "&#0;", takes the "-" for that
// character, and leaves "4064?" as text.
void RtfScan::takeUnicode(std::string_view word) {
  rest_ = word.substr(2);
  output_.writeReference(static_cast<int32_t>(TakeRtfNumber(rest_)));
  EatRtfSpace(rest_);
  if (!rest_.empty()) rest_.remove_prefix(1);
}

// The code pages are signed here: the initial -1 is none, and neither is a number that has wrapped
// below zero, nor 0 or 1. Whether there is such a code page shows in the conversion.
Status RtfScan::takeHexRun(std::string_view word) {
  const auto isGiven = [](uint32_t codePage) { return static_cast<int32_t>(codePage) > 1; };
  const uint32_t codePage = isGiven(fontCodePage_)       ? fontCodePage_
                            : isGiven(languageCodePage_) ? languageCodePage_
                                                         : ansiCodePage_;
  rest_ = word;
  return DecodeRtfHexRun(rest_, output_, codePage) ? StatusOk : StatusOutOfMemory;
}

}  // namespace

Status RtfToHtml(SizedBytes& text) {
  RtfScan scan(text.view());
  if (const Status status = scan.run(); !status.ok()) return status;
  return scan.finish(text) ? StatusOk : StatusOutOfMemory;
}

}  // namespace tarn
