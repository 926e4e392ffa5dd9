// Charsets.h - bytes in a charset to UTF-8.
//
// Charsets are known by their IANA names, by what mail programs write instead ("cp1252", "x-sjis",
// "1252") and by the numbers of Windows' code pages. A name means what mails mean by it:
// "iso-8859-1" is Windows-1252, "gb2312" is GB18030, "ks_c_5601-1987" is Windows-949, and so on,
// all of them larger sets.
#ifndef TARN_ARCHIVE_CHARSETS_H
#define TARN_ARCHIVE_CHARSETS_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct UConverter;

namespace tarn::archive {

// U+FFFD, for what is no text.
inline constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// A charset in use: what it costs to find its tables is paid once. One thread.
class CharsetDecoder {
 public:
  // Nothing for a name that is unknown. "us-ascii" is unknown too: bytes that it has no room for
  // are of some other charset, and a name that is not true tells nothing of which.
  static std::optional<CharsetDecoder> ForName(std::string_view name);

  // Nothing for numbers that are no code pages, or not known here.
  static std::optional<CharsetDecoder> ForCodePage(uint32_t codePage);

  // Adds the text of the bytes, which are taken as a whole: no state is left from bytes before, and
  // what is cut off at the end is U+FFFD, as is what does not convert.
  void append(std::string_view bytes, std::string& utf8);

 private:
  enum class Kind : uint8_t { Utf8, Utf16, Utf16Little, Utf16Big, JapaneseMail, Johab, Table };
  struct Close {
    void operator()(UConverter* converter) const;
  };

  explicit CharsetDecoder(Kind kind) : kind_(kind) {}
  static std::optional<CharsetDecoder> ForTable(const char* name, Kind kind = Kind::Table);

  void appendTable(std::string_view bytes, std::string& utf8);

  Kind kind_;
  std::unique_ptr<UConverter, Close> table_;
};

// Adds UTF-8 with what is malformed replaced by U+FFFD.
void AppendUtf8(std::string_view bytes, std::string& utf8);

enum class ByteOrder : uint8_t { Little, Big, Unknown };

// Adds UTF-16 in the order that a mark at its front tells, else the named one; where that is
// Unknown, the one that more of it looks like.
void AppendUtf16(std::string_view bytes, ByteOrder order, std::string& utf8);

// Of bytes of which nothing is known: UTF-8 when they are valid as such, else Windows-1252.
void AppendUnknown(std::string_view bytes, std::string& utf8);

void AppendCharacter(char32_t codePoint, std::string& utf8);

// The form of ISO-2022-JP that mails have, which is more than RFC 1468 allows: half-width kana,
// characters of NEC and IBM, 8-bit bytes of Shift_JIS. As Shift_JIS; other sets give bytes that are
// none.
std::string ShiftJisOfIso2022Jp(std::string_view bytes);

}  // namespace tarn::archive

#endif
