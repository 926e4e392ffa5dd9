#include "archive/mail/EncodedWords.h"

#include <glib.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "archive/text/AsciiText.h"

namespace tarn::archive::mail {
namespace {

bool IsBeyondAscii(char c) { return static_cast<unsigned char>(c) >= 128; }

// What must not be in an encoded word, and is in some (RFC 2047 5, 3).
bool IsSpecial(char c) {
  return (c >= 0 && c <= ' ') || c == '\x7F' ||
         std::string_view("()<>@,;:\\\".[]").find(c) != std::string_view::npos;
}

// Where the text of an encoded word begins that has it in quoted-printable:
// "=?iso-8859-1?Q?text?=". npos where none begins at `at`.
size_t StartOfQuotedWord(std::string_view value, size_t at) {
  constexpr std::string_view kQuoted = "?q?";
  if (!value.substr(at).starts_with("=?")) return std::string_view::npos;
  const size_t charset = value.find_first_of("? \t\r\n", at + 2);
  if (charset == std::string_view::npos) return charset;
  if (!StartsWithNoCase(value.substr(charset), kQuoted)) return std::string_view::npos;
  return charset + kQuoted.size();
}

// Whether the text of a word goes on to its own end, and not over an address or another word.
bool IsWholeWord(std::string_view text) {
  constexpr size_t kLongestWord = 1024;
  text = text.substr(0, kLongestWord);
  const size_t end = text.find("?=");
  if (end == std::string_view::npos) return false;
  text = text.substr(0, end);
  return text.find_first_of("<>\"") == std::string_view::npos &&
         text.find("=?") == std::string_view::npos;
}

std::string Encoded(char c) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  return {'=', kDigits[byte >> 4], kDigits[byte & 15]};
}

constexpr std::string_view kFolding = " \t\r\n";

struct Base64Word {
  std::string_view charset;
  std::string text;  // without the blanks of a line that was folded in it
  size_t end = 0;    // after its "?="
};

std::optional<Base64Word> Base64WordAt(std::string_view value, size_t at) {
  constexpr std::string_view kBase64 = "?b?";
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/= \t\r\n";
  if (at > value.size() || !value.substr(at).starts_with("=?")) return std::nullopt;
  const size_t charset = at + 2;
  const size_t charsetEnd = value.find_first_of("? \t\r\n", charset);
  if (charsetEnd == std::string_view::npos) return std::nullopt;
  if (!StartsWithNoCase(value.substr(charsetEnd), kBase64)) return std::nullopt;
  const size_t start = charsetEnd + kBase64.size();
  const size_t end = value.find_first_not_of(kDigits, start);
  if (end == std::string_view::npos || !value.substr(end).starts_with("?=")) return std::nullopt;
  std::string text(value.substr(start, end - start));
  std::erase_if(text, [&](char c) { return kFolding.find(c) != std::string_view::npos; });
  return Base64Word{value.substr(charset, charsetEnd - charset), std::move(text), end + 2};
}

// Adds the bytes of a text, whose padding may be missing.
void AppendDecoded(std::string text, std::string& bytes) {
  constexpr size_t kGroup = 4;
  if (text.empty()) return;
  text.resize((text.size() + kGroup - 1) / kGroup * kGroup, '=');
  std::vector<guchar> decoded(text.size());
  gint state = 0;
  guint save = 0;
  const size_t size = g_base64_decode_step(text.data(), text.size(), decoded.data(), &state, &save);
  bytes.append(reinterpret_cast<const char*>(decoded.data()), size);
}

// Some programs cut one encoded text into words wherever a line is full.
bool AreCutFromOne(const std::vector<std::string>& texts) {
  const auto last = texts.end() - 1;
  const auto isPadded = [](std::string_view text) { return text.ends_with('='); };
  const auto isUneven = [](std::string_view text) { return text.size() % 4 != 0; };
  return std::none_of(texts.begin(), last, isPadded) && std::any_of(texts.begin(), last, isUneven);
}

std::string JoinedBytes(const std::vector<std::string>& texts) {
  std::string bytes;
  if (AreCutFromOne(texts)) {
    std::string all;
    for (const std::string& text : texts) all += text;
    AppendDecoded(std::move(all), bytes);
    return bytes;
  }
  for (const std::string& text : texts) AppendDecoded(text, bytes);
  return bytes;
}

}  // namespace

std::string WithBase64WordsJoined(std::string_view value) {
  std::string joined;
  size_t done = 0;
  size_t at = value.find("=?");
  while (at != std::string_view::npos) {
    const std::optional<Base64Word> first = Base64WordAt(value, at);
    if (!first) {
      at = value.find("=?", at + 1);
      continue;
    }
    std::vector<std::string> texts = {first->text};
    size_t end = first->end;
    for (;;) {
      std::optional<Base64Word> next = Base64WordAt(value, value.find_first_not_of(kFolding, end));
      if (!next || !EqualsNoCase(next->charset, first->charset)) break;
      texts.push_back(std::move(next->text));
      end = next->end;
    }
    if (texts.size() > 1) {
      joined += value.substr(done, at - done);
      joined += "=?";
      joined += first->charset;
      joined += "?Q?";
      for (const char c : JoinedBytes(texts)) joined += Encoded(c);
      joined += "?=";
      done = end;
    }
    at = value.find("=?", end);
  }
  joined += value.substr(done);
  return joined;
}

std::string WithWordsEncoded(std::string_view raw) {
  std::string joined = WithBase64WordsJoined(raw);
  const std::string_view value = joined;
  const size_t lastEnd = value.rfind("?=");
  if (lastEnd == std::string_view::npos) return joined;
  std::string encoded;
  bool inWord = false;
  bool isWhole = false;
  for (size_t at = 0; at < value.size(); ++at) {
    const size_t start = inWord ? std::string_view::npos : StartOfQuotedWord(value, at);
    if (start != std::string_view::npos && start <= lastEnd) {
      encoded += value.substr(at, start - at);
      at = start - 1;
      inWord = true;
      isWhole = IsWholeWord(value.substr(start));
      continue;
    }
    if (value.substr(at).starts_with("?=")) inWord = false;
    const bool isLineEnd = value[at] == '\r' || value[at] == '\n';
    if (inWord && isWhole && isLineEnd) continue;
    if (inWord && (IsBeyondAscii(value[at]) || (isWhole && IsSpecial(value[at])))) {
      encoded += Encoded(value[at]);
    } else {
      encoded += value[at];
    }
  }
  return encoded;
}

}  // namespace tarn::archive::mail
