#include "archive/text/UnpackRtf.h"

#include <gtest/gtest.h>

#include <string>

#include "support/RtfCompressor.h"

namespace tarn::archive {
namespace {

using test::LzfuTokens;
using test::PackRtf;
using test::StoreRtf;
using test::WriteCompressedRtf;

constexpr std::string_view kText = "{\\rtf1\\ansi\\deff0 Hello hello hello hello}";

TroubleKind KindOf(const Outcome<std::string>& outcome) {
  EXPECT_FALSE(outcome.ok());
  return outcome ? TroubleKind::Unsupported : outcome.trouble().kind;
}

TEST(UnpackRtfTest, UnpacksWhatIsPackedOrStored) {
  std::optional<Trouble> doubt;
  const Outcome<std::string> packed = UnpackRtf(PackRtf(kText), &doubt);
  ASSERT_TRUE(packed.ok());
  EXPECT_EQ(*packed, kText);
  EXPECT_FALSE(doubt.has_value());
  const Outcome<std::string> stored = UnpackRtf(StoreRtf(kText), &doubt);
  ASSERT_TRUE(stored.ok());
  EXPECT_EQ(*stored, kText);
  EXPECT_FALSE(doubt.has_value());
}

// The example of MS-OXRTFCP 4.1.1.
TEST(UnpackRtfTest, UnpacksThePublishedExample) {
  const unsigned char bytes[] = {0x2d, 0x00, 0x00, 0x00, 0x2b, 0x00, 0x00, 0x00, 0x4c, 0x5a,
                                 0x46, 0x75, 0xf1, 0xc5, 0xc7, 0xa7, 0x03, 0x00, 0x0a, 0x00,
                                 0x72, 0x63, 0x70, 0x67, 0x31, 0x32, 0x35, 0x42, 0x32, 0x0a,
                                 0xf3, 0x20, 0x68, 0x65, 0x6c, 0x09, 0x00, 0x20, 0x62, 0x77,
                                 0x05, 0xb0, 0x6c, 0x64, 0x7d, 0x0a, 0x80, 0x0f, 0xa0};
  std::optional<Trouble> doubt;
  const Outcome<std::string> text =
      UnpackRtf({reinterpret_cast<const char*>(bytes), sizeof bytes}, &doubt);
  ASSERT_TRUE(text.ok());
  EXPECT_EQ(*text, "{\\rtf1\\ansi\\ansicpg1252\\pard hello world}\r\n");
  EXPECT_FALSE(doubt.has_value());
}

TEST(UnpackRtfTest, GivesATextWhoseChecksumIsWrongAndSaysSo) {
  std::string packed = PackRtf(kText);
  packed[12] = static_cast<char>(packed[12] ^ 1);
  std::optional<Trouble> doubt;
  const Outcome<std::string> text = UnpackRtf(packed, &doubt);
  ASSERT_TRUE(text.ok());
  EXPECT_EQ(*text, kText);
  ASSERT_TRUE(doubt.has_value());
  EXPECT_EQ(doubt->kind, TroubleKind::Damaged);
  EXPECT_EQ(doubt->reason, "the checksum of the compressed RTF text is wrong");
  EXPECT_TRUE(UnpackRtf(packed).ok());
}

TEST(UnpackRtfTest, PassesOverBytesAfterTheCompressedOnes) {
  std::optional<Trouble> doubt;
  const Outcome<std::string> packed = UnpackRtf(PackRtf(kText) + "rest", &doubt);
  ASSERT_TRUE(packed.ok());
  EXPECT_EQ(*packed, kText);
  EXPECT_FALSE(doubt.has_value());
  const Outcome<std::string> stored = UnpackRtf(StoreRtf(kText) + "rest");
  ASSERT_TRUE(stored.ok());
  EXPECT_EQ(*stored, kText);
}

TEST(UnpackRtfTest, DropsNulsAtTheEnd) {
  const std::string text = std::string(kText) + std::string(3, '\0');
  EXPECT_EQ(*UnpackRtf(PackRtf(text)), kText);
  EXPECT_EQ(*UnpackRtf(StoreRtf(text)), kText);
  EXPECT_EQ(*UnpackRtf(PackRtf("")), "");
}

TEST(UnpackRtfTest, TakesAReferenceBeyondTheEnd) {
  LzfuTokens tokens;
  tokens.literals("ab").back(2, 17);
  const Outcome<std::string> text = UnpackRtf(WriteCompressedRtf({.rawSize = 5}, tokens.bytes()));
  ASSERT_TRUE(text.ok());
  EXPECT_EQ(*text, "ababa");
}

TEST(UnpackRtfTest, CallsWhatIsNotWholeDamaged) {
  const std::string packed = PackRtf(kText);
  for (size_t size = 0; size < packed.size() - 2; ++size) {
    EXPECT_EQ(KindOf(UnpackRtf(std::string_view(packed).substr(0, size))), TroubleKind::Damaged)
        << size;
  }
  const std::string stored = StoreRtf(kText);
  for (size_t size = 0; size < stored.size(); ++size) {
    EXPECT_EQ(KindOf(UnpackRtf(std::string_view(stored).substr(0, size))), TroubleKind::Damaged)
        << size;
  }
}

TEST(UnpackRtfTest, CallsImpossibleHeadersDamaged) {
  const std::string contents(17, '\xFF');
  const auto kindOf = [&contents](test::CompressedRtfFields fields) {
    return KindOf(UnpackRtf(WriteCompressedRtf(fields, contents)));
  };
  EXPECT_EQ(kindOf({.rawSize = 0x7FFFFFFF}), TroubleKind::Damaged);
  EXPECT_EQ(kindOf({.rawSize = 137}), TroubleKind::Damaged);
  EXPECT_EQ(kindOf({.rawSize = 0xFFFFFFFF}), TroubleKind::Damaged);
  EXPECT_EQ(kindOf({.rawSize = 1, .magic = 0x12345678}), TroubleKind::Damaged);
  EXPECT_EQ(kindOf({.compressedSize = 11, .rawSize = 0}), TroubleKind::Damaged);
  // A reference to where nothing has been written.
  EXPECT_EQ(kindOf({.rawSize = 20}), TroubleKind::Damaged);
}

}  // namespace
}  // namespace tarn::archive
