// Mails of an mbox: where they begin and end in each dialect, and what the mbox has added to them.
#include "MailReading.h"
#include "ReaderWalk.h"

namespace tarn::archive {
namespace {

using test::EntriesOf;
using test::OriginalOf;

using Texts = std::vector<std::string>;

class MboxTest : public ::testing::Test {
 protected:
  std::unique_ptr<ItemReader> open(const std::string& bytes) {
    auto reader = OpenMbox(directory_.write("mails.mbox", bytes));
    EXPECT_TRUE(reader.ok());
    return reader ? std::move(*reader) : nullptr;
  }

  // The bytes of each mail.
  Texts mailsOf(const std::string& bytes) {
    Texts mails;
    const auto reader = open(bytes);
    while (auto entry = reader->next()) {
      mails.push_back(OriginalOf(*std::get<std::unique_ptr<Item>>(*entry)));
    }
    return mails;
  }

  test::TempDirectory directory_;
};

TEST_F(MboxTest, GivesEachMailWithTheOffsetOfItsLine) {
  const std::string first = "From ann@example.com Mon Jan  1 10:34:56 2024\nSubject: a\n\nAnn\n\n";
  const std::string bytes =
      first + "From bob@example.com Tue Jan  2 00:00:00 2024\nSubject: b\n\nBob\n\n";
  EXPECT_EQ(EntriesOf(*open(bytes)), (Texts{"0 a", "63 b"}));
  EXPECT_EQ(mailsOf(bytes), (Texts{"Subject: a\n\nAnn\n", "Subject: b\n\nBob\n"}));
  const auto reader = open(bytes);
  const auto entry = reader->next();
  Item& item = *std::get<std::unique_ptr<Item>>(*entry);
  EXPECT_EQ(item.fields(Detail::Envelope).size, 16u);
  EXPECT_EQ(test::Written(item.fields(Detail::Envelope).received), "2024-01-01T10:34:56Z");
  EXPECT_EQ(*item.place().folder, Texts());
  EXPECT_EQ(item.bodies().text, "Ann\n");
}

TEST_F(MboxTest, TakesTheTimeOfReceivedBeforeThatOfTheLine) {
  const auto reader = open(
      "From a@b.example Mon Jan  1 10:34:56 2024\n"
      "Received: by x; Mon, 1 Jan 2024 12:00:00 +0100\nSubject: a\n\n");
  const auto entry = reader->next();
  const auto& fields = std::get<std::unique_ptr<Item>>(*entry)->fields(Detail::Headline);
  EXPECT_EQ(test::Written(fields.received), "2024-01-01T11:00:00Z 60");
}

TEST_F(MboxTest, KnowsTheLinesThatProgramsWrite) {
  for (const char* line : {
           "From ann@example.com Mon Jan  1 10:34:56 2024",
           "From - Mon Jan 01 10:34:56 2024",
           "From ann at example.com  Mon Jan  1 10:34:56 2024",
           "From \"an n\"@example.com Mon Jan 1 10:34 2024",
           "From ann@example.com Mon Jan  1 10:34:56 MET 2024",
           "From ann@example.com Mon Jan  1 10:34:56 2024 +0100",
           "From ann@example.com Mon Jan  1 10:34:56 2024 remote from example",
           "From ann@example.com Mon, 1 Jan 2024 10:34:56 +0100",
       }) {
    const std::string mail = std::string(line) + "\nSubject: a\n\nx\n\n";
    EXPECT_EQ(mailsOf(mail + mail), Texts(2, "Subject: a\n\nx\n")) << line;
  }
}

TEST_F(MboxTest, TakesNoOtherLinesForIt) {
  const std::string line = "From a@b.example Mon Jan  1 10:34:56 2024\n";
  for (const char* text : {
           "\nFrom here on: all is well\nNote: x\n",
           "\nFrom Mon to Fri we are there, in 2024\nNote: x\n",
           "\nFrom the Mon who came at 10:30 in 2024\nNote: x\n",
           "\nFrom this Mon Jan 2024\nNote: x\n",
           "text\nFrom a@b.example Mon Jan  1 10:34:56 2024\nthis is: what he wrote\n",
           "text\nFrom a@b.example\nSubject: b\n",
           "text\nFrom a@b.example Mon Jan  1 10:34:56 2024\n\nx\n",
           "text\nFrom a@b.example Mon Jan  1 10:34:56 2024\n",
           "text\nFrom a@b.example Mon Jan  1 10:34:56 2024\nbroken\nSubject: b\n",
           "\nFrom a@b.example Mon Jan  1 10:34:56 2024\nbroken\nNote: b\n",
           "\nFrom a@b.example Mon Jan  1 10:34:56 2024\nbroken\nbroken\nSubject: b\n",
           "\nFrom a@b.example Mon Jan  1 10:34:56 2024\nbroken\n\nSubject: b\n",
           "\nFrom a@b.example\nbroken\nSubject: b\n",
           "\nFrom a@b.example\n\nSubject: b\n",
           "\nFrom a@b.example\n",
           "\nFrom a@b.example Mon Jan  1 10:34:56 2024\nthis is what he wrote\n",
           "\n From a@b.example Mon Jan  1 10:34:56 2024\nSubject: b\n",
           "\nfrom a@b.example Mon Jan  1 10:34:56 2024\nSubject: b\n",
       }) {
    const std::string mail = std::string("Subject: a\n\n") + text;
    EXPECT_EQ(mailsOf(line + mail), Texts{mail}) << text;
  }
}

TEST_F(MboxTest, TakesLinesWithADateAndAHeaderAfterThem) {
  const std::string line = "From a@b.example Mon Jan  1 10:34:56 2024\n";
  const std::string mail = "Subject: a\n\nx\n";
  EXPECT_EQ(mailsOf(line + mail + line + mail + line + mail), Texts(3, mail));
  EXPECT_EQ(mailsOf(line + mail + line + line + mail), (Texts{mail + line, mail}));
  EXPECT_TRUE(open(line + mail + line + mail)->find("56").ok());
}

TEST_F(MboxTest, TakesABlankBeforeTheColonOfAHeader) {
  const std::string line = "From a@b.example Mon Jan  1 10:34:56 2024\n";
  const std::string mail = "Subject \t: a\n\nx\n";
  EXPECT_EQ(mailsOf(line + mail + line + mail), Texts(2, mail));
}

TEST_F(MboxTest, TakesLinesWithoutADateAfterAnEmptyLineAndBeforeAUsualHeader) {
  const std::string mail = "Subject: a\n\nx\n";
  for (const char* line : {"From MAILER-DAEMON\n", "From a@b 2024-05-01 12:00\n",
                           "From \"a b\"@c Wed May  1 12:00:00 24\n"}) {
    const std::string first = "From a@b.example Mon Jan  1 10:34:56 2024\n" + mail + "\n";
    EXPECT_EQ(mailsOf(first + line + mail), Texts(2, mail)) << line;
    EXPECT_TRUE(open(first + line + mail)->find(std::to_string(first.size())).ok()) << line;
  }
}

TEST_F(MboxTest, TakesAMailWhoseFirstHeaderIsBroken) {
  const std::string line = "From a@b.example Mon Jan  1 10:34:56 2024\n";
  const std::string broken = "broken line\nFrom: x@y\nSubject: b\n\nq\n";
  const std::string bytes = line + "Subject: a\n\nx\n\n" + line + broken + "\n" + line + "To: c\n";
  EXPECT_EQ(mailsOf(bytes), (Texts{"Subject: a\n\nx\n", broken, "To: c\n"}));
  EXPECT_EQ(EntriesOf(*open(bytes)), (Texts{"0 a", "57 b", "136 "}));
}

TEST_F(MboxTest, ReadsLinesWithoutDatesWhereTheFirstHasNone) {
  EXPECT_EQ(
      mailsOf("From ann\nSubject: a\n\nx\n\nFrom now on\nit is\n\nFrom bob\nSubject: b\n\ny\n"),
      (Texts{"Subject: a\n\nx\n\nFrom now on\nit is\n", "Subject: b\n\ny\n"}));
}

TEST_F(MboxTest, TakesOneMarkFromQuotedLines) {
  EXPECT_EQ(mailsOf("From a@b.example Mon Jan  1 10:34:56 2024\nSubject: a\n\n"
                    ">From Ann\n>>From Bob\nx >From\n>Fromage\n> From\n>From the last\n\n"),
            Texts{"Subject: a\n\nFrom Ann\n>From Bob\nx >From\n>Fromage\n> From\nFrom the last\n"});
}

TEST_F(MboxTest, EndsAMailWhereItsContentLengthTellsIt) {
  const std::string line = "From a@b.example Mon Jan  1 10:34:56 2024\n";
  // Quoted, and without an empty line between the mails.
  EXPECT_EQ(mailsOf(line + "Content-Length: 11\n\n>From me\nx\n" + line + "Subject: b\n\n"),
            (Texts{"Content-Length: 11\n\nFrom me\nx\n", "Subject: b\n\n"}));
  // Not quoted at all.
  const std::string forwarded = "\n" + line + "Subject: in\n\n>From me\n";
  const std::string mail =
      "Content-Length: " + std::to_string(forwarded.size()) + "\n\n" + forwarded;
  EXPECT_EQ(mailsOf(line + mail + "\n" + line + "Subject: b\n\n"), (Texts{mail, "Subject: b\n\n"}));
  EXPECT_EQ(mailsOf(line + mail), Texts{mail});
}

TEST_F(MboxTest, PassesOverAContentLengthThatIsWrong) {
  const std::string line = "From a@b.example Mon Jan  1 10:34:56 2024\n";
  for (const char* length :
       {"2", "99999", "18446744073709551615", "99999999999999999999", "-1", "x", ""}) {
    const std::string mail = std::string("Content-Length: ") + length + "\n\nabc\n";
    EXPECT_EQ(mailsOf(line + mail + "\n" + line + "Subject: b\n\ny\n"),
              (Texts{mail, "Subject: b\n\ny\n"}))
        << length;
  }
}

TEST_F(MboxTest, PassesOverAContentLengthThatEndsInALine) {
  // The ends are the blank of "x From", and the mark of ">From" in an mbox without dates.
  const std::string dated = "From a@b.example Mon Jan  1 10:34:56 2024\n";
  const std::string last = "From b@b.example Tue Jan  2 10:34:56 2024\nSubject: b\n\n";
  EXPECT_EQ(
      mailsOf(dated + "Content-Length: 2\n\nx From a Mon Jan  1 10:34:56 2024\ny\n\n" + last),
      (Texts{"Content-Length: 2\n\nx From a Mon Jan  1 10:34:56 2024\ny\n", "Subject: b\n\n"}));
  const auto reader =
      open("From ann\n\nFrom bob\nSubject: b\nContent-Length: 3\n\nx\n>From x\ny\n\n");
  EXPECT_EQ(EntriesOf(*reader), (Texts{"0 ", "10 b"}));
  const auto second = reader->find("10");
  ASSERT_TRUE(second.ok());
  EXPECT_EQ((*second)->bodies().text, "x\nFrom x\ny\n");
}

TEST_F(MboxTest, TakesAContentLengthWithoutTheLastLineEnd) {
  const std::string line = "From a@b.example Mon Jan  1 10:34:56 2024\n";
  const std::string next = line + "Subject: b\n\n";
  EXPECT_EQ(mailsOf(line + "Content-Length: 3\n\nabc\n" + next),
            (Texts{"Content-Length: 3\n\nabc", "Subject: b\n\n"}));
  EXPECT_EQ(mailsOf(line + "Content-Length: 3\n\nabc"), Texts{"Content-Length: 3\n\nabc"});
}

TEST_F(MboxTest, ReadsLinesOfCrLf) {
  EXPECT_EQ(mailsOf("From a@b.example Mon Jan  1 10:34:56 2024\r\nSubject: a\r\n\r\n>From x\r\n\r\n"
                    "From a@b.example Mon Jan  1 10:34:56 2024\r\nSubject: b\r\n\r\ny\r\n\r\n"),
            (Texts{"Subject: a\r\n\r\nFrom x\r\n", "Subject: b\r\n\r\ny\r\n"}));
}

TEST_F(MboxTest, ReadsLinesThatEndWithCr) {
  const auto reader = open(
      "From a@b.example Mon Jan  1 10:34:56 2024\rSubject: a\r\r>From x\r\r"
      "From a@b.example Mon Jan  1 10:34:56 2024\rSubject: b\r\ry\r");
  EXPECT_EQ(EntriesOf(*reader), (Texts{"0 a", "63 b"}));
  EXPECT_EQ(*(*reader->find("0"))->bodies().text, "From x\n");
}

TEST_F(MboxTest, GivesWhatIsThereWithoutTextOrHeaders) {
  const std::string line = "From a@b.example Mon Jan  1 10:34:56 2024\n";
  EXPECT_EQ(mailsOf(""), Texts());
  EXPECT_EQ(mailsOf("\n\n"), Texts());
  EXPECT_EQ(mailsOf(line), Texts{""});
  EXPECT_EQ(mailsOf(line + "Subject: a\n\n" + line + "Subject: b\n"),
            (Texts{"Subject: a\n\n", "Subject: b\n"}));
  EXPECT_EQ(mailsOf(line + "Subject: a\n\nx\n\n" + line + "\nno headers\n\n" + line),
            (Texts{"Subject: a\n\nx\n", "\nno headers\n", ""}));
}

TEST_F(MboxTest, BeginsAfterMarksAndEmptyLinesAndWithAnyLine) {
  const std::string line = "From a@b.example Mon Jan  1 10:34:56 2024\n";
  EXPECT_EQ(EntriesOf(*open("\xEF\xBB\xBF\n\n" + line + "Subject: a\n\nx\n")), Texts{"5 a"});
  EXPECT_EQ(EntriesOf(*open("Subject: a\n\nx\n\n" + line + "Subject: b\n\nx\n")),
            (Texts{"0 a", "15 b"}));
}

TEST_F(MboxTest, ReadsUtf16) {
  std::string bytes = "\xFF\xFE";
  for (const char c : std::string("From a@b.example Mon Jan  1 10:34:56 2024\nSubject: a\n\nx\n")) {
    bytes += {c, '\0'};
  }
  EXPECT_EQ(mailsOf(bytes), Texts{"Subject: a\n\nx\n"});
}

TEST_F(MboxTest, FindsAMailByItsOffset) {
  const std::string line = "From a@b.example Mon Jan  1 10:34:56 2024\n";
  const auto reader =
      open("\n" + line + "Subject: a\n\nx\n\n" + line + "Subject: b\n\n>From y\n\n");
  for (const char* id : {"58", "1"}) {
    const auto item = reader->find(id);
    ASSERT_TRUE(item.ok()) << id;
    EXPECT_EQ((*item)->place().id, id);
  }
  const auto second = reader->find("58");
  EXPECT_EQ(OriginalOf(**second), "Subject: b\n\nFrom y\n");
  for (const char* id : {"0", "2", "57", "59", "1000000", "", "x", "01", "+1", "-1", "1 ", "1/1"}) {
    const auto item = reader->find(id);
    ASSERT_FALSE(item.ok()) << id;
    EXPECT_EQ(item.trouble().kind, TroubleKind::Missing);
  }
}

TEST_F(MboxTest, NamesMailsWithinMailsByTheirPlace) {
  const auto reader = open(
      "From a@b.example Mon Jan  1 10:34:56 2024\nContent-Type: message/rfc822\n\n"
      "Subject: in\n\n>From x\n\n");
  const auto entry = reader->next();
  Item& item = *std::get<std::unique_ptr<Item>>(*entry);
  const auto embedded = item.embedded(0);
  ASSERT_TRUE(embedded.ok());
  EXPECT_EQ((*embedded)->place().id, "0/1");
  EXPECT_EQ((*embedded)->bodies().text, "From x\n");
}

TEST_F(MboxTest, LeavesQuotesThatAreTooManyAndSaysSo) {
  std::string text;
  for (int i = 0; i < 70000; ++i) text += ">From x\n";
  const auto reader =
      open("From a@b.example Mon Jan  1 10:34:56 2024\nSubject: a\n\n" + text + "\n");
  const auto entry = reader->next();
  Item& item = *std::get<std::unique_ptr<Item>>(*entry);
  EXPECT_EQ(item.bodies().text, text);
  ASSERT_EQ(item.troubles().size(), 1u);
  EXPECT_EQ(item.troubles()[0].kind, TroubleKind::TooLarge);
}

TEST_F(MboxTest, NamesAFileThatCannotBeOpened) {
  const auto reader = OpenMbox(directory_.path() / "none");
  ASSERT_FALSE(reader.ok());
  EXPECT_EQ(reader.trouble().kind, TroubleKind::Unreadable);
}

}  // namespace
}  // namespace tarn::archive
