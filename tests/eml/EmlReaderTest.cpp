#include "eml/EmlReader.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Tarnbase/PlainKernel.h"
#include "eml/ReadMail.h"
#include "support/EmlBuilder.h"

namespace tarn {
namespace {

using namespace std::string_view_literals;
using test::EmlBuilder;
using test::EmlEntity;
using test::ReadMail;

TEST(EmlReader, FileWithoutAContentTypeIsAPlainTextMessage) {
  const ReadMail read("From: a\r\nTo: b\r\nDate: c\r\n\r\nHi\r\n");
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "Hi\r\n\0"sv);
  EXPECT_EQ(read.message.documentKind, DocumentText);
  EXPECT_EQ(read.message.from.text(), "a");
  EXPECT_FALSE(read.message.location.hasBlock());
}

TEST(EmlReader, HtmlWithoutABoundaryIsTheBody) {
  const ReadMail read(
      "From: a\nTo: b\nDate: c\nContent-Type: TEXT/html; charset=utf-8\n\n<p>Hi</p>");
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "<p>Hi</p>\0"sv);
  EXPECT_EQ(read.message.documentKind, DocumentHtml);
}

TEST(EmlReader, PlainTextWithoutABoundaryIsTheBody) {
  const ReadMail read("From: a\nTo: b\nDate: c\nContent-Type: text/plain\n\n<p>Hi</p>");
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "<p>Hi</p>\0"sv);
  EXPECT_EQ(read.message.documentKind, DocumentText);
}

TEST(EmlReader, OtherTypesWithoutABoundaryAreRefused) {
  const ReadMail read("From: a\r\nTo: b\r\nDate: c\r\nContent-Type: application/pdf\r\n\r\n%PDF");
  EXPECT_EQ(read.status, StatusNotSupported);
  EXPECT_EQ(read.message.body.data(), nullptr);
}

TEST(EmlReader, TypeIsLookedForExactlyOneByteAfterTheColon) {
  EXPECT_EQ(ReadMail("From: a\nTo: b\nDate: c\nContent-Type:text/html\n\nx").status,
            StatusNotSupported);
  EXPECT_EQ(ReadMail("From: a\nTo: b\nDate: c\nContent-Type:text/plain\n\nx").status,
            StatusNotSupported);
  EXPECT_EQ(ReadMail("From: a\nTo: b\nDate: c\nContent-Type:  text/html\n\nx").status,
            StatusNotSupported);
  EXPECT_EQ(ReadMail("From: a\nTo: b\nDate: c\nContent-Type:\ttext/html\n\nx").status, StatusOk);
  EXPECT_EQ(ReadMail("From: a\nTo: b\nDate: c\nContent-Type:").status, StatusNotSupported);
}

TEST(EmlReader, TypeInTheBodyIsATypeToo) {
  EXPECT_EQ(ReadMail("From: a\nTo: b\nDate: c\n\nContent-Type: image/png\n").status,
            StatusNotSupported);
  EXPECT_EQ(ReadMail("From: a\nTo: b\nDate: c\n\n Content-Type: image/png\n").status, StatusOk);
}

TEST(EmlReader, OneRecipientFieldIsEnough) {
  EXPECT_EQ(ReadMail("From: a\nBcc: b\nDate: c\n\nx").status, StatusOk);
  EXPECT_EQ(ReadMail("From: a\nCc: b\nDate: c\n\nx").status, StatusOk);
  EXPECT_EQ(ReadMail("From: a\nTo: b\nDate: c\n\nx").status, StatusOk);
}

TEST(EmlReader, FileThatLacksAFieldIsRefused) {
  EXPECT_EQ(ReadMail("From: a\nDate: c\nReply-To: x\n\nx").status, StatusNotSupported);
  EXPECT_EQ(ReadMail("From: a\nTo: b\n\nx").status, StatusNotSupported);
  EXPECT_EQ(ReadMail("To: b\nDate: c\n\nx").status, StatusNotSupported);
  EXPECT_EQ(ReadMail("just some text").status, StatusNotSupported);
  EXPECT_EQ(ReadMail("x").status, StatusNotSupported);
}

TEST(EmlReader, EmptyFieldIsPresent) {
  EXPECT_EQ(ReadMail("From:\nTo:\nDate:\n\nx").status, StatusOk);
}

TEST(EmlReader, NamesMatchInAnyCase) {
  const ReadMail read("FROM: a\ntO: b\ndate: c\ncontent-TYPE: text/HTML\n\nx");
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.message.documentKind, DocumentHtml);
}

TEST(EmlReader, FieldsInTheBodyDoNotCount) {
  EXPECT_EQ(ReadMail("From: a\nTo: b\n\nDate: c\n").status, StatusNotSupported);
  EXPECT_EQ(ReadMail("From: a\r\nTo: b\r\n\r\nDate: c\r\n").status, StatusNotSupported);
  const ReadMail read("From: a\nTo: b\nDate: c\n\nFrom: x\nSubject: y\n");
  EXPECT_EQ(read.message.from.text(), "a");
  EXPECT_EQ(read.message.subject.data(), nullptr);
}

TEST(EmlReader, TopHeaderEndsAtTheFirstCrLfPairEvenAfterAnLfPair) {
  const ReadMail read("From: a\nTo: b\n\nDate: c\r\n\r\nbody");
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "body\0"sv);
}

TEST(EmlReader, CrLfFileWithoutABlankLineShowsAllAfterItsFirstLine) {
  const ReadMail read("From: a\r\nTo: b\r\nDate: c\r\nlast");
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "To: b\r\nDate: c\r\nlast\0"sv);
}

TEST(EmlReader, LfFileWithoutABlankLineHasAnEmptyPlainBody) {
  const ReadMail read("From: a\nTo: b\nDate: c\nlast");
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "\0"sv);
  EXPECT_EQ(read.message.documentKind, DocumentText);
}

TEST(EmlReader, FirstByteOfAFileThatIsNoMultipartIsSteppedOver) {
  // The type is in the first line, and so is not seen: the text is of no known type.
  const ReadMail read("Content-Type: text/html\nFrom: a\nTo: b\nDate: c\n\nx");
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.message.documentKind, DocumentText);
}

TEST(EmlReader, WordInAFieldMakesTheBodyUtf8) {
  const ReadMail read(
      "From: =?utf-8?Q?=C3=A4?=\nTo: b\nDate: c\nContent-Type: text/html; charset=iso-8859-1\n\n"
      "<meta http-equiv=Content-Type content=\"text/html; charset=iso-8859-1\">\xE4");
  EXPECT_TRUE(read.message.convertToUtf8);
  EXPECT_EQ(read.message.from.text(), "\xC3\xA4");
  EXPECT_EQ(read.body(),
            "<meta http-equiv=Content-Type content=\"text/html; charset=UTF-8\">\xC3\xA4\0"sv);
}

TEST(EmlReader, LocationOfAMultipartIsKept) {
  const ReadMail read(
      EmlBuilder::Usual()
          .body(EmlEntity::Multipart("related", "s")
                    .part(EmlEntity::Leaf("text/html", "x").header("X-CONTENT-location", "a/b"))
                    .part(EmlEntity::Leaf("text/css", "y").header("Content-Location", "c")))
          .build());
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_STREQ(read.message.location.data(), " a/b");
}

TEST(EmlReader, LocationAtTheEndOfTheFileIsEmpty) {
  const ReadMail read(
      "From: a\nTo: b\nDate: c\nContent-Type: multipart/x; boundary=s\n\nContent-Location:");
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_STREQ(read.message.location.data(), "");
  EXPECT_EQ(read.message.body.data(), nullptr);
}

TEST(EmlReader, MultipartGetsRoomForImageFiles) {
  const ReadMail read(EmlBuilder::Usual().body(EmlEntity::Multipart("x", "s")).build());
  EXPECT_NE(read.filterData.inlineFiles.data(), nullptr);
  EXPECT_EQ(read.filterData.inlineFiles.capacity(), 5u);
  EXPECT_EQ(read.filterData.inlineFiles.length(), 0u);
}

TEST(EmlReader, WholeFileIsInTheRecord) {
  const std::string_view text = "From: a\nTo: b\nDate: c\n\nx";
  const ReadMail read(text);
  EXPECT_EQ(read.message.file(), text);
}

TEST(EmlReader, EmptyFileCannotBeRead) { EXPECT_EQ(ReadMail("").status, StatusReadFailed); }

TEST(EmlReader, PositionOfTheHandleDoesNotMatter) {
  const test::MemoryMail mail("From: a\nTo: b\nDate: c\n\nx");
  ASSERT_EQ(KernelFileSeek(mail.handle(), 5, KERNEL_SEEK_START), 5u);
  EmlMessage message;
  PstFilterData filterData;
  EXPECT_EQ(ReadEmlMessage(message, mail.handle(), filterData, nullptr), StatusOk);
  EXPECT_EQ(message.body.view(), "x\0"sv);
}

}  // namespace
}  // namespace tarn
