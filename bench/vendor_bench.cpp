// What a list of vendors by letter costs beside one statement that gives the same rows, as the ratio of both
// in the same run.

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <random>
#include <set>

#include "bench_store.h"
#include "model/order_string.h"
#include "model/vendor_query.h"
#include "side_by_side.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// A store with so many payees; of a hundred, `foreign` have titles beyond ASCII.
class Shops : public bench::BenchStore {
 public:
  Shops(int vendors, int foreign) : BenchStore("de_DE") {
    if (!ready) return;
    Connection& db = connection();
    Transaction transaction(db);
    std::mt19937 random(1);
    const std::string_view beyond[] = {"Ä", "Ö", "É", "中", "北", "М", "Я", "Ε"};
    for (int i = 0; i < vendors; ++i) {
      std::string title;
      if (static_cast<int>(random() % 100) < foreign) title = beyond[random() % std::size(beyond)];
      const auto letters = 4 + random() % 12;
      for (unsigned letter = 0; letter < letters; ++letter)
        title += static_cast<char>((title.empty() ? 'A' : 'a') + random() % 26);
      title += " " + std::to_string(i);
      db.execute(
          "insert into category (title, type, orderString, orderID, usedTimes, oldTitle) values "
          "(?,6,?,?,?,?)",
          {title, orderStringOf(title).substr(0, Vendor::kOrderStringLength), i, random() % 100,
           root.newIdentifier()});
    }
    ready = transaction.commit();
  }
};

struct Row {
  std::string key;
  std::string orderString;
  std::string title;
  std::int64_t usedTimes = 0;
  std::int64_t orderID = 0;
};

/// The rows by one statement compiled once, and nothing else: neither sections nor the order of a language.
std::vector<Row> byHand(sqlite3_stmt* statement) {
  std::vector<Row> rows;
  const auto text = [statement](int column) {
    const void* bytes = sqlite3_column_text(statement, column);
    return std::string(static_cast<const char*>(bytes),
                       static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
  };
  while (sqlite3_step(statement) == SQLITE_ROW) {
    rows.push_back(
        {text(0), text(1), text(2), sqlite3_column_int64(statement, 3), sqlite3_column_int64(statement, 4)});
  }
  sqlite3_reset(statement);
  return rows;
}

void vendorsByLetter(benchmark::State& state) {
  Shops shops(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  if (!shops.ready) return state.SkipWithError("the store could not be made");
  sqlite3* db = nullptr;
  sqlite3_open_v2(shops.file().c_str(), &db, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(db,
                     "select oldTitle, orderString, title, usedTimes, orderID from category where deleted = 0"
                     " and type = 6 group by title order by orderString",
                     -1, &statement, nullptr);
  VendorQuery query(shops.root);
  std::set<std::string> ours;
  for (const auto& section : query.getVendorListByAlpha()) {
    for (const auto& vendor : section.cateArrayOfSameLetter) ours.insert(vendor.pk + vendor.title);
  }
  std::set<std::string> theirs;
  for (const auto& row : byHand(statement)) theirs.insert(row.key + row.title);
  if (ours != theirs || ours.size() != static_cast<std::size_t>(state.range(0))) {
    state.SkipWithError("the results differ");
  } else {
    bench::sideBySide(
        state, state.range(0), [&] { benchmark::DoNotOptimize(query.getVendorListByAlpha()); },
        [&] { benchmark::DoNotOptimize(byHand(statement)); });
  }
  sqlite3_finalize(statement);
  sqlite3_close(db);
}
BENCHMARK(vendorsByLetter)
    ->ArgNames({"vendors", "percentBeyondAscii"})
    ->Args({5'000, 0})
    ->Args({5'000, 30})
    ->Iterations(41)
    ->UseManualTime();

}  // namespace
}  // namespace moniva
