// FinishedPdf.h - a PDF that says what it should, and nothing of when and where it was made.
#ifndef TARN_SIBLINGS_OFFICE_FINISHEDPDF_H
#define TARN_SIBLINGS_OFFICE_FINISHEDPDF_H

#include <optional>
#include <string>
#include <string_view>

#include "siblings/Pages.h"

namespace tarn::pages {

// The document with the properties as its only ones, and with an id made from its content: the same
// pages with the same properties give the same bytes. Trouble::BadDocument when it is no PDF.
std::string FinishedPdf(const std::string& pdf, const PdfProperties& properties);

// "2024-05-01T12:34:56+02:00" as "D:20240501123456+02'00'"; "Z" or no offset at the end is kept as
// such. Nothing for a date that is not written so.
std::optional<std::string> PdfDate(std::string_view date);

}  // namespace tarn::pages

#endif
