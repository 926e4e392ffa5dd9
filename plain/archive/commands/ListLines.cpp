#include "archive/commands/ListLines.h"

#include <algorithm>

#include "archive/commands/ItemKeys.h"
#include "archive/common/ItemFilter.h"
#include "archive/common/JsonWriter.h"
#include "archive/sources/OpenSource.h"
#include "archive/text/TerminalText.h"

namespace tarn::archive {
namespace {

// The number where it is known; else whether there are any.
std::string AttachmentsText(const ItemFields& fields) {
  if (fields.attachmentCount != 0) return std::to_string(fields.attachmentCount);
  return fields.hasAttachments ? "+" : "0";
}

// Keeps the text of a folder that many items are in.
class FolderTexts {
 public:
  const std::string& of(const std::shared_ptr<const std::vector<std::string>>& folder) {
    if (folder != folder_) {
      folder_ = folder;
      text_ = HarmlessLine(FolderText(*folder));
    }
    return text_;
  }

 private:
  std::shared_ptr<const std::vector<std::string>> folder_;
  std::string text_;
};

class JsonListLines final : public ListLines {
 public:
  std::string lineOf(Item& item, const ListedSource& from) override {
    json_.clear();
    json_.openObject();
    PutListKeys(item, from.source.name, json_);
    json_.closeObject();
    return std::string(json_.line()) + "\n";
  }

 private:
  JsonWriter json_;
};

class TabbedListLines final : public ListLines {
 public:
  std::string lineOf(Item& item, const ListedSource& from) override {
    const ItemPlace& place = item.place();
    const ItemFields& fields = item.fields(Detail::Headline);
    std::string line = HarmlessLine(place.id);
    for (const std::string& cell :
         {folders_.of(place.folder), DateText(fields), HarmlessLine(SenderText(fields.from)),
          HarmlessLine(fields.subject), AttachmentsText(fields)}) {
      line += '\t';
      line += cell;
    }
    if (from.isOneOfSeveral) line += '\t' + HarmlessLine(from.source.name);
    return line + '\n';
  }

 private:
  FolderTexts folders_;
};

// Widths are settled before any item is known, so that the first line can come at once.
class AlignedListLines final : public ListLines {
 public:
  explicit AlignedListLines(size_t width) : width_(width) {
    const size_t fixed = kId + kDate + kAttachments + 5 * kGap;
    const size_t rest = width > fixed ? width - fixed : 0;
    folder_ = std::clamp<size_t>(rest / 4, 6, 24);
    from_ = std::clamp<size_t>(rest * 3 / 10, 8, 28);
  }

  std::string lineOf(Item& item, const ListedSource& from) override {
    std::string lines;
    if (!hasTitles_) {
      lines = line("ID", "Folder", "Date", "From", "Subject", "Att.");
      hasTitles_ = true;
    }
    const bool isAlone = HoldsOneItem(from.source.kind);
    if (from.isOneOfSeveral && !isAlone && from.source.name != headed_) {
      headed_ = from.source.name;
      lines += HarmlessLine(headed_) + ":\n";
    }
    const ItemPlace& place = item.place();
    const ItemFields& fields = item.fields(Detail::Headline);
    std::string folder = folders_.of(place.folder);
    if (from.isOneOfSeveral && isAlone && folder.empty()) folder = HarmlessLine(from.source.name);
    const std::string attachments = AttachmentsText(fields);
    return lines + line(HarmlessLine(place.id), folder, DateText(fields),
                        HarmlessLine(SenderText(fields.from)), HarmlessLine(fields.subject),
                        attachments == "0" ? "" : attachments);
  }

 private:
  static constexpr size_t kId = 8;
  static constexpr size_t kDate = 16;
  static constexpr size_t kAttachments = 4;
  static constexpr size_t kGap = 2;
  static constexpr size_t kLeastSubject = 8;

  static std::string padded(const std::string& text, size_t columns) {
    const size_t taken = Columns(text);
    return text + std::string(columns > taken ? columns - taken : 0, ' ');
  }

  // A long id, which would be of no use cut, takes from the subject's room.
  std::string line(const std::string& id, const std::string& folder, const std::string& date,
                   const std::string& from, const std::string& subject,
                   const std::string& attachments) const {
    const std::string gap(kGap, ' ');
    std::string text = padded(id, kId) + gap + padded(EndWithinColumns(folder, folder_), folder_) +
                       gap + padded(date, kDate) + gap + padded(CutToColumns(from, from_), from_) +
                       gap;
    const size_t taken = Columns(text) + kGap + kAttachments;
    const size_t room = std::max(width_ > taken ? width_ - taken : 0, kLeastSubject);
    const std::string shown = CutToColumns(subject, room);
    if (attachments.empty()) return text + shown + '\n';
    return text + padded(shown, room) + gap +
           std::string(kAttachments - std::min(kAttachments, attachments.size()), ' ') +
           attachments + '\n';
  }

  size_t width_;
  size_t folder_;
  size_t from_;
  bool hasTitles_ = false;
  std::string headed_;
  FolderTexts folders_;
};

}  // namespace

std::unique_ptr<ListLines> JsonLines() { return std::make_unique<JsonListLines>(); }

std::unique_ptr<ListLines> TabbedLines() { return std::make_unique<TabbedListLines>(); }

std::unique_ptr<ListLines> AlignedLines(size_t width) {
  return std::make_unique<AlignedListLines>(width);
}

std::string EndWithinColumns(const std::string& text, size_t columns) {
  if (columns == 0) return "";
  if (Columns(text) <= columns) return text;
  // No character takes more bytes than this for each column that it needs, marks apart.
  const size_t mostBytes = columns * 16;
  size_t start = text.size() > mostBytes ? text.size() - mostBytes : 0;
  const auto isInside = [&](size_t at) {
    return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
  };
  while (isInside(start)) ++start;
  while (Columns(std::string_view(text).substr(start)) > columns - 1) {
    ++start;
    while (isInside(start)) ++start;
  }
  return "\u2026" + text.substr(start);
}

}  // namespace tarn::archive
