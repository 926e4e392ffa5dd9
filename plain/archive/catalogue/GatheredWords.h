// GatheredWords.h - words of items with their places, gathered in memory until they make a segment
// of an index.
#ifndef TARN_ARCHIVE_GATHEREDWORDS_H
#define TARN_ARCHIVE_GATHEREDWORDS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::archive {

class SegmentPages;

class GatheredWords {
 public:
  GatheredWords();

  // The words that follow are of this item. Numbers rise.
  void beginItem(int64_t number);

  // Columns rise within an item, places within a column.
  void add(std::string_view word, uint8_t column, uint32_t place);

  bool isEmpty() const { return terms_.empty(); }

  // In bytes: the same for the same words, whatever was gathered before.
  size_t memory() const;

  // All words in the order of their bytes, as terms of the index. Nothing is gathered then.
  void moveTo(SegmentPages& pages);

 private:
  // A word, and a list of pieces with bytes that hold for each item its distance from the one
  // before (from first_ for the first), the places as FTS5 stores them, and a number 0, which no
  // place is.
  struct Term {
    uint32_t text;  // where in bytes_, as a term of the index; the first piece is after it
    uint32_t length;
    uint32_t item;      // the last one, counted from first_
    uint32_t place;     // the last one there
    uint32_t at;        // of the next byte
    uint32_t end;       // of the last piece
    uint8_t column;     // of the last place
    uint8_t doublings;  // of the size of pieces, from the first to the last

    uint32_t firstPiece() const { return text + length; }
  };
  struct Slot {
    uint32_t hash;
    uint32_t term;  // its number, from 1; 0 is a free slot
  };
  struct Sorted {
    uint64_t begin[2];  // the first 16 bytes, as numbers that compare as they do
    uint32_t term;
  };

  Term& find(std::string_view word);
  Term& insert(std::string_view word, Slot& slot, uint32_t hash);
  void grow();
  uint32_t newBytes(size_t size);
  void put(Term& term, uint32_t number);
  void addPiece(Term& term);
  void putByte(Term& term, uint8_t byte);
  std::vector<Sorted> sorted() const;
  void clear();
  std::string_view textOf(const Term& term) const {
    return {bytes_.data() + term.text, term.length};
  }
  void joinPieces(const Term& term, std::string& bytes) const;
  void makeList(std::string_view pieces, std::string& list) const;

  int64_t first_ = 0;
  uint32_t item_ = 0;
  std::vector<Slot> slots_;
  std::vector<Term> terms_;
  std::vector<char> bytes_;
};

}  // namespace tarn::archive

#endif
