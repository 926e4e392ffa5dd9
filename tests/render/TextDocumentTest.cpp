#include <gtest/gtest.h>

#include "RenderSupport.h"
#include "render/Renderer.h"
#include "support/FaultSweep.h"

namespace tarn {
namespace {

using test::Bytes;
using test::Set;
using test::SetAllFields;
using test::SetTerminated;
using test::Terminated;

std::string Render(MailMessage& message) {
  EXPECT_EQ(RenderMailMessage(&message, DocumentText), StatusOk);
  return Bytes(message.text);
}

TEST(MailText, AllRowsInTheirOrder) {
  MailMessage message;
  SetAllFields(message);
  Set(message.text, "Body");
  EXPECT_EQ(Render(message), Terminated("From:      \tAnn\r\n"
                                        "Sent:      \tThu Jan 01, 1970 12:00 AM\r\n"
                                        "To:        \tBob\r\n"
                                        "Cc:        \tCy\r\n"
                                        "Bcc:       \tDi\r\n"
                                        "Subject:   \tHello\r\n"
                                        "Importance:\tHigh\r\n"
                                        "\r\n"
                                        "Body"));
}

TEST(MailText, WithoutSubjectAndImportanceTheBodyFollowsDirectly) {
  MailMessage message;
  SetTerminated(message.from, "Ann");
  SetTerminated(message.to, "Bob");
  Set(message.text, "Body");
  EXPECT_EQ(Render(message), Terminated("From:      \tAnn\r\nTo:        \tBob\r\nBody"));
}

TEST(MailText, AnEmptyLineFollowsTheSubject) {
  MailMessage message;
  SetTerminated(message.subject, "Hello");
  Set(message.text, "Body");
  EXPECT_EQ(Render(message), Terminated("Subject:   \tHello\r\n\r\nBody"));
}

TEST(MailText, AnEmptyLineFollowsTheImportanceOnly) {
  MailMessage message;
  SetTerminated(message.subject, "Hello");
  SetTerminated(message.importance, "High");
  Set(message.text, "Body");
  EXPECT_EQ(Render(message), Terminated("Subject:   \tHello\r\nImportance:\tHigh\r\n\r\nBody"));
}

// A length that is not zero counts, though the row is missing.
TEST(MailText, AnImportanceOfOneNulTakesTheEmptyLineAway) {
  MailMessage message;
  SetTerminated(message.subject, "Hello");
  SetTerminated(message.importance, "");
  Set(message.text, "Body");
  EXPECT_EQ(Render(message), Terminated("Subject:   \tHello\r\nBody"));
}

TEST(MailText, LabelsAreThoseOfTheLanguage) {
  PlainKernelSetLanguage(0x0407);
  MailMessage message;
  SetTerminated(message.importance,
                "H\xC3\xB6"
                "ch");
  Set(message.text, "Body");
  EXPECT_EQ(Render(message), Terminated("Priorit\xC3\xA4t: \tH\xC3\xB6"
                                        "ch\r\n\r\nBody"));
}

TEST(MailText, EmptyFieldsHaveNoRow) {
  MailMessage message;
  SetTerminated(message.from, "");
  Set(message.cc, "");
  SetTerminated(message.fromAddress, "a@b");
  Set(message.text, "Body");
  const char* const block = message.text.data();
  EXPECT_EQ(Render(message), "Body");
  EXPECT_EQ(message.text.data(), block);
}

TEST(MailText, OnlyOneTrailingNulOfAFieldIsDropped) {
  MailMessage message;
  Set(message.to, std::string_view("a\0b\0\0", 5));
  Set(message.text, "Body");
  EXPECT_EQ(Render(message), std::string("To:        \ta\0b\0\r\nBody\0", 23));
}

TEST(MailText, TheAddressFollowsTheName) {
  MailMessage message;
  Set(message.from, "Ann");
  SetTerminated(message.fromAddress, "a@b");
  Set(message.text, "Body");
  EXPECT_EQ(Render(message), Terminated("From:      \tAnn <a@b>\r\nBody"));
}

TEST(MailText, AnEmptyAddressIsWritten) {
  MailMessage message;
  Set(message.from, "Ann");
  SetTerminated(message.fromAddress, "");
  Set(message.text, "Body");
  EXPECT_EQ(Render(message), Terminated("From:      \tAnn <>\r\nBody"));
  MailMessage without;
  Set(without.from, "Ann");
  Set(without.fromAddress, "");
  Set(without.text, "Body");
  EXPECT_EQ(Render(without), Terminated("From:      \tAnn <>\r\nBody"));
}

TEST(MailText, AnotherAuthorPlaysNoPart) {
  MailMessage message;
  Set(message.from, "Ann");
  Set(message.originalAuthor, "Eve");
  SetTerminated(message.fromAddress, "a@b");
  Set(message.text, "Body");
  EXPECT_EQ(Render(message), Terminated("From:      \tAnn <a@b>\r\nBody"));
  MailMessage noAddress;
  Set(noAddress.from, "Ann");
  Set(noAddress.originalAuthor, "Eve");
  Set(noAddress.text, "Body");
  EXPECT_EQ(Render(noAddress), Terminated("From:      \tAnn\r\nBody"));
}

TEST(MailText, WithoutATextThereAreNoRows) {
  MailMessage message;
  SetAllFields(message);
  Set(message.body, "<body>");
  EXPECT_EQ(Render(message), "");
  EXPECT_EQ(message.text.data(), nullptr);
  EXPECT_EQ(Bytes(message.body), "<body>");
}

TEST(MailText, ATextOfNoBytesGetsRows) {
  MailMessage message;
  Set(message.to, "Bob");
  Set(message.text, "");
  EXPECT_EQ(Render(message), Terminated("To:        \tBob\r\n"));
}

TEST(MailText, ATerminatorIsAddedOnlyWhenThereIsNone) {
  MailMessage message;
  Set(message.to, "Bob");
  SetTerminated(message.text, "Body");
  EXPECT_EQ(Render(message), Terminated("To:        \tBob\r\nBody"));
}

// The text of a store is UTF-16, and its last byte mostly a NUL.
TEST(MailText, Utf16StaysAfterUtf8Rows) {
  MailMessage message;
  Set(message.to, "Bob");
  Set(message.cc, "Cy");
  Set(message.text, std::string_view("H\0i\0", 4));
  EXPECT_EQ(Render(message), "To:        \tBob\r\nCc:        \tCy\r\n" + std::string("H\0i\0", 4));
}

TEST(MailTextFailure, TheRowsFurtherDownStay) {
  MailMessage message;
  SetAllFields(message);
  Set(message.text, "Body");
  // Each row takes one block: importance, subject, Bcc, Cc, To.
  PlainKernelFailAt(PlainKernelFaultMemory, 5);
  EXPECT_EQ(RenderMailMessage(&message, DocumentText), StatusOutOfMemory);
  EXPECT_EQ(Bytes(message.text), Terminated("Cc:        \tCy\r\n"
                                            "Bcc:       \tDi\r\n"
                                            "Subject:   \tHello\r\n"
                                            "Importance:\tHigh\r\n"
                                            "\r\n"
                                            "Body"));
}

TEST(MailTextFailure, WithoutMemoryTheRowsInPlaceStay) {
  const std::string rows[] = {
      Terminated("From:      \tAnn <a@b>\r\nTo:        \tBob\r\nSubject:   \tHello\r\n\r\nBody"),
      Terminated("To:        \tBob\r\nSubject:   \tHello\r\n\r\nBody"),
      Terminated("Subject:   \tHello\r\n\r\nBody"), "Body"};
  size_t seen = 3;
  const auto round = [&](test::FaultedWork& faulted) {
    MailMessage message;
    SetTerminated(message.from, "Ann");
    SetTerminated(message.fromAddress, "a@b");
    SetTerminated(message.to, "Bob");
    SetTerminated(message.subject, "Hello");
    Set(message.text, "Body");
    const Status rendered = faulted([&] { return RenderMailMessage(&message, DocumentText); });
    if (!faulted.isReached()) {
      EXPECT_EQ(rendered, StatusOk);
      EXPECT_EQ(Bytes(message.text), rows[0]);
      return;
    }
    EXPECT_EQ(rendered, StatusOutOfMemory);
    while (seen > 1 && Bytes(message.text) != rows[seen]) --seen;
    EXPECT_EQ(Bytes(message.text), rows[seen]);
  };
  EXPECT_GE(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 3u);
  EXPECT_EQ(seen, 1u);
}

TEST(MailTextFailure, ARefusedBudgetLeavesTheText) {
  MailMessage message;
  SetTerminated(message.to, "Bob");
  Set(message.text, std::string(8000000, 'x'));
  PlainKernelSetMemoryBudget(8000000);
  EXPECT_EQ(RenderMailMessage(&message, DocumentText), StatusOutOfMemory);
  EXPECT_EQ(Bytes(message.text), std::string(8000000, 'x'));
}

}  // namespace
}  // namespace tarn
