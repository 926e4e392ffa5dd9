// ExportForms.h - what items become: the forms of an export, their names and who writes them.
#ifndef TARN_ARCHIVE_EXPORTFORMS_H
#define TARN_ARCHIVE_EXPORTFORMS_H

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "archive/pdf/PageLayout.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {

enum class ExportForm : uint8_t { Html, Text, Eml, Mbox, Json, Pdf };

// "html" and so on; empty beyond the last.
std::string_view NameOf(ExportForm form);
// Those that can be written, in the order of their values.
std::vector<ExportForm> AllForms();

// How pages are made.
struct PageChoices {
  std::string helpers;  // the folder of the helper programs
  pages::Paper paper = pages::Paper::A4;
  bool sandbox = true;    // of the helpers
  uint64_t seconds = 50;  // for the layout of an item, and again for its PDF
};

struct ExportChoices {
  std::set<ExportForm> forms;
  bool attachments = true;  // as files beside
  bool onePdf = false;      // the PDFs of a folder are one file
  bool catalogue = true;    // what is to be found by words is told
  PageChoices pages;        // of Pdf
};

pages::HelperOptions HelpersOf(const PageChoices& choices);

// How the file of a form is written; empty for what is written otherwise.
using FormWriter = std::function<Written(Item&, const AttachmentPaths&, ByteSink&)>;
FormWriter WithoutPaths(Written (*write)(Item&, ByteSink&));

struct FormFile {
  ExportForm form;
  const char* role;  // in the manifest, and its name
  const char* file;  // empty where it has none of its own
  FormWriter write;
};

// In the order of the forms.
const std::vector<FormFile>& FormFiles();

}  // namespace tarn::archive

#endif
