#include "model/vendor.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "base/text.h"
#include "model/order_string.h"
#include "model/transaction_type.h"
#include "model/vendor_rows.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

constexpr std::array<std::string_view, 3> kTitlesOfNoVendor = {"NoVendor", "NoPayee", "NoPayer"};

std::string_view orderTypeKey(int transactionType) {
  return Vendor::typeFor(transactionType) == Vendor::kPayer ? "_PayerCategoryOrderType"
                                                            : "_VendorCategoryOrderType";
}

}  // namespace

void Vendor::setOrderString(std::string_view text) {
  std::size_t characters = 0;
  std::size_t end = 0;
  for (; end < text.size(); ++end) {
    const bool begins = (static_cast<unsigned char>(text[end]) & 0xC0U) != 0x80U;
    if (begins && characters++ == kOrderStringLength) break;
  }
  orderString_ = text.substr(0, end);
}

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
  const auto& platform = root.platform();
  vendor.title = vendor.type == kPayer                    ? platform.localized("NoPayer")
                 : platform.info.edition == Edition::plus ? platform.localized("NoVendor")
                                                          : platform.localized("NoPayee");
  return vendor;
}

bool Vendor::isNoVendor() const {
  return pk == kNoVendorKey;
}

bool Vendor::isNoVendorTitle(MVAppRoot& root, std::string_view title) {
  title = trimBlanks(title);
  return std::ranges::find(kTitlesOfNoVendor, title) != kTitlesOfNoVendor.end() ||
         title == noVendor(root, kPayee).title || title == noVendor(root, kPayer).title;
}

std::string Vendor::getOrderType(MVAppRoot& root, int transactionType) {
  return root.objectForKey(orderTypeKey(transactionType));
}

Result<> Vendor::setOrderType(MVAppRoot& root, int transactionType, std::string_view mode) {
  if (mode != "0" && mode != "1" && mode != "2") return refuse("vendors have no order '{}'", excerpt(mode));
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  // Settings are written on the other connection, which would wait for this one's transaction to end.
  if (db->inTransaction()) return refuse("the order of vendors cannot be set amid other changes");
  if (!root.setObject(mode, orderTypeKey(transactionType)))
    return refuse("the order of vendors could not be written");
  return {};
}

std::optional<Vendor> Vendor::getVendor(MVAppRoot& root, std::string_view key, int transactionType) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr || key.empty()) return std::nullopt;
  static const std::string sql = fmt::format(
      "select {} from category where oldTitle = ? and type in (6, 9) order by type != ?, deleted != 0, type",
      kVendorColumns);
  Run run = db->query(sql, {key, typeFor(transactionType)});
  if (!run.next()) return std::nullopt;
  return vendorOfRow(root, run);
}

std::optional<Vendor> Vendor::withTitle(MVAppRoot& root, std::string_view title, int type) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return std::nullopt;
  static const std::string sql =
      fmt::format("select {} from category where title=? and type=? {}", kVendorColumns, kVendorRowOrder);
  Run run = db->query(sql, {title, type});
  if (!run.next()) return std::nullopt;
  return vendorOfRow(root, run);
}

Result<> Vendor::add() {
  if (auto usable = usableTitle(*root_, title); !usable) return usable;
  if (type != kPayee && type != kPayer) return refuse("a vendor is a payee or a payer, of no type {}", type);
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  bool written = true;
  const auto found = vendorWithKey(*root_, title, type);
  if (!found) return tl::make_unexpected(found.error());
  if (*found) {
    const bool wasDeleted = (*found)->deleted != 0;
    *this = **found;
    if (wasDeleted) written = revive();
  } else {
    pk = root_->newIdentifier();
    if (orderString_.empty()) setOrderString(orderStringOf(title));
    {
      Run run = db->query("select orderID from category where type=? order by orderID DESC limit 1", {type});
      const std::int64_t last = run.next() ? run.integer(0) : 0;
      orderID = static_cast<int>(std::clamp<std::int64_t>(last, 0, std::numeric_limits<int>::max() - 1)) + 1;
    }
    written = root_->executeUpdate(
        "insert into category (title, usedTimes, type, deleted, editDate, familyUser, account,  orderID, "
        "orderString,"
        " oldTitle, edit_ipid) values(?,0,?,0,?,'','',?,?,?,?)",
        title, type, root_->editStamp(), orderID, orderString_, pk, root_->itsUDID());
  }
  if (!written || !transaction.commit()) return tl::make_unexpected(db->refusal());
  deleted = 0;
  return {};
}

std::int64_t Vendor::liveRows() const {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return 0;
  Run run = db->query(
      "select count(title) as titlecount from category where deleted = 0 and type = ? and title = ?",
      {type, title});
  return run.next() ? run.integer(0) : 0;
}

std::int64_t Vendor::recordCount() const {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr || pk.empty()) return 0;
  const auto sql = fmt::format("select count(*) from transactions where vendor = ? and deleted = 0{}",
                               ownRecords(*root_, pk, type));
  Run run = db->query(sql, {pk});
  return run.next() ? run.integer(0) : 0;
}

bool Vendor::updateUsingCount(int transactionType) {
  if (pk.empty()) return false;
  return root_->executeUpdate(
      "update category set editDate = ?, edit_ipid = ?, usedTimes = (select count(eid) from transactions "
      "where vendor = ?"
      " and type = ?) where oldTitle = ? and type = ?",
      root_->editStamp(), root_->itsUDID(), pk, transactionType, pk, type);
}

bool Vendor::addToUsingCount(int uses) {
  if (pk.empty()) return false;
  return root_->executeUpdate(
      "update category set editDate = ?, edit_ipid = ?, usedTimes = coalesce(usedTimes, 0) + ? where "
      "oldTitle = ?"
      " and type = ?",
      root_->editStamp(), root_->itsUDID(), uses, pk, type);
}

bool Vendor::updateUsingCount() {
  return updateUsingCount(type == kPayer ? kind::kIncome : kind::kExpense);
}

Result<int> Vendor::updateUsingCounts(MVAppRoot& root, int type) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  std::vector<Vendor> wrong;
  {
    Run run = db->query(
        "select oldTitle from category where deleted = 0 and type = ? and oldTitle != '' and usedTimes is "
        "not (select count(eid)"
        " from transactions where vendor = category.oldTitle and transactions.type = ?)",
        {type, type == kPayer ? kind::kIncome : kind::kExpense});
    while (run.next()) {
      Vendor& vendor = wrong.emplace_back(root);
      vendor.pk = run.text(0);
      vendor.type = type;
    }
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  for (auto& vendor : wrong) {
    if (!vendor.updateUsingCount()) return tl::make_unexpected(db->refusal());
  }
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  return static_cast<int>(wrong.size());
}

}  // namespace moniva
