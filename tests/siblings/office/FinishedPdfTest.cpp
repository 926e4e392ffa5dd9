// What a finished PDF says.
#include "siblings/office/FinishedPdf.h"

#include <gtest/gtest.h>

#include "ReadPdf.h"

namespace tarn::pages {
namespace {

// One empty page, as a program writes it that tells of itself. The table of places is missing:
// readers find the objects themselves.
std::string MadeAt(const std::string& time) {
  return "%PDF-1.4\n"
         "1 0 obj\n<</Type/Catalog/Pages 2 0 R/Metadata 5 0 R/Lang(en-US)>>\nendobj\n"
         "2 0 obj\n<</Type/Pages/Kids[3 0 R]/Count 1>>\nendobj\n"
         "3 0 obj\n<</Type/Page/Parent 2 0 R/MediaBox[0 0 612 792]>>\nendobj\n"
         "4 0 obj\n<</Title(old)/Creator(Writer)/CreationDate(D:" +
         time +
         ")>>\nendobj\n"
         "5 0 obj\n<</Type/Metadata/Subtype/XML/Length 14>>\nstream\n" +
         time +
         "\nendstream\nendobj\n"
         "trailer\n<</Size 6/Root 1 0 R/Info 4 0 R/ID[<" +
         time + "><" + time + ">]/DocChecksum/" + time + ">>\n%%EOF\n";
}

using Properties = std::map<std::string, std::string>;
using test::PdfFacts;
using test::ReadPdf;

const PdfProperties kProperties = {"Grüße (1)", "Ann", "2024-05-01T12:34:56+02:00"};

TEST(FinishedPdf, SaysWhatItIsToldAndNoMore) {
  const PdfFacts facts = ReadPdf(FinishedPdf(MadeAt("20260101000000"), kProperties));
  EXPECT_EQ(facts.pages, 1u);
  EXPECT_EQ(facts.properties, (Properties{{"/Title", "Grüße (1)"},
                                          {"/Author", "Ann"},
                                          {"/CreationDate", "D:20240501123456+02'00'"},
                                          {"/Producer", "tarnmail"}}));
  EXPECT_EQ(facts.rootKeys,
            (std::set<std::string>{"/Lang", "/Pages", "/Type", "/ViewerPreferences"}));
  EXPECT_EQ(facts.trailerKeys.count("/DocChecksum"), 0u);
  EXPECT_TRUE(facts.showsTitle);
}

TEST(FinishedPdf, LeavesOutWhatIsEmpty) {
  const PdfFacts facts = ReadPdf(FinishedPdf(MadeAt("20260101000000"), {}));
  EXPECT_EQ(facts.properties, (Properties{{"/Producer", "tarnmail"}}));
  EXPECT_FALSE(facts.showsTitle);
}

TEST(FinishedPdf, LeavesOutADateThatIsNone) {
  const PdfFacts facts = ReadPdf(FinishedPdf(MadeAt("20260101000000"), {"", "", "yesterday"}));
  EXPECT_EQ(facts.properties, (Properties{{"/Producer", "tarnmail"}}));
}

TEST(FinishedPdf, DoesNotDependOnWhenItWasMade) {
  EXPECT_EQ(FinishedPdf(MadeAt("20260101000000"), kProperties),
            FinishedPdf(MadeAt("20270202111111"), kProperties));
}

TEST(FinishedPdf, HasAnIdOfItsContent) {
  const auto id = [](const PdfProperties& properties) {
    return ReadPdf(FinishedPdf(MadeAt("20260101000000"), properties)).id;
  };
  EXPECT_NE(id(kProperties), id({"Other", "Ann", kProperties.date}));
}

TEST(FinishedPdf, RefusesWhatIsNone) {
  for (const char* bytes : {"", "no PDF", "%PDF-1.4\n%%EOF\n"}) {
    try {
      FinishedPdf(bytes, kProperties);
      ADD_FAILURE() << bytes;
    } catch (const PageFailure& failure) {
      EXPECT_EQ(failure.trouble(), Trouble::BadDocument);
    }
  }
}

TEST(PdfDate, WritesTheOffset) {
  EXPECT_EQ(PdfDate("2024-05-01T12:34:56+02:00"), "D:20240501123456+02'00'");
  EXPECT_EQ(PdfDate("2024-05-01T12:34:56-11:30"), "D:20240501123456-11'30'");
  EXPECT_EQ(PdfDate("2024-05-01T12:34:56Z"), "D:20240501123456Z");
  EXPECT_EQ(PdfDate("2024-05-01T12:34:56"), "D:20240501123456");
}

TEST(PdfDate, RefusesWhatIsNotWrittenSo) {
  for (const char* date : {"", "2024-05-01", "2024-05-01 12:34:56Z", "2024-05-01T12:34:56+0200",
                           "2024-05-01T12:34:56 ", "x024-05-01T12:34:56Z", "D:20240501123456Z"}) {
    EXPECT_EQ(PdfDate(date), std::nullopt) << date;
  }
}

}  // namespace
}  // namespace tarn::pages
