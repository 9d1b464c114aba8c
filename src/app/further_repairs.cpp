#include "app/further_repairs.h"

#include "app/do_db_updater.h"
#include "app/run_once.h"
#include "model/moniva_account.h"

namespace moniva {
namespace {

/// The members of each group there is.
Result<> mendGroupMembers(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::vector<std::string> groups;
  {
    Run run = db->query("select oldTitle from account where isGroup = 1 and deleted = 0 and oldTitle != ''");
    while (run.next()) groups.emplace_back(run.text(0));
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  for (const auto& key : groups) {
    if (auto mended = fixedGroupbMember(root, key); !mended) return mended;
  }
  return {};
}

Result<std::int64_t> rowsOf(MVAppRoot& root, Connection& db, const FurtherRepair& repair) {
  const auto isSet = [&] { return repair.flag.empty() ? Result<bool>(false) : hasRun(db, repair.flag); };
  const auto hadRun = isSet();
  const auto before = db.totalChanges();
  if (auto done = repair.run(root); !done) return tl::make_unexpected(done.error());
  const auto hasNow = isSet();
  if (!hadRun || !hasNow) return tl::make_unexpected((hadRun ? hasNow : hadRun).error());
  return db.totalChanges() - before - (*hasNow && !*hadRun ? 1 : 0);
}

}  // namespace

const std::vector<FurtherRepair>& furtherRepairs() {
  static const std::vector<FurtherRepair> repairs = {
      {"importDataTemp", toTranslate("takes back records that an interrupted rebuild left"), "",
       importDataTemp},
      {"updateDataFiled2", toTranslate("fills fields of very old records"), "updateDataFiled2",
       updateDataFiled2},
      {"updateInstallment", toTranslate("completes instalment plans of older kinds"), "", updateInstallment},
      {"updateExpenseCostItemType20240928", toTranslate("makes expenses of the shares of older spread costs"),
       "", updateExpenseCostItemType20240928},
      {"fixWrongBookAfterEditTransCartBook20210903",
       toTranslate("puts items of carts into the book of the others"),
       "fixWrongBookAfterEditTransCartBook20210903", fixWrongBookAfterEditTransCartBook20210903},
      {"restoreWrongDeletedTransferIfNeed", toTranslate("brings back the lost side of transfers"),
       "updateWrongDeletedTransfer23", restoreWrongDeletedTransferIfNeed},
      {"fixedMissingTransferAccount", toTranslate("completes transfers that lost an account"), "",
       fixedMissingTransferAccount},
      {"fixVendorTypeNotSameAsTransType", toTranslate("puts vendors on the side their records are on"), "",
       fixVendorTypeNotSameAsTransType},
      {"needRestoreDeletedVendor", toTranslate("brings back vendors that records name"), "",
       needRestoreDeletedVendor},
      {"updateDebter", toTranslate("tidies the persons of older debts"), "updateDebter", updateDebter},
      {"updateAccountGroupMemberIfNeed",
       toTranslate("puts the members of groups among the books or the accounts"), "updateAccountGroupMember2",
       updateAccountGroupMemberIfNeed},
      {"fixedGroupbMember", toTranslate("makes one membership of several"), "", mendGroupMembers},
      {"updateAccountOrder", toTranslate("gives books and accounts an order of their own"),
       "updateAccountOrder", updateAccountOrder},
  };
  return repairs;
}

Result<std::vector<FurtherRepairOutcome>> runFurtherRepairs(MVAppRoot& root, Repair repair) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::vector<FurtherRepairOutcome> outcomes;
  {
    Transaction transaction(*db);
    if (!transaction.began()) return tl::make_unexpected(db->refusal());
    for (const auto& one : furtherRepairs()) {
      const auto rows = rowsOf(root, *db, one);
      if (!rows) return tl::make_unexpected(rows.error());
      if (*rows > 0) outcomes.push_back({&one, *rows});
    }
    if (repair == Repair::mend && !transaction.commit()) return tl::make_unexpected(db->refusal());
  }
  // The current book keeps figures in memory too, where no transaction takes them back.
  if (!outcomes.empty()) refreshUsingMonivaAccount(root);
  return outcomes;
}

}  // namespace moniva
