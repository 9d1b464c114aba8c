// What the bill of a credit account costs, and a list of 60 bills, beside one grouped query by hand over the
// records they follow from: all of the account up to the month. Limit 3, as the ratio of both in the same
// run.

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <array>

#include "reports/bill_report.h"
#include "side_by_side.h"
#include "ten_years.h"

namespace moniva {
namespace {

/// A credit account among those of ten years, and its last whole month.
class Bills {
 public:
  explicit Bills(std::int64_t records) : store_(bench::tenYears(records)), report_(card(store_)) {
    sqlite3_open_v2(store_.file().c_str(), &db_, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_prepare_v2(db_,
                       "select cast(datetime / 2629746 as integer), type, sum(amount) from transactions where"
                       " account = ? and datetime <= ? and deleted = 0 and paid = 1 group by 1, 2",
                       -1, &statement_, nullptr);
  }
  ~Bills() {
    sqlite3_finalize(statement_);
    sqlite3_close(db_);
  }
  Bills(const Bills&) = delete;
  Bills& operator=(const Bills&) = delete;

  double one() { return total(report_.getBillForYear(2023, 11)); }
  double sixty() {
    const auto bills = report_.getBillsUpTo(2023, 11, 60);
    return bills ? total(bills->listArray.front()) : -1;
  }
  /// All the account was charged less all that was paid back, by months of equal length: the calendar is left
  /// out.
  double byHand() {
    double left = 0;
    const Date end = store_.calendar().dateWithYear(2023, 12, 1).plusSeconds(20 * 86'400.0 - 1);
    sqlite3_bind_text(statement_, 1, report_.monivaAccount.pk.c_str(), -1, SQLITE_STATIC);
    sqlite3_bind_double(statement_, 2, end.secondsSince1970);
    while (sqlite3_step(statement_) == SQLITE_ROW) {
      const int type = sqlite3_column_int(statement_, 1);
      const double sum = sqlite3_column_double(statement_, 2);
      left += type == kind::kExpense || type > 30 ? sum : -sum;
    }
    sqlite3_reset(statement_);
    return left;
  }

 private:
  static MonivaAccount card(bench::TenYears& store) {
    if (!store.account.isDebtAccount()) static_cast<void>(store.account.updateType("_DebtAccount"));
    return store.account;
  }
  static double total(const Result<BillReportSummary>& bill) {
    return bill ? bill->bileAmount + bill->repayAmount : -1;
  }

  bench::TenYears& store_;
  BillReport report_;
  sqlite3* db_ = nullptr;
  sqlite3_stmt* statement_ = nullptr;
};

void compare(benchmark::State& state, std::int64_t bills, double (Bills::*ours)()) {
  Bills setting(state.range(0));
  if ((setting.*ours)() <= 0 || setting.one() != setting.sixty() || setting.byHand() <= 0) {
    return state.SkipWithError("the results differ");
  }
  bench::sideBySide(
      state, bills, [&] { benchmark::DoNotOptimize((setting.*ours)()); },
      [&] { benchmark::DoNotOptimize(setting.byHand()); });
}

void oneBill(benchmark::State& state) {
  compare(state, 1, &Bills::one);
}
BENCHMARK(oneBill)->Arg(100'000)->Arg(1'000'000)->Iterations(21)->UseManualTime();

void sixtyBills(benchmark::State& state) {
  compare(state, 60, &Bills::sixty);
}
BENCHMARK(sixtyBills)->Arg(100'000)->Arg(1'000'000)->Iterations(21)->UseManualTime();

}  // namespace
}  // namespace moniva
