#include "archive/writers/MimeText.h"

#include <gtest/gtest.h>

namespace tarn::archive {
namespace {

TEST(MimeTextTest, LeavesPlainTextAsItIs) {
  const MimeText text = EncodeText("a\nb\r\nc\rd\t=\n");
  EXPECT_EQ(text.encoding, "");
  EXPECT_EQ(text.content, "a\r\nb\r\nc\r\nd\t=\r\n");
}

TEST(MimeTextTest, QuotesWhatIsNotPlain) {
  const MimeText text = EncodeText(
      "Gr\xC3\xBC\xC3\x9F"
      "e = all \nx\t\ny z and more words to read");
  EXPECT_EQ(text.encoding, "quoted-printable");
  EXPECT_EQ(text.content, "Gr=C3=BC=C3=9Fe =3D all=20\r\nx=09\r\ny z and more words to read");
}

TEST(MimeTextTest, QuotesLinesThatBoundariesBeginAs) {
  const MimeText text = EncodeText("a\n--=_x\nFrom b");
  EXPECT_EQ(text.encoding, "quoted-printable");
  EXPECT_EQ(text.content, "a\r\n=2D-=3D_x\r\n=46rom b");
}

TEST(MimeTextTest, BreaksLongLines) {
  EXPECT_EQ(EncodeText(std::string(990, 'x')).encoding, "");
  const MimeText text = EncodeText(std::string(991, 'x'));
  EXPECT_EQ(text.encoding, "quoted-printable");
  EXPECT_TRUE(
      text.content.starts_with(std::string(75, 'x') + "=\r\n" + std::string(75, 'x') + "=\r\n"));
  EXPECT_TRUE(EncodeText(std::string(991, 'x') + "=").content.ends_with("=3D"));
}

TEST(MimeTextTest, WritesTextOfOtherLettersInBase64) {
  const MimeText text = EncodeText("\xD0\x9F\xD1\x80\n");
  EXPECT_EQ(text.encoding, "base64");
  EXPECT_EQ(text.content, "0J/RgA0K\r\n");
}

// Soft breaks, and no more than them, come between what fits a line.
TEST(MimeTextTest, BreaksLinesBeforeWhatDoesNotFit) {
  const auto quoted = [](const std::string& line) {
    return EncodeText(line + "\n" + std::string(991, 'y')).content.substr(0, line.size() + 9);
  };
  const std::string full(75, 'x');
  EXPECT_TRUE(quoted(full).starts_with(full + "\r\n"));
  EXPECT_TRUE(quoted(full + "z").starts_with(full + "=\r\nz\r\n"));
  const std::string room(72, 'x');
  EXPECT_TRUE(quoted(room + "=").starts_with(room + "=3D\r\n"));
  EXPECT_TRUE(quoted(room + "x=").starts_with(room + "x=\r\n=3D\r\n"));
  EXPECT_TRUE(quoted(room + " ").starts_with(room + "=20\r\n"));
  EXPECT_TRUE(quoted(room + "\tx ").starts_with(room + "\tx=\r\n=20\r\n"));
  EXPECT_TRUE(quoted(full + full).starts_with(full + "=\r\n" + full + "\r\n"));
}

TEST(MimeTextTest, TakesNoText) { EXPECT_EQ(EncodeText("").content, ""); }

}  // namespace
}  // namespace tarn::archive
