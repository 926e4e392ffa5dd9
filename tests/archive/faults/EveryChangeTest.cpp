// A small export in all forms, of whose changes each in turn meets a full disk or a signal.
#include <algorithm>
#include <string_view>

#include "archive/faults/FaultFixture.h"
#include "support/Environment.h"
#include "support/msg/MsgBuilder.h"

namespace tarn::archive {
namespace {

// TARN_EXPORT_FAULT_STRIDE tells how far the changes are apart that meet something: 1 takes every
// one. Where it is not set, every 16th is taken, and each kind begins with another.
uint64_t Stride() {
  constexpr uint64_t kUsual = 16;
  const auto text = test::GetVariable("TARN_EXPORT_FAULT_STRIDE");
  const uint64_t stride = text ? std::strtoull(text->c_str(), nullptr, 10) : kUsual;
  EXPECT_NE(stride, 0u) << "TARN_EXPORT_FAULT_STRIDE is a number from 1";
  return stride == 0 ? 1 : stride;
}

struct Meeting {
  const char* name;
  const char* kind;
  uint64_t place;  // among the kinds
};

void PrintTo(const Meeting& meeting, std::ostream* out) { *out << meeting.name; }

class EveryChange : public FaultyExport, public ::testing::WithParamInterface<Meeting> {
 protected:
  static bool isFullDisk() {
    const std::string_view kind = GetParam().kind;
    return kind == "full" || kind == "once";
  }

  // By the signal, or with words about the disk.
  static void expectFitEnd(const test::ProgramResult& result) {
    if (isFullDisk()) {
      expectClearLine(result);
    } else {
      EXPECT_EQ(result.exitStatus, -1);
    }
  }

  // Exports what is in "in" with each of its changes met in turn.
  // Among what it makes there are files with these ends.
  void meetEach(const std::vector<std::string>& options, const std::vector<std::string>& ends) {
    std::vector<std::string> resumed = options;
    resumed.push_back("--resume");
    ASSERT_EQ(exportInto("whole", options).exitStatus, 0);
    const Tree whole = tree("whole");
    for (const std::string& end : ends) {
      EXPECT_TRUE(std::any_of(whole.begin(), whole.end(), [&](const auto& file) {
        return file.first.ends_with(end);
      })) << end;
    }
    ASSERT_EQ(exportInto("out", options, {GetParam().kind, 0}).exitStatus, 0);
    const uint64_t changes = calls_;
    ASSERT_GT(changes, 60u);

    const uint64_t stride = Stride();
    for (uint64_t at = 1 + GetParam().place * 3 % stride; at <= changes; at += stride) {
      SCOPED_TRACE("change " + std::to_string(at) + " of " + std::to_string(changes));
      std::filesystem::remove_all(path("out"));
      const test::ProgramResult result = exportInto("out", options, {GetParam().kind, at});
      expectNothingHalf("out", whole);
      // There may be another way, as a copy for a link, and a signal may come when all is done.
      const bool isFinished = std::filesystem::exists(path("out/manifest.jsonl"));
      if (isFullDisk()) {
        EXPECT_EQ(isFinished, result.exitStatus == 0);
      }
      if (!isFinished) expectFitEnd(result);
      const test::ProgramResult last = exportInto("out", resumed);
      EXPECT_EQ(last.exitStatus, 0) << last.err;
      EXPECT_EQ(difference(tree("out"), whole), "");
      if (HasFailure()) return;
    }
  }
};

TEST_P(EveryChange, LeavesNothingHalfAndGoesOn) {
  write("in/mail.eml", MailWithParts(3));
  meetEach({"--to", "html,text,eml,mbox,json"}, {".html", ".txt", ".eml", ".mbox", ".json"});
}

// A card, a calendar, and pages where there are any.
TEST_P(EveryChange, LeavesNothingHalfOfOtherForms) {
  test::MsgBuilder contact;
  contact.text(0x001A, u"IPM.Contact").text(0x0037, u"Ann").text(0x3001, u"Ann");
  write("in/contact.msg", contact.write());
  test::MsgBuilder meeting;
  meeting.text(0x001A, u"IPM.Appointment").text(0x0037, u"Lunch");
  write("in/meeting.msg", meeting.write());
#ifdef HAS_PAGES
  meetEach({"--to", "text,pdf"}, {".vcf", ".ics", ".pdf"});
#else
  meetEach({"--to", "text"}, {".vcf", ".ics"});
#endif
}

INSTANTIATE_TEST_SUITE_P(Meetings, EveryChange,
                         ::testing::Values(Meeting{"FullDisk", "full", 0},
                                           Meeting{"FullOnce", "once", 1},
                                           Meeting{"Killed", "kill", 2},
                                           Meeting{"Terminated", "term", 3},
                                           Meeting{"Interrupted", "int", 4}),
                         [](const auto& meeting) { return meeting.param.name; });

}  // namespace
}  // namespace tarn::archive
