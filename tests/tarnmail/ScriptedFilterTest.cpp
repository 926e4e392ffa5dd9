// What tarnmail does with filters that misbehave, and with answers that no mail file brings about.

#include "TarnmailFixture.h"
#include "console/Json.h"

namespace tarn::test {
namespace {

using nlohmann::json;

class ScriptedFilter : public TarnmailTest {
 protected:
  ScriptedFilter() { useFilter(SCRIPTED_FILTER_PATH); }

  // The line that all four commands give for the script.
  std::string failureOfAll(int exitStatus, const std::string& script) {
    const std::string file = mail(script, "script");
    const std::string line = failure(exitStatus, {"info", file});
    EXPECT_EQ(failure(exitStatus, {"document", file}), line);
    EXPECT_EQ(failure(exitStatus, {"attachments", file}), line);
    EXPECT_EQ(failure(exitStatus, {"extract", file, "1"}), line);
    return line;
  }
};

TEST_F(ScriptedFilter, ReportsDamagedStores) {
  EXPECT_EQ(failureOfAll(1, "throw page 12\nis torn"),
            "script: the store is damaged: page 12\\nis torn");
}

TEST_F(ScriptedFilter, ReportsOtherExceptions) {
  EXPECT_EQ(failureOfAll(1, "throw-memory"), "script: out of memory");
  EXPECT_EQ(failureOfAll(1, "throw-number"), "script: the filter gave up without saying why");
}

TEST_F(ScriptedFilter, ReportsCodes) {
  EXPECT_EQ(failureOfAll(1, "status -14"), "script: the compound file could not be opened (-14)");
  EXPECT_EQ(failureOfAll(1, "status 2"), "script: the message ended early (2)");
  EXPECT_EQ(
      failureOfAll(1, "status 0"),
      "script: an attachment's name or property is not valid UTF-8, or an inline image is too "
      "small for a data: URL (0)");
  EXPECT_EQ(failureOfAll(1, "status -4711"),
            "script: failed with a code that means nothing here (-4711)");
}

// The code does not tell a file that is no mail from a message without a body.
TEST_F(ScriptedFilter, GivesWhatIsNotSupportedOneMeaning) {
  const std::string meaning =
      "script: not a mail file the filter takes, or one without a body it can show (-9)";
  EXPECT_EQ(failureOfAll(1, "status -9"), meaning);
  EXPECT_EQ(failureOfAll(1, "!BDN status -9"), meaning);
  EXPECT_EQ(failure(1, {"document", "--text", mail("!BDN status -9", "script")}), meaning);
}

TEST_F(ScriptedFilter, ReportsADocumentFileThatIsGone) {
  EXPECT_EQ(failure(1, {"info", mail("lost-file", "script")}),
            "script: the document could not be taken over: the file could not be opened "
            "(-1863, -10)");
}

TEST_F(ScriptedFilter, TellsOfAStore) {
  const std::string file = mail("!BDN store", "script");
  EXPECT_EQ(output({"info", "-m", "3", file}),
            "Format:      PST\n"
            "Messages:    12\n"
            "Message:     3\n"
            "Document:    RTF\n"
            "Pages:       unknown\n"
            "Attachments: 2\n");
  EXPECT_EQ(host::ParsedJson<json>(output({"info", "-m", "12", "--json", file})),
            json({{"file", "script"},
                  {"format", "PST"},
                  {"messages", 12},
                  {"message", 12},
                  {"document", "RTF"},
                  {"pages", nullptr},
                  {"attachments", 2}}));
  // The filter took the last message, which nobody asked for.
  EXPECT_EQ(failure(2, {"info", "-m", "99", file}),
            "script: has 12 messages; there is no message 99");
}

TEST_F(ScriptedFilter, WritesAllBytesOfADocument) {
  EXPECT_EQ(output({"document", mail("store", "script")}),
            std::string("{\\rtf1 twelve\0\\par}", 19));
}

TEST_F(ScriptedFilter, EndsARecordInAList) {
  EXPECT_EQ(output({"document", mail("list", "script")}),
            std::string("{\\rtf1 twelve\0\\par}", 19));
}

TEST_F(ScriptedFilter, ShowsHostileAttachmentsSafely) {
  EXPECT_EQ(
      output({"attachments", mail("store", "script")}),
      "No.  Name                                      Type              Content ID  Created        "
      "         "
      "Modified             Description\n"
      "  1  \\x1b[2Jevil\\u202egnp.\\x0d\\nexe\\x7f\\u0085\uFFFD  text/\\x1b[31mred  <\\x07>      "
      "-9223372036854775808 s  2026-05-19T15:31:45  two\\nlines\n"
      "     " +
          std::string(128, 'n') + ": " + std::string(128, 'v') +
          "\n"
          "     Content-ID: a second\\none\n"
          "     \\x1b[2J:\n"
          "  2  -                                         -                 -           -          "
          "    "
          "         "
          "-                    -\n");
}

TEST_F(ScriptedFilter, WritesHostileAttachmentsAsValidJson) {
  const json list = host::ParsedJson<json>(
      output({"attachments", "--json", mail("store", "script")}))["attachments"];
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0]["name"], "\x1b[2Jevil\u202Egnp.\r\nexe\x7f\u0085\uFFFD");
  EXPECT_EQ(list[0]["size"], nullptr);
  EXPECT_EQ(list[0]["created"], nullptr);
  EXPECT_EQ(list[0]["createdSeconds"], INT64_MIN);
  EXPECT_EQ(list[0]["modified"], "2026-05-19T15:31:45");
  ASSERT_EQ(list[0]["properties"].size(), 5u);
  EXPECT_EQ(list[0]["properties"][1]["name"], std::string(128, 'n'));
  EXPECT_EQ(list[0]["properties"][1]["value"], std::string(128, 'v'));
  EXPECT_EQ(list[0]["properties"][3]["value"], "a second\none");
  EXPECT_EQ(list[0]["properties"][4]["name"], "\x1b[2J");
  EXPECT_EQ(list[1]["name"], nullptr);
  EXPECT_EQ(list[1]["properties"], json::array());
}

TEST_F(ScriptedFilter, HandsOnTheMessageNumber) {
  EXPECT_EQ(output({"extract", "-m", "65", mail("!BDN store", "script"), "1"}), "A");
}

TEST_F(ScriptedFilter, TellsAnEmptyAttachmentFromNone) {
  const std::string file = mail("store", "script");
  EXPECT_EQ(output({"extract", file, "2", "-o", "empty"}), "");
  EXPECT_EQ(ReadWholeFile(directory_.path() / "empty"), "");
  EXPECT_EQ(failure(1, {"extract", file, "3"}), "script: has no attachment 3");
}

TEST_F(ScriptedFilter, NoticesWhatIsLeftBehind) {
  // The report of the single block is for developers, and not what this test is about.
  environment_.emplace_back("ASAN_OPTIONS", "detect_leaks=0");
  std::erase_if(environment_, [](const auto& set) { return set.first == "TARNBASE_REPORT_LEAKS"; });
  const ProgramResult result = run({"info", mail("leak", "script"), "--json"});
  EXPECT_EQ(result.exitStatus, 3);
  EXPECT_EQ(result.err, "tarnmail: internal error: left behind: 1 blocks\n");
}

TEST_F(TarnmailTest, SaysThatTheFilterIsMissing) {
  useFilter("");
  const std::string line = failure(3, {"info", mail("Hello, world")});
  EXPECT_TRUE(line.starts_with(FILTER_FILE_NAME ": cannot be loaded: ")) << line;
}

TEST_F(TarnmailTest, SaysThatTheFilterLacksAnExport) {
  useFilter(INCOMPLETE_FILTER_PATH);
  EXPECT_EQ(failure(3, {"info", mail("Hello, world")}),
            FILTER_FILE_NAME ": does not export fltLoad");
}

}  // namespace
}  // namespace tarn::test
