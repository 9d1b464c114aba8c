#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"

namespace moniva {

/// Where the quotes of a row make no sense.
struct CsvDamage {
  std::size_t line = 0;    ///< of the file, from 1
  std::size_t column = 0;  ///< of the table, from 1
  Phrase what;             ///< a sentence without place
};

/// One row of a table. The fields are as written, without their quotes, and live until the next row is asked
/// for; they may be fewer or more than the headings. A damaged row has none.
struct CsvRow {
  std::size_t line = 0;  ///< the line of the file the row starts on, from 1
  std::span<const std::string_view> fields;
  std::optional<CsvDamage> damage;
};

/// Reads a table of comma-separated values (RFC 4180) row by row: the first line that is not blank is the
/// heading, and each further one a row. The separator is a comma, a semicolon or a tab, whichever the heading
/// has most of, or the one a first line "sep=;" names; lines end in LF, CRLF or CR; quoted fields may hold
/// separators, line breaks and doubled quotes. Lines of nothing but blanks are skipped.
///
/// It is strict, because every guess at what was meant would move amounts between rows: a quote inside an
/// unquoted field and text after a closing quote make the row a damaged one, and reading goes on with the
/// next line. In the heading they are refused with file and line, as is a quote that is never closed.
class CsvReader {
 public:
  /// Reads and decodes the file (readTextFile) and its heading line.
  static Result<CsvReader> open(const std::filesystem::path& path);
  /// The same for the bytes of a file; `name` is what a refusal calls it.
  static Result<CsvReader> fromBytes(std::string bytes, std::string name);

  CsvReader(CsvReader&&) noexcept;
  CsvReader& operator=(CsvReader&&) noexcept;
  ~CsvReader();

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] char separator() const { return separator_; }
  /// The heading of each column, without surrounding blanks.
  [[nodiscard]] const std::vector<std::string>& headings() const { return headings_; }

  /// The next row, or nothing after the last one. After a refusal there are no further rows.
  Result<std::optional<CsvRow>> next();

  /// Goes back to the first row after the heading.
  void rewind();

 private:
  struct Parser;

  CsvReader(std::string text, std::string name);
  Result<> readHeading();
  Result<> takeSeparatorLine();
  void findSeparator();
  Result<bool> feedLine();
  Result<bool> finish();
  [[nodiscard]] bool isBlankRow() const;
  void noteDamage(std::size_t line, const Phrase& what);

  std::string text_;
  std::string name_;
  char separator_ = ',';
  std::vector<std::string> headings_;
  std::size_t position_ = 0;  ///< the next byte of text_
  std::size_t line_ = 1;      ///< the line that byte is on
  std::size_t firstPosition_ = 0;
  std::size_t firstLine_ = 1;
  std::unique_ptr<Parser> parser_;
};

}  // namespace moniva
