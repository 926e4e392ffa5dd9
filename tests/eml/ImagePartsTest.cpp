// Images of a mail that go into its HTML body.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Directories.h"
#include "Tarnbase/PlainKernel.h"
#include "eml/BodyChoice.h"
#include "eml/ReadMail.h"
#include "support/EmlBuilder.h"
#include "support/TempDirectory.h"

namespace tarn {
namespace {

using namespace std::string_view_literals;
using test::EmlBuilder;
using test::EmlEncoding;
using test::EmlEntity;
using test::ReadMail;

// 15 bytes, and their form in a body.
constexpr std::string_view kImage = "0123456789abcde";
constexpr std::string_view kUrl = "data:image;base64,MDEyMzQ1Njc4OWFiY2Rl";

EmlEntity Html(std::string_view text) { return EmlEntity::Leaf("text/html", text); }
EmlEntity Image(std::string_view type = "image/png; name=a.png") {
  return EmlEntity::Leaf(type, kImage).encoded(EmlEncoding::Base64);
}

EmlEntity Parts(const std::vector<EmlEntity>& parts) {
  EmlEntity body = EmlEntity::Multipart("related", "sep");
  for (const EmlEntity& part : parts) body.part(part);
  return body;
}

ReadMail ReadParts(const std::vector<EmlEntity>& parts) {
  return ReadMail(EmlBuilder::Usual().body(Parts(parts)).build());
}

ReadMail ReadUnclosed(const std::vector<EmlEntity>& parts) {
  return ReadMail(EmlBuilder::Usual().body(Parts(parts).unclosed()).build());
}

// The text of the body.
std::string Text(const ReadMail& read) { return std::string(read.message.body.text()); }

TEST(ImageParts, ContentIdReferenceIsReplaced) {
  const ReadMail read = ReadParts({Html("<img src=\"cid:a@b\">"), Image().contentId("a@b")});
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(Text(read), "<img src=\"" + std::string(kUrl) + "\">");
}

TEST(ImageParts, AllFourImageTypesAreUsed) {
  for (const std::string_view type : {"image/png; name=a.x", "image/gif; name=a.x",
                                      "image/jpeg; name=a.x", "image/x-wmf; name=a.x"}) {
    const ReadMail read = ReadParts({Html("<img src=\"a.x\">"), Image(type)});
    EXPECT_EQ(Text(read), "<img src=\"" + std::string(kUrl) + "\">") << type;
  }
  EXPECT_EQ(Text(ReadParts({Html("<img src=\"a.x\">"), Image("image/svg; name=a.x")})),
            "<img src=\"a.x\">");
}

TEST(ImageParts, NameIsLookedForWithoutAContentIdOrWithOneThatIsNowhere) {
  const std::string replaced = "<img src=\"" + std::string(kUrl) + "\">";
  EXPECT_EQ(Text(ReadParts({Html("<img src=\"a.png\">"), Image()})), replaced);
  EXPECT_EQ(Text(ReadParts({Html("<img src=\"a.png\">"), Image().contentId("x")})), replaced);
}

TEST(ImageParts, ContentIdComesBeforeTheName) {
  const ReadMail read =
      ReadParts({Html("<img src=\"a.png\"><img src=\"cid:x\">"), Image().contentId("x")});
  EXPECT_EQ(Text(read), "<img src=\"a.png\"><img src=\"" + std::string(kUrl) + "\">");
}

TEST(ImageParts, FirstReferenceIsReplacedFromTheNameOnly) {
  // The replacing starts where the name was found: what comes before it is not looked at.
  const ReadMail read = ReadParts({Html("<img src=\"x/a.png\"><img src=\"x/a.png\">"), Image()});
  const std::string url(kUrl);
  EXPECT_EQ(Text(read), "<img src=\"x/" + url + "\"><img src=\"" + url + "\">");
}

TEST(ImageParts, ReferencesMatchInTheirExactCase) {
  EXPECT_EQ(Text(ReadParts({Html("<img src=\"cid:A\">"), Image().contentId("a")})),
            "<img src=\"cid:A\">");
  EXPECT_EQ(Text(ReadParts({Html("<img src=\"A.png\">"), Image()})), "<img src=\"A.png\">");
}

// A reference to another image is none to this one.
TEST(ImageParts, ContentIdOfOneNulIsNone) {
  const EmlEntity page = Html("<img src=\"cid:other\"><img src=\"a.png\">");
  EXPECT_EQ(Text(ReadParts({page, Image().contentId("\0"sv)})),
            "<img src=\"cid:other\"><img src=\"" + std::string(kUrl) + "\">");
  // Two NULs are an id, though what is printed of it is empty.
  EXPECT_EQ(Text(ReadParts({page, Image().contentId("\0\0"sv)})),
            "<img src=\"" + std::string(kUrl) + "\"><img src=\"a.png\">");
}

TEST(ImageParts, EachImageIsLookedForByItsOwnContentId) {
  const ReadMail read = ReadParts({Html("<img src=\"cid:1\"><img src=\"cid:2\">"),
                                   Image().contentId("1"), Image().contentId("2")});
  const std::string url(kUrl);
  EXPECT_EQ(Text(read), "<img src=\"" + url + "\"><img src=\"" + url + "\">");
}

TEST(ImageParts, NameMayComeFromContentLocation) {
  const ReadMail read =
      ReadParts({Html("<img src=\"c.png\">"),
                 Image("image/png").header("Content-Location", "http://x/c.png")});
  EXPECT_EQ(Text(read), "<img src=\"" + std::string(kUrl) + "\">");
}

TEST(ImageParts, ImageWithoutANameIsPassedOver) {
  const ReadMail read =
      ReadUnclosed({Html("<img src=\"cid:a\">"), Image("image/png").contentId("a")});
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(Text(read), "<img src=\"cid:a\">");
}

TEST(ImageParts, EmptyNameMatchesNothing) {
  const ReadMail read = ReadUnclosed({Html("<img src=\"\">"), Image("image/png; name=\"\"")});
  EXPECT_EQ(read.status, StatusDone);
  EXPECT_EQ(Text(read), "<img src=\"\">");
}

TEST(ImageParts, ImageWithAnEmptyNameIsFoundByItsContentId) {
  const ReadMail read =
      ReadUnclosed({Html("<img src=\"cid:a\">"), Image("image/png; name=\"\"").contentId("a")});
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(Text(read), "<img src=\"" + std::string(kUrl) + "\">");
}

TEST(ImageParts, ImageWithoutAPlaceLeavesTheBodyAlone) {
  const ReadMail read = ReadParts({Html("<p>"), Image().contentId("a")});
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(Text(read), "<p>");
}

TEST(ImageParts, ImageBeforeItsHtmlIsNotPutIn) {
  const ReadMail read = ReadParts({Image().contentId("a"), Html("<img src=\"cid:a\">")});
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(Text(read), "<img src=\"cid:a\">");
}

TEST(ImageParts, LastImageWithoutAPlaceIsToldWithoutAClosingDelimiter) {
  EXPECT_EQ(ReadUnclosed({Html("<p>"), Image()}).status, StatusDone);
  EXPECT_EQ(ReadUnclosed({Image()}).status, StatusDone);  // no body
  EXPECT_EQ(
      ReadUnclosed({Html("<img src=\"a.png\">"), Image("image/png; name=zz"), Image()}).status,
      StatusOk);
  EXPECT_EQ(
      ReadUnclosed({Html("<img src=\"a.png\">"), Image(), Image("image/png; name=zz")}).status,
      StatusDone);
}

TEST(ImageParts, OnlyImagesSetTheResult) {
  EXPECT_EQ(ReadUnclosed({Html("<p>"), Image(), Html("<b>")}).status, StatusDone);
  EXPECT_EQ(ReadUnclosed({Html("<p>"), Image(), Image("image/png")}).status, StatusDone);
}

TEST(ImageParts, TwoOfANestedWalkEndsTheOuterOne) {
  const EmlEntity inner =
      EmlEntity::Multipart("related", "in").part(Html("<p>")).part(Image()).unclosed();
  const ReadMail read = ReadParts({inner, Html("late")});
  EXPECT_EQ(read.status, StatusDone);
  EXPECT_EQ(Text(read), "<p>");
}

TEST(ImageParts, NestedWalkThatEndsWellKeepsTheOuterResult) {
  const EmlEntity inner = EmlEntity::Multipart("x", "in").part(EmlEntity::Leaf("text/css", ""));
  EXPECT_EQ(ReadUnclosed({Html("<p>"), Image(), inner}).status, StatusDone);
}

TEST(ImageParts, NestedWalkDoesNotTakeTheOuterResult) {
  // The result of the outer walk is 2 by then. The inner multipart is not closed, and so ends with
  // a result of its own.
  const EmlEntity inner =
      EmlEntity::Multipart("x", "in").part(EmlEntity::Leaf("text/css", "c")).unclosed();
  const ReadMail read = ReadParts({Html("<p>"), Image(), inner, Html("last")});
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(Text(read), "last");
}

TEST(ImageParts, SmallImageFailsTheRead) {
  const ReadMail read = ReadParts(
      {Html("<img src=\"a.png\">"), EmlEntity::Leaf("image/png; name=a.png", "abc"), Html("x")});
  EXPECT_EQ(read.status, StatusFailed);
}

TEST(ImageParts, EmptyImageFailsTheRead) {
  const ReadMail read =
      ReadParts({Html("<img src=\"a.png\">"), EmlEntity::Leaf("image/png; name=a.png", "")});
  EXPECT_EQ(read.status, StatusBadArgument);
}

TEST(ImageParts, ImagesGoIntoAPlainBodyToo) {
  const ReadMail read = ReadParts({EmlEntity::Leaf("text/plain", "\"a.png\""), Image()});
  EXPECT_EQ(Text(read), "\"" + std::string(kUrl) + "\"");
  EXPECT_EQ(read.message.documentKind, DocumentText);
}

TEST(ImageParts, BodyMayNotGrowWithoutBound) {
  // A URL of 80,018 bytes: 840 of them are less than 64 MiB and 16 times the file, 900 more.
  const EmlEntity image = EmlEntity::Leaf("image/png; name=a.png", std::string(60000, 'x'));
  std::string html;
  for (int i = 0; i < 840; ++i) html += "\"a.png\" ";
  const ReadMail within = ReadParts({Html(html), image});
  EXPECT_EQ(within.status, StatusOk);
  EXPECT_EQ(within.message.body.length(), 840 * (80018 + 3) + 1);
  for (int i = 0; i < 60; ++i) html += "\"a.png\" ";
  EXPECT_EQ(ReadParts({Html(html), image}).status, StatusOutOfMemory);
}

TEST(ImageParts, NameThatIsOnlyInPlainTextCostsNothing) {
  // Without a quote after them, 900 occurrences of the name of a large image are no references.
  std::string html;
  for (int i = 0; i < 900; ++i) html += "see image ";
  const ReadMail read =
      ReadParts({Html(html), EmlEntity::Leaf("image/jpeg; name=image", std::string(1000000, 'x'))});
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.body(), html + '\0');
}

// A mail of `count` images of `size` bytes each, no two alike, and what becomes of its body.
void ExpectAllImagesInPlace(int count, size_t size) {
  std::string html;
  std::string expected;
  std::vector<EmlEntity> images;
  for (int i = 0; i < count; ++i) {
    const std::string id = "img" + std::to_string(i) + "@x";
    std::string image = "\x89PNG" + id;
    image.resize(size, '.');
    html += "<img src=\"cid:" + id + "\">";
    expected += "<img src=\"data:image;base64," + test::WriteBase64(image, "") + "\">";
    images.push_back(EmlEntity::Leaf("image/png; name=i" + std::to_string(i) + ".png", image)
                         .contentId(id)
                         .encoded(EmlEncoding::Base64));
  }
  std::vector<EmlEntity> parts = {Html(html)};
  parts.insert(parts.end(), images.begin(), images.end());
  const ReadMail read = ReadParts(parts);
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_TRUE(Text(read) == expected);
}

TEST(ManyImages, FourHundredSmallOnes) { ExpectAllImagesInPlace(400, 1024); }

TEST(ManyImages, FourHundredOfTenKilobytes) { ExpectAllImagesInPlace(400, 10 * 1024); }

TEST(ManyImages, AHundredOfSixtyKilobytes) { ExpectAllImagesInPlace(100, 60 * 1024); }

TEST(ImageFiles, ImageWithoutAContentIdHasTheBareNameAgain) {
  const test::TempDirectory temp;
  PlainKernelSetTempDirectory(temp.wide().c_str());
  const test::MemoryMail mail(
      EmlBuilder::Usual()
          .body(Parts({Html("<img src=\"cid:pic@x\"><img src=\"second.png\">"),
                       EmlEntity::Leaf("image/png; name=first.png", "one").contentId("pic@x"),
                       EmlEntity::Leaf("image/png; name=second.png", "two")}))
          .build());
  EmlMessage message;
  PstFilterData record;
  record.useTempFile = true;
  EXPECT_EQ(ReadEmlMessage(message, mail.handle(), record, nullptr), StatusOk);
  EXPECT_EQ(message.body.text(), "<img src=\"pic@x_first.png\"><img src=\"second.png\">");

  const std::string directory = std::filesystem::path(record.tempDirectory).string();
  std::vector<std::string> files;
  for (uint64_t i = 0; i < record.inlineFiles.length(); ++i) {
    files.emplace_back(record.inlineFiles.data()[i]);
    KernelDeleteFileUtf8(record.inlineFiles.data()[i]);
  }
  EXPECT_TRUE(platform::RemoveEmptyDirectory(record.tempDirectory));
  EXPECT_EQ(files,
            (std::vector<std::string>{directory + "pic@x_first.png", directory + "second.png"}));
}

}  // namespace
}  // namespace tarn
