#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/phrase.h"
#include "base/result.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// One step that brings an older store to what this version knows, or mends what an earlier version damaged.
/// Steps are written so that on a store that has nothing of the kind they change nothing.
struct UpgradeStep {
  int code = 0;
  std::string_view name;
  /// What it does, for people; in English.
  std::string_view purpose;
  /// Key in `monivaSys` that is '1' once the step has run; or, for a step that a person asks for, the local
  /// setting that asks.
  std::string_view key;
  bool byRequest = false;
  /// A refusal undoes it.
  Result<> (*run)(MVAppRoot&) = nullptr;
  /// It begins transactions itself; all others run within one made for them.
  bool inTransactionsOfItsOwn = false;
  /// Whether the store is of no use without it. The step is due then and comes before all others.
  bool (*isUrgent)(MVAppRoot&) = nullptr;
};

/// All steps, in the order in which they run.
const std::vector<UpgradeStep>& upgradeSteps();

/// A step that was undone, by its name, and why.
struct UpgradeFailure {
  std::string_view name;
  Refusal why;
};

/// What an upgrade came to.
struct UpgradeOutcome {
  std::vector<int> run;                ///< codes of the steps that ran to their end
  std::vector<UpgradeFailure> failed;  ///< stay due
  bool converted = false;              ///< from the form of the first edition
  std::int64_t changed = 0;            ///< rows written besides the flags
  /// The copy of the store from before; empty where nothing was changed: steps that fail are undone, but for
  /// those in transactions of their own.
  std::filesystem::path copy;
};

/// Runs the steps that a store needs. Before the first of them a whole copy of the store is made under the
/// safety copy's name, so that a run cut short is taken back at the next launch; it has left that name by the
/// end. No other program has the store open meanwhile.
class DoDBUpdater {
 public:
  /// `steps` has to outlive it and what it has dispatched.
  explicit DoDBUpdater(MVAppRoot& root, const std::vector<UpgradeStep>& steps = upgradeSteps())
      : root_(root), steps_(steps) {}

  /// The codes of the steps still to run, in their order, as texts. None for a store that cannot be read.
  std::vector<std::string> needUpdateDB();
  /// The same as steps.
  Result<std::vector<const UpgradeStep*>> stepsDue();
  /// Runs them on the database queue and calls `complete` on the main queue. `showProgress` is called on the
  /// main queue with the title of a progress alert when there is anything to do. The main thread leaves the
  /// store alone until then.
  void updateDatabaseIfNeed(std::function<void(std::string_view)> showProgress,
                            std::function<void(const Result<UpgradeOutcome>&)> complete);
  /// The same at once, in the block of the database queue (or on the thread) it is called in. Refused, with
  /// nothing done, while another program has the store and where no copy of it can be made. Refused as well,
  /// for the next start, where a program of another kind keeps it from being written; had steps ended by then
  /// these stay, and the outcome tells.
  Result<UpgradeOutcome> run();

 private:
  bool isUrgent(const UpgradeStep& step) { return step.isUrgent != nullptr && step.isUrgent(root_); }
  Result<bool> hasWork();
  Result<> runAlone(UpgradeOutcome& outcome);
  /// Answers how many rows the step wrote.
  Result<std::int64_t> runStep(const UpgradeStep& step);

  MVAppRoot& root_;
  const std::vector<UpgradeStep>& steps_;
};

/// Tells the person what an upgrade came to; nothing where it had nothing to do.
void tellUpgrade(MVAppRoot& root, const Result<UpgradeOutcome>& outcome);

/// Rebuilds `account`, `category`, `photos`, `monivaSys` and `transactions` with the columns of today, dates
/// as numbers. Texts are read as they were written: "2015-03-04 12:30:00" in the user's zone, with a zone
/// ("+0000") in that one; blank ones become 0. What cannot be read stays what it is, and the person is told.
/// Columns that today's table has not are kept behind the others. Of records of one identifier the one in
/// use, edited last, stays; the log keeps the others. `categoryofbook` gets what it lacks.
Result<> updateStringTypeDateField(MVAppRoot& root);
/// Whether one of these tables, or `categoryofbook`, lacks a column of today. The form in which that table
/// knew categories by numbers is left to `updateCategoryPK` while that is due.
bool lacksColumns(MVAppRoot& root);

// The steps in the order of their codes; each answers a refusal when it has to be undone.
Result<> updateCategoryPK(MVAppRoot& root);                                      // 0
Result<> updateRepeatSeedTransaction(MVAppRoot& root);                           // 1
Result<> clearWrongRecurringItem2(MVAppRoot& root);                              // 2
Result<> updateNOCategoryTitle(MVAppRoot& root);                                 // 3
Result<> updateFixData(MVAppRoot& root);                                         // 6
Result<> updateDataFiled202102(MVAppRoot& root);                                 // 7
Result<> fixWrongDeletedByClearDuplicateRecurringItem20210209(MVAppRoot& root);  // 8
Result<> updateDataFiled20210305(MVAppRoot& root);                               // 9
Result<> clearDuplicateAccountWithSamePK(MVAppRoot& root);                       // 10
Result<> fixWrongDeletedByClearRecurringItem20210412(MVAppRoot& root);           // 11
Result<> fixAllRepeat(MVAppRoot& root);                                          // 13
Result<> fixWrongDeletedByClearRecurringItem20220719(MVAppRoot& root);           // 14
/// Not asked for by the runner: cost items of an older kind become what they are today.
Result<> updateExpenseCostItemType20240928(MVAppRoot& root);

// Further repairs, each once (its own flag in `monivaSys`) and called from where its damage shows.
Result<> fixedGroupbMember(MVAppRoot& root, const std::string& key);
Result<> fixVendorTypeNotSameAsTransType(MVAppRoot& root);
Result<> fixedMissingTransferAccount(MVAppRoot& root);
Result<> restoreWrongDeletedTransferIfNeed(MVAppRoot& root);
Result<> needRestoreDeletedVendor(MVAppRoot& root);
Result<> updateAccountGroupMemberIfNeed(MVAppRoot& root);
Result<> updateAccountOrder(MVAppRoot& root);
Result<> updateDebter(MVAppRoot& root);
Result<> updateDataFiled2(MVAppRoot& root);
Result<> updateInstallment(MVAppRoot& root);
Result<> fixWrongBookAfterEditTransCartBook20210903(MVAppRoot& root);
Result<> updateSettingCopyToLocal(MVAppRoot& root);
Result<> importDataTemp(MVAppRoot& root);

/// Whether the store is of the first edition: income and expenses without a book.
bool needsFixDataForMoniva1(MVAppRoot& root);
/// Converts a store of the first edition when it is one; a copy "moniva1Backup.dat" is kept beside it.
Result<> fixDataForMoniva1IfNeed(MVAppRoot& root);
Result<> fixDataForMoniva1(MVAppRoot& root);

}  // namespace moniva
