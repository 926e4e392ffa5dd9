// What the calls do with fields of the document record that no mail file sets, and what the driver
// does with a body on its way into the record.

#include <gtest/gtest.h>

#include "Internal/PstFilterData.h"
#include "support/FakeHost.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

PstFilterData& RecordOf(FakeHost& host) { return *static_cast<PstFilterData*>(host.slot.data); }

TEST(RecordRoad, LoadHandsTheFirstAttachmentFailureOn) {
  FakeHost host(kPlainMail);
  ASSERT_EQ(host.info(), StatusOk);
  RecordOf(host).attachmentStatus = Status::FromCode(-55);
  ASSERT_EQ(host.load(), StatusOk);
  EXPECT_EQ(host.loadContext->status, -55);
  // A status that is not 1 stays.
  host.loadContext->status = -7;
  ASSERT_EQ(host.load(), StatusOk);
  EXPECT_EQ(host.loadContext->status, -7);
}

TEST(RecordRoad, InfoAnswersTheMessageCountOfAStoreAlone) {
  FakeHost host(kPlainMail);
  ASSERT_EQ(host.info(), StatusOk);
  RecordOf(host).messageCount = 7;
  ASSERT_EQ(host.info(), StatusOk);  // the host's field is untouched, which info() checks

  RecordOf(host).readerFormat = FormatPst;
  RecordOf(host).sniffedFormat = FormatPst;
  host.rewriteFile("!BDN12345678");
  host.moreInfoOut = {{2280, 4}};
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.hostInfo->messageCount, 7);
  EXPECT_EQ(host.hostInfo->format, FormatPst);
}

TEST(RecordRoad, InfoRefusesARecordThatNoReaderFilled) {
  FakeHost host(kPlainMail);
  ASSERT_EQ(host.info(), StatusOk);
  RecordOf(host).readerFormat = FormatNone;
  EXPECT_EQ(host.info(), StatusNotSupported);
}

TEST(RecordRoad, LoadPassesAForeignItemOnForMessageNumberZero) {
  char other[64] = "another filter's item";
  FakeHost host(kPlainMail);
  ASSERT_EQ(host.load(), StatusOk);
  EXPECT_EQ(host.calls.back().options.flags & HOST_LOAD_OPTIONS_HAS_DATA, 0u);

  host.slot.data = other;
  host.slot.dataSize = 5;
  host.slot.dataFormat = 12;
  ASSERT_EQ(host.load(), StatusOk);
  EXPECT_EQ(host.calls.back().options.flags & HOST_LOAD_OPTIONS_HAS_DATA, 0u);
  host.loadContext->messageNumber = 0;
  ASSERT_EQ(host.load(), StatusOk);
  EXPECT_EQ(Copy(host.calls.back().options.data), other);
  EXPECT_EQ(host.calls.back().options.dataFormat, 12);
  host.slot.data = nullptr;
}

// Both finishing passes run on text as well as on HTML.
TEST(RecordRoad, BodiesAreScrubbedAndDeclared) {
  FakeHost host(kSampleFields +
                "Content-Type: text/plain\r\nContent-Transfer-Encoding: 8bit\r\n\r\n"
                "x<head>y &#2;&#11;z");
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.calls[0].document,
            kSampleTextBlock +
                "x<head><meta http-equiv=Content-Type content=\"text/html; charset=utf-8\">y "
                "         z" +
                std::string(2, '\0'));
}

TEST(RecordRoad, AMailWithoutABodyIsRefusedByEveryCall) {
  FakeHost host(kSampleFields +
                "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
                "--b\r\nContent-Type: application/pdf\r\n"
                "Content-Disposition: attachment; filename=a.pdf\r\n\r\n%PDF\r\n--b--\r\n");
  EXPECT_EQ(host.info(), StatusNotSupported);
  EXPECT_EQ(host.load(), StatusNotSupported);
  EXPECT_EQ(host.extract(2), StatusNotSupported);
  EXPECT_TRUE(host.calls.empty());
}

// An image is on disk by then; it goes with the record.
TEST(RecordRoad, ARendererThatFailsLeavesNothing) {
  std::string mail = kImageMail;
  mail.replace(mail.find("<body>"), 6, "<body ");
  mail.replace(mail.find("cid:pic@x\"></body></html>"), 25, "cid:pic@x\"               ");
  FakeHost host(mail);
  EXPECT_EQ(host.info(), StatusNotSupported);
  EXPECT_TRUE(host.calls.empty());
  EXPECT_EQ(host.directory().listing(), "mail");
}

}  // namespace
}  // namespace tarn::test
