#include <gtest/gtest.h>

#include "RenderSupport.h"
#include "render/HeaderLabels.h"
#include "render/Renderer.h"
#include "support/FaultSweep.h"
#include "support/HeaderRows.h"

namespace tarn {
namespace {

using test::Bytes;
using test::HtmlBlock;
using test::MailHtmlRow;
using test::Set;
using test::SetAllFields;
using test::SetTerminated;
using test::Terminated;

// The document of a message with the given subject, or that of a message set up by hand.
std::string Render(MailMessage& message) {
  EXPECT_EQ(RenderMailMessage(&message, DocumentHtml), StatusOk);
  return Bytes(message.body);
}

std::string RenderSubject(const std::string& body, const std::string& subject = "Hi") {
  MailMessage message;
  SetTerminated(message.subject, subject);
  Set(message.body, body);
  return Render(message);
}

const std::string kSubjectHi = HtmlBlock(MailHtmlRow("Subject:   ", "Hi"));

TEST(MailHtml, ARowByteForByte) {
  EXPECT_EQ(RenderSubject("<body>text"), Terminated("<body>" + kSubjectHi + "text"));
}

TEST(MailHtml, AllRowsInTheirOrder) {
  MailMessage message;
  SetAllFields(message);
  SetTerminated(message.body, "<html><body>text</body></html>");
  EXPECT_EQ(
      Render(message),
      Terminated("<html><body>" +
                 HtmlBlock(MailHtmlRow("From:      ", "Ann") +
                           MailHtmlRow("Sent:      ", "Thu Jan 01, 1970 12:00 AM") +
                           MailHtmlRow("To:        ", "Bob") + MailHtmlRow("Cc:        ", "Cy") +
                           MailHtmlRow("Bcc:       ", "Di") + MailHtmlRow("Subject:   ", "Hello") +
                           MailHtmlRow("Importance:", "High")) +
                 "text</body></html>"));
}

TEST(MailHtml, LabelsAreThoseOfTheLanguage) {
  PlainKernelSetLanguage(0x0407);
  MailMessage message;
  SetTerminated(message.to, "Bob");
  SetTerminated(message.importance,
                "H\xC3\xB6"
                "ch");
  Set(message.body, "x");
  EXPECT_EQ(Render(message), Terminated(HtmlBlock(MailHtmlRow("An:        ", "Bob") +
                                                  MailHtmlRow("Priorit\xC3\xA4t: ",
                                                              "H\xC3\xB6"
                                                              "ch")) +
                                        "x"));
}

TEST(MailHtml, TheFromLabelInHongKong) {
  PlainKernelSetLanguage(0x0C04);
  MailMessage message;
  SetTerminated(message.from, "Ann");
  EXPECT_EQ(Render(message),
            Terminated(HtmlBlock(MailHtmlRow("\xE5\xAF\x84\xE4\xBB\xB6\xE8\x80\x85:  ", "Ann"))));
}

TEST(MailHtml, AnEmptyFieldHasNoRow) {
  MailMessage message;
  SetTerminated(message.from, "");  // one NUL
  Set(message.to, "");              // a block of no bytes
  SetTerminated(message.subject, "Hi");
  Set(message.body, "x");
  EXPECT_EQ(Render(message), Terminated(kSubjectHi + "x"));
}

TEST(MailHtml, AFieldWithAndWithoutItsNulGiveTheSameRow) {
  MailMessage message;
  Set(message.subject, "Hi");
  Set(message.body, "x");
  EXPECT_EQ(Render(message), Terminated(kSubjectHi + "x"));
}

TEST(MailHtml, OnlyOneTrailingNulIsDropped) {
  EXPECT_EQ(RenderSubject("x", std::string("a\0b\0", 4)),
            Terminated(HtmlBlock(MailHtmlRow("Subject:   ", std::string("a\0b\0", 4))) + "x"));
}

TEST(MailHtml, AMessageWithoutAnyRowKeepsItsBody) {
  MailMessage message;
  SetTerminated(message.from, "");
  SetTerminated(message.fromAddress, "ann@example.com");
  SetTerminated(message.originalAuthor, "Eve");
  Set(message.body, "<body>text");
  const char* const block = message.body.data();
  EXPECT_EQ(Render(message), "<body>text");
  EXPECT_EQ(message.body.data(), block);
}

TEST(MailHtml, ValuesAreNotEscaped) {
  EXPECT_EQ(RenderSubject("x", "<b>&\"'"),
            Terminated(HtmlBlock(MailHtmlRow("Subject:   ", "<b>&\"'")) + "x"));
}

// The From row ----------------------------------------------------------------------------------

std::string RenderFrom(const std::string& from, const char* address, const char* author) {
  MailMessage message;
  SetTerminated(message.from, from);
  if (address != nullptr) SetTerminated(message.fromAddress, address);
  if (author != nullptr) SetTerminated(message.originalAuthor, author);
  return Render(message);
}

std::string FromRow(const std::string& value) {
  return Terminated(HtmlBlock(MailHtmlRow("From:      ", value)));
}

TEST(MailHtmlFrom, TheAddressFollowsTheName) {
  EXPECT_EQ(RenderFrom("Ann", "ann@example.com", nullptr), FromRow("Ann &lt;ann@example.com&gt;"));
  EXPECT_EQ(RenderFrom("Ann", nullptr, nullptr), FromRow("Ann"));
}

TEST(MailHtmlFrom, AnEmptyAddressIsNotWritten) {
  EXPECT_EQ(RenderFrom("Ann", "", nullptr), FromRow("Ann"));
  MailMessage message;
  Set(message.from, "Ann");
  Set(message.fromAddress, "");
  EXPECT_EQ(Render(message), FromRow("Ann"));
  MailMessage leadingNul;
  Set(leadingNul.from, "Ann");
  Set(leadingNul.fromAddress, std::string_view("\0a@b", 4));
  EXPECT_EQ(Render(leadingNul), FromRow("Ann"));
}

TEST(MailHtmlFrom, AnAddressWithoutItsNul) {
  MailMessage message;
  Set(message.from, "Ann");
  Set(message.fromAddress, "a@b");
  EXPECT_EQ(Render(message), FromRow("Ann &lt;a@b&gt;"));
}

TEST(MailHtmlFrom, AnotherAuthorTakesThePlaceOfTheAddress) {
  EXPECT_EQ(RenderFrom("Ann", "ann@example.com", "Eve"), FromRow("Ann on behalf of Eve"));
  EXPECT_EQ(RenderFrom("Ann", nullptr, "Eve"), FromRow("Ann on behalf of Eve"));
  EXPECT_EQ(RenderFrom("Ann", "a@b", "Anna"), FromRow("Ann on behalf of Anna"));
  EXPECT_EQ(RenderFrom("Ann", "a@b", "An"), FromRow("Ann on behalf of An"));
  EXPECT_EQ(RenderFrom("Ann", "a@b", "ann"), FromRow("Ann on behalf of ann"));
}

TEST(MailHtmlFrom, TheSameAuthorLeavesTheAddress) {
  EXPECT_EQ(RenderFrom("Ann", "a@b", "Ann"), FromRow("Ann &lt;a@b&gt;"));
  EXPECT_EQ(RenderFrom("Ann", "a@b", ""), FromRow("Ann &lt;a@b&gt;"));
}

TEST(MailHtmlFrom, TheTerminatorPlaysNoPartInTheComparison) {
  MailMessage message;
  SetTerminated(message.from, "Ann");
  Set(message.originalAuthor, "Ann");
  Set(message.fromAddress, "a@b");
  EXPECT_EQ(Render(message), FromRow("Ann &lt;a@b&gt;"));
}

// The place of the block ------------------------------------------------------------------------

TEST(MailHtmlSplice, AfterTheOpeningOfTheBody) {
  EXPECT_EQ(RenderSubject("<html><body bgcolor=\"white\" >text<body>x</body>"),
            Terminated("<html><body bgcolor=\"white\" >" + kSubjectHi + "text<body>x</body>"));
  EXPECT_EQ(RenderSubject("<bodyguard>x"), Terminated("<bodyguard>" + kSubjectHi + "x"));
  EXPECT_EQ(RenderSubject("a<body>"), Terminated("a<body>" + kSubjectHi));
}

TEST(MailHtmlSplice, WithoutABodyElementAtTheVeryStart) {
  EXPECT_EQ(RenderSubject("<html><head></head>x"), Terminated(kSubjectHi + "<html><head></head>x"));
}

TEST(MailHtmlSplice, ABodyTagInCapitalsIsNotFound) {
  EXPECT_EQ(RenderSubject("<html><BODY>x"), Terminated(kSubjectHi + "<html><BODY>x"));
}

TEST(MailHtmlSplice, SearchesPassNuls) {
  EXPECT_EQ(RenderSubject(std::string("a\0b<body\0>c", 11)),
            Terminated(std::string("a\0b<body\0>", 10) + kSubjectHi + "c"));
}

TEST(MailHtmlSplice, ABodyTagThatNeverEndsIsRefused) {
  MailMessage message;
  SetTerminated(message.subject, "Hi");
  SetTerminated(message.body, "<p><body bgcolor");
  const char* const block = message.body.data();
  EXPECT_EQ(RenderMailMessage(&message, DocumentHtml), StatusNotSupported);
  EXPECT_EQ(message.body.data(), block);
  EXPECT_EQ(Bytes(message.body), Terminated("<p><body bgcolor"));
}

TEST(MailHtmlSplice, ATerminatorIsAddedOnlyWhenThereIsNone) {
  EXPECT_EQ(RenderSubject("x"), Terminated(kSubjectHi + "x"));
  EXPECT_EQ(RenderSubject(std::string("x\0", 2)), Terminated(kSubjectHi + "x"));
  EXPECT_EQ(RenderSubject(std::string("x\0\0", 3)), kSubjectHi + std::string("x\0\0", 3));
}

TEST(MailHtmlSplice, AnAbsentBodyBecomesTheBlock) {
  MailMessage message;
  SetTerminated(message.subject, "Hi");
  EXPECT_EQ(Render(message), Terminated(kSubjectHi));
  EXPECT_EQ(RenderSubject(""), Terminated(kSubjectHi));
}

TEST(MailHtmlSplice, TheNewTextIsOneBlockOfItsSize) {
  const std::string body(100000, 'x');
  MailMessage message;
  SetTerminated(message.subject, "Hi");
  SetTerminated(message.body, body);
  const uint64_t calls = test::AllocationCalls();
  ASSERT_EQ(RenderMailMessage(&message, DocumentHtml), StatusOk);
  EXPECT_EQ(test::AllocationCalls(), calls + 2);  // the block and the text
  EXPECT_EQ(Bytes(message.body), Terminated(kSubjectHi + body));
}

// Kinds -----------------------------------------------------------------------------------------

TEST(RenderMailMessage, ANullMessage) {
  EXPECT_EQ(RenderMailMessage(nullptr, DocumentHtml), StatusFailed);
  EXPECT_EQ(RenderMailMessage(nullptr, DocumentNone), StatusFailed);
}

TEST(RenderMailMessage, NoKindDoesNothing) {
  MailMessage message;
  SetAllFields(message);
  Set(message.body, "<body>");
  Set(message.text, "text");
  EXPECT_EQ(RenderMailMessage(&message, DocumentNone), StatusOk);
  EXPECT_EQ(Bytes(message.body), "<body>");
  EXPECT_EQ(Bytes(message.text), "text");
}

TEST(RenderMailMessage, HtmlLeavesTheTextAlone) {
  MailMessage message;
  SetAllFields(message);
  Set(message.text, "text");
  EXPECT_EQ(RenderMailMessage(&message, DocumentHtml), StatusOk);
  EXPECT_EQ(Bytes(message.text), "text");
}

// Failures --------------------------------------------------------------------------------------

TEST(MailHtmlFailure, WithoutMemoryTheBodyStays) {
  const auto round = [](test::FaultedWork& faulted) {
    MailMessage message;
    SetAllFields(message);
    SetTerminated(message.fromAddress, "a@b");
    SetTerminated(message.body, "<body>x");
    const char* const block = message.body.data();
    const Status rendered = faulted([&] { return RenderMailMessage(&message, DocumentHtml); });
    EXPECT_EQ(rendered, faulted.isReached() ? StatusOutOfMemory : StatusOk);
    if (!faulted.isReached()) return;
    EXPECT_EQ(message.body.data(), block);
    EXPECT_EQ(Bytes(message.body), Terminated("<body>x"));
  };
  EXPECT_GE(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 2u);
}

TEST(MailHtmlFailure, ARefusedBudgetLeavesTheBody) {
  MailMessage message;
  SetTerminated(message.subject, "Hi");
  SetTerminated(message.body, std::string(8000000, 'x'));
  PlainKernelSetMemoryBudget(8000000);
  EXPECT_EQ(RenderMailMessage(&message, DocumentHtml), StatusOutOfMemory);
  EXPECT_EQ(message.body.length(), 8000001u);
}

TEST(MailHtmlFailure, ABlockBeyondTheBudget) {
  MailMessage message;
  SetTerminated(message.to, std::string(8000000, 'x'));
  SetTerminated(message.subject, "Hi");
  SetTerminated(message.body, "x");
  PlainKernelSetMemoryBudget(8000000);
  EXPECT_EQ(RenderMailMessage(&message, DocumentHtml), StatusOutOfMemory);
  EXPECT_EQ(Bytes(message.body), Terminated("x"));
}

TEST(MailHtml, ADocumentBeyondTheReportingThresholdIsGivenBack) {
  MailMessage message;
  SetTerminated(message.subject, "Hi");
  const std::string body(8000000, 'x');
  SetTerminated(message.body, body);
  ASSERT_EQ(RenderMailMessage(&message, DocumentHtml), StatusOk);
  EXPECT_EQ(test::Usage().reportedBytes, 0u);
  EXPECT_EQ(Bytes(message.body), Terminated(kSubjectHi + body));
}

}  // namespace
}  // namespace tarn
