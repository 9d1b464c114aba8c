#include <algorithm>

#include "model/category_rows.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// A category with its row in the table, for rows that their keys do not tell apart.
struct CategoryRow {
  std::int64_t rowKey = 0;
  MVCategory category;
};

Result<std::vector<CategoryRow>> categoryRows(MVAppRoot& root, std::string_view which) {
  Connection* db = root.db().getDatabase();
  Run run = db->query(
      fmt::format("select {}, pk from category where type in (11,12) and {}", kCategoryColumns, which));
  std::vector<CategoryRow> rows;
  while (run.next()) {
    rows.push_back({run.integer(kCategoryColumnCount), categoryOfRow(root, run)});
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return rows;
}

/// Makes the top-level categories, or the subcategories, of one title one.
Result<int> mergeEquals(MVAppRoot& root, bool tops) {
  Connection* db = root.db().getDatabase();
  // The winner comes first among its equals.
  const auto rows = categoryRows(
      root, fmt::format("title != '' and parent {} '_rootCate' order by type, parent, title, deleted != 0,"
                        " editDate DESC, pk",
                        tops ? "=" : "!="));
  if (!rows) return tl::make_unexpected(rows.error());
  int removed = 0;
  const MVCategory* winner = nullptr;
  for (const auto& [rowKey, category] : *rows) {
    if (winner == nullptr || winner->type != category.type || winner->parent != category.parent ||
        winner->title != category.title) {
      winner = &category;
      continue;
    }
    // Rows that share their key as well have nothing to repoint.
    if ((category.pk != winner->pk && !repointCategory(root, category, *winner)) ||
        !root.executeUpdate("delete from category where pk = ?", rowKey)) {
      return tl::make_unexpected(db->refusal());
    }
    ++removed;
  }
  return removed;
}

/// What belongs to this one of the rows that share a key, goes to the new key.
bool takeAlong(MVAppRoot& root, const CategoryRow& row, std::string_view key) {
  const MVCategory& category = row.category;
  const std::string& udid = root.itsUDID();
  if (category.isSubCate()) {
    // The parent may have got a key of its own since the row was read.
    return root.executeUpdate(
        "update transactions set subcategory = ?, editDate = ?, edit_ipid = ? where subcategory = ? and"
        " category = (select parent from category where pk = ?)",
        key, root.editStamp(), udid, category.pk, row.rowKey);
  }
  const std::string_view ofKind = kindsOfType(category.type);
  return root.executeUpdate(
             fmt::format("update transactions set subcategory = ?, editDate = ?, edit_ipid = ? where"
                         " subcategory = ? and category = ? and {}",
                         ofKind),
             key, root.editStamp(), udid, category.pk, category.pk) &&
         root.executeUpdate(
             fmt::format("update transactions set category = ?, editDate = ?, edit_ipid = ? where category ="
                         " ? and {}",
                         ofKind),
             key, root.editStamp(), udid, category.pk) &&
         root.executeUpdate(
             "update category set parent = ?, editDate = ?, edit_ipid = ? where parent = ? and type = ?", key,
             root.editStamp(), udid, category.pk, category.type);
}

/// Rows of one key: `first` keeps it, unless a row that is no category, or an account or book, has it too.
Result<int> separate(MVAppRoot& root, std::span<const CategoryRow> rows) {
  Connection* db = root.db().getDatabase();
  const std::string& shared = rows.front().category.pk;
  const auto others =
      numberOf(*db,
               "select (select count(*) from category where oldTitle = ?1 and type not in (11,12)) + (select"
               " count(*) from account where oldTitle = ?1)",
               {shared});
  if (!others) return tl::make_unexpected(others.error());
  int renewed = 0;
  // The first goes last: what nobody could be told to own is its.
  for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
    const MVCategory& category = row->category;
    const bool isFirst = row + 1 == rows.rend();
    if (isFirst && *others == 0) break;
    const std::string key = root.newIdentifier();
    bool written =
        root.executeUpdate("update category set oldTitle = ?, editDate = ?, edit_ipid = ? where pk = ?", key,
                           root.editStamp(), root.itsUDID(), row->rowKey);
    if (isFirst) {
      MVCategory renamed = category;
      renamed.pk = key;
      renamed.usedTimes = 0;
      MVCategory old = category;
      old.usedTimes = 0;
      written = written && repointCategory(root, old, renamed);
    } else {
      // Two of one type and parent cannot be told apart.
      const auto alike = std::ranges::count_if(rows, [&](const CategoryRow& other) {
        return other.category.type == category.type && other.category.parent == category.parent;
      });
      written = written && (alike > 1 || takeAlong(root, *row, key));
    }
    if (!written) return tl::make_unexpected(db->refusal());
    ++renewed;
  }
  return renewed;
}

}  // namespace

Result<RemovedCategoryRows> MVCategory::clearDuplicatedItemChangeEditDate(MVAppRoot& root,
                                                                          bool changeEditDate) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  RemovedCategoryRows removed;
  // Of several rows of a book the newest is kept; a stamp that is no number (a column never written holds a
  // text) counts as the oldest.
  constexpr std::string_view kPlaces =
      "(select rowid as place, row_number() over (partition by cate, book order by typeof(editDate) ="
      " 'text', editDate DESC, rowid DESC) as rank, count(*) over (partition by cate, book) as equals from"
      " categoryofbook)";
  bool written =
      root.executeUpdate("delete from category where title = '_rootCate' or title is NULL or title = ''");
  removed.untitled = static_cast<int>(db->changes());
  written = written && root.executeUpdate(
                           "delete from categoryofbook where cate is NULL or cate = '' or book"
                           " is NULL or book = ''");
  removed.incomplete = static_cast<int>(db->changes());
  if (written && changeEditDate) {
    written = root.executeUpdate(
        fmt::format("update categoryofbook set editDate = ?, edit_ipid = ? where rowid in (select place from"
                    " {} where rank = 1 and equals > 1)",
                    kPlaces),
        root.editStamp(), root.itsUDID());
  }
  written = written && root.executeUpdate(fmt::format("delete from categoryofbook where rowid in (select"
                                                      " place from {} where rank > 1)",
                                                      kPlaces));
  removed.duplicates = static_cast<int>(db->changes());
  if (!written || !transaction.commit()) return tl::make_unexpected(db->refusal());
  return removed;
}

Result<int> MVCategory::clearDuplicateCategory(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  // Tops first: their children come together under one parent by that.
  int removed = 0;
  for (const bool tops : {true, false}) {
    const auto merged = mergeEquals(root, tops);
    if (!merged) return merged;
    removed += *merged;
  }
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  return removed;
}

Result<int> MVCategory::clearDuplicateCategoryPK(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  const auto rows = categoryRows(
      root,
      "oldTitle in (select oldTitle from category where oldTitle != '' group by oldTitle having count(*) > 1)"
      " order by oldTitle, deleted != 0, category.pk");
  if (!rows) return tl::make_unexpected(rows.error());
  int renewed = 0;
  for (auto first = rows->begin(); first != rows->end();) {
    const auto end = std::find_if(
        first, rows->end(), [&](const CategoryRow& row) { return row.category.pk != first->category.pk; });
    const auto given = separate(root, {first, end});
    if (!given) return given;
    renewed += *given;
    first = end;
  }
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  return renewed;
}

}  // namespace moniva
