// StoreReading.h - reads everything that a store holds: folders, messages, attachments, all their
// properties, and the tables of folders and messages.
//
// Every object is read on its own, so that damage in one costs only that one. What the store throws
// is counted; anything that is not among its exceptions leaves ReadStore.
#ifndef TARN_TESTS_SUPPORT_STOREREADING_H
#define TARN_TESTS_SUPPORT_STOREREADING_H

#include <cstdint>
#include <memory>
#include <stdexcept>

#include "pststore/DbContext.h"

namespace tarn::test {

struct StoreTotals {
  uint64_t folders = 0;
  uint64_t messages = 0;
  uint64_t attachments = 0;
  uint64_t properties = 0;
  uint64_t rows = 0;   // of tables
  uint64_t cells = 0;  // of tables
  uint64_t bytes = 0;  // of values and cells
  uint64_t failures = 0;
};

struct StoreReadOptions {
  // Each value in every way that there is, whatever its type; else once, as its type says.
  bool inEveryWay = false;
  // Reading ends after so many bytes, rows or failures: small files can describe large stores.
  uint64_t maxBytes = UINT64_MAX;
  uint64_t maxRows = UINT64_MAX;
  uint64_t maxFailures = UINT64_MAX;
};

// Whether the store may throw this.
bool IsStoreException(const std::exception& caught);

StoreTotals ReadStore(const std::shared_ptr<pststore::db_context>& store,
                      const StoreReadOptions& options = {});

}  // namespace tarn::test

#endif
