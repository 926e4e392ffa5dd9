// fltGetAttachmentInfo and fltExtractAttachment.

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "Internal/Tarnclasses_.h"
#include "support/FakeHost.h"
#include "support/LeakCheck.h"
#include "support/LocalZone.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

class AttachmentRoad : public ::testing::Test {
  LocalZone zone_;
};

using Properties = std::map<std::u16string, std::u16string>;

Properties PropertiesOf(const AttachmentInfoItem& item) {
  Properties properties;
  for (uint64_t i = 0; i < item.propertyCount; ++i) {
    properties[item.properties[i].name] = item.properties[i].value;
  }
  return properties;
}

TEST_F(AttachmentRoad, ListsAttachmentsWithTheirProperties) {
  FakeHost host(kImageMail);
  ASSERT_EQ(host.attachmentInfo(), StatusOk);
  AttachmentInfoBlock* const block = host.listContext->block;
  EXPECT_EQ(block->reserved0, 0u);
  EXPECT_EQ(block->format, FormatEml);
  EXPECT_EQ(block->reserved1, 0u);
  EXPECT_EQ(block->itemSize, 88u);
  ASSERT_EQ(Copy(block->itemCount), 2u);

  const AttachmentInfoItem& image = block->items[0];
  EXPECT_EQ(image.number, 1u);
  EXPECT_EQ(std::u16string(image.name), u"pic.png");
  EXPECT_EQ(image.reserved0, nullptr);
  EXPECT_EQ(image.description, nullptr);
  EXPECT_EQ(image.size, 60u);
  EXPECT_EQ(image.creationTime, 0);
  EXPECT_EQ(image.modificationTime, 0);
  EXPECT_EQ(PropertiesOf(image), (Properties{{u"Content-Disposition", u"inline"},
                                             {u"MineType", u"image/png"},
                                             {u"Content-ID", u"pic@x"}}));
  EXPECT_EQ(image.reserved1, 0u);
  EXPECT_EQ(image.reserved2, 0u);

  const AttachmentInfoItem& report = block->items[1];
  EXPECT_EQ(report.number, 2u);
  EXPECT_EQ(std::u16string(report.name), u"report.pdf");
  EXPECT_EQ(std::u16string(report.description), u"The report");
  EXPECT_EQ(report.size, 24u);
  EXPECT_EQ(report.creationTime, 1795255200);
  EXPECT_EQ(report.modificationTime, 1795347005);
  EXPECT_EQ(PropertiesOf(report), (Properties{{u"Content-Disposition", u"attachment"},
                                              {u"MineType", u"application/pdf"}}));
  FreeAttachmentBlock(block);
}

TEST_F(AttachmentRoad, GivesAnEmptyListForAMessageWithoutAttachments) {
  FakeHost host(kPlainMail);
  ASSERT_EQ(host.attachmentInfo(), StatusOk);
  EXPECT_EQ(Copy(host.listContext->block->itemCount), 0u);
  EXPECT_EQ(Copy(host.listContext->block->items), nullptr);
  EXPECT_EQ(host.listContext->block->format, FormatEml);
  FreeAttachmentBlock(host.listContext->block);
}

TEST_F(AttachmentRoad, ListsAnAttachmentWithoutAName) {
  FakeHost host(kSampleFields +
                "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
                "--b\r\nContent-Type: text/plain\r\n\r\nHi\r\n"
                "--b\r\nContent-Disposition: attachment; filename*=utf-8''x\r\n\r\nbytes\r\n"
                "--b--\r\n");
  ASSERT_EQ(host.attachmentInfo(), StatusOk);
  AttachmentInfoBlock* const block = host.listContext->block;
  ASSERT_EQ(Copy(block->itemCount), 1u);
  EXPECT_EQ(block->items[0].name, nullptr);
  EXPECT_EQ(block->items[0].size, 5u);
  EXPECT_EQ(PropertiesOf(block->items[0]), (Properties{{u"Content-Disposition", u"attachment"}}));
  FreeAttachmentBlock(block);
}

TEST_F(AttachmentRoad, ExtractsToMemory) {
  FakeHost host(kImageMail);
  ASSERT_EQ(host.extract(1), StatusOk);
  EXPECT_EQ(
      std::string(static_cast<char*>(host.extractContext->data), Copy(host.extractContext->size)),
      kImageBytes);
  KernelFree(host.extractContext->data, TARN_HERE);
  host.extractContext->data = nullptr;
  ASSERT_EQ(host.extract(2), StatusOk);
  EXPECT_EQ(
      std::string(static_cast<char*>(host.extractContext->data), Copy(host.extractContext->size)),
      "%PDF-1.4 not much of one");
  KernelFree(host.extractContext->data, TARN_HERE);
}

TEST_F(AttachmentRoad, ExtractsToAFile) {
  FakeHost host(kImageMail);
  const std::u16string path = host.directory().wide() + u"/out";
  ASSERT_EQ(host.extract(2, path.c_str()), StatusOk);
  EXPECT_EQ(ReadWholeFile(path), "%PDF-1.4 not much of one");
  ASSERT_EQ(host.extract(1, path.c_str()), StatusOk);
  EXPECT_EQ(ReadWholeFile(path), kImageBytes);
  EXPECT_EQ(Copy(host.extractContext->data), nullptr);
}

TEST_F(AttachmentRoad, TakesTheFirstMessageWithoutOptions) {
  FakeHost host(kImageMail);
  host.listContext->options = nullptr;
  host.extractContext->options = nullptr;
  ASSERT_EQ(host.attachmentInfo(), StatusOk);
  EXPECT_EQ(Copy(host.listContext->block->itemCount), 2u);
  FreeAttachmentBlock(host.listContext->block);
  host.listContext->block = nullptr;
  const std::u16string path = host.directory().wide() + u"/out";
  ASSERT_EQ(host.extract(1, path.c_str()), StatusOk);
  EXPECT_EQ(ReadWholeFile(path), kImageBytes);
}

TEST_F(AttachmentRoad, LeavesTheOutputForANumberThatDoesNotExist) {
  FakeHost host(kImageMail);
  char untouched[4] = "abc";
  host.extractContext->data = untouched;
  host.extractContext->size = 4711;
  EXPECT_EQ(host.extract(3), StatusOk);
  EXPECT_EQ(Copy(host.extractContext->data), untouched);
  EXPECT_EQ(Copy(host.extractContext->size), 4711u);
  const std::u16string path = host.directory().wide() + u"/out";
  EXPECT_EQ(host.extract(3, path.c_str()), StatusOk);
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(AttachmentRoad, RefusesNumbersBelowOneBeforeTheFile) {
  FakeHost host(kImageMail);
  host.extractContext->path = u"/nowhere";
  EXPECT_EQ(host.extract(0), StatusBadArgument);
  EXPECT_EQ(host.extract(-1), StatusBadArgument);
  EXPECT_EQ(host.extract(1), StatusOpenFailed);
}

TEST_F(AttachmentRoad, RefusesFilesThatItCannotTake) {
  FakeHost shortFile("eleven byte");
  EXPECT_EQ(shortFile.attachmentInfo(), StatusReadFailed);
  EXPECT_EQ(shortFile.extract(1), StatusReadFailed);
  FakeHost other("Hello, world");
  EXPECT_EQ(other.attachmentInfo(), StatusNotSupported);
  EXPECT_EQ(other.extract(1), StatusNotSupported);
  other.listContext->path = u"/nowhere";
  EXPECT_EQ(other.attachmentInfo(), StatusOpenFailed);
  EXPECT_EQ(Copy(other.listContext->block), nullptr);
}

TEST_F(AttachmentRoad, MapsOutputFilesThatCannotBeMadeOrWritten) {
  FakeHost host(kImageMail);
  EXPECT_EQ(host.extract(1, u"/nowhere/at/all"), StatusCreateFailed);
  const std::u16string path = host.directory().wide() + u"/out";
  PlainKernelFailAt(PlainKernelFaultWrite, 1);
  EXPECT_EQ(host.extract(1, path.c_str()), StatusWriteFailed);
}

TEST_F(AttachmentRoad, RendersNothingAndLeavesNoImageFile) {
  FakeHost host(kImageMail);
  ASSERT_EQ(host.attachmentInfo(), StatusOk);
  FreeAttachmentBlock(host.listContext->block);
  EXPECT_EQ(host.directory().listing(), "mail");
}

// An image without a place in the body, and no closing delimiter: the walk ends with 2.
TEST_F(AttachmentRoad, PassesOnAWalkThatEndsWithTwo) {
  const std::string mail = kSampleFields +
                           "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
                           "--b\r\nContent-Type: text/html\r\n\r\n<p>Hi\r\n"
                           "--b\r\nContent-Type: image/png; name=a.png\r\n"
                           "Content-Disposition: attachment; filename=a.png\r\n\r\nbytes";
  FakeHost host(mail);
  EXPECT_EQ(host.info(), StatusDone);
  EXPECT_EQ(Copy(host.slot.data), nullptr);
  EXPECT_EQ(host.load(), StatusDone);
  EXPECT_TRUE(host.calls.empty());
  EXPECT_EQ(host.extract(7), StatusOk);
  EXPECT_EQ(Copy(host.extractContext->data), nullptr);
}

// Relied upon as it is: the array goes, and what its items own stays.
TEST_F(AttachmentRoad, LeavesWhatTheItemsOwnWhenTheReaderFails) {
  FakeHost host(kSampleFields +
                "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
                "--b\r\nContent-Type: text/html\r\n\r\n<p>Hi\r\n"
                "--b\r\nContent-Type: image/png; name=a.png\r\n"
                "Content-Disposition: attachment; filename=a.png\r\n\r\nbytes");
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  EXPECT_EQ(host.attachmentInfo(), StatusDone);
  EXPECT_EQ(Copy(host.listContext->block), nullptr);
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  EXPECT_EQ(after.liveBlocks, before.liveBlocks + 2);  // its name and its properties
  AllowBlocksLeft(2);
}

}  // namespace
}  // namespace tarn::test
