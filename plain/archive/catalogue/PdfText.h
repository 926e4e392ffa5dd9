// PdfText.h - the text of PDF files, by the program pdftotext where it is installed. One folder a
// system implements it.
#ifndef TARN_ARCHIVE_PDFTEXT_H
#define TARN_ARCHIVE_PDFTEXT_H

#include <string>

#include "archive/model/ByteSource.h"

namespace tarn::archive {

// Whether the program is there, as the first question found it.
bool CanReadPdf();

// UTF-8, at most kMostCatalogueText bytes; empty where the program gives none or cannot read the
// file. It runs as a process of its own with limits on time and memory, and opens no connection.
// Larger files than kMostPdf are not read.
inline constexpr size_t kMostPdf = size_t{64} << 20;
std::string TextOfPdf(ByteSource& bytes);

}  // namespace tarn::archive

#endif
