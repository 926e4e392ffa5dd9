#include <gtest/gtest.h>

#include <algorithm>
#include <istream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <utility>

#include "CompressedRtfSupport.h"
#include "Tarnbase/PlainKernel.h"
#include "rtf/CompressedRtf.h"
#include "support/FaultSweep.h"

namespace tarn::test {
namespace {

Decoded Ok(std::string body) { return {StatusOk, std::move(body)}; }
const Decoded kDamaged = {StatusNotSupported, "old"};

TEST(CompressedPstRtf, ThePublishedExamples) {
  EXPECT_EQ(UnpackPst(PublishedHelloWorld()),
            Ok("{\\rtf1\\ansi\\ansicpg1252\\pard hello world}\n\r"));
  EXPECT_EQ(UnpackPst(PublishedCrossing()), Ok("{\\rtf1 WXYZWXYZWXYZWXYZWXYZ}"));
}

TEST(CompressedPstRtf, NoTerminatorFollows) {
  EXPECT_EQ(UnpackPst(Packed(3, LzfuTokens().literals("abc"))), Ok("abc"));
  EXPECT_EQ(UnpackPst(Packed(4, LzfuTokens().literals(Literal("abc\0")))), Ok(Literal("abc\0")));
  EXPECT_EQ(UnpackPst(Packed(0, LzfuTokens())), Ok(""));
}

TEST(CompressedPstRtf, RtfThatWrapsHtmlStaysRtf) {
  const std::string text = "{\\rtf1\\ansi\\fromhtml1 {\\*\\htmltag64 <p><![if !supportLists]>}}";
  EXPECT_EQ(UnpackPst(PackRtf(text)), Ok(text));
}

TEST(CompressedPstRtf, FillsTheRecordOfTheIndex) {
  MailMessage records[3];
  MessageList messages{3, records};
  std::istringstream stream(PublishedCrossing());
  stream.seekg(0, std::ios::end);
  EXPECT_EQ(DecodePstCompressedRtf(stream, messages, 1), StatusOk);
  EXPECT_EQ(records[0].body.data(), nullptr);
  EXPECT_EQ(records[1].body.view(), "{\\rtf1 WXYZWXYZWXYZWXYZWXYZ}");
  EXPECT_EQ(records[2].body.data(), nullptr);
}

TEST(CompressedPstRtf, AShortBodyIsReplaced) {
  const std::string packed = Packed(3, LzfuTokens().literals("abc"));
  EXPECT_EQ(UnpackPst(packed, std::string(209, '.')), Ok("abc"));
  MailMessage message;  // without a block
  EXPECT_EQ(UnpackPst(message, packed), StatusOk);
  EXPECT_EQ(message.body.view(), "abc");
}

// What is after the text: the last 207 bytes of fixed text and text as they were unpacked, and
// then the old body.
TEST(CompressedPstRtf, ALongBodyKeepsItsBlockAndItsLengthLess207) {
  const std::string packed = Packed(3, LzfuTokens().literals("abc"));
  const std::string fixed(LzfuStartText());
  MailMessage message;
  GiveBody(message, std::string(292, '.') + '!' + std::string(207, '?'));
  const char* const block = message.body.data();
  EXPECT_EQ(UnpackPst(message, packed), StatusOk);
  EXPECT_EQ(message.body.data(), block);
  EXPECT_EQ(message.body.view(), "abc" + fixed.substr(3) + "abc" + std::string(82, '.') + '!');
}

TEST(CompressedPstRtf, ABodyOfJustTheTextAnd207BytesKeepsItsBlock) {
  const std::string packed = Packed(3, LzfuTokens().literals("abc"));
  for (const size_t length : {209u, 210u, 211u}) {
    MailMessage message;
    GiveBody(message, std::string(length, '.'));
    const char* const block = message.body.data();
    EXPECT_EQ(UnpackPst(message, packed), StatusOk);
    EXPECT_EQ(message.body.data() == block, length >= 210);
    EXPECT_EQ(message.body.view(), length == 211 ? "abct" : "abc");
  }
}

TEST(CompressedPstRtf, ALastReferenceMayGoBeyondTheTextInALongBody) {
  const std::string packed = Packed(3, LzfuTokens().literals("ab").back(1, 17));
  const std::string fixed(LzfuStartText());
  // The reference writes up to the block's byte 226.
  EXPECT_EQ(UnpackPst(packed, std::string(250, '.')), Ok("abb" + fixed.substr(3, 40)));
  EXPECT_EQ(UnpackPst(packed, std::string(226, '.')), Ok("abb" + fixed.substr(3, 16)));
  EXPECT_EQ(UnpackPst(packed, std::string(225, '.')),
            (Decoded{StatusNotSupported, std::string(225, '.')}));
  EXPECT_EQ(UnpackPst(packed, std::string(450, '.')),
            Ok("abb" + fixed.substr(3) + "a" + std::string(18, 'b') + std::string(17, '.')));
}

TEST(CompressedPstRtf, WithoutRoomALastReferenceEndsWithTheText) {
  EXPECT_EQ(UnpackPst(Packed(5, LzfuTokens().reference(1, 5))), Ok("\\rtf1"));
  EXPECT_EQ(UnpackPst(Packed(5, LzfuTokens().reference(1, 6))), kDamaged);
}

TEST(CompressedPstRtf, ATextOfNoBytesInALongBody) {
  const std::string fixed(LzfuStartText());
  EXPECT_EQ(UnpackPst(Packed(0, LzfuTokens()), std::string(207, '.')), Ok(""));
  EXPECT_EQ(UnpackPst(Packed(0, LzfuTokens()), std::string(217, '.')), Ok(fixed.substr(0, 10)));
}

TEST(CompressedPstRtf, AStreamBelow16BytesIsRefused) {
  const std::string whole = Packed(0, LzfuTokens());
  for (size_t length = 0; length < 16; ++length) {
    EXPECT_EQ(UnpackPst(whole.substr(0, length)), kDamaged) << length;
  }
}

TEST(CompressedPstRtf, AWrongCompressedSizeIsRefused) {
  for (const uint32_t size : {0u, 14u, 16u, 19u, 0xFFFFFFFFu}) {
    EXPECT_EQ(
        UnpackPst(WriteCompressedRtf({.compressedSize = size, .rawSize = 2}, Literal("\0ab"))),
        kDamaged);
    EXPECT_EQ(UnpackPst(WriteCompressedRtf(
                  {.compressedSize = size, .rawSize = 3, .magic = kMelaMagic}, "abc")),
              kDamaged);
  }
}

TEST(CompressedPstRtf, AWrongChecksumIsRefused) {
  const std::string contents = Literal("\0ab");
  const uint32_t right = LzfuChecksum(contents);
  for (const uint32_t magic : {kLzfuMagic, kMelaMagic}) {
    for (const uint32_t wrong : {0u, ~right, right ^ 1, right ^ 0x80000000u}) {
      EXPECT_EQ(
          UnpackPst(WriteCompressedRtf({.rawSize = 2, .magic = magic, .crc = wrong}, contents)),
          kDamaged);
    }
    EXPECT_EQ(UnpackPst(WriteCompressedRtf({.rawSize = 2, .magic = magic, .crc = right}, contents))
                  .status,
              StatusOk);
  }
}

TEST(CompressedPstRtf, AnotherMagicIsRefused) {
  for (const uint32_t magic : {0u, 0x75465A4Du, 0x4C5A4675u, 0x414C454Cu}) {
    EXPECT_EQ(UnpackPst(WriteCompressedRtf({.rawSize = 2, .magic = magic}, Literal("\0ab"))),
              kDamaged);
  }
}

TEST(CompressedPstRtf, DamagedPackedDataIsRefused) {
  LzfuTokens tokens;
  for (int i = 0; i < 8; ++i) tokens.reference(0, 17);
  EXPECT_EQ(UnpackPst(Packed(136, tokens)).status, StatusOk);
  EXPECT_EQ(UnpackPst(Packed(137, tokens)), kDamaged);
  EXPECT_EQ(UnpackPst(Packed(0x7FFFFFFF, tokens)), kDamaged);
  EXPECT_EQ(UnpackPst(Packed(0xFFFFFFFF, tokens)), kDamaged);
  EXPECT_EQ(UnpackPst(Packed(0xFFFFFF31, tokens)), kDamaged);
  EXPECT_EQ(UnpackPst(Packed(0x80000000, tokens)), kDamaged);
  EXPECT_EQ(UnpackPst(Packed(2, LzfuTokens().reference(300, 2))), kDamaged);
  EXPECT_EQ(UnpackPst(Packed(4, LzfuTokens().literals("abc"))), kDamaged);
  EXPECT_EQ(UnpackPst(WriteCompressedRtf({.rawSize = 1}, "\x01\x01")), kDamaged);
}

TEST(CompressedPstRtf, ARawSizeBeyondWhatTheDataCanGiveAllocatesNothing) {
  MailMessage message;
  PlainKernelUsageRecord before = {};
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&before);
  EXPECT_EQ(UnpackPst(message, Packed(0x7FFFFFFF, LzfuTokens().literals("abc"))),
            StatusNotSupported);
  PlainKernelUsage(&after);
  EXPECT_EQ(after.allocationCalls - before.allocationCalls, 1u);  // the stream's bytes
}

// Also the long body, into which the text would have gone, and only its start was good.
TEST(CompressedPstRtf, ALongBodyIsUntouchedByDamage) {
  const std::string old(1000, '.');
  EXPECT_EQ(UnpackPst(Packed(4, LzfuTokens().literals("abc")), old),
            (Decoded{StatusNotSupported, old}));
  EXPECT_EQ(UnpackPst(Packed(4, LzfuTokens().literals("ab").reference(300, 2)), old),
            (Decoded{StatusNotSupported, old}));
}

// Nothing of the size of the old body is needed beside it.
TEST(CompressedPstRtf, AHugeBodyTakesNoMoreMemoryThanTheText) {
  const std::string packed = Packed(3, LzfuTokens().literals("abc"));
  MailMessage message;
  GiveBody(message, std::string(1 << 20, '.'));
  const uint64_t peak = PeakOf([&] { EXPECT_EQ(UnpackPst(message, packed), StatusOk); });
  EXPECT_EQ(peak, packed.size() + 207 + 3 + 17);
  EXPECT_EQ(message.body.length(), (1u << 20) - 207);
}

TEST(CompressedPstRtf, StoredTextNeedsItsChecksum) {
  EXPECT_EQ(UnpackPst(StoreRtf("{\\rtf1 abc}")), kDamaged);
  EXPECT_EQ(UnpackPst(StoreRtf("{\\rtf1 abc}", StoredCrc::OfContents)),
            Ok(Literal("{\\rtf1 abc}\0")));
  // No bytes have a checksum of 0.
  EXPECT_EQ(UnpackPst(StoreRtf("")), Ok(Literal("\0")));
}

TEST(CompressedPstRtf, StoredTextEndsAtItsFirstNulOrWithTheData) {
  EXPECT_EQ(UnpackPst(StoreRtf(Literal("ab\0cd"), StoredCrc::OfContents)), Ok(Literal("ab\0")));
  EXPECT_EQ(UnpackPst(StoreRtf(Literal("\0cd"), StoredCrc::OfContents)), Ok(Literal("\0")));
  EXPECT_EQ(UnpackPst(StoreRtf("abcd", StoredCrc::OfContents), std::string(500, '.')),
            Ok(Literal("abcd\0")));
}

TEST(CompressedPstRtf, TheRawSizeOfStoredTextIsIgnored) {
  for (const uint32_t size : {0u, 1u, 100u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu}) {
    EXPECT_EQ(UnpackPst(WriteCompressedRtf({.rawSize = size, .magic = kMelaMagic}, "abc")),
              Ok(Literal("abc\0")));
  }
}

// Only what is before the read position is the stream.
TEST(CompressedPstRtf, TheReadPositionIsTheLength) {
  const std::string packed = PublishedCrossing();
  std::istringstream stream(packed + "more");
  stream.seekg(static_cast<std::streamoff>(packed.size()));
  MailMessage message;
  MessageList messages{1, &message};
  EXPECT_EQ(DecodePstCompressedRtf(stream, messages, 0), StatusOk);
  EXPECT_EQ(message.body.length(), 28u);
}

TEST(CompressedPstRtf, AFailedStreamIsRefused) {
  std::istringstream stream(PublishedCrossing());
  stream.setstate(std::ios::failbit);
  MailMessage message;
  MessageList messages{1, &message};
  EXPECT_EQ(DecodePstCompressedRtf(stream, messages, 0), StatusNotSupported);
}

// A stream that is at the end of these bytes and says that it has read only so many of them. All of
// them are written, so that what a reader makes of the rest is no matter of chance.
class ShortBuffer : public std::streambuf {
 public:
  ShortBuffer(std::string bytes, std::streamsize given) : bytes_(std::move(bytes)), given_(given) {}

 protected:
  pos_type seekoff(off_type offset, std::ios::seekdir, std::ios::openmode) override {
    return offset == 0 ? pos_type(static_cast<off_type>(bytes_.size())) : pos_type(off_type(-1));
  }
  pos_type seekpos(pos_type position, std::ios::openmode) override { return position; }
  std::streamsize xsgetn(char* to, std::streamsize count) override {
    std::memcpy(to, bytes_.data(), std::min(static_cast<size_t>(count), bytes_.size()));
    return std::min(count, given_);
  }

 private:
  std::string bytes_;
  std::streamsize given_;
};

TEST(CompressedPstRtf, AStreamThatGivesLessThanItsLengthIsRefused) {
  const std::string packed = PublishedCrossing();
  const auto size = static_cast<std::streamsize>(packed.size());
  for (const std::streamsize given : {std::streamsize{0}, std::streamsize{16}, size - 1, size}) {
    ShortBuffer buffer(packed, given);
    std::istream stream(&buffer);
    MailMessage message;
    GiveBody(message, "old");
    MessageList messages{1, &message};
    EXPECT_EQ(DecodePstCompressedRtf(stream, messages, 0),
              given == size ? StatusOk : StatusNotSupported)
        << given;
    EXPECT_EQ(message.body.view(), given == size ? "{\\rtf1 WXYZWXYZWXYZWXYZWXYZ}" : "old");
  }
}

class ThrowingBuffer : public ShortBuffer {
 public:
  ThrowingBuffer() : ShortBuffer(PublishedCrossing(), 0) {}

 protected:
  std::streamsize xsgetn(char*, std::streamsize) override { throw std::runtime_error("store"); }
};

TEST(CompressedPstRtf, WhatTheStreamThrowsIsLetThrough) {
  ThrowingBuffer buffer;
  std::istream stream(&buffer);
  stream.exceptions(std::ios::badbit);
  MailMessage message;
  GiveBody(message, "old");
  MessageList messages{1, &message};
  EXPECT_THROW(DecodePstCompressedRtf(stream, messages, 0).ignore(), std::runtime_error);
  EXPECT_EQ(message.body.view(), "old");
}

TEST(CompressedPstRtf, WithoutMemory) {
  const std::string text = "{\\rtf1 abc}";
  for (const std::string& old : {std::string("old"), std::string(500, '.')}) {
    for (const std::string& bytes : {PackRtf(text), StoreRtf(text, StoredCrc::OfContents)}) {
      const auto round = [&](FaultedWork& faulted) {
        MailMessage message;
        GiveBody(message, old);
        const Status status = faulted([&] { return UnpackPst(message, bytes); });
        EXPECT_EQ(status, faulted.isReached() ? StatusOutOfMemory : StatusOk);
        if (!faulted.isReached()) return;
        // Stored text replaces the body before it asks for memory.
        const bool isEmptied = bytes[8] == 'M' && faulted.ordinal() == 2;
        EXPECT_EQ(message.body.view(), isEmptied ? "" : old);
        EXPECT_EQ(UnpackPst(message, bytes), StatusOk);
        EXPECT_TRUE(message.body.view().starts_with(text));
      };
      EXPECT_EQ(SweepFaults(PlainKernelFaultMemory, round, FaultKinds::OneAndFrom), 2u);
    }
  }
}

}  // namespace
}  // namespace tarn::test
