#include "eml/Charsets.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "Common/ByteSearch.h"
#include "Common/InlineImages.h"
#include "Platform/CodePages.h"
#include "eml/CharsetRename.h"
#include "eml/Iso2022Jp.h"
#include "eml/LongConversion.h"

namespace tarn {
namespace {

constexpr std::string_view kWindowsPrefix = "windows-";

// The decimal number that the text begins with; 0 without digits, and no more than INT32_MAX.
uint32_t LeadingNumber(std::string_view text) {
  uint32_t number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') break;
    const auto digit = static_cast<uint32_t>(c - '0');
    if (number > (INT32_MAX - digit) / 10) return INT32_MAX;
    number = number * 10 + digit;
  }
  return number;
}

// The code page that converts the charset's text; 0 for charsets that are not converted by one.
uint32_t CodePageOf(CharsetRef charset) {
  switch (charset.kind) {
    case CharsetLatin1:
      return 1252;
    case CharsetWindows:
      return charset.codePage;
    case CharsetGb2312:
      return 936;
    case CharsetBig5:
      return 950;
    default:
      return 0;
  }
}

// A charset's name as texts declare it.
class DeclaredName {
 public:
  explicit DeclaredName(CharsetRef charset) {
    switch (charset.kind) {
      case CharsetLatin1:
        append("iso-8859-1");
        break;
      case CharsetAscii:
        append("us-ascii");
        break;
      case CharsetWindows:
        append(kWindowsPrefix);
        length_ = static_cast<size_t>(
            std::to_chars(text_ + length_, text_ + sizeof text_, charset.codePage).ptr - text_);
        break;
      case CharsetGb2312:
        append("gb2312");
        break;
      case CharsetBig5:
        append("big5");
        break;
      default:
        break;
    }
  }

  std::string_view text() const { return {text_, length_}; }

 private:
  void append(std::string_view part) {
    std::memcpy(text_ + length_, part.data(), part.size());
    length_ += part.size();
  }

  char text_[CharsetRename::kLongestName] = {};
  size_t length_ = 0;
};

// What a conversion did: a status, and whether bytes were converted at all.
struct Conversion {
  int32_t status;
  bool converted;
};

// Converts the text from `offset` on, a trailing NUL apart, and terminates it; the length does not
// count the NUL. Text that the code page does not take stays, as does one beyond INT32_MAX bytes.
// -1 changes nothing; -1851 leaves the text cut at the offset.
Conversion ConvertFrom(SizedBytes& text, uint64_t offset, uint32_t codePage) {
  const std::string_view source = WithoutTrailingNul(text.view().substr(offset));
  if (codePage == 0 || source.empty() || source.size() > INT32_MAX) return {StatusOk, false};
  if (source.size() > kLongText && MayConvertInPieces(codePage)) {
    bool converted = false;
    const int32_t status = ConvertInPieces(text, offset, codePage, converted);
    return {status, converted};
  }

  const uint64_t capacity = 2 * source.size() + 1;
  const KernelBlock<char16_t> wide = AllocateBlock<char16_t>(capacity, TARN_HERE);
  if (!wide) return {StatusOutOfMemory, false};
  const int32_t units = platform::BytesToUtf16(
      codePage, source, wide.get(), static_cast<int32_t>(std::min<uint64_t>(capacity, INT32_MAX)));
  if (units <= 0) return {StatusOk, false};

  const int64_t room = int64_t{4} * units;
  auto* const block = static_cast<char*>(
      KernelRealloc(text.data(), offset + static_cast<uint64_t>(room) + 1, TARN_HERE));
  if (block == nullptr) return {StatusOutOfMemory, false};
  text.setData(block);
  const int64_t written = KernelWideToUtf8(wide.get(), units, block + offset, room);
  text.setLength(offset + static_cast<uint64_t>(std::max<int64_t>(written, 0)));
  block[text.length()] = '\0';
  return {written > 0 ? StatusOk : StatusPathToUtf8Failed, true};
}

// Well formed by the shape of its bytes alone: a lead byte and as many bytes 10xxxxxx as it asks
// for. Overlong forms and surrogates pass.
bool HasUtf8Form(std::string_view text) {
  for (size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i++]);
    if (lead < 0x80) continue;
    size_t more = 0;
    if ((lead & 0xE0) == 0xC0) more = 1;
    if ((lead & 0xF0) == 0xE0) more = 2;
    if ((lead & 0xF8) == 0xF0) more = 3;
    if (more == 0 || more > text.size() - i) return false;
    for (; more != 0; --more) {
      if ((static_cast<unsigned char>(text[i++]) & 0xC0) != 0x80) return false;
    }
  }
  return true;
}

}  // namespace

CharsetRef ClassifyCharset(const char* start, const char* end) {
  const std::string_view name(start, static_cast<size_t>(end - start));
  const auto is = [name](std::string_view other) { return EqualsIgnoringCase(name, other); };
  const auto begins = [start, end](std::string_view prefix) {
    return StartsWithIgnoringCase(start, end, prefix);
  };

  if (is("gb2312")) return {CharsetGb2312, 0};
  if (begins("iso-2022-jp")) return {CharsetIso2022Jp, 0};
  if (is("big5")) return {CharsetBig5, 0};
  if (is("iso-8859-1")) return {CharsetLatin1, 0};
  if (begins("us-ascii")) return {CharsetAscii, 0};
  if (begins("utf-8")) return {CharsetUtf8, 0};
  if (begins(kWindowsPrefix)) {
    return {CharsetWindows, LeadingNumber(name.substr(kWindowsPrefix.size()))};
  }
  return {CharsetOther, 0};
}

int32_t ConvertTailToUtf8(SizedBytes& text, uint64_t offset, CharsetRef charset) {
  if (offset >= text.length()) return StatusOk;
  if (charset.kind == CharsetIso2022Jp) return ConvertIso2022Jp(text, offset);
  const Conversion conversion = ConvertFrom(text, offset, CodePageOf(charset));
  if (conversion.converted && conversion.status == StatusOk) text.setLength(text.length() + 1);
  return conversion.status;
}

int32_t ConvertBodyToUtf8(SizedBytes* text, CharsetRef* charset, bool force) {
  if (text == nullptr || charset == nullptr) return StatusNullArgument;
  if (charset->kind == CharsetIso2022Jp) return ConvertIso2022Jp(*text, 0);
  const DeclaredName name(*charset);
  if (!force || name.text().empty()) return StatusOk;

  CharsetRename rename;
  const int32_t renamed = rename.apply(*text, 0, name.text());
  if (renamed < StatusOk) return renamed;
  if (charset->kind == CharsetAscii) {
    if (rename.found()) charset->kind = CharsetUtf8;
    return StatusOk;
  }
  // What stands in front of the declaration keeps its bytes.
  const uint64_t offset = rename.found() ? rename.end() : 0;
  const int32_t status = ConvertFrom(*text, offset, CodePageOf(*charset)).status;
  if (status == StatusOutOfMemory) rename.undo(*text);
  return status;
}

void RepairFieldToUtf8(SizedBytes& field, CharsetRef charset) {
  if (HasUtf8Form(field.view())) return;
  ConvertBodyToUtf8(&field, &charset, true);
}

int32_t ReplaceWithUtf8Name(SizedBytes& text, uint64_t offset, uint64_t oldLength) {
  constexpr std::string_view kName = CharsetRename::kNewName;
  const Status status = text.splice(offset, oldLength, kName);
  if (status != StatusOk) text.release();
  return status;
}

}  // namespace tarn
