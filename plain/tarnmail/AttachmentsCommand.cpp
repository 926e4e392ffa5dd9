#include <optional>
#include <vector>

#include "Commands.h"
#include "Table.h"
#include "console/Json.h"
#include "console/Text.h"

namespace tarn::host {
namespace {

using Json = nlohmann::ordered_json;

template <typename Value>
Json OrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

std::optional<std::string> TimeText(const std::optional<int64_t>& seconds) {
  return seconds ? LocalTimeText(*seconds) : std::nullopt;
}

std::string TextCell(const std::optional<std::string>& text) {
  return Printable(text.value_or(""));
}

// A time that no calendar has shows as its number of seconds.
std::string TimeCell(const std::optional<int64_t>& seconds) {
  if (!seconds) return "";
  return LocalTimeText(*seconds).value_or(std::to_string(*seconds) + " s");
}

std::vector<std::string> PropertyLines(
    const std::vector<std::pair<std::string, std::string>>& properties) {
  std::vector<std::string> lines;
  lines.reserve(properties.size());
  for (const auto& [name, value] : properties) {
    lines.push_back(Printable(name) + ": " + Printable(value));
  }
  return lines;
}

// What has no column of its own comes below its row, so that nothing is left out.
std::string AsTable(const std::vector<Attachment>& attachments) {
  if (attachments.empty()) return "No attachments\n";
  Column number = {"No.", true, {}};
  Column name = {"Name", false, {}};
  Column size = {"Size", true, {}};
  Column type = {"Type", false, {}};
  Column disposition = {"Disposition", false, {}};
  Column contentId = {"Content ID", false, {}};
  Column created = {"Created", false, {}};
  Column modified = {"Modified", false, {}};
  Column description = {"Description", false, {}};
  std::vector<std::vector<std::string>> notes;
  for (const Attachment& attachment : attachments) {
    number.cells.push_back(std::to_string(attachment.number));
    name.cells.push_back(TextCell(attachment.name));
    size.cells.push_back(attachment.size ? std::to_string(*attachment.size) : "");
    type.cells.push_back(TextCell(attachment.mediaType()));
    disposition.cells.push_back(TextCell(attachment.disposition()));
    contentId.cells.push_back(TextCell(attachment.contentId()));
    created.cells.push_back(TimeCell(attachment.created));
    modified.cells.push_back(TimeCell(attachment.modified));
    description.cells.push_back(TextCell(attachment.description));
    notes.push_back(PropertyLines(attachment.otherProperties()));
  }
  return FormatTable(
      {number, name, size, type, disposition, contentId, created, modified, description}, notes);
}

std::string AsJson(const std::string& file, const std::vector<Attachment>& attachments) {
  Json list = Json::array();
  for (const Attachment& attachment : attachments) {
    Json properties = Json::array();
    for (const auto& [name, value] : attachment.properties) {
      properties.push_back({{"name", name}, {"value", value}});
    }
    Json item;
    item["number"] = attachment.number;
    item["name"] = OrNull(attachment.name);
    item["description"] = OrNull(attachment.description);
    item["size"] = OrNull(attachment.size);
    item["created"] = OrNull(TimeText(attachment.created));
    item["createdSeconds"] = OrNull(attachment.created);
    item["modified"] = OrNull(TimeText(attachment.modified));
    item["modifiedSeconds"] = OrNull(attachment.modified);
    item["properties"] = properties;
    list.push_back(item);
  }
  Json json;
  json["file"] = file;
  json["attachments"] = list;
  return JsonText(json);
}

}  // namespace

std::string AttachmentsText(const Workplace& at, const AttachmentsOptions& options) {
  const MailFile mail(at.filter, options.message, at.folder);
  const std::vector<Attachment> attachments = mail.attachments();
  return options.json ? AsJson(options.message.file, attachments) : AsTable(attachments);
}

}  // namespace tarn::host
