// HelperPages.h - the page maker of production: the helper programs.
#ifndef TARN_TARNMAIL_PAGES_HELPERPAGES_H
#define TARN_TARNMAIL_PAGES_HELPERPAGES_H

#include "tarnmail/pages/PageMaker.h"

namespace tarn::host {

class HelperPages : public PageMaker {
 public:
  // Starts nothing before the first document.
  explicit HelperPages(const pages::HelperOptions& options) : helper_(options) {}

  // A document of that kind will come soon: as PageHelper::prepare.
  void prepare(pages::DocumentKind kind) { helper_.prepare(kind); }

  pages::LaidOut layOut(const pages::DocumentOnPaper& document) override;
  bool holds(const pages::LaidOut& laidOut) const override;
  pages::PageSize pageSize(const pages::LaidOut& laidOut, int32_t page) override;
  pages::Bitmap draw(const pages::LaidOut& laidOut, int32_t page, int32_t dotsPerInch,
                     const pages::ProgressCall& progress) override;
  std::string pdf(const pages::LaidOut& laidOut, pages::PageRange range,
                  const pages::PdfProperties& properties,
                  const pages::ProgressCall& progress) override;

 private:
  pages::PageHelper helper_;
};

}  // namespace tarn::host

#endif
