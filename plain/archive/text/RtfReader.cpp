#include "archive/text/RtfReader.h"

#include <algorithm>
#include <utility>

#include "archive/text/CountWhile.h"
#include "archive/text/LinkText.h"
#include "archive/text/RtfSymbols.h"

namespace tarn::archive {
namespace {

constexpr uint32_t kWindows1252 = 1252;
constexpr int32_t kMostToSkip = 255;

bool IsDestination(RtfAction action) {
  return action == RtfAction::FieldInstruction || action == RtfAction::FieldResult ||
         action == RtfAction::FontTable || action == RtfAction::HtmlTag ||
         action == RtfAction::ListMark || action == RtfAction::Shape ||
         action == RtfAction::ShapeInstruction || action == RtfAction::ShapeResult ||
         action == RtfAction::ShapeText || action == RtfAction::Skip ||
         action == RtfAction::UnicodePair || action == RtfAction::UnicodeText;
}

bool IsText(RtfAction action) {
  return action == RtfAction::Cell || action == RtfAction::Character || action == RtfAction::Row ||
         action == RtfAction::Tab;
}

bool IsAscii(std::string_view bytes) { return CountAscii(bytes) == bytes.size(); }

}  // namespace

RtfReader::RtfReader(std::string_view rtf, RtfPurpose purpose) : tokens_(rtf), purpose_(purpose) {
  state_.codePage = documentCodePage_;
  text_.reserve(rtf.size() / 2);
}

std::string RtfReader::read() {
  for (;;) {
    const RtfToken token = tokens_.next();
    if (token.kind == RtfTokenKind::End) break;
    take(token);
    if (token.kind == RtfTokenKind::GroupEnd && depth_ == 0) break;
  }
  flushBytes();
  flushSurrogate();
  return std::move(text_);
}

void RtfReader::take(const RtfToken& token) {
  const bool isStar = token.kind == RtfTokenKind::Symbol && token.character == '*';
  if (isStar && isGroupStart_) {
    isIgnorable_ = true;
    return;
  }
  switch (token.kind) {
    case RtfTokenKind::GroupStart:
      startGroup();
      return;
    case RtfTokenKind::GroupEnd:
      endGroup();
      break;
    case RtfTokenKind::Word:
      takeWord(token);
      break;
    case RtfTokenKind::Symbol:
      takeSymbol(token.character);
      break;
    case RtfTokenKind::Byte:
      putBytes({&token.character, 1});
      break;
    case RtfTokenKind::Text:
      putBytes(token.text);
      break;
    case RtfTokenKind::End:
      break;
  }
  isGroupStart_ = false;
  isIgnorable_ = false;
}

void RtfReader::startGroup() {
  flushBytes();
  skip_ = 0;
  ++depth_;
  if (!stack_.empty() && stack_.back().state == state_) {
    ++stack_.back().groups;
  } else {
    stack_.push_back({state_, 1});
    mostStackEntries_ = std::max(mostStackEntries_, stack_.size());
  }
  isGroupStart_ = true;
  isIgnorable_ = false;
}

void RtfReader::endGroup() {
  flushBytes();
  skip_ = 0;
  if (stack_.empty()) return;
  --depth_;
  const State ended = std::exchange(state_, stack_.back().state);
  if (--stack_.back().groups == 0) stack_.pop_back();
  const auto leaves = [&](Destination destination) {
    return ended.destination == destination && state_.destination != destination;
  };
  if (leaves(Destination::FontTable)) state_.codePage = codePageOfFont(defaultFont_);
  if (leaves(Destination::Instruction)) endInstruction();
  if (ended.isFieldResult && !state_.isFieldResult) endFieldResult();
  if (ended.isShapeText && !state_.isShapeText) {
    hasShapeText_ = text_.size() > shapeTextAt_;
    if (hasShapeText_) startLine();
  }
}

void RtfReader::takeWord(const RtfToken& token) {
  if (state_.destination == Destination::Skipped) return;
  const RtfWord word = FindRtfWord(token.text);
  if (isIgnorable_ && !IsDestination(word.action)) {
    state_.destination = Destination::Skipped;
    return;
  }
  if (word.action == RtfAction::Unicode) return takeUnicode(token.number.value_or(0));
  if (IsText(word.action)) {
    if (!skipsReplacement()) takeTextWord(word);
    return;
  }
  if (word.action == RtfAction::LineEnd || word.action == RtfAction::Page) {
    skip_ = 0;
    return takeTextWord(word);
  }
  flushBytes();
  if (IsDestination(word.action)) {
    // A destination begins its group; in the middle of the document the word would end it.
    if (isGroupStart_ || depth_ > 1) takeDestination(word);
    return;
  }
  if (state_.destination == Destination::FontTable) {
    return takeFontWord(word, token.number.value_or(0));
  }
  takeStateWord(word, token.number);
}

void RtfReader::takeDestination(const RtfWord& word) {
  const bool isReading = purpose_ == RtfPurpose::Reading;
  switch (word.action) {
    case RtfAction::HtmlTag:
      state_.destination =
          purpose_ == RtfPurpose::Html ? Destination::HtmlTag : Destination::Skipped;
      break;
    case RtfAction::FontTable:
      state_.destination = Destination::FontTable;
      break;
    case RtfAction::FieldInstruction:
      state_.destination = isReading ? Destination::Instruction : Destination::Skipped;
      instruction_.clear();
      break;
    case RtfAction::FieldResult:
      if (!isReading) break;
      state_.isFieldResult = true;
      fieldResultAt_ = text_.size();
      break;
    case RtfAction::ListMark:
      if (!isReading) state_.destination = Destination::Skipped;
      break;
    case RtfAction::Shape:
    case RtfAction::ShapeInstruction:
    case RtfAction::ShapeResult:
    case RtfAction::ShapeText:
      takeShapeWord(word);
      break;
    case RtfAction::UnicodePair:
      if (isReading && state_.destination == Destination::Body) state_.pairAt = text_.size();
      break;
    case RtfAction::UnicodeText:
      if (isReading) {
        dropPair();
      } else if (isIgnorable_) {
        state_.destination = Destination::Skipped;
      }
      break;
    default:
      state_.destination = Destination::Skipped;
      break;
  }
}

// The text of a drawing is within what makes it; readers that know no drawings pass over that.
void RtfReader::takeShapeWord(const RtfWord& word) {
  const bool isReading = purpose_ == RtfPurpose::Reading;
  switch (word.action) {
    case RtfAction::Shape:
      hasShapeText_ = false;
      break;
    case RtfAction::ShapeInstruction:
      state_.destination = isReading ? Destination::Shape : Destination::Skipped;
      state_.isShapeText = false;
      break;
    case RtfAction::ShapeText:
      if (state_.destination != Destination::Shape) break;
      state_.destination = Destination::Body;
      state_.isShapeText = true;
      if (isShown()) startLine();
      shapeTextAt_ = text_.size();
      break;
    default:
      if (isReading && hasShapeText_) state_.destination = Destination::Skipped;
      break;
  }
}

void RtfReader::startLine() {
  if (!text_.empty() && !text_.ends_with('\n')) text_ += '\n';
}

// The second text of a pair comes in place of the first.
void RtfReader::dropPair() {
  if (state_.pairAt >= text_.size() || state_.destination != Destination::Body) return;
  text_.resize(state_.pairAt);
  fieldResultAt_ = std::min(fieldResultAt_, text_.size());
  shapeTextAt_ = std::min(shapeTextAt_, text_.size());
}

void RtfReader::takeFontWord(const RtfWord& word, int32_t number) {
  switch (word.action) {
    case RtfAction::Font:
      fontInTable_ = number;
      break;
    case RtfAction::FontCodePage:
      if (number > 0) fontCodePages_[fontInTable_] = static_cast<uint32_t>(number);
      break;
    case RtfAction::FontCharset:
      if (const uint32_t page = CodePageOfRtfCharset(number); page != 0) {
        fontCodePages_.emplace(fontInTable_, page);
      }
      break;
    default:
      break;
  }
}

void RtfReader::takeStateWord(const RtfWord& word, const std::optional<int32_t>& number) {
  switch (word.action) {
    case RtfAction::AnsiCodePage:
      if (number.value_or(0) <= 0) break;
      documentCodePage_ = static_cast<uint32_t>(*number);
      state_.codePage = documentCodePage_;
      break;
    case RtfAction::CodePage:
      documentCodePage_ = static_cast<uint32_t>(word.value);
      state_.codePage = documentCodePage_;
      break;
    case RtfAction::DefaultFont:
      defaultFont_ = number.value_or(0);
      break;
    case RtfAction::Font:
      state_.codePage = codePageOfFont(number.value_or(0));
      break;
    case RtfAction::Plain:
      state_.codePage = codePageOfFont(defaultFont_);
      state_.isHidden = false;
      break;
    case RtfAction::Hidden:
      state_.isHidden = number.value_or(1) != 0;
      break;
    case RtfAction::HtmlRtf:
      state_.isForRtf = number.value_or(1) != 0;
      break;
    case RtfAction::UnicodeSkip:
      state_.skipAfterUnicode = std::clamp(number.value_or(1), 0, kMostToSkip);
      break;
    default:
      break;
  }
}

void RtfReader::takeTextWord(const RtfWord& word) {
  if (!isShown()) return;
  const bool isReading = purpose_ == RtfPurpose::Reading;
  switch (word.action) {
    case RtfAction::Character:
      if (purpose_ == RtfPurpose::Html && !word.entity.empty()) return putUtf8(word.entity);
      return putCodePoint(word.value);
    case RtfAction::Tab:
      return putCodePoint(U'\t');
    case RtfAction::LineEnd:
      return putLineEnd();
    case RtfAction::Cell:
      if (isReading) putCodePoint(U'\t');
      return;
    case RtfAction::Row:
      if (!isReading) return;
      flushBytes();
      if (target().ends_with('\t')) target().pop_back();
      return putLineEnd();
    default:
      if (isReading) putLineEnd();
      return;
  }
}

void RtfReader::takeSymbol(char symbol) {
  const bool isHtml = purpose_ == RtfPurpose::Html;
  switch (symbol) {
    case '\\':
    case '{':
    case '}':
      return putBytes({&symbol, 1});
    case '\n':
    case '\r':
      return takeTextWord({"par", RtfAction::LineEnd});
    case '\t':
      return takeTextWord({"tab", RtfAction::Tab});
    case '~':
      if (!skipsReplacement()) takeTextWord({"", RtfAction::Character, 0xA0, "&nbsp;"});
      return;
    case '_':
      if (skipsReplacement()) return;
      takeTextWord({"", RtfAction::Character, isHtml ? 0xADu : 0x2011u, "&shy;"});
      return;
    default:
      skipsReplacement();
      return;
  }
}

// Numbers beyond 32767 are there as negative ones, as they should, or as they are.
void RtfReader::takeUnicode(int32_t number) {
  flushBytes();
  skip_ = state_.skipAfterUnicode;
  if (!isShown()) return;
  const auto value = static_cast<char32_t>(number < 0 ? number + 0x10000 : number);
  const bool isLow = value >= 0xDC00 && value < 0xE000;
  if (isLow && highSurrogate_ != 0) {
    const char32_t high = std::exchange(highSurrogate_, u'\0');
    return putCodePoint(0x10000 + ((high & 0x3FF) << 10) + (value & 0x3FF));
  }
  if (value >= 0xD800 && value < 0xDC00) {
    flushSurrogate();
    highSurrogate_ = static_cast<char16_t>(value);
    return;
  }
  if (value == 0) return;
  if (purpose_ == RtfPurpose::Reading && value >= 0xF020 && value < 0xF100) {
    return putCodePoint(CharacterOfSymbol(static_cast<unsigned char>(value & 0xFF)));
  }
  putCodePoint(isLow || value > 0x10FFFF ? char32_t{0xFFFD} : value);
}

bool RtfReader::isShown() const {
  switch (state_.destination) {
    case Destination::Body:
      return purpose_ == RtfPurpose::Reading ? !state_.isHidden : !state_.isForRtf;
    case Destination::HtmlTag:
      return !state_.isForRtf;
    case Destination::Instruction:
      return true;
    default:
      return false;
  }
}

bool RtfReader::skipsReplacement() {
  if (skip_ == 0) return false;
  --skip_;
  return true;
}

void RtfReader::putBytes(std::string_view bytes) {
  const size_t skipped = std::min(bytes.size(), static_cast<size_t>(skip_));
  skip_ -= static_cast<int32_t>(skipped);
  bytes.remove_prefix(skipped);
  if (bytes.empty() || !isShown()) return;
  flushSurrogate();
  bytes_ += bytes;
}

void RtfReader::putCodePoint(char32_t codePoint) {
  flushBytes();
  flushSurrogate();
  AppendCharacter(codePoint, target());
}

void RtfReader::putUtf8(std::string_view text) {
  flushBytes();
  flushSurrogate();
  target() += text;
}

void RtfReader::putLineEnd() { putUtf8(purpose_ == RtfPurpose::Reading ? "\n" : "\r\n"); }

void RtfReader::flushBytes() {
  if (bytes_.empty()) return;
  decode(bytes_, state_.codePage);
  bytes_.clear();
}

void RtfReader::flushSurrogate() {
  if (std::exchange(highSurrogate_, u'\0') != 0) AppendCharacter(0xFFFD, target());
}

void RtfReader::decode(std::string_view bytes, uint32_t codePage) {
  if (codePage == kSymbolCodePage) {
    if (purpose_ == RtfPurpose::Reading) {
      for (const char c : bytes) {
        AppendCharacter(CharacterOfSymbol(static_cast<unsigned char>(c)), target());
      }
      return;
    }
    codePage = kWindows1252;
  }
  if (IsAscii(bytes)) {
    target() += bytes;
    return;
  }
  auto found = decoders_.find(codePage);
  if (found == decoders_.end()) {
    std::optional<CharsetDecoder> decoder = CharsetDecoder::ForCodePage(codePage);
    if (!decoder) {
      // No such page: the document's own, or the usual one.
      return decode(bytes, codePage == documentCodePage_ ? kWindows1252 : documentCodePage_);
    }
    found = decoders_.emplace(codePage, std::move(decoder)).first;
  }
  found->second->append(bytes, target());
}

void RtfReader::endInstruction() { linkAddress_ = AddressOfHyperlink(instruction_); }

void RtfReader::endFieldResult() {
  const std::string address = std::exchange(linkAddress_, {});
  const std::string_view shown = std::string_view(text_).substr(fieldResultAt_);
  if (address.empty() || TellsAddress(shown, address)) return;
  if (!shown.empty()) text_ += ' ';
  text_.append("<").append(address).append(">");
}

std::string& RtfReader::target() {
  return state_.destination == Destination::Instruction ? instruction_ : text_;
}

uint32_t RtfReader::codePageOfFont(int32_t font) const {
  const auto found = fontCodePages_.find(font);
  return found == fontCodePages_.end() ? documentCodePage_ : found->second;
}

}  // namespace tarn::archive
