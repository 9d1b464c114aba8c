#include <limits>
#include <map>
#include <set>

#include "model/category_rows.h"
#include "storage/writes.h"

namespace moniva {
namespace {

using CategoryInBook = std::pair<std::string, std::string>;

/// A count that is kept, in a category's row or in a row of a book.
struct KeptCount {
  std::int64_t place = 0;
  CategoryInBook of;
  int count = 0;
};

/// What the query answers: row, key, book and count.
Result<std::vector<KeptCount>> countsOf(Connection& db, std::string_view sql,
                                        std::initializer_list<Value> arguments) {
  Run run = db.query(sql, arguments);
  std::vector<KeptCount> counts;
  while (run.next()) {
    counts.push_back({run.integer(0),
                      {std::string(run.text(1)), std::string(run.text(2))},
                      static_cast<int>(run.integer(3))});
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return counts;
}

/// Never stamped; the column's own default is a text, which would sort above every stamp.
Result<> insertCount(MVAppRoot& root, const MVCategory& category, std::string_view book, int count) {
  const auto place = nextPlaceInBook(root, category.type, category.parent, book);
  if (!place) return tl::make_unexpected(place.error());
  return write(root,
               "insert into categoryofbook (pk, cate, book, used, enabled, editDate, cateOrder)"
               " values(?,?,?,?,1,0,?)",
               root.newIdentifier(), category.pk, book, count, *place);
}

/// Of several rows of one key, or of one book, the first has the count and the others none.
Result<int> correctCounts(MVAppRoot& root, const std::vector<KeptCount>& kept,
                          const std::map<CategoryInBook, int>& uses, std::string_view sql) {
  int wrong = 0;
  const CategoryInBook* last = nullptr;
  for (const KeptCount& row : kept) {
    const auto found = uses.find(row.of);
    const bool isFirst = last == nullptr || *last != row.of;
    const int right = found == uses.end() || !isFirst ? 0 : found->second;
    last = &row.of;
    if (right == row.count) continue;
    ++wrong;
    if (auto written = write(root, sql, right, row.place); !written)
      return tl::make_unexpected(written.error());
  }
  return wrong;
}

}  // namespace

Result<int> countUses(MVAppRoot& root, const std::set<std::string, std::less<>>& only, Date from,
                      Date toDate) {
  return atomically(root, [&](Connection& db) -> Result<int> {
    // A record uses its category and, where it is another, its subcategory.
    static const std::string usesSql = fmt::format(
        "select 0, category, book, count(*) from transactions where {0} and ? <= editDate and editDate <= ?"
        " and category != '' group by category, book union all select 0, subcategory, book, count(*) from"
        " transactions where {0} and ? <= editDate and editDate <= ? and subcategory != '' and subcategory"
        " != category group by subcategory, book",
        kRecordsInUse);
    auto used = countsOf(db, usesSql, {from, toDate, from, toDate});
    if (!used) return tl::make_unexpected(used.error());
    auto kept = countsOf(db,
                         "select pk, oldTitle, '', usedTimes from category where type in (11,12) order by"
                         " oldTitle, deleted, pk",
                         {});
    if (!kept) return tl::make_unexpected(kept.error());
    auto keptInBooks = countsOf(db,
                                "select rowid, cate, book, used from categoryofbook order by cate, book,"
                                " typeof(editDate) = 'text', editDate DESC, rowid DESC",
                                {});
    if (!keptInBooks) return tl::make_unexpected(keptInBooks.error());
    for (auto* counts : {&*used, &*kept, &*keptInBooks}) {
      std::erase_if(*counts,
                    [&](const KeptCount& row) { return !only.empty() && !only.contains(row.of.first); });
    }

    std::map<CategoryInBook, int> uses;
    std::map<CategoryInBook, int> inAll;
    for (const KeptCount& row : *used) {
      uses[row.of] += row.count;
      inAll[{row.of.first, ""}] += row.count;
    }
    const auto wrong = correctCounts(root, *kept, inAll, "update category set usedTimes = ? where pk = ?");
    if (!wrong) return wrong;
    const auto wrongInBooks =
        correctCounts(root, *keptInBooks, uses, "update categoryofbook set used = ? where rowid = ?");
    if (!wrongInBooks) return wrongInBooks;
    std::set<CategoryInBook> known;
    for (const KeptCount& row : *keptInBooks) known.insert(row.of);
    int added = 0;
    for (const auto& [of, count] : uses) {
      if (of.second.empty() || known.contains(of)) continue;
      const auto category = MVCategory::getCategory(root, of.first);
      if (!category) continue;
      ++added;
      if (auto written = insertCount(root, *category, of.second, count); !written) {
        return tl::make_unexpected(written.error());
      }
    }
    return *wrong + *wrongInBooks + added;
  });
}

Result<> countUsesAfresh(MVAppRoot& root, const std::set<std::string, std::less<>>& keys) {
  constexpr Date kEver{std::numeric_limits<double>::max()};
  if (auto counted = countUses(root, keys, Date{0}, kEver); !counted) {
    return tl::make_unexpected(counted.error());
  }
  return {};
}

bool MVCategory::updateUsingCount(const MonivaAccount& inBook, int uses) {
  return atomically(*root_,
                    [&](Connection& db) -> Result<> {
                      auto written = write(
                          *root_, "update category set usedTimes = usedTimes+? where oldTitle=? and type = ?",
                          uses, pk, type);
                      if (!written || inBook.pk.empty()) return written;
                      written =
                          write(*root_, "update categoryofbook set used = used+? where cate=? and book=?",
                                uses, pk, inBook.pk);
                      if (!written || db.changes() != 0) return written;
                      return insertCount(*root_, *this, inBook.pk, uses);
                    })
      .has_value();
}

Result<> MVCategory::updateUsingCountFromDate(Date from, Date toDate) {
  if (auto live = liveCategory(*root_, pk, type); !live) return tl::make_unexpected(live.error());
  auto counted = countUses(*root_, {pk}, from, toDate);
  if (!counted) return tl::make_unexpected(counted.error());
  const auto count = getUsingCount();
  if (!count) return tl::make_unexpected(count.error());
  usedTimes = *count;
  return {};
}

Result<int> MVCategory::updateUsingCountFromDate(MVAppRoot& root, Date from, Date toDate) {
  return countUses(root, {}, from, toDate);
}

Result<int> MVCategory::getUsingCount() const {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const auto count =
      isOfBook()
          ? numberOf(*db, "select coalesce(sum(used), 0) from categoryofbook where cate = ? and book = ?",
                     {pk, book->pk})
          : numberOf(
                *db,
                "select coalesce(sum(usedTimes), 0) from category where oldTitle = ? and type in (11,12)",
                {pk});
  if (!count) return tl::make_unexpected(count.error());
  return static_cast<int>(*count);
}

}  // namespace moniva
