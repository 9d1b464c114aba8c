#include "ui/cli/table.h"

#include <algorithm>
#include <numeric>

#include "reports/keyword_forms.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

constexpr std::size_t gap = 2;
constexpr std::size_t leastWidth = 6;  // of a column that is cut: five signs and the ellipsis

std::size_t tableWidth(const std::vector<std::size_t>& widths) {
  const std::size_t gaps = widths.empty() ? 0 : gap * (widths.size() - 1);
  return std::accumulate(widths.begin(), widths.end(), gaps);
}

std::string ruleOf(std::size_t width) {
  std::string rule;
  for (std::size_t i = 0; i < width; ++i) rule += "─";
  return rule;
}

}  // namespace

Table::Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

void Table::addRow(std::vector<Cell> cells) {
  cells.resize(columns_.size());
  lines_.push_back({.isRule = false, .cells = std::move(cells)});
  ++rows_;
}

void Table::addRule() {
  lines_.push_back({.isRule = true, .cells = {}});
}

void Table::addTotal(std::vector<Cell> cells) {
  for (Cell& cell : cells) cell.ink = ink::bold | cell.ink;
  addRule();
  addRow(std::move(cells));
}

std::string Table::render(const Style& style, std::size_t width) const {
  std::vector<std::size_t> widths = naturalWidths();
  if (width > 0) fit(widths, width);
  return renderHeadings(widths, style) + renderLines(widths, style);
}

std::string Table::renderPart(const Style& style, std::size_t width) {
  std::string text;
  if (widths_.empty()) {
    widths_ = naturalWidths();
    if (width > 0) fit(widths_, width);
    text = renderHeadings(widths_, style);
  }
  text += renderLines(widths_, style);
  lines_.clear();
  return text;
}

std::string Table::renderHeadings(const std::vector<std::size_t>& widths, const Style& style) const {
  const auto hasTitle = [](const Column& column) { return !column.title.empty(); };
  if (!std::any_of(columns_.begin(), columns_.end(), hasTitle)) return {};
  std::vector<Cell> titles;
  for (const Column& column : columns_) titles.emplace_back(column.title, ink::bold);
  return renderLine(titles, widths, style) + style.dim(ruleOf(tableWidth(widths))) + '\n';
}

std::string Table::renderLines(const std::vector<std::size_t>& widths, const Style& style) const {
  const std::string rule = style.dim(ruleOf(tableWidth(widths))) + '\n';
  std::string text;
  for (const Line& line : lines_) text += line.isRule ? rule : renderLine(line.cells, widths, style);
  return text;
}

std::vector<std::size_t> Table::naturalWidths() const {
  std::vector<std::size_t> widths;
  for (const Column& column : columns_)
    widths.push_back(std::max(displayWidth(column.title), column.minWidth));
  for (const Line& line : lines_) {
    for (std::size_t i = 0; i < line.cells.size(); ++i) {
      widths[i] = std::max(widths[i], displayWidth(line.cells[i].text));
    }
  }
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const Column& column = columns_[i];
    if (column.align == Align::left && column.maxWidth > 0) widths[i] = std::min(widths[i], column.maxWidth);
  }
  return widths;
}

void Table::fit(std::vector<std::size_t>& widths, std::size_t width) const {
  for (std::size_t total = tableWidth(widths); total > width; --total) {
    std::size_t* widest = nullptr;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      const Column& column = columns_[i];
      if (column.align != Align::left || column.isWhole) continue;
      if (widths[i] <= std::max(leastWidth, column.minWidth)) continue;
      if (widest == nullptr || widths[i] > *widest) widest = &widths[i];
    }
    if (widest == nullptr) return;
    --*widest;
  }
}

std::string Table::renderLine(const std::vector<Cell>& cells, const std::vector<std::size_t>& widths,
                              const Style& style) const {
  std::string line;
  std::size_t pending = 0;  // spaces owed to the next text, so that none are left at the line's end
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const bool isLeft = columns_[i].align == Align::left;
    const std::string text = isLeft ? truncateToWidth(cells[i].text, widths[i]) : printable(cells[i].text);
    const std::size_t space = widths[i] - std::min(widths[i], displayWidth(text));
    if (i > 0) pending += gap;
    if (!isLeft) pending += space;
    if (!text.empty()) {
      line.append(pending, ' ');
      line += painted(cells[i], columns_[i], text, style);
      pending = 0;
    }
    if (isLeft) pending += space;
  }
  return line += '\n';
}

std::string Table::painted(const Cell& cell, const Column& column, const std::string& text,
                           const Style& style) const {
  if (hits_.empty() || !column.isSearched || !style.isOn()) return style.paint(cell.ink, text);
  std::string line;
  std::string_view rest = text;
  while (!rest.empty()) {
    const auto [place, size] = findForm(rest, hits_);
    line += style.paint(cell.ink, rest.substr(0, place));
    if (place >= rest.size()) break;
    line += style.paint(cell.ink | ink::bold | ink::underlined, rest.substr(place, size));
    rest.remove_prefix(place + size);
  }
  return line;
}

}  // namespace moniva
