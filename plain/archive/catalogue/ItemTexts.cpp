#include "archive/catalogue/ItemTexts.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "archive/catalogue/Catalogue.h"
#include "archive/text/BodyText.h"

namespace tarn::archive {
namespace {

enum class TextForm : uint8_t { None, Plain, Html, Rtf, Pdf };

struct NamedForm {
  std::string_view name;
  TextForm form;
};

// Types that are not "text/...".
constexpr NamedForm kTypes[] = {
    {"application/ics", TextForm::Plain},  {"application/javascript", TextForm::Plain},
    {"application/json", TextForm::Plain}, {"application/pdf", TextForm::Pdf},
    {"application/rtf", TextForm::Rtf},    {"application/sql", TextForm::Plain},
    {"application/x-pdf", TextForm::Pdf},  {"application/xhtml+xml", TextForm::Html},
    {"application/xml", TextForm::Plain},  {"application/yaml", TextForm::Plain},
    {"text/html", TextForm::Html},         {"text/richtext", TextForm::Rtf},
    {"text/rtf", TextForm::Rtf},
};

constexpr NamedForm kExtensions[] = {
    {"asc", TextForm::Plain}, {"csv", TextForm::Plain},  {"htm", TextForm::Html},
    {"html", TextForm::Html}, {"ics", TextForm::Plain},  {"json", TextForm::Plain},
    {"log", TextForm::Plain}, {"md", TextForm::Plain},   {"pdf", TextForm::Pdf},
    {"rtf", TextForm::Rtf},   {"sql", TextForm::Plain},  {"tsv", TextForm::Plain},
    {"txt", TextForm::Plain}, {"vcf", TextForm::Plain},  {"xhtml", TextForm::Html},
    {"xml", TextForm::Plain}, {"yaml", TextForm::Plain}, {"yml", TextForm::Plain},
};

template <size_t Count>
TextForm FormOf(const NamedForm (&forms)[Count], std::string_view name) {
  const NamedForm* const found = std::find_if(
      std::begin(forms), std::end(forms), [&](const NamedForm& each) { return each.name == name; });
  return found == std::end(forms) ? TextForm::None : found->form;
}

std::string ExtensionOf(std::string_view name) {
  const size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return {};
  std::string extension(name.substr(dot + 1));
  for (char& letter : extension) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return extension;
}

TextForm FormOf(const Attachment& attachment) {
  if (attachment.kind != AttachmentKind::Data || attachment.trouble) return TextForm::None;
  const std::string_view type = attachment.mediaType;
  TextForm form = FormOf(kTypes, type);
  if (form == TextForm::None && type.starts_with("text/")) form = TextForm::Plain;
  // What says nothing, or anything at all.
  if (type.empty() || type == "application/octet-stream") {
    form = FormOf(kExtensions, ExtensionOf(attachment.name));
  }
  return form == TextForm::Pdf && !CanReadPdf() ? TextForm::None : form;
}

// As many as the limit, and what there is where the source breaks off.
std::string Beginning(ByteSource& bytes, size_t limit) {
  std::string beginning;
  std::array<char, 65536> room;
  while (beginning.size() < limit) {
    const Outcome<size_t> got =
        bytes.read(std::span(room).first(std::min(room.size(), limit - beginning.size())));
    if (!got || *got == 0) break;
    beginning.append(room.data(), *got);
  }
  return beginning;
}

// Marks take more room than the text between them.
constexpr size_t kMostMarkedText = 4 * kMostCatalogueText;
// Lines are as long as they are.
constexpr size_t kWidth = size_t{1} << 20;

std::string TextOf(TextForm form, ByteSource& bytes, std::chrono::milliseconds time) {
  switch (form) {
    case TextForm::Plain:
      return Utf8Of(Beginning(bytes, kMostCatalogueText), "");
    case TextForm::Html:
      return TextOfHtml({Beginning(bytes, kMostMarkedText), ""}, kWidth);
    case TextForm::Rtf:
      return TextOfRtf(Beginning(bytes, kMostMarkedText));
    case TextForm::Pdf:
      return TextOfPdf(bytes, time);
    case TextForm::None:
      break;
  }
  return {};
}

}  // namespace

bool HasText(const Attachment& attachment) { return FormOf(attachment) != TextForm::None; }

bool IsNamedPdf(std::string_view name) { return ExtensionOf(name) == "pdf"; }

std::string TextOfAttachment(const Attachment& attachment, ByteSource& bytes,
                             std::chrono::milliseconds time) {
  std::string text = TextOf(FormOf(attachment), bytes, time);
  text.resize(CutCatalogueText(text).size());
  return text;
}

void TakeTexts(Item& item, CatalogueItem& record, TextTime& time) {
  time.beat();
  record.body = BestText(item.bodies(), kWidth);
  record.body.resize(CutCatalogueText(record.body).size());
  record.attachments.clear();
  size_t total = record.body.size();
  const std::vector<Attachment>& attachments = item.attachments();
  for (size_t index = 0; index < attachments.size(); ++index) {
    const Attachment& attachment = attachments[index];
    AttachmentText& entry = record.attachments.emplace_back();
    entry.index = index + 1;
    entry.name = attachment.name;
    if (!HasText(attachment) || total + kMostCatalogueText > kMostItemText) continue;
    if (time.left.count() <= 0) continue;
    const auto begin = std::chrono::steady_clock::now();
    Outcome<std::unique_ptr<ByteSource>> bytes = item.open(index);
    if (bytes) entry.text = TextOfAttachment(attachment, **bytes, time.left);
    time.left -= std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - begin);
    time.beat();
    total += entry.text.size();
  }
}

}  // namespace tarn::archive
