#include "FileFormats/Pst/AttachmentDelivery.h"

#include <gtest/gtest.h>

#include <string>

#include "Tarnbase/PlainKernel.h"
#include "support/KernelUsage.h"
#include "support/TempDirectory.h"

namespace tarn {
namespace {

// Slack ------------------------------------------------------------------------------------------

// What is live of a block of `capacity` elements after its slack was given back.
template <typename T>
uint64_t LeftOf(uint64_t used, uint64_t capacity) {
  const uint64_t before = test::Usage().liveBytes;
  TrackedBuffer<T> buffer;
  buffer.adopt(AllocateBlock<T>(capacity, TARN_HERE), used, capacity);
  buffer.shrinkToFit();
  return test::Usage().liveBytes - before;
}

TEST(ShrinkToFit, GivesBackMoreThan32Bytes) {
  EXPECT_EQ(LeftOf<char>(100, 100), 100u);
  EXPECT_EQ(LeftOf<char>(100, 132), 132u);
  EXPECT_EQ(LeftOf<char>(100, 133), 100u);
  EXPECT_EQ(LeftOf<char>(100, 100000), 100u);
  // Bytes count, not elements.
  EXPECT_EQ(LeftOf<uint64_t>(3, 7), 56u);
  EXPECT_EQ(LeftOf<uint64_t>(3, 8), 24u);
  EXPECT_EQ(LeftOf<AttachmentInfoItem>(1, 2), 88u);
}

TEST(ShrinkToFit, KeepsABlockThatCannotBeResized) {
  TrackedBuffer<char> buffer;
  buffer.adopt(AllocateBlock<char>(1000, TARN_HERE), 10, 1000);
  const char* const block = buffer.data();
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  buffer.shrinkToFit();
  EXPECT_EQ(buffer.data(), block);
  EXPECT_EQ(buffer.capacity(), 1000u);
  PlainKernelFailAt(PlainKernelFaultMemory, 0);
}

// Delivery ---------------------------------------------------------------------------------------

// A buffer with spare room, and the context that it is delivered to.
struct Delivery {
  explicit Delivery(const std::string& bytes) {
    EXPECT_NE(data.reserve(bytes.size() + 5000), nullptr);
    EXPECT_EQ(data.append(bytes.data(), bytes.size()), StatusOk);
  }

  Status run() { return DeliverAttachment(&context, &data, u"name", nullptr); }

  TrackedBuffer<char> data;
  ExtractAttachmentContext context = {};
};

TEST(AttachmentDelivery, ToMemoryClearsTheThreeWordsOfTheBuffer) {
  for (const std::string& bytes : {std::string("the bytes"), std::string()}) {
    const uint64_t before = test::Usage().liveBytes;
    Delivery delivery(bytes);
    EXPECT_EQ(delivery.run(), StatusDone);
    EXPECT_EQ(delivery.data.data(), nullptr);
    EXPECT_EQ(delivery.data.length(), 0u);
    EXPECT_EQ(delivery.data.capacity(), 0u);

    const KernelBlock<char> taken(static_cast<char*>(delivery.context.data));
    const uint64_t size = delivery.context.size;
    EXPECT_EQ(std::string(taken.get(), size), bytes);
    EXPECT_EQ(test::Usage().liveBytes - before, bytes.size());
    // The buffer starts again from nothing.
    EXPECT_EQ(delivery.data.append("more", 4), StatusOk);
    EXPECT_EQ(std::string(delivery.data.data(), delivery.data.length()), "more");
  }
}

TEST(AttachmentDelivery, ToMemoryTakesTheBytesFromTheHostsBudget) {
  Delivery delivery(std::string(9000000, 'x'));
  EXPECT_GE(test::Usage().reportedBytes, 9000000u);
  EXPECT_EQ(delivery.run(), StatusDone);
  const KernelBlock<char> taken(static_cast<char*>(delivery.context.data));
  EXPECT_EQ(test::Usage().reportedBytes, 0u);
}

TEST(AttachmentDelivery, ToAFileLeavesTheBufferToTheReader) {
  const test::TempDirectory directory;
  const std::u16string path = directory.wide() + u"/out";
  Delivery delivery("the bytes");
  const char* const block = delivery.data.data();
  const uint64_t capacity = delivery.data.capacity();
  delivery.context.outputPath = path.c_str();
  EXPECT_EQ(delivery.run(), StatusOk);
  EXPECT_EQ(test::ReadWholeFile(path), "the bytes");
  EXPECT_EQ(delivery.data.data(), block);
  EXPECT_EQ(delivery.data.length(), 9u);
  EXPECT_EQ(delivery.data.capacity(), capacity);
  EXPECT_EQ(static_cast<void*>(delivery.context.data), nullptr);
}

TEST(AttachmentDelivery, NeedsAContext) {
  TrackedBuffer<char> data;
  EXPECT_EQ(DeliverAttachment(nullptr, &data, nullptr, nullptr), StatusNullArgument);
}

}  // namespace
}  // namespace tarn
