#include "archive/msg/MsgNames.h"

#include <gtest/gtest.h>

#include "archive/mapi/FakeMessage.h"
#include "support/compound/CompoundBuilder.h"

namespace tarn::archive::msg {
namespace {

using mapi::LittleEndian;
using mapi::PropertyName;
using mapi::Wide;

constexpr std::array<uint8_t, 16> kMapiSet = {0x28, 0x03, 0x02, 0, 0, 0, 0, 0,
                                              0xC0, 0,    0,    0, 0, 0, 0, 0x46};
constexpr std::array<uint8_t, 16> kStringsSet = {0x29, 0x03, 0x02, 0, 0, 0, 0, 0,
                                                 0xC0, 0,    0,    0, 0, 0, 0, 0x46};
constexpr std::array<uint8_t, 16> kOwnSet = {'0', '1', '2', '3', '4', '5', '6', '7',
                                             '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};

std::string NameEntry(uint32_t numberOrOffset, uint16_t set, bool isName, uint16_t index) {
  return LittleEndian(numberOrOffset, 4) + LittleEndian(uint64_t{set} << 1 | (isName ? 1 : 0), 2) +
         LittleEndian(index, 2);
}

struct NamesFile {
  std::string sets = "0123456789abcdef";
  std::string entries;
  std::string names;
  std::unique_ptr<StorageFile> file;

  MsgNames read() {
    test::CompoundBuilder builder;
    builder.storage("__nameid_version1.0")
        .stream("__substg1.0_00020102", sets)
        .stream("__substg1.0_00030102", entries)
        .stream("__substg1.0_00040102", names);
    file = std::move(*StorageFile::OfBytes(builder.write()));
    return MsgNames(*file);
  }
};

TEST(MsgNamesTest, KnowsNumbersAndNamesBothWays) {
  NamesFile file;
  file.names = LittleEndian(4, 4) + Wide(u"ab") + LittleEndian(6, 4) + Wide(u"xyz");
  file.entries = NameEntry(0x8005, 3, false, 0) + NameEntry(0, 2, true, 1) +
                 NameEntry(8, 1, true, 2) + NameEntry(7, 1, false, 9);
  const MsgNames names = file.read();
  EXPECT_TRUE(names.troubles().empty());
  EXPECT_EQ(names.nameOf(0x8000), (PropertyName{kOwnSet, 0x8005, {}}));
  EXPECT_EQ(names.nameOf(0x8001), (PropertyName{kStringsSet, 0, u"ab"}));
  EXPECT_EQ(names.nameOf(0x8002), (PropertyName{kMapiSet, 0, u"xyz"}));
  EXPECT_EQ(names.nameOf(0x8009), (PropertyName{kMapiSet, 7, {}}));
  EXPECT_FALSE(names.nameOf(0x8003).has_value());
  EXPECT_EQ(names.idOf({kOwnSet, 0x8005, {}}), 0x8000);
  EXPECT_EQ(names.idOf({kStringsSet, 0, u"ab"}), 0x8001);
  EXPECT_FALSE(names.idOf({kMapiSet, 0x8005, {}}).has_value());
  EXPECT_FALSE(names.idOf({kStringsSet, 0, u"a"}).has_value());
}

TEST(MsgNamesTest, WhatCannotBeReadIsCountedAndPassedOver) {
  NamesFile file;
  file.names = LittleEndian(400, 4) + Wide(u"ab");
  file.entries = NameEntry(1, 0, false, 0) +       // no such set
                 NameEntry(1, 4, false, 1) +       // beyond the sets
                 NameEntry(0, 3, true, 2) +        // beyond the names
                 NameEntry(6, 3, true, 3) +        // starts beyond them
                 NameEntry(1, 3, false, 0x8000) +  // beyond all ids
                 NameEntry(0, 0, false, 4) +       // a name that is gone
                 NameEntry(1, 3, false, 5) + "cut";
  const MsgNames names = file.read();
  EXPECT_EQ(names.nameOf(0x8005), (PropertyName{kOwnSet, 1, {}}));
  EXPECT_FALSE(names.nameOf(0x8004).has_value());
  ASSERT_EQ(names.troubles().size(), 1u);
  EXPECT_EQ(names.troubles()[0].reason, "5 names of properties cannot be read");
}

TEST(MsgNamesTest, AFileWithoutThemHasNone) {
  const auto file = std::move(*StorageFile::OfBytes(test::CompoundBuilder().write()));
  const MsgNames none(*file);
  EXPECT_TRUE(none.troubles().empty());
  EXPECT_FALSE(none.nameOf(0x8000).has_value());
  test::CompoundBuilder empty;
  empty.storage("__nameid_version1.0");
  const auto second = std::move(*StorageFile::OfBytes(empty.write()));
  EXPECT_TRUE(MsgNames(*second).troubles().empty());
}

TEST(MsgNamesTest, AStreamThatIsDamagedIsATrouble) {
  test::CompoundBuilder builder;
  builder.storage("__nameid_version1.0").stream("__substg1.0_00030102", std::string(5000, 'x'));
  test::CompoundImage image = builder.image();
  const size_t start = image.record("__nameid_version1.0/__substg1.0_00030102") + test::RecordStart;
  image.put(start, 0xFFFFFFFE);
  const auto file = std::move(*StorageFile::OfBytes(image.bytes));
  const MsgNames names(*file);
  ASSERT_EQ(names.troubles().size(), 1u);
  EXPECT_EQ(names.troubles()[0].reason,
            "the names of properties cannot be read: blocks of the file are missing");
}

}  // namespace
}  // namespace tarn::archive::msg
