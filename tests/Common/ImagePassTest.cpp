#include "Common/ImagePass.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "Common/InlineImages.h"
#include "KernelUse.h"
#include "support/FaultSweep.h"
#include "support/GuardedBytes.h"
#include "support/PeakMemory.h"

namespace tarn {
namespace {

using test::Bytes;
using test::Raw;

constexpr uint64_t kPlenty = uint64_t{1} << 40;

struct Image {
  std::string cid;
  std::string name;
  std::string replacement;
  ImagePass::Kind kind = ImagePass::Kind::DataUrl;
};

// What an image did.
struct Placed {
  bool found = false;
  Status status;
  uint64_t count = 0;

  bool operator==(const Placed&) const = default;
};

void PrintTo(const Placed& placed, std::ostream* out) {
  *out << (placed.found ? "found" : "not found") << " " << placed.status << " " << placed.count;
}

// The rules word for word: each image in its turn, on a text that changes at every step.
class Model {
 public:
  Model(std::string text, uint64_t limit) : text_(std::move(text)), limit_(limit) {}

  const std::string& text() const { return text_; }

  Placed place(const Image& image) {
    for (const std::string& needle : {image.cid, image.name}) {
      const size_t place = needle.empty() ? std::string::npos : text_.find(needle);
      if (place == std::string::npos) continue;
      const std::string before = text_;
      Placed placed;
      placed.found = true;
      placed.count = replace(place, needle, image.replacement);
      if (text_.size() > limit_ && placed.count != 0) {
        text_ = before;
        placed.status = StatusOutOfMemory;
        placed.count = 0;
      }
      return placed;
    }
    return {};
  }

 private:
  uint64_t replace(size_t at, const std::string& needle, const std::string& replacement) {
    uint64_t count = 0;
    while (at <= text_.size()) {
      const size_t end = std::min(text_.find('\0', at), text_.size());
      const size_t p = text_.substr(0, end).find(needle, at);
      if (p == std::string::npos) break;
      size_t tag = p;
      while (tag > 0 && text_[tag] != '<') --tag;
      if (text_.compare(tag, 12, "<v:imagedata") == 0) {
        at += needle.size();
        continue;
      }
      const size_t close = text_.substr(0, end).find('"', p + needle.size());
      if (close == std::string::npos) break;
      size_t q = p;
      while (q > at && text_[q - 1] != '"') --q;
      text_.replace(q, close - q, replacement);
      at = q + replacement.size();
      ++count;
    }
    return count;
  }

  std::string text_;
  uint64_t limit_;
};

class Pass {
 public:
  explicit Pass(std::string_view body,
                ImagePass::Limits limits = {kPlenty, 1000, {kPlenty, kPlenty}})
      : body_(Bytes(body)), pass_(body_, limits, budget_) {}

  Placed place(const Image& image) {
    Placed placed;
    for (const std::string& needle : {image.cid, image.name}) {
      uint64_t place = 0;
      placed.status = pass_.find(needle, place);
      if (!placed.status.ok()) return placed;
      if (place == kNoPlace) continue;
      placed.found = true;
      placed.status =
          pass_.replace(place, needle, Bytes(image.replacement), image.kind, placed.count);
      return placed;
    }
    return placed;
  }

  ImagePass& pass() { return pass_; }
  std::string_view body() const { return body_.view(); }
  std::string finish() {
    EXPECT_EQ(pass_.finish(), StatusOk);
    return std::string(body_.view());
  }

 private:
  SizedBytes body_;
  SearchBudget budget_{UINT64_MAX};
  ImagePass pass_;
};

std::string Url(std::string_view text) { return "data:image;base64," + std::string(text); }

TEST(ImagePass, PutsEachImageInItsPlace) {
  Pass pass("<img src=\"cid:b\"> <img src=\"cid:a\"> <img src=\"cid:b\">");
  EXPECT_EQ(pass.place({"cid:a", "", Url("AAAA")}), (Placed{true, StatusOk, 1}));
  EXPECT_EQ(pass.place({"cid:b", "", Url("BBBB")}), (Placed{true, StatusOk, 2}));
  EXPECT_EQ(pass.body(), "<img src=\"cid:b\"> <img src=\"cid:a\"> <img src=\"cid:b\">");
  EXPECT_EQ(pass.finish(),
            "<img src=\"data:image;base64,BBBB\"> <img src=\"data:image;base64,AAAA\"> "
            "<img src=\"data:image;base64,BBBB\">");
}

TEST(ImagePass, ALaterImageMayTakeAnEarlierOnesPlace) {
  Pass pass("<img src=\"cid:a.png or b.png\">");
  EXPECT_EQ(pass.place({"", "b.png", Url("BBBB")}), (Placed{true, StatusOk, 1}));
  EXPECT_EQ(pass.place({"", "a.png", Url("AAAA")}), (Placed{true, StatusOk, 1}));
  EXPECT_EQ(pass.finish(), "<img src=\"cid:data:image;base64,AAAA\">");
}

TEST(ImagePass, AnImageMayBeLookedForInAnother) {
  Pass pass("<img src=\"cid:a\">");
  EXPECT_EQ(pass.place({"cid:a", "", Url("QUJD")}).count, 1u);
  EXPECT_EQ(pass.place({"", "UJ", Url("REVG")}), (Placed{true, StatusOk, 1}));
  // Found after "Q", where the search for the quote before it may not go.
  EXPECT_EQ(pass.finish(), "<img src=\"data:image;base64,Q" + Url("REVG") + "\">");
}

TEST(ImagePass, AnyBase64MayBeLookedForInAnother) {
  for (const char character : std::string_view("azAZ09+/=")) {
    const std::string needle(3, character);
    Pass pass("<img src=\"cid:b\">");
    EXPECT_EQ(pass.place({"cid:b", "", Url("Q" + needle + "Q")}).count, 1u);
    EXPECT_EQ(pass.place({"", needle, Url("REVG")}), (Placed{true, StatusOk, 1})) << character;
    EXPECT_EQ(pass.finish(), "<img src=\"data:image;base64,Q" + Url("REVG") + "\">") << character;
  }
}

TEST(ImagePass, ReadsNoByteAfterTheNeedle) {
  constexpr std::string_view kNeedle = "z-z";
  test::GuardedBytes guarded(kNeedle.size());
  char* const needle = guarded.end() - kNeedle.size();
  kNeedle.copy(needle, kNeedle.size());
  Pass pass("<img src=\"cid:b\"> z-z");
  EXPECT_EQ(pass.place({"cid:b", "", Url("AAAA")}).count, 1u);
  uint64_t place = 0;
  EXPECT_EQ(pass.pass().find({needle, kNeedle.size()}, place), StatusOk);
  EXPECT_EQ(place, 18u);
}

TEST(ImagePass, WithoutMemoryTheBodyIsAsItWas) {
  const auto round = [](test::FaultedWork& faulted) {
    Pass pass("<img src=\"cid:a\">");
    const Image image = {"cid:a", "", Url("QUJD")};
    uint64_t place = 0;
    ASSERT_EQ(pass.pass().find(image.cid, place), StatusOk);
    SizedBytes replacement = Bytes(image.replacement);
    uint64_t count = 0;
    const Status status = faulted([&] {
      const Status replaced = pass.pass().replace(place, image.cid, std::move(replacement),
                                                  ImagePass::Kind::DataUrl, count);
      return replaced.ok() ? pass.pass().finish() : replaced;
    });
    EXPECT_EQ(status, faulted.isReached() ? StatusOutOfMemory : StatusOk);
    if (faulted.isReached()) {
      EXPECT_EQ(pass.body(), "<img src=\"cid:a\">");
    }
  };
  const uint64_t calls =
      test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom);
  EXPECT_GE(calls, 3u);
  EXPECT_LT(calls, 11u);
}

// What the searches have made of the body is larger than the image, which takes its place in
// memory.
TEST(ImagePass, ForgetsItsSearchesBeforeTheBodyGrows) {
  const std::string text(1 << 20, '.');
  const std::string image = Url(std::string(100000, 'A'));
  Pass pass("\"cid:b\"" + text, {kPlenty, 1000, {kPlenty, 1}});
  uint64_t place = 0;
  for (int i = 0; i < 10; ++i) EXPECT_EQ(pass.pass().find("cid:none", place), StatusOk);
  EXPECT_EQ(pass.place({"cid:b", "", image}).count, 1u);
  EXPECT_LT(test::PeakOf([&] { EXPECT_EQ(pass.pass().finish(), StatusOk); }), 1000u);
  EXPECT_TRUE(pass.body() == "\"" + image + "\"" + text);
}

TEST(ImagePass, EveryImageCountsForTheLimit) {
  // Two replacements of 22 bytes for 5.
  Pass pass("\"cid:a\"\"cid:b\"\"cid:c\"", {21 + 2 * 17, 1000, {kPlenty, kPlenty}});
  EXPECT_EQ(pass.place({"cid:a", "", Url("QUJD")}), (Placed{true, StatusOk, 1}));
  EXPECT_EQ(pass.place({"cid:b", "", Url("QUJD")}), (Placed{true, StatusOk, 1}));
  EXPECT_EQ(pass.place({"cid:c", "", Url("QUJD")}), (Placed{true, StatusOutOfMemory, 0}));
  EXPECT_EQ(pass.finish(), "\"" + Url("QUJD") + "\"\"" + Url("QUJD") + "\"\"cid:c\"");
}

TEST(ImagePass, ANewBodyHasNoneOfTheOldOnesImages) {
  SizedBytes body = Bytes("\"cid:a\"");
  SearchBudget budget(UINT64_MAX);
  ImagePass pass(body, ImagePass::LimitsFor(0), budget);
  uint64_t place = 0;
  uint64_t count = 0;
  ASSERT_EQ(pass.find("cid:a", place), StatusOk);
  ASSERT_EQ(pass.replace(place, "cid:a", Bytes("x"), ImagePass::Kind::Name, count), StatusOk);
  pass.discard();
  body = Bytes("another \"cid:a\"");
  ASSERT_EQ(pass.find("cid:a", place), StatusOk);
  EXPECT_EQ(place, 9u);
  EXPECT_EQ(pass.finish(), StatusOk);
  EXPECT_EQ(body.view(), "another \"cid:a\"");
}

// How the images of a mail and its references may lie.
struct Layout {
  std::string name;
  bool isFile = false;      // to files
  bool isByName = false;    // referred to by a name in a path, not by a content id
  bool isShuffled = false;  // in another order than the references
  bool hasImageData = false;
};

void PrintTo(const Layout& layout, std::ostream* out) { *out << layout.name; }

class ThousandsOfImages : public ::testing::TestWithParam<Layout> {};

// So many bytes of searches for each byte of the body. Reading the body for each image would be
// hundreds of times that.
constexpr uint64_t kBytesPerBodyByte = 600;

TEST_P(ThousandsOfImages, CostLittleMoreForAnImageThanAFew) {
  const Layout& layout = GetParam();
  for (const int count : {1000, 4000, 16000}) {
    const auto id = [](int i) { return "image" + std::to_string(i) + ".png@01DC5B7A.5D6F8E20"; };
    const auto name = [](int i) { return "picture-" + std::to_string(i) + "x.png"; };
    std::string html;
    for (int i = 0; i < count; ++i) {
      const std::string source = layout.isByName ? "files/" + name(i) : "cid:" + id(i);
      if (layout.hasImageData) html += "<v:imagedata src=\"" + source + "\" o:title=\"\"/>";
      html += "<img width=100 src=\"" + source + "\">\r\n";
    }
    std::vector<int> order;
    for (int i = 0; i < count; ++i) order.push_back(i);
    std::mt19937 random(20261122);
    if (layout.isShuffled) std::shuffle(order.begin(), order.end(), random);

    SizedBytes body = Bytes(html);
    SearchBudget budget(kBytesPerBodyByte * html.size());
    ImagePass pass(body, ImagePass::LimitsFor(uint64_t{100} * static_cast<uint64_t>(count)),
                   budget);
    for (const int i : order) {
      const std::string needle = layout.isByName ? name(i) : "cid:" + id(i);
      const std::string replacement = layout.isFile ? "_" + name(i) : Url("QUJD");
      uint64_t place = kNoPlace;
      uint64_t replaced = 0;
      if (layout.isByName) {
        ASSERT_EQ(pass.find("cid:" + id(i), place), StatusOk);
        ASSERT_EQ(place, kNoPlace);
      }
      ASSERT_EQ(pass.find(needle, place), StatusOk);
      ASSERT_NE(place, kNoPlace);
      ASSERT_EQ(
          pass.replace(place, needle, Bytes(replacement),
                       layout.isFile ? ImagePass::Kind::Name : ImagePass::Kind::DataUrl, replaced),
          StatusOk);
      ASSERT_EQ(replaced, 1u);
    }
    ASSERT_EQ(pass.finish(), StatusOk);
    EXPECT_FALSE(budget.isSpent()) << count;
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, ThousandsOfImages,
    ::testing::Values(Layout{"InOrder"}, Layout{"Shuffled", false, false, true},
                      Layout{"ByName", false, true}, Layout{"ImageData", false, false, false, true},
                      Layout{"ToFiles", true}, Layout{"ToFilesByName", true, true},
                      Layout{"ToFilesShuffled", true, false, true}),
    [](const auto& layout) { return layout.param.name; });

// Bodies, needles and replacements made of the same few pieces.
class RandomPass {
 public:
  explicit RandomPass(uint32_t seed) : random_(seed) {}

  uint64_t number(uint64_t below) { return random_() % below; }

  std::string join(const std::vector<std::string>& pieces, uint64_t most) {
    std::string text;
    for (uint64_t n = number(most + 1); n > 0; --n) text += pieces[number(pieces.size())];
    return text;
  }

  std::string body() {
    static const std::vector<std::string> all = {"<img src=\"",
                                                 "\">",
                                                 "\"",
                                                 "\"",
                                                 "cid:a",
                                                 "cid:b",
                                                 "cid:ab",
                                                 "<v:imagedata ",
                                                 "<v:image",
                                                 "data",
                                                 "a.png",
                                                 "b.png",
                                                 "_a.png",
                                                 "x/",
                                                 "<",
                                                 ">",
                                                 " ",
                                                 "QUJD",
                                                 Raw("\0"),
                                                 "d",
                                                 "da",
                                                 "<v:imagedata src=\"cid:a\"/><img src=\"cid:a\">",
                                                 "<img src=\"cid:b\">",
                                                 "<img src=\"cid:ab\" alt='a.png'>",
                                                 "\"x/a.png\""};
    std::vector<std::string> few;
    for (uint64_t n = number(8) + 1; n > 0; --n) few.push_back(all[number(all.size())]);
    return join(few, 20) + join(all, 10);
  }

  std::string needle() {
    static const std::vector<std::string> some = {
        "cid:a", "cid:b", "cid:ab", "a.png", "b.png",     "/a.png", "d",   "xd",     "QUJD",
        "image", ";b",    "_a",     "a_",    "x/data:",   "<",      "\"c", "a\"",    "src=",
        "da",    "/d",    "UJDQ",   "img",   "imagedata", "g s",    ".",   "x/_a.p", ""};
    return some[number(some.size())];
  }

  Image image() {
    Image image;
    if (number(4) != 0) image.cid = needle();
    image.name = needle();
    if (number(2) == 0) {
      image.replacement = Url(join({"QUJD", "REVG", "imag", "data"}, 3));
      return image;
    }
    image.kind = ImagePass::Kind::Name;
    static const std::vector<std::string> names = {
        "_a.png", "a.png", "b.png", "x_b.png",      "",      "agedata", "data",
        "x",      "\"",    "<b",    "<v:imagedata", "cid:b", "d",       "/a"};
    image.replacement = names[number(number(2) == 0 ? 5 : names.size())];
    return image;
  }

 private:
  std::mt19937 random_;
};

TEST(ImagePass, AgreesWithTheRulesTakenImageByImage) {
  RandomPass random(20261122);
  uint64_t replaced = 0;
  for (int round = 0; round < 30000; ++round) {
    const std::string body = random.body();
    const uint64_t limit = random.number(4) == 0 ? body.size() + 40 : kPlenty;
    const ImagePass::Limits limits = {limit,
                                      random.number(3) == 0 ? uint64_t{2} : 1000,
                                      {kPlenty, random.number(2) == 0 ? 1 : kPlenty}};
    Model model(body, limit);
    Pass pass(body, limits);
    std::string story = ::testing::PrintToString(body);
    for (uint64_t n = random.number(8) + 1; n > 0; --n) {
      const Image image = random.image();
      story += "\n" + image.cid + " | " + image.name + " -> " + image.replacement;
      const Placed expected = model.place(image);
      ASSERT_EQ(pass.place(image), expected) << story;
      replaced += expected.count;
    }
    ASSERT_EQ(pass.finish(), model.text()) << story;
  }
  EXPECT_GT(replaced, 30000u);
}

}  // namespace
}  // namespace tarn
