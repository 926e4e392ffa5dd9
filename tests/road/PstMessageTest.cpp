// One message of a store as a record: which body it shows, and its header fields.

#include "FileFormats/Pst/PstMessage.h"

#include <gtest/gtest.h>

#include <functional>

#include "PstReading.h"
#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"
#include "support/LocalZone.h"
#include "support/RtfCompressor.h"

namespace tarn::test {
namespace {

using Describe = std::function<void(MessageBuilder&)>;

// A store of one message, read.
class OneMessage {
 public:
  explicit OneMessage(const Describe& describe, PstLayout layout = PstLayout::Unicode)
      : store_(SmallStore(layout)) {
    describe(store_.folder("Inbox").message());
    reading_.emplace(store_);
    status = reading_->read(0);
  }

  PstReading* operator->() { return &*reading_; }
  MailMessage& record() { return reading_->record(0); }

  Status status;

 private:
  StoreBuilder store_;
  std::optional<PstReading> reading_;
};

TEST(PstMessage, StoresAllHeaderFieldsAsUtf8) {
  const LocalZone zone;
  for (const PstLayout layout : kBothLayouts) {
    OneMessage message(
        [](MessageBuilder& m) {
          m.subject(u"\u00DCber \U0001F600").from(u"Ann \u20AC").to(u"Bob").cc(u"Cy").bcc(u"Di");
          m.importance(2).submitTime(132539328000000000);
        },
        layout);
    ASSERT_EQ(message.status, StatusOk);
    const MailMessage& record = message.record();
    EXPECT_EQ(record.subject.view(),
              "\xC3\x9C"
              "ber \xF0\x9F\x98\x80");
    EXPECT_EQ(record.from.view(), "Ann \xE2\x82\xAC");
    EXPECT_EQ(record.to.view(), "Bob");
    EXPECT_EQ(record.cc.view(), "Cy");
    EXPECT_EQ(record.bcc.view(), "Di");
    EXPECT_EQ(record.importance.text(), "High");
    EXPECT_EQ(record.sent.text(), "Fri Jan 01, 2021 12:00 AM");
    EXPECT_EQ(record.fromAddress.data(), nullptr);
    EXPECT_EQ(record.originalAuthor.data(), nullptr);
    EXPECT_EQ(record.text.data(), nullptr);
    EXPECT_EQ(record.body.data(), nullptr);
    EXPECT_EQ(message->kind, uint32_t{DocumentNone});
  }
}

TEST(PstMessage, WidensEightBitStrings) {
  OneMessage message([](MessageBuilder& m) { m.subject("gr\xFC\xDF"); }, PstLayout::Ansi);
  ASSERT_EQ(message.status, StatusOk);
  // A byte above 7F is a negative character: FFFC and FFDF.
  EXPECT_EQ(message.record().subject.view(), "gr\xEF\xBF\xBC\xEF\xBF\x9F");
}

TEST(PstMessage, KeepsNulsInHeaderStrings) {
  OneMessage message(
      [](MessageBuilder& m) { m.subject(std::u16string_view(u"a\0b", 3)).to(u"x"); });
  EXPECT_EQ(message.record().subject.view(), std::string_view("a\0b", 3));
}

TEST(PstMessage, DropsTheMarkerOfASubject) {
  for (const PstLayout layout : kBothLayouts) {
    OneMessage marked([](MessageBuilder& m) { m.subject(u"\1\5Re: Hi"); }, layout);
    EXPECT_EQ(marked.record().subject.view(), "Re: Hi");
    OneMessage markerOnly([](MessageBuilder& m) { m.subject(u"\1\5"); }, layout);
    EXPECT_EQ(markerOnly.status, StatusOk);
    EXPECT_EQ(markerOnly.record().subject.data(), nullptr);
    OneMessage later([](MessageBuilder& m) { m.subject(u"a\1\5"); }, layout);
    EXPECT_EQ(later.record().subject.view(), "a\1\5");
  }
}

TEST(PstMessage, NamesAMissingSubjectOnly) {
  OneMessage missing([](MessageBuilder& m) { m.without(kPropSubject); });
  EXPECT_EQ(missing.record().subject.view(), "No Subject");
  OneMessage empty([](MessageBuilder& m) { m.subject(u""); });
  EXPECT_EQ(empty.record().subject.data(), nullptr);
  EXPECT_EQ(empty.record().subject.length(), 0u);
}

TEST(PstMessage, HasNoLabelForNormalImportance) {
  OneMessage normal([](MessageBuilder& m) { m.importance(1); });
  EXPECT_EQ(normal.record().importance.data(), nullptr);
  OneMessage low([](MessageBuilder& m) { m.importance(0); });
  EXPECT_EQ(low.record().importance.text(), "Low");
  OneMessage other([](MessageBuilder& m) { m.importance(0xFFFFFFFF); });
  EXPECT_EQ(other.record().importance.data(), nullptr);
}

TEST(PstMessage, IgnoresATimeOfAnotherSize) {
  for (const std::string_view value :
       {std::string_view("1234567"), std::string_view("123456789")}) {
    OneMessage message([value](MessageBuilder& m) {
      m.subject(u"x").property(kPropClientSubmitTime, kTypeBinary, value).html("h");
    });
    ASSERT_EQ(message.status, StatusOk);
    EXPECT_EQ(message.record().sent.data(), nullptr);
    EXPECT_EQ(message->body(0), "h");
  }
}

TEST(PstMessage, FormatsTheEpochInLocalTime) {
  LocalZone zone;
  const auto epoch = [](MessageBuilder& m) { m.submitTime(116444736000000000); };
  OneMessage utc(epoch);
  EXPECT_EQ(utc.record().sent.text(), "Thu Jan 01, 1970 12:00 AM");
  zone.use("EST5");
  OneMessage est(epoch);
  EXPECT_EQ(est.record().sent.text(), "Wed Dec 31, 1969 07:00 PM");
}

TEST(PstMessage, KeepsThePlainBodyAsTheStoreHasIt) {
  for (const PstLayout layout : kBothLayouts) {
    OneMessage wide([](MessageBuilder& m) { m.body(u"H\u00EF"); }, layout);
    ASSERT_EQ(wide.status, StatusOk);
    EXPECT_EQ(wide->text(0), std::string("H\0\xEF\0", 4));
    EXPECT_EQ(wide->kind, uint32_t{DocumentText});
    EXPECT_EQ(wide.record().body.data(), nullptr);
    OneMessage narrow([](MessageBuilder& m) { m.body("H\xEF"); }, layout);
    EXPECT_EQ(narrow->text(0), "H\xEF");
  }
}

TEST(PstMessage, TellsAnEmptyBodyFromAMissingOne) {
  OneMessage message([](MessageBuilder& m) { m.body(u"").html(""); });
  ASSERT_EQ(message.status, StatusOk);
  EXPECT_NE(message.record().text.data(), nullptr);
  EXPECT_EQ(message.record().text.length(), 0u);
  EXPECT_NE(message.record().body.data(), nullptr);
  EXPECT_EQ(message.record().body.length(), 0u);
  EXPECT_EQ(message->kind, uint32_t{DocumentHtml});
}

TEST(PstMessage, HasNoTextForHtmlAlone) {
  OneMessage message([](MessageBuilder& m) { m.html("<p>\xE4\0</p>"); });
  EXPECT_EQ(message->kind, uint32_t{DocumentHtml});
  EXPECT_EQ(message->body(0), "<p>\xE4");
  EXPECT_EQ(message.record().text.data(), nullptr);
}

TEST(PstMessage, PrefersHtmlToText) {
  OneMessage message([](MessageBuilder& m) { m.html("html").body(u"t"); });
  EXPECT_EQ(message->kind, uint32_t{DocumentHtml});
  EXPECT_EQ(message->body(0), "html");
  EXPECT_EQ(message->text(0), std::string("t\0", 2));
}

TEST(PstMessage, PrefersRtfToAll) {
  for (const PstLayout layout : kBothLayouts) {
    OneMessage message(
        [](MessageBuilder& m) { m.html("html").body(u"t").rtf(PackRtf("{\\rtf1 Hello}")); },
        layout);
    ASSERT_EQ(message.status, StatusOk);
    EXPECT_EQ(message->kind, uint32_t{DocumentRtf});
    EXPECT_EQ(message->body(0), "{\\rtf1 Hello}");
    EXPECT_EQ(message->text(0), std::string("t\0", 2));
  }
}

// An HTML body of 207 bytes and more than the RTF keeps its block: its length less 207 is the
// length, and what the unpacking left after the text belongs to the body.
TEST(PstMessage, KeepsTheLengthOfALongHtmlBodyUnderRtf) {
  OneMessage message(
      [](MessageBuilder& m) { m.html(std::string(300, 'h')).rtf(PackRtf("{\\rtf1 Hello}")); });
  ASSERT_EQ(message.status, StatusOk);
  EXPECT_EQ(message->kind, uint32_t{DocumentRtf});
  EXPECT_EQ(message->body(0),
            "{\\rtf1 Hello}"
            "ac\\deff0\\deftab720{\\fonttbl;}{\\f0\\fnil \\froman \\fswiss \\fmodern "
            "\\fscript \\fdecor");
}

TEST(PstMessage, TakesStoredRtfWithItsChecksum) {
  OneMessage stored([](MessageBuilder& m) {
    m.rtf(StoreRtf(std::string_view("{\\rtf1 Hi}\0behind", 17), StoredCrc::OfContents));
  });
  ASSERT_EQ(stored.status, StatusOk);
  EXPECT_EQ(stored.record().body.text(), "{\\rtf1 Hi}");
  OneMessage customary([](MessageBuilder& m) { m.rtf(StoreRtf("{\\rtf1 Hi}")); });
  EXPECT_EQ(customary.status, StatusNotSupported);
}

TEST(PstMessage, FailsOnDamagedRtf) {
  OneMessage shortRtf([](MessageBuilder& m) { m.rtf("15 bytes of rtf"); });
  EXPECT_EQ(shortRtf.status, StatusNotSupported);
  OneMessage empty([](MessageBuilder& m) { m.rtf(""); });
  EXPECT_EQ(empty.status, StatusNotSupported);
}

// The images go into the HTML, and the RTF takes its place.
TEST(PstMessage, PlacesImagesIntoHtmlThatRtfReplaces) {
  OneMessage message([](MessageBuilder& m) {
    m.html("<img src=\"cid:a.png\">").attachment(u"a.png", std::string(60, 'x'));
    m.rtf(PackRtf("{\\rtf1 Hello, this text is longer than the page in front of it}"));
  });
  ASSERT_EQ(message.status, StatusOk);
  EXPECT_EQ(message->kind, uint32_t{DocumentRtf});
  EXPECT_EQ(message->body(0), "{\\rtf1 Hello, this text is longer than the page in front of it}");
  EXPECT_EQ(message->data.attachmentCount, 1u);
}

TEST(PstMessage, ReadsBodiesOfManyBlocks) {
  for (const PstLayout layout : kBothLayouts) {
    std::string html;
    for (int i = 0; html.size() < 50000; ++i) html += std::to_string(i) + ' ';
    OneMessage message([&](MessageBuilder& m) { m.html(html).body(u"x"); }, layout);
    ASSERT_EQ(message.status, StatusOk);
    EXPECT_EQ(message->body(0), html);
  }
}

// The header fields are the only text that is converted here.
TEST(PstMessage, IgnoresHeaderTextsThatDoNotConvert) {
  const char* const kFields[] = {"Hi", "Ann", "Bob", "Cy", "Di"};
  const uint64_t calls = SweepFaults(PlainKernelFaultText, [&](FaultedWork& faulted) {
    StoreBuilder store(SmallStore());
    store.folder("A").message().subject(u"Hi").from(u"Ann").to(u"Bob").cc(u"Cy").bcc(u"Di").html(
        "html");
    PstReading reading(store);
    ASSERT_EQ(reading.count(), StatusOk);
    EXPECT_EQ(faulted([&] { return reading.walk(0); }), StatusOk);
    const MailMessage& record = reading.record(0);
    const SizedBytes* const fields[] = {&record.subject, &record.from, &record.to, &record.cc,
                                        &record.bcc};
    for (uint64_t i = 0; i < 5; ++i) {
      const bool isLost = i + 1 == faulted.ordinal();
      EXPECT_EQ(fields[i]->length(), isLost ? 0 : std::string_view(kFields[i]).size());
    }
    EXPECT_EQ(reading.body(0), "html");
  });
  EXPECT_EQ(calls, 5u);
}

// Without memory a message is out of memory, loses a header field, or breaks its folder; whatever
// happens, what it leaves is whole.
TEST(PstMessage, EndsWithoutMemory) {
  StoreBuilder store(SmallStore());
  store.folder("A")
      .message()
      .subject(u"Hi")
      .from(u"Ann")
      .importance(2)
      .submitTime(1)
      .body(u"t")
      .html("html")
      .rtf(PackRtf("{\\rtf1 Hello}"))
      .attachment(u"a", "b");
  std::map<int32_t, int> statuses;
  int lostFields = 0;
  int brokenFolders = 0;
  SweepFaults(PlainKernelFaultMemory, [&](FaultedWork& faulted) {
    PstReading reading(store);
    ASSERT_EQ(reading.count(), StatusOk);
    const Status status = faulted([&] { return reading.walk(0); });
    if (!faulted.isReached()) {
      EXPECT_EQ(status, StatusOk);
      return;
    }
    ++statuses[status.code()];
    const MailMessage& record = reading.record(0);
    if (status != StatusOk) return;
    if (record.body.view() == "{\\rtf1 Hello}") {
      if (record.subject.length() == 0 || record.from.length() == 0 || record.sent.length() == 0 ||
          record.importance.length() == 0) {
        ++lostFields;
      }
    } else {
      EXPECT_TRUE(record.body.length() == 0 || record.body.view() == "html");
      ++brokenFolders;
    }
  });
  EXPECT_EQ(statuses.size(), 2u);
  EXPECT_EQ(statuses[-1], 7);  // two bodies, three texts of the attachment, two blocks of the RTF
  EXPECT_EQ(lostFields, 4);
  EXPECT_GT(brokenFolders, 20);
}

}  // namespace
}  // namespace tarn::test
