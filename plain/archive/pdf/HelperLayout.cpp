#include "archive/pdf/PageLayout.h"

namespace tarn::archive {
namespace {

TroubleKind KindOf(pages::Trouble trouble) {
  switch (trouble) {
    case pages::Trouble::TooLarge:
    case pages::Trouble::TooLong:
      return TroubleKind::TooLarge;
    case pages::Trouble::NoSandbox:
    case pages::Trouble::NotInstalled:
      return TroubleKind::Unsupported;
    default:
      return TroubleKind::Damaged;
  }
}

class Layout final : public PageLayout {
 public:
  Layout(const pages::HelperOptions& options, pages::Paper paper)
      : helper_(options), paper_(paper) {}

  Outcome<std::string> pdf(std::string_view html, const pages::PdfProperties& properties) override {
    try {
      pages::DocumentOnPaper document;
      document.kind = pages::DocumentKind::Html;
      document.bytes = html;
      document.paper = paper_;
      return helper_.pdf(helper_.layOut(document), {}, properties);
    } catch (const pages::PageFailure& failure) {
      return Trouble{KindOf(failure.trouble()), failure.what()};
    }
  }

 private:
  pages::PageHelper helper_;
  pages::Paper paper_;
};

}  // namespace

std::unique_ptr<PageLayout> HelperLayout(const pages::HelperOptions& options, pages::Paper paper) {
  return std::make_unique<Layout>(options, paper);
}

void TryHelpers(const pages::HelperOptions& options) {
  pages::PageHelper helper(options);
  pages::DocumentOnPaper document;
  document.bytes = "<p>.</p>";
  helper.layOut(document);
}

}  // namespace tarn::archive
