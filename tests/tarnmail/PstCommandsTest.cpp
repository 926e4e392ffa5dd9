// The commands on stores: which message, its document on both routes, its attachments, and what
// damage and missing bodies look like.

#include "TarnmailFixture.h"
#include "console/Json.h"
#include "road/PstSamples.h"

namespace tarn::test {
namespace {

using nlohmann::json;

class PstCommands : public TarnmailTest {
 protected:
  PstCommands() { environment_.emplace_back("TZ", "UTC0"); }
  std::string store() { return mail(SampleStore(PstLayout::Unicode), "mail.pst"); }
};

TEST_F(PstCommands, InfoTellsTheMessageAndTheirNumber) {
  EXPECT_EQ(output({"info", store()}),
            "Format:      PST\n"
            "Messages:    6\n"
            "Message:     1\n"
            "Document:    HTML\n"
            "Pages:       unknown\n"
            "Attachments: 2\n");
  EXPECT_EQ(output({"info", "-m", "2", "--in-memory", "mail.pst"}),
            "Format:      PST\n"
            "Messages:    6\n"
            "Message:     2\n"
            "Document:    RTF\n"
            "Pages:       unknown\n"
            "Attachments: 0\n");
  EXPECT_EQ(host::ParsedJson<json>(output({"info", "--json", "--message", "4", "mail.pst"})),
            json({{"file", "mail.pst"},
                  {"format", "PST"},
                  {"messages", 6},
                  {"message", 4},
                  {"document", "HTML"},
                  {"pages", nullptr},
                  {"attachments", 0}}));
}

TEST_F(PstCommands, RefuseNumbersBeyondTheCount) {
  StoreBuilder two(PstLayout::Ansi);
  FolderBuilder& folder = two.folder("Inbox");
  folder.message().html("a");
  folder.message().html("b");
  const std::string file = mail(two.bytes(), "two.pst");
  EXPECT_EQ(host::ParsedJson<json>(output({"info", "--json", "-m", "2", file}))["message"], 2);
  for (const std::string number : {"3", "2147483647"}) {
    const std::string line = "two.pst: has 2 messages; there is no message " + number;
    EXPECT_EQ(failure(2, {"info", "-m", number, file}), line);
    EXPECT_EQ(failure(2, {"document", "-m", number, file, "-o", "out"}), line);
    EXPECT_EQ(failure(2, {"attachments", "-m", number, file}), line);
    EXPECT_EQ(failure(2, {"extract", "-m", number, file, "1", "-o", "out"}), line);
  }
  EXPECT_EQ(directory_.listing(), "two.pst");
}

TEST_F(PstCommands, DocumentWritesTheMessageThatIsAskedFor) {
  store();
  EXPECT_EQ(output({"document", "-m", "2", "mail.pst"}), kSampleRtf);
  EXPECT_EQ(output({"document", "-m", "4", "mail.pst"}), "<html>last</html>");
  EXPECT_EQ(output({"document", "-m", "4", "--in-memory", "mail.pst"}), "<html>last</html>");
  const std::string byFile = output({"document", "--temp-files", "mail.pst"});
  EXPECT_NE(byFile.find("<img src=\"_pic.png\">"), std::string::npos);
  const std::string inMemory = output({"document", "mail.pst"});
  EXPECT_NE(inMemory.find("<img src=\"data:image;base64," + kImageBase64 + "\">"),
            std::string::npos);
  const std::string german = output({"document", "--language", "0x0407", "mail.pst"});
  EXPECT_NE(german.find(">Betreff:   </span>"), std::string::npos);
}

TEST_F(PstCommands, DocumentWritesPlainTextOnlyWhenAsked) {
  store();
  EXPECT_EQ(failure(1, {"document", "-m", "3", "mail.pst"}),
            "mail.pst: message 3 has nothing but a plain body, which --text shows (-9)");
  EXPECT_EQ(output({"document", "-m", "3", "--text", "mail.pst"}),
            std::string("\xFF\xFE"
                        "Subject:   \tPlain\r\n\r\no\0n\0l",
                        28));
  EXPECT_EQ(failure(1, {"document", "-m", "2", "--text", "mail.pst"}),
            "mail.pst: message 2 has no plain body; without --text its other body is shown (-9)");
}

TEST_F(PstCommands, AttachmentsListsThoseOfTheMessage) {
  EXPECT_EQ(output({"attachments", store()}),
            "No.  Name        Type       Content ID  Created              Modified\n"
            "  1  pic.png     image/png  pic.png     -                    -\n"
            "  2  report.pdf  -          report.pdf  2021-01-01T00:00:00  2021-01-01T00:01:00\n");
  EXPECT_EQ(output({"attachments", "-m", "3", "mail.pst"}), "No attachments\n");
  const json list = host::ParsedJson<json>(output({"attachments", "--json", "mail.pst"}));
  EXPECT_EQ(list["attachments"].size(), 2u);
  EXPECT_EQ(list["attachments"][1]["createdSeconds"], 1609459200);
  EXPECT_EQ(list["attachments"][0]["size"], nullptr);
}

TEST_F(PstCommands, ExtractWritesTheBytes) {
  EXPECT_EQ(output({"extract", store(), "1"}), kImageBytes);
  EXPECT_EQ(output({"extract", "mail.pst", "2", "-o", "out"}), "");
  EXPECT_EQ(ReadWholeFile(directory_.path() / "out"), "%PDF-1.4 not much of one");
  EXPECT_EQ(failure(1, {"extract", "mail.pst", "3"}), "mail.pst: has no attachment 3");
  EXPECT_EQ(failure(1, {"extract", "-m", "4", "mail.pst", "1"}), "mail.pst: has no attachment 1");
}

TEST_F(PstCommands, AStoreWithoutMessagesIsRefused) {
  StoreBuilder empty(PstLayout::Unicode);
  const std::string file = mail(empty.bytes(), "empty.pst");
  const std::string line = "empty.pst: the store has no messages (-13)";
  EXPECT_EQ(failure(1, {"info", file}), line);
  EXPECT_EQ(failure(1, {"document", file}), line);
  EXPECT_EQ(failure(1, {"attachments", file}), line);
  EXPECT_EQ(failure(1, {"extract", file, "1"}), line);
}

TEST_F(PstCommands, ADamagedStoreGivesOneLine) {
  const std::string good = SampleStore(PstLayout::Unicode);
  std::string badHeader = good;
  badHeader[100] ^= 1;
  for (const std::string& bad : {badHeader, good.substr(0, 600), good.substr(0, 100)}) {
    const std::string file = mail(bad, "bad.pst");
    const std::string line = failure(1, {"info", file});
    EXPECT_TRUE(line.starts_with("bad.pst: the store is damaged: ")) << line;
    EXPECT_EQ(failure(1, {"document", file, "-o", "out"}), line);
    EXPECT_EQ(failure(1, {"attachments", "--json", file}), line);
    EXPECT_EQ(failure(1, {"extract", file, "1", "-o", "out"}), line);
    EXPECT_FALSE(std::filesystem::exists(directory_.path() / "out"));
  }
}

}  // namespace
}  // namespace tarn::test
