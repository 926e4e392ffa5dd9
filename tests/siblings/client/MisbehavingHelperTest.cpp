// Helpers that a document has taken over, or that break under it: each ends in a failure that says
// what happened, and the next document works.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <initializer_list>
#include <string>
#include <vector>

#include "ScriptedHelperFixture.h"
#include "ThisMachine.h"
#include "siblings/client/PageHelper.h"
#include "siblings/client/ProcessHandle.h"
#include "support/TempDirectory.h"

namespace tarn::pages {
namespace {

using std::chrono::milliseconds;
using test::HelpersOf;

class MisbehavingHelperTest : public test::ScriptedHelperTest {
 protected:
  // Long enough for what is to be answered, on a busy machine too.
  static HelperOptions limited(milliseconds time, uint64_t memory = uint64_t{1} << 30) {
    HelperOptions options = MisbehavingHelperTest::options();
    options.limits = {time, memory};
    return options;
  }

  static std::string failureOfScript(PageHelper& helper, const std::string& script) {
    return failureOf([&] { helper.draw(helper.layOut(document(script)), 1, 72); });
  }

  static constexpr const char* kNonsense =
      "HelperDied: tarnmail-pages gave an answer that makes no sense";
};

TEST_F(MisbehavingHelperTest, MayCrashAnywhere) {
  PageHelper helper(options());
  for (const char* const when : {"layOut", "draw"}) {
    EXPECT_EQ(failureOfScript(helper, std::string(when) + " crash")
                  .rfind("HelperDied: tarnmail-pages ", 0),
              0u);
    EXPECT_TRUE(test::DescendantsOf(getpid()).empty());
    expectWell(helper);
  }
}

TEST_F(MisbehavingHelperTest, SaysHowItCrashed) {
  HelperOptions alone = options();
  alone.sandbox = false;
  PageHelper helper(alone);
  EXPECT_EQ(failureOfScript(helper, "layOut crash"),
            "HelperDied: tarnmail-pages was killed by signal 11 in the middle of the document");
  // In namespaces it is bubblewrap that tells, by its exit status.
  PageHelper apart(options());
  EXPECT_EQ(failureOfScript(apart, "layOut crash"),
            "HelperDied: tarnmail-pages was killed by signal 11 in the middle of the document");
}

TEST_F(MisbehavingHelperTest, MayGoOnForEver) {
  PageHelper helper(limited(milliseconds(300)));
  for (const char* const when : {"layOut", "draw"}) {
    EXPECT_EQ(failureOfScript(helper, std::string(when) + " loop"),
              "TooLong: the document takes longer than 300 ms");
    EXPECT_TRUE(test::DescendantsOf(getpid()).empty());
  }
}

// Pages each of which is soon enough.
TEST_F(MisbehavingHelperTest, MayNotTakeTheWholeTimeForEachPage) {
  PageHelper helper(limited(milliseconds(3'000)));
  const LaidOut laidOut = helper.layOut(document("layOut pages 100\ndraw sleep 500"));
  int32_t page = 0;
  // Six pages and a half are 3,250 ms, and the budget of seven 3,350.
  EXPECT_EQ(failureOf([&] {
              while (page < 100) helper.draw(laidOut, ++page, 72);
            }).rfind("TooLong: the pages of the document take longer than ", 0),
            0u);
  EXPECT_LE(page, 7);
  EXPECT_TRUE(test::DescendantsOf(getpid()).empty());
  expectWell(helper);
}

TEST_F(MisbehavingHelperTest, MayTakeMemoryWithoutEnd) {
  PageHelper helper(limited(std::chrono::minutes(1), uint64_t{200} << 20));
  EXPECT_EQ(failureOfScript(helper, "layOut allocate"),
            "TooLarge: the document takes more memory than 200 MB");
  EXPECT_TRUE(test::DescendantsOf(getpid()).empty());
  expectWell(helper);
}

TEST_F(MisbehavingHelperTest, GetsNoMoreMemoryAtOnceThanItsLimit) {
  PageHelper helper(options());
  // Sanitizers have taken terabytes before.
  EXPECT_EQ(logOf(helper, "pdf map 3000000000"),
            test::kIsSanitized ? "map 3000000000: done\n" : "map 3000000000: refused\n");
  EXPECT_EQ(logOf(helper, "pdf map 300000000"), "map 300000000: done\n");
}

TEST_F(MisbehavingHelperTest, MayLieAboutSizes) {
  PageHelper helper(options());
  for (const char* const lie : {"layOut width 0", "layOut width -1", "layOut width nan",
                                "layOut height inf", "layOut height 14401"}) {
    SCOPED_TRACE(lie);
    EXPECT_EQ(failureOfScript(helper, lie), kNonsense);
    EXPECT_TRUE(test::DescendantsOf(getpid()).empty());
  }
  expectWell(helper);
}

// Each is an answer of a kind that is waited for, or of one that is not; the numbers are eight
// bytes, least first.
TEST_F(MisbehavingHelperTest, MaySayAnything) {
  PageHelper helper(options());
  const std::string one = "0100000000000000";
  const std::string zero = "0000000000000000";
  const std::string half = "000000000000E03F";
  for (const std::string& said : std::initializer_list<std::string>{
           "00",                                // a request
           "FF",                                // nothing known
           "07",                                // LaidOut without fields
           "07" + one + half,                   // with too few
           "07" + one + half + half + "00",     // with too many
           "07" + zero + half + half,           // no page
           "07FFFFFFFFFFFFFFFF" + half + half,  // -1 pages
           "070000000001000000" + half + half,  // 2^32 pages
           "0741420F0000000000" + half + half,  // 1,000,001 pages
           "0B05000000000000002E",              // a name longer than its message
           "0BFFFFFFFFFFFFFFFF2E",              // and one of 2^64 - 1 bytes
           "0C" + zero,                         // progress that nobody wants
           "0D6400000000000000" + zero,         // a failure of no known kind
           "0D" + zero + one                    // and one without its line
       }) {
    SCOPED_TRACE(said);
    EXPECT_EQ(failureOfScript(helper, "layOut say " + said), kNonsense);
  }
  expectWell(helper);
}

TEST_F(MisbehavingHelperTest, MayAnswerWhatWasNotAsked) {
  PageHelper helper(options());
  const LaidOut laidOut = helper.layOut(document("pdf say 0901000000000000000100000000000000"));
  EXPECT_EQ(failureOf([&] { helper.pdf(laidOut, {}, {}); }), kNonsense);
  EXPECT_FALSE(helper.holds(laidOut));
  expectWell(helper);
}

TEST_F(MisbehavingHelperTest, MayDrawABitmapThatIsNotOfItsSize) {
  PageHelper helper(options());
  for (const char* const lie : {"draw pixels 2591", "draw pixels 2593", "draw pixels 0"}) {
    EXPECT_EQ(failureOfScript(helper, lie), "BadDocument: the bitmap is not of its size");
  }
  expectWell(helper);
}

// The room has the bytes of an answer before, and no more than those.
TEST_F(MisbehavingHelperTest, MayClaimMoreThanItsRoomHolds) {
  PageHelper helper(options());
  (void)helper.draw(helper.layOut(document("")), 1, 72);
  const LaidOut laidOut = helper.layOut(document("draw say 0989020000000000000100000000000000"));
  EXPECT_EQ(failureOf([&] { helper.draw(laidOut, 1, 72); }), kNonsense);
}

TEST_F(MisbehavingHelperTest, MayKeepNoMoreOfTheFolderThanItsLimit) {
  const test::TempDirectory folder;
  folder.write("image", std::string(3'000'000, 'i'));
  PageHelper helper(limited(std::chrono::minutes(1), uint64_t{400} << 20));
  std::string script;
  for (int i = 0; i < 139; ++i) script += "layOut ask image\n";
  DocumentOnPaper asking = document(script);
  asking.folder = folder.path();
  EXPECT_EQ(helper.layOut(asking).pageCount, 1);
  script += "layOut ask image\n";
  asking.bytes = script;
  EXPECT_EQ(failureOf([&] { helper.layOut(asking); }),
            "TooLarge: the document takes more memory than 400 MB");
}

TEST_F(MisbehavingHelperTest, MayClaimABitmapThatNobodyCouldHold) {
  PageHelper helper(options());
  const LaidOut laidOut = helper.layOut(document("draw say 09FFFFFF7F00000000FFFFFF7F00000000"));
  EXPECT_EQ(failureOf([&] { helper.draw(laidOut, 1, 72); }), kNonsense);
}

TEST_F(MisbehavingHelperTest, MayClaimAPdfThatIsNotThere) {
  PageHelper helper(options());
  for (const char* const size : {"0000000000000000", "6400000000000000", "FFFFFFFFFFFFFFFF"}) {
    const LaidOut laidOut = helper.layOut(document(std::string("pdf say 0A") + size));
    EXPECT_EQ(failureOf([&] { helper.pdf(laidOut, {}, {}); }), kNonsense);
  }
}

TEST_F(MisbehavingHelperTest, CannotPassFiles) {
  PageHelper helper(options());
  const LaidOut laidOut = helper.layOut(document(""));
  const size_t files = test::CountOpenFiles();
  EXPECT_TRUE(helper.holds(laidOut));
  EXPECT_EQ(failureOfScript(helper, "layOut pass"), kNonsense);
  EXPECT_LE(test::CountOpenFiles(), files);
}

// A message of progress, as any process could make that is not bound by an honest helper's
// counting.
TEST_F(MisbehavingHelperTest, ReportsNoProgressTwice) {
  PageHelper helper(options());
  const std::string half = "0C3200000000000000";
  const LaidOut laidOut = helper.layOut(document("draw say " + half + "\ndraw say " + half));
  std::vector<int> heard;
  EXPECT_EQ(failureOf([&] {
              helper.draw(laidOut, 1, 72, [&heard](int percent) {
                heard.push_back(percent);
                return true;
              });
            }),
            kNonsense);
  EXPECT_EQ(heard, (std::vector<int>{0, 50}));
}

TEST_F(MisbehavingHelperTest, MayHangUpAndGoOn) {
  PageHelper helper(options());
  EXPECT_EQ(failureOfScript(helper, "layOut hang-up").rfind("HelperDied: tarnmail-pages ", 0), 0u);
  EXPECT_TRUE(test::DescendantsOf(getpid()).empty());
  expectWell(helper);
}

TEST_F(MisbehavingHelperTest, MayBeKilledWhileItStarts) {
  PageHelper helper(options());
  helper.prepare(DocumentKind::Html);
  std::vector<Descriptor> started;
  for (const pid_t process : test::DescendantsOf(getpid())) {
    started.push_back(OpenProcess(process));
    kill(process, SIGKILL);
  }
  for (const Descriptor& process : started) WaitForProcess(process, std::chrono::seconds(30));
  try {
    (void)helper.layOut(document(""));
  } catch (const PageFailure&) {
    // It may have been there still; the next document has no such excuse.
  }
  expectWell(helper);
}

TEST_F(MisbehavingHelperTest, MayBeKilledBetweenDocuments) {
  PageHelper helper(options());
  const LaidOut laidOut = helper.layOut(document(""));
  for (const pid_t process : HelpersOf(getpid())) kill(process, SIGKILL);
  // When it is seen depends on the system; in the end it is gone.
  while (helper.holds(laidOut)) usleep(1'000);
  EXPECT_EQ(failureOf([&] { helper.draw(laidOut, 1, 72); }),
            "HelperDied: the document is no longer laid out");
  expectWell(helper);
}

TEST_F(MisbehavingHelperTest, MayBeKilledInTheMiddleOfAPage) {
  PageHelper helper(options());
  const LaidOut laidOut = helper.layOut(document("draw report 1\ndraw loop"));
  EXPECT_EQ(failureOf([&] {
              helper.draw(laidOut, 1, 72, [](int) {
                for (const pid_t process : HelpersOf(getpid())) kill(process, SIGKILL);
                return true;
              });
            }).rfind("HelperDied: tarnmail-pages ", 0),
            0u);
  EXPECT_FALSE(helper.holds(laidOut));
  expectWell(helper);
}

}  // namespace
}  // namespace tarn::pages
