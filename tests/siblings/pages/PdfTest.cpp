// tarnmail pages --pdf, by the built helpers; poppler's programs read what comes.

#include <gtest/gtest.h>

#include "PagesFixture.h"
#include "siblings/PdfLinks.h"
#include "support/SampleMails.h"
#include "tarnmail/TarnmailFixture.h"

namespace tarn::test {
namespace {

using Words = std::vector<std::string>;

class Pdf : public TarnmailTest {
 protected:
  std::string make(Words words) {
    words.insert(words.begin(), {"pages", "--pdf", "-o", "-"});
    const std::string bytes = output(words);
    EXPECT_TRUE(bytes.starts_with("%PDF-"));
    return bytes;
  }

  // What another program says of the PDF.
  std::string ask(const std::string& program, const std::string& pdf, Words words) {
    directory_.write("asked.pdf", pdf);
    ProgramCall call;
    call.program = "/usr/bin/" + program;
    call.arguments = std::move(words);
    call.environment = {{"TZ", "UTC"}, {"LC_ALL", "C"}};
    call.workingDirectory = directory_.path();
    const ProgramResult result = RunProgram(call);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return result.out;
  }

  std::string text(const std::string& pdf) {
    return ask("pdftotext", pdf, {"-enc", "UTF-8", "asked.pdf", "-"});
  }
  std::string properties(const std::string& pdf) { return ask("pdfinfo", pdf, {"asked.pdf"}); }
};

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST_F(Pdf, HasTheTextOfTheMail) {
  const std::string plain = text(make({Example("plain-7bit.eml")}));
  EXPECT_TRUE(Contains(plain, "Ada Brown <ada@example.com>")) << plain;
  EXPECT_TRUE(Contains(plain, "shall we have lunch at the harbour at noon?")) << plain;
  const std::string japanese = text(make({Example("japanese-iso2022jp.eml")}));
  EXPECT_TRUE(Contains(japanese, "\u4F1A\u8B70\u306E\u8CC7\u6599\u306B\u3064\u3044\u3066"));
  const std::string html = text(make({Example("html-inline-image.eml")}));
  EXPECT_TRUE(Contains(html, "Orders in the first quarter")) << html;
  const std::string rtf = text(make({Example("mailbox.pst"), "-m", "2"}));
  EXPECT_TRUE(Contains(rtf, "\u041F\u0440\u0438\u0433\u043B\u0430\u0448\u0435\u043D\u0438\u0435"))
      << rtf;
}

TEST_F(Pdf, SaysWhoseMailItIs) {
  const std::string html = properties(make({Example("html-inline-image.eml")}));
  EXPECT_TRUE(Contains(html, "Title:           Orders in the first quarter\n")) << html;
  EXPECT_TRUE(Contains(html, "Author:          Clara Weber <clara.weber@example.com>\n")) << html;
  EXPECT_TRUE(Contains(html, "CreationDate:    Thu Mar 12 08:24:51 2026 UTC\n")) << html;
  const std::string rtf = properties(make({Example("mailbox.pst"), "-m", "2"}));
  EXPECT_TRUE(Contains(rtf, "Title:           \u041F\u0440\u0438")) << rtf;
  EXPECT_TRUE(Contains(rtf, "CreationDate:    Thu Apr  9 02:00:00 2026 UTC\n")) << rtf;
}

TEST_F(Pdf, IsTheSameEachTime) {
  for (const Words& words :
       {Words{Example("plain-7bit.eml")}, Words{Example("html-inline-image.eml")},
        Words{Example("mailbox.pst"), "-m", "2"}}) {
    EXPECT_EQ(make(words), make(words)) << words[0];
  }
}

TEST_F(Pdf, HasThePaperAndThePages) {
  std::string long_ = kSampleFields + "\r\n";
  for (int i = 1; i <= 200; ++i) long_ += "line " + std::to_string(i) + ".\r\n";
  const std::string file = mail(long_);
  const std::string all = make({file, "--paper", "letter"});
  EXPECT_TRUE(Contains(properties(all), "Page size:       612 x 792 pts (letter)"));
  EXPECT_TRUE(Contains(text(all), "line 1."));
  EXPECT_TRUE(Contains(text(all), "line 200."));
  const std::string second = make({file, "--paper", "letter", "--pages", "2"});
  EXPECT_TRUE(Contains(properties(second), "Pages:           1\n"));
  EXPECT_FALSE(Contains(text(second), "line 1."));
  EXPECT_FALSE(Contains(text(second), "line 200."));
}

TEST_F(Pdf, GoesToAFileOrIntoAFolder) {
  const std::string file = Example("plain-7bit.eml");
  const std::string bytes = make({file});
  EXPECT_EQ(output({"pages", file, "--pdf", "-o", "mail.pdf"}), "");
  EXPECT_EQ(ReadWholeFile(directory_.path() / "mail.pdf"), bytes);
  std::filesystem::create_directory(directory_.path() / "folder");
  EXPECT_EQ(output({"pages", file, "--pdf", "-o", "folder"}), "");
  EXPECT_EQ(ReadWholeFile(directory_.path() / "folder/plain-7bit.pdf"), bytes);
  standardInput_ = kPlainMail;
  EXPECT_EQ(output({"pages", "-", "--pdf", "-o", "folder"}), "");
  EXPECT_EQ(directory_.listing(), "folder folder/mail.pdf folder/plain-7bit.pdf mail.pdf");
  EXPECT_EQ(output({"pages", Example("mailbox.pst"), "-m", "2", "--pdf", "-o", "folder"}), "");
  EXPECT_TRUE(std::filesystem::exists(directory_.path() / "folder/mailbox-2.pdf"));
}

TEST_F(Pdf, HasLinksOnTheirWords) {
  const auto links = [this](const std::string& bytes) {
    return WordsOfLinks(make({mail(bytes, "links.any")}));
  };
  const Words wanted = {"http://a.example/ > http://a.example/"};
  EXPECT_EQ(links(kSampleFields + "\r\nread http://a.example/ now\r\n"), wanted);
  EXPECT_EQ(links(RtfMail(R"({\rtf1\ansi{\fonttbl{\f0 Arial;}}\f0 see )"
                          R"({\field{\*\fldinst HYPERLINK "http://a.example/"})"
                          R"({\fldrslt http://a.example/}} now\par})")),
            wanted);
  // Before a preview that is hidden.
  EXPECT_EQ(links(kSampleFields +
                  "Content-Type: text/html\r\n\r\n<a href=' http://a.example/ '>http://a.example/"
                  "</a><div style='height:0;overflow:hidden'>in short: "
                  "<a href='http://b.example/'>news</a></div><p>now\r\n"),
            wanted);
}

// Whichever way the mail comes in and the PDF goes out.
TEST_F(Pdf, IsTheSameByPipeAndByFile) {
  const std::string rtf = RtfMail(R"({\rtf1\ansi{\fonttbl{\f0 Arial;}}\f0 Hi\par})");
  for (const std::string& bytes :
       {kPlainMail, ReadWholeFile(Example("html-inline-image.eml")), rtf}) {
    const std::string file = mail(bytes, "mail.any");
    standardInput_.reset();
    const std::string piped = make({file});
    EXPECT_EQ(output({"pages", "--pdf", "-o", "file.pdf", file}), "");
    EXPECT_TRUE(ReadWholeFile(directory_.path() / "file.pdf") == piped);
    standardInput_ = bytes;
    EXPECT_TRUE(make({"-"}) == piped);
    EXPECT_EQ(output({"pages", "--pdf", "-o", "file.pdf", "-"}), "");
    EXPECT_TRUE(ReadWholeFile(directory_.path() / "file.pdf") == piped);
  }
}

TEST_F(Pdf, IsMadeWithoutWallsToo) {
  const std::string file = Example("plain-7bit.eml");
  EXPECT_EQ(make({file, "--no-sandbox"}), make({file}));
}

}  // namespace
}  // namespace tarn::test
