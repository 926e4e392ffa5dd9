#include "archive/commands/SearchLines.h"

#include <algorithm>

#include "archive/commands/ItemKeys.h"
#include "archive/common/ItemFilter.h"
#include "archive/common/JsonWriter.h"
#include "archive/text/TerminalText.h"

namespace tarn::archive {
namespace {

constexpr size_t kUsualSnippet = 200;

// The file that shows the item best.
std::string PathOf(const FoundItem& found) {
  const std::vector<ExportedFile>& files = found.record.files;
  for (const char* const role : {"html", "text", "pdf", "eml", ""}) {
    const auto file = std::find_if(files.begin(), files.end(), [role](const ExportedFile& each) {
      return *role == '\0' ? each.role != "attachment" : each.role == role;
    });
    if (file != files.end()) return found.directory + '/' + file->path;
  }
  return {};
}

std::string FieldName(FoundField field) {
  constexpr const char* kNames[] = {"subject", "from", "to", "body", "attachment"};
  return kNames[static_cast<size_t>(field)];
}

// "body, attachment plan.txt".
std::string WhereText(const std::vector<FoundPlace>& places) {
  std::string where;
  for (const FoundPlace& place : places) {
    if (!where.empty()) where += ", ";
    where += FieldName(place.field);
    if (place.field == FoundField::Attachment) {
      where += ' ' + (place.name.empty() ? std::to_string(place.attachment) : place.name);
    }
  }
  return where;
}

// The piece to show beside the subject: of the text, else of an attachment.
const Snippet* ShownSnippet(const std::vector<FoundPlace>& places) {
  for (const FoundField field : {FoundField::Body, FoundField::Attachment}) {
    for (const FoundPlace& place : places) {
      if (place.field == field && !place.snippet.text.empty()) return &place.snippet;
    }
  }
  return nullptr;
}

class JsonFoundLines final : public SearchLines {
 public:
  std::string linesOf(const FoundItem& found) override {
    json_.clear();
    json_.openObject();
    PutListKeys(found.item, found.record.source, json_);
    text("status", std::string(NameOf(found.record.status)));
    text("path", PathOf(found));
    json_.name("found");
    json_.openArray();
    for (const FoundPlace& place : found.places) put(place);
    json_.closeArray();
    json_.closeObject();
    return std::string(json_.line()) + '\n';
  }

  size_t snippetLength() const override { return kUsualSnippet; }

 private:
  void text(const char* name, const std::string& value) {
    json_.name(name);
    json_.text(value);
  }

  void put(const FoundPlace& place) {
    json_.openObject();
    text("where", FieldName(place.field));
    if (place.field == FoundField::Attachment) {
      text("name", place.name);
      json_.name("index");
      json_.number(place.attachment);
    }
    if (!place.snippet.text.empty()) {
      text("text", place.snippet.text);
      json_.name("marks");
      json_.openArray();
      for (const TextSpan& mark : place.snippet.marks) put(mark, place.snippet.text);
      json_.closeArray();
    }
    json_.closeObject();
  }

  // Counted in characters, as those who read JSON have them.
  void put(const TextSpan& mark, const std::string& text) {
    json_.openArray();
    for (const size_t place : {mark.begin, mark.end}) {
      json_.number(static_cast<uint64_t>(
          std::count_if(text.begin(), text.begin() + static_cast<ptrdiff_t>(place),
                        [](char byte) { return (byte & 0xC0) != 0x80; })));
    }
    json_.closeArray();
  }

  JsonWriter json_;
};

class TabbedFoundLines final : public SearchLines {
 public:
  std::string linesOf(const FoundItem& found) override {
    const ItemFields& fields = found.record.fields;
    const Snippet* const snippet = ShownSnippet(found.places);
    std::string line = HarmlessLine(found.record.id);
    for (const std::string& cell :
         {FolderText(found.record.folder), DateText(fields), SenderText(fields.from),
          fields.subject, WhereText(found.places), snippet == nullptr ? "" : snippet->text,
          PathOf(found)}) {
      line += '\t' + HarmlessLine(cell);
    }
    return line + '\n';
  }

  size_t snippetLength() const override { return kUsualSnippet; }
};

class TerminalFoundLines final : public SearchLines {
 public:
  explicit TerminalFoundLines(size_t width) : width_(std::max<size_t>(width, 20)) {}

  std::string linesOf(const FoundItem& found) override {
    const ItemFields& fields = found.record.fields;
    std::string lines;
    if (!isFirst_) lines += '\n';
    isFirst_ = false;
    const auto subject =
        std::find_if(found.places.begin(), found.places.end(),
                     [](const FoundPlace& place) { return place.field == FoundField::Subject; });
    lines += subject == found.places.end() ? cut(HarmlessLine(fields.subject), 0) + '\n'
                                           : marked(subject->snippet) + '\n';
    std::string about = DateText(fields);
    about += (about.empty() ? "" : "  ") + HarmlessLine(SenderText(fields.from));
    const std::string folder = HarmlessLine(FolderText(found.record.folder));
    if (!folder.empty()) about += "  " + folder;
    lines += indented(about);
    if (found.parentSubject) {
      lines += indented("attached to: " + HarmlessLine(*found.parentSubject));
    }
    lines += indented("in " + HarmlessLine(WhereText(found.places)));
    if (const Snippet* const snippet = ShownSnippet(found.places)) {
      lines += std::string(kIndent, ' ') + marked(*snippet) + '\n';
    }
    // Whole, so that it can be taken and opened.
    return lines + std::string(kIndent, ' ') + HarmlessLine(PathOf(found)) + '\n';
  }

  // No character takes more columns than bytes.
  size_t snippetLength() const override { return std::min(width_ - kIndent - 2, kUsualSnippet); }

 private:
  static constexpr size_t kIndent = 4;

  std::string cut(const std::string& line, size_t indent) const {
    return CutToColumns(line, width_ - indent);
  }

  std::string indented(const std::string& line) const {
    return std::string(kIndent, ' ') + cut(line, kIndent) + '\n';
  }

  static std::string marked(const Snippet& snippet) {
    constexpr const char* kBold = "\x1B[1m";
    constexpr const char* kPlain = "\x1B[0m";
    std::string line;
    size_t at = 0;
    const std::string_view text = snippet.text;
    for (const TextSpan& mark : snippet.marks) {
      line += HarmlessLine(text.substr(at, mark.begin - at));
      line += kBold + HarmlessLine(text.substr(mark.begin, mark.end - mark.begin)) + kPlain;
      at = mark.end;
    }
    return line + HarmlessLine(text.substr(at));
  }

  const size_t width_;
  bool isFirst_ = true;
};

}  // namespace

std::unique_ptr<SearchLines> JsonSearchLines() { return std::make_unique<JsonFoundLines>(); }

std::unique_ptr<SearchLines> TabbedSearchLines() { return std::make_unique<TabbedFoundLines>(); }

std::unique_ptr<SearchLines> TerminalSearchLines(size_t width) {
  return std::make_unique<TerminalFoundLines>(width);
}

}  // namespace tarn::archive
