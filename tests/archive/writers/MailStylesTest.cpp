#include "archive/writers/MailStyles.h"

#include <gtest/gtest.h>

namespace tarn::archive {
namespace {

TEST(MailStylesTest, PutsEachSelectorWithinTheMail) {
  EXPECT_EQ(StylesWithinMail("p, .a > b:hover { color : red ; margin:0 }\n\n td{padding:1px;;}"),
            "main p,main .a > b:hover{color : red;margin:0}\nmain td{padding:1px}\n");
  EXPECT_EQ(StylesWithinMail("a[title=\"x,y\"],:is(b, i){color:red}"),
            "main a[title=\"x,y\"],main :is(b, i){color:red}\n");
  EXPECT_EQ(StylesWithinMail(""), "");
}

TEST(MailStylesTest, LetsNoSelectorReachThePage) {
  EXPECT_EQ(SelectorWithinMail("[class^=tarn]"), "main [class^=tarn]");
  EXPECT_EQ(SelectorWithinMail("header:first-child"), "main header:first-child");
  EXPECT_EQ(SelectorWithinMail(".\\74 arn-head"), "main .\\74 arn-head");
  for (const char* outside : {"~ header", "+ x", "> tarn-body", "|x", "& x", "", "html > ~ x"}) {
    EXPECT_EQ(SelectorWithinMail(outside), "") << outside;
  }
}

TEST(MailStylesTest, KnowsTheBodyOfTheMail) {
  EXPECT_EQ(SelectorWithinMail("body"), "main tarn-body");
  EXPECT_EQ(SelectorWithinMail("BODY.a#b > table"), "main tarn-body.a#b > table");
  EXPECT_EQ(SelectorWithinMail("html"), "main tarn-body");
  EXPECT_EQ(SelectorWithinMail(":root"), "main tarn-body");
  EXPECT_EQ(SelectorWithinMail("html > body p"), "main tarn-body p");
  EXPECT_EQ(SelectorWithinMail("HTML body"), "main tarn-body");
  EXPECT_EQ(SelectorWithinMail(".body #body [body] a.body bodyx :not(body)"),
            "main .body #body [body] a.body bodyx :not(tarn-body)");
  EXPECT_EQ(SelectorWithinMail("html[dir=rtl] p"), "main html[dir=rtl] p");
}

TEST(MailStylesTest, KeepsWhatDependsOnTheMedium) {
  EXPECT_EQ(StylesWithinMail("@media (max-width:600px) { p{color:red} @page{margin:0} } b{x:y}"),
            "@media (max-width:600px){\nmain p{color:red}\n}\nmain b{x:y}\n");
  EXPECT_EQ(StylesWithinMail("@keyframes a{from{top:0} 50.5%,to{top:1px} header{x:y}}"),
            "@keyframes a{\nfrom{top:0}50.5%,to{top:1px}}\n");
  EXPECT_EQ(StylesWithinMail("@supports (a:b){"), "@supports (a:b){\n}\n");
  std::string deep;
  for (int i = 0; i < 100; ++i) deep += "@media x{";
  EXPECT_EQ(StylesWithinMail(deep + "header{a:b}").find("header"), std::string::npos);
}

TEST(MailStylesTest, LeavesOutOtherAtRules) {
  EXPECT_EQ(StylesWithinMail("@charset 'x'; @import url(x;y); @namespace x; @page a{@top-left{"
                             "content:'From'} margin:0} @layer{header{a:b}} @font-face{a:b;} "
                             "@scope (x){a{b:c}} p{a:b}"),
            "main p{a:b}\n");
}

TEST(MailStylesTest, LeavesOutRulesWithinRules) {
  EXPECT_EQ(StylesWithinMail("p{a:b;header &{x:y} c:d; @media x{body:has(&){e:f}} g:h}i{j:k}"),
            "main p{a:b;c:d;g:h}\nmain i{j:k}\n");
}

TEST(MailStylesTest, ReadsTheSheetsOfMailPrograms) {
  EXPECT_EQ(StylesWithinMail("<!--\n/* Font {Definitions */\n@font-face\n\t{font-family:X;\n\t"
                             "panose-1:2 15;}\np.Mso, li.Mso\n\t{margin:0cm;\n\tfont-family:\"A\","
                             "sans-serif;}\n@page WordSection1\n\t{size:1pt;}\ndiv.W\n\t{page:W;}\n"
                             "-->"),
            "main p.Mso,main li.Mso{margin:0cm;font-family:\"A\",sans-serif}\n"
            "main div.W{page:W}\n");
}

TEST(MailStylesTest, LeavesOutWhatWouldBeFetched) {
  for (const char* declaration :
       {"a:url(http://x)", "a:URL('//x')", "a:url( \"x.png\" )", "a:b, url(file:///x)",
        "a:u\\72l(x)", "a:\\75 rl(x)", "a:image-set('x' 1x)", "a:-webkit-image-set(url(x) 1x)",
        "a:src('x')", "a:cross-fade(url(data:x), url(x))", "--a:url(x)", "a:expression(b)",
        "a:url-prefix(x)", "a:url(database.png)", "a:url(\\64 ata:x)", "a:url(\n//x)"}) {
    EXPECT_EQ(StylesWithinMail("p{" + std::string(declaration) + ";c:d}"), "main p{c:d}\n")
        << declaration;
    EXPECT_TRUE(MayFetch(declaration)) << declaration;
    EXPECT_EQ(DeclarationsWithinMail("c:d;" + std::string(declaration) + ";e:f"), "c:d;e:f")
        << declaration;
  }
  for (const char* declaration :
       {"a:url(data:image/png;base64,x)", "a:url('DATA:x')", "a:url(#b)", "a:rgb(1,2,3)",
        "a:calc(1px + (2px))", "a:\"\\201C\"", "a:'url'", "a:curl(#x)"}) {
    EXPECT_FALSE(MayFetch(declaration)) << declaration;
  }
  EXPECT_EQ(StylesWithinMail("p{a:url(data:image/png;base64,x);b:url(#c)}"),
            "main p{a:url(data:image/png;base64,x);b:url(#c)}\n");
  // No brace ends the declarations of an attribute.
  EXPECT_EQ(DeclarationsWithinMail("a:b}c:d;e:url(x)}f:g{h:url(y)}i:j"), "a:b;c:d;i:j");
}

TEST(MailStylesTest, LeavesOutWhatIsNotWellFormed) {
  for (const char* sheet :
       {"p",         "p{",         "p{}",      "p{a:'x\n}", "p{a:b(c}", "p{a:b)}",
        "p(:x{a:b}", "p\\{x{a:b}", "p{a:<b}",  "<x{a:b}",   "p{a:'<'}", "{a:b}",
        ",{a:b}",    "p{a:\"b",    "p[x{a:b}", "p{a:\\",    "}",        "@",
        "@x",        "p{a:b\\",    "\\",       "'"}) {
    EXPECT_EQ(StylesWithinMail(sheet), "") << sheet;
  }
  EXPECT_EQ(StylesWithinMail(std::string_view("p\0{a:b}i{c:d}", 13)), "main i{c:d}\n");
  EXPECT_EQ(StylesWithinMail("} p{a:b"), "main p{a:b}\n");
  EXPECT_EQ(StylesWithinMail("p{a:url(data:x;base64,y);'};c:d}"),
            "main p{a:url(data:x;base64,y)}\n");
}

}  // namespace
}  // namespace tarn::archive
