#include <gtest/gtest.h>

#include "RenderSupport.h"
#include "render/Renderer.h"

namespace tarn {
namespace {

using test::Terminated;

void Set(TrackedBuffer<char>& document, std::string_view text) {
  const uint64_t room = text.size();
  document.adopt(AllocateBlock<char>(room, TARN_HERE), room, room);
  text.copy(document.data(), room);
}

std::string Ensure(std::string_view document) {
  TrackedBuffer<char> text;
  Set(text, document);
  EXPECT_EQ(EnsureHtmlCharsetMeta(text), StatusOk);
  return std::string(text.view());
}

// The document must come back untouched, in the same block.
void ExpectKept(std::string_view document) {
  TrackedBuffer<char> text;
  Set(text, document);
  const char* const block = text.data();
  EXPECT_EQ(EnsureHtmlCharsetMeta(text), StatusOk);
  EXPECT_EQ(text.data(), block);
  EXPECT_EQ(std::string(text.view()), document);
}

TEST(CharsetMeta, ComesAfterTheHead) {
  EXPECT_EQ(Ensure("<html><head><title>x</title></head>"),
            Terminated("<html><head>"
                       "<meta http-equiv=Content-Type content=\"text/html; charset=utf-8\">"
                       "<title>x</title></head>"));
}

TEST(CharsetMeta, TheSizeRisesBySixtySix) {
  EXPECT_EQ(Ensure("<head>").size(), 6u + 66u);
  // A terminator that was counted before is counted still, and one more after it.
  EXPECT_EQ(Ensure(std::string_view("<head>x\0", 8)),
            "<head><meta http-equiv=Content-Type content=\"text/html; charset=utf-8\">x" +
                std::string(2, '\0'));
}

// Drivers write a NUL after the size.
TEST(CharsetMeta, TheBlockHasOneMoreNul) {
  TrackedBuffer<char> text;
  Set(text, "<head>x");
  ASSERT_EQ(EnsureHtmlCharsetMeta(text), StatusOk);
  ASSERT_EQ(text.length(), 73u);
  EXPECT_EQ(text.data()[72], '\0');
  EXPECT_EQ(text.data()[73], '\0');
}

TEST(CharsetMeta, OnlyTheFirstHeadCounts) {
  EXPECT_EQ(Ensure("a<head>b<head>c"),
            Terminated("a<head>"
                       "<meta http-equiv=Content-Type content=\"text/html; charset=utf-8\">"
                       "b<head>c"));
}

TEST(CharsetMeta, SearchesPassNuls) {
  EXPECT_EQ(Ensure(std::string_view("\0<head>", 7)),
            Terminated(std::string("\0<head>", 7) +
                       "<meta http-equiv=Content-Type content=\"text/html; charset=utf-8\">"));
  ExpectKept(std::string_view("<head>\0charset", 14));
}

TEST(CharsetMeta, AnyMentionOfACharsetIsEnough) {
  ExpectKept("<head></head>the word charset");
  ExpectKept("<head data-charset></head><head>");
  ExpectKept("charset<head>");
}

TEST(CharsetMeta, TheWordInCapitalsIsNone) {
  EXPECT_EQ(Ensure("<head>CHARSET"),
            Terminated("<head><meta http-equiv=Content-Type content=\"text/html; "
                       "charset=utf-8\">CHARSET"));
}

TEST(CharsetMeta, WithoutAHeadThereIsNone) {
  ExpectKept("<html><HEAD></HEAD>");
  ExpectKept("<html><head ></head >");
  ExpectKept("<head");
  ExpectKept("");
}

TEST(CharsetMeta, WithoutADocument) {
  TrackedBuffer<char> document;
  EXPECT_EQ(EnsureHtmlCharsetMeta(document), StatusOk);
  EXPECT_FALSE(document.hasBlock());
}

TEST(CharsetMeta, WithoutTheFirstBlockTheDocumentStays) {
  TrackedBuffer<char> text;
  Set(text, "<head>x");
  const char* const block = text.data();
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(EnsureHtmlCharsetMeta(text), StatusOutOfMemory);
  EXPECT_EQ(text.data(), block);
  EXPECT_EQ(std::string(text.view()), "<head>x");
}

TEST(CharsetMeta, WithoutTheSecondBlockTheDocumentIsLost) {
  TrackedBuffer<char> text;
  Set(text, "<head>x");
  PlainKernelFailAt(PlainKernelFaultMemory, 2);
  EXPECT_EQ(EnsureHtmlCharsetMeta(text), StatusOutOfMemory);
  EXPECT_FALSE(text.hasBlock());
  EXPECT_EQ(text.length(), 0u);
}

TEST(CharsetMeta, TwoBlocksAreAllItTakes) {
  TrackedBuffer<char> text;
  Set(text, "<head>x");
  PlainKernelFailAt(PlainKernelFaultMemory, 3);
  EXPECT_EQ(EnsureHtmlCharsetMeta(text), StatusOk);
}

}  // namespace
}  // namespace tarn
