#include "archive/commands/ShownItem.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>

#include "archive/common/ItemFilter.h"
#include "archive/common/MomentText.h"
#include "archive/text/BodyText.h"
#include "archive/text/TerminalText.h"
#include "archive/writers/ItemDetails.h"
#include "archive/writers/ItemText.h"

namespace tarn::archive {
namespace {

constexpr size_t kGap = 2;

std::vector<std::string> AddressTexts(const std::vector<Address>& addresses) {
  std::vector<std::string> texts;
  texts.reserve(addresses.size());
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
  for (const auto& [label, value] : DetailsOf(item, LongDate)) block.add(label, value);
  return block.text();
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

// The sizes of an item's attachments. Where the source does not tell one, as with the encoded parts
// of mails, the bytes are counted: of all attachments together so many that nobody waits for it.
class CountedSizes {
 public:
  std::optional<uint64_t> of(Item& item, size_t index) {
    const Attachment& attachment = item.attachments()[index];
    if (attachment.size || attachment.trouble || attachment.kind == AttachmentKind::Item ||
        attachment.kind == AttachmentKind::Reference) {
      return attachment.size;
    }
    const Outcome<std::unique_ptr<ByteSource>> bytes = item.open(index);
    if (!bytes) return std::nullopt;
    uint64_t size = 0;
    std::array<char, 16384> buffer;
    while (left_ != 0) {
      const Outcome<size_t> count = (*bytes)->read(buffer);
      if (!count) return std::nullopt;
      if (*count == 0) return size;
      size += *count;
      left_ -= std::min<uint64_t>(left_, *count);
    }
    return std::nullopt;
  }

 private:
  uint64_t left_ = uint64_t{256} << 20;
};

// The text, with blanks after it to so many columns.
std::string Padded(const std::string& text, size_t columns) {
  return text + std::string(columns - std::min(columns, Columns(text)), ' ');
}

std::string AttachmentLines(Item& item, const std::string& command) {
  const std::vector<Attachment>& attachments = item.attachments();
  if (attachments.empty()) return "";
  constexpr size_t kLongestName = 48;
  constexpr size_t kLongestType = 40;
  std::vector<std::string> names;
  std::vector<std::string> types;
  size_t widestName = 0;
  size_t widestType = 0;
  for (const Attachment& attachment : attachments) {
    const std::string name = attachment.name.empty() ? "(no name)" : attachment.name;
    names.push_back(CutToColumns(HarmlessLine(name), kLongestName));
    types.push_back(CutToColumns(HarmlessLine(attachment.mediaType), kLongestType));
    widestName = std::max(widestName, Columns(names.back()));
    widestType = std::max(widestType, Columns(types.back()));
  }
  const size_t digits = std::to_string(attachments.size()).size();
  const std::string gap(kGap, ' ');
  std::string text = "Attachments:\n";
  const std::string beforeNumber = command + " " + item.place().id + "/";
  CountedSizes sizes;
  for (size_t i = 0; i < attachments.size(); ++i) {
    const Attachment& attachment = attachments[i];
    const std::string number = std::to_string(i + 1);
    const std::optional<uint64_t> size = sizes.of(item, i);
    std::string line(digits - number.size(), ' ');
    line += number + gap;
    line += Padded(names[i], widestName);
    if (widestType != 0) line += gap + Padded(types[i], widestType);
    for (const std::string& part :
         {size ? SizeText(*size) : std::string(), KindText(attachment, beforeNumber + number),
          attachment.trouble ? "unreadable: " + attachment.trouble->reason : std::string()}) {
      if (!part.empty()) line += gap + HarmlessLine(part);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += gap + line + '\n';
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
