// What an MSG file costs: memory in proportion to the file, and for its attachments a number of
// steps in proportion to theirs.

#include <gtest/gtest.h>

#include "FileFormats/Pst/MsgDocument.h"
#include "compound/CompoundOperations.h"
#include "msg/MsgAttachments.h"
#include "support/MemoryMail.h"
#include "support/PeakMemory.h"
#include "support/RtfCompressor.h"
#include "support/TempDirectory.h"
#include "support/msg/MsgBuilder.h"

namespace tarn::test {
namespace {

constexpr uint64_t kMebibyte = uint64_t{1} << 20;

// What any call may take.
uint64_t Allowed(uint64_t fileSize) { return 192 * kMebibyte + 32 * fileSize; }

struct Made {
  uint64_t file = 0;
  uint64_t peak = 0;
  uint64_t document = 0;
};

Made MakeDocument(const MsgBuilder& msg, bool textOnly = false) {
  const TempDirectory directory;
  const std::string bytes = msg.write();
  const std::u16string path = directory.write("mail.msg", bytes).u16string();
  DocumentRequest request;
  request.path = path.c_str();
  request.textOnly = textOnly;
  Made made;
  made.file = bytes.size();
  made.peak = PeakOf([&] {
    PstFilterData data;
    DocumentResult result;
    EXPECT_EQ(ReadMsgDocument(request, data, result), StatusOk);
    made.document = data.document.length();
  });
  EXPECT_LE(made.peak, Allowed(made.file));
  return made;
}

constexpr uint64_t kBody = 4 * kMebibyte;
constexpr uint64_t kTables = kMebibyte;  // more than tables and directory of these files take

MsgBuilder Mail() {
  MsgBuilder msg;
  msg.text(0x0037, u"Subject").text(0x0C1A, u"Ann").text(0x0E04, u"Bob");
  return msg;
}

TEST(MsgMemory, AnHtmlBodyIsThereOnce) {
  MsgBuilder msg = Mail();
  msg.binary(0x1013, "<html><body>" + std::string(kBody, 'x') + "</body></html>");
  const Made made = MakeDocument(msg);
  EXPECT_GT(made.document, kBody);
  EXPECT_LT(made.peak, kBody + kTables);
}

// Only the declaration of a charset takes the document a second time.
TEST(MsgMemory, AnHtmlBodyWithAHeadIsThereTwice) {
  MsgBuilder msg = Mail();
  msg.binary(0x1013, "<html><head></head><body>" + std::string(kBody, 'x') + "</body></html>");
  EXPECT_LT(MakeDocument(msg).peak, 2 * kBody + kTables);
}

// Images let the body grow to nearly its limit, and a subject beyond ASCII makes all of it UTF-8.
TEST(MsgMemory, ABodyGrownByImagesBecomesUtf8) {
  constexpr uint64_t kImage = 60000;
  constexpr uint64_t kReferences = 800;
  MsgBuilder msg = Mail();
  msg.text(0x0E03, u"M\u00FCller");
  std::string html = "<html><head><meta charset=iso-8859-1></head><body>\xFC";
  for (uint64_t i = 0; i < kReferences; ++i) html += "<img src=\"cid:a@x\">";
  msg.binary(0x1013, html + "</body></html>");
  msg.attachment(u"a.png", std::string(kImage, 'x')).contentId(u"a@x");
  const Made made = MakeDocument(msg);
  EXPECT_GT(made.document, kReferences * kImage * 4 / 3);
  EXPECT_LT(made.peak, 2 * made.document + 16 * kMebibyte);
}

TEST(MsgMemory, ABodyThatIsWrappedIsThereOnce) {
  MsgBuilder msg = Mail();
  msg.binary(0x1013, std::string(kBody, 'x'));
  EXPECT_LT(MakeDocument(msg).peak, kBody + kTables);
}

// The stream and what it is unpacked to.
TEST(MsgMemory, AnRtfBodyIsThereTwice) {
  MsgBuilder msg = Mail();
  msg.binary(0x1009, PackRtf("{\\rtf1{\\fonttbl{\\f0 A;}}\\pard " + std::string(kBody, 'x')));
  const Made made = MakeDocument(msg);
  EXPECT_GT(made.document, kBody);
  EXPECT_LT(made.peak, kBody + made.file + kTables);
}

// The text and up to twice as much, as for RTF that wraps HTML; the file is an eighth of the text.
TEST(MsgMemory, RtfThatWrapsHtml) {
  MsgBuilder msg = Mail();
  std::string rtf = "{\\rtf1\\ansi\\ansicpg1252 \\fromhtml1 {\\*\\htmltag19 <html>}";
  while (rtf.size() < 2 * kBody) rtf += "\\'80.";
  msg.binary(0x1009, PackRtf(rtf));
  const Made made = MakeDocument(msg);
  EXPECT_GT(made.document, 3 * kBody);
  EXPECT_LT(made.peak, 3 * rtf.size() + made.file + kTables);
  EXPECT_LT(made.peak, 32 * made.file);
}

// Room for any conversion is four times the stream; what is kept is what the text takes.
TEST(MsgMemory, TextsKeepWhatTheyNeed) {
  MsgBuilder msg;
  const std::u16string text(kMebibyte / 2, u'x');
  constexpr uint16_t kFields[] = {0x0037, 0x0C1A, 0x0E04, 0x0E03, 0x0E02, 0x004D};
  for (const uint16_t id : kFields) msg.text(id, text);
  msg.text(0x5D01, text + u"@").text(0x1000, u"x");
  const Made made = MakeDocument(msg, true);
  EXPECT_GT(made.document, 6 * kMebibyte / 2);
  EXPECT_LT(made.peak, 14 * kMebibyte);
}

// Emoji, of which no code page has any, and letters of two scripts by turns.
TEST(MsgMemory, MixedScriptsInRtf) {
  for (const std::u16string_view unit : {u"\U0001F600", u"\u0386\u0402"}) {
    MsgBuilder msg;
    std::u16string subject;
    while (subject.size() < kMebibyte / 2) subject += unit;
    msg.text(0x0037, subject);
    msg.binary(0x1009, PackRtf("{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fcharset0 A;}}"
                               "\\pard x}"));
    const Made made = MakeDocument(msg);
    EXPECT_GT(made.document, 4 * kMebibyte);
    EXPECT_LT(made.peak, 16 * made.file);
  }
}

TEST(MsgMemory, AnAttachmentIsThereOnce) {
  MsgBuilder msg = Mail();
  msg.attachment(u"a.bin", std::string(kBody, 'x'));
  const TempDirectory directory;
  const std::u16string path = directory.write("mail.msg", msg.write()).u16string();
  uint64_t length = 0;
  const AttachmentRequest request = {
      1, false,
      [](void* user, TrackedBuffer<char>* data, const char16_t*, PropertyList*) -> Status {
        *static_cast<uint64_t*>(user) = data->length();
        return StatusOk;
      },
      &length};
  DocumentRequest wanted;
  wanted.path = path.c_str();
  wanted.attachments = &request;
  const uint64_t peak = PeakOf([&] {
    PstFilterData data;
    DocumentResult none;
    EXPECT_EQ(ReadMsgDocument(wanted, data, none), StatusOk);
  });
  EXPECT_EQ(length, kBody);
  EXPECT_LT(peak, kBody + kTables);
}

// Attachments that hang together as one list: as many are listed, and each is looked up a few
// times, in steps in proportion to their number.
TEST(MsgAttachmentWork, AListOfThemIsInProportion) {
  for (const uint64_t count : {uint64_t{2000}, uint64_t{4000}}) {
    MsgBuilder msg = Mail();
    for (uint64_t i = 0; i < count; ++i) msg.attachment(u"a.bin", "x").contentId(u"id");
    CompoundOptions options;
    options.shape = SiblingShape::RightList;
    const MemoryMail mail(msg.write(options));
    CompoundFile file = CompoundFile::open(mail.handle());
    CompoundStorage storage{&file};
    const uint64_t before = PartsOf(file).directory.stepsLeft();
    uint64_t calls = 0;
    const AttachmentRequest request = {
        kAllAttachments, true,
        [](void* user, TrackedBuffer<char>*, const char16_t*, PropertyList*) -> Status {
          ++*static_cast<uint64_t*>(user);
          return StatusOk;
        },
        &calls};
    EXPECT_EQ(EnumerateMsgAttachments(storage, request), StatusOk);
    EXPECT_EQ(calls, count);
    // Five texts and a stream of properties in a storage of a handful of streams.
    EXPECT_LT(before - PartsOf(file).directory.stepsLeft(), 60 * count);
    EXPECT_LT(PartsOf(file).directory.searchIndex().looks(),
              2 * PartsOf(file).directory.entries().size());
  }
}

}  // namespace
}  // namespace tarn::test
