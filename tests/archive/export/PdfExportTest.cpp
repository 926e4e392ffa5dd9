#include <gtest/gtest.h>

#include <sstream>

#include "ReadMailPdf.h"
#include "archive/export/ItemExport.h"
#include "archive/export/ManifestRows.h"
#include "archive/pdf/SmallPdf.h"
#include "archive/writers/FakeItem.h"
#include "console/Json.h"
#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

class NoLayout final : public PageLayout {
 public:
  Outcome<std::string> pdf(std::string_view, const pages::PdfProperties&) override {
    return Trouble{TroubleKind::TooLarge, "its layout takes longer than 50 s"};
  }
};

TEST(PdfExportTest, SaysWhyAnItemHasNoPdf) {
  const test::TempDirectory directory;
  FakeContent content;
  content.bodies.text = "Hello";
  FakeItem item(content);
  NoLayout layout;
  TextSink mails;
  TextSink texts;
  TextSink pages;
  ExportChoices choices;
  choices.forms = {ExportForm::Text, ExportForm::Pdf};
  choices.catalogue = false;
  const ItemTarget target = {"box",
                             "box/item",
                             "box/messages.mbox",
                             directory.path() / "1",
                             mails,
                             texts,
                             pages,
                             "item",
                             "box/messages.pdf",
                             &layout};
  const Outcome<ItemResult> result = ExportItem(item, choices, target);
  ASSERT_TRUE(result.ok());
  const nlohmann::json row = host::ParsedJson<nlohmann::json>(result->rows);
  EXPECT_EQ(row["status"], "partial");
  EXPECT_EQ(row["reason"], "it has no PDF: its layout takes longer than 50 s");
  ASSERT_EQ(row["files"].size(), 1U);
  EXPECT_EQ(row["files"][0]["role"], "text");
  EXPECT_TRUE(std::filesystem::exists(directory.path() / "1/message.txt"));
  EXPECT_FALSE(std::filesystem::exists(directory.path() / "1/message.pdf"));
}

class OnePage final : public PageLayout {
 public:
  Outcome<std::string> pdf(std::string_view html, const pages::PdfProperties&) override {
    if (html.find("Hard") != std::string_view::npos) {
      return Trouble{TroubleKind::TooLarge, "its layout takes longer than 50 s"};
    }
    return test::SmallPdf({html.find("Outer") == std::string_view::npos ? "inner" : "outer"});
  }
};

// An item with one embedded in it, exported to be joined to others.
class PagesExportTest : public ::testing::Test {
 protected:
  PagesExportTest() {
    content_.fields.subject = "Outer";
    content_.fields.sent = Moment{1714559696, 120};
    content_.list.emplace_back().kind = AttachmentKind::Item;
    inner_->fields.subject = "Inner";
    inner_->fields.sent.reset();
    content_.items[0] = inner_;
  }

  void run() {
    FakeItem item(content_);
    OnePage layout;
    TextSink ignored;
    ExportChoices choices;
    choices.forms = {ExportForm::Pdf};
    choices.onePdf = true;
    choices.catalogue = false;
    const ItemTarget target = {"box",
                               "box/2024-05-01 Outer",
                               "box/messages.mbox",
                               directory_.path() / "1",
                               ignored,
                               ignored,
                               pages_,
                               "2024-05-01 Outer",
                               "box/messages.pdf",
                               &layout};
    const Outcome<ItemResult> result = ExportItem(item, choices, target);
    ASSERT_TRUE(result.ok());
    EXPECT_FALSE(result->hasFolder);
    std::istringstream lines(result->rows);
    for (std::string line; std::getline(lines, line);) {
      rows_.push_back(host::ParsedJson<nlohmann::ordered_json>(line));
    }
    ASSERT_EQ(rows_.size(), 2U);
  }

  test::MailPdfFacts pagesOf(size_t row) const {
    const std::optional<ItemPages> pages = PagesOf(rows_[row]);
    return test::ReadMailPdf(pages_.text.substr(pages->offset, pages->bytes));
  }

  test::TempDirectory directory_;
  FakeContent content_;
  std::shared_ptr<FakeContent> inner_ = std::make_shared<FakeContent>("2097188/1");
  TextSink pages_;
  std::vector<nlohmann::ordered_json> rows_;
};

TEST_F(PagesExportTest, TellsWhereTheirPdfsAre) {
  run();
  const std::optional<ItemPages> outer = PagesOf(rows_[0]);
  ASSERT_TRUE(outer);
  EXPECT_EQ(outer->path, "box/messages.pdf");
  EXPECT_EQ(outer->bookmark, "2024-05-01 12:34 Outer");
  EXPECT_EQ(outer->depth, 0U);
  EXPECT_EQ(outer->pages, 1U);
  const std::optional<ItemPages> inner = PagesOf(rows_[1]);
  ASSERT_TRUE(inner);
  EXPECT_EQ(inner->bookmark, "Inner");
  EXPECT_EQ(inner->depth, 1U);
  EXPECT_EQ(outer->bytes + inner->bytes, pages_.text.size());
  EXPECT_EQ(pagesOf(0).contents, std::vector<std::string>{"outer"});
  EXPECT_EQ(pagesOf(1).contents, std::vector<std::string>{"inner"});
}

TEST_F(PagesExportTest, NamesTheFilesInsideAfterTheItem) {
  run();
  const test::MailPdfFacts outer = pagesOf(0);
  ASSERT_EQ(outer.files.size(), 2U);
  EXPECT_EQ(outer.files[0].name, "2024-05-01 Outer.eml");
  EXPECT_EQ(outer.files[1].name, "2024-05-01 Outer - attachment 1.eml");
  const test::MailPdfFacts inner = pagesOf(1);
  ASSERT_EQ(inner.files.size(), 1U);
  EXPECT_EQ(inner.files[0].name, "2024-05-01 Outer - 1 Inner.eml");
}

TEST_F(PagesExportTest, HasARowForPagesThatCannotBeMade) {
  content_.bodies.text = "Hard";
  run();
  EXPECT_EQ(rows_[0]["reason"], "it has no PDF: its layout takes longer than 50 s");
  const std::optional<ItemPages> outer = PagesOf(rows_[0]);
  ASSERT_TRUE(outer);
  EXPECT_EQ(outer->pages, 0U);
  EXPECT_EQ(outer->bytes, 0U);
  EXPECT_EQ(rows_[1]["status"], "exported");
  EXPECT_EQ(pagesOf(1).contents, std::vector<std::string>{"inner"});
}

}  // namespace
}  // namespace tarn::archive
