// What the tree of all categories costs beside one statement by hand that reads the same rows, as a book has
// them and as all share them.

#include <sqlite3.h>

#include <utility>

#include "bench_store.h"
#include "model/mv_category.h"
#include "side_by_side.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// A store with top-level categories of nine children each, half of them with a row of the one book.
class CategoryStore : public bench::BenchStore {
 public:
  explicit CategoryStore(int tops) : book(root) {
    const bool opened = std::exchange(ready, false);
    if (!opened) return;
    root.setObject("1", "enabledCategoryForBook");
    book.aKind = kBookKind;
    book.title = "Household";
    if (!book.add()) return;
    Connection& db = connection();
    Transaction transaction(db);
    for (int i = 0; i < tops * 10; ++i) {
      MVCategory made(root);
      made.title = fmt::format("Category {}", i * 7919 % 10'000);
      if (i % 10 != 0) made.parent = last_;
      if (!made.addCate()) return;
      if (i % 10 == 0) last_ = made.pk;
      if (i % 2 == 0 && !(i % 3 == 0 ? made.disabledForBook(book) : made.enabledForBook(book))) return;
    }
    ready = transaction.commit();
  }

  MonivaAccount book;

 private:
  std::string last_;
};

struct PlainRow {
  std::string key, title, parent, order, family, note;
  int type, orderID, used, enabled;
};

/// One statement, compiled once, its rows in plain records.
class ByHand {
 public:
  ByHand(const CategoryStore& store, bool ofBook) : ofBook_(ofBook), book_(store.book.pk) {
    sqlite3_open_v2(store.file().c_str(), &db_, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_prepare_v2(
        db_,
        ofBook
            ? "select oldTitle, title, parent, orderString, familyUser, ipid, type, orderID, coalesce(used,"
              " 0), coalesce(enabled, 1) from category left join categoryofbook on cate = oldTitle and book ="
              " ? where type = 12 and deleted = 0 group by oldTitle order by cateOrder"
            : "select oldTitle, title, parent, orderString, familyUser, ipid, type, orderID, usedTimes, 1"
              " from category where type = 12 and deleted = 0 order by orderID",
        -1, &statement_, nullptr);
  }
  ~ByHand() {
    sqlite3_finalize(statement_);
    sqlite3_close(db_);
  }
  ByHand(const ByHand&) = delete;
  ByHand& operator=(const ByHand&) = delete;

  std::vector<PlainRow> rows() {
    if (ofBook_) sqlite3_bind_text(statement_, 1, book_.c_str(), -1, SQLITE_STATIC);
    std::vector<PlainRow> found;
    while (sqlite3_step(statement_) == SQLITE_ROW) {
      found.push_back({text(0), text(1), text(2), text(3), text(4), text(5),
                       sqlite3_column_int(statement_, 6), sqlite3_column_int(statement_, 7),
                       sqlite3_column_int(statement_, 8), sqlite3_column_int(statement_, 9)});
    }
    sqlite3_reset(statement_);
    return found;
  }

 private:
  std::string text(int column) const {
    const void* bytes = sqlite3_column_text(statement_, column);
    return bytes != nullptr ? std::string(static_cast<const char*>(bytes),
                                          static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)))
                            : std::string();
  }

  bool ofBook_;
  std::string book_;
  sqlite3* db_ = nullptr;
  sqlite3_stmt* statement_ = nullptr;
};

/// Rows that are in the tree, each with its state, as one sorted text.
std::string inTree(const std::vector<MVCategory>& tree) {
  std::vector<std::string> all;
  for (const auto& top : tree) {
    all.push_back(fmt::format("{} {}", top.title, int{top.enabled}));
    for (const auto* below : {&top.subcategoryArray, &top.diabledSubcategoryArray}) {
      for (const auto& child : *below) all.push_back(fmt::format("{} {}", child.title, int{child.enabled}));
    }
  }
  std::sort(all.begin(), all.end());
  std::string text;
  for (const auto& line : all) text += line + "\n";
  return text;
}

void treeOfCategories(benchmark::State& state) {
  CategoryStore store(static_cast<int>(state.range(0)) / 10);
  if (!store.ready) return state.SkipWithError("the store could not be made");
  const bool ofBook = state.range(1) != 0;
  auto root = MVCategory::rootCateForType(store.root, 12);
  if (ofBook) root.book = std::make_shared<MonivaAccount>(store.book);
  ByHand byHand(store, ofBook);
  std::vector<std::string> plain;
  for (const auto& row : byHand.rows()) plain.push_back(fmt::format("{} {}", row.title, row.enabled));
  std::sort(plain.begin(), plain.end());
  std::string expected;
  for (const auto& line : plain) expected += line + "\n";
  const auto tree = root.getAllSubcategoryTree();
  if (!tree || inTree(*tree) != expected || plain.size() != static_cast<std::size_t>(state.range(0))) {
    return state.SkipWithError("the results differ");
  }
  bench::sideBySide(
      state, state.range(0), [&] { benchmark::DoNotOptimize(root.getAllSubcategoryTree()); },
      [&] { benchmark::DoNotOptimize(byHand.rows()); });
}
BENCHMARK(treeOfCategories)
    ->ArgNames({"categories", "book"})
    ->ArgsProduct({{100, 1'000}, {0, 1}})
    ->Iterations(101)
    ->UseManualTime();

}  // namespace
}  // namespace moniva
