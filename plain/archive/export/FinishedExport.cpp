#include "archive/export/FinishedExport.h"

#include <map>
#include <set>
#include <system_error>

#include "archive/catalogue/Catalogue.h"
#include "archive/export/ExportForms.h"
#include "archive/export/Journal.h"
#include "archive/export/SourceSum.h"
#include "archive/export/Staging.h"
#include "console/Json.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

// What rows tell.
struct Told {
  std::map<std::string, json> sources;  // with their sums, or null
  std::set<std::string> roles;          // of files
  bool hasWholeItems = false;           // that were exported, with files of their own
  bool hasPages = false;                // that are parts of a larger PDF
  bool hasFullCopies = false;           // copies with files of their own
  bool hasBareCopies = false;
  bool hasFailures = false;

  void take(const json& row) {
    if (row.at("type") == "source") {
      sources.emplace(row.at("source"), row.at("sha256"));
      hasFailures = hasFailures || row.contains("reason") || row.contains("troubles");
    }
    if (row.at("type") != "item") return;
    hasFailures = hasFailures || row.at("status") == "failed";
    for (const json& file : row.at("files")) {
      roles.insert(file.at("role"));
      hasPages = hasPages || file.contains("page");
    }
    if (row.contains("copyOf")) {
      bool& hasSuchCopies = row.at("files").empty() ? hasBareCopies : hasFullCopies;
      hasSuchCopies = true;
    }
    hasWholeItems = hasWholeItems || (row.at("status") == "exported" && !row.at("files").empty());
  }
};

Told ToldBy(const fs::path& manifest) {
  Told told;
  const Outcome<uint64_t> read = ForEachLine(manifest, [&](std::string_view line) {
    try {
      told.take(host::ParsedJson<json>(line));
    } catch (const json::exception&) {
      // Told by who checks the files.
    }
    return true;
  });
  if (!read) throw host::Failure(host::ExitStatus::Usage, read.trouble().reason);
  return told;
}

// Compound files of other programs have no rows, but where they are called mails.
bool IsOf(const ExportSources& sources, std::map<std::string, json> told) {
  for (const ExportSource& source : sources.all) {
    const FoundSource& found = source.found;
    const bool mayHaveNone =
        found.kind == SourceKind::Compound && !found.isNamed && !IsNamedAsMail(found.name);
    if (told.erase(source.name) == 0 && !mayHaveNone) return false;
  }
  return told.empty();
}

// The first source with other bytes than it had. One that cannot be read any more is exported.
const ExportSource* ChangedSource(const ExportSources& sources,
                                  const std::map<std::string, json>& told) {
  for (const ExportSource& source : sources.all) {
    const auto was = told.find(source.name);
    if (source.trouble || was == told.end() || !was->second.is_string()) continue;
    const Outcome<FileSum> sum = SumOfSource(source.found.path, source.found.kind, [] {});
    if (sum && sum->sha256 != was->second) return &source;
  }
  return nullptr;
}

// What is exported wholly has all forms, and none that nobody asked for.
bool HasForms(const Told& told, const std::set<ExportForm>& forms) {
  for (const ExportForm form : AllForms()) {
    const bool isThere = told.roles.contains(std::string(NameOf(form)));
    const bool isWanted = forms.contains(form);
    if (isThere ? !isWanted : isWanted && told.hasWholeItems) return false;
  }
  return true;
}

bool HasOptions(const Told& told, const ExportOptions& options, const fs::path& tree) {
  const ExportChoices& choices = options.choices;
  std::error_code ignored;
  return HasForms(told, choices.forms) &&
         (choices.attachments || !told.roles.contains("attachment")) &&
         (told.hasPages == choices.onePdf ||
          !told.roles.contains(std::string(NameOf(ExportForm::Pdf)))) &&
         !(options.dedupe ? told.hasFullCopies : told.hasBareCopies) &&
         fs::exists(tree / kCatalogueName, ignored) == choices.catalogue;
}

}  // namespace

FinishedExport LookAtFinished(const ExportOptions& options, const ExportSources& sources,
                              const fs::path& tree) {
  const Told told = ToldBy(tree / kManifestName);
  FinishedExport finished;
  finished.hasFailures = told.hasFailures;
  if (!IsOf(sources, told.sources)) {
    finished.difference = "holds a finished export of other files; export into a new folder";
  } else if (!HasOptions(told, options, tree)) {
    finished.difference = "holds a finished export with other options; export into a new folder";
  } else if (const ExportSource* const changed = ChangedSource(sources, told.sources)) {
    finished.difference = "holds a finished export, and " + changed->name +
                          " has changed since; export into a new folder";
  }
  return finished;
}

}  // namespace tarn::archive
