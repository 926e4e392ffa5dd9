#include "eml/PartWalker.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>
#include <tuple>

#include "Tarnbase/PlainKernel.h"
#include "eml/ReadMail.h"
#include "support/EmlBuilder.h"

namespace tarn {
namespace {

using namespace std::string_view_literals;
using test::AttachmentRecorder;
using test::EmlBuilder;
using test::EmlEncoding;
using test::EmlEntity;
using test::kCrLf;
using test::kLf;
using test::ReadMail;

EmlEntity Html(std::string_view text) { return EmlEntity::Leaf("text/html", text); }
EmlEntity Plain(std::string_view text) { return EmlEntity::Leaf("text/plain", text); }

ReadMail ReadParts(const std::vector<EmlEntity>& parts, std::string_view lineEnd = kCrLf,
                   const AttachmentRequest* request = nullptr) {
  EmlEntity body = EmlEntity::Multipart("mixed", "sep");
  for (const EmlEntity& part : parts) body.part(part);
  return ReadMail(EmlBuilder::Usual().lineEnd(lineEnd).body(body).build(), request);
}

TEST(BodyChoice, SecondOfTwoHtmlPartsIsShown) {
  for (const std::string_view lineEnd : {kCrLf, kLf}) {
    const ReadMail read = ReadParts({Html("one"), Html("two")}, lineEnd);
    EXPECT_EQ(read.status, StatusOk);
    EXPECT_EQ(read.body(), "two\0"sv);
    EXPECT_EQ(read.message.documentKind, DocumentHtml);
  }
}

TEST(BodyChoice, HtmlWinsOverPlainInEitherOrder) {
  EXPECT_EQ(ReadParts({Plain("p"), Html("h")}).body(), "h\0"sv);
  const ReadMail read = ReadParts({Html("h"), Plain("p")});
  EXPECT_EQ(read.body(), "h\0"sv);
  EXPECT_EQ(read.message.documentKind, DocumentHtml);
}

// The plain part is not shown, but its charset decides: the fields become UTF-8, and the HTML,
// which has agreed with its declaration, stays as it is.
TEST(BodyChoice, PlainPartAfterHtmlStillDecidesOnTheCharset) {
  const std::string_view page =
      "<meta http-equiv=Content-Type content=\"text/html; charset=iso-8859-1\">\xE4";
  EmlEntity body = EmlEntity::Multipart("alternative", "sep");
  body.part(EmlEntity::Leaf("text/html; charset=iso-8859-1", page));
  const EmlBuilder mail = EmlBuilder::Usual().field("Subject", "\xE4");
  const ReadMail alone(EmlBuilder(mail).body(body).build());
  EXPECT_EQ(alone.message.subject.text(), "\xE4");
  EXPECT_FALSE(alone.message.convertToUtf8);
  body.part(EmlEntity::Leaf("text/plain; charset=iso-8859-1", "\xE4"));
  const ReadMail both(EmlBuilder(mail).body(body).build());
  EXPECT_EQ(both.body(), std::string(page) + '\0');
  EXPECT_EQ(both.message.documentKind, DocumentHtml);
  EXPECT_EQ(both.message.subject.text(), "\xC3\xA4");
  EXPECT_TRUE(both.message.convertToUtf8);
}

TEST(BodyChoice, PlainReplacesAnEarlierPlain) {
  const ReadMail read = ReadParts({Plain("one"), Plain("two")});
  EXPECT_EQ(read.body(), "two\0"sv);
  EXPECT_EQ(read.message.documentKind, DocumentText);
}

TEST(BodyChoice, OtherPartIsTheBodyOnlyWhileThereIsNone) {
  const EmlEntity other = EmlEntity::Leaf("application/x", "o");
  const ReadMail first = ReadParts({other, EmlEntity::Leaf("", "second")});
  EXPECT_EQ(first.body(), "o\0"sv);
  EXPECT_EQ(first.message.documentKind, DocumentText);
  EXPECT_EQ(ReadParts({other, Plain("p")}).body(), "p\0"sv);
  EXPECT_EQ(ReadParts({other, Html("h")}).body(), "h\0"sv);
  EXPECT_EQ(ReadParts({Plain("p"), other}).body(), "p\0"sv);
}

TEST(BodyChoice, CharsetOfAPartThatIsNoTextDoesNotCount) {
  const ReadMail read = ReadParts({EmlEntity::Leaf("x/y; charset=iso-8859-1", "\xE4")});
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "\xE4\0"sv);
  EXPECT_FALSE(read.message.convertToUtf8);
}

TEST(BodyChoice, EmptyHtmlPartIsABody) {
  EXPECT_EQ(ReadParts({Html(""), Plain("p")}).body(), "\0"sv);
  EXPECT_EQ(ReadParts({EmlEntity::Leaf("application/x", ""), EmlEntity::Leaf("x/y", "o")}).body(),
            "\0"sv);
}

TEST(BodyChoice, PartsOfNoUseAreNoBody) {
  for (const std::string_view type :
       {"text/css", "image/svg", "application/javascript", "application/vnd.ms-officetheme",
        "application/pdf", "text/xml"}) {
    const ReadMail read = ReadParts({EmlEntity::Leaf(type, "x")});
    EXPECT_EQ(read.status, StatusOk) << type;
    EXPECT_EQ(read.message.body.data(), nullptr) << type;
  }
}

TEST(BodyChoice, PdfWithAFileNameIsReportedAndNoBody) {
  AttachmentRecorder recorder;
  const ReadMail read = ReadParts(
      {Html("h"),
       EmlEntity::Leaf("application/pdf", "%PDF").disposition("attachment; filename=\"a.pdf\"")},
      kCrLf, &recorder.request);
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "h\0"sv);
  EXPECT_EQ(read.message.attachmentCount, 1u);
  ASSERT_EQ(recorder.attachments.size(), 1u);
  EXPECT_EQ(recorder.attachments[0].name, u"a.pdf");
  EXPECT_EQ(recorder.attachments[0].bytes, "%PDF");
}

TEST(BodyChoice, DoctypeIsBlankedInItsExactSpelling) {
  EXPECT_EQ(ReadParts({Html("a<!DOCTYPE html>b<!DOCTYPE html>")}).body(),
            "a               b<!DOCTYPE html>\0"sv);
  EXPECT_EQ(ReadParts({Html("<!doctype html>")}).body(), "<!doctype html>\0"sv);
  EXPECT_EQ(ReadParts({Plain("<!DOCTYPE html>")}).body(), "               \0"sv);
  EXPECT_EQ(ReadParts({EmlEntity::Leaf("x/y", "<!DOCTYPE html>")}).body(), "<!DOCTYPE html>\0"sv);
}

TEST(BodyChoice, NulsOfAPartStay) { EXPECT_EQ(ReadParts({Html("a\0b"sv)}).body(), "a\0b\0"sv); }

TEST(PartWalker, SevenBitMarkStaysInTheBody) {
  EXPECT_EQ(ReadParts({Html("h").encoded(EmlEncoding::SevenBit)}).body(), "+/vh\0"sv);
}

TEST(PartWalker, EncodedPartsAreDecoded) {
  EXPECT_EQ(ReadParts({Html("a=b").encoded(EmlEncoding::QuotedPrintable)}).body(), "a=b\0"sv);
  EXPECT_EQ(ReadParts({Html("a=b").encoded(EmlEncoding::Base64)}).body(), "a=b\0"sv);
  EXPECT_EQ(ReadParts({Html("a=b").encoded(EmlEncoding::EightBit)}).body(), "a=b\0"sv);
}

TEST(PartWalker, NestedMultipartsAreWalkedAlike) {
  const ReadMail read = ReadParts(
      {EmlEntity::Multipart("related", "in")
           .part(EmlEntity::Multipart("alternative", "deep").part(Plain("p")).part(Html("h")))
           .part(EmlEntity::Leaf("text/css", "c").disposition("inline")),
       EmlEntity::Leaf("x/y", "o").disposition("attachment")});
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "h\0"sv);
  EXPECT_EQ(read.message.inlineCount, 1u);
  EXPECT_EQ(read.message.attachmentCount, 1u);
}

constexpr std::string_view kFields = "From: a\r\nTo: b\r\nDate: c\r\n";

std::string WithBoundary(std::string_view rest) {
  return std::string(kFields) + "Content-Type: multipart/mixed; boundary=\"sep\"\r\n\r\n" +
         std::string(rest);
}

TEST(PartWalker, DelimiterLosesItsCrForGood) {
  const ReadMail read(
      WithBoundary("\n--sep\nContent-Type: text/html\n\none\n--sep\n"
                   "Content-Type: text/html\n\ntwo\n--sep--\n"));
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "two\0"sv);
}

TEST(PartWalker, DelimiterKeepsItsCrWhileOneIsFound) {
  // Only a delimiter with CR LF is the following one, so that the first part holds the LF one.
  const ReadMail read(
      WithBoundary("\r\n--sep\r\nContent-Type: text/html\r\n\r\none\n--sep\n"
                   "Content-Type: text/html\n\ntwo\r\n--sep--\r\n"));
  EXPECT_EQ(read.body(), "one\n--sep\nContent-Type: text/html\n\ntwo\0"sv);
}

TEST(PartWalker, LfDelimiterAfterTheLastCrLfOneIsContent) {
  // The end of a part is looked for with the delimiter as it is by then: the last part that a CR LF
  // one starts runs to the end of the file, and the text after the LF one is no part.
  const ReadMail read(
      WithBoundary("\r\n--sep\r\nContent-Type: text/html\r\n\r\none\r\n--sep\r\n"
                   "Content-Type: text/css\r\n\r\nx\n--sep\nContent-Type: text/html\n\ntwo"));
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "one\0"sv);
}

TEST(PartWalker, NestedDelimiterThatLostItsCrLeavesTheOuterOneAlone) {
  const ReadMail read(
      WithBoundary("\r\n--sep\r\nContent-Type: multipart/x; boundary=in\r\n\r\n"
                   "\n--in\nContent-Type: text/plain\n\np\n--in--\n"
                   "\r\n--sep\r\nContent-Type: text/html\r\n\r\nh\r\n--sep--\r\n"));
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "h\0"sv);
}

TEST(PartWalker, DelimiterMatchesInAnyCase) {
  const ReadMail read(
      WithBoundary("\r\n--SEP\r\nContent-Type: text/html\r\n\r\none\r\n--sEp--\r\n"));
  EXPECT_EQ(read.body(), "one\0"sv);
}

TEST(PartWalker, DelimiterCountsAsAPrefixOfItsLine) {
  const ReadMail read(
      WithBoundary("\r\n--sepX\r\nContent-Type: text/html\r\n\r\none\r\n--sep- -\r\n\r\ntwo"));
  // "X" is the byte that is stepped over, and the CR after it ends the line.
  EXPECT_EQ(read.body(), "one\0"sv);
}

TEST(PartWalker, MissingClosingDelimiterIsNoFailure) {
  const ReadMail read(WithBoundary("\r\n--sep\r\nContent-Type: text/html\r\n\r\none"));
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "one\0"sv);
}

TEST(PartWalker, NothingAfterTheClosingDelimiterIsRead) {
  const ReadMail read(
      WithBoundary("\r\n--sep--\r\n\r\n--sep\r\nContent-Type: text/html\r\n\r\none"));
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.message.body.data(), nullptr);
}

TEST(PartWalker, DelimiterAtTheVeryEnd) {
  for (const std::string_view end : {"\r\n--sep"sv, "\r\n--sep-"sv, "\r\n--sep--"sv}) {
    const ReadMail read(
        WithBoundary("\r\n--sep\r\nContent-Type: text/html\r\n\r\none" + std::string(end)));
    EXPECT_EQ(read.status, StatusOk) << end;
    EXPECT_EQ(read.body(), "one\0"sv) << end;
  }
}

// Only "--" closes. With fewer than two bytes left a part of almost nothing follows, and the walk
// reaches the end of the file with the result that the image has left.
TEST(PartWalker, ClosingTakesTwoBytesThatAreThere) {
  const std::string image = "\r\n--sep\r\nContent-Type: image/png; name=a\r\n\r\nbytes";
  for (const auto& [end, status, body] : {std::tuple("\r\n--sep"sv, StatusDone, true),
                                          {"\r\n--sep-"sv, StatusDone, true},
                                          {"\r\n--sep--"sv, StatusOk, false}}) {
    const ReadMail withHtml(
        WithBoundary("\r\n--sep\r\nContent-Type: text/html\r\n\r\none" + image + std::string(end)));
    EXPECT_EQ(withHtml.status, status) << end;
    EXPECT_EQ(withHtml.body(), "one\0"sv) << end;
    // Without a body that last part becomes one, of no bytes.
    const ReadMail alone(WithBoundary(end));
    EXPECT_EQ(alone.status, StatusOk) << end;
    EXPECT_EQ(alone.message.body.data() != nullptr, body) << end;
    EXPECT_EQ(alone.message.body.length(), body ? 1u : 0u) << end;
  }
}

TEST(PartWalker, OneHyphenAfterADelimiterClosesNothing) {
  for (const std::string_view after : {"-"sv, "-x"sv, "x-"sv}) {
    const ReadMail read(WithBoundary("\r\n--sep" + std::string(after) +
                                     "\r\nContent-Type: text/html\r\n\r\none\r\n--sep--"));
    EXPECT_EQ(read.status, StatusOk) << after;
    EXPECT_NE(read.message.body.data(), nullptr) << after;
  }
}

TEST(PartWalker, NoDelimiterAtAllGivesNoBody) {
  const ReadMail read(WithBoundary("nothing to part"));
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.message.body.data(), nullptr);
}

TEST(PartWalker, AdjacentDelimitersMakeEmptyParts) {
  const ReadMail read(WithBoundary("\r\n--sep\r\n--sep\r\n--sep\r\n\r\none\r\n--sep--"));
  EXPECT_EQ(read.status, StatusOk);
  // The first empty part is of no known type, and so is the body until a text part comes.
  EXPECT_EQ(read.body(), "\0"sv);
}

TEST(PartWalker, EmbeddedMessageIsNotOpened) {
  for (const std::string_view type : {"message/rfc822"sv, "Message/RFC822"sv}) {
    const ReadMail read(WithBoundary("\r\n--sep\r\nContent-Type: " + std::string(type) +
                                     "; boundary=in\r\n\r\n"
                                     "\r\n--in\r\nContent-Type: text/html\r\n\r\nh\r\n--in--"
                                     "\r\n--sep--"));
    EXPECT_EQ(read.status, StatusOk);
    EXPECT_EQ(read.body(), "\r\n--in\r\nContent-Type: text/html\r\n\r\nh\r\n--in--\0"sv);
    EXPECT_EQ(read.message.documentKind, DocumentText);
  }
}

TEST(PartWalker, TypeOfAnEmbeddedMessageMayBeAnywhereInThePart) {
  // The line is that of a part inside, but it keeps the outer part closed.
  const ReadMail read(
      WithBoundary("\r\n--sep\r\nX: boundary=in\r\n\r\n"
                   "\r\n--in\r\nContent-Type: message/rfc822\r\n\r\nq\r\n--in--\r\n--sep--"));
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "\r\n--in\r\nContent-Type: message/rfc822\r\n\r\nq\r\n--in--\0"sv);
  EXPECT_EQ(read.message.documentKind, DocumentText);
}

TEST(PartWalker, TypeOfAnEmbeddedMessageAfterThePartDoesNotCount) {
  const ReadMail read(
      WithBoundary("\r\n--sep\r\nX: boundary=in\r\n\r\n"
                   "\r\n--in\r\n\r\nq\r\n--in--\r\n--sep\r\nContent-Type: message/rfc822\r\n\r\n"
                   "r\r\n--sep--"));
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "q\0"sv);
}

TEST(PartWalker, EmbeddedMessageOfAnUnusualSpellingIsOpened) {
  // The type is looked for exactly one byte after the colon.
  const ReadMail read(
      WithBoundary("\r\n--sep\r\nContent-Type:message/rfc822; boundary=in\r\n\r\n"
                   "\r\n--in\r\nContent-Type: text/html\r\n\r\nh\r\n--in--\r\n--sep--"));
  EXPECT_EQ(read.body(), "h\0"sv);
}

TEST(PartWalker, BoundaryInAnyHeaderOpensAMultipart) {
  const ReadMail read(
      WithBoundary("\r\n--sep\r\nContent-Type: text/plain\r\nX: boundary=\"in\"\r\n\r\n"
                   "\r\n--in\r\nContent-Type: text/html\r\n\r\nh\r\n--in--\r\n--sep--"));
  EXPECT_EQ(read.body(), "h\0"sv);
}

TEST(PartWalker, NestedMultipartEndsWithItsPart) {
  // The inner multipart is not closed, and ends where the outer delimiter is.
  const ReadMail read(WithBoundary(
      "\r\n--sep\r\nContent-Type: x/y; boundary=in\r\n\r\n\r\n--in\r\n\r\nb\r\n--sep\r\n"
      "Content-Type: text/html\r\n\r\nh\r\n--in\r\n\r\nc\r\n--sep--"));
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "h\r\n--in\r\n\r\nc\0"sv);
}

TEST(PartWalker, FailureOfANestedWalkEndsTheOuterOne) {
  const ReadMail read = ReadParts(
      {Html("h"), EmlEntity::Multipart("x", "in").part(Plain("").encoded(EmlEncoding::Base64)),
       Html("late")});
  EXPECT_EQ(read.status, StatusOutOfMemory);
  EXPECT_EQ(read.body(), "h\0"sv);
}

TEST(PartWalker, CallbackEndsTheWalk) {
  for (const Status result :
       {Status(StatusDone), Status(StatusFailed), Status(StatusCreateFailed)}) {
    AttachmentRecorder recorder;
    recorder.results = {StatusOk, result};
    const EmlEntity attachment = EmlEntity::Leaf("text/css", "c").disposition("attachment");
    const ReadMail read =
        ReadParts({Html("h"), attachment, EmlEntity::Multipart("x", "in").part(attachment),
                   attachment, Html("late")},
                  kCrLf, &recorder.request);
    EXPECT_EQ(read.status, result);
    EXPECT_EQ(recorder.attachments.size(), 2u);
    EXPECT_EQ(read.body(), "h\0"sv);
  }
}

TEST(PartWalker, InlinePartsAndAttachmentsShareOneSeriesOfNumbers) {
  AttachmentRecorder recorder;
  recorder.request.index = 3;
  const ReadMail read = ReadParts(
      {EmlEntity::Leaf("text/css", "1").disposition("inline"), EmlEntity::Leaf("text/css", "-"),
       EmlEntity::Leaf("text/css", "2").disposition("attachment"),
       EmlEntity::Leaf("text/css", "3").disposition("inline"),
       EmlEntity::Leaf("text/css", "4").disposition("attachment")},
      kCrLf, &recorder.request);
  EXPECT_EQ(read.status, StatusOk);
  ASSERT_EQ(recorder.attachments.size(), 1u);
  EXPECT_EQ(recorder.attachments[0].bytes, "3");
  EXPECT_EQ(read.message.inlineCount, 2u);
  EXPECT_EQ(read.message.attachmentCount, 2u);
}

TEST(PartWalker, CursorAtOrAfterTheEndWalksNothing) {
  EmlMessage message;
  message.data = test::Sized("\r\n\r\nx");
  InlineImageContext context;
  context.body = &message.body;
  SearchBudget budget(1);
  for (const size_t cursor : {5U, 6U, 7U}) {
    EXPECT_EQ(WalkMimeParts(message, cursor, "", {context, budget}, nullptr), StatusOk);
    EXPECT_FALSE(message.body.hasBlock());
  }
}

}  // namespace
}  // namespace tarn
