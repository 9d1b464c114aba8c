#include "model/debt.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "calendar/date_texts.h"
#include "model/debt_rows.h"
#include "model/entry_checks.h"
#include "model/moniva_account.h"
#include "model/record_entry.h"
#include "model/title.h"
#include "model/title_order.h"

namespace moniva {
namespace {

/// Which rows are debts: those of older data by the book they were kept in, as `isDebtRow` has it. Queries
/// keep their order apart from the columns (`+datetime`), so that the few debts are found by their types and
/// not by a walk through all rows in that order.
constexpr std::string_view kIsDebt =
    "(type in (24, 34) or (type = 11 and book in ('BorrowBook', 'DebtBook')) or"
    " (type = 12 and book = 'LendBook'))";

/// Its slots take what the flag is to be, and below zero for either.
constexpr std::string_view kIsSettled = "((needReimburse != 0) = ? or ? < 0)";

bool isDebtRow(int type, std::string_view book) {
  if (type == kind::kIncome) return book == "BorrowBook" || book == "DebtBook";
  return type == kind::kBorrowed || type == kind::kLent || (type == kind::kExpense && book == "LendBook");
}

Result<> checkAccountOf(MVAppRoot& root, const Debt& money) {
  if (money.paymentAccount.empty()) return {};
  const auto account = MonivaAccount::getAccountWithPK(root, money.paymentAccount);
  if (!account || account->isBook() || account->isDeleted != 0) {
    return refuse("there is no account of the key '{}'", money.paymentAccount);
  }
  if (account->isGroup) return refuse("'{}' is a group of accounts; name one of them", account->title);
  return checkTracked(*account, money.type);
}

}  // namespace

Debt::Debt(MVAppRoot& root) : datetime(root.now()), timeZone(root.calendar().zone()), root_(&root) {}

Result<> checkPerson(std::string& person) {
  person = std::string(trimBlanks(person));
  if (person.empty()) return refuse("a debt needs the name of a person");
  return checkTitle(person, toTranslate("a person"));
}

std::string currencyOfDebt(MVAppRoot& root, const std::string& account) {
  if (!account.empty()) {
    if (const auto row = MonivaAccount::getAccountWithPK(root, account)) return row->currency;
  }
  return root.monivaAccount ? root.monivaAccount->currency : std::string();
}

bool sameCurrency(const std::string& one, const std::string& other) {
  return one == other || one.empty() || other.empty();
}

Result<> checkMoney(MVAppRoot& root, const Debt& money) {
  if (auto checked = checkAmount(money.amount); !checked) return checked;
  if (auto checked = checkRecordDate(root.calendar(), money.datetime); !checked) return checked;
  if (!isPaidByDate(root.calendar(), money.datetime, root.now())) {
    return refuse("a debt or repayment is recorded when the money changes hands, not for a day ahead");
  }
  return checkAccountOf(root, money);
}

std::optional<Debt> Debt::debtFromEID(MVAppRoot& root, std::string_view eid) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return std::nullopt;
  Debt debt(root);
  {
    Run run = db->query("select type, book, deleted from transactions where eid = ?", {eid});
    if (!run.next() || !isDebtRow(static_cast<int>(run.integer(0)), run.text(1))) return std::nullopt;
    debt.isDeleted = static_cast<int>(run.integer(2));
  }
  {
    Run run = db->query(
        "select eid, amount, note, type, vendor, datetime, account, needReimburse, barcode from transactions"
        " where eid = ?",
        {eid});
    if (!run.next()) return std::nullopt;
    debt.eid = run.text(0);
    debt.amount = run.real(1);
    debt.note = run.text(2);
    debt.type = static_cast<int>(run.integer(3));
    debt.person = run.text(4);
    debt.datetime = run.date(5);
    debt.paymentAccount = run.text(6);
    debt.repaidFinished = run.integer(7) != 0;
    debt.timeZone = run.text(8);
  }
  debt.isNewOne = false;
  debt.currency = currencyOfDebt(root, debt.paymentAccount);
  return debt;
}

Result<std::vector<Debt>> Debt::list(MVAppRoot& root, Which which, std::string_view person) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::vector<std::string> keys;
  {
    Run run = db->query(
        fmt::format("select eid from transactions where deleted = 0 and {} and (vendor = ? or ? = '') and"
                    " {} order by +datetime, eid",
                    kIsDebt, kIsSettled),
        {person, person, which == Which::settled ? 1 : 0, which == Which::all ? -1 : 1});
    while (run.next()) keys.emplace_back(run.text(0));
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  std::vector<Debt> debts;
  for (const auto& key : keys) {
    auto debt = debtFromEID(root, key);
    if (!debt || !debt->getRepaid()) return refusalOfStore(root);
    debts.push_back(std::move(*debt));
  }
  const auto order = TitleOrder::forLocale(root.calendar().locale());
  std::ranges::stable_sort(debts, [&](const Debt& one, const Debt& other) {
    if (one.isBorrowed() != other.isBorrowed()) return one.isBorrowed();
    const int place = order->compare(one.person, other.person);
    return place != 0 ? place < 0 : one.person < other.person;
  });
  return debts;
}

Result<std::int64_t> Debt::count(MVAppRoot& root, Which which) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      fmt::format("select count(eid) from transactions where deleted = 0 and {} and {}", kIsDebt, kIsSettled),
      {which == Which::settled ? 1 : 0, which == Which::all ? -1 : 1});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return run.integer(0);
}

Result<std::vector<std::string>> Debt::people(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(fmt::format(
      "select distinct vendor from transactions where deleted = 0 and {} order by +vendor", kIsDebt));
  std::vector<std::string> names;
  while (run.next()) names.emplace_back(run.text(0));
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return names;
}

bool Debt::hasDebt(MVAppRoot& root, int type, std::string_view with) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return false;
  Run run = db->query(
      "select eid from transactions where type = ? and vendor = ? and deleted = 0 and needReimburse = 0 limit"
      " 1",
      {type, with});
  return run.next();
}

Result<std::vector<Debt::Open>> Debt::openDebts(MVAppRoot& root, int type, std::string_view person) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run =
      isBorrowedType(type)
          ? db->query(
                "select eid, amount from transactions where (type = ? or (type = 11 and book = "
                "'BorrowBook')) and vendor = ? and deleted = 0 and needReimburse = 0 order by datetime DESC",
                {kind::kBorrowed, person})
          : db->query(
                "select eid, amount from transactions where (type = ? or (type = 12 and book = 'LendBook'))"
                " and vendor = ? and deleted = 0 and needReimburse = 0 order by datetime DESC",
                {kind::kLent, person});
  std::vector<Open> open;
  while (run.next()) open.push_back({std::string(run.text(0)), run.real(1)});
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return open;
}

Result<double> Debt::sumOfOpenDebts(MVAppRoot& root, int type, std::string_view person) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = isBorrowedType(type)
                ? db->query(
                      "select sum(amount) as borrowAmount from transactions where (type = ? or (type = 11 and"
                      " book = 'DebtBook')) and vendor = ? and deleted = 0 and needReimburse = 0",
                      {kind::kBorrowed, person})
                : db->query(
                      "select sum(amount) as lendAmount from transactions where (type = ? or (type = 12 and"
                      " book = 'LendBook')) and vendor = ? and deleted = 0 and needReimburse = 0",
                      {kind::kLent, person});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return run.real(0);
}

double Debt::owed() const {
  return leftOf(amount, repaidAmount);
}

Result<DebtOutcome> Debt::add(Offsetting offsetting) {
  if (auto checked = checkPerson(person); !checked) return tl::make_unexpected(checked.error());
  if (auto checked = checkMoney(*root_, *this); !checked) return tl::make_unexpected(checked.error());
  currency = currencyOfDebt(*root_, paymentAccount);
  return atomically(*root_, [&](Connection&) -> Result<DebtOutcome> {
    std::vector<Debt> against;
    if (offsetting == Offsetting::againstOpenDebts) {
      const auto open = openDebts(*root_, isBorrowed() ? kind::kLent : kind::kBorrowed, person);
      if (!open) return tl::make_unexpected(open.error());
      for (const auto& each : *open) {
        auto debt = debtFromEID(*root_, each.eid);
        if (!debt || !debt->getRepaid()) return refusalOfStore(*root_);
        if (sameCurrency(debt->currency, currency)) against.push_back(std::move(*debt));
      }
      std::ranges::sort(against, [](const Debt& one, const Debt& other) {
        return std::tie(one.datetime, one.eid) < std::tie(other.datetime, other.eid);
      });
    }
    return handOver(*root_, *this, against, currency, NoteOf::debt);
  });
}

bool Debt::editable() {
  return getRepaid() && repaidList.empty();
}

Result<> Debt::update() {
  if (auto checked = checkPerson(person); !checked) return checked;
  return changeRecords(*root_, {.eid = eid, .group = {}, .series = {}}, [&](Connection&) -> Result<> {
    const auto stored = debtFromEID(*root_, eid);
    if (!stored || stored->isDeleted != 0) return refuse("there is no such debt any more");
    // An account that went since does not keep the rest from being put right.
    Debt checked = *this;
    if (stored->paymentAccount == paymentAccount) checked.paymentAccount.clear();
    if (auto sound = checkMoney(*root_, checked); !sound) return sound;
    if (!getRepaid()) return refusalOfStore(*root_);
    if (!repaidList.empty()) {
      return refuse("a debt that was repaid, wholly or in part, is not changed; remove its repayments first");
    }
    currency = currencyOfDebt(*root_, paymentAccount);
    return write(*root_,
                 "update transactions set amount = ?, note = ?, vendor = ?, datetime = ?, editDate = ?,"
                 " edit_ipid = ?, account=?, sday= ?, barcode=? where eid = ?",
                 amount, note, person, datetime, root_->editStamp(), root_->itsUDID(), paymentAccount,
                 integerDateOfTimeZone(root_->calendar(), datetime, timeZone), timeZone, eid);
  });
}

Result<std::vector<std::string>> Debt::delete_() {
  return changeRecords(
      *root_, {.eid = eid, .group = eid, .series = {}},
      [&](Connection& db) -> Result<std::vector<std::string>> {
        const auto stored = debtFromEID(*root_, eid);
        if (!stored || stored->isDeleted != 0) return refuse("there is no such debt any more");
        std::vector<std::string> accounts;
        {
          Run run = db.query("select account from transactions where eid = ? or transferEID = ?", {eid, eid});
          while (run.next()) {
            std::string account(run.text(0));
            if (!account.empty() && std::ranges::find(accounts, account) == accounts.end()) {
              accounts.push_back(std::move(account));
            }
          }
          if (!run.ok()) return tl::make_unexpected(db.refusal());
        }
        // One stamp for all that goes together: `restore` tells by it what does. Repayments that were
        // removed before stay removed for their own reason.
        const Date stamp = root_->editStamp();
        auto written =
            write(*root_, "update transactions set deleted = 1, editDate = ?, edit_ipid = ? where eid = ?",
                  stamp, root_->itsUDID(), eid);
        if (written) {
          written = write(*root_,
                          "update transactions set deleted = 1, editDate = ?, edit_ipid = ?"
                          " where transferEID = ? and deleted = 0",
                          stamp, root_->itsUDID(), eid);
        }
        if (!written) return tl::make_unexpected(written.error());
        isDeleted = 1;
        return accounts;
      });
}

Result<> Debt::restore() {
  return changeRecords(*root_, {.eid = eid, .group = eid, .series = {}}, [&](Connection& db) -> Result<> {
    const auto stored = debtFromEID(*root_, eid);
    if (!stored) return refuse("there is no such debt any more");
    if (stored->isDeleted == 0) return refuse("the debt is not deleted");
    if (stored->isDeleted != 1) return refuse("the debt was removed for good");
    Date stamp;
    {
      Run run = db.query("select editDate from transactions where eid = ?", {eid});
      if (!run.next()) return tl::make_unexpected(db.refusal());
      stamp = run.date(0);
    }
    auto written = write(*root_,
                         "update transactions set deleted = 0, editDate = ?, edit_ipid = ?"
                         " where transferEID = ? and deleted = 1 and editDate >= ?",
                         root_->editStamp(), root_->itsUDID(), eid, stamp);
    if (written) {
      written =
          write(*root_, "update transactions set deleted = 0, editDate = ?, edit_ipid = ? where eid = ?",
                root_->editStamp(), root_->itsUDID(), eid);
    }
    if (written) written = recountSettled(*root_, eid);
    if (written) isDeleted = 0;
    return written;
  });
}

}  // namespace moniva
