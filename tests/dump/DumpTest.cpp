// Dumps as scripts/dump.sh makes them: equal wherever and whenever they are made, and different as
// soon as the filter answers otherwise.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>

#include "BadNameMail.h"
#include "PstSamples.h"
#include "support/SampleMails.h"
#include "support/TempDirectory.h"
#include "tarnmail/RunProgram.h"

namespace tarn::test {
namespace {

using Environment = std::vector<std::pair<std::string, std::string>>;

ProgramResult Outcome(const char* program, const std::vector<std::string>& arguments,
                      const Environment& environment = {}) {
  ProgramCall call;
  call.program = program;
  call.arguments = arguments;
  call.environment = environment;
  // What a failing list leaves behind is for the lines of "left" to tell.
  call.environment.emplace_back("ASAN_OPTIONS", "detect_leaks=0");
  return RunProgram(call);
}

// Lines without those of "usage".
std::vector<std::string> Answers(const ProgramResult& result) {
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  std::vector<std::string> lines;
  std::istringstream text(result.out);
  for (std::string line; std::getline(text, line);) {
    if (!line.starts_with("usage\t")) lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> Dump(const TempDirectory& folder, std::vector<std::string> arguments,
                              const Environment& environment = {}) {
  arguments.insert(arguments.begin(), {"--languages", "1", folder.path().string()});
  return Answers(Outcome(TARN_DUMP_ANSWERS, arguments, environment));
}

std::string Field(const std::string& line, int number) {
  std::istringstream text(line);
  std::string field;
  for (int i = 0; i <= number; ++i) std::getline(text, field, '\t');
  return field;
}

TEST(Dump, TheInputsAreTheSameEachTime) {
  const TempDirectory one;
  const TempDirectory other;
  ASSERT_EQ(Outcome(TARN_WRITE_INPUTS, {one.path().string()}).exitStatus, 0);
  ASSERT_EQ(Outcome(TARN_WRITE_INPUTS, {other.path().string()}).exitStatus, 0);
  EXPECT_EQ(one.listing(), other.listing());
  size_t files = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(one.path())) {
    if (!entry.is_regular_file()) continue;
    ++files;
    const std::filesystem::path name = entry.path().lexically_relative(one.path());
    EXPECT_EQ(ReadWholeFile(entry.path()) == ReadWholeFile(other.path() / name), true) << name;
  }
  EXPECT_GT(files, 50U);
}

TEST(Dump, IsTheSameInAnotherPlaceAndZone) {
  const TempDirectory one;
  const TempDirectory other;
  const TempDirectory temp;
  const std::filesystem::path longFolder = other.path() / std::string(60, 'f');
  const std::filesystem::path longTemp = temp.path() / std::string(60, 't');
  std::filesystem::create_directory(longTemp);
  ASSERT_EQ(Outcome(TARN_WRITE_INPUTS, {one.path().string()}).exitStatus, 0);
  ASSERT_EQ(Outcome(TARN_WRITE_INPUTS, {longFolder.string()}).exitStatus, 0);

  const std::string large = "faults/EmlExtractBig.eml";
  for (const auto& folder : {one.path(), longFolder}) {
    ASSERT_TRUE(std::filesystem::remove(folder / large));
    ASSERT_TRUE(std::filesystem::remove(folder / "faults/MsgBigBody.msg"));
  }
  const auto first = Answers(
      Outcome(TARN_DUMP_ANSWERS, {"--languages", "1", one.path().string()}, {{"TZ", "UTC0"}}));
  const auto second = Answers(Outcome(TARN_DUMP_ANSWERS, {"--languages", "1", longFolder.string()},
                                      {{"TZ", "IST-5:30"}, {"TMPDIR", longTemp.string()}}));
  ASSERT_EQ(first.size(), second.size());
  EXPECT_GT(first.size(), 3000U);
  for (size_t i = 0; i < first.size(); ++i) ASSERT_EQ(first[i], second[i]);
}

TEST(Dump, ShowsAByteOfTheBodyInEveryCallThatGivesTheBody) {
  const TempDirectory one;
  const TempDirectory other;
  std::string changed = kHtmlMail;
  changed[changed.rfind("Hi")] = 'h';
  one.write("mail", kHtmlMail);
  other.write("mail", changed);
  const std::vector<std::string> before = Dump(one, {});
  const std::vector<std::string> after = Dump(other, {});
  ASSERT_EQ(before.size(), after.size());
  std::set<std::string> differing;
  std::set<std::string> same;
  for (size_t i = 0; i < before.size(); ++i) {
    (before[i] == after[i] ? same : differing).insert(Field(before[i], 1));
  }
  EXPECT_EQ(differing, (std::set<std::string>{"info", "load", "info at 72 dpi", "info refused",
                                              "load to a target", "info bare", "load bare",
                                              "info anew", "load anew"}));
  for (const std::string& call : differing) EXPECT_EQ(same.count(call), 0U) << call;
}

TEST(Dump, MakesTheCallsInTheirOrder) {
  const TempDirectory folder;
  folder.write("mail", kImageMail);
  std::vector<std::string> rich;
  std::vector<std::string> text;
  for (const std::string& line : Dump(folder, {"mail"})) {
    if (Field(line, 2) == "1 files en rich") rich.push_back(Field(line, 1));
    if (Field(line, 2) == "1 files en text") text.push_back(Field(line, 1));
  }
  const std::vector<std::string> documents = {"info",
                                              "load",
                                              "info again",
                                              "info at 72 dpi",
                                              "info refused",
                                              "load to a target",
                                              "free with a value",
                                              "free",
                                              "info bare",
                                              "load bare",
                                              "free bare",
                                              "info anew",
                                              "load anew"};
  EXPECT_EQ(text, documents);
  std::vector<std::string> all = documents;
  for (const char* const call : {"list", "extract 1", "extract 1 to file", "extract 2",
                                 "extract 2 to file", "extract 3", "extract 3 to file"}) {
    all.emplace_back(call);
  }
  EXPECT_EQ(rich, all);
}

TEST(Dump, AsksForEveryMessageAndForOneMore) {
  const TempDirectory folder;
  folder.write("store", SampleStore(PstLayout::Unicode));
  folder.write("mail", kPlainMail);
  const auto asked = [&folder](std::vector<std::string> arguments) {
    std::set<std::string> messages;
    for (const std::string& line : Dump(folder, std::move(arguments))) {
      messages.insert(Field(line, 2));
    }
    return messages;
  };
  const auto expected = [](int32_t last) {
    std::set<std::string> messages;
    for (int32_t message = 1; message <= last; ++message) {
      for (const char* const rest :
           {" files en rich", " files en text", " memory en rich", " memory en text"}) {
        messages.insert(std::to_string(message) + rest);
      }
    }
    return messages;
  };
  // The store's folders claim six.
  EXPECT_EQ(asked({"store"}), expected(7));
  EXPECT_EQ(asked({"--messages", "2", "store"}), expected(2));
  EXPECT_EQ(asked({"mail"}), expected(1));
}

// A list that fails half way leaves what its items own.
TEST(Dump, TellsWhatIsLeftBehind) {
  const TempDirectory folder;
  folder.write("mail", BadNameMail());
  std::set<std::string> left;
  std::set<std::string> lists;
  for (const std::string& line : Dump(folder, {"mail"})) {
    if (Field(line, 0) == "left") left.insert(Field(line, 2) + ": " + Field(line, 3));
    if (Field(line, 1) == "list") lists.insert(Field(line, 3));
  }
  EXPECT_EQ(lists, (std::set<std::string>{"0"}));
  EXPECT_EQ(left,
            (std::set<std::string>{"1 files en rich: blocks 3 ", "1 memory en rich: blocks 3 "}));
}

TEST(Dump, NamesWhatTheCallsAnswer) {
  const TempDirectory folder;
  folder.write("image.eml", kImageMail);
  folder.write("eleven", "From: a@b.c");
  std::set<std::string> outcomes;
  for (const std::string& line : Dump(folder, {"image.eml", "eleven"})) {
    outcomes.insert(Field(line, 0) + " " + Field(line, 1) + " " + Field(line, 3));
  }
  EXPECT_EQ(outcomes.count("image.eml info refused -1863"), 1U);
  EXPECT_EQ(outcomes.count("image.eml extract 2 to file 1"), 1U);
  EXPECT_EQ(outcomes.count("image.eml extract 3 to file 1"), 1U);
  EXPECT_EQ(outcomes.count("image.eml extract 4 1"), 0U);
  EXPECT_EQ(outcomes.count("eleven load anew -7"), 1U);
  EXPECT_EQ(outcomes.count("eleven list -7"), 1U);
}

TEST(Dump, WritesTheAnswersThemselves) {
  const TempDirectory folder;
  const TempDirectory out;
  folder.write("plain.eml", kPlainMail);
  const std::filesystem::path raw = out.path() / "raw";
  EXPECT_TRUE(Dump(folder, {"--raw", raw.string()}).empty());
  const std::string text = ReadWholeFile(raw);
  // The document counts a NUL after its text.
  const std::string document =
      "document " + std::to_string(kPlainMailDocument.size() + 1) + "\n" + kPlainMailDocument;
  EXPECT_NE(text.find("plain.eml\tinfo\t1 files en rich\t1\n" + document + '\0' + "\ninfo"),
            std::string::npos);
}

}  // namespace
}  // namespace tarn::test
