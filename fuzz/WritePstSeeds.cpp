// WritePstSeeds DIRECTORY: writes the stores that fuzzing of stores starts from, a few kB each.

#include <cstdio>
#include <filesystem>
#include <string>

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
  }
  return 0;
}
