#include "archive/cluster/InputPrint.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "archive/export/SourceSum.h"
#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

const auto kNoBeat = [] {};

class InputPrintTest : public ::testing::Test {
 protected:
  fs::path at(const std::string& name) const { return directory_.path() / name; }

  // As `plan` has it.
  static PlannedInput planned(const fs::path& path, SourceKind kind) {
    PlannedInput input;
    input.source.found.kind = kind;
    const Outcome<FileSum> sum = SumOfSource(path, kind, kNoBeat);
    EXPECT_TRUE(sum);
    input.sum = *sum;
    if (kind != SourceKind::Store) {
      input.stamp = StampOfSource(path, kind);
      return input;
    }
    const Outcome<std::string> print = PrintOfStore(path);
    EXPECT_TRUE(print);
    input.print = *print;
    return input;
  }

  static bool isSame(const fs::path& path, const PlannedInput& input) {
    const Outcome<bool> same = IsSameInput(path, input, kNoBeat);
    EXPECT_TRUE(same) << same.trouble().reason;
    return *same;
  }

  // Whatever time it had before, it has another one then.
  static void write(const fs::path& path, const std::string& bytes) {
    static auto time = fs::file_time_type::clock::now() - 24h;
    std::ofstream(path, std::ios::binary) << bytes;
    fs::last_write_time(path, time += 1s);
  }

  // At a place, without another size.
  static void change(const fs::path& path, std::streamoff place) {
    std::fstream(path, std::ios::in | std::ios::out | std::ios::binary).seekp(place).put('!');
    fs::last_write_time(path, fs::last_write_time(path) + 1s);
  }

  test::TempDirectory directory_;
};

TEST_F(InputPrintTest, SeesAMaildirsMailThatKeptItsSize) {
  fs::create_directories(at("box/cur"));
  write(at("box/cur/1.a"), "Subject: One\n\n1\n");
  write(at("box/cur/2.a"), "Subject: Two\n\n2\n");
  const PlannedInput input = planned(at("box"), SourceKind::Maildir);
  EXPECT_TRUE(isSame(at("box"), input));
  write(at("box/cur/2.a"), "Subject: Two\n\n3\n");
  EXPECT_FALSE(isSame(at("box"), input));
}

TEST_F(InputPrintTest, SeesAnMboxThatKeptItsSize) {
  write(at("box"), std::string(1 << 20, 'x'));
  const PlannedInput input = planned(at("box"), SourceKind::Mbox);
  change(at("box"), 300'000);
  EXPECT_FALSE(isSame(at("box"), input));
}

// As copies are where nobody kept the times.
TEST_F(InputPrintTest, KnowsMailsAgainThatHaveOtherTimes) {
  fs::create_directories(at("maildir/cur"));
  write(at("maildir/cur/1.a"), "Subject: One\n\n1\n");
  write(at("mbox"), "From a\n\n1\n");
  const PlannedInput maildir = planned(at("maildir"), SourceKind::Maildir);
  const PlannedInput mbox = planned(at("mbox"), SourceKind::Mbox);
  write(at("maildir/cur/1.a"), "Subject: One\n\n1\n");
  write(at("mbox"), "From a\n\n1\n");
  EXPECT_TRUE(isSame(at("maildir"), maildir));
  EXPECT_TRUE(isSame(at("mbox"), mbox));
}

// No sum is asked for: the second one is not even there.
TEST_F(InputPrintTest, ReadsNothingOfWhatHasItsStamp) {
  write(at("mbox"), "From a\n\n1\n");
  PlannedInput input = planned(at("mbox"), SourceKind::Mbox);
  input.sum = {};
  EXPECT_TRUE(isSame(at("mbox"), input));
}

// Its samples, and no stamp: that of a copy is another one, and to read it all is dear.
TEST_F(InputPrintTest, LooksAtSamplesOfAStore) {
  constexpr std::streamoff kSize = std::streamoff{16} << 20;
  write(at("store"), std::string(kSize, 'x'));
  const PlannedInput input = planned(at("store"), SourceKind::Store);
  EXPECT_TRUE(input.print.starts_with("samples-1:"));
  EXPECT_EQ(input.print.size(), 10u + 64u);
  write(at("store"), std::string(kSize, 'x'));
  EXPECT_TRUE(isSame(at("store"), input));
  change(at("store"), (64 << 10) + 1);
  EXPECT_TRUE(isSame(at("store"), input));
  for (const std::streamoff place : {std::streamoff{0}, kSize / 63, kSize / 63 * 62, kSize - 1}) {
    write(at("store"), std::string(kSize, 'x'));
    change(at("store"), place);
    EXPECT_FALSE(isSame(at("store"), input)) << place;
  }
}

TEST_F(InputPrintTest, SaysThatThereIsNoneAnyMore) {
  write(at("mbox"), "From a\n\n1\n");
  write(at("store"), "x");
  fs::create_directories(at("maildir/cur"));
  const PlannedInput inputs[] = {planned(at("mbox"), SourceKind::Mbox),
                                 planned(at("store"), SourceKind::Store),
                                 planned(at("maildir"), SourceKind::Maildir)};
  for (const PlannedInput& input : inputs) {
    EXPECT_FALSE(IsSameInput(at("none"), input, kNoBeat));
  }
}

}  // namespace
}  // namespace tarn::archive
