// What the reader of stores gives of an item: fields, bodies, recipients, named properties.

#include <gtest/gtest.h>

#include <array>
#include <initializer_list>

#include "StoreListing.h"
#include "archive/mapi/MapiMessage.h"
#include "support/pst/PstBytes.h"
#include "support/pst/StoreTemplates.h"

namespace tarn::test {
namespace {

using namespace archive;

// 2024-05-01T10:34:56Z.
constexpr int64_t kSeconds = 1714559696;
constexpr uint64_t kFileTime = (kSeconds + 11644473600) * 10000000;

constexpr uint16_t kSentRepresentingName = 0x0042;
constexpr uint16_t kDeliveryTime = 0x0E06;
constexpr uint16_t kRecipientType = 0x0C15;
constexpr uint16_t kAddressType = 0x3002;
constexpr uint16_t kEmailAddress = 0x3003;
constexpr uint16_t kSmtpAddress = 0x39FE;
constexpr uint16_t kMessageCodepage = 0x3FFD;

class StoreMessages : public ::testing::TestWithParam<PstLayout> {};

INSTANTIATE_TEST_SUITE_P(Layouts, StoreMessages,
                         ::testing::Values(PstLayout::Ansi, PstLayout::Unicode));

// The first item of the store.
struct FirstItem {
  explicit FirstItem(StoreBuilder& store) : opened(store), item(opened.find("200024")) {}

  OpenedStore opened;
  std::unique_ptr<Item> item;
};

TEST_P(StoreMessages, FieldsOfARow) {
  StoreBuilder store(GetParam());
  MessageBuilder& message =
      store.folder("Inbox").message().subject(u"\u0001\u0005RE: Gr\u00FC\u00DFe");
  message.submitTime(kFileTime).attachment(u"a", "a");
  message.properties().text(kSentRepresentingName, u"Ann");
  message.properties().time(kDeliveryTime, kFileTime + 20000000);
  message.properties().number(kPropMessageSize, kTypeInt32, 4711);
  message.properties().number(kPropMessageFlags, kTypeInt32, 0x11);
  OpenedStore opened(store);
  size_t items = 0;
  opened.forEachItem([&](Item& item) {
    ++items;
    for (const Detail detail : {Detail::Headline, Detail::Envelope}) {
      const ItemFields& fields = item.fields(detail);
      EXPECT_EQ(fields.messageClass, "IPM.Note");
      EXPECT_EQ(fields.subject, "RE: Gr\u00FC\u00DFe");
      EXPECT_EQ(fields.from.name, "Ann");
      EXPECT_EQ(fields.sent, (Moment{kSeconds, std::nullopt}));
      EXPECT_EQ(fields.received, (Moment{kSeconds + 2, std::nullopt}));
      EXPECT_EQ(fields.size, 4711U);
      EXPECT_TRUE(fields.hasAttachments);
    }
    EXPECT_EQ(item.fields(Detail::Envelope).attachmentCount, 1U);
    EXPECT_EQ(Reasons(item.troubles()), "");
  });
  EXPECT_EQ(items, 1U);
}

// A contents table with one row, for a message that is not there.
PstNodeParts OneRow(PstLayout layout, const std::string& subject, uint16_t type, bool hasFlags) {
  TableContextBuilder table(layout);
  table.column(kPropMessageClass, kTypeString).column(kPropSubject, type);
  table.column(kSentRepresentingName, kTypeString).column(kPropClientSubmitTime, kTypeTime);
  table.column(kDeliveryTime, kTypeTime).column(kPropMessageSize, kTypeInt32);
  if (hasFlags) table.column(kPropMessageFlags, kTypeInt32);
  auto row = table.row(0x200444);
  row.cell(kPropMessageClass, Utf16Bytes(u"IPM.Task")).cell(kPropSubject, subject);
  row.cell(kSentRepresentingName, Utf16Bytes(u"Ann"));
  row.cell(kPropMessageSize, 77);
  if (hasFlags) row.cell(kPropMessageFlags, 0);
  return table.build();
}

TEST_P(StoreMessages, ARowTellsTheHeadlineWithoutTheMessage) {
  for (const auto& [subject, type] :
       {std::pair(std::string("Plain"), kTypeString8), {Utf16Bytes(u"Plain"), kTypeString}}) {
    StoreBuilder store(GetParam());
    store.folder("Tasks").contentsTable(OneRow(GetParam(), subject, type, true));
    OpenedStore(store).forEachItem([](Item& item) {
      const ItemFields& fields = item.fields(Detail::Headline);
      EXPECT_EQ(fields.messageClass, "IPM.Task");
      EXPECT_EQ(fields.subject, "Plain");
      EXPECT_EQ(fields.size, 77U);
      EXPECT_FALSE(fields.sent);
      EXPECT_FALSE(fields.hasAttachments);
      EXPECT_EQ(Reasons(item.troubles()), "");
      item.fields(Detail::Envelope);
      EXPECT_EQ(Reasons(item.troubles()), "the message cannot be read (it is not in the store)\n");
      EXPECT_EQ(item.fields(Detail::Envelope).subject, "Plain");
    });
  }
}

TEST_P(StoreMessages, ARowThatDoesNotTellAllNeedsTheMessage) {
  const std::string plain = Utf16Bytes(u"Plain");
  for (const PstNodeParts& parts :
       {OneRow(GetParam(), "Gr\xFC\xDF", kTypeString8, true),
        OneRow(GetParam(), plain, kTypeString, false), OneRow(GetParam(), plain, kTypeBinary, true),
        OneRow(GetParam(), "", kTypeString, true)}) {
    StoreBuilder store(GetParam());
    store.folder("Tasks").contentsTable(parts);
    OpenedStore(store).forEachItem([](Item& item) {
      EXPECT_EQ(item.fields(Detail::Headline).subject, "");
      EXPECT_EQ(item.fields(Detail::Headline).size, 77U);
      EXPECT_EQ(Reasons(item.troubles()), "the message cannot be read (it is not in the store)\n");
    });
  }
}

TEST_P(StoreMessages, TextsOfCodePages) {
  StoreBuilder store(GetParam());
  MessageBuilder& message = store.folder("Inbox").message();
  message.subject("\xCF\xF0\xE8\xE2\xE5\xF2").body("\xD2\xE5\xEA\xF1\xF2");
  message.properties().text(kSentRepresentingName, "\xC0\xED\xED\xE0");
  message.properties().number(kMessageCodepage, kTypeInt32, 1251);
  message.attach().longName("\xF4\xE0\xE9\xEB.txt").data("x");
  auto& recipient = message.recipient();
  recipient.number(kRecipientType, kTypeInt32, 1);
  recipient.text(kPropDisplayName, "\xC1\xEE\xE1").text(kSmtpAddress, "bob@example.com");
  OpenedStore opened(store);
  opened.forEachItem([](Item& item) {
    EXPECT_EQ(item.fields(Detail::Headline).subject, "Привет");
    EXPECT_EQ(item.fields(Detail::Headline).from.name, "Анна");
    EXPECT_EQ(AddressText(item.fields(Detail::Envelope).to), "Боб <bob@example.com>");
    EXPECT_EQ(item.bodies().text, "Текст");
    ASSERT_EQ(item.attachments().size(), 1U);
    EXPECT_EQ(item.attachments()[0].name, "файл.txt");
  });
}

TEST_P(StoreMessages, Recipients) {
  StoreBuilder store(GetParam());
  MessageBuilder& message = store.folder("Inbox").message().subject(u"Mail").from(u"Ann");
  const auto add = [&](uint32_t type, std::u16string_view name) -> PropertyContextBuilder& {
    auto& recipient = message.recipient();
    recipient.number(kRecipientType, kTypeInt32, type).text(kPropDisplayName, name);
    return recipient;
  };
  add(1, u"Bob").text(kAddressType, u"SMTP").text(kEmailAddress, u"bob@example.com");
  add(2, u"Cy").text(kAddressType, u"EX").text(kEmailAddress, u"/O=X/CN=CY");
  add(2, u"Di")
      .text(kAddressType, u"EX")
      .text(kEmailAddress, u"/O=X/CN=DI")
      .text(kSmtpAddress, u"di@example.com");
  add(3, u"Ed");
  add(1, u"");
  message.recipient();
  FirstItem first(store);
  const ItemFields& fields = first.item->fields(Detail::Envelope);
  EXPECT_EQ(AddressText(fields.from), "Ann <>");
  EXPECT_EQ(AddressText(fields.to), "Bob <bob@example.com>,  <>,  <>");
  EXPECT_EQ(AddressText(fields.cc), "Cy </O=X/CN=CY>, Di <di@example.com>");
  EXPECT_EQ(AddressText(fields.bcc), "Ed <>");
  EXPECT_EQ(Reasons(first.item->troubles()), "");
}

TEST_P(StoreMessages, ManyRecipientsOfManyBlocks) {
  StoreBuilder store(GetParam());
  MessageBuilder& message = store.folder("Inbox").message().subject(u"Mail").from(u"Ann");
  for (int i = 0; i < 1000; ++i) {
    const std::string name = "r" + std::to_string(i);
    message.recipient().text(kPropDisplayName, std::u16string(name.begin(), name.end()));
  }
  FirstItem first(store);
  const std::vector<Address>& to = first.item->fields(Detail::Envelope).to;
  ASSERT_EQ(to.size(), 1000U);
  for (size_t i = 0; i < to.size(); ++i) EXPECT_EQ(to[i].name, "r" + std::to_string(i));
}

TEST_P(StoreMessages, RowsOfOneIdAreOneRecipient) {
  StoreBuilder store(GetParam());
  TableContextBuilder table(GetParam());
  table.column(kPropDisplayName, kTypeString);
  table.row(7).cell(kPropDisplayName, Utf16Bytes(u"Bob"));
  table.row(7).cell(kPropDisplayName, Utf16Bytes(u"Bob"));
  table.row(3).cell(kPropDisplayName, Utf16Bytes(u"Cy"));
  store.folder("Inbox").message().subject(u"Mail").recipientTable(table.build());
  FirstItem first(store);
  EXPECT_EQ(AddressText(first.item->fields(Detail::Envelope).to), "Bob <>, Cy <>");
}

TEST_P(StoreMessages, Bodies) {
  const std::string page = "<html><body>" + std::string(20000, 'x') + "</body></html>";
  StoreBuilder store(GetParam());
  FolderBuilder& inbox = store.folder("Inbox");
  inbox.message().subject(u"1").body(u"Text").html(page);
  inbox.message().subject(u"2").rtf(std::string("\x13\0\0\0\x07\0\0\0MELA\0\0\0\0{\\rtf1}", 23));
  inbox.message().subject(u"3").body(std::u16string(9000, u'\u00E9'));
  inbox.message().subject(u"4");
  OpenedStore opened(store);
  Bodies bodies = opened.find("200024")->bodies();
  EXPECT_EQ(bodies.text, "Text");
  ASSERT_TRUE(bodies.html);
  EXPECT_EQ(bodies.html->bytes, page);
  EXPECT_FALSE(bodies.rtf);
  bodies = opened.find("200044")->bodies();
  EXPECT_EQ(bodies.rtf, "{\\rtf1}");
  bodies = opened.find("200064")->bodies();
  std::string accents;
  for (int i = 0; i < 9000; ++i) accents += "\u00E9";
  EXPECT_EQ(bodies.text, accents);
  bodies = opened.find("200084")->bodies();
  EXPECT_FALSE(bodies.text || bodies.html || bodies.rtf);
  EXPECT_EQ(Reasons(bodies.troubles), "");
}

TEST_P(StoreMessages, ItemsOfOtherClasses) {
  StoreBuilder store(GetParam());
  FolderBuilder& folder = store.folder("Contacts");
  folder.message()
      .properties()
      .text(kPropMessageClass, u"IPM.Contact")
      .text(kPropDisplayName, u"Ann Doe");
  folder.message().subject(u"Lunch").properties().text(kPropMessageClass, u"IPM.Appointment");
  folder.message().properties().text(kPropMessageClass, u"IPM.StickyNote");
  std::string lines;
  OpenedStore(store).forEachItem([&](Item& item) {
    const ItemFields& fields = item.fields(Detail::Headline);
    lines += fields.messageClass + ": " + fields.subject + "\n";
  });
  EXPECT_EQ(lines, "IPM.Contact: Ann Doe\nIPM.Appointment: Lunch\nIPM.StickyNote: \n");
}

TEST_P(StoreMessages, ValuesOfEveryType) {
  StoreBuilder store(GetParam());
  auto& bag = store.folder("Inbox").message().subject(u"Mail").properties();
  bag.value(0x6001, kTypeInt16, LeBytes(0x1234, 2)).value(0x6002, kTypeBoolean, LeBytes(1, 1));
  bag.value(0x6003, kTypeDouble, LeBytes(0x1122334455667788, 8));
  bag.value(0x6004, kTypeGuid, "0123456789abcdef").value(0x6005, kTypeBinary, "");
  bag.value(0x6006, 0x1003, LeBytes(1, 4) + LeBytes(2, 4) + LeBytes(3, 2));
  bag.value(0x6007, 0x101F,
            LeBytes(2, 4) + LeBytes(12, 4) + LeBytes(16, 4) + Utf16Bytes(u"ab") + Utf16Bytes(u"c"));
  bag.value(0x6008, 0x1102, LeBytes(1, 4) + LeBytes(8, 4) + "bytes");
  bag.value(0x6009, 0x1048, "0123456789abcdefFEDCBA9876543210");
  bag.value(0x600A, 0x101E, LeBytes(2, 4) + LeBytes(12, 4) + LeBytes(11, 4) + "xyz");
  bag.value(0x600B, 0x1102, LeBytes(9, 4) + LeBytes(8, 4));
  bag.value(0x600C, 0x10FF, "0123").value(0x600D, kTypeString8, std::string("ab\0", 3));
  bag.value(0x600E, kTypeString, std::string("a\0\0\0", 4));
  FirstItem first(store);
  mapi::PropertySet& set = first.item->properties()->properties();
  using Values = std::vector<std::string>;
  EXPECT_EQ(*set.bytes(0x6001, 10), "\x34\x12");
  EXPECT_EQ(*set.bytes(0x6002, 10), "\x01");
  EXPECT_EQ(*set.bytes(0x6003, 10), "\x88\x77\x66\x55\x44\x33\x22\x11");
  EXPECT_EQ(*set.bytes(0x6004, 16), "0123456789abcdef");
  EXPECT_EQ(*set.bytes(0x6005, 10), "");
  EXPECT_EQ(*set.values(0x6006, 100), (Values{LeBytes(1, 4), LeBytes(2, 4)}));
  EXPECT_EQ(*set.values(0x6007, 100), (Values{Utf16Bytes(u"ab"), Utf16Bytes(u"c")}));
  EXPECT_EQ(*set.values(0x6008, 100), Values{"bytes"});
  EXPECT_EQ(*set.values(0x6009, 100), (Values{"0123456789abcdef", "FEDCBA9876543210"}));
  EXPECT_EQ(*set.values(0x6001, 100), Values{LeBytes(0x1234, 2)});
  for (const uint16_t id : std::initializer_list<uint16_t>{0x600A, 0x600B, 0x600C}) {
    ASSERT_FALSE(set.values(id, 100)) << id;
    EXPECT_EQ(set.values(id, 100).trouble().kind, TroubleKind::Damaged) << id;
  }
  EXPECT_EQ(*set.bytes(0x600D, 10), "ab");
  EXPECT_EQ(*set.bytes(0x600E, 10), std::string("a\0", 2));
  EXPECT_EQ(set.bytes(0x6004, 15).trouble().kind, TroubleKind::TooLarge);
  EXPECT_EQ(set.values(0x6009, 15).trouble().kind, TroubleKind::TooLarge);
  EXPECT_EQ(set.bytes(0x6000, 15).trouble().kind, TroubleKind::Missing);
  EXPECT_EQ(set.sizeOf(0x6004), 16U);
  EXPECT_EQ(set.sizeOf(0x6001), 2U);
  EXPECT_EQ(set.sizeOf(0x6000), std::nullopt);
  EXPECT_EQ(set.typeOf(0x6007), 0x101F);
  EXPECT_EQ(set.typeOf(0x6000), std::nullopt);
  for (const auto& [id, expected] : {std::pair<uint16_t, std::string>(0x6001, "\x34\x12"),
                                     {0x6004, "0123456789abcdef"},
                                     {0x6005, ""}}) {
    const auto stream = set.stream(id);
    ASSERT_TRUE(stream) << id;
    EXPECT_EQ(*ReadAll(**stream, 100), expected) << id;
  }
  EXPECT_EQ(set.stream(0x6000).trouble().kind, TroubleKind::Missing);
  size_t found = 0;
  for (const mapi::PropertyTag& tag : set.tags()) found += tag.id >= 0x6001 && tag.id <= 0x600E;
  EXPECT_EQ(found, 14U);
}

TEST_P(StoreMessages, IndexesOfPropertiesOfMoreLevels) {
  StoreOptions options;
  options.file.layout = GetParam();
  options.bags.fanOut = 2;
  StoreBuilder store(options);
  store.folder("Inbox").message().subject(u"Mail").from(u"Ann").body(u"Text");
  FirstItem first(store);
  EXPECT_EQ(first.item->fields(Detail::Headline).subject, "Mail");
  EXPECT_EQ(first.item->bodies().text, "Text");
  EXPECT_EQ(Reasons(first.item->troubles()), "");
}

// Named properties ------------------------------------------------------------------------------

constexpr std::array<uint8_t, 16> kAppointments = {0x02, 0x20, 0x06, 0, 0, 0, 0, 0,
                                                   0xC0, 0,    0,    0, 0, 0, 0, 0x46};
constexpr std::array<uint8_t, 16> kMapiSet = {0x28, 0x03, 0x02, 0, 0, 0, 0, 0,
                                              0xC0, 0,    0,    0, 0, 0, 0, 0x46};
constexpr std::array<uint8_t, 16> kPublicStrings = {0x29, 0x03, 0x02, 0, 0, 0, 0, 0,
                                                    0xC0, 0,    0,    0, 0, 0, 0, 0x46};

std::string NameEntry(uint32_t number, unsigned set, bool isName, uint16_t index) {
  return LeBytes(number, 4) + LeBytes(set << 1 | (isName ? 1U : 0U), 2) + LeBytes(index, 2);
}

TEST_P(StoreMessages, NamedProperties) {
  StoreBuilder store(GetParam());
  PropertyContextBuilder names(GetParam());
  const std::string keywords = Utf16Bytes(u"Keywords");
  names.binary(2, std::string(kAppointments.begin(), kAppointments.end()));
  names.binary(3, NameEntry(0x820D, 3, false, 0) + NameEntry(0, 2, true, 1) +
                      NameEntry(0x8501, 1, false, 2) + NameEntry(5, 0, false, 3) +
                      NameEntry(900, 2, true, 4) + NameEntry(7, 9, false, 5) +
                      NameEntry(8, 1, false, 0x8000));
  names.binary(4, LeBytes(keywords.size(), 4) + keywords);
  store.nodes().nameMap = names.build();
  store.folder("Inbox").message().subject(u"Mail");
  FirstItem first(store);
  mapi::MapiMessage& message = *first.item->properties();
  const mapi::PropertyName start{kAppointments, 0x820D, {}};
  const mapi::PropertyName named{kPublicStrings, 0, u"Keywords"};
  const mapi::PropertyName ofMapi{kMapiSet, 0x8501, {}};
  const mapi::PropertyName ofNone{{}, 5, {}};
  EXPECT_EQ(message.idOf(start), 0x8000);
  EXPECT_EQ(message.idOf(named), 0x8001);
  EXPECT_EQ(message.idOf(ofMapi), 0x8002);
  EXPECT_EQ(message.idOf(ofNone), 0x8003);
  EXPECT_EQ(message.idOf(start), 0x8000);
  EXPECT_EQ(message.idOf({kAppointments, 0x820E, {}}), std::nullopt);
  EXPECT_EQ(message.idOf({kMapiSet, 0x820D, {}}), std::nullopt);
  EXPECT_EQ(message.idOf({kMapiSet, 8, {}}), std::nullopt);
  EXPECT_EQ(message.idOf({kPublicStrings, 0, u"keywords"}), std::nullopt);
  EXPECT_EQ(message.nameOf(0x8000), start);
  EXPECT_EQ(message.nameOf(0x8001), named);
  EXPECT_EQ(message.nameOf(0x8002), ofMapi);
  EXPECT_EQ(message.nameOf(0x8003), ofNone);
  for (const uint16_t id :
       std::initializer_list<uint16_t>{0x8004, 0x8005, 0x8006, 0x0037, 0xFFFF}) {
    EXPECT_EQ(message.nameOf(id), std::nullopt) << id;
  }
}

TEST_P(StoreMessages, AStoreWithoutNames) {
  StoreBuilder store(StoreOptions::Smallest(GetParam(), PstEncoding::None));
  store.folder("Inbox").message().subject(u"Mail");
  FirstItem first(store);
  EXPECT_EQ(first.item->properties()->idOf({kMapiSet, 1, {}}), std::nullopt);
  EXPECT_EQ(first.item->properties()->nameOf(0x8000), std::nullopt);
  EXPECT_EQ(first.opened.listing().find("named"), std::string::npos);
}

}  // namespace
}  // namespace tarn::test
