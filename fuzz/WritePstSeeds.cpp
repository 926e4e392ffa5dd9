// WritePstSeeds DIRECTORY: writes the stores that fuzzing of stores starts from, a few kB each.

#include <cstdio>
#include <filesystem>
#include <string>

#include "support/RtfCompressor.h"
#include "support/pst/StoreBuilder.h"

namespace {

using namespace tarn::test;

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
  page.submitTime(132539328000000000).body(u"t").html("<img src=\"cid:a\">");
  page.attachment(u"a", std::string(60, 'x'));
  inbox.message().rtf(PackRtf("{\\rtf1{\\fonttbl{\\f0 A;}}\\pard x}"));
  inbox.message().body(u"plain").attach().longName(u"m").embedded().subject(u"in");
  store.write(path);
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fputs("usage: WritePstSeeds DIRECTORY\n", stderr);
    return 2;
  }
  const std::filesystem::path directory = arguments[1];
  std::filesystem::create_directories(directory);
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
  }
  return 0;
}
