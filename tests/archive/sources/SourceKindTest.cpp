#include "archive/sources/SourceKind.h"

#include <gtest/gtest.h>

#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

using Kind = std::optional<SourceKind>;

std::string Utf16(std::string_view text, bool bigEndian) {
  std::string bytes = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
  for (const char letter : text) {
    if (bigEndian) bytes += '\0';
    bytes += letter;
    if (!bigEndian) bytes += '\0';
  }
  return bytes;
}

TEST(SourceKind, IsToldByTheFirstBytesOfStoresMsgFilesAndTnef) {
  EXPECT_EQ(KindOfBeginning("!BDN\x01\x02"), SourceKind::Store);
  EXPECT_EQ(KindOfBeginning("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1rest"), SourceKind::Compound);
  EXPECT_EQ(KindOfBeginning("\x78\x9F\x3E\x22\x01"), SourceKind::Tnef);
  EXPECT_EQ(KindOfBeginning("!BD"), Kind());
  EXPECT_EQ(KindOfBeginning("\xD0\xCF\x11\xE0"), Kind());
  EXPECT_EQ(KindOfBeginning(""), Kind());
}

TEST(SourceKind, KnowsMailByItsHeader) {
  for (const char* mail :
       {"From: a@b\r\n\r\ntext", "Subject: x", "subject:x\n", "X-Other: 1\nTo: a\n\n",
        "Received: by x\n\tfor y\nFrom: z\n", "X-Long: 1\n folded\n more\nMIME-Version: 1.0\n",
        "\xEF\xBB\xBF"
        "Date: today\n",
        "\r\n\n  \t\nFrom: a\n", "From : a@b\n", "From \t: a@b\nX: y\n", ">From ann Mon\nFrom: a\n",
        "From: a\rTo: b\r", "Content-Type: text/plain\n\nx",
        "X-A: 1\nx-folder: y\nContent-Disposition: inline\n\nx", "X-A: 1\n y\nx-b: 2\n\nx"}) {
    EXPECT_EQ(KindOfBeginning(mail), SourceKind::Mail) << mail;
  }
  EXPECT_EQ(KindOfBeginning(Utf16("From: a\r\n\r\n", false)), SourceKind::Mail);
  EXPECT_EQ(KindOfBeginning(Utf16("From: a\r\n\r\n", true)), SourceKind::Mail);
}

TEST(SourceKind, TakesNoOtherTextForMail) {
  for (const char* text :
       {"Hello\nFrom: a\n", "key: value\nother: value\n\nFrom: a\n", "// C++\nint main() {}\n",
        "<html><body>From: x", "# title\nSubject: x", " folded\n",
        "\xD6"
        "bjekt: x\nFrom: a\n",
        ": nothing\nFrom: a\n", "name: x\n", "X-A: 1\nname: x\n\n", "X-A: 1\n", "X-: 1\n\n",
        "\n\n\n", "   "}) {
    EXPECT_EQ(KindOfBeginning(text), Kind()) << text;
  }
  EXPECT_EQ(KindOfBeginning("X-" + std::string(300, 'a') + ": 1\nFrom: a\n"), Kind());
}

TEST(SourceKind, KnowsMboxesByTheLineBeforeAMail) {
  const std::string line = "From ann@example.com Wed May  1 12:34:56 2024\n";
  EXPECT_EQ(KindOfBeginning(line + "From: a\n\ntext"), SourceKind::Mbox);
  EXPECT_EQ(KindOfBeginning("\n\r\n" + line + "X-Other: 1\r\nSubject: a\r\n"), SourceKind::Mbox);
  EXPECT_EQ(KindOfBeginning(line + ">From x\n>From y\nTo: a\n"), SourceKind::Mbox);
  EXPECT_EQ(KindOfBeginning("From here to there\nwe went: far\n"), Kind());
  EXPECT_EQ(KindOfBeginning(line), Kind());
  EXPECT_EQ(KindOfBeginning(line + "\nno header\n"), SourceKind::Mbox);
  EXPECT_EQ(KindOfBeginning(line + "broken\nFrom: a\n"), SourceKind::Mbox);
  EXPECT_EQ(KindOfBeginning(line + "broken\nand so on\nFrom: a\n"), Kind());
  EXPECT_EQ(KindOfBeginning("From here\n\ntext\n"), Kind());
  EXPECT_EQ(KindOfBeginning("From here\nbroken\nFrom: a\n"), Kind());
}

TEST(SourceKind, IsReadFromAFile) {
  const test::TempDirectory directory;
  const Outcome<Kind> mail = KindOfFile(directory.write("a", "From: a\n"));
  ASSERT_TRUE(mail);
  EXPECT_EQ(*mail, SourceKind::Mail);
  const Outcome<Kind> far = KindOfFile(
      directory.write("b", "X-Long: " + std::string(kTellingBytes, 'x') + "\nFrom: a\n"));
  ASSERT_TRUE(far);
  EXPECT_EQ(*far, SourceKind::Mail);
  const Outcome<Kind> farther = KindOfFile(
      directory.write("c", "X-Long: " + std::string(kLongestHeader, 'x') + "\nFrom: a\n"));
  ASSERT_TRUE(farther);
  EXPECT_EQ(*farther, Kind());
  const Outcome<Kind> missing = KindOfFile(directory.path() / "none");
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.trouble().kind, TroubleKind::Missing);
}

TEST(SourceNames, AreThoseOfMailFilesInEitherCase) {
  for (const char* name : {"a.pst", "A.PST", "b.ost", "c.msg", "d.eml", "e.emlx", "f.mbox",
                           "in/g.Mbx", "winmail.dat", "in/WINMAIL.DAT", ".pst"}) {
    EXPECT_TRUE(IsNamedAsMail(name)) << name;
  }
  for (const char* name :
       {"pst", "a.pst.txt", "a.msg~", "mail.dat", "awinmail.dat", "._a.pst", "a.pst/b", ""}) {
    EXPECT_FALSE(IsNamedAsMail(name)) << name;
  }
}

}  // namespace
}  // namespace tarn::archive
