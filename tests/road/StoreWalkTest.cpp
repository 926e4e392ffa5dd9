// The order of a store's messages, the count that its folders claim, and what breaks a folder.

#include "FileFormats/Pst/StoreWalk.h"

#include <gtest/gtest.h>

#include "PstReading.h"
#include "Tarnbase/PlainKernel.h"
#include "pststore/Errors.h"
#include "support/FaultSweep.h"
#include "support/RtfCompressor.h"
#include "support/pst/StoreTemplates.h"

namespace tarn::test {
namespace {

using pststore::key_not_found;

TEST(StoreCount, BelievesTheFolders) {
  for (const PstLayout layout : kBothLayouts) {
    StoreBuilder store(SmallStore(layout));
    store.folder("A").count(2);
    store.folder("B").count(5).message();
    PstReading reading(store);
    ASSERT_EQ(reading.count(), StatusOk);
    EXPECT_EQ(reading.list->count, 7);
    EXPECT_EQ(reading.record(0).body.data(), nullptr);
    EXPECT_EQ(reading.record(0).inlineStatus, StatusOk);
  }
}

TEST(StoreCount, RefusesAStoreWithoutMessages) {
  for (const PstLayout layout : kBothLayouts) {
    StoreBuilder store(layout);
    store.folder("Empty");
    PstReading reading(store);
    EXPECT_EQ(reading.count(), StatusBadArgument);
    EXPECT_EQ(reading.list, nullptr);
  }
}

TEST(StoreCount, WrapsAsASigned32BitNumber) {
  {
    StoreBuilder store(SmallStore());
    store.folder("A").count(0xFFFFFFFF);
    PstReading reading(store);
    EXPECT_EQ(reading.count(), StatusBadArgument);
  }
  StoreBuilder store(SmallStore());
  store.folder("A").count(0x80000001);
  store.folder("B").count(0x80000002);
  PstReading reading(store);
  ASSERT_EQ(reading.count(), StatusOk);
  EXPECT_EQ(reading.list->count, 3);
}

TEST(StoreCount, LeavesOutTheFolderFreebusyData) {
  for (const PstLayout layout : kBothLayouts) {
    StoreBuilder store(SmallStore(layout));
    FolderBuilder& freebusy = store.folder("Freebusy Data");
    for (int i = 0; i < 5; ++i) freebusy.message();
    store.folder("Inbox").message();
    PstReading reading(store);
    ASSERT_EQ(reading.count(), StatusOk);
    EXPECT_EQ(reading.list->count, 1);
  }
}

TEST(StoreCount, NeedsNoCountOfTheFolderFreebusyData) {
  StoreBuilder store(SmallStore());
  store.folder("Freebusy Data").without(kPropContentCount);
  store.folder("Inbox").count(1);
  PstReading reading(store);
  EXPECT_EQ(reading.count(), StatusOk);
}

TEST(StoreCount, KnowsFreebusyDataByItsExactName) {
  StoreBuilder store(SmallStore());
  store.folder(u"freebusy data").count(1);
  store.folder(u"Freebusy Dat").count(2);
  store.folder(u"Freebusy Data ").count(4);
  store.folder(std::u16string_view(u"Freebusy Data\0", 14)).count(8);
  store.folder(u"Freebusy Data").count(16);
  PstReading reading(store);
  ASSERT_EQ(reading.count(), StatusOk);
  EXPECT_EQ(reading.list->count, 15);
}

TEST(StoreCount, LetsAFolderWithoutNameOrCountThrow) {
  {
    StoreBuilder store(SmallStore());
    store.folder("A").count(1);
    store.folder("B").count(1).without(kPropDisplayName);
    PstReading reading(store);
    EXPECT_THROW(reading.count().ignore(), key_not_found<uint16_t>);
  }
  StoreBuilder store(SmallStore());
  store.folder("A").without(kPropContentCount).message();
  PstReading reading(store);
  EXPECT_THROW(reading.count().ignore(), key_not_found<uint16_t>);
  EXPECT_EQ(reading.list, nullptr);
}

TEST(StoreCount, LooksAtFoldersOnly) {
  StoreBuilder store(SmallStore());
  store.folder(0x8023, u"Search folder").count(7);
  store.folder(0x8024, u"No folder").count(9);
  store.folder(0x122, u"The root is a folder").count(1);
  PstReading reading(store);
  ASSERT_EQ(reading.count(), StatusOk);
  EXPECT_EQ(reading.list->count, 1);
}

TEST(StoreCount, RefusesClaimsThatNoFileOfThisSizeBacks) {
  StoreBuilder store(SmallStore());
  store.folder("A").count(0x7FFFFFFF);
  PstReading reading(store);
  EXPECT_EQ(reading.count(), StatusOutOfMemory);
  EXPECT_EQ(reading.list, nullptr);
}

TEST(StoreCount, TakesAMillionClaims) {
  StoreBuilder store(SmallStore());
  store.folder("A").count(1000000);
  PstReading reading(store);
  ASSERT_EQ(reading.count(), StatusOk);
  EXPECT_EQ(reading.list->count, 1000000);
}

TEST(StoreCount, ReleasesAllWithoutMemory) {
  StoreBuilder store(SmallStore());
  store.folder("A").count(3);
  int failures = 0;
  SweepFaults(PlainKernelFaultMemory, [&](FaultedWork& faulted) {
    PstReading reading(store);
    try {
      const Status status = faulted([&] { return reading.count(); });
      EXPECT_EQ(status, faulted.isReached() ? StatusOutOfMemory : StatusOk);
      if (!faulted.isReached()) return;
      ++failures;
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(faulted.isReached());
    }
    EXPECT_EQ(reading.list, nullptr);
  });
  EXPECT_EQ(failures, 1);  // the list's head; all else is the store's
}

TEST(StoreWalk, FillsTheRecordOfTheSelectedMessage) {
  for (const PstLayout layout : kBothLayouts) {
    StoreBuilder store(SmallStore(layout));
    FolderBuilder& folder = store.folder("Inbox");
    folder.message().subject(u"0").html("zero");
    folder.message().subject(u"1").html("one");
    folder.message().subject(u"2").html("two");
    PstReading reading(store);
    ASSERT_EQ(reading.read(1), StatusOk);
    EXPECT_EQ(reading.list->count, 2);
    EXPECT_EQ(reading.body(1), "one");
    EXPECT_EQ(reading.record(1).subject.view(), "1");
    EXPECT_EQ(reading.kind, DocumentHtml);
    EXPECT_EQ(reading.bodies(3), "zeroonetwo");
  }
}

TEST(StoreWalk, GoesByNodeIdsOfFolders) {
  StoreBuilder store(SmallStore());
  store.folder(0x8062, u"last").message().html("c");
  store.folder(0x8022, u"first").message().html("a");
  store.folder(0x8042, u"middle").message().html("b");
  store.folder(0x122, u"root").message().html("r");
  PstReading reading(store);
  EXPECT_EQ(reading.bodies(4), "rabc");
}

TEST(StoreWalk, PutsASubfolderWhereItsNodeIdPutsIt) {
  StoreBuilder store(PstLayout::Unicode);
  FolderBuilder& first = store.folder("first");
  FolderBuilder& second = store.folder("second");
  FolderBuilder& below = first.folder(u"below the first");
  second.message().html("2");
  below.message().html("3");
  first.message().html("1");
  PstReading reading(store);
  EXPECT_EQ(reading.bodies(3), "123");
}

TEST(StoreWalk, TakesRowsInTableOrder) {
  StoreBuilder store(SmallStore());
  FolderBuilder& folder = store.folder("Inbox");
  folder.message(0x200084).html("first row");
  folder.message(0x200024).html("second row");
  PstReading reading(store);
  EXPECT_EQ(reading.bodies(2), "first rowsecond row");
}

TEST(StoreWalk, PassesOverMessagesOfTheSubjectLocalFreebusy) {
  for (const PstLayout layout : kBothLayouts) {
    StoreBuilder store(SmallStore(layout));
    FolderBuilder& folder = store.folder("Inbox");
    folder.message().subject(u"a").html("a");
    folder.message().subject(u"LocalFreebusy").html("passed over");
    folder.message().subject(u"\1\1LocalFreebusy").html("too, behind its marker");
    folder.message().subject("LocalFreebusy").html("too, in 8 bits");
    folder.message().subject(u"localfreebusy").html("b");
    folder.message().subject(u"LocalFreebusy ").html("c");
    PstReading reading(store);
    ASSERT_EQ(reading.count(), StatusOk);
    EXPECT_EQ(reading.list->count, 6);
    EXPECT_EQ(reading.bodies(3), "abc");
  }
}

TEST(StoreWalk, LeavesNumbersAfterTheLastMessageEmpty) {
  StoreBuilder store(SmallStore());
  FolderBuilder& folder = store.folder("Inbox");
  folder.message().subject(u"LocalFreebusy");
  folder.message().html("a");
  PstReading reading(store);
  ASSERT_EQ(reading.read(1), StatusOk);
  EXPECT_EQ(reading.list->count, 2);
  EXPECT_EQ(reading.record(1).body.data(), nullptr);
  EXPECT_EQ(reading.record(1).text.data(), nullptr);
  EXPECT_EQ(reading.bodies(1), "a");
}

// The messages of that folder take places, so that the last ones of the store lie beyond the count.
TEST(StoreWalk, WalksTheFolderFreebusyData) {
  StoreBuilder store(SmallStore());
  store.folder("Freebusy Data").message().html("not counted");
  FolderBuilder& folder = store.folder("Inbox");
  folder.message().html("a");
  folder.message().html("never reached");
  PstReading reading(store);
  ASSERT_EQ(reading.count(), StatusOk);
  ASSERT_EQ(reading.list->count, 2);
  EXPECT_EQ(reading.bodies(2), "not counteda");
}

TEST(StoreWalk, TakesMoreRowsThanTheFolderClaims) {
  StoreBuilder store(SmallStore());
  FolderBuilder& folder = store.folder("A").count(0);
  folder.message().html("a");
  folder.message().html("b");
  store.folder("B").count(2).message().html("c");
  PstReading reading(store);
  ASSERT_EQ(reading.read(1), StatusOk);
  EXPECT_EQ(reading.list->count, 2);
  EXPECT_EQ(reading.bodies(2), "ab");
}

TEST(StoreWalk, PassesOverFoldersWhoseContentsCannotBeRead) {
  for (const PstLayout layout : kBothLayouts) {
    StoreBuilder store(SmallStore(layout));
    store.folder("no contents table").count(1).withoutContentsTable();
    store.folder("no table").count(1).contentsTable(PstNodeParts::OfPages({std::string(100, 'x')}));
    store.folder("good").message().html("a");
    PstReading reading(store);
    ASSERT_EQ(reading.read(0), StatusOk);
    EXPECT_EQ(reading.body(0), "a");
  }
}

TEST(StoreWalk, LeavesAFolderAtARowWithoutMessage) {
  for (const PstLayout layout : kBothLayouts) {
    StoreBuilder store(SmallStore(layout));
    FolderBuilder& broken = store.folder("A");
    broken.message().html("a");
    broken.row(0x12344);
    broken.message().html("dropped");
    store.folder("B").message().html("b");
    PstReading reading(store);
    ASSERT_EQ(reading.count(), StatusOk);
    EXPECT_EQ(reading.list->count, 4);
    EXPECT_EQ(reading.bodies(2), "ab");
  }
}

// The subject of a single marker character is a range error.
TEST(StoreWalk, LeavesAFolderAtASubjectOfOneMarker) {
  StoreBuilder store(SmallStore());
  FolderBuilder& broken = store.folder("A");
  broken.message().subject(u"\1").html("dropped");
  broken.message().html("dropped too");
  store.folder("B").message().html("b");
  PstReading reading(store);
  ASSERT_EQ(reading.read(0), StatusOk);
  EXPECT_EQ(reading.body(0), "b");
  EXPECT_EQ(reading.record(0).subject.view(), "No Subject");
}

// Blocks and header fields of the failed message stay in the record; only the lengths of the bodies
// go to 0, and the time and the importance are appended to.
TEST(StoreWalk, FillsTheRecordOfAFailedMessageAnew) {
  StoreBuilder store(SmallStore());
  MessageBuilder& broken = store.folder("A").message();
  broken.subject(u"old").from(u"Ann").to(u"Bob").cc(u"Cy").bcc(u"Di").importance(2);
  broken.submitTime(116444736000000000).body(u"old text").html("old html");
  // A value in a subnode that does not exist.
  broken.properties().raw(kPropRtfCompressed, kTypeBinary, 0x9F3F);
  store.folder("B").message().subject(u"new").to(u"").importance(0).submitTime(116444736000000000);
  PstReading reading(store);
  ASSERT_EQ(reading.read(0), StatusOk);
  const MailMessage& record = reading.record(0);
  EXPECT_EQ(record.subject.view(), "new");
  EXPECT_EQ(record.from.view(), "Ann");
  EXPECT_EQ(record.to.data(), nullptr);
  EXPECT_EQ(record.cc.view(), "Cy");
  EXPECT_EQ(record.bcc.view(), "Di");
  EXPECT_EQ(record.importance.text(), "HighLow");
  EXPECT_EQ(record.sent.text().size(), 2 * std::string_view("Thu Jan 01, 1970 12:00 AM").size());
  EXPECT_NE(record.text.data(), nullptr);
  EXPECT_EQ(record.text.length(), 0u);
  EXPECT_NE(record.body.data(), nullptr);
  EXPECT_EQ(record.body.length(), 0u);
  // The kind is that of the failed message, too.
  EXPECT_EQ(reading.kind, DocumentRtf);
}

TEST(StoreWalk, EndsAtUnreadableRtfInFrontOfTheSelectedMessage) {
  for (const PstLayout layout : kBothLayouts) {
    StoreBuilder store(SmallStore(layout));
    FolderBuilder& folder = store.folder("A");
    folder.message().html("a");
    folder.message().rtf("no compressed RTF at all");
    folder.message().html("c");
    store.folder("B").message().html("d");
    {
      PstReading reading(store);
      EXPECT_EQ(reading.read(0), StatusOk);
    }
    for (const int32_t selected : {1, 2, 3}) {
      PstReading reading(store);
      EXPECT_EQ(reading.read(selected), StatusNotSupported) << selected;
    }
  }
}

TEST(StoreWalk, ReadsNoBodiesForAnAttachmentRequest) {
  StoreBuilder store(SmallStore());
  FolderBuilder& folder = store.folder("A");
  folder.message().rtf("no compressed RTF at all");
  folder.message().body(u"text").html("html").attachment(u"a.png", "bytes");
  PstReading reading(store);
  std::u16string names;
  const AttachmentRequest request = {
      kAllAttachments, false,
      [](void* user, TrackedBuffer<char>* bytes, const char16_t* name, PropertyList*) -> Status {
        *static_cast<std::u16string*>(user) += name;
        EXPECT_EQ(std::string(bytes->data(), bytes->length()), "bytes");
        return StatusOk;
      },
      &names};
  reading.request = &request;
  ASSERT_EQ(reading.read(1), StatusOk);
  EXPECT_EQ(names, u"a.png");
  EXPECT_EQ(reading.record(1).subject.data(), nullptr);
  EXPECT_EQ(reading.record(1).text.data(), nullptr);
  EXPECT_EQ(reading.record(1).body.data(), nullptr);
  EXPECT_EQ(reading.kind, DocumentNone);
}

TEST(StoreWalk, PassesOnWhatTheCallbackFailsWith) {
  StoreBuilder store(SmallStore());
  store.folder("A").message().attachment(u"a.png", "bytes");
  const Status other = Status::FromCode(3);
  for (const auto& [answer, expected] :
       {std::pair<Status, Status>{StatusWriteFailed, StatusWriteFailed},
        {StatusFailed, StatusFailed},
        {StatusDone, StatusOk},
        {other, StatusOk}}) {
    PstReading reading(store);
    Status result = answer;
    const AttachmentRequest request = {
        kAllAttachments, true,
        [](void* user, TrackedBuffer<char>*, const char16_t*, PropertyList*) -> Status {
          return *static_cast<Status*>(user);
        },
        &result};
    reading.request = &request;
    EXPECT_EQ(reading.read(0), expected) << answer.code();
  }
}

// A contents table of rows without number that all name one message, in a few hundred bytes: the
// pages of its rows are holes, and a row of zeros names the node 0.
PstNodeParts TableOfZeroRows(PstLayout layout, size_t pages) {
  TableContextBuilder table(layout, {.hnidRows = ValueSubnode(0)});
  PstNodeParts parts = table.build();
  const size_t pageSize = OffsetsOf(layout).maxBlockData;
  PstNodeParts rows = PstNodeParts::Stream(std::string(pages * pageSize, '\0'), pageSize);
  for (size_t page = 0; page < pages; ++page) rows.dataShape.pageHoles.insert(page);
  parts.subnode(ValueSubnode(0), rows);
  return parts;
}

TEST(StoreWalk, EndsAtMoreRowsThanTheFileCanHaveMessages) {
  for (const PstLayout layout : kBothLayouts) {
    for (const std::u16string_view subject : {u"LocalFreebusy", u"any other"}) {
      StoreBuilder store(SmallStore(layout));
      // 9 bytes a row: about 900 rows in a page.
      store.folder("A").count(900000).contentsTable(TableOfZeroRows(layout, 80));
      store.node(0, MessageBuilder(layout, {}, 0).subject(subject).build());
      PstReading reading(store);
      ASSERT_EQ(reading.count(), StatusOk);
      EXPECT_EQ(reading.walk(899999), StatusOutOfMemory);
    }
  }
}

TEST(StoreWalk, EndsAtMoreTextThanTheFileCanHold) {
  StoreBuilder store(SmallStore());
  store.folder("A").count(900000).contentsTable(TableOfZeroRows(PstLayout::Unicode, 10));
  MessageBuilder message(PstLayout::Unicode, {}, 0);
  message.html(std::string(20000, 'h'));
  store.node(0, message.build());
  PstReading reading(store);
  ASSERT_EQ(reading.count(), StatusOk);
  // 64 MiB are some 3350 times 20,000 bytes.
  EXPECT_EQ(reading.walk(3000), StatusOk);
  EXPECT_EQ(reading.body(3000).size(), 20000u);
  PstReading more(store);
  ASSERT_EQ(more.count(), StatusOk);
  EXPECT_EQ(more.walk(4000), StatusOutOfMemory);
}

TEST(StoreWalk, ReleasesNothingForNoList) { ReleaseMessageList(nullptr); }

}  // namespace
}  // namespace tarn::test
