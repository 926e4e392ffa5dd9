#include "archive/msg/MsgProperties.h"

#include <gtest/gtest.h>

#include "archive/mapi/FakeMessage.h"
#include "archive/msg/MsgStreamNames.h"
#include "support/compound/CompoundBuilder.h"
#include "support/msg/MsgBuilder.h"

namespace tarn::archive::msg {
namespace {

using namespace mapi;
using test::CompoundBuilder;
using test::CompoundImage;
using test::MsgRecord;

// A file whose root is a set of properties.
struct SetFile {
  CompoundBuilder builder;
  std::string records;
  std::unique_ptr<StorageFile> file;

  SetFile& record(uint16_t type, uint16_t id, uint64_t value) {
    records += MsgRecord(type, id, value);
    return *this;
  }
  SetFile& stream(const char* name, std::string_view bytes) {
    builder.stream(name, bytes);
    return *this;
  }
  MsgProperties read(const std::string& header = std::string(8, '\0'), SetOf kind = SetOf::Part) {
    builder.stream(kPropertiesName, header + records);
    return open(kind);
  }
  MsgProperties open(SetOf kind = SetOf::Part) {
    file = std::move(*StorageFile::OfBytes(builder.write()));
    return MsgProperties(*file, kRootEntry, kind);
  }
};

TEST(MsgStreamNamesTest, AreTagsAndPlaces) {
  const std::optional<StreamName> plain = ParseStreamName("__substg1.0_0037001F");
  ASSERT_TRUE(plain.has_value());
  EXPECT_EQ(plain->tag.id, 0x0037);
  EXPECT_EQ(plain->tag.type, 0x001F);
  EXPECT_FALSE(plain->place.has_value());
  const std::optional<StreamName> further = ParseStreamName("__substg1.0_8abc101f-0000000A");
  ASSERT_TRUE(further.has_value());
  EXPECT_EQ(further->tag.id, 0x8ABC);
  EXPECT_EQ(further->place, 10u);
  for (const char* name : {"", "__substg1.0_", "__substg1.0_0037001", "__substg1.0_0037001G",
                           "__substg1.0_0037001F0", "__substg1.0_0037001F-0000000",
                           "__substg1.0_0037001F-0000000@", "__properties_version1.0"}) {
    EXPECT_FALSE(ParseStreamName(name).has_value()) << name;
  }
}

TEST(MsgPropertiesTest, ValuesOfFixedWidthAreInTheirRecords) {
  SetFile set;
  set.record(kTypeInteger16, 1, 0x1122334455667788)
      .record(kTypeInteger32, 2, 0x1122334455667788)
      .record(kTypeFloat32, 3, 0x1122334455667788)
      .record(kTypeFloat64, 4, 0x1122334455667788)
      .record(kTypeCurrency, 5, 0x1122334455667788)
      .record(kTypeFloatingTime, 6, 0x1122334455667788)
      .record(kTypeError, 7, 0x1122334455667788)
      .record(kTypeBoolean, 8, 0x1122334455667788)
      .record(kTypeInteger64, 9, 0x1122334455667788)
      .record(kTypeTime, 10, 0x1122334455667788);
  MsgProperties properties = set.read();
  const std::string all = "\x88\x77\x66\x55\x44\x33\x22\x11";
  const size_t widths[] = {2, 4, 4, 8, 8, 8, 4, 1, 8, 8};
  ASSERT_EQ(properties.tags().size(), 10u);
  for (uint16_t id = 1; id <= 10; ++id) {
    EXPECT_EQ(*properties.bytes(id, 8), all.substr(0, widths[id - 1])) << id;
    EXPECT_EQ(properties.sizeOf(id), widths[id - 1]) << id;
    EXPECT_EQ(properties.tags()[id - 1u].id, id);
  }
  EXPECT_EQ(properties.typeOf(8), kTypeBoolean);
  EXPECT_EQ(*properties.values(2, 8), std::vector<std::string>{"\x88\x77\x66\x55"});
  EXPECT_EQ(*tarn::archive::ReadAll(**properties.stream(2), 9), "\x88\x77\x66\x55");
  EXPECT_TRUE(properties.troubles().empty());
}

TEST(MsgPropertiesTest, OthersAreInStreams) {
  SetFile set;
  set.record(kTypeString, 0x37, 4).stream("__substg1.0_0037001F", Wide(u"Hi"));
  set.record(kTypeBinary, 0x38, 3).stream("__substg1.0_00380102", "abc");
  set.record(kTypeGuid, 0x39, 16).stream("__substg1.0_00390048", "0123456789abcdef");
  MsgProperties properties = set.read();
  EXPECT_EQ(*properties.bytes(0x37, 100), Wide(u"Hi"));
  EXPECT_EQ(properties.sizeOf(0x38), 3u);
  EXPECT_EQ(*properties.bytes(0x39, 16), "0123456789abcdef");
  EXPECT_EQ(properties.bytes(0x38, 2).trouble().kind, TroubleKind::TooLarge);
  EXPECT_EQ(*tarn::archive::ReadAll(**properties.stream(0x38), 9), "abc");
  EXPECT_EQ(*properties.values(0x38, 9), std::vector<std::string>{"abc"});
}

TEST(MsgPropertiesTest, WhatIsNotThereIsMissing) {
  SetFile set;
  set.record(kTypeString, 1, 2).record(kTypeString8, 2, 1).record(kTypeBinary, 3, 0);
  set.record(kTypeString, 4, 4).record(kTypeString8, 5, 2).record(kTypeBinary, 6, 1);
  MsgProperties properties = set.read();
  for (uint16_t id = 1; id <= 3; ++id) {
    EXPECT_EQ(*properties.bytes(id, 100), "") << id;
    EXPECT_EQ(*tarn::archive::ReadAll(**properties.stream(id), 100), "") << id;
  }
  for (uint16_t id = 4; id <= 7; ++id) {
    EXPECT_EQ(properties.bytes(id, 100).trouble().kind, TroubleKind::Missing) << id;
    EXPECT_EQ(properties.stream(id).trouble().kind, TroubleKind::Missing) << id;
    EXPECT_EQ(properties.values(id, 100).trouble().kind, TroubleKind::Missing) << id;
  }
  EXPECT_EQ(properties.sizeOf(4), 0u);
  EXPECT_FALSE(properties.sizeOf(7).has_value());
  EXPECT_FALSE(properties.typeOf(7).has_value());
  EXPECT_FALSE(properties.storageOf(7).has_value());
}

TEST(MsgPropertiesTest, StreamsWithoutARecordAreProperties) {
  SetFile set;
  set.stream("__substg1.0_0037001F", Wide(u"Hi")).stream("__substg1.0_00380003", "1234");
  set.stream("__substg1.0_0039001E-00000000", "of many").stream("other", "x");
  MsgProperties properties = set.open();
  ASSERT_EQ(properties.tags().size(), 1u);
  EXPECT_EQ(*properties.bytes(0x37, 100), Wide(u"Hi"));
  ASSERT_EQ(properties.troubles().size(), 1u);
  EXPECT_EQ(properties.troubles()[0].reason, "the stream of the properties is missing");
}

TEST(MsgPropertiesTest, TakesTextOfTheOtherWidth) {
  SetFile set;
  set.record(kTypeString, 0x37, 6).stream("__substg1.0_0037001E", "Hi");
  set.record(kTypeString, 0x38, 6).stream("__substg1.0_0039001E", "of another");
  MsgProperties properties = set.read();
  EXPECT_EQ(properties.typeOf(0x37), kTypeString8);
  EXPECT_EQ(*properties.bytes(0x37, 100), "Hi");
  EXPECT_EQ(properties.bytes(0x38, 100).trouble().kind, TroubleKind::Missing);
}

TEST(MsgPropertiesTest, TheFirstRecordOfAnIdCounts) {
  SetFile set;
  set.record(kTypeInteger32, 0x17, 1).record(kTypeInteger32, 0x17, 2).record(kTypeInteger32, 0, 3);
  MsgProperties properties = set.read();
  ASSERT_EQ(properties.tags().size(), 1u);
  EXPECT_EQ(*properties.bytes(0x17, 4), LittleEndian(1, 4));
}

TEST(MsgPropertiesTest, ManyValuesOfOneWidthAreSideBySide) {
  SetFile set;
  set.record(kMultipleValues | kTypeInteger16, 1, 4).stream("__substg1.0_00011002", "aabbc");
  set.record(kMultipleValues | kTypeGuid, 2, 32)
      .stream("__substg1.0_00021048", "0123456789abcdefABCDEFGHIJKLMNOP");
  set.record(kMultipleValues | kTypeInteger32, 3, 8);
  MsgProperties properties = set.read();
  EXPECT_EQ(*properties.values(1, 100), (std::vector<std::string>{"aa", "bb"}));
  EXPECT_EQ(*properties.values(2, 100),
            (std::vector<std::string>{"0123456789abcdef", "ABCDEFGHIJKLMNOP"}));
  EXPECT_EQ(properties.values(3, 100).trouble().kind, TroubleKind::Missing);
  EXPECT_EQ(properties.values(1, 4).trouble().kind, TroubleKind::TooLarge);
}

TEST(MsgPropertiesTest, ManyTextsHaveAStreamEach) {
  SetFile set;
  set.record(kMultipleValues | kTypeString8, 1, 12)
      .stream("__substg1.0_0001101E", LittleEndian(3, 4) + LittleEndian(0, 4) + LittleEndian(2, 4))
      .stream("__substg1.0_0001101E-00000000", "one")
      .stream("__substg1.0_0001101E-00000002", "so");
  set.record(kMultipleValues | kTypeBinary, 2, 16)
      .stream("__substg1.0_00021102", LittleEndian(1, 8) + LittleEndian(2, 8))
      .stream("__substg1.0_00021102-00000000", "x")
      .stream("__substg1.0_00021102-00000001", "yz");
  set.record(kMultipleValues | kTypeString, 3, 4)
      .stream("__substg1.0_0003101F", LittleEndian(2, 4));
  set.record(kMultipleValues | kTypeString, 4, 4);
  MsgProperties properties = set.read();
  EXPECT_EQ(*properties.values(1, 100), (std::vector<std::string>{"one", "", "so"}));
  EXPECT_EQ(*properties.values(2, 100), (std::vector<std::string>{"x", "yz"}));
  EXPECT_EQ(properties.values(1, 12).value().size(), 3u);
  EXPECT_EQ(properties.values(2, 16).value().size(), 2u);
  EXPECT_EQ(properties.values(3, 100).trouble().reason, "the stream of a value is missing");
  EXPECT_EQ(properties.values(4, 100).trouble().kind, TroubleKind::Missing);
}

TEST(MsgPropertiesTest, TheLimitIsForAllValuesTogether) {
  SetFile set;
  set.record(kMultipleValues | kTypeString8, 1, 8)
      .stream("__substg1.0_0001101E", LittleEndian(9, 4) + LittleEndian(9, 4))
      .stream("__substg1.0_0001101E-00000000", "123456789")
      .stream("__substg1.0_0001101E-00000001", "123456789");
  MsgProperties properties = set.read();
  EXPECT_EQ(properties.values(1, 17).trouble().kind, TroubleKind::TooLarge);
  EXPECT_TRUE(properties.values(1, 18).ok());
}

TEST(MsgPropertiesTest, TheLengthTellsTheHeaderOfAMessage) {
  const std::string counts = LittleEndian(7, 4) + LittleEndian(9, 4);
  for (const size_t rest : {size_t{0}, size_t{8}}) {
    SetFile set;
    set.record(kTypeInteger32, 0x17, 1);
    const MsgProperties properties =
        set.read(std::string(16, '\0') + counts + std::string(rest, '\0'), SetOf::Message);
    EXPECT_EQ(properties.declaredRecipients(), 7u);
    EXPECT_EQ(properties.declaredAttachments(), 9u);
    MsgProperties again(*set.file, kRootEntry, SetOf::Message);
    EXPECT_EQ(*again.bytes(0x17, 4), LittleEndian(1, 4)) << rest;
    EXPECT_TRUE(again.troubles().empty());
  }
}

TEST(MsgPropertiesTest, RecordsThatAreCutOffAreATrouble) {
  SetFile set;
  set.record(kTypeInteger32, 0x17, 1).records += "half of one";
  MsgProperties properties = set.read();
  EXPECT_EQ(properties.tags().size(), 1u);
  ASSERT_EQ(properties.troubles().size(), 1u);
  EXPECT_EQ(properties.troubles()[0].reason, "the stream of the properties is cut off");
  SetFile empty;
  EXPECT_EQ(empty.read("1234").troubles().size(), 1u);
}

TEST(MsgPropertiesTest, RecordsBeforeADamageAreRead) {
  SetFile set;
  for (uint16_t id = 1; id <= 600; ++id) set.record(kTypeInteger32, id, id);
  set.builder.stream(kPropertiesName, std::string(8, '\0') + set.records);
  CompoundImage image = set.builder.image();
  // The chain of the stream ends after its third block.
  const size_t start = image.record(kPropertiesName) + test::RecordStart;
  const auto first = static_cast<uint32_t>(image.get(start));
  image.put(image.tableEntry(first + 2), 0xFFFFFFFE);
  set.file = std::move(*StorageFile::OfBytes(image.bytes));
  MsgProperties properties(*set.file, kRootEntry, SetOf::Part);
  EXPECT_EQ(properties.tags().size(), (3 * 512 - 8) / 16u);
  ASSERT_EQ(properties.troubles().size(), 1u);
  EXPECT_EQ(properties.troubles()[0].reason, "the stream of the properties is cut off");
}

TEST(MsgPropertiesTest, AnObjectIsAStorage) {
  SetFile set;
  set.record(kTypeObject, 0x3701, 0);
  set.builder.storage("__substg1.0_3701000D").stream("in", "x");
  MsgProperties properties = set.read();
  const std::optional<EntryNumber> storage = properties.storageOf(0x3701);
  ASSERT_TRUE(storage.has_value());
  EXPECT_TRUE(set.file->find(*storage, "in").has_value());
  EXPECT_EQ(properties.sizeOf(0x3701), 0u);
  EXPECT_EQ(properties.stream(0x3701).trouble().kind, TroubleKind::Missing);
}

}  // namespace
}  // namespace tarn::archive::msg
