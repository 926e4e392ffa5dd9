// StoreFile.h - the file of a store, opened for reading through the host's I/O.
//
// Every read seeks first: the position is shared by all who read. The file is closed when the
// object dies.
//
// All reads together may take 1 GiB and 64 times the size of the file, counted in the bytes that
// were read, 2 KiB at least for each read; then every further read raises database_corrupt.
// Reading a whole store takes its size a few times; a damaged one can name the same data in as many
// places as it has nodes.
#ifndef TARN_PSTSTORE_STOREFILE_H
#define TARN_PSTSTORE_STOREFILE_H

#include "pststore/Types.h"

namespace pststore {

class store_file {
 public:
  // std::runtime_error "fopen failed" when it does not open.
  explicit store_file(const char16_t* path);
  store_file(const store_file&) = delete;
  store_file& operator=(const store_file&) = delete;
  ~store_file();

  // Fills the buffer. Throws
  //   std::out_of_range   "fseek failed" or "fread failed";
  //   database_corrupt    all reads together would take too much.
  void read(std::span<unsigned char> buffer, ulonglong address);

  // Counts bytes that were made for a hole like bytes that were read. database_corrupt as read.
  void count(size_t bytes);

  // Not used by the filter: what was counted so far.
  ulonglong get_bytes_taken() const { return taken_; }

  // The size of the file, asked for once. std::out_of_range "fseek failed".
  ulonglong get_size();

 private:
  // Raises database_corrupt when so many more bytes would be too many.
  void expect_budget(size_t bytes);

  wstring path_;
  ulonglong handle_;
  ulonglong taken_ = 0;  // bytes read, or counted like these
  ulonglong size_ = 0;   // 0: not asked for yet
};

}  // namespace pststore

#endif
