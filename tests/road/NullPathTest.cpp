// Calls without a path: a status for every format and every export, and no exception.
#include <gtest/gtest.h>

#include "MsgSamples.h"
#include "PstSamples.h"
#include "support/FakeHost.h"

namespace tarn::test {
namespace {

std::vector<std::string> FilesOpenedByPath() {
  return {SampleStore(PstLayout::Ansi), SampleStore(PstLayout::Unicode), AttachedMsg().write(),
          // No more than the beginning is looked at before.
          "!BDN and nothing of a store", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1 and no more"};
}

TEST(NullPath, OfAFileThatIsOpenedByItIsRefused) {
  for (const std::string& bytes : FilesOpenedByPath()) {
    for (const int32_t textOnly : {0, 1}) {
      FakeHost host(bytes);
      host.infoContext->path = nullptr;
      host.infoContext->textOnly = textOnly;
      EXPECT_EQ(host.info(), StatusNullArgument);
      EXPECT_EQ(host.info(false), StatusNullArgument);
      EXPECT_TRUE(host.calls.empty());
      EXPECT_EQ(host.directory().listing(), "mail");
    }
  }
}

TEST(NullPath, OfAMailFileIsNotMissed) {
  FakeHost host(kImageMail);
  host.infoContext->path = nullptr;
  ASSERT_EQ(host.info(), StatusOk);
  ASSERT_EQ(host.calls.size(), 1U);
  EXPECT_EQ(host.calls[0].route, Route::InfoByName);
}

// The document is in the slot: nothing is opened any more.
TEST(NullPath, IsNotMissedWithARecordInTheSlot) {
  FakeHost host(AttachedMsg().write());
  ASSERT_EQ(host.info(), StatusOk);
  host.infoContext->path = nullptr;
  host.loadContext->path = nullptr;
  EXPECT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.load(), StatusOk);
}

TEST(NullPath, OfTheOtherExportsOpensNoFile) {
  for (const std::string& bytes : {kImageMail, AttachedMsg().write()}) {
    FakeHost host(bytes);
    host.loadContext->path = nullptr;
    host.listContext->path = nullptr;
    host.extractContext->path = nullptr;
    EXPECT_EQ(host.load(), StatusOpenFailed);
    EXPECT_EQ(host.attachmentInfo(), StatusOpenFailed);
    EXPECT_EQ(host.extract(1), StatusOpenFailed);
    EXPECT_TRUE(host.calls.empty());
  }
}

}  // namespace
}  // namespace tarn::test
