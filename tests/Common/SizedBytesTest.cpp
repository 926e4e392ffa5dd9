#include <gtest/gtest.h>

#include "KernelUse.h"

namespace tarn {
namespace {

using test::Allocations;
using test::Bytes;
using test::Raw;

TEST(SizedBytes, TextDropsOneTrailingNul) {
  EXPECT_EQ(SizedBytes().text(), "");
  EXPECT_EQ(Bytes("ab").text(), "ab");
  EXPECT_EQ(Bytes(Raw("ab\0")).text(), "ab");
  EXPECT_EQ(Bytes(Raw("ab\0\0")).text(), Raw("ab\0"));
  EXPECT_EQ(Bytes(Raw("\0ab")).text(), Raw("\0ab"));
}

TEST(SizedBytes, EmptyIsAbsentOrWithoutLengthOrOneNul) {
  EXPECT_TRUE(SizedBytes().isEmptyText());
  EXPECT_TRUE(Bytes("").isEmptyText());
  EXPECT_TRUE(Bytes(Raw("\0")).isEmptyText());
  EXPECT_FALSE(Bytes(Raw("\0\0")).isEmptyText());
  EXPECT_FALSE(Bytes("a").isEmptyText());
}

TEST(SizedBytes, WithoutABlockItHasNoLength) {
  SizedBytes text(KernelBlock<char>(), 5);
  EXPECT_FALSE(text.hasBlock());
  EXPECT_EQ(text.length(), 0u);
  text.adopt({}, 5);
  EXPECT_EQ(text.view(), "");
  EXPECT_TRUE(text.isEmptyText());
}

TEST(SizedBytes, AdoptReplacesTheBlock) {
  const uint64_t before = test::Usage().liveBlocks;
  {
    SizedBytes text = Bytes("old");
    KernelBlock<char> block = AllocateBlock<char>(4, TARN_HERE);
    std::memcpy(block.get(), "new!", 4);
    text.adopt(std::move(block), 3);
    EXPECT_EQ(text.view(), "new");
    EXPECT_EQ(test::Usage().liveBlocks, before + 1);
    const KernelBlock<char> taken = text.take();
    EXPECT_TRUE(taken);
    EXPECT_FALSE(text.hasBlock());
    EXPECT_EQ(text.length(), 0u);
  }
  EXPECT_EQ(test::Usage().liveBlocks, before);
}

TEST(SizedBytes, ClearAndTruncateKeepTheBlock) {
  SizedBytes text = Bytes("abc");
  const char* const block = text.data();
  text.truncate(2);
  EXPECT_EQ(text.view(), "ab");
  text.clear();
  EXPECT_EQ(text.view(), "");
  EXPECT_EQ(text.data(), block);
}

TEST(SizedBytes, OverwriteKeepsWhatTheTextHadAndCountsWhatItsWriterSays) {
  SizedBytes text = Bytes("abc");
  EXPECT_TRUE(text.overwrite(6, [](char* block) {
    EXPECT_EQ(std::string_view(block, 3), "abc");
    std::memcpy(block + 3, "de", 2);
    return uint64_t{5};
  }));
  EXPECT_EQ(text.view(), "abcde");
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(text.overwrite(100, [](char*) { return uint64_t{0}; }));
  EXPECT_EQ(text.view(), "abcde");
}

TEST(SizedBytes, MovesPassTheBlockOn) {
  SizedBytes first = Bytes("ab");
  const char* const block = first.data();
  SizedBytes second = std::move(first);
  EXPECT_EQ(second.data(), block);
  EXPECT_EQ(second.length(), 2u);
  SizedBytes third = Bytes("xyz");
  third = std::move(second);
  EXPECT_EQ(third.data(), block);
  EXPECT_EQ(third.view(), "ab");
  third.release();
  EXPECT_EQ(third.data(), nullptr);
  EXPECT_EQ(third.length(), 0u);
  third.release();
}

TEST(SizedBytes, RefillUsesTheBlockThatItHas) {
  SizedBytes text = Bytes("abc");
  const char* const block = text.data();
  const uint64_t before = Allocations();
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_TRUE(text.refill(2, [](char* bytes) {
    bytes[2] = 'd';
    return uint64_t{3};
  }));
  EXPECT_EQ(text.view(), "abd");
  EXPECT_EQ(text.data(), block);
  EXPECT_EQ(Allocations(), before);
  EXPECT_FALSE(text.refill(4, [](char*) { return uint64_t{0}; }));
  EXPECT_EQ(text.view(), "abd");
  EXPECT_TRUE(text.refill(4, [](char* bytes) {
    bytes[3] = 'e';
    return uint64_t{4};
  }));
  EXPECT_EQ(text.view(), "abde");
}

TEST(SizedBytes, RefillGivesAnAbsentTextABlock) {
  SizedBytes absent;
  EXPECT_TRUE(absent.refill(0, [](char*) { return uint64_t{0}; }));
  EXPECT_TRUE(absent.hasBlock());
}

TEST(SizedBytes, ItsBlockFitsTheTextAndWhatIsToSpare) {
  SizedBytes text = Bytes("abcdefgh");
  text.truncate(3);
  const uint64_t before = test::Usage().liveBytes;
  EXPECT_TRUE(text.fitBlock(1));
  EXPECT_EQ(test::Usage().liveBytes, before - 4);
  EXPECT_TRUE(text.fitBlock());
  EXPECT_EQ(test::Usage().liveBytes, before - 5);
  EXPECT_TRUE(text.fitBlock(6));
  EXPECT_EQ(test::Usage().liveBytes, before + 1);
  EXPECT_EQ(text.view(), "abc");
}

TEST(SizedBytes, ABlockThatCannotFitStays) {
  SizedBytes text = Bytes("abc");
  const char* const block = text.data();
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(text.fitBlock(9));
  const uint64_t calls = Allocations();
  EXPECT_FALSE(text.fitBlock(UINT64_MAX - 2));
  EXPECT_EQ(Allocations(), calls);
  EXPECT_EQ(text.data(), block);
  EXPECT_EQ(text.view(), "abc");
}

TEST(KernelBlock, OwnsGivesAndReplaces) {
  const uint64_t before = test::Usage().liveBlocks;
  {
    KernelBlock<char16_t> block = AllocateBlock<char16_t>(3, TARN_HERE);
    ASSERT_TRUE(block);
    block[2] = u'x';
    KernelBlock<char16_t> other = std::move(block);
    EXPECT_EQ(other[2], u'x');
    other = AllocateZeroBlock<char16_t>(2, TARN_HERE);
    EXPECT_EQ(other[0], u'\0');
    EXPECT_EQ(other[1], u'\0');
    EXPECT_EQ(test::Usage().liveBlocks, before + 1);
    char16_t* const given = other.take();
    EXPECT_FALSE(other);
    KernelFree(given, TARN_HERE);
  }
  EXPECT_EQ(test::Usage().liveBlocks, before);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(AllocateBlock<char>(1, TARN_HERE));
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(AllocateZeroBlock<char>(1, TARN_HERE));
  EXPECT_FALSE(AllocateBlock<uint64_t>(UINT64_MAX / 4, TARN_HERE));
}

TEST(AppendTerminated, MakesATextWithItsNulCounted) {
  SizedBytes text;
  EXPECT_EQ(AppendTerminated(text, "abc"), StatusOk);
  EXPECT_EQ(text.view(), Raw("abc\0"));
}

TEST(AppendTerminated, LeavesNoNulInTheMiddle) {
  SizedBytes text = Bytes(Raw("abc\0"));
  EXPECT_EQ(AppendTerminated(text, "def"), StatusOk);
  EXPECT_EQ(text.view(), Raw("abcdef\0"));
  EXPECT_EQ(AppendTerminated(text, "g", 1), StatusOk);
  EXPECT_EQ(text.view(), Raw("abcdefg\0"));
}

TEST(AppendTerminated, ATextThatDoesNotCountItsNulGetsOne) {
  SizedBytes text = Bytes("abc");
  EXPECT_EQ(AppendTerminated(text, "d"), StatusOk);
  EXPECT_EQ(text.view(), Raw("abcd\0"));
}

TEST(AppendTerminated, DropsNoMoreThanOneNul) {
  SizedBytes text = Bytes(Raw("a\0\0"));
  EXPECT_EQ(AppendTerminated(text, "b"), StatusOk);
  EXPECT_EQ(text.view(), Raw("a\0b\0"));
}

TEST(AppendTerminated, ASourceThatEndsWithANulGetsNoSecond) {
  SizedBytes text = Bytes(Raw("a\0"));
  EXPECT_EQ(AppendTerminated(text, "b\0", 2), StatusOk);
  EXPECT_EQ(text.view(), Raw("ab\0"));
  EXPECT_EQ(AppendTerminated(text, "x\0y", 3), StatusOk);
  EXPECT_EQ(text.view(), Raw("abx\0y\0"));
}

TEST(AppendTerminated, NothingAppendedStillTerminates) {
  SizedBytes none;
  EXPECT_EQ(AppendTerminated(none, ""), StatusOk);
  EXPECT_EQ(none.view(), Raw("\0"));
  SizedBytes nul = Bytes(Raw("\0"));
  EXPECT_EQ(AppendTerminated(nul, nullptr), StatusOk);
  EXPECT_EQ(nul.view(), Raw("\0"));
  SizedBytes text = Bytes("abc");
  EXPECT_EQ(AppendTerminated(text, nullptr, 7), StatusOk);
  EXPECT_EQ(text.view(), Raw("abc\0"));
  // One NUL is dropped, and what is left ends with one.
  SizedBytes twice = Bytes(Raw("abc\0\0"));
  EXPECT_EQ(AppendTerminated(twice, ""), StatusOk);
  EXPECT_EQ(twice.view(), Raw("abc\0"));
}

TEST(AppendTerminated, WithoutMemoryNothingChanges) {
  SizedBytes text = Bytes(Raw("abc\0"));
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(AppendTerminated(text, "def"), StatusOutOfMemory);
  EXPECT_EQ(text.view(), Raw("abc\0"));
  const uint64_t calls = Allocations();
  EXPECT_EQ(AppendTerminated(text, "x", UINT64_MAX - 3), StatusOutOfMemory);
  EXPECT_EQ(Allocations(), calls);
  EXPECT_EQ(text.view(), Raw("abc\0"));
}

}  // namespace
}  // namespace tarn
