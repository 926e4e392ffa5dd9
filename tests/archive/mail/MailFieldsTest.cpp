// The headers of mails as fields.
#include "MailReading.h"

namespace tarn::archive {
namespace {

using test::OpenedMail;
using test::Written;

TEST(MailFieldsTest, GivesAllFieldsOfAnOrdinaryMail) {
  const std::string text =
      "Received: from b by c; Wed, 1 May 2024 12:35:10 +0200\r\n"
      "Received: from a by b; Wed, 1 May 2024 12:35:00 +0200\r\n"
      "From: Ann Example <ann@example.com>\r\n"
      "To: Bob <bob@example.com>, carol@example.com\r\n"
      "Cc: \"Dave, the\" <dave@example.com>\r\n"
      "Bcc: erin@example.com\r\n"
      "Subject: Minutes of the\r\n meeting\r\n"
      "Date: Wed, 1 May 2024 12:34:56 +0200\r\n"
      "Message-ID: <one@example.com>\r\n"
      "\r\n"
      "Hello\r\n";
  OpenedMail mail(text);
  EXPECT_EQ(mail->place().id, "1");
  EXPECT_FALSE(mail->place().parent.has_value());
  EXPECT_TRUE(mail->place().folder->empty());
  const ItemFields& fields = mail.fields();
  EXPECT_EQ(fields.messageClass, "IPM.Note");
  EXPECT_EQ(fields.subject, "Minutes of the meeting");
  EXPECT_EQ(Written({fields.from}), "Ann Example <ann@example.com>");
  EXPECT_EQ(Written(fields.to), "Bob <bob@example.com>, <carol@example.com>");
  EXPECT_EQ(Written(fields.cc), "Dave, the <dave@example.com>");
  EXPECT_EQ(Written(fields.bcc), "<erin@example.com>");
  EXPECT_FALSE(fields.sender.has_value());
  EXPECT_EQ(Written(fields.sent), "2024-05-01T10:34:56Z 120");
  EXPECT_EQ(Written(fields.received), "2024-05-01T10:35:10Z 120");
  EXPECT_EQ(fields.messageId, "one@example.com");
  EXPECT_EQ(fields.size, text.size());
  EXPECT_FALSE(fields.hasAttachments);
  EXPECT_EQ(fields.attachmentCount, 0u);
  EXPECT_EQ(*mail->originalHeaders(), text.substr(0, text.find("\r\n\r\n") + 2));
  EXPECT_EQ(*ReadAll(**mail->original(), 10000), text);
  EXPECT_EQ(mail->properties(), nullptr);
  EXPECT_TRUE(mail->troubles().empty());
}

TEST(MailFieldsTest, ReadsAMailWithoutAnyHeaderThatMatters) {
  OpenedMail mail("X-Nothing: 1\n\nHello\n");
  EXPECT_EQ(mail.fields().subject, "");
  EXPECT_EQ(Written({mail.fields().from}), "");
  EXPECT_EQ(Written(mail.fields().sent), "none");
  EXPECT_EQ(*mail->bodies().text, "Hello\n");
}

TEST(MailFieldsTest, ReadsBytesWithoutHeadersAsText) {
  OpenedMail mail("hello there\nthis is text\n\nbody\n");
  EXPECT_EQ(*mail->bodies().text, "hello there\nthis is text\n\nbody\n");
  EXPECT_EQ(*mail->originalHeaders(), "");
}

TEST(MailFieldsTest, ReadsAnEmptyFile) {
  OpenedMail mail("");
  EXPECT_EQ(mail.fields().size, 0u);
  EXPECT_EQ(mail->bodies().text.value_or(""), "");
  EXPECT_EQ(*mail->originalHeaders(), "");
}

TEST(MailFieldsTest, PassesOverWhatComesBeforeTheHeaders) {
  for (const std::string before :
       {"\xEF\xBB\xBF", "\r\n\r\n", "\n", "From ann@example.com Mon Jan  1 10:34:56 2024\n",
        "\n\nFrom ann@example.com Mon Jan  1 10:34:56 2024\n",
        ">From ann Mon Jan  1 10:34:56 2024\n", "\xEF\xBB\xBF\r\n"}) {
    OpenedMail mail(before + "Subject: found\n\nbody\n");
    EXPECT_EQ(mail.fields().subject, "found") << before;
    EXPECT_EQ(*mail->originalHeaders(), "Subject: found\n") << before;
    EXPECT_EQ(*mail->bodies().text, "body\n") << before;
  }
}

TEST(MailFieldsTest, TakesTheTimeOfALineOfAnMbox) {
  OpenedMail mail("From ann@example.com Mon Jan  1 10:34:56 2024\nSubject: x\n\n");
  EXPECT_EQ(Written(mail.fields().received), "2024-01-01T10:34:56Z");
  OpenedMail zone("From Sun Day Mon Jan  1 10:34:56 2024 +0100\nSubject: x\n\n");
  EXPECT_EQ(Written(zone.fields().received), "2024-01-01T09:34:56Z 60");
  OpenedMail none("From ann@example.com\nSubject: x\n\n");
  EXPECT_EQ(Written(none.fields().received), "none");
}

TEST(MailFieldsTest, ReadsUtf16) {
  const std::string text = "Subject: x\r\n\r\nbody\r\n";
  std::string little = "\xFF\xFE";
  std::string big = "\xFE\xFF";
  for (const char c : text) {
    little += {c, '\0'};
    big += {'\0', c};
  }
  for (const std::string& bytes : {little, big}) {
    OpenedMail mail(bytes);
    EXPECT_EQ(mail.fields().subject, "x");
    EXPECT_EQ(*mail->bodies().text, "body\n");
  }
}

TEST(MailFieldsTest, ReadsLinesThatEndWithCr) {
  const std::string headers =
      "Subject: x\rTo: a@b\r" + ("X-Long: " + std::string(2000, 'x')) + "\r";
  OpenedMail mail(headers + "\rbody\rmore\r");
  EXPECT_EQ(mail.fields().subject, "x");
  EXPECT_EQ(Written(mail.fields().to), "<a@b>");
  EXPECT_EQ(*mail->bodies().text, "body\nmore\n");
  OpenedMail feeds(headers + "\rbody\nmore\n");
  EXPECT_EQ(*feeds->bodies().text, "body\nmore\n");
  OpenedMail both("Subject: x\r\r\nTo: a@b\r\r\n\r\r\nbody\r\r\n");
  EXPECT_EQ(*ReadAll(**both->original(), 10000), "Subject: x\r\r\nTo: a@b\r\r\n\r\r\nbody\r\r\n");
}

TEST(MailFieldsTest, KeepsABrokenLineBeforeTheHeaders) {
  const std::string text = "this is none\nFrom: a@b\nSubject: x\n\nbody\n";
  OpenedMail mail("\n" + text);
  EXPECT_EQ(mail.fields().subject, "x");
  EXPECT_EQ(mail.fields().size, text.size());
  EXPECT_EQ(*mail->bodies().text, "body\n");
  EXPECT_EQ(*ReadAll(**mail->original(), 10000), text);
}

TEST(MailFieldsTest, PassesOverLinesThatAreNoHeaders) {
  OpenedMail mail("Subject: x\nthis is none\nFrom: a@b\nTo : c@d\n\nbody\n");
  EXPECT_EQ(mail.fields().subject, "x");
  EXPECT_EQ(Written({mail.fields().from}), "<a@b>");
  EXPECT_EQ(Written(mail.fields().to), "<c@d>");
}

TEST(MailFieldsTest, ReadsFieldsWithBlanksBeforeTheirColon) {
  OpenedMail mail("From : a@b\nSubject\t: x\n\n");
  EXPECT_EQ(Written({mail.fields().from}), "<a@b>");
  EXPECT_EQ(mail.fields().subject, "x");
}

// As of a file that is cut off.
TEST(MailFieldsTest, ReadsHeadersThatEndWithinAName) {
  OpenedMail mail("X-A: b\r\nFrom: a@b\r\nSubject: one\r\nRece");
  EXPECT_EQ(mail.fields().subject, "one");
  EXPECT_EQ(Written({mail.fields().from}), "<a@b>");
  EXPECT_EQ(mail->bodies().text.value_or(""), "");
  EXPECT_EQ(*mail->originalHeaders(), "X-A: b\r\nFrom: a@b\r\nSubject: one\r\nRece");
}

TEST(MailFieldsTest, TakesTextWithoutUsualHeadersForText) {
  OpenedMail mail("a: b\nc");
  EXPECT_EQ(mail->bodies().text, "a: b\nc");
}

TEST(MailFieldsTest, TakesTheFirstOfTwoSubjectsAndAllRecipients) {
  OpenedMail mail("Subject: one\nSubject: two\nTo: a@b\nTo: c@d\n\n");
  EXPECT_EQ(mail.fields().subject, "one");
  EXPECT_EQ(Written(mail.fields().to), "<a@b>, <c@d>");
}

TEST(MailFieldsTest, DecodesWordsAndUndeclaredBytes) {
  OpenedMail mail(
      "Subject: =?iso-8859-1?Q?J=F6rg?= =?utf-8?B?IMOkcmdlcnQ=?=\n"
      "From: =?utf-8?q?J=C3=B6rg?= <a@b>\n"
      "To: \"=?utf-8?q?J=C3=B6rg?=\" <c@d>, J\xF6rg <e@f>, J\xC3\xB6rg <g@h>\n\n");
  EXPECT_EQ(mail.fields().subject, "J\xC3\xB6rg \xC3\xA4rgert");
  EXPECT_EQ(Written({mail.fields().from}), "J\xC3\xB6rg <a@b>");
  EXPECT_EQ(Written(mail.fields().to), "J\xC3\xB6rg <c@d>, J\xC3\xB6rg <e@f>, J\xC3\xB6rg <g@h>");
}

// The words of one text: each padded, as most are; none to be, and a character in two of them; and
// cut from one encoded text wherever a line was full.
TEST(MailFieldsTest, JoinsWordsInBase64) {
  OpenedMail mail(
      "Subject: a =?UTF-8?B?w7jDuA==?=\n =?utf-8?b?w6TDpA==?=\t=?UTF-8?B?w7w=?= b "
      "=?utf-8?B?w7w=?=\n"
      "From: =?utf-8?B?w7jD?= =?utf-8?B?uMO4?= <a@b>\n"
      "To: =?utf-8?B?w7jDu?=\n =?utf-8?B?MO4?= <c@d>, \"=?utf-8?B?w7jDuA==?=\n "
      "=?utf-8?B?w6TDpA==?=\" <e@f>\n"
      "Cc: =?utf-8?B?w7jDuA==?= =?iso-8859-1?B?5OQ=?= =?utf-8?Q?=C3=BC?= <g@h>\n"
      "Bcc: =?iso-2022-jp?B?GyRCMnE1RBsoQg==?=\n =?iso-2022-jp?B?GyRCO3FOQRsoQg==?= <i@j>\n\n");
  EXPECT_EQ(mail.fields().subject, "a \u00F8\u00F8\u00E4\u00E4\u00FC b \u00FC");
  EXPECT_EQ(Written({mail.fields().from}), "\u00F8\u00F8\u00F8 <a@b>");
  EXPECT_EQ(Written(mail.fields().to), "\u00F8\u00F8\u00F8 <c@d>, \u00F8\u00F8\u00E4\u00E4 <e@f>");
  EXPECT_EQ(Written(mail.fields().cc), "\u00F8\u00F8\u00E4\u00E4\u00FC <g@h>");
  EXPECT_EQ(Written(mail.fields().bcc), "\u4F1A\u8B70\u8CC7\u6599 <i@j>");
}

TEST(MailFieldsTest, JoinsWordsThatAreFoldedWithin) {
  OpenedMail mail("Subject: =?utf-8?B?w7jD\n uA==?= =?utf-8?B?w6Q=\n ?=\n\n");
  EXPECT_EQ(mail.fields().subject, "\u00F8\u00F8\u00E4");
}

TEST(MailFieldsTest, JoinsWordsWithoutText) {
  ::testing::internal::CaptureStderr();
  OpenedMail mail(
      "Subject: =?utf-8?B?\?= =?utf-8?B?w7g=?= =?utf-8?B?w7g=?=\nTo: =?utf-8?B?\?=\n =?utf-8?B?\?= "
      "<a@b>\n\n");
  EXPECT_EQ(mail.fields().subject, "\u00F8\u00F8");
  EXPECT_EQ(Written(mail.fields().to), "<a@b>");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST(MailFieldsTest, KeepsWhatIsNoWordInBase64) {
  OpenedMail mail("Subject: =?utf-8?B?w7j=?= =?utf-8?B?w7jDuA== =?utf-8?B\n\n");
  EXPECT_EQ(mail.fields().subject, "\u00F8 =?utf-8?B?w7jDuA== =?utf-8?B");
}

TEST(MailFieldsTest, JoinsWordsOfAnyNumber) {
  constexpr size_t kMany = 2000;
  std::string headers = "Subject:";
  std::string expected;
  for (size_t i = 0; i < kMany; ++i) {
    headers += " =?utf-8?B?w7jDuA==?=\n";
    expected += "\u00F8\u00F8";
  }
  EXPECT_EQ(OpenedMail(headers + "\n").fields().subject, expected);
}

TEST(MailFieldsTest, DecodesBytesThatAWordHasUnencoded) {
  OpenedMail mail(
      "Subject: =?windows-1252?Q?a\x80=80?= \xE2\x82\xAC =?utf-8?q?\xE2\x82\xAC\n"
      "To: Heinz =?iso-8859-1?q?M\xFCller?= <a@b>, \xC3\xB6 =?x <c@d>\n\n");
  EXPECT_EQ(mail.fields().subject, "a\u20AC\u20AC \u20AC =?utf-8?q?\u20AC");
  EXPECT_EQ(Written(mail.fields().to), "Heinz M\u00FCller <a@b>, \u00F6 =?x <c@d>");
}

TEST(MailFieldsTest, ReadsAddressesThatAreNone) {
  OpenedMail mail(
      "From: Ann\nTo: undisclosed-recipients:;\nCc: Friends: a@b, Bob <c@d>;, e@f\nBcc: ,,\n\n");
  EXPECT_EQ(Written({mail.fields().from}), "Ann");
  EXPECT_EQ(Written(mail.fields().to), "undisclosed-recipients");
  EXPECT_EQ(Written(mail.fields().cc), "<a@b>, Bob <c@d>, <e@f>");
}

TEST(MailFieldsTest, KeepsAddressesThatAreNoneByTheRules) {
  OpenedMail mail(
      "From: =?utf-8?Q?=C3=BC?= <a..b@c>\n"
      "To: a..b@c, Eve <e@f>, \"Ann, Dr\" <.a@b>, a.@b, x[1]@y\n"
      "Cc: Ann <mailto:a@b>, Bob b@c, c@d (a, b), <d e@f>, \"x\\\",\" <@>, <>, Eve <e@f>\n"
      "Bcc: a@b; Bob <c@d>;\n e@f\n\n");
  EXPECT_EQ(Written({mail.fields().from}), "\u00FC <a..b@c>");
  EXPECT_EQ(Written(mail.fields().to), "<a..b@c>, Eve <e@f>, Ann, Dr <.a@b>, <a.@b>, <x[1]@y>");
  EXPECT_EQ(Written(mail.fields().cc),
            "Ann <a@b>, Bob b@c, a, b <c@d>, <d e@f>, x\\\", <@>, Eve <e@f>");
  EXPECT_EQ(Written(mail.fields().bcc), "<a@b>, Bob <c@d>, <e@f>");
}

TEST(MailFieldsTest, ReadsListsThatAreNotClosed) {
  OpenedMail mail(
      "From: \"Ann <a..b@c>\nTo: Ann <a@b, Eve <e@f>\nCc: a@b, (x <c..d@e>\n"
      "Bcc: Team: a@b, e@f;, g@h\n\n");
  EXPECT_EQ(Written({mail.fields().from}), "\"Ann <a..b@c>");
  EXPECT_EQ(Written(mail.fields().to), "Ann <a@b>, Eve <e@f>");
  EXPECT_EQ(Written(mail.fields().cc), "a@b, (x <c..d@e>");
  EXPECT_EQ(Written(mail.fields().bcc), "<a@b>, <e@f>, <g@h>");
}

TEST(MailFieldsTest, UnfoldsNames) {
  OpenedMail mail("From: \"Ann\r\n\tMiller\"\r\n\t<a@b>\r\nTo: Bob\r\n\tSmith\r\n <c@d>\r\n\r\n");
  EXPECT_EQ(Written({mail.fields().from}), "Ann Miller <a@b>");
  EXPECT_EQ(Written(mail.fields().to), "Bob Smith <c@d>");
}

TEST(MailFieldsTest, JoinsANameThatACommaHasBroken) {
  OpenedMail mail(
      "From: M\xC3\xBCller, Hans <h@m.de>\n"
      "To: Miller, Ann, Dr <a@b>, bob, c@d, Friends:;, Eve <e@f>, last\n"
      "Cc: Team: Miller, Ann <a@b>, Bob <c@d>;, Eve <e@f>\n\n");
  EXPECT_EQ(Written({mail.fields().from}), "M\u00FCller, Hans <h@m.de>");
  EXPECT_EQ(Written(mail.fields().to),
            "Miller, Ann, Dr <a@b>, bob, <c@d>, Friends, Eve <e@f>, last");
  EXPECT_EQ(mail.fields().to.size(), 6u);
  EXPECT_EQ(mail.fields().cc.size(), 3u);
  EXPECT_EQ(Written(mail.fields().cc), "Miller, Ann <a@b>, Bob <c@d>, Eve <e@f>");
}

TEST(MailFieldsTest, DecodesWordsThatHaveWhatEndsAnAddress) {
  OpenedMail mail(
      "Subject: =?utf-8?Q?one two?= three\n"
      "From: =?utf-8?Q?Smith, Bob?= <b@s.c>\n"
      "To: =?utf-8?Q?x=1B]0;title=07y?= <t@u.v>, =?utf-8?q?Miller,\n Ann (a@b)?= <a@b>\n"
      "Cc: \"=?utf-8?Q?Smith, Bob?=\" <b@s.c>, =?utf-8?q?Carl <c@d>, =?utf-8?q?D=C3=A4ve?= "
      "<d@e>\n\n");
  EXPECT_EQ(mail.fields().subject, "one two three");
  EXPECT_EQ(Written({mail.fields().from}), "Smith, Bob <b@s.c>");
  EXPECT_EQ(Written(mail.fields().to), "x\x1B]0;title\x07y <t@u.v>, Miller, Ann (a@b) <a@b>");
  ASSERT_EQ(mail.fields().cc.size(), 3u);
  EXPECT_EQ(Written({mail.fields().cc[0]}), "Smith, Bob <b@s.c>");
  EXPECT_EQ(mail.fields().cc[1].address, "c@d");
  EXPECT_EQ(Written({mail.fields().cc[2]}), "D\u00E4ve <d@e>");
}

TEST(MailFieldsTest, NamesAllAuthors) {
  const auto senderOf = [](const std::string& headers) {
    const OpenedMail mail(headers + "\n");
    EXPECT_EQ(Written({mail.fields().from}), "<a@b>");
    return mail.fields().sender.value_or(Address{"none", ""});
  };
  EXPECT_EQ(senderOf("From: a@b, Carl <c@d>\n"), (Address{"Carl", "c@d"}));
  EXPECT_EQ(senderOf("From: a@b\nFrom: c@d\n"), (Address{"", "c@d"}));
  EXPECT_EQ(senderOf("From: a@b, c@d\nSender: a@b\n"), (Address{"", "c@d"}));
  EXPECT_EQ(senderOf("From: a@b, c@d\nSender: c@d\n"), (Address{"", "c@d"}));
  EXPECT_EQ(senderOf("From: a@b, Carl <c@d>, e@f\n"), (Address{"Carl <c@d>, e@f", ""}));
  EXPECT_EQ(senderOf("From: a@b, c@d\nSender: S <s@t>\n"), (Address{"S <s@t>, c@d", ""}));
}

TEST(MailFieldsTest, NamesTheSenderWhereItIsAnother) {
  OpenedMail other("From: a@b\nSender: c@d\n\n");
  EXPECT_EQ(Written({*other.fields().sender}), "<c@d>");
  OpenedMail same("From: a@b\nSender: A <a@b>\n\n");
  EXPECT_FALSE(same.fields().sender.has_value());
  OpenedMail alone("Sender: c@d\n\n");
  EXPECT_EQ(Written({alone.fields().from}), "<c@d>");
  EXPECT_FALSE(alone.fields().sender.has_value());
}

TEST(MailFieldsTest, KnowsTheOffsetWhereTheDateTellsIt) {
  const auto sent = [](const std::string& date) {
    return Written(OpenedMail("Date: " + date + "\n\n").fields().sent);
  };
  EXPECT_EQ(sent("Mon, 1 Jan 2024 10:00:00 +0000"), "2024-01-01T10:00:00Z 0");
  EXPECT_EQ(sent("Mon, 1 Jan 2024 10:00:00 GMT"), "2024-01-01T10:00:00Z 0");
  EXPECT_EQ(sent("Mon, 1 Jan 2024 10:00:00 -0000"), "2024-01-01T10:00:00Z");
  EXPECT_EQ(sent("Mon, 1 Jan 2024 10:00:00"), "2024-01-01T10:00:00Z");
  EXPECT_EQ(sent("1 Jan 24 10:00 EST"), "2024-01-01T15:00:00Z -300");
  EXPECT_EQ(sent("yesterday"), "none");
  EXPECT_EQ(sent(""), "none");
}

TEST(MailFieldsTest, ReadsDatesThatBeginWithTheYear) {
  const auto sent = [](const std::string& date) {
    return Written(OpenedMail("Date: " + date + "\n\n").fields().sent);
  };
  EXPECT_EQ(sent("2024-05-01T12:30:00+02:00"), "2024-05-01T10:30:00Z 120");
  EXPECT_EQ(sent("2024-05-01 12:30:05.123 -0330"), "2024-05-01T16:00:05Z -210");
  EXPECT_EQ(sent("2024-05-01T12:30Z"), "2024-05-01T12:30:00Z 0");
  EXPECT_EQ(sent("2024-05-01T12:30:60+02"), "2024-05-01T10:30:59Z 120");
  EXPECT_EQ(sent("2024-05-01T12:30:00-00:00"), "2024-05-01T12:30:00Z");
  EXPECT_EQ(sent("2024-05-01T12:30:00"), "2024-05-01T12:30:00Z");
  EXPECT_EQ(sent("0001-01-01T00:00:00+14:00"), "0000-12-31T10:00:00Z 840");
  for (const char* none : {"2024-02-30T12:30:00Z", "2024-05-01T24:30:00Z", "2024-05-01T12:3",
                           "2024-05-01T12:30:00+", "2024-05-01T12:30:00+25:00"}) {
    EXPECT_EQ(sent(none), "none") << none;
  }
}

TEST(MailFieldsTest, NamesReportsAndCalendarsByTheirClass) {
  const auto classOf = [](const std::string& type, const std::string& part) {
    return OpenedMail("Content-Type: multipart/" + type + "; boundary=b\n\n--b\n\nx\n--b\n" + part +
                      "\n--b--\n")
        .fields()
        .messageClass;
  };
  const std::string status = "Content-Type: message/delivery-status\n\nReporting-MTA: dns; a\n\n";
  EXPECT_EQ(classOf("report; report-type=delivery-status", status + "Action: failed\n"),
            "REPORT.IPM.Note.NDR");
  EXPECT_EQ(classOf("report; report-type=delivery-status", status + "Action: delivered\n"),
            "REPORT.IPM.Note.DR");
  EXPECT_EQ(classOf("report; report-type=disposition-notification",
                    "Content-Type: message/disposition-notification\n\n"),
            "REPORT.IPM.Note.IPNRN");
  EXPECT_EQ(classOf("mixed", status + "Action: failed\n"), "IPM.Note");
  const auto calendar = [&](const std::string& method, const std::string& text) {
    return classOf("alternative", "Content-Type: text/calendar; method=" + method + "\n\n" + text);
  };
  EXPECT_EQ(calendar("REQUEST", ""), "IPM.Schedule.Meeting.Request");
  EXPECT_EQ(calendar("Cancel", ""), "IPM.Schedule.Meeting.Canceled");
  EXPECT_EQ(calendar("REPLY", "ATTENDEE;PARTSTAT=ACCEPTED:mailto:a@b"),
            "IPM.Schedule.Meeting.Resp.Pos");
  EXPECT_EQ(calendar("REPLY", "ATTENDEE;PARTSTAT=DECLINED:mailto:a@b"),
            "IPM.Schedule.Meeting.Resp.Neg");
  EXPECT_EQ(calendar("REPLY", "ATTENDEE;PARTSTAT=TENTATIVE:mailto:a@b"),
            "IPM.Schedule.Meeting.Resp.Tent");
  EXPECT_EQ(calendar("REPLY", ""), "IPM.Note");
  EXPECT_EQ(calendar("PUBLISH", ""), "IPM.Note");
}

TEST(MailFieldsTest, FindsTheOneItemAndNoOther) {
  const test::TempDirectory directory;
  const auto reader = OpenMail(directory.write("a", "Subject: x\n\n"));
  ASSERT_TRUE(reader.ok());
  const auto found = (*reader)->find("1");
  ASSERT_TRUE(found.ok());
  EXPECT_EQ((*found)->fields(Detail::Headline).subject, "x");
  const auto other = (*reader)->find("2");
  ASSERT_FALSE(other.ok());
  EXPECT_EQ(other.trouble().kind, TroubleKind::Missing);
}

TEST(MailFieldsTest, NamesAFileThatCannotBeOpened) {
  const test::TempDirectory directory;
  for (const auto& path : {directory.path() / "none", directory.path()}) {
    const auto reader = OpenMail(path);
    ASSERT_FALSE(reader.ok());
    EXPECT_EQ(reader.trouble().kind, TroubleKind::Unreadable);
  }
}

}  // namespace
}  // namespace tarn::archive
