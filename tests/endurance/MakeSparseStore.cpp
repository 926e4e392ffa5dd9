// MakeSparseStore FILE MESSAGES BYTES: a store of so many messages, spread over a file of about so
// many bytes: between them are pages that nothing names, of which the disk holds only the maps.
// Every hundredth message has an attachment, the first and the last among them. 100 messages are in
// a folder.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "support/RtfCompressor.h"
#include "support/pst/StoreBuilder.h"

namespace {

using namespace tarn::test;

std::u16string Wide(const std::string& text) { return {text.begin(), text.end()}; }

void AddMessage(FolderBuilder& folder, uint64_t number, bool isAttached) {
  const std::string name = std::to_string(number);
  MessageBuilder& message = folder.message();
  message.subject(u"Message " + Wide(name)).from(u"Ann").to(u"Bob");
  message.submitTime(132539328000000000 + 10000000 * number);
  if (number % 3 == 1) {
    message.rtf(PackRtf("{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}\\pard Body " + name + "\\par}"));
  } else {
    message.html("<html><body><p>Body " + name + "</p></body></html>");
  }
  if (isAttached) message.attachment(u"a" + Wide(name) + u".txt", "attached to " + name);
}

// Pages that have room in the file, and are never written.
void LeaveRoom(PstFileBuilder& file, uint64_t bytes) {
  for (uint64_t pages = bytes / kPstPageSize; pages > 0; --pages) file.reservePage();
}

void WriteStore(const char* path, uint64_t messages, uint64_t bytes) {
  StoreOptions options;
  options.file.encoding = PstEncoding::Permute;
  StoreBuilder store(options, path);
  FolderBuilder* folder = nullptr;
  for (uint64_t i = 0; i < messages; ++i) {
    if (i % 100 == 0) folder = &store.folder("Folder " + std::to_string(i / 100));
    AddMessage(*folder, i, i % 100 == 0 || i + 1 == messages);
    LeaveRoom(store.file(), bytes / messages);
  }
  store.finish();
}

}  // namespace

int main(int count, char** words) {
  if (count != 4) {
    std::fputs("usage: MakeSparseStore FILE MESSAGES BYTES\n", stderr);
    return 2;
  }
  try {
    WriteStore(words[1], std::strtoull(words[2], nullptr, 10),
               std::strtoull(words[3], nullptr, 10));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "MakeSparseStore: %s\n", error.what());
    return 1;
  }
  return 0;
}
