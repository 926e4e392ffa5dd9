#include "archive/model/ByteSource.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace tarn::archive {
namespace {

// Gives "ab", then a trouble.
class BreakingSource final : public ByteSource {
 public:
  Outcome<size_t> read(std::span<char> buffer) override {
    if (given_) return Trouble{TroubleKind::Damaged, "the block is torn"};
    given_ = true;
    buffer[0] = 'a';
    buffer[1] = 'b';
    return size_t{2};
  }

 private:
  bool given_ = false;
};

TEST(ByteSourceTest, GivesBytesOfMemoryInPieces) {
  const auto source = BytesOf("abcde");
  std::array<char, 3> buffer;
  EXPECT_EQ(*source->read(buffer), 3u);
  EXPECT_EQ(std::string(buffer.data(), 3), "abc");
  EXPECT_EQ(*source->read(buffer), 2u);
  EXPECT_EQ(std::string(buffer.data(), 2), "de");
  EXPECT_EQ(*source->read(buffer), 0u);
}

TEST(ByteSourceTest, ReadsAllUpToTheLimit) {
  const std::string large(40000, 'x');
  EXPECT_EQ(*ReadAll(*BytesOf(large), large.size()), large);
  EXPECT_EQ(*ReadAll(*BytesOf(""), 0), "");
  const Outcome<std::string> tooLarge = ReadAll(*BytesOf(large), large.size() - 1);
  ASSERT_FALSE(tooLarge.ok());
  EXPECT_EQ(tooLarge.trouble().kind, TroubleKind::TooLarge);
  EXPECT_EQ(tooLarge.trouble().reason, "more than 39999 bytes");
}

TEST(ByteSourceTest, PassesTroubleOn) {
  BreakingSource source;
  const Outcome<std::string> all = ReadAll(source, 100);
  ASSERT_FALSE(all.ok());
  EXPECT_EQ(all.trouble().reason, "the block is torn");
}

}  // namespace
}  // namespace tarn::archive
