// StoreFile.h - the file of a store, opened for reading through the host's I/O.
//
// Every read seeks first: the position is shared by all who read. The file is closed when the
// object dies.
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

  // All bytes or an exception: std::out_of_range "fseek failed" or "fread failed".
  void read(void* buffer, size_t count, ulonglong address);

  // The size of the file, asked for once. std::out_of_range "fseek failed".
  ulonglong get_size();

 private:
  wstring path_;
  ulonglong handle_;
  ulonglong size_ = 0;  // 0: not asked for yet
};

}  // namespace pststore

#endif
