#include "model/category_rows.h"

#include "model/title.h"

namespace moniva {

MVCategory categoryOfRow(MVAppRoot& root, const Run& run) {
  MVCategory category(root);
  category.pk = run.text(0);
  category.title = run.text(1);
  category.parent = run.text(2);
  category.type = static_cast<int>(run.integer(3));
  category.orderString = run.text(4);
  category.deleted = static_cast<int>(run.integer(5));
  category.orderID = static_cast<int>(run.integer(6));
  category.familyUser = run.text(7);
  category.ipid = run.text(8);
  category.usedTimes = static_cast<int>(run.integer(9));
  return category;
}

Result<> checkCategoryTitle(std::string_view title) {
  if (title == kRootKey || title == kNoCategory) {
    return refuse("'{}' cannot be the title of a category: the program has its own use for it", title);
  }
  return checkTitle(title, "a category");
}

Result<MVCategory> liveCategory(MVAppRoot& root, std::string_view key) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  if (key == kRootKey) return refuse("that is the root of all categories, not one of them");
  // Vendors and groups are in the same table, and in old stores keys are titles: several may share one.
  static const std::string sql = fmt::format(
      "select {} from category where oldTitle = ? and type in (11,12) order by deleted", kCategoryColumns);
  Run run = db->query(sql, {key});
  if (!run.next()) {
    if (!run.ok()) return tl::make_unexpected(db->refusal());
    return refuse("there is no category with the key '{}'", key);
  }
  MVCategory category = categoryOfRow(root, run);
  if (category.deleted != 0) return refuse("the category '{}' is deleted", category.title);
  return category;
}

Result<std::optional<MVCategory>> liveSibling(MVAppRoot& root, std::string_view title, int type,
                                              std::string_view parent, std::string_view except) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  static const std::string sql = fmt::format(
      "select {} from category where title = ? and type = ? and parent = ? and deleted = 0 and oldTitle != ?"
      " order by editDate DESC",
      kCategoryColumns);
  Run run = db->query(sql, {title, type, parent, except});
  if (run.next()) return categoryOfRow(root, run);
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return std::optional<MVCategory>();
}

Result<std::int64_t> numberOf(Connection& db, std::string_view sql, std::initializer_list<Value> arguments) {
  Run run = db.query(sql, arguments);
  if (!run.next()) return tl::make_unexpected(db.refusal());
  return run.integer(0);
}

Result<std::int64_t> recordsOf(MVAppRoot& root, std::string_view key) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  static const std::string sql = fmt::format(
      "select count(*) from transactions where {} and (category = ? or subcategory = ?)", kRecordsInUse);
  return numberOf(*db, sql, {key, key});
}

namespace {

/// One row a book for the winner: a book's row of the loser goes where the winner has one, with its uses.
bool repointBookRows(MVAppRoot& root, const std::string& loser, const std::string& winner) {
  return root.executeUpdate(
             "update categoryofbook set used = used + (select coalesce(sum(used), 0) from categoryofbook as"
             " lost where lost.cate = ? and lost.book = categoryofbook.book) where cate = ? and book in"
             " (select book from categoryofbook where cate = ?)",
             loser, winner, loser) &&
         root.executeUpdate(
             "delete from categoryofbook where cate = ? and book in (select book from categoryofbook where"
             " cate = ?)",
             loser, winner) &&
         root.executeUpdate("update categoryofbook set cate = ?, editDate = ?, edit_ipid=? where cate = ?",
                            winner, root.editStamp(), root.itsUDID(), loser) &&
         root.executeUpdate(
             "delete from categoryofbook where cate = ? and rowid not in (select max(rowid) from"
             " categoryofbook where cate = ? group by book)",
             winner, winner);
}

}  // namespace

bool chooseTopItself(MVAppRoot& root, std::string_view key, std::string_view chosen) {
  return root.executeUpdate(
      "update transactions set subcategory = ?, editDate = ?, edit_ipid=?, ipid = 'batchEdit' where category"
      " = ? and (subcategory = '' or subcategory = '#NOMVCATEGORY') and bid is not '10' and type != ?",
      chosen, root.editStamp(), root.itsUDID(), key, kind::kCategoryAllocation);
}

bool retopCategory(MVAppRoot& root, std::string_view key, std::string_view top) {
  return root.executeUpdate(
             "update transactions set category = ?, editDate = ?, edit_ipid=?, ipid = 'batchEdit' where"
             " category = ? and type != ?",
             top, root.editStamp(), root.itsUDID(), key, kind::kCategoryAllocation) &&
         root.executeUpdate("update category set parent = ?, editDate = ?, edit_ipid=? where parent = ?", top,
                            root.editStamp(), root.itsUDID(), key);
}

bool repointCategory(MVAppRoot& root, const MVCategory& loser, const MVCategory& winner) {
  const std::string& udid = root.itsUDID();
  const bool loserIsTop = !loser.isSubCate();
  if (loserIsTop && winner.isSubCate() &&
      !(chooseTopItself(root, loser.pk, winner.pk) && retopCategory(root, loser.pk, topKey(winner)))) {
    return false;
  }
  if (topKey(loser) != topKey(winner) &&
      !root.executeUpdate("update transactions set category = ?, editDate = ?, ipid = 'batchEdit', edit_ipid"
                          " = ? where subcategory=?",
                          topKey(winner), root.editStamp(), udid, loser.pk)) {
    return false;
  }
  return root.executeUpdate(
             "update transactions set category = ?, editDate = ?, edit_ipid=?, ipid = 'batchEdit' where"
             " category = ?",
             winner.pk, root.editStamp(), udid, loser.pk) &&
         root.executeUpdate(
             "update transactions set subcategory = ?, editDate = ?, edit_ipid=?, ipid = 'batchEdit' where"
             " subcategory = ?",
             winner.pk, root.editStamp(), udid, loser.pk) &&
         root.executeUpdate("update category set parent = ?, editDate = ?, edit_ipid=? where parent = ?",
                            topKey(winner), root.editStamp(), udid, loser.pk) &&
         root.executeUpdate(
             "update category set oldParent = ?, editDate = ?, edit_ipid=? where oldParent = ?",
             topKey(winner), root.editStamp(), udid, loser.pk) &&
         repointBookRows(root, loser.pk, winner.pk) &&
         root.executeUpdate("update category set usedTimes = usedTimes+? where oldTitle=?", loser.usedTimes,
                            winner.pk);
}

}  // namespace moniva
