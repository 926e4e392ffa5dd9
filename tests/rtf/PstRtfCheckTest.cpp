// Compressed RTF that nobody wants: whatever bytes come, in whatever pieces, the answer is that of
// the decoder.
#include "rtf/PstRtfCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "CompressedRtfSupport.h"

namespace tarn::test {
namespace {

// What a check says of bytes that come in pieces of this size: the status, and the length that the
// body would have.
struct Checked {
  Status status;
  uint64_t length = 0;
};

Checked Check(std::string_view bytes, uint64_t bodyLength, size_t piece) {
  PstRtfCheck check(bytes.size(), bodyLength);
  for (size_t at = 0; at < bytes.size(); at += piece) {
    // A block of just these bytes, so that reading outside is noticed.
    const std::string_view part = bytes.substr(at, piece);
    const std::vector<unsigned char> taken(part.begin(), part.end());
    check.take(taken);
  }
  return {check.status(), check.status() == StatusOk ? check.bodyLength() : bodyLength};
}

// The decoder's answer, found by the check in pieces of all sizes.
Status ExpectDecodersAnswer(const std::string& bytes, size_t bodyLength = 0) {
  MailMessage message;
  if (bodyLength != 0) GiveBody(message, std::string(bodyLength, '.'));
  const Status status = UnpackPst(message, bytes);
  EXPECT_TRUE(status == StatusOk || status == StatusNotSupported) << status;
  for (const size_t piece : {size_t{1}, size_t{2}, size_t{16}, size_t{17}, size_t{100},
                             size_t{4096}, std::max<size_t>(bytes.size(), 1)}) {
    const Checked checked = Check(bytes, bodyLength, piece);
    EXPECT_EQ(checked.status, status) << piece;
    EXPECT_EQ(checked.length, message.body.length()) << piece;
  }
  return status;
}

std::string Repaired(const std::string& bytes) {
  CompressedRtfFields fields;
  fields.rawSize = 0;
  for (size_t i = 0; i < 4; ++i) {
    fields.rawSize |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[4 + i])) << (8 * i);
  }
  return WriteCompressedRtf(fields, std::string_view(bytes).substr(16));
}

TEST(PstRtfCheck, ThePublishedExamples) {
  EXPECT_EQ(Check(PublishedHelloWorld(), 0, 7).status, StatusOk);
  EXPECT_EQ(Check(PublishedHelloWorld(), 0, 7).length, 43u);
  EXPECT_EQ(Check(PublishedCrossing(), 0, 1000).status, StatusOk);
  EXPECT_EQ(Check(PublishedCrossing(), 0, 1000).length, 28u);
}

TEST(PstRtfCheck, TextsOfAllSizes) {
  std::mt19937 random(21);
  for (size_t size = 0; size < 300; ++size) {
    EXPECT_EQ(ExpectDecodersAnswer(PackRtf(RandomRtf(random, size))), StatusOk);
  }
  for (const size_t size : {3800u, 3900u, 4000u, 4096u, 4303u, 20000u, 100000u}) {
    EXPECT_EQ(ExpectDecodersAnswer(PackRtf(RandomRtf(random, size))), StatusOk);
  }
  EXPECT_EQ(ExpectDecodersAnswer(PackRtf(std::string(50000, 'x'))), StatusOk);
}

TEST(PstRtfCheck, HeadersThatLie) {
  const LzfuTokens tokens = LzfuTokens().literals("abc");
  EXPECT_EQ(ExpectDecodersAnswer(WriteCompressedRtf({.rawSize = 3}, tokens.bytes())), StatusOk);
  EXPECT_EQ(
      ExpectDecodersAnswer(WriteCompressedRtf({.compressedSize = 3, .rawSize = 3}, tokens.bytes())),
      StatusNotSupported);
  EXPECT_EQ(ExpectDecodersAnswer(WriteCompressedRtf({.rawSize = 3, .crc = 1}, tokens.bytes())),
            StatusNotSupported);
  EXPECT_EQ(ExpectDecodersAnswer(WriteCompressedRtf({.rawSize = 3, .magic = 1}, tokens.bytes())),
            StatusNotSupported);
  for (const uint32_t rawSize : {4u, 1000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(ExpectDecodersAnswer(WriteCompressedRtf({.rawSize = rawSize}, tokens.bytes())),
              StatusNotSupported);
  }
  EXPECT_EQ(ExpectDecodersAnswer(WriteCompressedRtf({.rawSize = 0}, "")), StatusOk);
}

TEST(PstRtfCheck, StoredText) {
  for (const std::string& text : {std::string(), Literal("{\\rtf1 Hi}"), Literal("\0"),
                                  Literal("a\0b\0"), std::string(9000, 'x')}) {
    EXPECT_EQ(ExpectDecodersAnswer(StoreRtf(text, StoredCrc::OfContents)), StatusOk);
    EXPECT_EQ(ExpectDecodersAnswer(StoreRtf(text, StoredCrc::OfContents), 5000), StatusOk);
  }
  EXPECT_EQ(ExpectDecodersAnswer(StoreRtf("{\\rtf1 Hi}")), StatusNotSupported);
}

// References to every place, from every position of the first window on.
TEST(PstRtfCheck, ReferencesBeforeTheBlock) {
  std::mt19937 random(22);
  int refused = 0;
  for (int i = 0; i < 3000; ++i) {
    LzfuTokens tokens;
    uint32_t size = 0;
    const uint32_t start = static_cast<uint32_t>(random() % 4200);
    while (size < start) {
      tokens.back(1 + static_cast<uint32_t>(random() % (207 + size < 4096 ? 207 + size : 4096)),
                  17);
      size += 17;
    }
    for (int token = 0; token < 40; ++token) {
      const uint32_t position = 207 + size;
      const uint32_t near = position + static_cast<uint32_t>(random() % 3) - 1;
      if (token == 20) {
        tokens.reference(near < 4096 ? near : static_cast<uint32_t>(random() % 4096), 5);
        size += 5;
      } else {
        tokens.literals("x");
        size += 1;
      }
    }
    if (ExpectDecodersAnswer(WriteCompressedRtf({.rawSize = size}, tokens.bytes())) ==
        StatusNotSupported)
      ++refused;
  }
  EXPECT_GT(refused, 1000);
  EXPECT_LT(refused, 2900);
}

// A long body leaves room for the end of the last reference.
TEST(PstRtfCheck, LastReferencesAndOldBodies) {
  const std::string packed = Packed(3, LzfuTokens().literals("ab").back(1, 17));
  for (const size_t length : {0u, 1u, 209u, 210u, 225u, 226u, 227u, 450u}) {
    EXPECT_EQ(ExpectDecodersAnswer(packed, length), length < 226 ? StatusNotSupported : StatusOk)
        << length;
  }
}

TEST(PstRtfCheck, DamageOfAllKinds) {
  std::mt19937 random(23);
  for (int i = 0; i < 60; ++i) {
    const std::string sample = PackRtf(RandomRtf(random, 100 + random() % 6000));
    for (int j = 0; j < 20; ++j) {
      std::string bytes = sample;
      bytes[random() % bytes.size()] = static_cast<char>(random());
      ExpectDecodersAnswer(bytes).ignore();
      ExpectDecodersAnswer(Repaired(bytes), random() % 8000).ignore();
      ExpectDecodersAnswer(Repaired(sample.substr(0, 16 + random() % (sample.size() - 16))))
          .ignore();
    }
  }
}

}  // namespace
}  // namespace tarn::test
