#include "exchange/import_reader.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/text.h"
#include "exchange/import_columns.h"

namespace moniva {
namespace {

constexpr std::size_t mostCharacters = 10'000;

/// How the numbers and dates of one file are written.
struct Spelling {
  char decimalMark = '.';
  DateOrder dateOrder = DateOrder::automatic;
};

bool isCurrencyCode(std::string_view text) {
  return text.size() == 3 &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

/// Spreadsheet programs write the empty rows below a table as lines of separators.
bool isEmptyRow(const CsvRow& row) {
  return std::all_of(row.fields.begin(), row.fields.end(),
                     [](std::string_view field) { return trimBlanks(field).empty(); });
}

/// The text of a field in a row, or nothing: not every file has every column.
std::string_view cell(const CsvRow& row, const ImportColumns& columns, ImportField field) {
  const auto column = columns.of(field);
  return column && *column < row.fields.size() ? trimBlanks(row.fields[*column]) : std::string_view();
}

/// Makes records of rows, one at a time, and takes down what is wrong with them.
class RowInterpreter {
 public:
  RowInterpreter(const CsvReader& reader, const ImportColumns& columns, const Spelling& spelling,
                 ImportFile& file)
      : headings_(reader.headings()), columns_(columns), spelling_(spelling), file_(file) {}

  void read(const CsvRow& row) {
    row_ = row;
    rowIsGood_ = true;
    ImportRecord record;
    if (hasAllFields()) {
      record.line = row.line;
      readDate(record);
      const bool kindIsKnown = readKindAndAmount(record);
      readTexts(record);
      readForeignAmount(record);
      checkSubcategory(record);
      // What fits a record depends on its kind, so without one there is nothing more to say.
      if (kindIsKnown) checkTransfer(record);
    }
    if (rowIsGood_) {
      file_.records.push_back(std::move(record));
    } else {
      ++file_.badRows;
    }
  }

 private:
  [[nodiscard]] std::string_view cellOf(ImportField field) const { return cell(row_, columns_, field); }

  void problem(std::size_t column, std::string heading, std::string_view value, std::string reason) {
    rowIsGood_ = false;
    if (++file_.problemCount > ImportFile::mostProblems) return;
    file_.problems.push_back({row_.line, column, std::move(heading), excerpt(value), std::move(reason)});
  }

  void problem(ImportField field, std::string reason) {
    const auto column = columns_.of(field);
    problem(column ? *column + 1 : 0, column ? headings_[*column] : std::string(headingOf(field)),
            cellOf(field), std::move(reason));
  }

  bool hasAllFields() {
    const auto given = row_.fields.size();
    const auto expected = headings_.size();
    if (given == expected) return true;
    const auto column = std::min(given, expected);
    problem(column + 1, given < expected ? headings_[column] : "",
            given > expected ? row_.fields[column] : std::string_view(),
            fmt::format("the row has {} fields where the heading has {}", given, expected));
    return false;
  }

  void readDate(ImportRecord& record) {
    const auto date = parseImportDate(cellOf(ImportField::date), spelling_.dateOrder);
    if (!date) return problem(ImportField::date, date.error().why);
    record.date = *date;
    const auto time = cellOf(ImportField::time);
    if (time.empty()) return;
    if (date->hasTime) return problem(ImportField::time, "the date has a time already");
    if (const auto read = parseImportTime(time, record.date); !read)
      problem(ImportField::time, read.error().why);
  }

  /// The amount with its sign, or nothing after taking down what is wrong with it.
  std::optional<double> readAmount(ImportField field) {
    const auto amount = parseSignedAmount(cellOf(field), spelling_.decimalMark);
    if (!amount) {
      problem(field, amount.error().why);
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
      return problem(field, fmt::format("the text is longer than {} characters", mostCharacters));
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
    if (!isCurrencyCode(value)) return problem(field, "a currency is a code of three capital letters");
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

  const std::vector<std::string>& headings_;
  const ImportColumns& columns_;
  const Spelling spelling_;
  ImportFile& file_;
  CsvRow row_;
  bool rowIsGood_ = true;
};

template <class Use>
Result<> forEachRow(CsvReader& reader, Use use) {
  reader.rewind();
  while (true) {
    const auto row = reader.next();
    if (!row) return tl::make_unexpected(row.error());
    if (!*row) return {};
    if (!isEmptyRow(**row)) use(**row);
  }
}

/// Decides what no single row can tell, by a first pass over the dates and amounts of all of them.
Result<Spelling> findSpelling(CsvReader& reader, const ImportColumns& columns, const ImportOptions& options) {
  DecimalMarkSurvey marks;
  DateOrderSurvey orders;
  const auto surveyed = forEachRow(reader, [&](const CsvRow& row) {
    orders.add(cell(row, columns, ImportField::date), row.line);
    for (const auto field : {ImportField::amount, ImportField::foreignAmount, ImportField::toAmount}) {
      if (const auto text = cell(row, columns, field); !text.empty()) marks.add(text, row.line);
    }
  });
  if (!surveyed) return tl::make_unexpected(surveyed.error());
  Spelling spelling{options.decimalMark == DecimalMark::comma ? ',' : '.', options.dateOrder};
  if (options.decimalMark == DecimalMark::automatic) {
    const auto mark = marks.decide();
    if (!mark) return refuse("{}: {}", reader.name(), mark.error().why);
    spelling.decimalMark = *mark;
  }
  if (options.dateOrder == DateOrder::automatic) {
    const auto order = orders.decide();
    if (!order) return refuse("{}: {}", reader.name(), order.error().why);
    spelling.dateOrder = *order;
  }
  return spelling;
}

}  // namespace

Result<ImportFile> readImport(CsvReader& reader, const ImportOptions& options) {
  const auto columns = ImportColumns::find(reader.headings());
  if (!columns) return refuse("{}: {}", reader.name(), columns.error().why);
  const auto spelling = findSpelling(reader, *columns, options);
  if (!spelling) return tl::make_unexpected(spelling.error());
  ImportFile file;
  file.ignoredHeadings = columns->ignored();
  RowInterpreter interpreter(reader, *columns, *spelling, file);
  const auto read = forEachRow(reader, [&](const CsvRow& row) { interpreter.read(row); });
  if (!read) return tl::make_unexpected(read.error());
  return file;
}

Result<ImportFile> readImport(const std::filesystem::path& path, const ImportOptions& options) {
  auto reader = CsvReader::open(path);
  if (!reader) return tl::make_unexpected(reader.error());
  return readImport(*reader, options);
}

}  // namespace moniva
