// Every call of the kernel that a read makes, failed in turn: the status is one that the reader
// documents, and the leak check of the test program sees to the rest.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "Tarnbase/PlainKernel.h"
#include "eml/ReadMail.h"
#include "support/FaultSweep.h"
#include "support/MailOfAll.h"

namespace tarn {
namespace {

using test::AttachmentRecorder;
using test::kWords;
using test::MailOfAll;
using test::MemoryMail;

// The statuses of a read with one call of the group after the other failed, and with none.
std::set<int32_t> Sweep(int32_t group, bool infoOnly, const std::string& subject = kWords) {
  const std::string text = MailOfAll(subject);
  std::set<int32_t> statuses;
  const MemoryMail mail(text);
  test::SweepFaults(group, [&](test::FaultedWork& faulted) {
    AttachmentRecorder recorder;
    recorder.request.infoOnly = infoOnly;
    EmlMessage message;
    PstFilterData filterData;
    KernelFileSeek(mail.handle(), 0, KERNEL_SEEK_START);
    const Status status = faulted(
        [&] { return ReadEmlMessage(message, mail.handle(), filterData, &recorder.request); });
    if (!faulted.isReached()) {
      EXPECT_EQ(status, StatusOk);
    }
    statuses.insert(status.code());
  });
  return statuses;
}

TEST(EmlFaults, SoundReadSucceeds) {
  AttachmentRecorder recorder;
  const test::ReadMail read(MailOfAll(kWords), &recorder.request);
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.message.subject.text(), "f\xC3\xBCr \xE3\x81\x82 dich");
  EXPECT_EQ(read.message.cc.text(), "J\xF6rg");
  // Nobody looks at the body of a read that is for the attachments: images stay out of it.
  EXPECT_EQ(read.message.body.text(), "<img src=\"cid:a@b\">\xC3\xA4");
  EXPECT_EQ(test::ReadMail(MailOfAll(kWords)).message.body.text(),
            "<img src=\"data:image;base64,MDEyMzQ1Njc4OWFiY2Rl\">\xC3\xA4");
  ASSERT_EQ(recorder.attachments.size(), 2u);
  EXPECT_EQ(recorder.attachments[0].name, u"a.png");
  EXPECT_EQ(recorder.attachments[1].name, u"\u00E4.pdf");
}

TEST(EmlFaults, SoundReadRepairsItsFields) {
  const test::ReadMail read(MailOfAll("no words"));
  EXPECT_EQ(read.status, StatusOk);
  EXPECT_EQ(read.message.cc.text(), "J\xC3\xB6rg");
}

TEST(EmlFaults, Memory) {
  EXPECT_EQ(Sweep(PlainKernelFaultMemory, false), (std::set<int32_t>{StatusOutOfMemory, StatusOk}));
  EXPECT_EQ(Sweep(PlainKernelFaultMemory, true), (std::set<int32_t>{StatusOutOfMemory, StatusOk}));
  EXPECT_EQ(Sweep(PlainKernelFaultMemory, true, "no words"),
            (std::set<int32_t>{StatusOutOfMemory, StatusOk}));
}

TEST(EmlFaults, Read) {
  EXPECT_EQ(Sweep(PlainKernelFaultRead, false), (std::set<int32_t>{StatusReadFailed, StatusOk}));
}

TEST(EmlFaults, Seek) {
  EXPECT_EQ(Sweep(PlainKernelFaultSeek, false), (std::set<int32_t>{StatusSeekFailed, StatusOk}));
}

TEST(EmlFaults, Text) {
  // A file name or a looked-up property gives StatusFailed, a part's text StatusPathToUtf8Failed;
  // words and properties of the list fail without a trace.
  EXPECT_EQ(Sweep(PlainKernelFaultText, false),
            (std::set<int32_t>{StatusPathToUtf8Failed, StatusFailed, StatusOk}));
  EXPECT_EQ(Sweep(PlainKernelFaultText, true),
            (std::set<int32_t>{StatusPathToUtf8Failed, StatusFailed, StatusOk}));
  EXPECT_EQ(Sweep(PlainKernelFaultText, true, "no words"),
            (std::set<int32_t>{StatusPathToUtf8Failed, StatusFailed, StatusOk}));
}

// How many calls of the group a read makes, when each that fails ends it with the status.
uint64_t CallsThatFailWith(int32_t group, Status status) {
  const auto round = [status](test::FaultedWork& faulted) {
    const MemoryMail mail("From: a\nTo: b\nDate: c\n\nx");
    EmlMessage message;
    PstFilterData filterData;
    const Status read =
        faulted([&] { return ReadEmlMessage(message, mail.handle(), filterData, nullptr); });
    EXPECT_EQ(read, faulted.isReached() ? status : StatusOk);
  };
  return test::SweepFaults(group, round, test::FaultKinds::OneAndFrom);
}

TEST(EmlFaults, EachSeekThatFailsFailsTheRead) {
  EXPECT_EQ(CallsThatFailWith(PlainKernelFaultSeek, StatusSeekFailed), 5u);
}

TEST(EmlFaults, EachReadThatFailsFailsTheWhole) {
  EXPECT_EQ(CallsThatFailWith(PlainKernelFaultRead, StatusReadFailed), 2u);
}

}  // namespace
}  // namespace tarn
