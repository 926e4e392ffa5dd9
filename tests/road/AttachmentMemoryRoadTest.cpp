// What the two attachment calls leave with the host, byte by byte, and how far an extraction walks.

#include <gtest/gtest.h>

#include "Internal/Tarnclasses_.h"
#include "PstSamples.h"
#include "support/EmlBuilder.h"
#include "support/FakeHost.h"
#include "support/KernelUsage.h"

namespace tarn::test {
namespace {

TEST(AttachmentMemory, AnExtractedAttachmentHasNoSlack) {
  for (const size_t size : {size_t{0}, size_t{1}, size_t{24}, size_t{100000}}) {
    StoreBuilder store(PstLayout::Unicode);
    store.folder("Inbox").message().attachment(u"a", std::string(size, 'x'));
    FakeHost host(store.bytes());
    const uint64_t before = Usage().liveBytes;
    ASSERT_EQ(host.extract(1), StatusOk);
    EXPECT_EQ(Copy(host.extractContext->size), size);
    EXPECT_EQ(Usage().liveBytes - before, size);
    KernelFree(host.extractContext->data, TARN_HERE);
  }
}

// The head, two items, their names, and three properties.
TEST(AttachmentMemory, AListHasNoSlack) {
  FakeHost host(SampleStore(PstLayout::Unicode));
  const uint64_t before = Usage().liveBytes;
  ASSERT_EQ(host.attachmentInfo(), StatusOk);
  EXPECT_EQ(Usage().liveBytes - before, 32u + 2 * 88u + 2 * (8u + 11u) + 3 * 512u);
  FreeAttachmentBlock(host.listContext->block);
  EXPECT_EQ(Usage().liveBytes, before);
}

TEST(AttachmentMemory, AListOfNothingIsItsHead) {
  FakeHost host(kPlainMail);
  const uint64_t before = Usage().liveBytes;
  ASSERT_EQ(host.attachmentInfo(), StatusOk);
  EXPECT_EQ(Usage().liveBytes - before, 32u);
  FreeAttachmentBlock(host.listContext->block);
}

// A part that cannot be read comes after the attachment: an extraction to a file gets that far, one
// to memory has stopped before it.
TEST(AttachmentWalk, GoesOnAfterAnExtractionToAFile) {
  FakeHost host(EmlBuilder::Usual()
                    .body(EmlEntity::Multipart("mixed", "sep")
                              .part(EmlEntity::Leaf("text/plain", "Hi"))
                              .part(EmlEntity::Leaf("application/pdf", "%PDF")
                                        .disposition("attachment; filename=a.pdf"))
                              .part(EmlEntity::Leaf("text/css", "").encoded(EmlEncoding::Base64)))
                    .build());
  const std::u16string path = host.directory().wide() + u"/out";
  EXPECT_EQ(host.extract(1, path.c_str()), StatusOutOfMemory);
  EXPECT_EQ(ReadWholeFile(path), "%PDF");

  ASSERT_EQ(host.extract(1), StatusOk);
  EXPECT_EQ(
      std::string(static_cast<char*>(host.extractContext->data), Copy(host.extractContext->size)),
      "%PDF");
  KernelFree(host.extractContext->data, TARN_HERE);
}

}  // namespace
}  // namespace tarn::test
