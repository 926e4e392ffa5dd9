#include "archive/sources/SourceSearch.h"

#include <algorithm>
#include <set>
#include <system_error>

#include "archive/sources/FileFacts.h"
#include "archive/sources/StreamCopy.h"
#include "archive/text/AsciiText.h"
#include "console/Paths.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

// A folder that is being gone through.
struct OpenFolder {
  fs::path path;
  bool isMaildir = false;
  std::vector<std::string> names;  // those to come, the next one last; folders end in "/"
};

bool IsFolder(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

bool IsMaildir(const fs::path& path) { return IsFolder(path / "cur") && IsFolder(path / "new"); }

// The reader of a Maildir reads these itself, of folders below it too whose names begin with a dot.
bool IsOfMails(const std::string& name) { return name == "cur" || name == "new" || name == "tmp"; }

// Whether a folder of a Maildir has more than its reader reads: folders, and what may be mail
// files.
bool HoldsMore(const fs::path& folder) {
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::error_code ignored;
    if (entry->is_directory(ignored)) {
      if (!IsOfMails(entry->path().filename().string())) return true;
    } else if (entry->is_regular_file(ignored)) {
      const Outcome<std::optional<SourceKind>> kind = KindOfFile(entry->path());
      if (IsNamedAsMail(entry->path()) || (kind && *kind)) return true;
    }
  }
  return false;
}

// "a/b" is before "a-b" by path, though "a" is before "a-b" by name: folders sort with their slash.
Outcome<OpenFolder> ReadFolder(const fs::path& path, bool isMaildir, bool isOfMaildir) {
  OpenFolder folder{path, isMaildir && !isOfMaildir, {}};
  std::error_code error;
  fs::directory_iterator entry(path, fs::directory_options::none, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::string name = entry->path().filename().string();
    std::error_code ignored;
    const bool isFolder = entry->is_directory(ignored);
    if (isFolder && isMaildir) {
      if (IsOfMails(name)) continue;
      if (!isOfMaildir && name.starts_with('.') && IsMaildir(entry->path()) &&
          !HoldsMore(entry->path())) {
        continue;
      }
    }
    if (isFolder) name += '/';
    folder.names.push_back(std::move(name));
  }
  if (error) return Trouble{TroubleKind::Unreadable, error.message()};
  std::sort(folder.names.begin(), folder.names.end(), std::greater<>());
  return folder;
}

// What programs leave for a folder without mails.
bool IsEmptyMbox(const fs::path& path) {
  const std::string ending = LoweredAscii(path.extension().string());
  std::error_code error;
  return (ending == ".mbox" || ending == ".mbx") && fs::file_size(path, error) == 0 && !error;
}

}  // namespace

bool IsOtherFile(const FoundSource& source, const Trouble& trouble) {
  return !source.isNamed && source.kind == SourceKind::Compound &&
         trouble.kind == TroubleKind::Unsupported && !IsNamedAsMail(source.name);
}

class SourceSearch::Search {
 public:
  Search(std::vector<std::string> names, host::PrivateFolder& temporary)
      : names_(std::move(names)), temporary_(temporary), mayFindSeveral_(names_.size() > 1) {
    std::reverse(names_.begin(), names_.end());
  }

  std::optional<SourceStep> next() {
    for (;;) {
      std::optional<SourceStep> step;
      if (!folders_.empty() && folders_.back().names.empty()) {
        folders_.pop_back();
      } else if (!folders_.empty()) {
        std::string name = std::move(folders_.back().names.back());
        folders_.back().names.pop_back();
        if (name.back() == '/') name.pop_back();
        const bool isOfMaildir = folders_.back().isMaildir && name.starts_with('.');
        step = met(folders_.back().path / name, {false, isOfMaildir});
      } else if (!names_.empty()) {
        const std::string name = std::move(names_.back());
        names_.pop_back();
        step =
            name == kStandardInput ? standardInput() : met(host::PathFromUtf8(name), {true, false});
      } else {
        return std::nullopt;
      }
      if (step) return step;
    }
  }

  uint64_t otherFiles = 0;
  bool mayFindSeveral() const { return mayFindSeveral_; }

 private:
  using Identity = std::pair<uint64_t, uint64_t>;

  struct How {
    bool isNamed;      // by the command line
    bool isOfMaildir;  // whose reader reads it, if it is a Maildir too
  };

  // None where there is nothing to tell: a folder to go through, another file, one that was met.
  std::optional<SourceStep> met(const fs::path& path, const How& how) {
    const bool isNamed = how.isNamed;
    const Outcome<FileFacts> facts = FactsOfFile(path);
    if (!facts) return SourceTrouble{path.string(), facts.trouble(), isNamed};
    if (!isNamed && facts->isLink && seen_.contains(facts->identity)) return std::nullopt;
    switch (facts->form) {
      case FileForm::Folder:
        return seen_.insert(facts->identity).second ? folder(path, how) : std::nullopt;
      case FileForm::Regular:
        // What a link led to does not come again by its own name.
        if (!seen_.insert(facts->identity).second && !isNamed &&
            cameByLink_.contains(facts->identity)) {
          return std::nullopt;
        }
        if (facts->isLink) cameByLink_.insert(facts->identity);
        return file(path, isNamed);
      case FileForm::Pipe:
        if (isNamed) return copied(path.string(), CopyPipe(path, temporary_));
        break;
      case FileForm::Other:
        if (isNamed) {
          return SourceTrouble{path.string(),
                               {TroubleKind::Unsupported, "is neither a file, a folder nor a pipe"},
                               true};
        }
        break;
    }
    ++otherFiles;
    return std::nullopt;
  }

  std::optional<SourceStep> folder(const fs::path& path, const How& how) {
    const bool isNamed = how.isNamed;
    const bool isMaildir = IsMaildir(path);
    if (isNamed && !isMaildir) mayFindSeveral_ = true;
    Outcome<OpenFolder> opened = ReadFolder(path, isMaildir, how.isOfMaildir);
    if (!opened) return SourceTrouble{path.string(), opened.trouble(), isNamed};
    if (!opened->names.empty()) mayFindSeveral_ = true;
    folders_.push_back(std::move(*opened));
    if (!isMaildir || how.isOfMaildir) return std::nullopt;
    return FoundSource{path.string(), path, SourceKind::Maildir, isNamed};
  }

  std::optional<SourceStep> file(const fs::path& path, bool isNamed) {
    return told(FoundSource{path.string(), path, SourceKind::Mail, isNamed});
  }

  std::optional<SourceStep> standardInput() {
    return copied(kStandardInput, CopyStandardInput(temporary_));
  }

  std::optional<SourceStep> copied(const std::string& name, const Outcome<fs::path>& copy) {
    if (!copy) return SourceTrouble{name, copy.trouble(), true};
    return told(FoundSource{name, *copy, SourceKind::Mail, true});
  }

  // With its kind.
  std::optional<SourceStep> told(FoundSource source) {
    const Outcome<std::optional<SourceKind>> kind = KindOfFile(source.path);
    if (!kind) return SourceTrouble{source.name, kind.trouble(), source.isNamed};
    if (*kind) {
      source.kind = **kind;
      return source;
    }
    if (source.isNamed || (IsNamedAsMail(source.path) && !IsEmptyMbox(source.path))) {
      const std::string butCalled = source.isNamed ? "" : ", though it is called one";
      return SourceTrouble{
          source.name,
          {TroubleKind::Unsupported, "not a mail file" + butCalled +
                                         ": neither a store, an MSG file, a winmail.dat, a mail "
                                         "nor an mbox"},
          source.isNamed};
    }
    ++otherFiles;
    return std::nullopt;
  }

  std::vector<std::string> names_;  // those to come, the next one last
  host::PrivateFolder& temporary_;
  std::vector<OpenFolder> folders_;
  std::set<Identity> seen_;
  std::set<Identity> cameByLink_;
  bool mayFindSeveral_;
};

SourceSearch::SourceSearch(std::vector<std::string> names, host::PrivateFolder& temporary)
    : search_(std::make_unique<Search>(std::move(names), temporary)) {}

SourceSearch::~SourceSearch() = default;

std::optional<SourceStep> SourceSearch::next() { return search_->next(); }

uint64_t SourceSearch::otherFiles() const { return search_->otherFiles; }

void SourceSearch::countOtherFile() { ++search_->otherFiles; }

bool SourceSearch::mayFindSeveral() const { return search_->mayFindSeveral(); }

}  // namespace tarn::archive
