// What is taken out of RTF, and what is put in.
#include "siblings/office/HarmlessRtf.h"

#include <gtest/gtest.h>

namespace tarn::pages {
namespace {

constexpr std::string_view kA4 =
    R"({\rtf1\paperw11906\paperh16838{\stylesheet{\*\cs31999 \additive link;}})";

// Of a document with that body, the body that is handed on.
std::string Body(std::string_view body) {
  const std::string harmless = HarmlessRtf("{\\rtf1" + std::string(body) + '}', Paper::A4);
  EXPECT_EQ(harmless.substr(0, kA4.size()), kA4);
  EXPECT_EQ(harmless.back(), '}');
  return harmless.substr(kA4.size(), harmless.size() - kA4.size() - 1);
}

Trouble TroubleOf(std::string_view document) {
  try {
    HarmlessRtf(document, Paper::A4);
  } catch (const PageFailure& failure) {
    return failure.trouble();
  }
  ADD_FAILURE() << "no failure";
  return Trouble::Stopped;
}

TEST(HarmlessRtf, PutsThePaperBeforeWhatTheDocumentSays) {
  EXPECT_EQ(
      HarmlessRtf(R"({\rtf1\ansi\paperw1000 x})", Paper::Letter),
      R"({\rtf1\paperw12240\paperh15840{\stylesheet{\*\cs31999 \additive link;}}\ansi\paperw1000 x})");
}

TEST(HarmlessRtf, LeavesOrdinaryRtfAsItIs) {
  const std::string body =
      "\\ansi\\deff0{\\fonttbl{\\f0\\fswiss Arial;}}\r\n\\pard Gr\\'fc\\u223\\'dfe {\\b b}\\par"
      "{\\pict\\pngblip 8950}{\\*\\generator x;}{\\*\\bkmkstart a}{\\pict\\bin3 {}\\x}";
  EXPECT_EQ(Body(body), body);
}

TEST(HarmlessRtf, ClosesWhatWasCutOff) {
  EXPECT_EQ(HarmlessRtf(R"({\rtf1 a{\b b)", Paper::A4), std::string(kA4) + R"(a{\b b}})");
  EXPECT_EQ(HarmlessRtf(R"({\rtf)", Paper::A4), std::string(kA4) + "}");
  EXPECT_EQ(HarmlessRtf(R"({\rtf1{\field{\*\fldinst PAGE)", Paper::A4),
            std::string(kA4) + R"({\field{\*\fldinst PAGE}}})");
  EXPECT_EQ(HarmlessRtf(R"({\rtf1{\*\objdata 01)", Paper::A4), std::string(kA4) + "{}}");
}

// What is cut off would take the brace that ends the document.
TEST(HarmlessRtf, DropsATokenThatWasCutOff) {
  for (const char* rest : {"\\", "\\'", "\\'4", "\\bin9 abc", "\\bin1"}) {
    EXPECT_EQ(HarmlessRtf(std::string("{\\rtf1 a") + rest, Paper::A4), std::string(kA4) + "a}")
        << rest;
  }
}

TEST(HarmlessRtf, EndsWithTheDocument) {
  EXPECT_EQ(HarmlessRtf(std::string("{\\rtf1 a}\0\0{\\b x", 16), Paper::A4),
            std::string(kA4) + "a}");
}

TEST(HarmlessRtf, RefusesWhatIsNotRtf) {
  for (const char* document : {"", "{", "<html>", "{\\rtfx a}", " {\\rtf1 a}", "{\\*\\rtf1 a}",
                               "{\\ansi}", "\\rtf1", "%PDF-1.4", "PK\x03\x04"}) {
    EXPECT_EQ(TroubleOf(document), Trouble::BadDocument) << document;
  }
}

TEST(HarmlessRtf, RefusesGroupsThatNestTooDeep) {
  const auto nested = [](int32_t depth) {
    return "{\\rtf1" + std::string(static_cast<size_t>(depth - 1), '{');
  };
  EXPECT_EQ(TroubleOf(nested(kDeepestGroup + 1)), Trouble::BadDocument);
  EXPECT_EQ(HarmlessRtf(nested(kDeepestGroup), Paper::A4).back(), '}');
}

TEST(HarmlessRtf, DropsInstructionsAndKeepsResults) {
  EXPECT_EQ(Body(R"({\field{\*\fldinst {\b INCLUDE}PICTURE "http://a/"}{\fldrslt {\pict 01}}})"),
            R"({\field{\*\fldinst }{\fldrslt {\pict 01}}})");
  EXPECT_EQ(Body(R"({\field{\fldinst DATE}{\fldrslt today}})"),
            R"({\field{\fldinst }{\fldrslt today}})");
}

TEST(HarmlessRtf, KeepsLinks) {
  EXPECT_EQ(Body(R"({\field{\*\fldinst{HYPERLINK "http://a/"}{\*\datafield 00}}{\fldrslt a}})"),
            R"({\field{\*\fldinst HYPERLINK "http://a/"}{\fldrslt \cs31999 a}})");
  EXPECT_EQ(
      Body(R"({\field{\fldinst HYPERLINK "http://a/"}{\fldrslt{\b\plain a}}}\plain)"),
      R"({\field{\fldinst HYPERLINK "http://a/"}{\fldrslt\cs31999 {\b\plain \cs31999 a}}}\plain)");
}

TEST(HarmlessRtf, DropsDataOfObjectsAndKeepsTheirPictures) {
  EXPECT_EQ(Body(R"({\object\objemb{\*\objclass P}{\*\objdata 01{02}}{\result {\pict 01}}})"),
            R"({\object\objemb{\*\objclass P}{}{\result {\pict 01}}})");
  EXPECT_EQ(Body(R"({\object{\objdata\bin3 }}}x}y})"), R"({\object{}y})");
}

TEST(HarmlessRtf, DropsNamesOfOtherFiles) {
  EXPECT_EQ(
      Body(R"(a{\*\template http://a/x.dot}{\filetbl{\file /x}}\subdocument1 {\*\nextfile x}b)"),
      "a{}{}{}{}b");
  EXPECT_EQ(Body(R"(a{\*\mailmerge{\mmdatasource x}}b{\*\userprops x}{\info{\title x}}c)"),
            "a{}b{}{}c");
}

TEST(HarmlessRtf, DropsEmbeddedFonts) {
  EXPECT_EQ(Body(R"({\fonttbl{\f1{\*\fontemb{\*\fontfile x}00}Arial;}})"),
            R"({\fonttbl{\f1{}Arial;}})");
}

TEST(HarmlessRtf, DropsComments) {
  EXPECT_EQ(Body(R"(a{\*\atnid AB}{\*\atnauthor Ann}\chatn {\*\annotation\pard x}b)"),
            "a{}{}{}{}b");
}

TEST(HarmlessRtf, DropsTheTimeOfReading) {
  EXPECT_EQ(Body(R"(\b\chdate \chtime b)"), R"(\b{}{}b)");
}

TEST(HarmlessRtf, DropsPicturesThatShapesTakeFromElsewhere) {
  EXPECT_EQ(Body(R"({\sp{\sn pibName}{\sv http://a/}}{\sp{\sn fillBlipName}{\sv /x}})"),
            R"({\sp{\sn none}{\sv http://a/}}{\sp{\sn none}{\sv /x}})");
  EXPECT_EQ(Body(R"({\sp{\sn shapeType}{\sv 75}})"), R"({\sp{\sn shapeType}{\sv 75}})");
  EXPECT_EQ(Body(R"({\sp{\sn shape{\b Type}}{\sv 75}})"), R"({\sp{\sn shapeType}{\sv 75}})");
}

TEST(HarmlessRtf, NothingHidesInTheNameOfAProperty) {
  EXPECT_EQ(Body(R"({\sn a{\field{\fldinst INCLUDEPICTURE x}{\fldrslt y}}})"), R"({\sn none})");
  EXPECT_EQ(Body(R"({\sn a{\*\template x}})"), R"({\sn a})");
  EXPECT_EQ(Body(R"({\sn \'7b\'5cobject})"), R"({\sn none})");
  EXPECT_EQ(Body(R"({\sn })"), R"({\sn none})");
  // What is cut off in its bytes does not take the braces after it.
  EXPECT_EQ(HarmlessRtf(R"({\rtf1{\sn a\bin9 b}})", Paper::A4), std::string(kA4) + R"({\sn a}})");
}

TEST(HarmlessRtf, AGroupThatIsDroppedInItsMiddleKeepsItsBeginning) {
  EXPECT_EQ(Body(R"(a{b\objdata c{d}}e)"), "a{b}e");
}

}  // namespace
}  // namespace tarn::pages
