// tarnmail extract: the bytes of one attachment.

#include "ExampleDocuments.h"
#include "TarnmailFixture.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

using ExtractCommand = TarnmailTest;

TEST_F(ExtractCommand, WritesEachAttachment) {
  const std::string file = Example("nested-attachments.eml");
  EXPECT_EQ(output({"extract", file, "1"}), kMinutes);
  EXPECT_EQ(output({"extract", file, "2"}), kRooms);
  EXPECT_EQ(output({"extract", file, "3"}), kCaretakerMail);
}

TEST_F(ExtractCommand, WritesBinaryBytesAsTheyAre) {
  const std::string png = output({"extract", Example("html-inline-image.eml"), "1"});
  ASSERT_EQ(png.size(), 111u);
  EXPECT_EQ(png.substr(0, 16), std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16));
  EXPECT_EQ(png.substr(99), std::string("\0\0\0\0IEND\xAE\x42\x60\x82", 12));
}

TEST_F(ExtractCommand, SaysTheSameOnBothRoutes) {
  const std::string file = Example("nested-attachments.eml");
  EXPECT_EQ(output({"extract", "--in-memory", file, "2"}), kRooms);
  EXPECT_EQ(output({"extract", "--temp-files", file, "2"}), kRooms);
  EXPECT_EQ(output({"extract", "-m", "1", file, "2"}), kRooms);
  EXPECT_EQ(output({"extract", file, "002"}), kRooms);
}

TEST_F(ExtractCommand, WritesToAFile) {
  EXPECT_EQ(output({"extract", Example("nested-attachments.eml"), "2", "-o", "r.csv"}), "");
  EXPECT_EQ(ReadWholeFile(directory_.path() / "r.csv"), kRooms);
}

TEST_F(ExtractCommand, WritesAnEmptyAttachment) {
  const std::string file = mail(kSampleFields +
                                "Content-Type: multipart/mixed; boundary=\"sep\"\r\n"
                                "\r\n"
                                "--sep\r\n"
                                "Content-Type: text/plain\r\n"
                                "\r\n"
                                "Hi\r\n"
                                "--sep\r\n"
                                "Content-Disposition: attachment; filename=\"empty.bin\"\r\n"
                                "\r\n"
                                "\r\n"
                                "--sep--\r\n");
  EXPECT_EQ(output({"extract", file, "1", "-o", "empty.bin"}), "");
  EXPECT_EQ(ReadWholeFile(directory_.path() / "empty.bin"), "");
}

TEST_F(ExtractCommand, RefusesNumbersThatTheMessageDoesNotHave) {
  const std::string file = Example("nested-attachments.eml");
  EXPECT_EQ(failure(1, {"extract", file, "4", "-o", "out"}), file + ": has no attachment 4");
  EXPECT_EQ(failure(1, {"extract", file, "2147483647", "-o", "out"}),
            file + ": has no attachment 2147483647");
  EXPECT_EQ(failure(1, {"extract", Example("plain-7bit.eml"), "1", "-o", "out"}),
            Example("plain-7bit.eml") + ": has no attachment 1");
  for (const char* number : {"0", "-1"}) {
    EXPECT_EQ(failure(1, {"extract", file, number, "-o", "out"}),
              file + ": attachments are numbered from 1 (-13)");
  }
  EXPECT_EQ(directory_.listing(), "");
}

TEST_F(ExtractCommand, RefusesMessagesThatTheFileDoesNotHave) {
  const std::string file = Example("nested-attachments.eml");
  EXPECT_EQ(failure(2, {"extract", "-m", "3", file, "2", "-o", "out"}),
            file + ": has 1 message; there is no message 3");
  EXPECT_EQ(directory_.listing(), "");
}

TEST_F(ExtractCommand, RefusesWhatIsNoNumber) {
  const std::string file = Example("nested-attachments.eml");
  for (const char* number : {"one", "1x", " 1", "+1", "0x1", "1.0", "2147483648x"}) {
    EXPECT_EQ(failure(2, {"extract", file, number}),
              "K: " + std::string(number) + " is not a number; see tarnmail extract --help");
  }
  EXPECT_EQ(failure(2, {"extract", file, ""}),
            "K: an empty text is not a number; see tarnmail extract --help");
  EXPECT_EQ(failure(2, {"extract", file, "2147483648"}),
            "K: 2147483648 is out of range; see tarnmail extract --help");
}

}  // namespace
}  // namespace tarn::test
