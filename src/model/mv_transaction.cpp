#include "model/mv_transaction.h"

#include "model/debt.h"
#include "model/record_template.h"
#include "model/spend.h"
#include "model/transfer.h"
#include "storage/writes.h"

namespace moniva {

MVTransaction::MVTransaction(MVAppRoot& root)
    : datetime(root.now()), timeZone(root.calendar().zone()), root_(&root) {}

void MVTransaction::setType(int type) {
  type_ = type;
  if (!vendor) vendor = std::make_shared<const Vendor>(Vendor::noVendor(*root_, type));
}

std::optional<MVTransaction> MVTransaction::transactionFromEID(MVAppRoot& root, std::string_view eid,
                                                               RecordNames* names) {
  MVTransaction transaction(root);
  transaction.eid = eid;
  std::optional<RecordNames> own;
  if (names == nullptr) names = &own.emplace(root);
  if (!transaction.getAllValue(*names)) return std::nullopt;
  return transaction;
}

std::optional<MVTransaction> MVTransaction::transactionFromTemplateShortcut(MVAppRoot& root,
                                                                            std::string_view url) {
  const auto eid = eidOfTemplateShortcut(root, url);
  return eid ? transactionFromEID(root, *eid) : std::nullopt;
}

std::optional<MVTransaction> MVTransaction::transactionFromConnectUUID(MVAppRoot& root,
                                                                       std::string_view uuid) {
  const auto item = itemOfGroup(root, uuid);
  return item && !item->empty() ? transactionFromEID(root, *item) : std::nullopt;
}

Result<> MVTransaction::delete_() {
  if (isDebt()) {
    auto debt = Debt::debtFromEID(*root_, eid);
    if (!debt) return refuse("there is no debt '{}'", eid);
    const auto deletedOne = debt->delete_();
    return deletedOne ? Result<>() : tl::make_unexpected(deletedOne.error());
  }
  if (isTransfer()) {
    auto transfer = type_ == kind::kTransferIn ? Transfer::transferFromEIDB(*root_, eid)
                                               : Transfer::transferFromEIDA(*root_, eid);
    if (!transfer) return refuse("there is no transfer '{}'", eid);
    return transfer->delete_();
  }
  auto spend = Spend::spendFromEID(*root_, eid);
  if (!spend) return refuse("there is no record '{}'", eid);
  if (!isRepayment()) return spend->delete_();
  return atomically(*root_, [&](Connection&) -> Result<> {
    if (auto done = spend->delete_(); !done) return done;
    return recountSettled(*root_, transferEID);
  });
}

Result<> MVTransaction::restore() {
  if (isDebt()) {
    auto debt = Debt::debtFromEID(*root_, eid);
    if (!debt) return refuse("there is no debt '{}'", eid);
    return debt->restore();
  }
  if (isTransfer()) {
    auto transfer = type_ == kind::kTransferIn ? Transfer::transferFromEIDB(*root_, eid)
                                               : Transfer::transferFromEIDA(*root_, eid);
    if (!transfer) return refuse("there is no transfer '{}'", eid);
    return transfer->restore();
  }
  auto spend = Spend::spendFromEID(*root_, eid);
  if (!spend) return refuse("there is no record '{}'", eid);
  if (!isRepayment()) return spend->restore();
  return atomically(*root_, [&](Connection&) -> Result<> {
    if (auto fits = checkRepaymentFits(*root_, eid); !fits) return fits;
    if (auto done = spend->restore(); !done) return done;
    return recountSettled(*root_, transferEID);
  });
}

bool MVTransaction::editable() const {
  if (!isDebt()) return true;
  auto debt = Debt::debtFromEID(*root_, eid);
  return debt && debt->editable();
}

Result<std::vector<std::string>> MVTransaction::getImagesForTransID(MVAppRoot& root, const std::string& eid) {
  return moniva::getImagesForTransID(root, eid);
}

Result<std::vector<std::string>> MVTransaction::saveImages(MVAppRoot& root,
                                                           const std::vector<ImageFile>& images,
                                                           const std::string& eid) {
  return moniva::saveImages(root, images, eid);
}

Result<> MVTransaction::deleteImages(MVAppRoot& root, const std::vector<std::string>& names,
                                     const std::string& eid) {
  const auto gone = moniva::deleteImages(root, names, eid);
  return gone ? Result<>() : tl::make_unexpected(gone.error());
}

Result<> MVTransaction::deleteImage(MVAppRoot& root, const std::string& name, const std::string& eid) {
  return deleteImages(root, {name}, eid);
}

}  // namespace moniva
