#include "archive/commands/ShownItem.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "archive/commands/ItemDetails.h"
#include "archive/common/ItemFilter.h"
#include "archive/common/MomentText.h"
#include "archive/text/BodyText.h"
#include "archive/text/TerminalText.h"

namespace tarn::archive {
namespace {

constexpr size_t kGap = 2;

// A path in the directory of an organisation tells a reader nothing that the name does not.
bool IsDirectoryPath(const std::string& address) {
  return address.starts_with('/') && address.find('@') == std::string::npos;
}

std::string AddressText(const Address& address) {
  if (!address.name.empty() && IsDirectoryPath(address.address)) return address.name;
  if (address.name.empty() || address.name == address.address) return address.address;
  if (address.address.empty()) return address.name;
  return address.name + " <" + address.address + ">";
}

std::vector<std::string> AddressTexts(const std::vector<Address>& addresses) {
  std::vector<std::string> texts;
  for (const Address& address : addresses) texts.push_back(AddressText(address));
  return texts;
}

// Lines of "Label: value".
class HeaderBlock {
 public:
  explicit HeaderBlock(size_t width) : width_(width) {}

  void add(const std::string& label, const std::string& value) {
    if (!value.empty()) rows_.push_back({label, {value}});
  }
  // As many to a line as fit.
  void add(const std::string& label, std::vector<std::string> values) {
    if (!values.empty()) rows_.push_back({label, std::move(values)});
  }

  std::string text() const {
    size_t labels = 0;
    for (const Row& row : rows_) labels = std::max(labels, Columns(row.label));
    const size_t indent = labels + 1 + kGap;
    std::string text;
    for (const Row& row : rows_) {
      text += row.label + ":" + std::string(indent - Columns(row.label) - 1, ' ');
      text += joined(row.values, indent) + '\n';
    }
    return text;
  }

 private:
  struct Row {
    std::string label;
    std::vector<std::string> values;
  };

  std::string joined(const std::vector<std::string>& values, size_t indent) const {
    std::string text;
    size_t column = indent;
    for (const std::string& value : values) {
      const bool isLast = &value == &values.back();
      const std::string shown = HarmlessLine(value) + (isLast ? "" : ",");
      const size_t columns = Columns(shown);
      if (!text.empty() && column + 1 + columns > width_) {
        text += '\n' + std::string(indent, ' ');
        column = indent;
      } else if (!text.empty()) {
        text += ' ';
        ++column;
      }
      text += shown;
      column += columns;
    }
    return text;
  }

  size_t width_;
  std::vector<Row> rows_;
};

std::string HeaderText(Item& item, size_t width) {
  HeaderBlock block(width);
  const ItemFields& fields = item.fields(Detail::Envelope);
  block.add("From", AddressText(fields.from));
  if (fields.sender) block.add("Sender", AddressText(*fields.sender));
  block.add("To", AddressTexts(fields.to));
  block.add("Cc", AddressTexts(fields.cc));
  block.add("Bcc", AddressTexts(fields.bcc));
  if (fields.sent) block.add("Date", LongDate(*fields.sent));
  if (!fields.sent && fields.received) block.add("Received", LongDate(*fields.received));
  block.add("Subject", fields.subject);
  block.add("Folder", FolderText(*item.place().folder));
  for (const auto& [label, value] : DetailsOf(item)) block.add(label, value);
  return block.text();
}

std::string SizeText(uint64_t size) {
  constexpr std::array<const char*, 4> kUnits = {"KB", "MB", "GB", "TB"};
  if (size < 1000) return std::to_string(size) + (size == 1 ? " byte" : " bytes");
  double value = static_cast<double>(size) / 1000;
  size_t unit = 0;
  while (value >= 999.5 && unit + 1 < kUnits.size()) {
    value /= 1000;
    ++unit;
  }
  std::array<char, 32> text;
  std::snprintf(text.data(), text.size(), value < 9.95 ? "%.1f %s" : "%.0f %s", value,
                kUnits[unit]);
  return text.data();
}

// What an attachment is, where its name does not tell.
std::string KindText(const Attachment& attachment, const std::string& embeddedCommand) {
  switch (attachment.kind) {
    case AttachmentKind::Item:
      return "message: " + embeddedCommand;
    case AttachmentKind::Ole:
      return "embedded object";
    case AttachmentKind::Reference:
      return "elsewhere: " + attachment.target;
    case AttachmentKind::Signature:
      return "signature";
    case AttachmentKind::Data:
      break;
  }
  return attachment.isInline ? "in the text" : "";
}

std::string AttachmentLines(Item& item, const std::string& command) {
  const std::vector<Attachment>& attachments = item.attachments();
  if (attachments.empty()) return "";
  constexpr size_t kLongestName = 48;
  size_t names = 0;
  std::vector<std::string> shown;
  for (const Attachment& attachment : attachments) {
    const std::string name = attachment.name.empty() ? "(no name)" : attachment.name;
    shown.push_back(CutToColumns(HarmlessLine(name), kLongestName));
    names = std::max(names, Columns(shown.back()));
  }
  const size_t digits = std::to_string(attachments.size()).size();
  std::string text = "Attachments:\n";
  for (size_t i = 0; i < attachments.size(); ++i) {
    const Attachment& attachment = attachments[i];
    const std::string number = std::to_string(i + 1);
    text += std::string(kGap + digits - number.size(), ' ') + number;
    text += std::string(kGap, ' ') + shown[i] + std::string(names - Columns(shown[i]), ' ');
    const std::string embedded = command + " " + item.place().id + "/" + number;
    for (const std::string& part :
         {attachment.mediaType, attachment.size ? SizeText(*attachment.size) : std::string(),
          KindText(attachment, embedded),
          attachment.trouble ? "unreadable: " + attachment.trouble->reason : std::string()}) {
      if (!part.empty()) text += std::string(kGap, ' ') + HarmlessLine(part);
    }
    text += '\n';
  }
  return text;
}

}  // namespace

ShownItem ShowItem(Item& item, size_t width, const std::string& command) {
  ShownItem shown;
  shown.text = HeaderText(item, width);
  Bodies bodies = item.bodies();
  std::string body = HarmlessText(BestText(bodies, width));
  body.erase(body.find_last_not_of("\n ") + 1);
  const size_t blankEnd = body.find_first_not_of("\n ");
  if (blankEnd != std::string::npos) body.erase(0, body.rfind('\n', blankEnd) + 1);
  if (!body.empty()) body += '\n';
  for (const std::string& part : {body, AttachmentLines(item, command)}) {
    if (!part.empty() && !shown.text.empty()) shown.text += '\n';
    shown.text += part;
  }
  shown.troubles = std::move(bodies.troubles);
  return shown;
}

}  // namespace tarn::archive
