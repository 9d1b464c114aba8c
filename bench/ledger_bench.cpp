// What a household's pages cost beside the same figures by one prepared statement, over ten years of records,
// as ratios of both in the same run.

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include "model/account_balance.h"
#include "model/mv_transaction.h"
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

}  // namespace
}  // namespace moniva
