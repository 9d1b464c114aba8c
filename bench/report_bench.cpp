// What lists of months and of days cost beside statements run by hand, as the ratio of both in the same run:
// months beside the same statements (limit 1.15), days beside one pass over the same rows (limit 1.25).

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <random>

#include "bench_store.h"
#include "model/moniva_account.h"
#include "reports/transaction_report.h"
#include "side_by_side.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

constexpr int kYears = 10;

/// A store with one book and so many expenses and incomes over ten years.
class Store : public bench::BenchStore {
 public:
  explicit Store(int rows) : book(root) {
    book.aKind = kBookKind;
    book.title = "Household";
    ready = ready && book.add().has_value();
    if (!ready) return;
    Connection& db = connection();
    Transaction transaction(db);
    std::mt19937 random(1);
    for (int i = 0; i < rows; ++i) {
      const double cents = static_cast<double>(random() % 20'000 + 1);
      const double moment = begin() + static_cast<double>(random() % (kYears * 365 * 86'400U));
      db.execute(
          "insert into transactions (eid, bid, amount, type, datetime, book, paid) values (?,20,?,?,?,?,1)",
          {root.newIdentifier(), cents / 100, random() % 20 == 0 ? 11 : 12, moment, book.pk});
    }
    ready = transaction.commit();
  }

  /// The first moment of the ten years.
  double begin() const { return calendar().dateWithYear(2014, 1, 1).secondsSince1970; }
  Date end() const { return calendar().dateWithYear(2014 + kYears, 1, 1).plusSeconds(-1); }

  MonivaAccount book;
};

/// The two sums of each month by two statements compiled once, and nothing else.
double byHand(sqlite3* db, const Store& store) {
  double total = 0;
  for (const char* sql : {"select sum(amount), count(eid) from transactions where deleted = 0 and paid = 1 "
                          "and ? <= datetime and datetime"
                          " <= ? and book=? and type = 11",
                          "select sum(amount), count(eid) from transactions where deleted = 0 and paid = 1 "
                          "and type != 33 and ? <= datetime"
                          " and datetime <= ? and book=? and type = 12"}) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db, sql, -1, &statement, nullptr);
    Date month{store.begin()};
    for (int i = 0; i < kYears * 12; ++i) {
      const Date next = store.calendar().dateWithMonth(month, 1);
      sqlite3_bind_double(statement, 1, month.secondsSince1970);
      sqlite3_bind_double(statement, 2, next.secondsSince1970 - 1);
      sqlite3_bind_text(statement, 3, store.book.pk.c_str(), -1, SQLITE_STATIC);
      sqlite3_step(statement);
      total += sqlite3_column_double(statement, 0);
      sqlite3_reset(statement);
      month = next;
    }
    sqlite3_finalize(statement);
  }
  return total;
}

/// One ordered pass over the rows of each of the two sums, reading the date and the amount, and nothing else.
double passByHand(sqlite3* db, const Store& store) {
  double total = 0;
  for (const char* sql :
       {"select datetime, amount from transactions where deleted = 0 and paid = 1 and ? <= datetime and"
        " datetime <= ? and book=? and type = 11 order by datetime",
        "select datetime, amount from transactions where deleted = 0 and paid = 1 and type != 33 and ? <="
        " datetime and datetime <= ? and book=? and type = 12 order by datetime"}) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db, sql, -1, &statement, nullptr);
    sqlite3_bind_double(statement, 1, store.begin());
    sqlite3_bind_double(statement, 2, store.end().secondsSince1970);
    sqlite3_bind_text(statement, 3, store.book.pk.c_str(), -1, SQLITE_STATIC);
    while (sqlite3_step(statement) == SQLITE_ROW) {
      benchmark::DoNotOptimize(sqlite3_column_double(statement, 0));
      total += sqlite3_column_double(statement, 1);
    }
    sqlite3_finalize(statement);
  }
  return total;
}

/// A list of the ten years beside the work by hand that has to come to the same.
void tenYears(benchmark::State& state, std::int64_t periods,
              Result<TransReportSummary> (TransactionReport::*list)(),
              double (*hand)(sqlite3*, const Store&)) {
  Store store(static_cast<int>(state.range(0)));
  if (!store.ready) return state.SkipWithError("the store could not be made");
  TransactionReport report(store.root);
  report.setMonivaAccount(store.book);
  report.setTransactionType(1112);
  report.setBeginDate(Date{store.begin()});
  report.setEndDate(store.end());
  sqlite3* db = nullptr;
  sqlite3_open_v2(store.file().c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
  const auto made = (report.*list)();
  const double total = hand(db, store);
  if (!made || std::abs(made->incomeAmount + made->expenseAmount - total) > 0.005) {
    state.SkipWithError("the results differ");
  } else {
    bench::sideBySide(
        state, periods, [&] { benchmark::DoNotOptimize((report.*list)()); },
        [&] { benchmark::DoNotOptimize(hand(db, store)); });
  }
  sqlite3_close(db);
}

void monthsOfTenYears(benchmark::State& state) {
  tenYears(state, kYears * 12, &TransactionReport::reportByMonth, byHand);
}
BENCHMARK(monthsOfTenYears)->Arg(10'000)->Arg(100'000)->Iterations(21)->UseManualTime();

void daysOfTenYears(benchmark::State& state) {
  tenYears(state, 3'652, &TransactionReport::reportByDay, passByHand);
}
BENCHMARK(daysOfTenYears)->Arg(10'000)->Arg(100'000)->Iterations(21)->UseManualTime();

}  // namespace
}  // namespace moniva
