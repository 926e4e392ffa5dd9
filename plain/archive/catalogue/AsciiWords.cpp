#include "archive/catalogue/AsciiWords.h"

#include <sqlite3.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

#include "archive/catalogue/WordPlaces.h"

namespace tarn::archive {
namespace {

enum class Sign : uint8_t { Between, OfWord, Other };

constexpr std::array<Sign, 256> SignTable() {
  std::array<Sign, 256> signs{};
  for (size_t byte = 0; byte < signs.size(); ++byte) {
    const bool isOfWord = (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z');
    const bool isOther = byte == 0 || (byte >= 'A' && byte <= 'Z') || byte >= 0x80;
    signs[byte] = isOfWord ? Sign::OfWord : isOther ? Sign::Other : Sign::Between;
  }
  return signs;
}

constexpr std::array<Sign, 256> kSigns = SignTable();

Sign SignOf(char letter) { return kSigns[static_cast<unsigned char>(letter)]; }

using TakeWord = int (*)(void*, int, const char*, int, int, int);

struct Splitter {
  fts5_tokenizer own{};
  Fts5Tokenizer* state = nullptr;

  ~Splitter() {
    if (state != nullptr) own.xDelete(state);
  }
};

// The data of the tokenizer that is replaced.
struct Replaced {
  fts5_tokenizer own{};
  void* data = nullptr;
};

int Create(void* context, const char** arguments, int count, Fts5Tokenizer** made) {
  const Replaced& replaced = *static_cast<const Replaced*>(context);
  std::unique_ptr<Splitter> splitter(new (std::nothrow) Splitter);
  if (!splitter) return SQLITE_NOMEM;
  splitter->own = replaced.own;
  const int status = replaced.own.xCreate(replaced.data, arguments, count, &splitter->state);
  if (status == SQLITE_OK) *made = reinterpret_cast<Fts5Tokenizer*>(splitter.release());
  return status;
}

void Delete(Fts5Tokenizer* tokenizer) { delete reinterpret_cast<Splitter*>(tokenizer); }

int Split(Fts5Tokenizer* tokenizer, void* context, int flags, const char* text, int length,
          TakeWord take) {
  for (int at = 0; at < length; ++at) {
    if (SignOf(text[at]) != Sign::Other) continue;
    const Splitter& splitter = *reinterpret_cast<const Splitter*>(tokenizer);
    return splitter.own.xTokenize(splitter.state, context, flags, text, length, take);
  }
  for (int at = 0; at < length;) {
    while (at < length && SignOf(text[at]) == Sign::Between) ++at;
    const int begin = at;
    while (at < length && SignOf(text[at]) == Sign::OfWord) ++at;
    if (at == begin) break;
    const int status = take(context, 0, text + begin, at - begin, begin, at);
    if (status != SQLITE_OK) return status;
  }
  return SQLITE_OK;
}

}  // namespace

void SplitAsciiSooner(const Database& database) {
  fts5_api& fts = FtsOf(database);
  auto replaced = std::make_unique<Replaced>();
  if (fts.xFindTokenizer(&fts, "unicode61", &replaced->data, &replaced->own) != SQLITE_OK) {
    throw DatabaseError("SQLite has no unicode61 here");
  }
  fts5_tokenizer functions = {Create, Delete, Split};
  const auto destroy = [](void* context) { delete static_cast<Replaced*>(context); };
  if (fts.xCreateTokenizer(&fts, "unicode61", replaced.get(), &functions, destroy) != SQLITE_OK) {
    throw std::bad_alloc();
  }
  (void)replaced.release();
}

}  // namespace tarn::archive
