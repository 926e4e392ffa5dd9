#include "eml/EncodedWords.h"

#include <algorithm>

#include "Common/ByteSearch.h"
#include "eml/Charsets.h"
#include "eml/FieldText.h"
#include "eml/TransferDecoding.h"

namespace tarn {
namespace {

// Shorter texts, terminator included, hold no word.
constexpr uint64_t kShortestText = 14;

// The places of "=?charset?B?text?=" in a text.
struct EncodedWord {
  const char* begin;
  const char* charsetEnd;  // the "?" behind the charset
  const char* letterEnd;   // the "?" behind the letter
  const char* textEnd;     // the "?=" behind the text
  const char* charset() const { return begin + 2; }
  const char* text() const { return letterEnd + 1; }
  const char* end() const { return textEnd + 2; }
};

// The first word from p on; false when a delimiter of it is missing.
bool FindEncodedWord(const char* p, const char* end, EncodedWord& word) {
  word.begin = FindBytes(p, end, "=?");
  if (word.begin == nullptr) return false;
  word.charsetEnd = FindByte(word.charset(), end, '?');
  if (word.charsetEnd == nullptr || end - word.charsetEnd <= 2) return false;
  word.letterEnd = FindByte(word.charsetEnd + 2, end, '?');
  if (word.letterEnd == nullptr || end - word.letterEnd <= 2) return false;
  word.textEnd = FindBytes(word.letterEnd + 2, end, "?=");
  return word.textEnd != nullptr;
}

// Is this a word of a charset and an encoding that the reader takes?
bool IsTaken(const EncodedWord& word, CharsetRef charset) {
  if (word.letterEnd != word.charsetEnd + 2) return false;
  if (charset.kind == CharsetNone || charset.kind == CharsetOther) return false;
  return word.charsetEnd[1] == 'B' || word.charsetEnd[1] == 'Q';
}

// The word's text, in UTF-8 unless it is us-ascii, in the place of what `text` held.
int32_t DecodeWord(const EncodedWord& word, CharsetRef charset, SizedBytes& text) {
  text.setLength(0);
  const auto length = static_cast<uint64_t>(word.textEnd - word.text());
  const int32_t decoded = DecodeEncodedWordText(word.charsetEnd[1], word.text(), length, text);
  if (decoded != StatusOk) return decoded;
  if (charset.kind == CharsetUtf8 || charset.kind == CharsetAscii) return StatusOk;
  return ConvertTailToUtf8(text, 0, charset);
}

// Decodes word after word of [start, end) into `out` until one is missing or refused. `rest` is
// then behind the last word that was decoded, or start. The text between two words, and that in
// front of a refused word, is in `out` already.
int32_t DecodeWords(const char* start, const char* end, FieldText& out, const char*& rest,
                    uint32_t* convertToUtf8) {
  SizedBytes decoded;
  EncodedWord word;
  rest = start;
  while (rest < end && FindEncodedWord(rest, end, word)) {
    const auto between = static_cast<uint64_t>(word.begin - rest);
    int32_t status = out.append(rest, between);
    if (status != StatusOk) return status;

    const CharsetRef charset = ClassifyCharset(word.charset(), word.charsetEnd);
    if (!IsTaken(word, charset)) break;
    status = DecodeWord(word, charset, decoded);
    if (status == StatusOk) status = out.appendAsIs(decoded.data(), decoded.length());
    if (status != StatusOk) return status;
    if (convertToUtf8 != nullptr && charset.kind != CharsetAscii) *convertToUtf8 = 1;
    rest = word.end();
  }
  return StatusOk;
}

}  // namespace

int32_t DecodeEncodedWords(SizedBytes& text, uint32_t* convertToUtf8) {
  if (text.data() == nullptr || text.length() < kShortestText) return StatusOk;
  const char* const start = text.data();
  const char* const end = start + text.text().size();

  FieldText out;
  const char* rest = nullptr;
  const int32_t decoded = DecodeWords(start, end, out, rest, convertToUtf8);
  if (decoded != StatusOk) return decoded;
  if (rest == start) return StatusOk;

  if (rest != end && *rest != '\0') {
    const int32_t status = out.append(rest, static_cast<uint64_t>(end - rest));
    if (status != StatusOk) return status;
  }
  out.moveTo(text);
  return StatusOk;
}

int32_t DecodeEncodedWordText(char encoding, const char* text, uint64_t length,
                              SizedBytes& output) {
  const uint64_t kept = output.text().size();
  // Base64 that stops short of a group of four still gives three bytes for it.
  uint64_t written = std::max(length, (length + 3) / 4 * 3);
  auto* const block =
      static_cast<char*>(KernelRealloc(output.data(), kept + written + 1, TARN_HERE));
  if (block == nullptr) return StatusOutOfMemory;
  output.setData(block);
  output.setLength(kept);

  if (encoding == 'B') {
    const int32_t status = DecodeBase64(text, length, block + kept, written);
    if (status != StatusOk) return status;
  } else {
    written = DecodeQuotedPrintable({text, length}, block + kept, true, {text + length, 2});
  }
  block[kept + written] = '\0';
  output.setLength(kept + written + 1);
  return StatusOk;
}

int32_t DecodeParameterValue(const char* start, const char* end, SizedBytes& output) {
  const int32_t status = AppendTerminated(output, start, static_cast<uint64_t>(end - start));
  if (status != StatusOk) return status;
  // A word that cannot be decoded is no failure: the raw value is used.
  if (StartsWith(start, end, "=?")) DecodeEncodedWords(output, nullptr);
  return StatusOk;
}

int32_t DecodePartName(EmlPart& part, const char* start, const char* end) {
  SizedBytes value;
  const int32_t status = DecodeParameterValue(start, end, value);
  if (status != StatusOk) return status;
  part.name = value.take();
  return StatusOk;
}

}  // namespace tarn
