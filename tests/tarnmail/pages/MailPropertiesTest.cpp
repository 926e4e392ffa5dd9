// What a PDF says of its mail.

#include "tarnmail/pages/MailProperties.h"

#include <gtest/gtest.h>

#include "support/TempDirectory.h"
#include "support/msg/MsgBuilder.h"
#include "support/pst/StoreBuilder.h"

namespace tarn::host {
namespace {

constexpr uint64_t kFileTime = 134081928000000000;  // 2025-11-21 10:00:00 UTC

class MailPropertiesTest : public ::testing::Test {
 protected:
  pages::PdfProperties of(std::string_view bytes, MailFormat format, int32_t message = 1) const {
    const std::u16string path = directory_.write("mail", bytes).u16string();
    return PropertiesOfMail(path.c_str(), format, message);
  }

  const test::TempDirectory directory_;
};

TEST_F(MailPropertiesTest, AreThoseOfTheHeaderOfAMail) {
  const pages::PdfProperties properties =
      of("From: =?iso-8859-1?Q?J=F6rg?= <joerg@example.com>\r\n"
         "To: b@example.com\r\n"
         "Date: Sat, 21 Nov 2026 10:00:00 +0100\r\n"
         "Subject: A long\r\n"
         " subject\twith a tab \r\n"
         "\r\n"
         "Subject: not this one\r\n",
         MailFormat::Mail);
  EXPECT_EQ(properties.title, "A longsubject with a tab");
  EXPECT_EQ(properties.author, "J\u00F6rg <joerg@example.com>");
  EXPECT_EQ(properties.date, "2026-11-21T10:00:00+01:00");
}

TEST_F(MailPropertiesTest, AreUtf8WhateverTheMailHas) {
  const pages::PdfProperties properties =
      of("From: J\xF6rg\r\nSubject: \xE2\x82\xAC 5\x01\r\nDate: never\r\nTo: b\r\n\r\nx",
         MailFormat::Mail);
  EXPECT_EQ(properties.title, "\u20AC 5");
  EXPECT_EQ(properties.author, "J\u00F6rg");
  EXPECT_EQ(properties.date, "");
}

TEST_F(MailPropertiesTest, AreEmptyWithoutFields) {
  const pages::PdfProperties properties = of("To: b@example.com\r\n\r\nHi", MailFormat::Mail);
  EXPECT_EQ(properties.title + properties.author + properties.date, "");
}

TEST_F(MailPropertiesTest, AreThoseOfAnMsgFile) {
  test::MsgBuilder msg;
  msg.text(0x0037, u"Hello \u20AC").text(0x0C1A, u"Ann").text(0x5D01, u"ann@example.com");
  msg.text(0x1000, u"Text").time(0x0039, kFileTime);
  const pages::PdfProperties properties = of(msg.write(), MailFormat::Msg);
  EXPECT_EQ(properties.title, "Hello \u20AC");
  EXPECT_EQ(properties.author, "Ann <ann@example.com>");
  EXPECT_EQ(properties.date, "2025-11-21T10:00:00+00:00");
}

TEST_F(MailPropertiesTest, TakeTheAddressThatTheHeaderBlockShows) {
  test::MsgBuilder msg;
  msg.text8(0x0C1A, "J\xF6rg").text(0x0065, u"joerg@example.com").text(0x1000, u"Text");
  EXPECT_EQ(of(msg.write(), MailFormat::Msg).author, "J\u00F6rg <joerg@example.com>");
  test::MsgBuilder internal;
  internal.text(0x0C1A, u"Ann").text(0x0065, u"/O=ORG/CN=ANN").text(0x1000, u"Text");
  EXPECT_EQ(of(internal.write(), MailFormat::Msg).author, "Ann");
  EXPECT_EQ(of(internal.write(), MailFormat::Msg).title, "");
}

TEST_F(MailPropertiesTest, AreThoseOfTheMessageOfAStore) {
  test::StoreBuilder store(test::PstLayout::Unicode, test::PstEncoding::None);
  test::FolderBuilder& inbox = store.folder(u"Inbox");
  inbox.message().subject(u"LocalFreebusy").body(u"x");
  inbox.message().subject(u"One").from(u"Ann").body(u"1").submitTime(kFileTime);
  inbox.message().subject(u"\u0001\u0005Re: Two").from(u"Bob").body(u"2").without(0x0039);
  const std::string bytes = store.bytes();
  const pages::PdfProperties one = of(bytes, MailFormat::Store, 1);
  EXPECT_EQ(one.title, "One");
  EXPECT_EQ(one.author, "Ann");
  EXPECT_EQ(one.date, "2025-11-21T10:00:00+00:00");
  const pages::PdfProperties two = of(bytes, MailFormat::Store, 2);
  EXPECT_EQ(two.title, "Re: Two");
  EXPECT_EQ(two.author, "Bob");
  EXPECT_EQ(two.date, "");
  EXPECT_EQ(of(bytes, MailFormat::Store, 3).title, "");
}

TEST_F(MailPropertiesTest, AreEmptyForWhatCannotBeRead) {
  EXPECT_EQ(of("!BDN and no more of it", MailFormat::Store).title, "");
  EXPECT_EQ(of("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1 damaged", MailFormat::Msg).title, "");
  EXPECT_EQ(PropertiesOfMail(u"/none", MailFormat::Mail, 1).title, "");
  EXPECT_EQ(PropertiesOfMail(u"/none", MailFormat::Msg, 1).title, "");
  EXPECT_EQ(PropertiesOfMail(u"/none", MailFormat::Store, 1).title, "");
}

}  // namespace
}  // namespace tarn::host
