// Documents that want more than to be shown, and documents that are broken.
#include <gtest/gtest.h>

#include "EnginePages.h"
#include "Pictures.h"
#include "posix/Bait.h"
#include "siblings/office/HarmlessRtf.h"

namespace tarn::test {
namespace {

using pages::Trouble;

std::string Little(uint64_t number) {
  std::string bytes;
  for (int i = 0; i < 4; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
  return bytes;
}

std::string HexOf(const std::string& bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string digits;
  for (const char c : bytes) {
    digits += kDigits[static_cast<unsigned char>(c) >> 4];
    digits += kDigits[static_cast<unsigned char>(c) & 15];
  }
  return digits;
}

class HostileRtf : public ::testing::Test {
 protected:
  // Is the document shown, with nothing opened or fetched?
  void expectHarmless(const std::string& body) {
    const auto layout = LayOut(Rtf(body + " shown"));
    Draw(*layout);
    const std::string text = TextOf(Pdf(*layout));
    EXPECT_NE(text.find("shown"), std::string::npos) << body;
    EXPECT_FALSE(bait_.taken()) << body;
  }

  std::string file() const { return bait_.file().string(); }
  std::string fileUrl() const { return "file://" + file(); }
  std::string address() const { return bait_.address() + "x.png"; }

  Bait bait_;
};

TEST_F(HostileRtf, TheBaitSeesWhoTakesIt) {
  EXPECT_FALSE(bait_.taken());
  ReadWholeFile(bait_.file());
  EXPECT_TRUE(bait_.taken());
  EXPECT_FALSE(bait_.taken());
}

TEST_F(HostileRtf, FieldsFetchNoPictures) {
  for (const std::string& target : {file(), fileUrl(), address()}) {
    expectHarmless(R"({\field{\*\fldinst INCLUDEPICTURE ")" + target + R"(" \\d}{\fldrslt x}})");
    expectHarmless(R"({\field{\*\fldinst {\b INC}LUDE{\i PICTURE "})" + target +
                   R"("}{\fldrslt x}})");
    expectHarmless(R"({\field\fldedit{\fldinst {\*\x HYPERLINK}INCLUDEPICTURE )" + target +
                   R"(}{\fldrslt x}})");
  }
}

TEST_F(HostileRtf, FieldsReadNoFiles) {
  for (const std::string& target : {file(), fileUrl(), address()}) {
    expectHarmless(R"({\field{\*\fldinst INCLUDETEXT ")" + target + R"("}{\fldrslt x}})");
    expectHarmless(R"({\field{\*\fldinst LINK Word.Document.8 ")" + target +
                   R"(" "" \\a \\p}{\fldrslt x}})");
    expectHarmless(R"({\field{\*\fldinst DDEAUTO cmd ")" + target + R"("}{\fldrslt x}})");
    expectHarmless(R"({\field{\*\fldinst RD ")" + target + R"("}{\fldrslt x}})");
  }
}

TEST_F(HostileRtf, NamesOfFilesAreNotFollowed) {
  for (const std::string& target : {file(), fileUrl(), address()}) {
    expectHarmless(R"({\*\template )" + target + "}");
    expectHarmless(R"({\filetbl{\file\fid1 )" + target + R"(}}\subdocument1)");
    expectHarmless(R"({\*\nextfile )" + target + "}");
    expectHarmless(R"({\*\mailmerge{\mmconnectstr x}{\mmdatasource )" + target + "}}");
    expectHarmless(R"({\fonttbl{\f1{\*\fontemb\fonttruetype{\*\fontfile )" + target +
                   R"(}}X;}}\f1)");
  }
}

TEST_F(HostileRtf, ShapesFetchNoPictures) {
  for (const std::string& target : {file(), fileUrl(), address()}) {
    expectHarmless(R"({\shp{\*\shpinst\shpright2000\shpbottom2000{\sp{\sn shapeType}{\sv 75}})"
                   R"({\sp{\sn pibName}{\sv )" +
                   target +
                   R"(}}{\sp{\sn pibFlags}{\sv 14}})"
                   R"({\sp{\sn fillType}{\sv 3}}{\sp{\sn fillBlipName}{\sv )" +
                   target + "}}}}");
  }
}

TEST_F(HostileRtf, ObjectsAreNotOpened) {
  expectHarmless(
      R"({\object\objautlink\objupdate\objw1000\objh1000{\*\objclass htmlfile}{\*\objdata )"
      "0105000002000000090000004f4c45324c696e6b000000000000000000000c0000d0cf11e0a1b11ae1"
      R"(}{\result a picture}})");
  expectHarmless(R"({\object\objocx{\*\objclass Forms.HTML:Image.1}{\*\objdata 01}{\result r}})");
}

TEST_F(HostileRtf, EmbeddedObjectsAreNotOpened) {
  // A package with a page that would fetch the bait (MS-OLEDS, 2.2.4 and 2.2.5).
  for (const std::string& target : {fileUrl(), address()}) {
    const std::string page = "<html><body><img src=\"" + target + "\"></body></html>";
    const std::string name = std::string("Package\0", 8);
    std::string object = Little(0x501) + Little(2) + Little(name.size()) + name + Little(0) +
                         Little(0) + Little(page.size()) + page + Little(0x501) + Little(0);
    for (const char* kind : {R"(\objemb)", R"(\objemb\objupdate)", R"(\objhtml)", R"(\objsub)"}) {
      expectHarmless(std::string(R"({\object)") + kind +
                     R"(\objw1000\objh1000{\*\objclass Package}{\*\objdata )" + HexOf(object) +
                     R"(}{\result a picture}})");
    }
  }
}

TEST_F(HostileRtf, FieldsThatNeverEnd) {
  const auto field = [](const std::string& instruction, const std::string& result) {
    return R"({\field\flddirty{\*\fldinst )" + instruction + R"(}{\fldrslt )" + result + "}}";
  };
  const auto bookmark = [](const std::string& name, const std::string& content) {
    return R"({\*\bkmkstart )" + name + "}" + content + R"({\*\bkmkend )" + name + "}";
  };
  expectHarmless(bookmark("a", field("REF a", "x")));
  expectHarmless(bookmark("a", field("REF b", "x")) + bookmark("b", field("REF a", "y")));
  expectHarmless(bookmark("a", field("SET a " + field("REF a", "x"), "x")) + field("REF a", "x"));
  expectHarmless(bookmark("a", field("= a + 1", "1") + field("PAGEREF a", "1")));
  expectHarmless(field("IF " + field("IF 1 = 1 " + field("REF c", "1") + " 0", "1") + " = 1 " +
                           field("INCLUDETEXT a", "x") + " b",
                       "x"));
  expectHarmless(field(R"(TOC \\o "1-9" \\h)", field("TOC", field("INDEX", "x"))));
  expectHarmless(R"({\header\pard )" + field("NUMPAGES", R"(\page )" + field("PAGE", "1")) +
                 R"(\par})");
}

TEST_F(HostileRtf, PicturesThatClaimTooMuch) {
  expectHarmless(R"({\pict\pngblip )" + std::string(kHugePng) + "}");
  expectHarmless(R"({\pict\wmetafile8\picw2147483647\pich2147483647\picwgoal32767\pichgoal32767 )" +
                 std::string(kGreenMetafile.substr(0, 60)) + "}");
  expectHarmless(R"({\pict\jpegblip ffd8ffe000104a46})");
  expectHarmless(R"({\pict\dibitmap0 28000000ffffff7fffffff7f0100180000000000})");
}

TEST_F(HostileRtf, ManyFonts) {
  std::string table = R"({\rtf1{\fonttbl)";
  for (int i = 0; i < 100'000; ++i) {
    const std::string number = std::to_string(i);
    table += R"({\f)" + number + " Font" + number + ";}";
  }
  EXPECT_EQ(LayOut(table + R"(}\f99999 text})")->pageCount(), 1);
}

TEST_F(HostileRtf, FieldsInFields) {
  const int depth = pages::kDeepestGroup / 2 - 10;
  std::string fields;
  for (int i = 0; i < depth; ++i) {
    fields += R"({\field{\*\fldinst HYPERLINK "http://a/"}{\fldrslt )";
  }
  expectHarmless(fields + "x" + std::string(static_cast<size_t>(depth) * 2, '}'));
}

TEST_F(HostileRtf, GroupsInGroupsAreRefused) {
  EXPECT_EQ(TroubleWith(Rtf(std::string(1'000'000, '{'))), Trouble::BadDocument);
}

TEST_F(HostileRtf, NestedTables) {
  std::string tables;
  for (int i = 1; i <= 200; ++i) {
    tables += R"(\trowd\cellx5000\pard\intbl\itap)" + std::to_string(i) + R"( a\nestcell)";
  }
  EXPECT_GE(LayOut(Rtf(tables))->pageCount(), 1);
}

TEST(DamagedRtf, WhatIsCutOffIsShownSoFar) {
  const std::string whole = Rtf(R"(shown\par\b bold{\i italic {\ul deep}}\'e9\par)");
  for (size_t cut = 1; cut < 40; ++cut) {
    const std::string text = TextOf(Pdf(*LayOut(whole.substr(0, whole.size() - cut))));
    EXPECT_EQ(text.substr(0, 5), "shown") << cut;
  }
}

TEST(DamagedRtf, ZerosAfterTheEndAreNotShown) {
  EXPECT_EQ(TextOf(Pdf(*LayOut(Rtf("text") + std::string(3, '\0')))), "text");
}

TEST(DamagedRtf, WhatIsNoRtfIsNotTakenForSomethingElse) {
  for (const char* document : {"<html><body><img src=\"file:///etc/passwd\"></body></html>",
                               "%PDF-1.4\n", "plain text", "", "PK\x03\x04", "{\\rtfx x}"}) {
    EXPECT_EQ(TroubleWith(document), Trouble::BadDocument) << document;
  }
}

TEST(DamagedRtf, AMarkOfAnotherFormatInRtfIsText) {
  EXPECT_EQ(TextOf(Pdf(*LayOut("{\\rtf1 %PDF-1.4\\par <html> text}"))), "%PDF-1.4 <html> text");
}

TEST(DamagedRtf, OtherKindsAreRefused) {
  class : public pages::DocumentFolder {
    std::optional<std::string> read(std::string_view) override { return std::nullopt; }
  } folder;
  EXPECT_THROW(TheEngine().layOut(pages::DocumentKind::Html, Rtf("x"), pages::Paper::A4, folder),
               pages::PageFailure);
}

TEST(DamagedRtf, TheNextDocumentIsShownAfterARefusal) {
  EXPECT_EQ(TroubleWith("no RTF"), Trouble::BadDocument);
  EXPECT_EQ(TextOf(Pdf(*LayOut(Rtf("next")))), "next");
}

}  // namespace
}  // namespace tarn::test
