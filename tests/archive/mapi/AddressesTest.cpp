#include "archive/mapi/Addresses.h"

#include <gtest/gtest.h>

#include "archive/mapi/FakeMessage.h"

namespace tarn::archive::mapi {
namespace {

constexpr AddressTags kTags = {1, 2, 3, 4, 5};

Address Read(const FakeProperties& properties) {
  FakeSet set(properties);
  PropertyValues values(set, 1252);
  return ReadAddress(values, kTags);
}

// MS-OXCDATA 2.2.5.1.
std::string OneOff(bool wide, std::u16string_view type, std::u16string_view address) {
  std::string id =
      LittleEndian(0, 4) +
      std::string("\x81\x2B\x1F\xA4\xBE\xA3\x10\x19\x9D\x6E\x00\xDD\x01\x0F\x54\x02", 16) +
      LittleEndian(wide ? 0x80000000 : 0, 4);
  for (const std::u16string_view text : {std::u16string_view(u"Ann"), type, address}) {
    if (wide) {
      id += Wide(text) + LittleEndian(0, 2);
    } else {
      id += std::string(text.begin(), text.end()) + '\0';
    }
  }
  return id;
}

TEST(AddressesTest, PrefersTheInternetAddress) {
  FakeProperties person;
  person.text(1, u"Ann").text(2, u"EX").text(3, u"/o=x/cn=ann").text(4, u"ann@example.com");
  EXPECT_EQ(Read(person), (Address{"Ann", "ann@example.com"}));
}

TEST(AddressesTest, TakesTheAddressOfTypeSmtp) {
  FakeProperties person;
  person.text(1, u"Ann").text(2, u"smtp").text(3, u"ann@example.com");
  EXPECT_EQ(Read(person), (Address{"Ann", "ann@example.com"}));
  FakeProperties untyped;
  untyped.text(3, u"ann@example.com");
  EXPECT_EQ(Read(untyped), (Address{"", "ann@example.com"}));
}

TEST(AddressesTest, ReadsOneOffEntryIds) {
  for (const bool wide : {false, true}) {
    FakeProperties person;
    person.text(1, u"Ann").binary(5, OneOff(wide, u"SMTP", u"ann@example.com"));
    EXPECT_EQ(Read(person), (Address{"Ann", "ann@example.com"})) << wide;
    FakeProperties other;
    other.text(1, u"Ann").binary(5, OneOff(wide, u"FAX", u"+49 1"));
    EXPECT_EQ(Read(other), (Address{"Ann", ""})) << wide;
  }
}

TEST(AddressesTest, ReadsCutEntryIdsAsFarAsTheyGo) {
  const std::string whole = OneOff(true, u"SMTP", u"ann@example.com");
  for (size_t size = 0; size < whole.size(); ++size) {
    FakeProperties person;
    person.text(1, u"Ann").binary(5, whole.substr(0, size));
    const Address read = Read(person);
    EXPECT_EQ(std::string("ann@example.com").rfind(read.address, 0), 0u) << size;
  }
}

TEST(AddressesTest, KeepsTheAddressOfAnotherSystemWhereThereIsNoOther) {
  FakeProperties person;
  person.text(1, u"Ann").text(2, u"EX").text(3, u"/o=x/cn=ann");
  EXPECT_EQ(Read(person), (Address{"Ann", "/o=x/cn=ann"}));
  FakeProperties misplaced;
  misplaced.text(4, u"/o=x/cn=ann");
  EXPECT_EQ(Read(misplaced), (Address{"", "/o=x/cn=ann"}));
}

TEST(AddressesTest, TakesAnAddressThatIsTheName) {
  EXPECT_EQ(AddressInName("ann@example.com"), "ann@example.com");
  EXPECT_EQ(AddressInName("'ann@example.com'"), "ann@example.com");
  for (const char* name : {"", "Ann", "Ann ann@example.com", "@", "'", "<ann@example.com>"}) {
    EXPECT_EQ(AddressInName(name), "") << name;
  }
  FakeProperties person;
  person.text(1, u"ann@example.com");
  EXPECT_EQ(Read(person), (Address{"ann@example.com", "ann@example.com"}));
  person.text(2, u"EX").text(3, u"/o=x/cn=ann");
  EXPECT_EQ(Read(person), (Address{"ann@example.com", "/o=x/cn=ann"}));
}

TEST(AddressesTest, TellsPeopleApart) {
  EXPECT_TRUE(IsSamePerson({"Ann", "ann@x"}, {"A.", "ANN@X"}));
  EXPECT_FALSE(IsSamePerson({"Ann", "ann@x"}, {"Ann", "ann@y"}));
  EXPECT_TRUE(IsSamePerson({"Ann", "ann@x"}, {"Ann", ""}));
  EXPECT_FALSE(IsSamePerson({"Ann", ""}, {"Bob", ""}));
}

}  // namespace
}  // namespace tarn::archive::mapi
