#include "exchange/csv_reader.h"

#include <csv.h>

#include <algorithm>
#include <array>
#include <new>
#include <utility>

#include "base/text.h"
#include "exchange/text_file.h"

namespace moniva {
namespace {

constexpr bool endsLine(char c) {
  return c == '\n' || c == '\r';
}

/// The end of the line that `from` is on, its line break included.
std::size_t lineEnd(std::string_view text, std::size_t from) {
  while (from < text.size() && !endsLine(text[from])) ++from;
  if (from == text.size()) return from;
  const bool pair = text[from] == '\r' && from + 1 < text.size() && text[from + 1] == '\n';
  return from + (pair ? 2 : 1);
}

/// Blanks belong to a field: whether they mean something is for the reader of the values to say.
int nothingIsBlank(unsigned char /*character*/) {
  return 0;
}

}  // namespace

/// The parser of the library and the row it is filling.
struct CsvReader::Parser {
  explicit Parser(char separator) {
    csv_init(&csv, CSV_STRICT | CSV_STRICT_FINI);
    csv_set_delim(&csv, static_cast<unsigned char>(separator));
    csv_set_space_func(&csv, &nothingIsBlank);
    csv_set_blk_size(&csv, std::size_t{1} << 16U);
  }
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;
  ~Parser() { csv_free(&csv); }

  static void takeField(void* field, std::size_t size, void* self) {
    auto& parser = *static_cast<Parser*>(self);
    parser.rowText.append(static_cast<const char*>(field), size);
    parser.fieldEnds.push_back(parser.rowText.size());
  }
  static void takeRow(int /*terminator*/, void* self) { static_cast<Parser*>(self)->rowDone = true; }

  void startRow(std::size_t line) {
    rowText.clear();
    fieldEnds.clear();
    damage.reset();
    rowDone = false;
    rowLine = openFieldLine = line;
  }

  /// The views are made once the row is complete, when its text moves no more.
  CsvRow row() {
    fields.clear();
    if (damage) return {rowLine, {}, damage};
    std::size_t start = 0;
    for (const auto end : fieldEnds) {
      fields.push_back(std::string_view(rowText).substr(start, end - start));
      start = end;
    }
    return {rowLine, fields, std::nullopt};
  }

  csv_parser csv{};
  std::string rowText;
  std::vector<std::size_t> fieldEnds;
  std::vector<std::string_view> fields;
  std::optional<CsvDamage> damage;
  std::size_t rowLine = 1;
  std::size_t openFieldLine = 1;
  bool rowDone = true;
};

CsvReader::CsvReader(std::string text, std::string name) : text_(std::move(text)), name_(std::move(name)) {}
CsvReader::CsvReader(CsvReader&&) noexcept = default;
CsvReader& CsvReader::operator=(CsvReader&&) noexcept = default;
CsvReader::~CsvReader() = default;

Result<CsvReader> CsvReader::open(const std::filesystem::path& path) {
  auto text = readTextFile(path);
  if (!text) return tl::make_unexpected(text.error());
  CsvReader reader(std::move(*text), path.string());
  if (auto read = reader.readHeading(); !read) return tl::make_unexpected(read.error());
  return reader;
}

Result<CsvReader> CsvReader::fromBytes(std::string bytes, std::string name) {
  auto text = decodeText(std::move(bytes), name);
  if (!text) return tl::make_unexpected(text.error());
  CsvReader reader(std::move(*text), std::move(name));
  if (auto read = reader.readHeading(); !read) return tl::make_unexpected(read.error());
  return reader;
}

Result<> CsvReader::readHeading() {
  const auto named = takeSeparatorLine();
  if (!named) return named;
  if (position_ == 0) findSeparator();
  rewind();
  const auto heading = next();
  if (!heading) return tl::make_unexpected(heading.error());
  if (!*heading) return refuse("{} has no line but blank ones", name_);
  if (const auto& damage = (*heading)->damage) {
    return refuse("{}, line {}, column {}: {}", name_, damage->line, damage->column, damage->what);
  }
  for (const auto field : (*heading)->fields) headings_.emplace_back(trimBlanks(field));
  firstPosition_ = position_;
  firstLine_ = line_;
  return {};
}

/// Spreadsheet programs may write a line "sep=;" before the heading.
Result<> CsvReader::takeSeparatorLine() {
  const auto end = lineEnd(text_, 0);
  auto line = std::string_view(text_).substr(0, end);
  while (!line.empty() && endsLine(line.back())) line.remove_suffix(1);
  if (line.size() >= 2 && line.front() == '"' && line.back() == '"') line = line.substr(1, line.size() - 2);
  if (line.size() != 5 || !(line.starts_with("sep=") || line.starts_with("SEP="))) return {};
  separator_ = line.back();
  if (separator_ != ',' && separator_ != ';' && separator_ != '\t') {
    return refuse("{}, line 1: columns are separated by commas, semicolons or tabs, not by '{}'", name_,
                  separator_);
  }
  position_ = firstPosition_ = end;
  line_ = firstLine_ = 2;
  return {};
}

void CsvReader::findSeparator() {
  constexpr std::string_view candidates = ",;\t";
  std::array<std::size_t, candidates.size()> seen{};
  bool quoted = false;
  bool blank = true;
  for (const char c : text_) {
    if (c == '"') quoted = !quoted;
    if (endsLine(c) && !quoted && !blank) break;
    blank = blank && (endsLine(c) || c == ' ' || c == '\t');
    const auto candidate = candidates.find(c);
    if (candidate != std::string_view::npos && !quoted) ++seen[candidate];
  }
  const auto most = std::max_element(seen.begin(), seen.end());
  separator_ = candidates[static_cast<std::size_t>(most - seen.begin())];
}

void CsvReader::rewind() {
  position_ = firstPosition_;
  line_ = firstLine_;
  parser_ = std::make_unique<Parser>(separator_);
}

/// Gives the parser one line, which is at most one row, so that it is always known on which line a row
/// starts. True when it completed a row.
Result<bool> CsvReader::feedLine() {
  auto& parser = *parser_;
  const auto start = position_;
  const auto line = line_++;
  position_ = lineEnd(text_, start);
  if (parser.rowDone) {
    if (endsLine(text_[start])) return false;
    parser.startRow(line);
  }
  const auto fieldsBefore = parser.fieldEnds.size();
  const auto size = position_ - start;
  const auto parsed =
      csv_parse(&parser.csv, text_.data() + start, size, &Parser::takeField, &Parser::takeRow, &parser);
  if (parsed != size) {
    if (csv_error(&parser.csv) != CSV_EPARSE) {
      position_ = text_.size();
      parser.rowDone = true;
      return refuse("{}, line {}: the field is too long", name_, line);
    }
    noteDamage(line, text_[start + parsed] == '"'
                         ? phrase("a quote stands inside a field that does not start with one")
                         : phrase("text follows the closing quote (a quote within quotes is doubled)"));
    return true;
  }
  if (parser.fieldEnds.size() != fieldsBefore) parser.openFieldLine = line;
  return parser.rowDone;
}

/// Ends the row as a damaged one; the parser starts anew with the next line.
void CsvReader::noteDamage(std::size_t line, const Phrase& what) {
  const CsvDamage damage{line, parser_->fieldEnds.size() + 1, what};
  const auto rowLine = parser_->rowLine;
  parser_ = std::make_unique<Parser>(separator_);
  parser_->rowLine = rowLine;
  parser_->damage = damage;
}

/// Completes a last row that no line break ends. True when there was one.
Result<bool> CsvReader::finish() {
  auto& parser = *parser_;
  if (parser.rowDone) return false;
  const auto finished = csv_fini(&parser.csv, &Parser::takeField, &Parser::takeRow, &parser);
  parser.rowDone = true;
  if (finished == 0) return true;
  return refuse("{}, line {}, column {}: the quote that opens the field is never closed", name_,
                parser.openFieldLine, parser.fieldEnds.size() + 1);
}

bool CsvReader::isBlankRow() const {
  return parser_->fieldEnds.size() == 1 && !parser_->rowText.empty() && trimBlanks(parser_->rowText).empty();
}

Result<std::optional<CsvRow>> CsvReader::next() {
  while (true) {
    const bool atEnd = position_ == text_.size();
    const auto complete = atEnd ? finish() : feedLine();
    if (!complete) return tl::make_unexpected(complete.error());
    if (*complete && !isBlankRow()) return parser_->row();
    if (atEnd && !*complete) return std::nullopt;
  }
}

}  // namespace moniva
