#include "archive/catalogue/IndexWriter.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "archive/catalogue/PageFiles.h"
#include "archive/common/JsonWriter.h"
#include "console/SystemErrors.h"
#include "console/SystemFiles.h"

namespace tarn::archive {
namespace {

constexpr size_t kItemsAPiece = 2000;
constexpr size_t kBytesAPiece = size_t{4} << 20;
// Of a subject or of the names of all recipients.
constexpr size_t kMostShown = 1024;

// A call with a text in quotes, which holds JSON: browsers read that sooner than a program.
std::string CallWith(std::string_view function, std::string_view first, std::string_view json) {
  std::string call(function);
  call += '(';
  call += first;
  call += '\'';
  call.reserve(call.size() + json.size() + json.size() / 8);
  for (const char letter : json) {
    if (letter == '\\' || letter == '\'') call += '\\';
    call += letter;
  }
  return call + "');\n";
}

// Name, else address.
std::string_view Shown(const Address& address) {
  return address.name.empty() ? address.address : address.name;
}

std::string ShownRecipients(const ItemFields& fields) {
  std::string text;
  for (const std::vector<Address>* const each : {&fields.to, &fields.cc, &fields.bcc}) {
    for (const Address& address : *each) {
      if (!text.empty()) text += ", ";
      text += Shown(address);
      if (text.size() > kMostShown) return ShownOnPage(text);
    }
  }
  return text;
}

// The folder that the files of an item have in common, with a slash; may be empty.
std::string_view CommonFolder(const std::vector<ExportedFile>& files) {
  if (files.empty()) return {};
  std::string_view common = files.front().path;
  common = common.substr(0, common.rfind('/') + 1);
  for (const ExportedFile& file : files) {
    while (!file.path.starts_with(common)) {
      common.remove_suffix(1);
      common = common.substr(0, common.rfind('/') + 1);
    }
  }
  return common;
}

bool HasBytes(const std::filesystem::path& path) {
  std::error_code error;
  const uintmax_t size = std::filesystem::file_size(path, error);
  return !error && size != 0;
}

}  // namespace

std::string ShownOnPage(std::string_view text) {
  if (text.size() <= kMostShown) return std::string(text);
  size_t end = kMostShown;
  while (end != 0 && (text[end] & 0xC0) == 0x80) --end;
  return std::string(text.substr(0, end)) + "\xE2\x80\xA6";
}

std::string NameOfPiece(size_t number) {
  const std::string digits = std::to_string(number);
  return "data-" + std::string(digits.size() < 4 ? 4 - digits.size() : 0, '0') + digits + ".js";
}

bool IsPageWhole(const std::filesystem::path& directory, uint64_t items) {
  const std::filesystem::path folder = directory / kIndexFolderName;
  std::array<char, 128> beginning = {};
  std::ifstream(folder / "about.js").read(beginning.data(), beginning.size() - 1);
  unsigned long long pieces = 0;
  unsigned long long held = 0;
  if (std::sscanf(beginning.data(), "mailAbout('{\"pieces\":%llu,\"items\":%llu,", &pieces,
                  &held) != 2 ||
      held != items || !HasBytes(directory / kIndexPageName)) {
    return false;
  }
  for (const PageFile& file : kPageFiles) {
    if (std::string_view(file.name) != kIndexPageName && !HasBytes(folder / file.name))
      return false;
  }
  for (unsigned long long piece = 1; piece <= pieces; ++piece) {
    if (!HasBytes(folder / NameOfPiece(piece))) return false;
  }
  return true;
}

class IndexWriter::Pieces {
 public:
  explicit Pieces(const std::filesystem::path& directory)
      : directory_(directory), beside_(directory / "index.new") {}

  ~Pieces() { host::RemoveTree(beside_); }

  std::optional<Trouble> begin() {
    host::RemoveTree(beside_);
    std::error_code error;
    std::filesystem::create_directory(beside_, error);
    if (error) return notWritten(beside_, error);
    startPiece();
    return std::nullopt;
  }

  std::optional<Trouble> add(const CatalogueItem& item) {
    put(item);
    ++items_;
    if (++inPiece_ < kItemsAPiece && json_.line().size() < kBytesAPiece) return std::nullopt;
    return endPiece();
  }

  std::optional<Trouble> finish() {
    if (inPiece_ != 0) {
      if (auto trouble = endPiece()) return trouble;
    }
    if (auto trouble = write("about.js", CallWith("mailAbout", "", about()))) return trouble;
    for (const PageFile& file : kPageFiles) {
      if (auto trouble = write(file.name, file.bytes)) return trouble;
    }
    const std::filesystem::path folder = directory_ / kIndexFolderName;
    const std::filesystem::path page = directory_ / kIndexPageName;
    host::RemoveTree(folder);
    if (const std::error_code error = host::MoveIntoPlace(beside_, folder)) {
      return notWritten(folder, error);
    }
    if (const std::error_code error = host::MoveIntoPlace(folder / kIndexPageName, page)) {
      return notWritten(page, error);
    }
    return std::nullopt;
  }

 private:
  using FolderKey = std::pair<std::string, std::vector<std::string>>;

  struct Folder {
    size_t number;
    uint64_t items;
  };

  static Trouble notWritten(const std::filesystem::path& path, const std::error_code& error) {
    return Trouble{TroubleKind::Unreadable,
                   path.string() + " cannot be written: " + host::ErrorText(error)};
  }

  std::optional<Trouble> write(const std::string& name, std::string_view bytes) {
    host::WritableFile file;
    const std::filesystem::path path = beside_ / name;
    std::error_code error = file.create(path);
    if (!error) error = file.writeAndClose(bytes);
    return error ? std::optional(notWritten(path, error)) : std::nullopt;
  }

  void startPiece() {
    json_.clear();
    json_.openArray();
    inPiece_ = 0;
  }

  std::optional<Trouble> endPiece() {
    json_.closeArray();
    ++pieces_;
    auto trouble = write(NameOfPiece(pieces_),
                         CallWith("mailPiece", std::to_string(pieces_) + ",", json_.line()));
    startPiece();
    return trouble;
  }

  size_t folderOf(const CatalogueItem& item) {
    const auto [place, isNew] =
        folders_.try_emplace(FolderKey{item.source, item.folder}, Folder{inOrder_.size(), 0});
    if (isNew) inOrder_.push_back(&*place);
    ++place->second.items;
    return place->second.number;
  }

  // A row is an array; app.js names its places.
  void put(const CatalogueItem& item) {
    const ItemFields& fields = item.fields;
    const std::optional<Moment>& date = fields.sent ? fields.sent : fields.received;
    json_.openArray();
    json_.number(folderOf(item));
    json_.text(date ? Iso8601(*date) : "");
    json_.text(ShownOnPage(Shown(fields.from)));
    json_.text(fields.from.name.empty() ? "" : std::string_view(fields.from.address));
    json_.text(ShownOnPage(fields.subject));
    json_.text(ShownRecipients(fields));
    json_.number(fields.size.value_or(0));
    json_.text(fields.messageClass);
    json_.number(static_cast<uint64_t>(item.status));
    json_.text(item.reason);
    json_.number(item.parent ? 1 : 0);
    putFiles(item);
    json_.closeArray();
  }

  // The folder of the files, those that show the item, and its attachments.
  void putFiles(const CatalogueItem& item) {
    const std::string_view common = CommonFolder(item.files);
    json_.text(common);
    json_.openArray();
    for (const ExportedFile& file : item.files) {
      if (file.index != 0) continue;
      // The place in it that is to be shown is after the role.
      json_.text(file.page == 0 ? file.role : file.role + "#page=" + std::to_string(file.page));
      json_.text(std::string_view(file.path).substr(common.size()));
    }
    json_.closeArray();
    json_.openArray();
    for (const ExportedFile& file : item.files) {
      if (file.index == 0) continue;
      json_.text(file.name);
      json_.text(std::string_view(file.path).substr(common.size()));
      json_.number(file.bytes);
    }
    json_.closeArray();
  }

  std::string about() {
    json_.clear();
    json_.openObject();
    json_.name("pieces");
    json_.number(pieces_);
    json_.name("items");
    json_.number(items_);
    json_.name("folders");
    json_.openArray();
    for (const auto* const folder : inOrder_) {
      json_.openArray();
      json_.text(folder->first.first);
      json_.openArray();
      for (const std::string& name : folder->first.second) json_.text(name);
      json_.closeArray();
      json_.number(folder->second.items);
      json_.closeArray();
    }
    json_.closeArray();
    json_.closeObject();
    return std::string(json_.line());
  }

  const std::filesystem::path directory_;
  const std::filesystem::path beside_;
  std::map<FolderKey, Folder> folders_;
  std::vector<const std::pair<const FolderKey, Folder>*> inOrder_;
  JsonWriter json_;
  size_t inPiece_ = 0;
  size_t pieces_ = 0;
  uint64_t items_ = 0;
};

Outcome<std::unique_ptr<IndexWriter>> IndexWriter::create(const std::filesystem::path& directory) {
  auto pieces = std::make_unique<Pieces>(directory);
  if (auto trouble = pieces->begin()) return std::move(*trouble);
  return std::unique_ptr<IndexWriter>(new IndexWriter(std::move(pieces)));
}

IndexWriter::IndexWriter(std::unique_ptr<Pieces> pieces) : pieces_(std::move(pieces)) {}

IndexWriter::~IndexWriter() = default;

std::optional<Trouble> IndexWriter::add(const CatalogueItem& item) {
  if (!trouble_) trouble_ = pieces_->add(item);
  return trouble_;
}

std::optional<Trouble> IndexWriter::finish() {
  if (!trouble_) trouble_ = pieces_->finish();
  return trouble_;
}

}  // namespace tarn::archive
