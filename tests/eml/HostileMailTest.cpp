// Mails made to be dear or deep, at sizes that show the result; bench/EmlBench.cpp has the large
// ones.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Common/SearchBudget.h"
#include "eml/BodyChoice.h"
#include "eml/ReadMail.h"
#include "support/StackLimit.h"

namespace tarn {
namespace {

using namespace std::string_view_literals;
using test::MakeText;
using test::ReadMail;
using test::Repeat;

constexpr std::string_view kFields = "From: a\r\nTo: b\r\nDate: c\r\n";

// `levels` multiparts in one another, each with a boundary of its own, and a text in the innermost.
std::string Nested(int levels, std::string_view lineEnd = "\r\n") {
  std::string mail(kFields);
  for (int i = 0; i < levels; ++i) {
    const std::string boundary = "b" + std::to_string(i) + "e";
    mail += "Content-Type: multipart/mixed; boundary=";
    mail += boundary;
    mail += lineEnd;
    mail += lineEnd;
    mail += lineEnd;
    mail += "--";
    mail += boundary;
    mail += lineEnd;
  }
  mail += "Content-Type: text/html";
  mail += lineEnd;
  mail += lineEnd;
  mail += "deep";
  for (int i = levels; i-- > 0;) {
    mail += lineEnd;
    mail += "--b";
    mail += std::to_string(i);
    mail += "e--";
  }
  return mail;
}

std::string Multipart(std::string_view rest) {
  std::string mail(kFields);
  mail += "Content-Type: multipart/mixed; boundary=\"b\"\r\n\r\n";
  mail += rest;
  return mail;
}

TEST(DeepMail, FiveHundredLevelsAreWalked) {
  const ReadMail read(Nested(500));
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "deep\0"sv);
}

TEST(DeepMail, OneLevelMoreFails) {
  const ReadMail read(Nested(501));
  EXPECT_EQ(read.status, StatusOutOfMemory);
  EXPECT_EQ(read.message.body.data(), nullptr);
}

TEST(DeepMail, LevelWithoutAPartCountsToo) {
  // A level of which there is nothing but its header.
  std::string mail = Nested(500);
  mail.resize(mail.find("Content-Type: text/html"));
  EXPECT_EQ(ReadMail(mail).status, StatusOk);
  EXPECT_EQ(ReadMail(mail + "X: boundary=q\r\n\r\n").status, StatusOutOfMemory);
}

TEST(DeepMail, ThousandsOfLevelsFail) {
  EXPECT_EQ(ReadMail(Nested(3000)).status, StatusOutOfMemory);
  EXPECT_EQ(ReadMail(Nested(3000, "\n")).status, StatusOutOfMemory);
}

TEST(DeepMail, NestingCostsNoStack) {
  Status status = StatusFailed;
  test::RunOnStackOf(256 * 1024, [&status] { status = ReadMail(Nested(500)).status; });
  EXPECT_EQ(status, StatusOk);
}

TEST(WideMail, ManyDelimitersArePassed) {
  const ReadMail read(Multipart(Repeat("\r\n--b\r\n\r\nx", 20000)));
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "x\0"sv);
  EXPECT_EQ(ReadMail(Multipart(Repeat("\n--b", 20000))).body(), "\0"sv);
}

TEST(WideMail, EmptyBoundaryParts) {
  std::string mail(kFields);
  mail += "X: boundary=\r\n\r\n";
  const ReadMail read(mail + Repeat("\r\n--x\r\n\r\ny", 1000));
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "y\0"sv);
}

TEST(WideMail, ManyNestedMultiparts) {
  const ReadMail read(
      Multipart(Repeat("\r\n--b\r\nX: boundary=c\r\n\r\n\r\n--c\r\n\r\nz", 5000) + "\r\n--b--"));
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "z\0"sv);
}

TEST(LongHeaderLine, IsReadWhateverItIsFullOf) {
  for (const std::string_view piece : {"charset="sv, "xcharset="sv, "\""sv, ";"sv, "=?"sv,
                                       "name="sv, "boundar"sv, "Content-Type:"sv, " "sv, "\0"sv}) {
    std::string mail(kFields);
    mail += "Content-Type: text/html; q=";
    mail += Repeat(piece, 20000) + "\r\n\r\nbody";
    const ReadMail read(mail);
    EXPECT_EQ(read.status, StatusOk) << piece;
    EXPECT_EQ(read.body(), "body\0"sv) << piece;
  }
}

TEST(LongHeaderLine, SubjectOfWordStartsStays) {
  std::string mail(kFields);
  const std::string subject = Repeat("=?", 20000);
  mail += "Subject: " + subject + "\r\n\r\nbody";
  EXPECT_EQ(ReadMail(mail).message.subject.text(), subject);
}

TEST(LongHeaderLine, BoundaryOfAMegabyte) {
  const std::string boundary = Repeat("ab", 50000);
  std::string mail(kFields);
  mail += "X: boundary=\"" + boundary + "\"\r\n\r\n";
  for (int i = 0; i < 3; ++i) mail += "\r\n--" + boundary + "\r\n\r\nx";
  const ReadMail read(mail);
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), "x\0"sv);
}

TEST(SearchBudget, IsSpentByItsBytes) {
  SearchBudget budget(10);
  budget.spend(9);
  EXPECT_FALSE(budget.isSpent());
  budget.spend(1);
  EXPECT_TRUE(budget.isSpent());
  budget.spend(UINT64_MAX);
  EXPECT_TRUE(budget.isSpent());
}

TEST(SearchBudget, OfAHugeFileDoesNotWrap) {
  SearchBudget budget = SearchBudget::ForImages(UINT64_MAX / 2);
  budget.spend(UINT64_MAX - 1);
  EXPECT_FALSE(budget.isSpent());
}

TEST(SearchBudget, ImageThatSpendsItFails) {
  EmlMessage message;
  message.body = MakeText("a body of some length");
  PstFilterData filterData;
  InlineImageContext context;
  context.filterData = &filterData;
  context.body = &message.body;
  EmlPart part;
  part.contentClass = ContentPng;
  part.name = MakeText("q");

  SearchBudget budget(2 * message.body.length() + 1);
  const ImagePlacing images = {context, budget};
  bool isLost = false;
  EXPECT_EQ(UsePart(part, message, images, isLost), StatusOk);
  EXPECT_TRUE(isLost);
  EXPECT_EQ(UsePart(part, message, images, isLost), StatusOk);
  EXPECT_EQ(UsePart(part, message, images, isLost), StatusOutOfMemory);
}

TEST(SearchBudget, LevelsThatSearchTheWholeFileFail) {
  // 400 levels that find no second delimiter in a megabyte: 400 MB, and 332 are allowed.
  std::string mail(kFields);
  for (int i = 0; i < 400; ++i) {
    const std::string boundary = "b" + std::to_string(i) + "e";
    mail += "X: boundary=" + boundary + "\r\n\r\n\r\n--" + boundary + "\r\n";
  }
  mail += "\r\n" + Repeat("x", 1000000);
  EXPECT_EQ(ReadMail(mail).status, StatusOutOfMemory);
}

}  // namespace
}  // namespace tarn
