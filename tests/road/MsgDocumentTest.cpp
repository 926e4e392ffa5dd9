// What a message of an MSG file becomes: the kind by its first bytes, the wrap, the odd lengths of
// text, and that a failed road leaves nothing.

#include "FileFormats/Pst/MsgDocument.h"

#include <gtest/gtest.h>

#include "FileFormats/Pst/MessageDriver.h"
#include "MsgSamples.h"
#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"
#include "support/LocalZone.h"
#include "support/RtfCompressor.h"
#include "support/TempDirectory.h"

namespace tarn::test {
namespace {

struct Document {
  explicit Document(const std::string& file, bool textOnly = false,
                    const AttachmentRequest* request = nullptr) {
    const TempDirectory directory;
    const std::u16string path = directory.write("mail.msg", file).u16string();
    DocumentRequest wanted;
    wanted.path = path.c_str();
    wanted.textOnly = textOnly;
    wanted.attachments = request;
    DocumentResult made;
    status = ReadMsgDocument(wanted, data, made);
    kind = made.kind;
    bytes = data.document.view();
  }
  explicit Document(const MsgBuilder& msg, bool textOnly = false)
      : Document(msg.write(), textOnly) {}

  PstFilterData data;
  TarnDocumentKind kind = DocumentNone;
  Status status = StatusFailed;
  std::string bytes;
};

// The HTML document of a body; without header fields, so that no rows go into it.
std::string Html(const std::string& body) {
  MsgBuilder msg;
  msg.binary(0x1013, body).text(0x1000, u"Plain");
  Document document(msg);
  EXPECT_EQ(document.status, StatusOk);
  EXPECT_EQ(document.kind, DocumentHtml);
  EXPECT_EQ(document.data.document.data()[document.data.document.length()], '\0');
  return document.bytes;
}

TEST(MsgDocument, IsCompleteWithAnHtmlTagFirst) {
  for (const char* body : {"<html><p>Hi</html>", "  \r\n<HtMl><p>Hi", "\n\n <HTML", "<htmlx"}) {
    EXPECT_EQ(Html(body), body);
  }
}

TEST(MsgDocument, IsWrappedWithAnythingElseFirst) {
  for (const char* body : {"<!DOCTYPE html><html><p>Hi</html>", "<!-- --><html>", "<ab", "<htm",
                           "<", "   ", "\r\n", "\t<html>", "Hi <html>", "< html>", "<p>"}) {
    EXPECT_EQ(Html(body), "<html>" + std::string(body) + "</html>");
  }
}

TEST(MsgDocument, OfOneNulIsAnEmptyElement) {
  EXPECT_EQ(Html(std::string(1, '\0')), "<html></html>");
  // One terminator is dropped, no more.
  EXPECT_EQ(Html(std::string("<p>\0\0", 5)), std::string("<html><p>\0</html>", 17));
}

TEST(MsgDocument, GetsACharsetDeclarationAndItsNul) {
  const std::string meta = "<meta http-equiv=Content-Type content=\"text/html; charset=utf-8\">";
  EXPECT_EQ(Html("<html><head></head>"), "<html><head>" + meta + "</head>" + '\0');
  EXPECT_EQ(Html("<p><head></head>"), "<html><p><head>" + meta + "</head></html>" + '\0');
  EXPECT_EQ(Html("<html><HEAD></HEAD>"), "<html><HEAD></HEAD>");
  EXPECT_EQ(Html("<html><head></head>charset"), "<html><head></head>charset");
}

// A declaration makes the document anew, with room for one NUL more than its length counts; without
// one it keeps the step of 1024 bytes that its buffer has grown by.
TEST(MsgDocument, KnowsTheRoomOfItsBlock) {
  MsgBuilder declared;
  declared.binary(0x1013, "<html><head></head>");
  const Document made(declared);
  EXPECT_EQ(made.data.document.capacity(), made.bytes.size() + 1);
  MsgBuilder declaring;
  declaring.binary(0x1013, "<html><head></head>charset");
  const Document kept(declaring);
  EXPECT_EQ(kept.data.document.capacity(), kept.bytes.size() + 1 + 1024);
}

TEST(MsgDocument, TellsRtfByItsFirstFiveBytes) {
  MsgBuilder msg;
  msg.binary(0x1009, PackRtf(kMsgRtf)).text(0x1000, u"Plain");
  Document rtf(msg);
  EXPECT_EQ(rtf.status, StatusOk);
  EXPECT_EQ(rtf.kind, DocumentRtf);
  EXPECT_EQ(rtf.bytes, kMsgRtf);
  EXPECT_EQ(rtf.data.document.data()[rtf.bytes.size()], '\0');
  EXPECT_EQ(Html(" {\\rtf1}"), "<html> {\\rtf1}</html>");
  EXPECT_EQ(Html("{\\rt"), "<html>{\\rt</html>");
  // The HTML stream may hold it as well.
  MsgBuilder stream;
  stream.binary(0x1013, kMsgRtf);
  EXPECT_EQ(Document(stream).kind, DocumentRtf);
}

TEST(MsgDocument, FailsWithOneCodeWhateverTheRendererSays) {
  MsgBuilder rtf;
  rtf.binary(0x1009, StoreRtf("{\\rtf1 no font table}"));
  EXPECT_EQ(Document(rtf).status, StatusOutOfMemory);
  MsgBuilder html = PlainMsg();
  html.binary(0x1013, "<body without an end");
  EXPECT_EQ(Document(html).status, StatusOutOfMemory);
}

// The length counts from the mark, so that the last two bytes of the text fall outside.
TEST(MsgDocument, OfTextBeginsWithAMarkThatItsLengthLeavesOut) {
  const std::string mark = "\xEF\xBB\xBF";
  for (const bool textOnly : {false, true}) {
    for (const auto& [text, counted] :
         {std::pair(u"Body", mark + "Bo"), std::pair(u"abc", mark + "a"), std::pair(u"ab", mark),
          std::pair(u"a", mark.substr(0, 2)), std::pair(u"\u00e9", mark)}) {
      MsgBuilder msg;
      msg.text(0x1000, text);
      Document document(msg, textOnly);
      EXPECT_EQ(document.status, StatusOk);
      EXPECT_EQ(document.kind, DocumentText);
      EXPECT_EQ(document.bytes, counted);
      EXPECT_GE(document.data.document.capacity(), counted.size() + 3);
    }
  }
  MsgBuilder msg;
  msg.text(0x1000, u"Body");
  const Document document(msg);
  EXPECT_EQ(std::string(document.data.document.data(), 8), mark + "Body" + '\0');
}

TEST(MsgDocument, OfEmptyTextIsTheFirstByteOfTheMark) {
  MsgBuilder narrow;
  narrow.text8(0x1000, "");
  for (const std::string& file :
       {narrow.write(), MsgBuilder().write(), CompoundBuilder().write()}) {
    const Document document(file);
    EXPECT_EQ(document.status, StatusOk);
    EXPECT_EQ(document.kind, DocumentText);
    EXPECT_EQ(document.bytes, "\xEF");
  }
}

TEST(MsgDocument, TakesABodyOfLengthZeroForNone) {
  MsgBuilder msg;
  msg.text(0x1000, u"Body").text8(0x1013, "");
  EXPECT_EQ(Document(msg).kind, DocumentText);
}

TEST(MsgDocument, GivesTheTextOfAMessageWithHtmlWhenAsked) {
  MsgBuilder msg;
  msg.text(0x1000, u"Body").binary(0x1013, "<p>Html");
  EXPECT_EQ(Document(msg).bytes, "<html><p>Html</html>");
  EXPECT_EQ(Document(msg, true).bytes,
            "\xEF\xBB\xBF"
            "Bo");
}

void ExpectNothing(const Document& document, Status status) {
  EXPECT_EQ(document.status, status);
  EXPECT_EQ(document.kind, DocumentNone);
  EXPECT_EQ(document.data.readerFormat, FormatNone);
  EXPECT_EQ(document.data.document.data(), nullptr);
  EXPECT_EQ(document.data.document.length(), 0u);
}

TEST(MsgDocument, NeedsABodyOfTheKind) {
  MsgBuilder msg;
  msg.text(0x1000, u"").binary(0x1013, "<p>Html");
  EXPECT_EQ(Document(msg).status, StatusOk);
  ExpectNothing(Document(msg, true), StatusNotSupported);
  MsgBuilder none;
  none.text(0x1000, u"");
  ExpectNothing(Document(none), StatusNotSupported);
  ExpectNothing(Document("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1 and nothing else"), StatusNotSupported);
}

TEST(MsgDocument, PassesOnTheCodeOfTheReader) {
  MsgBuilder msg;
  std::string packed = PackRtf(kMsgRtf);
  packed[12] = static_cast<char>(packed[12] ^ 1);
  msg.binary(0x1009, packed).text(0x1000, u"Body");
  ExpectNothing(Document(msg), StatusNotSupported);
  PstFilterData data;
  DocumentRequest nowhere;
  nowhere.path = u"/nowhere";
  DocumentResult none;
  EXPECT_EQ(ReadMsgDocument(nowhere, data, none), StatusMsgOpenFailed);
}

TEST(MsgDocument, SaysHowItsImagesFared) {
  MsgBuilder msg;
  msg.binary(0x1013, "<img src=\"a.png\">").attachment(u"a.png", "");
  const Document document(msg);
  EXPECT_EQ(document.status, StatusOk);
  EXPECT_EQ(document.bytes, "<html><img src=\"a.png\"></html>");
  EXPECT_EQ(document.data.attachmentStatus, StatusBadArgument);
  EXPECT_EQ(document.data.readerFormat, FormatMsg);
}

TEST(MsgDocument, IsNotMadeForARequest) {
  int calls = 0;
  const AttachmentRequest request = {
      kAllAttachments, false,
      [](void* user, TrackedBuffer<char>*, const char16_t*, PropertyList*) -> Status {
        ++*static_cast<int*>(user);
        return StatusDone;
      },
      &calls};
  const Document document(AttachedMsg().write(), false, &request);
  EXPECT_EQ(document.status, StatusOk);
  EXPECT_EQ(calls, 3);
  EXPECT_EQ(document.kind, DocumentNone);
  EXPECT_EQ(document.data.document.data(), nullptr);
  EXPECT_EQ(document.data.readerFormat, FormatMsg);
  EXPECT_EQ(document.data.attachmentCount, 0u);
}

// The charset declaration comes last, so some of these fail in it.
TEST(MsgDocument, IsWholeOrNotThereWhicheverAllocationFails) {
  MsgBuilder html;
  html.binary(0x1013, "<html><head></head>");
  MsgBuilder text;
  text.text(0x1000, u"Body");
  for (const MsgBuilder* msg : {&html, &text}) {
    const std::string file = msg->write();
    const std::string whole = Document(file).bytes;
    int failures = 0;
    const auto round = [&](FaultedWork& faulted) {
      const Document document = faulted([&] { return Document(file); });
      if (document.status == StatusOk) {
        EXPECT_EQ(document.bytes, whole);
        // What fails in the pass over the attachments alone is kept.
        EXPECT_TRUE(faulted.isReached() || document.data.attachmentStatus == StatusOk);
        return;
      }
      EXPECT_TRUE(faulted.isReached());
      ++failures;
      ExpectNothing(document, StatusOutOfMemory);
    };
    SweepFaults(PlainKernelFaultMemory, round);
    EXPECT_GT(failures, 10);
  }
}

// The sniffing of the format never leads here with another.
TEST(ReadMessageDocument, RefusesAnUnknownFormat) {
  PstFilterData data;
  DocumentRequest request;
  request.path = u"mail";
  DocumentResult result;
  EXPECT_EQ(ReadMessageDocument(request, data, result), StatusNotSupported);
  EXPECT_EQ(result.kind, DocumentNone);
  EXPECT_FALSE(data.document.hasBlock());
}

}  // namespace
}  // namespace tarn::test
