#include "exchange/import_reader.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace moniva {
namespace {

/// All rows of a file.
struct ImportFile {
  std::vector<ImportRecord> records;
  std::vector<RowProblem> problems;
  std::size_t badRows = 0;
  std::vector<std::string> ignoredHeadings;
};

Result<ImportFile> readAll(Result<ImportReader> reader) {
  if (!reader) return tl::make_unexpected(reader.error());
  ImportFile file;
  file.ignoredHeadings = reader->columns().ignored();
  ImportRow row;
  while (true) {
    const auto more = reader->next(row);
    if (!more) return tl::make_unexpected(more.error());
    if (!*more) break;
    if (row.problems.empty()) {
      file.records.push_back(row.record);
    } else {
      ++file.badRows;
      file.problems.insert(file.problems.end(), row.problems.begin(), row.problems.end());
    }
  }
  EXPECT_EQ(reader->rowCount(), file.records.size() + file.badRows);
  return file;
}

Result<ImportFile> readText(const std::string& text, const ImportOptions& options = {}) {
  auto csv = CsvReader::fromBytes(text, "bank.csv");
  if (!csv) return tl::make_unexpected(csv.error());
  return readAll(ImportReader::make(std::move(*csv), options));
}

/// "line:column heading 'value' reason" of each problem.
std::vector<std::string> problemsOf(const ImportFile& file) {
  std::vector<std::string> shown;
  for (const auto& [line, column, heading, value, reason] : file.problems) {
    shown.push_back(fmt::format("{}:{} {} '{}' {}", line, column, heading, value, reason));
  }
  return shown;
}

TEST(ReadImport, readsTheRecordsOfAHousehold) {
  const auto file = readAll(ImportReader::open(MONIVA_SOURCE_DIR "/examples/household.csv"));
  ASSERT_TRUE(file) << file.error().why;
  EXPECT_EQ(problemsOf(*file), std::vector<std::string>{});
  EXPECT_EQ(file->ignoredHeadings, std::vector<std::string>{});
  double dollars = 0;
  for (const auto& record : file->records) {
    if (record.foreignCurrency == "USD") dollars += record.foreignAmount.value();
  }
  EXPECT_NEAR(dollars, 11375.52, 0.001);
  const auto& market = file->records.at(2);
  EXPECT_EQ(market.line, 4U);
  EXPECT_EQ(market.date, (ImportDate{2022, 1, 1, 8, 27, 51, true}));
  EXPECT_EQ(fmt::format("{}|{}|{}|{}|{}|{}|{}", market.book, market.account, market.category,
                        market.subcategory, market.vendor, market.amount, market.note),
            "Household|Checking|Food|Groceries|菜市场|71.24|for the weekend, \"big\" shop");
}

TEST(ReadImport, knowsColumnsByTheirWordsInThreeLanguages) {
  const std::vector<std::string> files = {
      "Date,Type,Account,To account,Amount,To amount,Currency,Note\n"
      "2024-02-29,transfer,A,B,1234.50,1300,EUR,n\n",
      "NOTE,to-account,Paid From, aMoUnT ,KIND,DATE,to_amount,Account Currency\n"
      "n,B,A,1234.5,Transfer,20240229,1300.00,EUR\n",
      "Datum;Art;Konto;Zielkonto;BETRAG;Zielbetrag;WÄHRUNG;Verwendungszweck\n"
      "29.02.2024;Umbuchung;A;B;1.234,50;1.300,00;EUR; n \n",
      "日期\t类型\t账户\t转入账户\t金额\t转入金额\t币种\t备注\n"
      "2024/2/29\t转账\tA\tB\t1,234.50\t1,300.00\tEUR\tn\n",
  };
  std::string first;
  for (const auto& text : files) {
    const auto file = readText(text);
    ASSERT_TRUE(file) << file.error().why;
    ASSERT_EQ(problemsOf(*file), std::vector<std::string>{});
    const auto& record = file->records.at(0);
    EXPECT_EQ(record.kind, ImportKind::transfer);
    EXPECT_EQ(record.date, (ImportDate{2024, 2, 29}));
    EXPECT_EQ(fmt::format("{} {} {} {} {} {}", record.account, record.toAccount, record.amount,
                          record.toAmount.value_or(0), record.currency, record.note),
              "A B 1234.5 1300 EUR n");
    if (first.empty()) first = identityOf(record);
    EXPECT_EQ(identityOf(record), first) << "the same row, however the file is laid out";
  }
}

TEST(ReadImport, refusesWhatCannotBeReadAsAWhole) {
  struct Case {
    std::string text;
    std::string_view says;
    std::string_view why;
  };
  const std::vector<Case> cases = {
      {"Type,Amount\n", "no column has the heading Date", "no date"},
      {"Date,Amount,Note,date\n", "columns 1 'Date' and 4 'date' of the heading both mean Date", "twice"},
      {"Date,Amount\n2024-01-01,\"1,234\"\n", "'1,234' in line 2 may be 1234 or 1.234", "decimal mark"},
      {"Date,Amount\n02/03/2024,1\n", "'02/03/2024' in line 2 may start with the day", "order of dates"},
      {"Date,Amount\n02/13/2024,1\n13/02/2024,1\n", "'13/02/2024' in line 3 and '02/13/2024' in line 2",
       "two orders"},
      {"Date,Amount\n2024-01-01,1\n2024-01-01,\"1\n", "line 3, column 2: the quote", "damaged further down"},
  };
  for (const auto& [text, says, why] : cases) {
    const auto file = readText(text);
    ASSERT_FALSE(file) << why;
    EXPECT_NE(file.error().why.find(says), std::string::npos) << why << ": " << file.error().why;
    EXPECT_TRUE(file.error().why.starts_with("bank.csv")) << why << ": " << file.error().why;
  }
}

TEST(ReadImport, takesTheOptionsWordForWhatAFileLeavesOpen) {
  const std::string text = "Date,Amount\n02/03/2024,\"1,234\"\n";
  const auto american = readText(text, {DecimalMark::point, DateOrder::monthFirst}).value().records.at(0);
  EXPECT_EQ(american.date, (ImportDate{2024, 2, 3}));
  EXPECT_EQ(american.amount, 1234);
  const auto european = readText(text, {DecimalMark::comma, DateOrder::dayFirst}).value().records.at(0);
  EXPECT_EQ(european.date, (ImportDate{2024, 3, 2}));
  EXPECT_EQ(european.amount, 1.234);
  const auto told = readText(text + "02/13/2024,\"1,234.5\"\n").value().records.at(0);
  EXPECT_EQ(identityOf(told), identityOf(american)) << "another row tells";
}

TEST(ReadImport, takesTheDirectionFromTheSignWhereThereIsNoType) {
  const auto file =
      readText("Date,Amount,Foreign amount,Foreign currency\n2024-01-01,-12.5,-13,USD\n2024-01-01,+3,,\n");
  const auto& out = file.value().records.at(0);
  EXPECT_TRUE(out.kind == ImportKind::expense && out.amount == 12.5 && out.foreignAmount == 13);
  const auto& in = file->records.at(1);
  EXPECT_TRUE(in.kind == ImportKind::income && in.amount == 3);
}

TEST(ReadImport, saysWhatIsWrongWithARow) {
  struct Case {
    std::string_view row;  ///< of date, time, type, account, category, subcategory, amount and so on
    std::vector<std::string> problems;
  };
  const std::string noCurrency = "this is no currency; codes have three capital letters, such as EUR";
  const std::vector<Case> cases = {
      {"2024-02-29,8:05,expense,,,,1,,,,", {}},
      {",,,,,,,,,,", {}},
      {"2023-02-29,,expense,,,,1,,,,", {"2:1 Date '2023-02-29' '2023-02-29' is not a day of the calendar"}},
      {",,expense,,,,1,,,,", {"2:1 Date '' the date is empty"}},
      {"2024-02-29,24:00,expense,,,,1,,,,",
       {"2:2 Time '24:00' '24:00' is not a time of day: write it as 14:30 or 14:30:05"}},
      {"2024-02-29 10:00,11:00,expense,,,,1,,,,", {"2:2 Time '11:00' the date has a time already"}},
      {"2024-02-29,,gift,,,,1,,,B,2", {"2:3 Type 'gift' the type is none of expense, income and transfer"}},
      {"2024-02-29,,expense,,,,0.00,,,,", {"2:7 Amount '0.00' the amount is zero"}},
      {"2024-02-29,,expense,,,,-1,,,,",
       {"2:7 Amount '-1' the amount is negative, but the type already says in which direction it goes"}},
      {"2024-02-29,,expense,,,Rent,1,,,,", {"2:5 Category '' the subcategory has no category"}},
      {"2024-02-29,,expense,,,,1,2,,,", {"2:9 Foreign currency '' the foreign amount has no currency"}},
      {"2024-02-29,,expense,,,,1,,USD,,", {"2:8 Foreign amount '' the foreign currency has no amount"}},
      {"2024-02-29,,expense,,,,1,2,QQQ,,", {"2:9 Foreign currency 'QQQ' " + noCurrency}},
      {"2024-02-29,,expense,Bob \"the\" builder,,,1,,,,",
       {"2:4 Account '' a quote stands inside a field that does not start with one"}},
      {"2024-02-29,,transfer,A,,,1,,,A,",
       {"2:10 To account 'A' the transfer goes to the account it comes from"}},
      {"2024-02-29,,transfer,,,,1,,,,2",
       {"2:4 Account '' the transfer has no account to come from",
        "2:10 To account '' the transfer has no account to go to"}},
      {"2024-02-29,,income,A,,,1,,,B,2",
       {"2:10 To account 'B' only a transfer goes to an account",
        "2:11 To amount '2' only a transfer has an amount that arrives"}},
      {"2024-02-29", {"2:2 Time '' the row has 1 field where the heading has 11"}},
      {"2024-02-29,,expense,,,,1,,,,,x", {"2:12  'x' the row has 12 fields where the heading has 11"}},
  };
  for (const auto& [row, problems] : cases) {
    const auto file = readText(
        fmt::format("Date,Time,Type,Account,Category,Subcategory,Amount,Foreign amount,Foreign currency,"
                    "To account,To amount\n{}\n2024-12-31,,income,,,,5,,,,\n",
                    row));
    ASSERT_TRUE(file) << row << ": " << file.error().why;
    EXPECT_EQ(problemsOf(*file), problems);
    EXPECT_EQ(file->badRows, problems.empty() ? 0U : 1U) << row;
    EXPECT_EQ(file->records.back().amount, 5) << row << ": the good row is read all the same";
  }
}

TEST(ReadImport, namesColumnsThatAreMissingAndThoseItDoesNotUse) {
  const auto file = readText("Date,Type,Color,Amount,,Color\n2024-01-01,transfer,red,1,,\n").value();
  EXPECT_EQ(problemsOf(file),
            (std::vector<std::string>{"2:0 Account '' the transfer has no account to come from",
                                      "2:0 To account '' the transfer has no account to go to"}));
  EXPECT_EQ(file.ignoredHeadings, (std::vector<std::string>{"Color", "column 5", "Color"}));
}

TEST(ReadImport, keepsTextsAsTypedUpToTenThousandCharacters) {
  const auto noteOf = [](const std::string& note) {
    const auto file = readText("Date,Amount,Note\n2024-01-01,1,\"" + note + "\"\n").value();
    return file.records.empty() ? file.problems.at(0).reason.english() : file.records[0].note;
  };
  EXPECT_EQ(noteOf(" \t a  b\n\u00A0c \u3000"), "a  b\n\u00A0c");
  std::string longest;
  for (int i = 0; i < 10'000; ++i) longest += "菜";
  EXPECT_EQ(noteOf(longest), longest);
  EXPECT_EQ(noteOf(longest + "x"), "the text is longer than 10000 characters");
}

TEST(ParseImportDate, readsDatesAndRefusesTheRest) {
  struct Case {
    std::string_view text;
    ImportDate date;
    DateOrder order = DateOrder::automatic;
  };
  for (const auto& [text, date, order] : {
           Case{" 2024.2.9 ", {2024, 2, 9}},
           Case{"20240229", {2024, 2, 29}},
           Case{"2024-02-29 14:30:05", {2024, 2, 29, 14, 30, 5, true}},
           Case{"29.02.2024  4:30", {2024, 2, 29, 4, 30, 0, true}},
           Case{"29/02/2024", {2024, 2, 29}},
           Case{"03/03/2024", {2024, 3, 3}},
           Case{"02/03/2024", {2024, 3, 2}, DateOrder::dayFirst},
           Case{"02/03/2024", {2024, 2, 3}, DateOrder::monthFirst},
       }) {
    const auto read = parseImportDate(text, order);
    ASSERT_TRUE(read) << read.error().why;
    EXPECT_EQ(*read, date) << text;
  }
  for (const std::string_view text :
       {"", "02/03/2024", "1900-02-29", "31/04/2024", "2024-00-10", "0000-01-01", "29.02.24", "2024-02/29",
        "2024-02-290", "2024-02-29x", "2024-02-29 25:00", "2024-02-29 14:3", "2024-02-29T14:30:05Z"}) {
    const auto read = parseImportDate(text, DateOrder::automatic);
    ASSERT_FALSE(read) << text;
    EXPECT_NE(read.error().why.find(text), std::string::npos) << read.error().why;
  }
  EXPECT_FALSE(parseImportDate("29/02/2024", DateOrder::monthFirst));
}

TEST(IdentityOf, tellsRecordsApartByAllTheySay) {
  ImportRecord record;
  record.amount = 12.5;
  record.category = "a";
  record.note = "b";
  const auto identity = identityOf(record);
  record.line = 99;
  EXPECT_EQ(identityOf(record), identity) << "where it stands is not what it says";
  const std::vector<void (*)(ImportRecord&)> changes = {
      [](ImportRecord& r) { r.kind = ImportKind::income; },
      [](ImportRecord& r) { r.date.day = 2; },
      [](ImportRecord& r) { r.date.hasTime = true; },
      [](ImportRecord& r) { r.amount = 12.500000000000002; },
      [](ImportRecord& r) { r.foreignAmount = 12.5; },
      [](ImportRecord& r) { r.toAmount = 12.5; },
      [](ImportRecord& r) { r.book = "a"; },
      [](ImportRecord& r) { r.account = "a"; },
      [](ImportRecord& r) { r.subcategory = "a"; },
      [](ImportRecord& r) { r.vendor = "a"; },
      [](ImportRecord& r) { r.toAccount = "a"; },
      [](ImportRecord& r) { r.foreignCurrency = "EUR"; },
      [](ImportRecord& r) { r.currency = "EUR"; },
      [](ImportRecord& r) { r.category = "a note=1:b", r.note = ""; },
  };
  std::vector<std::string> identities = {identity};
  for (const auto change : changes) {
    auto other = record;
    change(other);
    const auto text = identityOf(other);
    EXPECT_EQ(std::count(identities.begin(), identities.end(), text), 0) << text;
    identities.push_back(text);
  }
}

}  // namespace
}  // namespace moniva
