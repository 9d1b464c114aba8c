// What entering records costs beside the same rows inserted by a bare prepared statement in one transaction,
// and loading them by their identifier beside a bare select of the same columns; as ratios of both in the
// same run.

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include "bench_store.h"
#include "model/debt.h"
#include "model/mv_transaction.h"
#include "model/record_entry.h"
#include "side_by_side.h"
#include "storage/writes.h"

namespace moniva {
namespace {

constexpr std::string_view kColumns =
    "amount, type, note, category, subcategory, datetime, repeat, account, currency2, amount2, editDate, "
    "eid, vendor,"
    " book, paid, needReimburse, sday, repeat_seed, barcode, transferEID, bid, payDate, ipid, syear, "
    "edit_ipid";
constexpr int kStampSlot = 11;
constexpr int kEidSlot = 12;
constexpr int kGroupSlot = 20;
constexpr int kSlots = 25;

/// The bare way into a store of its own: the engine set up as ours is, one statement, one transaction. The
/// rows are those that a record of ours made, under new identifiers.
class Bare {
 public:
  explicit Bare(Connection& ours) {
    sqlite3_open_v2(store_.file().c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    sqlite3_exec(db_,
                 "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; PRAGMA cache_size = -16384; PRAGMA "
                 "wal_autocheckpoint = 4000; PRAGMA journal_size_limit = 67108864",
                 nullptr, nullptr, nullptr);
    const std::string sql = fmt::format(
        "insert into transactions ({}) values (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,"
        "?,?,?,?,?)",
        kColumns);
    sqlite3_prepare_v2(db_, sql.c_str(), -1, &insert_, nullptr);
    Run run = ours.query(fmt::format("select {} from transactions order by rowid", kColumns));
    while (run.next()) {
      std::vector<std::string>& row = rows_.emplace_back();
      for (int column = 0; column < kSlots; ++column) row.emplace_back(run.text(column));
    }
  }
  ~Bare() {
    sqlite3_finalize(insert_);
    sqlite3_close(db_);
  }

  void insert() {
    sqlite3_exec(db_, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    const std::string group = identifier();
    for (const auto& row : rows_) {
      for (int slot = 1; slot <= kSlots; ++slot) text(slot, row[static_cast<std::size_t>(slot - 1)]);
      sqlite3_bind_double(insert_, kStampSlot, 1.7e9 + static_cast<double>(made_));
      text(kEidSlot, identifier());
      if (rows_.size() > 1) text(kGroupSlot, group);
      sqlite3_step(insert_);
      sqlite3_reset(insert_);
    }
    sqlite3_exec(db_, "COMMIT", nullptr, nullptr, nullptr);
  }
  bool isReady() const { return store_.ready && insert_ != nullptr && !rows_.empty(); }
  std::int64_t rows() const { return static_cast<std::int64_t>(rows_.size()); }

 private:
  std::string identifier() { return fmt::format("019412ab-3c4d-7e5f-8a9b-{:012x}", ++made_); }
  void text(int slot, const std::string& value) {
    sqlite3_bind_text(insert_, slot, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT);
  }

  bench::BenchStore store_;
  sqlite3* db_ = nullptr;
  sqlite3_stmt* insert_ = nullptr;
  std::vector<std::vector<std::string>> rows_;
  std::uint64_t made_ = 0;
};

/// A book, an account, a category and a vendor, as a person has them.
class Household : public bench::BenchStore {
 public:
  Household() : book(root), account(root), bank(root), category(root), vendor(root) {
    book.aKind = kBookKind;
    book.setType("_Book");
    book.title = "Home";
    account.aKind = kAccountKind;
    account.setType("_SavingAccount");
    account.title = "Cash";
    bank = account;
    bank.title = "Bank";
    category.title = "Food";
    vendor.title = "Baker";
    ready = ready && book.add() && account.add() && bank.add() && category.addCate() && vendor.add();
  }

  Spend expense(double amount, bool paysItself = true) {
    Spend spend(root);
    spend.amount = amount;
    spend.book = book.pk;
    if (paysItself) spend.account = account.pk;
    spend.category = spend.subcategory = category.pk;
    spend.vendor = vendor.pk;
    return spend;
  }
  bool addPlain() {
    Spend spend = expense(12.5);
    return recordEntry(root, spend).has_value();
  }
  /// The row alone, without what it changes of balances and counts.
  bool addRow() {
    return atomically(root, [&](Connection&) { return expense(12.5).add(); }).has_value();
  }
  bool addCart() {
    std::vector<Spend> items(10, expense(12.5, false));
    std::vector<Payment> payments(1, Payment(root));
    payments.front().account = account.pk;
    payments.front().amount = 125;
    return Spend::addCart(root, items, payments).has_value();
  }
  bool addPlan() {
    Spend spend = expense(1200);
    return spend.saveInstallment(60).has_value();
  }

  bool addTransfer() {
    Transfer transfer(root);
    transfer.accountA = account.pk;
    transfer.accountB = bank.pk;
    transfer.amountA = transfer.amountB = 50;
    return recordEntry(root, transfer).has_value();
  }
  bool lend() {
    Debt debt(root);
    debt.type = kind::kLent;
    debt.person = "Ann";
    debt.amount = 20;
    debt.paymentAccount = account.pk;
    return debt.add().has_value();
  }

  MonivaAccount book;
  MonivaAccount account;
  MonivaAccount bank;
  MVCategory category;
  Vendor vendor;
};

void entering(benchmark::State& state, bool (Household::*add)()) {
  Household ours;
  if (!ours.ready || !(ours.*add)()) return state.SkipWithError("the store could not be made");
  Bare theirs(ours.connection());
  if (!theirs.isReady()) return state.SkipWithError("the other store could not be made");
  bench::sideBySide(
      state, theirs.rows(), [&] { benchmark::DoNotOptimize((ours.*add)()); }, [&] { theirs.insert(); });
}
BENCHMARK_CAPTURE(entering, plainExpense, &Household::addPlain)->Iterations(301)->UseManualTime();
BENCHMARK_CAPTURE(entering, rowOfPlainExpense, &Household::addRow)->Iterations(301)->UseManualTime();
BENCHMARK_CAPTURE(entering, cartOfTen, &Household::addCart)->Iterations(301)->UseManualTime();
BENCHMARK_CAPTURE(entering, planOfSixty, &Household::addPlan)->Iterations(101)->UseManualTime();

constexpr const char* kFullSet =
    "select amount, amount2, currency2, type, note, account, category, subcategory, datetime, barcode, "
    "repeat,"
    " repeat_end_date, repeat_seed, book, transfereid, paid, vendor, syear, bid, editDate, payDate, deleted, "
    "ipid,"
    " needReimburse from transactions where eid = ?";

void loading(benchmark::State& state) {
  Household store;
  bool made = store.ready;
  for (int i = 0; i < 100 && made; ++i)
    made = store.addPlain() && store.addCart() && store.addTransfer() && store.lend();
  for (int i = 0; i < 3 && made; ++i) made = store.addPlan();
  std::vector<std::string> eids;
  {
    Run run = store.connection().query("select eid from transactions order by substr(eid, -4) limit 1000");
    while (run.next()) eids.emplace_back(run.text(0));
  }
  if (!made || eids.size() != 1000) return state.SkipWithError("the store could not be made");
  sqlite3* db = nullptr;
  sqlite3_open_v2(store.file().c_str(), &db, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
  sqlite3_stmt* select = nullptr;
  sqlite3_prepare_v2(db, kFullSet, -1, &select, nullptr);
  bench::sideBySide(
      state, 1000,
      [&] {
        RecordNames names(store.root);
        for (const auto& eid : eids) {
          benchmark::DoNotOptimize(MVTransaction::transactionFromEID(store.root, eid, &names));
        }
      },
      [&] {
        for (const auto& eid : eids) {
          sqlite3_bind_text(select, 1, eid.c_str(), -1, SQLITE_STATIC);
          sqlite3_step(select);
          for (int column = 0; column < 24; ++column) {
            if (sqlite3_column_type(select, column) == SQLITE_TEXT) {
              benchmark::DoNotOptimize(
                  std::string(reinterpret_cast<const char*>(sqlite3_column_text(select, column))));
            } else {
              benchmark::DoNotOptimize(sqlite3_column_double(select, column));
            }
          }
          sqlite3_reset(select);
        }
      });
  sqlite3_finalize(select);
  sqlite3_close(db);
}
BENCHMARK(loading)->Iterations(101)->UseManualTime();

}  // namespace
}  // namespace moniva
