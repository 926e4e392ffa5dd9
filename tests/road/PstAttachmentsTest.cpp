// The attachments of a store's message, as the callback sees them.

#include "FileFormats/Pst/PstAttachments.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <vector>

#include "PstReading.h"
#include "Tarnbase/PlainKernel.h"
#include "pststore/StoreObjects.h"
#include "support/FaultSweep.h"
#include "support/pst/StoreTemplates.h"

namespace tarn::test {
namespace {

struct Seen {
  std::string bytes;
  bool hasBlock;
  std::u16string name;
  std::vector<std::pair<std::u16string, std::u16string>> properties;
};

struct Collector {
  std::vector<Seen> seen;
  Status answer;

  static Status Take(void* user, TrackedBuffer<char>* data, const char16_t* name,
                     PropertyList* properties) {
    auto& self = *static_cast<Collector*>(user);
    Seen& seen =
        self.seen.emplace_back(Seen{std::string(data->view()), data->hasBlock(), name, {}});
    for (const AttachmentProperty& property : properties->elements()) {
      seen.properties.emplace_back(property.name, property.value);
    }
    return self.answer;
  }
};

class PstAttachments : public ::testing::Test {
 protected:
  MessageBuilder& message() { return store_->folder("Inbox").message(); }

  Status enumerate(uint32_t index, bool infoOnly = false) {
    reading_.emplace(*store_);
    const auto folder = pststore::make_folder(pststore::folder_begin(reading_->context));
    const pststore::message source = pststore::make_message(pststore::message_iterator(
        pststore::get_contents_table(folder)->begin(), reading_->context));
    const AttachmentRequest request = {index, infoOnly, Collector::Take, &collector_};
    return EnumeratePstAttachments(source, request, reading_->fileSize);
  }
  Status all(bool infoOnly = false) { return enumerate(kAllAttachments, infoOnly); }
  std::vector<Seen>& seen() { return collector_.seen; }
  void use(PstLayout layout) {
    store_.emplace(SmallStore(layout));
    collector_.seen.clear();
  }

  std::optional<StoreBuilder> store_{std::in_place, SmallStore()};
  std::optional<PstReading> reading_;
  Collector collector_;
};

TEST_F(PstAttachments, GivesBytesNamesAndPropertiesInRowOrder) {
  for (const PstLayout layout : kBothLayouts) {
    use(layout);
    MessageBuilder& m = message();
    m.attach().longName(u"a \u20AC.txt").shortName(u"A~1.TXT").data("first").mimeTag(u"text/plain");
    m.attach()
        .shortName(u"B.TXT")
        .data(std::string(20000, 'b'))
        .contentId(u"not looked at")
        .created(116444736000000000 + 10000000ULL * 1234567890)
        .modified(116444736000000000);
    ASSERT_EQ(all(), StatusOk);
    ASSERT_EQ(seen().size(), 2u);
    EXPECT_EQ(seen()[0].bytes, "first");
    EXPECT_EQ(seen()[0].name, u"a \u20AC.txt");
    using Properties = std::vector<std::pair<std::u16string, std::u16string>>;
    EXPECT_EQ(seen()[0].properties,
              (Properties{{u"Content-ID:", u"a \u20AC.txt"}, {u"MimeType", u"text/plain"}}));
    EXPECT_EQ(seen()[1].bytes, std::string(20000, 'b'));
    EXPECT_EQ(seen()[1].name, u"B.TXT");
    EXPECT_EQ(seen()[1].properties,
              (Properties{{u"MsgCreationTime", u"1234567890"}, {u"MsgModificationTime", u"0"}}));
  }
}

// The callback sees the file name in full.
TEST_F(PstAttachments, CutsValuesButNotTheName) {
  const std::u16string longName(200, u'n');
  const std::u16string longTag(128, u't');
  message().attach().longName(longName).data("x").mimeTag(longTag);
  ASSERT_EQ(all(), StatusOk);
  EXPECT_EQ(seen().at(0).name, longName);
  EXPECT_EQ(seen()[0].properties.at(0).second, std::u16string(127, u'n'));
  EXPECT_EQ(seen()[0].properties.at(1).second, std::u16string(127, u't'));
}

TEST_F(PstAttachments, EndsNamesAndValuesAtTheirFirstNul) {
  message()
      .attach()
      .longName(std::u16string_view(u"a\0b", 3))
      .data("x")
      .mimeTag(std::u16string_view(u"\0t", 2));
  ASSERT_EQ(all(), StatusOk);
  EXPECT_EQ(seen().at(0).name, u"a");
  ASSERT_EQ(seen()[0].properties.size(), 2u);
  EXPECT_EQ(seen()[0].properties[0].second, u"a");
  // Not empty, so there is a property; its text is.
  EXPECT_EQ(seen()[0].properties[1].second, u"");
}

TEST_F(PstAttachments, LeavesOutEmptyStrings) {
  message().attach().longName(u"").mimeTag(u"").data("x");
  ASSERT_EQ(all(), StatusOk);
  EXPECT_EQ(seen().at(0).name, u"");
  EXPECT_TRUE(seen()[0].properties.empty());
}

// A text of one terminating zero is empty as well; one of two is not.
TEST_F(PstAttachments, LeavesOutStringsOfOneNul) {
  const std::u16string_view nuls(u"\0\0", 2);
  for (const PstLayout layout : kBothLayouts) {
    use(layout);
    MessageBuilder& m = message();
    m.attach().longName(nuls.substr(1)).mimeTag(nuls.substr(1)).data("x");
    m.attach().longName(u"a").mimeTag(nuls).data("y");
    ASSERT_EQ(all(), StatusOk);
    ASSERT_EQ(seen().size(), 2u);
    EXPECT_EQ(seen()[0].name, u"");
    EXPECT_TRUE(seen()[0].properties.empty());
    ASSERT_EQ(seen()[1].properties.size(), 2u);
    EXPECT_EQ(seen()[1].properties[1].first, u"MimeType");
    EXPECT_EQ(seen()[1].properties[1].second, u"");
  }
}

TEST_F(PstAttachments, LeavesTheBytesWhenOnlyTheListIsWanted) {
  // Not even the method is needed then, nor the bytes.
  message().attach().longName(u"a");
  ASSERT_EQ(all(true), StatusOk);
  ASSERT_EQ(seen().size(), 1u);
  EXPECT_FALSE(seen()[0].hasBlock);
  EXPECT_EQ(seen()[0].bytes, "");
}

TEST_F(PstAttachments, EndsSilentlyWithoutMethodOrBytes) {
  MessageBuilder& m = message();
  m.attach().longName(u"a").data("x").without(kPropAttachMethod);
  m.attach().longName(u"b").data("y");
  EXPECT_EQ(all(), StatusOk);
  EXPECT_TRUE(seen().empty());
  use(PstLayout::Unicode);
  message().attach().longName(u"a").method(1);
  EXPECT_EQ(all(), StatusOk);
  EXPECT_TRUE(seen().empty());
}

TEST_F(PstAttachments, GivesTheRawBytesOfAnEmbeddedMessage) {
  for (const PstLayout layout : kBothLayouts) {
    use(layout);
    AttachmentBuilder& attachment = message().attach().longName(u"m").method(5);
    attachment.properties().object(kPropAttachData, 0x200024, 0x11);
    attachment.properties().subnode(0x200024, MessageBuilder(layout, {}, 0x200024).build());
    ASSERT_EQ(all(), StatusOk);
    ASSERT_EQ(seen().size(), 1u);
    EXPECT_EQ(seen()[0].bytes, std::string("\x24\x00\x20\x00\x11\x00\x00\x00", 8));
  }
}

TEST_F(PstAttachments, EndsSilentlyAtAnEmbeddedMessageThatCannotBeOpened) {
  MessageBuilder& m = message();
  m.attach().longName(u"a").data("x");
  m.attach().longName(u"missing").method(5).properties().object(kPropAttachData, 0x200024, 8);
  m.attach().longName(u"behind").data("y");
  EXPECT_EQ(all(), StatusOk);
  ASSERT_EQ(seen().size(), 1u);
  EXPECT_EQ(seen()[0].name, u"a");

  use(PstLayout::Unicode);
  message().attach().longName(u"short").method(5).property(kPropAttachData, kTypeObject, "abc");
  EXPECT_EQ(all(), StatusOk);
  EXPECT_TRUE(seen().empty());

  use(PstLayout::Unicode);
  AttachmentBuilder& noBag = message().attach().longName(u"no bag").method(5);
  noBag.properties().object(kPropAttachData, 0x200024, 8);
  noBag.properties().subnode(0x200024, PstNodeParts::OfPages({std::string(50, 'x')}));
  EXPECT_EQ(all(), StatusOk);
  EXPECT_TRUE(seen().empty());
}

// Of method 5 only the list is wanted: the message is not opened.
TEST_F(PstAttachments, ListsAnEmbeddedMessageUnopened) {
  message().attach().longName(u"m").method(5).properties().object(kPropAttachData, 0x200024, 8);
  EXPECT_EQ(all(true), StatusOk);
  EXPECT_EQ(seen().size(), 1u);
}

TEST_F(PstAttachments, CallsBackForTheOneThatIsAskedFor) {
  for (const PstLayout layout : kBothLayouts) {
    for (const uint32_t number : {1u, 2u, 3u}) {
      use(layout);
      MessageBuilder& m = message();
      m.attachment(u"1", "one").attachment(u"2", "two").attachment(u"3", "three");
      ASSERT_EQ(enumerate(number), StatusOk);
      ASSERT_EQ(seen().size(), 1u);
      EXPECT_EQ(seen()[0].name, std::u16string(1, static_cast<char16_t>(u'0' + number)));
    }
  }
}

TEST_F(PstAttachments, CallsBackForNoneBeyondTheLast) {
  for (const uint32_t number : {0u, 3u, 0x80000000u, 0xFFFFFFFEu}) {
    use(PstLayout::Unicode);
    message().attachment(u"1", "one").attachment(u"2", "two");
    EXPECT_EQ(enumerate(number), StatusOk);
    EXPECT_TRUE(seen().empty()) << number;
  }
}

// The number rises for attachments passed over, and those are not opened.
TEST_F(PstAttachments, PassesOverBrokenAttachmentsThatAreNotAskedFor) {
  MessageBuilder& m = message();
  m.attach().longName(u"gone").withoutNode();
  m.attachment(u"2", "two");
  ASSERT_EQ(enumerate(2), StatusOk);
  ASSERT_EQ(seen().size(), 1u);
  EXPECT_EQ(seen()[0].bytes, "two");
}

TEST_F(PstAttachments, EndsSilentlyAtABrokenAttachment) {
  MessageBuilder& m = message();
  m.attachment(u"1", "one");
  m.attach().longName(u"gone").withoutNode();
  m.attachment(u"3", "three");
  EXPECT_EQ(all(), StatusOk);
  EXPECT_EQ(seen().size(), 1u);
  EXPECT_EQ(enumerate(2), StatusOk);
  EXPECT_EQ(seen().size(), 1u);
}

TEST_F(PstAttachments, EndsSilentlyAtAnAttachmentWithoutAnyName) {
  MessageBuilder& m = message();
  m.attach().data("x");
  m.attachment(u"2", "two");
  EXPECT_EQ(all(true), StatusOk);
  EXPECT_TRUE(seen().empty());
}

TEST_F(PstAttachments, SkipsTimesOfAnotherSizeAndPrintsEarlyOnesUnsigned) {
  MessageBuilder& m = message();
  m.attach().longName(u"a").created(0).property(kPropLastModificationTime, kTypeBinary, "seven b");
  ASSERT_EQ(all(true), StatusOk);
  ASSERT_EQ(seen().at(0).properties.size(), 2u);
  EXPECT_EQ(seen()[0].properties[1].first, u"MsgCreationTime");
  EXPECT_EQ(seen()[0].properties[1].second, u"18446744062065078016");
}

TEST_F(PstAttachments, EndsWhereTheCallbackSays) {
  const Status other = Status::FromCode(7);
  for (const auto& [answer, expected] : {std::pair<Status, Status>{StatusDone, StatusOk},
                                         {StatusFailed, StatusFailed},
                                         {StatusWriteFailed, StatusWriteFailed},
                                         {other, other}}) {
    use(PstLayout::Unicode);
    message().attachment(u"1", "one").attachment(u"2", "two");
    collector_.answer = answer;
    EXPECT_EQ(all(), expected);
    EXPECT_EQ(seen().size(), 1u);
  }
}

// The name of the first property is the first text that is converted.
TEST_F(PstAttachments, EndAtAContentIdThatCannotBeAdded) {
  message().attach().longName(u"a").data("x").mimeTag(u"text/plain");
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(all(true), StatusFailed);
  PlainKernelFailAt(PlainKernelFaultText, 0);
  EXPECT_TRUE(seen().empty());
}

TEST_F(PstAttachments, EndAtAMimeTypeThatCannotBeAdded) {
  message().attach().shortName(u"a").data("x").mimeTag(u"text/plain").created(0);
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(all(true), StatusFailed);
  PlainKernelFailAt(PlainKernelFaultText, 0);
  EXPECT_TRUE(seen().empty());
}

// Each time is converted as a name and a value, the creation before the modification.
TEST_F(PstAttachments, EndAtATimeThatCannotBeAdded) {
  // What was read last stays in the fixture.
  const uint64_t calls = FailInTurn(PlainKernelFaultText, [this](FaultedWork& faulted) {
    use(PstLayout::Unicode);
    MessageBuilder& m = message();
    m.attach().shortName(u"a").data("x").created(0).modified(0);
    m.attach().shortName(u"b").data("y");
    const Status status = faulted([this] { return all(true); });
    EXPECT_EQ(status, faulted.isReached() ? StatusFailed : StatusOk);
    EXPECT_EQ(seen().size(), faulted.isReached() ? 0u : 2u);
  });
  EXPECT_EQ(calls, 4u);
}

TEST_F(PstAttachments, NeedsATableAndACallback) {
  message().attachment(u"1", "one").withoutAttachmentTable();
  EXPECT_EQ(all(), StatusOk);
  EXPECT_TRUE(seen().empty());
  use(PstLayout::Unicode);
  message().withAttachmentTable();
  EXPECT_EQ(all(), StatusOk);
  EXPECT_TRUE(seen().empty());

  use(PstLayout::Unicode);
  message().attachment(u"1", "one");
  PstReading reading(*store_);
  const auto folder = pststore::make_folder(pststore::folder_begin(reading.context));
  const pststore::message source = pststore::make_message(
      pststore::message_iterator(pststore::get_contents_table(folder)->begin(), reading.context));
  EXPECT_EQ(EnumeratePstAttachments(source, {kAllAttachments, 0, nullptr, nullptr}, 0), StatusOk);
}

TEST_F(PstAttachments, LetsABrokenTableThrow) {
  PstNodeParts parts = message().attachment(u"1", "one").withoutAttachmentTable().build();
  parts.subnode(0x671, PstNodeParts::OfPages({std::string(50, 'x')}));
  use(PstLayout::Unicode);
  store_->folder("A").row(0x200024);
  store_->node(0x200024, parts);
  EXPECT_THROW(all().ignore(), pststore::sig_mismatch);
}

// Rows without number that name one attachment: the pages of the rows are holes, and a row of zeros
// names the subnode 0.
TEST_F(PstAttachments, EndsSilentlyAtMoreThanTheFileCanHold) {
  constexpr size_t kPage = 8176;
  PropertyContextBuilder attachment(PstLayout::Unicode);
  attachment.text(kPropAttachLongFilename, u"again");
  PstNodeParts parts = MessageBuilder(PstLayout::Unicode, {}, 0x200024).build();
  parts.subnode(0, attachment.build());
  TableContextBuilder table(PstLayout::Unicode, {.hnidRows = ValueSubnode(0)});
  PstNodeParts tableParts = table.build();
  PstNodeParts rows = PstNodeParts::Stream(std::string(25 * kPage, '\0'), kPage);
  for (size_t page = 0; page < 25; ++page) rows.dataShape.pageHoles.insert(page);
  tableParts.subnode(ValueSubnode(0), rows);
  parts.subnode(0x671, tableParts);
  store_->folder("A").row(0x200024);
  store_->node(0x200024, parts);
  EXPECT_EQ(all(true), StatusOk);
  EXPECT_EQ(seen().size(), 16384 + reading_->fileSize / 12);
}

TEST_F(PstAttachments, AddsAStringOfTheBag) {
  message().attach().longName(u"name").data("x");
  reading_.emplace(*store_);
  const auto folder = pststore::make_folder(pststore::folder_begin(reading_->context));
  const pststore::message source = pststore::make_message(
      pststore::message_iterator(pststore::get_contents_table(folder)->begin(), reading_->context));
  const pststore::attachment attachment =
      pststore::make_attachment(pststore::attachment_begin(source));
  PropertyList list;
  uint64_t left = 8;
  EXPECT_EQ(AddAttachmentPropertyFromBag(list, "n", attachment, 0x3704, left), StatusOk);
  EXPECT_EQ(list.length(), 0u);
  EXPECT_EQ(AddAttachmentPropertyFromBag(list, "n", attachment, 0x3707, left), StatusOk);
  ASSERT_EQ(list.length(), 1u);
  EXPECT_EQ(std::u16string(list.data()[0].name), u"n");
  EXPECT_EQ(std::u16string(list.data()[0].value), u"name");
  EXPECT_EQ(left, 0u);
  EXPECT_THROW(AddAttachmentPropertyFromBag(list, "n", attachment, 0x3707, left).ignore(),
               pststore::database_corrupt);
  left = 100;
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(AddAttachmentPropertyFromBag(list, "n", attachment, 0x3707, left), StatusFailed);
  EXPECT_EQ(list.length(), 1u);
}

}  // namespace
}  // namespace tarn::test
