#include "app/do_db_updater.h"

#include <sqlite3.h>

#include <algorithm>
#include <utility>

#include "app/run_once.h"
#include "platform/files.h"
#include "storage/store_files.h"
#include "storage/writes.h"

namespace moniva {
namespace {

namespace fs = std::filesystem;

/// The copy of the store from before an upgrade. While the program is at it the copy lies under the name that
/// the next launch puts in the store's place.
class CopyBefore {
 public:
  static Result<CopyBefore> make(MVAppRoot& root, Connection& db) {
    const auto& documents = root.platform().directories.documents;
    // Elsewhere the next launch would put it in the place of another store.
    if (root.db().databasePath() != root.db().defaultPath()) {
      return refuse("only the store of the data folder '{}' is brought up to date", documents.string());
    }
    const fs::path path = documents / "backupBeforeUpdate.dat";
    if (isPresent(path)) {
      return refuse("'{}' waits to take the place of the data file at the next start", path.string());
    }
    if (auto copied = copyStore(db, path); !copied) return tl::make_unexpected(copied.error());
    return CopyBefore(root, path);
  }
  CopyBefore(CopyBefore&& other) noexcept
      : root_(other.root_), path_(std::exchange(other.path_, fs::path())) {}
  CopyBefore& operator=(CopyBefore&&) = delete;
  CopyBefore(const CopyBefore&) = delete;
  CopyBefore& operator=(const CopyBefore&) = delete;
  ~CopyBefore() { keep(); }

  /// Keeps it under a dated name; answers which, or none where it had to go instead.
  fs::path keep() {
    if (path_.empty()) return {};
    const fs::path kept = setAsideName(path_.parent_path() / "moniva-before-upgrade.dat", root_.now());
    if (renameInto(path_, kept)) {
      path_.clear();
      return kept;
    }
    remove();
    return {};
  }
  void remove() {
    std::error_code error;
    fs::remove(path_, error);
    if (error) {
      root_.addNotice(
          "The copy '{}' of the store from before its upgrade cannot be removed ({}). Remove it before the "
          "next start, which would put it in the place of the data file.",
          path_.string(), error.message());
    }
    path_.clear();
  }

 private:
  CopyBefore(MVAppRoot& root, fs::path path) : root_(root), path_(std::move(path)) {}

  MVAppRoot& root_;
  fs::path path_;
};

}  // namespace

const std::vector<UpgradeStep>& upgradeSteps() {
  static const std::vector<UpgradeStep> steps = {
      {.code = 0,
       .name = "updateCategoryPK",
       .purpose = toTranslate("gives categories and vendors lasting keys and clears up doubles"),
       .key = "updateCategoryPK",
       .run = updateCategoryPK},
      {.code = 1,
       .name = "updateRepeatSeedTransaction",
       .purpose = toTranslate("makes a series of each record that repeats"),
       .key = "updateRepeatSeedTransaction",
       .run = updateRepeatSeedTransaction},
      {.code = 2,
       .name = "clearWrongRecurringItem2",
       .purpose = toTranslate("removes stray pending records of series"),
       .key = "clearWrongRecurringItem2",
       .run = clearWrongRecurringItem2},
      {.code = 3,
       .name = "updateNOCategoryTitle",
       .purpose = toTranslate("puts the category of records without a book in its place"),
       .key = "updateNOCategoryTitle",
       .run = updateNOCategoryTitle},
      {.code = 7,
       .name = "updateDataFiled202102",
       .purpose = toTranslate("brings settings and fields of older records into today's form"),
       .key = "updateDataFiled202102",
       .run = updateDataFiled202102},
      {.code = 8,
       .name = "fixWrongDeletedByClearDuplicateRecurringItem20210209",
       .purpose = toTranslate("brings back records that a clean-up of doubles removed by mistake"),
       .key = "fixWrongDeletedByClearDuplicateRecurringItem20210209",
       .run = fixWrongDeletedByClearDuplicateRecurringItem20210209},
      {.code = 9,
       .name = "updateDataFiled20210305",
       .purpose = toTranslate("makes memberships of the lists that groups of books and accounts had"),
       .key = "updateDataFiled20210305",
       .run = updateDataFiled20210305},
      {.code = 10,
       .name = "clearDuplicateAccountWithSamePK",
       .purpose = toTranslate("leaves one of several books or accounts that share a key"),
       .key = "clearDuplicateAccountWithSamePK",
       .run = clearDuplicateAccountWithSamePK},
      {.code = 11,
       .name = "fixWrongDeletedByClearRecurringItem20210412",
       .purpose = toTranslate("brings back records of series that a repair removed by mistake"),
       .key = "fixWrongDeletedByClearRecurringItem20210412",
       .run = fixWrongDeletedByClearRecurringItem20210412},
      {.code = 14,
       .name = "fixWrongDeletedByClearRecurringItem20220719",
       .purpose = toTranslate("brings back records of series that a later repair removed by mistake"),
       .key = "fixWrongDeletedByClearRecurringItem20220719",
       .run = fixWrongDeletedByClearRecurringItem20220719},
      {.code = 5,
       .name = "updateStringTypeDateField",
       .purpose = toTranslate("rebuilds the tables with dates as numbers"),
       .key = "updateStringTypeDateField",
       .byRequest = true,
       .run = updateStringTypeDateField,
       .isUrgent = lacksColumns},
      {.code = 6,
       .name = "updateFixData",
       .purpose = toTranslate("fills fields of records that have nothing in them"),
       .key = "crashNeedFix",
       .byRequest = true,
       .run = updateFixData},
      {.code = 13,
       .name = "fixAllRepeat",
       .purpose = toTranslate("repairs the records of all series"),
       .key = "fixAllRepeat",
       .byRequest = true,
       .run = fixAllRepeat,
       .inTransactionsOfItsOwn = true},
  };
  return steps;
}

Result<std::vector<const UpgradeStep*>> DoDBUpdater::stepsDue() {
  std::vector<const UpgradeStep*> due;
  Connection* db = root_.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  // What lacks a column may be the table of flags itself; every step is due then.
  const bool anyUrgent = std::ranges::any_of(steps_, [&](const auto& step) { return isUrgent(step); });
  for (const UpgradeStep& step : steps_) {
    bool isDue = step.byRequest && root_.platform().userDefaults->objectForKey(step.key).has_value();
    if (!step.byRequest) {
      const auto set = hasRun(*db, step.key);
      if (!set && !anyUrgent) return tl::make_unexpected(set.error());
      isDue = !set || !*set;
    }
    if (anyUrgent && isUrgent(step)) {
      due.insert(due.begin(), &step);
    } else if (isDue) {
      due.push_back(&step);
    }
  }
  return due;
}

std::vector<std::string> DoDBUpdater::needUpdateDB() {
  std::vector<std::string> codes;
  if (const auto due = stepsDue()) {
    for (const UpgradeStep* step : *due) codes.push_back(std::to_string(step->code));
  }
  return codes;
}

Result<bool> DoDBUpdater::hasWork() {
  const auto due = stepsDue();
  if (!due) return tl::make_unexpected(due.error());
  return !due->empty() || needsFixDataForMoniva1(root_);
}

Result<std::int64_t> DoDBUpdater::runStep(const UpgradeStep& step) {
  const auto work = [&](Connection& db) -> Result<std::int64_t> {
    const auto before = db.totalChanges();
    if (auto done = step.run(root_); !done) return tl::make_unexpected(done.error());
    const auto written = db.totalChanges() - before;
    if (step.byRequest) return written;
    if (auto set = setHasRun(root_, step.key); !set) return tl::make_unexpected(set.error());
    return written;
  };
  auto written = step.inTransactionsOfItsOwn ? work(*root_.db().getDatabase()) : atomically(root_, work);
  if (written && step.byRequest) root_.platform().userDefaults->removeObjectForKey(step.key);
  return written;
}

Result<> DoDBUpdater::runAlone(UpgradeOutcome& outcome) {
  // Another program may have been faster.
  if (const auto work = hasWork(); !work || !*work) {
    return work ? Result<>() : tl::make_unexpected(work.error());
  }
  Connection& db = *root_.db().getDatabase();
  auto copy = CopyBefore::make(root_, db);
  if (!copy) return tl::make_unexpected(copy.error());
  std::optional<Refusal> inUse;
  const auto noted = [&](std::string_view name, const Result<std::int64_t>& written) {
    if (written) {
      outcome.changed += *written;
    } else {
      outcome.failed.push_back({name, written.error()});
      const int why = db.lastErrorCode() & 0xFF;
      if (why == SQLITE_BUSY || why == SQLITE_LOCKED) inUse = written.error();
    }
    root_.platform().log.line(
        fmt::format("== DoDBUpdater {}: {}", name,
                    written ? fmt::format("{} rows written", *written) : "undone, " + written.error().why));
    return written.has_value();
  };
  bool isKept = false;
  const auto isDone = [&](const UpgradeStep& step) {
    // Whoever keeps one step waiting would keep each of the others.
    if (inUse) return false;
    db.clearError();
    const auto commits = db.commits();
    if (!noted(step.name, runStep(step))) {
      isKept = isKept || db.commits() != commits;
      return false;
    }
    outcome.run.push_back(step.code);
    return true;
  };
  bool goesOn = true;
  for (const UpgradeStep& step : steps_) {
    if (goesOn && isUrgent(step)) goesOn = isDone(step);
  }
  if (goesOn && needsFixDataForMoniva1(root_)) {
    const auto before = db.totalChanges();
    db.clearError();
    const auto done = fixDataForMoniva1IfNeed(root_);
    // The steps take it for granted that records have their books.
    goesOn = outcome.converted =
        noted("fixDataForMoniva1", done.map([&] { return db.totalChanges() - before; }));
  }
  const auto due = goesOn ? stepsDue() : std::vector<const UpgradeStep*>();
  if (!due) return tl::make_unexpected(due.error());
  for (const UpgradeStep* step : *due) isDone(*step);
  // A step that was undone whole needs no copy, and one that fails day by day would leave one each day.
  if (outcome.changed > 0 || isKept) {
    outcome.copy = copy->keep();
  } else {
    copy->remove();
    if (inUse) return tl::make_unexpected(*inUse);
  }
  if (!inUse && !root_.db().missingIndexes().empty()) root_.db().addIndexes();
  return {};
}

Result<UpgradeOutcome> DoDBUpdater::run() {
  UpgradeOutcome outcome;
  if (const auto& why = root_.db().readOnlyReason()) return tl::make_unexpected(*why);
  if (const auto work = hasWork(); !work || !*work) {
    return work ? Result<UpgradeOutcome>(outcome) : tl::make_unexpected(work.error());
  }
  auto done = root_.alone([&] { return runAlone(outcome); });
  if (!done) return tl::make_unexpected(done.error());
  return outcome;
}

void DoDBUpdater::updateDatabaseIfNeed(std::function<void(std::string_view)> showProgress,
                                       std::function<void(const Result<UpgradeOutcome>&)> complete) {
  root_.platform().backgroundQueue.dispatch(
      [self = *this, showProgress = std::move(showProgress), complete = std::move(complete)]() mutable {
        Platform& platform = self.root_.platform();
        Result<UpgradeOutcome> outcome = refuse("the store is not open");
        self.root_.db().inDatabase("DoDBUpdater", [&](Connection&) {
          if (const auto work = self.hasWork(); work && *work && showProgress) {
            platform.mainQueue.dispatch([title = platform.localized(toTranslate("updateData")),
                                         show = std::move(showProgress)] { show(title); });
          }
          outcome = self.run();
        });
        platform.mainQueue.dispatch(
            [complete = std::move(complete), outcome = std::move(outcome)] { complete(outcome); });
      });
}

void tellUpgrade(MVAppRoot& root, const Result<UpgradeOutcome>& outcome) {
  if (!outcome) {
    root.addNotice("The store is not brought up to date yet: {}. It is tried again at the next start.",
                   outcome.error());
    return;
  }
  for (const auto& [name, why] : outcome->failed) {
    root.addNotice(
        "The upgrade step '{}' was undone: {}. It is tried again on the next day the program is used, and "
        "by: "
        "moniva upgrade",
        name, why);
  }
  if (!outcome->copy.empty() && outcome->run.empty() && !outcome->converted) {
    root.addNotice("How the store was before is kept as '{}'.", outcome->copy.filename().string());
  } else if (!outcome->copy.empty()) {
    root.addNotice("The store was brought up to date; how it was before is kept as '{}'.",
                   outcome->copy.filename().string());
  }
}

}  // namespace moniva
