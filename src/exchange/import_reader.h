#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "base/amount.h"
#include "base/result.h"
#include "exchange/csv_reader.h"
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
  std::string reason;      ///< a sentence without place
};

/// All there is to say about a file: the rows that are good and what is wrong with the others. A row is in
/// `records` or has at least one problem, so an importer can refuse the file as a whole or take what is good.
struct ImportFile {
  static constexpr std::size_t mostProblems = 1000;

  std::vector<ImportRecord> records;
  std::vector<RowProblem> problems;  ///< the first mostProblems of them
  std::size_t problemCount = 0;      ///< those beyond the list included
  std::size_t badRows = 0;           ///< rows that are not in records
  std::vector<std::string> ignoredHeadings;
};

/// Reads the records of a table with a heading line (ImportColumns says which headings). Without a type
/// column the sign of the amount is the direction: negative for an expense, positive for income; with one,
/// amounts carry no sign. Rows of empty fields are skipped. Texts lose the blanks around them and nothing
/// else.
///
/// Refused as a whole, naming the file: what CsvReader and ImportColumns refuse, and amounts or dates that
/// can be read in two ways when neither the file nor the options tell which.
Result<ImportFile> readImport(const std::filesystem::path& path, const ImportOptions& options = {});
Result<ImportFile> readImport(CsvReader& reader, const ImportOptions& options = {});

}  // namespace moniva
