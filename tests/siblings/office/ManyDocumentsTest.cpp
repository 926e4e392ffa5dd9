// One engine for many documents.
#include <gtest/gtest.h>

#include <iterator>

#include "EnginePages.h"
#include "Pictures.h"

namespace tarn::test {
namespace {

void LayOutSome(int count) {
  for (int i = 0; i < count; ++i) {
    const auto layout = LayOut(Rtf("Document " + std::to_string(i) + R"(\par{\pict\pngblip )" +
                                   std::string(kPinkPng) + "}"));
    Draw(*layout);
    EXPECT_FALSE(Pdf(*layout).empty());
  }
}

TEST(ManyDocuments, LeaveNoFiles) {
  LayOutSome(3);
  for (const char* name : {"document.rtf", "pages.pdf"}) {
    EXPECT_FALSE(std::filesystem::exists(EngineFolder() / name)) << name;
  }
  const auto count = [] {
    const std::filesystem::recursive_directory_iterator files(EngineFolder());
    return std::distance(begin(files), end(files));
  };
  const auto before = count();
  LayOutSome(3);
  EXPECT_EQ(count(), before);
}

TEST(ManyDocuments, TwoAtOnceKeepTheirPages) {
  const auto one = LayOut(Rtf("one"));
  const auto two = LayOut(Rtf(R"(two\page three)"));
  EXPECT_EQ(one->pageCount(), 1);
  EXPECT_EQ(TextOf(Pdf(*one)), "one");
  EXPECT_EQ(TextOf(Pdf(*two)), "two three");
}

}  // namespace
}  // namespace tarn::test
