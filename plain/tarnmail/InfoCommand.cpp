#include <optional>
#include <string>
#include <string_view>

#include "Commands.h"
#include "console/Failure.h"
#include "console/Json.h"

namespace tarn::host {
namespace {

using Json = nlohmann::ordered_json;

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

// Of a store, the message that has no document: its count is known, and what it lacks.
struct Lack {
  int32_t messageCount;
  int32_t messageNumber;
  int32_t code;
  std::string reason;
};

Json FrontOfJson(const std::string& file, int32_t format, int32_t messages, int32_t message) {
  Json json;
  json["file"] = file;
  json["format"] = FormatName(format);
  json["messages"] = messages;
  json["message"] = message;
  return json;
}

// What is known of a message that has a document.
struct MailFacts {
  MessageAnswer answer;
  std::string whyNoPages;  // empty when there are pages, or nobody asked for them
};

std::string AsJson(const std::string& file, const MailFacts& known) {
  const MessageAnswer& answer = known.answer;
  Json json = FrontOfJson(file, answer.format, answer.messageCount, answer.messageNumber);
  json["document"] = DocumentName(answer.document.sibling);
  json["pages"] = answer.pageCount > 0 ? Json(answer.pageCount) : Json(nullptr);
  json["attachments"] = answer.attachmentCount;
  if (!known.whyNoPages.empty()) json["whyNoPages"] = known.whyNoPages;
  return JsonText(json);
}

std::string AsJson(const std::string& file, const Lack& lack) {
  Json json = FrontOfJson(file, FormatPst, lack.messageCount, lack.messageNumber);
  json["document"] = nullptr;
  json["pages"] = nullptr;
  json["attachments"] = nullptr;
  json["refusal"] = {{"code", lack.code}, {"reason", lack.reason}};
  return JsonText(json);
}

std::string AsText(const MailFacts& known) {
  const MessageAnswer& answer = known.answer;
  std::string pages =
      answer.pageCount > 0 ? std::to_string(answer.pageCount) : std::string("unknown");
  if (!known.whyNoPages.empty()) pages += ": " + known.whyNoPages;
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

std::string AsText(const Lack& lack) {
  return std::string("Format:      ") + FormatName(FormatPst) + "\n" +
         "Messages:    " + std::to_string(lack.messageCount) + "\n" +
         "Message:     " + std::to_string(lack.messageNumber) + "\n" +
         "Document:    none: " + lack.reason + "\n" + "Pages:       unknown\n" +
         "Attachments: unknown\n";
}

// Nothing when there is more to say than that the message has no document.
std::optional<Lack> LackOf(const MailFile& mail, const MessageChoice& choice,
                           const Refusal& refusal) {
  if (mail.format() != MailFormat::Store || refusal.code() != StatusNotSupported) {
    return std::nullopt;
  }
  const std::optional<int32_t> count = mail.countMessages();
  if (!count) return std::nullopt;
  return Lack{*count, choice.messageNumber, refusal.code(), refusal.reason()};
}

// A document that cannot be laid out keeps nothing else from being told; what the machine lacks is
// another matter.
MailFacts FactsOf(const Workplace& at, const MailFile& mail, const InfoOptions& options) {
  if (!options.pages) return {mail.read(), {}};
  try {
    return {LaidOutAnswer(at, mail, options), {}};
  } catch (const Refusal&) {
    throw;
  } catch (const Failure& failure) {
    if (failure.status() != ExitStatus::Failed) throw;
    const std::string_view line = failure.what();
    const std::string subject = mail.name() + ": ";
    return {mail.read(),
            std::string(line.starts_with(subject) ? line.substr(subject.size()) : line)};
  }
}

template <typename Answer>
std::string Text(const InfoOptions& options, const Answer& answer) {
  return options.json ? AsJson(options.message.file, answer) : AsText(answer);
}

}  // namespace

std::string InfoText(const Workplace& at, const InfoOptions& options) {
  const MailFile mail(at.filter, options.message, at.folder);
  try {
    return Text(options, FactsOf(at, mail, options));
  } catch (const Refusal& refusal) {
    const std::optional<Lack> lack = LackOf(mail, options.message, refusal);
    if (!lack) throw;
    return Text(options, *lack);
  }
}

}  // namespace tarn::host
