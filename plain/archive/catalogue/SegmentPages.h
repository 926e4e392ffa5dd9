// SegmentPages.h - a segment of an index of FTS5, as the rows of the tables that hold it. SQLite
// describes them in "FTS5 Data Structures" (sqlite.org/fts5.html, appendix).
#ifndef TARN_ARCHIVE_SEGMENTPAGES_H
#define TARN_ARCHIVE_SEGMENTPAGES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::archive {

class SegmentPages {
 public:
  // A page holds about so many bytes: `pgsz` of the index.
  static constexpr size_t kPageSize = 4050;
  explicit SegmentPages(size_t pageSize = kPageSize);

  // Terms come in the order of their bytes. A list has for each item its distance from the one
  // before (the first: its number), twice the size of what follows, and its places.
  void add(std::string_view term, std::string_view list);
  // Nothing is added after it.
  void finish();

  // Of the table of data: its id without the segment's number, and its bytes.
  struct Page {
    int64_t id;
    size_t begin;
    size_t size;
  };
  const std::vector<Page>& pages() const { return pages_; }
  std::string_view bytesOf(const Page& page) const {
    return std::string_view(bytes_).substr(page.begin, page.size);
  }

  // Of the table that leads to pages by terms.
  struct Lead {
    std::string term;  // not after the page's first term, and after all before
    int64_t page;      // its number twice, and 1 where lists go on over pages that have an index
  };
  const std::vector<Lead>& leads() const { return leads_; }

  // The number of the last page of terms; they are numbered from 1.
  int64_t lastPage() const { return page_ - 1; }

 private:
  // One level of the index of a long list: which items its pages begin with.
  struct ListIndex {
    std::string bytes;
    int64_t page = 0;
    int64_t last = 0;
    bool hasLast = false;
  };

  size_t used() const { return leaf_.size() + offsets_.size(); }
  void addTerm(std::string_view term);
  void addList(std::string_view list);
  void beginItem(uint64_t distance, int64_t item);
  void addPlaces(std::string_view places);
  void lead(std::string_view term);
  void endLead();
  void endLeaf();
  void beginLeaf();
  void addToListIndex(int64_t item);
  void pushUp(size_t level);
  void put(int64_t id, std::string_view bytes);

  const size_t pageSize_;
  std::string bytes_;
  std::vector<Page> pages_;
  std::vector<Lead> leads_;

  std::string leaf_;     // the page that is being filled
  std::string offsets_;  // of its terms
  size_t lastOffset_ = 0;
  int64_t page_ = 1;
  bool hasTerm_ = false;
  bool hasItem_ = false;  // before its first term

  std::string term_;  // the last one
  std::string leadTerm_;
  int64_t leadPage_ = 1;
  size_t pagesWithoutTerm_ = 0;
  std::vector<ListIndex> listIndex_;
};

}  // namespace tarn::archive

#endif
