// What counting the balance of an account afresh costs beside the one sum a person would write by hand, as
// the ratio of both in the same run.

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <random>

#include "bench_store.h"
#include "model/account_balance.h"
#include "side_by_side.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

constexpr const char* kByHand =
    "select sum(case when type in (11, 23, 24, 25) then amount when type in (12, 33, 34, 35) then -amount "
    "end)"
    " from transactions where account = ? and deleted = 0 and paid = 1";

class Accounts : public bench::BenchStore {
 public:
  explicit Accounts(int rows) : account(root) {
    account.aKind = kAccountKind;
    account.title = "Checking";
    account.setType("_SavingAccount");
    ready = ready && account.add().has_value();
    if (!ready) return;
    Connection& db = connection();
    Transaction transaction(db);
    std::mt19937 random(1);
    constexpr std::array kTypes = {12, 12, 12, 12, 12, 12, 11, 23, 33, 33, 24, 35};
    for (int i = 0; i < rows; ++i) {
      db.execute(
          "insert into transactions (eid, bid, amount, type, datetime, account, paid) values "
          "(?,20,?,?,?,?,1)",
          {root.newIdentifier(), static_cast<double>(random() % 20'000 + 1) / 100,
           kTypes[random() % kTypes.size()], 1.4e9 + static_cast<double>(random() % 300'000'000U),
           account.pk});
    }
    ready = transaction.commit();
  }

  MonivaAccount account;
};

void balanceCountedAfresh(benchmark::State& state) {
  Accounts store(static_cast<int>(state.range(0)));
  if (!store.ready) return state.SkipWithError("the store could not be made");
  sqlite3* db = nullptr;
  sqlite3_open_v2(store.file().c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(db, kByHand, -1, &statement, nullptr);
  const auto byHand = [&] {
    sqlite3_bind_text(statement, 1, store.account.pk.c_str(), -1, SQLITE_STATIC);
    sqlite3_step(statement);
    const double sum = sqlite3_column_double(statement, 0);
    sqlite3_reset(statement);
    return sum;
  };
  if (!countTheTotalBalance(store.account) || std::abs(store.account.totalBalance - byHand()) > 0.005) {
    state.SkipWithError("the results differ");
  } else {
    bench::sideBySide(
        state, 1, [&] { benchmark::DoNotOptimize(countTheTotalBalance(store.account)); },
        [&] { benchmark::DoNotOptimize(byHand()); });
  }
  sqlite3_finalize(statement);
  sqlite3_close(db);
}
BENCHMARK(balanceCountedAfresh)->Arg(10'000)->Arg(100'000)->Iterations(21)->UseManualTime();

}  // namespace
}  // namespace moniva
