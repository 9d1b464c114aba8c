#include "model/account_balance.h"

#include <cmath>
#include <functional>
#include <limits>
#include <set>

#include "calendar/date_texts.h"
#include "model/account_groups.h"
#include "model/entry_checks.h"
#include "model/transaction_type.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// The sums a balance is made of, as the columns of a query over `transactions`; `readSums` takes them in
/// order. One pass over the rows of an account, whatever it tracks.
constexpr std::string_view kSums =
    "sum(case when type = 11 then amount end), sum(case when type > 21 and type < 29 and type != 23 then "
    "amount end),"
    " sum(case when type = 23 then amount end), sum(case when type = 12 then amount end),"
    " sum(case when type > 31 and type < 39 and type != 33 then amount end),"
    " sum(case when type = 33 then amount end), sum(case when type = 50 then amount end)";
/// Which rows they are taken from.
constexpr std::string_view kCounted = "deleted = 0 and (paid = 1 or type = 50)";
/// After every moment.
constexpr Date kEnd{std::numeric_limits<double>::infinity()};

int codeOf(int aKind, int trackingType) {
  if (aKind == kBookKind) return trackingType == 11 || trackingType == 12 ? trackingType : 1112;
  return trackingType == 12 || trackingType == 2312 ? trackingType : 1050;
}

bool tracksIncome(int code) {
  return code != 12;
}
bool tracksExpense(int code) {
  return code != 11;
}
/// Transfers and debts too.
bool tracksMoves(int code) {
  return code == 1050 || code == 2312;
}

AccountTotals readSums(const Run& run, int first, int code) {
  AccountTotals totals;
  if (tracksIncome(code)) totals.income = run.real(first);
  if (tracksExpense(code)) totals.expense = run.real(first + 3);
  if (tracksMoves(code)) {
    totals.income += run.real(first + 1);
    totals.transferIn = run.real(first + 2);
    totals.expense += run.real(first + 4);
    totals.transferOut = run.real(first + 5);
  }
  totals.adjusted = run.real(first + 6);
  return totals;
}

/// 1 for a type that comes in, -1 for one that goes out, 0 for one that does not count.
int signOf(int code, int type) {
  if (type == kind::kIncome) return tracksIncome(code) ? 1 : 0;
  if (type == kind::kExpense) return tracksExpense(code) ? -1 : 0;
  if (type == kind::kBalanceCorrection) return 1;
  if (!tracksMoves(code)) return 0;
  if (type > 21 && type < 29) return 1;
  return type > 31 && type < 39 ? -1 : 0;
}

Result<double> openingBalance(const MonivaAccount& account) {
  if (!account.isGroup) return account.beginBalance;
  Connection* db = account.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select sum(beginBalance) as beginBalance from account where oldTitle in (select title from category "
      "where"
      " parent=? and type=? and deleted = 0) and deleted = 0",
      {account.pk, account.isBook() ? 8 : 7});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return run.real(0);
}

/// Applies `change` to the row and to every group that contains it, each once.
Result<> applyUpwards(MonivaAccount& account, const std::function<Result<>(MonivaAccount&)>& change,
                      std::set<std::string>& changed) {
  changed.insert(account.pk);
  MVAppRoot& root = account.root();
  if (auto done = change(account); !done) return done;
  if (root.monivaAccount && root.monivaAccount->pk == account.pk) {
    root.monivaAccount->totalBalance = account.totalBalance;
  }
  auto groups = getFatherGroup(account);
  if (!groups) return tl::make_unexpected(groups.error());
  for (auto& group : *groups) {
    // A group that came to contain itself by a merge must not go round for ever.
    if (changed.contains(group.pk)) continue;
    if (auto done = applyUpwards(group, change, changed); !done) return done;
  }
  return {};
}

Result<> forRowAndItsGroups(MonivaAccount& account, const std::function<Result<>(MonivaAccount&)>& change) {
  return atomically(account.root(), [&](Connection&) {
    std::set<std::string> changed;
    return applyUpwards(account, change, changed);
  });
}

}  // namespace

AccountTotals& AccountTotals::operator+=(const AccountTotals& other) {
  income += other.income;
  expense += other.expense;
  transferIn += other.transferIn;
  transferOut += other.transferOut;
  adjusted += other.adjusted;
  return *this;
}

namespace {

/// The totals of what is dated before the moment.
Result<AccountTotals> totalsBefore(const MonivaAccount& account, Date moment) {
  Connection* db = account.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  AccountTotals totals;
  if (account.isGroup) {
    // Each member counts as it does by itself, so that a group is what its members add up to.
    const auto members = getGroupMembers(account);
    if (!members) return tl::make_unexpected(members.error());
    for (const auto& member : *members) {
      if (member.isGroup) continue;
      const auto part = totalsBefore(member, moment);
      if (!part) return part;
      totals += *part;
    }
    return totals;
  }
  // Dates that an older program stored as texts are above every number.
  const bool isAll = moment == kEnd;
  const auto sql = fmt::format("select {} from transactions where {} and {}{}", kSums,
                               accountQuerySQL(account), kCounted, isAll ? "" : " and datetime < ?");
  Run run = isAll ? db->query(sql, {account.pk}) : db->query(sql, {account.pk, moment});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return readSums(run, 0, codeOf(account.aKind, account.trackingType));
}

}  // namespace

Result<AccountTotals> totalsOf(const MonivaAccount& account) {
  return totalsBefore(account, kEnd);
}

Result<double> balanceBefore(const MonivaAccount& account, Date moment) {
  const auto opening = openingBalance(account);
  if (!opening) return opening;
  const auto totals = totalsBefore(account, moment);
  if (!totals) return tl::make_unexpected(totals.error());
  return withoutNoise(*opening + totals->balance());
}

double getTheTotalIncome(const MonivaAccount& account) {
  return totalsOf(account).value_or(AccountTotals()).income;
}

double getTheTotalExpense(const MonivaAccount& account) {
  return totalsOf(account).value_or(AccountTotals()).expense;
}

double getTheTotalTransferIn(const MonivaAccount& account) {
  return totalsOf(account).value_or(AccountTotals()).transferIn;
}

double getTheTotalTransferOut(const MonivaAccount& account) {
  return totalsOf(account).value_or(AccountTotals()).transferOut;
}

double getTheTotalBalance(const MonivaAccount& account) {
  return openingBalance(account).value_or(0) + totalsOf(account).value_or(AccountTotals()).balance();
}

Result<> getAllStatistics(MonivaAccount& account) {
  const auto totals = totalsOf(account);
  if (!totals) return tl::make_unexpected(totals.error());
  const auto opening = openingBalance(account);
  if (!opening) return tl::make_unexpected(opening.error());
  account.totalIncome = totals->income;
  account.totalExpense = totals->expense;
  account.totalTransferIn = totals->transferIn;
  account.totalTransferOut = totals->transferOut;
  account.adjustBalance = totals->adjusted;
  account.totalBalance = withoutNoise(*opening + totals->balance());
  return {};
}

Result<> countTheTotalBalance(MonivaAccount& account) {
  return forRowAndItsGroups(account, [](MonivaAccount& row) -> Result<> {
    if (auto counted = getAllStatistics(row); !counted) return counted;
    if (!row.updateTotalBalance(row.totalBalance)) return refusalOfStore(row.root());
    return {};
  });
}

Result<> countTheTotalBalances(MVAppRoot& root, const std::set<std::string>& keys) {
  return atomically(root, [&](Connection&) -> Result<> {
    for (const auto& key : keys) {
      auto account = MonivaAccount::getAccountWithPK(root, key);
      if (!account) continue;
      if (auto counted = countTheTotalBalance(*account); !counted) return counted;
    }
    return {};
  });
}

int countedType(const MonivaAccount& account) {
  return codeOf(account.aKind, account.trackingType);
}

int balanceSign(const MonivaAccount& account, int transactionType) {
  return signOf(countedType(account), transactionType);
}

Result<> addToTotalBalance(MonivaAccount& account, int transactionType, double amount) {
  const int sign = balanceSign(account, transactionType);
  if (sign == 0) return {};
  return forRowAndItsGroups(account, [&](MonivaAccount& row) -> Result<> {
    if (!row.addToTotalBalance(sign * amount)) return refusalOfStore(row.root());
    return {};
  });
}

Result<double> correctBalanceTo(MonivaAccount& account, double balance) {
  if (!std::isfinite(balance)) return refuse("a balance is a number");
  if (account.isGroup) return refuse("'{}' is a group; correct its members one by one", account.title);
  MVAppRoot& root = account.root();
  return atomically(root, [&](Connection&) -> Result<double> {
    if (auto counted = getAllStatistics(account); !counted) return tl::make_unexpected(counted.error());
    const double missing = withoutNoise(balance - account.totalBalance);
    if (missing != 0) {
      const Date now = root.now();
      const auto written = write(
          root,
          fmt::format(
              "insert into transactions (eid, amount, type, {}, datetime, sday, barcode, paid, editDate,"
              " edit_ipid) values (?,?,?,?,?,?,?,1,?,?)",
              account.isBook() ? "book" : "account"),
          root.newIdentifier(), missing, kind::kBalanceCorrection, account.pk, now,
          integerDateOfTimeZone(root.calendar(), now), root.calendar().zone(), root.editStamp(),
          root.itsUDID());
      if (!written) return tl::make_unexpected(written.error());
    }
    if (auto counted = countTheTotalBalance(account); !counted) return tl::make_unexpected(counted.error());
    return missing;
  });
}

Result<std::map<std::string, double, std::less<>>> sumsOfAllAccounts(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const ReadTransaction snapshot(*db);
  std::map<std::string, double, std::less<>> sums;
  {
    // As accounts that track everything count, which nearly all do.
    Run run = db->query(fmt::format(
        "select account, sum(case when type = 11 or type = 50 or (type > 21 and type < 29) then amount"
        " when type = 12 or (type > 31 and type < 39) then -amount end) from transactions where account != ''"
        " and {} group by account",
        kCounted));
    while (run.next()) sums.emplace(run.text(0), run.real(1));
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  std::vector<std::string> others;
  {
    Run run = db->query("select oldTitle, incomeEnabled from account where kind = 1");
    while (run.next()) {
      const int code = codeOf(kAccountKind, static_cast<int>(run.integer(1)));
      if (!tracksMoves(code) && sums.contains(run.text(0))) others.emplace_back(run.text(0));
    }
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  for (const auto& key : others) {
    const auto account = MonivaAccount::getAccountWithPK(root, key);
    if (!account) continue;
    const auto totals = totalsOf(*account);
    if (!totals) return tl::make_unexpected(totals.error());
    sums[key] = totals->balance();
  }
  return sums;
}

}  // namespace moniva
