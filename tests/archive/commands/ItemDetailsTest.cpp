#include "archive/writers/ItemDetails.h"

#include <gtest/gtest.h>

#include <bit>

#include "archive/commands/ShownItem.h"
#include "archive/common/MomentText.h"
#include "archive/mapi/FakeMessage.h"
#include "archive/mapi/MapiItem.h"
#include "support/LocalZone.h"

namespace tarn::archive {
namespace {

using mapi::FakeDescription;
using mapi::LittleEndian;

constexpr int64_t kMoment = 1714559696;  // 2024-05-01T10:34:56Z

class Details : public ::testing::Test {
 protected:
  std::unique_ptr<Item> item() {
    const auto open = [this]() -> Outcome<std::unique_ptr<mapi::MapiMessage>> {
      return std::unique_ptr<mapi::MapiMessage>(std::make_unique<mapi::FakeMessage>(description_));
    };
    ItemPlace place{"200024", std::nullopt,
                    std::make_shared<const std::vector<std::string>>(
                        std::vector<std::string>{"Top", "Things"})};
    return mapi::MakeMapiItem(std::move(place), open);
  }

  void setClass(std::u16string_view name) { description_.properties.text(0x001A, name); }

  // The id of a named property of the set whose first byte is that.
  uint16_t named(uint8_t set, uint32_t number) {
    mapi::PropertyName name;
    name.set = {set, 0x20, 0x06, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
    name.number = number;
    const auto id = static_cast<uint16_t>(0x8000 + description_.names.size());
    description_.names.emplace_back(name, id);
    return id;
  }

  std::string details() {
    const std::unique_ptr<Item> described = item();
    std::string lines;
    for (const auto& [label, value] : DetailsOf(*described, LongDate))
      lines += label + ": " + value + "\n";
    return lines;
  }

  const test::LocalZone zone_;
  FakeDescription description_;
};

TEST_F(Details, TellWhoAContactIs) {
  setClass(u"IPM.Contact");
  description_.properties.text(0x3001, u"Ann Ö").text(0x3A16, u"Mills").text(0x3A08, u"+49 1");
  description_.properties.time(0x3A42, 0 - 86400).text(0x3A17, u"");
  description_.properties.text(named(0x04, 0x8083), u"ann@example.com");
  description_.properties.text(named(0x04, 0x801A), u"Road 1\r\nTown");
  EXPECT_EQ(details(),
            "Name: Ann Ö\nCompany: Mills\nE-mail: ann@example.com\nBusiness phone: +49 1\n"
            "Home address: Road 1\r\nTown\nBirthday: 1969-12-31\n");
}

TEST_F(Details, TellWhenAndWhereAnAppointmentIs) {
  for (const char16_t* name : {u"IPM.Appointment", u"ipm.schedule.meeting.request"}) {
    description_ = {};
    setClass(name);
    description_.properties.time(named(0x02, 0x820D), kMoment);
    description_.properties.time(named(0x02, 0x820E), kMoment + 3600);
    description_.properties.boolean(named(0x02, 0x8215), false);
    description_.properties.text(named(0x02, 0x8208), u"Room 5");
    EXPECT_EQ(details(),
              "Start: Wed, 1 May 2024 10:34:56 +0000\nEnd: Wed, 1 May 2024 11:34:56 +0000\n"
              "Location: Room 5\n");
  }
  description_.properties.boolean(named(0x02, 0x8215), true);
  description_.names.erase(description_.names.begin() + 2);
  EXPECT_NE(details().find("All day: yes\n"), std::string::npos);
}

TEST_F(Details, TellHowFarATaskIs) {
  setClass(u"IPM.Task");
  description_.properties.integer(named(0x03, 0x8101), 1);
  const uint16_t share = named(0x03, 0x8102);
  const auto setShare = [&](double value) {
    description_.properties.put(share, mapi::kTypeFloat64,
                                LittleEndian(std::bit_cast<uint64_t>(value), 8));
  };
  setShare(0.5);
  description_.properties.time(named(0x03, 0x8105), 1714521600);
  EXPECT_EQ(details(), "Status: in progress\nDone: 50 %\nDue: 2024-05-01\n");
  description_.properties.integer(description_.names[0].second, 9);
  for (const double odd : {-0.1, 1.5, std::bit_cast<double>(0x7FF8000000000000ULL)}) {
    setShare(odd);
    EXPECT_EQ(details(), "Due: 2024-05-01\n");
  }
}

TEST_F(Details, TellAllThatIsKnownOfAContact) {
  setClass(u"IPM.Contact");
  description_.properties.text(0x3A24, u"+49 2").text(0x3A23, u"+49 3").text(0x3A50, u"a.example");
  description_.properties.text(0x3A4E, u"Bob").text(0x3A5D, u"Road 1").text(0x3A59, u"Town");
  description_.properties.text(0x3A5B, u"12345").text(0x3A5A, u"Here");
  description_.properties.text(named(0x04, 0x8083), u"/o=Mills/cn=ann");
  description_.properties.text(named(0x04, 0x8084), u"ann@example.com");
  description_.properties.text(named(0x04, 0x8093), u"   ");
  EXPECT_EQ(details(),
            "E-mail: ann@example.com\nBusiness fax: +49 2\nOther fax: +49 3\n"
            "Home address: Road 1\n12345 Town\nHere\nPrivate web page: a.example\nManager: Bob\n");
}

TEST_F(Details, TellWhatElseAnAppointmentHas) {
  setClass(u"IPM.Appointment");
  description_.properties.time(named(0x02, 0x820D), 1714521600);
  description_.properties.time(named(0x02, 0x820E), 1714521600 + 2 * 86400);
  description_.properties.boolean(named(0x02, 0x8215), true);
  description_.properties.integer(named(0x02, 0x8205), 3);
  description_.properties.integer(named(0x02, 0x8217), 5);
  description_.properties.boolean(named(0x08, 0x8503), true);
  const uint16_t minutes = named(0x08, 0x8501);
  description_.properties.integer(minutes, 1440);
  description_.properties.integer(0x0017, 2).integer(0x0036, 2);
  EXPECT_EQ(details(),
            "Start: 2024-05-01\nEnd: 2024-05-02\nAll day: yes\nShown as: out of office\n"
            "Status: canceled\nReminder: 1 day before\nImportance: high\nSensitivity: private\n");
  for (const auto& [number, text] :
       {std::pair(15U, "15 minutes"), {120U, "2 hours"}, {0U, "0 minutes"}, {1U, "1 minute"}}) {
    description_.properties.integer(minutes, number);
    EXPECT_NE(details().find("Reminder: " + std::string(text) + " before\n"), std::string::npos);
  }
}

TEST_F(Details, TellWhatAJournalHolds) {
  setClass(u"IPM.Activity");
  description_.properties.text(named(0x0A, 0x8700), u"Phone call");
  description_.properties.integer(named(0x0A, 0x8707), 25);
  EXPECT_EQ(details(), "Type: Phone call\nDuration: 25 minutes\n");
}

TEST_F(Details, AreNoneForMails) {
  setClass(u"IPM.Note");
  description_.properties.text(0x3001, u"Ann");
  EXPECT_EQ(details(), "");
}

TEST_F(Details, AreShownBelowTheHeader) {
  setClass(u"IPM.Task");
  description_.properties.text(0x0037, u"Buy milk").text(0x1000, u"Two bottles\u202E\x1B[1m");
  description_.properties.integer(named(0x03, 0x8101), 0);
  const std::unique_ptr<Item> task = item();
  EXPECT_EQ(ShowItem(*task, 80, "tarnmail show x").text,
            "Subject:  Buy milk\nFolder:   Top/Things\nStatus:   not started\n\n"
            "Two bottles\uFFFD[1m\n");
}

TEST_F(Details, AttachmentsAreNumberedWithWhatTheyAre) {
  setClass(u"IPM.Note");
  mapi::FakeProperties data;
  data.integer(0x3705, 1).text(0x3707, u"a\nb.txt").text(0x370E, u"text/plain");
  data.binary(0x3701, std::string(1500, 'x'));
  mapi::FakeProperties elsewhere;
  elsewhere.integer(0x3705, 2).text(0x3707, u"far.doc").text(0x3708, u"\\\\server\\far.doc");
  mapi::FakeProperties embedded;
  embedded.integer(0x3705, 5).text(0x3001, u"Inner");
  description_.properties.boolean(0x0E1B, true);
  description_.attachments = {data, elsewhere, std::nullopt, embedded};
  description_.embedded[3] = std::make_shared<FakeDescription>();
  const std::unique_ptr<Item> mail = item();
  const std::string text = ShowItem(*mail, 80, "tarnmail show x").text;
  for (const char* part : {"\n  1  a b.txt", "  text/plain  1.5 KB\n", "\n  2  far.doc",
                           "unreadable: ", "message: tarnmail show x 200024/4\n"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
  }
}

TEST_F(Details, ManyRecipientsGoOnSeveralLines) {
  setClass(u"IPM.Note");
  for (int i = 0; i < 5; ++i) {
    mapi::FakeProperties person;
    person.integer(0x0C15, 1).text(0x3001, u"Somebody with a name");
    person.text(0x39FE, u"somebody@example.com");
    description_.recipients.push_back(person);
  }
  const std::unique_ptr<Item> mail = item();
  const std::string text = ShowItem(*mail, 80, "x").text;
  EXPECT_EQ(text.find("To:      Somebody with a name <somebody@example.com>,\n         Somebody"),
            0U)
      << text;
}

}  // namespace
}  // namespace tarn::archive
