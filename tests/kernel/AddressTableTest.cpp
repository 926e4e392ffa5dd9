#include "AddressTable.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

namespace tarn::kernel {
namespace {

const void* Address(uintptr_t number) { return reinterpret_cast<const void*>(number); }

TEST(AddressTable, FindsNothingInAnEmptyTable) {
  static AddressTable<int> table;  // has no destructor to free it
  int taken = 0;
  EXPECT_EQ(table.Find(Address(16)), nullptr);
  EXPECT_EQ(table.Find(nullptr), nullptr);
  EXPECT_FALSE(table.Take(Address(16), taken));
  EXPECT_EQ(table.size(), 0U);
}

TEST(AddressTable, HoldsOneAddressSeveralTimes) {
  static AddressTable<int> table;  // has no destructor to free it
  ASSERT_TRUE(table.Insert(Address(32), 4));
  ASSERT_TRUE(table.Insert(Address(32), 5));
  int taken = 0;
  EXPECT_TRUE(table.Take(Address(32), taken, [](int record) { return record == 5; }));
  EXPECT_EQ(taken, 5);
  EXPECT_FALSE(table.Take(Address(32), taken, [](int record) { return record == 5; }));
  EXPECT_TRUE(table.Take(Address(32), taken));
  EXPECT_EQ(taken, 4);
  EXPECT_EQ(table.size(), 0U);
}

// Long random runs against a map, dense enough that walks collide and wrap around the end.
TEST(AddressTable, AgreesWithAMapOverRandomRuns) {
  static AddressTable<uint64_t> table;  // has no destructor to free it
  std::map<uintptr_t, uint64_t> model;
  std::mt19937_64 random(20240717);
  for (int step = 0; step < 200000; ++step) {
    const uintptr_t number = (random() % 3000 + 1) * 16;
    const auto known = model.find(number);
    if (known == model.end()) {
      ASSERT_TRUE(table.Insert(Address(number), static_cast<uint64_t>(step)));
      model.emplace(number, step);
    } else {
      uint64_t taken = 0;
      ASSERT_TRUE(table.Take(Address(number), taken));
      ASSERT_EQ(taken, known->second);
      model.erase(known);
    }
    ASSERT_EQ(table.size(), model.size());
    const uintptr_t other = (random() % 3000 + 1) * 16;
    const uint64_t* const found = table.Find(Address(other));
    ASSERT_EQ(found != nullptr, model.count(other) == 1);
    if (found != nullptr) {
      ASSERT_EQ(*found, model[other]);
    }
  }
}

TEST(AddressTable, VisitsEveryEntryOnce) {
  static AddressTable<uintptr_t> table;  // has no destructor to free it
  for (uintptr_t number = 1; number <= 5000; ++number) {
    ASSERT_TRUE(table.Insert(Address(number * 16), number));
  }
  std::set<uintptr_t> seen;
  table.ForEach([&](const void* address, uintptr_t record) {
    EXPECT_EQ(reinterpret_cast<uintptr_t>(address), record * 16);
    EXPECT_TRUE(seen.insert(record).second);
  });
  EXPECT_EQ(seen.size(), 5000U);
}

}  // namespace
}  // namespace tarn::kernel
