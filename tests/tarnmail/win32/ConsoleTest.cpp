// A console that is named as the place for a document.

#include "support/SampleMails.h"
#include "tarnmail/OutputFixture.h"
#include "tarnmail/win32/PseudoConsole.h"

namespace tarn::test {
namespace {

// The console itself is in a code page of its own, in which these bytes would be other characters.
TEST_F(Output, IsReadableInAConsole) {
  const std::string text = "Gr\u00FC\u00DFe \u20AC";
  ProgramCall call;
  call.program = TARNMAIL_PATH;
  call.environment = environment_;
  call.workingDirectory = directory_.path();
  mail(kSampleFields + "\r\n" + text + "\r\n");
  for (const char* place : {"CON", "con", "CONOUT$", "\\\\.\\CON"}) {
    call.arguments = {"document", "mail.eml", "-o", place};
    const std::string shown = ShownByConsole(call);
    EXPECT_NE(shown.find(text), std::string::npos) << place << ": " << shown;
  }
  EXPECT_EQ(directory_.listing(), "mail.eml");
}

}  // namespace
}  // namespace tarn::test
