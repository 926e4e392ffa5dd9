#include "archive/export/Journal.h"

#include <utility>
#include <vector>

#include "archive/common/JsonWriter.h"
#include "archive/export/Sha256.h"
#include "console/Json.h"

namespace tarn::archive {
namespace {

using nlohmann::json;

class Line {
 public:
  explicit Line(std::string_view kind) {
    json_.openObject();
    text("journal", kind);
  }
  Line& text(std::string_view name, std::string_view value) {
    json_.name(name);
    json_.text(value);
    return *this;
  }
  Line& number(std::string_view name, uint64_t value) {
    json_.name(name);
    json_.number(value);
    return *this;
  }
  JsonWriter& writer() { return json_; }
  std::string end() {
    json_.closeObject();
    return std::string(json_.line()) + "\n";
  }

 private:
  JsonWriter json_;
};

FileSum SumIn(const json& value) {
  return {value.at("bytes").get<uint64_t>(), value.at("sha256").get<std::string>()};
}

class Restorer {
 public:
  explicit Restorer(const std::filesystem::path& tree) : tree_(tree) {}

  // False at a line that does not hold.
  bool take(std::string_view text) {
    read_ += text.size() + 1;
    json line = host::JsonOrDiscarded<json>(text);
    try {
      if (!line.contains("journal")) {
        addToSum(text);
        return takeRow(line);
      }
      if (line["journal"] == "sum") return endBatch(line);
      addToSum(text);
      marks_.push_back(std::move(line));
      return true;
    } catch (const json::exception&) {
      return false;
    }
  }

  JournalState& state() { return state_; }
  const std::map<std::string, FileSum>& grown() const { return grown_; }

 private:
  bool takeRow(const json& row) {
    for (const json& file : row.at("files")) {
      const Outcome<FileSum> sum = SumOfFile(tree_ / file.at("path").get<std::string>());
      if (!sum || *sum != SumIn(file)) return false;
    }
    if (row.contains("fingerprint") && !row.contains("parent")) {
      batch_.insert(row["fingerprint"].get<std::string>());
    }
    return true;
  }

  void addToSum(std::string_view text) {
    sum_.add(text);
    sum_.add("\n");
  }

  bool endBatch(const json& line) {
    if (line.at("sha256") != std::exchange(sum_, Sha256()).digest()) return false;
    for (const json& mark : marks_) takeMark(mark);
    marks_.clear();
    state_.fingerprints.merge(batch_);
    batch_.clear();
    state_.goodBytes = read_;
    return true;
  }

  void takeMark(const json& line) {
    const std::string kind = line.at("journal");
    JournalState::Source& source = state_.sources[line.at("source").get<std::string>()];
    if (kind == "source") source.sha256 = line.at("sha256");
    if (kind == "end") source.isEnded = true;
    if (kind == "batch") {
      source.entries = line.at("entries");
      for (const auto& [name, sum] : line.at("grown").items()) grown_[name] = SumIn(sum);
    }
  }

  const std::filesystem::path& tree_;
  JournalState state_;
  std::map<std::string, FileSum> grown_;
  // Of the batch that is being read:
  Sha256 sum_;
  std::vector<json> marks_;
  std::set<std::string> batch_;
  uint64_t read_ = 0;
};

}  // namespace

std::string SourceLine(const std::string& source, const FileSum& sum) {
  return Line("source")
      .text("source", source)
      .number("bytes", sum.bytes)
      .text("sha256", sum.sha256)
      .end();
}

std::string BatchLine(const std::string& source, uint64_t entries,
                      const std::map<std::string, FileSum>& grown) {
  Line line("batch");
  line.text("source", source).number("entries", entries);
  line.writer().name("grown");
  line.writer().openObject();
  for (const auto& [name, sum] : grown) {
    line.writer().name(name);
    line.writer().openObject();
    line.number("bytes", sum.bytes).text("sha256", sum.sha256);
    line.writer().closeObject();
  }
  line.writer().closeObject();
  return line.end();
}

std::string EndLine(const std::string& source, const std::string& reason) {
  return Line("end").text("source", source).text("reason", reason).end();
}

std::string SumLine(std::string_view lines) {
  Sha256 sum;
  sum.add(lines);
  return Line("sum").text("sha256", sum.digest()).end();
}

Outcome<uint64_t> ForEachLine(const std::filesystem::path& path,
                              const std::function<bool(std::string_view)>& take) {
  std::string waiting;
  uint64_t taken = 0;
  const std::optional<Trouble> trouble = ReadInPieces(path, [&](std::string_view piece) {
    size_t searched = waiting.size();
    waiting += piece;
    size_t begin = 0;
    for (size_t end; (end = waiting.find('\n', searched)) != std::string::npos; searched = begin) {
      if (!take(std::string_view(waiting).substr(begin, end - begin))) return false;
      taken += end + 1 - begin;
      begin = end + 1;
    }
    waiting.erase(0, begin);
    return true;
  });
  if (trouble) return *trouble;
  return taken;
}

Outcome<JournalState> RestoreJournal(const std::filesystem::path& journal,
                                     const std::filesystem::path& tree, GrownFiles& grown) {
  Restorer restorer(tree);
  const Outcome<uint64_t> read =
      ForEachLine(journal, [&](std::string_view line) { return restorer.take(line); });
  if (!read) return read.trouble();
  for (const auto& [name, sum] : restorer.grown()) {
    // Their earlier states cannot be told from the file: everything is done again.
    if (!grown.restore(name, sum)) {
      grown.forget();
      return JournalState();
    }
  }
  return std::move(restorer.state());
}

}  // namespace tarn::archive
