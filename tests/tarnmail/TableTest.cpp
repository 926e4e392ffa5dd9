// Aligned tables.

#include "tarnmail/Table.h"

#include <gtest/gtest.h>

namespace tarn::host {
namespace {

TEST(FormatTable, AlignsColumns) {
  EXPECT_EQ(FormatTable({{"No.", true, {"1", "20"}}, {"Name", false, {"a", "long name"}}}),
            "No.  Name\n"
            "  1  a\n"
            " 20  long name\n");
}

TEST(FormatTable, CountsColumnsOfATerminal) {
  EXPECT_EQ(FormatTable({{"N", false, {"会議", "e\u0301"}}, {"S", true, {"1", "22"}}}),
            "N      S\n"
            "会議   1\n"
            "e\u0301     22\n");
}

TEST(FormatTable, LeavesOutEmptyColumnsAndMarksMissingValues) {
  EXPECT_EQ(
      FormatTable({{"A", false, {"x", "y"}}, {"B", false, {"", ""}}, {"C", false, {"", "z"}}}),
      "A  C\n"
      "x  -\n"
      "y  z\n");
}

TEST(FormatTable, LetsALongCellMoveItsOwnLineOnly) {
  const std::string forty(40, 'n');
  EXPECT_EQ(FormatTable({{"N", false, {forty + "n", "a"}}, {"S", false, {"1", "2"}}}),
            "N" + std::string(39, ' ') + "  S\n" + forty + "n  1\n" + "a" + std::string(39, ' ') +
                "  2\n");
}

TEST(FormatTable, PutsNotesBelowTheirRows) {
  const std::vector<Column> columns = {{"No.", true, {"1", "2", "3"}},
                                       {"B", false, {"x", "", "z"}}};
  EXPECT_EQ(FormatTable(columns, {{"one", "two "}, {}, {"three"}}),
            "No.  B\n"
            "  1  x\n"
            "     one\n"
            "     two\n"
            "  2  -\n"
            "  3  z\n"
            "     three\n");
  EXPECT_EQ(FormatTable({{"A", false, {"", "y"}}}, {{"note"}}),
            "A\n"
            "-\n"
            "   note\n"
            "y\n");
}

TEST(FormatTable, OfNothingIsEmpty) {
  EXPECT_EQ(FormatTable({}), "");
  EXPECT_EQ(FormatTable({{"A", false, {}}}), "");
}

}  // namespace
}  // namespace tarn::host
