// Mail files that come through a pipe.

#include "ExampleDocuments.h"
#include "TarnmailFixture.h"
#include "console/Json.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

using Input = TarnmailTest;

TEST_F(Input, ADashIsStandardInput) {
  const std::string file = Example("nested-attachments.eml");
  standardInput_ = ReadWholeFile(Path(file));
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"info", "-"},
                                                    {"document", "-"},
                                                    {"document", "--temp-files", "-"},
                                                    {"attachments", "-"},
                                                    {"extract", "-", "2"}}) {
    std::vector<std::string> named = arguments;
    std::replace(named.begin(), named.end(), std::string("-"), file);
    EXPECT_EQ(output(arguments), output(named)) << arguments[0];
  }
  EXPECT_EQ(host::ParsedJson<nlohmann::json>(output({"info", "--json", "-"}))["file"], "-");
  EXPECT_EQ(output({"extract", "-", "2", "-o", "out"}), "");
  EXPECT_EQ(ReadWholeFile(directory_.path() / "out"), kRooms);
}

TEST_F(Input, OfEveryFormatIsRead) {
  for (const char* name : {"mailbox.pst", "msg/html-image.msg"}) {
    standardInput_ = ReadWholeFile(Path(Example(name)));
    EXPECT_EQ(output({"document", "-"}), output({"document", Example(name)})) << name;
    EXPECT_EQ(output({"extract", "-", "2"}), output({"extract", Example(name), "2"})) << name;
  }
}

TEST_F(Input, MayBeLargerThanAnyBuffer) {
  standardInput_ = kSampleFields + "\r\n" + std::string(3000000, 'x');
  EXPECT_EQ(output({"document", "-"}).size(), 3000000 + kSampleTextBlock.size() + 1);
}

TEST_F(Input, IsCalledStandardInput) {
  EXPECT_EQ(failure(1, {"info", "-"}), "standard input: is empty (-7)");
  standardInput_ = "Hello, world";
  EXPECT_EQ(failure(1, {"document", "-"}),
            "standard input: not a mail file: no From, Date, To, Cc or Bcc line in its header "
            "(-9)");
  standardInput_ = kPlainMail;
  EXPECT_EQ(failure(1, {"extract", "-", "1"}), "standard input: has no attachment 1");
  EXPECT_EQ(failure(2, {"info", "-m", "2", "-"}),
            "standard input: has 1 message; there is no message 2");
}

TEST_F(Input, NamedAsAFileOfThatNameIsOne) {
  mail(kPlainMail, "-");
  EXPECT_EQ(output({"document", "./-"}), kPlainMailDocument + '\0');
}

}  // namespace
}  // namespace tarn::test
