#include "archive/catalogue/WordPlaces.h"

#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <exception>
#include <iterator>
#include <new>

#include "archive/catalogue/WordText.h"

namespace tarn::archive {
namespace {

// More of them make no better snippet.
constexpr int kMostPlaces = 512;

// An answer of four numbers a place.
void AnswerPlaces(const Fts5ExtensionApi* api, Fts5Context* row, sqlite3_context* out, int,
                  sqlite3_value**) {
  int count = 0;
  int status = api->xInstCount(row, &count);
  std::string answer;
  for (int each = 0; status == SQLITE_OK && each < std::min(count, kMostPlaces); ++each) {
    int phrase = 0;
    int column = 0;
    int first = 0;
    status = api->xInst(row, each, &phrase, &column, &first);
    try {
      for (const int number : {column, first, api->xPhraseSize(row, phrase), phrase}) {
        answer += std::to_string(number) + ' ';
      }
    } catch (const std::bad_alloc&) {
      status = SQLITE_NOMEM;
    }
  }
  if (status != SQLITE_OK) {
    sqlite3_result_error_code(out, status);
  } else {
    sqlite3_result_text(out, answer.data(), static_cast<int>(answer.size()), SQLITE_TRANSIENT);
  }
}

struct Splitting {
  std::vector<TextSpan> words;
  size_t most;
  bool isOutOfMemory = false;
};

int TakeWord(void* context, int, const char*, int, int begin, int end) {
  Splitting& splitting = *static_cast<Splitting*>(context);
  if (splitting.words.size() == splitting.most) return SQLITE_DONE;
  try {
    splitting.words.push_back({static_cast<size_t>(begin), static_cast<size_t>(end)});
  } catch (const std::bad_alloc&) {
    splitting.isOutOfMemory = true;
    return SQLITE_NOMEM;
  }
  return SQLITE_OK;
}

// The bytes of the text that bytes of its words come from.
TextSpan Original(std::string_view text, const WordText& words, const TextSpan& span) {
  return {words.origins[span.begin], EndOfCharacter(text, words.origins[span.end - 1])};
}

}  // namespace

fts5_api& FtsOf(const Database& database) {
  fts5_api* found = nullptr;
  Statement statement(database, "SELECT fts5(?1)");
  statement.bindPointer(1, &found, "fts5_api_ptr");
  statement.step();
  if (found == nullptr) throw DatabaseError("SQLite has no FTS5 here");
  return *found;
}

void AddPlacesFunction(const Database& database) {
  fts5_api& fts = FtsOf(database);
  if (fts.xCreateFunction(&fts, "tarn_places", nullptr, AnswerPlaces, nullptr) != SQLITE_OK) {
    throw std::bad_alloc();
  }
}

std::vector<WordPlace> PlacesOf(std::string_view answer) {
  std::vector<size_t> numbers;
  const char* at = answer.data();
  const char* const end = at + answer.size();
  while (at < end) {
    numbers.push_back(0);
    at = std::from_chars(at, end, numbers.back()).ptr + 1;
  }
  std::vector<WordPlace> places;
  for (size_t each = 0; each + 4 <= numbers.size(); each += 4) {
    places.push_back(
        {static_cast<int>(numbers[each]), numbers[each + 1], numbers[each + 2], numbers[each + 3]});
  }
  return places;
}

WordSplitter::WordSplitter(const Database& database) {
  fts5_api& fts = FtsOf(database);
  void* data = nullptr;
  fts5_tokenizer functions{};
  const char* arguments[] = {"remove_diacritics", "2", "categories", "L* N* Co M*"};
  if (fts.xFindTokenizer(&fts, "unicode61", &data, &functions) != SQLITE_OK ||
      functions.xCreate(data, arguments, static_cast<int>(std::size(arguments)), &tokenizer_) !=
          SQLITE_OK) {
    throw std::bad_alloc();
  }
  free_ = functions.xDelete;
  split_ = functions.xTokenize;
}

WordSplitter::~WordSplitter() { free_(tokenizer_); }

std::vector<TextSpan> WordSplitter::wordsOf(std::string_view prepared, size_t most) const {
  Splitting splitting{{}, most, false};
  split_(tokenizer_, &splitting, FTS5_TOKENIZE_DOCUMENT, prepared.data(),
         static_cast<int>(prepared.size()), TakeWord);
  if (splitting.isOutOfMemory) throw std::bad_alloc();
  return std::move(splitting.words);
}

void WordSplitter::forEachWord(std::string_view prepared,
                               const std::function<void(std::string_view)>& take) const {
  struct Taking {
    const std::function<void(std::string_view)>& take;
    std::exception_ptr error;
  };
  Taking taking{take, nullptr};
  const auto takeWord = [](void* context, int, const char* word, int size, int, int) {
    Taking& one = *static_cast<Taking*>(context);
    try {
      one.take({word, static_cast<size_t>(size)});
    } catch (...) {
      // Not through functions of C.
      one.error = std::current_exception();
      return SQLITE_ABORT;
    }
    return SQLITE_OK;
  };
  const int status = split_(tokenizer_, &taking, FTS5_TOKENIZE_DOCUMENT, prepared.data(),
                            static_cast<int>(prepared.size()), takeWord);
  if (taking.error) std::rethrow_exception(taking.error);
  if (status != SQLITE_OK) throw std::bad_alloc();
}

std::vector<FoundSpan> SpansIn(std::string_view text, const std::vector<WordPlace>& places,
                               size_t firstWord, const WordSplitter& splitter, size_t& words) {
  size_t needed = 0;
  for (const WordPlace& place : places) {
    if (place.first + place.count > firstWord) {
      needed = std::max(needed, place.first + place.count - firstWord);
    }
  }
  words = 0;
  if (needed == 0) return {};
  const WordText prepared = WordsOf(text, Origins::Keep);
  const std::vector<TextSpan> spans = splitter.wordsOf(prepared.text, needed);
  words = spans.size();
  std::vector<FoundSpan> found;
  for (const WordPlace& place : places) {
    if (place.first < firstWord || place.first - firstWord + place.count > words) continue;
    const size_t first = place.first - firstWord;
    if (place.count == 0) continue;
    const TextSpan span{Original(text, prepared, spans[first]).begin,
                        Original(text, prepared, spans[first + place.count - 1]).end};
    found.push_back({span, place.phrase});
  }
  std::stable_sort(found.begin(), found.end(), [](const FoundSpan& one, const FoundSpan& other) {
    return one.span.begin < other.span.begin;
  });
  return found;
}

}  // namespace tarn::archive
