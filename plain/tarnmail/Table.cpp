#include "Table.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "console/Text.h"

namespace tarn::host {
namespace {

constexpr size_t kWidest = 40;
constexpr std::string_view kGap = "  ";

const std::string& Shown(const std::string& cell) {
  static const std::string kMissing = "-";
  return cell.empty() ? kMissing : cell;
}

size_t WidthOf(const Column& column) {
  size_t width = DisplayWidth(column.title);
  for (const std::string& cell : column.cells) {
    width = std::max(width, std::min(DisplayWidth(Shown(cell)), kWidest));
  }
  return width;
}

void AppendCell(std::string& line, const std::string& text, size_t width, bool alignRight) {
  const size_t own = DisplayWidth(text);
  const std::string padding(own < width ? width - own : 0, ' ');
  if (!line.empty()) line += kGap;
  line += alignRight ? padding + text : text + padding;
}

// Ends the line, without the padding of its last cell.
void AppendLine(std::string& table, std::string line) {
  line.erase(line.find_last_not_of(' ') + 1);
  table += line + "\n";
}

}  // namespace

std::string FormatTable(const std::vector<Column>& columns,
                        const std::vector<std::vector<std::string>>& notes) {
  std::vector<const Column*> used;
  for (const Column& column : columns) {
    const auto hasValue = [](const std::string& cell) { return !cell.empty(); };
    if (std::any_of(column.cells.begin(), column.cells.end(), hasValue)) used.push_back(&column);
  }
  if (used.empty()) return "";

  std::vector<size_t> widths;
  widths.reserve(used.size());
  for (const Column* column : used) widths.push_back(WidthOf(*column));

  std::string table;
  std::string line;
  for (size_t i = 0; i < used.size(); ++i) {
    AppendCell(line, used[i]->title, widths[i], used[i]->alignRight);
  }
  AppendLine(table, line);
  const std::string indent(widths[0] + kGap.size(), ' ');
  for (size_t row = 0; row < used[0]->cells.size(); ++row) {
    line.clear();
    for (size_t i = 0; i < used.size(); ++i) {
      AppendCell(line, Shown(used[i]->cells[row]), widths[i], used[i]->alignRight);
    }
    AppendLine(table, line);
    if (row >= notes.size()) continue;
    for (const std::string& note : notes[row]) AppendLine(table, indent + note);
  }
  return table;
}

}  // namespace tarn::host
