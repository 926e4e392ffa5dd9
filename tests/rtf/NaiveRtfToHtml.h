// NaiveRtfToHtml.h - the scan of RtfToHtml written down once more, step by step and byte by byte,
// to compare with. It has no table, no runs, no index; only the font table parser and the code
// pages are those of the filter.
#ifndef TARN_TESTS_RTF_NAIVERTFTOHTML_H
#define TARN_TESTS_RTF_NAIVERTFTOHTML_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/CodePages.h"
#include "rtf/RtfFontTable.h"

namespace tarn::test {

class NaiveRtfToHtml {
 public:
  explicit NaiveRtfToHtml(std::string_view rtf) : rtf_(rtf) {}

  // After StatusOk the text ends with a NUL.
  Status run() {
    Status status = head();
    while (status == StatusOk && at_ < rtf_.size()) {
      if (text.size() + 128 >= capacity - 1024) capacity += 1024;
      status = step();
    }
    if (status == StatusOk && (text.empty() || text.back() != '\0')) text += '\0';
    return status;
  }

  std::string text;
  uint64_t capacity = 2048;

 private:
  bool is(std::string_view word) const { return rtf_.substr(at_, word.size()) == word; }
  bool digitAt(size_t place) const {
    return place < rtf_.size() && rtf_[place] >= '0' && rtf_[place] <= '9';
  }
  void eatSpace() {
    if (at_ < rtf_.size() && rtf_[at_] == ' ') ++at_;
  }
  uint32_t number() {
    uint32_t value = 0;
    while (digitAt(at_)) value = value * 10 + static_cast<uint32_t>(rtf_[at_++] - '0');
    return value;
  }
  uint32_t numberAndSpace() {
    const uint32_t value = number();
    eatSpace();
    return value;
  }
  void toBrace() {
    while (at_ < rtf_.size() && rtf_[at_] != '}') ++at_;
  }
  void push() { stack_.push_back(fontCodePage_); }
  void pop() {
    if (stack_.empty()) return;
    fontCodePage_ = stack_.back();
    stack_.pop_back();
  }
  void lookUp(uint32_t font) {
    if (font == 0xFFFFFFFF) return;
    for (size_t i = 0; i < fonts_.count(); ++i) {
      if (fonts_.entries[i].number != font) continue;
      fontCodePage_ = static_cast<int32_t>(fonts_.entries[i].codePage);
      return;
    }
  }
  Status fontTable() {
    at_ += 8;
    std::string_view rest = std::string_view(rtf_).substr(at_);
    const Status status = ParseRtfFontTable(fonts_, rest);
    at_ = rtf_.size() - rest.size();
    return status;
  }
  void language() {
    at_ += 5;
    languageCodePage_ = static_cast<int32_t>(numberAndSpace());
    if (languageCodePage_ == 1033) languageCodePage_ = 1252;
    if (languageCodePage_ == 1041) languageCodePage_ = 932;
    if (languageCodePage_ == 1049) languageCodePage_ = 1251;
  }

  Status head() {
    uint32_t font = 0;
    uint32_t defaultFont = 0;
    bool seenFont = false;
    bool seenDefault = false;
    while (at_ < rtf_.size() && !is("{\\*\\htmltag")) {
      if (is("\\ansicpg")) {
        at_ += 8;
        ansiCodePage_ = static_cast<int32_t>(numberAndSpace());
      } else if (is("\\deff")) {
        at_ += 5;
        defaultFont = numberAndSpace();
        seenDefault = true;
      } else if (is("\\f") && digitAt(at_ + 2)) {
        at_ += 2;
        font = numberAndSpace();
        seenFont = true;
      } else if (is("\\fonttbl")) {
        if (const Status status = fontTable(); status != StatusOk) return status;
      }
      if (at_ < rtf_.size()) ++at_;
    }
    if (seenFont) {
      lookUp(font);
    } else if (seenDefault) {
      lookUp(defaultFont);
    }
    push();
    return StatusOk;
  }

  Status step() {
    const char byte = rtf_[at_];
    const char next = at_ + 1 < rtf_.size() ? rtf_[at_ + 1] : 'x';
    if (byte == '{') {
      push();
      ++at_;
    } else if (byte == '}') {
      ++at_;
      pop();
    } else if ((byte == '\r' && next == '\n') || (byte == '\n' && next == '\r')) {
      at_ += 2;
    } else if (byte == '\\') {
      return word();
    } else {
      text += byte;
      ++at_;
    }
    return StatusOk;
  }

  void wordWithText(std::string_view word, std::string_view written, bool eat) {
    at_ += word.size();
    text += written;
    if (eat) eatSpace();
  }

  Status word() {
    if (is("\\*\\htmltag")) {
      tag();
    } else if (is("\\*\\mhtmltag")) {
      at_ += 11;
      pendingTag_ = static_cast<int32_t>(numberAndSpace());
    } else if (is("\\intbl")) {
      wordWithText("\\intbl", " ", false);
    } else if (is("\\qc")) {
      wordWithText("\\qc", " ", false);
    } else if (is("\\pard")) {
      wordWithText("\\pard", "&nbsp;", false);
    } else if (is("\\par")) {
      wordWithText("\\par", "\r\n", true);
    } else if (is("\\tab")) {
      wordWithText("\\tab", "   ", true);
    } else if (is("\\cbpat2")) {
      wordWithText("\\cbpat2", "      ", true);
    } else if (is("\\ltrch")) {
      wordWithText("\\ltrch", "     ", true);
    } else if (is("\\rtlch")) {
      wordWithText("\\rtlch", "", true);
    } else if (is("\\li") || is("\\sb") || is("\\qr")) {
      at_ += 3;
      numberAndSpace();
    } else if (is("\\f") && digitAt(at_ + 2)) {
      at_ += 2;
      lookUp(numberAndSpace());
    } else if (is("\\plain")) {
      at_ += 6;
    } else if (is("\\fi-")) {
      at_ += 4;
      numberAndSpace();
    } else if (is("\\'")) {
      hexRun();
    } else if (is("\\pntext")) {
      at_ += 7;
      toBrace();
    } else if (is("\\htmlrtf")) {
      block();
    } else if (is("\\{") || is("\\}")) {
      text += rtf_[at_ + 1];
      at_ += 2;
    } else if (is("\\ansicpg")) {
      at_ += 8;
      ansiCodePage_ = static_cast<int32_t>(numberAndSpace());
    } else if (is("\\lang")) {
      language();
    } else if (is("\\deff")) {
      at_ += 5;
      numberAndSpace();
    } else if (is("\\fonttbl")) {
      return fontTable();
    } else if ((is("\\u") && digitAt(at_ + 2)) || (at_ + 2 < rtf_.size() && rtf_[at_ + 2] == '-')) {
      unicode();
    } else {
      text += '\\';
      ++at_;
    }
    return StatusOk;
  }

  void tag() {
    at_ += 10;
    if (static_cast<int32_t>(numberAndSpace()) == pendingTag_) {
      toBrace();
      push();
      if (at_ < rtf_.size()) {
        pop();
        ++at_;
      }
    }
    pendingTag_ = -1;
  }

  void block() {
    at_ += 8;
    while (rtf_.size() - at_ > 9) {
      if (is("\\htmlrtf0")) {
        at_ += 9;
        break;
      }
      if (is("\\lang")) {
        language();
      } else if (is("\\f") && digitAt(at_ + 2)) {
        at_ += 2;
        lookUp(numberAndSpace());
      } else {
        if (rtf_[at_] == '{') push();
        if (rtf_[at_] == '}') pop();
        ++at_;
      }
    }
    eatSpace();
  }

  static unsigned hexValue(unsigned char byte) {
    if (byte >= '0' && byte <= '9') return byte - 48U;
    if (byte >= 'A' && byte <= 'Z') return byte - 55U;
    if (byte >= 'a' && byte <= 'z') return byte - 87U;
    return byte;
  }
  unsigned hexValueAt(size_t place) const {
    return place < rtf_.size() ? hexValue(static_cast<unsigned char>(rtf_[place])) : 0;
  }

  void hexRun() {
    int32_t codePage = ansiCodePage_;
    if (languageCodePage_ > 1) codePage = languageCodePage_;
    if (fontCodePage_ > 1) codePage = fontCodePage_;

    const size_t offset = text.size();
    bool goOn = true;
    while (goOn) {
      if (text.size() >= capacity - 1024) capacity += 1024;
      text += static_cast<char>((hexValueAt(at_ + 2) * 16 + hexValueAt(at_ + 3)) & 0xFF);
      goOn = rtf_.size() - at_ >= 8;
      at_ = std::min(at_ + 4, rtf_.size());
      goOn = goOn && is("\\'");
    }

    const std::string raw = text.substr(offset);
    std::u16string wide(2 * raw.size() + 2, u'\0');
    const size_t units = platform::BytesToUtf16(
        codePage == 0 ? platform::AnsiCodePage() : static_cast<uint32_t>(codePage), raw, wide);
    if (units == 0) return;
    text.resize(offset);
    if (offset + 8 * raw.size() > capacity) capacity = offset + 8 * raw.size() + 1024;
    for (size_t i = 0; i < units; ++i) {
      const unsigned unit = wide[i];
      char reference[16];
      std::snprintf(reference, sizeof reference, "&#x%X;", unit);
      if (unit < 128) {
        text += static_cast<char>(unit);
      } else {
        text += reference;
      }
    }
  }

  void unicode() {
    at_ += 2;
    bool negative = false;
    if (at_ < rtf_.size() && rtf_[at_] == '\xFF') {
      negative = true;
      ++at_;
    }
    uint32_t value = numberAndSpace();
    if (negative) value = 0x10000 - value;
    char reference[32];
    std::snprintf(reference, sizeof reference, "&#%d;", static_cast<int32_t>(value));
    const auto room = static_cast<int64_t>(capacity - 1024) - static_cast<int64_t>(text.size());
    const int64_t most = std::clamp<int64_t>(room, 0, 20);
    text += std::string(reference).substr(0, static_cast<size_t>(most));
    eatSpace();
    if (at_ < rtf_.size()) ++at_;
  }

  const std::string_view rtf_;
  size_t at_ = 0;
  int32_t ansiCodePage_ = -1;
  int32_t fontCodePage_ = -1;
  int32_t languageCodePage_ = -1;
  int32_t pendingTag_ = -1;
  std::vector<int32_t> stack_;
  RtfFontTable fonts_;
};

}  // namespace tarn::test

#endif
