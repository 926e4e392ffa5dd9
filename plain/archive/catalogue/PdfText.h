// PdfText.h - the text of PDF files, by the program pdftotext where it is installed. One folder a
// system implements it.
#ifndef TARN_ARCHIVE_PDFTEXT_H
#define TARN_ARCHIVE_PDFTEXT_H

#include <chrono>
#include <string>

#include "archive/model/ByteSource.h"

namespace tarn::archive {

// Whether the program is there, as the first question found it.
bool CanReadPdf();

// UTF-8, at most kMostCatalogueText bytes; empty where the program gives none or cannot read the
// file. It runs as a process of its own with limits on time and memory, and opens no connection.
// Larger files than kMostPdf are not read, and none takes longer than `time` by the clock.
inline constexpr size_t kMostPdf = size_t{64} << 20;
inline constexpr std::chrono::milliseconds kMostPdfTime{60'000};
std::string TextOfPdf(ByteSource& bytes, std::chrono::milliseconds time = kMostPdfTime);

}  // namespace tarn::archive

#endif
