// What a read holds in memory at most: the file, and what of its content somebody looks at.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "eml/ReadMail.h"
#include "support/EmlBuilder.h"
#include "support/PeakMemory.h"

namespace tarn {
namespace {

using test::EmlBuilder;
using test::EmlEncoding;
using test::EmlEntity;
using test::PeakOf;
using test::ReadMail;

constexpr size_t kContent = 3000000;
constexpr uint64_t kLittle = 100000;  // all but the file and the content in question

std::string RandomBytes(size_t size) {
  std::mt19937 random(20261122);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

std::string MailOf(const std::vector<EmlEntity>& parts) {
  EmlEntity body = EmlEntity::Multipart("mixed", "sep");
  for (const EmlEntity& part : parts) body.part(part);
  return EmlBuilder::Usual().body(body).build();
}

// The peak of a read that succeeds, less the file.
uint64_t PeakBesideTheFile(const std::string& text, const AttachmentRequest* request = nullptr,
                           Status expected = StatusOk) {
  const test::MemoryMail mail(text);
  const uint64_t peak = PeakOf([&] {
    EmlMessage message;
    PstFilterData filterData;
    EXPECT_EQ(ReadEmlMessage(message, mail.handle(), filterData, request), expected);
  });
  EXPECT_GE(peak, text.size());
  return peak - text.size();
}

const EmlEntity& Html() {
  static const EmlEntity html = EmlEntity::Leaf("text/html; charset=utf-8", "<p>Hi</p>");
  return html;
}

EmlEntity Large(std::string_view type, EmlEncoding encoding = EmlEncoding::Base64) {
  return EmlEntity::Leaf(type, RandomBytes(kContent)).encoded(encoding);
}

TEST(EmlMemory, AContentThatNothingLooksAtIsNotDecoded) {
  for (const char* const type : {"application/pdf", "application/x-any", "text/css", "text/plain",
                                 "text/plain; charset=utf-8", "image/png; name=nowhere.png"}) {
    const std::string text = MailOf({Html(), Large(type).disposition("attachment")});
    EXPECT_LT(PeakBesideTheFile(text), kLittle) << type;
  }
}

// Once a part has decided that all becomes UTF-8, no later plain part is asked.
TEST(EmlMemory, APlainTextAfterTheHtmlIsDecodedOnlyForTheCharsetsSake) {
  const EmlEntity plain = Large("text/plain; charset=iso-8859-1");
  EXPECT_GT(PeakBesideTheFile(MailOf({Html(), plain})), kContent);
  const EmlEntity latin = EmlEntity::Leaf("text/html; charset=iso-8859-1", "<p>\xE4</p>");
  const std::string text = MailOf({latin, plain});
  EXPECT_LT(PeakBesideTheFile(text), kLittle);
  EXPECT_EQ(ReadMail(text).message.body.text(), "<p>\xC3\xA4</p>");
}

TEST(EmlMemory, APlainTextAfterTheHtmlStillDecidesOnTheCharset) {
  EmlEntity body = EmlEntity::Multipart("mixed", "sep");
  body.part(Html());
  body.part(EmlEntity::Leaf("text/plain; charset=iso-8859-1", "x").disposition("attachment"));
  body.part(EmlEntity::Leaf("text/html; charset=windows-1252", "\x80"));
  const ReadMail read(EmlBuilder::Usual().field("Subject", "\xE4").body(body).build());
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.message.subject.text(), "\xC3\xA4");
  EXPECT_EQ(read.message.body.text(), "\xE2\x82\xAC");
}

TEST(EmlMemory, AnAttachmentThatIsNotAskedForIsNotDecoded) {
  test::AttachmentRecorder recorder;
  recorder.request.index = 1;
  const std::string text =
      MailOf({Html(), EmlEntity::Leaf("a/b", "first").disposition("attachment"),
              Large("a/b").disposition("attachment"), Large("image/png").disposition("inline")});
  EXPECT_LT(PeakBesideTheFile(text, &recorder.request), kLittle);
  ASSERT_EQ(recorder.attachments.size(), 1u);
  EXPECT_EQ(recorder.attachments[0].bytes, "first");
}

// Takes the block away, as a host that wants the attachment in memory does.
struct Taker {
  SizedBytes taken;
  uint64_t capacity = 0;

  static Status Take(void* user, TrackedBuffer<char>* data, const char16_t*, PropertyList*) {
    auto& self = *static_cast<Taker*>(user);
    self.capacity = data->capacity();
    const uint64_t length = data->length();
    self.taken.adopt(data->take(), length);
    return StatusDone;
  }
};

TEST(EmlMemory, AnAttachmentIsInMemoryOnce) {
  const std::string expected = RandomBytes(kContent);
  for (const EmlEncoding encoding :
       {EmlEncoding::None, EmlEncoding::Base64, EmlEncoding::QuotedPrintable}) {
    for (const char* const type : {"application/pdf", "a/b", "image/jpeg; name=x"}) {
      Taker taker;
      const AttachmentRequest request = {1, false, &Taker::Take, &taker};
      const std::string text = MailOf({Html(), Large(type, encoding).disposition("attachment")});
      EXPECT_LT(PeakBesideTheFile(text, &request, StatusDone), kContent + kLittle);
      EXPECT_EQ(taker.capacity, kContent);
      EXPECT_TRUE(taker.taken.view() == expected);
    }
  }
}

// Every second character is a line end, so that a third of the content is the text.
TEST(EmlMemory, ABlockIsAsLargeAsItsTextHoweverTheContentIsWritten) {
  std::string content;
  for (size_t i = 0; i < kContent; ++i) content += "Q\n";
  EmlEntity part = EmlEntity::Leaf("a/b", content).header("Content-Transfer-Encoding", "base64");
  Taker taker;
  const AttachmentRequest request = {1, false, &Taker::Take, &taker};
  EXPECT_LT(
      PeakBesideTheFile(MailOf({Html(), part.disposition("attachment")}), &request, StatusDone),
      kContent / 4 * 3 + kLittle);
  EXPECT_EQ(taker.taken.length(), kContent / 4 * 3);
}

// What a callback keeps and the document needs is decoded once more.
TEST(EmlMemory, ACallbackThatKeepsABlockDoesNotTakeItFromTheDocument) {
  SizedBytes taken;
  const auto keep = [](void* user, TrackedBuffer<char>* data, const char16_t*,
                       PropertyList*) -> Status {
    auto& kept = *static_cast<SizedBytes*>(user);
    const uint64_t length = data->length();
    kept.adopt(data->take(), length);
    return StatusOk;
  };
  const AttachmentRequest request = {kAllAttachments, false, keep, &taken};
  for (const char* const type : {"text/html", "text/plain", "a/b"}) {
    const EmlEntity part = EmlEntity::Leaf(type, "text").disposition("attachment");
    const ReadMail read(MailOf({part}), &request);
    EXPECT_EQ(read.status, StatusOk);
    EXPECT_EQ(read.message.body.text(), "text") << type;
    EXPECT_EQ(taken.view(), "text");
  }
}

}  // namespace
}  // namespace tarn
