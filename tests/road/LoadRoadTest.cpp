// fltLoad: the four routes to a sibling, cached and transient records, the failures.

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

#include "support/Environment.h"
#include "support/FakeHost.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

// A target object as a host makes one: the first word points to its table.
struct Target {
  TargetKindFunction* table;
  int32_t kind;
};

int32_t KindOf(void* self) { return static_cast<Target*>(self)->kind; }
int32_t NotToBeCalled(void*) {
  ADD_FAILURE();
  return 0;
}

TargetKindFunction targetTable[] = {NotToBeCalled, NotToBeCalled, NotToBeCalled, KindOf};

void ExpectBitmapArguments(const SiblingCall& call, FakeHost& host) {
  EXPECT_EQ(call.bitmap, Copy(host.loadContext->bitmap));
  EXPECT_EQ(call.bitmapSize, 284);
  EXPECT_EQ(call.depth, 24);
  EXPECT_EQ(call.order, 1);
  EXPECT_EQ(call.flag, 32);
  EXPECT_EQ(call.callback, Copy(host.loadContext->callback));
  EXPECT_EQ(call.userValue, Copy(host.loadContext->userValue));
}

TEST(LoadRoad, DrawsHtmlFromATempFile) {
  FakeHost host(kImageMail);
  host.answer.result = 4711;
  EXPECT_EQ(host.load(), 4711);  // the sibling's own result
  ASSERT_EQ(host.calls.size(), 1u);
  const SiblingCall& call = host.calls[0];
  EXPECT_EQ(call.route, Route::LoadByName);
  EXPECT_NE(call.document.find("<img src=\"pic@x_pic.png\">"), std::string::npos);
  EXPECT_NE(call.besideFiles.find("pic@x_pic.png"), std::string::npos);
  EXPECT_EQ(call.ioMode, 3);
  EXPECT_EQ(KernelIoModeGet(), 0);
  ExpectBitmapArguments(call, host);
  // The model's flags less one bit, and the filter's own size and format.
  EXPECT_EQ(call.info.flags, 0xFFFFBFFFu);
  EXPECT_EQ(call.info.size, 2316u);
  EXPECT_EQ(call.info.format, SiblingHtml);
  EXPECT_EQ(call.info.reserved0[100], host.hostInfo->reserved0[100]);
  EXPECT_EQ(call.options.size, 84u);
  EXPECT_EQ(call.options.lastWord, host.options->lastWord);  // as the host wrote it
  EXPECT_EQ(host.directory().listing(), "mail");
}

TEST(LoadRoad, DrawsFromMemory) {
  PlainKernelSetIoMode(3);
  FakeHost html(kHtmlMail);
  EXPECT_EQ(html.load(), StatusOk);
  EXPECT_EQ(html.calls[0].route, Route::LoadFromMemory);
  EXPECT_EQ(html.calls[0].document, HtmlMailDocument() + std::string(2, '\0'));
  ExpectBitmapArguments(html.calls[0], html);

  PlainKernelSetIoMode(0);
  FakeHost text(kPlainMail);
  EXPECT_EQ(text.load(), StatusOk);
  EXPECT_EQ(text.calls[0].route, Route::LoadFromMemory);
  EXPECT_EQ(text.calls[0].document, kPlainMailDocument + '\0');
  EXPECT_EQ(text.calls[0].ioMode, 0);
}

TEST(LoadRoad, TakesTheTargetRoutesForKindTen) {
  Target direct = {targetTable, 10};
  FakeHost html(kHtmlMail);
  html.loadContext->target = &direct;
  EXPECT_EQ(html.load(), StatusOk);
  EXPECT_EQ(html.calls[0].route, Route::TargetByName);
  EXPECT_EQ(html.calls[0].opaque, html.loadContext->opaque);
  EXPECT_EQ(html.calls[0].document, HtmlMailDocument());

  FakeHost text(kPlainMail);
  text.loadContext->target = &direct;
  EXPECT_EQ(text.load(), StatusOk);
  EXPECT_EQ(text.calls[0].route, Route::TargetFromMemory);
  EXPECT_EQ(text.calls[0].opaque, text.loadContext->opaque);
  EXPECT_EQ(text.calls[0].document, kPlainMailDocument + '\0');
}

TEST(LoadRoad, TakesTheBitmapRoutesForAnyOtherKind) {
  Target other = {targetTable, 9};
  FakeHost html(kHtmlMail);
  html.loadContext->target = &other;
  EXPECT_EQ(html.load(), StatusOk);
  EXPECT_EQ(html.calls[0].route, Route::LoadByName);
  FakeHost text(kPlainMail);
  text.loadContext->target = &other;
  EXPECT_EQ(text.load(), StatusOk);
  EXPECT_EQ(text.calls[0].route, Route::LoadFromMemory);
}

TEST(LoadRoad, UsesTheTextSiblingWhenTextIsAsked) {
  FakeHost host(kHtmlMail);
  host.loadContext->textOnly = 1;
  EXPECT_EQ(host.load(), StatusOk);
  EXPECT_EQ(host.calls[0].route, Route::LoadFromMemory);
  EXPECT_EQ(host.calls[0].info.format, SiblingText);
}

TEST(LoadRoad, UsesTheRecordInTheSlotAndLeavesItThere) {
  FakeHost host(kHtmlMail);
  ASSERT_EQ(host.info(), StatusOk);
  void* const record = host.slot.data;
  host.rewriteFile("gone");
  host.loadContext->textOnly = 1;  // not read with a record
  host.loadContext->messageNumber = 9;
  EXPECT_EQ(host.load(), StatusOk);
  ASSERT_EQ(host.calls.size(), 2u);
  EXPECT_EQ(host.calls[1].route, Route::LoadByName);
  EXPECT_EQ(host.calls[1].path, host.calls[0].path);
  EXPECT_EQ(Copy(host.slot.data), record);
}

TEST(LoadRoad, LeavesAnEmptySlotEmpty) {
  FakeHost host(kPlainMail);
  EXPECT_EQ(host.load(), StatusOk);
  EXPECT_EQ(Copy(host.slot.data), nullptr);
}

TEST(LoadRoad, LeavesTheStatusFieldWithoutAFailure) {
  FakeHost host(kPlainMail);
  host.loadContext->status = -55;
  EXPECT_EQ(host.load(), StatusOk);
  EXPECT_EQ(host.loadContext->status, -55);
  host.loadContext->status = 1;
  EXPECT_EQ(host.load(), StatusOk);
  EXPECT_EQ(host.loadContext->status, 1);
}

TEST(LoadRoad, ReportsFilesThatItCannotTake) {
  FakeHost missing(kPlainMail);
  missing.loadContext->path = u"/nowhere/at/all";
  EXPECT_EQ(missing.load(), StatusOpenFailed);
  missing.loadContext->path = nullptr;
  EXPECT_EQ(missing.load(), StatusOpenFailed);
  FakeHost shortFile("eleven byte");
  EXPECT_EQ(shortFile.load(), StatusReadFailed);
  FakeHost other("Hello, world");
  EXPECT_EQ(other.load(), StatusNotSupported);
}

TEST(LoadRoad, FailsWithoutTheSiblingThatItNeeds) {
  Target direct = {targetTable, 10};
  for (void* const target : {static_cast<void*>(nullptr), static_cast<void*>(&direct)}) {
    for (const std::string& mail : {kHtmlMail, kPlainMail}) {
      FakeHost host(mail);
      host.loadContext->target = target;
      const bool isDirect = target != nullptr;
      const bool byName = mail == kHtmlMail;
      if (isDirect && byName) host.loadContext->targetByName = nullptr;
      if (isDirect && !byName) host.loadContext->targetFromMemory = nullptr;
      if (!isDirect && byName) host.loadContext->loadByName = nullptr;
      if (!isDirect && !byName) host.loadContext->loadFromMemory = nullptr;
      EXPECT_EQ(host.load(), StatusFailed);
      EXPECT_TRUE(host.calls.empty());
      EXPECT_EQ(host.directory().listing(), "mail");
    }
  }
}

// What a store's reader throws leaves the export, and nothing stays behind.
TEST(LoadRoad, LetsTheExceptionsOfAStoreThrough) {
  FakeHost store("!BDN12345678");
  EXPECT_THROW(store.load(), std::out_of_range);
  EXPECT_EQ(KernelIoModeGet(), 0);
}

TEST(LoadRoad, ReleasesEverythingWhenASiblingThrows) {
  FakeHost host(kImageMail);
  host.answer.action = [] { throw std::runtime_error("sibling"); };
  EXPECT_THROW(host.load(), std::runtime_error);
  EXPECT_EQ(KernelIoModeGet(), 0);
  EXPECT_EQ(host.directory().listing(), "mail");
}

// Relied upon as it is: the record and the open file stay behind. In a process of its own, since
// they stay for good.
TEST(LoadRoadDeathTest, LeavesRecordAndFileWhenTheTempFileCannotBeWritten) {
  // Where an open file cannot be removed, its directory goes once that process has ended.
  const TempDirectory around;
  const std::u8string path = around.path().u8string();
  const ScopedVariable temporary(kTempVariable, std::string(path.begin(), path.end()).c_str());
  EXPECT_EXIT(
      {
        FakeHost host(kHtmlMail);
        PlainKernelUsageRecord before = {};
        PlainKernelUsage(&before);
        PlainKernelFailAt(PlainKernelFaultWrite, 1);
        const bool refused = host.load() == StatusWriteFailed;
        PlainKernelUsageRecord after = {};
        PlainKernelUsage(&after);
        const bool left = after.liveTrackedObjects == before.liveTrackedObjects + 1 &&
                          after.openHandles == before.openHandles + 1 &&
                          after.temporaryFiles == before.temporaryFiles + 1;
        _Exit(refused && left && host.calls.empty() ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tarn::test
