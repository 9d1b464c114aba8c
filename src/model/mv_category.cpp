#include "model/mv_category.h"

#include "model/title.h"
#include "model/transaction_type.h"
#include "storage/transaction.h"

namespace moniva {

MVCategory MVCategory::rootCateForType(MVAppRoot& root, int type) {
  MVCategory category(root);
  category.title = "_rootCate";
  category.pk = "_rootCate";
  category.parent.clear();
  category.type = type;
  return category;
}

std::optional<MVCategory> MVCategory::getCategory(MVAppRoot& root, std::string_view key) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr || key.empty() || key == kNoCategory) return std::nullopt;
  Run run =
      db->query("select title, parent, type, orderString, deleted from category where oldTitle = ?", {key});
  if (!run.next()) return std::nullopt;
  MVCategory category(root);
  category.pk = key;
  category.title = run.text(0);
  category.parent = run.text(1);
  category.type = static_cast<int>(run.integer(2));
  category.orderString = run.text(3);
  category.deleted = static_cast<int>(run.integer(4));
  return category;
}

std::optional<MVCategory> MVCategory::withTitle(MVAppRoot& root, std::string_view title, int type,
                                                std::string_view parent) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return std::nullopt;
  std::string key;
  {
    Run run =
        db->query("select oldTitle from category where title = ? and type = ? and parent = ? and deleted = 0",
                  {title, type, parent});
    if (!run.next()) return std::nullopt;
    key = run.text(0);
  }
  return getCategory(root, key);
}

std::vector<MVCategory> MVCategory::getAllSubcategoryList() const {
  std::vector<MVCategory> list;
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return list;
  Run run = db->query(
      "select oldTitle from category where deleted = 0 and type = ? and parent = ? and deleted = 0 order by "
      "orderString",
      {type, isRoot() ? std::string_view("_rootCate") : std::string_view(pk)});
  while (run.next()) {
    if (auto category = getCategory(*root_, run.text(0))) list.push_back(std::move(*category));
  }
  return list;
}

std::string MVCategory::cateString() const {
  if (!isSubCate()) return title;
  const auto above = getCategory(*root_, parent);
  if (!above || above->title == title) return title;
  return fmt::format("{} - {}", above->title, title);
}

Result<> MVCategory::addCate() {
  if (auto usable = checkTitle(title, "a category"); !usable) return usable;
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  std::string found;
  bool wasDeleted = false;
  {
    // A live row is taken before a deleted one of the same name.
    Run run =
        isSuperCate()
            ? db->query(
                  "select oldTitle, deleted from category where title = ? and type=? and parent= '_rootCate'"
                  " order by deleted",
                  {title, type})
            : db->query(
                  "select oldTitle, deleted from category where title = ? and type=? and parent = ?"
                  " order by deleted",
                  {title, type, parent});
    if (run.next()) {
      found = run.text(0);
      wasDeleted = run.integer(1) != 0;
    }
  }
  const Date stamp = root_->editStamp();
  bool written = false;
  if (!found.empty()) {
    pk = found;
    written = wasDeleted
                  ? root_->executeUpdate(
                        "update category set deleted=0, usedTimes=0, familyUser='', editDate=?,"
                        " edit_ipid = ? where oldTitle=?",
                        stamp, root_->itsUDID(), pk)
                  : root_->executeUpdate(
                        "update category set editDate=?, deleted = 0, edit_ipid = ? where oldTitle = ?",
                        stamp, root_->itsUDID(), pk);
  } else {
    pk = root_->newIdentifier();
    if (orderString.empty()) orderString = orderStringOf(title);
    written = root_->executeUpdate(
        "insert into category (title, parent, type, deleted, editDate, familyUser,  orderString, oldTitle, "
        "oldParent,"
        " edit_ipid) values(?,?,?,0,?,'',?,?,?,?)",
        title, parent, type, stamp, orderString, pk, parent, root_->itsUDID());
    if (written && isSubCate()) {
      written = root_->executeUpdate(
          "update category set editDate=?, edit_ipid = ?, account = (select account from category where "
          "oldTitle = ?)"
          " where oldTitle = ?",
          root_->editStamp(), root_->itsUDID(), parent, pk);
    }
  }
  if (!written || !transaction.commit()) return tl::make_unexpected(db->refusal());
  return {};
}

bool MVCategory::updateUsingCount(const MonivaAccount& book, int uses) {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return false;
  Transaction transaction(*db);
  bool written =
      transaction.began() &&
      root_->executeUpdate("update category set usedTimes = usedTimes+? where oldTitle=?", uses, pk);
  if (written && !book.pk.empty()) {
    written = root_->executeUpdate("update categoryofbook set used = used+? where cate=? and book=?", uses,
                                   pk, book.pk);
    if (written && db->changes() == 0) {
      written =
          root_->executeUpdate("insert into categoryofbook (pk, cate, book, used, enabled) values(?,?,?,?,1)",
                               root_->newIdentifier(), pk, book.pk, uses);
    }
  }
  return written && transaction.commit();
}

}  // namespace moniva
