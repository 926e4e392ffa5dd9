// tarnmail document: exactly the bytes that the sibling gets, by temp file and from memory.

#include "ExampleDocuments.h"
#include "TarnmailFixture.h"
#include "support/Environment.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

using DocumentCommand = TarnmailTest;

// From memory an HTML document has its terminator and one more zero byte after it, a text its
// terminator.
const std::string kHtmlEnd(2, '\0');
const std::string kTextEnd(1, '\0');

TEST_F(DocumentCommand, NamesTheImageFileBesideTheHtmlFile) {
  EXPECT_EQ(output({"document", "--temp-files", Example("html-inline-image.eml")}),
            InlineImageDocument("chart.q1@example.com_chart.png"));
}

// Without an option, too: an image beside the document would be gone.
TEST_F(DocumentCommand, PutsTheImageIntoTheDocumentInMemory) {
  const std::string document = InlineImageDocument("data:image;base64," + kChartBase64) + kHtmlEnd;
  EXPECT_EQ(output({"document", Example("html-inline-image.eml")}), document);
  EXPECT_EQ(output({"document", "--in-memory", Example("html-inline-image.eml")}), document);
}

TEST_F(DocumentCommand, ShowsTheHtmlOfNestedParts) {
  EXPECT_EQ(output({"document", "--temp-files", Example("nested-attachments.eml")}),
            NestedDocument());
  EXPECT_EQ(output({"document", Example("nested-attachments.eml")}), NestedDocument() + kHtmlEnd);
}

TEST_F(DocumentCommand, TurnsJapaneseIntoUtf8) {
  EXPECT_EQ(output({"document", Example("japanese-iso2022jp.eml")}), kJapaneseDocument + kTextEnd);
  EXPECT_EQ(output({"document", "--in-memory", Example("japanese-iso2022jp.eml")}),
            kJapaneseDocument + kTextEnd);
}

TEST_F(DocumentCommand, KeepsTheMarkOfSevenBitText) {
  EXPECT_EQ(output({"document", Example("plain-7bit.eml")}), kSevenBitDocument + kTextEnd);
  EXPECT_EQ(output({"document", "--in-memory", Example("plain-7bit.eml")}),
            kSevenBitDocument + kTextEnd);
}

TEST_F(DocumentCommand, HandsHtmlToTheTextSiblingFromMemory) {
  EXPECT_EQ(output({"document", "--text", Example("nested-attachments.eml")}),
            NestedDocument() + kHtmlEnd);
}

TEST_F(DocumentCommand, KeepsEnglishLabelsOfMailFilesInEveryLanguage) {
  for (const char* language : {"0x0407", "1031", "0X0407", "0x411", "2052", "0", "65535"}) {
    EXPECT_EQ(output({"document", "--language", language, Example("nested-attachments.eml")}),
              NestedDocument() + kHtmlEnd)
        << language;
  }
}

TEST_F(DocumentCommand, TakesTheOneMessageOfAMailFile) {
  const std::string file = Example("nested-attachments.eml");
  EXPECT_EQ(output({"document", "-m", "1", file}), NestedDocument() + kHtmlEnd);
  EXPECT_EQ(failure(2, {"document", "-m", "2", file}),
            file + ": has 1 message; there is no message 2");
}

TEST_F(DocumentCommand, WritesToAFile) {
  EXPECT_EQ(output({"document", Example("nested-attachments.eml"), "-o", "minutes.html"}), "");
  EXPECT_EQ(ReadWholeFile(directory_.path() / "minutes.html"), NestedDocument() + kHtmlEnd);
  EXPECT_EQ(directory_.listing(), "minutes.html");
}

TEST_F(DocumentCommand, PutsTemporaryFilesWhereItIsTold) {
  const TempDirectory elsewhere;
  // The system's temporary directory is of no use here.
  environment_.emplace_back(kTempVariable, Utf8(temporary_.path() / "none"));
  EXPECT_EQ(output({"document", "--temp-files", "--temp", Utf8(elsewhere.path()),
                    Example("html-inline-image.eml")}),
            InlineImageDocument("chart.q1@example.com_chart.png"));
  EXPECT_EQ(elsewhere.listing(), "");
}

TEST_F(DocumentCommand, TakesATemporaryDirectoryWithDots) {
  std::filesystem::create_directories(directory_.path() / "a" / "b");
  EXPECT_EQ(output({"document", "--temp-files", "--temp", "a/b/../../a",
                    Example("html-inline-image.eml")}),
            InlineImageDocument("chart.q1@example.com_chart.png"));
  EXPECT_EQ(directory_.listing(), "a a/b");
}

TEST_F(DocumentCommand, NeedsNoTemporaryDirectoryInMemory) {
  const std::string file = Example("html-inline-image.eml");
  const std::string inMemory = output({"document", "--in-memory", file});
  const std::string told = output({"info", file});
  environment_.emplace_back(kTempVariable, Utf8(temporary_.path() / "none"));
  EXPECT_EQ(output({"document", "--in-memory", file}), inMemory);
  EXPECT_EQ(output({"document", file}), inMemory);
  EXPECT_EQ(output({"info", file}), told);
}

TEST_F(DocumentCommand, TakesNamesOfEveryScript) {
  const std::string name = mail(kPlainMail, "Gr\u00FC\u00DFe \u4F1A\u8B70 \u0416 \U0001F600.eml");
  EXPECT_EQ(output({"document", name}), kPlainMailDocument + kTextEnd);
  std::filesystem::create_directory(directory_.path() / Path("\u8CC7\u6599"));
  EXPECT_EQ(output({"document", name, "-o", "\u8CC7\u6599/\U0001F600.txt"}), "");
  EXPECT_EQ(ReadWholeFile(directory_.path() / Path("\u8CC7\u6599/\U0001F600.txt")),
            kPlainMailDocument + kTextEnd);
}

TEST_F(DocumentCommand, PutsTemporaryFilesIntoADirectoryOfAnyName) {
  std::filesystem::create_directory(directory_.path() / Path("\u4E00\u6642 \u00FC"));
  EXPECT_EQ(output({"document", "--temp-files", "--temp", "\u4E00\u6642 \u00FC",
                    Example("html-inline-image.eml")}),
            InlineImageDocument("chart.q1@example.com_chart.png"));
  EXPECT_TRUE(std::filesystem::is_empty(directory_.path() / Path("\u4E00\u6642 \u00FC")));
}

}  // namespace
}  // namespace tarn::test
