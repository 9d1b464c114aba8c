// What a budget and the history of ten years of one cost beside one statement by hand that comes to the same
// figures, as the ratio of both in the same run (limit 3): a statement grouped by months, and one sum over
// the same rows that tells no months.

#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <array>
#include <cmath>

#include "reports/budget_historical_remaining.h"
#include "reports/moniva_account_budget.h"
#include "side_by_side.h"
#include "ten_years.h"

namespace moniva {
namespace {

constexpr std::string_view kRows =
    "from transactions where book = ? and type = 12 and paid = 1 and deleted = 0 and ? <= datetime and"
    " datetime <= ?";

/// A statement by hand, compiled anew each time as a person's is.
class ByHand {
 public:
  ByHand(const bench::TenYears& store, std::string columns, std::string grouped, Date from, Date to)
      : store_(&store),
        sql_(std::move(columns) + std::string(kRows) + std::move(grouped)),
        from_(from),
        to_(to) {
    sqlite3_open_v2(store.file().c_str(), &db_, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_exec(db_, "pragma cache_size = -16384", nullptr, nullptr, nullptr);
  }
  ~ByHand() { sqlite3_close(db_); }
  ByHand(const ByHand&) = delete;
  ByHand& operator=(const ByHand&) = delete;

  /// The total, and the number of rows answered.
  std::pair<double, int> run() const {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db_, sql_.c_str(), -1, &statement, nullptr);
    sqlite3_bind_text(statement, 1, store_->book.pk.c_str(), -1, SQLITE_STATIC);
    sqlite3_bind_double(statement, 2, from_.secondsSince1970);
    sqlite3_bind_double(statement, 3, to_.secondsSince1970);
    std::pair<double, int> answer;
    while (sqlite3_step(statement) == SQLITE_ROW) {
      answer.first += sqlite3_column_double(statement, 0);
      ++answer.second;
    }
    sqlite3_finalize(statement);
    return answer;
  }

 private:
  const bench::TenYears* store_;
  std::string sql_;
  Date from_;
  Date to_;
  sqlite3* db_ = nullptr;
};

/// The book with a budget since December 2013, which is 120 months; nothing where that cannot be made.
std::optional<MonivaAccount> withBudget(bench::TenYears& store, bool inherits) {
  if (!store.ready) return std::nullopt;
  MonivaAccount book = store.book;
  store.connection().execute("delete from transactions where type in (61, 63)");
  BookBudget budget(book);
  budget.year = 2013;
  budget.month = 12;
  budget.amount = 1000;
  budget.inheritRemaining = inherits;
  if (!budget.add() || !setBudgetOpened(book, true)) return std::nullopt;
  return book;
}

enum class Hand { grouped, total };

ByHand byHand(const bench::TenYears& store, const BookBudget& present, Hand hand, bool whole) {
  // The months of the person's zone.
  ::setenv("TZ", "Europe/Berlin", 1);
  const Date from = whole ? store.calendar().dateWithYear(2013, 12, 1) : present.budgetBeginDate;
  const Date to = store.calendar().dateEnd(present.budgetEndDate);
  if (hand == Hand::total) return {store, "select sum(amount) ", "", from, to};
  return {store, "select sum(amount), strftime('%Y%m', datetime, 'unixepoch', 'localtime') as month ",
          " group by month", from, to};
}

/// The budget of the present month, with what every month before carries into it or with nothing carried.
void page(benchmark::State& state, Hand hand, bool inherits) {
  auto& store = bench::tenYears(state.range(0));
  auto book = withBudget(store, inherits);
  const auto budget = book ? getMainBudget(*book) : nullptr;
  if (!budget || !*budget) return state.SkipWithError("the store could not be made");
  const ByHand other = byHand(store, **budget, hand, inherits);
  const double spent = inherits
                           ? 120'000 - ((*budget)->lastMonthRolloverAmount + 1000 - (*budget)->monivaAmount)
                           : (*budget)->monivaAmount;
  // What is carried is rounded to single precision each month.
  if (std::abs(spent - other.run().first) > 1e-5 * spent) return state.SkipWithError("the results differ");
  bench::sideBySide(
      state, 1, [&] { benchmark::DoNotOptimize(getMainBudget(*book)); },
      [&] { benchmark::DoNotOptimize(other.run()); });
}
BENCHMARK_CAPTURE(page, carriedBesideGrouped, Hand::grouped, true)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Iterations(11)
    ->UseManualTime();
BENCHMARK_CAPTURE(page, carriedBesideOneSum, Hand::total, true)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Iterations(11)
    ->UseManualTime();
BENCHMARK_CAPTURE(page, aloneBesideOneSum, Hand::total, false)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Iterations(101)
    ->UseManualTime();

void history(benchmark::State& state, Hand hand) {
  auto& store = bench::tenYears(state.range(0));
  auto book = withBudget(store, true);
  const auto budget = book ? getMainBudget(*book) : nullptr;
  if (!budget || !*budget) return state.SkipWithError("the store could not be made");
  const ByHand other = byHand(store, **budget, hand, true);
  const BudgetHistoricalRemaining remaining(*book);
  const auto months = remaining.months();
  double spent = 0;
  for (const auto& month : *months) spent += month.expense;
  if (months->size() != 120 || std::abs(spent - other.run().first) > 0.005) {
    return state.SkipWithError("the results differ");
  }
  bench::sideBySide(
      state, 120, [&] { benchmark::DoNotOptimize(remaining.months()); },
      [&] { benchmark::DoNotOptimize(other.run()); });
}
BENCHMARK_CAPTURE(history, besideGrouped, Hand::grouped)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Iterations(11)
    ->UseManualTime();
BENCHMARK_CAPTURE(history, besideOneSum, Hand::total)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Iterations(11)
    ->UseManualTime();

}  // namespace
}  // namespace moniva
