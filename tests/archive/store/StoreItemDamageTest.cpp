// Items of stores that are damaged themselves: what cannot be read is a trouble of the item, and
// all else of it is given.

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <set>
#include <vector>

#include "StoreBreaker.h"
#include "StoreListing.h"
#include "archive/mapi/MapiMessage.h"
#include "support/pst/HeapBuilder.h"
#include "support/pst/PstBytes.h"
#include "support/pst/StoreTemplates.h"

namespace tarn::test {
namespace {

using namespace archive;

constexpr uint32_t kNid = 0x200024;

class StoreItemDamage : public ::testing::TestWithParam<PstLayout> {
 protected:
  StoreBuilder& store() { return store_; }
  MessageBuilder& message() { return *message_; }

  StoreBreaker& breaker() {
    if (breaker_ == nullptr) breaker_ = std::make_unique<StoreBreaker>(store_);
    return *breaker_;
  }

  // After all damage.
  Item& item() {
    if (opened_ == nullptr) {
      opened_ = std::make_unique<OpenedStore>(breaker().image());
      item_ = opened_->find("200024");
    }
    return *item_;
  }
  ItemReader& reader() { return opened_->reader(); }

 private:
  StoreBuilder store_{GetParam()};
  MessageBuilder* message_ = &store_.folder("Inbox").message().subject(u"Mail").from(u"Ann");
  std::unique_ptr<StoreBreaker> breaker_;
  std::unique_ptr<OpenedStore> opened_;
  std::unique_ptr<Item> item_;
};

INSTANTIATE_TEST_SUITE_P(Layouts, StoreItemDamage,
                         ::testing::Values(PstLayout::Ansi, PstLayout::Unicode));

TEST_P(StoreItemDamage, TheMessage) {
  breaker().data({kNid});
  EXPECT_EQ(item().fields(Detail::Envelope).subject, "");
  EXPECT_EQ(Reasons(item().troubles()), "the message cannot be read (a block is damaged)\n");
  EXPECT_EQ(Reasons(item().bodies().troubles), "the message cannot be read (a block is damaged)\n");
  EXPECT_EQ(item().attachments().size(), 0U);
  EXPECT_EQ(AttachmentBytes(item(), 0), "!the message cannot be read (a block is damaged)");
  EXPECT_EQ(item().originalHeaders().trouble().kind, TroubleKind::Damaged);
}

TEST_P(StoreItemDamage, WhatIsNoSetOfProperties) {
  store().folder("Other").row(0x3004);
  store().node(0x3004, PstNodeParts::OfPages({"neither heap nor index"}));
  std::string listed = OpenedStore(store()).listing();
  EXPECT_NE(listed.find("3004 in Other:  !the message cannot be read (the data is damaged)\n"),
            std::string::npos)
      << listed;
}

TEST_P(StoreItemDamage, AWholeBody) {
  message().body(std::u16string(5000, u'x')).html("<p>page</p>");
  breaker().data({kNid, ValueSubnode(0)});
  const Bodies bodies = item().bodies();
  EXPECT_FALSE(bodies.text);
  ASSERT_TRUE(bodies.html);
  EXPECT_EQ(bodies.html->bytes, "<p>page</p>");
  ASSERT_EQ(bodies.troubles.size(), 1U);
  EXPECT_EQ(bodies.troubles[0].kind, TroubleKind::Damaged);
  EXPECT_NE(bodies.troubles[0].reason.find("a block is damaged"), std::string::npos)
      << bodies.troubles[0].reason;
}

TEST_P(StoreItemDamage, APartOfABody) {
  message().body(std::string(20000, 'x'));
  breaker().dataBlock({kNid, ValueSubnode(0)}, 1);
  const Bodies bodies = item().bodies();
  EXPECT_FALSE(bodies.text);
  EXPECT_EQ(bodies.troubles.size(), 1U);
}

TEST_P(StoreItemDamage, ABodyThatIsNotThere) {
  message().properties().raw(kPropBody, kTypeString, 0x803F);
  const Bodies bodies = item().bodies();
  EXPECT_FALSE(bodies.text);
  ASSERT_EQ(bodies.troubles.size(), 1U);
  EXPECT_NE(bodies.troubles[0].reason.find("it is not in the store"), std::string::npos)
      << bodies.troubles[0].reason;
  EXPECT_EQ(item().fields(Detail::Headline).subject, "Mail");
}

TEST_P(StoreItemDamage, APartOfTheProperties) {
  // An index of two parts, of which one is not there.
  PropertyContextBuilder part(GetParam());
  part.text(kPropSubject, u"Mail");
  HeapBuilder heap(GetParam(), kPropertyContext);
  const uint32_t subject = heap.add(Utf16Bytes(u"Half"));
  const uint32_t leaf =
      heap.add(LeBytes(kPropSubject, 2) + LeBytes(kTypeString, 2) + LeBytes(subject, 4));
  const uint32_t inner = heap.add(LeBytes(kPropSubject, 2) + LeBytes(leaf, 4) +
                                  LeBytes(kPropBody, 2) + LeBytes(0x7FE0, 4));
  heap.setRoot(
      heap.add("\xB5" + LeBytes(2, 1) + LeBytes(6, 1) + LeBytes(1, 1) + LeBytes(inner, 4)));
  store().folder("Other").row(0x3004);
  store().node(0x3004, PstNodeParts::OfPages(heap.pages()));
  OpenedStore opened(store());
  const auto half = opened.find("3004");
  EXPECT_EQ(half->fields(Detail::Headline).subject, "Half");
  EXPECT_EQ(Reasons(half->troubles()), "a part of the properties cannot be read\n");
  EXPECT_EQ(half->properties()->properties().bytes(kPropBody, 10).trouble().reason,
            "property 0x1000 may be in the part that cannot be read");
}

TEST_P(StoreItemDamage, IndexesOfPropertiesThatAreNone) {
  uint32_t nid = 0x3004;
  FolderBuilder& other = store().folder("Other");
  const auto add = [&](const std::function<uint32_t(HeapBuilder&)>& root) {
    HeapBuilder heap(GetParam(), kPropertyContext);
    heap.setRoot(root(heap));
    other.row(nid);
    store().node(nid, PstNodeParts::OfPages(heap.pages()));
    nid += 0x20;
  };
  add([](HeapBuilder& heap) { return heap.add("\xB5\x02\x06"); });
  add([](HeapBuilder& heap) { return heap.add(std::string("\xB4\x02\x06\0\0\0\0\0", 8)); });
  add([](HeapBuilder& heap) { return heap.add(std::string("\xB5\x04\x06\0\0\0\0\0", 8)); });
  add([](HeapBuilder& heap) { return heap.add(std::string("\xB5\x02\x04\0\0\0\0\0", 8)); });
  add([](HeapBuilder& heap) { return heap.add(std::string("\xB5\x02\x06\x11\0\0\0\0", 8)); });
  OpenedStore opened(store());
  for (const char* id : {"3004", "3024", "3044", "3064", "3084"}) {
    const auto item = opened.find(id);
    item->fields(Detail::Headline);
    EXPECT_EQ(Reasons(item->troubles()), "the message cannot be read (the data is damaged)\n")
        << id;
  }
}

// An index whose parts contain themselves is as large as what its node can back.
TEST_P(StoreItemDamage, AnIndexOfPropertiesThatContainsItself) {
  HeapBuilder heap(GetParam(), kPropertyContext);
  const uint32_t inner = heap.reserve(600);
  std::string bytes;
  for (int i = 0; i < 100; ++i) bytes += LeBytes(1, 2) + LeBytes(inner, 4);
  heap.set(inner, bytes);
  heap.setRoot(heap.add(std::string("\xB5\x02\x06\x10", 4) + LeBytes(inner, 4)));
  store().folder("Other").row(0x3004);
  store().node(0x3004, PstNodeParts::OfPages(heap.pages()));
  OpenedStore opened(store());
  const auto item = opened.find("3004");
  item->fields(Detail::Headline);
  EXPECT_EQ(Reasons(item->troubles()), "a part of the properties cannot be read\n");
}

TEST_P(StoreItemDamage, TheTableOfRecipients) {
  message().to(u"Bob; Cy").recipient().text(kPropDisplayName, u"Bob");
  breaker().data({kNid, kRecipientTableNid});
  EXPECT_EQ(AddressText(item().fields(Detail::Envelope).to), "Bob <>, Cy <>");
  EXPECT_EQ(Reasons(item().troubles()),
            "the recipients cannot be read: their table cannot be read (a block is damaged)\n");
}

TEST_P(StoreItemDamage, APartOfTheTableOfRecipients) {
  constexpr size_t kRecipients = 1000;
  for (size_t i = 0; i < kRecipients; ++i) message().recipient();
  const NodePath table = {kNid, kRecipientTableNid};
  breaker().dataBlock({kNid, kRecipientTableNid, breaker().lastSubnode(table)}, 0);
  const size_t given = item().fields(Detail::Envelope).to.size();
  EXPECT_GT(given, 0U);
  EXPECT_LT(given, kRecipients);
  EXPECT_EQ(Reasons(item().troubles()),
            "1 of " + std::to_string(given + 1) +
                " recipients cannot be read whole: a part of their table cannot be read\n");
}

TEST_P(StoreItemDamage, CellsOfRecipients) {
  TableContextBuilder table(GetParam());
  table.column(kPropDisplayName, kTypeString).column(0x39FE, kTypeString);
  table.row(0).cell(kPropDisplayName, Utf16Bytes(u"Bob")).cell(0x39FE, uint64_t{0x7FE0});
  message().recipientTable(table.build());
  EXPECT_EQ(AddressText(item().fields(Detail::Envelope).to), "Bob <>");
  ASSERT_EQ(item().troubles().size(), 1U);
  EXPECT_NE(Reasons(item().troubles()).find("1 of 1 recipients cannot be read whole"),
            std::string::npos);
}

TEST_P(StoreItemDamage, TheTableOfAttachments) {
  message().attachment(u"a", "first").attachment(u"b", "second");
  breaker().data({kNid, kAttachmentTableNid});
  ASSERT_EQ(item().attachments().size(), 2U);
  EXPECT_EQ(AttachmentBytes(item(), 0), "first");
  EXPECT_EQ(AttachmentBytes(item(), 1), "second");
  EXPECT_EQ(Reasons(item().troubles()), "");
}

TEST_P(StoreItemDamage, APartOfTheTableOfAttachments) {
  for (int i = 0; i < 400; ++i) message().attachment(u"a", std::to_string(i));
  const NodePath table = {kNid, kAttachmentTableNid};
  breaker().dataBlock({kNid, kAttachmentTableNid, breaker().lastSubnode(table)}, 0);
  ASSERT_EQ(item().attachments().size(), 400U);
  std::set<std::string> contents;
  for (size_t i = 0; i < 400; ++i) contents.insert(AttachmentBytes(item(), i));
  EXPECT_EQ(contents.size(), 400U);
  EXPECT_EQ(contents.count("0"), 1U);
  EXPECT_EQ(contents.count("399"), 1U);
}

TEST_P(StoreItemDamage, TheSubnodes) {
  message().attachment(u"a", "first").body(u"Text");
  breaker().subnodes({kNid});
  EXPECT_EQ(item().bodies().text, "Text");
  EXPECT_EQ(item().fields(Detail::Envelope).subject, "Mail");
  EXPECT_EQ(item().attachments().size(), 0U);
  const std::string reasons = Reasons(item().troubles());
  EXPECT_NE(reasons.find(
                "the attachments cannot be read: their table cannot be read (a block is damaged)"),
            std::string::npos)
      << reasons;
  EXPECT_NE(reasons.find(
                "the recipients cannot be read: their table cannot be read (a block is damaged)"),
            std::string::npos)
      << reasons;
}

TEST_P(StoreItemDamage, ThePropertiesOfAnAttachment) {
  message().attachment(u"a", "first").attachment(u"b", "second");
  breaker().data({kNid, 0x8025});
  ASSERT_EQ(item().attachments().size(), 2U);
  size_t damaged = 0;
  for (size_t i = 0; i < 2; ++i) {
    if (!item().attachments()[i].trouble) continue;
    ++damaged;
    EXPECT_EQ(item().attachments()[i].trouble->reason,
              "the attachment cannot be read (a block is damaged)");
  }
  EXPECT_EQ(damaged, 1U);
}

TEST_P(StoreItemDamage, TheBytesOfAnAttachment) {
  message().attachment(u"a", Pattern(100000)).attachment(u"b", "second");
  breaker().dataBlock({kNid, 0x8025, ValueSubnode(0)}, 5);
  ASSERT_EQ(item().attachments().size(), 2U);
  EXPECT_EQ(item().attachments()[0].size, 100000U);
  // What comes before the damage can be had.
  const auto source = item().open(0);
  ASSERT_TRUE(source);
  std::string begin(30000, '\0');
  EXPECT_EQ(*(*source)->read(begin), 30000U);
  EXPECT_TRUE(begin == Pattern(100000).substr(0, 30000));
  EXPECT_EQ(AttachmentBytes(item(), 0), "!property 0x3701 cannot be read (a block is damaged)");
  EXPECT_EQ(AttachmentBytes(item(), 1), "second");
}

TEST_P(StoreItemDamage, AnEmbeddedMessage) {
  message().attach().embedded().subject(u"Inner");
  breaker().data({kNid, 0x8025, breaker().lastSubnode({kNid, 0x8025})});
  ASSERT_EQ(item().attachments().size(), 1U);
  EXPECT_EQ(item().attachments()[0].kind, AttachmentKind::Item);
  const auto inner = item().embedded(0);
  ASSERT_FALSE(inner);
  EXPECT_EQ(inner.trouble().reason, "the embedded message cannot be read (a block is damaged)");
}

TEST_P(StoreItemDamage, TheNamesOfNamedProperties) {
  breaker().data({0x61});
  item().fields(Detail::Envelope);
  EXPECT_EQ(Reasons(item().troubles()), "");
  EXPECT_EQ(item().properties()->nameOf(0x8000), std::nullopt);
  const auto entry = reader().next();
  ASSERT_TRUE(entry && std::holds_alternative<PlaceTrouble>(*entry));
  EXPECT_EQ(std::get<PlaceTrouble>(*entry).place.id, "61");
  EXPECT_EQ(std::get<PlaceTrouble>(*entry).trouble.reason,
            "the names of named properties cannot be read (a block is damaged)");
}

TEST_P(StoreItemDamage, OneStreamOfTheNames) {
  PropertyContextBuilder names(GetParam());
  names.raw(3, kTypeBinary, 0x7FE0);
  store().nodes().nameMap = names.build();
  item().fields(Detail::Envelope);
  const auto entry = reader().next();
  ASSERT_TRUE(entry && std::holds_alternative<PlaceTrouble>(*entry));
  EXPECT_EQ(std::get<PlaceTrouble>(*entry).trouble.reason,
            "the names of named properties cannot be read: property 0x0003 cannot be read (the "
            "data is damaged)");
}

TEST_P(StoreItemDamage, AnIndexOfPropertiesOutOfOrder) {
  HeapBuilder heap(GetParam(), kPropertyContext);
  const uint32_t subject = heap.add(Utf16Bytes(u"Mail"));
  const uint32_t leaf =
      heap.add(LeBytes(kPropBody, 2) + LeBytes(kTypeString, 2) + LeBytes(0, 4) +
               LeBytes(kPropSubject, 2) + LeBytes(kTypeString, 2) + LeBytes(subject, 4) +
               LeBytes(kPropSubject, 2) + LeBytes(kTypeString, 2) + LeBytes(0, 4));
  heap.setRoot(heap.add(std::string("\xB5\x02\x06\0", 4) + LeBytes(leaf, 4)));
  store().folder("Other").row(0x3004);
  store().node(0x3004, PstNodeParts::OfPages(heap.pages()));
  OpenedStore opened(store());
  const auto item = opened.find("3004");
  EXPECT_EQ(item->fields(Detail::Headline).subject, "Mail");
  EXPECT_EQ(item->properties()->properties().tags().size(), 2U);
}

// Each shape is a table that no rows can be read of.
TEST_P(StoreItemDamage, TablesThatAreNone) {
  std::vector<PstNodeParts> tables;
  HeapBuilder heap(GetParam(), kTableContext);
  heap.setRoot(heap.add(std::string("\x7C\x01", 2)));
  tables.push_back(PstNodeParts::OfPages(heap.pages()));
  for (const uint16_t rowEnd : {uint16_t{0}, uint16_t{0xFFFF}}) {
    TableShape shape;
    shape.rgib = {8, 8, 8, rowEnd};
    TableContextBuilder table(GetParam(), shape);
    table.column(kPropDisplayName, kTypeString);
    table.row(0).cell(kPropDisplayName, Utf16Bytes(u"Bob"));
    tables.push_back(table.build());
  }
  for (size_t i = 0; i < tables.size(); ++i) {
    StoreBuilder store(GetParam());
    store.folder("Inbox").message().subject(u"Mail").recipientTable(tables[i]);
    OpenedStore opened(store);
    const auto item = opened.find("200024");
    EXPECT_EQ(item->fields(Detail::Envelope).to.size(), 0U);
    EXPECT_EQ(Reasons(item->troubles()),
              "the recipients cannot be read: their table cannot be read (the data is damaged)\n")
        << i;
  }
}

// The row ends before its cells, or before the bits that tell which it has.
TEST_P(StoreItemDamage, CellsBeyondTheirRow) {
  for (const std::array<uint16_t, 4>& rgib :
       {std::array<uint16_t, 4>{8, 8, 8, 9}, std::array<uint16_t, 4>{8, 8, 100, 12}}) {
    TableShape shape;
    shape.rgib = rgib;
    TableContextBuilder table(GetParam(), shape);
    table.column(kPropDisplayName, kTypeString);
    table.row(0).cell(kPropDisplayName, Utf16Bytes(u"Bob"));
    StoreBuilder store(GetParam());
    store.folder("Inbox").message().subject(u"Mail").recipientTable(table.build());
    OpenedStore opened(store);
    const auto item = opened.find("200024");
    const ItemFields& fields = item->fields(Detail::Envelope);
    for (const Address& person : fields.to) EXPECT_NE(person.name, "Bob");
    EXPECT_EQ(fields.subject, "Mail");
  }
}

TEST_P(StoreItemDamage, ARowTellsItsProperties) {
  auto& recipient = message().recipient();
  recipient.text(kPropDisplayName, u"Bob").number(0x0C15, kTypeInt32, 2);
  item().fields(Detail::Envelope);
  const auto row = item().properties()->recipient(0);
  ASSERT_TRUE(row);
  std::set<uint16_t> ids;
  for (const mapi::PropertyTag& tag : (*row)->tags()) ids.insert(tag.id);
  EXPECT_TRUE(ids.contains(kPropDisplayName) && ids.contains(0x0C15));
  EXPECT_FALSE(ids.contains(0x39FF));
}

}  // namespace
}  // namespace tarn::test
