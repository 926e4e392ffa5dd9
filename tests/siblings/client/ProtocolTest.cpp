// Messages as bytes: what is written is read again, and nothing else is.

#include "siblings/client/Protocol.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "siblings/client/Channel.h"
#include "siblings/client/HelperCall.h"

namespace tarn::pages {
namespace {

TEST(ProtocolTest, WritesAKindAndItsFields) {
  EXPECT_EQ(Encode(Ready{}), std::string("\x06", 1));
  EXPECT_EQ(Encode(PageSizeRequest{258}), std::string("\x01\x02\x01\0\0\0\0\0\0", 9));
  EXPECT_EQ(Encode(ProgressAnswer{false}), std::string("\x05\0\0\0\0\0\0\0\0", 9));
  EXPECT_EQ(Encode(FileRequest{"a"}), std::string("\x0B\x01\0\0\0\0\0\0\0a", 10));
  EXPECT_EQ(Encode(PageSizeAnswer{{0.5, 0}}),
            std::string("\x08\0\0\0\0\0\0\xE0\x3F\0\0\0\0\0\0\0\0", 17));
}

TEST(ProtocolTest, ReadsWhatItWrites) {
  PdfRequest pdf;
  ASSERT_TRUE(Decode(Encode(PdfRequest{{2, 9}, {std::string("t\0", 2), "", "d"}, true}), pdf));
  EXPECT_EQ(pdf.range.first, 2);
  EXPECT_EQ(pdf.range.last, 9);
  EXPECT_EQ(pdf.properties.title, std::string("t\0", 2));
  EXPECT_EQ(pdf.properties.author, "");
  EXPECT_EQ(pdf.properties.date, "d");
  EXPECT_TRUE(pdf.hearsProgress);

  LayOutRequest layOut;
  ASSERT_TRUE(Decode(Encode(LayOutRequest{DocumentKind::Text, Paper::Letter, true,
                                          std::numeric_limits<int64_t>::max()}),
                     layOut));
  EXPECT_EQ(layOut.kind, DocumentKind::Text);
  EXPECT_EQ(layOut.paper, Paper::Letter);
  EXPECT_TRUE(layOut.hasFolder);
  EXPECT_EQ(layOut.size, uint64_t{std::numeric_limits<int64_t>::max()});

  DrawRequest draw;
  ASSERT_TRUE(Decode(Encode(DrawRequest{-1, std::numeric_limits<int32_t>::min(), false}), draw));
  EXPECT_EQ(draw.page, -1);
  EXPECT_EQ(draw.dotsPerInch, std::numeric_limits<int32_t>::min());
}

TEST(ProtocolTest, ReadsNothingElse) {
  const std::string message = Encode(LayOutRequest{});
  LayOutRequest layOut;
  for (size_t size = 0; size < message.size(); ++size) {
    EXPECT_FALSE(Decode(message.substr(0, size), layOut)) << size;
  }
  EXPECT_FALSE(Decode(message + '\0', layOut));
  PageSizeRequest other;
  EXPECT_FALSE(Decode(message, other));
}

TEST(ProtocolTest, ReadsNoValueOutsideOfItsType) {
  LayOutRequest layOut;
  const std::string message = Encode(LayOutRequest{});
  const auto with = [&message](size_t position, char value) {
    std::string changed = message;
    changed[position] = value;
    return changed;
  };
  EXPECT_TRUE(Decode(with(1, 2), layOut));   // the last kind of document
  EXPECT_FALSE(Decode(with(1, 3), layOut));  // and one after it
  EXPECT_FALSE(Decode(with(8, '\x80'), layOut));
  EXPECT_FALSE(Decode(with(9, 2), layOut));        // paper
  EXPECT_FALSE(Decode(with(17, 2), layOut));       // neither false nor true
  EXPECT_FALSE(Decode(with(32, '\x80'), layOut));  // a size below zero
  PageSizeRequest page;
  EXPECT_FALSE(Decode(std::string("\x01\0\0\0\0\x01\0\0\0", 9), page));  // 2^32
  EXPECT_FALSE(Decode(std::string("\x01\0\0\0\x80\0\0\0\0", 9), page));  // 2^31
}

TEST(ChannelTest, TakesWholeMessages) {
  auto [one, other] = Channel::pair();
  EXPECT_TRUE(one.send("first"));
  EXPECT_TRUE(one.send(std::string(kMaxMessage, 'm')));
  std::string message;
  EXPECT_EQ(other.receive(message), Heard::Message);
  EXPECT_EQ(message, "first");
  EXPECT_EQ(other.receive(message), Heard::Message);
  EXPECT_EQ(message, std::string(kMaxMessage, 'm'));
}

TEST(ChannelTest, TakesNoLongerMessage) {
  auto [one, other] = Channel::pair();
  EXPECT_TRUE(one.send(std::string(kMaxMessage + 1, 'm')));
  std::string message;
  EXPECT_EQ(other.receive(message), Heard::Nonsense);
}

TEST(ChannelTest, SeesThatTheOtherEndIsClosed) {
  auto [one, other] = Channel::pair();
  EXPECT_TRUE(one.send("last"));
  one.close();
  std::string message;
  EXPECT_EQ(other.receive(message), Heard::Message);
  EXPECT_EQ(other.receive(message), Heard::End);
  // Without the signal that would end this process.
  EXPECT_FALSE(other.send("too late"));
}

TEST(ChannelTest, NeverWaitsForRoom) {
  auto [one, other] = Channel::pair();
  int sent = 0;
  while (one.send(std::string(kMaxMessage, 'm')) && sent < 1'000) ++sent;
  EXPECT_GT(sent, 0);
  EXPECT_LT(sent, 1'000);
}

TEST(HelperCallTest, ReadsItsArguments) {
  const HelperCall call = {7, 1 << 30, HelperWall::SystemCalls, "/tmp/folder"};
  const auto read = ParseHelperArguments(HelperArguments(call));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->parent, 7);
  EXPECT_EQ(read->memory, uint64_t{1} << 30);
  EXPECT_EQ(read->wall, HelperWall::SystemCalls);
  EXPECT_EQ(read->folder, "/tmp/folder");
}

TEST(HelperCallTest, TakesNoOtherArguments) {
  const std::vector<std::string> right = HelperArguments(HelperCall{});
  EXPECT_TRUE(ParseHelperArguments(right));
  EXPECT_FALSE(ParseHelperArguments({}));
  for (size_t i = 0; i + 1 < right.size(); ++i) {
    std::vector<std::string> wrong = right;
    wrong[i] += "x";
    EXPECT_FALSE(ParseHelperArguments(wrong)) << right[i];
    wrong.resize(i);
    EXPECT_FALSE(ParseHelperArguments(wrong)) << i;
  }
}

}  // namespace
}  // namespace tarn::pages
