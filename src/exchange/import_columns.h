#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "exchange/import_record.h"

namespace moniva {

/// What a column of an imported file can hold.
enum class ImportField {
  date,
  time,
  type,
  book,
  account,
  category,
  subcategory,
  vendor,
  amount,
  foreignAmount,
  foreignCurrency,
  toAccount,
  toAmount,
  note,
  currency,
};
constexpr std::size_t importFieldCount = 15;

/// The English heading of a field, as messages call it.
std::string_view headingOf(ImportField field);

/// Finds each field's column by its heading: English, German and Chinese words, whatever their case, blanks,
/// hyphens and underscores.
class ImportColumns {
 public:
  /// Refused when there is no date or no amount, or when two headings mean the same field.
  static Result<ImportColumns> find(std::span<const std::string> headings);

  /// The column from 0, or nothing where the file has none.
  [[nodiscard]] std::optional<std::size_t> of(ImportField field) const;
  [[nodiscard]] bool has(ImportField field) const { return of(field).has_value(); }

  /// The headings that mean nothing here, in the file's order; one without a text is called "column 7".
  [[nodiscard]] const std::vector<std::string>& ignored() const { return ignored_; }

 private:
  std::array<std::optional<std::size_t>, importFieldCount> columns_;
  std::vector<std::string> ignored_;
};

/// The kind of record that a cell of the type column names, in the same three languages.
std::optional<ImportKind> importKindOf(std::string_view text);

}  // namespace moniva
