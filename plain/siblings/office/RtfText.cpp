#include "siblings/office/RtfText.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace tarn::pages {

namespace {

void AppendUtf8(std::string& text, uint32_t character) {
  const auto put = [&text](uint32_t byte) { text += static_cast<char>(byte); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | (character >> 6));
    put(0x80 | (character & 0x3F));
  } else {
    put(0xE0 | (character >> 12));
    put(0x80 | ((character >> 6) & 0x3F));
    put(0x80 | (character & 0x3F));
  }
}

class Collecting {
 public:
  void add(const RtfToken& token) {
    switch (token.kind) {
      case RtfTokenKind::GroupStart:
        ++depth_;
        atStart_ = true;
        return;
      case RtfTokenKind::GroupEnd:
        if (depth_ == ignoredDepth_) ignoredDepth_ = 0;
        --depth_;
        break;
      case RtfTokenKind::Word:
        addWord(token);
        break;
      case RtfTokenKind::Symbol:
        addSymbol(token);
        break;
      case RtfTokenKind::Text:
        for (const char c : token.bytes) addCharacter(c);
        break;
      case RtfTokenKind::Binary:
        break;
    }
    atStart_ = false;
  }

  bool inside() const { return depth_ > 0; }
  std::string take() { return std::move(text_); }

 private:
  // A blank after a word belongs to the word: what it parts is parted by the word.
  void addWord(const RtfToken& token) {
    if (token.name == "uc") {
      fallback_ = std::clamp(token.number.value_or(1), 0, 16);
    } else if (token.name == "u" && token.number && hears()) {
      AppendUtf8(text_, static_cast<uint32_t>(*token.number) & 0xFFFF);
      skipped_ = fallback_;
    }
  }

  void addSymbol(const RtfToken& token) {
    if (token.symbol == '*') {
      if (atStart_ && ignoredDepth_ == 0) ignoredDepth_ = depth_;
    } else if (token.symbol == '\'') {
      if (token.number) addCharacter(static_cast<char>(*token.number));
    } else if (token.symbol == '~') {
      addCharacter(' ');
    } else if (token.symbol == '_') {
      addCharacter('-');
    } else if (token.symbol == '\\' || token.symbol == '{' || token.symbol == '}') {
      addCharacter(token.symbol);
    }
  }

  void addCharacter(char c) {
    if (c == '\r' || c == '\n' || c == '\0') return;
    if (skipped_ > 0) {
      --skipped_;
    } else if (hears()) {
      text_ += c;
    }
  }

  bool hears() const { return ignoredDepth_ == 0 && text_.size() < kLongestGroupText - 2; }

  std::string text_;
  int64_t depth_ = 1;
  int64_t ignoredDepth_ = 0;  // of the outermost group that is left out
  int32_t fallback_ = 1;      // characters after a \u for readers that do not know it
  int32_t skipped_ = 0;
  bool atStart_ = false;
};

}  // namespace

std::string RestOfGroup(RtfScanner& scanner) {
  Collecting collecting;
  while (const auto token = scanner.next()) {
    collecting.add(*token);
    if (!collecting.inside()) break;
  }
  return collecting.take();
}

}  // namespace tarn::pages
