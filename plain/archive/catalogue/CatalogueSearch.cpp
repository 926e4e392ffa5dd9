#include "archive/catalogue/CatalogueSearch.h"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <utility>

#include "archive/catalogue/CatalogueTables.h"
#include "archive/catalogue/Database.h"
#include "archive/catalogue/WordPlaces.h"

namespace tarn::archive {
namespace {

// Rows are counted in one step; LIMIT keeps SQLite from asking for ranks outside of the search.
constexpr const char* kFind =
    "SELECT count(noted) FROM (SELECT tarn_rank(words) AS noted FROM words WHERE words MATCH ?1"
    " LIMIT -1)";
constexpr const char* kFindWithin =
    "SELECT count(noted) FROM (SELECT tarn_rank(words) AS noted FROM words"
    " JOIN items ON items.item=words.rowid WHERE words MATCH ?1"
    " AND (?2 IS NULL OR coalesce(sent, received)>=?2)"
    " AND (?3 IS NULL OR coalesce(sent, received)<=?3)"
    " AND items.attachments>=?4 LIMIT -1)";

// For a heap, which has the best at its top.
bool IsWorse(const RankedItem& one, const RankedItem& other) {
  return std::pair(one.rank, one.number) > std::pair(other.rank, other.number);
}

std::optional<Moment> MomentOf(const Statement& row, int column) {
  if (row.isNull(column)) return std::nullopt;
  return Moment{row.number(column), std::nullopt};
}

std::optional<std::string> Iso(const std::optional<int64_t>& seconds) {
  return seconds ? std::optional(Iso8601(Moment{*seconds, std::nullopt})) : std::nullopt;
}

ExportStatus StatusOf(std::string_view name) {
  if (name == NameOf(ExportStatus::Exported)) return ExportStatus::Exported;
  return name == NameOf(ExportStatus::Partial) ? ExportStatus::Partial : ExportStatus::Failed;
}

Trouble Unreadable(const std::string& why) {
  return Trouble{TroubleKind::Damaged, "the catalogue cannot be read: " + why};
}

}  // namespace

RankedItems::RankedItems(std::vector<RankedItem> items) : items_(std::move(items)) {
  std::make_heap(items_.begin(), items_.end(), IsWorse);
}

std::optional<RankedItem> RankedItems::next() {
  if (items_.empty()) return std::nullopt;
  std::pop_heap(items_.begin(), items_.end(), IsWorse);
  const RankedItem best = items_.back();
  items_.pop_back();
  return best;
}

class CatalogueSearch::Reading {
 public:
  explicit Reading(const std::filesystem::path& path) : database_(path, DatabaseUse::Read) {
    // Whoever made the file is not trusted.
    database_.run("PRAGMA trusted_schema=OFF;PRAGMA cell_size_check=ON;");
    Statement version(database_, "PRAGMA user_version");
    isOfThisVersion_ = version.step() && version.number(0) == kCatalogueVersion;
    if (!isOfThisVersion_) return;
    AddPlacesFunction(database_);
    rank_ = std::make_unique<WordRank>(database_);
    splitter_ = std::make_unique<WordSplitter>(database_);
  }

  bool isOfThisVersion() const { return isOfThisVersion_; }

  RankedItems find(const std::string& query, const SearchedSpan& span) {
    query_ = query;
    rank_->begin();
    Statement rows(database_, span.isAnything() ? kFind : kFindWithin);
    const std::optional<std::string> since = Iso(span.since);
    const std::optional<std::string> until = Iso(span.until);
    rows.bind(1, query);
    if (!span.isAnything()) {
      rows.bind(2, since);
      rows.bind(3, until);
      rows.bind(4, int64_t{span.hasAttachment ? 1 : 0});
    }
    rows.step();
    return RankedItems(rank_->take());
  }

  CatalogueItem item(int64_t number) {
    Statement row(database_,
                  "SELECT source, id, parent, folder, class, subject, from_name, from_address,"
                  " message_id, unixepoch(sent), unixepoch(received), size, attachments, status,"
                  " reason FROM items WHERE item=?1");
    row.bind(1, number);
    if (!row.step()) throw DatabaseError("an item is not there");
    CatalogueItem item;
    item.source = row.text(0);
    item.id = row.text(1);
    if (!row.isNull(2)) item.parent = row.text(2);
    item.folder = {row.text(3)};
    ItemFields& fields = item.fields;
    fields.messageClass = row.text(4);
    fields.subject = row.text(5);
    fields.from = {row.text(6), row.text(7)};
    fields.messageId = row.text(8);
    fields.sent = MomentOf(row, 9);
    fields.received = MomentOf(row, 10);
    if (!row.isNull(11)) fields.size = static_cast<uint64_t>(row.number(11));
    fields.attachmentCount = static_cast<size_t>(row.number(12));
    fields.hasAttachments = fields.attachmentCount != 0;
    item.status = StatusOf(row.text(13));
    item.reason = row.text(14);
    takeRecipients(number, fields);
    takeFiles(number, item.files);
    return item;
  }

  std::optional<std::string> parentSubject(const CatalogueItem& item) {
    if (!item.parent) return std::nullopt;
    Statement row(database_, "SELECT subject FROM items WHERE source=?1 AND id=?2");
    row.bind(1, item.source);
    row.bind(2, *item.parent);
    return row.step() ? std::optional(row.text(0)) : std::nullopt;
  }

  std::vector<FoundPlace> places(int64_t number, size_t snippetLength) {
    Statement row(database_,
                  "SELECT tarn_places(words) FROM words WHERE words MATCH ?1 AND rowid=?2");
    row.bind(1, query_);
    row.bind(2, number);
    if (!row.step()) return {};
    std::vector<WordPlace> columns[kColumns];
    for (const WordPlace& place : PlacesOf(row.text(0))) {
      if (place.column < kColumns) columns[place.column].push_back(place);
    }
    std::vector<FoundPlace> found;
    if (!columns[0].empty()) {
      addPlace(FoundField::Subject, subjectOf(number), columns[0], snippetLength, found);
    }
    if (!columns[1].empty()) addPlace(FoundField::Sender, "", columns[1], snippetLength, found);
    if (!columns[2].empty()) addPlace(FoundField::Recipients, "", columns[2], snippetLength, found);
    if (!columns[3].empty()) {
      Statement text(database_, "SELECT text FROM texts WHERE item=?1 AND attachment=0");
      text.bind(1, number);
      addPlace(FoundField::Body, text.step() ? text.text(0) : "", columns[3], snippetLength, found);
    }
    if (!columns[4].empty()) addAttachments(number, columns[4], snippetLength, found);
    return found;
  }

 private:
  static constexpr int kColumns = 5;

  // Null for what is no kind of recipients.
  static std::vector<Address>* RecipientsOfKind(std::string_view kind, ItemFields& fields) {
    if (kind == "to") return &fields.to;
    if (kind == "cc") return &fields.cc;
    return kind == "bcc" ? &fields.bcc : nullptr;
  }

  void takeRecipients(int64_t number, ItemFields& fields) {
    Statement row(database_,
                  "SELECT kind, name, address FROM recipients WHERE item=?1 ORDER BY place");
    row.bind(1, number);
    while (row.step()) {
      const std::string kind = row.text(0);
      Address address{row.text(1), row.text(2)};
      if (kind == "sender") {
        fields.sender = std::move(address);
      } else if (auto* const recipients = RecipientsOfKind(kind, fields)) {
        recipients->push_back(std::move(address));
      }
    }
  }

  void takeFiles(int64_t number, std::vector<ExportedFile>& files) {
    Statement row(database_,
                  "SELECT path, role, bytes, sha256, name, attachment FROM files WHERE item=?1"
                  " ORDER BY place");
    row.bind(1, number);
    while (row.step()) {
      files.push_back({row.text(0), row.text(1), static_cast<uint64_t>(row.number(2)), row.text(3),
                       row.text(4), static_cast<size_t>(row.number(5))});
    }
  }

  std::string subjectOf(int64_t number) {
    Statement row(database_, "SELECT subject FROM items WHERE item=?1");
    row.bind(1, number);
    return row.step() ? row.text(0) : "";
  }

  void addPlace(FoundField field, const std::string& text, const std::vector<WordPlace>& places,
                size_t length, std::vector<FoundPlace>& found) {
    size_t words = 0;
    FoundPlace& place = found.emplace_back();
    place.field = field;
    if (text.empty()) return;
    place.snippet = SnippetOf(text, SpansIn(text, places, 0, *splitter_, words), length);
  }

  // The column has the name and the text of one after the other.
  void addAttachments(int64_t number, const std::vector<WordPlace>& places, size_t length,
                      std::vector<FoundPlace>& found) {
    Statement row(database_,
                  "SELECT attachment, name, text FROM texts WHERE item=?1 AND attachment>0"
                  " ORDER BY attachment");
    row.bind(1, number);
    size_t first = 0;
    while (row.step()) {
      const std::string name = row.text(1);
      const std::string text = row.text(2);
      size_t words = 0;
      const std::vector<FoundSpan> inName = SpansIn(name, places, first, *splitter_, words);
      first += words;
      const std::vector<FoundSpan> inText = SpansIn(text, places, first, *splitter_, words);
      first += words;
      if (inName.empty() && inText.empty()) continue;
      FoundPlace& place = found.emplace_back();
      place.field = FoundField::Attachment;
      place.attachment = static_cast<size_t>(row.number(0));
      place.name = name;
      place.snippet =
          inText.empty() ? SnippetOf(name, inName, length) : SnippetOf(text, inText, length);
    }
  }

  Database database_;
  bool isOfThisVersion_ = false;
  std::unique_ptr<WordRank> rank_;
  std::unique_ptr<WordSplitter> splitter_;
  std::string query_;
};

Outcome<std::unique_ptr<CatalogueSearch>> CatalogueSearch::open(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::exists(path, error)) {
    return Trouble{TroubleKind::Missing, "there is no " + path.filename().string()};
  }
  try {
    auto reading = std::make_unique<Reading>(path);
    if (!reading->isOfThisVersion()) {
      return Trouble{TroubleKind::Unsupported, "its catalogue is of another version"};
    }
    return std::unique_ptr<CatalogueSearch>(new CatalogueSearch(std::move(reading)));
  } catch (const DatabaseError& failure) {
    return Unreadable(failure.what());
  }
}

CatalogueSearch::CatalogueSearch(std::unique_ptr<Reading> reading) : reading_(std::move(reading)) {}

CatalogueSearch::~CatalogueSearch() = default;

Outcome<RankedItems> CatalogueSearch::find(const std::string& query, const SearchedSpan& span) {
  try {
    return reading_->find(query, span);
  } catch (const DatabaseError& failure) {
    return Unreadable(failure.what());
  }
}

Outcome<CatalogueItem> CatalogueSearch::item(int64_t number) {
  try {
    return reading_->item(number);
  } catch (const DatabaseError& failure) {
    return Unreadable(failure.what());
  }
}

Outcome<std::optional<std::string>> CatalogueSearch::parentSubject(const CatalogueItem& item) {
  try {
    return reading_->parentSubject(item);
  } catch (const DatabaseError& failure) {
    return Unreadable(failure.what());
  }
}

Outcome<std::vector<FoundPlace>> CatalogueSearch::places(int64_t number, size_t snippetLength) {
  try {
    return reading_->places(number, snippetLength);
  } catch (const DatabaseError& failure) {
    return Unreadable(failure.what());
  }
}

}  // namespace tarn::archive
