#include "archive/export/Sources.h"

#include <algorithm>
#include <system_error>

#include "archive/common/SafeName.h"
#include "archive/common/TellableName.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

bool IsBelow(const fs::path& path, const fs::path& folder) {
  std::error_code error;
  const fs::path full = fs::weakly_canonical(path, error);
  if (error) return false;
  return std::mismatch(folder.begin(), folder.end(), full.begin(), full.end()).first ==
         folder.end();
}

}  // namespace

ExportSources FindSources(SourceSearch& search, const fs::path& tree) {
  ExportSources sources;
  std::error_code error;
  const fs::path full = fs::weakly_canonical(tree, error);
  while (std::optional<SourceStep> step = search.next()) {
    ExportSource source;
    if (auto* const found = std::get_if<FoundSource>(&*step)) {
      source.found = std::move(*found);
    } else {
      auto& trouble = std::get<SourceTrouble>(*step);
      source.found.name = trouble.name;
      source.found.isNamed = trouble.isNamed;
      source.trouble = trouble.trouble;
    }
    if (source.found.isNamed || !IsBelow(source.found.name, full)) {
      sources.all.push_back(std::move(source));
    }
  }
  const auto name = [](const ExportSource& source) { return source.found.name; };
  std::stable_sort(sources.all.begin(), sources.all.end(),
                   [&](const auto& one, const auto& other) { return name(one) < name(other); });
  const auto end =
      std::unique(sources.all.begin(), sources.all.end(),
                  [&](const auto& one, const auto& other) { return name(one) == name(other); });
  sources.all.erase(end, sources.all.end());
  UniqueNames names;
  for (const char* const own : {"manifest.jsonl", "catalogue.sqlite", "catalogue.sqlite.new",
                                "index.html", "index", "index.new", "parts"}) {
    names.take(own);
  }
  for (ExportSource& source : sources.all) {
    const std::string last = fs::path(source.found.name).lexically_normal().filename().string();
    source.name = TellableName(source.found.name);
    source.tree = names.make(SafeName(last, "standard input"));
  }
  sources.otherFiles = search.otherFiles();
  return sources;
}

}  // namespace tarn::archive
