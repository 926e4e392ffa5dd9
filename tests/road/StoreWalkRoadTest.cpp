// What a host sees of the way through a store: the number of the message that it gets, messages
// that do not count, and images of a page that RTF replaces.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <tuple>
#include <utility>

#include "Internal/Tarnclasses_.h"
#include "PstSamples.h"
#include "support/FakeHost.h"

namespace tarn::test {
namespace {

constexpr PstLayout kBothLayouts[] = {PstLayout::Ansi, PstLayout::Unicode};

const ByteRange kMessageCountOut = {offsetof(HostFileInfo, messageCount), 4};

TEST(StoreWalkRoad, TellsTheNumberOfTheMessageThatWasUsed) {
  for (const PstLayout layout : kBothLayouts) {
    StoreBuilder store(layout);
    FolderBuilder& inbox = store.folder("Inbox");
    inbox.message().subject(u"").html("one");
    inbox.message().subject(u"").html("two");
    FakeHost host(store.bytes());
    host.moreInfoOut.push_back(kMessageCountOut);
    for (const auto& [number, used] :
         {std::pair(INT32_MAX, 1), {3, 1}, {2, 1}, {1, 0}, {0, 0}, {-7, 0}, {INT32_MIN, 1}}) {
      host.infoContext->messageNumber = number;
      ASSERT_EQ(host.info(false), StatusOk) << number;
      EXPECT_EQ(host.infoContext->messageNumber, used) << number;
      EXPECT_EQ(host.calls.back().document, used == 1 ? "<html>two</html>" : "<html>one</html>");
      host.loadContext->messageNumber = number;
      ASSERT_EQ(host.load(false), StatusOk) << number;
      EXPECT_EQ(host.calls.back().document, used == 1 ? "<html>two</html>" : "<html>one</html>");
    }
  }
}

// What the sibling keeps is filed under the message that was used.
TEST(StoreWalkRoad, FilesTheSiblingsDataUnderTheMessageThatWasUsed) {
  char kept[8] = "kept";
  StoreBuilder store(PstLayout::Unicode);
  FolderBuilder& inbox = store.folder("Inbox");
  inbox.message().subject(u"").html("one");
  inbox.message().subject(u"").html("two");
  FakeHost host(store.bytes());
  host.moreInfoOut.push_back(kMessageCountOut);
  host.answer.data = kept;
  host.infoContext->messageNumber = 99;
  ASSERT_EQ(host.info(), StatusOk);
  ASSERT_EQ(host.slot.dataFormat, FILTER_DATA_LIST_FORMAT);
  const auto* const list = static_cast<const FilterDataList*>(host.slot.data);
  ASSERT_EQ(list->count, 3);
  const FilterDataEntry* const entries = &list->entries[0];
  EXPECT_EQ(Copy(entries[1].data), nullptr);
  EXPECT_EQ(Copy(entries[2].data), kept);
}

// It takes no number, and its attachments are nobody's.
TEST(StoreWalkRoad, PassesOverFreeBusyMessagesForAttachmentsToo) {
  for (const PstLayout layout : kBothLayouts) {
    StoreBuilder store(layout);
    FolderBuilder& inbox = store.folder("Inbox");
    inbox.message().subject(u"LocalFreebusy").html("busy").attachment(u"busy.bin", "busy bytes");
    inbox.message().subject(u"Hello").html("one").attachment(u"one.bin", "one's bytes");
    inbox.message().subject(u"localfreebusy").html("two").attachment(u"two.bin", "two's bytes");
    FakeHost host(store.bytes());
    for (const auto& [number, name, bytes] :
         {std::tuple(1, u"one.bin", "one's bytes"), {2, u"two.bin", "two's bytes"}}) {
      host.attachmentOptions->messageNumber = number;
      ASSERT_EQ(host.attachmentInfo(), StatusOk);
      AttachmentInfoBlock* const block = host.listContext->block;
      ASSERT_EQ(Copy(block->itemCount), 1u);
      EXPECT_EQ(std::u16string(block->items[0].name), name);
      FreeAttachmentBlock(block);
      ASSERT_EQ(host.extract(1), StatusOk);
      EXPECT_EQ(std::string(static_cast<char*>(host.extractContext->data),
                            Copy(host.extractContext->size)),
                bytes);
      KernelFree(host.extractContext->data, TARN_HERE);
    }
    // Three are claimed, and the walk ends before a third.
    host.attachmentOptions->messageNumber = 3;
    ASSERT_EQ(host.attachmentInfo(), StatusOk);
    EXPECT_EQ(Copy(host.listContext->block->itemCount), 0u);
    FreeAttachmentBlock(host.listContext->block);
  }
}

std::string StoreOfRtfOverHtml(PstLayout layout, std::string_view image) {
  StoreBuilder store(layout);
  store.folder("Inbox")
      .message()
      .subject(u"")
      .html("<img src=\"cid:a.png\">")
      .rtf(PackRtf(kSampleRtf))
      .attachment(u"a.png", image);
  return store.bytes();
}

// The images are placed before the RTF is read: their files are there, and die with the record.
TEST(StoreWalkRoad, WritesTheImagesOfAPageThatRtfReplaces) {
  for (const PstLayout layout : kBothLayouts) {
    FakeHost host(StoreOfRtfOverHtml(layout, kImageBytes));
    host.moreInfoOut.push_back(kMessageCountOut);
    ASSERT_EQ(host.info(), StatusOk);
    EXPECT_EQ(host.calls.back().info.format, SiblingRtf);
    EXPECT_EQ(host.calls.back().document, kSampleRtf);
    EXPECT_NE(host.directory().listing().find("/_a.png"), std::string::npos)
        << host.directory().listing();
    host.clearSlot();
    EXPECT_EQ(host.directory().listing(), "mail");
  }
}

// An image that cannot be placed fails the message, though nobody would see it.
TEST(StoreWalkRoad, FailsOnAnImageOfAPageThatRtfReplaces) {
  PlainKernelSetIoMode(3);
  for (const PstLayout layout : kBothLayouts) {
    FakeHost host(StoreOfRtfOverHtml(layout, "abc"));
    EXPECT_EQ(host.info(), StatusFailed);
    EXPECT_TRUE(host.calls.empty());
  }
}

}  // namespace
}  // namespace tarn::test
