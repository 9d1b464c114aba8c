#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/amount.h"
#include "base/result.h"
#include "exchange/csv_reader.h"
#include "exchange/import_columns.h"
#include "exchange/import_date.h"
#include "exchange/import_record.h"

namespace moniva {

/// What a person says about a file that the file itself may leave open.
struct ImportOptions {
  DecimalMark decimalMark = DecimalMark::automatic;
  DateOrder dateOrder = DateOrder::automatic;
};

/// Why a row is not a record, and where.
struct RowProblem {
  std::size_t line = 0;    ///< where the row starts in the file, from 1
  std::size_t column = 0;  ///< from 1; 0 for a column the file does not have
  std::string heading;     ///< as the file writes it
  std::string value;       ///< what stands there, shortened
  Phrase reason;           ///< a sentence without place
};

/// One row: a record, or what is wrong with it.
struct ImportRow {
  ImportRecord record;  ///< whole only when there is no problem
  std::vector<RowProblem> problems;
};

/// Reads the records of a table with a heading line (ImportColumns says which headings), a row at a time and
/// as often as wanted. Without a type column the sign of the amount is the direction: negative for an
/// expense, positive for income; with one, amounts carry no sign. Rows of empty fields are skipped. Texts
/// lose the blanks around them and nothing else.
class ImportReader {
 public:
  /// Reads through the file once, to find out how it writes dates and amounts. Refused, naming the file: what
  /// CsvReader and ImportColumns refuse, a quote that is never closed, and amounts or dates that can be read
  /// in two ways when neither the file nor the options tell which.
  static Result<ImportReader> open(const std::filesystem::path& path, const ImportOptions& options = {});
  static Result<ImportReader> make(CsvReader csv, const ImportOptions& options = {});

  /// How many rows there are, good ones and bad ones.
  [[nodiscard]] std::size_t rowCount() const { return rowCount_; }
  [[nodiscard]] const ImportColumns& columns() const { return columns_; }

  /// Reads the next row; false after the last one.
  Result<bool> next(ImportRow& row);
  /// Goes back to the first row.
  void rewind() { csv_.rewind(); }

  /// A problem with what stands in the field's column, for those who find more wrong than a row shows.
  [[nodiscard]] RowProblem problemWith(std::size_t line, ImportField field, std::string_view value,
                                       Phrase reason) const;

 private:
  /// How the numbers and dates of the file are written.
  struct Spelling {
    char decimalMark = '.';
    DateOrder dateOrder = DateOrder::automatic;
  };
  class Interpreter;

  ImportReader(CsvReader csv, ImportColumns columns) : csv_(std::move(csv)), columns_(std::move(columns)) {}
  Result<> survey(const ImportOptions& options);
  /// The next row with anything in it.
  Result<std::optional<CsvRow>> nextRow();

  CsvReader csv_;
  ImportColumns columns_;
  Spelling spelling_;
  std::size_t rowCount_ = 0;
};

}  // namespace moniva
