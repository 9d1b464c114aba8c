#include <algorithm>
#include <cmath>
#include <tuple>

#include "calendar/date_texts.h"
#include "model/debt.h"
#include "model/debt_rows.h"
#include "model/entry_checks.h"
#include "model/moniva_account.h"
#include "model/record_entry.h"

namespace moniva {
namespace {

int repaymentTypeOf(const Debt& debt) {
  return debt.isBorrowed() ? kind::kRepaidByUs : kind::kRepaidToUs;
}

/// Writes one new row, by its `eid`, and takes it into the balance of its account.
template <class... Arguments>
Result<> insertRow(MVAppRoot& root, const std::string& eid, std::string_view sql,
                   const Arguments&... arguments) {
  return changeRecords(root, {.eid = eid, .group = {}, .series = {}},
                       [&](Connection&) { return write(root, sql, arguments...); });
}

Result<> insertRepayment(MVAppRoot& root, const DebtOutcome::Part& part, const Debt& debt, const Debt& money,
                         const std::string& note) {
  return insertRow(root, part.eid,
                   "insert into transactions (amount, type, note, vendor, datetime, account, editDate, eid,"
                   " transferEID, barcode, sday, bid, edit_ipid) values (?, ?, ?, ?, ?, ?, ?, ?, ?,?,?,10,?)",
                   part.amount, repaymentTypeOf(debt), note, debt.person, money.datetime,
                   money.paymentAccount, root.editStamp(), part.eid, debt.eid, money.timeZone,
                   integerDateOfTimeZone(root.calendar(), money.datetime, money.timeZone), root.itsUDID());
}

Result<> insertDebt(MVAppRoot& root, const Debt& debt) {
  return insertRow(root, debt.eid,
                   "insert into transactions (amount, type, vendor, note, datetime, account, editDate, eid, "
                   " needReimburse, sday, barcode, bid, edit_ipid) values (?, ?, ?, ?, ?, ?, ?, ?, 0, ?,"
                   " ?,10,?)",
                   debt.amount, debt.type, debt.person, debt.note, debt.datetime, debt.paymentAccount,
                   root.editStamp(), debt.eid,
                   integerDateOfTimeZone(root.calendar(), debt.datetime, debt.timeZone), debt.timeZone,
                   root.itsUDID());
}

Result<> setSettled(MVAppRoot& root, std::string_view debt, bool settled) {
  return write(root,
               "update transactions set needReimburse = ?, ipid = 'batchEdit', editDate = ?, edit_ipid = ?"
               " where eid = ?",
               settled, root.editStamp(), root.itsUDID(), debt);
}

/// What was repaid of the debt: under either code, as data from elsewhere may have them the other way round.
Result<double> repaidSum(Connection& db, const Debt& debt) {
  double sum = 0;
  for (const int type : {kind::kRepaidToUs, kind::kRepaidByUs}) {
    Run run = db.query(
        "select eid, sum(amount) as amountSUM from transactions where type = ? and vendor = ? and"
        " transferEID = ? and deleted = 0 order by datetime",
        {type, debt.person, debt.eid});
    if (!run.next()) return tl::make_unexpected(db.refusal());
    sum += run.real(1);
  }
  return sum;
}

/// The person's open debts of the type, oldest first.
Result<std::vector<Debt>> candidatesOf(MVAppRoot& root, Connection& db, int type, const std::string& person) {
  std::vector<std::string> keys;
  {
    Run run = db.query(
        "select eid, amount from transactions where type = ? and vendor = ? and needReimburse = 0 and"
        " deleted = 0 order by datetime",
        {type, person});
    while (run.next()) keys.emplace_back(run.text(0));
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  std::vector<Debt> candidates;
  for (const auto& key : keys) {
    auto debt = Debt::debtFromEID(root, key);
    // The statement goes by the type alone, under which there are only debts for the two of today.
    if (!debt) continue;
    const auto sum = repaidSum(db, *debt);
    if (!sum) return tl::make_unexpected(sum.error());
    debt->repaidAmount = *sum;
    candidates.push_back(std::move(*debt));
  }
  std::ranges::sort(candidates, [](const Debt& one, const Debt& other) {
    return std::tie(one.datetime, one.eid) < std::tie(other.datetime, other.eid);
  });
  return candidates;
}

/// Puts a debt of exactly the amount, of which nothing was repaid, before all others.
Result<> preferExact(Connection& db, std::vector<Debt>& candidates, double amount, int type,
                     const std::string& person) {
  std::vector<std::string> exact;
  Run run =
      db.query("select eid from transactions where amount = ? and deleted = 0 and type = ? and vendor = ?",
               {amount, type, person});
  while (run.next()) exact.emplace_back(run.text(0));
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  const auto found = std::ranges::find_if(candidates, [&](const Debt& debt) {
    return debt.repaidAmount == 0 && std::ranges::find(exact, debt.eid) != exact.end();
  });
  if (found != candidates.end()) std::rotate(candidates.begin(), found, found + 1);
  return {};
}

/// The money of a repayment, as the debt of the other direction that the rest of it would be.
Debt moneyOfRepayment(MVAppRoot& root, const std::string& person, int type, double amount, Date date,
                      const std::string& note, const std::string& account) {
  Debt money(root);
  money.person = person;
  money.type = isBorrowedType(type) ? kind::kLent : kind::kBorrowed;
  money.amount = amount;
  money.datetime = date;
  money.note = note;
  money.paymentAccount = account;
  money.currency = currencyOfDebt(root, account);
  return money;
}

}  // namespace

double debtTolerance(double amount) {
  return std::max(5e-7, std::abs(amount) * 2e-15);
}

double leftOf(double amount, double covered) {
  const double left = amount - covered;
  return left < debtTolerance(amount) ? 0 : withoutNoise(left);
}

Result<DebtOutcome> handOver(MVAppRoot& root, Debt& money, const std::vector<Debt>& open,
                             const std::string& currency, NoteOf noteOf) {
  DebtOutcome outcome;
  std::vector<const Debt*> debts;
  double rest = money.amount;
  for (const auto& debt : open) {
    if (rest == 0) break;
    const double owed = debt.owed();
    if (owed == 0) {
      if (auto counted = recountSettled(root, debt.eid); !counted)
        return tl::make_unexpected(counted.error());
      continue;
    }
    const bool settles = leftOf(owed, rest) == 0;
    outcome.repaid.push_back({root.newIdentifier(), debt.eid, settles ? owed : rest, settles});
    debts.push_back(&debt);
    rest = leftOf(rest, outcome.repaid.back().amount);
    outcome.repaidAmount = withoutNoise(outcome.repaidAmount + outcome.repaid.back().amount);
  }
  if (rest > 0 && !sameCurrency(currency, money.currency)) {
    return refuse("{} of it is more than is owed and would be a debt in {}, not {}; name its account", rest,
                  money.currency, currency);
  }
  const bool repaymentsHaveNote = noteOf == NoteOf::repayments || rest == 0;
  for (std::size_t at = 0; at < debts.size(); ++at) {
    const auto& part = outcome.repaid[at];
    auto written = insertRepayment(root, part, *debts[at], money, repaymentsHaveNote ? money.note : "");
    if (written) written = recountSettled(root, part.debt);
    if (!written) return tl::make_unexpected(written.error());
  }
  if (rest == 0) return outcome;
  if (money.eid.empty()) money.eid = root.newIdentifier();
  if (noteOf == NoteOf::repayments && !debts.empty()) money.note.clear();
  money.amount = outcome.remainder = rest;
  outcome.debt = money.eid;
  if (auto written = insertDebt(root, money); !written) return tl::make_unexpected(written.error());
  money.isNewOne = false;
  return outcome;
}

std::optional<Debt> Debt::debtOfRepayment(MVAppRoot& root, std::string_view repayment) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return std::nullopt;
  std::string debt;
  {
    Run run =
        db->query("select transferEID from transactions where eid = ? and type in (25, 35)", {repayment});
    if (!run.next()) return std::nullopt;
    debt = run.text(0);
  }
  return debtFromEID(root, debt);
}

bool Debt::getRepaid() {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return false;
  repaidList.clear();
  repaidAmount = 0;
  Run run = db->query(
      "select eid, amount, datetime, note, account from transactions where transferEID = ? and deleted = 0"
      " order by datetime",
      {eid});
  while (run.next()) {
    repaidList.push_back({std::string(run.text(0)), run.real(1), run.date(2), std::string(run.text(3)),
                          std::string(run.text(4))});
    repaidAmount += run.real(1);
  }
  return run.ok();
}

Result<DebtOutcome> Debt::repaid(double sum, Date date, const std::string& remark,
                                 const std::string& account) {
  return atomically(*root_, [&](Connection& db) -> Result<DebtOutcome> {
    auto first = debtFromEID(*root_, eid);
    if (!first || first->isDeleted != 0) return refuse("there is no such debt any more");
    Debt money = moneyOfRepayment(*root_, first->person, first->type, sum, date, remark, account);
    if (auto checked = checkMoney(*root_, money); !checked) return tl::make_unexpected(checked.error());
    const std::string owedIn = first->currency;
    if (!account.empty() && !sameCurrency(owedIn, money.currency)) {
      return refuse("the debt is in {} and the account in {}", owedIn, money.currency);
    }
    const auto before = repaidSum(db, *first);
    if (!before) return tl::make_unexpected(before.error());
    first->repaidAmount = *before;
    const auto others = candidatesOf(*root_, db, first->type, first->person);
    if (!others) return tl::make_unexpected(others.error());
    std::vector<Debt> open{std::move(*first)};
    for (const auto& debt : *others) {
      if (debt.eid != eid && sameCurrency(debt.currency, owedIn)) open.push_back(debt);
    }
    auto outcome = handOver(*root_, money, open, owedIn, NoteOf::repayments);
    if (!outcome) return outcome;
    const auto now = debtFromEID(*root_, eid);
    if (!now || !getRepaid()) return refusalOfStore(*root_);
    repaidFinished = now->repaidFinished;
    return outcome;
  });
}

Result<DebtOutcome> Debt::repaidTo(MVAppRoot& root, const std::string& person, int type, double amount,
                                   Date date, const std::string& note, const std::string& account) {
  Debt money = moneyOfRepayment(root, person, type, amount, date, note, account);
  if (auto checked = checkPerson(money.person); !checked) return tl::make_unexpected(checked.error());
  if (auto checked = checkMoney(root, money); !checked) return tl::make_unexpected(checked.error());
  return atomically(root, [&](Connection& db) -> Result<DebtOutcome> {
    auto open = candidatesOf(root, db, type, money.person);
    if (!open) return tl::make_unexpected(open.error());
    std::string owedIn = money.currency;
    if (account.empty() && !open->empty()) {
      owedIn = open->front().currency;
      for (const auto& debt : *open) {
        if (sameCurrency(debt.currency, owedIn)) continue;
        return refuse("the debts of '{}' are in {} and {}; name the account or the debt", money.person,
                      owedIn, debt.currency);
      }
    }
    std::erase_if(*open, [&](const Debt& debt) { return !sameCurrency(debt.currency, owedIn); });
    if (auto ordered = preferExact(db, *open, amount, type, money.person); !ordered) {
      return tl::make_unexpected(ordered.error());
    }
    return handOver(root, money, *open, owedIn, NoteOf::repayments);
  });
}

Result<> Debt::deleteRepay(std::string_view repayment) {
  return changeRecords(
      *root_, {.eid = std::string(repayment), .group = {}, .series = {}}, [&](Connection& db) -> Result<> {
        {
          Run run = db.query(
              "select 1 from transactions where eid = ? and transferEID = ? and type in (25, 35) and"
              " deleted = 0",
              {repayment, eid});
          if (!run.next())
            return run.ok() ? Result<>(refuse("there is no such repayment any more"))
                            : tl::make_unexpected(db.refusal());
        }
        auto written = write(*root_,
                             "update transactions set deleted = 3, ipid = 'delete with delete repay',"
                             " editDate = ?, edit_ipid = ? where eid = ?",
                             root_->editStamp(), root_->itsUDID(), repayment);
        if (written) written = setSettled(*root_, eid, false);
        // Others may cover it still, such as those that two devices made for the same money.
        if (written) written = recountSettled(*root_, eid);
        if (!written) return written;
        const auto now = debtFromEID(*root_, eid);
        if (now) repaidFinished = now->repaidFinished;
        return getRepaid() ? Result<>() : refusalOfStore(*root_);
      });
}

Result<> recountSettled(MVAppRoot& root, std::string_view debtEid) {
  auto debt = Debt::debtFromEID(root, debtEid);
  if (!debt) return {};
  if (!debt->getRepaid()) return refusalOfStore(root);
  const bool settled = debt->owed() == 0;
  return settled == debt->repaidFinished ? Result<>() : setSettled(root, debtEid, settled);
}

Result<> checkRepaymentFits(MVAppRoot& root, std::string_view repaymentEid) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  auto debt = Debt::debtOfRepayment(root, repaymentEid);
  if (!debt || debt->isDeleted != 0) return refuse("the debt that it repays is deleted; restore that first");
  if (!debt->getRepaid()) return refusalOfStore(root);
  Run run = db->query("select amount, vendor, deleted from transactions where eid = ?", {repaymentEid});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  if (run.integer(2) == 0) return {};
  if (run.text(1) != debt->person) return refuse("the debt is one of '{}' by now", debt->person);
  if (leftOf(run.real(0), debt->owed()) == 0) return {};
  return refuse("only {} is still owed, so a repayment of {} does not fit any more", debt->owed(),
                run.real(0));
}

}  // namespace moniva
