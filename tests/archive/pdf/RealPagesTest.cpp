// Items as pages of the real helper.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "ReadMailPdf.h"
#include "archive/pdf/PageLayout.h"
#include "archive/pdf/WritePdf.h"
#include "archive/writers/FakeItem.h"

using namespace tarn::archive;
using namespace tarn::test;

namespace {

tarn::pages::HelperOptions Options() {
  tarn::pages::HelperOptions options;
  options.programs = HELPERS_PATH;
  options.limits.timePerDocument = std::chrono::seconds(240);
  return options;
}

FakeContent Letter() {
  FakeContent content;
  content.fields.subject = "Plans";
  content.fields.from = {"Ann", "ann@example.com"};
  content.bodies.html = HtmlBody{"<p>Hello <b>Bob</b></p>", "utf-8"};
  content.attach("plan.txt", "text/plain", "the plan");
  return content;
}

std::string PdfOf(const FakeContent& content, tarn::pages::Paper paper) {
  FakeItem item(content);
  TextSink sink;
  const std::unique_ptr<PageLayout> layout = HelperLayout(Options(), paper);
  const WrittenPdf written = WritePdf(item, *layout, sink);
  EXPECT_FALSE(written.noPages) << written.noPages->reason;
  EXPECT_FALSE(written.full);
  EXPECT_TRUE(written.lost.empty());
  return sink.text;
}

TEST(RealPagesTest, MakesAFileWithPagesMailAndAttachment) {
  const std::string pdf = PdfOf(Letter(), tarn::pages::Paper::A4);
  const MailPdfFacts facts = ReadMailPdf(pdf);
  EXPECT_EQ(facts.contents.size(), 1U);
  EXPECT_EQ(facts.title, "Plans");
  ASSERT_EQ(facts.files.size(), 2U);
  EXPECT_EQ(facts.files[0].name, "message.eml");
  EXPECT_EQ(facts.files[1].bytes, "the plan");
  EXPECT_EQ(PdfOf(Letter(), tarn::pages::Paper::A4), pdf);
  EXPECT_NE(PdfOf(Letter(), tarn::pages::Paper::Letter), pdf);
}

TEST(RealPagesTest, KnowsThatTheHelpersWork) { EXPECT_NO_THROW(TryHelpers(Options())); }

}  // namespace
