#include <boost/json.hpp>

#include "model/photos.h"
#include "ui/cli/command_error.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/records.h"

namespace moniva {
namespace {

namespace json = boost::json;

/// The key and the title of what a record refers to; null for none.
template <class Row>
json::value keyAndTitle(const std::shared_ptr<const Row>& row, const std::string& key) {
  if (key.empty()) return nullptr;
  json::object object{{"pk", key}};
  if (row) object["title"] = row->title;
  return object;
}

}  // namespace

json::object jsonOf(Session& session, RecordNames& names, const TransactionItem& row) {
  const std::optional<Date> due =
      row.payDate == Date{} && row.datetime != Date{} ? std::nullopt : std::optional(row.payDate);
  json::object object{{"eid", row.eid},
                      {"bid", row.bid},
                      {"type", row.type},
                      {"amount", row.amount},
                      {"datetime", isoDate(session, row.datetime)},
                      {"timeZone", row.timeZone},
                      {"note", row.note},
                      {"account", keyAndTitle(names.holder(row.account), row.account)},
                      {"book", keyAndTitle(names.holder(row.book), row.book)},
                      {"category", keyAndTitle(names.category(row.category, row.type), row.category)},
                      {"paid", row.paid},
                      {"payDate", isoDate(session, due)},
                      {"connectionUUID", row.connectionUUID},
                      {"advancedType", row.advancedType},
                      {"isDeleted", row.isDeleted}};
  if (row.isPayment()) {
    object["serviceFeeAmount"] = row.amount2;
    object["repeatSeed"] = row.repeatSeed;
    return object;
  }
  object["foreignCurrency"] = row.foreignCurrency;
  object["foreignAmount"] = row.amount2;
  object["subcategory"] = keyAndTitle(names.category(row.subcategory, row.type), row.subcategory);
  object["vendor"] =
      row.vendor.empty() ? json::value() : keyAndTitle(names.vendor(row.vendor, row.type), row.vendor);
  object["needReimburse"] = row.needReimburse;
  return object;
}

json::object jsonOf(Session& session, RecordNames& names, const RecordWhole& whole) {
  MVAppRoot& root = session.root();
  const auto spend = Spend::spendFromEID(root, whole.head.eid);
  if (!spend) throw refused("there is no record '{}'", whole.head.eid);
  json::object object = jsonOf(session, *spend);
  object["currency"] = whole.currency(names);
  object["isDeleted"] = spend->isDeleted;
  object["images"] = json::value_from(done(getImagesForTransID(root, spend->eid)));
  if (!whole.isCompound()) return object;
  if (whole.isSpread() || whole.isPlan()) {
    object["repeatEndDate"] =
        spend->repeatEndDate == Date{} ? json::value() : isoDate(session, spend->repeatEndDate);
  }
  const auto rows = [&](const std::vector<TransactionItem>& list) {
    json::array array;
    for (const auto& row : list) array.push_back(jsonOf(session, names, row));
    return array;
  };
  object["items"] = rows(whole.group.items);
  object["payments"] = rows(whole.group.payments);
  return object;
}

}  // namespace moniva
