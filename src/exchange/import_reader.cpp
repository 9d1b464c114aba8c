#include "exchange/import_reader.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/text.h"
#include "currency/currency_codes.h"

namespace moniva {
namespace {

constexpr std::size_t mostCharacters = 10'000;

/// Spreadsheet programs write the empty rows below a table as lines of separators.
bool isEmptyRow(const CsvRow& row) {
  return !row.damage && std::all_of(row.fields.begin(), row.fields.end(),
                                    [](std::string_view field) { return trimBlanks(field).empty(); });
}

/// The text of a field in a row, or nothing: not every file has every column.
std::string_view cell(const CsvRow& row, const ImportColumns& columns, ImportField field) {
  const auto column = columns.of(field);
  return column && *column < row.fields.size() ? trimBlanks(row.fields[*column]) : std::string_view();
}

}  // namespace

/// Makes the record of a row and takes down what is wrong with it.
class ImportReader::Interpreter {
 public:
  Interpreter(const ImportReader& reader, const CsvRow& from, ImportRow& into)
      : reader_(reader), columns_(reader.columns_), row_(from), into_(into) {}

  void read() {
    if (row_.damage) return problem(row_.damage->column, {}, row_.damage->what);
    if (!hasAllFields()) return;
    ImportRecord& record = into_.record;
    readDate(record);
    const bool kindIsKnown = readKindAndAmount(record);
    readTexts(record);
    readForeignAmount(record);
    checkSubcategory(record);
    // What fits a record depends on its kind, so without one there is nothing more to say.
    if (kindIsKnown) checkTransfer(record);
  }

 private:
  [[nodiscard]] std::string_view cellOf(ImportField field) const { return cell(row_, columns_, field); }

  void problem(std::size_t column, std::string_view value, Phrase reason) {
    const auto& headings = reader_.csv_.headings();
    into_.problems.push_back({row_.line, column, column <= headings.size() ? headings[column - 1] : "",
                              excerpt(value), std::move(reason)});
  }

  void problem(ImportField field, Phrase reason) {
    into_.problems.push_back(reader_.problemWith(row_.line, field, cellOf(field), std::move(reason)));
  }

  bool hasAllFields() {
    const auto given = row_.fields.size();
    const auto expected = reader_.csv_.headings().size();
    if (given == expected) return true;
    const auto column = std::min(given, expected);
    problem(column + 1, given > expected ? row_.fields[column] : std::string_view(),
            given == 1 ? phrase("the row has {} field where the heading has {}", given, expected)
                       : phrase("the row has {} fields where the heading has {}", given, expected));
    return false;
  }

  void readDate(ImportRecord& record) {
    const auto date = parseImportDate(cellOf(ImportField::date), reader_.spelling_.dateOrder);
    if (!date) return problem(ImportField::date, *date.error().phrase);
    record.date = *date;
    const auto time = cellOf(ImportField::time);
    if (time.empty()) return;
    if (date->hasTime) return problem(ImportField::time, "the date has a time already");
    if (const auto read = parseImportTime(time, record.date); !read)
      problem(ImportField::time, *read.error().phrase);
  }

  /// The amount with its sign, or nothing after taking down what is wrong with it.
  std::optional<double> readAmount(ImportField field) {
    const auto amount = parseSignedAmount(cellOf(field), reader_.spelling_.decimalMark);
    if (!amount) {
      problem(field, *amount.error().phrase);
      return std::nullopt;
    }
    if (*amount == 0) {
      problem(field, "the amount is zero");
      return std::nullopt;
    }
    if (*amount < 0 && columns_.has(ImportField::type)) {
      problem(field, "the amount is negative, but the type already says in which direction it goes");
      return std::nullopt;
    }
    return amount.value();
  }

  /// False when the kind of record is not to be found out.
  bool readKindAndAmount(ImportRecord& record) {
    const auto amount = readAmount(ImportField::amount);
    if (amount) record.amount = std::abs(*amount);
    if (!columns_.has(ImportField::type)) {
      record.kind = amount && *amount < 0 ? ImportKind::expense : ImportKind::income;
      return amount.has_value();
    }
    const auto kind = importKindOf(cellOf(ImportField::type));
    if (kind) {
      record.kind = *kind;
    } else {
      problem(ImportField::type, "the type is none of expense, income and transfer");
    }
    return kind.has_value();
  }

  void readText(ImportField field, std::string& text) {
    const auto value = cellOf(field);
    if (value.size() > mostCharacters && characterCount(value) > mostCharacters) {
      return problem(field, phrase("the text is longer than {} characters", mostCharacters));
    }
    text = value;
  }

  void readTexts(ImportRecord& record) {
    readText(ImportField::book, record.book);
    readText(ImportField::account, record.account);
    readText(ImportField::category, record.category);
    readText(ImportField::subcategory, record.subcategory);
    readText(ImportField::vendor, record.vendor);
    readText(ImportField::toAccount, record.toAccount);
    readText(ImportField::note, record.note);
  }

  void readCurrency(ImportField field, std::string& code) {
    const auto value = cellOf(field);
    if (value.empty()) return;
    if (!isCurrencyCode(value)) {
      return problem(field, "this is no currency; codes have three capital letters, such as EUR");
    }
    code = value;
  }

  void readForeignAmount(ImportRecord& record) {
    readCurrency(ImportField::currency, record.currency);
    readCurrency(ImportField::foreignCurrency, record.foreignCurrency);
    const bool hasAmount = !cellOf(ImportField::foreignAmount).empty();
    const bool hasCode = !cellOf(ImportField::foreignCurrency).empty();
    if (hasAmount && !hasCode) problem(ImportField::foreignCurrency, "the foreign amount has no currency");
    if (hasCode && !hasAmount) problem(ImportField::foreignAmount, "the foreign currency has no amount");
    if (!hasAmount) return;
    const auto amount = readAmount(ImportField::foreignAmount);
    if (amount) record.foreignAmount = std::abs(*amount);
  }

  void checkSubcategory(const ImportRecord& record) {
    if (!record.subcategory.empty() && cellOf(ImportField::category).empty()) {
      problem(ImportField::category, "the subcategory has no category");
    }
  }

  void checkTransfer(ImportRecord& record) {
    const bool hasToAmount = !cellOf(ImportField::toAmount).empty();
    if (record.kind != ImportKind::transfer) {
      if (!record.toAccount.empty()) problem(ImportField::toAccount, "only a transfer goes to an account");
      if (hasToAmount) problem(ImportField::toAmount, "only a transfer has an amount that arrives");
      return;
    }
    if (cellOf(ImportField::account).empty()) {
      problem(ImportField::account, "the transfer has no account to come from");
    }
    if (cellOf(ImportField::toAccount).empty()) {
      problem(ImportField::toAccount, "the transfer has no account to go to");
    } else if (record.toAccount == record.account) {
      problem(ImportField::toAccount, "the transfer goes to the account it comes from");
    }
    if (!hasToAmount) return;
    if (const auto amount = readAmount(ImportField::toAmount)) record.toAmount = *amount;
  }

  const ImportReader& reader_;
  const ImportColumns& columns_;
  const CsvRow& row_;
  ImportRow& into_;
};

Result<ImportReader> ImportReader::open(const std::filesystem::path& path, const ImportOptions& options) {
  auto csv = CsvReader::open(path);
  if (!csv) return tl::make_unexpected(csv.error());
  return make(std::move(*csv), options);
}

Result<ImportReader> ImportReader::make(CsvReader csv, const ImportOptions& options) {
  auto columns = ImportColumns::find(csv.headings());
  if (!columns) return refuse("{}: {}", csv.name(), columns.error());
  ImportReader reader(std::move(csv), std::move(*columns));
  if (auto surveyed = reader.survey(options); !surveyed) return tl::make_unexpected(surveyed.error());
  return reader;
}

Result<std::optional<CsvRow>> ImportReader::nextRow() {
  while (true) {
    auto row = csv_.next();
    if (!row || !*row || !isEmptyRow(**row)) return row;
  }
}

/// Decides what no single row can tell, from the dates and amounts of all of them.
Result<> ImportReader::survey(const ImportOptions& options) {
  DecimalMarkSurvey marks;
  DateOrderSurvey orders;
  rewind();
  while (true) {
    const auto next = nextRow();
    if (!next) return tl::make_unexpected(next.error());
    if (!*next) break;
    const CsvRow& row = **next;
    ++rowCount_;
    orders.add(cell(row, columns_, ImportField::date), row.line);
    for (const auto field : {ImportField::amount, ImportField::foreignAmount, ImportField::toAmount}) {
      if (const auto text = cell(row, columns_, field); !text.empty()) marks.add(text, row.line);
    }
  }
  rewind();
  spelling_ = {options.decimalMark == DecimalMark::comma ? ',' : '.', options.dateOrder};
  if (options.decimalMark == DecimalMark::automatic) {
    const auto mark = marks.decide();
    if (!mark) return refuse("{}: {}", csv_.name(), mark.error());
    spelling_.decimalMark = *mark;
  }
  if (options.dateOrder == DateOrder::automatic) {
    const auto order = orders.decide();
    if (!order) return refuse("{}: {}", csv_.name(), order.error());
    spelling_.dateOrder = *order;
  }
  return {};
}

Result<bool> ImportReader::next(ImportRow& row) {
  const auto read = nextRow();
  if (!read) return tl::make_unexpected(read.error());
  row.problems.clear();
  row.record = ImportRecord{};
  if (!*read) return false;
  row.record.line = (*read)->line;
  Interpreter(*this, **read, row).read();
  return true;
}

RowProblem ImportReader::problemWith(std::size_t line, ImportField field, std::string_view value,
                                     Phrase reason) const {
  const auto column = columns_.of(field);
  return {line, column ? *column + 1 : 0, column ? csv_.headings()[*column] : std::string(headingOf(field)),
          excerpt(value), std::move(reason)};
}

}  // namespace moniva
