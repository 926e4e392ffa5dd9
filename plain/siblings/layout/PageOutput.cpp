#include "siblings/layout/PageOutput.h"

#include <cairo-pdf.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string_view>
#include <utility>

#include "siblings/layout/PdfId.h"

namespace tarn::pages {

namespace {

constexpr int32_t kWidestBitmap = 32'767;  // Cairo's limit

void Require(cairo_status_t status) {
  if (status == CAIRO_STATUS_SUCCESS) return;
  const auto trouble = status == CAIRO_STATUS_NO_MEMORY ? Trouble::TooLarge : Trouble::BadDocument;
  throw PageFailure(trouble,
                    std::string("the page cannot be drawn: ") + cairo_status_to_string(status));
}

// A text in the dictionary of a PDF ends at its first NUL.
void SetProperty(cairo_surface_t* surface, cairo_pdf_metadata_t property, const std::string& text) {
  if (!text.empty() && g_utf8_validate(text.c_str(), -1, nullptr)) {
    cairo_pdf_surface_set_metadata(surface, property, text.c_str());
  }
}

cairo_status_t Append(void* file, const unsigned char* bytes, unsigned int count) {
  try {
    static_cast<std::string*>(file)->append(reinterpret_cast<const char*>(bytes), count);
    return CAIRO_STATUS_SUCCESS;
  } catch (const std::bad_alloc&) {
    return CAIRO_STATUS_NO_MEMORY;
  }
}

int32_t PixelsOf(double points, int32_t dotsPerInch) {
  const double pixels = std::round(points / 72 * dotsPerInch);
  if (pixels < 1 || pixels > kWidestBitmap) {
    throw PageFailure(Trouble::TooLarge,
                      "no page is drawn at " + std::to_string(dotsPerInch) + " dots an inch");
  }
  return static_cast<int32_t>(pixels);
}

}  // namespace

Bitmap DrawBitmap(PageSize size, int32_t page, int32_t dotsPerInch, const DrawPage& draw) {
  Bitmap bitmap;
  bitmap.width = PixelsOf(size.width, dotsPerInch);
  bitmap.height = PixelsOf(size.height, dotsPerInch);
  if (int64_t{bitmap.width} * bitmap.height > kMostPixels) {
    throw PageFailure(Trouble::TooLarge,
                      "a page at " + std::to_string(dotsPerInch) + " dots an inch is too large");
  }
  const int stride = bitmap.width * 4;
  bitmap.pixels.assign(static_cast<size_t>(stride) * static_cast<size_t>(bitmap.height), 0xFF);
  CairoSurface surface(cairo_image_surface_create_for_data(bitmap.pixels.data(), CAIRO_FORMAT_RGB24,
                                                           bitmap.width, bitmap.height, stride));
  CairoContext context(cairo_create(surface.get()));
  cairo_scale(context.get(), bitmap.width / size.width, bitmap.height / size.height);
  draw(context.get(), page, Target::Bitmap);
  Require(cairo_status(context.get()));
  cairo_surface_finish(surface.get());
  return bitmap;
}

std::string WritePdf(const PdfRequest& request, const DrawPage& draw, Progress& progress) {
  const int32_t first = std::max(request.range.first, 1);
  const int32_t last =
      request.range.last == 0 ? request.pageCount : std::min(request.range.last, request.pageCount);
  if (first > last) {
    throw PageFailure(Trouble::NoSuchPage, "there is no page " + std::to_string(first));
  }
  std::string file;
  CairoSurface surface(
      cairo_pdf_surface_create_for_stream(Append, &file, request.size.width, request.size.height));
  SetProperty(surface.get(), CAIRO_PDF_METADATA_TITLE, request.properties.title);
  SetProperty(surface.get(), CAIRO_PDF_METADATA_AUTHOR, request.properties.author);
  // Without a date of its own the file would tell that of its making.
  cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_CREATE_DATE,
                                 request.properties.date.c_str());
  CairoContext context(cairo_create(surface.get()));
  for (int32_t page = first; page <= last; ++page) {
    const int64_t done = page - first;
    if (!progress.at(static_cast<int>(done * 100 / (last - first + 1)))) {
      throw PageFailure(Trouble::Stopped, "stopped");
    }
    cairo_save(context.get());
    draw(context.get(), page, Target::Pdf);
    cairo_restore(context.get());
    cairo_show_page(context.get());
    Require(cairo_status(context.get()));
  }
  context.reset();
  cairo_surface_finish(surface.get());
  Require(cairo_surface_status(surface.get()));
  return WithPdfId(std::move(file));
}

namespace {

// Links are placed on the page, whatever the context is scaled and moved by.
std::string RectangleOf(cairo_t* context, const cairo_rectangle_t& place) {
  double left = place.x;
  double top = place.y;
  double width = place.width;
  double height = place.height;
  cairo_user_to_device(context, &left, &top);
  cairo_user_to_device_distance(context, &width, &height);
  std::array<char, 4 * std::numeric_limits<double>::max_digits10 + 40> text = {};
  std::snprintf(text.data(), text.size(), " rect=[%.2f %.2f %.2f %.2f]", left, top, width, height);
  return text.data();
}

void AddLinkWith(cairo_t* context, const std::string& attributes) {
  cairo_tag_begin(context, CAIRO_TAG_LINK, attributes.c_str());
  cairo_tag_end(context, CAIRO_TAG_LINK);
}

}  // namespace

void AddLink(cairo_t* context, const std::string& address, const cairo_rectangle_t& place) {
  std::string uri;
  for (const char character : address) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte <= 0x20 || byte >= 0x7F || character == '\'' || character == '\\') {
      std::array<char, 4> escape = {};
      std::snprintf(escape.data(), escape.size(), "%%%02X", byte);
      uri += escape.data();
    } else {
      uri += character;
    }
  }
  AddLinkWith(context, "uri='" + uri + "'" + RectangleOf(context, place));
}

void AddPlace(cairo_t* context, size_t number, double top) {
  std::array<char, std::numeric_limits<double>::max_digits10 + 80> attributes = {};
  std::snprintf(attributes.data(), attributes.size(), "name='%zu' x=0 y=%.2f", number, top);
  cairo_tag_begin(context, CAIRO_TAG_DEST, attributes.data());
  cairo_tag_end(context, CAIRO_TAG_DEST);
}

void AddInnerLink(cairo_t* context, size_t number, const cairo_rectangle_t& place) {
  AddLinkWith(context, "dest='" + std::to_string(number) + "'" + RectangleOf(context, place));
}

}  // namespace tarn::pages
