#include <gtest/gtest.h>

#include "RenderSupport.h"
#include "render/Renderer.h"
#include "support/FaultSweep.h"

namespace tarn {
namespace {

using test::Bytes;
using test::Set;
using test::SetTerminated;
using test::Terminated;

std::string RenderToBob(std::string_view body) {
  EmlMessage message;
  message.documentKind = DocumentText;
  SetTerminated(message.to, "Bob");
  Set(message.body, body);
  EXPECT_EQ(RenderEmlMessage(message), StatusOk);
  return Bytes(message.body);
}

const std::string kToBob = "To:     \tBob\r\n\r\n";

TEST(EmlText, AllRowsInTheirOrderInEnglish) {
  PlainKernelSetLanguage(0x0407);
  EmlMessage message;
  message.documentKind = DocumentText;
  SetTerminated(message.from, "Ann");
  SetTerminated(message.to, "Bob");
  SetTerminated(message.date, "Sat, 21 Nov 2026 10:00:00 +0000");
  SetTerminated(message.cc, "Cy");
  SetTerminated(message.bcc, "Di");
  SetTerminated(message.subject, "Hello");
  SetTerminated(message.importance, "high");
  Set(message.body, "Body");
  ASSERT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body),
            "From:   \tAnn\r\n"
            "To:     \tBob\r\n"
            "Sent:   \tSat, 21 Nov 2026 10:00:00 +0000\r\n"
            "Cc:     \tCy\r\n"
            "Bcc:    \tDi\r\n"
            "Subject:\tHello\r\n"
            "Importance: high\r\n"
            "\r\n"
            "Body");
}

TEST(EmlText, ValuesAreCopiedAsTheyStand) {
  EmlMessage message;
  message.documentKind = DocumentText;
  Set(message.to, std::string_view("<a>&\0b\0", 7));
  Set(message.body, "Body");
  ASSERT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body), "To:     \t" + std::string("<a>&\0b", 6) + "\r\n\r\nBody");
}

TEST(EmlText, EmptyFieldsHaveNoRow) {
  EmlMessage message;
  message.documentKind = DocumentText;
  SetTerminated(message.to, "Bob");
  SetTerminated(message.cc, "");
  Set(message.subject, "");
  Set(message.body, "Body");
  ASSERT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body), kToBob + "Body");
}

TEST(EmlText, WithoutFromToDateAndCcThereIsNoBlock) {
  EmlMessage message;
  message.documentKind = DocumentText;
  SetTerminated(message.bcc, "Di");
  SetTerminated(message.subject, "Hello");
  SetTerminated(message.body, "Body");
  EXPECT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body), Terminated("Body"));
}

TEST(EmlText, TheBlockComesAfterTheMark) {
  EXPECT_EQ(RenderToBob("+/vText"), "+/v" + kToBob + "Text");
}

// Each byte of the mark is enough by itself.
TEST(EmlText, OneByteOfTheMarkOpensTheText) {
  EXPECT_EQ(RenderToBob("+123"), "+12" + kToBob + "3");
  EXPECT_EQ(RenderToBob("1/23"), "1/2" + kToBob + "3");
  EXPECT_EQ(RenderToBob("12v3"), "12v" + kToBob + "3");
  EXPECT_EQ(RenderToBob("x+/v"), kToBob + "x+/v");
  EXPECT_EQ(RenderToBob("12V3"), kToBob + "12V3");
}

TEST(EmlText, AShortTextIsNotOpened) {
  EXPECT_EQ(RenderToBob("+/v"), kToBob + "+/v");
  EXPECT_EQ(RenderToBob("+"), kToBob + "+");
  EXPECT_EQ(RenderToBob(""), kToBob);
}

TEST(EmlText, ATerminatorThatTheLengthCountsCounts) {
  EXPECT_EQ(RenderToBob(std::string_view("+/v\0", 4)), "+/v" + Terminated(kToBob));
}

TEST(EmlText, NoTerminatorIsAddedAndNoneDropped) {
  EXPECT_EQ(RenderToBob("Body"), kToBob + "Body");
  EXPECT_EQ(RenderToBob(std::string_view("Body\0", 5)), Terminated(kToBob + "Body"));
}

TEST(EmlText, AnAbsentBodyBecomesTheBlock) {
  EmlMessage message;
  message.documentKind = DocumentText;
  SetTerminated(message.to, "Bob");
  ASSERT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body), kToBob);
}

TEST(EmlText, TextIsNotWrapped) {
  EXPECT_EQ(RenderToBob("<body>x"), kToBob + "<body>x");
  EXPECT_EQ(RenderToBob("<body"), kToBob + "<body");
}

TEST(EmlTextFailure, WithoutMemoryTheBodyStays) {
  const auto round = [](test::FaultedWork& faulted) {
    EmlMessage message;
    message.documentKind = DocumentText;
    SetTerminated(message.to, "Bob");
    SetTerminated(message.body, "Body");
    const char* const block = message.body.data();
    const Status rendered = faulted([&] { return RenderEmlMessage(message); });
    EXPECT_EQ(rendered, faulted.isReached() ? StatusOutOfMemory : StatusOk);
    if (!faulted.isReached()) return;
    EXPECT_EQ(message.body.data(), block);
    EXPECT_EQ(Bytes(message.body), Terminated("Body"));
  };
  // The block, then the body.
  EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 2u);
}

}  // namespace
}  // namespace tarn
