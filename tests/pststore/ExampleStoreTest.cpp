// The example store of the repository, described: what is in examples/ is what this writes.
#include <gtest/gtest.h>

#include "support/RtfCompressor.h"
#include "support/TempDirectory.h"
#include "support/pst/StoreBuilder.h"

namespace tarn::test {
namespace {

using namespace std::string_literals;

// A picture of 32 by 24 pixels.
const std::string kChart =
    "\x89\x50\x4e\x47\x0d\x0a\x1a\x0a\x00\x00\x00\x0d\x49\x48\x44\x52\x00\x00\x00\x20\x00\x00\x00"
    "\x18\x08\x02\x00\x00\x00\x14\x31\x68\x63\x00\x00\x00\x36\x49\x44\x41\x54\x78\xda\x63\xf8\x4f"
    "\x63\xc0\x30\xe2\x2d\x38\xa6\xa1\x81\x86\x46\x2d\x18\x9a\x16\x88\xa6\x1e\x40\x43\xa3\x16\x8c"
    "\x5a\x80\xd5\x02\xbd\x5a\x23\x34\x34\x6a\xc1\xa8\x05\xa3\x16\x50\xcb\x82\x28\x1a\x03\x00\x45"
    "\xcf\xc3\xe5\x98\x9e\xfc\x58\x00\x00\x00\x00\x49\x45\x4e\x44\xae\x42\x60\x82"s;

std::string ExampleStore() {
  // Whole, and in little room.
  StoreOptions options = StoreOptions::Smallest(PstLayout::Unicode, PstEncoding::Permute);
  options.isBare = false;
  options.hasLeanTables = false;
  StoreBuilder store(options);
  FolderBuilder& inbox = store.folder(u"Inbox");

  MessageBuilder& figures = inbox.message();
  figures.subject(u"Figures of the quarter").from(u"Ann Lee").to(u"Bob Ray; Carol Jones");
  figures.submitTime(134200872000000000).importance(2);
  figures.html(
      "<html><body><p>The chart of the quarter:</p><p><img src=\"cid:chart.png\"></p>"
      "</body></html>");
  AttachmentBuilder& chart = figures.attach().longName(u"chart.png").data(kChart);
  chart.mimeTag(u"image/png").created(134200800000000000);
  AttachmentBuilder& table = figures.attach().longName(u"figures.csv");
  table.data("quarter,sum\n1,1200\n2,1350\n").mimeTag(u"text/csv");
  table.modified(134200836000000000);

  MessageBuilder& invitation = inbox.message();
  invitation.subject(u"Приглашение").from(u"Дарья").to(u"Bob Ray");
  invitation.submitTime(134201736000000000);
  invitation.rtf(
      PackRtf("{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss Arial;}}\r\n"
              "\\pard\\plain\\f0\\fs20 See you on Friday.\\par\r\n}"));

  MessageBuilder& note = inbox.message();
  note.subject(u"A note").from(u"Carol Jones").body(u"Only plain text here.\r\n");
  note.submitTime(134202600000000000);
  return store.bytes();
}

TEST(ExampleStore, IsWhatThisDescribes) {
  EXPECT_EQ(ReadWholeFile(EXAMPLES_PATH "/mailbox.pst"), ExampleStore());
}

}  // namespace
}  // namespace tarn::test
