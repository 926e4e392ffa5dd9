// Stores of many folders, messages, attachments, properties, subnodes and levels.
#include <algorithm>

#include "support/RtfCompressor.h"
#include "support/hostile/HostileShapes.h"
#include "support/hostile/HostileText.h"
#include "support/pst/PstBytes.h"
#include "support/pst/StoreBuilder.h"

namespace tarn::test {
namespace {

const std::string kImage = "\x89PNG" + Times(100, "x");

StoreOptions Plain() {
  StoreOptions options;
  options.file.isTrimmed = true;
  return options;
}

MessageBuilder& Message(FolderBuilder& folder) {
  return folder.message().subject(u"Shape").from(u"Ann").to(u"Bob").html("<p>Text</p>");
}

std::string Messages(size_t count) {
  StoreBuilder store(Plain());
  FolderBuilder& folder = store.folder("Inbox");
  for (size_t i = 0; i < count; ++i) Message(folder);
  return store.bytes();
}

std::string Folders(size_t count) {
  StoreBuilder store(Plain());
  for (size_t i = 0; i < count; ++i) store.folder("Folder " + std::to_string(i));
  Message(store.folder("Last"));
  return store.bytes();
}

std::string SameFolders(size_t count) {
  StoreBuilder store(Plain());
  for (size_t i = 0; i < count; ++i) store.folder("Folder");
  Message(store.folder("Last"));
  return store.bytes();
}

std::string NestedFolders(size_t count) {
  StoreBuilder store(Plain());
  FolderBuilder* folder = &store.folder("Folder");
  for (size_t i = 0; i < count; ++i) folder = &folder->folder(u"a");
  Message(*folder);
  return store.bytes();
}

// Rows without messages: each is a message that cannot be read.
std::string RowsWithoutMessages(size_t count) {
  StoreBuilder store(Plain());
  FolderBuilder& folder = store.folder("Inbox");
  Message(folder);
  for (size_t i = 0; i < count; ++i) folder.row(static_cast<uint32_t>(0x400000 + 32 * i + 4));
  return store.bytes();
}

// Folders that all have the same one below them.
std::string SharedFolders(size_t count) {
  StoreBuilder store(Plain());
  FolderBuilder& shared = store.folder("Shared");
  Message(shared);
  for (size_t i = 0; i < count; ++i) store.folder("Folder").subfolderRow(shared.nid());
  return store.bytes();
}

std::string Attachments(size_t count) {
  StoreBuilder store(Plain());
  MessageBuilder& message = Message(store.folder("Inbox"));
  for (size_t i = 0; i < count; ++i) message.attachment(Wide(i) + u".txt", "content");
  return store.bytes();
}

std::string SameNames(size_t count) {
  StoreBuilder store(Plain());
  MessageBuilder& message = Message(store.folder("Inbox"));
  for (size_t i = 0; i < count; ++i) message.attachment(u"a.txt", "content");
  return store.bytes();
}

std::string AttachmentsWithoutNodes(size_t count) {
  StoreBuilder store(Plain());
  MessageBuilder& message = Message(store.folder("Inbox"));
  for (size_t i = 0; i < count; ++i) message.attach().longName(u"a").withoutNode();
  return store.bytes();
}

std::string Images(size_t count) {
  StoreBuilder store(Plain());
  MessageBuilder& message = Message(store.folder("Inbox"));
  message.html(Each(count, [](const std::string& n) { return "<img src=\"cid:id" + n + "@x\">"; }));
  for (size_t i = 0; i < count; ++i) {
    message.attach()
        .longName(Wide(i) + u".png")
        .data(kImage)
        .contentId(u"id" + Wide(i) + u"@x")
        .mimeTag(u"image/png");
  }
  return store.bytes();
}

std::string Recipients(size_t count) {
  StoreBuilder store(Plain());
  MessageBuilder& message = Message(store.folder("Inbox"));
  for (size_t i = 0; i < count; ++i) {
    message.recipient().text(kPropDisplayName, u"Bob " + Wide(i)).number(0x0C15, kTypeInt32, 1);
  }
  return store.bytes();
}

std::string Properties(size_t count) {
  StoreBuilder store(Plain());
  PropertyContextBuilder& bag = Message(store.folder("Inbox")).properties();
  for (size_t i = 0; i < std::min<size_t>(count, 0x6000); ++i) {
    bag.number(static_cast<uint16_t>(0x1100 + i), kTypeInt32, i);
  }
  return store.bytes();
}

std::string Values(size_t count) {
  StoreBuilder store(Plain());
  PropertyContextBuilder& bag = Message(store.folder("Inbox")).properties();
  // PtypMultipleString: the count, where each begins, and all of them.
  constexpr uint16_t kTypeMultipleString = 0x101F;
  std::string value = LeBytes(count, 4);
  for (size_t i = 0; i < count; ++i) value += LeBytes(4 + 4 * count + 2 * i, 4);
  bag.value(0x3A58, kTypeMultipleString, value + Times(count, std::string_view("a\0", 2)));
  return store.bytes();
}

std::string NamedProperties(size_t count) {
  StoreBuilder store(Plain());
  PropertyContextBuilder names(PstLayout::Unicode);
  PropertyContextBuilder& bag = Message(store.folder("Inbox")).properties();
  std::string entries;
  std::string texts;
  count = std::min<size_t>(count, 0x7000);
  for (size_t i = 0; i < count; ++i) {
    const std::string name = Utf16Bytes(u"Name" + Wide(i));
    // MS-PST 2.4.7.1: where the name is, that it is a text of the second set, its number.
    entries += LeBytes(texts.size(), 4) + LeBytes(2 << 1 | 1, 2) + LeBytes(i, 2);
    texts += LeBytes(name.size(), 4) + name;
    texts.resize((texts.size() + 3) / 4 * 4);
    bag.number(static_cast<uint16_t>(0x8000 + i), kTypeInt32, i);
  }
  names.number(1, kTypeInt32, 251);
  names.binary(2, "");
  names.binary(3, entries);
  names.binary(4, texts);
  store.nodes().nameMap = names.build();
  return store.bytes();
}

std::string Subnodes(size_t count) {
  StoreBuilder store(Plain());
  PropertyContextBuilder& bag = Message(store.folder("Inbox")).properties();
  for (size_t i = 0; i < count; ++i) {
    bag.subnode(ValueSubnode(static_cast<uint32_t>(i)), PstNodeParts::Stream("content", 8176));
  }
  return store.bytes();
}

// Each value in a subnode of its own.
std::string LongValues(size_t count) {
  StoreBuilder store(Plain());
  PropertyContextBuilder& bag = Message(store.folder("Inbox")).properties();
  for (size_t i = 0; i < std::min<size_t>(count, 0x6000); ++i) {
    bag.streamed(static_cast<uint16_t>(0x1100 + i), kTypeBinary,
                 PstNodeParts::Stream("content", 8176));
  }
  return store.bytes();
}

std::string NestedMessages(size_t count) {
  StoreBuilder store(Plain());
  MessageBuilder* message = &Message(store.folder("Inbox"));
  for (size_t i = 0; i < count; ++i) {
    message = &message->attach().longName(u"a").embedded().subject(u"Inner");
  }
  return store.bytes();
}

std::string EmbeddedMessages(size_t count) {
  StoreBuilder store(Plain());
  MessageBuilder& message = Message(store.folder("Inbox"));
  for (size_t i = 0; i < count; ++i) message.attach().longName(u"a").embedded().subject(u"Inner");
  return store.bytes();
}

// Messages before the wanted one, which all have a body.
std::string RichMessages(size_t count) {
  StoreBuilder store(Plain());
  FolderBuilder& folder = store.folder("Inbox");
  const std::string rtf = PackRtf("{\\rtf1\\ansi Text}");
  for (size_t i = 0; i < count; ++i) folder.message().subject(u"Shape").rtf(rtf);
  return store.bytes();
}

constexpr HostileShape kShapes[] = {
    {"Messages", HostileFormat::Store, Messages, 2000},
    {"Folders", HostileFormat::Store, Folders, 1000},
    {"SameFolders", HostileFormat::Store, SameFolders, 1000},
    {"NestedFolders", HostileFormat::Store, NestedFolders, 500},
    {"RowsWithoutMessages", HostileFormat::Store, RowsWithoutMessages, 5000},
    {"SharedFolders", HostileFormat::Store, SharedFolders, 1000},
    {"Attachments", HostileFormat::Store, Attachments, 2000},
    {"SameNames", HostileFormat::Store, SameNames, 2000},
    {"AttachmentsWithoutNodes", HostileFormat::Store, AttachmentsWithoutNodes, 10000},
    {"Images", HostileFormat::Store, Images, 1000},
    {"Recipients", HostileFormat::Store, Recipients, 5000},
    {"Properties", HostileFormat::Store, Properties, 6000},
    {"Values", HostileFormat::Store, Values, 50000},
    {"NamedProperties", HostileFormat::Store, NamedProperties, 7000},
    {"Subnodes", HostileFormat::Store, Subnodes, 5000},
    {"LongValues", HostileFormat::Store, LongValues, 6000},
    {"NestedMessages", HostileFormat::Store, NestedMessages, 200},
    {"EmbeddedMessages", HostileFormat::Store, EmbeddedMessages, 1000},
    {"RichMessages", HostileFormat::Store, RichMessages, 2000},
};

}  // namespace

std::span<const HostileShape> HostileStores() { return kShapes; }

}  // namespace tarn::test
