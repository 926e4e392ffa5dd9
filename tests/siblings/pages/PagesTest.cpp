// tarnmail pages: PNG files of mails, by the built helpers.

#include <algorithm>

#include "console/Json.h"
#include "support/SampleMails.h"
#include "tarnmail/TarnmailFixture.h"
#include "tarnmail/pages/PngReading.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

class Pages : public TarnmailTest {
 protected:
  // Runs tarnmail pages with the words and "-o out".
  void make(Words words, const std::string& place = "out") {
    words.insert(words.begin(), {"pages", "-o", place});
    EXPECT_EQ(output(words), "");
  }

  PagePixels page(int number, const std::string& place = "out") const {
    const std::string digits = std::to_string(number);
    return ReadPage(
        pageBytes("page-" + std::string(4 - digits.size(), '0') + digits + ".png", place));
  }

  std::string pageBytes(const std::string& name, const std::string& place = "out") const {
    return ReadWholeFile(directory_.path() / place / name);
  }

  std::string longMail() {
    std::string text = kSampleFields + "\r\n";
    for (int i = 0; i < 200; ++i) text += "line\r\n";
    return mail(text);
  }
};

bool IsDark(int red, int green, int blue) { return red + green + blue < 3 * 128; }

// The image has red, green and blue bars, which nothing else on the page has.
TEST_F(Pages, ShowAnInlineImage) {
  const auto isGreen = [](int red, int green, int blue) {
    return green > red + 60 && green > blue + 60;
  };
  const auto isRed = [](int red, int green, int blue) {
    return red > green + 60 && red > blue + 60;
  };
  std::string byMemory;
  for (const char* route : {"--in-memory", "--temp-files"}) {
    make({Example("html-inline-image.eml"), route});
    EXPECT_GE(CountPixels(page(1), isGreen), 50u) << route;
    EXPECT_GE(CountPixels(page(1), isRed), 50u) << route;
    const std::string bytes = pageBytes("page-0001.png");
    EXPECT_EQ(bytes, byMemory.empty() ? bytes : byMemory);
    byMemory = bytes;
  }
}

TEST_F(Pages, AreOfThePaperAndTheResolution) {
  const std::string file = Example("plain-7bit.eml");
  const auto expectSize = [&](const Words& words, double width, double height) {
    Words all = words;
    all.push_back(file);
    make(all);
    EXPECT_NEAR(static_cast<double>(page(1).width), width, 1);
    EXPECT_NEAR(static_cast<double>(page(1).height), height, 1);
  };
  expectSize({"--paper", "letter"}, 816, 1056);
  expectSize({"--paper", "a4", "--dpi", "192"}, 1587, 2245);
  expectSize({"--paper", "letter", "--dpi", "10"}, 85, 110);
}

TEST_F(Pages, AreThoseAskedFor) {
  const std::string file = longMail();
  make({file}, "all");
  const std::string all =
      "all all/page-0001.png all/page-0002.png all/page-0003.png all/page-0004.png";
  const std::string listing = directory_.listing();
  ASSERT_TRUE(listing.starts_with(all)) << listing;
  make({file, "--pages", "2"}, "two");
  make({file, "--pages", "2-3"}, "range");
  make({file, "--pages", "4-"}, "rest");
  make({file, "--pages", "3-99"}, "beyond");
  EXPECT_TRUE(fs::exists(directory_.path() / "two/page-0002.png"));
  EXPECT_FALSE(fs::exists(directory_.path() / "two/page-0001.png"));
  EXPECT_FALSE(fs::exists(directory_.path() / "two/page-0003.png"));
  EXPECT_FALSE(fs::exists(directory_.path() / "range/page-0001.png"));
  EXPECT_FALSE(fs::exists(directory_.path() / "range/page-0004.png"));
  EXPECT_EQ(pageBytes("page-0002.png", "two"), pageBytes("page-0002.png", "all"));
  EXPECT_EQ(pageBytes("page-0003.png", "range"), pageBytes("page-0003.png", "all"));
  EXPECT_EQ(pageBytes("page-0004.png", "rest"), pageBytes("page-0004.png", "all"));
  EXPECT_EQ(pageBytes("page-0003.png", "beyond"), pageBytes("page-0003.png", "all"));
}

TEST_F(Pages, BeyondTheLastAreRefused) {
  const std::string file = Example("plain-7bit.eml");
  const std::string line = file + ": has 1 page; there is no page 2";
  EXPECT_EQ(failure(2, {"pages", file, "-o", "out", "--pages", "2-"}), line);
  EXPECT_EQ(failure(2, {"pages", file, "-o", "-", "--pdf", "--pages", "2"}), line);
  EXPECT_EQ(directory_.listing(), "");
}

TEST_F(Pages, ComeFromAPipe) {
  standardInput_ = kHtmlMail;
  make({"-"});
  EXPECT_GE(CountPixels(page(1), IsDark), 300u);
}

TEST_F(Pages, AreTheSameEachTime) {
  make({Example("html-inline-image.eml")}, "one");
  make({Example("html-inline-image.eml")}, "two");
  EXPECT_EQ(pageBytes("page-0001.png", "one"), pageBytes("page-0001.png", "two"));
}

TEST_F(Pages, AreInTheLanguageOfTheHost) {
  make({"--language", "1041", Example("msg/text.msg")}, "japanese");
  make({Example("msg/text.msg")}, "english");
  EXPECT_NE(pageBytes("page-0001.png", "japanese"), pageBytes("page-0001.png", "english"));
}

TEST_F(Pages, HaveTheImagesOfHtmlThatIsTakenAsText) {
  const auto isBlue = [](int red, int, int blue) { return blue > red + 60; };
  const std::string file = Example("html-inline-image.eml");
  make({file}, "html");
  make({"--text", file}, "text");
  EXPECT_GT(CountPixels(page(1, "html"), isBlue), 100u);
  EXPECT_EQ(CountPixels(page(1, "text"), isBlue), CountPixels(page(1, "html"), isBlue));
}

TEST_F(Pages, OfARefusedMailLeaveNothing) {
  EXPECT_EQ(failure(1, {"pages", mail("Hello, world"), "-o", "out"}),
            "mail.eml: not a mail file: no From, Date, To, Cc or Bcc line in its header (-9)");
  EXPECT_EQ(directory_.listing(), "mail.eml");
}

TEST_F(Pages, AreCountedByInfo) {
  using nlohmann::json;
  EXPECT_EQ(host::ParsedJson<json>(
                output({"info", "--json", "--pages", Example("plain-7bit.eml")}))["pages"],
            1);
  const json answer = host::ParsedJson<json>(output({"info", "--json", "--pages", longMail()}));
  EXPECT_GE(answer["pages"], 3);
  EXPECT_EQ(answer["document"], "text");
  EXPECT_EQ(output({"info", "--pages", Example("msg/html-image.msg")}).find("unknown"),
            std::string::npos);
  standardInput_ = kHtmlMail;
  EXPECT_EQ(host::ParsedJson<json>(output({"info", "--json", "--pages", "-"}))["pages"], 1);
  standardInput_.reset();
  // A page of A4 has 56 lines, one of letter 52.
  std::string lines = kSampleFields + "\r\n";
  for (int i = 0; i < 49; ++i) lines += "line\r\n";
  const std::string fits = mail(lines, "fits.eml");
  const int onLetter = host::ParsedJson<json>(
      output({"info", "--json", "--pages", "--paper", "letter", fits}))["pages"];
  EXPECT_EQ(onLetter, 2);
  EXPECT_EQ(
      host::ParsedJson<json>(output({"info", "--json", "--pages", "--paper", "a4", fits}))["pages"],
      1);
  // What cannot be laid out is told all the same.
  std::string paragraphs = kSampleFields + "Content-Type: text/html\r\n\r\n<html><body>";
  for (int i = 0; i < 500000; ++i) paragraphs += "<p>";
  const std::string tooMany = mail(paragraphs);
  EXPECT_EQ(host::ParsedJson<json>(output({"info", "--json", "--pages", tooMany}))["whyNoPages"],
            "the document has too many elements to be laid out");
  EXPECT_NE(
      output({"info", "--pages", tooMany}).find("Pages:       unknown: the document has too many"),
      std::string::npos);
  // Only when it is asked.
  EXPECT_EQ(host::ParsedJson<json>(output({"info", "--json", Example("plain-7bit.eml")}))["pages"],
            nullptr);
}

}  // namespace
}  // namespace tarn::test
