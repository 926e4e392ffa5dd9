// PngFile.h - pages as PNG files (ISO/IEC 15948).
#ifndef TARN_TARNMAIL_PAGES_PNGFILE_H
#define TARN_TARNMAIL_PAGES_PNGFILE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace tarn::host {

// Rows from the top down without gaps, of red, green and blue.
struct PngPage {
  int32_t width = 0;
  int32_t height = 0;
  int32_t dotsPerInch = 0;
  std::string_view rows;
};

// The whole file, with the resolution in it; of a page without colours one of grey. The same page
// gives the same bytes. Throws std::bad_alloc.
std::string PngFile(const PngPage& page);

}  // namespace tarn::host

#endif
