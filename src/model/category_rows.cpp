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

Result<MVCategory> liveCategory(MVAppRoot& root, std::string_view key, int type) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  if (key == kRootKey) return refuse("that is the root of all categories, not one of them");
  // Vendors and groups are in the same table, and in old stores keys are titles: several may share one.
  static const std::string sql = fmt::format(
      "select {} from category where oldTitle = ? and type in (11,12) order by type != ?, deleted, pk",
      kCategoryColumns);
  Run run = db->query(sql, {key, type});
  if (!run.next()) {
    if (!run.ok()) return tl::make_unexpected(db->refusal());
    return refuse("there is no category with the key '{}'", key);
  }
  MVCategory category = categoryOfRow(root, run);
  if (category.deleted != 0) return refuse("the category '{}' is deleted", category.title);
  return category;
}

Result<std::string> kindsOf(MVAppRoot& root, std::string_view key, int type) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const auto others = numberOf(
      *db, "select count(*) from category where oldTitle = ? and type in (11,12) and type != ?", {key, type});
  if (!others) return tl::make_unexpected(others.error());
  return *others == 0 ? std::string() : fmt::format(" and {}", kindsOfType(type));
}

Result<int> nextPlaceInBook(MVAppRoot& root, int type, std::string_view parent, std::string_view book) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select cateOrder from category join categoryofbook on category.oldTitle = categoryofbook.cate"
      " where type=? and parent = ? and book = ? order by cateOrder DESC limit 1",
      {type, parent, book});
  if (run.next()) return static_cast<int>(run.integer(0)) + 1;
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return 0;
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

Result<std::int64_t> recordsOf(MVAppRoot& root, std::string_view key, std::string_view kinds) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  return numberOf(
      *db,
      fmt::format("select count(*) from transactions where {} and (category = ? or subcategory = ?){}",
                  kRecordsInUse, kinds),
      {key, key});
}

}  // namespace moniva
