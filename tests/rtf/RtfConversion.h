// RtfConversion.h - calls of RtfToHtml for tests.
#ifndef TARN_TESTS_RTF_RTFCONVERSION_H
#define TARN_TESTS_RTF_RTFCONVERSION_H

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

#include "Internal/Tarnclasses_.h"
#include "rtf/RtfToHtml.h"
#include "support/Texts.h"

namespace tarn::test {

// Where the body of a document begins; an empty tag that writes nothing.
inline const std::string kBodyStart = "{\\*\\htmltag}";

// A text whose block ends where it does, so that a step outside is noticed.
inline SizedBytes BytesOf(std::string_view bytes) {
  auto block = AllocateBlock<char>(bytes.size(), TARN_HERE);
  if (block) bytes.copy(block.get(), bytes.size());
  return SizedBytes(std::move(block), bytes.size());
}

struct Converted {
  Status status;
  std::string bytes;  // all that the length counts; those of before where the call failed
};

inline Converted ConvertRtf(std::string_view rtf) {
  SizedBytes text = BytesOf(rtf);
  const char* const before = text.data();
  Converted converted;
  converted.status = RtfToHtml(text);
  converted.bytes = std::string(text.view());
  if (converted.status == StatusOk) {
    EXPECT_TRUE(converted.bytes.ends_with('\0'));
    EXPECT_LE(text.length(), 2 * rtf.size() + 1);
  } else {
    EXPECT_EQ(text.data(), before);
    EXPECT_EQ(text.view(), rtf);
  }
  return converted;
}

// The markup of a whole document, without the NUL.
inline std::string HtmlOf(std::string_view rtf) {
  Converted converted = ConvertRtf(rtf);
  EXPECT_EQ(converted.status, StatusOk);
  if (!converted.bytes.empty()) converted.bytes.pop_back();
  return converted.bytes;
}

// What a stretch of the body comes to.
inline std::string Body(std::string_view rtf) { return HtmlOf(kBodyStart + std::string(rtf)); }

// A document with these font groups in its table, and a body.
inline std::string WithFonts(std::string_view fonts, std::string_view body) {
  return "{\\rtf1{\\fonttbl" + std::string(fonts) + "} " + kBodyStart + std::string(body);
}

inline constexpr std::string_view kThreeFonts =
    "{\\f0\\fcharset0 Arial;}{\\f1\\fcharset128 MS Gothic;}{\\f2\\fcharset204 Arial;}";

inline std::string InThreeFonts(std::string_view body) {
  return HtmlOf(WithFonts(kThreeFonts, body));
}

}  // namespace tarn::test

#endif
