// What a person reads of mails whose pieces are in different forms.
#include "MailReading.h"
#include "archive/text/BodyText.h"

namespace tarn::archive {
namespace {

using test::OpenedMail;

// Of `type`; its boundary tells it from parts of another type around it, or of another depth.
std::string Multipart(const std::string& type, const std::vector<std::string>& parts,
                      const std::string& depth = "") {
  const std::string boundary = "b-" + type + depth;
  std::string text = "Content-Type: multipart/" + type + "; boundary=" + boundary + "\n\n";
  for (const std::string& part : parts) text += "--" + boundary + "\n" + part + "\n";
  return text + "--" + boundary + "--\n";
}

std::string Plain(const std::string& text) { return "Content-Type: text/plain\n\n" + text; }
std::string Html(const std::string& text) { return "Content-Type: text/html\n\n" + text; }

// The words of it, each after a blank.
std::string Read(const std::string& mail) {
  OpenedMail opened(mail);
  std::string words;
  bool isInWord = false;
  for (const char letter : BestText(opened->bodies(), 80)) {
    const bool isBlank = letter == ' ' || letter == '\n';
    if (!isBlank && !isInWord) words += ' ';
    if (!isBlank) words += letter;
    isInWord = !isBlank;
  }
  return words;
}

TEST(MixedBodyTest, ReadsHtmlBeforeAPlainFooter) {
  const std::string mail =
      Multipart("mixed", {Html("<html><body><p>The whole message</p></body></html>"),
                          Plain("____\nlist <mailing> list")});
  EXPECT_EQ(Read(mail), " The whole message ____ list <mailing> list");
  OpenedMail opened(mail);
  EXPECT_FALSE(opened->bodies().text.has_value());
  EXPECT_TRUE(opened->bodies().html.has_value());
}

TEST(MixedBodyTest, ReadsHtmlAfterAnAttachment) {
  EXPECT_EQ(Read(Multipart("mixed", {Plain("one"), "Content-Type: image/png; name=x.png\n\nx",
                                     Html("<p>two</p>")})),
            " one two");
}

TEST(MixedBodyTest, ReadsHtmlBetweenTexts) {
  EXPECT_EQ(Read(Multipart("mixed", {Plain("one"), Html("<p>two"), Plain("three")})),
            " one two three");
}

TEST(MixedBodyTest, ReadsHtmlAfterAlternatives) {
  EXPECT_EQ(Read(Multipart("mixed", {Multipart("alternative", {Plain("one"), Html("<p>one")}),
                                     Html("<p>two")})),
            " one two");
}

TEST(MixedBodyTest, ReadsHtmlWhoseAlternativeIsEmpty) {
  EXPECT_EQ(Read(Multipart(
                "mixed", {Multipart("alternative", {Plain(" \n"), Html("<p>one")}), Plain("two")})),
            " one two");
}

TEST(MixedBodyTest, ReadsThePlainAlternativeWithItsFooter) {
  const std::string mail = Multipart(
      "mixed", {Multipart("alternative", {Plain("plain"), Html("<p>html")}), Plain("footer")});
  EXPECT_EQ(Read(mail), " plain footer");
  EXPECT_EQ(*OpenedMail(mail)->bodies().text, "plain\nfooter");
}

// What an alternative has beside its HTML belongs to it, at its place.
TEST(MixedBodyTest, ReadsTheTextBesideTheHtmlOfAnAlternative) {
  const std::string mail = Multipart(
      "alternative",
      {Plain("plain"), Multipart("mixed", {Html("<p>one"), Plain("foot & er"), Html("<p>two")})});
  OpenedMail opened(mail);
  EXPECT_EQ(*opened->bodies().text, "plain\nfoot & er");
  EXPECT_EQ(opened->bodies().html->bytes, "<p>one\n<pre>foot &#38; er</pre>\n<p>two");
  EXPECT_EQ(opened->bodies().html->charset, "utf-8");
}

TEST(MixedBodyTest, ReadsTheHtmlOfAnAlternativeWhoseOnlyTextIsBesideIt) {
  const std::string mail =
      Multipart("alternative", {Multipart("mixed", {Html("<p>one"), Plain("footer")})});
  EXPECT_EQ(Read(mail), " one footer");
  EXPECT_FALSE(OpenedMail(mail)->bodies().text.has_value());
}

TEST(MixedBodyTest, KeepsTheAlternativesOfAnAlternativeApart) {
  const std::string mail = Multipart(
      "alternative",
      {Plain("plain"),
       Multipart("mixed", {Multipart("alternative", {Plain("inner"), Html("<p>html")}, "2"),
                           Plain("footer")})});
  EXPECT_EQ(OpenedMail(mail)->bodies().html->bytes, "<p>html\n<pre>footer</pre>\n");
}

TEST(MixedBodyTest, LeavesHtmlItsBytesWhereTheTextBesideItIsBlank) {
  const std::string mail = Multipart(
      "alternative",
      {Plain("plain"), Multipart("mixed", {"Content-Type: text/html; charset=windows-1252\n\n\xE4",
                                           Plain(" \n")})});
  EXPECT_EQ(OpenedMail(mail)->bodies().html->bytes, "\xE4");
}

}  // namespace
}  // namespace tarn::archive
