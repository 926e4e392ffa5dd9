// Mails that consist of structure end at its limits, and others are read whole.
#include "archive/mail/StructureWatch.h"

#include "MailReading.h"

namespace tarn::archive {
namespace {

using mail::StructureLimits;
using mail::StructureWatch;
using test::OpenedMail;

// What the watch lets pass of a text that comes in pieces of each size.
std::string Passed(const StructureLimits& limits, const std::string& text, size_t piece,
                   std::string* reason = nullptr) {
  StructureWatch watch(limits);
  std::string passed;
  for (size_t at = 0; at < text.size(); at += piece) {
    const std::string bytes = text.substr(at, piece);
    const size_t count = watch.allow(bytes);
    passed += bytes.substr(0, count);
    if (count < bytes.size()) break;
  }
  if (reason != nullptr) *reason = watch.reason();
  return passed;
}

std::string Repeated(const std::string& text, size_t count) {
  std::string all;
  all.reserve(text.size() * count);
  for (size_t i = 0; i < count; ++i) all += text;
  return all;
}

TEST(StructureWatchTest, LetsAMailPassWhateverItsPieces) {
  const std::string mail =
      "Subject: x\nContent-Type: multipart/mixed;\n boundary=\"a b\"\n\npreamble\n--a b\n\n--c\n"
      "--a b  \nContent-Type: message/rfc822\n\nSubject: in\n\nbegin here\n--a b--\nepilogue";
  for (size_t piece = 1; piece <= mail.size(); ++piece) {
    std::string reason;
    EXPECT_EQ(Passed({}, mail, piece, &reason), mail) << piece;
    EXPECT_EQ(reason, "");
  }
}

TEST(StructureWatchTest, EndsAtEachLimit) {
  const std::string type = "Content-Type: multipart/mixed; boundary=b\n\n";
  struct Row {
    StructureLimits limits;
    std::string text;
    size_t passes;
    const char* reason;
  };
  StructureLimits parts;
  parts.parts = 2;
  StructureLimits bytes;
  bytes.headerBytes = 8;
  StructureLimits lines;
  lines.headerLines = 2;
  StructureLimits items;
  items.listItems = 2;
  StructureLimits parameters;
  parameters.parameters = 1;
  StructureLimits colons;
  colons.colons = 2;
  StructureLimits outside;
  outside.outsideBytes = 4;
  const std::vector<Row> rows{
      {parts, type + "--b\n\n--b\n\n--b\n\n", type.size() + 14, "2 parts"},
      {bytes, "A: b\nC: d\n\nbody", 5, "8 bytes of headers"},
      {lines, "A: b\nC: d\nE: f\n\nbody", 10, "2 lines of headers"},
      {items, "A: b,c\nC: d;e\nE: f,g\n\n", 14, "2 items in lists of headers"},
      {parameters, "X: a; b; c\nContent-Type: a/b;\n c=d;\n e=f\n\n", 30, "1 parameters of a part"},
      {colons, "A: b:\nTo: c:d:\n\n", 6, "2 colons in a header"},
      {outside, type + "pre\nam\n", type.size() + 4, "4 bytes outside of its parts"},
      {outside, type + "--b\n\nlong body\n--b--\nepilogue\n", type.size() + 21,
       "4 bytes outside of its parts"},
  };
  for (const Row& row : rows) {
    std::string reason;
    EXPECT_EQ(Passed(row.limits, row.text, row.text.size(), &reason),
              row.text.substr(0, row.passes));
    EXPECT_EQ(reason,
              "the mail has more than " + std::string(row.reason) + "; what follows is not read");
  }
}

TEST(StructureWatchTest, LooksForNoPartsWhereThereAreNone) {
  StructureLimits limits;
  limits.parts = 1;
  limits.outsideBytes = 1;
  const std::string text = "Content-Type: text/plain; boundary=b\n\n--b\n\n--b\n\n--b--\nmore\n";
  EXPECT_EQ(Passed(limits, text, text.size()), text);
  limits.headerBytes = 100;
  const std::string encoded =
      "Content-Type: message/rfc822\nContent-Transfer-Encoding: base64\n\n" + Repeated("a", 200);
  EXPECT_EQ(Passed(limits, encoded, encoded.size()), encoded);
}

TEST(StructureWatchTest, FindsTheBoundaryHoweverItIsWritten) {
  StructureLimits limits;
  limits.parts = 1;
  for (const char* parameter : {
           "; boundary=\"b c\"",
           ";\n BOUNDARY=\"b c\"; x=y",
           "; boundary=\"b\\ c\"",
           "; boundary*=us-ascii''b%20c",
           "; boundary*0=\"b \"; boundary*1=c",
           "; x=\"boundary\"; boundary=\"b c\"",
           "; boundary = \"b c\"",
       }) {
    std::string reason;
    Passed(limits,
           "Content-Type: multipart/mixed" + std::string(parameter) + "\n\n--b c\n\n--b c\n\n",
           1000, &reason);
    EXPECT_NE(reason, "") << parameter;
  }
}

TEST(StructureWatchTest, CountsHeadersOfMailsWithinMails) {
  StructureLimits limits;
  limits.headerLines = 4;
  std::string reason;
  Passed(limits, "Content-Type: message/rfc822\n\nA: b\nC: d\nE: f\n\n", 1000, &reason);
  EXPECT_NE(reason, "");
  Passed(limits, "Content-Type: multipart/digest; boundary=b\n\n--b\n\nA: b\nC: d\n\n", 1000,
         &reason);
  EXPECT_NE(reason, "");
}

TEST(StructureWatchTest, GivesWhatComesBeforeTheLimitAndSaysWhy) {
  OpenedMail parts("Subject: x\nContent-Type: multipart/mixed; boundary=b\n\n" +
                   Repeated("--b\n\n\n", 1000000));
  EXPECT_EQ(parts.fields().subject, "x");
  ASSERT_EQ(parts->troubles().size(), 1u);
  EXPECT_EQ(parts->troubles()[0].reason,
            "the mail has more than 10000 parts; what follows is not read");
  OpenedMail headers("Subject: x\n" + Repeated("a: b\n", 1000000) + "\nbody");
  EXPECT_EQ(headers.fields().subject, "x");
  EXPECT_EQ(headers->troubles()[0].kind, TroubleKind::TooLarge);
  OpenedMail groups("Subject: x\nTo: " + Repeated("a:", 1000000) + "\n\nbody");
  EXPECT_EQ(groups.fields().subject, "x");
  EXPECT_EQ(groups->troubles()[0].kind, TroubleKind::TooLarge);
}

TEST(StructureWatchTest, SurvivesPartsWithinParts) {
  std::string text = "Subject: x\nContent-Type: multipart/mixed; boundary=x0\n\n";
  for (int i = 0; i < 9000; ++i) {
    text += "--x" + std::to_string(i) + "\nContent-Type: multipart/mixed; boundary=x" +
            std::to_string(i + 1) + "\n\n";
  }
  OpenedMail mail(text);
  EXPECT_EQ(mail.fields().subject, "x");
  ASSERT_FALSE(mail->troubles().empty());
  EXPECT_EQ(mail->troubles()[0].kind, TroubleKind::TooDeep);
}

}  // namespace
}  // namespace tarn::archive
