// ObjectRegister.h - a register of objects that are not plain blocks, with the places in the source
// that they come from.
#ifndef TARN_KERNEL_OBJECTREGISTER_H
#define TARN_KERNEL_OBJECTREGISTER_H

#include <cstdint>
#include <mutex>
#include <unordered_map>

#include "Lock.h"

namespace tarn::kernel {

class ObjectRegister {
 public:
  ObjectRegister() = default;

  // Two announcements of one address and kind count twice. Null is no object.
  void Add(int32_t kind, const void* object, int32_t line, const char16_t* file);

  // False when no such object is known.
  bool Remove(int32_t kind, const void* object);

  uint64_t size();

  // Writes a line about each object to standard error. False when somebody holds the lock, and then
  // none.
  bool List(const char* what);

 private:
  struct Record {
    const char16_t* file;
    int32_t line;
    int32_t kind;
  };

  Lock mutex_;
  std::unordered_multimap<const void*, Record> records_;
  uint64_t unrecorded_ = 0;  // objects that there was no memory to record
};

}  // namespace tarn::kernel

#endif
