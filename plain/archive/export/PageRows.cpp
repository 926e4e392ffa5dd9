#include "archive/export/PageRows.h"

#include <fstream>
#include <iterator>
#include <string_view>

#include "archive/catalogue/IndexWriter.h"
#include "console/Json.h"

namespace tarn::archive {
namespace {

using nlohmann::json;

// The places of a row, as app.js names them.
constexpr size_t kSubject = 4;
constexpr size_t kStatus = 8;
constexpr size_t kReason = 9;
constexpr size_t kBase = 11;
constexpr size_t kForms = 12;
constexpr size_t kAttached = 13;

// What is in quotes, without the backslashes that are there for JavaScript.
std::string Quoted(std::string_view script) {
  const size_t begin = script.find('\'');
  const size_t end = script.rfind('\'');
  std::string text;
  for (size_t at = begin + 1; begin != script.npos && at < end; ++at) {
    if (script[at] == '\\') ++at;
    text += script[at];
  }
  return text;
}

PageRow RowOf(const json& row) {
  PageRow read;
  read.subject = row.at(kSubject);
  read.status = row.at(kStatus);
  read.reason = row.at(kReason);
  const std::string base = row.at(kBase);
  const json& forms = row.at(kForms);
  for (size_t at = 1; at < forms.size(); at += 2) {
    read.paths.push_back(base + forms[at].get<std::string>());
  }
  const json& attached = row.at(kAttached);
  for (size_t at = 1; at < attached.size(); at += 3) {
    read.paths.push_back(base + attached[at].get<std::string>());
  }
  return read;
}

}  // namespace

std::optional<PageRow> PageRows::next() {
  if (at_ == rows_.size() && !readPiece()) return std::nullopt;
  try {
    return RowOf(rows_[at_++]);
  } catch (const json::exception&) {
    return std::nullopt;
  }
}

bool PageRows::readPiece() {
  std::ifstream file(directory_ / kIndexFolderName / NameOfPiece(++pieces_), std::ios::binary);
  const std::string script{std::istreambuf_iterator<char>(file), {}};
  rows_ = host::JsonOrDiscarded<json>(Quoted(script));
  at_ = 0;
  return rows_.is_array() && !rows_.empty();
}

}  // namespace tarn::archive
