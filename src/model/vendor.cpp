#include "model/vendor.h"

#include "model/mv_category.h"
#include "model/title.h"
#include "model/transaction_type.h"
#include "storage/transaction.h"

namespace moniva {

int Vendor::typeFor(int transactionType) {
  switch (transactionType) {
    case kind::kIncome:
    case kind::kFurtherIncome:
    case kind::kIncomeTemplate:
      return kPayer;
    case kind::kExpense:
    case kind::kFurtherExpense:
    case kind::kExpenseTemplate:
      return kPayee;
    default:
      return transactionType;
  }
}

Vendor Vendor::noVendor(MVAppRoot& root, int transactionType) {
  Vendor vendor(root);
  vendor.type = typeFor(transactionType);
  vendor.pk = kNoVendorKey;
  if (vendor.type == kPayer) {
    vendor.title = "NoPayer";
  } else {
    vendor.title = root.platform().info.edition == Edition::plus ? "NoVendor" : "NoPayee";
  }
  return vendor;
}

bool Vendor::isNoVendor() const {
  return pk == kNoVendorKey;
}

std::optional<Vendor> Vendor::getVendor(MVAppRoot& root, std::string_view key) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr || key.empty()) return std::nullopt;
  Run run = db->query("select title, type, orderString, usedTimes, orderID from category where oldTitle = ?",
                      {key});
  if (!run.next()) return std::nullopt;
  Vendor vendor(root);
  vendor.pk = key;
  vendor.title = run.text(0);
  vendor.type = static_cast<int>(run.integer(1));
  vendor.orderString = run.text(2);
  vendor.usedTimes = static_cast<int>(run.integer(3));
  vendor.orderID = static_cast<int>(run.integer(4));
  return vendor;
}

Result<> Vendor::add() {
  if (auto usable = checkTitle(title, "a vendor"); !usable) return usable;
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  std::string found;
  bool wasDeleted = false;
  {
    Run run = db->query("select oldTitle, deleted from category where title=? and type=? order by deleted",
                        {title, type});
    if (run.next()) {
      found = run.text(0);
      wasDeleted = run.integer(1) != 0;
    }
  }
  bool written = true;
  if (!found.empty()) {
    pk = found;
    if (wasDeleted) {
      written =
          root_->executeUpdate("update category set deleted=0, editDate=?, edit_ipid = ? where oldTitle=?",
                               root_->editStamp(), root_->itsUDID(), pk);
    }
  } else {
    pk = root_->newIdentifier();
    if (orderString.empty()) orderString = orderStringOf(title);
    {
      Run run = db->query("select orderID from category where type=? order by orderID DESC limit 1", {type});
      orderID = run.next() ? static_cast<int>(run.integer(0)) + 1 : 1;
    }
    written = root_->executeUpdate(
        "insert into category (title, usedTimes, type, deleted, editDate, familyUser, account,  orderID, "
        "orderString,"
        " oldTitle, edit_ipid) values(?,0,?,0,?,'','',?,?,?,?)",
        title, type, root_->editStamp(), orderID, orderString, pk, root_->itsUDID());
  }
  if (!written || !transaction.commit()) return tl::make_unexpected(db->refusal());
  return {};
}

bool Vendor::isExist() const {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return false;
  Run run = db->query(
      "select count(title) as titlecount from category where deleted = 0 and type = ? and title = ?",
      {type, title});
  return run.next() && run.integer(0) > 0;
}

bool Vendor::updateUsingCount(int transactionType) {
  return root_->executeUpdate(
      "update category set editDate = ?, edit_ipid = ?, usedTimes = (select count(eid) from transactions "
      "where vendor = ?"
      " and type = ?) where oldTitle = ?",
      root_->editStamp(), root_->itsUDID(), pk, transactionType, pk);
}

}  // namespace moniva
