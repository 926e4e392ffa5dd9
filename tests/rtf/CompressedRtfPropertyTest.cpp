// What holds for any text and any bytes, through both decoders.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CompressedRtfSupport.h"
#include "rtf/LzfuUnpack.h"

namespace tarn::test {
namespace {

void ExpectRoundTrip(const std::string& text) {
  const std::string packed = PackRtf(text);
  const Decoded unpacked = Unpack(packed);
  ASSERT_EQ(unpacked.status, 1);
  const std::string ended = !text.empty() && text.back() == '\0' ? text : text + '\0';
  ASSERT_TRUE(unpacked.body == ended) << text.size();
  const Decoded pst = UnpackPst(packed);
  ASSERT_EQ(pst.status, 1);
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

// Each damaged input leaves the body as it was, or gives a text of the size that the header says.
void ExpectSafe(const std::string& bytes) {
  const Decoded unpacked = Unpack(bytes);
  const Decoded pst = UnpackPst(bytes);
  for (const Decoded& decoded : {unpacked, pst}) {
    if (decoded.status == -9) {
      ASSERT_EQ(decoded.body, "old");
    } else if (decoded.status == -1) {
      ASSERT_EQ(decoded.body, "");
    } else {
      ASSERT_EQ(decoded.status, 1);
      ASSERT_LE(decoded.body.size(), LongestUnpackedText(bytes.size()) + 1);
    }
  }
  const std::string old(700, '.');
  const Decoded longBody = UnpackPst(bytes, old);
  if (longBody.status == -9) {
    ASSERT_EQ(longBody.body, old);
  }
}

std::string Repaired(std::string bytes) {
  if (bytes.size() < 16) return bytes;
  CompressedRtfFields fields;
  const auto field = [&](size_t offset) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) {
      value |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[offset + i])) << (8 * i);
    }
    return value;
  };
  fields.rawSize = field(4);
  fields.magic = field(8);
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
    unpacked += Unpack(bytes).status == 1 ? 1 : 0;
  }
  EXPECT_GT(unpacked, 100);
}

// The loop as the format tells it, on a list of bytes without an end.
Decoded UnpackPlainly(const std::string& contents, size_t size) {
  std::string block(LzfuStartText());
  const size_t end = block.size() + size;
  size_t input = 0;
  unsigned control = 0;
  const auto next = [&] { return static_cast<unsigned char>(contents[input++]); };
  for (uint32_t token = 0; block.size() < end; ++token, control >>= 1) {
    if (token % 8 == 0) {
      if (input >= contents.size()) return {-9, "old"};
      control = next();
    }
    if ((control & 1) == 0) {
      if (input >= contents.size()) return {-9, "old"};
      block += static_cast<char>(next());
      continue;
    }
    if (input + 2 > contents.size()) return {-9, "old"};
    const unsigned c = next();
    const unsigned d = next();
    const size_t length = (d & 15) + 2;
    const size_t candidate = (block.size() & ~size_t{0xFFF}) + ((c * 16) | (d >> 4));
    if (candidate >= block.size() && candidate < 4096) return {-9, "old"};
    const size_t source = candidate < block.size() ? candidate : candidate - 4096;
    if (block.size() + length > end + 1) return {-9, "old"};
    for (size_t i = 0; i < length; ++i) block += block[source + i];
  }
  const std::string text = block.substr(207, size);
  return {1, !text.empty() && text.back() == '\0' ? text : text + '\0'};
}

// Long enough for many groups at once; a quarter of the inputs and more gets to the end of its
// text.
TEST(CompressedRtfProperty, RandomTokensUnpackAsToldStepByStep) {
  std::mt19937 random(14);
  int whole = 0;
  for (int i = 0; i < 4000; ++i) {
    LzfuTokens tokens;
    const uint32_t count = 1 + static_cast<uint32_t>(random() % 1200);
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
    CompressedRtfFields fields;
    fields.rawSize = static_cast<uint32_t>(random() % (count * 3));
    if (fields.rawSize > LongestUnpackedText(tokens.bytes().size())) continue;
    const Decoded expected = UnpackPlainly(tokens.bytes(), fields.rawSize);
    ASSERT_EQ(Unpack(WriteCompressedRtf(fields, tokens.bytes())), expected);
    whole += expected.status == 1 ? 1 : 0;
  }
  EXPECT_GT(whole, 1000);
}

TEST(LongestUnpackedText, CountsTheLastGroup) {
  EXPECT_EQ(LongestUnpackedText(0), 0u);
  EXPECT_EQ(LongestUnpackedText(1), 0u);   // a control byte
  EXPECT_EQ(LongestUnpackedText(2), 1u);   // and a literal
  EXPECT_EQ(LongestUnpackedText(3), 17u);  // or a reference
  EXPECT_EQ(LongestUnpackedText(4), 18u);
  EXPECT_EQ(LongestUnpackedText(16), 120u);
  EXPECT_EQ(LongestUnpackedText(17), 136u);
  EXPECT_EQ(LongestUnpackedText(18), 136u);
  EXPECT_EQ(LongestUnpackedText(19), 137u);
  EXPECT_EQ(LongestUnpackedText(20), 153u);
  EXPECT_EQ(LongestUnpackedText(1700), 13600u);
}

}  // namespace
}  // namespace tarn::test
