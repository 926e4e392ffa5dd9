// The labels of the header block in RTF, in every language: which font carries them, and what the
// document's font table becomes.
#include <gtest/gtest.h>

#include <array>

#include "RenderSupport.h"
#include "render/Renderer.h"
#include "support/HeaderRows.h"
#include "support/TestFonts.h"

namespace tarn {
namespace {

using test::Bytes;
using test::Set;
using test::Terminated;

// None of them has the letters of the labels that no code page carries.
[[maybe_unused]] const bool kFonts = test::UseTestFonts(test::StandardTestFonts());

struct RtfLabels {
  uint32_t language;
  std::string newFont;              // as added to the table; empty: none
  std::array<std::string, 7> rows;  // From, Sent, To, Cc, Bcc, Subject, Importance
};

// The document has the code page 1252 and the font 0 for it.
std::string RenderIn(uint32_t language) {
  PlainKernelSetLanguage(language);
  MailMessage message;
  for (SizedBytes MailMessage::*const field :
       {&MailMessage::from, &MailMessage::sent, &MailMessage::to, &MailMessage::cc,
        &MailMessage::bcc, &MailMessage::subject, &MailMessage::importance}) {
    Set(message.*field, "x");
  }
  Set(message.body,
      R"({\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0\fswiss\fcharset0 Arial;}}\pard Hi})");
  EXPECT_EQ(RenderMailMessage(&message, DocumentRtf), StatusOk);
  return Bytes(message.body);
}

void ExpectLabels(const RtfLabels& labels) {
  std::string rows;
  for (const std::string& label : labels.rows) rows += test::MailRtfRow(label, "x");
  EXPECT_EQ(RenderIn(labels.language),
            Terminated(R"({\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0\fswiss\fcharset0 Arial;})" +
                       labels.newFont + "}" + rows + test::kRtfEmptyParagraph + R"(\pard Hi})"));
}

TEST(RtfLabels, English) {
  ExpectLabels({0x0409,
                "",
                {"From:      ", "Sent:      ", "To:        ", "Cc:        ", "Bcc:       ",
                 "Subject:   ", "Importance:"}});
}

TEST(RtfLabels, German) {
  ExpectLabels({0x0407,
                "",
                {"Von:       ", "Gesendet:  ", "An:        ", "Cc:        ", "Bcc:       ",
                 "Betreff:   ", R"(Priorit\'e4t: )"}});
}

// 1258 is the first code page that has U+0103; none has U+021B, and no font of the test either.
TEST(RtfLabels, Romanian) {
  ExpectLabels({0x0418,
                R"({\f1 \swiss \fcharset163 Batang})",
                {"De la:     ", "Trimis:    ", R"(C\f1 \'e3\f0 tre:     )",
                 "Cc:        ", "Bcc:       ", "Subiect:   ", R"(Importan\u539 ?\f1 \'e3\f0 :)"}});
}

TEST(RtfLabels, French) {
  ExpectLabels({0x040C,
                "",
                {"De:        ", R"(Envoy\'e8:    )", R"(\'c0:         )",
                 "Cc:        ", "Bcc:       ", "Objet:     ", "Importance:"}});
}

TEST(RtfLabels, Japanese) {
  ExpectLabels({0x0411,
                R"({\f1 \swiss \fcharset128 MS Gothic})",
                {R"(\f1 \'8d\'b7\'8fo\'90l\f0 :  )", R"(\f1 \'91\'97\'90M\'93\'fa\'8e\'9e\f0 :)",
                 R"(\f1 \'88\'b6\'90\'e6\f0 :    )", R"(\f1 \'8f\'b4\'91\'97\f0 :   )",
                 "Bcc:    ", R"(\f1 \'8c\'8f\'96\'bc\f0 :    )", R"(\f1 \'8fd\'97v\'93x\f0 :  )"}});
}

// 936 is not tried. What Japanese has goes out in 932, and each other character by its number,
// negative from U+8000 on, without leaving the font it follows.
TEST(RtfLabels, SimplifiedChinese) {
  ExpectLabels(
      {0x0804,
       R"({\f1 \swiss \fcharset128 MS Gothic})",
       {R"(\u21457 ?\f1 \'8c\'8f\'90l\f0 :  )", R"(\u21457 ?\f1 \'91\'97\u26102 ?\u-27148 ?\f0 :)",
        R"(\f1 \'9d\'be\'8c\'8f\'90l\f0 :  )", R"(\f1 \'8f\'b4\'91\'97\f0 :   )",
        "Bcc:    ", R"(\f1 \'8e\'e5\u-26472 ?\f0 :    )", R"(\f1 \'8fd\'97v\'90\'ab\f0 :  )"}});
}

// The last byte of the Cc label's second character is "{", and nothing escapes it.
TEST(RtfLabels, TraditionalChinese) {
  ExpectLabels(
      {0x0404,
       R"({\f1 \swiss \fcharset128 MS Gothic})",
       {R"(\f1 \'8a\'f1\'8c\'8f\'8e\'d2\f0 :  )", R"(\f1 \'8a\'f1\'8c\'8f\'93\'fa\'8a\'fa\f0 :)",
        R"(\f1 \'9d\'be\'8c\'8f\'8e\'d2\f0 :  )", R"(\f1 \'95\'9b\'96{\f0 :   )",
        "Bcc:    ", R"(\f1 \'8e\'e5\'8e|\f0 :    )", R"(\f1 \'8fd\'97v\'90\'ab\f0 :  )"}});
}

// The blank between two words is lost.
TEST(RtfLabels, Korean) {
  ExpectLabels({0x0412,
                R"({\f1 \swiss \fcharset129 Batang})",
                {R"(\f1 \'ba\'b8\'b3\'bd\'bb\'e7\'b6\'f7\f0 :)",
                 R"(\f1 \'ba\'b8\'b3\'bd\'b3\'af\'c2\'a5\f0 :)",
                 R"(\f1 \'b9\'de\'b4\'c2\'bb\'e7\'b6\'f7\f0 :)", R"(\f1 \'c2\'fc\'c1\'b6\f0 :   )",
                 "Bcc:    ", R"(\f1 \'c1\'a6\'b8\'f1\f0 :     )",
                 R"(\f1 \'c1\'df\'bf\'e4\'b5\'b5\f0 :  )"}});
}

TEST(RtfLabels, Arabic) {
  ExpectLabels({0x2C01,
                R"({\f1 \swiss \fcharset178 Arial})",
                {R"(\f1 \'e4\'e3\'e4\f0  :  )",
                 R"(\f1 \'ca\'c7\'d1\'ed\'ce\'c7\'e1\'c5\'d1\'d3\'c7\'e1\f0 :)",
                 R"(\f1 \'c5\'e1\'ec\f0  :  )", R"(\f1 \'e4\'d3\'ce\'c9\f0 :  )",
                 "Bcc:   ", R"(\f1 \'c7\'e1\'e3\'e6\'d6\'e6\'da\f0 :)",
                 R"(\f1 \'c7\'e1\'c3\'e5\'e3\'ed\'c9\f0 : )"}});
}

// 0x0C04 is folded onto Traditional Chinese.
TEST(RtfLabels, ARegionalLanguage) { EXPECT_EQ(RenderIn(0x0C04), RenderIn(0x0404)); }

}  // namespace
}  // namespace tarn
