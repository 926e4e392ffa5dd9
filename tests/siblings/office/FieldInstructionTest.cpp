// Which fields are carried out.
#include "siblings/office/FieldInstruction.h"

#include <gtest/gtest.h>

namespace tarn::pages {
namespace {

TEST(FieldInstruction, KeepsLinksIntoTheNet) {
  EXPECT_EQ(HarmlessInstruction(R"( HYPERLINK "http://example.com/a?b=c&d#e" )"),
            R"(HYPERLINK "http://example.com/a?b=c&d#e")");
  EXPECT_EQ(HarmlessInstruction(R"(hyperlink "MAILTO:ann@example.com")"),
            R"(HYPERLINK "MAILTO:ann@example.com")");
  EXPECT_EQ(HarmlessInstruction("HYPERLINK https://example.com/"),
            R"(HYPERLINK "https://example.com/")");
  EXPECT_EQ(HarmlessInstruction("HYPERLINK \" Tel:+4930 \""), R"(HYPERLINK "Tel:+4930")");
}

TEST(FieldInstruction, KeepsBookmarks) {
  EXPECT_EQ(HarmlessInstruction(R"(HYPERLINK \l "_Toc1")"), R"(HYPERLINK \\l "_Toc1")");
  EXPECT_EQ(HarmlessInstruction(R"(HYPERLINK "http://a/" \l "top")"),
            R"(HYPERLINK "http://a/#top")");
  EXPECT_EQ(HarmlessInstruction(R"(HYPERLINK \l "a b")"), "");
}

TEST(FieldInstruction, PassesSwitches) {
  EXPECT_EQ(HarmlessInstruction(R"(HYPERLINK \n "http://a/" \o "a tip" \t "_blank" \h)"),
            R"(HYPERLINK "http://a/")");
  EXPECT_EQ(HarmlessInstruction(R"(HYPERLINK \o "file:///tip" "http://a/")"),
            R"(HYPERLINK "http://a/")");
}

TEST(FieldInstruction, DropsLinksIntoTheMachine) {
  for (const char* address :
       {"file:///etc/passwd", "C:\\\\x.exe", "\\\\\\\\server\\\\share", "page.html",
        "javascript:alert(1)", "", "vnd.sun.star.script:x", "httpx://a/", "http"}) {
    EXPECT_EQ(HarmlessInstruction(std::string("HYPERLINK \"") + address + '"'), "") << address;
  }
  EXPECT_EQ(HarmlessInstruction("HYPERLINK"), "");
  EXPECT_EQ(HarmlessInstruction("HYPERLINK \""), "");
  EXPECT_EQ(HarmlessInstruction("HYPERLINK \\l"), "");
}

TEST(FieldInstruction, EscapesAddresses) {
  EXPECT_EQ(HarmlessInstruction("HYPERLINK \"http://a/b c\\{}<é>\x01\""),
            R"(HYPERLINK "http://a/b%20c%5C%7B%7D%3C%C3%A9%3E%01")");
}

TEST(FieldInstruction, DropsAddressesThatNobodyWrites) {
  EXPECT_EQ(HarmlessInstruction("HYPERLINK \"http://a/" + std::string(9000, 'x') + '"'), "");
}

TEST(FieldInstruction, KeepsPageNumbers) {
  EXPECT_EQ(HarmlessInstruction(R"(PAGE \* MERGEFORMAT)"), "PAGE");
  EXPECT_EQ(HarmlessInstruction(" NumPages "), "NUMPAGES");
}

TEST(FieldInstruction, DropsEverythingElse) {
  for (const char* instruction :
       {"", " ", "DATE", "TIME", "FILENAME \\p", "USERNAME", "AUTHOR",
        "INCLUDEPICTURE \"http://a/\"", "INCLUDETEXT \"/etc/passwd\"", "LINK Word.Document \"/x\"",
        "DDEAUTO cmd \"/c calc\"", "IMPORT x", "IF 1 = 1 a b", "MERGEFIELD x", "MACROBUTTON x",
        "PAGES"}) {
    EXPECT_EQ(HarmlessInstruction(instruction), "") << instruction;
  }
}

}  // namespace
}  // namespace tarn::pages
