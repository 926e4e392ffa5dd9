// A host that draws pages through fltInfo and fltLoad, on the built helpers.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Tarnbase/PlainKernel.h"
#include "siblings/client/InstalledHelpers.h"
#include "support/FakeHost.h"
#include "support/SampleMails.h"
#include "support/TempDirectory.h"
#include "tarnmail/pages/HelperPages.h"
#include "tarnmail/pages/HostBitmap.h"
#include "tarnmail/pages/HostSiblings.h"

namespace tarn::test {
namespace {

using host::HostBitmap;
using host::HostSiblings;

class PagesHost : public ::testing::Test {
 protected:
  PagesHost() : maker_(options()) {}
  ~PagesHost() override { PlainKernelSetIoMode(0); }

  static pages::HelperOptions options() {
    pages::HelperOptions options;
    options.programs = HELPERS_PATH;
    return options;
  }

  static void attach(FakeHost& host, const HostSiblings& siblings) {
    siblings.attachTo(*host.infoContext.get());
    siblings.attachTo(*host.loadContext.get());
    host.loadContext->callback = nullptr;
  }

  static int32_t draw(FakeHost& host, int32_t page, int32_t dotsPerInch, HostBitmap& bitmap) {
    host.hostInfo->xResolution = dotsPerInch;
    host.hostInfo->yResolution = dotsPerInch;
    host.options->pageNumber = page;
    host.loadContext->bitmap = bitmap.get();
    return host.load();
  }

  host::HelperPages maker_;
};

// How much of the bitmap is dark, in thousandths.
size_t Darkness(const HostBitmap& bitmap) {
  size_t dark = 0;
  for (const char byte : bitmap.rows()) dark += static_cast<uint8_t>(byte) < 128 ? 1 : 0;
  return dark * 1000 / bitmap.rows().size();
}

// How many rows of the bitmap are dark for at least a third.
size_t DarkRows(const HostBitmap& bitmap) {
  const size_t size = static_cast<size_t>(bitmap.width()) * host::kBytesPerPixel;
  size_t rows = 0;
  for (std::string_view left = bitmap.rows(); left.size() >= size; left.remove_prefix(size)) {
    size_t dark = 0;
    for (const char byte : left.substr(0, size)) dark += static_cast<uint8_t>(byte) < 128 ? 1 : 0;
    rows += dark * 3 >= size ? 1 : 0;
  }
  return rows;
}

// The last of these lines is on the last page, alone with a few others.
std::string LongMail(const std::string& type, const std::string& line, int count) {
  std::string mail = kSampleFields + "Content-Type: " + type + "\r\n\r\n";
  for (int i = 0; i < count; ++i) mail += line + "\r\n";
  return mail;
}

int32_t NoteProgress(uint64_t userValue, int32_t percent) {
  reinterpret_cast<std::vector<int32_t>*>(userValue)->push_back(percent);
  return StatusOk;
}

int32_t StopAtOnce(uint64_t, int32_t) { return StatusFailed; }

TEST_F(PagesHost, GetsPageTwoAt300Dpi) {
  for (const int32_t ioMode : {0, KERNEL_IO_IN_MEMORY}) {
    for (const auto& [type, lines] : {std::pair{"text/plain", 70}, {"text/html", 45}}) {
      PlainKernelSetIoMode(ioMode);
      // Its crossbars make rows of the page dark.
      const std::string darkLine(60, '#');
      FakeHost host(LongMail(type, "<p>Some words of a mail</p>", lines) + darkLine + "\r\n");
      HostSiblings siblings(maker_, pages::Paper::A4, host::MailFormat::Mail);
      attach(host, siblings);
      ASSERT_EQ(host.info(), StatusOk) << type;
      EXPECT_EQ(host.hostInfo->pageCount, 2) << type;
      EXPECT_NEAR(host.hostInfo->width, 794, 1);
      EXPECT_NEAR(host.hostInfo->height, 1123, 1);
      HostBitmap bitmap;
      ASSERT_EQ(draw(host, 2, 300, bitmap), StatusOk) << type;
      EXPECT_EQ(bitmap.pageNumber(), 2);
      EXPECT_NEAR(bitmap.width(), 2480, 2);
      EXPECT_NEAR(bitmap.height(), 3508, 2);
      EXPECT_GE(Darkness(bitmap), 5u) << type;
      EXPECT_LE(Darkness(bitmap), 300u) << type;
      HostBitmap first;
      ASSERT_EQ(draw(host, 1, 300, first), StatusOk) << type;
      EXPECT_EQ(DarkRows(first), 0u) << type;
      EXPECT_GE(DarkRows(bitmap), 2u) << type;
      host.clearSlot();
    }
  }
}

TEST_F(PagesHost, HearsOfProgressAndStops) {
  for (const std::string& mail : {kPlainMail, kHtmlMail}) {
    FakeHost host(mail);
    HostSiblings siblings(maker_, pages::Paper::A4, host::MailFormat::Mail);
    attach(host, siblings);
    ASSERT_EQ(host.info(), StatusOk);
    std::vector<int32_t> heard;
    host.loadContext->callback = reinterpret_cast<void*>(&NoteProgress);
    host.loadContext->userValue = reinterpret_cast<uint64_t>(&heard);
    HostBitmap bitmap;
    EXPECT_EQ(draw(host, 1, 96, bitmap), StatusOk);
    ASSERT_FALSE(heard.empty());
    EXPECT_EQ(heard.front(), 0);
    EXPECT_EQ(heard.back(), 100);
    host.loadContext->callback = reinterpret_cast<void*>(&StopAtOnce);
    HostBitmap stopped;
    EXPECT_EQ(draw(host, 1, 96, stopped), StatusDone);
    EXPECT_EQ(stopped.get()->pixels, nullptr);
    // The document is still there for whoever asks again.
    host.loadContext->callback = nullptr;
    EXPECT_EQ(draw(host, 1, 96, stopped), StatusOk);
    host.clearSlot();
  }
}

TEST_F(PagesHost, GetsThePagesOfRtf) {
  FakeHost host(ReadWholeFile(EXAMPLES_PATH "/msg/rtf.msg"));
  HostSiblings siblings(maker_, pages::Paper::Letter, host::MailFormat::Msg);
  attach(host, siblings);
  ASSERT_EQ(host.info(), StatusOk) << (siblings.failure() ? siblings.failure()->what() : "");
  EXPECT_EQ(siblings.lastSibling(), SiblingRtf);
  EXPECT_GE(host.hostInfo->pageCount, 1);
  HostBitmap bitmap;
  ASSERT_EQ(draw(host, 1, 96, bitmap), StatusOk);
  EXPECT_NEAR(bitmap.width(), host.hostInfo->width, 1);
  EXPECT_GE(Darkness(bitmap), 1u);
  host.clearSlot();
}

TEST_F(PagesHost, GetsPagesOfTwoFilesInTurn) {
  FakeHost text(LongMail("text/plain", "text", 200));
  HostSiblings siblings(maker_, pages::Paper::A4, host::MailFormat::Mail);
  attach(text, siblings);
  ASSERT_EQ(text.info(), StatusOk);
  FakeHost html(kHtmlMail);
  attach(html, siblings);
  ASSERT_EQ(html.info(), StatusOk);
  // The helper holds the other document now: this one is laid out again.
  HostBitmap page;
  ASSERT_EQ(draw(text, 2, 96, page), StatusOk);
  EXPECT_EQ(page.pageNumber(), 2);
  HostBitmap other;
  ASSERT_EQ(draw(html, 2, 96, other), StatusOk);
  EXPECT_EQ(other.pageNumber(), 1);  // it has no other
  EXPECT_GE(Darkness(page), 1u);
  EXPECT_GE(Darkness(other), 1u);
  text.clearSlot();
  html.clearSlot();
}

}  // namespace
}  // namespace tarn::test
