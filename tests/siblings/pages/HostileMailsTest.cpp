// Mails that want more than to be shown, through the whole chain and behind the walls: each comes
// to an end, with its words on a page or with one line that says why not.

#include "DocumentWords.h"
#include "PagesFixture.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

class HostileMails : public PagesFixture {
 protected:
  std::string htmlMail(const std::string& html) {
    return mail(kSampleFields + "Content-Type: text/html\r\n\r\n<html><body>" + html);
  }

  std::string rtfMail(const std::string& body) {
    return mail(RtfMail(R"({\rtf1\ansi{\fonttbl{\f0 Arial;}}\f0 )" + body + R"(\par shown})"),
                "mail.msg");
  }

  std::string wordsOf(const std::string& file) {
    directory_.write("asked.pdf", output({"pages", "--pdf", "-o", "-", file}));
    ProgramCall call;
    call.program = "/usr/bin/pdftotext";
    call.arguments = {"-raw", "-enc", "UTF-8", "asked.pdf", "-"};
    call.workingDirectory = directory_.path();
    return Words(RunProgram(call).out);
  }

  void expectShown(const std::string& file) {
    const std::string words = wordsOf(file);
    EXPECT_TRUE(words.ends_with("shown")) << words;
    EXPECT_EQ(output({"pages", "-o", "out", file}), "");
  }

  static std::string repeated(std::string_view text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
  }
};

// 100,000 by 100,000 pixels, and none of them.
constexpr std::string_view kHugePng =
    "iVBORw0KGgoAAAANSUhEUgABhqAAAYagCAIAAAAnMJyfAAAAAElFTkSuQmCC";

TEST_F(HostileMails, NestTables) {
  expectShown(htmlMail(repeated("<table>\r\n<tr><td>", 100'000) + "shown"));
}

TEST_F(HostileMails, HaveScriptsAndFrames) {
  expectShown(
      htmlMail("<script>for (;;) document.write('never')</script>"
               "<body onload='for (;;);'><iframe src='file:///etc/passwd'></iframe>"
               "<iframe srcdoc='<p>never</p>'></iframe><p>shown"));
}

TEST_F(HostileMails, HaveHugePictures) {
  expectShown(htmlMail("<img src='data:image/png;base64," + std::string(kHugePng) + "'><p>shown"));
  expectShown(rtfMail(R"({\pict\pngblip 89504e470d0a1a0a0000000d49484452000186a0000186a00802000000)"
                      R"(27309c9f0000000049454e44ae426082})"));
}

// The filter itself refuses what has far too many.
TEST_F(HostileMails, HaveManyFonts) {
  const auto fonts = [](int count) {
    std::string table = R"({\rtf1\ansi{\fonttbl)";
    for (int i = 0; i < count; ++i) {
      const std::string number = std::to_string(i);
      table += R"({\f)" + number + " Font" + number + ";}";
    }
    return RtfMail(table + R"(}\f0 shown})");
  };
  expectShown(mail(fonts(10'000), "mail.msg"));
  EXPECT_EQ(failure(1, {"pages", "-o", "none", mail(fonts(100'000), "many.msg")}),
            "many.msg: out of memory, or the document could not be put together (-1)");
}

TEST_F(HostileMails, HaveFieldsThatNameThemselves) {
  expectShown(rtfMail(R"({\*\bkmkstart a}{\field\flddirty{\*\fldinst REF b}{\fldrslt x}})"
                      R"({\*\bkmkend a}{\*\bkmkstart b}{\field\flddirty{\*\fldinst REF a})"
                      R"({\fldrslt y}}{\*\bkmkend b})"));
}

TEST_F(HostileMails, HaveFieldsInFields) {
  const std::string file = rtfMail(
      repeated(R"({\field{\*\fldinst IF 1 = 1 {\field{\*\fldinst REF a}}}{\fldrslt )", 100'000));
  EXPECT_EQ(failure(1, {"pages", "-o", "out", file}),
            "mail.msg: the groups of the RTF nest too deep");
  EXPECT_EQ(directory_.listing(), "mail.msg");
}

}  // namespace
}  // namespace tarn::test
