#include "Common/AttachmentProperties.h"

#include <gtest/gtest.h>

#include "KernelUse.h"
#include "support/FaultSweep.h"

namespace tarn {
namespace {

std::u16string Name(const PropertyList& list, uint64_t i) { return list.data()[i].name; }
std::u16string Value(const PropertyList& list, uint64_t i) { return list.data()[i].value; }

TEST(AddAttachmentProperty, AppendsNameAndValueAsTheyAre) {
  PropertyList list;
  EXPECT_EQ(AddAttachmentProperty(list, "Content-ID:", "<a@b>"), StatusOk);
  EXPECT_EQ(AddAttachmentProperty(list, "name=", "caf\xC3\xA9"), StatusOk);
  ASSERT_EQ(list.length(), 2u);
  EXPECT_EQ(Name(list, 0), u"Content-ID:");
  EXPECT_EQ(Value(list, 0), u"<a@b>");
  EXPECT_EQ(Name(list, 1), u"name=");
  EXPECT_EQ(Value(list, 1), u"caf\u00E9");
  // One grow by one record: the first makes room for all that follow.
  EXPECT_EQ(list.capacity(), 1025u);
}

TEST(AddAttachmentProperty, WhatFollowsTheTextIsZero) {
  PropertyList list;
  ASSERT_EQ(AddAttachmentProperty(list, "ab", "c"), StatusOk);
  std::string expected = test::Raw("a\0b\0") + std::string(252, '\0') + test::Raw("c\0");
  expected.resize(512, '\0');
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(list.data()), 512), expected);
}

TEST(AddAttachmentProperty, CutsBothAt127Units) {
  const std::string at126(126, 'x');
  PropertyList list;
  ASSERT_EQ(AddAttachmentProperty(list, (at126 + "y").c_str(), (at126 + "z").c_str()), StatusOk);
  ASSERT_EQ(AddAttachmentProperty(list, (at126 + "yy").c_str(), (at126 + "zz").c_str()), StatusOk);
  for (uint64_t i = 0; i < 2; ++i) {
    EXPECT_EQ(Name(list, i), std::u16string(126, u'x') + u"y");
    EXPECT_EQ(Value(list, i), std::u16string(126, u'x') + u"z");
    EXPECT_EQ(list.data()[i].name[127], u'\0');
    EXPECT_EQ(list.data()[i].value[127], u'\0');
  }
}

TEST(AddAttachmentProperty, CutsInsideASurrogatePair) {
  const std::string text = std::string(126, 'x') + "\xF0\x9F\x98\x80";
  PropertyList list;
  ASSERT_EQ(AddAttachmentProperty(list, "n", text.c_str()), StatusOk);
  std::u16string expected(126, u'x');
  expected += static_cast<char16_t>(0xD83D);
  EXPECT_EQ(Value(list, 0), expected);
}

TEST(AddAttachmentProperty, NameAndValueEndAtTheirFirstNul) {
  PropertyList list;
  ASSERT_EQ(AddAttachmentProperty(list, "n", {"ab\0cd", 5}), StatusOk);
  EXPECT_EQ(Value(list, 0), u"ab");
  EXPECT_EQ(list.data()[0].value[3], u'\0');
  ASSERT_EQ(AddAttachmentProperty(list, "n", {"ab\0\xC3\xA9", 5}), StatusOk);
  EXPECT_EQ(Value(list, 1), u"ab");
  // A length cuts a value short, and nothing after it is read.
  const SizedBytes value = test::Bytes("abc");
  ASSERT_EQ(AddAttachmentProperty(list, "n", {value.data(), 3}), StatusOk);
  EXPECT_EQ(Value(list, 2), u"abc");
  ASSERT_EQ(AddAttachmentProperty(list, "n", {value.data(), 2}), StatusOk);
  EXPECT_EQ(Value(list, 3), u"ab");
}

TEST(AddAttachmentProperty, EmptyTextsAreNoFailure) {
  PropertyList list;
  EXPECT_EQ(AddAttachmentProperty(list, "n", ""), StatusOk);
  EXPECT_EQ(AddAttachmentProperty(list, "n", {"x", 0}), StatusOk);
  EXPECT_EQ(AddAttachmentProperty(list, "n", {"\0x", 2}), StatusOk);
  EXPECT_EQ(AddAttachmentProperty(list, "n", {}), StatusOk);
  EXPECT_EQ(AddAttachmentProperty(list, "", "v"), StatusOk);
  EXPECT_EQ(AddAttachmentProperty(list, {}, "v"), StatusOk);
  ASSERT_EQ(list.length(), 6u);
  for (uint64_t i = 0; i < 4; ++i) EXPECT_EQ(Value(list, i), u"") << i;
  for (uint64_t i = 4; i < 6; ++i) EXPECT_EQ(Name(list, i), u"") << i;
}

TEST(AddAttachmentProperty, TextThatIsNoUtf8Gives0) {
  PropertyList list;
  EXPECT_EQ(AddAttachmentProperty(list, "n\xE9", "v"), StatusFailed);
  EXPECT_EQ(AddAttachmentProperty(list, "n", "v\xE9"), StatusFailed);
  // Even after the units that are kept.
  EXPECT_EQ(AddAttachmentProperty(list, "n", (std::string(200, 'x') + "\xE9").c_str()),
            StatusFailed);
  EXPECT_EQ(list.length(), 0u);
  // And after the NUL that it would end at.
  EXPECT_EQ(AddAttachmentProperty(list, "n", {"ab\0\xFF", 4}), StatusFailed);
  EXPECT_EQ(AddAttachmentProperty(list, "n", {"\0\xFF", 2}), StatusFailed);
  EXPECT_EQ(list.length(), 0u);
  const auto round = [](test::FaultedWork& faulted) {
    PropertyList fresh;
    const Status added = faulted([&] { return AddAttachmentProperty(fresh, "n", "v"); });
    EXPECT_EQ(added, faulted.isReached() ? StatusFailed : StatusOk);
    EXPECT_EQ(fresh.length(), faulted.isReached() ? 0u : 1u);
  };
  EXPECT_EQ(test::SweepFaults(PlainKernelFaultText, round, test::FaultKinds::OneAndFrom), 2u);
}

// The scratch block grows for a value longer than the name, and serves one that is not.
TEST(AddAttachmentProperty, TheScratchBlockIsUsedAgain) {
  PropertyList list;
  ASSERT_NE(list.reserve(3), nullptr);
  uint64_t calls = test::Allocations();
  EXPECT_EQ(AddAttachmentProperty(list, "name", "v"), StatusOk);
  EXPECT_EQ(test::Allocations(), calls + 1);
  calls = test::Allocations();
  EXPECT_EQ(AddAttachmentProperty(list, "n", "a longer value"), StatusOk);
  EXPECT_EQ(test::Allocations(), calls + 2);
}

TEST(AddAttachmentProperty, WithoutMemoryTheListIsAsItWas) {
  const auto round = [](test::FaultedWork& faulted) {
    PropertyList list;
    list.setLastError(StatusFailed);
    const Status added =
        faulted([&] { return AddAttachmentProperty(list, "name", "longer value"); });
    if (!faulted.isReached()) {
      EXPECT_EQ(added, StatusOk);
      EXPECT_EQ(Value(list, 0), u"longer value");
      return;
    }
    EXPECT_EQ(added, StatusOutOfMemory);
    EXPECT_EQ(list.length(), 0u);
    // The third is the list's own, and the code is its last error.
    EXPECT_EQ(list.lastError(), faulted.ordinal() == 3 ? StatusOutOfMemory : StatusFailed);
  };
  EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 3u);
}

TEST(AddWideAttachmentProperty, TakesTheValueAsItIs) {
  PropertyList list;
  EXPECT_EQ(AddWideAttachmentProperty(list, "Content-ID:", u"im\u00e4ge.png"), StatusOk);
  EXPECT_EQ(AddWideAttachmentProperty(list, "n", std::u16string_view(u"ab\0cd", 5)), StatusOk);
  EXPECT_EQ(AddWideAttachmentProperty(list, "", u""), StatusOk);
  ASSERT_EQ(list.length(), 3u);
  EXPECT_EQ(std::u16string(list.data()[0].name), u"Content-ID:");
  EXPECT_EQ(Value(list, 0), u"im\u00e4ge.png");
  EXPECT_EQ(Value(list, 1), u"ab");
  EXPECT_EQ(Value(list, 2), u"");
}

TEST(AddWideAttachmentProperty, CutsAt127UnitsEvenInsideASurrogatePair) {
  PropertyList list;
  const std::u16string value = std::u16string(126, u'v') + u"\U0001F600z";
  ASSERT_EQ(AddWideAttachmentProperty(list, std::string(200, 'n').c_str(), value), StatusOk);
  EXPECT_EQ(std::u16string(list.data()[0].name), std::u16string(127, u'n'));
  EXPECT_EQ(Value(list, 0), value.substr(0, 127));
  EXPECT_EQ(list.data()[0].value[127], u'\0');
}

TEST(AddWideAttachmentProperty, FailsForANameThatIsNoTextAndWithoutMemory) {
  PropertyList list;
  EXPECT_EQ(AddWideAttachmentProperty(list, "\xff", u"v"), StatusFailed);
  const auto round = [](test::FaultedWork& faulted) {
    PropertyList fresh;
    const Status added = faulted([&] { return AddWideAttachmentProperty(fresh, "name", u"v"); });
    EXPECT_EQ(added, faulted.isReached() ? StatusOutOfMemory : StatusOk);
    EXPECT_EQ(fresh.length(), faulted.isReached() ? 0u : 1u);
  };
  EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 2u);
}

TEST(AddTimeAttachmentProperty, WritesSecondsSince1970AsAnUnsignedNumber) {
  PropertyList list;
  EXPECT_EQ(AddTimeAttachmentProperty(list, "t", 116444736000000000), StatusOk);
  EXPECT_EQ(AddTimeAttachmentProperty(list, "t", 116444736019999999), StatusOk);
  EXPECT_EQ(AddTimeAttachmentProperty(list, "t", 116444735990000001), StatusOk);
  EXPECT_EQ(AddTimeAttachmentProperty(list, "t", 0), StatusOk);
  EXPECT_EQ(Value(list, 0), u"0");
  EXPECT_EQ(Value(list, 1), u"1");
  EXPECT_EQ(Value(list, 2), u"0");
  EXPECT_EQ(Value(list, 3), u"18446744062065078016");
}

TEST(AddAttachmentProperty, ARefusedBudgetEndsTheList) {
  PropertyList list;
  ASSERT_EQ(AddAttachmentProperty(list, "n", "v"), StatusOk);
  ASSERT_NE(list.reserve(14000), nullptr);
  list.setLength(list.capacity());
  ASSERT_LT(list.capacity() * 512, 8000000u);
  PlainKernelFailAt(PlainKernelFaultBudget, 1);
  EXPECT_EQ(AddAttachmentProperty(list, "n", "v"), StatusOutOfMemory);
  EXPECT_EQ(list.data(), nullptr);
  EXPECT_EQ(list.length(), 0u);
}

}  // namespace
}  // namespace tarn
