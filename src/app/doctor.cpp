#include "app/doctor.h"

#include <array>

#include "app/do_db_updater.h"
#include "app/further_repairs.h"
#include "app/run_once.h"
#include "currency/currency_manager.h"
#include "model/account_balance.h"
#include "model/entry_checks.h"
#include "model/photos.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// A query that counts rows that should not be, and what is told of one such row and of several.
struct Count {
  std::string_view check;
  std::string_view sql;
  std::string_view one;
  std::string_view several;
};

constexpr std::array kCounts = {
    Count{toTranslate("amounts"),
          "select count(*) from transactions where typeof(amount) not in ('real', 'integer') or"
          " (amount < 0 and type not in (50, 63) and not (type in (11, 12) and bid = '10')) or abs(amount) > "
          "1e15",
          toTranslate("{} transaction whose amount is no number, negative or beyond all measure"),
          toTranslate("{} transactions whose amount is no number, negative or beyond all measure")},
    Count{toTranslate("dates"),
          "select count(*) from transactions where typeof(datetime) not in ('real', 'integer') and type < 50",
          toTranslate("{} transaction whose date is a text or missing"),
          toTranslate("{} transactions whose date is a text or missing")},
    Count{toTranslate("books"),
          "select count(*) from transactions where deleted = 0 and book != '' and book not in"
          " (select oldTitle from account where kind = 2 and isGroup = 0)",
          toTranslate("{} transaction of a book that does not exist"),
          toTranslate("{} transactions of a book that does not exist")},
    Count{toTranslate("accounts"),
          "select count(*) from transactions where deleted = 0 and account != '' and account not in"
          " (select oldTitle from account where kind = 1 and isGroup = 0)",
          toTranslate("{} transaction of an account that does not exist"),
          toTranslate("{} transactions of an account that does not exist")},
    Count{toTranslate("categories"),
          "select count(*) from transactions where deleted = 0 and category != '' and"
          " category != '#NOMVCATEGORY' and category not in (select oldTitle from category)",
          toTranslate("{} transaction of a category that does not exist"),
          toTranslate("{} transactions of a category that does not exist")},
    Count{toTranslate("vendors"),
          "select count(*) from transactions where deleted = 0 and vendor != '' and type in (11, 12) and"
          " vendor not in ('NoVendor', 'NoPayee', 'NoPayer') and"
          // Older debts name a person there.
          " book not in ('BorrowBook', 'DebtBook', 'LendBook') and vendor not in"
          " (select oldTitle from category where type in (6, 9))",
          toTranslate("{} transaction of a vendor that does not exist"),
          toTranslate("{} transactions of a vendor that does not exist")},
    Count{toTranslate("transfers"),
          "select count(*) from transactions as side where side.deleted = 0 and side.type in (23, 33) and"
          " not exists (select 1 from transactions as other where other.transferEID = side.transferEID"
          " and (other.deleted = 0 or other.ipid like 'delete by clear %') and other.type = 56 - side.type)",
          toTranslate("{} transfer of which only one side is there"),
          toTranslate("{} transfers of which only one side is there")},
    Count{toTranslate("debts"),
          "select count(*) from transactions as debt where deleted = 0 and type in (24, 34) and"
          " (coalesce(needReimburse, 0) != 0) != (amount - (select coalesce(sum(amount), 0) from transactions"
          " where transferEID = debt.eid and deleted = 0) < max(5e-7, amount * 2e-15))",
          toTranslate("{} debt whose settled flag is not what its repayments say"),
          toTranslate("{} debts whose settled flag is not what their repayments say")},
    Count{
        toTranslate("payments"),
        "select count(*) from (select 1 from transactions where transferEID != '' and deleted = 0 and type in"
        " (11, 12) group by transferEID having abs(sum(case when bid = '10' then -amount else amount end)) >"
        " 0.000001)",
        toTranslate("{} record whose payments do not come to its items"),
        toTranslate("{} records whose payments do not come to their items")},
    Count{toTranslate("rules of series"),
          "select count(*) from transactions where type = 85 and deleted = 0 and (not datetime > 31536000 or"
          " typeof(datetime) not in ('real', 'integer') or repeat not in ('Daily', 'Weekly', 'Biweekly',"
          " 'Monthly', 'Bimonthly', 'Quarterly', 'Half-yearly', 'Yearly'))",
          toTranslate("{} series that has no next date or no valid rule, and makes nothing"),
          toTranslate("{} series that have no next date or no valid rule, and make nothing")},
    Count{toTranslate("records of series"),
          "select count(*) from transactions where repeat_seed > '' and deleted = 0 and repeat_seed not in"
          " (select eid from transactions where type = 85 and (deleted != 3 or ipid like 'stopRepeat%' or"
          " ipid like 'delete by clear %'))",
          toTranslate("{} record of a series that does not exist or was deleted"),
          toTranslate("{} records of series that do not exist or were deleted")},
    Count{toTranslate("keys of books and accounts"),
          "select count(*) from (select oldTitle from account group by oldTitle having count(*) > 1)",
          toTranslate("{} key that two books or accounts share"),
          toTranslate("{} keys that two books or accounts share")},
    Count{toTranslate("keys of categories"),
          "select count(*) from (select oldTitle from category where oldTitle != '' group by oldTitle having"
          " count(*) > 1)",
          toTranslate("{} key that two categories or vendors share"),
          toTranslate("{} keys that two categories or vendors share")},
    Count{toTranslate("keys of vendors"),
          "select count(*) from category where type in (6, 9) and coalesce(oldTitle, '') = ''",
          toTranslate("{} vendor without a key"), toTranslate("{} vendors without a key")},
};

constexpr Count kSettings{toTranslate("settings"),
                          "select count(*) from (select key from monivaSys group by key having count(*) > 1)",
                          toTranslate("{} setting with more than one value (the newest counts)"),
                          toTranslate("{} settings with more than one value (the newest counts)")};

DoctorFinding counted(Connection& db, const Count& count) {
  const Phrase check(count.check, std::string(count.check));
  Run run = db.query(count.sql);
  if (!run.next()) return {check, false, Phrase::quoted(db.lastErrorMessage())};
  const auto number = run.integer(0);
  const std::string_view form = number == 1 ? count.one : count.several;
  return {check, number == 0,
          number == 0 ? Phrase("") : Phrase(form, fmt::format(fmt::runtime(form), number), {number})};
}

/// Settings of the store, and of those of the device what can be damaged without a word.
DoctorFinding examineSettings(MVAppRoot& root, Connection& db) {
  DoctorFinding finding = counted(db, kSettings);
  const auto rates = CurrencyManager::keptRates(*root.platform().userDefaults);
  if (rates) return finding;
  const Phrase damage = phrase(
      "the exchange rates kept are not used: {}; fetch others with: moniva rate refresh", rates.error());
  return {finding.check, false, finding.well ? damage : phrase("{}; {}", finding.found, damage)};
}

/// Photos in use without a file, and files that no photo in use names, which do no harm.
void examinePhotos(MVAppRoot& root, Connection& db, std::vector<DoctorFinding>& findings) {
  std::int64_t missing = 0;
  Run run = db.query("select distinct photoFull from photos where deleted = 0 and photoFull != ''");
  while (run.next()) missing += placeOfImage(root, std::string(run.text(0))) ? 0 : 1;
  findings.push_back({phrase("photos"), missing == 0 && run.ok(),
                      !run.ok()      ? Phrase::quoted(db.lastErrorMessage())
                      : missing == 0 ? Phrase("")
                      : missing == 1 ? phrase("{} photo whose file is missing", missing)
                                     : phrase("{} photos whose files are missing", missing)});
  const auto unused = unusedImageFiles(root);
  const std::size_t files = unused ? unused->size() : 0;
  findings.push_back({phrase("files of photos"), unused.has_value(),
                      !unused      ? *unused.error().phrase
                      : files == 0 ? Phrase("")
                      : files == 1 ? phrase("{} file that no record uses, which does no harm", files)
                                   : phrase("{} files that no record uses, which do no harm", files)});
}

/// Kept balances of accounts that are not what their records come to.
DoctorFinding examineBalances(MVAppRoot& root) {
  const auto sums = sumsOfAllAccounts(root);
  if (!sums) return {phrase("balances"), false, *sums.error().phrase};
  std::size_t wrong = 0;
  for (const auto& account : MonivaAccount::list(root, kAccountKind)) {
    const auto sum = sums->find(account.pk);
    const double counted = account.beginBalance + (sum == sums->end() ? 0 : sum->second);
    if (difference(account.totalBalance, counted) != 0) ++wrong;
  }
  return {phrase("balances"), wrong == 0,
          wrong == 0 ? Phrase("")
          : wrong == 1
              ? phrase("{} account whose kept balance is not what its records come to; count it with: "
                       "moniva account recount --all",
                       wrong)
              : phrase("{} accounts whose kept balances are not what their records come to; count them "
                       "with: moniva account recount --all",
                       wrong)};
}

}  // namespace

std::vector<DoctorFinding> examineStore(MVAppRoot& root) {
  std::vector<DoctorFinding> findings;
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return {{phrase("store"), false, phrase("the store is not open")}};
  const ReadTransaction snapshot(*db);
  {
    std::string wrong;
    Run run = db->query("PRAGMA integrity_check(20)");
    while (run.next()) {
      if (run.text(0) == "ok") continue;
      if (!wrong.empty()) wrong += "; ";
      wrong += run.text(0);
    }
    if (!run.ok()) wrong = db->lastErrorMessage();
    findings.push_back({phrase("file"), wrong.empty(), Phrase::quoted(wrong)});
  }
  {
    const auto steps = DoDBUpdater(root).stepsDue();
    const auto due = steps ? steps->size() : 0;
    findings.push_back({phrase("upgrades"), steps && due == 0,
                        !steps     ? *steps.error().phrase
                        : due == 0 ? Phrase("")
                        : due == 1
                            ? phrase("{} step is still to be done; see: moniva upgrade --dry-run", due)
                            : phrase("{} steps are still to be done; see: moniva upgrade --dry-run", due)});
  }
  {
    // Not to have looked is no damage.
    const auto due = std::ranges::count_if(furtherRepairs(), [&](const FurtherRepair& repair) {
      return !repair.flag.empty() && !hasRun(*db, repair.flag).value_or(true);
    });
    findings.push_back(
        {phrase("repairs"), true,
         due == 0   ? Phrase("")
         : due == 1 ? phrase("{} repair has not been looked at yet; see: moniva repair --dry-run", due)
                    : phrase("{} repairs have not been looked at yet; see: moniva repair --dry-run", due)});
  }
  for (const Count& count : kCounts) findings.push_back(counted(*db, count));
  findings.push_back(examineSettings(root, *db));
  findings.push_back(examineBalances(root));
  examinePhotos(root, *db, findings);
  {
    const auto missing = root.db().missingIndexes().size();
    findings.push_back(
        {phrase("indexes"), missing == 0, missing == 0 ? Phrase("") : phrase("{} missing", missing)});
  }
  return findings;
}

}  // namespace moniva
