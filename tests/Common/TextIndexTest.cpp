#include "Common/TextIndex.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "KernelUse.h"
#include "support/FaultSweep.h"

namespace tarn {
namespace {

constexpr uint64_t kPlenty = uint64_t{1} << 40;
constexpr TextIndex::Limits kAtOnce = {kPlenty, 1};
constexpr TextIndex::Limits kNever = {kPlenty, kPlenty};

std::vector<uint64_t> All(TextIndex& index, std::string_view needle) {
  std::vector<uint64_t> places;
  Occurrences occurrences(index, needle);
  for (uint64_t at = 0; (at = occurrences.next(at)) != kNoPlace; ++at) places.push_back(at);
  return places;
}

std::vector<uint64_t> Expected(const std::string& text, std::string_view needle) {
  std::vector<uint64_t> places;
  for (size_t at = 0; (at = text.find(needle, at)) != std::string::npos; ++at) {
    places.push_back(at);
  }
  return places;
}

// The index of a text that has been read for needles of the length.
void Warm(TextIndex& index, uint64_t length) { index.countReading(length, index.text().size()); }

TEST(TextIndex, FindsWhatReadingFinds) {
  std::mt19937 random(20261122);
  uint64_t found = 0;
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    const uint64_t letters = random() % 3 + 1;
    for (uint64_t n = random() % 200; n > 0; --n)
      text += static_cast<char>('a' + random() % letters);
    TextIndex index(text, kAtOnce);
    for (int i = 0; i < 5; ++i) {
      const size_t length = random() % 40 + 1;
      std::string needle = text.substr(random() % (text.size() + 1), length);
      if (random() % 3 == 0) needle += 'a';
      if (needle.empty()) continue;
      Warm(index, needle.size());
      ASSERT_EQ(All(index, needle), Expected(text, needle)) << text << " " << needle;
      found += Expected(text, needle).size();
    }
  }
  EXPECT_GT(found, 10000u);
}

TEST(TextIndex, NeverLooksBeforeThePlaceAskedFor) {
  const std::string text = "needle needle needle needle";
  for (const TextIndex::Limits limits : {kAtOnce, kNever}) {
    TextIndex index(text, limits);
    Warm(index, 6);
    Occurrences occurrences(index, "needle");
    EXPECT_EQ(occurrences.next(0), 0u);
    EXPECT_EQ(occurrences.next(0), 0u);
    EXPECT_EQ(occurrences.next(8), 14u);
    EXPECT_EQ(occurrences.next(21), 21u);
    EXPECT_EQ(occurrences.next(22), kNoPlace);
    EXPECT_EQ(occurrences.next(100), kNoPlace);
  }
}

// A thousand words that differ in their middle alone.
std::string Word(int number) {
  return "the-same-start-" + std::to_string(1000 + number) + "-and-the-same-end";
}

std::string Words() {
  std::string text;
  for (int i = 0; i < 1000; ++i) text += Word(i) + " ";
  return text;
}

TEST(TextIndex, IsMadeOnceTheTextHasBeenReadOften) {
  const std::string text = Words();
  TextIndex index(text, {kPlenty, 10});
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(index.windowsFor(36), nullptr);
    const std::string word = Word(1000 + i);
    Occurrences absent(index, word);
    EXPECT_EQ(absent.next(0), kNoPlace);
    EXPECT_EQ(absent.takeCost(), text.size());
  }
  EXPECT_NE(index.windowsFor(36), nullptr);
  EXPECT_EQ(index.windowsFor(64), nullptr);
}

TEST(TextIndex, ASearchCostsLittleHoweverMuchTheNeedlesShare) {
  const std::string text = Words();
  TextIndex index(text, kAtOnce);
  Warm(index, 36);
  for (int i = 0; i < 1100; ++i) {
    const std::string word = Word(i);
    Occurrences occurrences(index, word);
    EXPECT_EQ(occurrences.next(0), i < 1000 ? static_cast<uint64_t>(i) * 37 : kNoPlace);
    EXPECT_LT(occurrences.takeCost(), text.size() / 10);
  }
}

// Each place of the text has the same windows: the chains are as long as the text.
TEST(TextIndex, ASearchCostsNoMoreThanTwiceReadingTheText) {
  const std::string text(100000, 'a');
  TextIndex index(text, kAtOnce);
  Warm(index, 20);
  Occurrences absent(index, "aaaaaaaaaaaaaaaaaaaab");
  EXPECT_EQ(absent.next(0), kNoPlace);
  EXPECT_LE(absent.takeCost(), 2 * text.size() + 200);
}

TEST(TextIndex, TakesNoMoreMemoryThanItMay) {
  const std::string text = Words();
  const uint64_t one = TextIndex::Windows::MemoryFor(text.size());
  const uint64_t before = test::Usage().liveBytes;
  TextIndex index(text, {2 * one + 1, 1});
  for (const uint64_t length : {8U, 16U, 32U, 64U}) {
    Warm(index, length);
    EXPECT_EQ(index.windowsFor(length) != nullptr, length < 32) << length;
  }
  EXPECT_LE(test::Usage().liveBytes, before + 2 * one);
}

TEST(TextIndex, WithoutMemorySearchesGoOnReading) {
  const std::string text = Words();
  const auto round = [&](test::FaultedWork& faulted) {
    TextIndex index(text, kAtOnce);
    Warm(index, 36);
    const std::string word = Word(7);
    Occurrences occurrences = faulted([&] { return Occurrences(index, word); });
    EXPECT_EQ(occurrences.next(0), 7u * 37);
    if (faulted.isReached()) {
      EXPECT_EQ(occurrences.takeCost(), 7u * 37);
    }
  };
  EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 2u);
}

}  // namespace
}  // namespace tarn
