#include <algorithm>
#include <optional>
#include <set>
#include <system_error>

#include "archive/export/Export.h"
#include "archive/export/Journal.h"
#include "archive/export/Progress.h"
#include "archive/export/ShownCheck.h"
#include "archive/export/Staging.h"
#include "console/Json.h"
#include "console/Paths.h"
#include "console/StandardStreams.h"
#include "console/Text.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;
using host::Failure;
using nlohmann::json;

class Verification {
 public:
  explicit Verification(const std::string& folder)
      : folder_(folder),
        tree_(host::PathFromUtf8(folder)),
        shown_(tree_,
               [this](const std::string& name, const std::string& why) { tell(name, why); }) {}

  ExitStatus run() {
    Progress progress(host::StandardErrorIsTerminal());
    if (KindOfExportFolder(tree_) != ExportFolder::Finished) {
      const bool isBegun = KindOfExportFolder(tree_) == ExportFolder::Unfinished;
      throw Failure(ExitStatus::Usage, folder_,
                    isBegun ? "holds an export that was ended early; tarnmail export --resume "
                              "goes on with it, or merge where tasks made it"
                            : "holds no export: there is no manifest.jsonl");
    }
    uint64_t number = 0;
    const Outcome<uint64_t> read = ForEachLine(tree_ / kManifestName, [&](std::string_view line) {
      takeLine(line, ++number);
      progress.done(1, std::exchange(newBytes_, 0));
      return true;
    });
    if (!read) throw Failure(ExitStatus::Usage, read.trouble().reason);
    std::error_code error;
    if (*read != fs::file_size(tree_ / kManifestName, error)) {
      tell(kManifestName, "its last line breaks off");
    }
    endSource();
    shown_.finish();
    findExtra();
    return summary();
  }

 private:
  void tell(const std::string& what, const std::string& why) {
    ++found_;
    host::WriteStandardError("tarnmail: " + host::Printable(what + ": " + why) + "\n");
  }

  void takeLine(std::string_view text, uint64_t number) {
    const json row = host::JsonOrDiscarded<json>(text);
    try {
      if (row.at("type") == "source") return closeSource(row);
      if (row.at("type") != "item") return;
      countItem(row);
      for (const json& file : row.at("files")) {
        check(file.at("path"), {file.at("bytes"), file.at("sha256")});
      }
    } catch (const json::exception&) {
      tell(std::string(kManifestName) + ": line " + std::to_string(number), "is damaged");
    }
  }

  // The rows of a source come together, its own last.
  void countItem(const json& row) {
    if (rows_ != 0 && row.at("source") != source_) endSource();
    source_ = row.at("source");
    ++rows_;
    shown_.take(row);
    if (row.at("status") != "failed") ++exported_;
  }

  void endSource() {
    if (rows_ != 0) tell(source_, "has no row of its own in the manifest");
    rows_ = exported_ = 0;
  }

  void closeSource(const json& row) {
    if (rows_ != 0 && row.at("source") != source_) endSource();
    const uint64_t found = row.at("found");
    const uint64_t exported =
        row.at("exported").get<uint64_t>() + row.at("partial").get<uint64_t>();
    if (found != rows_ || exported != exported_) {
      tell(row.at("source"), "has " + std::to_string(rows_) + " rows of items in the manifest (" +
                                 std::to_string(exported_) + " exported) instead of " +
                                 std::to_string(found) + " (" + std::to_string(exported) + ")");
    }
    rows_ = exported_ = 0;
  }

  // Many rows may name one mbox.
  void check(const std::string& path, const FileSum& expected) {
    if (!known_.insert(path).second) return;
    const fs::path relative = host::PathFromUtf8(path);
    const bool leadsOut = relative.is_absolute() || std::find(relative.begin(), relative.end(),
                                                              fs::path("..")) != relative.end();
    if (leadsOut) return tell(path, "is no path of an export");
    const Outcome<FileSum> sum = SumOfFile(tree_ / relative);
    if (!sum) {
      tell(path, sum.trouble().kind == TroubleKind::Missing ? "is missing" : "cannot be read");
    } else if (sum->bytes != expected.bytes) {
      tell(path, "has " + std::to_string(sum->bytes) + " bytes instead of " +
                     std::to_string(expected.bytes));
    } else if (sum->sha256 != expected.sha256) {
      tell(path, "has changed");
    }
    ++checked_;
    newBytes_ += expected.bytes;
  }

  void findExtra() {
    std::error_code error;
    fs::recursive_directory_iterator entry(tree_, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
      const std::string path = host::Utf8FromPath(entry->path().lexically_relative(tree_));
      if (entry.depth() == 0 && isOwn(path)) {
        entry.disable_recursion_pending();
        continue;
      }
      std::error_code ignored;
      if (entry->symlink_status(ignored).type() == fs::file_type::directory) continue;
      if (!known_.contains(path)) tell(path, "is not of the export");
    }
    if (error) tell(folder_, error.message());
  }

  // What is made of the manifest and not named in it.
  static bool isOwn(const std::string& name) {
    return name == kManifestName || name == "catalogue.sqlite" || name == "index.html" ||
           name == "index";
  }

  ExitStatus summary() const {
    std::string line = folder_ + ": " + std::to_string(checked_) +
                       (checked_ == 1 ? " file checked, " : " files checked, ");
    line += found_ == 0 ? "all as the manifest says"
                        : std::to_string(found_) + (found_ == 1 ? " is" : " are") +
                              " not as the manifest says";
    host::WriteStandardError("tarnmail: " + host::Printable(line) + "\n");
    return found_ == 0 ? ExitStatus::Done : ExitStatus::Failed;
  }

  std::string folder_;
  fs::path tree_;
  std::set<std::string> known_;
  std::string source_;     // whose rows come
  uint64_t rows_ = 0;      // of it so far
  uint64_t exported_ = 0;  // of those
  uint64_t checked_ = 0;
  uint64_t found_ = 0;
  uint64_t newBytes_ = 0;
  ShownCheck shown_;  // tells of what it finds from the beginning
};

}  // namespace

ExitStatus Verify(const VerifyOptions& options) { return Verification(options.folder).run(); }

}  // namespace tarn::archive
