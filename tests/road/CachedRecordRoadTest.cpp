// fltInfo and fltLoad on a record that is in the slot already: which sibling is asked, when it is
// asked again, and with what.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "support/FakeHost.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

TEST(CachedRecord, KeepsItsSiblingWhateverTheTextFlagSays) {
  FakeHost html(kHtmlMail);
  ASSERT_EQ(html.info(), StatusOk);
  html.infoContext->textOnly = 1;
  html.infoContext->raster.xResolution = 300;
  ASSERT_EQ(html.info(), StatusOk);
  ASSERT_EQ(html.calls.size(), 2u);
  EXPECT_EQ(html.calls[1].route, Route::InfoByName);
  EXPECT_EQ(html.calls[1].info.format, SiblingHtml);
  EXPECT_EQ(html.calls[1].document, html.calls[0].document);

  FakeHost text(kHtmlMail);
  text.infoContext->textOnly = 1;
  ASSERT_EQ(text.info(), StatusOk);
  text.infoContext->textOnly = 0;
  text.infoContext->raster.xResolution = 300;
  ASSERT_EQ(text.info(), StatusOk);
  ASSERT_EQ(text.calls.size(), 2u);
  EXPECT_EQ(text.calls[1].route, Route::InfoFromMemory);
  EXPECT_EQ(text.calls[1].info.format, SiblingText);
}

// The raster options are 68 bytes at offset 948, and every one of them counts.
TEST(CachedRecord, AsksAgainForEachByteOfTheRasterThatChanges) {
  FakeHost host(kPlainMail);
  ASSERT_EQ(host.info(), StatusOk);
  size_t calls = 1;
  auto* const context = reinterpret_cast<uint8_t*>(host.infoContext.get());
  for (size_t offset = 948; offset < 948 + 68; ++offset) {
    context[offset] ^= 0x10;
    ASSERT_EQ(host.info(), StatusOk);
    EXPECT_EQ(host.calls.size(), ++calls) << offset;
    ASSERT_EQ(host.info(), StatusOk);
    EXPECT_EQ(host.calls.size(), calls) << offset;
  }
  for (const size_t offset : {size_t{947}, size_t{948 + 68}}) {
    context[offset] ^= 0x10;
    ASSERT_EQ(host.info(), StatusOk);
    EXPECT_EQ(host.calls.size(), calls) << offset;
  }
}

// A raster that the sibling has refused is not one that it knows.
TEST(CachedRecord, AsksAgainAfterARefusal) {
  FakeHost host(kPlainMail);
  ASSERT_EQ(host.info(), StatusOk);
  host.infoContext->raster.reserved0[0] ^= 1;
  host.answer.result = -77;
  EXPECT_EQ(host.info(), StatusSiblingRefused);
  host.answer.result = 1;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.calls.size(), 3u);
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.calls.size(), 3u);
}

// The offsets of bytes that are not zero, less those of size, format and flags.
std::string OtherBytes(const HostFileInfo& info) {
  uint8_t bytes[sizeof(HostFileInfo)];
  std::memcpy(bytes, &info, sizeof bytes);
  std::string offsets;
  for (size_t i = 0; i < sizeof bytes; ++i) {
    const bool isSet = i < 8 || (i >= 1124 && i < 1128);
    if (!isSet && bytes[i] != 0) offsets += std::to_string(i) + " ";
  }
  return offsets;
}

// Nothing of the host's record, nor of an earlier answer, reaches the sibling of fltInfo.
TEST(CachedRecord, GivesTheSiblingARecordOfZeros) {
  for (const std::string& mail : {kHtmlMail, kPlainMail}) {
    FakeHost host(mail);
    ASSERT_EQ(host.info(), StatusOk);
    host.infoContext->raster.xResolution = 300;
    ASSERT_EQ(host.info(), StatusOk);
    ASSERT_EQ(host.calls.size(), 2u);
    for (const SiblingCall& call : host.calls) {
      EXPECT_EQ(OtherBytes(call.info), "");
      EXPECT_EQ(call.info.size, 2316u);
      EXPECT_EQ(call.info.flags, 4096u);
    }
  }
}

// The temp file takes the trailing NULs from the document for good.
TEST(CachedRecord, HasADocumentWithoutTheNulsThatItsFileLacks) {
  FakeHost host(kHtmlMail);
  host.answer.format = SiblingText;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.calls[0].route, Route::InfoByName);
  host.infoContext->raster.xResolution = 300;
  ASSERT_EQ(host.info(), StatusOk);
  ASSERT_EQ(host.load(), StatusOk);
  ASSERT_EQ(host.calls.size(), 3u);
  EXPECT_EQ(host.calls[1].route, Route::InfoFromMemory);
  EXPECT_EQ(host.calls[1].document, HtmlMailDocument());
  EXPECT_EQ(host.calls[2].route, Route::LoadFromMemory);
  EXPECT_EQ(host.calls[2].document, HtmlMailDocument());
}

// What the sibling kept for the first message is passed on, whatever number fltLoad is given.
TEST(CachedRecord, LoadsWithTheDataOfTheFirstMessage) {
  char first[8] = "first";
  char third[8] = "third";
  FakeHost host(kPlainMail);
  host.answer.data = first;
  ASSERT_EQ(host.info(), StatusOk);
  host.answer.data = third;
  host.infoContext->messageNumber = 3;
  host.infoContext->raster.xResolution = 42;
  ASSERT_EQ(host.info(), StatusOk);
  ASSERT_EQ(static_cast<const FilterDataList*>(host.slot.data)->count, 4);
  for (const int32_t number : {1, 0, 2, 3, -1, 1000000}) {
    host.loadContext->messageNumber = number;
    ASSERT_EQ(host.load(), StatusOk);
    EXPECT_EQ(Copy(host.calls.back().options.data), first) << number;
  }
}

// Flag 4 joins the flags that the host has set.
TEST(CachedRecord, AddsItsFlagToThoseOfTheHost) {
  char kept[8] = "kept";
  FakeHost host(kPlainMail);
  host.options->flags = 0x80000092;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.calls.back().options.flags, 0x80000092u);
  host.answer.data = kept;
  host.infoContext->messageNumber = 1;
  host.infoContext->raster.xResolution = 41;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.calls.back().options.flags, 0x80000092u);

  host.infoContext->messageNumber = 1;
  host.infoContext->raster.xResolution = 42;
  for (const uint32_t flags : {0x80000092u, 0x80000096u}) {
    host.options->flags = flags;
    host.infoContext->messageNumber = 1;
    host.infoContext->raster.xResolution += 1;
    ASSERT_EQ(host.info(), StatusOk);
    EXPECT_EQ(host.calls.back().options.flags, 0x80000096u);
    EXPECT_EQ(Copy(host.calls.back().options.data), kept);
    ASSERT_EQ(host.load(), StatusOk);
    EXPECT_EQ(host.calls.back().options.flags, 0x80000096u);
  }
}

// A slot's single item is passed on in the same way.
TEST(CachedRecord, AddsItsFlagForASingleItem) {
  char other[64] = "another filter's item";
  FakeHost host(kPlainMail);
  host.slot.data = other;
  host.slot.dataSize = 5;
  host.slot.dataFormat = 12;
  host.options->flags = 0x21;
  host.infoContext->messageNumber = 0;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.calls.back().options.flags, 0x25u);
  host.loadContext->messageNumber = 0;
  ASSERT_EQ(host.load(), StatusOk);
  EXPECT_EQ(host.calls.back().options.flags, 0x25u);
  host.slot.data = nullptr;
}

}  // namespace
}  // namespace tarn::test
