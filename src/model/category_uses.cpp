#include <map>
#include <set>

#include "model/category_rows.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

using CategoryInBook = std::pair<std::string, std::string>;

/// The numbers of a query's third column by its first two.
Result<std::map<CategoryInBook, int>> countsOf(Connection& db, std::string_view sql,
                                               std::initializer_list<Value> arguments) {
  Run run = db.query(sql, arguments);
  std::map<CategoryInBook, int> counts;
  while (run.next())
    counts[{std::string(run.text(0)), std::string(run.text(1))}] += static_cast<int>(run.integer(2));
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return counts;
}

/// Counts afresh for one category, or for all for a blank key; answers how many counts were wrong.
Result<int> countUses(MVAppRoot& root, std::string_view only, Date from, Date toDate) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  // A record uses its category and, where it is another, its subcategory.
  static const std::string usesSql = fmt::format(
      "select category, book, count(*) from transactions where {0} and ? <= editDate and editDate <= ?"
      " and category != '' group by category, book union all select subcategory, book, count(*) from"
      " transactions where {0} and ? <= editDate and editDate <= ? and subcategory != '' and subcategory !="
      " category group by subcategory, book",
      kRecordsInUse);
  const auto uses = countsOf(*db, usesSql, {from, toDate, from, toDate});
  if (!uses) return tl::make_unexpected(uses.error());
  const auto kept = countsOf(
      *db, "select oldTitle, '', usedTimes from category where type in (11,12) and (? = '' or oldTitle = ?)",
      {only, only});
  if (!kept) return tl::make_unexpected(kept.error());
  const auto keptInBooks =
      countsOf(*db, "select cate, book, used from categoryofbook where ? = '' or cate = ?", {only, only});
  if (!keptInBooks) return tl::make_unexpected(keptInBooks.error());

  std::map<std::string, int, std::less<>> inAll;
  for (const auto& [key, count] : *uses) inAll[key.first] += count;
  int wrong = 0;
  bool written = true;
  for (const auto& [key, count] : *kept) {
    const auto found = inAll.find(key.first);
    const int right = found == inAll.end() ? 0 : found->second;
    if (right == count) continue;
    ++wrong;
    written =
        written && root.executeUpdate("update category set usedTimes = ? where oldTitle=?", right, key.first);
  }
  for (const auto& [key, count] : *keptInBooks) {
    const auto found = uses->find(key);
    const int right = found == uses->end() ? 0 : found->second;
    if (right == count) continue;
    ++wrong;
    written = written && root.executeUpdate("update categoryofbook set used = ? where cate=? and book=?",
                                            right, key.first, key.second);
  }
  for (const auto& [key, count] : *uses) {
    if (key.second.empty() || keptInBooks->contains(key) || !kept->contains({key.first, ""})) continue;
    ++wrong;
    written = written && root.executeUpdate(
                             "insert into categoryofbook (pk, cate, book, used, enabled, editDate)"
                             " values(?,?,?,?,1,0)",
                             root.newIdentifier(), key.first, key.second, count);
  }
  if (!written || !transaction.commit()) return tl::make_unexpected(db->refusal());
  return wrong;
}

}  // namespace

bool MVCategory::updateUsingCount(const MonivaAccount& inBook, int uses) {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return false;
  Transaction transaction(*db);
  bool written =
      transaction.began() &&
      root_->executeUpdate("update category set usedTimes = usedTimes+? where oldTitle=?", uses, pk);
  if (written && !inBook.pk.empty()) {
    written = root_->executeUpdate("update categoryofbook set used = used+? where cate=? and book=?", uses,
                                   pk, inBook.pk);
    if (written && db->changes() == 0) {
      // Never stamped; the column's own default is a text, which would sort above every stamp.
      written = root_->executeUpdate(
          "insert into categoryofbook (pk, cate, book, used, enabled, editDate) values(?,?,?,?,1,0)",
          root_->newIdentifier(), pk, inBook.pk, uses);
    }
  }
  return written && transaction.commit();
}

Result<> MVCategory::updateUsingCountFromDate(Date from, Date toDate) {
  if (auto live = liveCategory(*root_, pk); !live) return tl::make_unexpected(live.error());
  auto counted = countUses(*root_, pk, from, toDate);
  if (!counted) return tl::make_unexpected(counted.error());
  const auto count = getUsingCount();
  if (!count) return tl::make_unexpected(count.error());
  usedTimes = *count;
  return {};
}

Result<int> MVCategory::updateUsingCountFromDate(MVAppRoot& root, Date from, Date toDate) {
  return countUses(root, "", from, toDate);
}

Result<int> MVCategory::getUsingCount() const {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const auto count =
      isOfBook()
          ? numberOf(*db, "select coalesce(sum(used), 0) from categoryofbook where cate = ? and book = ?",
                     {pk, book->pk})
          : numberOf(*db, "select coalesce(sum(usedTimes), 0) from category where oldTitle = ?", {pk});
  if (!count) return tl::make_unexpected(count.error());
  return static_cast<int>(*count);
}

}  // namespace moniva
