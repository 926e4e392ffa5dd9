// ItemTexts.h - what can be searched in an item: its text, and that of its attachments.
#ifndef TARN_ARCHIVE_ITEMTEXTS_H
#define TARN_ARCHIVE_ITEMTEXTS_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

#include "archive/catalogue/CatalogueItem.h"
#include "archive/catalogue/PdfText.h"
#include "archive/model/Item.h"

namespace tarn::archive {

// Whether text can be had from attachments of this kind: plain text in its forms, HTML, RTF, and
// PDF where the program pdftotext is installed. Told by the type, else by the end of the name.
bool HasText(const Attachment& attachment);

// Whether the name ends as those of PDFs do.
bool IsNamedPdf(std::string_view name);

// The text, UTF-8, at most kMostCatalogueText bytes; empty where none can be had. Reads no more of
// the bytes than it takes for that. PDF is read by a process of its own with limits on time and
// memory.
std::string TextOfAttachment(const Attachment& attachment, ByteSource& bytes,
                             std::chrono::milliseconds time = kMostPdfTime);

// How long the texts of an item and of those embedded in it may take together, and what is called
// after each of them.
struct TextTime {
  std::chrono::milliseconds left = std::chrono::hours(24);
  std::function<void()> beat = [] {};
};

// The body and the attachments of an item, into the record: every attachment by name and place, and
// with its text where HasText(). Embedded items are items of their own, and only named here. What
// cannot be read is left out; the item's writers tell of it. Nothing more is read when no time is
// left.
void TakeTexts(Item& item, CatalogueItem& record, TextTime& time);

}  // namespace tarn::archive

#endif
