// The command line itself: help, version, wrong usage, where options may stand.

#include <algorithm>

#include "ExampleDocuments.h"
#include "TarnmailFixture.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

using CommandLine = TarnmailTest;

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST_F(CommandLine, TellsItsVersion) {
  EXPECT_EQ(output({"--version"}), "tarnmail " TARNMAIL_VERSION "\n");
}

TEST_F(CommandLine, ListsItsCommands) {
  const std::string help = output({"--help"});
  EXPECT_EQ(output({"-h"}), help);
  for (const char* part : {"info", "document", "attachments", "extract", "--language LANGID",
                           "--in-memory", "--temp DIR", "--version", "Exit status: 0 done"}) {
    EXPECT_TRUE(Contains(help, part)) << part << "\n" << help;
  }
}

TEST_F(CommandLine, ExplainsEachCommand) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> expected = {
      {"info", {"FILE", "--text", "--json", "-m,--message N"}},
      {"document", {"FILE", "--text", "-o,--output OUT", "-m,--message N"}},
      {"attachments", {"FILE", "--json", "-m,--message N"}},
      {"extract", {"FILE", "K", "-o,--output OUT", "-m,--message N"}},
  };
  for (const auto& [command, parts] : expected) {
    const std::string help = output({command, "--help"});
    EXPECT_TRUE(Contains(help, "tarnmail " + command)) << help;
    for (const std::string& part : parts) EXPECT_TRUE(Contains(help, part)) << part << "\n" << help;
    for (const char* part : {"--language LANGID", "--in-memory", "--temp DIR"}) {
      EXPECT_TRUE(Contains(help, part)) << part << "\n" << help;
    }
  }
}

// A mail file has one body. What is asked for names the sibling that gets it.
TEST_F(CommandLine, PromisesNoPlainTextOfAMailFile) {
  for (const char* command : {"info", "document"}) {
    // The help is broken into lines at blanks.
    std::string help = output({command, "--help"});
    help.erase(
        std::remove_if(help.begin(), help.end(), [](char c) { return c == ' ' || c == '\n'; }),
        help.end());
    EXPECT_TRUE(Contains(help, "--textAskforplaintext(amailfilegivesitsownbodyallthesame)"))
        << help;
  }
}

TEST_F(CommandLine, RefusesWhatItDoesNotKnow) {
  const std::string file = Example("plain-7bit.eml");
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"unknown", file},
      {file},
      {"info"},
      {"info", file, "more"},
      {"info", file, "--unknown"},
      {"info", file, "-o", "out"},
      {"document"},
      {"document", file, "--json"},
      {"document", file, "-o"},
      {"document", file, "-m"},
      {"attachments"},
      {"attachments", file, "--text"},
      {"extract", file},
      {"extract", file, "1", "2"},
      {"extract", file, "1", "--json"},
      {"info", file, "--language"},
      {"info", file, "--temp"},
      {"info", file, "document", file},
  };
  for (const auto& arguments : wrong) {
    const std::string line = failure(2, arguments);
    EXPECT_TRUE(Contains(line, "; see tarnmail --help")) << line;
  }
  EXPECT_EQ(directory_.listing(), "");
}

TEST_F(CommandLine, RefusesValuesThatAreNone) {
  const std::string file = Example("plain-7bit.eml");
  EXPECT_EQ(failure(2, {"info", file, "-m", "two"}),
            "-m,--message: two is not a number; see tarnmail --help");
  EXPECT_EQ(failure(2, {"info", file, "-m", "99999999999"}),
            "-m,--message: 99999999999 is not a number; see tarnmail --help");
  for (const char* language : {"german", "0x", "0x10000", "65536", "-1", "0407x", "0x0407 ", ""}) {
    EXPECT_EQ(failure(2, {"info", file, "--language", language}),
              "--language: " + std::string(language) +
                  " is not a LANGID such as 0x0407 or 1031; see tarnmail --help");
  }
}

TEST_F(CommandLine, RefusesATemporaryDirectoryThatIsNone) {
  const std::string file = Example("html-inline-image.eml");
  mail(kPlainMail);
  EXPECT_EQ(failure(2, {"document", "--temp", "none", file}), "none: no such directory");
  EXPECT_EQ(failure(2, {"document", "--temp", "", file}), ": no such directory");
  EXPECT_EQ(failure(2, {"document", "--temp", "mail.eml", file}), "mail.eml: is not a directory");
}

TEST_F(CommandLine, ReportsATemporaryDirectoryThatCannotBeWrittenTo) {
  std::filesystem::create_directory(directory_.path() / "sealed");
  std::filesystem::permissions(
      directory_.path() / "sealed",
      std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
  const std::string file = Example("html-inline-image.eml");
  EXPECT_EQ(failure(1, {"document", "--temp", "sealed", file}),
            file + ": a temporary file or directory could not be made (-1490)");
}

TEST_F(CommandLine, TakesCommonOptionsInFrontOfTheCommand) {
  const std::string file = Example("html-inline-image.eml");
  EXPECT_EQ(output({"--in-memory", "--language", "1031", "document", file}),
            output({"document", file, "--in-memory", "--language", "1031"}));
  EXPECT_EQ(failure(2, {"--temp", "none", "document", file}), "none: no such directory");
}

TEST_F(CommandLine, TakesFilesNamedLikeCommandsAndOptions) {
  mail(kPlainMail, "document");
  mail(kPlainMail, "-o");
  const std::string expected = kPlainMailDocument + '\0';
  EXPECT_EQ(output({"document", "document"}), expected);
  EXPECT_EQ(output({"document", "--", "-o"}), expected);
}

}  // namespace
}  // namespace tarn::test
