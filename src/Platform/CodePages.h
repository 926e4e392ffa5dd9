// CodePages.h - text between the bytes of a code page and UTF-16, by the rules of Windows.
//
// Both directions answer as the system calls MultiByteToWideChar and WideCharToMultiByte do with
// flags 0, on every platform: on Windows they are asked, but for UTF-8. docs/code-pages.md lists
// the code pages, how each is converted, and where the platforms differ: in approximations, and in
// pages that only Windows has.
//
//   Bytes to UTF-16   Every byte or pair gives one unit. In a double-byte page a lead byte followed
//                     by any byte but 0 takes two bytes, mapped or not; at the end of the source or
//                     before 0 it is alone. What the page does not map gives its default unit
//                     ("?", in 932 U+30FB).
//   UTF-16 to bytes   Unit by unit: a surrogate pair is two units, each of which gives "?", as does
//                     every other unit that the page neither holds nor approximates.
//   65001 (UTF-8)     The exception: pairs are joined, each maximal malformed part of a byte text
//                     gives U+FFFD, and a lone surrogate gives EF BF BD.
//   42 (symbol)       Bytes from 0x20 on are U+F020 to U+F0FF; any other unit from 0x20 on fails.
//
// Sizes count bytes on the one side and UTF-16 units on the other. No terminator is added or
// expected; NULs are text. Source and destination must not overlap. Nothing throws, and every
// function may be called from any thread. Tables are made at the first use of a code page and live
// as long as the process.
#ifndef TARN_PLATFORM_CODE_PAGES_H
#define TARN_PLATFORM_CODE_PAGES_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tarn::platform {

inline constexpr uint32_t kCodePageSymbol = 42;
inline constexpr uint32_t kCodePageUtf8 = 65001;

// The units written or, where the destination is empty, the units needed. 0 is failure: an unknown
// code page, an empty source, a source or result beyond INT32_MAX bytes or units, or a destination
// that is too small, which then holds an unspecified part of the text.
size_t BytesToUtf16(uint32_t codePage, std::string_view source,
                    std::span<char16_t> destination) noexcept;

struct EncodedBytes {
  size_t size = 0;
  // The default character (in UTF-8: EF BF BD for a lone surrogate) is there for at least one unit.
  // Approximations other than "?" do not count. Of pages that only Windows has and of which it does
  // not tell (UTF-7, ISO-2022, GB18030), lone surrogates count.
  bool usedDefault = false;
};

// The bytes written or needed, as above; a failure used no default.
EncodedBytes Utf16ToBytes(uint32_t codePage, std::u16string_view source,
                          std::span<char> destination) noexcept;

// The code page of programs that know nothing of Unicode; 1252 where the platform has none.
uint32_t AnsiCodePage() noexcept;

// Whether the two conversions know the code page. 0 to 3, which are settings and no code pages, are
// never known.
bool IsCodePageSupported(uint32_t codePage) noexcept;

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_CODE_PAGES_H
