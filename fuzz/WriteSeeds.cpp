// WriteSeeds DIRECTORY: writes the stores (DIRECTORY/pst), MSG files (DIRECTORY/msg) and TNEF
// (DIRECTORY/tnef) that fuzzing starts from, a few kB each, as the tests' builders make them.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "support/RtfCompressor.h"
#include "support/TnefBuilder.h"
#include "support/msg/MsgBuilder.h"
#include "support/pst/StoreBuilder.h"

namespace {

using namespace tarn::test;

constexpr uint64_t kTime = 132539328000000000;
constexpr std::string_view kWrappedHtml =
    "{\\rtf1\\ansi\\ansicpg1252\\fromhtml1{\\fonttbl{\\f0\\fcharset0 A;}{\\f1\\fcharset128 B;}}"
    "\\uc1\\pard{\\*\\htmltag <p>}\\f1 \\'82\\'a0\\f0 \\u8364?{\\*\\htmltag <img src=\"cid:a\">}"
    "\\htmlrtf \\par\\htmlrtf0}";

// A message with an attachment; when `isRich`, tables with their rows in subnodes, too.
void WriteStore(const std::filesystem::path& path, const StoreOptions& options, bool isRich) {
  StoreBuilder store(options);
  FolderBuilder& inbox = store.folder(u"Inbox");
  MessageBuilder& message = inbox.message().subject(u"Seed").importance(1);
  message.attachment(u"a.txt", "text");
  if (isRich) {
    inbox.contentsTable({.rows = TableShape::Rows::Subnode});
    message.attachmentTable({.rows = TableShape::Rows::Subnode, .rowIndexWidth = 2});
  }
  store.write(path);
}

// Messages with every kind of body, an inline image, and an embedded message.
void WriteMail(const std::filesystem::path& path, const StoreOptions& options) {
  StoreBuilder store(options);
  FolderBuilder& inbox = store.folder(u"Inbox");
  MessageBuilder& page = inbox.message().subject(u"\1\1Hi").from(u"Ann").importance(2);
  page.submitTime(kTime).body(u"t").html("<img src=\"cid:a\">");
  page.attachment(u"a", std::string(60, 'x'));
  inbox.message().rtf(PackRtf("{\\rtf1{\\fonttbl{\\f0 A;}}\\pard x}"));
  inbox.message()
      .rtf(StoreRtf(kWrappedHtml, StoredCrc::OfContents))
      .attachment(u"a", std::string(60, 'x'));
  inbox.message().body(u"plain").attach().longName(u"m").embedded().subject(u"in");
  store.write(path);
}

// Trees of several levels wherever there are trees: pages, properties, row indexes, a stream of
// more than one block.
void WriteDeepStore(const std::filesystem::path& path, const StoreOptions& smallest) {
  StoreOptions options = smallest;
  options.file.nbt = {.leafFanOut = 4, .innerFanOut = 2};
  options.file.bbt = {.leafFanOut = 5, .innerFanOut = 2};
  options.bags = BthShape::StrideOf8();
  options.bags.fanOut = 3;
  TableShape table;
  table.rowIndex = BthShape::StrideOf8();
  table.rowIndex.fanOut = 2;
  StoreBuilder store(options);
  FolderBuilder& inbox = store.folder(u"Inbox").contentsTable(table);
  for (const char16_t* const subject : {u"one", u"two", u"three"}) {
    MessageBuilder& message = inbox.message().subject(subject).html("<p>").from(u"Ann");
    message.attachment(u"a", "first").attachment(u"b", "second").attachmentTable(table);
  }
  inbox.folder(u"below").message().html("<p>").attachment(u"big", std::string(8200, 'b'));
  store.write(path);
}

// Stores of every layout and encoding.
void WriteStores(const std::filesystem::path& directory) {
  int number = 0;
  for (const PstLayout layout : {PstLayout::Ansi, PstLayout::Unicode}) {
    for (const auto encoding : {PstEncoding::None, PstEncoding::Permute, PstEncoding::Cyclic}) {
      for (const bool isRich : {false, true}) {
        const std::string name = "seed" + std::to_string(number++) + ".pst";
        WriteStore(directory / name, StoreOptions::Smallest(layout, encoding), isRich);
      }
    }
    WriteMail(directory / ("mail" + std::to_string(number) + ".pst"),
              StoreOptions::Smallest(layout, PstEncoding::Permute));
    WriteDeepStore(directory / ("deep" + std::to_string(number) + ".pst"),
                   StoreOptions::Smallest(layout, PstEncoding::None));
  }
}

void Write(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// Messages with each kind of body, inline images, and an embedded message.
void WriteMessages(const std::filesystem::path& directory) {
  MsgBuilder page;
  page.text(0x0037, u"Hi").text(0x0C1A, u"Ann").submitTime(kTime).importance(2);
  page.binary(0x1013, "<img src=\"cid:a@x\">").recipient(u"Bob", u"b@c.d");
  page.attachment(u"a.png", std::string(60, 'x')).contentId(u"a@x").mimeType(u"image/png");
  page.attachment().text(0x3707, u"m").embedded().text(0x0037, u"in").text(0x1000, u"inner");
  Write(directory / "html.msg", page.write());
  MsgBuilder wrapped;
  wrapped.text8(0x0037, "Hi").binary(0x1009, StoreRtf(kWrappedHtml));
  wrapped.attachment(u"a", std::string(60, 'x')).contentId(u"a");
  Write(directory / "wrapped.msg", wrapped.write());
  MsgBuilder rtf;
  rtf.binary(0x1009, PackRtf("{\\rtf1{\\fonttbl{\\f0 A;}}\\pard x}"));
  Write(directory / "rtf.msg", rtf.write({.version = CompoundVersion::V4}));
  // Entries that hang together as one list are searched by an index.
  MsgBuilder list;
  for (uint16_t id = 0x3A00; id < 0x3A48; ++id) list.text8(id, "v");
  list.text8(0x0037, "Hi").text8(0x1000, "plain").text8(0x0E04, "Bob");
  Write(directory / "list.msg", list.write({.shape = SiblingShape::RightList}));
  MsgBuilder text;
  text.text8(0x1000, "plain").text(0x0E04, u"Bob").integer(0x0017, 0);
  Write(directory / "text.msg", text.write());
}

// Attributes of every kind, and an embedded message.
void WriteTnef(const std::filesystem::path& directory) {
  TnefBuilder inner;
  inner.properties(TnefList().text(0x0037, u"in").text8(0x1000, "inner"));
  TnefBuilder mail;
  mail.codePage(1252).text8(TnefMessageLevel, 0x8008, "IPM.Microsoft Mail.Note");
  mail.text8(TnefMessageLevel, 0x8004, "Hi").text8(TnefMessageLevel, 0x800C, "plain");
  mail.properties(TnefList()
                      .time(0x0039, kTime)
                      .binary(0x1009, StoreRtf(kWrappedHtml))
                      .named("0123456789abcdef", u"name")
                      .integer(0x8000, 1)
                      .values(0x3A58, 0x101F, {TnefWide(u"a"), TnefWide(u"b")}));
  mail.recipients({TnefList().integer(0x0C15, 1).text(0x3001, u"Bob").text(0x39FE, u"b@c.d")});
  mail.attachment().text8(TnefAttachmentLevel, 0x8010, "a.txt").attachmentData("bytes");
  mail.attachment().attachmentProperties(
      TnefList().integer(0x3705, 5).object(0x3701, kTnefMessageInterface, inner.write()));
  Write(directory / "mail.tnef", mail.write());
  TnefBuilder old;
  old.attribute(TnefMessageLevel, 0x8000, 0,
                TnefNumber(0x00280004, 4) + TnefNumber(4, 2) + TnefNumber(11, 2) +
                    std::string("Ann\0SMTP:a@b.c\0\0", 16));
  old.attribute(TnefMessageLevel, 0x8005, 3,
                TnefWide(u"\u07E8\u0005\u0001\u000A\u0022\u0038\u0003"));
  old.attachment(2).attachmentData("object");
  Write(directory / "old.tnef", old.write());
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fputs("usage: WriteSeeds DIRECTORY\n", stderr);
    return 2;
  }
  const std::filesystem::path directory = arguments[1];
  std::filesystem::create_directories(directory / "pst");
  std::filesystem::create_directories(directory / "msg");
  std::filesystem::create_directories(directory / "tnef");
  WriteStores(directory / "pst");
  WriteMessages(directory / "msg");
  WriteTnef(directory / "tnef");
  return 0;
}
