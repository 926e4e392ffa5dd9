#include "archive/export/FinishedExport.h"

#include <set>
#include <system_error>

#include "archive/catalogue/Catalogue.h"
#include "archive/export/ExportForms.h"
#include "archive/export/Journal.h"
#include "archive/export/Staging.h"
#include "console/Json.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

// What rows tell.
struct Told {
  std::set<std::string> sources;
  std::set<std::string> roles;  // of files
  bool hasWholeItems = false;   // that were exported, with files of their own
  bool hasPages = false;        // that are parts of a larger PDF
  bool hasFullCopies = false;   // copies with files of their own
  bool hasBareCopies = false;

  void take(const json& row) {
    if (row.at("type") == "source") sources.insert(row.at("source"));
    if (row.at("type") != "item") return;
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

// Compound files of other programs have no rows.
bool IsOf(const ExportSources& sources, std::set<std::string> told) {
  for (const ExportSource& source : sources.all) {
    const bool mayHaveNone = source.found.kind == SourceKind::Compound && !source.found.isNamed;
    if (told.erase(source.name) == 0 && !mayHaveNone) return false;
  }
  return told.empty();
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

}  // namespace

std::optional<std::string> DifferenceFrom(const ExportOptions& options,
                                          const ExportSources& sources, const fs::path& tree) {
  const Told told = ToldBy(tree / kManifestName);
  if (!IsOf(sources, told.sources)) {
    return "holds a finished export of other files; export into a new folder";
  }
  const ExportChoices& choices = options.choices;
  std::error_code ignored;
  const bool isOther = !HasForms(told, choices.forms) ||
                       (told.roles.contains("attachment") && !choices.attachments) ||
                       (told.roles.contains(std::string(NameOf(ExportForm::Pdf))) &&
                        told.hasPages != choices.onePdf) ||
                       (options.dedupe ? told.hasFullCopies : told.hasBareCopies) ||
                       fs::exists(tree / kCatalogueName, ignored) != choices.catalogue;
  if (!isOther) return std::nullopt;
  return "holds a finished export with other options; export into a new folder";
}

}  // namespace tarn::archive
