#include "eml/MimePart.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Tarnbase/PlainKernel.h"
#include "eml/ReadMail.h"
#include "eml/TransferDecoding.h"
#include "support/FaultSweep.h"

namespace tarn {
namespace {

using namespace std::string_view_literals;
using test::AttachmentRecorder;

static_assert(ContentHtml == 0 && ContentPlain == 1 && ContentXml == 2 && ContentOfficeTheme == 3);
static_assert(ContentJavascript == 4 && ContentSvg == 5 && ContentPng == 6 && ContentGif == 7);
static_assert(ContentJpeg == 8 && ContentWmf == 9 && ContentCss == 10 && ContentPdf == 11);
static_assert(ContentOther == 12);
static_assert(DispositionNone == 0 && DispositionAttachment == 1);
static_assert(DispositionInline == 2 && DispositionOther == 3);

// One part that fills the whole file.
struct Parsed {
  EmlMessage message;
  EmlPart part;
  size_t cursor = 0;
  Status status;

  explicit Parsed(std::string_view text, const AttachmentRequest* request = nullptr,
                  test::FaultedWork* faulted = nullptr) {
    message.data = test::Sized(text);
    status = test::RunFaulted(faulted, [&] {
      const Status parsed = ParseMimePart(part, message, cursor, text.size(), request);
      return parsed.ok() ? EnsureDecoded(part) : parsed;
    });
  }

  // Reads these bytes, too, which come after the file's, into the same record.
  Status parseNext(std::string_view next) {
    part.start = message.file().size();
    message.data = test::Sized(std::string(message.file()).append(next));
    part.name.release();
    return ParseMimePart(part, message, cursor, message.file().size(), nullptr);
  }

  std::string raw() const { return std::string(part.raw); }
  std::string decoded() const { return std::string(part.decoded.view()); }
  std::string id() const {
    return part.contentId.length() == 0 ? "" : std::string(part.contentId.data());
  }
};

TEST(MimePart, PartWithCrLfHeaders) {
  const Parsed parsed(
      "\r\nContent-Type: text/html\r\nContent-Transfer-Encoding: base64\r\n\r\nPGI+\r\n");
  EXPECT_EQ(parsed.status, StatusOk);
  EXPECT_EQ(parsed.part.contentClass, ContentHtml);
  EXPECT_EQ(parsed.part.encoding, TransferBase64);
  EXPECT_EQ(parsed.raw(), "PGI+\r\n");
  EXPECT_EQ(parsed.decoded(), "<b>");
  EXPECT_TRUE(parsed.part.parsed);
  EXPECT_EQ(parsed.part.disposition, DispositionNone);
  EXPECT_EQ(parsed.part.locationLine.data(), nullptr);
  EXPECT_FALSE(parsed.part.name.hasBlock());
  EXPECT_EQ(parsed.id(), "");
  EXPECT_EQ(parsed.cursor, parsed.message.file().size());
}

TEST(MimePart, PartWithLfHeaders) {
  const Parsed parsed("\nContent-Type: text/plain\n\nabc\n");
  EXPECT_EQ(parsed.part.contentClass, ContentPlain);
  EXPECT_EQ(parsed.decoded(), "abc\n");
}

TEST(MimePart, FirstByteIsSteppedOverWhateverItIs) {
  EXPECT_EQ(Parsed("Content-Type: text/html\n\nabc").part.contentClass, ContentOther);
  EXPECT_EQ(Parsed("xContent-Type: text/html\n\nabc").part.contentClass, ContentHtml);
  EXPECT_EQ(Parsed("\rxContent-Type: text/html\n\nabc").part.contentClass, ContentHtml);
}

TEST(MimePart, EmptyPartHasAnEmptyContent) {
  for (const std::string_view text : {""sv, "\n"sv, "\r"sv, "\r\n"sv}) {
    const Parsed parsed(text);
    EXPECT_EQ(parsed.status, StatusOk);
    EXPECT_EQ(parsed.decoded(), "");
    EXPECT_EQ(parsed.part.contentClass, ContentOther);
    EXPECT_EQ(parsed.cursor, parsed.message.file().size());
  }
}

TEST(MimePart, WithoutAnEmptyLineTheHeaderEndsAtTheFirstCrLf) {
  EXPECT_EQ(Parsed("\r\nA: b\r\nC: d\r\ne").decoded(), "C: d\r\ne");
  EXPECT_EQ(Parsed("\nA: b\nC: d\ne").decoded(), "");
}

TEST(MimePart, WithoutContentTypeTheClassIsOtherAndNoNameIsLookedFor) {
  const Parsed parsed("\nX: name=a\n\nabc");
  EXPECT_EQ(parsed.part.contentClass, ContentOther);
  EXPECT_FALSE(parsed.part.name.hasBlock());
  EXPECT_EQ(parsed.decoded(), "abc");
}

TEST(MimePart, HeaderNameInsideAParameterCountsOnlyAtALineStart) {
  EXPECT_EQ(Parsed("\nX: a=\"Content-Type: text/html\"\n\n").part.contentClass, ContentOther);
  EXPECT_EQ(Parsed("\nX: a=\"\nContent-Type: text/html\"\n\n").part.contentClass, ContentHtml);
}

TEST(MimePart, BlanksButNoTabsBeforeTheTypeAreSkipped) {
  EXPECT_EQ(Parsed("\nContent-Type:   text/html\n\n").part.contentClass, ContentHtml);
  EXPECT_EQ(Parsed("\nContent-Type:text/html\n\n").part.contentClass, ContentHtml);
  EXPECT_EQ(Parsed("\nContent-Type:\ttext/html\n\n").part.contentClass, ContentOther);
}

TEST(MimePart, NameComesFromTheContentTypeOrAHeaderAfterIt) {
  EXPECT_STREQ(Parsed("\nContent-Type: image/png; name=\"a.png\"\n\n").part.name.data(), "a.png");
  EXPECT_STREQ(Parsed("\nContent-Type: image/png\nX: name=b.png\n\n").part.name.data(), "b.png");
  EXPECT_FALSE(Parsed("\nX: name=b.png\nContent-Type: image/png\n\n").part.name.hasBlock());
  EXPECT_FALSE(Parsed("\nContent-Type: image/png; filename=b.png\n\n").part.name.hasBlock());
  EXPECT_STREQ(Parsed("\nContent-Type: x; name==?utf-8?Q?a=2Eb?=\n\n").part.name.data(), "a.b");
  EXPECT_STREQ(Parsed("\nContent-Type: x; name=\"\"\n\n").part.name.data(), "");
}

TEST(MimePart, LastSegmentOfContentLocationIsTheName) {
  const Parsed parsed("\nContent-Type: image/png; name=x\nContent-Location: http://a/b/c.png\n\n");
  EXPECT_STREQ(parsed.part.name.data(), "c.png");
  EXPECT_EQ(parsed.part.locationLine, "Content-Location: http://a/b/c.png\n\n");
  EXPECT_STREQ(Parsed("\nContent-Location: c.png\r\nX: y/z\n\n").part.name.data(), "c.png");
  EXPECT_STREQ(Parsed("\nContent-Location: /c\n\n").part.name.data(), "c");
  EXPECT_STREQ(Parsed("\nContent-Location: a/\n\n").part.name.data(), "");
}

TEST(MimePart, ContentLocationValueLiesAtAFixedPlace) {
  EXPECT_STREQ(Parsed("\nContent-Location:abc\n\n").part.name.data(), "bc");
  EXPECT_STREQ(Parsed("\nContent-Location:  abc\n\n").part.name.data(), " abc");
  // After the header: empty, and an empty name is a name.
  EXPECT_STREQ(Parsed("\nContent-Type: x; name=n\nContent-Location:").part.name.data(), "");
}

TEST(MimePart, TransferEncodings) {
  EXPECT_EQ(Parsed("\nContent-Transfer-Encoding: quoted-printable\n\na=41=\r\nb").decoded(), "aAb");
  EXPECT_EQ(Parsed("\nContent-Transfer-Encoding: BASE64\n\nYWJj").decoded(), "abc");
  EXPECT_EQ(Parsed("\nContent-Transfer-Encoding: 7bit\n\nabc").decoded(), "+/vabc");
  EXPECT_EQ(Parsed("\nContent-Transfer-Encoding: 8bit\n\na=41").decoded(), "a=41");
  EXPECT_EQ(Parsed("\nContent-Transfer-Encoding: binary\n\na=41").decoded(), "a=41");
  EXPECT_EQ(Parsed("\nContent-Transfer-Encoding: x-uuencode\n\na=41").decoded(), "a=41");
  EXPECT_EQ(Parsed("\nX: y\n\na=41").decoded(), "a=41");
}

TEST(MimePart, TransferEncodingRightAfterTheColonIsMisread) {
  const Parsed parsed("\nContent-Transfer-Encoding:base64\n\nYWJj");
  EXPECT_EQ(parsed.part.encoding, TransferRaw);
  EXPECT_EQ(parsed.decoded(), "YWJj");
  EXPECT_EQ(Parsed("\nContent-Transfer-Encoding:  base64\n\nYWJj").decoded(), "YWJj");
  EXPECT_EQ(Parsed("\nContent-Transfer-Encoding:").part.encoding, TransferRaw);
}

TEST(MimePart, ContentIdIsBetweenTheBrackets) {
  EXPECT_EQ(Parsed("\nContent-ID: <a@b>\n\n").id(), "a@b");
  EXPECT_EQ(Parsed("\nContent-ID: x <a@b> y\n\n").id(), "a@b");
  EXPECT_EQ(Parsed("\nContent-ID: a@b\r\n\r\n").id(), "a@b");
  EXPECT_EQ(Parsed("\nContent-ID: a@b>\n\n").id(), "a@b");
  EXPECT_EQ(Parsed("\nContent-ID: <a@b\nX: >\n\n").id(), "a@b");
  // A closing bracket counts only after the opening one.
  EXPECT_EQ(Parsed("\nContent-ID: x> <a@b>\n\n").id(), "a@b");
  EXPECT_EQ(Parsed("\nContent-ID: <>\n\n").id(), "");
  EXPECT_EQ(Parsed("\nContent-ID:").id(), "");
}

TEST(MimePart, ContentIdLiesAtAFixedPlace) {
  EXPECT_EQ(Parsed("\nContent-ID:ab\n\n").id(), "b");
  EXPECT_EQ(Parsed("\nContent-ID:<ab>\n\n").id(), "ab");
  // One byte after the colon is the next line.
  EXPECT_EQ(Parsed("\nContent-ID:\nX: <c>\n\n").id(), "c");
}

TEST(MimePart, RecordIsClearedForTheNextPart) {
  Parsed parsed(
      "\nContent-Type: text/html; charset=us-ascii\nContent-ID: <a>\n"
      "Content-Disposition: inline\nContent-Location: b\n\nc");
  EXPECT_EQ(parsed.parseNext("\n\nd"), StatusOk);
  EXPECT_EQ(parsed.part.contentClass, ContentOther);
  EXPECT_EQ(parsed.part.disposition, DispositionNone);
  EXPECT_EQ(parsed.part.charset.kind, CharsetNone);
  EXPECT_EQ(parsed.part.locationLine.data(), nullptr);
  EXPECT_EQ(parsed.part.encoding, TransferRaw);
  EXPECT_EQ(parsed.id(), "");
}

TEST(MimePart, RecordWhoseNextPartFailsIsNotParsed) {
  Parsed parsed("\nContent-Type: text/html\n\nc");
  EXPECT_TRUE(parsed.part.parsed);
  const size_t cursor = parsed.cursor;
  PlainKernelFailAt(PlainKernelFaultMemory, 2);  // after the file the name
  EXPECT_EQ(parsed.parseNext("\nContent-Location: b\n\nd"), StatusOutOfMemory);
  PlainKernelFailAt(PlainKernelFaultMemory, 0);
  EXPECT_FALSE(parsed.part.parsed);
  EXPECT_FALSE(parsed.part.name.hasBlock());
  EXPECT_FALSE(parsed.part.decoded.hasBlock());
  EXPECT_EQ(parsed.cursor, cursor);
}

TEST(MimePart, DispositionIsAPrefixInAnyCase) {
  EXPECT_EQ(Parsed("\nContent-Disposition: Attachment; x\n\n").part.disposition,
            DispositionAttachment);
  EXPECT_EQ(Parsed("\nContent-Disposition: INLINEd\n\n").part.disposition, DispositionInline);
  EXPECT_EQ(Parsed("\nContent-Disposition: form-data\n\n").part.disposition, DispositionOther);
  EXPECT_EQ(Parsed("\nContent-Disposition:attachment\n\n").part.disposition, DispositionOther);
  EXPECT_EQ(Parsed("\nContent-Disposition:").part.disposition, DispositionOther);
}

TEST(MimePart, DispositionValueRunsOverFoldedLines) {
  AttachmentRecorder recorder;
  const Parsed parsed(
      "\r\nContent-Disposition: attachment;\r\n size=1;\r\n\tfilename=a.txt\r\nX: y\r\n\r\nabc",
      &recorder.request);
  EXPECT_EQ(parsed.status, StatusOk);
  ASSERT_EQ(recorder.attachments.size(), 1u);
  EXPECT_EQ(recorder.attachments[0].name, u"a.txt");
}

TEST(MimePart, FileNameOnALineThatIsNotFoldedIsNotTheDispositions) {
  AttachmentRecorder recorder;
  const Parsed parsed("\r\nContent-Disposition: attachment\r\nX: filename=a.txt\r\n\r\nabc",
                      &recorder.request);
  ASSERT_EQ(recorder.attachments.size(), 1u);
  EXPECT_FALSE(recorder.attachments[0].name.has_value());
}

TEST(MimePart, ReportedBytesAreDecodedButNotConverted) {
  AttachmentRecorder recorder;
  const Parsed parsed(
      "\nContent-Type: text/plain; charset=iso-8859-1\nContent-Disposition: inline\n\n\xE4",
      &recorder.request);
  ASSERT_EQ(recorder.attachments.size(), 1u);
  EXPECT_EQ(recorder.attachments[0].bytes, "\xE4");
  EXPECT_EQ(parsed.decoded(), "\xC3\xA4");
}

TEST(MimePart, ResultOfTheReportEndsThePart) {
  for (const Status result : {Status(StatusDone), Status(StatusFailed), Status(StatusReadFailed)}) {
    AttachmentRecorder recorder;
    recorder.results = {result};
    const Parsed parsed("\nContent-Type: x; name=n\nContent-Disposition: inline\n\nabc",
                        &recorder.request);
    EXPECT_EQ(parsed.status, result);
    EXPECT_FALSE(parsed.part.name.hasBlock());
    EXPECT_EQ(parsed.part.raw.data(), nullptr);
  }
}

TEST(MimePart, EmptyBase64Fails) {
  EXPECT_EQ(Parsed("\nContent-Transfer-Encoding: base64\n\n").status, StatusOutOfMemory);
}

TEST(MimePart, ReportReplacesTheFailureOfEmptyBase64) {
  AttachmentRecorder recorder;
  const Parsed parsed(
      "\nContent-Transfer-Encoding: base64\nContent-Disposition: attachment; filename=a\n\n",
      &recorder.request);
  EXPECT_EQ(parsed.status, StatusOk);
  ASSERT_TRUE(parsed.part.decoded.hasBlock());
  EXPECT_EQ(parsed.part.decoded.length(), 0u);
  ASSERT_EQ(recorder.attachments.size(), 1u);
  EXPECT_EQ(recorder.attachments[0].bytes, "");
  // A disposition that is not reported replaces it as well.
  EXPECT_EQ(Parsed("\nContent-Transfer-Encoding: base64\nContent-Disposition: other\n\n").status,
            StatusOk);
}

TEST(MimePart, Base64WithoutItsAlphabetIsEmptyAndNoFailure) {
  const Parsed parsed("\nContent-Transfer-Encoding: base64\n\n\r\n..\r\n");
  EXPECT_EQ(parsed.status, StatusOk);
  EXPECT_EQ(parsed.part.decoded.length(), 0u);
}

TEST(MimePart, EveryFailedAllocationFailsAndFreesThePart) {
  const std::string_view text =
      "\nContent-Type: text/html; name=n; charset=iso-8859-1\nContent-ID: <a>\n"
      "Content-Transfer-Encoding: base64\nContent-Disposition: attachment\n\n5A==";
  const auto round = [&](test::FaultedWork& faulted) {
    const Parsed parsed(text, nullptr, &faulted);
    EXPECT_EQ(parsed.status, faulted.isReached() ? StatusOutOfMemory : StatusOk);
    if (!faulted.isReached()) return;
    EXPECT_FALSE(parsed.part.name.hasBlock());
    EXPECT_EQ(parsed.part.raw.data(), nullptr);
    EXPECT_FALSE(parsed.part.decoded.hasBlock());
    EXPECT_EQ(parsed.part.decoded.length(), 0u);
  };
  const uint64_t calls =
      test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom);
  EXPECT_GT(calls, 3u);
  EXPECT_LT(calls, 48u);
}

TEST(ClassifyContent, EachTypeHasItsClass) {
  EXPECT_EQ(ClassifyContent("text/html"), 0u);
  EXPECT_EQ(ClassifyContent("text/plain"), 1u);
  EXPECT_EQ(ClassifyContent("text/xml"), 2u);
  EXPECT_EQ(ClassifyContent("application/vnd.ms-officetheme"), 3u);
  EXPECT_EQ(ClassifyContent("application/javascript"), 4u);
  EXPECT_EQ(ClassifyContent("image/svg"), 5u);
  EXPECT_EQ(ClassifyContent("image/png"), 6u);
  EXPECT_EQ(ClassifyContent("image/gif"), 7u);
  EXPECT_EQ(ClassifyContent("image/jpeg"), 8u);
  EXPECT_EQ(ClassifyContent("image/x-wmf"), 9u);
  EXPECT_EQ(ClassifyContent("text/css"), 10u);
  EXPECT_EQ(ClassifyContent("application/pdf"), 11u);
}

TEST(ClassifyContent, EveryOtherValueIsOther) {
  EXPECT_EQ(ClassifyContent("application/octet-stream"), 12u);
  EXPECT_EQ(ClassifyContent("image/jpg"), 12u);
  EXPECT_EQ(ClassifyContent("message/rfc822"), 12u);
  EXPECT_EQ(ClassifyContent("multipart/mixed"), 12u);
  EXPECT_EQ(ClassifyContent(" text/html"), 12u);
  EXPECT_EQ(ClassifyContent("text/htm"), 12u);
  EXPECT_EQ(ClassifyContent(""), 12u);
}

TEST(ClassifyContent, TypeIsAPrefixInAnyCase) {
  EXPECT_EQ(ClassifyContent("TEXT/Html; charset=x"), ContentHtml);
  EXPECT_EQ(ClassifyContent("text/plainest"), ContentPlain);
  EXPECT_EQ(ClassifyContent("image/svg+xml"), ContentSvg);
  EXPECT_EQ(ClassifyContent("IMAGE/PNG\r\n"), ContentPng);
}

}  // namespace
}  // namespace tarn
