#include "eml/Charsets.h"

#include <charconv>

#include "Common/ApiUtils.h"
#include "Common/ByteSearch.h"
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
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  return read.ec == std::errc::result_out_of_range || number > INT32_MAX ? INT32_MAX : number;
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

// A charset's name as texts declare it; empty for charsets that have none to look for.
CharsetRename::Name DeclaredName(CharsetRef charset) {
  CharsetRename::Name name;
  switch (charset.kind) {
    case CharsetLatin1:
      name.append("iso-8859-1");
      break;
    case CharsetAscii:
      name.append("us-ascii");
      break;
    case CharsetWindows:
      name.append(kWindowsPrefix);
      name.append(charset.codePage);
      break;
    case CharsetGb2312:
      name.append("gb2312");
      break;
    case CharsetBig5:
      name.append("big5");
      break;
    default:
      break;
  }
  return name;
}

// Converts the text from `offset` on, a trailing NUL apart, as ConvertInPieces does. Text that the
// code page does not take stays, as does one beyond INT32_MAX bytes.
Conversion ConvertFrom(SizedBytes& text, uint64_t offset, uint32_t codePage) {
  const std::string_view source = WithoutTrailingNul(text.view().substr(offset));
  if (codePage == 0 || source.empty() || source.size() > INT32_MAX) return {StatusOk, false};
  if (source.size() > kLongText && MayConvertInPieces(codePage)) {
    return ConvertInPieces(text, offset, codePage);
  }

  const uint64_t capacity = 2 * source.size() + 1;
  const KernelBlock<char16_t> wide = AllocateBlock<char16_t>(capacity, TARN_HERE);
  if (!wide) return {StatusOutOfMemory, false};
  const size_t units = platform::BytesToUtf16(codePage, source, {wide.get(), capacity});
  if (units == 0) return {StatusOk, false};

  const uint64_t room = 4 * units;
  const auto write = [&](char* block) {
    const uint64_t length = offset + ConvertToUtf8({wide.get(), units}, {block + offset, room});
    block[length] = '\0';
    return length;
  };
  if (!text.overwrite(offset + room + 1, write)) return {StatusOutOfMemory, false};
  return {text.length() > offset ? StatusOk : StatusPathToUtf8Failed, true};
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

CharsetRef ClassifyCharset(std::string_view name) {
  const auto is = [name](std::string_view other) { return EqualsIgnoringCase(name, other); };
  const auto begins = [name](std::string_view prefix) {
    return StartsWithIgnoringCase(name, prefix);
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

Status ConvertTailToUtf8(SizedBytes& text, uint64_t offset, CharsetRef charset) {
  if (offset >= text.length()) return StatusOk;
  if (charset.kind == CharsetIso2022Jp) return ConvertIso2022Jp(text, offset);
  const Conversion conversion = ConvertFrom(text, offset, CodePageOf(charset));
  if (!conversion.converted || !conversion.status.ok()) return conversion.status;
  // The NUL is there; from here on it counts.
  const uint64_t length = text.length() + 1;
  text.adopt(text.take(), length);
  return StatusOk;
}

Status ConvertBodyToUtf8(SizedBytes* text, CharsetRef* charset, bool force) {
  if (text == nullptr || charset == nullptr) return StatusNullArgument;
  if (charset->kind == CharsetIso2022Jp) return ConvertIso2022Jp(*text, 0);
  const CharsetRename::Name name = DeclaredName(*charset);
  if (!force || name.view().empty()) return StatusOk;

  CharsetRename rename;
  const Status renamed = rename.apply(*text, 0, name.view());
  if (!renamed.ok()) return renamed;
  if (charset->kind == CharsetAscii) {
    if (rename.found()) charset->kind = CharsetUtf8;
    return StatusOk;
  }
  // What comes before the declaration keeps its bytes.
  const uint64_t offset = rename.found() ? rename.end() : 0;
  const Status status = ConvertFrom(*text, offset, CodePageOf(*charset)).status;
  if (status == StatusOutOfMemory) rename.undo(*text);
  return status;
}

void RepairFieldToUtf8(SizedBytes& field, CharsetRef charset) {
  if (HasUtf8Form(field.view())) return;
  ConvertBodyToUtf8(&field, &charset, true).ignore();
}

Status ReplaceWithUtf8Name(SizedBytes& text, uint64_t offset, uint64_t oldLength) {
  const Status status = text.splice(offset, oldLength, CharsetRename::kNewName);
  if (!status.ok()) text.release();
  return status;
}

}  // namespace tarn
