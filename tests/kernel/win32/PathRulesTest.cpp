#include "PathRules.h"

#include <gtest/gtest.h>

#include "FileKinds.h"
#include "NativePath.h"

namespace tarn::kernel {
namespace {

TEST(PathRules, OneSpellingForOneFile) {
  EXPECT_EQ(OneSpelling("C:\\tmp\\a"), "C:/TMP/A");
  EXPECT_EQ(OneSpelling("c:/TMP\\\\./A"), "C:/TMP/A");
  EXPECT_EQ(OneSpelling("\\tmp\\a"), "/TMP/A");
  EXPECT_EQ(OneSpelling("a\\b"), "A/B");
  EXPECT_EQ(OneSpelling("./a"), "A");
  EXPECT_EQ(OneSpelling("/"), "/");
  EXPECT_EQ(OneSpelling("C:\\"), "C:/");
  EXPECT_EQ(OneSpelling(""), "");
}

TEST(PathRules, CasesOfEveryAlphabetAreOne) {
  EXPECT_EQ(OneSpelling("\xC3\xA4\xCF\x89\xD0\xB6"), "\xC3\x84\xCE\xA9\xD0\x96");
  EXPECT_EQ(OneSpelling("\xC3\x9F"), "\xC3\x9F");  // no letter becomes two
}

TEST(PathRules, ADriveWithoutSeparatorIsAnotherPlace) {
  EXPECT_EQ(OneSpelling("c:x"), "C:X");
  EXPECT_EQ(OneSpelling("c:\\x"), "C:/X");
  EXPECT_EQ(OneSpelling("c:.\\x"), "C:X");
}

TEST(PathRules, ServersKeepTheirTwoSeparators) {
  EXPECT_EQ(OneSpelling("\\\\server\\share\\a"), "//SERVER/SHARE/A");
  EXPECT_EQ(OneSpelling("//server/share//a"), "//SERVER/SHARE/A");
  EXPECT_EQ(OneSpelling("/server/share/a"), "/SERVER/SHARE/A");
}

TEST(PathRules, ThePrefixOfLongPathsIsNoPartOfTheName) {
  EXPECT_EQ(OneSpelling("\\\\?\\C:\\a"), "C:/A");
  EXPECT_EQ(OneSpelling("\\\\?\\UNC\\server\\share\\a"), "//SERVER/SHARE/A");
  EXPECT_EQ(WithoutVerbatimPrefix("\\\\?\\unc\\s\\a"), "\\\\s\\a");
  for (const char* const other :
       {"\\\\?\\UNCLE", "\\\\?\\Volume{1}\\a", "\\\\?\\C:", "\\\\?\\C:a", "\\\\?\\"}) {
    EXPECT_EQ(WithoutVerbatimPrefix(other), other);
    EXPECT_FALSE(MayNameTemporary(other)) << other;
  }
  EXPECT_EQ(WithoutVerbatimPrefix("//?/C:/a"), "C:/a");
  EXPECT_EQ(WithoutVerbatimPrefix("\\\\?"), "\\\\?");
}

TEST(PathRules, PeriodsAndBlanksAtTheEndAreNothing) {
  EXPECT_EQ(OneSpelling("a.\\b. ."), "A/B");
  EXPECT_EQ(OneSpelling("C:\\a\\b.. ."), "C:/A/B");
  EXPECT_EQ(OneSpelling(".a"), ".A");
  EXPECT_EQ(OneSpelling(" a"), " A");
}

TEST(PathRules, OfAnInnerComponentOnlyASinglePeriodIsNothing) {
  EXPECT_EQ(OneSpelling("a.\\.\\b.\\c"), "A/B/C");
  EXPECT_EQ(OneSpelling("a .\\b"), "A /B");
  EXPECT_EQ(OneSpelling("a..\\b"), "A../B");
  EXPECT_EQ(OneSpelling("a \\b"), "A /B");
  EXPECT_EQ(OneSpelling("a. /b"), "A. /B");
  EXPECT_EQ(OneSpelling(" \\b"), " /B");
}

TEST(PathRules, WithoutANameAtTheEndItIsADirectory) {
  for (const char* const name :
       {"a\\", "a/", "a\\.", "a\\ ", "a/ . ", ".", " ", "C:", "C:\\", "C:.", "\\\\?\\C:\\",
        "\\\\?\\C:\\a\\", "\\", "\\\\server\\share\\"}) {
    EXPECT_FALSE(MayNameTemporary(name)) << name;
    EXPECT_TRUE(MayHoldTemporaries(name)) << name;
  }
  for (const char* const name : {"", "..\\", "\\\\?\\C:", "NUL\\", "ab:b\\", "\\\\.\\"}) {
    EXPECT_FALSE(MayNameTemporary(name)) << name;
    EXPECT_FALSE(MayHoldTemporaries(name)) << name;
  }
}

TEST(PathRules, OthersFindAFileByTheNameWithoutThePrefix) {
  EXPECT_EQ(SpellingForOthers("C:/a/.\\b."), "C:/a/.\\b.");
  EXPECT_EQ(SpellingForOthers("\\\\?\\C:/a\\.\\b"), "C:/a\\.\\b");
  EXPECT_EQ(SpellingForOthers("\\\\?\\UNC\\server\\share\\a"), "\\\\server\\share\\a");
  const std::string name(200, 'n');
  EXPECT_EQ(SpellingForOthers("C:\\" + name + "/./" + name), "C:\\" + name + "/./" + name);
  EXPECT_EQ(SpellingForOthers("\\\\?\\C:\\" + name + "/./" + name),
            "\\\\?\\C:\\" + name + "\\" + name);
}

TEST(FileKinds, WithoutItsOnlyMarkAFileIsNormal) {
  EXPECT_EQ(WithoutReadOnlyMark(FILE_ATTRIBUTE_READONLY), DWORD{FILE_ATTRIBUTE_NORMAL});
  EXPECT_EQ(WithoutReadOnlyMark(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN),
            DWORD{FILE_ATTRIBUTE_HIDDEN});
  EXPECT_EQ(WithoutReadOnlyMark(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_NORMAL),
            DWORD{FILE_ATTRIBUTE_NORMAL});
}

TEST(PathRules, PeriodsAloneClimb) {
  for (const char* const name :
       {"..", "...", ".. ", ". .", "a\\..", "a/... /b", "C:..", "C:..\\a"}) {
    EXPECT_TRUE(ClimbsUp(name)) << name;
    EXPECT_FALSE(MayNameTemporary(name)) << name;
  }
  for (const char* const name : {"a..", "..a", ".\\a", "a. ."}) {
    EXPECT_FALSE(ClimbsUp(name)) << name;
    EXPECT_TRUE(MayNameTemporary(name)) << name;
  }
}

TEST(PathRules, StreamsAreNoTemporaryFiles) {
  for (const char* const name : {"ab:b", "a::$DATA", "C:\\a:b", "C:a:b", "C:\\a\\C:\\b",
                                 "\\\\?\\C:\\a:b", ":a", "::", "1:a"}) {
    EXPECT_FALSE(MayNameTemporary(name)) << name;
  }
  for (const char* const name : {"C:\\a", "c:a", "\\\\?\\C:\\a", "\\\\server\\share\\a"}) {
    EXPECT_TRUE(MayNameTemporary(name)) << name;
  }
}

TEST(PathRules, DevicesAreNoTemporaryFiles) {
  for (const char* const name :
       {"NUL", "nul", "C:\\dir\\nul", "dir/CON", "prn.html", "AUX .txt", "aux..png", "COM1",
        "com9.a.b", "LPT1", "COM\xC2\xB2", "lpt\xC2\xB9.x", "CONIN$", "conout$", "NUL\\a",
        "\\\\.\\C:\\a", "//./pipe/a", "\\\\.", "\\\\?\\C:\\NUL"}) {
    EXPECT_FALSE(MayNameTemporary(name)) << name;
  }
  for (const char* const name : {"NULL", "CO", "COM", "COM0", "COM10", "LPT", "xNUL", "a.NUL",
                                 "\xC3\xA4ux", "COM\xC2\xB4", ".NUL"}) {
    EXPECT_TRUE(MayNameTemporary(name)) << name;
  }
}

TEST(PathRules, CharactersThatNoNameHoldsAreRefused) {
  for (const char* const name :
       {"a?", "a*", "a<", "a>", "a|", "a\"", "a\tb", "\x01", "\\??\\C:\\a"}) {
    EXPECT_FALSE(MayNameTemporary(name)) << name;
  }
  EXPECT_FALSE(MayNameTemporary(""));
  EXPECT_FALSE(MayNameTemporary("\\\\?\\"));
  EXPECT_TRUE(MayNameTemporary("a b'#%&{}$!`@+=,;^~[]()-_"));
}

TEST(PathRules, LongPathsGetThePrefixAndShortOnesStay) {
  const std::string name(200, 'n');
  EXPECT_EQ(TemporaryPath("C:\\a/b"), u"C:\\a/b");
  EXPECT_EQ(HostPath("a/../b"), u"a/../b");
  const std::u16string wide(200, u'n');
  EXPECT_EQ(HostPath("C:\\x/" + name + "\\..\\" + name + "/./" + name),
            u"\\\\?\\C:\\x\\" + wide + u"\\" + wide);
  EXPECT_EQ(TemporaryPath("\\\\server\\share/" + name + "/" + name),
            u"\\\\?\\UNC\\server\\share\\" + wide + u"\\" + wide);
  EXPECT_EQ(TemporaryPath("\\\\?\\C:\\" + name + "/" + name), u"\\\\?\\C:\\" + wide + u"\\" + wide);
  EXPECT_EQ(HostPath("\\\\?\\C:\\" + name + "/" + name), u"\\\\?\\C:\\" + wide + u"/" + wide);
  EXPECT_EQ(HostPath("\\\\.\\" + name + name), u"\\\\.\\" + wide + wide);
  EXPECT_EQ(HostPath("bad\xFF"), u"");
  EXPECT_EQ(TemporaryPath(""), u"");
}

}  // namespace
}  // namespace tarn::kernel
