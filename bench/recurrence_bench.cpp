// What bringing series up to date costs beside the same rows inserted by a bare prepared statement, in as
// many transactions; and finding that nothing is due in a large store beside opening it. Ratios of both in
// the same run.

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include "recurrence/do_db_recurring.h"
#include "recurrence/spend_repeat.h"
#include "side_by_side.h"
#include "storage/writes.h"
#include "ten_years.h"

namespace moniva {
namespace {

constexpr int kSeries = 200;
constexpr int kDays = 50;

/// Daily expenses from today on.
bool addSeries(MVAppRoot& root, const std::string& book, const std::string& account,
               const std::string& category, const std::string& vendor) {
  return atomically(root,
                    [&](Connection&) -> Result<> {
                      for (int i = 0; i < kSeries; ++i) {
                        Spend spend(root);
                        spend.amount = 1 + i;
                        spend.datetime = root.calendar().dateWithDay(root.now(), 1);
                        spend.book = book;
                        spend.account = account;
                        spend.category = spend.subcategory = category;
                        spend.vendor = vendor;
                        spend.note = fmt::format("Series {}", i);
                        spend.repeat = textOf(RepeatRule::daily);
                        if (auto added = spend.addRepeatSeed(); !added) return added;
                      }
                      return {};
                    })
      .has_value();
}

class Ours : public bench::BenchStore {
 public:
  Ours() : clock_(static_cast<FixedClock&>(*root.platform().clock)) {
    MonivaAccount book(root);
    book.aKind = kBookKind;
    book.setType("_Book");
    book.title = "Home";
    MonivaAccount account(root);
    account.aKind = kAccountKind;
    account.setType("_SavingAccount");
    account.title = "Cash";
    MVCategory category(root);
    category.title = "Food";
    Vendor vendor(root);
    vendor.title = "Baker";
    ready = ready && book.add() && account.add() && category.addCate() && vendor.add() &&
            addSeries(root, book.pk, account.pk, category.pk, vendor.pk);
  }
  void daysPass() { clock_.set(calendar().dateWithDay(root.now(), kDays)); }
  bool catchUp() {
    const auto all = updateRecurringTransactionsWithFuture(root);
    return all && all->made == kSeries * kDays && all->troubles.empty();
  }

 private:
  FixedClock& clock_;
};

constexpr std::string_view kColumns =
    "amount, type, note, category, subcategory, datetime, repeat, account, currency2, amount2, editDate, "
    "eid, vendor, book, paid, needReimburse, sday, repeat_seed, barcode, transferEID, bid, payDate, ipid, "
    "syear, edit_ipid";
constexpr int kSlots = 25;
constexpr int kSeedColumn = 17;

/// A store of its own, the engine set up as ours is, that takes the rows our store has made.
class Bare {
 public:
  Bare() {
    sqlite3_open_v2(store_.file().c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    sqlite3_exec(db_,
                 "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; PRAGMA cache_size = -16384; PRAGMA "
                 "wal_autocheckpoint = 4000; PRAGMA journal_size_limit = 67108864",
                 nullptr, nullptr, nullptr);
    const std::string sql = fmt::format(
        "insert into transactions ({}) values (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)", kColumns);
    sqlite3_prepare_v2(db_, sql.c_str(), -1, &insert_, nullptr);
  }
  ~Bare() {
    sqlite3_finalize(insert_);
    sqlite3_close(db_);
  }
  /// The rows entered after the last that were read.
  void read(Connection& ours) {
    rows_.clear();
    Run run = ours.query(
        fmt::format("select {}, rowid from transactions where rowid > ? and repeat_seed != '' order by rowid",
                    kColumns),
        {last_});
    while (run.next()) {
      auto& row = rows_.emplace_back();
      for (int column = 0; column < kSlots; ++column) row.emplace_back(run.text(column));
      last_ = run.integer(kSlots);
    }
  }
  /// A transaction for each series.
  void insert() {
    const std::string* seed = nullptr;
    for (const auto& row : rows_) {
      if (seed == nullptr || *seed != row[kSeedColumn]) {
        if (seed != nullptr) sqlite3_exec(db_, "COMMIT", nullptr, nullptr, nullptr);
        sqlite3_exec(db_, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
        seed = &row[kSeedColumn];
      }
      for (int slot = 1; slot <= kSlots; ++slot) {
        const auto& value = row[static_cast<std::size_t>(slot - 1)];
        sqlite3_bind_text(insert_, slot, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT);
      }
      failed_ = failed_ || sqlite3_step(insert_) != SQLITE_DONE;
      sqlite3_reset(insert_);
    }
    sqlite3_exec(db_, "COMMIT", nullptr, nullptr, nullptr);
  }
  bool isSound() const { return store_.ready && !failed_ && rows_.size() == kSeries * kDays; }

 private:
  bench::BenchStore store_;
  sqlite3* db_ = nullptr;
  sqlite3_stmt* insert_ = nullptr;
  std::vector<std::vector<std::string>> rows_;
  std::int64_t last_ = 0;
  bool failed_ = false;
};

void catchingUp(benchmark::State& state) {
  Ours ours;
  Bare theirs;
  ours.daysPass();
  if (!ours.ready || !ours.catchUp()) return state.SkipWithError("the store could not be made");
  theirs.read(ours.connection());
  theirs.insert();
  std::vector<double> ratios;
  bool sound = theirs.isSound();
  for (auto round : state) {
    static_cast<void>(round);
    ours.daysPass();
    const double our = bench::secondsFor([&] { sound = ours.catchUp() && sound; });
    theirs.read(ours.connection());
    const double their = bench::secondsFor([&] { theirs.insert(); });
    sound = sound && theirs.isSound();
    state.SetIterationTime(our);
    ratios.push_back(our / their);
  }
  if (!sound) return state.SkipWithError("the two stores differ");
  std::ranges::nth_element(ratios, ratios.begin() + static_cast<std::ptrdiff_t>(ratios.size() / 2));
  state.counters["ratio"] = ratios[ratios.size() / 2];
  state.SetItemsProcessed(state.iterations() * kSeries * kDays);
}
BENCHMARK(catchingUp)->Iterations(11)->UseManualTime();

void nothingDue(benchmark::State& state) {
  auto& store = bench::tenYears(1'000'000);
  if (!store.ready || !addSeries(store.root, store.book.pk, store.account.pk, "", "")) {
    return state.SkipWithError("the store could not be made");
  }
  bool sound = true;
  bench::sideBySide(
      state, 1,
      [&] {
        const auto all = updateRecurringTransactionsWithFuture(store.root);
        sound = sound && all && all->made == 0 && all->troubles.empty();
      },
      [&] { sound = sound && store.root.db().initDatabase(); });
  if (!sound) state.SkipWithError("something was due");
}
BENCHMARK(nothingDue)->Iterations(101)->UseManualTime();

}  // namespace
}  // namespace moniva
