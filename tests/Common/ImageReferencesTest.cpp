#include "Common/ImageReferences.h"

#include <gtest/gtest.h>

#include <ctime>
#include <random>
#include <vector>

#include "KernelUse.h"

namespace tarn {
namespace {

using test::Bytes;
using test::Raw;

struct Rewritten {
  std::string body;
  uint64_t count = 0;

  bool operator==(const Rewritten&) const = default;
};

void PrintTo(const Rewritten& rewritten, std::ostream* out) {
  *out << rewritten.count << " " << ::testing::PrintToString(rewritten.body);
}

Rewritten Replace(const std::string& body, uint64_t offset, const std::string& needle,
                  const std::string& replacement) {
  SizedBytes text = Bytes(body);
  const char* const block = text.data();
  uint64_t count = 99;
  EXPECT_EQ(ReplaceImageReferences(text, {offset, needle, replacement}, count), StatusOk);
  if (count == 0) {
    EXPECT_EQ(text.data(), block);
  }
  return {std::string(text.view()), count};
}

// The rules of the header word for word, on a text that is changed in place at every step.
Rewritten ReplaceStepByStep(std::string body, uint64_t at, const std::string& needle,
                            const std::string& replacement) {
  Rewritten result;
  while (!needle.empty() && at <= body.size()) {
    const size_t end = std::min(body.find('\0', at), body.size());
    const size_t p = body.substr(0, end).find(needle, at);
    if (p == std::string::npos) break;
    size_t tag = p;
    while (tag > 0 && body[tag] != '<') --tag;
    if (body.compare(tag, 12, "<v:imagedata") == 0) {
      at += needle.size();
      continue;
    }
    const size_t close = body.substr(0, end).find('"', p + needle.size());
    if (close == std::string::npos) break;
    size_t q = p;
    while (q > at && body[q - 1] != '"') --q;
    body.replace(q, close - q, replacement);
    at = q + replacement.size();
    ++result.count;
  }
  result.body = body;
  return result;
}

TEST(ImageReferences, AQuotedValueIsReplacedWhole) {
  EXPECT_EQ(Replace("<img src=\"cid:a\">", 0, "cid:a", "X"), (Rewritten{"<img src=\"X\">", 1}));
  EXPECT_EQ(Replace("<img src=\"so cid:a.png!\">", 0, "cid:a", "data:1"),
            (Rewritten{"<img src=\"data:1\">", 1}));
}

TEST(ImageReferences, AllOfThemAreReplaced) {
  EXPECT_EQ(Replace("<img src=\"cid:a\"><b>x</b><img src=\"cid:a\">", 0, "cid:a", "long text"),
            (Rewritten{"<img src=\"long text\"><b>x</b><img src=\"long text\">", 2}));
}

TEST(ImageReferences, OneWithoutAClosingQuoteEndsTheSearch) {
  EXPECT_EQ(Replace("<p title=\"cid:a\">cid:a</p>", 0, "cid:a", "X"),
            (Rewritten{"<p title=\"X\">cid:a</p>", 1}));
  EXPECT_EQ(Replace("cid:a", 0, "cid:a", "X"), (Rewritten{"cid:a", 0}));
}

TEST(ImageReferences, InPlainTextTheValueBeginsBehindTheNearestEarlierQuote) {
  EXPECT_EQ(Replace("<p class=\"c\">see a.png</p><p id=\"d\">", 0, "a.png", "X"),
            (Rewritten{"<p class=\"c\"X\"d\">", 1}));
  // But not before the place where the search started.
  EXPECT_EQ(Replace("<p class=\"c\">see a.png</p><p id=\"d\">", 13, "a.png", "X"),
            (Rewritten{"<p class=\"c\">X\"d\">", 1}));
  EXPECT_EQ(Replace("see a.png\"", 0, "a.png", "X"), (Rewritten{"X\"", 1}));
}

// The search goes on at the closing quote, which is the nearest before what follows.
TEST(ImageReferences, AReplacementEndsTheReachBack) {
  EXPECT_EQ(Replace("\"cid:a\" cid:a \"", 0, "cid:a", "X"), (Rewritten{"\"X\"X\"", 2}));
}

TEST(ImageReferences, ImageDataKeepsItsReference) {
  EXPECT_EQ(Replace("<v:imagedata src=\"cid:a\"/><img src=\"cid:a\">", 0, "cid:a", "X"),
            (Rewritten{"<v:imagedata src=\"cid:a\"/><img src=\"X\">", 1}));
  // Only the case counts, not what follows the twelve bytes.
  EXPECT_EQ(Replace("<v:imagedatasheet src=\"cid:a\">", 0, "cid:a", "X"),
            (Rewritten{"<v:imagedatasheet src=\"cid:a\">", 0}));
  EXPECT_EQ(Replace("<V:imagedata src=\"cid:a\">", 0, "cid:a", "X"),
            (Rewritten{"<V:imagedata src=\"X\">", 1}));
  EXPECT_EQ(Replace("<v:imagedat src=\"cid:a\">", 0, "cid:a", "X"),
            (Rewritten{"<v:imagedat src=\"X\">", 1}));
}

TEST(ImageReferences, TheTagMayBeginInFrontOfTheSearch) {
  EXPECT_EQ(Replace("<v:imagedata src=\"cid:a\"/>", 15, "cid:a", "X"),
            (Rewritten{"<v:imagedata src=\"cid:a\"/>", 0}));
  EXPECT_EQ(Replace(Raw("<v:imagedata \0 src=\"cid:a\"/>"), 15, "cid:a", "X"),
            (Rewritten{Raw("<v:imagedata \0 src=\"cid:a\"/>"), 0}));
}

// An occurrence that stays moves the search by the needle's length from where it was, which may be
// to the middle of the occurrence.
TEST(ImageReferences, TheSearchMovesByTheNeedleNotBehindTheOccurrence) {
  // From 0 it comes to 15, where the needle is once more, after another tag.
  EXPECT_EQ(Replace("<v:imagedata a<a<a\"", 0, "a<a", "X"), (Rewritten{"<v:imagedata a<X\"", 1}));
  // From 1 it comes to 13, meets the same occurrence again, and passes on to 16.
  EXPECT_EQ(Replace("<v:imagedata a<a<a\"", 1, "a<a", "X"), (Rewritten{"<v:imagedata a<a<a\"", 0}));
}

TEST(ImageReferences, ATagAtTheOccurrenceItselfCounts) {
  EXPECT_EQ(Replace("\"<v:imagedata\"", 0, "<v:imagedata", "X"),
            (Rewritten{"\"<v:imagedata\"", 0}));
  EXPECT_EQ(Replace("\"<v:image\"", 0, "<v:image", "X"), (Rewritten{"\"X\"", 1}));
}

TEST(ImageReferences, ANulBehindTheStartEndsTheSearches) {
  EXPECT_EQ(Replace(Raw("\"a\" \0 \"a\""), 0, "a", "X"), (Rewritten{Raw("\"X\" \0 \"a\""), 1}));
  EXPECT_EQ(Replace(Raw("\"a\" \0 \"a\""), 5, "a", "X"), (Rewritten{Raw("\"a\" \0 \"X\""), 1}));
  EXPECT_EQ(Replace(Raw("\"a\0\""), 0, "a", "X"), (Rewritten{Raw("\"a\0\""), 0}));
  EXPECT_EQ(Replace(Raw("\"a\"\0"), 0, "a", "XYZ"), (Rewritten{Raw("\"XYZ\"\0"), 1}));
}

TEST(ImageReferences, EmptyNeedlesAndOffsetsOutsideFindNothing) {
  EXPECT_EQ(Replace("\"\"", 0, "", "X"), (Rewritten{"\"\"", 0}));
  EXPECT_EQ(Replace("\"a\"", 3, "a", "X"), (Rewritten{"\"a\"", 0}));
  EXPECT_EQ(Replace("\"a\"", 4, "a", "X"), (Rewritten{"\"a\"", 0}));
  EXPECT_EQ(Replace("\"a\"", UINT64_MAX, "a", "X"), (Rewritten{"\"a\"", 0}));
  EXPECT_EQ(Replace("", 0, "a", "X"), (Rewritten{"", 0}));
  SizedBytes absent;
  uint64_t count = 99;
  EXPECT_EQ(ReplaceImageReferences(absent, {0, "a", "X"}, count), StatusOk);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(absent.data(), nullptr);
}

TEST(ImageReferences, AnEmptyReplacementTakesTheValueOut) {
  EXPECT_EQ(Replace("\"a\"", 0, "a", ""), (Rewritten{"\"\"", 1}));
}

// File names come from the mail: what they hold is part of the text for the occurrences after it.
TEST(ImageReferences, ATagInTheReplacementDecidesOnWhatFollows) {
  EXPECT_EQ(Replace("\"a\" a \"", 0, "a", "<v:imagedata"), (Rewritten{"\"<v:imagedata\" a \"", 1}));
  EXPECT_EQ(Replace("<v:imagedata><b \"a\" a \"", 14, "a", "<v:image"),
            (Rewritten{"<v:imagedata><b \"<v:image\"<v:image\"", 2}));
}

// A value that is replaced takes its own tag out of the text.
TEST(ImageReferences, ATagInsideAReplacedValueIsGone) {
  EXPECT_EQ(Replace("<v:imagedata \"<b a\" a \"", 14, "a", "X"),
            (Rewritten{"<v:imagedata \"X\" a \"", 1}));
}

TEST(ImageReferences, ATagMayComeTogetherFromTextAndReplacement) {
  // "<v:im" is before the search and the replacement completes it.
  EXPECT_EQ(Replace("<v:im a\" a \"", 5, "a", "agedata"), (Rewritten{"<v:imagedata\" a \"", 1}));
  // Two replacements, with a needle that begins with the quote the search goes on at.
  EXPECT_EQ(Replace("\"a\"a\" \"a\"", 0, "\"a", "edata<v:imag"),
            (Rewritten{"edata<v:imagedata<v:imag\"edata<v:imag\"", 3}));
}

TEST(ImageReferences, AgreesWithTheRulesTakenStepByStep) {
  const std::vector<std::string> tokens = {"<",
                                           "\"",
                                           "\"",
                                           "cid:a",
                                           "cid:a",
                                           "cid:ab",
                                           "<v:imagedata",
                                           "<v:imagedata",
                                           "<v:",
                                           "im",
                                           "agedat",
                                           "a",
                                           Raw("\0"),
                                           " ",
                                           ">",
                                           "x",
                                           "aa",
                                           "a",
                                           "i",
                                           "<b",
                                           "<v:imageda",
                                           "ta",
                                           "a\"",
                                           "v"};
  const std::vector<std::string> needles = {"cid:a",  "cid:ab", "a",       "aa",    "aaa", "\"a",
                                            "a\"",    "<v:",    "<",       "\"",    "ta",  "x",
                                            "<b cid", "aa aa",  "\"cid:a", "agedat"};
  const std::vector<std::string> replacements = {"X",
                                                 "",
                                                 "data:image;base64,QUFB",
                                                 "_a.png",
                                                 "<v:imagedata",
                                                 "<v:imag",
                                                 "edat",
                                                 "agedata",
                                                 "edata<v:imag",
                                                 "<b>",
                                                 "\"",
                                                 "x\"<",
                                                 "cid:a\"",
                                                 "<v:",
                                                 "a",
                                                 "<",
                                                 "magedata<v:i",
                                                 "aaaaaa"};
  std::mt19937 random(20240607);
  const auto pick = [&random](const std::vector<std::string>& from) -> const std::string& {
    return from[random() % from.size()];
  };
  uint64_t replaced = 0;
  for (int round = 0; round < 50000; ++round) {
    std::string body;
    // Few sorts of tokens in one body make long rows of occurrences.
    std::vector<std::string> sorts;
    for (uint64_t n = random() % 6 + 1; n > 0; --n) sorts.push_back(pick(tokens));
    for (uint64_t n = random() % 14; n > 0; --n) body += pick(random() % 4 == 0 ? tokens : sorts);
    const std::string& needle = random() % 2 == 0 ? pick(needles) : pick(sorts);
    if (needle.find('\0') != std::string::npos) continue;
    const std::string& replacement = pick(replacements);
    const uint64_t offset = random() % 3 == 0 ? random() % (body.size() + 2) : 0;
    const Rewritten expected = ReplaceStepByStep(body, offset, needle, replacement);
    replaced += expected.count;
    ASSERT_EQ(Replace(body, offset, needle, replacement), expected)
        << ::testing::PrintToString(body) << " from " << offset << " needle " << needle
        << " replacement " << replacement;
  }
  EXPECT_GT(replaced, 5000u);
}

TEST(ImageReferences, WithoutMemoryTheBodyIsAsItWas) {
  SizedBytes text = Bytes("\"a\" \"a\"");
  uint64_t count = 99;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(ReplaceImageReferences(text, {0, "a", "XYZ"}, count), StatusOutOfMemory);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(text.view(), "\"a\" \"a\"");
  EXPECT_EQ(ReplaceImageReferences(text, {0, "a", "XYZ"}, count), StatusOk);
  EXPECT_EQ(count, 2u);
}

TEST(ImageReferences, OneBlockOfTheNewLengthIsMade) {
  SizedBytes text = Bytes("\"a\" \"a\"");
  const uint64_t calls = test::Allocations();
  const uint64_t bytes = test::Usage().liveBytes;
  uint64_t count = 0;
  ASSERT_EQ(ReplaceImageReferences(text, {0, "a", "XYZ"}, count), StatusOk);
  EXPECT_EQ(test::Allocations(), calls + 1);
  EXPECT_EQ(test::Usage().liveBytes, bytes + 4);
}

// Texts that a search could be made to read over and over. Builds without optimisation read shorter
// ones, for the sake of the sanitizers alone.
#ifdef NDEBUG
constexpr size_t kHostileLength = 6000000;
#else
constexpr size_t kHostileLength = 100000;
#endif

// Processor seconds, far more than any of these takes, and far less than the square of its length
// would.
constexpr double kLimit = 5;

double Seconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

class HostileReferences : public ::testing::TestWithParam<std::pair<std::string, std::string>> {};

TEST_P(HostileReferences, TakeLinearTime) {
  const auto& [repeated, needle] = GetParam();
  for (const char* const front : {"", "<v:imagedata ", "\""}) {
    std::string body = front;
    while (body.size() < kHostileLength) body += repeated;
    SizedBytes text = Bytes(body);
    uint64_t count = 0;
    const double start = Seconds();
    EXPECT_EQ(ReplaceImageReferences(text, {0, needle, "<b"}, count), StatusOk);
    EXPECT_EQ(ReplaceImageReferences(text, {0, needle, "x"}, count), StatusOk);
    EXPECT_LT(Seconds() - start, kLimit);
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, HostileReferences,
    ::testing::Values(std::pair("cid:a ", "cid:a"), std::pair("cid:a\"", "cid:a"),
                      std::pair("<v:imagedata cid:a\"", "cid:a"), std::pair("a", "a"),
                      std::pair("a",
                                "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"),
                      std::pair("a", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaab"), std::pair("\"a", "\"a"),
                      std::pair("<a", "<a"), std::pair("\"", "\""), std::pair("a<b>\"", "a")));

// The search moves by one from far before the single occurrence, a million times.
TEST(ImageReferences, ManyMovesToOneOccurrenceTakeLinearTime) {
  std::string body = "<v:imagedata " + std::string(kHostileLength, ' ') + "a";
  SizedBytes text = Bytes(body);
  uint64_t count = 0;
  const double start = Seconds();
  EXPECT_EQ(ReplaceImageReferences(text, {0, "a ", "x"}, count), StatusOk);
  EXPECT_EQ(ReplaceImageReferences(text, {13, "a", "x"}, count), StatusOk);
  EXPECT_LT(Seconds() - start, kLimit);
  EXPECT_EQ(text.view(), body);
}

}  // namespace
}  // namespace tarn
