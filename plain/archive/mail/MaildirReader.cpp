#include <algorithm>
#include <string>
#include <system_error>
#include <utility>

#include "archive/mail/MailItem.h"
#include "archive/mail/MailReaders.h"
#include "archive/mail/MaildirNames.h"
#include "archive/text/BodyText.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using mail::FileNames;

bool IsMaildir(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path / "cur", ignored) && fs::is_directory(path / "new", ignored);
}

// The folders of a Maildir that Maildir++ names, in the order of their bytes.
Outcome<std::vector<std::string>> FoldersOf(const fs::path& path) {
  std::vector<std::string> names;
  std::error_code error;
  fs::directory_iterator entry(path, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::string name = entry->path().filename().string();
    if (name.starts_with('.') && IsMaildir(entry->path())) names.push_back(std::move(name));
  }
  if (error) return Trouble{TroubleKind::Unreadable, error.message()};
  std::sort(names.begin(), names.end());
  return names;
}

struct OtherFormat {
  std::string_view beginning;
  const char* reason;
};

// What some mail servers, and lost disks, leave in the places of mails.
constexpr OtherFormat kOtherFormats[] = {
    {"\x1F\x8B", "the file is compressed (gzip), which is not read"},
    {"\x28\xB5\x2F\xFD", "the file is compressed (zstd), which is not read"},
    {"\xFD\x37\x7A\x58\x5A", "the file is compressed (xz), which is not read"},
    {"BZh", "the file is compressed (bzip2), which is not read"},
    {"PK\x03\x04", "the file is no mail: a ZIP file"},
    {"!BDN", "the file is no mail: a store"},
    {"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", "the file is no mail: a compound file"},
    {{"\0", 1}, "the file is no mail: it begins with a byte of zero"}};

// None for what may be a mail, however odd.
Outcome<std::optional<Trouble>> TroubleOfBeginning(mail::MailBytes& file) {
  constexpr size_t kLongest = 8;
  const Outcome<std::string> bytes = mail::ReadRange(file, 0, kLongest);
  if (!bytes) return bytes.trouble();
  if (bytes->empty()) return std::optional(Trouble{TroubleKind::Damaged, "the file is empty"});
  for (const OtherFormat& other : kOtherFormats) {
    if (bytes->starts_with(other.beginning)) {
      return std::optional(Trouble{TroubleKind::Unsupported, other.reason});
    }
  }
  return std::optional<Trouble>();
}

// A folder of the Maildir: the files of "cur", then those of "new".
struct Folder {
  std::string name;  // as the file system has it; empty for the Maildir itself
  std::shared_ptr<const std::vector<std::string>> path;
  FileNames cur;
  FileNames fresh;

  size_t size() const { return cur.size() + fresh.size(); }
  // Folders that are among the files.
  size_t below() const { return cur.folders().size() + fresh.folders().size(); }
  bool isFresh(size_t index) const { return index >= cur.size(); }

  std::string_view at(size_t index) const {
    return isFresh(index) ? fresh.at(index - cur.size()) : cur.at(index);
  }

  std::optional<size_t> firstOf(std::string_view uniquePart) const {
    if (const auto index = cur.firstOf(uniquePart)) return index;
    const auto index = fresh.firstOf(uniquePart);
    if (!index) return std::nullopt;
    return cur.size() + *index;
  }

  // Where several files have the same unique part, the later ones are told by their whole names.
  std::string idOf(size_t index) const {
    std::string id = name.empty() ? "" : name + ":";
    const std::string_view file = at(index);
    const std::string_view unique = mail::UniquePart(file);
    if (firstOf(unique) == index) return id.append(unique);
    return id.append(isFresh(index) ? "new:" : "cur:").append(file);
  }

  std::optional<size_t> indexOf(std::string_view id) const {
    const size_t before = name.empty() ? 0 : name.size() + 1;
    const std::optional<size_t> first = firstOf(id.substr(std::min(before, id.size())));
    if (first && idOf(*first) == id) return first;
    for (size_t i = 0; i < size(); ++i) {
      if (idOf(i) == id) return i;
    }
    return std::nullopt;
  }
};

class MaildirReader final : public ItemReader {
 public:
  MaildirReader(fs::path path, std::vector<std::string> folders)
      : path_(std::move(path)), folders_(std::move(folders)) {}

  std::optional<Entry> next() override {
    while (nextFolder_ <= folders_.size()) {
      if (!isEntered_) return enter();
      if (nextBelow_ < folder_.below()) return belowTrouble(nextBelow_++);
      if (nextFile_ < folder_.size()) return entryOf(nextFile_++);
      isEntered_ = false;
      ++nextFolder_;
    }
    return std::nullopt;
  }

  // A folder's name may have colons too: the longest that is there is tried first.
  Outcome<std::unique_ptr<Item>> find(std::string_view id) override {
    size_t colon = id.starts_with('.') ? id.rfind(':') : std::string_view::npos;
    for (; colon != std::string_view::npos && colon != 0; colon = id.rfind(':', colon - 1)) {
      const std::string name(id.substr(0, colon));
      if (!std::binary_search(folders_.begin(), folders_.end(), name)) continue;
      Outcome<std::unique_ptr<Item>> item = findInFolder(name, id);
      if (item || item.trouble().kind != TroubleKind::Missing) return item;
    }
    return findInFolder("", id);
  }

  std::optional<ReadingPlace> place() const override { return place_; }

  std::optional<Trouble> goTo(const ReadingPlace& place,
                              std::shared_ptr<const std::vector<std::string>>) override {
    hasGiven_ = false;
    if (place.folder > folders_.size()) {
      return Trouble{TroubleKind::Missing, "the Maildir has no such folder"};
    }
    if (!isEntered_ || nextFolder_ != place.folder) {
      nextFolder_ = place.folder;
      Entry entered = enter();
      if (auto* const trouble = std::get_if<PlaceTrouble>(&entered)) return trouble->trouble;
    }
    nextBelow_ = folder_.below();
    nextFile_ = place.row;
    return std::nullopt;
  }

 private:
  // The folder that was listed last is listed again only where it no longer has the mail: a mail
  // program may have given it another name meanwhile.
  Outcome<std::unique_ptr<Item>> findInFolder(const std::string& name, std::string_view id) {
    if (found_ && found_->name == name) {
      Outcome<std::unique_ptr<Item>> item = itemOfId(*found_, id);
      if (item) return item;
    }
    Outcome<Folder> folder = open(name);
    if (!folder) return folder.trouble();
    found_ = std::move(*folder);
    return itemOfId(*found_, id);
  }

  Outcome<std::unique_ptr<Item>> itemOfId(const Folder& folder, std::string_view id) const {
    const std::optional<size_t> index = folder.indexOf(id);
    if (!index) return Trouble{TroubleKind::Missing, "the Maildir has no such mail"};
    return itemOf(folder, *index);
  }

  Outcome<Folder> open(std::string name) const {
    Folder folder;
    folder.path = std::make_shared<const std::vector<std::string>>(mail::FolderOfMaildirName(name));
    Outcome<FileNames> cur = FileNames::of(path_ / name / "cur");
    if (!cur) return cur.trouble();
    Outcome<FileNames> fresh = FileNames::of(path_ / name / "new");
    if (!fresh) return fresh.trouble();
    folder.cur = std::move(*cur);
    folder.fresh = std::move(*fresh);
    folder.name = std::move(name);
    return folder;
  }

  Entry enter() {
    isEntered_ = true;
    hasGiven_ = false;
    nextFile_ = 0;
    nextBelow_ = 0;
    const std::string name = nextFolder_ == 0 ? "" : folders_[nextFolder_ - 1];
    Outcome<Folder> folder = open(name);
    if (folder) {
      folder_ = std::move(*folder);
      return FolderStart{folder_.path, folder_.size()};
    }
    folder_ = {};
    auto path = std::make_shared<const std::vector<std::string>>(mail::FolderOfMaildirName(name));
    std::string reason = "the folder cannot be read: " + folder.trouble().reason;
    return PlaceTrouble{{"", std::nullopt, std::move(path)},
                        {folder.trouble().kind, std::move(reason)}};
  }

  // A Maildir has no folders there, so that nobody can say what they are.
  Entry belowTrouble(size_t index) const {
    const std::vector<std::string>& cur = folder_.cur.folders();
    const std::string name = index < cur.size()
                                 ? "cur/" + cur[index]
                                 : "new/" + folder_.fresh.folders()[index - cur.size()];
    std::string reason = "the folder \"" + Utf8Of(name, "") +
                         "\" in it is not where a Maildir has folders, and is not read";
    return PlaceTrouble{{"", std::nullopt, folder_.path},
                        {TroubleKind::Unsupported, std::move(reason)}};
  }

  static ItemPlace placeOf(const Folder& folder, size_t index) {
    return {folder.idOf(index), std::nullopt, folder.path};
  }

  Outcome<std::unique_ptr<Item>> itemOf(const Folder& folder, size_t index) const {
    const fs::path path = path_ / folder.name / (folder.isFresh(index) ? "new" : "cur") /
                          std::string(folder.at(index));
    Outcome<mail::SharedBytes> file = mail::OpenFile(path);
    if (!file) return file.trouble();
    const Outcome<std::optional<Trouble>> other = TroubleOfBeginning(**file);
    if (!other) return other.trouble();
    if (*other) return **other;
    Outcome<mail::MailSource> source =
        mail::MailSourceOfFile(std::move(*file), placeOf(folder, index));
    if (!source) return source.trouble();
    return mail::MakeMailItem(std::move(*source));
  }

  Entry entryOf(size_t index) {
    Outcome<std::unique_ptr<Item>> item = itemOf(folder_, index);
    place_ = std::nullopt;
    const bool follows = std::exchange(hasGiven_, item.ok());
    if (item) place_ = ReadingPlace{nextFolder_, index, follows};
    if (!item) return PlaceTrouble{placeOf(folder_, index), item.trouble()};
    return std::move(*item);
  }

  fs::path path_;
  std::vector<std::string> folders_;
  size_t nextFolder_ = 0;  // 0 is the Maildir itself
  bool isEntered_ = false;
  Folder folder_;
  std::optional<Folder> found_;  // by find
  size_t nextBelow_ = 0;
  size_t nextFile_ = 0;
  bool hasGiven_ = false;
  std::optional<ReadingPlace> place_;
};

}  // namespace

Outcome<std::unique_ptr<ItemReader>> OpenMaildir(const fs::path& path) {
  if (!IsMaildir(path)) {
    return Trouble{TroubleKind::Missing, "the folder has no folders \"cur\" and \"new\""};
  }
  Outcome<std::vector<std::string>> folders = FoldersOf(path);
  if (!folders) return folders.trouble();
  return std::unique_ptr<ItemReader>(std::make_unique<MaildirReader>(path, std::move(*folders)));
}

}  // namespace tarn::archive
