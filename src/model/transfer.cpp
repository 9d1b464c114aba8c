#include "model/transfer.h"

#include <algorithm>

#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "storage/transaction.h"

namespace moniva {

Transfer::Transfer(MVAppRoot& root) : datetime(root.now()), timeZone(root.calendar().zone()), root_(&root) {}

std::optional<Transfer> Transfer::transferFromUUID(MVAppRoot& root, std::string_view uuid) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr || uuid.empty()) return std::nullopt;
  Transfer transfer(root);
  transfer.connectUUID = uuid;
  for (const int side : {kind::kTransferOut, kind::kTransferIn}) {
    Run run = db->query(
        "select eid, amount, note, datetime, currency2, amount2, barcode, account, vendor, paid,"
        " deleted, repeat, repeat_seed from transactions where transferEID = ? and type = ? order by deleted",
        {uuid, side});
    if (!run.next()) return std::nullopt;
    transfer.isDeleted = std::max(transfer.isDeleted, static_cast<int>(run.integer(10)));
    if (side == kind::kTransferOut) {
      transfer.eidA = run.text(0);
      transfer.amountA = run.real(1);
      transfer.note = run.text(2);
      transfer.datetime = run.date(3);
      transfer.acrossCurrencies = run.real(5) > 0;
      transfer.timeZone = run.text(6);
      transfer.accountA = run.text(7);
      transfer.paid = run.integer(9) != 0;
      transfer.repeat = run.text(11);
      transfer.repeatSeed = run.text(12);
    } else {
      transfer.eidB = run.text(0);
      transfer.amountB = run.real(1);
      transfer.accountB = run.text(7);
    }
  }
  return transfer;
}

Result<std::int64_t> Transfer::countOf(MVAppRoot& root, std::string_view account) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select count(*) from transactions where account = ? and deleted = 0 and type in (23, 33)", {account});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return run.integer(0);
}

bool Transfer::addSide(int type, const std::string& eid, double amount, const std::string& account,
                       const std::string& other) {
  return root_->executeUpdate(
      "insert into transactions (amount, type, note, vendor, datetime, repeat, account, editDate, eid, "
      "repeat_end_date,"
      " paid, sday, repeat_seed, transferEID, barcode, bid, payDate, edit_ipid)"
      " values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?,10,?,?)",
      amount, type, note, other, datetime, repeat, account, root_->editStamp(), eid, "", paid,
      integerDateOfTimeZone(root_->calendar(), datetime, timeZone), repeatSeed, connectUUID, timeZone,
      datetime, root_->itsUDID());
}

Result<> Transfer::add() {
  if (accountA.empty() || accountB.empty()) return refuse("a transfer needs an account on each side");
  if (accountA == accountB) return refuse("a transfer needs two different accounts");
  for (const double amount : {amountA, amountB}) {
    if (auto checked = checkAmount(amount); !checked) return checked;
  }
  if (auto checked = checkRecordDate(root_->calendar(), datetime); !checked) return checked;
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  for (std::string* identifier : {&connectUUID, &eidA, &eidB}) {
    if (identifier->empty()) *identifier = root_->newIdentifier();
  }
  Transaction transaction(*db);
  bool written = transaction.began() && addSide(kind::kTransferOut, eidA, amountA, accountA, accountB) &&
                 addSide(kind::kTransferIn, eidB, amountB, accountB, accountA);
  if (written && acrossCurrencies) {
    // The row's insert has no slot for the other side's amount.
    constexpr std::string_view bothAmounts =
        "update transactions set editDate = ?, amount = ?, amount2=?, edit_ipid = ? where eid = ?";
    written =
        root_->executeUpdate(bothAmounts, root_->editStamp(), amountA, amountB, root_->itsUDID(), eidA) &&
        root_->executeUpdate(bothAmounts, root_->editStamp(), amountB, amountA, root_->itsUDID(), eidB);
  }
  if (!written || !transaction.commit()) return tl::make_unexpected(db->refusal());
  return {};
}

}  // namespace moniva
