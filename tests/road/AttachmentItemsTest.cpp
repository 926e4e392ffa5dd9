#include "FileFormats/Pst/AttachmentItems.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"
#include "support/LocalZone.h"

namespace tarn {
namespace {

void Add(PropertyList& list, const std::u16string& name, const std::u16string& value) {
  AttachmentProperty property = {};
  std::copy(name.begin(), name.end(), property.name);
  std::copy(value.begin(), value.end(), property.value);
  ASSERT_EQ(list.append(&property, 1), StatusOk);
}

// A list of items, released with all that they own.
struct Items {
  ItemList list;
  ~Items() {
    for (uint64_t i = 0; i < list.length(); ++i) ReleaseItem(list.data()[i]);
  }
};

TEST(AttachmentItems, NumbersItemsAndCopiesNames) {
  Items items;
  TrackedBuffer<char> data;
  ASSERT_EQ(data.append("12345", 5), StatusOk);
  ASSERT_EQ(AddAttachmentItem(&items.list, &data, u"a.txt", nullptr), StatusOk);
  ASSERT_EQ(AddAttachmentItem(&items.list, &data, u"", nullptr), StatusOk);
  ASSERT_EQ(AddAttachmentItem(&items.list, &data, nullptr, nullptr), StatusOk);
  ASSERT_EQ(items.list.length(), 3u);
  EXPECT_EQ(items.list.data()[0].number, 1u);
  EXPECT_EQ(std::u16string(items.list.data()[0].name), u"a.txt");
  EXPECT_EQ(items.list.data()[0].size, 5u);
  EXPECT_EQ(items.list.data()[1].number, 2u);
  EXPECT_EQ(items.list.data()[1].name, nullptr);
  EXPECT_EQ(items.list.data()[2].number, 3u);
  EXPECT_EQ(items.list.data()[2].name, nullptr);
  EXPECT_EQ(data.length(), 5u);  // the bytes stay the reader's
}

TEST(AttachmentItems, RefusesANullList) {
  TrackedBuffer<char> data;
  EXPECT_EQ(AddAttachmentItem(nullptr, &data, u"a", nullptr), StatusNullArgument);
}

TEST(AttachmentItems, TakesKnownPropertiesOutAndMovesTheOthersUp) {
  test::LocalZone zone;
  Items items;
  TrackedBuffer<char> data;
  PropertyList properties;
  Add(properties, u"first", u"1");
  Add(properties, u"Content-Description:", u"A table");
  Add(properties, u"second", u"2");
  Add(properties, u"creation-date=", u"Thu, 1 Jan 1970 00:01:00 GMT");
  Add(properties, u"modification-date=", u"Thu, 1 Jan 1970 00:02:00 GMT");
  Add(properties, u"third", u"3");
  ASSERT_EQ(AddAttachmentItem(&items.list, &data, nullptr, &properties), StatusOk);
  const AttachmentInfoItem& item = items.list.data()[0];
  EXPECT_EQ(std::u16string(item.description), u"A table");
  EXPECT_EQ(item.creationTime, 60);
  EXPECT_EQ(item.modificationTime, 120);
  ASSERT_EQ(item.propertyCount, 3u);
  EXPECT_EQ(std::u16string(item.properties[0].name), u"first");
  EXPECT_EQ(std::u16string(item.properties[1].name), u"second");
  EXPECT_EQ(std::u16string(item.properties[2].name), u"third");
  EXPECT_EQ(std::u16string(item.properties[2].value), u"3");
  // The block is the item's now.
  EXPECT_EQ(properties.data(), nullptr);
  EXPECT_EQ(properties.length(), 0u);
  EXPECT_EQ(properties.capacity(), 0u);
}

TEST(AttachmentItems, TakesStoreTimesOverDates) {
  test::LocalZone zone;
  Items items;
  TrackedBuffer<char> data;
  PropertyList properties;
  Add(properties, u"MsgCreationTime", u"1234567890");
  Add(properties, u"creation-date=", u"Thu, 1 Jan 1970 00:01:00 GMT");
  Add(properties, u"modification-date=", u"Thu, 1 Jan 1970 00:02:00 GMT");
  Add(properties, u"MsgModificationTime", u"1234567891");
  ASSERT_EQ(AddAttachmentItem(&items.list, &data, nullptr, &properties), StatusOk);
  EXPECT_EQ(items.list.data()[0].creationTime, 1234567890);
  EXPECT_EQ(items.list.data()[0].modificationTime, 1234567891);
  EXPECT_EQ(items.list.data()[0].propertyCount, 0u);
  EXPECT_EQ(items.list.data()[0].properties, nullptr);
}

TEST(AttachmentItems, ComparesNamesExactly) {
  Items items;
  TrackedBuffer<char> data;
  PropertyList properties;
  Add(properties, u"content-description:", u"lower case");
  Add(properties, u"Content-Description", u"no colon");
  Add(properties, u"MsgCreationTime=", u"5");
  ASSERT_EQ(AddAttachmentItem(&items.list, &data, nullptr, &properties), StatusOk);
  EXPECT_EQ(items.list.data()[0].description, nullptr);
  EXPECT_EQ(items.list.data()[0].creationTime, 0);
  EXPECT_EQ(items.list.data()[0].propertyCount, 3u);
}

TEST(AttachmentItems, GivesNoDescriptionForAnEmptyOne) {
  Items items;
  TrackedBuffer<char> data;
  PropertyList properties;
  Add(properties, u"Content-Description:", u"");
  ASSERT_EQ(AddAttachmentItem(&items.list, &data, nullptr, &properties), StatusOk);
  EXPECT_EQ(items.list.data()[0].description, nullptr);
  EXPECT_EQ(items.list.data()[0].propertyCount, 0u);
}

TEST(AttachmentItems, GivesBackTheSlackOfThePropertyList) {
  Items items;
  TrackedBuffer<char> data;
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  {
    PropertyList properties;
    Add(properties, u"a", u"b");
    ASSERT_EQ(AddAttachmentItem(&items.list, &data, nullptr, &properties), StatusOk);
  }
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  EXPECT_EQ(after.liveBytes - before.liveBytes,
            sizeof(AttachmentProperty) + items.list.capacity() * sizeof(AttachmentInfoItem));
}

// Each allocation fails once: nothing is appended, nothing stays behind.
TEST(AttachmentItems, ReleasesTheItemWithoutMemory) {
  const uint64_t calls = test::SweepFaults(PlainKernelFaultMemory, [](test::FaultedWork& faulted) {
    Items items;
    TrackedBuffer<char> data;
    PropertyList properties;
    Add(properties, u"Content-Description:", u"A table");
    Add(properties, u"other", u"x");
    const Status status =
        faulted([&] { return AddAttachmentItem(&items.list, &data, u"name", &properties); });
    // The third allocation gives back slack, and the block stays as it is when that fails.
    const bool fails = faulted.isReached() && faulted.ordinal() != 3;
    EXPECT_EQ(status, fails ? StatusOutOfMemory : StatusOk);
    EXPECT_EQ(items.list.length(), fails ? 0u : 1u);
  });
  EXPECT_EQ(calls, 4u);
}

TEST(TrimPropertyName, TakesOneMarkOffTheEnd) {
  const std::u16string names[][2] = {{u"Content-ID:", u"Content-ID"},
                                     {u"name=", u"name"},
                                     {u":", u":"},
                                     {u"=", u"="},
                                     {u"", u""},
                                     {u"a::", u"a:"},
                                     {u"MineType", u"MineType"},
                                     {u"::", u":"}};
  for (const auto& [name, trimmed] : names) {
    AttachmentProperty property = {};
    std::copy(name.begin(), name.end(), property.name);
    TrimPropertyName(property);
    EXPECT_EQ(std::u16string(property.name), trimmed);
  }
}

}  // namespace
}  // namespace tarn
