#include "siblings/layout/DocumentPictures.h"

#include <gtest/gtest.h>

#include "siblings/layout/Pictures.h"

namespace tarn::test {
namespace {

using namespace tarn::pages;

constexpr Rgb kRed = {255, 0, 0};

TEST(DataUrl, Base64AndPercents) {
  EXPECT_EQ(DecodeDataUrl("data:image/png;base64,SGVsbG8="), "Hello");
  EXPECT_EQ(DecodeDataUrl("DATA:image;BASE64,SGVs\r\n bG8"), "Hello");
  EXPECT_EQ(DecodeDataUrl("data:image/png;base64,SGVsbG8%3D"), "Hello");
  EXPECT_EQ(DecodeDataUrl("data:,a%20b%zz"), "a b%zz");
  EXPECT_EQ(DecodeDataUrl("data:image/png;base64"), std::nullopt);
  EXPECT_EQ(DecodeDataUrl("http://a,b"), std::nullopt);
}

TEST(DocumentPictures, FilesOfTheFolderByPlainName) {
  MemoryFolder folder;
  folder.files["a b.png"] = PngOf(3, 4, kRed);
  folder.files["100%25.png"] = PngOf(5, 6, kRed);
  DocumentPictures pictures({}, folder);
  for (const char* source : {"a b.png", "./a b.png", "a%20b.png", " a%20b.png\n"}) {
    ASSERT_NE(pictures.find(source), nullptr) << source;
    EXPECT_EQ(pictures.find(source)->width, 3);
  }
  EXPECT_EQ(pictures.find("100%25.png")->width, 5);
}

TEST(DocumentPictures, NothingElseIsEvenAskedFor) {
  MemoryFolder folder;
  DocumentPictures pictures({}, folder);
  for (const char* source : {"http://a/b.png", "https://a/b.png", "//a/b.png", "file:///etc/passwd",
                             "/etc/passwd", "../a.png", "a/b.png", "..", ".", "", "cid:a@b",
                             "C:\\a.png", "..%2Fa.png", "%2Fetc%2Fpasswd", "a\\b.png", "a%00b.png",
                             "tarn-data:0", "tarn-data:99999999999999999999"}) {
    EXPECT_EQ(pictures.find(source), nullptr) << source;
  }
  // The last ones without the parts that make them unfit.
  for (const std::string& name : folder.asked) {
    EXPECT_EQ(name.find_first_of("/\\:"), std::string::npos) << name;
  }
}

TEST(DocumentPictures, AColonAfterMoreThanLettersIsPartOfAName) {
  MemoryFolder folder;
  folder.files["c@x_q?x:y.png"] = PngOf(3, 4, kRed);
  DocumentPictures pictures({}, folder);
  ASSERT_NE(pictures.find("c@x_q?x:y.png"), nullptr);
  EXPECT_EQ(pictures.find(":y.png"), nullptr);
}

TEST(DocumentPictures, EachIsReadOnce) {
  MemoryFolder folder;
  folder.files["a.png"] = PngOf(3, 4, kRed);
  DocumentPictures pictures({}, folder);
  EXPECT_EQ(pictures.find("a.png"), pictures.find("a.png"));
  EXPECT_EQ(pictures.find("b.png"), nullptr);
  EXPECT_EQ(pictures.find("b.png"), nullptr);
  EXPECT_EQ(folder.asked, (std::vector<std::string>{"a.png", "b.png"}));
}

}  // namespace
}  // namespace tarn::test
