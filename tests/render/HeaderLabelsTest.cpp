#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Tarnbase/PlainKernel.h"
#include "render/HeaderLabels.h"

namespace tarn {
namespace {

TEST(HeaderLabels, English) {
  PlainKernelSetLanguage(0x0409);
  EXPECT_STREQ(GetHeaderLabel(HeaderRowFrom), "From:      ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowTo), "To:        ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowBcc), "Bcc:       ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowCc), "Cc:        ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSent), "Sent:      ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSubject), "Subject:   ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowImportance), "Importance:");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowHighWord), "High");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowLowWord), "Low");
}

TEST(HeaderLabels, German) {
  PlainKernelSetLanguage(0x0407);
  EXPECT_STREQ(GetHeaderLabel(HeaderRowFrom), "Von:       ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowTo), "An:        ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowBcc), "Bcc:       ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowCc), "Cc:        ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSent), "Gesendet:  ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSubject), "Betreff:   ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowImportance), "Priorit\u00E4t: ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowHighWord), "H\u00F6ch");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowLowWord), "Niedrig");
}

TEST(HeaderLabels, Romanian) {
  PlainKernelSetLanguage(0x0418);
  EXPECT_STREQ(GetHeaderLabel(HeaderRowFrom), "De la:     ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowTo), "C\u0103tre:     ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowBcc), "Bcc:       ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowCc), "Cc:        ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSent), "Trimis:    ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSubject), "Subiect:   ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowImportance), "Importan\u021B\u0103:");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowHighWord), "Maxim");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowLowWord), "Minim");
}

TEST(HeaderLabels, French) {
  PlainKernelSetLanguage(0x040C);
  EXPECT_STREQ(GetHeaderLabel(HeaderRowFrom), "De:        ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowTo), "\u00C0:         ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowBcc), "Bcc:       ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowCc), "Cc:        ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSent), "Envoy\u00E8:    ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSubject), "Objet:     ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowImportance), "Importance:");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowHighWord), "Haute");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowLowWord), "Faible");
}

TEST(HeaderLabels, Japanese) {
  PlainKernelSetLanguage(0x0411);
  EXPECT_STREQ(GetHeaderLabel(HeaderRowFrom), "\u5DEE\u51FA\u4EBA:  ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowTo), "\u5B9B\u5148:    ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowBcc), "Bcc:    ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowCc), "\u6284\u9001:   ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSent), "\u9001\u4FE1\u65E5\u6642:");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSubject), "\u4EF6\u540D:    ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowImportance), "\u91CD\u8981\u5EA6:  ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowHighWord), "\u9AD8");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowLowWord), "\u4F4E");
}

TEST(HeaderLabels, SimplifiedChinese) {
  PlainKernelSetLanguage(0x0804);
  EXPECT_STREQ(GetHeaderLabel(HeaderRowFrom), "\u53D1\u4EF6\u4EBA:  ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowTo), "\u6536\u4EF6\u4EBA:  ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowBcc), "Bcc:    ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowCc), "\u6284\u9001:   ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSent), "\u53D1\u9001\u65F6\u95F4:");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSubject), "\u4E3B\u9898:    ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowImportance), "\u91CD\u8981\u6027:  ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowHighWord), "\u9AD8");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowLowWord), "\u4F4E");
}

TEST(HeaderLabels, TraditionalChinese) {
  PlainKernelSetLanguage(0x0404);
  EXPECT_STREQ(GetHeaderLabel(HeaderRowFrom), "\u5BC4\u4EF6\u8005:  ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowTo), "\u6536\u4EF6\u8005:  ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowBcc), "Bcc:    ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowCc), "\u526F\u672C:   ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSent), "\u5BC4\u4EF6\u65E5\u671F:");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSubject), "\u4E3B\u65E8:    ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowImportance), "\u91CD\u8981\u6027:  ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowHighWord), "\u9AD8");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowLowWord), "\u4F4E");
}

TEST(HeaderLabels, Korean) {
  PlainKernelSetLanguage(0x0412);
  EXPECT_STREQ(GetHeaderLabel(HeaderRowFrom), "\uBCF4\uB0B8 \uC0AC\uB78C:");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowTo), "\uBC1B\uB294 \uC0AC\uB78C:");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowBcc), "Bcc:    ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowCc), "\uCC38\uC870:   ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSent), "\uBCF4\uB0B8 \uB0A0\uC9DC:");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSubject), "\uC81C\uBAA9:     ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowImportance), "\uC911\uC694\uB3C4:  ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowHighWord), "\uB192\uC74C");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowLowWord), "\uB0AE\uC74C");
}

TEST(HeaderLabels, Arabic) {
  PlainKernelSetLanguage(0x2C01);
  EXPECT_STREQ(GetHeaderLabel(HeaderRowFrom), "\u0646\u0645\u0646 :  ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowTo), "\u0625\u0644\u0649 :  ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowBcc), "Bcc:   ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowCc), "\u0646\u0633\u062E\u0629:  ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSent),
               "\u062A\u0627\u0631\u064A\u062E \u0627\u0644\u0625\u0631\u0633\u0627\u0644:");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowSubject), "\u0627\u0644\u0645\u0648\u0636\u0648\u0639:");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowImportance), "\u0627\u0644\u0623\u0647\u0645\u064A\u0629: ");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowHighWord), "\u0639\u0627\u0644\u064A\u0629");
  EXPECT_STREQ(GetHeaderLabel(HeaderRowLowWord), "\u0645\u0646\u062E\u0641\u0636\u0629");
}

// What tells the sets apart.
constexpr const char* kEnglishSubject = "Subject:   ";
constexpr const char* kTraditionalSubject = "\u4E3B\u65E8:    ";
constexpr const char* kSimplifiedSubject = "\u4E3B\u9898:    ";
constexpr const char* kArabicSubject = "\u0627\u0644\u0645\u0648\u0636\u0648\u0639:";

const char* SubjectIn(uint32_t language) {
  PlainKernelSetLanguage(language);
  return GetHeaderLabel(HeaderRowSubject);
}

TEST(HeaderLabels, RegionsOfChineseShareASet) {
  EXPECT_STREQ(SubjectIn(0x0004), kSimplifiedSubject);
  EXPECT_STREQ(SubjectIn(0x7804), kSimplifiedSubject);
  EXPECT_STREQ(SubjectIn(0x1004), kSimplifiedSubject);
  EXPECT_STREQ(SubjectIn(0x0C04), kTraditionalSubject);
  EXPECT_STREQ(SubjectIn(0x7C04), kTraditionalSubject);
  EXPECT_STREQ(SubjectIn(0x1404), kTraditionalSubject);
}

TEST(HeaderLabels, RegionsOfArabicShareASet) {
  for (const uint32_t language : {0x1401u, 0x3C01u, 0x0C01u, 0x3401u, 0x3001u, 0x1001u, 0x1801u,
                                  0x2001u, 0x4001u, 0x0401u, 0x2801u, 0x1C01u, 0x3801u, 0x2401u}) {
    EXPECT_STREQ(SubjectIn(language), kArabicSubject) << std::hex << language;
  }
}

TEST(HeaderLabels, TheFromLabelInHongKong) {
  PlainKernelSetLanguage(0x0C04);
  EXPECT_STREQ(GetHeaderLabel(HeaderRowFrom), "\xE5\xAF\x84\xE4\xBB\xB6\xE8\x80\x85:  ");
}

// 0x0801 is the one region of Arabic without a pair.
TEST(HeaderLabels, EveryOtherLanguageIsEnglish) {
  for (const uint32_t language : {0x0801u, 0x0809u, 0x0807u, 0x0C0Cu, 0x0818u, 0x0001u, 0x0009u, 0u,
                                  0x10409u, 0x80000409u, 0xFFFFFFFFu}) {
    EXPECT_STREQ(SubjectIn(language), kEnglishSubject) << std::hex << language;
  }
}

TEST(HeaderLabels, TheLanguageIsAskedForEveryLabel) {
  EXPECT_STREQ(SubjectIn(0x0407), "Betreff:   ");
  EXPECT_STREQ(SubjectIn(0x040C), "Objet:     ");
  EXPECT_STREQ(SubjectIn(0x0409), kEnglishSubject);
}

TEST(HeaderLabels, OtherRowNumbersAreUnknown) {
  PlainKernelSetLanguage(0x0407);
  EXPECT_STREQ(GetHeaderLabel(-1), "Unknown");
  EXPECT_STREQ(GetHeaderLabel(9), "Unknown");
  EXPECT_STREQ(GetHeaderLabel(INT32_MIN), "Unknown");
  EXPECT_STREQ(GetHeaderLabel(INT32_MAX), "Unknown");
}

std::string Importance(int32_t importance) {
  SizedBytes text;
  EXPECT_EQ(ImportanceText(importance, text), StatusOk);
  return std::string(text.view());
}

TEST(ImportanceText, HighAndLowHaveAWord) {
  EXPECT_EQ(Importance(2), std::string("High\0", 5));
  EXPECT_EQ(Importance(0), std::string("Low\0", 4));
}

TEST(ImportanceText, TheWordIsThatOfTheLanguage) {
  PlainKernelSetLanguage(0x0407);
  EXPECT_EQ(Importance(2), std::string("H\xC3\xB6"
                                       "ch\0",
                                       6));
  EXPECT_EQ(Importance(0), std::string("Niedrig\0", 8));
}

TEST(ImportanceText, AnyOtherValueAppendsNothing) {
  for (const int32_t importance : {1, 3, -1, INT32_MIN, INT32_MAX}) {
    SizedBytes text;
    EXPECT_EQ(ImportanceText(importance, text), StatusOk);
    EXPECT_EQ(text.data(), nullptr);
    EXPECT_EQ(text.length(), 0u);
  }
}

TEST(ImportanceText, TheWordGoesAfterTheText) {
  SizedBytes text;
  ASSERT_EQ(ImportanceText(2, text), StatusOk);
  ASSERT_EQ(ImportanceText(0, text), StatusOk);
  EXPECT_EQ(text.view(), std::string("HighLow\0", 8));
}

TEST(ImportanceText, WithoutMemory) {
  SizedBytes text;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(ImportanceText(2, text), StatusOutOfMemory);
  EXPECT_EQ(text.data(), nullptr);
  EXPECT_EQ(text.length(), 0u);
}

}  // namespace
}  // namespace tarn
