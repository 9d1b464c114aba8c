// What looking over all series costs: beside one grouped pass that reads the same rows, and whether it grows
// with the rows alone.

#include <sqlite3.h>

#include "bench_store.h"
#include "recurrence/series_repair.h"
#include "side_by_side.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

constexpr int kSeries = 1000;

/// A store with healthy daily series of so many records each.
class SeriesStore : public bench::BenchStore {
 public:
  explicit SeriesStore(int records) {
    if (!ready) return;
    Connection& db = connection();
    Transaction transaction(db);
    ready =
        db.execute(
            "with recursive n(i) as (select 0 union all select i + 1 from n where i + 1 < ?) insert into"
            " transactions (eid, bid, type, repeat, datetime, syear, amount, note) select"
            " printf('018d5cd0-bc00-7000-8000-%012d', i), 20, 85, 'Daily', 1.7e9, 12, 5, 'Series' from n",
            {kSeries}) &&
        db.execute(
            "with recursive n(i) as (select 0 union all select i + 1 from n where i + 1 < ?) insert into"
            " transactions (eid, bid, type, amount, datetime, sday, barcode, editDate, repeat_seed, repeat,"
            " account, book) select seed.eid || '-' || i, 20, 12, 5, 1.6e9 + i * 86400.0, 0,"
            " 'Europe/Berlin', 1.6e9 + i, seed.eid, 'Not Repeat', 'a', 'b' from n, transactions as seed"
            " where seed.type = 85",
            {records}) &&
        transaction.commit();
  }
  bool lookOver() {
    const auto found = repairAllSeries(root, Repair::lookOnly);
    return found && found->empty();
  }
};

void besideOnePass(benchmark::State& state) {
  SeriesStore store(static_cast<int>(state.range(0)));
  if (!store.ready || !store.lookOver()) return state.SkipWithError("the store could not be made");
  sqlite3* db = nullptr;
  sqlite3_open_v2(store.file().c_str(), &db, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
  sqlite3_exec(db, "pragma cache_size = -16384", nullptr, nullptr, nullptr);
  const auto pass = [&] {
    sqlite3_exec(
        db,
        "select repeat_seed, count(eid), max(datetime), sum(deleted < 2), sum(deleted > 1 and ipid like"
        " '%delete by fixDuplicateRecurringItem%') from transactions where repeat_seed > '' group by"
        " repeat_seed",
        nullptr, nullptr, nullptr);
  };
  bench::sideBySide(
      state, state.range(0) * kSeries, [&] { benchmark::DoNotOptimize(store.lookOver()); }, pass);
  sqlite3_close(db);
}
BENCHMARK(besideOnePass)->Arg(100)->Arg(1000)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);

/// Ten times the rows beside ten times the look at one tenth of them: 1 where it is linear.
void tenTimesTheRows(benchmark::State& state) {
  SeriesStore tenth(100);
  SeriesStore whole(1000);
  if (!tenth.ready || !whole.ready) return state.SkipWithError("the stores could not be made");
  bench::sideBySide(
      state, 1000 * kSeries, [&] { benchmark::DoNotOptimize(whole.lookOver()); },
      [&] {
        for (int time = 0; time < 10; ++time) benchmark::DoNotOptimize(tenth.lookOver());
      });
}
BENCHMARK(tenTimesTheRows)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace moniva
