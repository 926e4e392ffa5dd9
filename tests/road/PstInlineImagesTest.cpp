// Attached images of a store's message in its HTML body.

#include "FileFormats/Pst/PstInlineImages.h"

#include <gtest/gtest.h>

#include <functional>

#include "PstReading.h"
#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

const std::string kDataUrl = "data:image;base64," + kImageBase64;

class PstInlineImages : public ::testing::Test {
 protected:
  MessageBuilder& message() { return store_.folder("Inbox").message(); }
  Status read() {
    reading_.emplace(store_);
    return reading_->read(0);
  }
  std::string body() { return reading_->body(0); }

  StoreBuilder store_{SmallStore()};
  std::optional<PstReading> reading_;
};

TEST(PstInlineImagesOfBothLayouts, ReplaceTheReference) {
  for (const PstLayout layout : kBothLayouts) {
    StoreBuilder store(SmallStore(layout));
    store.folder("Inbox")
        .message()
        .html("<p><img src=\"cid:a.png\"> and <img src=\"cid:a.png\"></p>")
        .attachment(u"a.png", kImageBytes);
    PstReading reading(store);
    ASSERT_EQ(reading.read(0), StatusOk);
    EXPECT_EQ(reading.body(0),
              "<p><img src=\"" + kDataUrl + "\"> and <img src=\"" + kDataUrl + "\"></p>");
    EXPECT_EQ(reading.data.attachmentCount, 1u);
    EXPECT_EQ(reading.data.inlineCount, 0u);
  }
}

// What is replaced begins where the name was found, and not at the quote before it.
TEST_F(PstInlineImages, FindTheNameAloneWithoutCid) {
  message().html("<img src=\"pictures/a.png\">").attachment(u"a.png", kImageBytes);
  ASSERT_EQ(read(), StatusOk);
  EXPECT_EQ(body(), "<img src=\"pictures/" + kDataUrl + "\">");
}

// The search starts at the first cid reference: the name before it stays.
TEST_F(PstInlineImages, PreferTheCidReference) {
  message()
      .html("<img alt=\"a.png\" src=\"cid:a.png\"><img src=\"a.png\">")
      .attachment(u"a.png", kImageBytes);
  ASSERT_EQ(read(), StatusOk);
  EXPECT_EQ(body(), "<img alt=\"a.png\" src=\"" + kDataUrl + "\"><img src=\"a.png\">");
}

TEST_F(PstInlineImages, PlaceEachAttachmentByItsOwnReference) {
  MessageBuilder& m = message();
  m.html("<img src=\"cid:one.png\"><img src=\"cid:two.png\"><img src=\"cid:one.png\">");
  m.attachment(u"one.png", kImageBytes).attachment(u"two.png", std::string(60, 'x'));
  ASSERT_EQ(read(), StatusOk);
  std::string second = "data:image;base64,";
  for (int i = 0; i < 20; ++i) second += "eHh4";
  EXPECT_EQ(body(), "<img src=\"" + kDataUrl + "\"><img src=\"" + second + "\"><img src=\"" +
                        kDataUrl + "\">");
}

TEST_F(PstInlineImages, FindTheShortNameOnlyAsItStands) {
  message()
      .html("<img src=\"cid:B.PNG\"> <img src=\"B.PNG\">")
      .attach()
      .shortName(u"B.PNG")
      .data(kImageBytes);
  ASSERT_EQ(read(), StatusOk);
  // There is no cid name, and the plain name is found inside the cid reference first.
  EXPECT_EQ(body(), "<img src=\"cid:" + kDataUrl + "\"> <img src=\"" + kDataUrl + "\">");
}

TEST_F(PstInlineImages, DoNotLookAtContentIds) {
  message()
      .html("<img src=\"cid:id@x\">")
      .attach()
      .longName(u"a.png")
      .contentId(u"id@x")
      .data(kImageBytes);
  ASSERT_EQ(read(), StatusOk);
  EXPECT_EQ(body(), "<img src=\"cid:id@x\">");
}

TEST_F(PstInlineImages, LookForNamesInUtf8AndByCase) {
  MessageBuilder& m = message();
  m.html("<img src=\"cid:\xC3\xA4.png\"><img src=\"cid:A.png\">");
  m.attachment(u"\u00E4.png", kImageBytes).attachment(u"a.png", kImageBytes);
  ASSERT_EQ(read(), StatusOk);
  EXPECT_EQ(body(), "<img src=\"" + kDataUrl + "\"><img src=\"cid:A.png\">");
}

TEST_F(PstInlineImages, KeepAnAttachmentWithAnEmptyNameOut) {
  MessageBuilder& m = message();
  m.html("<img src=\"cid:\"><img src=\"cid:b\">");
  m.attachment(u"", kImageBytes);
  m.attachment(std::u16string_view(u"\0x", 2), kImageBytes);
  m.attachment(u"b", kImageBytes);
  ASSERT_EQ(read(), StatusOk);
  EXPECT_EQ(body(), "<img src=\"cid:\"><img src=\"" + kDataUrl + "\">");
}

TEST_F(PstInlineImages, EndNamesAtTheirFirstNul) {
  message().html("<img src=\"cid:b\">").attachment(std::u16string_view(u"b\0x", 3), kImageBytes);
  ASSERT_EQ(read(), StatusOk);
  EXPECT_EQ(body(), "<img src=\"" + kDataUrl + "\">");
}

// The padding of small images does not fit the room that they get.
TEST_F(PstInlineImages, FailForImagesWhoseUrlDoesNotFit) {
  for (const auto& [size, expected] : {std::pair{size_t{0}, StatusOutOfMemory},
                                       {1, StatusFailed},
                                       {3, StatusFailed},
                                       {14, StatusFailed},
                                       {15, StatusOk},
                                       {16, StatusFailed},
                                       {52, StatusFailed},
                                       {53, StatusOk}}) {
    StoreBuilder store(SmallStore());
    store.folder("A")
        .message()
        .html("<img src=\"cid:a\">")
        .attachment(u"a", std::string(size, 'x'));
    PstReading reading(store);
    EXPECT_EQ(reading.read(0), expected) << size;
  }
}

TEST_F(PstInlineImages, TakeAnyImageThatTheBodyDoesNotReferTo) {
  message().html("<p>nothing here</p>").attachment(u"a", "").attachment(u"bb", "x");
  ASSERT_EQ(read(), StatusOk);
  EXPECT_EQ(body(), "<p>nothing here</p>");
  EXPECT_EQ(reading_->data.attachmentCount, 2u);
}

TEST_F(PstInlineImages, StayOutOfAnEmptyBody) {
  message().html("").attachment(u"a", "");
  ASSERT_EQ(read(), StatusOk);
  EXPECT_EQ(body(), "");
  EXPECT_EQ(reading_->data.attachmentCount, 1u);
}

TEST_F(PstInlineImages, KeepWhatWasPlacedBeforeABrokenAttachment) {
  MessageBuilder& m = message();
  m.html("<img src=\"cid:a\"><img src=\"cid:c\">").body(u"t");
  m.attachment(u"a", kImageBytes);
  m.attach().longName(u"gone").withoutNode();
  m.attachment(u"c", kImageBytes);
  ASSERT_EQ(read(), StatusOk);
  EXPECT_EQ(body(), "<img src=\"" + kDataUrl + "\"><img src=\"cid:c\">");
  EXPECT_EQ(reading_->data.attachmentCount, 3u);
}

TEST_F(PstInlineImages, EndAtAnAttachmentWithoutBytesOrNames) {
  MessageBuilder& m = message();
  m.html("<img src=\"cid:a\"><img src=\"cid:c\">");
  m.attach().longName(u"no bytes").method(1);
  m.attachment(u"a", kImageBytes);
  ASSERT_EQ(read(), StatusOk);
  EXPECT_EQ(body(), "<img src=\"cid:a\"><img src=\"cid:c\">");

  StoreBuilder other(SmallStore());
  MessageBuilder& unnamed = other.folder("A").message();
  unnamed.html("<img src=\"cid:a\">");
  unnamed.attach().data(kImageBytes);
  unnamed.attachment(u"a", kImageBytes);
  PstReading reading(other);
  ASSERT_EQ(reading.read(0), StatusOk);
  EXPECT_EQ(reading.body(0), "<img src=\"cid:a\">");
}

TEST_F(PstInlineImages, GoIntoTheSelectedMessageOnly) {
  FolderBuilder& folder = store_.folder("A");
  folder.message().html("<img src=\"cid:a\">").attachment(u"a", kImageBytes);
  folder.message().html("second <img src=\"cid:a\">");
  reading_.emplace(store_);
  ASSERT_EQ(reading_->read(1), StatusOk);
  EXPECT_EQ(reading_->body(1), "second <img src=\"cid:a\">");
  EXPECT_EQ(reading_->data.attachmentCount, 0u);
}

TEST_F(PstInlineImages, NeedHtml) {
  message().body(u"cid:a").attachment(u"a", "x");
  ASSERT_EQ(read(), StatusOk);
  EXPECT_EQ(reading_->text(0), std::string("c\0i\0d\0:\0a\0", 10));
  EXPECT_EQ(reading_->data.attachmentCount, 0u);
}

TEST_F(PstInlineImages, BecomeFilesOnTheTempFileRoute) {
  message().html("<img src=\"cid:a.png\">").attachment(u"a.png", "abc");
  reading_.emplace(store_);
  PlainKernelSetTempDirectory(reading_->directory().c_str());
  reading_->data.useTempFile = true;
  ASSERT_EQ(reading_->read(0), StatusOk);
  EXPECT_EQ(body(), "<img src=\"_a.png\">");
  ASSERT_EQ(reading_->data.inlineFiles.length(), 1u);
  std::string path = reading_->data.inlineFiles.data()[0];
  EXPECT_TRUE(path.ends_with("\\_a.png"));
  for (char& c : path) {
    if (c == '\\') c = '/';
  }
  EXPECT_EQ(ReadWholeFile(path), "abc");
  KernelDeleteFileUtf8(reading_->data.inlineFiles.data()[0]);
}

// A cid name makes the underscore: the plain name alone is the file's name.
TEST_F(PstInlineImages, BecomeFilesOfTheirShortNameAlone) {
  message().html("<img src=\"B.PNG\">").attach().shortName(u"B.PNG").data("abc");
  reading_.emplace(store_);
  PlainKernelSetTempDirectory(reading_->directory().c_str());
  reading_->data.useTempFile = true;
  ASSERT_EQ(reading_->read(0), StatusOk);
  EXPECT_EQ(body(), "<img src=\"B.PNG\">");
  ASSERT_EQ(reading_->data.inlineFiles.length(), 1u);
  EXPECT_TRUE(std::string(reading_->data.inlineFiles.data()[0]).ends_with("\\B.PNG"));
  KernelDeleteFileUtf8(reading_->data.inlineFiles.data()[0]);
}

TEST_F(PstInlineImages, BecomeFilesOfTheirPlainNameWhenTheCidNameDoesNotConvert) {
  message().subject(u"").html("<img src=\"cid:a\">").attachment(u"a", "abc");
  reading_.emplace(store_);
  PlainKernelSetTempDirectory(reading_->directory().c_str());
  reading_->data.useTempFile = true;
  ASSERT_EQ(reading_->count(), StatusOk);
  PlainKernelFailAt(PlainKernelFaultText, 2);
  ASSERT_EQ(reading_->walk(0), StatusOk);
  PlainKernelFailAt(PlainKernelFaultText, 0);
  EXPECT_EQ(body(), "<img src=\"cid:a\">");
  ASSERT_EQ(reading_->data.inlineFiles.length(), 1u);
  EXPECT_TRUE(std::string(reading_->data.inlineFiles.data()[0]).ends_with("\\a"));
  KernelDeleteFileUtf8(reading_->data.inlineFiles.data()[0]);
}

// Names of three bytes a character, after a shorter one in the same block.
TEST_F(PstInlineImages, HaveRoomForTheLongestNames) {
  const std::u16string name(9, u'\u20AC');
  std::string utf8;
  for (int i = 0; i < 9; ++i) utf8 += "\xE2\x82\xAC";
  MessageBuilder& m = message();
  m.html("<img src=\"cid:a\"><img src=\"cid:" + utf8 + "\">");
  m.attachment(u"a", kImageBytes).attachment(name, kImageBytes);
  ASSERT_EQ(read(), StatusOk);
  EXPECT_EQ(body(), "<img src=\"" + kDataUrl + "\"><img src=\"" + kDataUrl + "\">");

  StoreBuilder other(SmallStore());
  MessageBuilder& plain = other.folder("A").message();
  plain.html("<img src=\"a\"><img src=\"" + utf8 + "\">");
  plain.attach().shortName(u"a").data(kImageBytes);
  plain.attach().shortName(name).data(kImageBytes);
  PstReading reading(other);
  ASSERT_EQ(reading.read(0), StatusOk);
  EXPECT_EQ(reading.body(0), "<img src=\"" + kDataUrl + "\"><img src=\"" + kDataUrl + "\">");
}

// No room for the list of files: the pass is left out.
TEST_F(PstInlineImages, AreLeftOutWhenTheListOfFilesGetsNoMemory) {
  message().html("<img src=\"cid:a\">").attachment(u"a", kImageBytes);
  int leftOut = 0;
  const uint64_t calls = SweepFaults(PlainKernelFaultMemory, [&](FaultedWork& faulted) {
    PstReading reading(store_);
    ASSERT_EQ(reading.count(), StatusOk);
    const Status status = faulted([&] { return reading.walk(0); });
    const bool isLeftOut = status == StatusOk && reading.data.attachmentCount == 1 &&
                           reading.data.inlineFiles.data() == nullptr &&
                           reading.body(0) == "<img src=\"cid:a\">";
    EXPECT_TRUE(faulted.isReached() || !isLeftOut);
    if (isLeftOut) ++leftOut;
  });
  EXPECT_GE(leftOut, 1);
  EXPECT_LT(calls, 1000u);
}

TEST_F(PstInlineImages, TakeANameThatDoesNotConvertAsNone) {
  message().subject(u"").html("<img src=\"cid:a\">").attachment(u"a", kImageBytes);
  reading_.emplace(store_);
  ASSERT_EQ(reading_->count(), StatusOk);
  PlainKernelFailAt(PlainKernelFaultText, 2);  // the cid name; the plain name is the first
  ASSERT_EQ(reading_->walk(0), StatusOk);
  PlainKernelFailAt(PlainKernelFaultText, 0);
  // The plain name is found where the reference ends.
  EXPECT_EQ(body(), "<img src=\"cid:" + kDataUrl + "\">");
}

}  // namespace
}  // namespace tarn::test
