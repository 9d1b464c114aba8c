#include <map>

#include "model/group_balance.h"
#include "model/photos.h"
#include "model/spend.h"
#include "model/spend_change.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// Writes a row once more under another identifier, in another group and book.
Result<> copyRow(MVAppRoot& root, const TransactionItem& row, const std::string& eid, const std::string& uuid,
                 const std::string& book, const std::string& json) {
  return write(
      root,
      "insert into transactions (eid, bid, amount, amount2, type, note, currency2, repeat, repeat_end_date,"
      " category, subcategory, vendor, datetime, syear, account, transferEID, barcode, editDate, book, paid,"
      " needReimburse, edit_ipid, sweek, sday, payDate)"
      " select ?, bid, amount, amount2, type, note, currency2, ?, repeat_end_date, category, subcategory,"
      " vendor, datetime, syear, account, ?, barcode, ?, ?, paid, needReimburse, ?, ?, sday, payDate from"
      " transactions where eid = ?",
      eid, kNotRepeat, uuid, root.editStamp(), book, root.itsUDID(), json.empty() ? Value(0) : Value(json),
      row.eid);
}

}  // namespace

Result<std::string> Spend::copyToBook(const std::string& otherBook) {
  if (auto checked = checkBookKey(*root_, otherBook); !checked) return tl::make_unexpected(checked.error());
  return atomically(*root_, [&](Connection&) -> Result<std::string> {
    const auto row = liveRow(*root_, eid);
    if (!row) return tl::make_unexpected(row.error());
    const bool known = row->isSpend() || row->isSeed();
    if (!known || row->isPayment()) return refuse("only expenses and income are copied to another book");
    auto group = TransactionGroup::of(*root_, row->connectionUUID);
    if (!group) return tl::make_unexpected(group.error());
    if (row->connectionUUID.empty()) group->items.push_back(*row);
    auto rows = group->items;
    if (group->seed) rows.push_back(*group->seed);
    const std::string uuid = row->connectionUUID.empty() ? std::string() : root_->newIdentifier();
    std::map<std::string, std::string> copies;
    for (const auto& one : rows) copies[one.eid] = root_->newIdentifier();
    const std::string copied = copies.at(eid);
    return changeRecords(*root_, RecordScope{copied, uuid, {}}, [&](Connection&) -> Result<std::string> {
      EntryUpkeep upkeep(*root_);
      for (const auto& one : rows) {
        auto written = copyRow(*root_, one, copies.at(one.eid), uuid, otherBook, one.json);
        if (written) written = sharePhotos(*root_, one.eid, copies.at(one.eid));
        if (!written) return tl::make_unexpected(written.error());
        if (one.isSeed()) continue;
        Spend use(*root_);
        use.type = one.type;
        use.category = one.category;
        use.subcategory = one.subcategory;
        use.vendor = one.vendor;
        use.book = otherBook;
        upkeep.noteUses(use, 1);
      }
      for (const auto& payment : group->payments) {
        std::string json = payment.json;
        for (const auto& [from, to] : copies) {
          if (const auto at = json.find(from); at != std::string::npos) json.replace(at, from.size(), to);
        }
        auto written = copyRow(*root_, payment, root_->newIdentifier(), uuid, "", json);
        if (written) continue;
        root_->db().faultLog().line(
            fmt::format("==926 Spend:copytobook array:self.payments [Error:{}]\n", written.error().why));
      }
      if (!uuid.empty()) {
        if (auto settled = settlePayments(*root_, uuid, SolePayment::stays); !settled) {
          return tl::make_unexpected(settled.error());
        }
      }
      if (auto kept = upkeep.write(EntryUpkeep::Balances::byAmount); !kept)
        return tl::make_unexpected(kept.error());
      return copied;
    });
  });
}

Result<> Spend::moveToBook(const std::string& otherBook) {
  if (otherBook.empty()) return refuse("a record is moved into a book");
  if (otherBook == book) return refuse("the record is in that book already");
  return updateBook(otherBook);
}

}  // namespace moniva
