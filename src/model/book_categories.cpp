#include "model/book_categories.h"

#include "model/category_rows.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// The key the query answers, or nothing. Its slots take the book and the two types of a record.
Result<std::optional<std::string>> lastKey(const MonivaAccount& book, int type, std::string_view sql) {
  Connection* db = book.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const bool isIncome = type == kind::kIncome;
  Run run = db->query(sql, {book.pk, isIncome ? kind::kIncome : kind::kExpense,
                            isIncome ? kind::kFurtherIncome : kind::kFurtherExpense});
  if (run.next()) return std::string(run.text(0));
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return std::optional<std::string>();
}

}  // namespace

Result<> saveCustomCategoryOrder(const MonivaAccount& book, const std::vector<MVCategory>& list) {
  MVAppRoot& root = book.root();
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  const auto known = MonivaAccount::getAccountWithPK(root, book.pk);
  if (!known || known->isDeleted != 0 || !known->isBook())
    return refuse("'{}' is no book in use", book.title);
  int position = 0;
  for (const auto& category : list) {
    if (auto live = liveCategory(root, category.pk, category.type); !live)
      return tl::make_unexpected(live.error());
    const int place = position++;
    bool written = root.executeUpdate(
        "update categoryofbook set cateOrder=?, editDate=?, edit_ipid=? where cate=? and book=?", place,
        root.editStamp(), root.itsUDID(), category.pk, book.pk);
    if (written && db->changes() == 0) {
      written = root.executeUpdate(
          "insert into categoryofbook (pk, cate, book, cateOrder, enabled, editDate, edit_ipid)"
          " values(?,?,?,?,1,?,?)",
          root.newIdentifier(), category.pk, book.pk, place, root.editStamp(), root.itsUDID());
    }
    if (!written) return tl::make_unexpected(db->refusal());
  }
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  return {};
}

Result<std::optional<MVCategory>> getLastUsedCategory(const MonivaAccount& book, int type) {
  const auto key = lastKey(
      book, type,
      "select category.oldTitle from transactions join category on category.oldTitle = case when subcategory"
      " = '' or subcategory = '#NOMVCATEGORY' then transactions.category else subcategory end where book = ?"
      " and (transactions.type = ? or transactions.type = ?) and transactions.deleted = 0 and"
      " category.deleted = 0 and category.type in (11,12) and bid is not '10' order by transactions.editDate"
      " DESC limit 1");
  if (!key) return tl::make_unexpected(key.error());
  return *key ? MVCategory::getCategory(book.root(), **key) : std::nullopt;
}

Result<std::optional<MonivaAccount>> getLastUsedPayment(const MonivaAccount& book, int type) {
  const auto key = lastKey(
      book, type,
      "select account.oldTitle from transactions join account on account.oldTitle = transactions.account"
      " where book = ? and (transactions.type = ? or transactions.type = ?) and transactions.deleted = 0 and"
      " account.deleted = 0 and account.enabled = 1 and account.kind = 1 and account.oldTitle != '' order by"
      " transactions.editDate DESC limit 1");
  if (!key) return tl::make_unexpected(key.error());
  return *key ? MonivaAccount::getAccountWithPK(book.root(), **key) : std::nullopt;
}

}  // namespace moniva
