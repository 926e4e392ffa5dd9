// The command line itself: help, version, wrong usage, where options may be.

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
  EXPECT_EQ(output({"-V"}), "tarnmail " TARNMAIL_VERSION "\n");
}

TEST_F(CommandLine, ListsItsCommands) {
  const std::string help = output({"--help"});
  EXPECT_EQ(output({"-h"}), help);
  for (const char* part :
       {"info", "document", "pages", "attachments", "extract", "--language LANGID", "--in-memory",
        "--temp-files", "--temp DIR", "-V,--version", "Exit status: 0 done"}) {
    EXPECT_TRUE(Contains(help, part)) << part << "\n" << help;
  }
}

TEST_F(CommandLine, ExplainsEachCommand) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> expected = {
      {"info", {"FILE", "--text", "--json", "-m,--message N", "--pages", "--no-sandbox"}},
      {"document", {"FILE", "--text", "-o,--output OUT", "-m,--message N"}},
      {"pages", {"FILE", "--text", "-o,--output OUT", "-m,--message N"}},
      {"attachments", {"FILE", "--json", "-m,--message N"}},
      {"extract", {"FILE", "K", "-o,--output OUT", "-m,--message N"}},
  };
  for (const auto& [command, parts] : expected) {
    const std::string help = output({command, "--help"});
    EXPECT_TRUE(Contains(help, "tarnmail " + command)) << help;
    for (const std::string& part : parts) EXPECT_TRUE(Contains(help, part)) << part << "\n" << help;
    for (const char* part : {"--language LANGID", "--in-memory", "--temp-files", "--temp DIR"}) {
      EXPECT_TRUE(Contains(help, part)) << part << "\n" << help;
    }
  }
}

TEST_F(CommandLine, ExplainsCommandsByHelp) {
  EXPECT_EQ(output({"help"}), output({"--help"}));
  for (const char* command : {"info", "document", "pages", "attachments", "extract", "help"}) {
    EXPECT_EQ(output({"help", command}), output({command, "--help"})) << command;
  }
  EXPECT_EQ(failure(2, {"help", "frobnicate"}), "unknown command: frobnicate; see tarnmail --help");
  EXPECT_EQ(failure(2, {"help", ""}), "unknown command: ; see tarnmail --help");
  EXPECT_TRUE(Contains(failure(2, {"help", "info", "document"}), "; see tarnmail"));
}

TEST_F(CommandLine, TakesOneRouteAtATime) {
  const std::string line = "--in-memory and --temp-files exclude each other; see tarnmail --help";
  const std::string file = Example("plain-7bit.eml");
  EXPECT_EQ(failure(2, {"document", "--in-memory", "--temp-files", file}), line);
  EXPECT_EQ(failure(2, {"--temp-files", "document", file, "--in-memory"}), line);
}

// A mail file has one body. What is asked for names the sibling that gets it.
TEST_F(CommandLine, PromisesNoPlainTextOfAMailFile) {
  for (const char* command : {"info", "document"}) {
    // The help is broken into lines at blanks.
    std::string help = output({command, "--help"});
    help.erase(
        std::remove_if(help.begin(), help.end(), [](char c) { return c == ' ' || c == '\n'; }),
        help.end());
    EXPECT_TRUE(Contains(help,
                         "--textAskforplaintext,whichPSTmessageswithoutanotherbodyneed("
                         "anEMLfilegivesitsownbodyallthesame)"))
        << help;
  }
}

TEST_F(CommandLine, NamesTheWordThatIsNoCommand) {
  const std::string file = Example("plain-7bit.eml");
  const std::string unknown = "unknown command: frobnicate; see tarnmail --help";
  EXPECT_EQ(failure(2, {"frobnicate", file}), unknown);
  EXPECT_EQ(failure(2, {"frobnicate"}), unknown);
  EXPECT_EQ(failure(2, {"frobnicate", "--json", file}), unknown);
  EXPECT_EQ(failure(2, {"--language", "1031", "frobnicate"}), unknown);
  EXPECT_EQ(failure(2, {"frobnicate", "info"}), unknown);
  EXPECT_EQ(failure(2, {"frobnicate", "info", file}), unknown);
  EXPECT_EQ(failure(2, {"-"}), "unknown command: -; see tarnmail --help");
  EXPECT_EQ(failure(2, {file}), "unknown command: " + file + "; see tarnmail --help");
  EXPECT_EQ(failure(2, {"\x1b[2J"}), "unknown command: \\x1b[2J; see tarnmail --help");
  EXPECT_EQ(failure(2, {""}), "empty command; see tarnmail --help");
}

TEST_F(CommandLine, TakesWordsApartAsTheyWereGiven) {
  for (const char* word :
       {"two words", "a\"b", "a\\", "a\\\"b\\\\ c\\\\", "\"\"", "*", "?", "/a", "/a:b", "%PATH%",
        "^", "a'b c'", "Gr\u00FC\u00DFe \u4F1A\u8B70 \U0001F600"}) {
    EXPECT_EQ(failure(2, {word}),
              "unknown command: " + std::string(word) + "; see tarnmail --help");
  }
}

TEST_F(CommandLine, MissesACommand) {
  EXPECT_EQ(failure(2, {}), "no command given; see tarnmail --help");
  EXPECT_EQ(failure(2, {"--in-memory"}), "no command given; see tarnmail --help");
  EXPECT_EQ(failure(2, {"--unknown"}), "unknown option: --unknown; see tarnmail --help");
  EXPECT_EQ(failure(2, {"-m", "1"}), "unknown option: -m; see tarnmail --help");
  EXPECT_EQ(failure(2, {"--language", "german"}),
            "--language: german is not a LANGID such as 0x0407 or 1031; see tarnmail --help");
}

TEST_F(CommandLine, PointsToTheHelpOfTheCommand) {
  const std::string file = Example("plain-7bit.eml");
  const std::vector<std::vector<std::string>> wrong = {
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
    EXPECT_TRUE(Contains(line, "; see tarnmail " + arguments[0] + " --help")) << line;
  }
  // An option of a command comes after it.
  EXPECT_EQ(failure(2, {"--json", "info", file}),
            "unknown option before the command: --json; see tarnmail info --help");
  EXPECT_EQ(failure(2, {"-m", "1", "info", file}),
            "unknown option before the command: -m; see tarnmail info --help");
  EXPECT_EQ(
      failure(2, {"info", file, "--jsno"}),
      "unknown option: --jsno (write ./--jsno for a file of that name); see tarnmail info --help");
  EXPECT_EQ(
      failure(2, {"info", "-x.eml"}),
      "unknown option: -x.eml (write ./-x.eml for a file of that name); see tarnmail info --help");
  EXPECT_EQ(failure(2, {"info", file, "more", "words"}),
            "unexpected argument: more; see tarnmail info --help");
  EXPECT_EQ(directory_.listing(), "");
}

TEST_F(CommandLine, RefusesValuesThatAreNone) {
  const std::string file = Example("plain-7bit.eml");
  const auto messageNumber = [&](const char* number) {
    return failure(2, {"info", file, "-m", number});
  };
  const std::string help = "; see tarnmail info --help";
  EXPECT_EQ(messageNumber("two"), "-m,--message: two is not a number" + help);
  EXPECT_EQ(messageNumber(""), "-m,--message: an empty text is not a number" + help);
  EXPECT_EQ(messageNumber("99999999999"), "-m,--message: 99999999999 is out of range" + help);
  EXPECT_EQ(messageNumber("2147483648"), "-m,--message: 2147483648 is out of range" + help);
  EXPECT_EQ(messageNumber("-99999999999"), "-m,--message: -99999999999 is out of range" + help);
  EXPECT_EQ(messageNumber("0"), "-m,--message: 0 is below 1" + help);
  EXPECT_EQ(messageNumber("-1"), "-m,--message: -1 is below 1" + help);
  for (const char* language : {"german", "0x", "0x10000", "65536", "-1", "0407x", "0x0407 "}) {
    EXPECT_EQ(
        failure(2, {"info", file, "--language", language}),
        "--language: " + std::string(language) + " is not a LANGID such as 0x0407 or 1031" + help);
  }
  EXPECT_EQ(failure(2, {"info", file, "--language", ""}),
            "--language: an empty text is not a LANGID such as 0x0407 or 1031" + help);
}

TEST_F(CommandLine, RefusesATemporaryDirectoryThatIsNone) {
  const std::string file = Example("html-inline-image.eml");
  mail(kPlainMail);
  EXPECT_EQ(failure(2, {"document", "--temp", "none", file}), "none: no such directory");
  EXPECT_EQ(failure(2, {"document", "--temp", "", file}), "empty directory name");
  EXPECT_EQ(failure(2, {"document", "--temp", "mail.eml", file}), "mail.eml: is not a directory");
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
