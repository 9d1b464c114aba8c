#include "exchange/importer.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "model/record_entry.h"
#include "support/household.h"

namespace moniva {
namespace {

/// A store and a file to import into it.
class Bank : public Household {
 public:
  Bank() { setClock("2024-06-15 12:00:00"); }

  /// Takes a file of that text; new accounts are in dollars unless it says otherwise.
  Result<ImportOutcome> import(const std::string& text, bool skipBad = false, bool dryRun = false) {
    const auto file = documents() / "bank.csv";
    putBytes(file, text);
    ImportRequest request;
    request.skipBad = skipBad;
    request.dryRun = dryRun;
    request.currency = "USD";
    return importFile(root, file, request);
  }
  std::string accounts() {
    return rows("select title || ' ' || currency from account where kind = 1 and deleted = 0 order by title");
  }
};

/// "line:column heading 'value' reason" of each problem.
std::string problemsOf(const ImportOutcome& outcome) {
  std::string shown;
  for (const auto& [line, column, heading, value, reason] : outcome.problems) {
    shown += fmt::format("{}:{} {} '{}' {}\n", line, column, heading, value, reason);
  }
  return shown;
}

TEST(ImportFile, countsUsesAndBalancesAsEnteringDoes) {
  Recording typed;
  auto spend = typed.expense(12.5);
  auto transfer = typed.transfer(7, 7);
  ASSERT_TRUE(recordEntry(typed.root, spend));
  ASSERT_TRUE(recordEntry(typed.root, transfer));

  Bank imported;
  ASSERT_TRUE(
      imported.import("Date,Type,Book,Account,To account,Category,Subcategory,Payee,Amount\n"
                      "2024-02-01,expense,Home,Cash,,Food,Bakery,Lang,12.5\n"
                      "2024-02-01,transfer,,Cash,Bank,,,,7\n"));
  for (const std::string_view kept :
       {"select title || ' ' || ifnull(usedTimes, 0) from category order by title",
        "select title || ' ' || used from category, categoryofbook where cate = oldTitle order by title",
        "select title || ' ' || totalBalance from account order by title"}) {
    EXPECT_EQ(imported.rows(kept), typed.rows(kept));
  }
}

TEST(ImportFile, settlesCurrenciesWhateverTheOrderOfRows) {
  struct Case {
    std::vector<std::string> rows;
    std::string accounts;
    std::string_view why;
  };
  const std::vector<Case> cases = {
      {{"transfer,Giro,Purse,,", "expense,Giro,,,GBP"},
       "Giro GBP\nPurse GBP",
       "taken from where it comes from"},
      {{"transfer,Giro,Purse,,", "expense,Purse,,,GBP"}, "Giro GBP\nPurse GBP", "and from where it goes to"},
      {{"transfer,A,B,,", "transfer,B,C,,", "transfer,Bank,A,,"},
       "A EUR\nB EUR\nC EUR",
       "the store's, passed on"},
      {{"transfer,Giro,Purse,5.5,", "expense,Giro,,,GBP"},
       "Giro GBP\nPurse USD",
       "an amount that arrives tells nothing"},
      {{"transfer,Giro,Purse,,", "expense,Other,,,GBP"}, "Giro USD\nOther GBP\nPurse USD", "the default"},
  };
  for (const auto& [rows, accounts, why] : cases) {
    auto ordered = rows;
    std::sort(ordered.begin(), ordered.end());
    do {
      Bank bank;
      std::string text = "Date,Amount,Type,Account,To account,To amount,Currency\n";
      for (const auto& row : ordered) text += "2024-02-01,5," + row + "\n";
      const auto outcome = bank.import(text);
      ASSERT_TRUE(outcome) << why << ": " << outcome.error().why;
      EXPECT_EQ(problemsOf(*outcome), "") << why << "\n" << text;
      EXPECT_EQ(bank.rows("select title || ' ' || currency from account where kind = 1 and title not in"
                          " ('Bank', 'Cash') order by title"),
                accounts)
          << why << "\n"
          << text;
    } while (std::next_permutation(ordered.begin(), ordered.end()));
  }
}

TEST(ImportFile, leavesNothingBehindOfABadRow) {
  const std::string text =
      "Amount;Date;Konto;Typ;To account;To amount;Currency;Category;Payee;Book\n"
      "5;2024-02-01;Cash;expense;;;USD;Cars;Bolt;Trip\n"
      "5;2024-02-01;Dollars;expense;;;USD;;;\n"
      "5;2024-02-01;Dollars;transfer;Bank;;;;;\n"
      "5;2024-02-01;Cash;transfer;Bank;6;;;;\n"
      "5;2024-02-01;Fresh;transfer;Fresh;;;;;\n"
      "5;2024-02-01;Bob \"the\" builder;expense;;;;;;\n"
      "5;2024-02-01;Cash;expense;;;;Food;;\n";
  const std::string problems =
      "2:7 Currency 'USD' the account 'Cash' is kept in EUR\n"
      "4:6 To amount '' 'Dollars' is kept in USD and 'Bank' in EUR, so the amount that arrives is needed\n"
      "5:6 To amount '6' 'Cash' and 'Bank' are both kept in EUR, so what leaves one arrives in the other\n"
      "6:5 To account 'Fresh' the transfer goes to the account it comes from\n"
      "7:3 Konto '' a quote stands inside a field that does not start with one\n";

  Bank bank;
  const auto keptOut = bank.import(text);
  ASSERT_TRUE(keptOut) << keptOut.error().why;
  EXPECT_EQ(problemsOf(*keptOut), problems);
  EXPECT_EQ(keptOut->rows, 7U);
  EXPECT_EQ(keptOut->badRows, 5U);
  EXPECT_EQ(keptOut->added(), 0U);
  EXPECT_FALSE(keptOut->written);
  EXPECT_EQ(bank.accounts(), "Bank EUR\nCash EUR");

  const auto dry = bank.import(text, true, true);
  EXPECT_EQ(dry.value().newAccounts, std::vector<std::string>{"Dollars"});
  EXPECT_FALSE(dry->written);
  EXPECT_EQ(bank.accounts(), "Bank EUR\nCash EUR");

  const auto taken = bank.import(text, true);
  ASSERT_TRUE(taken) << taken.error().why;
  EXPECT_TRUE(taken->written);
  EXPECT_EQ(taken->added(), 2U);
  EXPECT_EQ(taken->newCategories, std::vector<std::string>{"Food"});
  EXPECT_EQ(taken->newVendors, std::vector<std::string>{});
  EXPECT_EQ(bank.accounts(), "Bank EUR\nCash EUR\nDollars USD");
  EXPECT_EQ(bank.rows("select title from account where kind = 2 order by title"), "Default Book\nHome");

  const auto again = bank.import(text, true);
  ASSERT_TRUE(again);
  EXPECT_EQ(again->alreadyThere, 2U);
  EXPECT_FALSE(again->written) << "there was nothing to write";
}

TEST(ImportFile, takesAmountsOfTheirCurrencies) {
  struct Case {
    std::string_view row;
    std::string problem;  ///< of line 2; "" for a row that is taken
    std::string_view why;
  };
  const auto tooFine = [](std::string_view place, std::string_view code, int digits,
                          std::string_view amount) {
    return fmt::format("2:{} '{}' {} is counted in {} decimals, and '{}' has more\n", place, amount, code,
                       digits, amount);
  };
  const std::vector<Case> cases = {
      {"expense,Cash,,10.505,,,", tooFine("5 Amount", "EUR", 2, "10.505"), "the account's currency"},
      {"expense,,,10.505,,,", tooFine("5 Amount", "USD", 2, "10.505"),
       "without an account the book's, a new one"},
      {"expense,New,,8.575,,,", tooFine("5 Amount", "USD", 2, "8.575"), "that of one still to be made"},
      {"expense,Cash,,999999999999.99,,,", "", "as large and fine as it gets"},
      {"expense,Cash,,1000000000001,,,",
       "2:5 Amount '1000000000001' an amount of 1000000000001 is beyond all measure\n", "too large"},
      {"expense,Yen,,10.5,,,", tooFine("5 Amount", "JPY", 0, "10.5"), "none at all"},
      {"expense,Dinar,,10.505,,,", "", "three"},
      {"transfer,Cash,Yen,5,10.5,,", tooFine("6 To amount", "JPY", 0, "10.5"), "what arrives"},
      {"expense,Cash,,5,,20.123,JPY", tooFine("7 Foreign amount", "JPY", 0, "20.123"), "what it was abroad"},
      {"expense,Cash,,5,,6,EUR",
       "2:7 Foreign amount '6' the record itself is kept in EUR, and its amount is another\n", "two amounts"},
      {"expense,Cash,,5,,5,EUR", "", "the same said twice"},
  };
  for (const auto& [row, problem, why] : cases) {
    Bank bank;
    for (const auto& [title, code] : {std::pair("Yen", "JPY"), std::pair("Dinar", "KWD")}) {
      const std::string pk = bank.account(title).pk;
      ASSERT_TRUE(bank.sql("update account set currency = ? where oldTitle = ?", {code, pk}));
    }
    const auto import = [&](std::string_view headings, std::string_view last) {
      return bank.import(fmt::format("Date,Type,Account,To account,Amount,To amount,Foreign amount,"
                                     "Foreign currency{}\n2024-02-01,{}{}\n2024-02-02,income,,,0.25,,,{}\n",
                                     headings, row, last, last),
                         true);
    };
    EXPECT_EQ(problemsOf(import("", "").value()), problem) << why;
    EXPECT_EQ(bank.number("select count(*) from transactions where currency2 = 'EUR'"), 0) << why;
    if (problem.find("measure") != std::string::npos) continue;
    EXPECT_EQ(import(",eid,transferEID", ",,").value().badRows, 0U) << why << ", in a table of our own";
  }
}

TEST(ImportFile, passesOverWhatTakesNoRecordsAndTellsWhatIsBack) {
  Bank bank;
  MonivaAccount trip = bank.book("Trip");
  MonivaAccount swiss = bank.account("Swiss");
  MonivaAccount old = bank.book("Old");
  bank.group("U", {*bank.cash});
  bank.group("All", {old});
  ASSERT_TRUE(trip.delete_() && swiss.delete_() && old.close(true) && bank.bank->close(true));
  MonivaAccount gone = bank.account("Gone", "_DiscountAccount");
  bank.account("Card", "_DiscountAccount");
  ASSERT_TRUE(gone.delete_());
  const auto taken = bank.import(
      "Date,Type,Book,Account,To account,Amount\n"
      "2024-02-01,expense,,U,,5\n"
      "2024-02-01,transfer,,Cash,U,5\n"
      "2024-02-01,transfer,,Cash,Bank,5\n"
      "2024-02-01,expense,All,Cash,,5\n"
      "2024-02-01,expense,Old,Cash,,5\n"
      "2024-02-01,expense,Trip,Swiss,,5\n"
      "2024-02-01,income,,Card,,5\n"
      "2024-02-01,transfer,,Cash,Gone,5\n"
      "2024-02-01,expense,Trip,Card,,5\n",
      true);
  ASSERT_TRUE(taken) << taken.error().why;
  EXPECT_EQ(problemsOf(*taken),
            "2:4 Account 'U' 'U' is a group of accounts; name one of them\n"
            "3:5 To account 'U' 'U' is a group of accounts; name one of them\n"
            "4:5 To account 'Bank' the account 'Bank' is closed; open it with: moniva account reopen NAME\n"
            "5:3 Book 'All' 'All' is a group of books; name one of them\n"
            "6:3 Book 'Old' the book 'Old' is closed; open it with: moniva book reopen NAME\n"
            "8:4 Account 'Card' 'Card' tracks expenses only; nothing else is recorded on it\n"
            "9:5 To account 'Gone' 'Gone' tracks expenses only; nothing else is recorded on it\n")
      << "one that would come back does not track it either";
  EXPECT_EQ(taken->revivedBooks, std::vector<std::string>{"Trip"});
  EXPECT_EQ(taken->revivedAccounts, std::vector<std::string>{"Swiss"});
  EXPECT_TRUE(taken->newBooks.empty() && taken->newAccounts.empty());
}

TEST(ImportFile, tellsRowsThatRepeatApart) {
  Bank bank;
  const std::string row = "2024-02-01,-5,Bakery\n";
  const std::string heading = "Date,Amount,Payee\n";
  EXPECT_EQ(bank.import(heading + row + row + "2024-02-01,-6,Bakery\n" + row)->added(), 4U);
  EXPECT_EQ(bank.import(heading + row + row)->alreadyThere, 2U);
  const auto fourth = bank.import(heading + row + row + row + row);
  EXPECT_EQ(fourth->alreadyThere, 3U);
  EXPECT_EQ(fourth->added(), 1U);
  EXPECT_EQ(bank.number("select count(distinct eid) from transactions"), 5);
}

TEST(ImportFile, keepsItsReportShort) {
  std::string text = "Date,Amount\n";
  for (int i = 0; i < 1500; ++i) text += "never,1\n";
  Bank bank;
  const auto outcome = bank.import(text).value();
  EXPECT_EQ(outcome.problems.size(), 1000U);
  EXPECT_EQ(outcome.problemCount, 1500U);
  EXPECT_EQ(outcome.badRows, 1500U);
}

}  // namespace
}  // namespace moniva
