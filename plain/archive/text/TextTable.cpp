#include "archive/text/TextTable.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "archive/text/TerminalText.h"

namespace tarn::archive {
namespace {

constexpr std::string_view kBetween = " | ";
constexpr size_t kGap = 2;  // between aligned columns
constexpr size_t kShortCell = 30;
constexpr size_t kWidestAligned = 200;

// A cell that is one line, or nothing.
bool IsSimple(const TextCell& cell, const std::string& prefix) {
  if (cell.empty()) return true;
  return cell.size() == 1 && !cell[0].isAsIs && cell[0].prefix == prefix &&
         cell[0].firstPrefix == prefix && cell[0].text.find('\n') == std::string::npos;
}

std::string_view TextOf(const TextCell& cell) {
  return cell.empty() ? std::string_view() : std::string_view(cell[0].text);
}

// How a row is shown.
enum class RowKind : uint8_t { Empty, Single, Line, Blocks };

RowKind KindOf(const TextRow& row, const std::string& prefix, size_t width) {
  size_t filled = 0;
  size_t longCells = 0;
  size_t columns = 0;
  bool isSimple = true;
  for (const TextCell& cell : row.cells) {
    if (cell.empty()) continue;
    ++filled;
    if (!IsSimple(cell, prefix)) {
      isSimple = false;
      continue;
    }
    const size_t own = Columns(TextOf(cell));
    columns += own + kBetween.size();
    if (own > kShortCell) ++longCells;
  }
  if (filled == 0) return RowKind::Empty;
  if (filled == 1) return isSimple ? RowKind::Single : RowKind::Blocks;
  const bool fits = width == 0 || columns <= width + kBetween.size();
  return isSimple && (fits || longCells <= 1) ? RowKind::Line : RowKind::Blocks;
}

// The width of each column; nothing where the table cannot be aligned.
std::vector<size_t> ColumnWidths(const std::vector<TextRow>& rows,
                                 const std::vector<RowKind>& kinds, size_t width) {
  std::vector<size_t> widths;
  size_t lines = 0;
  for (size_t at = 0; at < rows.size(); ++at) {
    if (kinds[at] == RowKind::Empty) continue;
    if (kinds[at] == RowKind::Blocks || rows[at].hasWideCells) return {};
    if (kinds[at] == RowKind::Line) ++lines;
    widths.resize(std::max(widths.size(), rows[at].cells.size()));
    for (size_t column = 0; column < rows[at].cells.size(); ++column) {
      widths[column] = std::max(widths[column], Columns(TextOf(rows[at].cells[column])));
    }
  }
  size_t total = 0;
  for (const size_t one : widths) total += one == 0 ? 0 : one + kGap;
  const size_t most = width == 0 ? kWidestAligned : std::min(width, kWidestAligned);
  if (lines < 2 || total > most + kGap) return {};
  return widths;
}

std::string AlignedLine(const TextRow& row, const std::vector<size_t>& widths) {
  std::string line;
  size_t missing = 0;  // columns between what is there and where the next cell begins
  for (size_t column = 0; column < row.cells.size(); ++column) {
    if (widths[column] == 0) continue;
    const std::string_view text = TextOf(row.cells[column]);
    if (!text.empty()) {
      line.append(missing, ' ');
      line += text;
      missing = 0;
    }
    missing += widths[column] - Columns(text) + kGap;
  }
  return line;
}

std::string JoinedLine(const TextRow& row) {
  std::string line;
  for (const TextCell& cell : row.cells) {
    if (cell.empty()) continue;
    if (!line.empty()) line += kBetween;
    line += TextOf(cell);
  }
  return line;
}

}  // namespace

std::vector<TextParagraph> ParagraphsOfTable(std::vector<TextRow> rows, const std::string& prefix,
                                             size_t width) {
  std::vector<RowKind> kinds;
  kinds.reserve(rows.size());
  for (const TextRow& row : rows) kinds.push_back(KindOf(row, prefix, width));
  const std::vector<size_t> widths = ColumnWidths(rows, kinds, width);
  std::vector<TextParagraph> paragraphs;
  for (size_t at = 0; at < rows.size(); ++at) {
    const bool isLine = kinds[at] == RowKind::Line;
    if (isLine || (kinds[at] == RowKind::Single && !widths.empty())) {
      std::string line = widths.empty() ? JoinedLine(rows[at]) : AlignedLine(rows[at], widths);
      const bool isFirst = paragraphs.empty() && !widths.empty();
      paragraphs.push_back({std::move(line), prefix, prefix, !widths.empty(), isFirst});
      continue;
    }
    for (TextCell& cell : rows[at].cells) {
      std::move(cell.begin(), cell.end(), std::back_inserter(paragraphs));
    }
  }
  return paragraphs;
}

}  // namespace tarn::archive
