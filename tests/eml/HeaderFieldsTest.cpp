#include "eml/HeaderFields.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Tarnbase/PlainKernel.h"
#include "eml/ReadMail.h"
#include "support/FaultSweep.h"

namespace tarn {
namespace {

using namespace std::string_view_literals;

// A message whose data is this text.
struct Headers {
  EmlMessage message;
  Status status;

  // The top header block ends at `limit`, or at the end of the text.
  explicit Headers(std::string_view text, size_t limit = std::string_view::npos,
                   test::FaultedWork* faulted = nullptr) {
    message.data = test::Sized(text);
    status = test::RunFaulted(faulted, [&] { return ParseEmlHeaders(message, limit); });
  }
};

TEST(HeaderFields, AllSevenAreTaken) {
  const Headers headers(
      "From: a\r\nTo: b\r\nSubject: c\r\nDate: d\r\nCC: e\r\nBCC: f\r\nImportance: g\r\n");
  EXPECT_EQ(headers.status, StatusOk);
  EXPECT_EQ(headers.message.from.view(), "a\0"sv);
  EXPECT_EQ(headers.message.to.view(), "b\0"sv);
  EXPECT_EQ(headers.message.subject.view(), "c\0"sv);
  EXPECT_EQ(headers.message.date.view(), "d\0"sv);
  EXPECT_EQ(headers.message.cc.view(), "e\0"sv);
  EXPECT_EQ(headers.message.bcc.view(), "f\0"sv);
  EXPECT_EQ(headers.message.importance.view(), "g\0"sv);
  EXPECT_EQ(headers.message.convertToUtf8, false);
}

TEST(HeaderFields, NamesMatchInAnyCase) {
  const Headers headers("fRoM: a\nCc: e\nbcc: f\nIMPORTANCE: g");
  EXPECT_EQ(headers.message.from.text(), "a");
  EXPECT_EQ(headers.message.cc.text(), "e");
  EXPECT_EQ(headers.message.bcc.text(), "f");
  EXPECT_EQ(headers.message.importance.text(), "g");
}

TEST(HeaderFields, AbsentFieldStaysNullAndAnEmptyOneDoesNot) {
  const Headers headers("From:\r\nTo: \r\nDate:");
  EXPECT_EQ(headers.message.from.view(), "\0"sv);
  EXPECT_EQ(headers.message.to.view(), "\0"sv);
  EXPECT_EQ(headers.message.date.view(), "\0"sv);
  EXPECT_EQ(headers.message.subject.data(), nullptr);
  EXPECT_EQ(headers.message.subject.length(), 0u);
}

TEST(HeaderFields, OneBlankAfterTheColonIsSkipped) {
  const Headers headers("From:a\nTo:  b\nSubject:\tc\n");
  EXPECT_EQ(headers.message.from.text(), "a");
  EXPECT_EQ(headers.message.to.text(), " b");
  EXPECT_EQ(headers.message.subject.text(), "\tc");
}

TEST(HeaderFields, NameCountsOnlyAtALineStart) {
  const Headers headers("X-From: a\r\nReply-To: b\rTo: c\r\n");
  EXPECT_EQ(headers.message.from.data(), nullptr);
  EXPECT_EQ(headers.message.to.text(), "c");
}

TEST(HeaderFields, SecondLineOfANameIsIgnored) {
  const Headers headers("To: a\r\nFrom: x\r\nTo: b\r\nFrom: y\r\n");
  EXPECT_EQ(headers.message.to.text(), "a");
  EXPECT_EQ(headers.message.from.text(), "x");
}

TEST(HeaderFields, LimitEndsTheSearchAndTheValue) {
  const Headers headers("To: abcdef\r\n\r\nFrom: x\r\n", 7);
  EXPECT_EQ(headers.message.to.text(), "abc");
  EXPECT_EQ(headers.message.from.data(), nullptr);
}

TEST(HeaderFields, CrLfFoldDropsTheLineEndAndOneBlankOrTab) {
  EXPECT_EQ(Headers("Subject: ab\r\n cd\r\n\tef\r\n").message.subject.text(), "abcdef");
  EXPECT_EQ(Headers("Subject: ab\r\n  cd\r\nX: y\r\n").message.subject.text(), "ab cd");
}

TEST(HeaderFields, LfFoldNeedsABlank) {
  EXPECT_EQ(Headers("Subject: ab\n cd\nX: y\n").message.subject.text(), "abcd");
  EXPECT_EQ(Headers("Subject: ab\n\tcd\nX: y\n").message.subject.text(), "ab");
}

TEST(HeaderFields, LfLfAndABlankContinue) {
  EXPECT_EQ(Headers("Subject: ab\n\n cd\nX: y\n").message.subject.text(), "abcd");
}

TEST(HeaderFields, EmptyContinuationEndsTheField) {
  EXPECT_EQ(Headers("Subject: ab\r\n \r\n cd\r\nX: y\r\n").message.subject.text(), "ab");
}

TEST(HeaderFields, ContinuationNeedsMoreThanThreeBytesBeforeTheLimit) {
  // The line end is at 10: 10 + 3 is not below 13, but is below 14.
  const std::string_view text = "Subject: a\r\n bc";
  EXPECT_EQ(Headers(text, 13).message.subject.text(), "a");
  EXPECT_EQ(Headers(text, 14).message.subject.text(), "ab");
  // A lone LF needs as many, though fewer bytes would do.
  EXPECT_EQ(Headers("Subject: a\n b", 13).message.subject.text(), "a");
  EXPECT_EQ(Headers("Subject: a\n b\n", 14).message.subject.text(), "ab");
}

TEST(HeaderFields, NameThatEndsAtTheLimitHasAnEmptyValue) {
  // Nothing is readable after the limit.
  EmlMessage message;
  message.data = test::Sized("To:");
  EXPECT_EQ(ParseEmlHeaders(message, 3), StatusOk);
  EXPECT_EQ(message.to.view(), "\0"sv);
}

TEST(HeaderFields, BlankAtTheLimitIsNotSkipped) {
  const Headers headers("To: x\r\n", 3);
  EXPECT_EQ(headers.status, StatusOk);
  EXPECT_EQ(headers.message.to.view(), "\0"sv);
}

TEST(HeaderFields, NulOfALineIsLostToItsContinuation) {
  EXPECT_EQ(Headers("Subject: a\0\r\n b\r\nX: y\r\n"sv).message.subject.view(), "ab\0"sv);
  EXPECT_EQ(Headers("Subject: a\0\r\nX: y\r\n"sv).message.subject.view(), "a\0"sv);
}

TEST(HeaderFields, WordsAreDecodedAfterUnfolding) {
  const Headers headers("From: =?utf-8?Q?J=C3=\r\n B6rg?= <j@x>\r\nTo: =?koi8-r?Q?x?= long\r\n");
  EXPECT_EQ(headers.message.from.text(), "J\xC3\xB6rg <j@x>");
  EXPECT_EQ(headers.message.to.text(), "=?koi8-r?Q?x?= long");
  EXPECT_EQ(headers.message.convertToUtf8, true);
}

TEST(HeaderFields, FieldOfManyShortLinesIsJoined) {
  std::string text = "Subject: ";
  std::string expected;
  for (int i = 0; i < 20000; ++i) {
    text += "ab\r\n ";
    expected += "ab";
  }
  const Headers headers(text + "end\r\n");
  EXPECT_EQ(headers.message.subject.text(), expected + "end");
}

TEST(HeaderFields, WithoutMemoryTheAppendFailsAndAWordDoesNot) {
  const std::string_view text = "From: a\r\nSubject: =?utf-8?Q?abc?=\r\n";
  bool sawFailure = false;
  bool sawUndecoded = false;
  const auto round = [&](test::FaultedWork& faulted) {
    const Headers headers(text, text.size(), &faulted);
    if (!headers.status.ok()) {
      EXPECT_EQ(headers.status, StatusOutOfMemory);
      EXPECT_TRUE(faulted.isReached());
      sawFailure = true;
    } else if (headers.message.subject.text() != "abc") {
      EXPECT_EQ(headers.message.subject.text(), "=?utf-8?Q?abc?=");
      EXPECT_EQ(headers.message.convertToUtf8, false);
      EXPECT_TRUE(faulted.isReached());
      sawUndecoded = true;
    }
  };
  test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom);
  EXPECT_TRUE(sawFailure);
  EXPECT_TRUE(sawUndecoded);
}

}  // namespace
}  // namespace tarn
