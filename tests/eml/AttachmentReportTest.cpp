#include "eml/AttachmentReport.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Tarnbase/PlainKernel.h"
#include "eml/ReadMail.h"
#include "support/EmlBuilder.h"
#include "support/FaultSweep.h"

namespace tarn {
namespace {

using test::AttachmentRecorder;
using test::EmlBuilder;
using test::EmlEntity;
using Properties = std::vector<std::pair<std::u16string, std::u16string>>;

// A part with the content "data", and its report.
struct Report {
  EmlMessage message;
  EmlPart part;
  AttachmentRecorder recorder;
  std::string headers;
  std::string value;

  explicit Report(std::string_view value_, std::string_view headers_ = "")
      : headers(headers_), value(value_) {
    part.disposition = DispositionAttachment;
    part.decoded = test::Sized("data");
  }

  void setContentId(std::string_view id) {
    ASSERT_EQ(part.contentId.append(id), StatusOk);
    ASSERT_EQ(part.contentId.append("", 1), StatusOk);
    part.contentId.setLength(id.size());
  }

  Status runWith(const AttachmentRequest* request) {
    return ReportEmlAttachment(request, part, message, headers, value);
  }
  Status run() { return runWith(&recorder.request); }
  const test::ReportedAttachment& only() const { return recorder.attachments.at(0); }
};

TEST(AttachmentReport, CountsByDisposition) {
  Report report("");
  EXPECT_EQ(report.runWith(nullptr), StatusOk);
  report.part.disposition = DispositionInline;
  EXPECT_EQ(report.runWith(nullptr), StatusOk);
  EXPECT_EQ(report.runWith(nullptr), StatusOk);
  EXPECT_EQ(report.message.attachmentCount, 1u);
  EXPECT_EQ(report.message.inlineCount, 2u);
}

TEST(AttachmentReport, OtherDispositionsAreNotReported) {
  for (const ContentDisposition disposition : {DispositionNone, DispositionOther}) {
    Report report("form-data; filename=a");
    report.part.disposition = disposition;
    EXPECT_EQ(report.run(), StatusOk);
    EXPECT_TRUE(report.recorder.attachments.empty());
    EXPECT_EQ(report.message.attachmentCount + report.message.inlineCount, 0u);
  }
}

TEST(AttachmentReport, ForTheBytesTheListStaysEmpty) {
  Report report("attachment; filename=\"a b.txt\"; creation-date=\"x\"",
                "Content-Type: text/css; q\r\nContent-Description: d\r\n");
  report.setContentId("id");
  EXPECT_EQ(report.run(), StatusOk);
  EXPECT_EQ(report.only().bytes, "data");
  EXPECT_EQ(report.only().name, u"a b.txt");
  EXPECT_EQ(report.only().properties, Properties{});
}

TEST(AttachmentReport, AllPropertiesInTheirOrder) {
  Report report(
      "attachment; filename=a.txt; modification-date=\"Sun, 22 Nov 2026\"; "
      "creation-date=\"Sat, 21 Nov 2026\"",
      "Content-Type: text/css; charset=x\r\nContent-Description: A =?utf-8?Q?b?=\r\n");
  report.setContentId("id@x");
  report.recorder.request.infoOnly = true;
  EXPECT_EQ(report.run(), StatusOk);
  EXPECT_EQ(report.only().bytes, "data");
  EXPECT_EQ(report.only().name, u"a.txt");
  const Properties expected = {{u"creation-date=", u"Sat, 21 Nov 2026"},
                               {u"modification-date=", u"Sun, 22 Nov 2026"},
                               {u"Content-Disposition:", u"attachment"},
                               {u"Content-Description:", u"A =?utf-8?Q?b?="},
                               {u"MineType", u"text/css"},
                               {u"Content-ID:", u"id@x"}};
  EXPECT_EQ(report.only().properties, expected);
}

TEST(AttachmentReport, InlinePartsSayInline) {
  Report report("inline");
  report.part.disposition = DispositionInline;
  report.recorder.request.infoOnly = true;
  EXPECT_EQ(report.run(), StatusOk);
  EXPECT_EQ(report.only().properties, (Properties{{u"Content-Disposition:", u"inline"}}));
  EXPECT_FALSE(report.only().name.has_value());
}

TEST(AttachmentReport, ContentIdOfOneNulIsNone) {
  for (const auto& [id, value] : {std::pair(std::string(1, '\0'), std::u16string(u"none")),
                                  std::pair(std::string(2, '\0'), std::u16string())}) {
    Report report("attachment");
    report.setContentId(id);
    report.recorder.request.infoOnly = true;
    EXPECT_EQ(report.run(), StatusOk);
    Properties expected = {{u"Content-Disposition:", u"attachment"}};
    if (value.empty()) expected.emplace_back(u"Content-ID:", value);
    EXPECT_EQ(report.only().properties, expected) << id.size();
  }
}

TEST(AttachmentReport, LookedUpPropertiesAreDecoded) {
  Report report("attachment", "Content-Description: =?utf-8?Q?caf=C3=A9_1?=\r\n");
  report.recorder.request.infoOnly = true;
  EXPECT_EQ(report.run(), StatusOk);
  EXPECT_EQ(report.only().properties, (Properties{{u"Content-Disposition:", u"attachment"},
                                                  {u"Content-Description:", u"caf\u00E9 1"}}));
}

TEST(AttachmentReport, LookedUpPropertyThatIsNoUtf8EndsTheReport) {
  for (const char* const value : {"attachment; creation-date=\"\xE4\"; filename=a",
                                  "attachment; modification-date=\"\xE4\"; filename=a"}) {
    Report report(value);
    report.recorder.request.infoOnly = true;
    EXPECT_EQ(report.run(), StatusFailed);
    EXPECT_TRUE(report.recorder.attachments.empty());
  }
  Report report("attachment", "Content-Description: \xE4\r\n");
  report.recorder.request.infoOnly = true;
  EXPECT_EQ(report.run(), StatusFailed);
}

TEST(AttachmentReport, FailuresOfTheOtherPropertiesAreIgnored) {
  Report report("attachment", "Content-Type: \xE4\r\n");
  report.setContentId("\xE4");
  report.recorder.request.infoOnly = true;
  EXPECT_EQ(report.run(), StatusOk);
  EXPECT_EQ(report.only().properties, (Properties{{u"Content-Disposition:", u"attachment"}}));
}

TEST(AttachmentReport, OnlyTheNumberAskedForIsDelivered) {
  Report report("attachment");
  report.recorder.request.index = 2;
  EXPECT_EQ(report.run(), StatusOk);
  EXPECT_EQ(report.recorder.attachments.size(), 0u);
  report.part.disposition = DispositionInline;
  EXPECT_EQ(report.run(), StatusOk);
  EXPECT_EQ(report.recorder.attachments.size(), 1u);
  EXPECT_EQ(report.run(), StatusOk);
  EXPECT_EQ(report.recorder.attachments.size(), 1u);
}

TEST(AttachmentReport, FileNameOfTheAsteriskFormIsNone) {
  Report report("attachment; filename*=utf-8''a.txt");
  EXPECT_EQ(report.run(), StatusOk);
  EXPECT_FALSE(report.only().name.has_value());
}

TEST(AttachmentReport, FileNameIsDecoded) {
  Report report("attachment; filename=\"=?iso-8859-1?Q?=E4=2Etxt?=\"");
  EXPECT_EQ(report.run(), StatusOk);
  EXPECT_EQ(report.only().name, u"\u00E4.txt");
}

TEST(AttachmentReport, FileNameInUtf8IsWidened) {
  Report report("attachment; filename=\"\xF0\x9F\x98\x80\"");
  EXPECT_EQ(report.run(), StatusOk);
  EXPECT_EQ(report.only().name, u"\U0001F600");
}

TEST(AttachmentReport, EmptyFileNameIsEmptyAndNotNull) {
  Report report("attachment; filename=\"\"");
  EXPECT_EQ(report.run(), StatusOk);
  EXPECT_EQ(report.only().name, u"");
}

TEST(AttachmentReport, FileNameThatIsNoUtf8FailsWithoutACall) {
  Report report("attachment; filename=\"\xE4.txt\"");
  EXPECT_EQ(report.run(), StatusFailed);
  EXPECT_TRUE(report.recorder.attachments.empty());
}

TEST(AttachmentReport, WithoutACallbackItSucceeds) {
  Report report("attachment; filename=a");
  report.recorder.request.callback = nullptr;
  EXPECT_EQ(report.run(), StatusOk);
  EXPECT_EQ(report.message.attachmentCount, 1u);
}

TEST(AttachmentReport, ResultOfTheCallbackIsTheResult) {
  for (const Status result : {Status(StatusOk), Status(StatusDone), Status(StatusFailed),
                              Status(StatusWriteFailed), Status::FromCode(77)}) {
    Report report("attachment");
    report.recorder.results = {result};
    EXPECT_EQ(report.run(), result);
  }
}

TEST(AttachmentReport, PartWithoutDecodedBytesIsANullSource) {
  Report report("attachment");
  report.part.decoded.release();
  EXPECT_EQ(report.run(), StatusNullArgument);
}

TEST(AttachmentReport, EmptyPartStillHasABlock) {
  Report report("attachment");
  report.part.decoded.clear();
  const auto keep = [](void* user, TrackedBuffer<char>* data, const char16_t*,
                       PropertyList*) -> Status {
    EXPECT_EQ(data->length(), 0u);
    *static_cast<KernelBlock<char>*>(user) = KernelBlock<char>(data->take());
    return StatusDone;
  };
  KernelBlock<char> kept;
  const AttachmentRequest request = {1, false, keep, &kept};
  EXPECT_EQ(report.runWith(&request), StatusDone);
  EXPECT_TRUE(kept);
}

TEST(AttachmentReport, CallbackMayKeepTheList) {
  Report report("attachment");
  const auto keep = [](void* user, TrackedBuffer<char>*, const char16_t*,
                       PropertyList* list) -> Status {
    *static_cast<KernelBlock<AttachmentProperty>*>(user) =
        KernelBlock<AttachmentProperty>(list->take());
    return StatusOk;
  };
  KernelBlock<AttachmentProperty> kept;
  const AttachmentRequest request = {kAllAttachments, true, keep, &kept};
  EXPECT_EQ(report.runWith(&request), StatusOk);
  ASSERT_TRUE(kept);
  EXPECT_EQ(std::u16string(kept[0].value), u"attachment");
}

TEST(AttachmentReport, BudgetThatRefusesTheDataGivesItsCode) {
  Report report("attachment");
  report.part.decoded = test::Sized(std::string(9000000, 'a'));
  PlainKernelSetMemoryBudget(1000);
  EXPECT_EQ(report.run(), StatusOutOfMemory);
  EXPECT_TRUE(report.recorder.attachments.empty());
}

TEST(AttachmentReport, EachFailedAllocationFailsTheReportOrIsIgnored) {
  int32_t failures = 0;
  const auto round = [&](test::FaultedWork& faulted) {
    Report report("attachment; filename=\"a\"; creation-date=\"c\"",
                  "Content-Type: text/css\r\nContent-Description: d\r\n");
    report.recorder.request.infoOnly = true;
    const Status status = faulted([&] { return report.run(); });
    if (!faulted.isReached()) {
      EXPECT_EQ(status, StatusOk);
    }
    if (status.ok()) {
      ASSERT_EQ(report.recorder.attachments.size(), 1u);
      EXPECT_EQ(report.only().bytes, "data");
    } else {
      EXPECT_EQ(status, StatusOutOfMemory);
      EXPECT_TRUE(report.recorder.attachments.empty());
      ++failures;
    }
  };
  test::SweepFaults(PlainKernelFaultMemory, round);
  EXPECT_GE(failures, 4);
}

// The attachments of a mail of these parts, with their properties.
std::vector<Properties> ReportedProperties(const std::vector<EmlEntity>& parts) {
  EmlEntity body = EmlEntity::Multipart("mixed", "sep");
  for (const EmlEntity& part : parts) body.part(part);
  AttachmentRecorder recorder;
  recorder.request.infoOnly = true;
  const test::ReadMail read(EmlBuilder::Usual().body(body).build(), &recorder.request);
  EXPECT_EQ(read.status, StatusOk);
  std::vector<Properties> all;
  for (const test::ReportedAttachment& attachment : recorder.attachments) {
    all.push_back(attachment.properties);
  }
  return all;
}

TEST(ReportedMail, LinesAboveTheDispositionAreFound) {
  const std::vector<Properties> expected = {{{u"Content-Disposition:", u"attachment"},
                                             {u"Content-Description:", u"d"},
                                             {u"MineType", u"text/css"}}};
  EXPECT_EQ(ReportedProperties({EmlEntity::Leaf("text/css", "x")
                                    .header("Content-Description", "d")
                                    .disposition("attachment")}),
            expected);
}

TEST(ReportedMail, ContentIdIsThatOfThePartItself) {
  const std::vector<Properties> expected = {
      {{u"Content-Disposition:", u"attachment"},
       {u"MineType", u"text/css"},
       {u"Content-ID:", u"a@b"}},
      {{u"Content-Disposition:", u"inline"}, {u"MineType", u"text/css"}}};
  EXPECT_EQ(ReportedProperties(
                {EmlEntity::Leaf("text/css", "x").contentId("a@b").disposition("attachment"),
                 EmlEntity::Leaf("text/css", "y").disposition("inline")}),
            expected);
}

TEST(HeaderParameterProperty, AbsentParameterAddsNothing) {
  PropertyList list;
  const std::string_view text = "a=b";
  EXPECT_EQ(AddHeaderParameterProperty(list, text, "name="), StatusOk);
  EXPECT_EQ(list.length(), 0u);
}

TEST(HeaderParameterProperty, FailureKeepsTheRawValue) {
  PropertyList list;
  const std::string_view text = "name==?iso-8859-1?Q?=E4?=";
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(AddHeaderParameterProperty(list, text, "name="), StatusOk);
  ASSERT_EQ(list.length(), 1u);
  EXPECT_EQ(std::u16string(list.data()[0].name), u"name=");
  EXPECT_EQ(std::u16string(list.data()[0].value), u"=?iso-8859-1?Q?=E4?=");
}

}  // namespace
}  // namespace tarn
