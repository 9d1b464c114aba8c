// One way to say "spent": whatever is in a book, its sums by day, month, year, category, vendor, account,
// currency and list agree with each other and with adding up the rows one by one.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "reports/book_sums.h"
#include "reports/category_report.h"
#include "reports/category_report_query.h"
#include "reports/currency_report.h"
#include "reports/payment_report.h"
#include "reports/transaction_report.h"
#include "reports/vendor_report.h"
#include "support/compound_story.h"

namespace moniva {
namespace {

/// Shares of a spread cost are no sums that doubles hold exactly.
bool same(double one, double other) {
  return std::abs(one - other) < 1e-6;
}

/// A row of `transactions` as it stands.
struct Raw {
  int type, bid, syear, paid, deleted;
  double amount, amount2, datetime;
  std::string eid, category, subcategory, vendor, account, book, group, currency2;
};

/// A household whose records are of every kind, with amounts that doubles hold exactly.
class AnyBooks : public Compound {
 public:
  AnyBooks() {
    rent = category("Rent").pk;
    wage = category("Wage", kind::kIncome).pk;
    Vendor other(root);
    other.title = "Rossi";
    EXPECT_TRUE(other.add());
    rossi = other.pk;
    from = on("2024-01-01").plusSeconds(86400.0 * *rc::gen::inRange(0, 120));
    to = from.plusSeconds(86400.0 * *rc::gen::inRange(0, 200));
    home->updateMonthStartsOn(*rc::gen::element(1, 15, -10));
    Transaction together(connection());
    for (int n = *rc::gen::inRange(3, 25); n > 0; --n) addSomething();
    EXPECT_TRUE(together.commit());
    read();
  }

  double sum(const std::function<bool(const Raw&)>& counts) const {
    double total = 0;
    for (const auto& row : raw) {
      if (counts(row)) total += row.amount;
    }
    return total;
  }
  /// Live, settled and in the period.
  bool isSettled(const Raw& row) const { return row.deleted == 0 && row.paid == 1 && isInPeriod(row); }
  bool isInPeriod(const Raw& row) const {
    return root.calendar().dateBegin(from).secondsSince1970 <= row.datetime &&
           row.datetime <= root.calendar().dateEnd(to).secondsSince1970;
  }
  double sumOf(const Result<std::vector<std::string>>& eids) const {
    double total = 0;
    for (const auto& eid : *eids) {
      total += std::ranges::find(raw, eid, &Raw::eid)->amount;
    }
    return total;
  }

  std::string rent, wage, rossi;
  Date from, to;
  std::vector<Raw> raw;

 private:
  double anyAmount() { return *rc::gen::inRange(1, 400) * 0.25; }
  Date anyDate() { return on("2024-01-01").plusSeconds(*rc::gen::inRange(0, 300 * 24) * 3600.0); }

  Spend anyItem() {
    Spend made = item(anyAmount());
    made.datetime = anyDate();
    made.book = *rc::gen::element(home->pk, home->pk, home->pk, second.pk);
    made.account = *rc::gen::element(cash->pk, bank->pk, std::string());
    made.vendor = *rc::gen::element(vendor, rossi, std::string());
    if (*rc::gen::inRange(0, 3) == 0) made.category = made.subcategory = rent;
    return made;
  }

  void addSomething() {
    const int what = *rc::gen::inRange(0, 14);
    Spend made = anyItem();
    switch (what) {
      case 0: {
        made.type = kind::kIncome;
        made.category = made.subcategory = wage;
        made.vendor.clear();
        break;
      }
      case 1:
        made.foreignCurrency = *rc::gen::element<std::string>("USD", "JPY");
        made.foreignAmount = anyAmount();
        break;
      case 2:
      case 3: {
        std::vector<Spend> items{anyItem(), anyItem()};
        for (auto& one : items) {
          one.account.clear();
          one.book = made.book;
        }
        if (what == 3) items[1].book = second.pk;
        items[1].datetime = items[0].datetime;
        const double total = items[0].amount + items[1].amount;
        std::vector<Payment> payments{payment(*cash, total - 0.25)};
        if (*rc::gen::arbitrary<bool>()) payments.push_back(payment(*bank, 0.25));
        for (auto& one : payments) one.datetime = anyDate();
        EXPECT_TRUE(Spend::addCart(root, items, payments));
        return;
      }
      case 4:
        made.account = cash->pk;
        EXPECT_TRUE(made.saveInstallment(*rc::gen::inRange(2, 5)));
        return;
      case 5:
        made.account = cash->pk;
        EXPECT_TRUE(made.saveApportionedCost(made.datetime, made.datetime.plusSeconds(86400 * 80)));
        return;
      case 6: {
        const Date when = made.datetime;
        EXPECT_TRUE(recordEntry(root, made));
        made = *Spend::spendFromEID(root, made.eid);
        // Not on a day that lies ahead.
        (void)made.refund(made.amount * 0.5, when.plusSeconds(86400 * 3), bank->pk);
        return;
      }
      case 7: {
        auto moved = transfer(anyAmount(), 0);
        moved.amountB = moved.amountA;
        moved.acrossCurrencies = false;
        moved.datetime = anyDate();
        EXPECT_TRUE(recordEntry(root, moved));
        return;
      }
      case 8:
        made.type = kind::kFurtherExpense;
        break;
      default:
        break;
    }
    const bool further = made.type == kind::kFurtherExpense;
    if (further) made.type = kind::kExpense;
    EXPECT_TRUE(recordEntry(root, made));
    if (further) sql("update transactions set type = 14 where eid = ?", {made.eid});
    if (what == 9) sql("update transactions set vendor = 'NoPayee' where eid = ?", {made.eid});
    if (what == 10) sql("update transactions set paid = 0 where eid = ?", {made.eid});
    if (what == 11) {
      EXPECT_TRUE(Spend::spendFromEID(root, made.eid)->delete_());
    }
    if (what == 12) sql("update transactions set category = '', subcategory = '' where eid = ?", {made.eid});
  }

  void read() {
    moniva::Run run = connection().query(
        "select type, bid, syear, paid, deleted, amount, amount2, datetime, eid, category, subcategory, "
        "vendor,"
        " account, book, transferEID, currency2 from transactions");
    const auto integer = [&](int column) { return static_cast<int>(run.integer(column)); };
    const auto text = [&](int column) { return std::string(run.text(column)); };
    while (run.next()) {
      raw.push_back({integer(0), integer(1), integer(2), integer(3), integer(4), run.real(5), run.real(6),
                     run.real(7), text(8), text(9), text(10), text(11), text(12), text(13), text(14),
                     text(15)});
    }
  }
};

void isOneSumHoweverItIsCut(AnyBooks& books) {
  const auto& book = *books.home;
  const auto spent = books.sum([&](const Raw& row) {
    return books.isSettled(row) && row.book == book.pk && row.type == kind::kExpense;
  });
  const auto earned = books.sum([&](const Raw& row) {
    return books.isSettled(row) && row.book == book.pk && row.type == kind::kIncome;
  });
  TransactionReport report(books.root);
  report.setMonivaAccount(book);
  report.setTransactionType(1112);
  report.setBeginDate(books.from);
  report.setEndDate(books.to);
  RC_ASSERT(same(report.getSummaryFrom(books.from, books.to)->expenseAmount, spent));
  for (const auto unit : {PeriodUnit::day, PeriodUnit::week, PeriodUnit::month, PeriodUnit::year}) {
    const auto list = report.reportBy(unit);
    RC_ASSERT(same(list->expenseAmount, spent));
    RC_ASSERT(same(list->incomeAmount, earned));
  }
  RC_ASSERT(same(*transactionSumFrom(book, books.from, books.to, kind::kExpense), spent));
}

void onCategoriesIsWhatTheirRowsSay(AnyBooks& books) {
  const auto& book = *books.home;
  const auto counts = [&](const Raw& row) {
    return books.isSettled(row) && row.book == book.pk && (row.type == 12 || row.type == 14);
  };
  const auto list = getSubCategoryReportFor(MVCategory::rootCateForType(books.root, kind::kExpense), book,
                                            books.from, books.to);
  std::map<std::string, double> rows;
  for (const auto& row : list->listArray) rows[row.category->pk] = row.expenseAmount;
  double total = 0;
  for (const auto& key : {books.food, books.rent}) {
    const auto of = [&](const Raw& row) { return counts(row) && row.category == key; };
    const double positive = books.sum([&](const Raw& row) { return of(row) && row.amount > 0; });
    RC_ASSERT(same(rows[key], positive));
    total += positive;
    const auto category = *MVCategory::getCategory(books.root, key, kind::kExpense);
    RC_ASSERT(same(*transactionSumOfCate(book, category, books.from, books.to), books.sum(of)));
    RC_ASSERT(same(books.sumOf(transactionListOfCate(book, category, books.from, books.to)), books.sum(of)));
    TransactionReport report(books.root);
    report.setMonivaAccount(book);
    report.setCategory(category);
    report.setBeginDate(books.from);
    report.setEndDate(books.to);
    RC_ASSERT(same(report.reportByMonth()->expenseAmount, books.sum(of)));
    PeriodRange range{.unit = PeriodUnit::week, .from = books.from, .to = books.to};
    RC_ASSERT(same(reportForCategory(book, category, range)->expenseAmount, books.sum(of)));
  }
  RC_ASSERT(same(list->expenseAmount, total));
  CategoryReportQuery below(book);
  below.beginDate = books.from;
  below.endDate = books.to;
  RC_ASSERT(same(below.reportForAllSubCategory()->expenseAmount, books.sum([&](const Raw& row) {
    return counts(row) && row.subcategory != kNoCategory &&
           !(row.subcategory.empty() && row.category.empty());
  })));
}

void atVendorsIsWhatTheirRowsSay(AnyBooks& books) {
  const auto& book = *books.home;
  const auto at = [&](const Raw& row, std::string_view key) {
    const bool isNone = row.vendor.empty() || row.vendor == "NoPayee";
    return books.isSettled(row) && row.book == book.pk && row.type == 12 &&
           (key.empty() ? isNone : row.vendor == key);
  };
  const auto list = getReportForAllVendor(book, kind::kExpense, books.from, books.to);
  double total = 0;
  for (const auto& row : list->listArray) {
    const auto key = row.vendor->isNoVendor() ? std::string() : row.vendor->pk;
    RC_ASSERT(same(row.expenseAmount, books.sum([&](const Raw& r) { return at(r, key) && r.amount > 0; })));
    total += row.expenseAmount;
    const PeriodRange range{.unit = PeriodUnit::month, .from = books.from, .to = books.to};
    RC_ASSERT(same(reportForVendor(book, *row.vendor, kind::kExpense, range)->expenseAmount,
                   books.sum([&](const Raw& r) { return at(r, key); })));
    RC_ASSERT(same(books.sumOf(getSpendListOfVendor(book, *row.vendor, kind::kExpense, books.from, books.to)),
                   books.sum([&](const Raw& r) { return at(r, key); })));
  }
  RC_ASSERT(same(total, list->expenseAmount));
  RC_ASSERT(same(total, books.sum([&](const Raw& row) {
    return books.isSettled(row) && row.book == book.pk && row.type == 12 && row.amount > 0;
  })));
}

void fromAccountsIsWhatTheyPaid(AnyBooks& books) {
  const auto& book = *books.home;
  // A record with payments is paid by these, where all its items are in the book.
  std::map<std::string, std::set<std::string>> booksOf;
  std::set<std::string> withPayments;
  for (const auto& row : books.raw) {
    if (row.group.empty() || row.deleted != 0 || row.type > 14) continue;
    if (row.bid == kItemRow) booksOf[row.group].insert(row.book);
    if (row.bid == kPaymentRow) withPayments.insert(row.group);
  }
  const auto isWhole = [&](const Raw& row) {
    return !row.group.empty() && withPayments.contains(row.group) && booksOf[row.group] == std::set{book.pk};
  };
  const auto counts = [&](const Raw& row, std::string_view account) {
    if (!books.isSettled(row) || row.type != 12 || row.amount <= 0 || row.syear == advanced::kCost ||
        row.account != account) {
      return false;
    }
    return row.bid == kPaymentRow ? isWhole(row)
                                  : row.book == book.pk && !(row.account.empty() && isWhole(row));
  };
  const auto list = getReportForPaymentAccount(book, kind::kExpense, books.from, books.to);
  double total = 0;
  for (const auto& key : {books.cash->pk, books.bank->pk, std::string()}) {
    double found = 0;
    for (const auto& row : list->listArray) {
      const bool isNone = row.paymentAccount->isNoneAccount(row.paymentAccount->pk);
      if (isNone ? key.empty() : row.paymentAccount->pk == key) found += row.expenseAmount;
    }
    RC_ASSERT(same(found, books.sum([&](const Raw& row) { return counts(row, key); })));
    total += found;
  }
  RC_ASSERT(same(total, list->expenseAmount));
}

void inForeignMoneyIsInItsOwnUnits(AnyBooks& books) {
  const auto& book = *books.home;
  const auto list = getReportForAllCurrency(book, kind::kExpense, books.from, books.to);
  std::map<std::string, double> expected;
  for (const auto& row : books.raw) {
    if (books.isSettled(row) && row.book == book.pk && row.type == 12 && !row.currency2.empty()) {
      expected[row.currency2] += row.amount2;
    }
  }
  std::map<std::string, double> found;
  for (const auto& row : list->listArray) {
    found[row.currency] = row.expenseAmount;
    const PeriodRange range{.unit = PeriodUnit::month, .from = books.from, .to = books.to};
    RC_ASSERT(
        same(reportForCurrency(book, row.currency, kind::kExpense, range)->expenseAmount, row.expenseAmount));
  }
  RC_ASSERT(found == expected);
}

void andEarnedMakeAnAccountsRegister(AnyBooks& books) {
  auto cash = *MonivaAccount::getAccountWithPK(books.root, books.cash->pk);
  TransactionReport report(books.root);
  report.setMonivaAccount(cash);
  report.setTransactionType(1050);
  const auto all = report.getSummaryFrom(books.from, books.to);
  const double before = *getInitialToDisplay(cash, books.from);
  const double after = *getInitialToDisplay(cash, books.root.calendar().getNextDay(books.to));
  // Income holds what came in by transfer already; expense does not hold what went out.
  RC_ASSERT(same(after, before + all->incomeAmount - all->expenseAmount - all->transferoutAmount));
  RC_ASSERT(same(*getInitialToDisplay(cash, books.on("2030-01-01")), getTheTotalBalance(cash)));
}

RC_GTEST_PROP(Spent, isOneThing, ()) {
  AnyBooks books;
  isOneSumHoweverItIsCut(books);
  onCategoriesIsWhatTheirRowsSay(books);
  atVendorsIsWhatTheirRowsSay(books);
  fromAccountsIsWhatTheyPaid(books);
  inForeignMoneyIsInItsOwnUnits(books);
  andEarnedMakeAnAccountsRegister(books);
}

}  // namespace
}  // namespace moniva
