#include "archive/model/ByteSink.h"

#include <gtest/gtest.h>

#include <string>

namespace tarn::archive {
namespace {

// Takes so many bytes and no more.
class SmallSink final : public ByteSink {
 public:
  explicit SmallSink(size_t room) : room_(room) {}

  std::optional<Trouble> write(std::string_view bytes) override {
    if (bytes.size() > room_) return Trouble{TroubleKind::Unreadable, "the disk is full"};
    room_ -= bytes.size();
    taken += bytes;
    return std::nullopt;
  }

  std::string taken;

 private:
  size_t room_;
};

// Gives "part", then a trouble.
class BreakingSource final : public ByteSource {
 public:
  Outcome<size_t> read(std::span<char> buffer) override {
    if (given_) return Trouble{TroubleKind::Damaged, "the block is torn"};
    given_ = true;
    return std::string_view("part").copy(buffer.data(), buffer.size());
  }

 private:
  bool given_ = false;
};

TEST(ByteSinkTest, TakesAllOfASource) {
  const std::string large(200000, 'x');
  SmallSink sink(large.size());
  const Copied copied = CopyAll(*BytesOf(large), sink);
  EXPECT_FALSE(copied.reading.has_value());
  EXPECT_FALSE(copied.writing.has_value());
  EXPECT_EQ(sink.taken, large);
}

TEST(ByteSinkTest, KeepsWhatCameBeforeATrouble) {
  SmallSink sink(100);
  BreakingSource source;
  const Copied copied = CopyAll(source, sink);
  ASSERT_TRUE(copied.reading.has_value());
  EXPECT_EQ(copied.reading->reason, "the block is torn");
  EXPECT_EQ(sink.taken, "part");
}

TEST(ByteSinkTest, EndsWhereTheSinkTakesNoMore) {
  SmallSink sink(65536);
  const Copied copied = CopyAll(*BytesOf(std::string(200000, 'x')), sink);
  ASSERT_TRUE(copied.writing.has_value());
  EXPECT_EQ(copied.writing->reason, "the disk is full");
  EXPECT_EQ(sink.taken.size(), 65536u);
}

}  // namespace
}  // namespace tarn::archive
