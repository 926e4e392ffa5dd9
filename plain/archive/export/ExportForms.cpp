#include "archive/export/ExportForms.h"

#include <chrono>

namespace tarn::archive {

FormWriter WithoutPaths(Written (*write)(Item&, ByteSink&)) {
  return [write](Item& item, const AttachmentPaths&, ByteSink& sink) { return write(item, sink); };
}

const std::vector<FormFile>& FormFiles() {
  static const std::vector<FormFile> kForms = {
      {ExportForm::Html, "html", "message.html", WriteHtml},
      {ExportForm::Text, "text", "message.txt", WithoutPaths(WriteText)},
      {ExportForm::Eml, "eml", "message.eml", WithoutPaths(WriteEml)},
      {ExportForm::Mbox, "mbox", "", WithoutPaths(WriteMbox)},
      {ExportForm::Json, "json", "message.json", WithoutPaths(WriteJson)},
      {ExportForm::Pdf, "pdf", "message.pdf", nullptr},
  };
  return kForms;
}

std::string_view NameOf(ExportForm form) {
  for (const FormFile& file : FormFiles()) {
    if (file.form == form) return file.role;
  }
  return {};
}

std::vector<ExportForm> AllForms() {
  std::vector<ExportForm> forms;
  for (const FormFile& file : FormFiles()) forms.push_back(file.form);
  return forms;
}

pages::HelperOptions HelpersOf(const PageChoices& choices) {
  pages::HelperOptions options;
  options.programs = choices.helpers;
  options.sandbox = choices.sandbox;
  options.limits.timePerDocument = std::chrono::seconds(choices.seconds);
  return options;
}

}  // namespace tarn::archive
