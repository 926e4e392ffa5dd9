// What a helper in its right mind answers, and how its documents follow one another.

#include "siblings/client/PageHelper.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "ScriptedHelperFixture.h"
#include "ThisMachine.h"

namespace tarn::pages {
namespace {

using test::HelpersOf;

class PageHelperTest : public test::ScriptedHelperTest {
 protected:
  PageHelper helper_{options()};
};

TEST_F(PageHelperTest, StartsNothingBeforeTheFirstDocument) {
  EXPECT_TRUE(test::DescendantsOf(getpid()).empty());
}

TEST_F(PageHelperTest, SaysHowManyPagesThereAreAndHowLargeEachIs) {
  const LaidOut laidOut = helper_.layOut(document("layOut pages 3\nlayOut height 100.25\n"));
  EXPECT_EQ(laidOut.pageCount, 3);
  EXPECT_EQ(laidOut.firstPage.width, 36);
  EXPECT_EQ(laidOut.firstPage.height, 100.25);
  EXPECT_EQ(helper_.pageSize(laidOut, 3).height, 300.75);
}

TEST_F(PageHelperTest, DrawsTheWantedPageAtTheWantedResolution) {
  const LaidOut laidOut = helper_.layOut(document("layOut pages 2"));
  const Bitmap bitmap = helper_.draw(laidOut, 2, 300);
  EXPECT_EQ(bitmap.width, 150);
  EXPECT_EQ(bitmap.height, 150);
  EXPECT_EQ(bitmap.pixels, std::vector<uint8_t>(150 * 150 * 4, 2));
}

TEST_F(PageHelperTest, HandsOverTheWholeDocument) {
  std::string script = "pdf document\n";
  for (int i = 0; i < 1'000'000; ++i) script += static_cast<char>(i % 251);
  EXPECT_EQ(logOf(helper_, script), "document: " + script.substr(script.find('\n') + 1) + "\n");
}

TEST_F(PageHelperTest, HandsOverAnEmptyDocument) {
  const LaidOut laidOut = helper_.layOut(document(""));
  EXPECT_EQ(laidOut.pageCount, 1);
  EXPECT_EQ(helper_.pdf(laidOut, {}, {}), "%PDF");
}

TEST_F(PageHelperTest, HandsOverKindAndPaper) {
  DocumentOnPaper text = document("pdf kind");
  text.kind = DocumentKind::Text;
  EXPECT_EQ(logOf(helper_, text), "kind: 2 0\n");
  DocumentOnPaper rtf = document("pdf kind");
  rtf.kind = DocumentKind::Rtf;
  rtf.paper = Paper::Letter;
  EXPECT_EQ(logOf(helper_, rtf), "kind: 1 1\n");
}

TEST_F(PageHelperTest, HandsOverWhatAPdfIsToSay) {
  const LaidOut laidOut = helper_.layOut(document("layOut pages 9\npdf properties\npdf range"));
  EXPECT_EQ(helper_.pdf(laidOut, {2, 0},
                        {"Gr\xC3\xBC\xC3\x9F"
                         "e",
                         "Ann", "2024-05-01T12:34:56+02:00"}),
            "properties: Gr\xC3\xBC\xC3\x9F"
            "e|Ann|2024-05-01T12:34:56+02:00\nrange: 2-9\n");
}

TEST_F(PageHelperTest, CutsWhatAPdfIsToSayBetweenCharacters) {
  const LaidOut laidOut = helper_.layOut(document("pdf properties"));
  const std::string title = std::string(9'999, 't') + "\xC3\xBC and more";
  EXPECT_EQ(helper_.pdf(laidOut, {}, {title, "", ""}),
            "properties: " + std::string(9'999, 't') + "||\n");
}

TEST_F(PageHelperTest, KnowsItsPages) {
  const LaidOut two = helper_.layOut(document("layOut pages 2"));
  for (const int32_t page : {-1, 0, 3}) {
    EXPECT_EQ(failureOf([&] { helper_.draw(two, page, 96); }),
              "NoSuchPage: the document has 2 pages");
    EXPECT_EQ(failureOf([&] { helper_.pageSize(two, page); }),
              "NoSuchPage: the document has 2 pages");
  }
  for (const PageRange range : {PageRange{0, 1}, PageRange{2, 1}, PageRange{1, 3}}) {
    EXPECT_EQ(failureOf([&] { helper_.pdf(two, range, {}); }),
              "NoSuchPage: the document has 2 pages");
  }
  const LaidOut one = helper_.layOut(document(""));
  EXPECT_EQ(failureOf([&] { helper_.draw(one, 2, 96); }), "NoSuchPage: the document has 1 page");
}

TEST_F(PageHelperTest, DrawsNothingBeyondReason) {
  const LaidOut laidOut = helper_.layOut(document("layOut width 14400\nlayOut height 14400"));
  EXPECT_EQ(failureOf([&] { helper_.draw(laidOut, 1, 96); }),
            "TooLarge: the page is too large to be drawn at 96 dpi");
  for (const int32_t dotsPerInch : {-1, 0, 2'401}) {
    EXPECT_EQ(failureOf([&] { helper_.draw(laidOut, 1, dotsPerInch); }),
              "TooLarge: pages are drawn at 1 to 2400 dpi");
  }
  EXPECT_EQ(helper_.draw(laidOut, 1, 1).width, 200);
}

TEST_F(PageHelperTest, KeepsItsHelperAndItsLastDocument) {
  const LaidOut first = helper_.layOut(document(""));
  const std::vector<pid_t> helpers = HelpersOf(getpid());
  EXPECT_EQ(helpers.size(), 1u);
  EXPECT_TRUE(helper_.holds(first));
  const LaidOut second = helper_.layOut(document(""));
  EXPECT_FALSE(helper_.holds(first));
  EXPECT_TRUE(helper_.holds(second));
  EXPECT_EQ(failureOf([&] { helper_.draw(first, 1, 96); }),
            "HelperDied: the document is no longer laid out");
  EXPECT_FALSE(helper_.holds(LaidOut{}));
  EXPECT_EQ(HelpersOf(getpid()), helpers);
}

TEST_F(PageHelperTest, KeepsADocumentOfEachHelper) {
  DocumentOnPaper rtf = document("layOut pages 2");
  rtf.kind = DocumentKind::Rtf;
  const LaidOut html = helper_.layOut(document(""));
  const LaidOut office = helper_.layOut(rtf);
  EXPECT_TRUE(helper_.holds(html));
  EXPECT_TRUE(helper_.holds(office));
  EXPECT_EQ(helper_.draw(office, 2, 72).pixels.front(), 2);
  EXPECT_EQ(helper_.draw(html, 1, 72).pixels.front(), 1);
  EXPECT_EQ(HelpersOf(getpid()).size(), 2u);
}

TEST_F(PageHelperTest, SaysWhatAnEngineSays) {
  EXPECT_EQ(failureOf([&] { helper_.layOut(document("layOut throw not \x1B[31mHTML")); }),
            "BadDocument: not ?[31mHTML");
  const std::vector<pid_t> helpers = HelpersOf(getpid());
  EXPECT_EQ(failureOf([&] { helper_.layOut(document("layOut throw bad_alloc")); }),
            "TooLarge: the document takes more memory than there is");
  EXPECT_EQ(failureOf([&] { helper_.layOut(document("layOut pages 0")); }),
            "BadDocument: the document has no pages");
  EXPECT_EQ(failureOf([&] { helper_.layOut(document("layOut pages 1000001")); }),
            "TooLarge: the document has too many pages");
  const LaidOut laidOut = helper_.layOut(document("draw throw ink"));
  EXPECT_EQ(failureOf([&] { helper_.draw(laidOut, 1, 96); }), "BadDocument: ink");
  EXPECT_TRUE(helper_.holds(laidOut));
  EXPECT_EQ(HelpersOf(getpid()), helpers);
  expectWell(helper_);
}

TEST_F(PageHelperTest, CutsLongLines) {
  EXPECT_EQ(failureOf([&] {
              helper_.layOut(document("layOut throw " + std::string(100'000, 'x')));
            }).size(),
            std::string("BadDocument: ").size() + 300);
}

TEST_F(PageHelperTest, ReportsProgress) {
  const LaidOut laidOut = helper_.layOut(
      document("draw report 0\ndraw report 50\ndraw report 50\ndraw report 20\ndraw report 101\n"
               "draw report 100\npdf report 7"));
  std::vector<int> heard;
  const ProgressCall listener = [&heard](int percent) {
    heard.push_back(percent);
    return true;
  };
  EXPECT_EQ(helper_.draw(laidOut, 1, 72, listener).width, 36);
  EXPECT_EQ(heard, (std::vector<int>{0, 50, 100}));
  EXPECT_NE(helper_.pdf(laidOut, {}, {}, listener).find("report 7: go on"), std::string::npos);
  EXPECT_EQ(heard, (std::vector<int>{0, 50, 100, 7}));
}

TEST_F(PageHelperTest, StopsWhenProgressSaysSo) {
  const LaidOut laidOut =
      helper_.layOut(document("draw report 10\ndraw report 20\ndraw report 30\npdf report 5"));
  std::vector<int> heard;
  EXPECT_EQ(failureOf([&] {
              helper_.draw(laidOut, 1, 72, [&heard](int percent) {
                heard.push_back(percent);
                return percent < 20;
              });
            }),
            "Stopped: stopped");
  EXPECT_EQ(heard, (std::vector<int>{0, 10, 20}));
  // The document is still there, and what the engine heard is in its log.
  EXPECT_EQ(helper_.pdf(laidOut, {}, {}),
            "report 10: go on\nreport 20: stop\nreport 30: stop\nreport 5: go on\n");
}

TEST_F(PageHelperTest, LetsOutWhatACallbackThrows) {
  const LaidOut laidOut = helper_.layOut(document("draw report 10"));
  EXPECT_THROW(helper_.draw(laidOut, 1, 72, [](int) -> bool { throw 7; }), int);
  EXPECT_FALSE(helper_.holds(laidOut));
  EXPECT_TRUE(HelpersOf(getpid()).empty());
  expectWell(helper_);
}

TEST_F(PageHelperTest, ServesAThousandDocumentsWithOneHelper) {
  const std::string_view script = "pdf files\npdf memory";
  for (int i = 0; i < 50; ++i) (void)logOf(helper_, script);
  const std::vector<pid_t> helpers = HelpersOf(getpid());
  const size_t files = test::CountOpenFiles();
  const auto memoryIn = [](const std::string& log) {
    return std::stoull(log.substr(log.find("memory: ") + 8));
  };
  const std::string before = logOf(helper_, script);
  for (int i = 0; i < 1'000; ++i) {
    const LaidOut laidOut = helper_.layOut(document("layOut pages 2"));
    ASSERT_EQ(helper_.draw(laidOut, 2, 72).pixels.size(), 36u * 36 * 4);
  }
  const std::string after = logOf(helper_, script);
  EXPECT_EQ(after.substr(0, after.find('\n')), before.substr(0, before.find('\n')));
  // The address sanitizer keeps the last 256 MB that were freed.
  const uint64_t allowed = test::kIsSanitized ? uint64_t{256} << 20 : uint64_t{8} << 20;
  EXPECT_LE(memoryIn(after), memoryIn(before) + allowed);
  EXPECT_EQ(HelpersOf(getpid()), helpers);
  EXPECT_EQ(test::CountOpenFiles(), files);
}

TEST_F(PageHelperTest, ForgetsADocumentBeforeTheNextIsLaidOut) {
  const auto memoryUsed = [this] {
    const std::string log = logOf(helper_, "layOut memory");
    return std::stoull(log.substr(log.find("memory: ") + 8));
  };
  const std::string large = "never " + std::string(size_t{16} << 20, 'x');
  const auto after = [&](const std::string& document) {
    (void)helper_.layOut(ScriptedHelperTest::document(document));
    return memoryUsed();
  };
  const uint64_t before = after("never");
  const uint64_t allowed = test::kIsSanitized ? uint64_t{256} << 20 : uint64_t{8} << 20;
  EXPECT_LE(after(large), before + allowed);
}

TEST_F(PageHelperTest, StartsBeforeTheFirstDocumentWhenItIsPrepared) {
  // Where the first wall of the list cannot be had, its helper is started in vain.
  HelperOptions prepared = options();
  if (!test::ThisMachine().hasNamespaces) prepared.walls = {Wall::SystemCalls};
  PageHelper helper(prepared);
  helper.prepare(DocumentKind::Text);
  const std::vector<pid_t> started = test::DescendantsOf(getpid());
  EXPECT_FALSE(started.empty());
  helper.prepare(DocumentKind::Html);
  EXPECT_EQ(test::DescendantsOf(getpid()).front(), started.front());
  expectWell(helper);
  EXPECT_EQ(test::DescendantsOf(getpid()).front(), started.front());
  helper.prepare(DocumentKind::Html);
  expectWell(helper);
  EXPECT_EQ(test::DescendantsOf(getpid()).front(), started.front());
  helper.prepare(DocumentKind::Rtf);
}

TEST_F(PageHelperTest, SaysWhatFailedInPreparingWithTheFirstDocument) {
  HelperOptions without = options();
  without.programs = temporary_.path();
  PageHelper helper(without);
  helper.prepare(DocumentKind::Html);
  EXPECT_EQ(failureOf([&] { helper.layOut(document("")); }),
            "NotInstalled: there is no program " + (temporary_.path() / "tarnmail-pages").string());
  without.walls = {};
  PageHelper refused(without);
  refused.prepare(DocumentKind::Html);
  EXPECT_TRUE(test::DescendantsOf(getpid()).empty());
}

TEST_F(PageHelperTest, MakesItsHelpersFoldersWhereItIsTold) {
  const test::TempDirectory folders;
  HelperOptions alone = options();
  alone.sandbox = false;
  alone.temporary = folders.path();
  {
    PageHelper helper(alone);
    const std::string log = logOf(helper, "pdf variable HOME\npdf variable TMPDIR");
    EXPECT_EQ(log, "variable HOME: " + (folders.path() / folders.listing()).string() +
                       "\nvariable TMPDIR: " + (folders.path() / folders.listing()).string() +
                       "\n");
    EXPECT_EQ(folders.listing().rfind("tarnmail-helper.", 0), 0u);
  }
  EXPECT_EQ(folders.listing(), "");
}

TEST_F(PageHelperTest, SaysWhichProgramIsMissing) {
  HelperOptions options = PageHelperTest::options();
  options.programs = temporary_.path();
  PageHelper helper(options);
  EXPECT_EQ(failureOf([&] { helper.layOut(document("")); }),
            "NotInstalled: there is no program " + (temporary_.path() / "tarnmail-pages").string());
}

TEST_F(PageHelperTest, SaysWhyAProgramDoesNotStart) {
  test::TempDirectory programs;
  programs.write("tarnmail-pages",
                 "#!/bin/sh\necho one >&2; echo 'no libcairo.so.2' >&2; exit 127\n");
  std::filesystem::permissions(programs.path() / "tarnmail-pages",
                               std::filesystem::perms::owner_all);
  HelperOptions options = PageHelperTest::options();
  options.programs = programs.path();
  PageHelper helper(options);
  EXPECT_EQ(failureOf([&] { helper.layOut(document("")); }),
            "NotInstalled: tarnmail-pages cannot start: no libcairo.so.2");
}

}  // namespace
}  // namespace tarn::pages
