#include <utility>

#include "archive/catalogue/Catalogue.h"
#include "archive/catalogue/SearchQuery.h"
#include "archive/commands/Commands.h"
#include "archive/commands/OutputBuffer.h"
#include "archive/commands/SearchLines.h"
#include "archive/commands/TerminalSize.h"
#include "console/Paths.h"
#include "console/StandardStreams.h"

namespace tarn::archive {
namespace {

using host::ExitStatus;
using host::Failure;

constexpr size_t kSuitsTerminal = 20;

// What a catalogue tells of an item, for whoever asks an item.
class CataloguedItem final : public Item {
 public:
  explicit CataloguedItem(const CatalogueItem& record) : record_(record) {
    place_.id = record.id;
    place_.parent = record.parent;
    place_.folder = std::make_shared<const std::vector<std::string>>(record.folder);
  }

  const ItemPlace& place() const override { return place_; }
  const ItemFields& fields(Detail) override { return record_.fields; }
  Bodies bodies() override { return {}; }
  Outcome<std::string> originalHeaders() override { return std::string(); }
  const std::vector<Attachment>& attachments() override { return attachments_; }
  Outcome<std::unique_ptr<ByteSource>> open(size_t) override { return notHere(); }
  Outcome<std::unique_ptr<Item>> embedded(size_t) override { return notHere(); }
  Outcome<std::unique_ptr<ByteSource>> original() override { return std::unique_ptr<ByteSource>(); }
  const std::vector<Trouble>& troubles() const override { return troubles_; }

 private:
  static Trouble notHere() {
    return Trouble{TroubleKind::Missing, "a catalogue has no attachments"};
  }

  const CatalogueItem& record_;
  ItemPlace place_;
  std::vector<Attachment> attachments_;
  std::vector<Trouble> troubles_;
};

class SearchRun {
 public:
  explicit SearchRun(const SearchOptions& options)
      : options_(options),
        isTerminal_(host::StandardOutputIsTerminal()),
        output_(isTerminal_),
        filter_(options.filter) {
    if (options.json) {
      lines_ = JsonSearchLines();
    } else {
      lines_ = isTerminal_ ? TerminalSearchLines(SizeOfTerminal().columns) : TabbedSearchLines();
    }
    const size_t usual = isTerminal_ && !options.json ? kSuitsTerminal : 0;
    limit_ = options.limit.value_or(usual);
  }

  ExitStatus run() {
    const std::string query = queryOfWords();
    Outcome<std::unique_ptr<CatalogueSearch>> search =
        CatalogueSearch::open(host::PathFromUtf8(options_.directory) / kCatalogueName);
    if (!search) throw Failure(ExitStatus::Usage, options_.directory, search.trouble().reason);
    search_ = std::move(*search);
    RankedItems ranked = checked(search_->find(query, searchedSpan()));
    size_t shown = 0;
    bool hasMore = false;
    while (const std::optional<RankedItem> each = ranked.next()) {
      const CatalogueItem record = checked(search_->item(each->number));
      CataloguedItem item(record);
      if (!filter_.takes(item)) continue;
      hasMore = limit_ != 0 && shown == limit_;
      if (hasMore) break;
      ++shown;
      show(each->number, record, item);
    }
    output_.flush();
    if (shown == 0) note("nothing found");
    if (hasMore) note("there are more; --limit 0 shows all");
    return ExitStatus::Done;
  }

 private:
  std::string queryOfWords() const {
    std::string words;
    for (const std::string& word : options_.words) words += word + ' ';
    const std::optional<std::string> query = QueryOf(words);
    if (!query) throw Failure(ExitStatus::Usage, "there is no word to look for");
    return *query;
  }

  SearchedSpan searchedSpan() const {
    SearchedSpan span;
    if (options_.filter.since) span.since = options_.filter.since->first;
    if (options_.filter.until) span.until = options_.filter.until->last;
    span.hasAttachment = options_.filter.hasAttachment;
    return span;
  }

  template <typename T>
  T checked(Outcome<T> outcome) const {
    if (!outcome) throw Failure(ExitStatus::Failed, options_.directory, outcome.trouble().reason);
    return std::move(outcome.value());
  }

  void show(int64_t number, const CatalogueItem& record, CataloguedItem& item) {
    const std::optional<std::string> parentSubject = checked(search_->parentSubject(record));
    const std::vector<FoundPlace> places =
        checked(search_->places(number, lines_->snippetLength()));
    output_.write(lines_->linesOf({item, record, parentSubject, places, options_.directory}));
  }

  void note(const std::string& line) {
    output_.flushForError();
    host::WriteStandardError("tarnmail: " + line + "\n");
  }

  const SearchOptions& options_;
  bool isTerminal_;
  OutputBuffer output_;
  ItemFilter filter_;
  std::unique_ptr<SearchLines> lines_;
  size_t limit_ = 0;
  std::unique_ptr<CatalogueSearch> search_;
};

}  // namespace

ExitStatus Search(const SearchOptions& options) { return SearchRun(options).run(); }

}  // namespace tarn::archive
