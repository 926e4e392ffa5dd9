// PdfId.h - the id of a PDF, made from its content.
//
// Cairo ends a file with a table of places and a trailer (ISO 32000-1, 7.5.5), and gives it no id:
//
//   xref ... trailer << /Size 12 /Root 11 0 R /Info 10 0 R >> startxref 4711 %%EOF
//
// Nothing after the trailer's start has a place in the table, so that the id goes in there.
#ifndef TARN_SIBLINGS_LAYOUT_PDFID_H
#define TARN_SIBLINGS_LAYOUT_PDFID_H

#include <string>

namespace tarn::pages {

// The file with both parts of its id (ISO 32000-1, 14.4): the MD5 of all its bytes. A file without
// such a trailer is returned as it was.
std::string WithPdfId(std::string file);

}  // namespace tarn::pages

#endif
