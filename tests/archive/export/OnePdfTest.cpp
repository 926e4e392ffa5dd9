#include "archive/export/OnePdf.h"

#include <gtest/gtest.h>

#include "ReadMailPdf.h"
#include "archive/pdf/SmallPdf.h"
#include "console/Failure.h"
#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

class OnePdfTest : public ::testing::Test {
 protected:
  // An outermost item with what is embedded in it: of each its depth and the texts of its pages.
  struct Pages {
    std::string bookmark;
    size_t depth = 0;
    std::vector<std::string> texts;
  };

  // As a worker does it: the pages of embedded items come first.
  void addItem(const std::string& path, const std::vector<Pages>& all) {
    std::string bytes;
    std::vector<ItemPages> rows;
    for (auto one = all.rbegin(); one != all.rend(); ++one) {
      const std::string pdf = one->texts.empty() ? "" : test::SmallPdf(one->texts);
      rows.insert(rows.begin(),
                  {path, one->bookmark, one->depth, bytes.size(), pdf.size(), one->texts.size()});
      bytes += pdf;
    }
    EXPECT_FALSE(staging_.grown().append(path, bytes));
    rows_.insert(rows_.end(), rows.begin(), rows.end());
  }

  test::MailPdfFacts join(const OnePdfLimits& limits, const std::string& path) {
    OnePdf pdf(
        staging_, [] {}, limits);
    for (const ItemPages& row : rows_) pdf.add(row);
    pdf.finish();
    places_.clear();
    for (const ItemPages& row : rows_) {
      if (row.pages != 0) places_.push_back(pdf.place(row));
    }
    return read(path);
  }

  test::MailPdfFacts read(const std::string& path) const {
    return test::ReadMailPdf(test::ReadWholeFile(tree() / path));
  }
  std::filesystem::path tree() const { return directory_.path() / "out"; }

  test::TempDirectory directory_;
  Staging staging_{tree(), "settings", false};
  std::vector<ItemPages> rows_;
  std::vector<PdfPlace> places_;
};

TEST_F(OnePdfTest, HasTheItemsInTheirOrderWhateverTheOrderOfTheirBytes) {
  addItem("box/messages.pdf", {{"a", 0, {"a1", "a2"}}, {"a/1", 1, {"b"}}, {"a/1/1", 2, {"c"}}});
  addItem("box/In/messages.pdf", {{"x", 0, {"x"}}});
  addItem("box/messages.pdf", {{"d", 0, {}}, {"d/1", 1, {"e"}}});
  const test::MailPdfFacts facts = join({}, "box/messages.pdf");
  EXPECT_EQ(facts.contents, (std::vector<std::string>{"a1", "a2", "b", "c", "e"}));
  EXPECT_EQ(facts.title, "box");
  ASSERT_EQ(facts.marks.size(), 4U);
  EXPECT_EQ(facts.marks[2].title, "a/1/1");
  EXPECT_EQ(facts.marks[2].depth, 2U);
  // What it is embedded in has no pages.
  EXPECT_EQ(facts.marks[3].title, "d/1");
  EXPECT_EQ(facts.marks[3].depth, 1U);
  EXPECT_EQ(read("box/In/messages.pdf").contents, std::vector<std::string>{"x"});
  EXPECT_EQ(read("box/In/messages.pdf").title, "box/In");

  std::vector<std::pair<std::string, uint64_t>> pages;
  for (const PdfPlace& place : places_) {
    pages.emplace_back(place.path, place.page);
    EXPECT_EQ(place.sum, *SumOfFile(tree() / place.path));
  }
  EXPECT_EQ(pages, (std::vector<std::pair<std::string, uint64_t>>{{"box/messages.pdf", 1},
                                                                  {"box/messages.pdf", 3},
                                                                  {"box/messages.pdf", 4},
                                                                  {"box/In/messages.pdf", 1},
                                                                  {"box/messages.pdf", 5}}));
}

TEST_F(OnePdfTest, BeginsAnotherFileWhereOneIsLargeEnough) {
  addItem("box/messages.pdf", {{"a", 0, {"a"}}});
  addItem("box/messages.pdf", {{"b", 0, {"b"}}, {"b/1", 1, {"c1", "c2"}}});
  addItem("box/messages.pdf", {{"d", 0, {"d"}}});
  OnePdfLimits limits;
  limits.pages = 2;
  EXPECT_EQ(join(limits, "box/messages.pdf").contents,
            (std::vector<std::string>{"a", "b", "c1", "c2"}));
  const test::MailPdfFacts second = read("box/messages 2.pdf");
  EXPECT_EQ(second.contents, std::vector<std::string>{"d"});
  EXPECT_EQ(second.title, "box, 2");
  EXPECT_EQ(places_.back().path, "box/messages 2.pdf");
  EXPECT_EQ(places_.back().page, 1U);

  limits = {};
  limits.bytes = 1;
  EXPECT_EQ(join(limits, "box/messages.pdf").contents, std::vector<std::string>{"a"});
  EXPECT_EQ(read("box/messages 2.pdf").contents, (std::vector<std::string>{"b", "c1", "c2"}));
  EXPECT_EQ(read("box/messages 3.pdf").contents, std::vector<std::string>{"d"});
}

TEST_F(OnePdfTest, SaysWhatCannotBeJoined) {
  EXPECT_FALSE(staging_.grown().append("box/messages.pdf", "no PDF"));
  OnePdf pdf(staging_, [] {});
  pdf.add({"box/messages.pdf", "a", 0, 0, 6, 1});
  EXPECT_THROW(pdf.finish(), host::Failure);
  EXPECT_FALSE(std::filesystem::exists(tree() / "box/messages.pdf"));
}

}  // namespace
}  // namespace tarn::archive
