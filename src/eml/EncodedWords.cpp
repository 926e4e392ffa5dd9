#include "eml/EncodedWords.h"

#include <algorithm>
#include <optional>

#include "Common/ByteSearch.h"
#include "Common/TextWriter.h"
#include "eml/Charsets.h"
#include "eml/TransferDecoding.h"

namespace tarn {
namespace {

// Shorter texts, terminator included, hold no word.
constexpr uint64_t kShortestText = 14;
constexpr std::string_view kWordStart = "=?";
constexpr std::string_view kWordEnd = "?=";

// The word "=?charset?encoding?text?=" in [begin, end) of a text.
struct EncodedWord {
  std::string_view charset;
  std::string_view encoding;
  std::string_view text;
  size_t begin;
  size_t end;
};

std::string_view Between(std::string_view text, size_t begin, size_t end) {
  return text.substr(begin, end - begin);
}

// The "?" after a piece of a word from `from` on; npos also when too little follows for the rest.
size_t FindMark(std::string_view text, size_t from) {
  const size_t mark = FindByte(text, '?', from);
  return mark != npos && text.size() - mark > 2 ? mark : npos;
}

// The first word from `from` on; nothing when a delimiter of it is missing. Encoding and text have
// at least one byte.
std::optional<EncodedWord> FindEncodedWord(std::string_view text, size_t from) {
  const size_t begin = FindBytes(text, kWordStart, from);
  if (begin == npos) return std::nullopt;
  const size_t charset = begin + kWordStart.size();
  const size_t charsetEnd = FindMark(text, charset);
  if (charsetEnd == npos) return std::nullopt;
  const size_t encodingEnd = FindMark(text, charsetEnd + 2);
  if (encodingEnd == npos) return std::nullopt;
  const size_t textEnd = FindBytes(text, kWordEnd, encodingEnd + 2);
  if (textEnd == npos) return std::nullopt;
  return EncodedWord{Between(text, charset, charsetEnd), Between(text, charsetEnd + 1, encodingEnd),
                     Between(text, encodingEnd + 1, textEnd), begin, textEnd + kWordEnd.size()};
}

// Is this a word of a charset and an encoding that the reader takes?
bool IsTaken(const EncodedWord& word, CharsetRef charset) {
  if (charset.kind == CharsetNone || charset.kind == CharsetOther) return false;
  return word.encoding == "B" || word.encoding == "Q";
}

// The word's text, in UTF-8 unless it is us-ascii, in the place of what `text` held.
Status DecodeWord(const EncodedWord& word, CharsetRef charset, SizedBytes& text) {
  text.clear();
  const Status decoded = DecodeEncodedWordText(word.encoding.front(), word.text, text);
  if (!decoded.ok()) return decoded;
  if (charset.kind == CharsetUtf8 || charset.kind == CharsetAscii) return StatusOk;
  return ConvertTailToUtf8(text, 0, charset);
}

// Decodes word after word of the text into `out` until one is missing or refused. `rest` is then
// after the last word that was decoded, or 0. The text between two words, and that before a refused
// word, is in `out` already.
Status DecodeWords(std::string_view text, TextWriter& out, size_t& rest, bool* convertToUtf8) {
  SizedBytes decoded;
  rest = 0;
  while (const std::optional<EncodedWord> word = FindEncodedWord(text, rest)) {
    out.append(Between(text, rest, word->begin));

    const CharsetRef charset = ClassifyCharset(word->charset);
    if (!IsTaken(*word, charset)) break;
    if (const Status status = DecodeWord(*word, charset, decoded); !status.ok()) return status;
    out.appendAsIs(decoded.view());
    if (!out.status().ok()) break;
    if (convertToUtf8 != nullptr && charset.kind != CharsetAscii) *convertToUtf8 = true;
    rest = word->end;
  }
  return out.status();
}

}  // namespace

Status DecodeEncodedWords(SizedBytes& text, bool* convertToUtf8) {
  if (text.length() < kShortestText) return StatusOk;
  const std::string_view source = text.text();
  TextWriter out(256, TextWriter::Budget::Ignored);
  size_t rest = 0;
  const Status decoded = DecodeWords(source, out, rest, convertToUtf8);
  if (!decoded.ok() || rest == 0) return decoded;

  if (rest != source.size() && source[rest] != '\0') out.append(source.substr(rest));
  if (out.status().ok()) out.moveInto(text);
  return out.status();
}

Status DecodeEncodedWordText(char encoding, std::string_view text, SizedBytes& output) {
  const uint64_t kept = output.text().size();
  // Base64 that stops short of a group of four still gives three bytes for it.
  const uint64_t room = std::max(text.size(), (text.size() + 3) / 4 * 3);
  Status status;
  const auto decode = [&](char* block) {
    uint64_t written = room;
    if (encoding == 'B') {
      status = DecodeBase64(text, block + kept, written);
      if (!status.ok()) return kept;
    } else {
      written = DecodeQuotedPrintable(text, block + kept, true, kWordEnd);
    }
    block[kept + written] = '\0';
    return kept + written + 1;
  };
  return output.overwrite(kept + room + 1, decode) ? status : StatusOutOfMemory;
}

Status DecodeParameterValue(std::string_view value, SizedBytes& output) {
  if (const Status copied = output.append(value); !copied.ok()) return copied;
  // A word that cannot be decoded is no failure: the raw value is used.
  if (value.starts_with(kWordStart)) DecodeEncodedWords(output, nullptr).ignore();
  return StatusOk;
}

Status DecodePartName(EmlPart& part, std::string_view value) {
  SizedBytes name;
  if (const Status status = DecodeParameterValue(value, name); !status.ok()) return status;
  part.name = std::move(name);
  return StatusOk;
}

}  // namespace tarn
