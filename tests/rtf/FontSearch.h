// FontSearch.h - searches of FindFontForText in tables of tests.
#ifndef TARN_TESTS_RTF_FONTSEARCH_H
#define TARN_TESTS_RTF_FONTSEARCH_H

#include <gtest/gtest.h>

#include <initializer_list>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "Tarnbase/PlainKernel.h"
#include "rtf/FontCoverage.h"
#include "rtf/FontTables.h"
#include "support/TestFonts.h"

namespace tarn::test {

inline constexpr std::u16string_view kArmenian = u"\u0531";  // in Arial and Sylfaen
inline constexpr std::u16string_view kGeorgian = u"\u10D0";  // in Sylfaen
inline constexpr std::u16string_view kHan = u"\u3400";       // in MS Gothic
inline constexpr std::u16string_view kJamo = u"\uA960";      // in Batang
inline constexpr std::u16string_view kOgham = u"\u1681";     // in Gulim
inline constexpr std::u16string_view kNowhere = u"\u1400";
inline constexpr std::u16string_view kEmoji = u"\U0001F600";

// Faces that have none of the letters that tests ask for. Where a system has another face for names
// that it does not know, only an installed face covers nothing.
inline std::vector<TestFont> PoorFonts(std::initializer_list<std::u16string_view> families) {
  std::vector<TestFont> fonts;
  for (const std::u16string_view family : families) {
    fonts.push_back({.family = std::u16string(family), .characters = u"\uE000"});
  }
  return fonts;
}

inline uint64_t LiveObjects() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage.liveTrackedObjects;
}

inline bool Covers(const char* faceName, std::u16string_view text) {
  void* const context = KernelCreateDC(0, TARN_HERE);
  const uint64_t before = LiveObjects();
  const bool result = FontCoversText(context, faceName, text.data(), text.size());
  EXPECT_EQ(LiveObjects(), before) << faceName;
  KernelDeleteDC(context, TARN_HERE);
  return result;
}

inline constexpr uint32_t kUntouched = 4711;

struct Found {
  Status result;
  uint32_t number;
  bool operator==(const Found&) const = default;
};
inline constexpr Found kNone = {StatusFailed, kUntouched};
inline constexpr Found kNoMemory = {StatusOutOfMemory, kUntouched};

inline std::ostream& operator<<(std::ostream& out, const Found& found) {
  return out << "{" << found.result.code() << ", " << found.number << "}";
}

inline Found Find(RtfFonts& fonts, std::u16string_view text) {
  const uint64_t before = LiveObjects();
  Found found = kNone;
  found.result = FindFontForText(fonts, text.data(), text.size(), found.number);
  EXPECT_EQ(LiveObjects(), before);
  return found;
}

// A prepared document with these groups in its font table.
struct Document {
  explicit Document(const std::string& groups) {
    status = Prepare(fonts, "{\\rtf1\\ansi\\deff0{\\fonttbl" + groups + "}\\pard text}");
    EXPECT_EQ(status, StatusOk);
  }
  const RtfFontTable& table() const { return fonts.table(); }

  RtfFonts fonts;
  Status status;
};

}  // namespace tarn::test

#endif
