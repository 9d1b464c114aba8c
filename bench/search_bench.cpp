// What a page of a search costs beside the same statement by hand, equal patterns folded, and what a deep
// page costs beside the first, as ratios of both in the same run. --benchmark_filter=/1000000 takes a million
// records.

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdlib>
#include <random>

#include "bench_store.h"
#include "reports/keyword_forms.h"
#include "reports/search.h"
#include "side_by_side.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

constexpr std::int64_t kPage = 50;

/// So many expenses over ten years, half of them with a note of four words, in 60 categories.
class Store : public bench::BenchStore {
 public:
  explicit Store(std::int64_t rows) {
    if (!ready) return;
    constexpr std::array kWords = {"bread", "coffee", "train", "ticket", "anna", "lunch", "gift", "market"};
    Connection& db = connection();
    Transaction transaction(db);
    for (int i = 0; i < 60 + 300; ++i) {
      const std::string parent = i < 12 ? "_rootCate" : i < 60 ? fmt::format("key{}", i % 12) : "";
      db.execute("insert into category (title, type, oldTitle, parent, oldParent) values (?,?,?,?,?)",
                 {fmt::format("Name {}", i), i < 60 ? 12 : 6, fmt::format("key{}", i), parent, parent});
    }
    std::mt19937 random(1);
    for (std::int64_t i = 0; i < rows; ++i) {
      std::string note;
      for (int word = 0; i % 2 == 0 && word < 4; ++word) note += fmt::format("{} ", kWords[random() % 8]);
      if (i % (rows / 10) == 0) note += "needle";
      db.execute(
          "insert into transactions (eid, bid, amount, type, note, datetime, category, subcategory, vendor,"
          " book) values (?,20,?,12,?,?,?,?,?,'home')",
          {fmt::format("{:036}", i), static_cast<double>(random() % 20'000 + 1) / 100, note,
           1.4e9 + static_cast<double>(i) * 3.1e8 / static_cast<double>(rows),
           fmt::format("key{}", random() % 60), fmt::format("key{}", random() % 60),
           fmt::format("key{}", 60 + random() % 300)});
    }
    // Both sides begin with a connection that has read nothing yet.
    ready = transaction.commit() && root.db().initDatabase().has_value();
    sqlite3_open_v2(file().c_str(), &hand_, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_exec(hand_, "PRAGMA cache_size = -16384", nullptr, nullptr, nullptr);
  }
  ~Store() {
    sqlite3_finalize(statement_);
    sqlite3_close(hand_);
  }

  std::vector<std::string> page(const std::string& keyword, std::int64_t number = 0,
                                const std::optional<SearchPlace>& after = {}) {
    SearchQuery query{SearchIn::records, keyword};
    query.page = number;
    query.after = after;
    const auto found = searchPage(root, query);
    return found ? found->found : std::vector<std::string>{};
  }

  /// The page by a statement compiled once.
  std::vector<std::string> byHand(const std::string& keyword, std::int64_t number = 0) {
    const auto forms = keywordForms(keyword, "en_US");
    if (statement_ == nullptr) {
      const auto like = [&](const char* column) {
        std::string test;
        for (std::size_t i = 0; i < forms.size(); ++i)
          test += fmt::format("{}{} like ?{} escape '\\'", i == 0 ? "" : " or ", column, i + 3);
        return test;
      };
      const auto sql = fmt::format(
          "select eid from transactions where +deleted = 0 and +type in (11,12,13,14) and syear != 1002 and "
          "bid"
          " = 20 and ({} or subcategory in (select oldTitle from category where {}) or vendor in (select "
          "oldTitle"
          " from category where type in (6,9) and ({}))) and +familyUser = '' and exists (select 1 from "
          "category"
          " where oldTitle = subcategory) order by datetime desc limit ?1,?2",
          like("note"), like("title"), like("title"));
      sqlite3_prepare_v2(hand_, sql.c_str(), -1, &statement_, nullptr);
    }
    sqlite3_bind_int64(statement_, 1, number * kPage);
    sqlite3_bind_int64(statement_, 2, kPage);
    for (std::size_t i = 0; i < forms.size(); ++i) {
      sqlite3_bind_text(statement_, static_cast<int>(i) + 3, likePattern(forms[i]).c_str(), -1,
                        SQLITE_TRANSIENT);
    }
    std::vector<std::string> found;
    while (sqlite3_step(statement_) == SQLITE_ROW)
      found.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(statement_, 0)));
    sqlite3_reset(statement_);
    return found;
  }

 private:
  sqlite3* hand_ = nullptr;
  sqlite3_stmt* statement_ = nullptr;
};

void besideTheStatement(benchmark::State& state, const std::string& keyword, std::size_t expected,
                        bool isDeep = false) {
  Store store(state.range(0));
  // The last page by its number: about one record of five holds the word.
  const std::int64_t number = isDeep ? state.range(0) / 6 / kPage : 0;
  if (!store.ready || store.page(keyword, number).size() != expected ||
      store.page(keyword, number) != store.byHand(keyword, number)) {
    return state.SkipWithError("the results differ");
  }
  bench::sideBySide(
      state, 1, [&] { benchmark::DoNotOptimize(store.page(keyword, number)); },
      [&] { benchmark::DoNotOptimize(store.byHand(keyword, number)); });
}

void newestPage(benchmark::State& state) {
  besideTheStatement(state, "coffee", kPage);
}
void rareHit(benchmark::State& state) {
  besideTheStatement(state, "needle", 10);
}
void noHit(benchmark::State& state) {
  besideTheStatement(state, "zebra", 0);
}
void deepPageByNumber(benchmark::State& state) {
  besideTheStatement(state, "coffee", kPage, true);
}

/// A page far down, begun behind the one before it, beside the first page.
void deepPageBesideTheFirst(benchmark::State& state) {
  Store store(state.range(0));
  const auto number = state.range(0) / 6 / kPage;
  const auto before = store.page("coffee", number - 1);
  if (!store.ready || before.empty()) return state.SkipWithError("there is no page");
  const auto place = searchPlaceOf(store.root, before.back());
  if (!place || store.page("coffee", 0, *place) != store.page("coffee", number)) {
    return state.SkipWithError("the pages differ");
  }
  bench::sideBySide(
      state, 1, [&] { benchmark::DoNotOptimize(store.page("coffee", 0, *place)); },
      [&] { benchmark::DoNotOptimize(store.page("coffee")); });
}

void sizes(benchmark::internal::Benchmark* bench) {
  bench->Arg(10'000)->Arg(100'000);
  if (const char* more = std::getenv("MONIVA_BENCH_ROWS")) bench->Arg(std::atoll(more));
  bench->Iterations(21)->UseManualTime();
}
BENCHMARK(newestPage)->Apply(sizes);
BENCHMARK(rareHit)->Apply(sizes);
BENCHMARK(noHit)->Apply(sizes);
BENCHMARK(deepPageByNumber)->Apply(sizes);
BENCHMARK(deepPageBesideTheFirst)->Apply(sizes);

}  // namespace
}  // namespace moniva
