#include <nlohmann/json.hpp>

#include "Commands.h"

namespace tarn::host {
namespace {

const char* FormatName(int32_t format) {
  switch (format) {
    case FormatPst:
      return "PST";
    case FormatMsg:
      return "MSG";
    case FormatEml:
      return "EML";
    default:
      return "unknown";
  }
}

const char* DocumentName(int32_t sibling) {
  switch (sibling) {
    case SiblingHtml:
      return "HTML";
    case SiblingRtf:
      return "RTF";
    case SiblingText:
      return "text";
    default:
      return "unknown";
  }
}

std::string AsJson(const std::string& file, const MessageAnswer& answer) {
  nlohmann::ordered_json json;
  json["file"] = file;
  json["format"] = FormatName(answer.format);
  json["messages"] = answer.messageCount;
  json["message"] = answer.messageNumber;
  json["document"] = DocumentName(answer.document.sibling);
  if (answer.pageCount > 0) {
    json["pages"] = answer.pageCount;
  } else {
    json["pages"] = nullptr;
  }
  json["attachments"] = answer.attachmentCount;
  return json.dump(2) + "\n";
}

std::string AsText(const MessageAnswer& answer) {
  const std::string pages =
      answer.pageCount > 0 ? std::to_string(answer.pageCount) : std::string("unknown");
  std::string text;
  text += std::string("Format:      ") + FormatName(answer.format) + "\n";
  text += "Messages:    " + std::to_string(answer.messageCount) + "\n";
  if (answer.format == FormatPst) {
    text += "Message:     " + std::to_string(answer.messageNumber) + "\n";
  }
  text += std::string("Document:    ") + DocumentName(answer.document.sibling) + "\n";
  text += "Pages:       " + pages + "\n";
  text += "Attachments: " + std::to_string(answer.attachmentCount) + "\n";
  return text;
}

}  // namespace

std::string InfoText(const FilterLibrary& filter, const InfoOptions& options) {
  MailFile mail(filter, options.message);
  const MessageAnswer answer = mail.read();
  return options.json ? AsJson(options.message.file, answer) : AsText(answer);
}

}  // namespace tarn::host
