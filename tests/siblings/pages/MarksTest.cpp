// The mark that documents of 7-bit content have, before the rows of text and in the middle of HTML.

#include "DocumentWords.h"
#include "support/SampleMails.h"
#include "tarnmail/TarnmailFixture.h"

namespace tarn::test {
namespace {

class Marks : public TarnmailTest {
 protected:
  // A mail of that type and encoding; its name.
  std::string encoded(const std::string& type, const std::string& encoding) {
    return mail(kSampleFields + "Content-Type: " + type +
                    "\r\nContent-Transfer-Encoding: " + encoding + "\r\n\r\nsome +/v more\r\n",
                encoding + ".eml");
  }

  std::string document(const std::string& file) {
    return output({"document", "--in-memory", "-o", "-", file});
  }

  std::string wordsOf(const std::string& file) {
    directory_.write("asked.pdf", output({"pages", "--pdf", "-o", "-", file}));
    ProgramCall call;
    call.program = "/usr/bin/pdftotext";
    call.arguments = {"-raw", "-enc", "UTF-8", "asked.pdf", "-"};
    call.workingDirectory = directory_.path();
    return Words(RunProgram(call).out);
  }

  std::string pageOf(const std::string& file) {
    EXPECT_EQ(output({"pages", "-o", "out", file}), "");
    return ReadWholeFile(directory_.path() / "out/page-0001.png");
  }

  static size_t Count(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
      ++count;
    }
    return count;
  }
};

TEST_F(Marks, Of7BitContentAreNotShown) {
  for (const char* type : {"text/plain", "text/html"}) {
    SCOPED_TRACE(type);
    const std::string marked = encoded(type, "7bit");
    const std::string unmarked = encoded(type, "8bit");
    ASSERT_EQ(Count(document(marked), "+/v"), 2u);
    ASSERT_EQ(Count(document(unmarked), "+/v"), 1u);
    EXPECT_EQ(wordsOf(marked),
              "From: Ann <ann@example.com> To: Bob <bob@example.com> "
              "Sent: Sat, 21 Nov 2026 10:00:00 +0000 Subject: Hello some +/v more");
    EXPECT_TRUE(pageOf(marked) == pageOf(unmarked));
  }
}

}  // namespace
}  // namespace tarn::test
