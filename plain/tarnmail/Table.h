// Table.h - an aligned table for a terminal.
#ifndef TARN_TARNMAIL_TABLE_H
#define TARN_TARNMAIL_TABLE_H

#include <string>
#include <vector>

namespace tarn::host {

struct Column {
  std::string title;
  bool alignRight = false;
  std::vector<std::string> cells;  // as they shall be shown; empty where there is no value
};

// One line a row below a line of titles. All columns have the same number of cells. Columns without
// any value are left out, and a missing value shows as "-". A cell wider than 40 columns stays
// whole and moves the rest of its line, not that of the others. `notes`, if there are any, has for
// each row the lines below it, under the second column.
std::string FormatTable(const std::vector<Column>& columns,
                        const std::vector<std::vector<std::string>>& notes = {});

}  // namespace tarn::host

#endif
