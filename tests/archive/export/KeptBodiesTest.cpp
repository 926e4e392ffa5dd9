#include "archive/export/KeptBodies.h"

#include <gtest/gtest.h>

#include <string>

#include "archive/export/FakeItems.h"
#include "archive/export/ItemExport.h"
#include "archive/model/TextSink.h"
#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

using test::FakeItem;

TEST(KeptBodiesTest, AreReadOnce) {
  FakeItem source("1", "Plans");
  source.ownBodies().html = HtmlBody{"<p>html", "utf-8"};
  source.ownBodies().text = "text";
  source.ownBodies().rtf = "{\\rtf1}";
  source.ownBodies().troubles = {{TroubleKind::Damaged, "a body is torn"}};
  KeptBodies item(source);
  for (int time = 0; time < 3; ++time) {
    const Bodies bodies = item.bodies();
    ASSERT_TRUE(bodies.html && bodies.text && bodies.rtf);
    EXPECT_EQ(bodies.html->bytes, "<p>html");
    EXPECT_EQ(bodies.html->charset, "utf-8");
    EXPECT_EQ(*bodies.text, "text");
    EXPECT_EQ(*bodies.rtf, "{\\rtf1}");
    ASSERT_EQ(bodies.troubles.size(), 1U);
    EXPECT_EQ(bodies.troubles[0].reason, "a body is torn");
  }
  EXPECT_EQ(source.bodyReads(), 1);
}

TEST(KeptBodiesTest, AreNotKeptWhereTheyAreLarge) {
  FakeItem source("1", "Plans");
  source.ownBodies().text = std::string(kMostKeptBodies - 4, 'x');
  source.ownBodies().rtf = "1234";
  KeptBodies kept(source);
  (void)kept.bodies();
  EXPECT_EQ(kept.bodies().text->size(), kMostKeptBodies - 4);
  EXPECT_EQ(source.bodyReads(), 1);
  source.ownBodies().rtf = "12345";
  KeptBodies large(source);
  (void)large.bodies();
  EXPECT_EQ(large.bodies().text->size(), kMostKeptBodies - 4);
  EXPECT_EQ(source.bodyReads(), 3);
}

TEST(KeptBodiesTest, AreReadOnceForAnExport) {
  const test::TempDirectory directory;
  FakeItem item("1", "Plans");
  item.ownBodies().text = "Hello";
  TextSink mails;
  TextSink texts;
  TextSink pages;
  ExportChoices choices;
  choices.forms = {ExportForm::Html, ExportForm::Text, ExportForm::Eml, ExportForm::Mbox,
                   ExportForm::Json};
  const ItemTarget target = {"box",
                             "box/item",
                             "box/messages.mbox",
                             directory.path() / "1",
                             mails,
                             texts,
                             pages,
                             "item",
                             "box/messages.pdf",
                             nullptr};
  const Outcome<ItemResult> result = ExportItem(item, choices, target);
  ASSERT_TRUE(result.ok());
  EXPECT_EQ(item.bodyReads(), 1);
  EXPECT_NE(mails.text.find("Hello"), std::string::npos);
  EXPECT_NE(texts.text.find("Hello"), std::string::npos);
}

}  // namespace
}  // namespace tarn::archive
