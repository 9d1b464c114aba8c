#include "model/category_rows.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// The row of a category that went into another one is deleted.
bool markMerged(MVAppRoot& root, const MVCategory& loser) {
  return root.executeUpdate(
      "update category set deleted=1, editDate=?, edit_ipid = ? where oldTitle=? and type = ?",
      root.editStamp(), root.itsUDID(), loser.pk, loser.type);
}

/// The children of two top-level categories that become one: those of the same title become one as well, the
/// others change their parent with everything else.
Result<std::int64_t> mergeChildren(MVAppRoot& root, const MVCategory& loser, const MVCategory& winner) {
  Connection* db = root.db().getDatabase();
  std::vector<MVCategory> children;
  {
    Run run = db->query(fmt::format("select {} from category where parent = ? and type = ? and deleted = 0",
                                    kCategoryColumns),
                        {loser.pk, loser.type});
    while (run.next()) children.push_back(categoryOfRow(root, run));
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  for (const auto& child : children) {
    const auto same = liveSibling(root, child.title, child.type, winner.pk, child.pk);
    if (!same) return tl::make_unexpected(same.error());
    if (!*same) continue;
    if (!repointCategory(root, child, **same) || !markMerged(root, child)) {
      return tl::make_unexpected(db->refusal());
    }
  }
  return static_cast<std::int64_t>(children.size());
}

/// Makes the loser and the winner one. Inside the caller's transaction.
Result<CategoryChange> mergeCategory(MVAppRoot& root, const MVCategory& loser, const MVCategory& winner) {
  CategoryChange change{.merged = true};
  if (auto records = loser.recordCount()) {
    change.records = *records;
  } else {
    return tl::make_unexpected(records.error());
  }
  if (loser.isSuperCate() && winner.isSuperCate()) {
    auto children = mergeChildren(root, loser, winner);
    if (!children) return tl::make_unexpected(children.error());
    change.subcategories = *children;
  }
  if (!repointCategory(root, loser, winner) || !markMerged(root, loser)) {
    return tl::make_unexpected(root.db().getDatabase()->refusal());
  }
  return change;
}

/// Whether the category may be moved below `above` (nothing: to the top).
Result<> mayMove(const MVCategory& category, const MVCategory& newParent, std::int64_t children) {
  if (newParent.pk == category.pk)
    return refuse("the category '{}' cannot be moved under itself", category.title);
  if (newParent.parent == category.pk) {
    return refuse("the category '{}' cannot be moved under its own subcategory '{}'", category.title,
                  newParent.title);
  }
  if (newParent.type != category.type) {
    return refuse("'{}' and '{}' are not of one kind: one is for income, the other for expenses",
                  category.title, newParent.title);
  }
  if (newParent.pk == category.parent) {
    return newParent.isRoot()
               ? refuse("the category '{}' is at the top already", category.title)
               : refuse("the category '{}' is under '{}' already", category.title, newParent.title);
  }
  if (newParent.isSubCate()) {
    return refuse("'{}' is a subcategory itself, and a subcategory has none", newParent.title);
  }
  if (children > 0) {
    return refuse("the category '{}' has subcategories, and a subcategory has none; move those first",
                  category.title);
  }
  return {};
}

}  // namespace

Result<> MVCategory::addCate() {
  if (auto usable = checkCategoryTitle(title); !usable) return usable;
  if (!isCategoryType(type)) return refuse("{} is neither the type of income nor of expenses", type);
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  if (isSubCate()) {
    const auto above = liveCategory(*root_, parent, type);
    if (!above) return tl::make_unexpected(above.error());
    if (above->isSubCate() || above->type != type) {
      return above->isSubCate()
                 ? refuse("'{}' cannot be a subcategory of '{}', which is one itself", title, above->title)
                 : refuse("'{}' cannot be a subcategory of '{}', which is of the other kind", title,
                          above->title);
    }
  }
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
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  const Date stamp = root_->editStamp();
  bool written = false;
  if (!found.empty()) {
    pk = found;
    written = wasDeleted ? root_->executeUpdate(
                               "update category set deleted=0, usedTimes=0, familyUser='', editDate=?,"
                               " edit_ipid = ? where oldTitle=? and type = ?",
                               stamp, root_->itsUDID(), pk, type)
                         : root_->executeUpdate(
                               "update category set editDate=?, deleted = 0, edit_ipid = ? where oldTitle = "
                               "? and type = ?",
                               stamp, root_->itsUDID(), pk, type);
    if (written && isOfBook()) {
      // The statement lacks a comma and always has: what was switched off in the book stays so. Nobody but
      // the fault log is to hear of it.
      root_->executeUpdate(
          "update categoryofbook set editDate=?, edit_ipid=? enabled = 1 where cate = ? and book = ?", stamp,
          root_->itsUDID(), pk, book->pk);
      db->clearError();
    }
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
          "oldTitle = ? and type = ?)"
          " where oldTitle = ?",
          root_->editStamp(), root_->itsUDID(), parent, type, pk);
    }
    // Last in an order by hand.
    written = written && root_->executeUpdate(
                             "update category set orderID = (select coalesce(max(orderID), 0) + 1 from"
                             " category where type = ? and parent = ? and oldTitle != ?) where oldTitle = ?",
                             type, parent, pk, pk);
  }
  if (!written) return tl::make_unexpected(db->refusal());
  auto row = liveCategory(*root_, pk, type);
  if (!row) return tl::make_unexpected(row.error());
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  row->book = book;
  row->supcategory = supcategory;
  *this = std::move(*row);
  return {};
}

Result<> MVCategory::delCate() {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  const auto live = liveCategory(*root_, pk, type);
  if (!live) return tl::make_unexpected(live.error());
  const std::string& udid = root_->itsUDID();
  const auto kinds = kindsOf(*root_, pk, live->type);
  if (!kinds) return tl::make_unexpected(kinds.error());
  // Rows of books whose key income and expense share belong to either, and stay.
  const bool written =
      root_->executeUpdate(
          "update category set deleted = 1, editDate = ?, edit_ipid = ?, account = '' where oldTitle = ? and "
          "type = ?",
          root_->editStamp(), udid, pk, live->type) &&
      (live->isSubCate() || root_->executeUpdate("update category set deleted = 1, editDate = ?, edit_ipid = "
                                                 "?, account = '' where parent = ? and type = ?",
                                                 root_->editStamp(), udid, pk, live->type)) &&
      (!kinds->empty() ||
       root_->executeUpdate("update categoryofbook set enabled=0, editDate=?, edit_ipid = ? where cate=?",
                            root_->editStamp(), udid, pk)) &&
      root_->executeUpdate(fmt::format("delete from transactions where category = ? and type = ?{}", *kinds),
                           pk, kind::kCategoryAllocation) &&
      // Those below go too, and what they were given with them.
      (live->isSubCate() || live->type != kind::kExpense ||
       root_->executeUpdate("delete from transactions where type = ? and category in (select oldTitle from"
                            " category where parent = ? and type = ?)",
                            kind::kCategoryAllocation, pk, live->type));
  if (!written || !transaction.commit()) return tl::make_unexpected(db->refusal());
  deleted = 1;
  return {};
}

Result<CategoryChange> MVCategory::rename(std::string_view newTitle) {
  if (auto usable = checkCategoryTitle(newTitle); !usable) return tl::make_unexpected(usable.error());
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  auto live = liveCategory(*root_, pk, type);
  if (!live) return tl::make_unexpected(live.error());
  if (live->title == newTitle) return refuse("the category is called '{}' already", newTitle);
  auto other = liveSibling(*root_, newTitle, live->type, live->parent, pk);
  if (!other) return tl::make_unexpected(other.error());
  Result<CategoryChange> change;
  if (*other) {
    change = mergeCategory(*root_, *live, **other);
    if (!change) return change;
    live = std::move(**other);
  } else {
    live->title = newTitle;
    live->orderString = orderStringOf(newTitle);
    if (!root_->executeUpdate("update category set title = ?, orderString = ?, editDate=?, edit_ipid=? where "
                              "oldTitle=? and type = ?",
                              live->title, live->orderString, root_->editStamp(), root_->itsUDID(), pk,
                              live->type)) {
      return tl::make_unexpected(db->refusal());
    }
  }
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  live->book = book;
  *this = std::move(*live);
  return change;
}

Result<CategoryChange> MVCategory::moveTo(const MVCategory& newParent) {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  auto live = liveCategory(*root_, pk, type);
  if (!live) return tl::make_unexpected(live.error());
  auto above =
      newParent.isRoot() ? Result<MVCategory>(newParent) : liveCategory(*root_, newParent.pk, newParent.type);
  if (!above) return tl::make_unexpected(above.error());
  const auto children = numberOf(
      *db, "select count(*) from category where parent = ? and type = ? and deleted = 0", {pk, live->type});
  if (!children) return tl::make_unexpected(children.error());
  if (auto may = mayMove(*live, *above, *children); !may) return tl::make_unexpected(may.error());
  auto other = liveSibling(*root_, live->title, live->type, above->pk, pk);
  if (!other) return tl::make_unexpected(other.error());

  Result<CategoryChange> change;
  const auto kinds = kindsOf(*root_, pk, live->type);
  if (!kinds) return tl::make_unexpected(kinds.error());
  const std::string oldTop = topKey(*live);
  if (*other) {
    change = mergeCategory(*root_, *live, **other);
    if (!change) return change;
    live = std::move(**other);
  } else {
    const auto records = recordsOf(*root_, pk, *kinds);
    if (!records) return tl::make_unexpected(records.error());
    change->records = *records;
    const bool wasTop = live->isSuperCate();
    live->parent = above->pk;
    const bool written =
        root_->executeUpdate(
            "update category set parent = ?, editDate = ?, edit_ipid = ? where oldTitle=? and type = ?",
            live->parent, root_->editStamp(), root_->itsUDID(), pk, live->type) &&
        (!wasTop || (chooseTopItself(*root_, *live, pk) && retopCategory(*root_, *live, above->pk))) &&
        paymentsFollow(*root_, fmt::format("subcategory = ?{}", *kinds), {pk}, oldTop, topKey(*live)) &&
        root_->executeUpdate(
            fmt::format("update transactions set category = ?, editDate = ?, ipid = 'batchEdit', edit_ipid ="
                        " ? where subcategory=?{}",
                        *kinds),
            topKey(*live), root_->editStamp(), root_->itsUDID(), pk);
    if (!written) return tl::make_unexpected(db->refusal());
  }
  if (auto counted = countUsesAfresh(*root_, {oldTop, topKey(*live), live->pk}); !counted) {
    return tl::make_unexpected(counted.error());
  }
  live->book = book;
  const auto count = live->getUsingCount();
  if (!count) return tl::make_unexpected(count.error());
  live->usedTimes = static_cast<int>(*count);
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  *this = std::move(*live);
  return change;
}

Result<std::int64_t> MVCategory::moveDataTo(const MVCategory& other, std::optional<Date> fromDate,
                                            std::optional<Date> toDate) {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  if (fromDate && toDate && *toDate < *fromDate) return refuse("the range ends before it begins");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  const auto live = liveCategory(*root_, pk, type);
  if (!live) return tl::make_unexpected(live.error());
  const auto target = liveCategory(*root_, other.pk, other.type);
  if (!target) return tl::make_unexpected(target.error());
  if (target->pk == pk && target->type == live->type)
    return refuse("the records of '{}' are there already", live->title);
  if (target->type != live->type) {
    return refuse("'{}' and '{}' are not of one kind: one is for income, the other for expenses", live->title,
                  target->title);
  }
  const auto kinds = kindsOf(*root_, pk, live->type);
  if (!kinds) return tl::make_unexpected(kinds.error());
  std::string range = (live->isSubCate() ? "subcategory = ?" : "category = ?") + *kinds;
  std::vector<Value> limits{pk};
  if (fromDate) {
    range += " and datetime >= ?";
    limits.emplace_back(*fromDate);
  }
  if (toDate) {
    range += " and datetime <= ?";
    limits.emplace_back(*toDate);
  }
  std::int64_t records = 0;
  {
    Run run = db->query(
        fmt::format("select count(*) from transactions where {} and {}", kRecordsInUse, range), limits);
    if (!run.next()) return tl::make_unexpected(db->refusal());
    records = run.integer(0);
  }
  std::set<std::string, std::less<>> ends{pk, topKey(*live), target->pk, topKey(*target)};
  {
    Run run = db->query("select oldTitle from category where parent = ? and type = ?", {pk, live->type});
    while (run.next()) ends.emplace(run.text(0));
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  // The device is not named, unlike in every other edit. A payment has no subcategory and gets none.
  std::vector<Value> values{topKey(*target), target->pk, root_->editStamp(), kind::kCategoryAllocation};
  values.insert(values.end(), limits.begin(), limits.end());
  if (!paymentsFollow(*root_, range, limits, topKey(*live), topKey(*target)) ||
      !root_->executeUpdate(
          fmt::format("update transactions set category = ?, subcategory = case when bid = '10' then"
                      " subcategory else ? end, editDate = ?, ipid = 'batchEdit' where type != ? and {}",
                      range),
          std::span<const Value>(values))) {
    return tl::make_unexpected(db->refusal());
  }
  if (auto counted = countUsesAfresh(*root_, ends); !counted) return tl::make_unexpected(counted.error());
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  return records;
}

Result<> MVCategory::saveCustomCategoryOrder(MVAppRoot& root, const std::vector<MVCategory>& list) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  int position = 0;
  for (const auto& category : list) {
    if (auto live = liveCategory(root, category.pk, category.type); !live)
      return tl::make_unexpected(live.error());
    if (!root.executeUpdate(
            "update category set orderID=?, editDate=?, edit_ipid=? where oldTitle=? and type = ?",
            position++, root.editStamp(), root.itsUDID(), category.pk, category.type)) {
      return tl::make_unexpected(db->refusal());
    }
  }
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  return {};
}

}  // namespace moniva
