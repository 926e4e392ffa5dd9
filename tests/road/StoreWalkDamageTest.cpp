// A walk through a store that fails in its middle: what is passed over, and what stays.

#include "FileFormats/Pst/StoreWalk.h"

#include <gtest/gtest.h>

#include <new>
#include <utility>

#include "PstReading.h"
#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"
#include "support/pst/StoreTemplates.h"

namespace tarn::test {
namespace {

// The attachments of an HTML message are counted whether or not it is the selected one.
TEST(StoreWalkDamage, LeavesAFolderAtABrokenAttachmentTableOfAnyHtmlMessage) {
  PstNodeParts broken = MessageBuilder(PstLayout::Unicode, {}, 0x300024).html("broken").build();
  broken.subnode(kAttachmentTableNid, PstNodeParts::OfPages({std::string(50, 'x')}));
  StoreBuilder store(SmallStore());
  FolderBuilder& first = store.folder("A").count(2);
  first.row(0x300024);
  first.message().html("dropped");
  store.node(0x300024, broken);
  FolderBuilder& second = store.folder("B");
  second.message().html("0");
  second.message().html("1");
  PstReading reading(store);
  EXPECT_EQ(reading.bodies(2), "01");
}

TEST(StoreWalkDamage, NeedsNoAttachmentTableOfAMessageWithoutHtml) {
  PstNodeParts broken = MessageBuilder(PstLayout::Unicode, {}, 0x300024).body(u"a").build();
  broken.subnode(kAttachmentTableNid, PstNodeParts::OfPages({std::string(50, 'x')}));
  StoreBuilder store(SmallStore());
  FolderBuilder& folder = store.folder("A").count(2);
  folder.row(0x300024);
  store.node(0x300024, broken);
  PstReading reading(store);
  ASSERT_EQ(reading.read(0), StatusOk);
  EXPECT_EQ(reading.text(0), std::string("a\0", 2));
}

// A header text that does not convert leaves the length that the failed message gave the field.
TEST(StoreWalkDamage, KeepsTheLengthOfAFieldThatDoesNotConvert) {
  StoreBuilder store(SmallStore());
  store.folder("A")
      .message()
      .subject(u"old subject")
      .properties()
      .raw(kPropRtfCompressed, kTypeBinary, 0x9F3F);
  store.folder("B").message().subject(u"new").html("html");
  PstReading reading(store);
  ASSERT_EQ(reading.count(), StatusOk);
  PlainKernelFailAt(PlainKernelFaultText, 2);
  EXPECT_EQ(reading.walk(0), StatusOk);
  PlainKernelFailAt(PlainKernelFaultText, 0);
  EXPECT_EQ(reading.record(0).subject.length(), 11u);
  EXPECT_EQ(reading.body(0), "html");
}

// Whatever page cannot be read, those of the list of folders among them, a walk without bodies in
// its way ends with 1.
TEST(StoreWalkDamage, EndsWellWhereTheListOfFoldersCannotBeRead) {
  StoreBuilder store(SmallStore());
  for (const char* name : {"A", "B", "C"}) store.folder(name).message().subject(u"").html(name);
  PstReading counted(store);
  ASSERT_EQ(counted.count(), StatusOk);
  bool hasLostAll = false;
  // The list keeps what a round has read.
  const uint64_t calls = FailInTurn(PlainKernelFaultRead, [&](FaultedWork& faulted) {
    PstReading reading(store);
    reading.list = std::exchange(counted.list, nullptr);
    reading.list->count = 3;
    EXPECT_EQ(faulted([&] { return reading.walk(2); }), StatusOk);
    const std::string body = reading.body(2);
    counted.list = std::exchange(reading.list, nullptr);
    if (reading.kind == DocumentNone) hasLostAll = true;
    EXPECT_EQ(body, faulted.isReached() ? "" : "C");
  });
  EXPECT_LT(calls, 200u);
  EXPECT_TRUE(hasLostAll);
}

// What fails leaves no list behind, whatever the slot held.
TEST(StoreWalkDamage, ClearsTheSlotWithoutAList) {
  StoreBuilder store(SmallStore());
  store.folder("A").count(0x7FFFFFFF);
  PstReading reading(store);
  MessageList other = {};
  reading.list = &other;
  EXPECT_EQ(reading.count(), StatusOutOfMemory);
  EXPECT_EQ(reading.list, nullptr);

  StoreBuilder small(SmallStore());
  small.folder("A").count(1);
  SweepFaults(PlainKernelFaultMemory, [&](FaultedWork& faulted) {
    PstReading again(small);
    again.list = &other;
    Status status = StatusFailed;
    try {
      status = faulted([&] { return again.count(); });
    } catch (const std::bad_alloc&) {
      again.list = nullptr;
    }
    EXPECT_EQ(status == StatusOk, !faulted.isReached());
    if (status == StatusOk) return;
    EXPECT_EQ(again.list, nullptr);
    again.list = nullptr;
  });
}

}  // namespace
}  // namespace tarn::test
