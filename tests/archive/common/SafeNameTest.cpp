#include "archive/common/SafeName.h"

#include <gtest/gtest.h>

#include "archive/common/FoldedText.h"

namespace tarn::archive {
namespace {

std::string Safe(std::string_view name) { return SafeName(name, "attachment-1"); }

std::string Repeated(std::string_view text, size_t count) {
  std::string all;
  while (count-- != 0) all += text;
  return all;
}

TEST(SafeName, KeepsUsualNames) {
  EXPECT_EQ(Safe("report.pdf"), "report.pdf");
  EXPECT_EQ(Safe("Übersicht 2024 – Ñandú.tar.gz"), "Übersicht 2024 – Ñandú.tar.gz");
  EXPECT_EQ(Safe("日本語.txt"), "日本語.txt");
  EXPECT_EQ(Safe("😀 party.png"), "😀 party.png");
}

TEST(SafeName, LeadsNowhere) {
  EXPECT_EQ(Safe("../../x"), "_.._x");
  EXPECT_EQ(Safe("/etc/passwd"), "_etc_passwd");
  EXPECT_EQ(Safe("C:\\Windows\\win.ini"), "C__Windows_win.ini");
  EXPECT_EQ(Safe("a/b\\c"), "a_b_c");
  EXPECT_EQ(Safe("stream.txt:hidden"), "stream.txt_hidden");
  EXPECT_EQ(Safe("*?\"<>|"), "______");
}

TEST(SafeName, HasNoControlCharactersAndNothingThatTurnsWriting) {
  EXPECT_EQ(Safe("a\nb\x1B[31mc\x7F"), "a_b_[31mc_");
  EXPECT_EQ(Safe(std::string_view("a\0b", 3)), "a_b");
  EXPECT_EQ(Safe("x\u0085y"), "x_y");
  EXPECT_EQ(Safe("invoice\u202Efdp.exe"), "invoicefdp.exe");
  EXPECT_EQ(Safe("a\u200B\u2066\uFEFF\u061C\u2028z"), "az");
  EXPECT_EQ(Safe("a\xFFz"), "a_z");
}

TEST(SafeName, BeginsAndEndsPlainly) {
  EXPECT_EQ(Safe("-rf"), "rf");
  EXPECT_EQ(Safe("--.  .hidden"), "hidden");
  EXPECT_EQ(Safe(".bashrc"), "bashrc");
  EXPECT_EQ(Safe("name. . ."), "name");
  EXPECT_EQ(Safe("\u202E-x"), "x");
}

TEST(SafeName, IsSomethingWhereNothingIsLeft) {
  EXPECT_EQ(Safe(""), "attachment-1");
  EXPECT_EQ(Safe(".."), "attachment-1");
  EXPECT_EQ(Safe(" .-. "), "attachment-1");
  EXPECT_EQ(Safe("\u200B"), "attachment-1");
}

TEST(SafeName, NamesNoDevice) {
  EXPECT_EQ(Safe("CON"), "_CON");
  EXPECT_EQ(Safe("nul.txt"), "_nul.txt");
  EXPECT_EQ(Safe("Com1.log.txt"), "_Com1.log.txt");
  EXPECT_EQ(Safe("LPT\u00B9"), "_LPT\u00B9");
  EXPECT_EQ(Safe("aux .c"), "_aux .c");
  EXPECT_EQ(Safe("conin$"), "_conin$");
  EXPECT_EQ(Safe("ＣＯＮ"), "_ＣＯＮ");
  EXPECT_EQ(Safe("console"), "console");
  EXPECT_EQ(Safe("com10"), "com10");
  EXPECT_EQ(Safe("icon"), "icon");
}

TEST(SafeName, IsCutBetweenCharactersAndBeforeItsExtension) {
  const std::string cut = Safe(std::string(300, 'a') + ".pdf");
  EXPECT_EQ(cut, std::string(116, 'a') + ".pdf");
  EXPECT_EQ(Safe(Repeated("日", 100) + ".txt"), Repeated("日", 38) + ".txt");
  EXPECT_EQ(Safe(std::string(300, 'a')), std::string(120, 'a'));
  EXPECT_EQ(Safe("a." + std::string(300, 'b')), "a." + std::string(118, 'b'));
  EXPECT_EQ(Safe(std::string(114, 'a') + "  . " + std::string(10, 'b') + ".pdf"),
            std::string(114, 'a') + ".pdf");
  EXPECT_EQ(Safe(std::string(120, 'a')), std::string(120, 'a'));
  EXPECT_EQ(Safe(std::string(100000, 'a') + ".pdf"), std::string(116, 'a') + ".pdf");
}

// Whatever comes in, the same holds for what comes out; and it is its own safe name.
TEST(SafeName, HoldsWhatItPromisesForAnyBytes) {
  uint32_t state = 1;
  const auto next = [&state] { return (state = state * 1664525 + 1013904223) >> 24; };
  const std::string_view pieces[] = {"..", "/",  "\\", "CON", ".",         " ",      "-",
                                     "é",  "日", "😀",  "\n",  "\xC3",      "\u202E", "\u200B",
                                     "a",  "b",  ":",  "1",   "lpt\u00B2", "~",      "txt"};
  for (int round = 0; round < 20000; ++round) {
    std::string name;
    for (uint32_t count = next() % 40; count != 0; --count) {
      name += pieces[next() % std::size(pieces)];
    }
    const std::string safe = Safe(name);
    ASSERT_FALSE(safe.empty()) << name;
    ASSERT_LE(safe.size(), kLongestSafeName) << name;
    ASSERT_EQ(safe.find_first_of(std::string_view("/\\:*?\"<>|\n\0", 11)), std::string::npos);
    ASSERT_TRUE(safe[0] != '.' && safe[0] != '-' && safe[0] != ' ') << name;
    ASSERT_TRUE(safe.back() != '.' && safe.back() != ' ') << name;
    ASSERT_EQ(Safe(safe), safe) << name;
  }
}

TEST(UniqueNames, GivesEachNameOnce) {
  UniqueNames names;
  EXPECT_EQ(names.make("a.txt"), "a.txt");
  EXPECT_EQ(names.make("a.txt"), "a (2).txt");
  EXPECT_EQ(names.make("A.TXT"), "A (3).TXT");
  EXPECT_EQ(names.make("b"), "b");
  EXPECT_EQ(names.make("B"), "B (2)");
}

// Tries from the first number on for each would not end.
TEST(UniqueNames, GivesManyEqualNames) {
  UniqueNames names;
  const std::string name(kLongestSafeName, 'a');
  names.make(name);
  const int last = 200000;
  for (int number = 2; number < last; ++number) names.make(number % 2 == 0 ? "b.txt" : name);
  EXPECT_EQ(names.make("B.txt"), "B (" + std::to_string(last / 2) + ").txt");
  EXPECT_EQ(names.make(name),
            name.substr(0, kLongestSafeName - 9) + " (" + std::to_string(last / 2 + 1) + ")");
}

TEST(UniqueNames, TellsNamesApartAsFileSystemsDo) {
  UniqueNames names;
  EXPECT_EQ(names.make("M\u00FCller"), "M\u00FCller");
  EXPECT_EQ(names.make("mu\u0308ller"), "mu\u0308ller (2)");
  names.take("Taken (2).pdf");
  names.take("taken.pdf");
  EXPECT_EQ(names.make("TAKEN.pdf"), "TAKEN (3).pdf");
}

TEST(UniqueNames, KeepsToTheLength) {
  UniqueNames names;
  const std::string name = std::string(116, 'a') + ".pdf";
  EXPECT_EQ(names.make(name), name);
  EXPECT_EQ(names.make(name), std::string(112, 'a') + " (2).pdf");
  const std::string wide = Repeated("日", 40);
  EXPECT_EQ(names.make(wide), wide);
  EXPECT_EQ(names.make(wide), Repeated("日", 38) + " (2)");
}

TEST(SafeNameTest, GivesNoDeviceWhereTheEndIsCutOff) {
  EXPECT_EQ(Safe("con" + std::string(130, ' ') + "x"), "_con");
  EXPECT_EQ(Safe("aux" + std::string(130, ' ') + "y.txt"), "_aux.txt");
}

TEST(SafeNameTest, LeavesOutWhatNobodySees) {
  for (const char* const unseen :
       {"\xC2\xAD", "\xE1\xA0\x8E", "\xF3\xA0\x81\x81", "\xE3\x85\xA4"}) {
    EXPECT_EQ(Safe(unseen), "attachment-1");
    EXPECT_EQ(Safe(std::string("a") + unseen + "b.txt"), "ab.txt");
  }
}

}  // namespace
}  // namespace tarn::archive
