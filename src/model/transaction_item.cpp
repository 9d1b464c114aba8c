#include "model/transaction_item.h"

#include <fmt/format.h>

#include <boost/json.hpp>

#include "model/entry_checks.h"

namespace moniva {
namespace {

constexpr std::string_view kItemColumns =
    "select eid, bid, type, amount, amount2, currency2, note, account, book, category, subcategory, vendor,"
    " datetime, barcode, payDate, paid, syear, transferEID, repeat_seed, sweek, ipid, deleted,"
    " needReimburse from transactions";

/// The key under which a refund names its item.
constexpr std::string_view kRefundOf = "refundOf";

TransactionItem itemOfRow(const Run& run) {
  TransactionItem item;
  item.eid = run.text(0);
  item.bid = static_cast<int>(run.integer(1));
  item.type = static_cast<int>(run.integer(2));
  item.amount = run.real(3);
  item.amount2 = run.real(4);
  item.foreignCurrency = run.text(5);
  item.note = run.text(6);
  item.account = run.text(7);
  item.book = run.text(8);
  item.category = run.text(9);
  item.subcategory = run.text(10) == kNoCategory ? std::string_view() : run.text(10);
  item.vendor = run.text(11);
  item.datetime = run.date(12);
  item.timeZone = run.text(13);
  item.payDate = run.date(14);
  item.paid = run.integer(15) != 0;
  item.advancedType = static_cast<int>(run.integer(16));
  item.connectionUUID = run.text(17);
  item.repeatSeed = run.text(18);
  item.json = run.text(19) == "0" ? std::string_view() : run.text(19);
  item.ipid = run.text(20);
  item.isDeleted = static_cast<int>(run.integer(21));
  item.needReimburse = run.integer(22) != 0;
  return item;
}

}  // namespace

std::optional<TransactionItem> TransactionItem::fromEID(MVAppRoot& root, std::string_view eid) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return std::nullopt;
  static const std::string sql = fmt::format("{} where eid = ?", kItemColumns);
  Run run = db->query(sql, {eid});
  if (!run.next()) return std::nullopt;
  return itemOfRow(run);
}

std::string TransactionItem::refundOf() const {
  boost::system::error_code failure;
  const auto value = boost::json::parse(json, failure);
  if (failure || !value.is_object() || !isRefund()) return {};
  const auto* item = value.as_object().if_contains(kRefundOf);
  return item != nullptr && item->is_string() ? std::string(item->as_string()) : std::string();
}

std::string jsonOfRefund(std::string_view itemEid) {
  return boost::json::serialize(boost::json::object{{kRefundOf, itemEid}});
}

Result<std::vector<TransactionItem>> itemsWhere(MVAppRoot& root, std::string_view condition,
                                                std::initializer_list<Value> arguments) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::vector<TransactionItem> items;
  Run run = db->query(fmt::format("{} where {}", kItemColumns, condition), arguments);
  while (run.next()) items.push_back(itemOfRow(run));
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return items;
}

Result<std::string> itemOfGroup(MVAppRoot& root, std::string_view uuid) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  if (uuid.empty()) return std::string();
  Run run = db->query(
      "select eid from transactions where (type = 11 or type = 12) and transferEID = ? and bid = 20"
      " order by deleted, datetime limit 1",
      {uuid});
  std::string eid(run.next() ? run.text(0) : std::string_view());
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return eid;
}

double sumOf(const std::vector<TransactionItem>& rows) {
  double sum = 0;
  for (const auto& row : rows) sum += row.amount;
  return withoutNoise(sum);
}

Result<TransactionGroup> TransactionGroup::of(MVAppRoot& root, std::string_view uuid, bool withDeleted) {
  TransactionGroup group;
  if (uuid.empty()) return group;
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  static const std::string sql =
      fmt::format("{} where transferEID = ? and deleted < ? and type in (11, 12, 86) order by datetime, eid",
                  kItemColumns);
  Run run = db->query(sql, {uuid, withDeleted ? 2 : 1});
  while (run.next()) {
    TransactionItem item = itemOfRow(run);
    if (item.isSeed()) {
      group.seed = std::move(item);
    } else {
      (item.isPayment() ? group.payments : group.items).push_back(std::move(item));
    }
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return group;
}

}  // namespace moniva
