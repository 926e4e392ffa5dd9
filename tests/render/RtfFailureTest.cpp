// What the header block in RTF cannot be made of, and what stays when memory runs out.
#include <gtest/gtest.h>

#include "RenderSupport.h"
#include "render/Renderer.h"
#include "support/FaultSweep.h"
#include "support/HeaderRows.h"

namespace tarn {
namespace {

using test::Bytes;
using test::MailRtfRow;
using test::Set;
using test::SetAllFields;
using test::SetTerminated;
using test::Terminated;

const std::string kSeparator = test::kRtfEmptyParagraph;
const std::string kHead = R"({\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0\fswiss\fcharset0 Arial;}})";
const std::string kTail = R"(\pard Hi\par})";
const std::string kBody = kHead + kTail;

const std::string kKanji = "\xE5\xB7\xAE";  // U+5DEE

TEST(MailRtfFailure, ABodyThatIsNoRtf) {
  MailMessage message;
  SetTerminated(message.to, "Bob");
  for (const std::string_view body :
       {std::string_view("{\\rtf1\\pard Hi}"), std::string_view(""), std::string_view("\0", 1)}) {
    Set(message.body, body);
    const char* const block = message.body.data();
    EXPECT_EQ(RenderMailMessage(&message, DocumentRtf), StatusNotSupported);
    EXPECT_EQ(message.body.data(), block);
    EXPECT_EQ(Bytes(message.body), body);
  }
  message.body.release();
  EXPECT_EQ(RenderMailMessage(&message, DocumentRtf), StatusNotSupported);
}

// The table is asked for before the rows.
TEST(MailRtfFailure, ABodyThatIsNoRtfUnderNoRows) {
  MailMessage message;
  Set(message.body, "Hi");
  EXPECT_EQ(RenderMailMessage(&message, DocumentRtf), StatusNotSupported);
  EXPECT_EQ(Bytes(message.body), "Hi");
}

TEST(MailRtfFailure, ADamagedTable) {
  const std::string body = R"({\rtf1\pard{\fonttbl{\f0 A\)";
  MailMessage message;
  SetTerminated(message.to, "Bob");
  Set(message.body, body);
  EXPECT_EQ(RenderMailMessage(&message, DocumentRtf), StatusNotSupported);
  EXPECT_EQ(Bytes(message.body), body);
  // A NUL that the length counts is the second byte after the backslash.
  Set(message.body, body + "x");
  EXPECT_EQ(RenderMailMessage(&message, DocumentRtf), StatusNotSupported);
  SetTerminated(message.body, body + "x");
  EXPECT_EQ(RenderMailMessage(&message, DocumentRtf), StatusOk);
}

// After a letter beyond ASCII a NUL cannot be written.
TEST(MailRtfFailure, AValueThatCannotBeWritten) {
  MailMessage message;
  SetTerminated(message.from, "Ann");
  Set(message.subject, std::string_view("\xC3\xA9\0x", 4));
  Set(message.body, kBody);
  EXPECT_EQ(RenderMailMessage(&message, DocumentRtf), StatusBadArgument);
  EXPECT_EQ(Bytes(message.body), kBody);
}

TEST(MailRtfFailure, WithoutMemoryTheBodyStays) {
  const auto round = [](test::FaultedWork& faulted) {
    MailMessage message;
    SetAllFields(message);
    Set(message.body, kBody);
    const char* const block = message.body.data();
    const Status rendered = faulted([&] { return RenderMailMessage(&message, DocumentRtf); });
    EXPECT_EQ(rendered, faulted.isReached() ? StatusOutOfMemory : StatusOk);
    if (!faulted.isReached()) return;
    EXPECT_EQ(message.body.data(), block);
    EXPECT_EQ(Bytes(message.body), kBody);
  };
  // The table twice, the block, the document.
  EXPECT_GE(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 4u);
}

// Memory that fails while a text beyond ASCII is written need not end in a failure; when it does,
// nothing has changed, and when it does not, the message is still there.
TEST(MailRtfFailure, WithoutMemoryForAFont) {
  const auto fill = [](MailMessage& message) {
    SetTerminated(message.from, kKanji);
    SetTerminated(message.subject, "\xC8\x9B" + kKanji);
    Set(message.body, kBody);
  };
  uint64_t failures = 0;
  const auto round = [&](test::FaultedWork& faulted) {
    MailMessage message;
    fill(message);
    const Status rendered = faulted([&] { return RenderMailMessage(&message, DocumentRtf); });
    if (!faulted.isReached()) {
      EXPECT_EQ(rendered, StatusOk);
    }
    if (rendered == StatusOk) {
      EXPECT_TRUE(Bytes(message.body).ends_with(Terminated(kSeparator + kTail)));
      return;
    }
    ++failures;
    EXPECT_TRUE(rendered.failed());
    EXPECT_NE(rendered, StatusFailed);
    EXPECT_EQ(Bytes(message.body), kBody);
  };
  test::SweepFaults(PlainKernelFaultMemory, round);
  EXPECT_GE(failures, 4u);
}

TEST(MailRtfFailure, ABlockBeyondTheBudget) {
  MailMessage message;
  SetTerminated(message.to, std::string(8000000, 'x'));
  Set(message.body, kBody);
  PlainKernelSetMemoryBudget(8000000);
  EXPECT_EQ(RenderMailMessage(&message, DocumentRtf), StatusOutOfMemory);
  EXPECT_EQ(Bytes(message.body), kBody);
}

TEST(MailRtfFailure, ABodyBeyondTheBudget) {
  const std::string body = kBody + std::string(8000000, 'x');
  MailMessage message;
  SetTerminated(message.to, "Bob");
  Set(message.body, body);
  PlainKernelSetMemoryBudget(8000000);
  EXPECT_EQ(RenderMailMessage(&message, DocumentRtf), StatusOutOfMemory);
  EXPECT_EQ(Bytes(message.body), body);
}

}  // namespace
}  // namespace tarn
