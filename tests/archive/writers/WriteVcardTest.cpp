#include <gtest/gtest.h>

#include "archive/mapi/FakeMessage.h"
#include "archive/writers/FakeItem.h"
#include "archive/writers/NamedValues.h"
#include "archive/writers/VcardLines.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

struct Contact {
  mapi::FakeDescription description;
  FakeContent content;

  Contact() { content.fields.messageClass = "IPM.Contact"; }

  // A place for a named property of contacts.
  uint16_t named(uint32_t number) {
    const auto id = static_cast<uint16_t>(0x8000 + description.names.size());
    description.names.push_back({{kContactProperties, number, u""}, id});
    return id;
  }

  std::string card() {
    mapi::FakeMessage message(description);
    content.message = &message;
    FakeItem item(content);
    TextSink sink;
    EXPECT_FALSE(WriteVcard(item, sink).full.has_value());
    return sink.text;
  }
};

std::string Card(const std::string& lines) {
  return "BEGIN:VCARD\r\nVERSION:4.0\r\n" + lines + "END:VCARD\r\n";
}

TEST(WriteVcardTest, WritesNamesAndOrganisations) {
  Contact contact;
  contact.description.properties.text(0x3001, u"Dr. Ann M. Smith Jr.")
      .text(0x3A06, u"Ann")
      .text(0x3A11, u"Smith; S.")
      .text(0x3A44, u"Mary")
      .text(0x3A45, u"Dr.")
      .text(0x3A05, u"Jr.")
      .text(0x3A4F, u"Annie")
      .text(0x3A16, u"Example, Inc.")
      .text(0x3A18, u"R\\D")
      .text(0x3A17, u"Head")
      .text(0x3A46, u"Chemist");
  EXPECT_EQ(contact.card(), Card("FN:Dr. Ann M. Smith Jr.\r\n"
                                 "N:Smith\\; S.;Ann;Mary;Dr.;Jr.\r\n"
                                 "NICKNAME:Annie\r\n"
                                 "ORG:Example\\, Inc.;R\\\\D\r\n"
                                 "TITLE:Head\r\nROLE:Chemist\r\n"));
}

TEST(WriteVcardTest, WritesHowToReachSomebody) {
  Contact contact;
  contact.description.properties.text(0x3001, u"Ann")
      .text(contact.named(0x8083), u"ann@example.com")
      .text(contact.named(0x8093), u"/O=ORG/CN=ANN")
      .text(contact.named(0x8094), u"ann@home.example.com")
      .text(contact.named(0x80A3), u"/O=ORG/CN=OTHER")
      .text(0x3A08, u"+1 (2) 3")
      .text(0x3A09, u"4")
      .text(0x3A1C, u"5")
      .text(0x3A24, u"6")
      .text(0x3A21, u"7")
      .text(0x3A51, u"https://example.com/a,b")
      .text(contact.named(0x8062), u"sip:ann@example.com");
  EXPECT_EQ(contact.card(), Card("FN:Ann\r\n"
                                 "EMAIL:ann@example.com\r\nEMAIL:ann@home.example.com\r\n"
                                 "EMAIL:/O=ORG/CN=OTHER\r\n"
                                 "TEL;TYPE=work,voice:+1 (2) 3\r\nTEL;TYPE=home,voice:4\r\n"
                                 "TEL;TYPE=cell:5\r\nTEL;TYPE=pager:7\r\nTEL;TYPE=work,fax:6\r\n"
                                 "URL;TYPE=work:https://example.com/a,b\r\n"
                                 "IMPP:sip:ann@example.com\r\n"));
}

TEST(WriteVcardTest, WritesAddresses) {
  Contact contact;
  contact.description.properties.text(0x3001, u"Ann")
      .text(contact.named(0x8045), u"1 Road\r\nHouse 2")
      .text(contact.named(0x8046), u"Town")
      .text(contact.named(0x8047), u"State")
      .text(contact.named(0x8048), u"12345")
      .text(contact.named(0x8049), u"Land")
      .text(contact.named(0x804A), u"Box 1")
      .text(0x3A59, u"Village")
      .text(0x3A60, u"Elsewhere");
  EXPECT_EQ(contact.card(), Card("FN:Ann\r\n"
                                 "ADR;TYPE=work:Box 1;;1 Road\\nHouse 2;Town;State;12345;Land\r\n"
                                 "ADR;TYPE=home:;;;Village;;;\r\nADR:;;;;;;Elsewhere\r\n"));
}

TEST(WriteVcardTest, WritesDaysPeopleAndTheRest) {
  Contact contact;
  contact.description.properties.text(0x3001, u"Ann")
      .time(0x3A42, 320536800)  // 1980-02-27T22:00:00Z: midnight two hours east
      .time(contact.named(0x80DF), 951782400)
      .put(0x3A4D, mapi::kTypeInteger16, mapi::LittleEndian(1, 2))
      .text(0x3A48, u"Bob")
      .text(0x3A4E, u"Cid")
      .text(0x3A30, u"Dan")
      .time(0x3008, 1714559696)
      .binary(0x300B, "\x01\xAB");
  contact.content.bodies.text = "One,\r\ntwo\r\n\r\n";
  EXPECT_EQ(contact.card(),
            Card("FN:Ann\r\nBDAY:19800228\r\nANNIVERSARY:20000229\r\nGENDER:F\r\n"
                 "RELATED;TYPE=spouse;VALUE=text:Bob\r\nRELATED;TYPE=co-worker;VALUE=text:Cid\r\n"
                 "RELATED;TYPE=agent;VALUE=text:Dan\r\nNOTE:One\\,\\ntwo\r\n"
                 "UID;VALUE=text:01AB\r\nREV:20240501T103456Z\r\n"));
  contact.description.properties.put(0x3A4D, mapi::kTypeInteger16, mapi::LittleEndian(2, 2));
  EXPECT_NE(contact.card().find("\r\nGENDER:M\r\n"), std::string::npos);
}

TEST(WriteVcardTest, WritesThePhoto) {
  Contact contact;
  contact.content.attach("notes.gif", "image/gif", "GIF89a");
  contact.content.attach("ContactPicture.jpg", "", "\xFF\xD8\xFF");
  contact.description.attachments.resize(2);
  contact.description.attachments[0].emplace().boolean(0x7FFF, false);
  contact.description.attachments[1].emplace().boolean(0x7FFF, true);
  contact.content.fields.subject = "Ann";
  EXPECT_EQ(contact.card(), Card("FN:Ann\r\nPHOTO:data:image/jpeg;base64,/9j/\r\n"));
  contact.content.bytes[1] = "none";
  EXPECT_EQ(contact.card(), Card("FN:Ann\r\n"));
}

TEST(WriteVcardTest, WritesUris) {
  Contact contact;
  contact.content.fields.subject = "Ann";
  contact.description.properties.text(0x3A51, u"http://x.org/a,b;c?d=1:2 \u00E9")
      .text(0x3A50, u" www.example.com/x:y ")
      .text(contact.named(0x8062), u"ann@chat.org")
      .text(contact.named(0x80D8), u"file:x");
  EXPECT_EQ(contact.card(), Card("FN:Ann\r\nURL;TYPE=work:http://x.org/a,b;c?d=1:2%20%C3%A9\r\n"
                                 "URL;TYPE=home:http://www.example.com/x:y\r\n"
                                 "IMPP:im:ann@chat.org\r\nFBURL:file:x\r\n"));
}

TEST(WriteVcardTest, HasANameAlways) {
  Contact contact;
  EXPECT_EQ(contact.card(), Card("FN:Unnamed\r\n"));
  contact.description.properties.text(0x3A16, u"Example");
  EXPECT_EQ(contact.card(), Card("FN:Example\r\nORG:Example;\r\n"));
  contact.description.properties.text(contact.named(0x8005), u"Smith, Ann");
  EXPECT_TRUE(contact.card().starts_with("BEGIN:VCARD\r\nVERSION:4.0\r\nFN:Smith\\, Ann\r\n"));
}

TEST(WriteVcardTest, WritesItemsWithoutProperties) {
  FakeContent content;
  content.fields.subject = "Ann";
  content.troubles = {{TroubleKind::Damaged, "x"}};
  FakeItem item(content);
  TextSink sink;
  EXPECT_EQ(WriteVcard(item, sink).lost.size(), 1u);
  EXPECT_EQ(sink.text, Card("FN:Ann\r\n"));
}

TEST(WriteVcardTest, TellsWhatCannotBeRead) {
  Contact contact;
  contact.description.properties.damaged(0x3A08, mapi::kTypeString);
  mapi::FakeMessage message(contact.description);
  contact.content.message = &message;
  FakeItem item(contact.content);
  TextSink sink;
  EXPECT_EQ(WriteVcard(item, sink).lost.size(), 1u);
  SmallSink small(5);
  EXPECT_TRUE(WriteVcard(item, small).full.has_value());
}

TEST(WriteVcardTest, CutsLinesBetweenCharacters) {
  TextSink sink;
  SinkBuffer out(sink);
  VcardLines lines(out);
  lines.putText("NOTE", std::string(70, 'x'));
  lines.putText("NOTE", std::string(69, 'x') + "\xC3\xA4" + std::string(73, 'y') + "z");
  out.finish();
  EXPECT_EQ(sink.text, "NOTE:" + std::string(70, 'x') + "\r\nNOTE:" + std::string(69, 'x') +
                           "\r\n \xC3\xA4" + std::string(72, 'y') + "\r\n yz\r\n");
}

TEST(ItemClassesTest, TellsContactsAndCalendars) {
  EXPECT_TRUE(IsContact("IPM.Contact"));
  EXPECT_TRUE(IsContact("ipm.contact.x"));
  EXPECT_FALSE(IsContact("IPM.Contacts"));
  EXPECT_FALSE(IsContact("IPM"));
  EXPECT_TRUE(IsCalendar("IPM.Appointment"));
  EXPECT_TRUE(IsCalendar("IPM.Schedule.Meeting.Request"));
  EXPECT_TRUE(IsCalendar("IPM.Task"));
  EXPECT_TRUE(IsCalendar("IPM.TaskRequest.Accept"));
  EXPECT_FALSE(IsCalendar("IPM.Note"));
}

}  // namespace
}  // namespace tarn::archive
