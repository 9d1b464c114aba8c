#include "model/spend_plan.h"

#include "model/entry_checks.h"
#include "model/group_balance.h"
#include "storage/writes.h"

namespace moniva {

Result<> checkPlain(const Spend& spend) {
  if (spend.type != kind::kIncome && spend.type != kind::kExpense) {
    return refuse("only an expense or income is divided into shares");
  }
  if (spend.bid != kItemRow) return refuse("a payment is not divided into shares");
  if (!spend.foreignCurrency.empty()) return refuse("what is divided into shares is kept in one currency");
  return {};
}

Result<> writeSeed(Spend& whole, int advancedType) {
  MVAppRoot& root = whole.root();
  if (whole.connectionUUID.empty()) whole.connectionUUID = root.newIdentifier();
  if (whole.isNewOne) {
    // A record that does not repeat has no end; that of the seed's range is written with the seed.
    const Date end = whole.repeatEndDate;
    if (auto added = whole.add(advancedType); !added) return added;
    whole.repeatEndDate = end;
  }
  whole.advancedType = advancedType;
  whole.type = kind::kInstallmentSeed;
  return write(
      root,
      "update transactions set type = ?, amount = ?, amount2 = ?, transferEID = ?, syear = ?, account = ?,"
      " payDate = ?, repeat_end_date = ?, ipid = '', editDate = ?, edit_ipid = ? where eid = ?",
      whole.type, whole.amount, whole.foreignAmount, whole.connectionUUID, advancedType, whole.account,
      whole.payDate, whole.repeatEndDate == Date{} ? Value("") : Value(whole.repeatEndDate), root.editStamp(),
      root.itsUDID(), whole.eid);
}

Result<> seedToItem(Spend& seed, int type, double amount, const std::string& account, int advancedType) {
  MVAppRoot& root = seed.root();
  seed.type = type;
  seed.amount = amount;
  seed.foreignAmount = 0;
  seed.account = account;
  seed.advancedType = advancedType;
  seed.repeatEndDate = Date{};
  seed.payDate = seed.datetime;
  if (advancedType == advanced::kPlain) seed.connectionUUID.clear();
  return write(
      root,
      "update transactions set type = ?, amount = ?, amount2 = 0, transferEID = ?, syear = ?, account = ?,"
      " payDate = ?, repeat_end_date = '', ipid = '', editDate = ?, edit_ipid = ? where eid = ?",
      type, amount, seed.connectionUUID, advancedType, account, seed.payDate, root.editStamp(),
      root.itsUDID(), seed.eid);
}

Result<> writeParts(std::vector<Spend>& parts, int advancedType, EntryUpkeep& upkeep) {
  for (auto& part : parts) {
    if (auto added = part.add(advancedType); !added) return added;
    upkeep.noteUses(part, 1);
  }
  return {};
}

Result<> removeParts(MVAppRoot& root, const std::vector<TransactionItem>& parts, std::string_view reason) {
  for (const auto& part : parts) {
    if (part.isDeleted != 0) continue;
    if (auto removed = removeRow(root, part.eid, reason); !removed) return removed;
  }
  return {};
}

}  // namespace moniva
