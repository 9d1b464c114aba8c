#include "model/vendor_query.h"

#include <algorithm>
#include <unordered_map>

#include "model/order_string.h"
#include "model/title_order.h"
#include "storage/transaction.h"

namespace moniva {

std::vector<Vendor> VendorQuery::listed(std::string_view sql) {
  std::vector<Vendor> vendors;
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return vendors;
  Run run = db->query(sql, {type});
  while (run.next()) {
    Vendor& vendor = vendors.emplace_back(*root_);
    vendor.type = type;
    vendor.pk = run.text(0);
    vendor.setOrderString(run.text(1));
    vendor.title = run.text(2);
    vendor.usedTimes = static_cast<int>(run.integer(3));
    vendor.orderID = static_cast<int>(run.integer(4));
    vendor.familyUser = run.text(5);
    vendor.ipid = run.text(6);
  }
  return vendors;
}

std::vector<VendorSection> VendorQuery::getVendorList() {
  return getVendorList(Vendor::getOrderType(*root_, type));
}

std::vector<VendorSection> VendorQuery::getVendorList(std::string_view mode) {
  if (mode == "2") return getVendorListByAlpha();
  std::vector<VendorSection> sections(1);
  auto& list = sections.front().cateArrayOfSameLetter;
  if (mode == "0") {
    list = listed(
        "select oldTitle, orderString, title, usedTimes, orderID, familyUser, ipid from category where"
        " deleted = 0 and type = ? and oldTitle != '' group by title order by orderID");
  } else if (mode == "1") {
    list = listed(
        "select oldTitle, orderString, title, usedTimes, orderID, familyUser, ipid from category where"
        " deleted = 0 and type = ? and oldTitle != '' group by title order by usedTimes DESC");
  }
  list.insert(list.begin(), Vendor::noVendor(*root_, type));
  return sections;
}

std::vector<Vendor> VendorQuery::listedByOrderString() {
  auto vendors = listed(
      "select oldTitle, orderString, title, usedTimes, orderID, familyUser, ipid from category where"
      " deleted = 0 and type = ? and oldTitle != '' group by title order by orderString");
  completeOrderStrings(vendors);
  return vendors;
}

std::vector<Vendor> VendorQuery::getVendorListByName() {
  auto vendors = listedByOrderString();
  const auto order = TitleOrder::forLocale(root_->calendar().locale());
  const auto lettersEnd = std::stable_partition(vendors.begin(), vendors.end(), [&](const Vendor& vendor) {
    return order->letterOf(vendor.title) != TitleOrder::kNoLetter;
  });
  const auto isBefore = [&](const Vendor& left, const Vendor& right) {
    return order->compare(left.title, right.title) < 0;
  };
  std::stable_sort(vendors.begin(), lettersEnd, isBefore);
  std::stable_sort(lettersEnd, vendors.end(), isBefore);
  return vendors;
}

std::vector<VendorSection> VendorQuery::getVendorListByAlpha() {
  auto vendors = listedByOrderString();
  const auto order = TitleOrder::forLocale(root_->calendar().locale());
  std::vector<VendorSection> sections;
  std::unordered_map<std::string, std::vector<Vendor*>> filed;
  for (auto& vendor : vendors) filed[order->letterOf(vendor.title)].push_back(&vendor);
  for (auto& [letter, rows] : filed) {
    std::ranges::stable_sort(rows, [&](const Vendor* left, const Vendor* right) {
      return order->compare(left->title, right->title) < 0;
    });
    auto& section = sections.emplace_back();
    section.orderLetter = letter;
    section.cateArrayOfSameLetter.reserve(rows.size());
    for (Vendor* vendor : rows) section.cateArrayOfSameLetter.push_back(std::move(*vendor));
  }
  std::ranges::sort(sections, [&](const VendorSection& left, const VendorSection& right) {
    const bool leftIsLast = left.orderLetter == TitleOrder::kNoLetter;
    const bool rightIsLast = right.orderLetter == TitleOrder::kNoLetter;
    if (leftIsLast != rightIsLast) return rightIsLast;
    const int compared = order->compare(left.orderLetter, right.orderLetter);
    return compared != 0 ? compared < 0 : left.orderLetter < right.orderLetter;
  });
  return sections;
}

void VendorQuery::completeOrderStrings(std::vector<Vendor>& vendors) {
  std::vector<Vendor*> incomplete;
  const auto order = TitleOrder::forLocale(root_->calendar().locale());
  for (auto& vendor : vendors) {
    if (!vendor.orderString().empty()) continue;
    const auto letter = pinyinFirstLetter(vendor.title);
    vendor.setOrderString(orderStringOf(letter.empty() ? order->letterOf(vendor.title) : letter));
    incomplete.push_back(&vendor);
  }
  Connection* db = root_->db().getDatabase();
  if (incomplete.empty() || db == nullptr) return;
  // The list is the same whether this can be kept or not, so it waits for nobody.
  const int patience = db->setPatience(0);
  Transaction transaction(*db);
  db->setPatience(patience);
  if (!transaction.began()) return;
  for (const Vendor* vendor : incomplete) {
    if (!root_->executeUpdate(
            "update category set orderString = ?, editDate=?, edit_ipid = ? where oldTitle=? and type = ?",
            vendor->orderString(), root_->editStamp(), root_->itsUDID(), vendor->pk, vendor->type)) {
      return;
    }
  }
  if (transaction.commit()) root_->markRecentEditDate();
}

}  // namespace moniva
