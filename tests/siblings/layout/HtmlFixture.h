// HtmlFixture.h - an engine for HTML and a folder in memory.
#ifndef TARN_TESTS_SIBLINGS_LAYOUT_HTMLFIXTURE_H
#define TARN_TESTS_SIBLINGS_LAYOUT_HTMLFIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "siblings/layout/HtmlEngine.h"
#include "siblings/layout/PageLooks.h"

namespace tarn::test {

class HtmlFixture : public ::testing::Test {
 protected:
  std::unique_ptr<pages::Layout> layOut(const std::string& html) {
    return engine_->layOut(pages::DocumentKind::Html, html, pages::Paper::A4, folder_);
  }
  std::string wordsOf(const std::string& html) { return WordsOfPdf(PdfOf(*layOut(html))); }

  static std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
  }

  MemoryFolder folder_;
  std::unique_ptr<pages::Engine> engine_ = pages::MakeHtmlEngine();
};

}  // namespace tarn::test

#endif
