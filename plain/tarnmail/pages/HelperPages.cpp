#include "pages/HelperPages.h"

namespace tarn::host {

pages::LaidOut HelperPages::layOut(const pages::DocumentOnPaper& document) {
  return helper_.layOut(document);
}

bool HelperPages::holds(const pages::LaidOut& laidOut) const { return helper_.holds(laidOut); }

pages::PageSize HelperPages::pageSize(const pages::LaidOut& laidOut, int32_t page) {
  return helper_.pageSize(laidOut, page);
}

pages::Bitmap HelperPages::draw(const pages::LaidOut& laidOut, int32_t page, int32_t dotsPerInch,
                                const pages::ProgressCall& progress) {
  return helper_.draw(laidOut, page, dotsPerInch, progress);
}

std::string HelperPages::pdf(const pages::LaidOut& laidOut, pages::PageRange range,
                             const pages::PdfProperties& properties,
                             const pages::ProgressCall& progress) {
  return helper_.pdf(laidOut, range, properties, progress);
}

}  // namespace tarn::host
