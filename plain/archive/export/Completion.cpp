#include "archive/export/Completion.h"

#include <array>
#include <map>
#include <memory>
#include <system_error>
#include <unordered_map>

#include "archive/catalogue/Catalogue.h"
#include "archive/catalogue/IndexWriter.h"
#include "archive/catalogue/ItemTexts.h"
#include "archive/common/JsonWriter.h"
#include "archive/export/ManifestRows.h"
#include "archive/export/OnePdf.h"
#include "archive/export/SourcePlan.h"
#include "console/Json.h"
#include "console/Paths.h"
#include "console/SystemFiles.h"
#include "console/Text.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

// What shows the items: nothing where that is not wanted.
class Shown {
 public:
  Shown(const fs::path& tree, bool isWanted) {
    if (!isWanted) return;
    catalogue_ = opened(CatalogueWriter::create(tree / kCatalogueName));
    index_ = opened(IndexWriter::create(tree));
  }

  void add(const CatalogueItem& item) {
    if (!catalogue_) return;
    CheckStaged(catalogue_->add(item));
    CheckStaged(index_->add(item));
  }

  void finish() {
    if (!catalogue_) return;
    CheckStaged(catalogue_->finish());
    CheckStaged(index_->finish());
  }

 private:
  template <typename Writer>
  static std::unique_ptr<Writer> opened(Outcome<std::unique_ptr<Writer>> writer) {
    if (!writer) CheckStaged(writer.trouble());
    return std::move(*writer);
  }

  std::unique_ptr<CatalogueWriter> catalogue_;
  std::unique_ptr<IndexWriter> index_;
};

ExportStatus StatusOf(const std::string& name) {
  if (name == "exported") return ExportStatus::Exported;
  return name == "partial" ? ExportStatus::Partial : ExportStatus::Failed;
}

class Completion {
 public:
  Completion(const ExportOptions& options, const ExportSources& sources, Staging& staging,
             const TellTrouble& tell)
      : options_(options),
        sources_(sources),
        staging_(staging),
        tell_(tell),
        sums_(staging.grown().sums()),
        pdf_(staging, options.step),
        shown_(staging.tree(), options.choices.catalogue) {}

  ExportCounts run() {
    placeMboxes();
    if (options_.choices.onePdf) joinPdfs();
    std::error_code ignored;
    fs::remove(staging_.path(kManifestName), ignored);
    manifest_ = openedFile(staging_.path(kManifestName));
    texts_ = openedFile(staging_.grown().pathOf(kTextsName));
    const Outcome<uint64_t> read = ForEachLine(staging_.journalPath(), [&](std::string_view line) {
      take(line);
      return true;
    });
    if (!read) CheckStaged(read.trouble());
    flush();
    shown_.finish();
    CheckStaged(manifest_->sync());
    options_.step();
    staging_.sync();
    options_.step();
    std::error_code error;
    fs::rename(staging_.path(kManifestName), staging_.tree() / kManifestName, error);
    if (error) CheckStaged(SystemTrouble(staging_.tree() / kManifestName, error.value()));
    options_.step();
    staging_.remove();
    return counts_;
  }

 private:
  static std::unique_ptr<GrowingFile> openedFile(const fs::path& path) {
    Outcome<std::unique_ptr<GrowingFile>> file = GrowingFile::open(path);
    if (!file) CheckStaged(file.trouble());
    return std::move(*file);
  }

  // They stay where they were too until the end, for a run that goes on after this one.
  void placeMboxes() {
    for (const auto& [name, sum] : sums_) {
      if (!name.ends_with("/" + std::string(kMboxName))) continue;
      options_.step();
      const fs::path to = staging_.tree() / host::PathFromUtf8(name);
      std::error_code error;
      fs::create_directories(to.parent_path(), error);
      if (error) CheckStaged(SystemTrouble(to.parent_path(), error.value()));
      fs::remove(to, error);
      Outcome<std::unique_ptr<GrowingFile>> grown =
          GrowingFile::open(staging_.grown().pathOf(name));
      if (!grown) CheckStaged(grown.trouble());
      // What an ended run has added is not in the sum.
      if ((*grown)->size() != sum.bytes) CheckStaged((*grown)->cutTo(sum.bytes));
      fs::create_hard_link(staging_.grown().pathOf(name), to, error);
      if (error) {
        error.clear();
        fs::copy_file(staging_.grown().pathOf(name), to, error);
      }
      if (error) CheckStaged(SystemTrouble(to, error.value()));
    }
  }

  void joinPdfs() {
    const Outcome<uint64_t> read = ForEachLine(staging_.journalPath(), [&](std::string_view line) {
      const Json row = host::ParsedJson<Json>(line);
      if (const std::optional<ItemPages> pages = PagesOf(row)) {
        pdf_.add(*pages);
      }
      return true;
    });
    if (!read) CheckStaged(read.trouble());
    pdf_.finish();
  }

  void take(std::string_view text) {
    const uint64_t offset = journalRead_;
    journalRead_ += text.size() + 1;
    Json line = host::ParsedJson<Json>(text);
    if (line.contains("journal")) {
      if (line["journal"] == "source") beginSource(line);
      if (line["journal"] == "end") endSource(line);
      return;
    }
    if (line["type"] == "trouble") {
      troubles_.push_back(line["reason"]);
      tell_(line["source"], line["reason"]);
      return;
    }
    takeRow(line, offset);
  }

  void beginSource(const Json& line) {
    inSource_ = {};
    troubles_.clear();
    sourceSum_ = line["sha256"].get<std::string>();
  }

  void takeRow(Json& row, uint64_t offset) {
    count(row);
    placeMail(row);
    placePages(row, offset);
    shownFiles_ = Json::array();
    nameCopy(row, offset);
    addToShown(row);
    RemoveJournalKeys(row);
    put(host::ShowableJson(host::JsonLineOfAny(row)));
  }

  void count(const Json& row) {
    const ExportStatus status = StatusOf(row["status"]);
    for (ExportCounts* const counts : {&counts_, &inSource_}) {
      if (status == ExportStatus::Exported) ++counts->exported;
      if (status == ExportStatus::Partial) ++counts->partial;
      if (status == ExportStatus::Failed) ++counts->failed;
    }
    if (status == ExportStatus::Exported) return;
    std::string where = row["folder"].get<std::string>();
    if (!where.empty()) where += ": ";
    tell_(row["source"],
          where + "item " + row["id"].get<std::string>() + ": " + row["reason"].get<std::string>());
  }

  // The sum is of the whole file, which is there only now.
  void placeMail(Json& row) {
    if (!row.contains("mbox")) return;
    const std::string path = row["mbox"];
    const uint64_t bytes = row["mboxBytes"];
    uint64_t& place = places_[path];
    const FileSum& sum = sums_.at(path);
    row["files"].push_back({{"path", path},
                            {"role", "mbox"},
                            {"bytes", sum.bytes},
                            {"sha256", sum.sha256},
                            {"offset", place},
                            {"length", bytes}});
    place += bytes;
  }

  static Json pagesAt(const PdfPlace& place) {
    return {{"path", place.path},
            {"role", NameOf(ExportForm::Pdf)},
            {"bytes", place.sum.bytes},
            {"sha256", place.sum.sha256},
            {"page", place.page}};
  }

  void placePages(Json& row, uint64_t offset) {
    const std::optional<ItemPages> pages = PagesOf(row);
    if (!pages || pages->pages == 0) return;
    const PdfPlace place = pdf_.place(*pages);
    row["files"].push_back(pagesAt(place));
    // Copies are shown by them.
    if (options_.dedupe && row.contains("fingerprint")) pages_.emplace(offset, place);
  }

  // The first row of a fingerprint is read again from the journal where it is needed.
  void nameCopy(Json& row, uint64_t offset) {
    if (!row.contains("fingerprint")) return;
    const std::string fingerprint = row["fingerprint"];
    const std::array<uint64_t, 2> key = {std::stoull(fingerprint.substr(0, 16), nullptr, 16),
                                         std::stoull(fingerprint.substr(16, 16), nullptr, 16)};
    const auto [first, isFirst] = firsts_.emplace(key, offset);
    if (isFirst) return;
    ++counts_.copies;
    counts_.areCopiesLeftOut = options_.dedupe;
    const Json original = rowAt(first->second);
    row["copyOf"] = {{"source", original["source"]}, {"id", original["id"]}};
    if (!row["files"].empty()) return;
    shownFiles_ = original["files"];
    const auto pages = pages_.find(first->second);
    if (pages != pages_.end()) shownFiles_.push_back(pagesAt(pages->second));
    if (original.contains("mbox")) {
      const std::string path = original["mbox"];
      const FileSum& sum = sums_.at(path);
      shownFiles_.push_back(
          {{"path", path}, {"role", "mbox"}, {"bytes", sum.bytes}, {"sha256", sum.sha256}});
    }
  }

  Json rowAt(uint64_t offset) {
    std::string text;
    for (uint64_t at = offset; text.find('\n') == std::string::npos; at = offset + text.size()) {
      constexpr uint64_t kPiece = 4096;
      const Outcome<std::string> more =
          staging_.journal().read(at, std::min<uint64_t>(kPiece, staging_.journal().size() - at));
      if (!more) CheckStaged(more.trouble());
      text += *more;
    }
    return host::ParsedJson<Json>(std::string_view(text).substr(0, text.find('\n')));
  }

  void addToShown(const Json& row) {
    if (!options_.choices.catalogue) return;
    CatalogueItem item;
    if (row.contains("catalogueBytes")) {
      const uint64_t bytes = row["catalogueBytes"];
      const Outcome<std::string> packed = texts_->read(textsRead_, bytes);
      if (!packed) CheckStaged(packed.trouble());
      textsRead_ += bytes;
      Outcome<CatalogueItem> unpacked = UnpackedItem(*packed);
      if (!unpacked) CheckStaged(unpacked.trouble());
      item = std::move(*unpacked);
    } else {
      item.source = row["source"];
      item.id = row["id"];
      if (row.contains("parent")) item.parent = row["parent"].get<std::string>();
      const std::string folder = row["folder"];
      if (!folder.empty()) item.folder.push_back(folder);
      item.status = StatusOf(row["status"]);
      item.reason = row.value("reason", "");
    }
    item.files.clear();
    for (const AttachmentText& attachment : item.attachments) {
      counts_.pdfs += IsNamedPdf(attachment.name) ? 1 : 0;
    }
    // Catalogue and page show a copy without files of its own by those of the first one.
    for (const Json& file : shownFiles_.empty() ? row["files"] : shownFiles_) {
      ExportedFile told;
      told.path = file["path"];
      told.role = file["role"];
      told.bytes = file["bytes"];
      told.sha256 = file["sha256"];
      told.name = file.value("name", "");
      told.index = file.value("index", size_t{0});
      told.page = file.value("page", uint64_t{0});
      item.files.push_back(std::move(told));
    }
    shown_.add(item);
  }

  void endSource(const Json& line) {
    const std::string name = line["source"];
    const std::string reason = line["reason"];
    const ExportSource* source = nullptr;
    for (size_t at = nextSource_; at < sources_.all.size() && !source; ++at) {
      if (sources_.all[at].name != name) continue;
      source = &sources_.all[at];
      nextSource_ = at + 1;
    }
    const bool isUnopened = source != nullptr && source->trouble.has_value();
    if (isUnopened && IsOtherFile(source->found, *source->trouble)) {
      ++counts_.otherFiles;
      return;
    }
    JsonWriter row;
    const auto number = [&row](std::string_view key, uint64_t value) {
      row.name(key);
      row.number(value);
    };
    row.openObject();
    row.name("type");
    row.text("source");
    row.name("source");
    row.text(name);
    row.name("sha256");
    sourceSum_.empty() ? row.null() : row.text(sourceSum_);
    number("found", inSource_.items());
    number("exported", inSource_.exported);
    number("partial", inSource_.partial);
    number("failed", inSource_.failed);
    if (!reason.empty()) {
      row.name("reason");
      row.text(reason);
      if (isUnopened && source->found.isNamed) counts_.hasUnopened = true;
      tell_(name, reason);
    }
    if (!troubles_.empty()) {
      row.name("troubles");
      row.openArray();
      for (const std::string& trouble : troubles_) row.text(trouble);
      row.closeArray();
    }
    if (!reason.empty() || !troubles_.empty()) ++counts_.failedSources;
    row.closeObject();
    put(std::string(row.line()));
    ++counts_.sources;
  }

  void put(const std::string& line) {
    constexpr size_t kPiece = size_t{256} << 10;
    waiting_ += line;
    waiting_ += '\n';
    if (waiting_.size() >= kPiece) flush();
  }

  void flush() {
    options_.step();
    CheckStaged(manifest_->append(waiting_));
    waiting_.clear();
  }

  struct HashOfKey {
    size_t operator()(const std::array<uint64_t, 2>& key) const { return key[0]; }
  };

  const ExportOptions& options_;
  const ExportSources& sources_;
  Staging& staging_;
  const TellTrouble& tell_;
  const std::map<std::string, FileSum> sums_;
  OnePdf pdf_;
  std::unordered_map<uint64_t, PdfPlace> pages_;  // by the place of the row in the journal
  Shown shown_;
  std::unique_ptr<GrowingFile> manifest_;
  std::unique_ptr<GrowingFile> texts_;
  std::string waiting_;
  ExportCounts counts_;
  ExportCounts inSource_;
  std::vector<std::string> troubles_;  // of the source
  Json shownFiles_;                    // of the item, in place of its own
  std::string sourceSum_;
  size_t nextSource_ = 0;
  uint64_t journalRead_ = 0;
  uint64_t textsRead_ = 0;
  std::map<std::string, uint64_t> places_;  // in the mboxes
  std::unordered_map<std::array<uint64_t, 2>, uint64_t, HashOfKey> firsts_;
};

}  // namespace

ExportCounts CompleteExport(const ExportOptions& options, const ExportSources& sources,
                            Staging& staging, const TellTrouble& tell) {
  return Completion(options, sources, staging, tell).run();
}

}  // namespace tarn::archive
