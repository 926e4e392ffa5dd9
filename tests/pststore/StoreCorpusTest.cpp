// Reads every store below the folder "pst" of the folder that MAIL_CORPUS names, whole: all
// folders, messages and attachments, all their properties, all tables. What they hold is not
// compared with anything; every read has to end in a value or in an exception of the store.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "support/StoreReading.h"

namespace tarn::test {
namespace {

TEST(StoreCorpus, EverythingInEveryStore) {
  const char* const corpus = std::getenv("MAIL_CORPUS");
  if (corpus == nullptr) {
    std::cout << "MAIL_CORPUS names no folder of mail files; nothing to read\n";
    return;
  }
  size_t stores = 0;
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(std::filesystem::path(corpus) / "pst")) {
    if (entry.path().extension() != ".pst") continue;
    ++stores;
    SCOPED_TRACE(entry.path());
    for (const bool inEveryWay : {false, true}) {
      const auto store = pststore::open_database(entry.path().u16string().c_str());
      const StoreTotals totals = ReadStore(store, {.inEveryWay = inEveryWay});
      EXPECT_NE(totals.folders, 0U);
      EXPECT_NE(totals.properties, 0U);
      if (inEveryWay) continue;
      std::cout << entry.path().filename().string() << ": " << totals.folders << " folders, "
                << totals.messages << " messages, " << totals.attachments << " attachments, "
                << totals.properties << " properties, " << totals.rows << " rows, " << totals.cells
                << " cells, " << totals.bytes << " bytes, " << totals.failures << " failures\n";
    }
  }
  EXPECT_NE(stores, 0U);
}

}  // namespace
}  // namespace tarn::test
