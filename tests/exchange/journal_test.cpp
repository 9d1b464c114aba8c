#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "exchange/csv_export.h"
#include "exchange/csv_reader.h"
#include "exchange/importer.h"
#include "exchange/journal_chart.h"
#include "exchange/journal_writer.h"
#include "model/debt.h"
#include "reports/transaction_report.h"
#include "support/compound_story.h"
#include "ui/shell.h"

namespace moniva {
namespace {

/// What postings come to, by account and month.
using Figures = std::map<std::string, std::map<std::string, double>>;

/// A household in three currencies that is recorded in at random, under names that other programs might choke
/// on.
class Ledger : public Compound {
 public:
  Ledger() {
    holders = {*cash,
               *bank,
               account("Dollars"),
               account("Yen"),
               account("Card", "_DebtAccount"),
               account("Coupons", "_DiscountAccount")};
    books = {*home, second, book("Trip: US | \"x\"")};
    for (const auto& [key, column, value] :
         std::vector<std::tuple<std::string, std::string, Value>>{{bank->pk, "title", "Cash"},
                                                                  {holders[2].pk, "currency", "USD"},
                                                                  {holders[3].pk, "currency", "JPY"},
                                                                  {books[2].pk, "currency", "USD"},
                                                                  {cash->pk, "beginBalance", 100.25},
                                                                  {holders[2].pk, "beginBalance", -7},
                                                                  {books[2].pk, "beginBalance", 3.5}}) {
      EXPECT_TRUE(sql("update account set " + column + " = ? where oldTitle = ?", {value, key}));
    }
    for (const int type : {kind::kIncome, kind::kExpense}) {
      for (const char* title : {"Lunch 12:30", "(a) [b]; c", "-5 = @ \"q\"", "No category", "日本 😀"}) {
        categories[type].push_back({category(title, type).pk, ""});
        MVCategory below(root);
        below.title = "Further";
        below.type = type;
        below.parent = categories[type].back().first;
        EXPECT_TRUE(below.addCate());
        categories[type].push_back({below.parent, below.pk});
      }
      for (const char* title : {"Bob", "(x | y; z", "* Café  \"q\""}) {
        Vendor known(root);
        known.title = title;
        known.type = Vendor::typeFor(type);
        EXPECT_TRUE(known.add());
        vendors[type].push_back(known.pk);
      }
      vendors[type].emplace_back();
    }
  }

  std::vector<MonivaAccount> holders;
  std::vector<MonivaAccount> books;
  std::map<int, std::vector<std::pair<std::string, std::string>>> categories;
  std::map<int, std::vector<std::string>> vendors;
  /// Nothing that an import has no place for.
  bool onlyImportable = false;

  static int number(int from, int to) {
    return *rc::gen::resize(rc::kNominalSize, rc::gen::inRange(from, to));
  }
  template <class T>
  static const T& any(const std::vector<T>& list) {
    return list[static_cast<std::size_t>(number(0, static_cast<int>(list.size())))];
  }
  double money() { return number(1, 100'000) / 100.0; }
  Date day() { return on("2024-01-01").plusSeconds(number(0, 200) * 86'400.0 + number(0, 4) * 21'600); }
  static std::string oddText() {
    return any<std::string>({"", "Bob", "(x", "; date: 3", "a | b", "[2024/13/77] [=x]", "two\n\nlines\t; ",
                             "* !", "\xff\xfe", ":tag:", "　wide　 blanks "});
  }
  Spend random(int type) {
    Spend made(root);
    made.type = type;
    made.amount = money();
    made.datetime = day();
    made.book = any(books).pk;
    if (number(0, 4) > 0) made.account = any(holders).pk;
    const auto& [top, chosen] = any(categories[type]);
    made.category = top;
    made.subcategory = chosen.empty() ? top : chosen;
    made.vendor = any(vendors[type]);
    made.note = oddText();
    if (number(0, 3) == 0) made.foreignCurrency = "GBP", made.foreignAmount = money();
    return made;
  }
  /// Something happens; what the store refuses does not.
  void happen() {
    const int type = number(0, 4) == 0 ? kind::kIncome : kind::kExpense;
    Spend spend = random(type);
    const int what = number(0, 10);
    switch (onlyImportable && what > 4 ? 9 : what) {
      default:
        return static_cast<void>(recordEntry(root, spend));
      case 0: {
        std::vector<Spend> items{random(type), random(type)};
        for (auto& item : items) item.account.clear();
        const double paid = number(0, 2) == 0 ? items[0].amount : items[0].amount + items[1].amount - 0.25;
        std::vector<Payment> payments{payment(any(holders), paid), payment(any(holders), 0.25)};
        return static_cast<void>(Spend::addCart(root, items, payments));
      }
      case 1:
        return static_cast<void>(spend.saveInstallment(number(2, 8)));
      case 2:
        return static_cast<void>(spend.saveApportionedCost(spend.datetime, spend.datetime.plusSeconds(8e6)));
      case 3:
        if (recordEntry(root, spend))
          static_cast<void>(spend.refund(std::floor(spend.amount * 50) / 100, spend.datetime,
                                         std::string(onlyImportable ? spend.account : any(holders).pk)));
        return;
      case 4: {
        Transfer moved(root);
        const auto& from = any(holders);
        const auto& to = any(holders);
        moved.accountA = from.pk;
        moved.accountB = to.pk;
        moved.acrossCurrencies =
            currencyOfAccount(root, from.pk).value() != currencyOfAccount(root, to.pk).value();
        moved.amountA = money() + 1;
        moved.serviceCharge = onlyImportable ? 0 : any<double>({0, 0.5});
        moved.amountB = moved.acrossCurrencies ? money() : withoutNoise(moved.amountA - moved.serviceCharge);
        moved.datetime = day();
        return static_cast<void>(recordEntry(root, moved));
      }
      case 5: {
        Debt debt(root);
        debt.type = any<int>({24, 34});
        debt.amount = money();
        debt.person = any<std::string>({"Ann", "Ann: B", "Nobody"});
        debt.datetime = on("2024-02-01");
        debt.paymentAccount = any(holders).pk;
        if (debt.add()) static_cast<void>(debt.repaid(money(), root.now(), oddText(), debt.paymentAccount));
        return;
      }
      case 6:
        if (MonivaAccount whose = any(number(0, 3) > 0 ? holders : books); whose.getInfo())
          static_cast<void>(correctBalanceTo(whose, money()));
        return;
      case 7:
        if (auto row = MVTransaction::transactionFromEID(
                root, rows("select eid from transactions order by amount limit 1"))) {
          static_cast<void>(row->delete_());
        }
        return;
      case 8: {  // what only other programs write
        const int kind = any<int>({13, 14, 14, 22, 36, 61, 99, 23, 33});
        EXPECT_TRUE(
            sql("insert into transactions (eid, type, amount, account, book, category, datetime, note)"
                " values (?, ?, ?, ?, ?, ?, ?, ?)",
                {root.newIdentifier(), kind, money(), any<std::string>({"", "old key", holders[0].pk}),
                 books[0].pk, categories[kind == 13 ? 11 : 12][0].first, day(), oddText()}));
      }
    }
  }
};

/// The journal of the store in a file of the workshop.
ExportOutcome write(Ledger& store, const test::Workshop& workshop, const ExportRequest& request) {
  std::string text;
  const auto outcome = exportJournal(store.root, request, [&](std::string_view bytes) -> Result<> {
    text += bytes;
    return {};
  });
  EXPECT_TRUE(outcome) << outcome.error().why;
  workshop.write("x.journal", text);
  return outcome.value_or(ExportOutcome{});
}

/// Lines of "month, account, amount" by ledger, and a table by hledger, both with their strictest checks.
Figures byLedger(const test::Workshop& workshop) {
  Figures figures;
  const std::string told = workshop.run(
      "ledger --args-only -f x.journal --strict --pedantic reg --monthly --cleared --format "
      R"('%(format_date(date, "%Y-%m"))\t%(account)\t%(strip(display_amount))\n')");
  if (told.find("exit ") != std::string::npos) RC_FAIL(told);
  std::istringstream lines(told);
  for (std::string line; std::getline(lines, line);) {
    // More commodities of an account stand on lines of their own.
    const auto tab = line.rfind('\t');
    if (tab == std::string::npos) continue;
    figures[line.substr(8, tab - 8)][line.substr(0, 7)] = std::strtod(line.c_str() + tab + 1, nullptr);
  }
  return figures;
}
Figures byHledger(const test::Workshop& workshop) {
  Figures figures;
  const std::string said = workshop.run(
      "LC_ALL=C.UTF-8 hledger -f x.journal --strict bal --cleared -M --flat -N --layout=bare -O csv");
  auto table = CsvReader::fromBytes(said, "hledger");
  if (!table || said.find("exit ") != std::string::npos) RC_FAIL(said);
  while (const auto row = table->next().value()) {
    for (std::size_t column = 2; column < row->fields.size(); ++column) {
      figures[std::string(row->fields[0])][table->headings()[column]] +=
          std::strtod(std::string(row->fields[column]).c_str(), nullptr);
    }
  }
  return figures;
}

/// What the account and those below it come to in the month, in all for a blank one; without what is Further
/// if asked so.
double sumOf(const Figures& figures, const std::string& name, const std::string& month, bool further) {
  double sum = 0;
  for (auto at = figures.lower_bound(name); at != figures.end() && at->first.starts_with(name); ++at) {
    if (at->first != name && at->first[name.size()] != ':') continue;
    // Below a category "Further" is ours; a subcategory of that title is "Further 2".
    if (!further && at->first.ends_with(":Further")) continue;
    for (const auto& [of, amount] : at->second) sum += month.empty() || month == of ? amount : 0;
  }
  return sum;
}

TransReportSummary monthsOf(Ledger& store, const MonivaAccount& book) {
  TransactionReport report(store.root);
  report.setMonivaAccount(book);
  report.setTransactionType(1112);
  report.setIncludeEmpty(true);
  report.setBeginDate(store.on("2023-12-01"));
  report.setEndDate(store.on("2025-06-30"));
  auto months = report.reportByMonth();
  RC_ASSERT(months.has_value());
  return std::move(*months);
}

/// Every balance that the request asks for, and of a whole journal every month of every book and every
/// category, is what the other program says.
void compare(Ledger& store, const ExportRequest& request, const Figures& figures, const std::string& who) {
  const auto same = [&](double theirs, double ours, const std::string& what) {
    if (std::abs(theirs - ours) < 0.005) return;
    RC_FAIL(fmt::format("{} says {} of {}, not {}", who, theirs, what, ours));
  };
  ExportRequest all;
  JournalChart chart(store.root, store.connection(), all);
  RC_ASSERT(chart.load().has_value());
  ExportRow row;
  for (const auto& account : store.holders) {
    if (request.of && request.of->pk != account.pk) continue;
    row.type = kind::kBalanceCorrection;
    row.account = account.pk;
    const auto& name = chart.at(chart.ofAccount(row).account).name;
    const auto own = figures.find(name);
    double balance = 0;
    if (own != figures.end()) balance = sumOf({{name, own->second}}, name, "", true);
    same(balance, getTheTotalBalance(*MonivaAccount::getAccountWithPK(store.root, account.pk)), name);
  }
  if (request.of || request.from) return;
  for (const auto& book : store.books) {
    const auto months = monthsOf(store, book);
    double balance = 0;
    for (const int type : {kind::kIncome, kind::kExpense}) {
      const int sign = type == kind::kIncome ? -1 : 1;
      row.type = type;
      row.book = book.pk;
      for (const auto& [top, chosen] : store.categories[type]) {
        row.category = top;
        row.subcategory = chosen;
        const auto& name = chart.at(chart.ofCategory(row).account).name;
        const double kept = store.Device::number(
            fmt::format("select coalesce(sum(amount), 0) from transactions where deleted = 0 and paid = 1 and"
                        " book = ? and {} = ? and (type = ? or type = ?)",
                        chosen.empty() ? "category" : "subcategory"),
            {book.pk, chosen.empty() ? top : chosen, type, type + 2});
        same(sign * sumOf(figures, name, "", true), kept, name);
      }
      std::string name = chart.at(chart.ofCategory(row).account).name;
      name.resize(name.find(':', name.find(':') + 1));
      for (const auto& month : months.listArray) {
        const std::string label = fmt::format("{:04}-{:02}", month.year, month.month);
        same(sign * sumOf(figures, name, label, false),
             type == kind::kIncome ? month.incomeAmount : month.expenseAmount, name + " in " + label);
      }
      balance -= sumOf(figures, name, "", false);
      if (type == kind::kExpense) balance += sumOf(figures, "Equity:Books" + name.substr(8), "", true);
    }
    same(balance, getTheTotalBalance(*MonivaAccount::getAccountWithPK(store.root, book.pk)), book.title);
  }
}

/// A property for so many random stores; a few, where each of them asks other programs.
void always(int times, const std::function<void()>& property) {
  auto params = rc::detail::configuration().testParams;
  params.maxSuccess = times;
  params.disableShrinking = true;
  const auto result = rc::detail::checkTestable(property, rc::detail::TestMetadata(), params);
  std::ostringstream why;
  rc::detail::printResultMessage(result, why);
  EXPECT_TRUE(result.is<rc::detail::SuccessResult>()) << why.str();
}

TEST(Journal, isReckonedAlikeByTwoOtherPrograms) {
  always(12, [] {
    Ledger store;
    for (int i = Ledger::number(0, 80); i > 0; --i) store.happen();
    const test::Workshop workshop;
    ExportRequest request;
    request.pending = Ledger::number(0, 2) == 0;
    const int part = Ledger::number(0, 4);
    if (part == 0) request.from = store.day();
    if (part == 1) request.of = Ledger::any(store.holders);
    write(store, workshop, request);
    compare(store, request, byLedger(workshop), "ledger");
    compare(store, request, byHledger(workshop), "hledger");
  });
}

TEST(Journal, leavesOutWhatItTellsOfAndKeepsTwoApart) {
  Compound store;
  const auto insert = [&](const std::string& eid, const std::string& column, const Value& value) {
    EXPECT_TRUE(
        store.sql("insert into transactions (eid, type, account, amount, datetime, note) values"
                  " (?, 12, 'Tin: old', 1, ?, 'x')",
                  {eid, store.on("2024-02-01")}));
    EXPECT_TRUE(store.sql("update transactions set " + column + " = ? where eid = ?", {value, eid}));
  };
  insert("1", "note", "plain");
  insert("2", "datetime", nullptr);
  insert("3", "datetime", "yesterday");
  insert("4", "datetime", 1e13);
  insert("5", "amount", 2e15);
  insert("6", "type", 99);
  insert("7", "type", 61);
  insert("8", "account", "Tin- old");
  insert("9", "paid", 0);
  std::string text;
  const ExportSink sink = [&](std::string_view bytes) -> Result<> {
    text += bytes;
    return {};
  };
  const auto whole = exportJournal(store.root, {}, sink).value();
  EXPECT_EQ(whole.rows, 5);
  EXPECT_EQ(whole.pending, 1);
  EXPECT_EQ(whole.unmeasured, 1);
  EXPECT_EQ(whole.unknown, 1);
  EXPECT_EQ(whole.noMoney, 1);
  EXPECT_EQ(whole.undated, 0);
  for (const char* line :
       {"1400-01-01 * x\n", "9999-12-31 * x\n", "2024-02-01 * plain\n", "account Assets:Tin- old\n",
        "account Assets:Tin- old 2\n", "-1.00 XXX = -4.00 XXX\n"}) {
    EXPECT_NE(text.find(line), std::string::npos) << line << text;
  }
  const std::string first = std::exchange(text, "");
  ASSERT_TRUE(exportJournal(store.root, {}, sink));
  EXPECT_EQ(text, first) << "the same store, the same bytes";

  ExportRequest year;
  year.from = store.on("2024-01-01");
  EXPECT_EQ(exportJournal(store.root, year, sink)->undated, 2);
  EXPECT_FALSE(exportJournal(store.root, {}, [](std::string_view) -> Result<> { return refuse("full"); }));
  ASSERT_TRUE(store.sql("alter table transactions rename column vendor to payee"));
  EXPECT_FALSE(exportJournal(store.root, {}, sink)) << "what cannot be read is no empty journal";
  EXPECT_FALSE(exportCsv(store.root, {}, {}, sink));
}

/// Balances, months and what was paid in a foreign currency of both stores, by the titles of accounts and
/// books.
std::string totals(Ledger& store) {
  std::string text;
  for (const auto& account : store.holders) {
    text += fmt::format("{} {:.2f}\n", account.title,
                        getTheTotalBalance(*MonivaAccount::getAccountWithPK(store.root, account.pk)));
  }
  for (const auto& book : store.books) {
    const auto months = monthsOf(store, book);
    for (const auto& month : months.listArray) {
      text += fmt::format("{} {} {:.2f} {:.2f}\n", book.title, month.title, month.incomeAmount,
                          month.expenseAmount);
    }
  }
  Run foreign = store.connection().query(
      "select total(amount2) from transactions where deleted = 0 and paid = 1 and bid = 20 and type in (11, "
      "12)"
      " and currency2 = 'GBP'");
  EXPECT_TRUE(foreign.next());
  text += fmt::format("GBP {:.2f}\n", foreign.real(0));
  return text;
}

TEST(Table, isTakenInAgain) {
  always(20, [] {
    Ledger store;
    Ledger other;
    for (Ledger* each : {&store, &other}) {
      EXPECT_TRUE(each->sql("update account set title = 'Bank' where oldTitle = ?", {each->bank->pk}));
      each->onlyImportable = true;
      each->holders.pop_back();  // which takes expenses alone
    }
    for (int i = Ledger::number(0, 40); i > 0; --i) store.happen();
    // What was settled ahead of its day is in the past by now.
    other.setClock("2025-06-15 12:00:00");
    std::string text;
    const CsvForm form{.separator = Ledger::any<char>({',', ';', '\t'}),
                       .hasMark = Ledger::number(0, 2) == 0};
    RC_ASSERT(exportCsv(store.root, {}, form, [&](std::string_view bytes) -> Result<> {
                text += bytes;
                return {};
              }).has_value());
    const auto file = other.documents() / "x.csv";
    putBytes(file, text);
    const auto outcome =
        importFile(other.root, file, {.reading = {}, .currency = "EUR", .progress = nullptr});
    if (!outcome) RC_FAIL(outcome.error().why + "\n" + text);
    if (outcome->badRows > 0) RC_FAIL(outcome->problems[0].reason.english() + "\n" + text);
    if (totals(other) != totals(store)) RC_FAIL(totals(other) + "\n" + totals(store) + "\n" + text);
  });
}

}  // namespace
}  // namespace moniva
