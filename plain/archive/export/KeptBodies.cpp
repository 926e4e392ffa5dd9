#include "archive/export/KeptBodies.h"

namespace tarn::archive {
namespace {

size_t SizeOf(const Bodies& bodies) {
  return (bodies.html ? bodies.html->bytes.size() : 0) + (bodies.text ? bodies.text->size() : 0) +
         (bodies.rtf ? bodies.rtf->size() : 0);
}

}  // namespace

Bodies KeptBodies::bodies() {
  if (kept_) return *kept_;
  Bodies read = item_.bodies();
  if (SizeOf(read) <= kMostKeptBodies) kept_ = read;
  return read;
}

}  // namespace tarn::archive
