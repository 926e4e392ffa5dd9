#include "archive/catalogue/WordRank.h"

#include <sqlite3.h>

#include <cmath>
#include <new>

#include "archive/catalogue/IndexNumber.h"
#include "archive/catalogue/WordPlaces.h"

namespace tarn::archive {
namespace {

// Of Okapi BM25: how soon further places of a word count less, and how much long items do.
constexpr double kSaturation = 1.2;
constexpr double kOfLength = 0.75;
// Of a phrase that more than half of all items have.
constexpr double kLeastRarity = 1e-6;

constexpr int64_t kNoSize = -1;

int CountRow(const Fts5ExtensionApi*, Fts5Context*, void* count) {
  ++*static_cast<int64_t*>(count);
  return SQLITE_OK;
}

}  // namespace

WordRank::WordRank(const Database& database)
    : sizes_(database, "SELECT id, sz FROM words_docsize WHERE id BETWEEN ?1 AND ?2") {
  constexpr auto kAnswer = [](const Fts5ExtensionApi* api, Fts5Context* row, sqlite3_context* out,
                              int, sqlite3_value**) {
    int status = SQLITE_OK;
    try {
      status = static_cast<WordRank*>(api->xUserData(row))->note(api, row);
    } catch (const std::bad_alloc&) {
      status = SQLITE_NOMEM;
    } catch (const DatabaseError&) {
      status = SQLITE_CORRUPT;
    }
    if (status == SQLITE_OK) {
      sqlite3_result_int(out, 1);
    } else {
      sqlite3_result_error_code(out, status);
    }
  };
  fts5_api& fts = FtsOf(database);
  if (fts.xCreateFunction(&fts, "tarn_rank", this, kAnswer, nullptr) != SQLITE_OK) {
    throw std::bad_alloc();
  }
  sizesRead_.fill(kNoSize);
}

WordRank::~WordRank() = default;

void WordRank::begin() {
  rarities_.clear();
  ranked_.clear();
}

int WordRank::prepare(const Fts5ExtensionApi* api, Fts5Context* row) {
  sqlite3_int64 items = 0;
  sqlite3_int64 words = 0;
  int status = api->xRowCount(row, &items);
  if (status == SQLITE_OK) status = api->xColumnTotalSize(row, -1, &words);
  if (status != SQLITE_OK) return status;
  averageSize_ = static_cast<double>(words) / static_cast<double>(items);
  const int count = api->xPhraseCount(row);
  for (int phrase = 0; phrase < count; ++phrase) {
    int64_t found = 0;
    status = api->xQueryPhrase(row, phrase, &found, CountRow);
    if (status != SQLITE_OK) return status;
    const double rarity =
        std::log((static_cast<double>(items - found) + 0.5) / (static_cast<double>(found) + 0.5));
    rarities_.push_back(rarity > 0 ? rarity : kLeastRarity);
  }
  return SQLITE_OK;
}

int WordRank::note(const Fts5ExtensionApi* api, Fts5Context* row) {
  if (rarities_.empty()) {
    const int status = prepare(api, row);
    if (status != SQLITE_OK) return status;
  }
  const int64_t item = api->xRowid(row);
  const std::optional<double> size = sizeOf(item);
  if (!size) return SQLITE_CORRUPT;
  const double ofLength = kSaturation * (1 - kOfLength + kOfLength * *size / averageSize_);
  double sum = 0;
  for (size_t each = 0; each < rarities_.size(); ++each) {
    double places = 0;
    Fts5PhraseIter place;
    int column = 0;
    int offset = 0;
    int status = api->xPhraseFirst(row, static_cast<int>(each), &place, &column, &offset);
    for (; status == SQLITE_OK && column >= 0; api->xPhraseNext(row, &place, &column, &offset)) {
      const auto at = static_cast<size_t>(column);
      places += at < kWeights.size() ? kWeights[at] : 0;
    }
    if (status != SQLITE_OK) return status;
    sum += rarities_[each] * (places * (kSaturation + 1) / (places + ofLength));
  }
  ranked_.push_back({item, -sum});
  return SQLITE_OK;
}

std::optional<double> WordRank::sizeOf(int64_t item) {
  const auto place = [&](int64_t number) {
    return static_cast<uint64_t>(number) - static_cast<uint64_t>(*firstSize_);
  };
  if (!firstSize_ || place(item) >= sizesRead_.size()) {
    firstSize_ = item;
    sizesRead_.fill(kNoSize);
    sizes_.bind(1, item);
    sizes_.bind(2, item > INT64_MAX - kSizesAtOnce ? INT64_MAX : item + kSizesAtOnce - 1);
    while (sizes_.step()) {
      sizesRead_[place(sizes_.number(0)) % sizesRead_.size()] =
          static_cast<int64_t>(SumOfIndexNumbers(sizes_.bytes(1)) & INT64_MAX);
    }
    sizes_.reset();
  }
  const int64_t size = sizesRead_[place(item)];
  return size == kNoSize ? std::nullopt : std::optional(static_cast<double>(size));
}

}  // namespace tarn::archive
