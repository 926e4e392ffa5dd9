// EnginePages.h - the engine in a folder of the test program's own, and what is asked of its pages.
#ifndef TARN_TESTS_SIBLINGS_OFFICE_ENGINEPAGES_H
#define TARN_TESTS_SIBLINGS_OFFICE_ENGINEPAGES_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "siblings/layout/Engine.h"

namespace tarn::test {

// The folder that the engine works in; removed when the tests have run.
std::filesystem::path EngineFolder();

pages::Engine& TheEngine();

std::unique_ptr<pages::Layout> LayOut(std::string_view rtf, pages::Paper paper = pages::Paper::A4);

// What the engine says of a document that it refuses; nothing when it does not.
std::optional<pages::Trouble> TroubleWith(std::string_view rtf);

// A document in Arial of ten points with that body.
std::string Rtf(std::string_view body);

pages::Bitmap Draw(pages::Layout& layout, int32_t page = 1, int32_t dotsPerInch = 96);
std::string Pdf(pages::Layout& layout, pages::PageRange range = {},
                const pages::PdfProperties& properties = {});

// Text of a PDF as pdftotext reads it, line ends and page ends as blanks, runs of blanks as one.
std::string TextOf(const std::string& pdf);
// The first page of a PDF as pdftoppm draws it.
pages::Bitmap Rendered(const std::string& pdf, int32_t dotsPerInch);

// How many pixels have that colour, 0xRRGGBB.
int64_t Count(const pages::Bitmap& bitmap, uint32_t colour);

}  // namespace tarn::test

#endif
