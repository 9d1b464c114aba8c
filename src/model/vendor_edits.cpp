#include <set>

#include "base/text.h"
#include "model/order_string.h"
#include "model/title.h"
#include "model/vendor.h"
#include "model/vendor_rows.h"
#include "storage/transaction.h"

// What changes vendors that are there already.
namespace moniva {

Result<Vendor> Vendor::stored() const {
  if (isNoVendor()) return refuse("'{}' stands for no vendor; it stays as it is", excerpt(title));
  if (pk.empty()) return refuse("the vendor '{}' has no key", excerpt(title));
  auto row = getVendor(*root_, pk, type);
  if (!row) return refuse("there is no vendor with the key '{}'", excerpt(pk));
  return std::move(*row);
}

Result<> Vendor::usableTitle(MVAppRoot& root, std::string_view text) {
  if (auto usable = checkTitle(text, "a vendor"); !usable) return usable;
  if (isNoVendorTitle(root, text))
    return refuse("'{}' stands for no vendor; choose another title", excerpt(text));
  return {};
}

bool Vendor::markDeleted() const {
  return root_->executeUpdate(
      "update category set deleted = 1, editDate = ?, edit_ipid = ? where oldTitle = ? and type = ?",
      root_->editStamp(), root_->itsUDID(), pk, type);
}

bool Vendor::revive() const {
  return root_->executeUpdate(
      "update category set deleted=0, editDate=?, edit_ipid = ? where oldTitle=? and type = ?",
      root_->editStamp(), root_->itsUDID(), pk, type);
}

Result<> Vendor::delVendor() {
  const auto row = stored();
  if (!row) return tl::make_unexpected(row.error());
  if (!row->markDeleted()) return tl::make_unexpected(root_->db().getDatabase()->refusal());
  deleted = 1;
  return {};
}

Result<> Vendor::rename(const std::string& newTitle) {
  if (auto usable = usableTitle(*root_, newTitle); !usable) return usable;
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  auto changed = stored();
  if (!changed) return tl::make_unexpected(changed.error());
  if (changed->title == newTitle) return refuse("'{}' is its title already", excerpt(newTitle));
  auto found = vendorWithKey(*root_, newTitle, changed->type);
  if (!found) return tl::make_unexpected(found.error());
  bool written = false;
  if (auto& other = *found) {
    if (other->pk == pk)
      return refuse("'{}' and '{}' have the same key", excerpt(changed->title), excerpt(newTitle));
    // One of the two has to go, and it is always the one renamed: the title it is given belongs to the other
    // row, which other devices know by its key. A live one stays as it is; a deleted one has to come back
    // first, or the records would stand under a vendor that no list shows.
    written = (other->deleted == 0 || other->revive()) && changed->markDeleted() &&
              relabelRecords(*root_, *changed, other->pk, Relabelling::batchEdit) &&
              changed->updateUsingCount() && other->updateUsingCount();
    if (auto taken = getVendor(*root_, other->pk, other->type)) changed = std::move(*taken);
  } else {
    changed->title = newTitle;
    changed->setOrderString(orderStringOf(newTitle));
    written = root_->executeUpdate(
        "update category set title = ?, orderString = ?, editDate=?, edit_ipid = ? where oldTitle=? and"
        " type = ?",
        newTitle, changed->orderString_, root_->editStamp(), root_->itsUDID(), pk, changed->type);
  }
  if (!written || !transaction.commit()) return tl::make_unexpected(db->refusal());
  changed->old = pk;
  *this = std::move(*changed);
  return {};
}

Result<> Vendor::update() {
  if (auto usable = usableTitle(*root_, title); !usable) return usable;
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  const auto row = stored();
  if (!row) return tl::make_unexpected(row.error());
  if (row->title != title) {
    if (const auto other = withTitle(*root_, title, row->type)) {
      return other->deleted == 0 ? refuse("there is a vendor '{}' already", excerpt(title))
                                 : refuse("there is a vendor '{}' already, which is deleted", excerpt(title));
    }
    if (orderString_ == row->orderString_) orderString_.clear();
  }
  if (orderString_.empty()) setOrderString(orderStringOf(title));
  // By the title it has in the store: two rows of one title, left by a merge, stay alike.
  if (!root_->executeUpdate("update category set title = ?, orderString = ?, editDate=?, edit_ipid = ? where "
                            "title=? and type=?",
                            title, orderString_, root_->editStamp(), root_->itsUDID(), row->title,
                            row->type) ||
      !transaction.commit()) {
    return tl::make_unexpected(db->refusal());
  }
  old = pk;
  return {};
}

Result<> Vendor::moveDataTo(const Vendor& vendor) {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  auto from = stored();
  if (!from) return tl::make_unexpected(from.error());
  auto to = vendor.stored();
  if (!to) return tl::make_unexpected(to.error());
  if (from->pk == to->pk) return refuse("the records of '{}' are there already", excerpt(from->title));
  if (from->type != to->type)
    return refuse("'{}' and '{}' are a payee and a payer; records go to one of the same kind",
                  excerpt(from->title), excerpt(to->title));
  if (to->deleted != 0) return refuse("'{}' is deleted; it takes no records", excerpt(to->title));
  // What was moved is counted where it is now, lest lists by use go by what was.
  if (!relabelRecords(*root_, *from, to->pk, Relabelling::edit) || !from->updateUsingCount() ||
      !to->updateUsingCount() || !transaction.commit()) {
    return tl::make_unexpected(db->refusal());
  }
  return {};
}

Result<> Vendor::updateOrder(MVAppRoot& root, std::span<const Vendor> list) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  std::set<std::string_view> placed;
  for (const auto& vendor : list) {
    if (vendor.isNoVendor()) continue;
    const auto row = vendor.stored();
    if (!row) return tl::make_unexpected(row.error());
    if (!placed.insert(vendor.pk).second) return refuse("'{}' has two places", excerpt(row->title));
    if (!root.executeUpdate("update category set orderID=?, editDate=?, edit_ipid = ? where oldTitle = ?"
                            " and type = ?",
                            static_cast<int>(placed.size()), root.editStamp(), root.itsUDID(), row->pk,
                            row->type)) {
      return tl::make_unexpected(db->refusal());
    }
  }
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  return {};
}

}  // namespace moniva
