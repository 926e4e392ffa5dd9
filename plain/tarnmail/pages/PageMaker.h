// PageMaker.h - who lays documents out and draws their pages, as this program sees it: in
// production helper processes, in tests whoever plays them.
#ifndef TARN_TARNMAIL_PAGES_PAGEMAKER_H
#define TARN_TARNMAIL_PAGES_PAGEMAKER_H

#include <cstdint>
#include <string>

#include "siblings/Pages.h"
#include "siblings/client/PageHelper.h"

namespace tarn::host {

// The calls of PageHelper, with the same answers and failures.
class PageMaker {
 public:
  virtual ~PageMaker() = default;
  virtual pages::LaidOut layOut(const pages::DocumentOnPaper& document) = 0;
  virtual bool holds(const pages::LaidOut& laidOut) const = 0;
  virtual pages::PageSize pageSize(const pages::LaidOut& laidOut, int32_t page) = 0;
  virtual pages::Bitmap draw(const pages::LaidOut& laidOut, int32_t page, int32_t dotsPerInch,
                             const pages::ProgressCall& progress) = 0;
  virtual std::string pdf(const pages::LaidOut& laidOut, pages::PageRange range,
                          const pages::PdfProperties& properties,
                          const pages::ProgressCall& progress) = 0;
};

}  // namespace tarn::host

#endif
