#include "Common/InlineImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <vector>

#include "Common/InlineImagesFixture.h"
#include "support/FaultSweep.h"

namespace tarn {
namespace {

using test::Bytes;
using test::FileRoute;
using test::InlineImagesTest;
using test::kImage;

constexpr std::string_view kImageUrl = "data:image;base64,iVBORyAxNSBieXRlcy4K";

class DataRoute : public InlineImagesTest {
 protected:
  DataRoute() : InlineImagesTest(false) {}
};

TEST_F(DataRoute, TheSourceBecomesADataUrl) {
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(body_.view(), "<img src=\"" + std::string(kImageUrl) + "\">");
  EXPECT_EQ(replacements_, 1u);
}

TEST_F(DataRoute, TheCountMayBeLeftOut) {
  EXPECT_EQ(RewriteInlineImage(context_, kImage), StatusOk);
  EXPECT_EQ(body_.view(), "<img src=\"" + std::string(kImageUrl) + "\">");
}

TEST_F(DataRoute, ImageDataKeepsItsReferenceAndTheNextIsReplaced) {
  setBody("<v:imagedata src=\"cid:a.png\"/><img src=\"cid:a.png\">");
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(body_.view(),
            "<v:imagedata src=\"cid:a.png\"/><img src=\"" + std::string(kImageUrl) + "\">");
  EXPECT_EQ(replacements_, 1u);
}

TEST_F(DataRoute, TwoTagsWithTheSameReferenceAreBothReplaced) {
  setBody(test::Raw("<img src=\"cid:a.png\"><img src=\"cid:a.png\">\0"));
  EXPECT_EQ(rewrite(kImage), StatusOk);
  const std::string url(kImageUrl);
  EXPECT_EQ(body_.view(),
            "<img src=\"" + url + "\"><img src=\"" + url + "\">" + std::string(1, '\0'));
  EXPECT_EQ(replacements_, 2u);
}

TEST_F(DataRoute, ASingleReferenceWithoutMemoryStaysAsItIs) {
  // 1 the data: URL, 2 the body.
  PlainKernelFailAt(PlainKernelFaultMemory, 2);
  EXPECT_EQ(rewrite(kImage), StatusOutOfMemory);
  EXPECT_EQ(body_.view(), "<img src=\"cid:a.png\">");
  EXPECT_EQ(replacements_, 0u);
}

TEST_F(DataRoute, ABodyThatWouldOutgrowItsLimitStaysAsItIs) {
  const uint64_t grown = body_.length() - 9 + kImageUrl.size();  // "cid:a.png" goes
  context_.bodyLimit = grown - 1;
  EXPECT_EQ(rewrite(kImage), StatusOutOfMemory);
  EXPECT_EQ(body_.view(), "<img src=\"cid:a.png\">");
  EXPECT_EQ(replacements_, 0u);
  context_.bodyLimit = grown;
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(body_.length(), grown);
}

TEST(BodyLimit, Is64MebibytesAndSixteenTimesTheFile) {
  EXPECT_EQ(BodyLimit(0), 67108864u);
  EXPECT_EQ(BodyLimit(1000), 67124864u);
  EXPECT_EQ(BodyLimit(UINT64_MAX), UINT64_MAX);
}

TEST_F(DataRoute, AReferenceWithoutAClosingQuoteEndsTheLoopWith1) {
  setBody("<img src=cid:a.png>");
  const char* const block = body_.data();
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(body_.view(), "<img src=cid:a.png>");
  EXPECT_EQ(body_.data(), block);
  EXPECT_EQ(replacements_, 0u);
}

TEST_F(DataRoute, AFileNameInPlainTextIsReplacedFromTheNearestEarlierQuote) {
  context_.needle = context_.name;
  setBody("<p class=\"c\">see a.png</p><p id=\"d\">");
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(body_.view(), "<p class=\"c\"" + std::string(kImageUrl) + "\"d\">");
  setBody("<p class=\"c\">see a.png</p><p id=\"d\">");
  context_.searchOffset = 16;
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(body_.view(), "<p class=\"c\">see" + std::string(kImageUrl) + "\"d\">");
}

TEST_F(DataRoute, ANullOrEmptyNeedleMatchesNothing) {
  for (const char* const needle : {static_cast<const char*>(nullptr), ""}) {
    context_.needle = needle;
    EXPECT_EQ(rewrite(kImage), StatusOk);
    EXPECT_EQ(replacements_, 0u);
    EXPECT_EQ(body_.view(), "<img src=\"cid:a.png\">");
  }
}

TEST_F(DataRoute, ThreeBytesGive0FifteenSucceedSixteenGive0) {
  EXPECT_EQ(rewrite("GIF"), StatusFailed);
  EXPECT_EQ(replacements_, 0u);
  EXPECT_EQ(body_.view(), "<img src=\"cid:a.png\">");
  EXPECT_EQ(rewrite(std::string(16, 'x')), StatusFailed);
  EXPECT_EQ(body_.view(), "<img src=\"cid:a.png\">");
  EXPECT_EQ(rewrite(std::string(15, 'x')), StatusOk);
  EXPECT_EQ(body_.view(), "<img src=\"data:image;base64,eHh4eHh4eHh4eHh4eHh4\">");
}

TEST_F(DataRoute, TheSmallSizesThatDoNotFit) {
  const std::vector<uint64_t> tooSmall = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11,
                                          12, 13, 14, 16, 17, 19, 20, 22, 23, 25, 26,
                                          28, 29, 31, 32, 34, 37, 40, 43, 46, 49, 52};
  for (uint64_t size = 1; size <= 200; ++size) {
    const bool fits = std::find(tooSmall.begin(), tooSmall.end(), size) == tooSmall.end();
    setBody("<img src=\"cid:a.png\">");
    EXPECT_EQ(rewrite(std::string(size, 'x')), fits ? StatusOk : StatusFailed) << size;
    EXPECT_EQ(replacements_, fits ? 1u : 0u) << size;
    const uint64_t characters = (size + 2) / 3 * 4;
    EXPECT_EQ(body_.length(), fits ? 10 + 18 + characters + 2 : 21) << size;
  }
}

TEST_F(DataRoute, AnImageWithoutBytesGivesMinus13) {
  EXPECT_EQ(rewrite(""), StatusBadArgument);
  EXPECT_EQ(RewriteInlineImage(context_, {}, &replacements_), StatusBadArgument);
  EXPECT_EQ(replacements_, 0u);
  // The block for the URL comes first, even for no image.
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(rewrite(""), StatusOutOfMemory);
}

TEST_F(DataRoute, SizesBeyondAllMemoryGiveMinus1) {
  EXPECT_EQ(RewriteInlineImage(context_, {kImage.data(), size_t{1} << 62}, &replacements_),
            StatusOutOfMemory);
  EXPECT_EQ(RewriteInlineImage(context_, {kImage.data(), SIZE_MAX}, &replacements_),
            StatusOutOfMemory);
  EXPECT_EQ(body_.view(), "<img src=\"cid:a.png\">");
}

TEST_F(DataRoute, WithoutMemoryTheBodyIsAsItWas) {
  // The round without a failure changes the body.
  const auto round = [this](test::FaultedWork& faulted) {
    const Status rewritten = faulted([this] { return rewrite(kImage); });
    EXPECT_EQ(rewritten, faulted.isReached() ? StatusOutOfMemory : StatusOk);
    if (!faulted.isReached()) return;
    EXPECT_EQ(replacements_, 0u);
    EXPECT_EQ(body_.view(), "<img src=\"cid:a.png\">");
  };
  EXPECT_EQ(test::FailInTurn(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 2u);
}

TEST_F(DataRoute, TenThousandReferencesInALargeBody) {
  std::string body;
  for (int i = 0; i < 10000; ++i) {
    body += "<img src=\"cid:a.png\">" + std::string(480, 'x');
  }
  setBody(body);
  const std::string image(5000, 'x');
  const std::clock_t start = std::clock();
  EXPECT_EQ(rewrite(image), StatusOk);
  EXPECT_LT(std::clock() - start, 5 * CLOCKS_PER_SEC);
  EXPECT_EQ(replacements_, 10000u);
  // A value of 9 bytes gives way to the 18 of the prefix and the 6668 of the image.
  EXPECT_EQ(body_.length(), body.size() + 10000 * (6686 - 9));
}

TEST_F(FileRoute, TheSourceBecomesTheNameOfAFileWithTheImage) {
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(body_.view(), "<img src=\"_a.png\">");
  EXPECT_EQ(replacements_, 1u);
  EXPECT_EQ(files(), "_a.png");
  EXPECT_EQ(content("_a.png"), kImage);
  ASSERT_EQ(record_.inlineFiles.length(), 1u);
  const std::string directory = std::filesystem::path(record_.tempDirectory).string();
  EXPECT_EQ(std::string(record_.inlineFiles.data()[0]), directory + "_a.png");
  EXPECT_EQ(record_.inlineFiles.capacity(), 6u);
}

TEST_F(FileRoute, SmallAndEmptyImagesAreFilesLikeAnyOther) {
  EXPECT_EQ(rewrite("GIF"), StatusOk);
  EXPECT_EQ(content("_a.png"), "GIF");
  EXPECT_EQ(rewrite(""), StatusOk);
  EXPECT_EQ(content("_a.png"), "");
  EXPECT_EQ(RewriteInlineImage(context_, {}, &replacements_), StatusOk);
  EXPECT_EQ(content("_a.png"), "");
}

TEST_F(FileRoute, AnImageWithoutReferencesIsAFileAllTheSame) {
  setBody("<b>none</b>");
  const char* const block = body_.data();
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(replacements_, 0u);
  EXPECT_EQ(body_.data(), block);
  EXPECT_EQ(files(), "_a.png");
  EXPECT_EQ(record_.inlineFiles.length(), 1u);
}

TEST_F(FileRoute, ImagesShareTheDirectory) {
  setBody("<img src=\"cid:a.png\"><img src=\"cid:b.png\">");
  EXPECT_EQ(rewrite(kImage), StatusOk);
  context_.contentId = "b.png@7";
  context_.name = "b.png";
  context_.needle = "cid:b.png";
  EXPECT_EQ(rewrite("bbb"), StatusOk);
  EXPECT_EQ(body_.view(), "<img src=\"_a.png\"><img src=\"7_b.png\">");
  EXPECT_EQ(files(), "7_b.png _a.png");
  EXPECT_EQ(record_.inlineFiles.length(), 2u);
}

TEST_F(FileRoute, TheSameNameOverwritesTheFirstFile) {
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(rewrite("second"), StatusOk);
  EXPECT_EQ(files(), "_a.png");
  EXPECT_EQ(content("_a.png"), "second");
  EXPECT_EQ(record_.inlineFiles.length(), 2u);
}

TEST_F(FileRoute, LineEndsInTheNameBecomeUnderscores) {
  context_.contentId = nullptr;
  context_.name = "\ra\r\nb.png\n";
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(body_.view(), "<img src=\"_a__b.png_\">");
  EXPECT_EQ(files(), "_a__b.png_");
}

TEST_F(FileRoute, TheReplacementFollowsTheLastBackslash) {
  const std::u16string directory = (temp_.path() / "own").u16string() + u"\\";
  directory.copy(record_.tempDirectory, directory.size());
  std::filesystem::create_directories(temp_.path() / "own" / "x" / "y");
  context_.contentId = nullptr;
  context_.name = "x\\y/a\rb\n.png";
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(body_.view(), "<img src=\"y/a_b_.png\">");
  KernelDeleteFileUtf8(record_.inlineFiles.data()[0]);
  std::filesystem::remove_all(temp_.path() / "own" / "x");
}

TEST_F(FileRoute, ANameThatDoesNotFitGivesMinus290) {
  const std::string name(264, 'n');
  context_.name = name.c_str();
  EXPECT_EQ(rewrite(kImage), StatusPathOverflow);
  EXPECT_EQ(files(), "");
  EXPECT_EQ(record_.inlineFiles.length(), 0u);
  EXPECT_EQ(body_.view(), "<img src=\"cid:a.png\">");
}

TEST_F(FileRoute, ANameThatIsNoUtf8GivesMinus1488) {
  context_.contentId = nullptr;
  context_.name = "caf\xE9.png";
  EXPECT_EQ(rewrite(kImage), StatusPathFromUtf8Failed);
  EXPECT_EQ(files(), "");
  EXPECT_EQ(record_.inlineFiles.length(), 0u);
}

TEST_F(FileRoute, TextFailures) {
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(rewrite(kImage), StatusPathToUtf8Failed);
  PlainKernelFailAt(PlainKernelFaultText, 2);
  EXPECT_EQ(rewrite(kImage), StatusPathFromUtf8Failed);
  EXPECT_EQ(files(), "");
  EXPECT_EQ(replacements_, 0u);
}

TEST_F(FileRoute, AFileThatCannotBeMadeGivesMinus1490) {
  // The first is the directory's name, the second the file.
  PlainKernelFailAt(PlainKernelFaultOpen, 1);
  EXPECT_EQ(rewrite(kImage), StatusCreateFailed);
  EXPECT_EQ(record_.tempDirectory[0], u'\0');
  PlainKernelFailAt(PlainKernelFaultOpen, 2);
  EXPECT_EQ(rewrite(kImage), StatusCreateFailed);
  EXPECT_NE(record_.tempDirectory[0], u'\0');
  EXPECT_EQ(files(), "");
  context_.name = "../out.png";
  EXPECT_EQ(rewrite(kImage), StatusCreateFailed);
  EXPECT_EQ(record_.inlineFiles.length(), 0u);
  EXPECT_EQ(body_.view(), "<img src=\"cid:a.png\">");
}

TEST_F(FileRoute, AFileThatCannotBeWrittenIsDeletedAndGivesMinus5) {
  PlainKernelFailAt(PlainKernelFaultWrite, 1);
  EXPECT_EQ(rewrite(kImage), StatusWriteFailed);
  EXPECT_EQ(files(), "");
  EXPECT_EQ(record_.inlineFiles.length(), 0u);
  EXPECT_EQ(body_.view(), "<img src=\"cid:a.png\">");
  EXPECT_EQ(replacements_, 0u);
}

TEST_F(FileRoute, WithoutMemory) {
  // 1 the wide path, 2 the copy of the path, 3 the list of paths, 4 the body.
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(rewrite(kImage), StatusOutOfMemory);
  EXPECT_EQ(files(), "");
  PlainKernelFailAt(PlainKernelFaultMemory, 2);
  EXPECT_EQ(rewrite(kImage), StatusOutOfMemory);
  EXPECT_EQ(files(), "");
  EXPECT_EQ(record_.inlineFiles.length(), 0u);
  EXPECT_EQ(body_.view(), "<img src=\"cid:a.png\">");

  // The path stays unrecorded, and the pass goes on.
  PlainKernelFailAt(PlainKernelFaultMemory, 3);
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(files(), "_a.png");
  EXPECT_EQ(record_.inlineFiles.length(), 0u);
  EXPECT_EQ(body_.view(), "<img src=\"_a.png\">");

  // Two references take a new block.
  setBody("<img src=\"cid:a.png\"><img src=\"cid:a.png\">");
  PlainKernelFailAt(PlainKernelFaultMemory, 4);
  EXPECT_EQ(rewrite(kImage), StatusOutOfMemory);
  EXPECT_EQ(files(), "_a.png");
  EXPECT_EQ(record_.inlineFiles.length(), 1u);
  EXPECT_EQ(body_.view(), "<img src=\"cid:a.png\"><img src=\"cid:a.png\">");
  EXPECT_EQ(replacements_, 0u);

  PlainKernelFailAt(PlainKernelFaultMemory, 4);
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(record_.inlineFiles.length(), 2u);
  PlainKernelFailAt(PlainKernelFaultMemory, 0);
}

// A list that the host refuses: the path stays unrecorded, too.
TEST_F(FileRoute, ARefusedListOfPaths) {
  record_.inlineFiles.setThreshold(0);
  PlainKernelFailAt(PlainKernelFaultBudget, 1);
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(record_.inlineFiles.data(), nullptr);
  EXPECT_EQ(record_.inlineFiles.length(), 0u);
  EXPECT_EQ(body_.view(), "<img src=\"_a.png\">");
  EXPECT_EQ(files(), "_a.png");
  const std::string path = std::filesystem::path(record_.tempDirectory).string() + "_a.png";
  KernelDeleteFileUtf8(path.c_str());
}

}  // namespace
}  // namespace tarn
