#include "archive/tnef/TnefProperties.h"

#include <gtest/gtest.h>

#include "support/TnefBuilder.h"

namespace tarn::archive::tnef {
namespace {

using namespace mapi;
using test::TnefFilled;
using test::TnefList;
using test::TnefNumber;
using test::TnefWide;

constexpr std::string_view kSet = "0123456789abcdef";

struct Read {
  explicit Read(std::string list) : bytes(std::move(list)) { set.readList(bytes, names); }
  explicit Read(const TnefList& list) : Read(list.write()) {}

  std::string bytes;
  TnefNames names;
  TnefProperties set;
};

TEST(TnefPropertiesTest, ReadsValuesOfFixedWidth) {
  struct Type {
    uint16_t type;
    size_t width;
  };
  constexpr Type kTypes[] = {{kTypeInteger16, 2}, {kTypeInteger32, 4}, {kTypeFloat32, 4},
                             {kTypeFloat64, 8},   {kTypeCurrency, 8},  {kTypeFloatingTime, 8},
                             {kTypeError, 4},     {kTypeBoolean, 1},   {kTypeInteger64, 8},
                             {kTypeTime, 8},      {kTypeGuid, 16}};
  TnefList list;
  uint16_t id = 0;
  for (const Type& one : kTypes) {
    list.fixed(++id, one.type, std::string(kSet.substr(0, one.width)));
  }
  Read read(list);
  id = 0;
  for (const Type& one : kTypes) {
    EXPECT_EQ(*read.set.bytes(++id, 16), kSet.substr(0, one.width)) << id;
    EXPECT_EQ(read.set.typeOf(id), one.type);
    EXPECT_EQ(read.set.sizeOf(id), one.width);
    EXPECT_EQ(read.set.tags()[id - 1u].id, id);
  }
  EXPECT_EQ(read.set.tags().size(), std::size(kTypes));
  EXPECT_TRUE(read.set.troubles().empty());
  EXPECT_EQ(read.set.sizeOfList(), read.bytes.size());
}

TEST(TnefPropertiesTest, ReadsTextAndBytesWithoutTerminators) {
  Read read(TnefList()
                .text(1, u"Hi")
                .text8(2, "abc")
                .binary(3, std::string("a\0", 2))
                .values(4, kTypeString, {TnefWide(u"x")})
                .values(5, kTypeString8, {""})
                .values(6, kTypeString, {})
                .values(7, kTypeString, {"odd"})
                .object(8, test::kTnefStreamInterface, "of it")
                .values(9, kTypeObject, {"short"}));
  EXPECT_EQ(*read.set.bytes(1, 4), TnefWide(u"Hi"));
  EXPECT_EQ(*read.set.bytes(2, 3), "abc");
  EXPECT_EQ(*read.set.bytes(3, 3), std::string("a\0", 2));
  EXPECT_EQ(*read.set.bytes(4, 3), TnefWide(u"x"));
  EXPECT_EQ(*read.set.bytes(5, 3), "");
  EXPECT_EQ(*read.set.bytes(6, 3), "");
  EXPECT_EQ(*read.set.bytes(7, 3), "odd");
  EXPECT_EQ(*read.set.bytes(8, 5), "of it");
  EXPECT_EQ(read.set.sizeOf(8), 5u);
  EXPECT_EQ(*read.set.bytes(9, 5), "");
  EXPECT_EQ(*ReadAll(**read.set.stream(2), 3), "abc");
  EXPECT_EQ(*read.set.values(2, 3), std::vector<std::string>{"abc"});
  EXPECT_TRUE(read.set.troubles().empty());
}

TEST(TnefPropertiesTest, TellsWhatIsNotThereOrTooLarge) {
  Read read(TnefList().text8(1, "abcd").values(2, kMultipleValues | kTypeString8, {"ab", "cd"}));
  EXPECT_EQ(read.set.bytes(3, 9).trouble().kind, TroubleKind::Missing);
  EXPECT_EQ(read.set.stream(3).trouble().kind, TroubleKind::Missing);
  EXPECT_EQ(read.set.values(3, 9).trouble().kind, TroubleKind::Missing);
  EXPECT_FALSE(read.set.sizeOf(3).has_value());
  EXPECT_FALSE(read.set.typeOf(3).has_value());
  EXPECT_FALSE(read.set.view(3).has_value());
  EXPECT_EQ(read.set.bytes(1, 3).trouble().kind, TroubleKind::TooLarge);
  EXPECT_EQ(read.set.values(1, 3).trouble().kind, TroubleKind::TooLarge);
  EXPECT_EQ(read.set.values(2, 3).trouble().kind, TroubleKind::TooLarge);
  EXPECT_TRUE(read.set.values(2, 4).ok());
}

TEST(TnefPropertiesTest, ReadsSeveralValues) {
  Read read(TnefList()
                .values(1, kMultipleValues | kTypeString8, {std::string("one\0", 4), "", "two"})
                .fixed(2, kMultipleValues | kTypeInteger16,
                       TnefNumber(2, 4) + TnefFilled("aa") + TnefFilled("bb"))
                .fixed(3, kMultipleValues | kTypeInteger32, TnefNumber(0, 4))
                .text8(4, "after"));
  EXPECT_EQ(*read.set.values(1, 99), (std::vector<std::string>{"one", "", "two"}));
  EXPECT_EQ(*read.set.values(2, 99), (std::vector<std::string>{"aa", "bb"}));
  EXPECT_TRUE(read.set.values(3, 99)->empty());
  EXPECT_EQ(read.set.sizeOf(1), 6u);
  EXPECT_EQ(*read.set.bytes(4, 99), "after");
}

TEST(TnefPropertiesTest, NamesKeepTheirIdsUnlessTheyAreTaken) {
  Read read(TnefList()
                .named(kSet, 7u)
                .integer(0x8010, 1)
                .named(kSet, u"x-name")
                .integer(0x8011, 2)
                .named(kSet, 8u)
                .integer(0x8010, 3)
                .named(kSet, 7u)
                .integer(0x8020, 4)
                .named(kSet, 9u)
                .integer(0xFFFF, 5));
  PropertyName name;
  std::copy(kSet.begin(), kSet.end(), name.set.begin());
  name.number = 7;
  EXPECT_EQ(read.names.idOf(name), 0x8010);
  EXPECT_EQ(*read.set.bytes(0x8010, 4), TnefNumber(1, 4));
  name.number = 8;
  EXPECT_EQ(read.names.idOf(name), 0x8000);
  EXPECT_EQ(*read.set.bytes(0x8000, 4), TnefNumber(3, 4));
  name.number = 9;
  EXPECT_EQ(read.names.idOf(name), 0x8001);
  name.number = 10;
  EXPECT_FALSE(read.names.idOf(name).has_value());
  EXPECT_EQ(read.names.nameOf(0x8011).value().name, u"x-name");
  EXPECT_FALSE(read.names.nameOf(0x8020).has_value());
  EXPECT_EQ(read.set.tags().size(), 4u);
  EXPECT_TRUE(read.set.troubles().empty());
}

TEST(TnefNamesTest, EndWhereIdsDo) {
  TnefNames names;
  PropertyName name;
  for (name.number = 0; name.number < 0x7FFF; ++name.number) {
    ASSERT_EQ(names.add(0x8000, name), 0x8000 + name.number);
  }
  EXPECT_FALSE(names.add(0x8000, name).has_value());
  name.number = 5;
  EXPECT_EQ(names.add(0x9000, name), 0x8005);
}

TEST(TnefPropertiesTest, TheFirstValueOfAnIdCounts) {
  Read read(TnefList().integer(1, 10).integer(1, 20));
  EXPECT_EQ(*read.set.bytes(1, 4), TnefNumber(10, 4));
  EXPECT_EQ(read.set.tags().size(), 1u);
  read.set.add({1, kTypeBinary}, "no");
  EXPECT_EQ(read.set.typeOf(1), kTypeInteger32);
  read.set.replace({1, kTypeBinary}, "yes");
  EXPECT_EQ(read.set.typeOf(1), kTypeBinary);
  EXPECT_EQ(*read.set.bytes(1, 4), "yes");
  read.set.replace({2, kTypeBinary}, "new");
  EXPECT_EQ(*read.set.bytes(2, 4), "new");
}

// Every list that is cut anywhere gives the properties that are whole before the cut.
TEST(TnefPropertiesTest, WhatComesBeforeADamageIsRead) {
  const std::string list = TnefList()
                               .integer(1, 10)
                               .text(2, u"two")
                               .named(kSet, u"name")
                               .integer(0x8000, 3)
                               .named(kSet, 4u)
                               .values(0x8001, kMultipleValues | kTypeBinary, {"a", "b"})
                               .write();
  const size_t ends[] = {4 + 8, 4 + 8 + 20, 4 + 8 + 20 + 44, list.size() - 3};
  for (size_t size = 0; size < list.size(); ++size) {
    Read read(list.substr(0, size));
    size_t whole = 0;
    for (const size_t end : ends) whole += size >= end ? 1 : 0;
    EXPECT_EQ(read.set.tags().size(), whole) << size;
    EXPECT_EQ(read.set.troubles().size(), whole == 4 ? 0u : 1u) << size;
    EXPECT_EQ(read.set.sizeOfList().has_value(), whole == 4) << size;
  }
}

TEST(TnefPropertiesTest, TypesThatAreUnknownEndTheList) {
  Read read(TnefList().integer(1, 1).fixed(2, 0x0077, "1234").integer(3, 3));
  EXPECT_EQ(read.set.tags().size(), 1u);
  ASSERT_EQ(read.set.troubles().size(), 1u);
  EXPECT_EQ(read.set.troubles()[0].reason, "the list of the properties is damaged");
}

TEST(TnefTableTest, IsListsOneAfterTheOther) {
  const std::string first = TnefList().integer(1, 1).text(2, u"x").write();
  const std::string second = TnefList().write();
  const std::string third = TnefList().integer(1, 3).write();
  const std::string table = TnefNumber(3, 4) + first + second + third;
  const RowsOfTable read = ReadTable(table);
  EXPECT_EQ(read.declared, 3u);
  EXPECT_EQ(read.rows, (std::vector<std::string_view>{first, second, third}));
  const std::string damaged = TnefNumber(9, 4) + first + TnefNumber(1, 4) + "xxxxxxxx";
  EXPECT_EQ(ReadTable(damaged).rows.size(), 2u);
  EXPECT_EQ(ReadTable(TnefNumber(9, 4) + first).rows.size(), 1u);
  EXPECT_EQ(ReadTable("").rows.size(), 0u);
}

}  // namespace
}  // namespace tarn::archive::tnef
