#include "archive/writers/SinkBuffer.h"

#include <gtest/gtest.h>

#include "archive/writers/FakeItem.h"

namespace tarn::archive {
namespace {

std::string Base64Of(std::string bytes, Base64Lines lines) {
  TextSink sink;
  SinkBuffer out(sink);
  EXPECT_FALSE(PutBase64(*BytesOf(std::move(bytes)), lines, out).has_value());
  EXPECT_FALSE(out.finish().has_value());
  return sink.text;
}

TEST(SinkBufferTest, KeepsTheOrderOfSmallAndLargePieces) {
  TextSink sink;
  SinkBuffer out(sink);
  const std::string large(100000, 'x');
  out.put("a").put(large).put("b").put(std::string(65535, 'y')).put("c");
  EXPECT_FALSE(out.finish().has_value());
  EXPECT_EQ(sink.text, "a" + large + "b" + std::string(65535, 'y') + "c");
}

TEST(SinkBufferTest, SaysWhyTheSinkIsFullAndWritesNothingAfter) {
  SmallSink sink(10);
  SinkBuffer out(sink);
  out.put(std::string(70000, 'x'));
  EXPECT_TRUE(out.isFull());
  out.put(std::string(70000, 'y')).put("z");
  EXPECT_EQ(out.finish()->reason, "the disk is full");
  EXPECT_EQ(sink.writesAfterFull, 0u);
}

TEST(SinkBufferTest, WritesBase64) {
  EXPECT_EQ(Base64Of("", Base64Lines::None), "");
  EXPECT_EQ(Base64Of("f", Base64Lines::None), "Zg==");
  EXPECT_EQ(Base64Of("fo", Base64Lines::None), "Zm8=");
  EXPECT_EQ(Base64Of("foobar", Base64Lines::None), "Zm9vYmFy");
  EXPECT_EQ(Base64Of("\xFB\xFF", Base64Lines::None), "+/8=");
}

TEST(SinkBufferTest, WritesLinesOfBase64) {
  EXPECT_EQ(Base64Of("", Base64Lines::Mime), "");
  EXPECT_EQ(Base64Of(std::string(57, '\0'), Base64Lines::Mime), std::string(76, 'A') + "\r\n");
  EXPECT_EQ(Base64Of(std::string(58, '\0'), Base64Lines::Mime),
            std::string(76, 'A') + "\r\nAA==\r\n");
}

TEST(SinkBufferTest, JoinsPiecesOfBase64) {
  const std::string text = Base64Of(std::string(3 * 200000, '\0'), Base64Lines::None);
  EXPECT_EQ(text, std::string(4 * 200000, 'A'));
}

TEST(SinkBufferTest, TellsWhereASourceBreaksOff) {
  TextSink sink;
  SinkBuffer out(sink);
  BrokenSource copied("abc");
  EXPECT_EQ(PutAll(copied, out)->reason, "a block is missing");
  BrokenSource encoded("foo");
  EXPECT_EQ(PutBase64(encoded, Base64Lines::None, out)->reason, "a block is missing");
  out.finish();
  EXPECT_EQ(sink.text, "abcZm9v");
}

}  // namespace
}  // namespace tarn::archive
