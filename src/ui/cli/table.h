#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "ui/cli/style.h"

namespace moniva {

enum class Align { left, right };

/// A column of a Table. Text stands left, figures right; only left columns are ever cut short, because half a
/// figure is a wrong figure.
struct Column {
  std::string title;
  Align align = Align::left;
  std::size_t maxWidth = 0;  ///< in cells; 0 for as wide as its text
  bool isSearched = false;   ///< what was looked for is marked in it
  std::size_t minWidth = 0;
  bool isWhole = false;  ///< never cut, for what is typed again or is no use in part
};

/// One place in a Table: its text and how it looks.
struct Cell {
  std::string text;
  Ink ink;

  Cell() = default;
  Cell(std::string cellText, Ink cellInk = {}) : text(std::move(cellText)), ink(cellInk) {}  // NOLINT
  Cell(const char* cellText, Ink cellInk = {}) : text(cellText), ink(cellInk) {}             // NOLINT
};

/// Rows of text in aligned columns, with a thin rule under the headings and above a total:
///
///     Category     Spent
///     ──────────────────
///     Groceries   412.10
///     食費         38.00
///     ──────────────────
///     Total       450.10
///
/// Columns are two cells apart; lines carry no spaces at their end.
class Table {
 public:
  explicit Table(std::vector<Column> columns);

  /// Adds a row. Cells that are missing at its end are empty, those beyond the last column are left out.
  void addRow(std::vector<Cell> cells);
  /// Adds a thin rule across the table.
  void addRule();
  /// Adds a rule and below it a row in bold.
  void addTotal(std::vector<Cell> cells);

  /// Texts to be marked in the columns that are searched, in either case of their plain letters.
  void markHits(std::vector<std::string> texts) { hits_ = std::move(texts); }

  /// No rows yet; rules do not count.
  bool empty() const { return rows_ == 0; }

  /// The table as lines, each ended by a line feed. Headings are left out when no column has a title. A table
  /// wider than `width` cells has its widest left columns cut with an ellipsis, down to a few cells each;
  /// what is still too wide then stays so. 0 means as wide as it takes.
  std::string render(const Style& style = {}, std::size_t width = 0) const;
  /// The lines added since the last call, which are not kept, in columns as wide as the first call made them;
  /// its lines come below the headings. For tables too long to be held.
  std::string renderPart(const Style& style = {}, std::size_t width = 0);

 private:
  struct Line {
    bool isRule = false;
    std::vector<Cell> cells;
  };

  std::vector<std::size_t> naturalWidths() const;
  void fit(std::vector<std::size_t>& widths, std::size_t width) const;
  std::string renderHeadings(const std::vector<std::size_t>& widths, const Style& style) const;
  std::string renderLines(const std::vector<std::size_t>& widths, const Style& style) const;
  std::string renderLine(const std::vector<Cell>& cells, const std::vector<std::size_t>& widths,
                         const Style& style) const;
  std::string painted(const Cell& cell, const Column& column, const std::string& text,
                      const Style& style) const;

  std::vector<Column> columns_;
  std::vector<Line> lines_;
  std::size_t rows_ = 0;
  std::vector<std::string> hits_;
  std::vector<std::size_t> widths_;  ///< of a table in parts, once it has begun
};

}  // namespace moniva
