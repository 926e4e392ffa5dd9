// What a document can make the programs reach for, as the system sees it.

#include <cstdlib>
#include <sstream>

#include "PagesFixture.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

class PagesReach : public PagesFixture {
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

  static bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
  }

  // The trace has the mail and its helper, and nothing of what the mail names.
  static void expectHarmless(const std::string& reached, const std::string& file,
                             const std::string& helper, const std::vector<std::string>& named) {
    std::istringstream trace(reached);
    bool hasMail = false;
    bool hasHelper = false;
    for (std::string line; std::getline(trace, line);) {
      if (Contains(line, "execve(")) {
        hasHelper = hasHelper || Contains(line, helper);
        continue;
      }
      hasMail = hasMail || Contains(line, file);
      for (const std::string& part : named) EXPECT_FALSE(Contains(line, part)) << line;
    }
    EXPECT_TRUE(hasMail);
    EXPECT_TRUE(hasHelper);
  }
};

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
  expectHarmless(reachedFor(file), file, "tarnmail-pages", {"/etc/passwd", "secret", "AF_INET"});
}

TEST_F(PagesReach, DoesNotGoToWhatRtfNames) {
  directory_.write("secret.html", "secret");
  std::string body;
  for (const std::string& target : {Utf8(directory_.path() / "secret.html"),
                                    "file://" + Utf8(directory_.path() / "secret.html"),
                                    std::string("http://127.0.0.1:9/a.png")}) {
    for (const char* instruction : {"INCLUDEPICTURE", "INCLUDETEXT", "LINK htmlfile", "RD"}) {
      body += std::string(R"({\field\flddirty{\*\fldinst )") + instruction + " \"" + target +
              R"(" \\d}{\fldrslt x}})";
    }
    body +=
        R"({\*\template )" + target + R"(}{\filetbl{\file\fid1 )" + target + R"(}}\subdocument1 )";
    body +=
        R"({\object\objautlink\objupdate\objw900\objh900{\*\objclass htmlfile}{\*\objdata 0105})" +
        std::string(R"({\result x}})");
  }
  const std::string file =
      mail(RtfMail(R"({\rtf1\ansi{\fonttbl{\f0 Arial;}}\f0 )" + body + R"(\par Hi})"), "mail.msg");
  expectHarmless(reachedFor(file), file, "tarnmail-office", {"secret", "AF_INET"});
}

}  // namespace
}  // namespace tarn::test
