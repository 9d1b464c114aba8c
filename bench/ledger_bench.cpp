// What a household's pages cost beside the same figures by one prepared statement, over ten years of records,
// as ratios of both in the same run.

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sqlite3.h>

#include <fstream>

#include "model/account_balance.h"
#include "model/mv_transaction.h"
#include "reports/category_report.h"
#include "reports/payer_filter.h"
#include "reports/payment_report.h"
#include "reports/transaction_report.h"
#include "reports/vendor_report.h"
#include "side_by_side.h"
#include "ten_years.h"

namespace moniva {
namespace {

using bench::TenYears;
using bench::tenYears;

/// A statement compiled once on a connection of its own, set up as ours is.
class ByHand {
 public:
  ByHand(const TenYears& store, const char* sql) {
    sqlite3_open_v2(store.file().c_str(), &db_, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
    sqlite3_exec(db_, "PRAGMA cache_size = -16384", nullptr, nullptr, nullptr);
    sqlite3_prepare_v2(db_, sql, -1, &statement_, nullptr);
  }
  ~ByHand() {
    sqlite3_finalize(statement_);
    sqlite3_close(db_);
  }
  ByHand(const ByHand&) = delete;
  ByHand& operator=(const ByHand&) = delete;

  void bind(int slot, double value) { sqlite3_bind_double(statement_, slot, value); }
  void bind(int slot, Date value) { bind(slot, value.secondsSince1970); }
  void bind(int slot, const std::string& value) {
    sqlite3_bind_text(statement_, slot, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
  }
  void bind(int slot, int value) { sqlite3_bind_int(statement_, slot, value); }

  /// Runs it to its end, handing each row to `take`.
  template <class Take>
  void run(const Take& take) {
    while (sqlite3_step(statement_) == SQLITE_ROW) take(statement_);
    sqlite3_reset(statement_);
  }
  /// The sum of the first column over all rows.
  double total() {
    double sum = 0;
    run([&](sqlite3_stmt* row) { sum += sqlite3_column_double(row, 0); });
    return sum;
  }

 private:
  sqlite3* db_ = nullptr;
  sqlite3_stmt* statement_ = nullptr;
};

std::string textAt(sqlite3_stmt* row, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  return text != nullptr ? std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(row, column)))
                         : std::string();
}

/// Both sides come to the same, to less than a cent in all.
bool agree(double ours, double theirs) {
  return std::abs(ours - theirs) < 0.005;
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Iterations(11)->UseManualTime();
}

/// What a line of a register shows, as plainly as it can be kept.
struct Line {
  double amount, foreign, datetime;
  int type;
  bool paid;
  std::string eid, currency, note, zone, repeat, seed, group;
  std::string account, book, category, above, vendor;  ///< titles
};

void registerOfAMonth(benchmark::State& state) {
  TenYears& store = tenYears(state.range(0));
  if (!store.ready) return state.SkipWithError("the store could not be made");
  ByHand hand(
      store,
      "select t.amount, t.amount2, t.datetime, t.type, t.paid, t.eid, t.currency2, t.note, t.barcode, "
      "t.repeat,"
      " t.repeat_seed, t.transferEID, a.title, b.title, c.title, p.title, v.title from transactions t"
      " left join account a on a.oldTitle = t.account left join account b on b.oldTitle = t.book"
      " left join category c on c.oldTitle = t.subcategory left join category p on p.oldTitle = t.category"
      " left join category v on v.oldTitle = t.vendor where t.deleted = 0 and t.paid = 1 and ? <= t.datetime"
      " and t.datetime <= ? and t.type = 12 and t.book = ? order by t.datetime");
  hand.bind(1, store.monthBegin());
  hand.bind(2, store.monthEnd());
  hand.bind(3, store.book.pk);
  const auto theirs = [&] {
    std::vector<Line> lines;
    hand.run([&](sqlite3_stmt* row) {
      lines.push_back({sqlite3_column_double(row, 0), sqlite3_column_double(row, 1),
                       sqlite3_column_double(row, 2), sqlite3_column_int(row, 3),
                       sqlite3_column_int(row, 4) != 0, textAt(row, 5), textAt(row, 6), textAt(row, 7),
                       textAt(row, 8), textAt(row, 9), textAt(row, 10), textAt(row, 11), textAt(row, 12),
                       textAt(row, 13), textAt(row, 14), textAt(row, 15), textAt(row, 16)});
    });
    return lines;
  };
  // As a list that a person pages through: names are read again when the store has changed.
  RecordNames names(store.root);
  const auto ours = [&] {
    std::vector<MVTransaction> rows;
    names.renew();
    (void)MVTransaction::transactionsWhere(
        store.root,
        "deleted = 0 and paid = 1 and ? <= datetime and datetime <= ? and type = 12 and book = ? order by"
        " datetime",
        std::initializer_list<Value>{store.monthBegin(), store.monthEnd(), store.book.pk},
        [&](MVTransaction row) { rows.push_back(std::move(row)); }, &names);
    return rows;
  };
  double sum = 0;
  for (const auto& row : ours()) sum += row.amount;
  double expected = 0;
  const auto lines = theirs();
  for (const auto& line : lines) expected += line.amount;
  if (!agree(sum, expected)) return state.SkipWithError("the results differ");
  bench::sideBySide(
      state, static_cast<std::int64_t>(lines.size()), [&] { benchmark::DoNotOptimize(ours()); },
      [&] { benchmark::DoNotOptimize(theirs()); });
}
BENCHMARK(registerOfAMonth)->Apply(sizes);

void balancesOfAllAccounts(benchmark::State& state) {
  TenYears& store = tenYears(state.range(0));
  if (!store.ready) return state.SkipWithError("the store could not be made");
  ByHand hand(
      store,
      "select sum(case when type = 11 or (type > 21 and type < 29) then amount when type = 12 or (type > 31"
      " and type < 39) then -amount when type = 50 then amount end), account from transactions where account"
      " != '' and deleted = 0 and (paid = 1 or type = 50) group by account");
  const auto ours = [&] {
    double total = 0;
    if (const auto sums = sumsOfAllAccounts(store.root)) {
      for (const auto& [key, sum] : *sums) total += sum;
    }
    return total;
  };
  if (!agree(ours(), hand.total())) return state.SkipWithError("the results differ");
  bench::sideBySide(
      state, 8, [&] { benchmark::DoNotOptimize(ours()); }, [&] { benchmark::DoNotOptimize(hand.total()); });
}
BENCHMARK(balancesOfAllAccounts)->Apply(sizes);

void keptBalances(benchmark::State& state) {
  TenYears& store = tenYears(state.range(0));
  if (!store.ready) return state.SkipWithError("the store could not be made");
  ByHand hand(store,
              "select title, type, beginBalance, currency, enabled, note, budgetEnabled, incomeEnabled,"
              " totalBalance, orderID, kind, isGroup, expandOption from account where oldTitle = ?");
  const auto accounts = MonivaAccount::list(store.root, kAccountKind);
  const auto theirs = [&] {
    double total = 0;
    for (const auto& account : accounts) {
      hand.bind(1, account.pk);
      hand.run([&](sqlite3_stmt* row) { total += sqlite3_column_double(row, 8); });
    }
    return total;
  };
  const auto ours = [&] {
    double total = 0;
    for (const auto& account : MonivaAccount::list(store.root, kAccountKind)) total += account.totalBalance;
    return total;
  };
  if (!agree(ours(), theirs())) return state.SkipWithError("the results differ");
  bench::sideBySide(
      state, 8, [&] { benchmark::DoNotOptimize(ours()); }, [&] { benchmark::DoNotOptimize(theirs()); });
}
BENCHMARK(keptBalances)->Arg(10'000)->Iterations(51)->UseManualTime();

// Breakdowns of a year and of all ten; the second argument is 1 for the year.

struct Row {
  double amount;
  int count;
  std::string title;
};

/// `grouped` gives amount, key and count of each row; by hand the titles of the keys are joined to it.
template <class Report>
void breakdown(benchmark::State& state, const std::string& grouped, const char* table, const Report& report) {
  TenYears& store = tenYears(state.range(0));
  if (!store.ready) return state.SkipWithError("the store could not be made");
  const bool isYear = state.range(1) == 1;
  const Date from = isYear ? store.yearBegin() : store.begin();
  const Date to = isYear ? store.yearEnd() : store.end();
  const std::string sql = fmt::format(
      "select g.amount, g.number, n.title from ({}) g left join {} n on n.oldTitle = g.member order by"
      " g.amount desc",
      grouped, table);
  ByHand hand(store, sql.c_str());
  hand.bind(1, from);
  hand.bind(2, to);
  hand.bind(3, store.book.pk);
  const auto theirs = [&] {
    std::vector<Row> rows;
    hand.run([&](sqlite3_stmt* row) {
      rows.push_back({sqlite3_column_double(row, 0), sqlite3_column_int(row, 1), textAt(row, 2)});
    });
    return rows;
  };
  double expected = 0;
  for (const auto& row : theirs()) expected += row.amount;
  const auto found = report(store, from, to);
  if (!found || !agree(found->expenseAmount, expected)) return state.SkipWithError("the results differ");
  bench::sideBySide(
      state, 1, [&] { benchmark::DoNotOptimize(report(store, from, to)); },
      [&] { benchmark::DoNotOptimize(theirs()); });
}

void periods(benchmark::internal::Benchmark* benchmark) {
  for (const int records : {10'000, 100'000, 1'000'000}) {
    benchmark->Args({records, 1})->Args({records, 10});
  }
  benchmark->Iterations(15)->UseManualTime();
}

void byCategory(benchmark::State& state) {
  breakdown(
      state,
      "select sum(amount) as amount, category as member, count(eid) as number from transactions where amount "
      ">"
      " 0 and ? <= datetime and datetime <= ? and book=? and deleted = 0 and (type = 12 or type = 14) and"
      " category != '' and category not NULL and paid = 1 group by category",
      "category", [](TenYears& store, Date from, Date to) {
        return getSubCategoryReportFor(MVCategory::rootCateForType(store.root, kind::kExpense), store.book,
                                       from, to);
      });
}
BENCHMARK(byCategory)->Apply(periods);

void byVendor(benchmark::State& state) {
  breakdown(
      state,
      "select sum(amount) as amount, vendor as member, count(eid) as number from transactions where amount > "
      "0"
      " and ? <= datetime and datetime <= ? and book=? and deleted = 0 and +type = 12 and paid = 1 group by"
      " vendor",
      "category", [](TenYears& store, Date from, Date to) {
        return getReportForAllVendor(store.book, kind::kExpense, from, to);
      });
}
BENCHMARK(byVendor)->Apply(periods);

/// With what tells payments of compound records, as the report does.
void byAccount(benchmark::State& state) {
  const auto filter = payerFilter(tenYears(10'000).book);
  std::string condition = filter.sql;
  for (auto at = condition.find('?'); at != std::string::npos; at = condition.find('?', at + 2)) {
    condition.replace(at, 1, "?3");
  }
  breakdown(
      state,
      "select sum(amount) as amount, account as member, count(eid) as number from transactions t where amount"
      " > 0 and ? <= datetime and datetime <= ? and " +
          condition + " and deleted = 0 and +type = 12 and paid = 1 and syear != 1002 group by account",
      "account", [](TenYears& store, Date from, Date to) {
        return getReportForPaymentAccount(store.book, kind::kExpense, from, to);
      });
}
BENCHMARK(byAccount)->Apply(periods);

// How pages grow with the store: the larger one beside the smaller one.

double monthPage(TenYears& store) {
  TransactionReport report(store.root);
  report.setMonivaAccount(store.book);
  report.setTransactionType(1112);
  const auto found = report.getSummaryFrom(store.monthBegin(), store.monthEnd());
  return found ? found->expenseAmount : -1;
}

void monthAmongTenYearsBesideOne(benchmark::State& state) {
  TenYears& ten = tenYears(100'000);
  TenYears& one = tenYears(10'000, 1);
  if (!ten.ready || !one.ready) return state.SkipWithError("the store could not be made");
  bench::sideBySide(
      state, 1, [&] { benchmark::DoNotOptimize(monthPage(ten)); },
      [&] { benchmark::DoNotOptimize(monthPage(one)); });
}
BENCHMARK(monthAmongTenYearsBesideOne)->Iterations(101)->UseManualTime();

void monthsOfTenTimesTheRecords(benchmark::State& state) {
  TenYears& large = tenYears(100'000);
  TenYears& small = tenYears(10'000);
  if (!large.ready || !small.ready) return state.SkipWithError("the store could not be made");
  const auto months = [](TenYears& store) {
    TransactionReport report(store.root);
    report.setMonivaAccount(store.book);
    report.setTransactionType(1112);
    report.setBeginDate(store.begin());
    report.setEndDate(store.end());
    return report.reportByMonth();
  };
  bench::sideBySide(
      state, 120, [&] { benchmark::DoNotOptimize(months(large)); },
      [&] { benchmark::DoNotOptimize(months(small)); });
}
BENCHMARK(monthsOfTenTimesTheRecords)->Iterations(21)->UseManualTime();

/// MiB of memory the work took at its peak, above what the program had before.
template <class Work>
double peak(const Work& work) {
  const auto field = [](std::string_view name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with(name)) return std::stod(line.substr(name.size() + 1)) / 1024;
    }
    return 0.0;
  };
  ::malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << "5";
  const double before = field("VmRSS");
  work();
  return field("VmHWM") - before;
}

/// The memory of reports whose page cache is cold: `mib` holds the engine's pages (16 at most) too.
void memoryOfReports(benchmark::State& state) {
  TenYears& store = tenYears(state.range(0));
  if (!store.ready) return state.SkipWithError("the store could not be made");
  double most = 0;
  for (auto round : state) {
    static_cast<void>(round);
    const auto root = MVCategory::rootCateForType(store.root, kind::kExpense);
    TransactionReport report(store.root);
    report.setMonivaAccount(store.book);
    report.setTransactionType(1112);
    report.setBeginDate(store.begin());
    report.setEndDate(store.end());
    most = std::max(
        most, peak([&] {
          benchmark::DoNotOptimize(report.reportByMonth());
          benchmark::DoNotOptimize(report.reportByDay());
          benchmark::DoNotOptimize(getSubCategoryReportFor(root, store.book, store.begin(), store.end()));
          benchmark::DoNotOptimize(
              getReportForAllVendor(store.book, kind::kExpense, store.begin(), store.end()));
          benchmark::DoNotOptimize(
              getReportForPaymentAccount(store.book, kind::kExpense, store.begin(), store.end()));
        }));
  }
  state.counters["mib"] = most;
}
BENCHMARK(memoryOfReports)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Iterations(3);

}  // namespace
}  // namespace moniva
