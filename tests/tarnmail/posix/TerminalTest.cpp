// What a terminal gets: text, and nothing else that nobody asked for.

#include "tarnmail/ExampleDocuments.h"
#include "tarnmail/TarnmailFixture.h"
#include "tarnmail/posix/RunningProgram.h"

namespace tarn::test {
namespace {

class Terminal : public TarnmailTest {
 protected:
  // Standard output and standard error are one terminal. Carriage returns before line ends are the
  // terminal's.
  std::string shown(const std::vector<std::string>& arguments, int exitStatus) {
    TwoEnds terminal;
    OpenTerminal(terminal);
    ProgramCall call;
    call.program = TARNMAIL_PATH;
    call.arguments = arguments;
    call.environment = environment_;
    call.workingDirectory = directory_.path();
    RunningProgram program(call, {-1, terminal.program, terminal.program});
    terminal.closeProgramsEnd();
    std::string text = ReadAll(terminal.test);
    EXPECT_EQ(program.wait(), exitStatus << 8);
    std::erase(text, '\r');
    return text;
  }
};

std::string WithoutReturns(std::string text) {
  std::erase(text, '\r');
  return text;
}

TEST_F(Terminal, ShowsTextOfAnAttachment) {
  EXPECT_EQ(shown({"extract", Example("nested-attachments.eml"), "2"}, 0), WithoutReturns(kRooms));
}

TEST_F(Terminal, GetsBinaryAttachmentsOnlyWhenAsked) {
  const std::string file = Example("html-inline-image.eml");
  EXPECT_EQ(shown({"extract", file, "1"}, 2),
            "tarnmail: " + file +
                ": attachment 1 is no text for a terminal; -o FILE writes it to a file, and -o - "
                "here\n");
  EXPECT_NE(shown({"extract", file, "1", "-o", "-"}, 0).find("IHDR"), std::string::npos);
  EXPECT_EQ(shown({"extract", file, "1", "-o", "out.png"}, 0), "");
  EXPECT_EQ(directory_.listing(), "out.png");
}

}  // namespace
}  // namespace tarn::test
