#include "Common/ByteSearch.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Common/PairSearch.h"
#include "support/GuardedBytes.h"

namespace tarn {
namespace {

using search::ExactBytes;
using search::FoldedBytes;
using search::TwoWaySearch;
using search::WordBlock;

constexpr size_t kNotFound = std::string_view::npos;

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string LowerAscii(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = LowerAscii(c);
  return lower;
}

// What the searches promise, by the plainest means.
size_t Naive(std::string_view text, std::string_view needle) {
  for (size_t i = 0; !needle.empty() && i + needle.size() <= text.size(); ++i) {
    if (std::memcmp(text.data() + i, needle.data(), needle.size()) == 0) return i;
  }
  return kNotFound;
}

// A search by one of the ways that lead to the same answer.
using Search = size_t (*)(std::string_view text, std::string_view needle, size_t from);

struct Way {
  const char* name;
  Search exact;
  Search folded;
};

template <typename Fold>
size_t FindByTwoWay(std::string_view text, std::string_view needle, size_t from) {
  if (needle.empty() || from > text.size()) return kNotFound;
  return TwoWaySearch<Fold>(needle).find(text, from);
}

std::vector<Way> AllWays() {
  std::vector<Way> ways = {
      {"Chosen", FindBytes, FindIgnoringCase},
      {"Words", search::FindByPair<WordBlock, ExactBytes>,
       search::FindByPair<WordBlock, FoldedBytes>},
      {"TwoWay", FindByTwoWay<ExactBytes>, FindByTwoWay<FoldedBytes>},
  };
#if defined(__SSE2__)
  using search::VectorBlock;
  ways.push_back({"Vectors", search::FindByPair<VectorBlock, ExactBytes>,
                  search::FindByPair<VectorBlock, FoldedBytes>});
#endif
  return ways;
}

class EveryWay : public ::testing::TestWithParam<Way> {
 protected:
  static size_t Exact(std::string_view text, std::string_view needle) {
    return GetParam().exact(text, needle, 0);
  }
  static size_t Folded(std::string_view text, std::string_view needle) {
    return GetParam().folded(text, needle, 0);
  }
};

std::string WayName(const ::testing::TestParamInfo<Way>& way) { return way.param.name; }

INSTANTIATE_TEST_SUITE_P(ByteSearch, EveryWay, ::testing::ValuesIn(AllWays()), WayName);

// All texts over the alphabet with at most `longest` bytes, the empty one first.
std::vector<std::string> AllTexts(std::string_view alphabet, size_t longest) {
  std::vector<std::string> texts = {""};
  for (size_t i = 0; i < texts.size() && texts[i].size() < longest; ++i) {
    for (const char c : alphabet) texts.push_back(texts[i] + c);
  }
  return texts;
}

TEST_P(EveryWay, AgreesWithThePlainSearchOnAllShortTexts) {
  const std::vector<std::string> needles = AllTexts("aAb", 5);
  const std::vector<std::string> texts = AllTexts("aAb", 7);
  std::vector<std::string> lowerNeedles;
  for (const std::string& needle : needles) lowerNeedles.push_back(LowerAscii(needle));
  for (const std::string& text : texts) {
    const std::string lowerText = LowerAscii(text);
    for (size_t i = 0; i < needles.size(); ++i) {
      if (Exact(text, needles[i]) != Naive(text, needles[i])) {
        FAIL() << "exactly, '" << needles[i] << "' in '" << text << "'";
      }
      if (Folded(text, needles[i]) != Naive(lowerText, lowerNeedles[i])) {
        FAIL() << "ignoring case, '" << needles[i] << "' in '" << text << "'";
      }
    }
  }
}

TEST_P(EveryWay, AgreesWithThePlainSearchOnPeriodicTexts) {
  const std::vector<std::string> needles = AllTexts("ab", 10);
  std::string fibonacci = "a";
  for (std::string before = "b"; fibonacci.size() < 400;) {
    std::swap(before, fibonacci);
    fibonacci = before + fibonacci;
  }
  std::string aaa(200, 'a');
  aaa += 'b' + std::string(150, 'a') + "bb";
  for (const std::string& needle : needles) {
    ASSERT_EQ(Exact(fibonacci, needle), Naive(fibonacci, needle)) << needle;
    ASSERT_EQ(Exact(aaa, needle), Naive(aaa, needle)) << needle;
  }
}

TEST_P(EveryWay, AgreesWithThePlainSearchOnRandomTexts) {
  std::mt19937 random(20190514);
  const std::string_view alphabet = "ab-A\r\n";
  for (int round = 0; round < 20000; ++round) {
    std::string text(random() % 400, '\0');
    const size_t letters = 2 + random() % (alphabet.size() - 1);
    for (char& c : text) c = alphabet[random() % letters];
    std::string needle(1 + random() % 12, '\0');
    for (char& c : needle) c = alphabet[random() % letters];
    if (random() % 2 == 0 && text.size() > needle.size()) {
      needle = text.substr(random() % (text.size() - needle.size()), needle.size());
    }
    ASSERT_EQ(Exact(text, needle), Naive(text, needle)) << needle << " in " << text;
    ASSERT_EQ(Folded(text, needle), Naive(LowerAscii(text), LowerAscii(needle)))
        << needle << " in " << text;
  }
}

// Every place of a match in stretches around the rows that are searched at once, each stretch both
// directly before a page that cannot be read and directly after one.
TEST_P(EveryWay, FindsAMatchAtEveryPlaceAndReadsNothingOutside) {
  test::GuardedBytes guarded(4096);
  for (const std::string_view needle :
       {std::string_view("-"), std::string_view("b"), std::string_view("\r\n--b"),
        std::string_view("Content-Type:"),
        std::string_view("a needle of more than sixteen bytes")}) {
    for (size_t size = needle.size(); size <= 150; ++size) {
      for (char* start : {guarded.end() - size, guarded.begin(), guarded.begin() + size % 32}) {
        std::memset(start, 'x', size);
        const std::string_view text(start, size);
        ASSERT_EQ(Exact(text, needle), kNotFound);
        ASSERT_EQ(Folded(text, needle), kNotFound);
        for (size_t place = 0; place + needle.size() <= size; ++place) {
          std::memset(start, 'x', size);
          std::memcpy(start + place, needle.data(), needle.size());
          ASSERT_EQ(Exact(text, needle), place) << size;
          ASSERT_EQ(Folded(text, needle), place) << size;
        }
      }
    }
  }
}

// The beginning of a match at the very end of the stretch, with the rest after it, is none.
TEST_P(EveryWay, DoesNotFindWhatRunsBeyondTheEnd) {
  const std::string text = std::string(100, '.') + "boundary" + std::string(100, '.');
  for (size_t size = 0; size < 108; ++size) {
    ASSERT_EQ(Exact(std::string_view(text).substr(0, size), "boundary"), kNotFound) << size;
    ASSERT_EQ(Folded(std::string_view(text).substr(0, size), "BOUNDARY"), kNotFound) << size;
  }
  EXPECT_EQ(Exact(std::string_view(text).substr(0, 108), "boundary"), 100U);
  EXPECT_EQ(Folded(std::string_view(text).substr(0, 108), "BOUNDARY"), 100U);
}

TEST_P(EveryWay, FindsTheFirstOfSeveral) {
  const std::string text = std::string(70, ' ') + "key=1 key=2" + std::string(70, ' ') + "key=3";
  EXPECT_EQ(Exact(text, "key="), 70U);
  EXPECT_EQ(Folded(text, "KEY="), 70U);
}

// As if the text began there, with places counted from its start.
TEST_P(EveryWay, BeginsWhereItIsTold) {
  const std::string text = std::string(70, ' ') + "key=1 key=2" + std::string(70, ' ') + "key=3";
  for (size_t from = 0; from <= text.size(); ++from) {
    const size_t expected = text.find("key=", from);
    ASSERT_EQ(GetParam().exact(text, "key=", from), expected) << from;
    ASSERT_EQ(GetParam().folded(text, "KEY=", from), expected) << from;
  }
  EXPECT_EQ(GetParam().exact(text, "key=", text.size() + 1), kNotFound);
  EXPECT_EQ(GetParam().folded(text, "KEY=", kNotFound), kNotFound);
}

TEST_P(EveryWay, FindsNothingInNothing) {
  EXPECT_EQ(Exact({}, "a"), kNotFound);
  EXPECT_EQ(Folded({}, "a"), kNotFound);
  EXPECT_EQ(Exact("abc", ""), kNotFound);
  EXPECT_EQ(Folded("abc", ""), kNotFound);
  EXPECT_EQ(Exact("abc", "abcd"), kNotFound);
  EXPECT_EQ(Folded("abc", "abcd"), kNotFound);
}

TEST_P(EveryWay, TreatsNulAsAByte) {
  const std::string_view text("ab\0cd\0\0ef", 9);
  EXPECT_EQ(Exact(text, std::string_view("\0\0e", 3)), 5U);
  EXPECT_EQ(Folded(text, std::string_view("\0CD\0", 4)), 2U);
}

// All pairs of bytes: equal ones match, and of the others only the two cases of a letter.
TEST_P(EveryWay, FoldsAsciiLettersAndNothingElse) {
  for (int a = 0; a < 256; ++a) {
    const char needle[1] = {static_cast<char>(a)};
    for (int b = 0; b < 256; ++b) {
      // Long enough for every block: the byte is at 70, after bytes that differ from it.
      std::string text(140, b == 0 ? '\x01' : '\0');
      if (a == 0 || a == 1) text.assign(140, '\x02');
      if (b == 2) text.assign(140, a == 3 ? '\x04' : '\x03');
      text[70] = static_cast<char>(b);
      if (text[0] == needle[0]) continue;
      const bool alike = LowerAscii(needle[0]) == LowerAscii(text[70]);
      ASSERT_EQ(Exact(text, {needle, 1}), a == b ? 70U : kNotFound) << a << ' ' << b;
      ASSERT_EQ(Folded(text, {needle, 1}), alike ? 70U : kNotFound) << a << ' ' << b;
    }
  }
  EXPECT_EQ(Folded("`{|}~\x7F", "@"), kNotFound);
  EXPECT_EQ(Folded("[\\]^_", "{"), kNotFound);
  EXPECT_EQ(Folded("\xE4\xF6\xFC", "\xC4\xD6\xDC"), kNotFound);
  EXPECT_EQ(Folded("\xE4\xF6\xFCx", "\xF6\xFCX"), 1U);
}

// Stretches on which every place is a candidate and every compare fails late. Compared byte by byte
// from each place they would take 10^12 steps; these tests pass by coming to an end.
class Hostile : public EveryWay {
 protected:
  static constexpr size_t kText = 4 << 20;
  static constexpr size_t kNeedle = 1 << 20;

  static std::string Repeated(std::string_view unit, size_t size) {
    std::string text(unit);
    while (text.size() < size) text += text;
    text.resize((size + unit.size() - 1) / unit.size() * unit.size());
    return text;
  }
};

INSTANTIATE_TEST_SUITE_P(ByteSearch, Hostile, ::testing::ValuesIn(AllWays()), WayName);

TEST_P(Hostile, NeedleThatDiffersAtItsEnd) {
  std::string text = Repeated("a", kText);
  const std::string needle = Repeated("a", kNeedle) + "b";
  EXPECT_EQ(Exact(text, needle), kNotFound);
  text.back() = 'B';
  EXPECT_EQ(Exact(text, needle), kNotFound);
  EXPECT_EQ(Folded(text, needle), text.size() - needle.size());
}

TEST_P(Hostile, NeedleThatDiffersInItsMiddle) {
  std::string text = Repeated("a", kText);
  const std::string needle = Repeated("a", kNeedle) + "b" + Repeated("a", kNeedle);
  EXPECT_EQ(Exact(text, needle), kNotFound);
  text[text.size() - kNeedle - 1] = 'b';
  EXPECT_EQ(Exact(text, needle), text.size() - needle.size());
  EXPECT_EQ(Folded(text, needle), text.size() - needle.size());
}

TEST_P(Hostile, NeedleThatDiffersAtItsFront) {
  const std::string needle = 'b' + Repeated("a", kNeedle);
  EXPECT_EQ(Exact(Repeated("a", kText), needle), kNotFound);
  EXPECT_EQ(Folded(Repeated("A", kText), needle), kNotFound);
}

TEST_P(Hostile, PeriodicNeedles) {
  for (const std::string_view unit : {"ab", "aab", "abaab", "\r\n--x"}) {
    std::string text = Repeated(unit, kText);
    const std::string needle = Repeated(unit, kNeedle) + "zz";
    EXPECT_EQ(Folded(text, needle), kNotFound);
    const size_t place = text.size() / unit.size() / 2 * unit.size();
    text.replace(place, 2, "ZZ");
    EXPECT_EQ(Exact(text, needle), kNotFound);
    EXPECT_EQ(Folded(text, needle), place + 2 - needle.size());
  }
}

TEST_P(Hostile, NeedleAlmostAsLongAsTheText) {
  const std::string text = Repeated("a", kText);
  const std::string needle = Repeated("a", kText / 2) + "b";
  EXPECT_EQ(Folded(text, needle), kNotFound);
}

// The same at a greater size, for the way that is taken in earnest.
TEST(FindIgnoringCase, ComesToAnEndOnSixteenMegabytes) {
  const std::string text(16 << 20, 'A');
  const std::string needle = std::string(4 << 20, 'a') + "b" + std::string(1 << 20, 'a');
  EXPECT_EQ(FindIgnoringCase(text, needle), kNotFound);
}

// The hostile part ends at a match: nothing is passed over when the search changes.
TEST_P(EveryWay, FindsTheFirstMatchAfterAnyNumberOfFalseCandidates) {
  const std::string needle = std::string(300, 'a') + "ba";
  const std::string almost = std::string(300, 'a') + "ca";
  for (size_t count = 0; count < 40; ++count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) text += almost;
    const size_t place = text.size();
    text += needle + almost + needle;
    ASSERT_EQ(Exact(text, needle), place) << count;
    ASSERT_EQ(Folded(text, needle), place) << count;
  }
}

TEST(FindByte, FindsTheFirstInTheText) {
  EXPECT_EQ(FindByte("a=b=c", '='), 1U);
  EXPECT_EQ(FindByte("a=b=c", '=', 2), 3U);
  EXPECT_EQ(FindByte("a=b=c", 'A'), kNotFound);
  EXPECT_EQ(FindByte("a=b=c", 'c', 6), kNotFound);
  EXPECT_EQ(FindByte("a", '='), kNotFound);
  EXPECT_EQ(FindByte({}, 'a'), kNotFound);
  const std::string_view high("a\0\xFF", 3);
  EXPECT_EQ(FindByte(high, '\xFF'), 2U);
  EXPECT_EQ(FindByte(high, '\0'), 1U);
}

TEST(StartsWithIgnoringCase, FoldsThePrefix) {
  EXPECT_TRUE(StartsWithIgnoringCase("Base64 ", "bASE64"));
  EXPECT_TRUE(StartsWithIgnoringCase("Base64", "BASE64"));
  EXPECT_FALSE(StartsWithIgnoringCase("Base6", "base64"));
  EXPECT_FALSE(StartsWithIgnoringCase("Base64 ", "base65"));
  EXPECT_TRUE(StartsWithIgnoringCase("B", ""));
  EXPECT_FALSE(StartsWithIgnoringCase({}, "a"));
}

TEST(EqualsIgnoringCase, FoldsAsciiLettersAlone) {
  EXPECT_TRUE(EqualsIgnoringCase("", ""));
  EXPECT_TRUE(EqualsIgnoringCase("Gb2312", "gB2312"));
  EXPECT_FALSE(EqualsIgnoringCase("gb2312", "gb2312 "));
  EXPECT_FALSE(EqualsIgnoringCase("@[", "`{"));
  EXPECT_FALSE(EqualsIgnoringCase("\xC4", "\xE4"));
  EXPECT_TRUE(EqualsIgnoringCase(std::string_view("a\0B", 3), std::string_view("A\0b", 3)));
  EXPECT_FALSE(EqualsIgnoringCase(std::string_view("a\0B", 3), std::string_view("A\0c", 3)));
}

}  // namespace
}  // namespace tarn
