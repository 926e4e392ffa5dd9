#include "render/BodyRoom.h"

#include <gtest/gtest.h>

#include <random>

#include "RenderSupport.h"
#include "render/Renderer.h"
#include "render/RtfSplice.h"
#include "support/PeakMemory.h"

namespace tarn::test {
namespace {

// Writes nothing more.
Status MakeRoom(SizedBytes& body, uint64_t count, uint64_t step) {
  const uint64_t length = body.length();
  return RewriteBody(body, count, step, [length](char*) { return length; });
}

TEST(BodyRoom, TheBytesStayAndWhatIsWrittenIsTheText) {
  SizedBytes body;
  Set(body, "abc");
  const auto write = [](char* text) {
    text[3] = 'd';
    text[99] = 'x';
    return uint64_t{4};
  };
  EXPECT_EQ(RewriteBody(body, 100, 0, write), StatusOk);
  EXPECT_EQ(Bytes(body), Terminated("abcd"));
}

TEST(BodyRoom, ABodyWithoutABlockGetsOne) {
  SizedBytes body;
  EXPECT_EQ(MakeRoom(body, 1, 0), StatusOk);
  EXPECT_EQ(Bytes(body), std::string(1, '\0'));
}

TEST(BodyRoom, ANulThatIsThereIsEnough) {
  SizedBytes body;
  SetTerminated(body, "abc");
  EXPECT_EQ(MakeRoom(body, 4, 0), StatusOk);
  EXPECT_EQ(Bytes(body), Terminated("abc"));
}

TEST(BodyRoom, WithoutMemoryOrBudgetTheBodyStays) {
  SizedBytes body;
  Set(body, "abc");
  const char* const block = body.data();
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(MakeRoom(body, 100, 0), StatusOutOfMemory);
  PlainKernelSetMemoryBudget(8000000);
  EXPECT_EQ(MakeRoom(body, 8000001, 0), StatusOutOfMemory);
  EXPECT_EQ(MakeRoom(body, 7999001, 1024), StatusOutOfMemory);
  PlainKernelSetMemoryBudget(UINT64_MAX);
  EXPECT_EQ(body.data(), block);
  EXPECT_EQ(Bytes(body), "abc");
}

TEST(BodyRoom, TheBudgetHasItsBytesBack) {
  SizedBytes body;
  Set(body, "abc");
  EXPECT_EQ(MakeRoom(body, 9000000, 0), StatusOk);
  EXPECT_EQ(Usage().reportedBytes, 0u);
}

// A header block goes into a body of megabytes, which is there once only.
TEST(BodyRoom, NoDocumentIsThereTwice) {
  constexpr uint64_t kBody = 4000000;
  constexpr uint64_t kLittle = 100000;
  for (const TarnDocumentKind kind : {DocumentHtml, DocumentRtf}) {
    const std::string start =
        kind == DocumentHtml ? "<body>" : "{\\rtf1{\\fonttbl{\\f0 A;}}\\pard ";
    MailMessage message;
    SetAllFields(message);
    SetTerminated(message.subject, "\xD0\x96\xCE\x86");  // two code pages: the RTF gets fonts
    Set(message.body, start + std::string(kBody, 'x'));
    EXPECT_LT(PeakOf([&] { EXPECT_EQ(RenderMailMessage(&message, kind), StatusOk); }), kLittle);
    EXPECT_GT(message.body.length(), kBody);
  }
}

// The rows of a long subject are there once, as what the body has become.
TEST(BodyRoom, NoRowsAreThereTwice) {
  constexpr uint64_t kSubject = 4000000;
  constexpr uint64_t kSpare = 300000;  // of a buffer that grows
  MailMessage message;
  SetTerminated(message.subject, std::string(kSubject, '{'));
  SetTerminated(message.body, "{\\rtf1{\\fonttbl{\\f0 A;}}\\pard x}");
  EXPECT_LT(PeakOf([&] { EXPECT_EQ(RenderMailMessage(&message, DocumentRtf), StatusOk); }),
            4 * kSubject + 4 * kSubject / 16 + kSpare);
  EXPECT_GT(message.body.length(), 4 * kSubject);
}

TEST(BodyRoom, WithoutMemoryForTheRowsTheBodyStays) {
  SizedBytes body;
  Set(body, "\\pard");
  const char* const block = body.data();
  TrackedBuffer<char> rows(0, 0);  // without room to spare
  ASSERT_EQ(rows.append("0123456789", 10), StatusOk);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(SpliceRtfBlock(body, RtfFontTable(), rows), StatusOutOfMemory);
  EXPECT_EQ(body.data(), block);
  EXPECT_EQ(Bytes(body), "\\pard");
}

// The splice by its definition: pieces written one after the other.
std::string Spliced(const std::string& body, const RtfFontTable& fonts, const std::string& rows) {
  const size_t paragraph = body.find("\\pard");
  if (paragraph == std::string::npos) return body;
  std::string text;
  if (fonts.changed == 0) {
    text = body.substr(0, paragraph);
  } else if (fonts.tableStart < paragraph) {
    text = body.substr(0, fonts.tableStart) + std::string(fonts.tableText.view());
    if (fonts.tableEnd < paragraph) {
      text += body.substr(fonts.tableEnd, paragraph - fonts.tableEnd);
    }
  }
  text += rows + std::string(kRtfSeparator) + body.substr(paragraph);
  if (!text.ends_with('\0')) text += '\0';
  return text;
}

TEST(RtfSpliceProperty, PiecesComeToTheirPlacesWhereverTheTableLies) {
  std::mt19937 random(11);
  const auto letters = [&random](char first, uint64_t most) {
    std::string text;
    for (uint64_t i = random() % (most + 1); i > 0; --i) {
      text += static_cast<char>(first + static_cast<int>(random() % 13));
    }
    return text;
  };
  for (int round = 0; round < 3000; ++round) {
    const std::string body =
        letters('a', 300) + (random() % 8 != 0 ? "\\pard" : "") + letters('n', 300) + "!";
    RtfFontTable fonts;
    fonts.changed = random() % 4 != 0 ? 1 : 0;
    fonts.tableStart = random() % body.size();
    fonts.tableEnd = fonts.tableStart + random() % (body.size() - fonts.tableStart);
    const std::string table = letters('A', 400);
    ASSERT_EQ(fonts.tableText.append(table.data(), table.size()), StatusOk);
    if (fonts.tableText.data() == nullptr) fonts.tableText.reserve(1);
    const std::string rows = letters('N', round % 2 == 0 ? 200 : 1200);
    SizedBytes text;
    Set(text, body);
    ASSERT_EQ(SpliceRtfBlock(text, fonts, rows), StatusOk);
    ASSERT_EQ(Bytes(text), Spliced(body, fonts, rows)) << round;
    TrackedBuffer<char> buffer;
    ASSERT_EQ(buffer.append(rows.data(), rows.size()), StatusOk);
    Set(text, body);
    ASSERT_EQ(SpliceRtfBlock(text, fonts, buffer), StatusOk);
    ASSERT_EQ(Bytes(text), Spliced(body, fonts, rows)) << round;
  }
}

}  // namespace
}  // namespace tarn::test
