// MSG files through the exports: every kind of document in nine languages on both routes, the
// attachments, and embedded messages that open again.

#include <gtest/gtest.h>

#include "Internal/Tarnclasses_.h"
#include "MsgSamples.h"
#include "support/FakeHost.h"
#include "support/HeaderRows.h"
#include "support/LocalZone.h"
#include "support/RtfCompressor.h"

namespace tarn::test {
namespace {

std::string MsgHtmlBlock(const HeaderLabels& labels) {
  return HtmlBlock(MailHtmlRow(labels.from, "Ann &lt;ann@example.com&gt;") +
                   MailHtmlRow(labels.sent, "Sat Nov 21, 2026 10:00 AM") +
                   MailHtmlRow(labels.to, "Bob") + MailHtmlRow(labels.subject, "Hello") +
                   MailHtmlRow(labels.importance, labels.high));
}

std::string MsgTextRow(const std::string& label, const std::string& value) {
  return label + "\t" + value + "\r\n";
}

// The bytes that the length of a text document counts.
std::string Counted(const std::string& text) {
  return ("\xEF\xBB\xBF" + text).substr(0, text.size() + 1);
}

std::string PlainDocument(const HeaderLabels& labels) {
  return Counted(MsgTextRow(labels.from, "Ann <ann@example.com>") +
                 MsgTextRow(labels.sent, "Sat Nov 21, 2026 10:00 AM") +
                 MsgTextRow(labels.to, "Bob") + MsgTextRow(labels.subject, "Hello") +
                 MsgTextRow(labels.importance, labels.high) + "\r\nPlain body");
}

class MsgRoad : public ::testing::Test {
 protected:
  LocalZone zone_;
};

// The document on the current route, by fltInfo and by fltLoad.
std::string DocumentOf(const std::string& file, int32_t textOnly = 0) {
  FakeHost host(file);
  host.infoContext->textOnly = textOnly;
  EXPECT_EQ(host.info(), StatusOk);
  host.clearSlot();
  host.loadContext->textOnly = textOnly;
  EXPECT_EQ(host.load(), StatusOk);
  EXPECT_EQ(host.directory().listing(), "mail");
  if (host.calls.size() != 2) return "no two documents";
  EXPECT_EQ(host.calls[0].document, host.calls[1].document);
  EXPECT_EQ(host.calls[0].info.format, host.calls[1].info.format);
  EXPECT_EQ(host.hostInfo->format, FormatMsg);
  return host.calls[0].document;
}

TEST_F(MsgRoad, MakesHtmlInEveryLanguage) {
  MsgBuilder msg = PlainMsg();
  msg.binary(0x1013, kMsgHtml);
  const std::string file = msg.write();
  for (const HeaderLabels& labels : kHeaderLabels) {
    PlainKernelSetLanguage(labels.language);
    const std::string expected =
        "<html><head><meta http-equiv=Content-Type content=\"text/html; charset=utf-8\"></head>"
        "<body>" +
        MsgHtmlBlock(labels) + "<p>Hi</p></body></html>";
    PlainKernelSetIoMode(0);
    EXPECT_EQ(DocumentOf(file), expected) << labels.language;
    // From memory the length counts the NUL of the declaration.
    PlainKernelSetIoMode(3);
    EXPECT_EQ(DocumentOf(file), expected + '\0') << labels.language;
    for (const int32_t ioMode : {0, 3}) {
      PlainKernelSetIoMode(ioMode);
      EXPECT_EQ(DocumentOf(file, 1), PlainDocument(labels)) << labels.language;
    }
  }
}

TEST_F(MsgRoad, MakesTextInEveryLanguageWithAndWithoutTheFlag) {
  const std::string file = PlainMsg().write();
  for (const HeaderLabels& labels : kHeaderLabels) {
    for (const int32_t ioMode : {0, 3}) {
      for (const int32_t textOnly : {0, 1}) {
        PlainKernelSetLanguage(labels.language);
        PlainKernelSetIoMode(ioMode);
        EXPECT_EQ(DocumentOf(file, textOnly), PlainDocument(labels)) << labels.language;
      }
    }
  }
}

TEST_F(MsgRoad, MakesRtf) {
  MsgBuilder msg = PlainMsg();
  msg.binary(0x1009, PackRtf(kMsgRtf));
  const std::string expected =
      "{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}\r\n" +
      MailRtfRow("From:      ", "Ann <ann@example.com>") +
      MailRtfRow("Sent:      ", "Sat Nov 21, 2026 10:00 AM") + MailRtfRow("To:        ", "Bob") +
      MailRtfRow("Subject:   ", "Hello") + MailRtfRow("Importance:", "High") +
      "\\pard \\ltrpar\\ql \\li0\\ri0\\widctlpar\\wrapdefault\\aspalpha\\aspnum\\faauto"
      "\\adjustright\\rin0\\lin0\\itap0 {\\rtlch\\fcs1 \\af1 \\ltrch\\fcs0 \\insrsid5716485 \\par }"
      "\\pard Hi\\par}";
  for (const int32_t ioMode : {0, 3}) {
    PlainKernelSetIoMode(ioMode);
    EXPECT_EQ(DocumentOf(msg.write()), expected);
    EXPECT_EQ(DocumentOf(msg.write(), 1), PlainDocument(kEnglishLabels));
  }
  // In every language it is RTF with the same body.
  for (const HeaderLabels& labels : kHeaderLabels) {
    PlainKernelSetLanguage(labels.language);
    const std::string document = DocumentOf(msg.write());
    EXPECT_EQ(document.substr(0, 11), "{\\rtf1\\ansi");
    EXPECT_TRUE(document.ends_with("\\pard Hi\\par}")) << document;
  }
}

TEST_F(MsgRoad, TellsTheSiblingWhatTheDocumentIs) {
  MsgBuilder html = PlainMsg();
  html.binary(0x1013, kMsgHtml);
  MsgBuilder rtf = PlainMsg();
  rtf.binary(0x1009, PackRtf(kMsgRtf));
  struct Case {
    std::string file;
    int32_t ioMode;
    int32_t textOnly;
    Route route;
    int32_t sibling;
  };
  const Case cases[] = {
      {html.write(), 0, 0, Route::InfoByName, SiblingHtml},
      {html.write(), 3, 0, Route::InfoFromMemory, SiblingHtml},
      {html.write(), 0, 1, Route::InfoFromMemory, SiblingText},
      {rtf.write(), 0, 0, Route::InfoFromMemory, SiblingRtf},
      {rtf.write(), 3, 1, Route::InfoFromMemory, SiblingText},
      {PlainMsg().write(), 0, 0, Route::InfoFromMemory, SiblingText},
  };
  for (const Case& one : cases) {
    PlainKernelSetIoMode(one.ioMode);
    FakeHost host(one.file);
    host.infoContext->textOnly = one.textOnly;
    ASSERT_EQ(host.info(), StatusOk);
    EXPECT_EQ(host.calls[0].route, one.route);
    EXPECT_EQ(host.calls[0].info.format, one.sibling);
  }
}

TEST_F(MsgRoad, WritesTheAddressEvenWhenThereIsNone) {
  MsgBuilder msg;
  msg.text(0x0C1A, u"Ann").text(0x1000, u"Body");
  EXPECT_EQ(DocumentOf(msg.write()), Counted("From:      \tAnn <>\r\nBody"));
  msg.text(0x5D01, u"/O=EXAMPLE/CN=ANN");
  EXPECT_EQ(DocumentOf(msg.write()), Counted("From:      \tAnn\r\nBody"));
}

TEST_F(MsgRoad, NamesTheAuthorAfterTheSender) {
  PlainKernelSetIoMode(3);
  MsgBuilder msg;
  msg.text(0x0C1A, u"Ann").text(0x004D, u"Eve").text(0x5D01, u"ann@example.com");
  msg.binary(0x1013, "<html>Hi</html>");
  EXPECT_NE(DocumentOf(msg.write()).find(">Ann on behalf of Eve</span>"), std::string::npos);
}

TEST_F(MsgRoad, PutsImagesIntoTheDocument) {
  const std::string file = AttachedMsg().write();
  const std::string front = "<html><body>" + MsgHtmlBlock(kEnglishLabels) + "<img src=\"";
  PlainKernelSetIoMode(3);
  EXPECT_EQ(DocumentOf(file),
            front + "data:image;base64," + MsgImageBase64() + "\"></body></html>");
  PlainKernelSetIoMode(0);
  EXPECT_EQ(DocumentOf(file), front + "one@x_a.png\"></body></html>");
  FakeHost host(file);
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_NE(host.calls[0].besideFiles.find("/one@x_a.png"), std::string::npos);
  EXPECT_EQ(Copy(host.hostInfo->attachmentCount), 3);
}

TEST_F(MsgRoad, TellsTheHostHowImagesFared) {
  PlainKernelSetIoMode(3);
  MsgBuilder msg = PlainMsg();
  msg.binary(0x1013, "<html><img src=\"a.png\"></html>").attachment(u"a.png", "");
  FakeHost host(msg.write());
  host.loadContext->status = 1;
  ASSERT_EQ(host.load(), StatusOk);
  EXPECT_EQ(Copy(host.loadContext->status), StatusBadArgument);
}

TEST_F(MsgRoad, RefusesWhatIsNoMessage) {
  const std::string magic = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
  for (const std::string& file :
       {magic + "1234", magic + std::string(600, '\xFF'), magic + std::string(10, '\0')}) {
    for (const int32_t textOnly : {0, 1}) {
      FakeHost host(file);
      host.infoContext->textOnly = textOnly;
      EXPECT_EQ(host.info(), StatusNotSupported);
      host.loadContext->textOnly = textOnly;
      EXPECT_EQ(host.load(), StatusNotSupported);
      EXPECT_TRUE(host.calls.empty());
    }
  }
}

// --------------------------------------------------------------------------------- attachments

std::string Extracted(const std::string& file, int32_t number) {
  FakeHost host(file);
  EXPECT_EQ(host.extract(number), StatusOk);
  void* const data = host.extractContext->data;
  if (data == nullptr) return "(none)";
  std::string bytes(static_cast<const char*>(data), Copy(host.extractContext->size));
  KernelFree(data, TARN_HERE);
  return bytes;
}

TEST_F(MsgRoad, ListsAttachments) {
  FakeHost host(AttachedMsg().write());
  ASSERT_EQ(host.attachmentInfo(), StatusOk);
  AttachmentInfoBlock* const block = host.listContext->block;
  EXPECT_EQ(block->format, FormatMsg);
  ASSERT_EQ(Copy(block->itemCount), 3u);
  const AttachmentInfoItem& image = block->items[0];
  EXPECT_EQ(std::u16string(image.name), u"a.png");
  EXPECT_EQ(image.size, 0u);
  EXPECT_EQ(image.creationTime, 1795255200);
  EXPECT_EQ(image.modificationTime, 1795255260);
  ASSERT_EQ(image.propertyCount, 2u);
  EXPECT_EQ(std::u16string(image.properties[0].name), u"Content-ID");
  EXPECT_EQ(std::u16string(image.properties[0].value), u"one@x");
  EXPECT_EQ(std::u16string(image.properties[1].name), u"MimeType");
  EXPECT_EQ(std::u16string(image.properties[1].value), u"image/png");
  EXPECT_EQ(std::u16string(block->items[1].name), u"report.pdf");
  EXPECT_EQ(block->items[1].propertyCount, 0u);
  EXPECT_EQ(block->items[1].creationTime, 0);
  EXPECT_EQ(std::u16string(block->items[2].name), u"Inner message");
  EXPECT_EQ(block->items[2].number, 3u);
  FreeAttachmentBlock(block);
  EXPECT_EQ(host.directory().listing(), "mail");
}

TEST_F(MsgRoad, ExtractsToMemoryAndToFiles) {
  const std::string file = AttachedMsg().write();
  EXPECT_EQ(Extracted(file, 1), kMsgImage);
  EXPECT_EQ(Extracted(file, 2), "%PDF-1.4 not much of one");
  EXPECT_EQ(Extracted(file, 4), "(none)");
  FakeHost host(file);
  const std::u16string path = host.directory().wide() + u"/out";
  for (const auto& [number, bytes] :
       {std::pair(1, kMsgImage), std::pair(2, std::string("%PDF-1.4 not much of one")),
        std::pair(3, Extracted(file, 3))}) {
    ASSERT_EQ(host.extract(number, path.c_str()), StatusOk);
    EXPECT_EQ(ReadWholeFile(path), bytes);
  }
}

TEST_F(MsgRoad, ListsNothingOfAFileThatDoesNotLoad) {
  FakeHost host("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1 and nothing else");
  ASSERT_EQ(host.attachmentInfo(), StatusOk);
  EXPECT_EQ(Copy(host.listContext->block->itemCount), 0u);
  FreeAttachmentBlock(host.listContext->block);
  EXPECT_EQ(host.extract(1), StatusOk);
  EXPECT_EQ(Copy(host.extractContext->data), nullptr);
}

TEST_F(MsgRoad, OpensAnExtractedMessageAgain) {
  PlainKernelSetIoMode(3);
  const std::string inner = Extracted(AttachedMsg().write(), 3);
  EXPECT_EQ(DocumentOf(inner), Counted("From:      \tEve <>\r\n"
                                       "Sent:      \tSat Nov 21, 2026 10:00 AM\r\n"
                                       "Subject:   \tInner\r\n\r\nInner body"));
  FakeHost host(inner);
  ASSERT_EQ(host.attachmentInfo(), StatusOk);
  EXPECT_EQ(Copy(host.listContext->block->itemCount), 0u);
  FreeAttachmentBlock(host.listContext->block);
}

// Relied upon: a message that ends in a storage comes out with its streams and nothing that leads
// to them, and the call succeeds.
TEST_F(MsgRoad, ExtractsAMessageThatEndsInAStorageWithoutAHeader) {
  MsgBuilder msg = PlainMsg();
  MsgBuilder& inner = msg.attachment().text(0x3707, u"Inner").embedded();
  inner.text(0x1000, u"Inner body").recipient(u"Bob", u"bob@example.com");
  const std::string bytes = Extracted(msg.write(), 1);
  ASSERT_GT(bytes.size(), 2048u);
  EXPECT_EQ(bytes.substr(0, 512), std::string(512, '\0'));
  EXPECT_NE(bytes.find(WideBytes(u"Inner body")), std::string::npos);
  // To the filter it is a mail file without a body.
  FakeHost host(bytes);
  EXPECT_EQ(host.info(), StatusNotSupported);
}

TEST_F(MsgRoad, PassesOverAnAttachmentThatIsEmpty) {
  MsgBuilder msg = PlainMsg();
  msg.attachment().text(0x3707, u"nothing");
  msg.attachment(u"b", "bytes");
  EXPECT_EQ(Extracted(msg.write(), 1), "(none)");
  EXPECT_EQ(Extracted(msg.write(), 2), "bytes");
}

}  // namespace
}  // namespace tarn::test
