// InlineImagesFixture.h - an image of a body and the record that it goes to.
#ifndef TARN_TESTS_COMMON_INLINEIMAGESFIXTURE_H
#define TARN_TESTS_COMMON_INLINEIMAGESFIXTURE_H

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "Common/InlineImages.h"
#include "KernelUse.h"
#include "Platform/Directories.h"
#include "support/TempDirectory.h"

namespace tarn::test {

// Fifteen bytes, the smallest image that fits the data route.
inline constexpr std::string_view kImage = "\x89PNG 15 bytes.\n";
static_assert(kImage.size() == 15);

class InlineImagesTest : public ::testing::Test {
 protected:
  explicit InlineImagesTest(bool useTempFile) {
    record_.useTempFile = useTempFile;
    context_.filterData = &record_;
    context_.body = &body_;
    context_.contentId = "a.png";
    context_.name = "a.png";
    context_.needle = "cid:a.png";
  }

  Status rewrite(std::string_view image) {
    return RewriteInlineImage(context_, image, &replacements_);
  }

  void setBody(std::string_view bytes) { body_ = Bytes(bytes); }

  PstFilterData record_;
  SizedBytes body_ = Bytes("<img src=\"cid:a.png\">");
  InlineImageContext context_;
  uint32_t replacements_ = 99;
};

// Images become files of a directory of the record's own.
class FileRoute : public InlineImagesTest {
 public:
  FileRoute() : InlineImagesTest(true) { PlainKernelSetTempDirectory(temp_.wide().c_str()); }

  // What the record's owner does at its end.
  ~FileRoute() override {
    for (uint64_t i = 0; i < record_.inlineFiles.length(); ++i) {
      KernelDeleteFileUtf8(record_.inlineFiles.data()[i]);
    }
    if (record_.tempDirectory[0] != u'\0') {
      EXPECT_TRUE(platform::RemoveEmptyDirectory(record_.tempDirectory));
    }
  }

 protected:
  // The image directory's content, its files' names joined by blanks.
  std::string files() const {
    std::string names;
    const std::string listing = temp_.listing() + " ";
    for (size_t at = 0, end = 0; (end = listing.find(' ', at)) != std::string::npos; at = end + 1) {
      const std::string entry = listing.substr(at, end - at);
      const size_t slash = entry.find('/');
      if (slash != std::string::npos) names += (names.empty() ? "" : " ") + entry.substr(slash + 1);
    }
    return names;
  }

  std::string content(const std::string& name) const {
    const std::string listing = temp_.listing();
    return test::ReadWholeFile(temp_.path() / listing.substr(0, listing.find(' ')) / name);
  }

  test::TempDirectory temp_;
};

}  // namespace tarn::test

#endif
