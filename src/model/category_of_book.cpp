#include "model/category_rows.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// Refused for a key that is no live book.
Result<> checkBook(MVAppRoot& root, const MonivaAccount& book) {
  const auto known = MonivaAccount::getAccountWithPK(root, book.pk);
  if (known && known->isDeleted == 0 && known->isBook() && !known->isGroup) return {};
  return refuse("'{}' is no book in use", book.title);
}

}  // namespace

Result<> MVCategory::switchForBook(const MonivaAccount& inBook, bool on) {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  const auto live = liveCategory(*root_, pk, type);
  if (!live) return tl::make_unexpected(live.error());
  if (auto known = checkBook(*root_, inBook); !known) return known;
  std::string row;
  {
    Run run = db->query("select pk, enabled from categoryofbook where cate=? and book=?", {pk, inBook.pk});
    if (run.next()) row = run.text(0);
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  bool written = false;
  if (!row.empty()) {
    written =
        root_->executeUpdate(on ? "update categoryofbook set enabled=1, editDate=?, edit_ipid=? where pk=?"
                                : "update categoryofbook set enabled=0, editDate=?, edit_ipid=? where pk=?",
                             root_->editStamp(), root_->itsUDID(), row);
  } else {
    int place = 0;
    if (on) {
      const auto next = nextPlaceInBook(*root_, live->type, live->parent, inBook.pk);
      if (!next) return tl::make_unexpected(next.error());
      place = *next;
    }
    row = root_->newIdentifier();
    written =
        root_->executeUpdate(on ? "insert into categoryofbook (pk, cate, book, cateOrder, enabled, editDate,"
                                  " edit_ipid) values(?,?,?,?,1,?,?)"
                                : "insert into categoryofbook (pk, cate, book, cateOrder, enabled, editDate,"
                                  " edit_ipid) values(?,?,?,?,0,?,?)",
                             row, pk, inBook.pk, place, root_->editStamp(), root_->itsUDID());
  }
  // One row a book, and none without a key of its own.
  written = written && root_->executeUpdate("delete from categoryofbook where cate=? and book=? and pk!=?",
                                            pk, inBook.pk, row);
  if (written && !on) {
    const auto kinds = kindsOf(*root_, pk, live->type);
    if (!kinds) return tl::make_unexpected(kinds.error());
    written = root_->executeUpdate(
        fmt::format("delete from transactions where category = ? and type = ? and book = ?{}", *kinds), pk,
        kind::kCategoryAllocation, inBook.pk);
  }
  if (!written || !transaction.commit()) return tl::make_unexpected(db->refusal());
  return {};
}

Result<> MVCategory::enabledForBook(const MonivaAccount& inBook) {
  return switchForBook(inBook, true);
}

Result<> MVCategory::disabledForBook(const MonivaAccount& inBook) {
  return switchForBook(inBook, false);
}

Result<> MVCategory::enabledForBookOnly(const MonivaAccount& inBook) {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  if (auto switched = switchForBook(inBook, true); !switched) return switched;
  std::vector<MonivaAccount> others;
  {
    Run run = db->query(
        "select oldTitle from account where kind = 2 and isGroup = 0 and deleted = 0 and oldTitle != ?",
        {inBook.pk});
    while (run.next()) others.emplace_back(*root_).pk = run.text(0);
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  for (const auto& other : others) {
    if (auto switched = switchForBook(other, false); !switched) return switched;
  }
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  return {};
}

Result<std::vector<std::string>> MVCategory::getBelongBookList() const {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query("select book from categoryofbook where cate = ? and enabled = 0", {pk});
  std::vector<std::string> books;
  while (run.next()) books.emplace_back(run.text(0));
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return books;
}

}  // namespace moniva
