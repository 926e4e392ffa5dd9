#include "siblings/layout/DocumentPictures.h"

#include <glib.h>

#include <algorithm>
#include <charconv>
#include <cstddef>

#include "siblings/layout/AsciiText.h"
#include "siblings/layout/HtmlScan.h"

namespace tarn::pages {

namespace {

// The value of a digit of base64 in either of its alphabets; -1 for any other character.
int ValueOfBase64(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+' || c == '-') return 62;
  return c == '/' || c == '_' ? 63 : -1;
}

std::string DecodeBase64(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3 + 3);
  uint32_t bits = 0;
  int count = 0;
  for (const char c : text) {
    if (c == '=') break;
    const int value = ValueOfBase64(c);
    if (value < 0) continue;
    bits = bits << 6 | static_cast<uint32_t>(value);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFF);
  }
  return bytes;
}

// Letters and a colon: "cid:a@b".
bool HasScheme(std::string_view name) {
  const size_t colon = name.find(':');
  return colon != std::string_view::npos &&
         std::all_of(name.begin(), name.begin() + static_cast<std::ptrdiff_t>(colon),
                     [](char c) { return g_ascii_isalpha(c); });
}

bool IsPlainName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && !HasScheme(name) &&
         name.find_first_of(std::string_view("/\\\0", 3)) == std::string_view::npos;
}

}  // namespace

std::string DecodePercents(std::string_view text) {
  std::string bytes;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && g_ascii_isxdigit(text[i + 1]) &&
        g_ascii_isxdigit(text[i + 2])) {
      bytes += static_cast<char>(g_ascii_xdigit_value(text[i + 1]) * 16 +
                                 g_ascii_xdigit_value(text[i + 2]));
      i += 2;
    } else {
      bytes += text[i];
    }
  }
  return bytes;
}

std::optional<std::string> DecodeDataUrl(std::string_view url) {
  constexpr std::string_view kScheme = "data:";
  constexpr std::string_view kBase64 = ";base64";
  if (url.size() < kScheme.size() ||
      g_ascii_strncasecmp(url.data(), kScheme.data(), kScheme.size()) != 0) {
    return std::nullopt;
  }
  const size_t comma = url.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  std::string_view label = url.substr(0, comma);
  while (label.ends_with(' ')) label.remove_suffix(1);
  const std::string_view content = url.substr(comma + 1);
  const bool base64 = label.size() >= kBase64.size() &&
                      g_ascii_strncasecmp(label.data() + label.size() - kBase64.size(),
                                          kBase64.data(), kBase64.size()) == 0;
  if (!base64) return DecodePercents(content);
  const bool escaped = content.find('%') != std::string_view::npos;
  return escaped ? DecodeBase64(DecodePercents(content)) : DecodeBase64(content);
}

std::optional<std::string> DocumentPictures::fileNamed(std::string_view source) {
  if (source.starts_with("./")) source.remove_prefix(2);
  if (IsPlainName(source)) {
    if (auto bytes = folder_.read(source)) return bytes;
  }
  const std::string name = DecodePercents(source);
  return name != source && IsPlainName(name) ? folder_.read(name) : std::nullopt;
}

std::optional<std::string> DocumentPictures::bytesOf(std::string_view source) {
  if (!source.starts_with(kDataName)) {
    return source.starts_with("data:") ? DecodeDataUrl(source) : fileNamed(source);
  }
  size_t number = 0;
  const std::string_view digits = source.substr(kDataName.size());
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number < dataUrls_.size() ? DecodeDataUrl(dataUrls_[number]) : std::nullopt;
}

const Picture* DocumentPictures::find(std::string_view source) {
  source = Trimmed(source, " \t\r\n");
  if (source.empty()) return nullptr;
  auto known = known_.find(source);
  if (known == known_.end()) {
    std::optional<Picture> picture;
    if (pixels_ < kMostDocumentPixels) {
      if (const auto bytes = bytesOf(source)) picture = DecodePicture(*bytes);
    }
    if (picture) pixels_ += int64_t{picture->width} * picture->height;
    known = known_.emplace(source, std::move(picture)).first;
  }
  return known->second ? &*known->second : nullptr;
}

}  // namespace tarn::pages
