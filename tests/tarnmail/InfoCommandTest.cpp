// tarnmail info.

#include "TarnmailFixture.h"
#include "console/Json.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

using InfoCommand = TarnmailTest;
using nlohmann::json;

TEST_F(InfoCommand, TellsWhatEachExampleIs) {
  EXPECT_EQ(output({"info", Example("html-inline-image.eml")}),
            "Format:      EML\n"
            "Messages:    1\n"
            "Document:    HTML\n"
            "Pages:       unknown\n"
            "Attachments: 1\n");
  EXPECT_EQ(output({"info", Example("japanese-iso2022jp.eml")}),
            "Format:      EML\n"
            "Messages:    1\n"
            "Document:    text\n"
            "Pages:       unknown\n"
            "Attachments: 0\n");
  EXPECT_EQ(output({"info", Example("nested-attachments.eml")}),
            "Format:      EML\n"
            "Messages:    1\n"
            "Document:    HTML\n"
            "Pages:       unknown\n"
            "Attachments: 3\n");
  EXPECT_EQ(output({"info", Example("plain-7bit.eml")}),
            "Format:      EML\n"
            "Messages:    1\n"
            "Document:    text\n"
            "Pages:       unknown\n"
            "Attachments: 0\n");
}

TEST_F(InfoCommand, SaysTheSameInMemory) {
  for (const char* name : {"html-inline-image.eml", "japanese-iso2022jp.eml",
                           "nested-attachments.eml", "plain-7bit.eml"}) {
    const std::string told = output({"info", Example(name)});
    EXPECT_EQ(output({"info", "--in-memory", Example(name)}), told) << name;
    EXPECT_EQ(output({"info", "--temp-files", Example(name)}), told) << name;
  }
}

TEST_F(InfoCommand, WritesJson) {
  const std::string file = Example("nested-attachments.eml");
  EXPECT_EQ(host::ParsedJson<json>(output({"info", "--json", file})), json({{"file", file},
                                                                            {"format", "EML"},
                                                                            {"messages", 1},
                                                                            {"message", 1},
                                                                            {"document", "HTML"},
                                                                            {"pages", nullptr},
                                                                            {"attachments", 3}}));
}

TEST_F(InfoCommand, AsksForTheTextSiblingWithTheTextFlag) {
  const json answer = host::ParsedJson<json>(
      output({"info", "--text", "--json", Example("html-inline-image.eml")}));
  EXPECT_EQ(answer["document"], "text");
}

TEST_F(InfoCommand, TakesTheOneMessageOfAMailFile) {
  const std::string file = Example("plain-7bit.eml");
  EXPECT_EQ(host::ParsedJson<json>(output({"info", "-m", "1", "--json", file}))["message"], 1);
  for (const char* number : {"2", "7", "2147483647"}) {
    EXPECT_EQ(failure(2, {"info", "-m", number, "--json", file}),
              file + ": has 1 message; there is no message " + number);
  }
}

}  // namespace
}  // namespace tarn::test
