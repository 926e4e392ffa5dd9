#include "siblings/layout/StyleMedia.h"

#include <gtest/gtest.h>

#include "siblings/layout/HtmlScan.h"

namespace tarn::test {
namespace {

using namespace tarn::pages;

TEST(StyleMedia, UnknownFeaturesNeverHold) {
  EXPECT_EQ(KnownMedia("(prefers-color-scheme: dark)"), "(max-width:0px)");
  EXPECT_EQ(KnownMedia("screen and (Prefers-Color-Scheme:DARK)"), "screen and (max-width:0px)");
  EXPECT_EQ(KnownMedia("( prefers-color-scheme : light )"), "(min-width:0px)");
  EXPECT_EQ(KnownMedia("(prefers-color-scheme)"), "(max-width:0px)");
  EXPECT_EQ(KnownMedia("(hover) and (min-width:10px)"), "(max-width:0px) and (min-width:10px)");
  EXPECT_EQ(KnownMedia("(prefers-color-scheme: dark"), "(max-width:0px)");
  EXPECT_EQ(KnownMedia("()"), "(max-width:0px)");
}

TEST(StyleMedia, KnownOnesStay) {
  for (const char* query :
       {"", "print", "screen, print", "only screen and (max-width: 600px)", "(MIN-WIDTH:1px)",
        "not all and (orientation:landscape)", "(color)", "(max-device-width: 480px)"}) {
    EXPECT_EQ(KnownMedia(query), query);
  }
}

TEST(StyleMedia, AreFoundInSheets) {
  EXPECT_EQ(WithKnownMedia("p{color:red}@media (prefers-color-scheme:dark){p{color:blue}}a{}"),
            "p{color:red}@media (max-width:0px){p{color:blue}}a{}");
  EXPECT_EQ(WithKnownMedia("@MEDIA (hover){b{}}@import url(x);@media print{c{}}@"),
            "@media (max-width:0px){b{}}@import url(x);@media print{c{}}@");
  EXPECT_EQ(WithKnownMedia("@media (hover)"), "@media (max-width:0px)");
  EXPECT_EQ(WithKnownMedia(""), "");
}

TEST(StyleMedia, AreFoundInTags) {
  EXPECT_EQ(MediaOfTag(" media=\"screen and (x)\""), "screen and (x)");
  EXPECT_EQ(MediaOfTag(" type='text/css' MEDIA = ' print ' id=a"), "print");
  EXPECT_EQ(MediaOfTag(" media=print/"), "print/");
  EXPECT_EQ(MediaOfTag(" type=media"), "");
  EXPECT_EQ(MediaOfTag(" media"), "");
  EXPECT_EQ(MediaOfTag(" media='print"), "print");
  EXPECT_EQ(MediaOfTag(" ="), "");
  EXPECT_EQ(MediaOfTag(""), "");
}

TEST(StyleMedia, StyleElementsKeepTheirs) {
  EXPECT_EQ(ScanHtml("<style media='(prefers-color-scheme: dark)'>p{color:red}</style>").html,
            "<style>@media (max-width:0px){p{color:red}\n}\n</style>");
  EXPECT_EQ(ScanHtml("<style>@media (prefers-color-scheme: dark){p{color:red}}</style>").html,
            "<style>@media (max-width:0px){p{color:red}}\n</style>");
  EXPECT_EQ(ScanHtml("<style media=all>p{color:red}</style>").html,
            "<style>@media all{p{color:red}\n}\n</style>");
  // What would end the rule is none.
  EXPECT_EQ(ScanHtml("<style media='print{}p{color:red}'>a{}</style>").html,
            "<style>a{}\n</style>");
}

}  // namespace
}  // namespace tarn::test
