#include "pststore/StoreObjects.h"

#include <gtest/gtest.h>

#include <optional>

#include "pststore/HeapBytes.h"
#include "pststore/StoreHarness.h"
#include "support/pst/StoreBuilder.h"

namespace tarn::test {
namespace {

using pststore::attachment;
using pststore::folder;
using pststore::message;
using pststore::wstring;

struct Kind {
  PstLayout layout;
  PstEncoding encoding;
};

const std::vector<Kind>& AllKinds() {
  static const std::vector<Kind> kinds = {
      {PstLayout::Ansi, PstEncoding::None},       {PstLayout::Ansi, PstEncoding::Permute},
      {PstLayout::Ansi, PstEncoding::Cyclic},     {PstLayout::Unicode, PstEncoding::None},
      {PstLayout::Unicode, PstEncoding::Permute}, {PstLayout::Unicode, PstEncoding::Cyclic}};
  return kinds;
}

StoreOptions Bare() {
  StoreOptions options;
  options.isBare = true;
  return options;
}

std::u16string Wide(const wstring& text) { return std::u16string(text.begin(), text.end()); }

// What the action gives while no memory is to be had and no read succeeds: nothing is loaded.
template <typename Action>
auto WithoutLoading(const Action& action) {
  struct Faults {
    Faults() { set(1); }
    ~Faults() { set(0); }
    static void set(uint64_t ordinal) {
      PlainKernelFailAt(PlainKernelFaultMemory, ordinal);
      PlainKernelFailAt(PlainKernelFaultRead, ordinal);
    }
  } const faults;
  return action();
}

std::vector<folder> Folders(const WrittenStore& store) {
  std::vector<folder> folders;
  const auto end = pststore::folder_end(store.context());
  for (auto at = pststore::folder_begin(store.context()); at != end; ++at) {
    folders.push_back(pststore::make_folder(at));
  }
  return folders;
}

folder TheFolder(const WrittenStore& store) {
  return pststore::make_folder(pststore::folder_begin(store.context()));
}

// The messages of a folder, in the order of its rows.
std::vector<message> Messages(const WrittenStore& store, const folder& owner) {
  const pststore::table& contents = *pststore::get_contents_table(owner);
  std::vector<message> messages;
  const pststore::message_iterator end(contents.end(), store.context());
  for (pststore::message_iterator at(contents.begin(), store.context()); at != end; ++at) {
    messages.push_back(pststore::make_message(at));
  }
  return messages;
}

std::vector<attachment> Attachments(const message& owner) {
  std::vector<attachment> attachments;
  const auto end = pststore::attachment_end(owner);
  for (auto at = pststore::attachment_begin(owner); at != end; ++at) {
    attachments.push_back(pststore::make_attachment(at));
  }
  return attachments;
}

// A bare store of one folder with one message, to which the test adds.
class OneMessage {
 public:
  OneMessage() : builder_(Bare()), message_(builder_.folder(u"Inbox").message()) {}

  MessageBuilder& describe() { return message_; }
  message open() {
    store_.emplace(builder_.bytes());
    return Messages(*store_, TheFolder(*store_)).at(0);
  }
  // Of the store that was opened.
  folder inbox() const { return TheFolder(*store_); }
  void release() { store_.reset(); }

 private:
  StoreBuilder builder_;
  MessageBuilder& message_;
  std::optional<WrittenStore> store_;
};

TEST(StoreObjects, AWholeStoreInEveryLayoutAndEncoding) {
  const std::string large(30000, 'D');
  for (const Kind& kind : AllKinds()) {
    StoreBuilder builder(kind.layout, kind.encoding);
    FolderBuilder& inbox = builder.folder(u"Inbox");
    inbox.message().subject(u"first").html("<p>one</p>").attachment(u"a.bin", large);
    inbox.message().subject(u"second").body(u"two");
    builder.folder(u"Sent").message().subject(u"third");
    const WrittenStore store(builder.bytes());

    std::vector<std::u16string> seen;
    for (const folder& each : Folders(store)) {
      const auto& bag = each.get_property_bag();
      const std::u16string name = Wide(bag.read_prop<wstring>(kPropDisplayName));
      const std::vector<message> messages = Messages(store, each);
      EXPECT_EQ(bag.get_value_4(kPropContentCount), messages.size());
      for (const message& one : messages) {
        seen.push_back(name + u"/" + Wide(one.get_property_bag().read_prop<wstring>(kPropSubject)));
      }
    }
    EXPECT_EQ(seen, (std::vector<std::u16string>{u"Inbox/first", u"Inbox/second", u"Sent/third"}));

    for (const folder& each : Folders(store)) {
      for (const message& one : Messages(store, each)) {
        if (pststore::get_attachment_count(one) == 0) continue;
        const attachment file = Attachments(one).at(0);
        EXPECT_EQ(Wide(pststore::get_filename(file)), u"a.bin");
        EXPECT_EQ(Text(file.get_property_bag().get_value_variable(kPropAttachData)), large);
        EXPECT_EQ(Text(one.get_property_bag().get_value_variable(kPropHtml)), "<p>one</p>");
      }
    }
  }
}

TEST(FolderIterator, TakesFolderNodesInTheOrderOfTheirIds) {
  StoreBuilder builder(Bare());
  builder.folder(0x8082, u"late");
  builder.folder(0x0122, u"root");
  builder.folder(0x8042, u"early");
  builder.folder(0x8043, u"search");  // of another type
  const WrittenStore store(builder.bytes());
  std::vector<uint32_t> ids;
  for (const folder& each : Folders(store)) ids.push_back(each.get_id());
  EXPECT_EQ(ids, (std::vector<uint32_t>{0x0122, 0x8042, 0x8082}));
}

TEST(FolderIterator, CrossesPages) {
  StoreOptions options = Bare();
  options.file.nbt = {.leafFanOut = 2, .innerFanOut = 2};
  StoreBuilder builder(options);
  for (int i = 0; i < 20; ++i) builder.folder(u"folder");
  const WrittenStore store(builder.bytes());
  EXPECT_EQ(Folders(store).size(), 20U);
}

TEST(FolderIterator, StaysWhereItIsWhenAStepFails) {
  StoreOptions options = Bare();
  options.file.nbt = {.leafFanOut = 2, .innerFanOut = 2};
  StoreBuilder builder(options);
  for (const uint32_t nid : {0x8022U, 0x8042U, 0x8062U, 0x8082U, 0x80A2U, 0x80C2U}) {
    builder.folder(nid, u"folder").withoutContentsTable();
  }
  std::string image = builder.bytes();
  // The leaf that begins with the third folder loses its signature.
  size_t page = 0;
  while (image.substr(page, 4) != LeBytes(0x8062, 4) ||
         image.substr(page + 488, 10) != std::string("\x02\x0F\x20\0\0\0\0\0\x81\x81", 10)) {
    page += 512;
    ASSERT_LT(page, image.size());
  }
  image[page + 498] = static_cast<char>(~image[page + 498]);
  const WrittenStore store(image);
  auto at = pststore::folder_begin(store.context());
  ++at;
  for (int attempt = 0; attempt < 2; ++attempt) {
    EXPECT_EQ(Thrown<pststore::sig_mismatch>([&] { ++at; }), "page sig mismatch");
    EXPECT_EQ(pststore::make_folder(at).get_id(), 0x8042U);
    EXPECT_FALSE(at == pststore::folder_end(store.context()));
  }
}

TEST(FolderIterator, GoesOnWhenAFailureHasPassed) {
  StoreOptions options = Bare();
  options.file.nbt = {.leafFanOut = 2, .innerFanOut = 2};
  StoreBuilder builder(options);
  for (const uint32_t nid : {0x8022U, 0x8042U, 0x8062U, 0x8082U, 0x80A2U, 0x80C2U}) {
    builder.folder(nid, u"folder").withoutContentsTable();
  }
  const WrittenStore store(builder.bytes());
  auto at = pststore::folder_begin(store.context());
  ++at;
  PlainKernelFailAt(PlainKernelFaultRead, 1);
  EXPECT_EQ(Thrown<std::out_of_range>([&] { ++at; }), "fread failed");
  PlainKernelFailAt(PlainKernelFaultRead, 0);
  EXPECT_EQ(pststore::make_folder(at).get_id(), 0x8042U);
  ++at;
  EXPECT_EQ(pststore::make_folder(at).get_id(), 0x8062U);
}

TEST(FolderIterator, StoresWithoutFolders) {
  for (const bool hasNodes : {false, true}) {
    PstFileBuilder file;
    if (hasNodes) file.node(0x8004, file.block("no folder"), 0);
    const WrittenStore store(file.bytes());
    EXPECT_TRUE(pststore::folder_begin(store.context()) == pststore::folder_end(store.context()));
    EXPECT_EQ(Thrown<std::out_of_range>([&] { TheFolder(store); }), "folder iterator at its end");
    auto at = pststore::folder_begin(store.context());
    EXPECT_EQ(Thrown<std::out_of_range>([&] { ++at; }), "folder iterator at its end");
  }
}

TEST(Folder, NodesThatAreNoPropertyContext) {
  PstFileBuilder file;
  file.node(0x8022, file.block("sixteen bytes.. "), 0);
  const WrittenStore store(file.bytes());
  EXPECT_EQ(Thrown<pststore::sig_mismatch>([&] { TheFolder(store); }), "invalid heap_sig");
}

TEST(Folder, WithoutAContentsTable) {
  StoreBuilder builder(Bare());
  builder.folder(0x8022, u"Inbox").withoutContentsTable();
  const WrittenStore store(builder.bytes());
  const folder inbox = TheFolder(store);
  EXPECT_EQ(Wide(inbox.get_property_bag().read_prop<wstring>(kPropDisplayName)), u"Inbox");
  EXPECT_EQ(MissingKey<uint32_t>([&] { pststore::get_contents_table(inbox); }), 0x802EU);
}

TEST(Folder, LoadsItsContentsTableOnce) {
  StoreBuilder builder(Bare());
  builder.folder(u"Inbox").message().subject(u"one");
  const WrittenStore store(builder.bytes());
  const folder inbox = TheFolder(store);
  const pststore::table* const contents = pststore::get_contents_table(inbox).get();
  EXPECT_EQ(pststore::get_contents_table(inbox).get(), contents);
  EXPECT_EQ(contents->size(), 1U);
}

TEST(Folder, CopiesHaveTheirOwnTable) {
  StoreBuilder builder(Bare());
  builder.folder(u"Inbox").message().subject(u"one");
  std::optional<WrittenStore> store(builder.bytes());
  std::optional<folder> inbox(TheFolder(*store));
  const folder before(*inbox);
  pststore::get_contents_table(*inbox);
  const folder after(*inbox);
  // A table that was loaded is copied at once.
  EXPECT_EQ(WithoutLoading([&] { return pststore::get_contents_table(after); })->size(), 1U);
  EXPECT_THROW(WithoutLoading([&] { return pststore::get_contents_table(before); }),
               std::bad_alloc);
  folder assigned(before);
  assigned = after;
  EXPECT_NE(pststore::get_contents_table(before).get(), pststore::get_contents_table(*inbox).get());
  EXPECT_NE(pststore::get_contents_table(after).get(), pststore::get_contents_table(*inbox).get());
  inbox.reset();
  store.reset();
  EXPECT_EQ(pststore::get_contents_table(before)->size(), 1U);
  EXPECT_EQ(pststore::get_contents_table(after)->size(), 1U);
  EXPECT_EQ(pststore::get_contents_table(assigned)->size(), 1U);
}

TEST(Message, ContentsWithoutRows) {
  StoreBuilder builder(Bare());
  builder.folder(u"Inbox");
  const WrittenStore store(builder.bytes());
  const folder inbox = TheFolder(store);
  const pststore::table& contents = *pststore::get_contents_table(inbox);
  EXPECT_EQ(contents.begin(), contents.end());
  EXPECT_TRUE(Messages(store, inbox).empty());
}

TEST(Message, ComesByItsRowId) {
  StoreBuilder builder(Bare());
  FolderBuilder& inbox = builder.folder(u"Inbox");
  inbox.message(0x200044).subject(u"second");
  inbox.message(0x200024).subject(u"first");
  const WrittenStore store(builder.bytes());
  const std::vector<message> messages = Messages(store, TheFolder(store));
  ASSERT_EQ(messages.size(), 2U);
  EXPECT_EQ(messages[0].get_id(), 0x200044U);
  EXPECT_EQ(messages[1].get_id(), 0x200024U);
  const folder owner = TheFolder(store);
  const pststore::message_iterator at(pststore::get_contents_table(owner)->begin(),
                                      store.context());
  const pststore::property_bag bag = pststore::make_message_bag(at);
  EXPECT_EQ(Wide(bag.read_prop<wstring>(kPropSubject)), u"second");
}

TEST(Message, RowsWithoutAMessage) {
  StoreBuilder builder(Bare());
  builder.folder(u"Inbox").row(0x4444);
  const WrittenStore store(builder.bytes());
  EXPECT_EQ(MissingKey<uint32_t>([&] { Messages(store, TheFolder(store)); }), 0x4444U);
}

TEST(Message, WithoutAttachments) {
  OneMessage one;
  one.describe().subject(u"alone");
  const message read = one.open();
  EXPECT_EQ(pststore::get_attachment_count(read), 0U);
  EXPECT_EQ(MissingKey<uint32_t>([&] { pststore::get_attachment_table(read); }), 0x671U);
  EXPECT_EQ(MissingKey<uint32_t>([&] { pststore::attachment_begin(read); }), 0x671U);
  EXPECT_EQ(MissingKey<uint32_t>([&] { pststore::attachment_end(read); }), 0x671U);
}

TEST(Message, WithAnEmptyAttachmentTable) {
  OneMessage one;
  one.describe().withAttachmentTable();
  const message read = one.open();
  EXPECT_EQ(pststore::get_attachment_count(read), 0U);
  EXPECT_TRUE(pststore::attachment_begin(read) == pststore::attachment_end(read));
}

// A row node that does not exist is a key that is not found, too.
TEST(Message, TablesThatDoNotLoad) {
  OneMessage lost;
  lost.describe().withAttachmentTable().attachmentTable({.hnidRows = 0x8FF});
  EXPECT_EQ(pststore::get_attachment_count(lost.open()), 0U);
  OneMessage broken;
  broken.describe().withAttachmentTable().attachmentTable({.hnidRows = 0x10020});
  const message read = broken.open();
  EXPECT_EQ(Thrown<std::out_of_range>([&] { pststore::get_attachment_count(read); }), "index > 0");
}

TEST(Message, CopiesHaveTheirOwnTable) {
  OneMessage one;
  one.describe().attachment(u"a.txt", "bytes");
  std::optional<message> read(one.open());
  const message before(*read);
  EXPECT_EQ(pststore::get_attachment_count(*read), 1U);
  const message after(*read);
  // A table that was loaded is copied at once.
  EXPECT_EQ(WithoutLoading([&] { return pststore::get_attachment_count(after); }), 1U);
  // Whichever comes first, memory or a read.
  EXPECT_THROW(WithoutLoading([&] { return pststore::get_attachment_count(before); }),
               std::exception);
  message assigned(before);
  assigned = after;
  EXPECT_NE(pststore::get_attachment_table(after).get(),
            pststore::get_attachment_table(*read).get());
  EXPECT_EQ(pststore::get_attachment_table(*read).get(),
            pststore::get_attachment_table(*read).get());
  read.reset();
  one.release();
  for (const message* each : {&before, &after, static_cast<const message*>(&assigned)}) {
    EXPECT_EQ(Wide(pststore::get_filename(Attachments(*each).at(0))), u"a.txt");
  }
}

// The iterator's copy of the node is made when the table is there, and has what that needed.
TEST(Attachment, SharesTheSubnodesThatTheTableLoaded) {
  OneMessage one;
  one.describe().attachment(u"a.txt", "bytes");
  const message read = one.open();
  const auto at = pststore::attachment_begin(read);
  // One read, of the attachment's own data.
  PlainKernelFailAt(PlainKernelFaultRead, 2);
  EXPECT_EQ(Wide(pststore::get_filename(pststore::make_attachment(at))), u"a.txt");
  PlainKernelFailAt(PlainKernelFaultRead, 0);
}

// Their tables are not compared.
TEST(StoreObjects, IteratorsAreEqualWhenTheirRowsAre) {
  OneMessage one;
  one.describe().attachment(u"a.txt", "bytes").attachment(u"b.txt", "bytes");
  const message left = one.open();
  const message right(left);
  ASSERT_NE(pststore::get_attachment_table(left), pststore::get_attachment_table(right));
  auto at = pststore::attachment_begin(left);
  EXPECT_TRUE(at == pststore::attachment_begin(right));
  ++at;
  EXPECT_FALSE(at == pststore::attachment_begin(right));
  ++at;
  EXPECT_TRUE(at == pststore::attachment_end(right));

  const folder inbox = one.inbox();
  const folder copy(inbox);
  const pststore::table& contents = *pststore::get_contents_table(inbox);
  const pststore::table& others = *pststore::get_contents_table(copy);
  ASSERT_NE(&contents, &others);
  const auto context = left.get_property_bag().get_node().get_context();
  pststore::message_iterator row(contents.begin(), context);
  EXPECT_TRUE(row == pststore::message_iterator(others.begin(), context));
  ++row;
  EXPECT_FALSE(row == pststore::message_iterator(others.begin(), context));
  EXPECT_TRUE(row == pststore::message_iterator(others.end(), context));
}

TEST(Attachment, ComesInTheOrderOfTheRows) {
  OneMessage one;
  one.describe().attachment(u"b.txt", "second").attachment(u"a.txt", "first");
  const message read = one.open();
  EXPECT_EQ(pststore::get_attachment_count(read), 2U);
  const std::vector<attachment> attachments = Attachments(read);
  EXPECT_EQ(Text(attachments.at(0).get_property_bag().get_value_variable(kPropAttachData)),
            "second");
  EXPECT_EQ(Text(attachments.at(1).get_property_bag().get_value_variable(kPropAttachData)),
            "first");
}

TEST(Attachment, RowsWithoutASubnode) {
  OneMessage one;
  const uint32_t nid = one.describe().attach().longName(u"a").withoutNode().nid();
  const message read = one.open();
  EXPECT_EQ(pststore::get_attachment_count(read), 1U);
  EXPECT_EQ(MissingKey<uint32_t>([&] { Attachments(read); }), nid);
}

TEST(Attachment, HasItsLongNameOrItsShortOne) {
  OneMessage one;
  one.describe().attach().data("1").longName(u"long name.text").shortName(u"long~1.tex");
  one.describe().attach().data("2").shortName(u"short.tex");
  one.describe().attach().data("3");
  one.describe().attach().data("4").longName(u"").shortName(u"short.tex");
  const std::vector<attachment> attachments = Attachments(one.open());
  EXPECT_EQ(Wide(pststore::get_filename(attachments.at(0))), u"long name.text");
  EXPECT_EQ(Wide(pststore::get_filename(attachments.at(1))), u"short.tex");
  EXPECT_EQ(MissingKey<uint16_t>([&] { pststore::get_filename(attachments.at(2)); }),
            kPropAttachFilename);
  EXPECT_EQ(Wide(pststore::get_filename(attachments.at(3))), u"");
}

TEST(StoreObjects, KeepTheStoreOpen) {
  OneMessage one;
  one.describe().attachment(u"a.txt", "bytes");
  std::optional<attachment> file;
  {
    const message read = one.open();
    file.emplace(Attachments(read).at(0));
  }
  one.release();
  EXPECT_EQ(Text(file->get_property_bag().get_value_variable(kPropAttachData)), "bytes");
}

TEST(StoreObjects, WithoutMemory) {
  StoreBuilder builder(Bare());
  builder.folder(u"Inbox").message().attachment(u"a.txt", "bytes");
  const WrittenStore store(builder.bytes());
  FailEachAllocation([&] {
    const std::vector<folder> folders = Folders(store);
    const std::vector<message> messages = Messages(store, folders.at(0));
    EXPECT_EQ(pststore::get_attachment_count(messages.at(0)), 1U);
    EXPECT_EQ(Wide(pststore::get_filename(Attachments(messages[0]).at(0))), u"a.txt");
  });
}

}  // namespace
}  // namespace tarn::test
