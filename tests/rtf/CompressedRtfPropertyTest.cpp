// What holds for any text and any bytes, through both decoders.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "CompressedRtfSupport.h"
#include "NaiveLzfu.h"

namespace tarn::test {
namespace {

void ExpectRoundTrip(const std::string& text) {
  const std::string packed = PackRtf(text);
  const Decoded unpacked = Unpack(packed);
  ASSERT_EQ(unpacked.status, StatusOk);
  const std::string ended = !text.empty() && text.back() == '\0' ? text : text + '\0';
  ASSERT_TRUE(unpacked.body == ended) << text.size();
  const Decoded pst = UnpackPst(packed);
  ASSERT_EQ(pst.status, StatusOk);
  ASSERT_TRUE(pst.body == text) << text.size();
}

TEST(CompressedRtfProperty, UnpackingGivesWhatWasPacked) {
  std::mt19937 random(11);
  for (size_t size = 0; size < 400; ++size) ExpectRoundTrip(RandomRtf(random, size));
  for (const size_t size : {4000u, 4096u, 10000u, 65536u, 100000u}) {
    ExpectRoundTrip(RandomRtf(random, size));
  }
  for (int i = 0; i < 20; ++i) ExpectRoundTrip(RandomRtf(random, random() % 100001));
}

TEST(CompressedRtfProperty, RunsAndBytesOfAllValues) {
  std::mt19937 random(12);
  ExpectRoundTrip(std::string(100000, 'x'));
  for (const size_t period : {2u, 3u, 15u, 16u, 17u, 18u, 4094u, 4095u, 4096u, 4097u}) {
    std::string text;
    for (size_t i = 0; i < period; ++i) text += static_cast<char>(random());
    while (text.size() < 50000) text += text.substr(0, period);
    ExpectRoundTrip(text);
  }
}

TEST(CompressedRtfProperty, PackingPacks) {
  EXPECT_LT(PackRtf(std::string(17000, 'x')).size(), 2200u);
  EXPECT_EQ(PackRtf("{\\rtf1 WXYZWXYZWXYZWXYZWXYZ}"), PublishedCrossing());
}

uint32_t Field(std::string_view bytes, size_t offset) {
  uint32_t value = 0;
  for (size_t i = 0; i < 4; ++i) {
    value |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[offset + i])) << (8 * i);
  }
  return value;
}

// Each damaged input leaves the body as it was, or gives a text of the size that its header says,
// which is at most eight times that of the packed bytes.
void ExpectSafe(const std::string& bytes) {
  const Decoded unpacked = Unpack(bytes);
  const Decoded pst = UnpackPst(bytes);
  const std::string old(700, '.');
  const Decoded longBody = UnpackPst(bytes, old);
  if (unpacked.status == StatusNotSupported) {
    ASSERT_EQ(unpacked.body, "old");
  }
  if (pst.status == StatusNotSupported) {
    ASSERT_EQ(pst.body, "old");
  }
  if (longBody.status == StatusNotSupported) {
    ASSERT_EQ(longBody.body, old);
  }
  ASSERT_TRUE(unpacked.status == StatusOk || unpacked.status == StatusNotSupported ||
              (unpacked == Decoded{StatusOutOfMemory, ""} && Field(bytes, 8) == kMelaMagic));
  ASSERT_TRUE(pst.status == StatusOk || pst.status == StatusNotSupported);
  for (const Decoded& decoded : {unpacked, pst}) {
    if (decoded.status != StatusOk) continue;
    const size_t contents = bytes.size() - 16;
    if (Field(bytes, 8) == kMelaMagic) {
      ASSERT_LE(decoded.body.size(), contents + 1);
    } else {
      const size_t rawSize = Field(bytes, 4);
      ASSERT_LE(rawSize, 8 * contents);
      ASSERT_GE(decoded.body.size(), rawSize);
      ASSERT_LE(decoded.body.size(), rawSize + 1);
    }
  }
}

std::string Repaired(std::string bytes) {
  if (bytes.size() < 16) return bytes;
  CompressedRtfFields fields;
  fields.rawSize = Field(bytes, 4);
  fields.magic = Field(bytes, 8);
  return WriteCompressedRtf(fields, std::string_view(bytes).substr(16));
}

std::vector<std::string> Samples() {
  return {PackRtf("{\\rtf1\\ansi\\deff0 The quick brown fox, the quick brown fox.\\par}"),
          PackRtf("{\\rtf1 " + std::string(300, 'x') + "}"), PublishedHelloWorld(),
          StoreRtf("{\\rtf1 stored}", StoredCrc::OfContents)};
}

TEST(CompressedRtfProperty, Truncations) {
  for (const std::string& sample : Samples()) {
    for (size_t length = 0; length <= sample.size(); ++length) {
      ExpectSafe(sample.substr(0, length));
      ExpectSafe(Repaired(sample.substr(0, length)));
    }
  }
}

TEST(CompressedRtfProperty, FlippedBits) {
  for (const std::string& sample : Samples()) {
    for (size_t bit = 0; bit < sample.size() * 8; ++bit) {
      std::string bytes = sample;
      bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << (bit % 8)));
      ExpectSafe(bytes);
      ExpectSafe(Repaired(bytes));
    }
  }
}

TEST(CompressedRtfProperty, RandomContents) {
  std::mt19937 random(13);
  int unpacked = 0;
  for (int i = 0; i < 5000; ++i) {
    std::string contents(random() % 200, '\0');
    for (char& byte : contents) {
      const uint64_t mask = random();  // few bits, so that literals prevail
      byte = static_cast<char>(random() & mask);
    }
    CompressedRtfFields fields;
    fields.rawSize = static_cast<uint32_t>(random() % (contents.size() + 1));
    const std::string bytes = WriteCompressedRtf(fields, contents);
    ExpectSafe(bytes);
    unpacked += Unpack(bytes).status == StatusOk ? 1 : 0;
  }
  EXPECT_GT(unpacked, 100);
}

// Tokens of all kinds, long enough for many groups at once.
LzfuTokens RandomTokens(std::mt19937& random, uint32_t count) {
  LzfuTokens tokens;
  const uint32_t nearest = static_cast<uint32_t>(1 + random() % 40);
  for (uint32_t token = 0; token < count; ++token) {
    const uint32_t kind = static_cast<uint32_t>(random() % 1500);
    const uint32_t value = static_cast<uint32_t>(random() % 4096);
    const uint32_t length = 2 + static_cast<uint32_t>(random() % 16);
    if (kind < 1000) {
      tokens.literals(std::string(1, static_cast<char>(value % 4)));
    } else if (kind == 1000) {
      tokens.reference(value, length);
    } else {
      tokens.back(nearest + value % 150, length);
    }
  }
  return tokens;
}

// A quarter of the inputs and more gets to the end of its text.
TEST(CompressedRtfProperty, RandomTokensUnpackAsToldStepByStep) {
  std::mt19937 random(14);
  int whole = 0;
  for (int i = 0; i < 3000; ++i) {
    const uint32_t count = 1 + static_cast<uint32_t>(random() % 1200);
    const LzfuTokens tokens = RandomTokens(random, count);
    const auto rawSize = static_cast<uint32_t>(random() % (count * 3));
    const Decoded expected = DecodePlainly(tokens.bytes(), rawSize, "old");
    ASSERT_EQ(Unpack(Packed(rawSize, tokens)), expected);
    whole += expected.status == StatusOk ? 1 : 0;
  }
  EXPECT_GT(whole, 750);
}

// The old body is longer or shorter than the text and its 207 bytes, often by just what a last
// reference needs or by a byte.
TEST(CompressedRtfProperty, RandomTokensOfAStoreUnpackAsToldStepByStep) {
  std::mt19937 random(15);
  int whole = 0;
  int overruns = 0;
  int damaged = 0;
  for (int i = 0; i < 6000; ++i) {
    const uint32_t count = 1 + static_cast<uint32_t>(random() % 300);
    const LzfuTokens tokens = RandomTokens(random, count);
    const auto rawSize = static_cast<uint32_t>(random() % (count * 2));
    const size_t end = 207 + rawSize;
    const std::string old(random() % 4 == 0 ? random() % 1000 : end - 2 + random() % 24, '.');
    const Decoded expected = DecodePstPlainly(tokens.bytes(), rawSize, old);
    ASSERT_EQ(UnpackPst(Packed(rawSize, tokens), old), expected) << old.size() << " " << rawSize;
    std::string roomy(end + 17, '\0');
    const size_t reached = UnpackPlainly(tokens.bytes(), roomy, end);
    whole += expected.status == StatusOk ? 1 : 0;
    overruns += expected.status == StatusOk && reached > end ? 1 : 0;
    damaged += expected.status == StatusNotSupported && reached > end ? 1 : 0;
  }
  EXPECT_GT(whole, 1500);
  EXPECT_GT(overruns, 300);
  EXPECT_GT(damaged, 100);
}

}  // namespace
}  // namespace tarn::test
