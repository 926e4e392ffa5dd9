#include "Internal/PstFilterData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tarn {
namespace {

template <typename T>
void ExpectEmpty(const TrackedBuffer<T>& buffer) {
  EXPECT_EQ(buffer.data(), nullptr);
  EXPECT_EQ(buffer.length(), 0u);
  EXPECT_EQ(buffer.capacity(), 0u);
  EXPECT_EQ(buffer.growthCount(), 0u);
  EXPECT_EQ(buffer.lastError(), StatusOutOfMemory);
  EXPECT_EQ(buffer.meter().current, 0u);
  EXPECT_EQ(buffer.meter().threshold, 8000000u);
  EXPECT_EQ(buffer.meter().reported, 0u);
}

template <size_t N>
bool AllZero(const char16_t (&units)[N]) {
  return std::all_of(std::begin(units), std::end(units), [](char16_t unit) { return unit == 0; });
}

TEST(PstFilterData, ItsDocumentGrowsByAKilobyteThatIsNotCleared) {
  const PstFilterData record;
  ExpectEmpty(record.document);
  EXPECT_EQ(record.document.increment(), 1024u);
  EXPECT_EQ(record.document.firstIncrement(), 1024u);
  EXPECT_EQ(record.document.zeroFill(), 0u);
}

TEST(PstFilterData, ItsImagesGrowByFiveEmptyPlaces) {
  const PstFilterData record;
  ExpectEmpty(record.inlineFiles);
  EXPECT_EQ(record.inlineFiles.increment(), 5u);
  EXPECT_EQ(record.inlineFiles.firstIncrement(), 5u);
  EXPECT_EQ(record.inlineFiles.zeroFill(), 1u);
}

TEST(PstFilterData, IsKnownByItsSignature) {
  const PstFilterData record;
  EXPECT_EQ(record.signature, 0x545350u);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(&record.signature), 4),
            std::string("PST\0", 4));
}

TEST(PstFilterData, BeginsWithoutADocument) {
  const PstFilterData record;
  EXPECT_EQ(record.readerFormat, FormatNone);
  EXPECT_EQ(record.attachmentStatus, StatusOk);
  EXPECT_FALSE(record.useTempFile);
  EXPECT_EQ(record.siblingFormat, 0);
  EXPECT_EQ(record.pageNumber, 0);
  EXPECT_EQ(record.pageCount, 0);
  EXPECT_TRUE(AllZero(record.tempHtmlPath));
  EXPECT_TRUE(AllZero(record.tempDirectory));
  EXPECT_EQ(record.width, 0);
  EXPECT_EQ(record.height, 0);
  EXPECT_EQ(record.xResolution, 0);
  EXPECT_EQ(record.yResolution, 0);
  EXPECT_EQ(record.dataSize, 0u);
  EXPECT_EQ(record.sniffedFormat, TarnFormat{});
  EXPECT_EQ(record.messageCount, 0);
  EXPECT_EQ(record.inlineCount, 0u);
  EXPECT_EQ(record.attachmentCount, 0u);
  const char* const options = reinterpret_cast<const char*>(&record.rasterOptions);
  EXPECT_EQ(std::string(options, sizeof(record.rasterOptions)), std::string(68, '\0'));
}

}  // namespace
}  // namespace tarn
