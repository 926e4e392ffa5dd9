// Images of MSG files in the body that refers to them.

#include <gtest/gtest.h>

#include "Platform/Directories.h"
#include "ReadMsg.h"
#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"
#include "support/RtfCompressor.h"

namespace tarn::test {
namespace {

// An image of 60 bytes, and the URL that it becomes.
const std::string kImage(60, 'A');

std::string ImageUrl() {
  std::string url = "data:image;base64,";
  for (int i = 0; i < 20; ++i) url += "QUFB";
  return url;
}

MsgBuilder Html(const std::string& body) {
  MsgBuilder msg;
  msg.text(0x1000, u"Plain").binary(0x1013, body);
  return msg;
}

// The body that the message gets.
struct Inlined {
  explicit Inlined(const std::string& bytes) : reading(bytes) {
    EXPECT_EQ(reading.run(), StatusOk);
    body = Bytes(reading.message.body);
    status = reading.message.inlineStatus;
    EXPECT_EQ(reading.message.attachmentCount, reading.data.attachmentCount);
    count = reading.message.attachmentCount;
  }
  explicit Inlined(const MsgBuilder& msg) : Inlined(msg.write()) {}

  MsgReading reading;
  std::string body;
  Status status;
  uint32_t count = 0;
};

TEST(InlineMsgImages, AreFoundByContentId) {
  MsgBuilder msg = Html("<p><img src=\"cid:one@x\">");
  msg.attachment(u"a.png", kImage).contentId(u"one@x");
  const Inlined inlined(msg);
  EXPECT_EQ(inlined.body, "<p><img src=\"" + ImageUrl() + "\">");
  EXPECT_EQ(inlined.status, StatusOk);
  EXPECT_EQ(inlined.count, 1u);
}

TEST(InlineMsgImages, AreFoundByNameAlone) {
  MsgBuilder msg = Html("<p><img src=\"a.png\">");
  msg.attachment(u"a.png", kImage);
  EXPECT_EQ(Inlined(msg).body, "<p><img src=\"" + ImageUrl() + "\">");
  MsgBuilder other = Html("<p><img src=\"a.png\">");
  other.attachment(u"a.png", kImage).contentId(u"nowhere@x");
  EXPECT_EQ(Inlined(other).body, "<p><img src=\"" + ImageUrl() + "\">");
}

TEST(InlineMsgImages, AreReplacedFromTheHitOnAndByContentIdFirst) {
  MsgBuilder msg = Html(
      "<img src=\"a.png\"><img src=\"cid:one@x\"><img src=\"CID:one@x\"><img "
      "src=\"cid:one@x\">");
  msg.attachment(u"a.png", kImage).contentId(u"one@x");
  EXPECT_EQ(Inlined(msg).body, "<img src=\"a.png\"><img src=\"" + ImageUrl() +
                                   "\"><img src=\"CID:one@x\"><img src=\"" + ImageUrl() + "\">");
}

TEST(InlineMsgImages, ThatTheBodyDoesNotNameAreOnlyCounted) {
  const std::string body = "<p><img src=\"one@x\">b.png";
  MsgBuilder msg = Html(body);
  msg.attachment(u"a.png", kImage).contentId(u"one@x");
  const Inlined inlined(msg);
  EXPECT_EQ(inlined.body, body);
  EXPECT_EQ(inlined.status, StatusOk);
  EXPECT_EQ(inlined.count, 1u);
}

TEST(InlineMsgImages, GoByTheShortNameWithoutALongOne) {
  for (const bool hasEmptyLong : {false, true}) {
    MsgBuilder msg = Html("<img src=\"A.PNG\">");
    MsgAttachment& image = msg.attachment().text(0x3704, u"A.PNG").binary(0x3701, kImage);
    if (hasEmptyLong) image.text(0x3707, u"");
    EXPECT_EQ(Inlined(msg).body, "<img src=\"" + ImageUrl() + "\">");
  }
}

TEST(InlineMsgImages, WithoutANameAreOnlyCounted) {
  MsgBuilder msg = Html("<img src=\"cid:one@x\">");
  msg.attachment().contentId(u"one@x").binary(0x3701, kImage);
  const Inlined inlined(msg);
  EXPECT_EQ(inlined.body, "<img src=\"cid:one@x\">");
  EXPECT_EQ(inlined.count, 1u);
}

TEST(InlineMsgImages, WithoutADataStreamAreOnlyCounted) {
  MsgBuilder msg = Html("<img src=\"m.msg\">");
  msg.attachment().text(0x3707, u"m.msg").embedded().text(0x0037, u"Inner");
  const Inlined inlined(msg);
  EXPECT_EQ(inlined.body, "<img src=\"m.msg\">");
  EXPECT_EQ(inlined.status, StatusOk);
  EXPECT_EQ(inlined.count, 1u);
}

TEST(InlineMsgImages, HaveContentIdsOfAnyType) {
  MsgBuilder msg = Html("<img src=\"cid:one@x\"><img src=\"cid:two@x\">");
  msg.attachment(u"a.png", kImage).text8(0x3712, "one@x");
  msg.attachment(u"b.png", kImage).binary(0x3712, "two@x");
  EXPECT_EQ(Inlined(msg).body, "<img src=\"" + ImageUrl() + "\"><img src=\"" + ImageUrl() + "\">");
}

TEST(InlineMsgImages, GoIntoRtfBodiesToo) {
  MsgBuilder msg;
  msg.binary(0x1009, PackRtf("{\\rtf1 see \"a.png\" here}"));
  msg.attachment(u"a.png", kImage);
  EXPECT_EQ(Inlined(msg).body, "{\\rtf1 see \"" + ImageUrl() + "\" here}" + '\0');
}

// A data stream that cannot be read would show in the status.
TEST(InlineMsgImages, AreNotReadWithoutABodyOrAReference) {
  for (const std::string& body : {std::string(), std::string("<p>none")}) {
    MsgBuilder msg;
    msg.text(0x1000, u"Plain");
    if (!body.empty()) msg.binary(0x1013, body);
    msg.attachment(u"a.png", kImage);
    msg.attachment(u"b.png", kImage);
    CompoundImage image = msg.image();
    image.put(image.record("__attach_version1.0_#00000000/__substg1.0_37010102") + RecordSize,
              image.bytes.size() + 1);
    const Inlined inlined(image.bytes);
    EXPECT_EQ(inlined.status, StatusOk);
    EXPECT_EQ(inlined.count, 2u);
    EXPECT_EQ(inlined.body, body);
  }
}

// The first that fails ends the pass, and the message is read all the same.
TEST(InlineMsgImages, LeaveTheirFirstFailureInTheMessage) {
  const std::string body = "<img src=\"a.png\"><img src=\"b.png\"><img src=\"c.png\">";
  const auto failing = [&body](const std::string& second) {
    MsgBuilder msg = Html(body);
    msg.attachment(u"a.png", kImage);
    msg.attachment(u"b.png", second);
    msg.attachment(u"c.png", kImage);
    return msg;
  };
  const std::string half = "<img src=\"" + ImageUrl() + "\"><img src=\"b.png\"><img src=\"c.png\">";
  const Inlined small(failing("ABC"));
  EXPECT_EQ(small.body, half);
  EXPECT_EQ(small.status, StatusFailed);
  EXPECT_EQ(small.count, 1u);
  const Inlined empty(failing(""));
  EXPECT_EQ(empty.body, half);
  EXPECT_EQ(empty.status, StatusBadArgument);
  EXPECT_EQ(empty.count, 1u);
  CompoundImage image = failing(kImage).image();
  image.put(image.record("__attach_version1.0_#00000001/__substg1.0_37010102") + RecordSize,
            image.bytes.size() + 1);
  const Inlined large(image.bytes);
  EXPECT_EQ(large.body, half);
  EXPECT_EQ(large.status, StatusOutOfMemory);
  EXPECT_EQ(large.count, 1u);
}

TEST(InlineMsgImages, AreLeftAloneWhenTheRecordHasImagesAlready) {
  MsgBuilder msg = Html("<img src=\"a.png\">");
  msg.attachment(u"a.png", kImage);
  MsgReading reading(msg);
  ASSERT_NE(reading.data.inlineFiles.reserve(1), nullptr);
  reading.data.attachmentCount = 7;
  ASSERT_EQ(reading.run(), StatusOk);
  EXPECT_EQ(Bytes(reading.message.body), "<img src=\"a.png\">");
  EXPECT_EQ(reading.message.attachmentCount, 7u);
}

TEST(InlineMsgImages, LeaveAnEarlierFailureInTheMessage) {
  MsgBuilder msg = Html("<img src=\"a.png\">");
  msg.attachment(u"a.png", "");
  MsgReading reading(msg);
  reading.message.inlineStatus = StatusWriteFailed;
  ASSERT_EQ(reading.run(), StatusOk);
  EXPECT_EQ(reading.message.inlineStatus, StatusWriteFailed);
}

// Beside the HTML file, an image's file is named by content id and name.
TEST(InlineMsgImages, HaveFilesNamedByTheirContentId) {
  MsgBuilder msg = Html("<img src=\"cid:one@x\">");
  msg.attachment(u"a.png", kImage).contentId(u"one@x");
  MsgReading reading(msg);
  reading.data.useTempFile = 1;
  ASSERT_EQ(reading.run(), StatusOk);
  EXPECT_EQ(reading.message.inlineStatus, StatusOk);
  ASSERT_EQ(reading.data.inlineFiles.length(), 1u);
  const std::filesystem::path file(reading.data.inlineFiles.data()[0]);
  EXPECT_TRUE(file.string().ends_with("one@x_a.png")) << file;
  KernelDeleteFileUtf8(reading.data.inlineFiles.data()[0]);
  platform::RemoveEmptyDirectory(reading.data.tempDirectory);
}

// 1 GiB and 64 times the file: 400 references to an image of 4 MiB are more.
TEST(InlineMsgImages, ThatMakeTheBodyTooLargeEndThePass) {
  std::string body;
  for (int i = 0; i < 400; ++i) body += "<img src=\"a.png\">";
  MsgBuilder msg = Html(body);
  msg.attachment(u"a.png", std::string(4 << 20, 'A'));
  const Inlined inlined(msg);
  EXPECT_EQ(inlined.status, StatusOutOfMemory);
  EXPECT_EQ(inlined.count, 0u);
  EXPECT_TRUE(inlined.body == body);
}

// The searches of a small file may pass over 4 GiB: that is 64 times a body of 64 MiB.
TEST(InlineMsgImages, ThatAreSearchedForTooLongEndThePass) {
  constexpr uint32_t kImages = 100;
  MsgBuilder msg;
  for (uint32_t i = 0; i < kImages; ++i) msg.attachment(u"nowhere", "x");
  OpenMsg file(msg.write());
  MailMessage message;
  PstFilterData data;
  Set(message.body, std::string(64 << 20, '-'));
  EXPECT_EQ(InlineMsgImages(message, data, file.storage()), StatusOutOfMemory);
  EXPECT_GE(data.attachmentCount, 63u);
  EXPECT_LE(data.attachmentCount, 66u);
}

TEST(InlineMsgImages, KeepAnEmptyFieldOfNulsApart) {
  // A content id that is one NUL is none.
  MsgBuilder msg = Html("<img src=\"cid:\">");
  msg.attachment(u"a.png", kImage).stream("__substg1.0_3712001F", Raw("\0\0"));
  EXPECT_EQ(Inlined(msg).body, "<img src=\"cid:\">");
}

// Hundreds of attachments that are one and the same large stream: the sound ones are no more than
// the file together.
TEST(InlineMsgImages, ThatShareAStreamEndThePass) {
  constexpr size_t kImages = 300;
  const std::string large(1 << 20, 'x');
  std::string body;
  MsgBuilder msg;
  std::vector<std::u16string> names;
  for (size_t i = 0; i < kImages; ++i) {
    const std::string name = "image" + std::to_string(1000 + i) + ".png";
    body += "<img src=\"" + name + "\">";
    names.emplace_back(name.begin(), name.end());
  }
  msg.text(0x1000, u"Plain").binary(0x1013, body);
  msg.attachment(names[0], large);
  for (size_t i = 1; i < kImages; ++i) msg.attachment(names[i], "x");
  CompoundImage image = msg.image();
  const size_t first =
      image.record("__attach_version1.0_#00000000/__substg1.0_37010102") + RecordStart;
  for (const auto& [path, entry] : image.entries) {
    if (path.find("/__substg1.0_3701") == std::string::npos) continue;
    image.put(image.record(entry) + RecordStart, image.get(first));
    image.put(image.record(entry) + RecordSize, large.size());
  }
  const Inlined inlined(image.bytes);
  EXPECT_EQ(inlined.status, StatusOutOfMemory);
  EXPECT_GE(inlined.count, 1u);
  EXPECT_LE(inlined.count, 3u);
  EXPECT_LT(inlined.body.size(), 4 * image.bytes.size());
}

// A content id that memory fails for is none. It is no text of NULs, which every "cid:" would
// match.
TEST(InlineMsgImages, ReplaceNoOtherReferenceWhicheverAllocationFails) {
  const std::string body = "<img src=\"cid:two@x\"><img src=\"cid:three@x\">";
  MsgBuilder msg;
  msg.attachment(u"a.png", kImage).contentId(u"one@x");
  OpenMsg file(msg.write());
  const auto round = [&](FaultedWork& faulted) {
    MailMessage message;
    PstFilterData data;
    Set(message.body, body);
    const Status status = faulted([&] { return InlineMsgImages(message, data, file.storage()); });
    EXPECT_TRUE(status == StatusOk || (faulted.isReached() && status == StatusOutOfMemory))
        << status.code();
    EXPECT_EQ(Bytes(message.body), body);
  };
  // The storage keeps the container of its small streams.
  EXPECT_GT(FailInTurn(PlainKernelFaultMemory, round, FaultKinds::OneAndFrom), 10u);
}

// The last allocation without which the body keeps its bytes is the body's own new block.
TEST(InlineMsgImages, TellThatTheBodyCouldNotBeWritten) {
  const std::string body = "<img src=\"cid:one@x\">";
  MsgBuilder msg;
  msg.attachment(u"a.png", kImage).contentId(u"one@x");
  OpenMsg file(msg.write());
  Status status;
  const auto round = [&](FaultedWork& faulted) {
    MailMessage message;
    PstFilterData data;
    Set(message.body, body);
    const Status inlined = faulted([&] { return InlineMsgImages(message, data, file.storage()); });
    if (Bytes(message.body) == body) status = inlined;
  };
  FailInTurn(PlainKernelFaultMemory, round, FaultKinds::OneAndFrom);
  EXPECT_EQ(status, StatusOutOfMemory);
}

TEST(InlineMsgImages, EndInAStatusWhicheverAllocationFails) {
  MsgBuilder msg = Html("<img src=\"cid:one@x\">");
  msg.attachment(u"a.png", kImage).contentId(u"one@x");
  OpenMsg file(msg.write());
  bool failed = false;
  const auto round = [&](FaultedWork& faulted) {
    MailMessage message;
    PstFilterData data;
    Set(message.body, "<img src=\"cid:one@x\">");
    const Status status = faulted([&] { return InlineMsgImages(message, data, file.storage()); });
    if (faulted.isReached()) {
      EXPECT_TRUE(status == StatusOk || status == StatusOutOfMemory) << status.code();
      failed |= status == StatusOutOfMemory;
    } else {
      EXPECT_EQ(status, StatusOk);
      EXPECT_EQ(Bytes(message.body), "<img src=\"" + ImageUrl() + "\">");
    }
  };
  FailInTurn(PlainKernelFaultMemory, round, FaultKinds::OneAndFrom);
  EXPECT_TRUE(failed);
}

}  // namespace
}  // namespace tarn::test
