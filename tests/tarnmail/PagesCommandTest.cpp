// tarnmail pages as far as nothing is laid out. tests/siblings/pages has the pages.

#include "TarnmailFixture.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;

class PagesCommand : public TarnmailTest {
 protected:
  // The line of a command that is wrong, without the help that it points to.
  std::string usage(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "pages");
    const std::string line = failure(2, arguments);
    const std::string end = "; see tarnmail pages --help";
    EXPECT_TRUE(line.ends_with(end)) << line;
    return line.substr(0, line.size() - std::min(line.size(), end.size()));
  }

  const std::string file_ = Example("plain-7bit.eml");
};

TEST_F(PagesCommand, NeedsAPlaceAndAFile) {
  EXPECT_EQ(usage({file_}), "--output is required");
  EXPECT_EQ(usage({"-o", "out"}), "FILE is required");
  EXPECT_EQ(usage({file_, "-o", "out", "more"}), "unexpected argument: more");
}

TEST_F(PagesCommand, RefusesNumbersOutOfRange) {
  EXPECT_EQ(usage({file_, "-o", "out", "--dpi", "9"}), "--dpi: 9 is below 10");
  EXPECT_EQ(usage({file_, "-o", "out", "--dpi", "801"}), "--dpi: 801 is above 800");
  EXPECT_EQ(usage({file_, "-o", "out", "--dpi", "fine"}), "--dpi: fine is not a number");
  EXPECT_EQ(usage({file_, "-o", "out", "-m", "0"}), "-m,--message: 0 is below 1");
  EXPECT_EQ(directory_.listing(), "");
}

TEST_F(PagesCommand, RefusesAResolutionOfPdf) {
  EXPECT_EQ(usage({file_, "-o", "-", "--pdf", "--dpi", "300"}), "--dpi: a PDF has no resolution");
  EXPECT_EQ(usage({"--dpi", "96", file_, "-o", "-", "--pdf"}), "--dpi: a PDF has no resolution");
}

TEST_F(PagesCommand, RefusesPaperOfPagesThatInfoDoesNotCount) {
  EXPECT_EQ(failure(2, {"info", "--paper", "letter", file_}),
            "--paper: is for --pages; see tarnmail info --help");
}

TEST_F(PagesCommand, RefusesOtherPaper) {
  for (const char* paper : {"a5", "A4", ""}) {
    EXPECT_EQ(usage({file_, "-o", "out", "--paper", paper}),
              "--paper: " + (*paper == '\0' ? std::string("an empty text") : paper) +
                  " is neither a4 nor letter");
  }
}

TEST_F(PagesCommand, RefusesWhatIsNoRangeOfPages) {
  for (const char* pages : {"0", "3-2", "all", "1,2"}) {
    EXPECT_EQ(usage({file_, "-o", "out", "--pages", pages}),
              "--pages: " + std::string(pages) + " is no range such as 2, 1-3 or 3-");
  }
}

TEST_F(PagesCommand, IsExplained) {
  const std::string help = output({"pages", "--help"});
  for (const char* part : {"-o,--output OUT", "--pdf", "--dpi N", "--paper PAPER", "--pages RANGE",
                           "--no-sandbox", "--text", "-m,--message N", "--in-memory"}) {
    EXPECT_NE(help.find(part), std::string::npos) << part;
  }
}

}  // namespace
}  // namespace tarn::test
