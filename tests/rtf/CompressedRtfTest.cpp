#include "rtf/CompressedRtf.h"

#include <gtest/gtest.h>

#include "CompressedRtfSupport.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

Decoded Ok(std::string body) { return {StatusOk, std::move(body)}; }
const Decoded kDamaged = {StatusNotSupported, "old"};

TEST(CompressedRtf, ThePublishedExamples) {
  // The fixed text has line feed and carriage return the other way round than the published one.
  EXPECT_EQ(Unpack(PublishedHelloWorld()),
            Ok(Literal("{\\rtf1\\ansi\\ansicpg1252\\pard hello world}\n\r\0")));
  EXPECT_EQ(Unpack(PublishedCrossing()), Ok(Literal("{\\rtf1 WXYZWXYZWXYZWXYZWXYZ}\0")));
}

TEST(CompressedRtf, ATerminatorFollowsUnlessTheTextHasOne) {
  EXPECT_EQ(Unpack(Packed(3, LzfuTokens().literals("abc"))), Ok(Literal("abc\0")));
  EXPECT_EQ(Unpack(Packed(4, LzfuTokens().literals(Literal("abc\0")))), Ok(Literal("abc\0")));
  EXPECT_EQ(Unpack(Packed(5, LzfuTokens().literals(Literal("abc\0\0")))), Ok(Literal("abc\0\0")));
  EXPECT_EQ(Unpack(Packed(4, LzfuTokens().literals(Literal("a\0bc")))), Ok(Literal("a\0bc\0")));
}

TEST(CompressedRtf, ByteNIsNulInAnyCase) {
  for (const std::string& text : {Literal("abc"), Literal("ab\0"), Literal("")}) {
    MailMessage message;
    ASSERT_EQ(
        Unpack(message, Packed(static_cast<uint32_t>(text.size()), LzfuTokens().literals(text))),
        StatusOk);
    EXPECT_EQ(message.body.data()[text.size()], '\0');
  }
}

TEST(CompressedRtf, ATextOfNoBytesIsOneNul) {
  EXPECT_EQ(Unpack(Packed(0, LzfuTokens())), Ok(Literal("\0")));
  EXPECT_EQ(Unpack(Packed(0, LzfuTokens().literals("unused"))), Ok(Literal("\0")));
}

// The body of a message that has none but a length: what a reader leaves that has loaded the
// packed bytes.
TEST(CompressedRtf, ABodyWithoutABlockIsFilled) {
  MailMessage message;
  EXPECT_EQ(Unpack(message, PublishedCrossing()), StatusOk);
  EXPECT_EQ(message.body.text(), "{\\rtf1 WXYZWXYZWXYZWXYZWXYZ}");
  EXPECT_EQ(message.body.length(), 29u);
}

TEST(CompressedRtf, ReferencesIntoTheFixedText) {
  EXPECT_EQ(Unpack(Packed(17, LzfuTokens().reference(0, 17))),
            Ok(Literal("{\\rtf1\\ansi\\mac\\d\0")));
  EXPECT_EQ(Unpack(Packed(6, LzfuTokens().reference(165, 6))), Ok(Literal("ue0\n\r\\\0")));
  EXPECT_EQ(Unpack(Packed(3, LzfuTokens().reference(204, 3))), Ok(Literal("\\tx\0")));
  EXPECT_EQ(Unpack(Packed(4, LzfuTokens().reference(203, 4))), Ok(Literal("b\\tx\0")));
}

TEST(CompressedRtf, TheWholeFixedText) {
  LzfuTokens tokens;
  for (uint32_t offset = 0; offset < 204; offset += 17) tokens.reference(offset, 17);
  tokens.reference(204, 3);
  EXPECT_EQ(Unpack(Packed(207, tokens)),
            Ok(std::string("{\\rtf1\\ansi\\mac\\deff0\\deftab720{\\fonttbl;}{\\f0\\fnil \\froman "
                           "\\fswiss \\fmodern \\fscript \\fdecor MS Sans SerifSymbolArialTimes "
                           "New RomanCourier{\\colortbl\\red0\\green0\\blue0\n\r\\par "
                           "\\pard\\plain\\f0\\fs20\\b\\i\\u\\tab\\tx") +
               '\0'));
}

TEST(CompressedRtf, AnOverlapRepeatsBytes) {
  EXPECT_EQ(Unpack(Packed(18, LzfuTokens().literals("x").back(1, 17))),
            Ok(std::string(18, 'x') + '\0'));
  EXPECT_EQ(Unpack(Packed(19, LzfuTokens().literals("ab").back(2, 17))),
            Ok(Literal("abababababababababa\0")));
  EXPECT_EQ(Unpack(Packed(33, LzfuTokens().literals("0123456789abcdef").back(16, 17))),
            Ok(Literal("0123456789abcdef0123456789abcdef0\0")));
}

// The same in the middle of a long text, where whole groups are unpacked at once.
TEST(CompressedRtf, EveryDistanceAndLengthInTheMiddleOfAText) {
  const std::string start = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  const std::string after(400, '.');
  for (uint32_t distance = 1; distance <= 36; ++distance) {
    for (uint32_t length = 2; length <= 17; ++length) {
      LzfuTokens tokens;
      tokens.literals(start).back(distance, length).literals(after);
      std::string expected = start;
      for (uint32_t i = 0; i < length; ++i) expected += expected[expected.size() - distance];
      expected += after;
      ASSERT_EQ(Unpack(Packed(static_cast<uint32_t>(expected.size()), tokens)), Ok(expected + '\0'))
          << distance << " " << length;
    }
  }
}

// A text of 3889 literals puts the write position at 4096.
TEST(CompressedRtf, OffsetsAreCountedModulo4096) {
  std::string text;
  for (int i = 0; i < 3889; ++i) text += static_cast<char>('a' + i % 23);
  const auto unpack = [&](uint32_t offset) {
    const Decoded decoded = Unpack(Packed(3891, LzfuTokens().literals(text).reference(offset, 2)));
    EXPECT_EQ(decoded.status, StatusOk);
    EXPECT_EQ(decoded.body.substr(0, 3889), text);
    return decoded.body.substr(3889);
  };
  EXPECT_EQ(unpack(4095), Literal("bb\0"));
  EXPECT_EQ(unpack(207), Literal("ab\0"));
  EXPECT_EQ(unpack(0), Literal("{\\\0"));
  EXPECT_EQ(unpack(1), Literal("\\r\0"));
}

// The end marker of published streams is an ordinary reference here, 4096 bytes back.
TEST(CompressedRtf, AReferenceToTheWritePositionGoesBack4096Bytes) {
  std::string text;
  for (int i = 0; i < 4000; ++i) text += static_cast<char>('a' + i % 23);
  EXPECT_EQ(Unpack(Packed(4002, LzfuTokens().literals(text).endMarker())), Ok(text + "ol" + '\0'));
}

TEST(CompressedRtf, WhatFollowsTheRawSizeIsNotRead) {
  EXPECT_EQ(Unpack(Packed(2, LzfuTokens().literals("abcdefghijkl"))), Ok(Literal("ab\0")));
  EXPECT_EQ(Unpack(Packed(8, LzfuTokens().literals("abcdefgh"))), Ok(Literal("abcdefgh\0")));
  EXPECT_EQ(Unpack(Packed(3, LzfuTokens().literals("abc").reference(3000, 2))),
            Ok(Literal("abc\0")));
}

// The block has one byte after the text, which then becomes the terminator.
TEST(CompressedRtf, ALastReferenceMayFillTheBlock) {
  EXPECT_EQ(Unpack(Packed(5, LzfuTokens().reference(1, 6))), Ok(Literal("\\rtf1\0")));
  EXPECT_EQ(Unpack(Packed(5, LzfuTokens().reference(1, 7))), kDamaged);
  EXPECT_EQ(Unpack(Packed(5, LzfuTokens().literals("abcd").back(1, 2))), Ok(Literal("abcdd\0")));
  EXPECT_EQ(Unpack(Packed(5, LzfuTokens().literals("abcd").back(1, 3))), kDamaged);
}

TEST(CompressedRtf, ASourceBelow16BytesIsRefused) {
  MailMessage message;
  GiveBody(message, "old");
  EXPECT_EQ(DecodeCompressedRtf(nullptr, message, 0), StatusNotSupported);
  EXPECT_EQ(DecodeCompressedRtf(nullptr, message, 100), StatusNotSupported);
  EXPECT_EQ(message.body.view(), "old");
  const std::string whole = Packed(0, LzfuTokens());
  for (size_t length = 0; length < 16; ++length) {
    EXPECT_EQ(Unpack(whole.substr(0, length)), kDamaged) << length;
  }
  EXPECT_EQ(Unpack(whole), Ok(Literal("\0")));
}

TEST(CompressedRtf, AWrongCompressedSizeIsRefused) {
  for (const uint32_t size : {0u, 14u, 16u, 19u, 0xFFFFFFFFu}) {
    EXPECT_EQ(Unpack(WriteCompressedRtf({.compressedSize = size, .rawSize = 2}, Literal("\0ab"))),
              kDamaged);
    EXPECT_EQ(Unpack(WriteCompressedRtf({.compressedSize = size, .rawSize = 3, .magic = kMelaMagic},
                                        "abc")),
              kDamaged);
  }
  EXPECT_EQ(Unpack(WriteCompressedRtf({.compressedSize = 15, .rawSize = 2}, Literal("\0ab"))),
            Ok(Literal("ab\0")));
}

TEST(CompressedRtf, AWrongChecksumOfPackedDataIsRefused) {
  const std::string contents = Literal("\0ab");
  const uint32_t right = LzfuChecksum(contents);
  EXPECT_EQ(Unpack(WriteCompressedRtf({.rawSize = 2, .crc = right}, contents)),
            Ok(Literal("ab\0")));
  for (const uint32_t wrong : {0u, ~right, right ^ 1, right ^ 0x80000000u}) {
    EXPECT_EQ(Unpack(WriteCompressedRtf({.rawSize = 2, .crc = wrong}, contents)), kDamaged);
  }
}

TEST(CompressedRtf, AnotherMagicIsRefused) {
  for (const uint32_t magic : {0u, 0x75465A4Du, 0x4C5A4675u, 0x414C454Cu}) {
    EXPECT_EQ(Unpack(WriteCompressedRtf({.rawSize = 2, .magic = magic}, Literal("\0ab"))),
              kDamaged);
  }
}

TEST(CompressedRtf, ANegativeRawSizeOfPackedDataIsRefused) {
  for (const uint32_t size : {0xFFFFFFFFu, 0xFFFFFFF0u, 0xFFFFFF31u, 0x80000000u}) {
    EXPECT_EQ(Unpack(Packed(size, LzfuTokens().literals("abc"))), kDamaged);
  }
}

// A group of 17 bytes gives 136 at most, so nothing is asked of memory for a size beyond.
TEST(CompressedRtf, ARawSizeBeyondWhatTheDataCanGiveIsRefusedWithoutAllocating) {
  LzfuTokens tokens;
  for (int i = 0; i < 8; ++i) tokens.reference(0, 17);
  PlainKernelUsageRecord before = {};
  PlainKernelUsageRecord after = {};
  MailMessage message;
  PlainKernelUsage(&before);
  EXPECT_EQ(Unpack(message, Packed(137, tokens)), StatusNotSupported);
  EXPECT_EQ(Unpack(message, Packed(0x7FFFFFFF, tokens)), StatusNotSupported);
  PlainKernelUsage(&after);
  EXPECT_EQ(after.allocationCalls - before.allocationCalls, 2u);  // the sources
  EXPECT_EQ(Unpack(message, Packed(136, tokens)), StatusOk);
  EXPECT_EQ(message.body.length(), 137u);
}

// Offset 300 at position 207 would be 3796 bytes before the block.
TEST(CompressedRtf, AReferenceBeforeTheBlockIsRefused) {
  EXPECT_EQ(Unpack(Packed(2, LzfuTokens().reference(300, 2))), kDamaged);
  EXPECT_EQ(Unpack(Packed(2, LzfuTokens().reference(207, 2))), kDamaged);
  EXPECT_EQ(Unpack(Packed(2, LzfuTokens().reference(4095, 2))), kDamaged);
  EXPECT_EQ(Unpack(Packed(3, LzfuTokens().literals("a").reference(208, 2))), kDamaged);
  EXPECT_EQ(Unpack(Packed(3, LzfuTokens().literals("a").reference(207, 2))), Ok(Literal("aaa\0")));
}

TEST(CompressedRtf, AReferenceBeforeTheBlockIsRefusedInTheMiddleOfAText) {
  const std::string after(400, 'x');
  for (const uint32_t distance : {211u, 212u, 4096u}) {
    LzfuTokens tokens;
    tokens.literals("abc").back(distance, 2).literals(after);
    EXPECT_EQ(Unpack(Packed(405, tokens)), kDamaged) << distance;
  }
  LzfuTokens tokens;
  tokens.literals("abc").back(210, 2).literals(after);
  EXPECT_EQ(Unpack(Packed(405, tokens)), Ok("abc{\\" + after + '\0'));
}

// Eight references of 17 bytes are the largest group; one byte fewer is room for it, too.
TEST(CompressedRtf, TheLargestGroupAtTheEndOfTheText) {
  LzfuTokens tokens;
  for (int i = 0; i < 8; ++i) tokens.reference(0, 17);
  tokens.literals(std::string(40, 'x'));
  for (uint32_t size = 120; size < 135; ++size) {
    EXPECT_EQ(Unpack(Packed(size, tokens)), kDamaged) << size;
  }
  EXPECT_EQ(Unpack(Packed(135, tokens)).status, StatusOk);
  EXPECT_EQ(Unpack(Packed(136, tokens)).status, StatusOk);
  EXPECT_EQ(Unpack(Packed(137, tokens)).body.substr(119), Literal("{\\rtf1\\ansi\\mac\\dx\0"));
}

TEST(CompressedRtf, DataThatEndsEarlyIsRefused) {
  EXPECT_EQ(Unpack(Packed(1, LzfuTokens())), kDamaged);                            // control byte
  EXPECT_EQ(Unpack(WriteCompressedRtf({.rawSize = 1}, Literal("\0"))), kDamaged);  // literal
  EXPECT_EQ(Unpack(WriteCompressedRtf({.rawSize = 1}, "\x01\x01")), kDamaged);     // half reference
  EXPECT_EQ(Unpack(Packed(4, LzfuTokens().literals("abc"))), kDamaged);
  EXPECT_EQ(Unpack(Packed(9, LzfuTokens().literals("abcdefgh"))), kDamaged);
  EXPECT_EQ(Unpack(Packed(20, LzfuTokens().reference(0, 17).literals("ab"))), kDamaged);
}

TEST(CompressedRtf, StoredTextIsTakenAsItIs) {
  EXPECT_EQ(Unpack(StoreRtf("{\\rtf1 abc}")), Ok(Literal("{\\rtf1 abc}\0")));
  EXPECT_EQ(Unpack(StoreRtf(Literal("a\0b"))), Ok(Literal("a\0b\0")));
  EXPECT_EQ(Unpack(StoreRtf(Literal("ab\0"))), Ok(Literal("ab\0")));
  EXPECT_EQ(Unpack(StoreRtf("")), Ok(Literal("\0")));
}

TEST(CompressedRtf, TheChecksumOfStoredTextIsNotTested) {
  for (const uint32_t crc : {0u, 1u, 0xFFFFFFFFu}) {
    EXPECT_EQ(Unpack(WriteCompressedRtf({.rawSize = 3, .magic = kMelaMagic, .crc = crc}, "abc")),
              Ok(Literal("abc\0")));
  }
}

Decoded UnpackStored(uint32_t rawSize, const std::string& contents) {
  return Unpack(WriteCompressedRtf({.rawSize = rawSize, .magic = kMelaMagic}, contents));
}

TEST(CompressedRtf, TheRawSizeOfStoredTextIsClampedToTheData) {
  EXPECT_EQ(UnpackStored(2, "abc"), Ok(Literal("ab\0")));
  EXPECT_EQ(UnpackStored(0, "abc"), Ok(Literal("\0")));
  EXPECT_EQ(UnpackStored(3, "abc"), Ok(Literal("abc\0")));
  EXPECT_EQ(UnpackStored(4, "abc"), Ok(Literal("abc\0")));
  EXPECT_EQ(UnpackStored(0x7FFFFFFF, "abc"), Ok(Literal("abc\0")));
}

TEST(CompressedRtf, StoredTextOfRawSizeMinusOneEndsAtItsNul) {
  EXPECT_EQ(UnpackStored(0xFFFFFFFF, Literal("ab\0cd")), Ok(Literal("ab\0")));
  EXPECT_EQ(UnpackStored(0xFFFFFFFF, Literal("\0cd")), Ok(Literal("\0")));
  EXPECT_EQ(UnpackStored(0xFFFFFFFF, "abc"), Ok(Literal("abc\0")));  // or with the data
  EXPECT_EQ(UnpackStored(0xFFFFFFFF, ""), Ok(Literal("\0")));
}

TEST(CompressedRtf, StoredTextOfOtherNegativeRawSizes) {
  for (uint32_t size = 0xFFFFFFFE; size >= 0xFFFFFFF0; --size) {
    EXPECT_EQ(UnpackStored(size, "abc"), (Decoded{StatusOutOfMemory, ""})) << size;
  }
  EXPECT_EQ(UnpackStored(0xFFFFFFEF, Literal("a\0c")), Ok(Literal("a\0c\0")));
  EXPECT_EQ(UnpackStored(0x80000000, "abc"), Ok(Literal("abc\0")));
}

TEST(CompressedRtf, WithoutMemory) {
  for (const std::string& bytes : {PackRtf("{\\rtf1 abc}"), StoreRtf("{\\rtf1 abc}")}) {
    MailMessage message;
    GiveBody(message, "old");
    char* const source = KernelCopy(bytes);
    PlainKernelFailAt(PlainKernelFaultMemory, 1);
    EXPECT_EQ(DecodeCompressedRtf(source, message, bytes.size()), StatusOutOfMemory);
    PlainKernelFailAt(PlainKernelFaultMemory, 0);
    EXPECT_EQ(message.body.view(), bytes[8] == 'L' ? "old" : "");
    EXPECT_EQ(Unpack(message, bytes), StatusOk);
    EXPECT_EQ(message.body.view(), Literal("{\\rtf1 abc}\0"));
  }
}

// No second allocation is needed.
TEST(CompressedRtf, OneAllocationIsEnough) {
  for (const std::string& bytes : {PackRtf("{\\rtf1 abc}"), StoreRtf("{\\rtf1 abc}")}) {
    MailMessage message;
    char* const source = KernelCopy(bytes);
    PlainKernelFailAt(PlainKernelFaultMemory, 2);
    EXPECT_EQ(DecodeCompressedRtf(source, message, bytes.size()), StatusOk);
    PlainKernelFailAt(PlainKernelFaultMemory, 0);
  }
}

}  // namespace
}  // namespace tarn::test
