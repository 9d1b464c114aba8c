#include <set>

#include "calendar/date_texts.h"
#include "model/account_balance.h"
#include "model/account_groups.h"
#include "model/debt.h"
#include "model/group_balance.h"
#include "model/moniva_account.h"
#include "storage/writes.h"

namespace moniva {
namespace {

bool isCurrent(const MonivaAccount& account) {
  const auto& current = account.root().monivaAccount;
  return current && !current->pk.empty() && current->pk == account.pk;
}

/// The title of the account that a first currency is given: one that no account has or had, since adding it
/// under the title of a deleted one would bring that back.
std::string titleOfDefaultAccount(MVAppRoot& root, std::string_view code) {
  const std::string wanted = fmt::format("{} {}", root.platform().localized("Default Payment Account"),
                                         currencyDisplayName(code, root.calendar().locale()));
  std::string title = wanted;
  for (int n = 2; MonivaAccount::getAccountWithTitle(root, title); ++n)
    title = fmt::format("{} {}", wanted, n);
  return title;
}

}  // namespace

Result<> MonivaAccount::saveOrder(MVAppRoot& root, const std::vector<MonivaAccount>& list) {
  return atomically(root, [&](Connection&) -> Result<> {
    int place = 0;
    for (const auto& account : list) {
      auto written = write(root, "update account set orderID=?, editDate=?, edit_ipid = ? where oldTitle=?",
                           ++place, root.editStamp(), root.itsUDID(), account.pk);
      if (!written) return written;
    }
    return {};
  });
}

Result<> MonivaAccount::close(bool closed) {
  if (closed && isCurrent(*this)) return refuse("'{}' is the current book; use another one first", title);
  auto written =
      update("update account set enabled = ?, editDate = ?, edit_ipid = ? where oldTitle = ?", !closed);
  if (written) enabled = !closed;
  return written;
}

Result<std::optional<MonivaAccount>> MonivaAccount::updateCurrency(std::string_view code) {
  if (code == currency) return std::optional<MonivaAccount>();
  auto changed = atomically(*root_, [&](Connection& db) -> Result<std::optional<MonivaAccount>> {
    auto written =
        write(*root_, "update account set currency = ?, editDate=?, edit_ipid = ?  where oldTitle=?", code,
              root_->editStamp(), root_->itsUDID(), pk);
    if (!written) return tl::make_unexpected(written.error());
    // Payment accounts are counted, whatever this row is: a book would always find itself.
    bool hasAccount = false;
    {
      Run run = db.query(
          "select count(oldTitle) as accountCount from account where currency = ? and deleted = 0 and"
          " enabled = 1 and kind = ? and isGroup = 0",
          {code, kAccountKind});
      if (!run.next()) return tl::make_unexpected(db.refusal());
      hasAccount = run.integer(0) > 0;
    }
    std::optional<MonivaAccount> made;
    if (!hasAccount) {
      made.emplace(*root_);
      made->aKind = kAccountKind;
      made->setType("_SavingAccount");
      made->title = titleOfDefaultAccount(*root_, code);
      made->currency = code;
      if (auto added = made->add(); !added) return tl::make_unexpected(added.error());
    }
    if (!isGroup) {
      if (auto left = removeFromAllGroup(*this); !left) return tl::make_unexpected(left.error());
    }
    return made;
  });
  if (changed) {
    currency = code;
    edited = true;
    tellCurrentBook();
  }
  return changed;
}

Result<> MonivaAccount::delete_() {
  if (isCurrent(*this)) return refuse("'{}' is the current book; use another one first", title);
  auto deletedNow = atomically(*root_, [&](Connection&) -> Result<> {
    const auto groups = getFatherGroup(*this);
    if (!groups) return tl::make_unexpected(groups.error());
    auto written =
        write(*root_, "update account set deleted = 1, editDate = ?, edit_ipid = ? where oldTitle = ?",
              root_->editStamp(), root_->itsUDID(), pk);
    // Older keys are titles, which a category may have as well: membership rows alone are meant.
    if (written) {
      written =
          write(*root_,
                "update category set deleted = 1, editDate=?, edit_ipid = ?  where (title = ? or parent = ?)"
                " and (type = 7 or type = 8)",
                root_->editStamp(), root_->itsUDID(), pk, pk);
    }
    if (!written) return written;
    std::set<std::string> keys;
    for (const auto& group : *groups) keys.insert(group.pk);
    return countTheTotalBalances(*root_, keys);
  });
  if (deletedNow) {
    isDeleted = 1;
    root_->platform().notifications.post(notification::kAccountDeleted);
  }
  return deletedNow;
}

Result<> MonivaAccount::recoverForTitle() {
  return atomically(*root_, [&](Connection& db) -> Result<> {
    {
      Run run =
          db.query("select sum(deleted != 0), count(*) from account where title = ? group by kind", {title});
      bool any = false;
      while (run.next()) {
        any = any || run.integer(0) > 0;
        if (run.integer(0) > 0 && run.integer(1) > 1) {
          return refuse(
              "'{}' cannot be recovered: there would be two of that title; adding one anew brings back the "
              "newest",
              title);
        }
      }
      if (!run.ok()) return tl::make_unexpected(db.refusal());
      if (!any) return refuse("nothing of the title '{}' was deleted", title);
    }
    auto written =
        write(*root_, "update account set deleted = 0, editDate = ?, edit_ipid = ? where title = ?",
              root_->editStamp(), root_->itsUDID(), title);
    if (written) isDeleted = 0;
    return written;
  });
}

Result<std::int64_t> MonivaAccount::clear() {
  if (isGroup) return refuse("'{}' is a group; clear its members one by one", title);
  return atomically(*root_, [&](Connection& db) -> Result<std::int64_t> {
    const auto records = recordCount();
    if (!records) return records;
    std::set<std::string> touched{pk};
    {
      Run run = db.query(
          isBook()
              ? "select distinct account from transactions where book = ? and deleted = 0 and account != ''"
              : "select distinct book from transactions where account = ? and deleted = 0 and book != ''",
          {pk});
      while (run.next()) touched.emplace(run.text(0));
      if (!run.ok()) return tl::make_unexpected(db.refusal());
    }
    // Compound records that lose some of their rows, and the accounts that paid for them.
    std::set<std::string> groups;
    {
      Run run = db.query(
          fmt::format(
              "select distinct other.transferEID, other.account from transactions as own join transactions"
              " as other on other.transferEID = own.transferEID where own.{} = ? and own.deleted = 0 and"
              " own.transferEID != '' and own.type in (11, 12, 86) and other.deleted = 0",
              isBook() ? "book" : "account"),
          {pk});
      while (run.next()) {
        groups.emplace(run.text(0));
        if (!run.text(1).empty()) touched.emplace(run.text(1));
      }
      if (!run.ok()) return tl::make_unexpected(db.refusal());
    }
    std::set<std::string> repaid;
    if (isAccount()) {
      Run run = db.query(
          "select transferEID from transactions where account = ? and deleted = 0 and type in (25, 35)",
          {pk});
      while (run.next()) repaid.emplace(run.text(0));
      if (!run.ok()) return tl::make_unexpected(db.refusal());
    }
    const std::string mark = fmt::format("delete by clear {} data on {}", isBook() ? "book" : "account",
                                         stringOfDatetime(root_->calendar(), root_->now()));
    auto written =
        write(*root_,
              isBook() ? "update transactions set deleted = 3, ipid = ?, editDate=?, edit_ipid = ?  where"
                         " book = ? and deleted = 0"
                       : "update transactions set deleted = 3, ipid = ?, editDate=?, edit_ipid = ?  where"
                         " account = ? and deleted = 0",
              mark, root_->editStamp(), root_->itsUDID(), pk);
    if (!written) return tl::make_unexpected(written.error());
    for (const auto& group : groups) {
      if (auto settled = settleCleared(*root_, group, mark); !settled) {
        return tl::make_unexpected(settled.error());
      }
    }
    // Debts that were repaid from the account are open again.
    for (const auto& debt : repaid) {
      if (auto counted = recountSettled(*root_, debt); !counted) return tl::make_unexpected(counted.error());
    }
    if (auto counted = countTheTotalBalances(*root_, touched); !counted)
      return tl::make_unexpected(counted.error());
    getInfo();
    return *records;
  });
}

}  // namespace moniva
