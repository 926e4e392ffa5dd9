// What a catalogue does with texts of mails, and with what people look for in them.
//
// The input is words to look for up to the first line end, and a text. Besides what the sanitizers
// see, a run aborts when the words become a question that the index does not take, when a word that
// is in the text is not found or what is found is not in it, and when a record of an item differs
// after it was packed.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "archive/catalogue/CatalogueItem.h"
#include "archive/catalogue/Database.h"
#include "archive/catalogue/SearchQuery.h"
#include "archive/catalogue/Snippet.h"
#include "archive/catalogue/WordPlaces.h"
#include "archive/catalogue/WordText.h"

namespace {

using namespace tarn::archive;

void Expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

// An index in memory, made once.
class Index {
 public:
  Index() : database_(":memory:", DatabaseUse::Make) {
    database_.run(
        "CREATE VIRTUAL TABLE words USING fts5(subject, sender, recipients, body, attachments,"
        " content='', tokenize=\"unicode61 remove_diacritics 2 categories 'L* N* Co M*'\")");
    AddPlacesFunction(database_);
    splitter_ = std::make_unique<WordSplitter>(database_);
  }

  // Where the query is in the text, as the body of an item; none where it is not.
  std::vector<FoundSpan> find(const std::string& query, std::string_view text) {
    const std::string words = WordsOf(text).text;
    database_.run("BEGIN");
    Statement insert(database_, "INSERT INTO words(rowid, body) VALUES(1, ?1)");
    insert.bind(1, words);
    insert.execute();
    Statement find(database_, "SELECT tarn_places(words) FROM words WHERE words MATCH ?1");
    find.bind(1, query);
    std::vector<FoundSpan> found;
    if (find.step()) {
      size_t count = 0;
      found = SpansIn(text, PlacesOf(find.text(0)), 0, *splitter_, count);
    }
    find.reset();
    database_.run("ROLLBACK");
    return found;
  }

 private:
  Database database_;
  std::unique_ptr<WordSplitter> splitter_;
};

void CheckSnippet(std::string_view text, const std::vector<FoundSpan>& found) {
  for (const FoundSpan& each : found) {
    Expect(each.span.begin < each.span.end && each.span.end <= text.size(), "a span is outside");
  }
  const Snippet snippet = SnippetOf(text, found, 80);
  size_t last = 0;
  for (const TextSpan& mark : snippet.marks) {
    Expect(mark.begin >= last && mark.begin < mark.end && mark.end <= snippet.text.size(),
           "a mark is outside of its snippet");
    last = mark.end;
  }
  Expect(snippet.text.find('\n') == std::string::npos, "a snippet has two lines");
}

void CheckWords(std::string_view text) {
  const WordText words = WordsOf(text, Origins::Keep);
  Expect(words.origins.size() == words.text.size() + 1, "a byte has no origin");
  for (const uint32_t origin : words.origins) Expect(origin <= text.size(), "an origin is outside");
}

void CheckRecord(std::string_view bytes) {
  const Outcome<CatalogueItem> item = UnpackedItem(bytes);
  if (!item) return;
  const std::string packed = PackedItem(*item);
  const Outcome<CatalogueItem> again = UnpackedItem(packed);
  Expect(again.ok() && PackedItem(*again) == packed, "a record has changed");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Index index;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const size_t end = bytes.find('\n');
  const std::string_view wanted = bytes.substr(0, end);
  const std::string_view text = end == std::string_view::npos ? "" : bytes.substr(end + 1);
  CheckRecord(bytes);
  CheckWords(text);
  try {
    if (const std::optional<std::string> query = QueryOf(wanted)) {
      CheckSnippet(text, index.find(*query, text));
    }
  } catch (const DatabaseError& error) {
    Expect(false, error.what());
  }
  return 0;
}
