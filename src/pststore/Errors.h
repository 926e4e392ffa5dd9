// Errors.h - what the store throws. Besides these it throws std::out_of_range, std::length_error,
// std::logic_error and std::runtime_error where its operations say so, std::bad_weak_ptr when a
// page or block outlives its context, and std::bad_alloc without memory.
#ifndef TARN_PSTSTORE_ERRORS_H
#define TARN_PSTSTORE_ERRORS_H

#include <exception>
#include <stdexcept>

#include "pststore/Types.h"

namespace pststore {

// The file contradicts itself or its format.
class database_corrupt : public std::runtime_error {
 public:
  explicit database_corrupt(const char* message) : std::runtime_error(message) {}
};

// The file has the other of the two layouts.
class invalid_format : public database_corrupt {
 public:
  invalid_format() : database_corrupt("Unexpected Database Format") {}
};

// A signature is not the one computed, or not the one that has to be there.
class sig_mismatch : public database_corrupt {
 public:
  sig_mismatch(const char* message, ulonglong address_, ulonglong id_, ulong first_, ulong second_)
      : database_corrupt(message), address(address_), id(id_), first(first_), second(second_) {}

  const ulonglong address;
  const ulonglong id;
  const ulong first;   // pages and blocks: the computed one; heaps: the one found
  const ulong second;  // pages and blocks: the stored one; heaps: the one expected
};

class crc_fail : public database_corrupt {
 public:
  crc_fail(const char* message, ulonglong address_, ulonglong id_, ulong computed_, ulong stored_)
      : database_corrupt(message),
        address(address_),
        id(id_),
        computed(computed_),
        stored(stored_) {}

  const ulonglong address;
  const ulonglong id;
  const ulong computed;
  const ulong stored;
};

class unexpected_block : public database_corrupt {
 public:
  using database_corrupt::database_corrupt;
};

class unexpected_page : public database_corrupt {
 public:
  using database_corrupt::database_corrupt;
};

// A block made in memory cannot grow so far.
class can_not_resize : public std::runtime_error {
 public:
  explicit can_not_resize(const char* message) : std::runtime_error(message) {}
};

// The store does not read this.
class not_implemented : public std::logic_error {
 public:
  explicit not_implemented(const char* message) : std::logic_error(message) {}
};

// A tree has no such key. K is ushort, ulong or ulonglong.
template <typename K>
class key_not_found : public std::exception {
 public:
  explicit key_not_found(const K& key_) : key(key_) {}
  const char* what() const noexcept override { return "key not found"; }

  const K key;
};

}  // namespace pststore

#endif
