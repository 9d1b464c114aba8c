#include "exchange/csv_reader.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <unicode/unistr.h>

#include "support/temporary_folder.h"

namespace moniva {
namespace {

using Table = std::vector<std::vector<std::string>>;

/// The rows below the heading, each field as read, or the sentence that refuses the file.
Result<Table> rowsOf(CsvReader& reader) {
  Table rows;
  while (true) {
    const auto row = reader.next();
    if (!row) return tl::make_unexpected(row.error());
    if (!*row) return rows;
    if (const auto& damage = (*row)->damage) {
      rows.push_back(
          {fmt::format("{}:{}:{}", (*row)->line, damage->line, damage->column), damage->what.english()});
      continue;
    }
    rows.emplace_back((*row)->fields.begin(), (*row)->fields.end());
  }
}

std::string whyRefused(const std::string& bytes) {
  auto reader = CsvReader::fromBytes(bytes, "bank.csv");
  if (!reader) return reader.error().why;
  const auto rows = rowsOf(*reader);
  return rows ? "not refused" : rows.error().why;
}

TEST(CsvReader, readsTheRowsThatAreThere) {
  struct Case {
    std::string text;
    Table rows;
    std::string_view why;
  };
  const std::vector<Case> cases = {
      {"a,b\n1,2", {{"1", "2"}}, "no line break at the end"},
      {"a,b\n", {}, "heading only"},
      {"a,b\n1,", {{"1", ""}}, "an empty field ends the file"},
      {"a,b\n1,\"\"", {{"1", ""}}, "a quoted empty field ends the file"},
      {"a,b\n1,\"2\"", {{"1", "2"}}, "a quoted field ends the file"},
      {"\n  \na,b\n\n1,2\n \t\n\r\n3,4\n\n", {{"1", "2"}, {"3", "4"}}, "blank lines"},
      {"a,b\n1\n1,2,3\n", {{"1"}, {"1", "2", "3"}}, "another number of fields is for others to judge"},
      {"a\n1\n\"\"\n", {{"1"}, {""}}, "one column"},
      {"\n \na;b\n1,5;2\n", {{"1,5", "2"}}, "the heading is looked for below blank lines"},
      {"\"a,,,,b\";c\n1;2\n", {{"1", "2"}}, "the heading's separator is found outside quotes"},
      {"\"a\n,,,\";c\n1;2\n", {{"1", "2"}}, "and past a line break in quotes"},
      {"sep=;\r\na,b;c\r\n1,5;2\r\n", {{"1,5", "2"}}, "a first line names the separator"},
      {"\"sep=\t\"\na;b;c\td\n1\t2\n", {{"1", "2"}}, "a quoted first line names it"},
  };
  for (const auto& [text, rows, why] : cases) {
    auto reader = CsvReader::fromBytes(text, "bank.csv");
    ASSERT_TRUE(reader) << why << ": " << reader.error().why;
    const auto read = rowsOf(*reader);
    ASSERT_TRUE(read) << why << ": " << read.error().why;
    EXPECT_EQ(*read, rows) << why;
    reader->rewind();
    EXPECT_EQ(rowsOf(*reader).value(), rows) << why << ", a second time";
  }
}

TEST(CsvReader, refusesDamagedFilesAndSaysWhere) {
  struct Case {
    std::string text;
    std::string says;
    std::string_view why;
  };
  using namespace std::string_literals;
  const std::vector<Case> cases = {
      {"", "bank.csv is empty", "no bytes"},
      {"\n \n", "no line but blank ones", "no heading"},
      {"a,b\n1,\"2\n3,4\n", "line 2, column 2: the quote that opens", "never closed"},
      {"a,b\n\"1\n2\",\"3\n4\n", "line 3, column 2: the quote that opens", "opened further down"},
      {"a,b\"c\n1,2\n", "line 1, column 2: a quote stands inside", "a damaged heading"},
      {"a,b\n1,2\n\x00,3\n"s, "line 3: there is a NUL", "NUL"},
      {"a,b\n1,\xE4\n", "line 2: byte 6 starts no character of UTF-8", "Latin-1"},
      {"a,b\r\n1,\xE4\r\n", "line 2: byte 7 starts", "a CRLF ends one line, not two"},
      {"a,b\n1,\xED\xA0\x80\n", "line 2: byte 6", "a surrogate in UTF-8"},
      {"a,b\n12345678,\xE8\x8F", "line 2: byte 13", "cut within a character"},
      {"\xFF\xFE"
       "a\0,\0b\0\n\0\x3D\xD8,\0"s,
       "line 2: byte 10 starts half a character", "lone surrogate"},
      {"\xFF\xFE"
       "a\0,\0b"s,
       "cut off", "odd number of bytes"},
      {"sep=|\na|b\n", "line 1: columns are separated by", "a separator nobody expects"},
  };
  for (const auto& [text, says, why] : cases) {
    const auto refusal = whyRefused(text);
    EXPECT_NE(refusal.find(says), std::string::npos) << why << ": " << refusal;
    EXPECT_TRUE(refusal.starts_with("bank.csv")) << why << ": " << refusal;
  }
}

TEST(CsvReader, goesOnBelowADamagedRow) {
  const std::string stray = "a quote stands inside a field that does not start with one";
  const std::string after = "text follows the closing quote (a quote within quotes is doubled)";
  struct Case {
    std::string text;
    Table rows;
    std::string_view why;
  };
  const std::vector<Case> cases = {
      {"a,b\n1,Bob \"the\" builder\n3,4\n", {{"2:2:2", stray}, {"3", "4"}}, "stray quotes"},
      {"a,b\r1,2\r\"3\"x,4", {{"1", "2"}, {"3:3:1", after}}, "text after the closing quote ends the file"},
      {"a,b\n\"1\n1\"x,2\n3,4", {{"2:3:1", after}, {"3", "4"}}, "found on a later line of the row"},
      {"a,b\n1,x\"\n\"3\",4\n5,\"y\"z\n", {{"2:2:2", stray}, {"3", "4"}, {"4:4:2", after}}, "two of them"},
  };
  for (const auto& [text, rows, why] : cases) {
    auto reader = CsvReader::fromBytes(text, "bank.csv").value();
    EXPECT_EQ(rowsOf(reader).value(), rows) << why;
  }
  EXPECT_NE(whyRefused("a,b\n1,x\"\n3,\"4\n").find("line 3, column 2: the quote that opens"),
            std::string::npos)
      << "an open quote is refused below a damaged row too";
}

TEST(CsvReader, knowsTheLineEachRowStartsOn) {
  for (const std::string end : {"\n", "\r\n", "\r"}) {
    std::string text = "\na,b\n\"1\n\n1\",2\n\n3,4\n5,6";
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += end.size()) {
      text.replace(at, 1, end);
    }
    auto reader = CsvReader::fromBytes(text, "bank.csv").value();
    std::vector<std::size_t> lines;
    for (auto row = reader.next().value(); row; row = reader.next().value()) lines.push_back(row->line);
    EXPECT_EQ(lines, (std::vector<std::size_t>{3, 7, 8}));
  }
}

TEST(CsvReader, saysWhatIsWrongWithAFile) {
  const TemporaryFolder folder;
  const auto large = folder / "large.csv";
  putBytes(large, "");
  std::filesystem::resize_file(large, 1'000'000'001);  // sparse: takes no room on the disk
  const std::pair<std::filesystem::path, const char*> cases[] = {
      {folder.path(), " is a folder, not a file"},
      {large, " is larger than 1 GB"},
      {folder / "none", " cannot be opened: No such file or directory"},
  };
  for (const auto& [file, says] : cases) {
    const auto reader = CsvReader::open(file);
    ASSERT_FALSE(reader) << says;
    EXPECT_EQ(reader.error().why, file.string() + says);
  }
}

struct Encoding {
  bool wide;
  bool little;
  bool marked;
};

std::string encoded(const std::string& text, Encoding encoding) {
  const std::string marked = (encoding.marked ? "\uFEFF" : "") + text;
  if (!encoding.wide) return marked;
  const auto wide = icu::UnicodeString::fromUTF8(marked);
  std::string bytes;
  for (int i = 0; i < wide.length(); ++i) {
    const auto low = static_cast<char>(wide[i] & 0xFF);
    const auto high = static_cast<char>(wide[i] >> 8);
    bytes += {encoding.little ? low : high, encoding.little ? high : low};
  }
  return bytes;
}

RC_GTEST_PROP(CsvReader, readsBackWhatWasWritten, ()) {
  const auto character = rc::gen::element<std::string>("x", "x", "7", " ", ",", ";", "\t", "\"", "\n", "\r",
                                                       "ä", "菜", "一", "😀");
  const auto field =
      rc::gen::map(rc::gen::container<std::vector<std::string>>(character), [](const auto& parts) {
        std::string joined;
        for (const auto& part : parts) joined += part;
        return joined;
      });
  const auto columns = *rc::gen::inRange<std::size_t>(2, 6);
  const auto rows = *rc::gen::container<Table>(rc::gen::container<std::vector<std::string>>(columns, field));
  const auto separator = *rc::gen::element(',', ';', '\t');
  const auto lineEnd = *rc::gen::element<std::string>("\n", "\r\n", "\r");
  const auto yesNo = rc::gen::arbitrary<bool>();
  const Encoding encoding{*yesNo, *yesNo, *yesNo};
  const bool quoteAll = *yesNo;
  std::string text;
  const auto write = [&](const std::vector<std::string>& fields) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (i > 0) text += separator;
      const bool quote = quoteAll || fields[i].find_first_of(",;\t\"\r\n") != std::string::npos;
      if (quote) text += '"';
      for (const char c : fields[i]) text += c == '"' && quote ? "\"\"" : std::string(1, c);
      if (quote) text += '"';
    }
    text += lineEnd;
  };
  write(std::vector<std::string>(columns, "A column of the table"));
  for (const auto& row : rows) write(row);

  auto reader = CsvReader::fromBytes(encoded(text, encoding), "bank.csv");
  RC_ASSERT(reader.has_value());
  RC_ASSERT(reader->separator() == separator);
  RC_ASSERT(rowsOf(*reader).value() == rows);
}

}  // namespace
}  // namespace moniva
