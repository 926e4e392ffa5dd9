#include "archive/catalogue/SearchQuery.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <utility>
#include <vector>

#include "archive/catalogue/WordText.h"

namespace tarn::archive {
namespace {

struct FieldName {
  std::string_view name;
  std::string_view column;
};

constexpr FieldName kFields[] = {
    {"attachment", "attachments"}, {"body", "body"},     {"from", "sender"},
    {"subject", "subject"},        {"to", "recipients"},
};

constexpr bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool HasWord(std::string_view text) {
  for (size_t at = 0; at < text.size();) {
    UChar32 character = 0;
    U8_NEXT_OR_FFFD(reinterpret_cast<const uint8_t*>(text.data()), at, text.size(), character);
    constexpr uint32_t kOfWords = U_GC_L_MASK | U_GC_N_MASK | U_GC_CO_MASK;
    if ((U_GET_GC_MASK(character) & kOfWords) != 0) return true;
  }
  return false;
}

struct Term {
  std::string_view column;  // empty: all
  std::string_view text;
  bool isQuoted = false;
  bool isBeginning = false;
};

class Scanner {
 public:
  explicit Scanner(std::string_view words) : rest_(words) {}

  std::optional<Term> next() {
    while (!rest_.empty() && IsBlank(rest_.front())) rest_.remove_prefix(1);
    if (rest_.empty()) return std::nullopt;
    Term term;
    for (const FieldName& field : kFields) {
      if (rest_.starts_with(field.name) && rest_.substr(field.name.size()).starts_with(':')) {
        term.column = field.column;
        rest_.remove_prefix(field.name.size() + 1);
        break;
      }
    }
    term.isQuoted = rest_.starts_with('"');
    term.text = term.isQuoted ? takeQuoted() : takeWord();
    term.isBeginning = takeStars(term);
    return term;
  }

 private:
  std::string_view takeQuoted() {
    rest_.remove_prefix(1);
    const std::string_view text = rest_.substr(0, rest_.find('"'));
    rest_.remove_prefix(text.size() < rest_.size() ? text.size() + 1 : text.size());
    return text;
  }

  // A quote begins something else, also without a blank.
  std::string_view takeWord() {
    size_t end = 0;
    while (end < rest_.size() && !IsBlank(rest_[end]) && rest_[end] != '"') ++end;
    const std::string_view text = rest_.substr(0, end);
    rest_.remove_prefix(end);
    return text;
  }

  bool takeStars(const Term& term) {
    if (!term.isQuoted) return term.text.ends_with('*');
    const bool isThere = rest_.starts_with('*');
    while (rest_.starts_with('*')) rest_.remove_prefix(1);
    return isThere;
  }

  std::string_view rest_;
};

std::string PhraseOf(const Term& term) {
  WantedWords words = WordsToFind(term.text);
  std::string phrase;
  if (!term.column.empty()) phrase = std::string(term.column) + " : ";
  phrase += '"';
  for (const char letter : words.text) {
    if (letter == '"') phrase += '"';
    // A NUL would end the expression.
    phrase += letter == '\0' ? ' ' : letter;
  }
  phrase += '"';
  if (term.isBeginning || words.endsInPart) phrase += " *";
  return phrase;
}

// Phrases of which one is to occur.
using Alternative = std::string;

std::string Joined(const std::vector<Alternative>& choices, std::string_view with) {
  std::string all;
  for (const Alternative& choice : choices) {
    if (!all.empty()) all += with;
    all += '(' + choice + ')';
  }
  return all;
}

}  // namespace

std::optional<std::string> QueryOf(std::string_view words) {
  std::vector<Alternative> wanted;
  std::vector<Alternative> unwanted;
  bool isOr = false;
  bool isNot = false;
  bool canBeChosen = false;  // the last word is wanted
  Scanner scanner(words);
  while (const std::optional<Term> term = scanner.next()) {
    const bool isPlain = !term->isQuoted && term->column.empty();
    if (isPlain && term->text == "AND") continue;
    if (isPlain && term->text == "OR") {
      isOr = true;
    } else if (isPlain && term->text == "NOT") {
      isNot = true;
    } else if (HasWord(term->text)) {
      if (isNot) {
        unwanted.push_back(PhraseOf(*term));
      } else if (isOr && canBeChosen) {
        wanted.back() += " OR " + PhraseOf(*term);
      } else {
        wanted.push_back(PhraseOf(*term));
      }
      canBeChosen = !std::exchange(isNot, false);
      isOr = false;
    }
  }
  if (wanted.empty()) return std::nullopt;
  if (unwanted.empty()) return Joined(wanted, " AND ");
  return "(" + Joined(wanted, " AND ") + ") NOT (" + Joined(unwanted, " OR ") + ")";
}

}  // namespace tarn::archive
