// tarnmail attachments: the table and the JSON list.

#include "TarnmailFixture.h"
#include "console/Json.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

using AttachmentsCommand = TarnmailTest;
using nlohmann::json;

json Property(const char* name, const char* value) { return {{"name", name}, {"value", value}}; }

TEST_F(AttachmentsCommand, ShowsATable) {
  EXPECT_EQ(output({"attachments", Example("nested-attachments.eml")}),
            "No.  Name           Size  Type            Disposition  Created              "
            "Modified             Description\n"
            "  1  minutes.txt      74  text/plain      attachment   2026-05-19T15:02:00  "
            "2026-05-19T16:31:45  Minutes of 19 May\n"
            "  2  rooms.csv        95  text/csv        attachment   -                    "
            "-                    -\n"
            "  3  caretaker.eml   282  message/rfc822  attachment   -                    "
            "-                    The mail of the caretaker\n");
}

// The zone in the mail does not count, and that of the machine changes the number of seconds alone.
TEST_F(AttachmentsCommand, ShowsTimesAsTheyStandInTheMailInEveryZone) {
  const std::string file = Example("nested-attachments.eml");
  const std::string table = output({"attachments", file});
  const std::pair<const char*, int64_t> zones[] = {
      {"UTC0", 1779202920}, {"EST5EDT,M3.2.0,M11.1.0", 1779217320}, {"IST-5:30", 1779183120}};
  for (const auto& [zone, seconds] : zones) {
    environment_.emplace_back("TZ", zone);
    EXPECT_EQ(output({"attachments", file}), table) << zone;
    const json item =
        host::ParsedJson<json>(output({"attachments", "--json", file}))["attachments"][0];
    EXPECT_EQ(item["created"], "2026-05-19T15:02:00") << zone;
    EXPECT_EQ(item["createdSeconds"], seconds) << zone;
    EXPECT_EQ(item["modified"], "2026-05-19T16:31:45") << zone;
    EXPECT_EQ(item["modifiedSeconds"], seconds + 5385) << zone;
  }
  // By name, wherever the machine's own tables put it.
  environment_.emplace_back("TZ", "America/New_York");
  EXPECT_EQ(output({"attachments", file}), table);
}

TEST_F(AttachmentsCommand, ShowsTheContentIdOfAnInlineImage) {
  const std::string expected =
      "No.  Name       Size  Type       Disposition  Content ID\n"
      "  1  chart.png   111  image/png  inline       chart.q1@example.com\n";
  EXPECT_EQ(output({"attachments", Example("html-inline-image.eml")}), expected);
  EXPECT_EQ(output({"attachments", "--in-memory", Example("html-inline-image.eml")}), expected);
}

TEST_F(AttachmentsCommand, SaysThatThereAreNone) {
  EXPECT_EQ(output({"attachments", Example("plain-7bit.eml")}), "No attachments\n");
}

TEST_F(AttachmentsCommand, WritesAnEmptyListAsJson) {
  const std::string file = Example("plain-7bit.eml");
  EXPECT_EQ(host::ParsedJson<json>(output({"attachments", "--json", file})),
            json({{"file", file}, {"attachments", json::array()}}));
}

TEST_F(AttachmentsCommand, WritesEverythingAsJson) {
  const std::string file = Example("nested-attachments.eml");
  const json list =
      host::ParsedJson<json>(output({"attachments", "--json", "-m", "1", file}))["attachments"];
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(list[0],
            json({{"number", 1},
                  {"name", "minutes.txt"},
                  {"description", "Minutes of 19 May"},
                  {"size", 74},
                  {"created", "2026-05-19T15:02:00"},
                  {"createdSeconds", 1779202920},
                  {"modified", "2026-05-19T16:31:45"},
                  {"modifiedSeconds", 1779208305},
                  {"properties", json::array({Property("Content-Disposition", "attachment"),
                                              Property("MineType", "text/plain")})}}));
  EXPECT_EQ(list[1],
            json({{"number", 2},
                  {"name", "rooms.csv"},
                  {"description", nullptr},
                  {"size", 95},
                  {"created", nullptr},
                  {"createdSeconds", nullptr},
                  {"modified", nullptr},
                  {"modifiedSeconds", nullptr},
                  {"properties", json::array({Property("Content-Disposition", "attachment"),
                                              Property("MineType", "text/csv")})}}));
  EXPECT_EQ(list[2]["name"], "caretaker.eml");
  EXPECT_EQ(list[2]["description"], "The mail of the caretaker");
}

std::string MailWithAttachment(const std::string& disposition) {
  return kSampleFields +
         "Content-Type: multipart/mixed; boundary=\"sep\"\r\n"
         "\r\n"
         "--sep\r\n"
         "Content-Type: text/plain\r\n"
         "\r\n"
         "Hi\r\n"
         "--sep\r\n"
         "Content-Type: application/pdf\r\n" +
         disposition +
         "\r\n"
         "\r\n"
         "%PDF\r\n"
         "--sep--\r\n";
}

TEST_F(AttachmentsCommand, EscapesWhatATerminalWouldObey) {
  const std::string file = mail(MailWithAttachment(
      "Content-Disposition: attachment; filename=\"\x1b[31m\xE2\x80\xAEgnp.exe\x7f\xC2\x9B\""));
  EXPECT_EQ(output({"attachments", file}),
            "No.  Name                             Size  Type             Disposition\n"
            "  1  \\x1b[31m\\u202egnp.exe\\x7f\\u009b     4  application/pdf  attachment\n");
  const std::string asJson = output({"attachments", "--json", file});
  EXPECT_EQ(host::ParsedJson<json>(asJson)["attachments"][0]["name"],
            "\x1b[31m\u202Egnp.exe\x7f\u009B");
  EXPECT_NE(asJson.find(R"("\u001b[31m\u202egnp.exe\u007f\u009b")"), std::string::npos) << asJson;
}

TEST_F(AttachmentsCommand, AlignsWideCharacters) {
  const std::string file =
      mail(MailWithAttachment("Content-Disposition: attachment; filename=\"会議.pdf\""));
  EXPECT_EQ(output({"attachments", file}),
            "No.  Name      Size  Type             Disposition\n"
            "  1  会議.pdf     4  application/pdf  attachment\n");
}

TEST_F(AttachmentsCommand, ShowsAnAttachmentWithoutName) {
  const std::string file = mail(MailWithAttachment("Content-Disposition: attachment"));
  EXPECT_EQ(output({"attachments", file}),
            "No.  Size  Type             Disposition\n"
            "  1     4  application/pdf  attachment\n");
  EXPECT_EQ(
      host::ParsedJson<json>(output({"attachments", "--json", file}))["attachments"][0]["name"],
      nullptr);
}

const std::string kZeroMeaning =
    ": an attachment's name or property is not valid UTF-8, or an inline image is too small for a "
    "data: URL (0)";

TEST_F(AttachmentsCommand, SaysWhatANameThatIsNoUtf8Brings) {
  const std::string file =
      mail(MailWithAttachment("Content-Disposition: attachment; filename=\"caf\xE9.pdf\""));
  EXPECT_EQ(failure(1, {"attachments", file}), file + kZeroMeaning);
  EXPECT_EQ(failure(1, {"extract", file, "1"}), file + kZeroMeaning);
}

TEST_F(AttachmentsCommand, SaysWhatADescriptionThatIsNoUtf8Brings) {
  const std::string file =
      mail(MailWithAttachment("Content-Description: caf\xE9\r\n"
                              "Content-Disposition: attachment; filename=\"a.pdf\""));
  EXPECT_EQ(failure(1, {"attachments", file}), file + kZeroMeaning);
  EXPECT_EQ(output({"extract", file, "1"}), "%PDF");
}

TEST_F(AttachmentsCommand, SaysWhatAnImageOfThreeBytesBrings) {
  const std::string file = mail(kSampleFields +
                                "Content-Type: multipart/related; boundary=\"sep\"\r\n"
                                "\r\n"
                                "--sep\r\n"
                                "Content-Type: text/html\r\n"
                                "\r\n"
                                "<html><head></head><body><img src=\"cid:p@x\"></body></html>\r\n"
                                "--sep\r\n"
                                "Content-Type: image/png; name=\"p.png\"\r\n"
                                "Content-ID: <p@x>\r\n"
                                "\r\n"
                                "abc\r\n"
                                "--sep--\r\n");
  EXPECT_EQ(failure(1, {"attachments", file}), file + kZeroMeaning);
  const std::string line =
      file +
      ": an image is too small for a data: URL; --temp-files makes the document without them (0)";
  EXPECT_EQ(failure(1, {"document", "--in-memory", file}), line);
  EXPECT_EQ(failure(1, {"document", file}), line);
  // A file beside the document takes an image of any size.
  EXPECT_EQ(run({"document", "--temp-files", file}).exitStatus, 0);
}

}  // namespace
}  // namespace tarn::test
