#include "archive/catalogue/Catalogue.h"

#include <string>
#include <system_error>

#include "archive/catalogue/CatalogueTables.h"
#include "archive/catalogue/Database.h"
#include "archive/catalogue/IndexNumber.h"
#include "archive/catalogue/WordIndex.h"

namespace tarn::archive {
namespace {

Trouble NotWritten(const std::filesystem::path& path, const std::string& why) {
  return Trouble{TroubleKind::Unreadable, path.string() + " cannot be written: " + why};
}

// What another writer left there; no file is no trouble.
void RemoveLeftovers(const std::filesystem::path& beside) {
  std::error_code ignored;
  std::filesystem::remove(beside, ignored);
}

std::string JoinedFolder(const std::vector<std::string>& folder) {
  std::string text;
  for (const std::string& name : folder) {
    if (&name != &folder.front()) text += '/';
    text += name;
  }
  return text;
}

std::optional<std::string> MomentText(const std::optional<Moment>& moment) {
  return moment ? std::optional(Iso8601(*moment)) : std::nullopt;
}

// Names and addresses as text to search in.
void Append(std::string& text, const Address& address) {
  text += address.name + ' ' + address.address + '\n';
}

std::string RecipientText(const ItemFields& fields) {
  std::string text;
  for (const std::vector<Address>* const each : {&fields.to, &fields.cc, &fields.bcc}) {
    for (const Address& address : *each) Append(text, address);
  }
  return text;
}

std::string SenderText(const ItemFields& fields) {
  std::string text;
  Append(text, fields.from);
  if (fields.sender) Append(text, *fields.sender);
  return text;
}

// Reads the whole index.
bool HasAllWords(Database& database) {
  database.run("CREATE VIRTUAL TABLE temp.terms USING fts5vocab(main, words, row)");
  Statement words(database, "SELECT sum(cnt) FROM temp.terms");
  Statement sizes(database, "SELECT sz FROM words_docsize");
  uint64_t told = 0;
  while (sizes.step()) told += SumOfIndexNumbers(sizes.bytes(0));
  return words.step() && static_cast<uint64_t>(words.number(0)) == told;
}

}  // namespace

std::string_view CutCatalogueText(std::string_view text) {
  if (text.size() <= kMostCatalogueText) return text;
  size_t end = kMostCatalogueText;
  // A character has at most three bytes after its first.
  for (int left = 3; left != 0 && (text[end] & 0xC0) == 0x80; --left) --end;
  return text.substr(0, end);
}

std::optional<uint64_t> ItemsInCatalogue(const std::filesystem::path& path) {
  try {
    Database database(path, DatabaseUse::Read);
    database.run("PRAGMA trusted_schema=OFF;PRAGMA cell_size_check=ON;PRAGMA temp_store=MEMORY;");
    Statement sound(database, "PRAGMA integrity_check(1)");
    if (!sound.step() || sound.text(0) != "ok") return std::nullopt;
    Statement count(database, "SELECT count(*) FROM items");
    if (!count.step() || !HasAllWords(database)) return std::nullopt;
    return static_cast<uint64_t>(count.number(0));
  } catch (const DatabaseError&) {
    return std::nullopt;
  }
}

class CatalogueWriter::Tables {
 public:
  explicit Tables(const std::filesystem::path& path)
      : database_(path, DatabaseUse::Make),
        isPrepared_(prepare(database_)),
        item_(database_,
              "INSERT INTO items VALUES(?1,?2,?3,?4,?5,?6,?7,?8,?9,?10,?11,?12,?13,?14,?15,?16)"),
        recipient_(database_, "INSERT INTO recipients VALUES(?1,?2,?3,?4,?5)"),
        file_(database_, "INSERT INTO files VALUES(?1,?2,?3,?4,?5,?6,?7,?8)"),
        text_(database_, "INSERT INTO texts VALUES(?1,?2,?3,?4)"),
        words_(database_, path) {}

  void add(const CatalogueItem& item) {
    ++number_;
    addItem(item);
    addRecipients(item.fields);
    addFiles(item.files);
    addTexts(item);
    addWords(item);
  }

  void finish() {
    words_.finish();
    database_.run(kCatalogueIndexes);
  }

 private:
  static bool prepare(Database& database) {
    database.run(kCatalogueSettings);
    database.run(kCatalogueTables);
    return true;
  }

  void addItem(const CatalogueItem& item) {
    const ItemFields& fields = item.fields;
    const std::string folder = JoinedFolder(item.folder);
    const std::optional<std::string> sent = MomentText(fields.sent);
    const std::optional<std::string> received = MomentText(fields.received);
    item_.bind(1, number_);
    item_.bind(2, item.source);
    item_.bind(3, item.id);
    item_.bind(4, item.parent);
    item_.bind(5, folder);
    item_.bind(6, fields.messageClass);
    item_.bind(7, fields.subject);
    item_.bind(8, fields.from.name);
    item_.bind(9, fields.from.address);
    item_.bind(10, fields.messageId);
    item_.bind(11, sent);
    item_.bind(12, received);
    if (fields.size) item_.bind(13, static_cast<int64_t>(*fields.size));
    item_.bind(14, static_cast<int64_t>(fields.attachmentCount));
    item_.bind(15, NameOf(item.status));
    if (item.status != ExportStatus::Exported) item_.bind(16, item.reason);
    item_.execute();
  }

  void addRecipients(const ItemFields& fields) {
    int64_t place = 0;
    if (fields.sender) addRecipient("sender", ++place, *fields.sender);
    for (const Address& address : fields.to) addRecipient("to", ++place, address);
    for (const Address& address : fields.cc) addRecipient("cc", ++place, address);
    for (const Address& address : fields.bcc) addRecipient("bcc", ++place, address);
  }

  void addRecipient(std::string_view kind, int64_t place, const Address& address) {
    recipient_.bind(1, number_);
    recipient_.bind(2, place);
    recipient_.bind(3, kind);
    recipient_.bind(4, address.name);
    recipient_.bind(5, address.address);
    recipient_.execute();
  }

  void addFiles(const std::vector<ExportedFile>& files) {
    int64_t place = 0;
    for (const ExportedFile& file : files) {
      file_.bind(1, number_);
      file_.bind(2, ++place);
      file_.bind(3, file.path);
      file_.bind(4, file.role);
      file_.bind(5, static_cast<int64_t>(file.bytes));
      file_.bind(6, file.sha256);
      if (file.index != 0) {
        file_.bind(7, file.name);
        file_.bind(8, static_cast<int64_t>(file.index));
      }
      file_.execute();
    }
  }

  void addTexts(const CatalogueItem& item) {
    if (!item.body.empty()) addText(0, "", item.body);
    for (const AttachmentText& attachment : item.attachments) {
      addText(static_cast<int64_t>(attachment.index), attachment.name, attachment.text);
    }
  }

  void addText(int64_t attachment, std::string_view name, std::string_view text) {
    text_.bind(1, number_);
    text_.bind(2, attachment);
    if (attachment != 0) text_.bind(3, name);
    text_.bind(4, CutCatalogueText(text));
    text_.execute();
  }

  void addWords(const CatalogueItem& item) {
    words_.beginItem(number_);
    words_.add(0, item.fields.subject);
    words_.add(1, SenderText(item.fields));
    words_.add(2, RecipientText(item.fields));
    words_.add(3, CutCatalogueText(item.body));
    for (const AttachmentText& attachment : item.attachments) {
      words_.add(4, attachment.name);
      words_.add(4, CutCatalogueText(attachment.text));
    }
  }

  Database database_;
  bool isPrepared_;
  Statement item_;
  Statement recipient_;
  Statement file_;
  Statement text_;
  WordIndex words_;
  int64_t number_ = 0;
};

Outcome<std::unique_ptr<CatalogueWriter>> CatalogueWriter::create(
    const std::filesystem::path& path) {
  std::filesystem::path beside = path;
  beside += ".new";
  RemoveLeftovers(beside);
  std::unique_ptr<CatalogueWriter> writer(new CatalogueWriter(path, beside));
  try {
    writer->tables_ = std::make_unique<Tables>(beside);
  } catch (const DatabaseError& error) {
    return NotWritten(beside, error.what());
  }
  return writer;
}

CatalogueWriter::CatalogueWriter(std::filesystem::path path, std::filesystem::path beside)
    : path_(std::move(path)), beside_(std::move(beside)) {}

CatalogueWriter::~CatalogueWriter() {
  tables_.reset();
  RemoveLeftovers(beside_);
}

std::optional<Trouble> CatalogueWriter::add(const CatalogueItem& item) {
  if (trouble_) return trouble_;
  try {
    tables_->add(item);
  } catch (const DatabaseError& error) {
    trouble_ = NotWritten(beside_, error.what());
  }
  return trouble_;
}

std::optional<Trouble> CatalogueWriter::finish() {
  if (trouble_) return trouble_;
  try {
    tables_->finish();
  } catch (const DatabaseError& error) {
    trouble_ = NotWritten(beside_, error.what());
    return trouble_;
  }
  tables_.reset();
  std::error_code error;
  std::filesystem::rename(beside_, path_, error);
  if (error) trouble_ = NotWritten(path_, error.message());
  return trouble_;
}

}  // namespace tarn::archive
