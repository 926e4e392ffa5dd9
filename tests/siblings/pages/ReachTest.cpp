// What a document can make the programs reach for, as the system sees it.

#include <cstdlib>
#include <sstream>

#include "support/SampleMails.h"
#include "tarnmail/TarnmailFixture.h"

namespace tarn::test {
namespace {

class PagesReach : public TarnmailTest {
 protected:
  // The files that tarnmail and its helper open, the programs that they start and the addresses
  // that they connect to while they make pages of the file, a line each.
  std::string reachedFor(const std::string& file) {
    ProgramCall call;
    call.program = "/usr/bin/strace";
    call.arguments = {
        "-f",  "-o",          "trace", "-e",           "trace=execve,open,openat,openat2,connect",
        "--",  TARNMAIL_PATH, "pages", "--no-sandbox", "-o",
        "out", file};
    call.environment = environment_;
    // Leaks cannot be looked for in a program that is traced.
    const char* const options = std::getenv("ASAN_OPTIONS");
    call.environment.emplace_back(
        "ASAN_OPTIONS", (options == nullptr ? "" : std::string(options) + ":") + "detect_leaks=0");
    call.workingDirectory = directory_.path();
    const ProgramResult result = RunProgram(call);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return ReadWholeFile(directory_.path() / "trace");
  }
};

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST_F(PagesReach, DoesNotGoToWhatADocumentNames) {
  directory_.write("secret.html", "p { color: red }");
  const std::string secret = "file://" + Utf8(directory_.path() / "secret.html");
  const std::string file = mail(
      kSampleFields +
      "Content-Type: text/html\r\n\r\n<html><head><style>@import url(http://127.0.0.1:9/a.css);\r\n"
      "@import url(" +
      secret + ");</style>\r\n<link rel=stylesheet href=\"" + secret +
      "\">\r\n<link rel=stylesheet href=\"http://[::1]:9/b.css\"></head><body>\r\n"
      "<img src=\"http://127.0.0.1:9/c.png\"><img src=\"" +
      secret + "\"><img src=\"../secret.html\">\r\n<iframe src=\"file:///etc/passwd\"></iframe>" +
      "<iframe src=\"" + secret + "\"></iframe><p>Hi</p></body></html>");
  std::istringstream trace(reachedFor(file));
  bool hasMail = false;
  bool hasHelper = false;
  for (std::string line; std::getline(trace, line);) {
    if (Contains(line, "execve(")) {
      hasHelper = hasHelper || Contains(line, "tarnmail-pages");
      continue;
    }
    hasMail = hasMail || Contains(line, file);
    for (const char* part : {"/etc/passwd", "secret", "AF_INET"}) {
      EXPECT_FALSE(Contains(line, part)) << line;
    }
  }
  EXPECT_TRUE(hasMail);
  EXPECT_TRUE(hasHelper);
}

}  // namespace
}  // namespace tarn::test
