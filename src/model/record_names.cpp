#include "model/record_names.h"

namespace moniva {
namespace {

/// What the map has for the key, or what `read` finds for it.
template <class Row, class Read>
std::shared_ptr<const Row> keptOrRead(std::map<std::string, std::shared_ptr<const Row>, std::less<>>& kept,
                                      std::string_view key, const Read& read) {
  if (const auto known = kept.find(key); known != kept.end()) return known->second;
  std::shared_ptr<const Row> row;
  if (auto found = read()) row = std::make_shared<const Row>(std::move(*found));
  return kept.emplace(std::string(key), std::move(row)).first->second;
}

bool standsForNone(std::string_view key) {
  return key.empty() || key == kNoVendorKey || key == "NoPayee" || key == "NoPayer";
}

}  // namespace

void RecordNames::renew() {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return;
  const std::tuple now(db->serial(), db->totalChanges(), db->dataVersion());
  if (std::exchange(seen_, now) == now) return;
  holders_.clear();
  categories_.clear();
  vendors_.clear();
}

std::shared_ptr<const MonivaAccount> RecordNames::holder(std::string_view key) {
  if (key.empty()) return nullptr;
  return keptOrRead(holders_, key, [&] { return MonivaAccount::getAccountWithPK(*root_, key); });
}

std::shared_ptr<const MVCategory> RecordNames::category(std::string_view key, int type) {
  if (key.empty() || key == kNoCategory) return nullptr;
  return keptOrRead(categories_[type], key, [&] {
    auto found = MVCategory::getCategory(*root_, key, type);
    // A child that is its own parent, as a merge may leave one, is not followed.
    if (found && found->isSubCate() && found->parent != key) {
      found->supcategory = category(found->parent, found->type);
    }
    return found;
  });
}

std::shared_ptr<const Vendor> RecordNames::vendor(std::string_view key, int type) {
  if (standsForNone(key)) {
    return keptOrRead(vendors_[type], std::string_view(),
                      [&] { return std::optional<Vendor>(Vendor::noVendor(*root_, type)); });
  }
  return keptOrRead(vendors_[type], key, [&] { return Vendor::getVendor(*root_, key, type); });
}

}  // namespace moniva
