#include <gtest/gtest.h>

#include <memory>

#include "archive/pdf/PageLayout.h"
#include "support/TempDirectory.h"

using namespace tarn::archive;
using namespace tarn::test;

namespace {

TEST(HelperLayoutTest, SaysThatThereIsNoHelper) {
  const TempDirectory empty;
  tarn::pages::HelperOptions options;
  options.programs = empty.path();
  const std::unique_ptr<PageLayout> layout = HelperLayout(options, tarn::pages::Paper::A4);
  const Outcome<std::string> pdf = layout->pdf("<p>Hello", {});
  ASSERT_FALSE(pdf.ok());
  EXPECT_EQ(pdf.trouble().kind, TroubleKind::Unsupported);
  EXPECT_NE(pdf.trouble().reason, "");
  EXPECT_THROW(TryHelpers(options), tarn::pages::PageFailure);
}

}  // namespace
