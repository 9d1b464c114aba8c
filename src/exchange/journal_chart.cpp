#include "exchange/journal_chart.h"

#include <algorithm>

#include "base/text.h"
#include "currency/currency_codes.h"
#include "model/account_balance.h"

namespace moniva {
namespace {

constexpr std::string_view kSpecialNames[] = {
    "Equity:Opening",   "Equity:Corrections", "Equity:Clearing",
    "Equity:Transfers", "Equity:Outside",     "Equity:No account",
    "Equity:Untracked", "Equity:Other",       "Expenses:Transfer charges",
};

/// Keys of accounts that stand for none.
constexpr std::string_view kNoAccounts[] = {"", "_NoneAccount", "_MutipleAccount", "_PendingAccount"};

}  // namespace

Decimal& JournalAccount::balance(std::size_t commodity) {
  for (auto& [held, sum] : balances) {
    if (held == commodity) return sum;
  }
  return balances.emplace_back(commodity, Decimal()).second;
}

JournalChart::JournalChart(MVAppRoot& root, Connection& db, const ExportRequest& request)
    : root_(root), db_(db), request_(request), names_(root) {
  // Kept for what the program names itself: a title that says the same has a number.
  taken_.below("Assets", "", "Lent");
  taken_.below("Liabilities", "", "Borrowed");
  taken_.below("", "", "No book");
  taken_.below("", " charges", "Transfer charges");
}

Result<> JournalChart::load() {
  auto members = membersOf(request_);
  if (!members) return tl::make_unexpected(members.error());
  members_ = std::move(*members);
  std::vector<std::tuple<std::string, int, bool>> keys;
  Run run = db_.query(
      "select oldTitle, kind, deleted = 0 from account where isGroup = 0 and oldTitle != ''"
      " order by deleted != 0, kind, orderID, oldTitle");
  while (run.next()) {
    keys.emplace_back(run.text(0), static_cast<int>(run.integer(1)), run.integer(2) != 0);
  }
  if (!run.ok()) return tl::make_unexpected(db_.refusal());
  for (const auto& [key, aKind, isLive] : keys) {
    Holder& made = holder(key, aKind);
    if (isLive && aKind != kBookKind) openAccount(made);
    if (isLive && aKind == kBookKind && made.row.beginBalance != 0) ofBook(key);
  }
  return {};
}

std::size_t JournalChart::commodity(const std::string& code) {
  const auto [known, isNew] = byCode_.try_emplace(code, commodities_.size());
  if (isNew) commodities_.push_back({journalCommodity(code), currencyDigits(code)});
  return known->second;
}

std::size_t JournalChart::account(const std::string& name) {
  const auto [known, isNew] = byName_.try_emplace(name, accounts_.size());
  if (isNew) accounts_.push_back({.name = name, .width = characterCount(name), .balances = {}});
  return known->second;
}

JournalChart::Holder& JournalChart::holder(const std::string& key, int aKind) {
  const bool isBook = aKind == kBookKind;
  auto& known = isBook ? books_ : payers_;
  if (const auto found = known.find(key); found != known.end()) return found->second;
  const auto row = names_.holder(key);
  Holder made{row ? *row : MonivaAccount(root_), {}, {}, {}};
  // Keys of older stores are titles.
  if (!row) made.row.pk = made.row.title = key;
  made.row.aKind = aKind;
  const std::string parent = isBook ? "" : made.row.isDebtAccount() ? "Liabilities" : "Assets";
  made.name = taken_.below(parent, key, isBook && key.empty() ? "No book" : made.row.title);
  made.commodity = row && !row->currency.empty() ? commodity(row->currency) : ownCommodity();
  return known.emplace(key, std::move(made)).first->second;
}

bool JournalChart::isCovered(const Holder& holder) const {
  if (!request_.of) return true;
  return request_.of->isBook() == holder.row.isBook() &&
         std::ranges::find(members_, holder.row.pk) != members_.end();
}

std::size_t JournalChart::openAccount(Holder& holder) {
  if (holder.account) return *holder.account;
  holder.account = account(holder.row.isBook() ? "Equity:Books:" + holder.name : holder.name);
  JournalAccount& opened = accounts_[*holder.account];
  opened.carried = isCovered(holder);
  opened.asserted = opened.carried && !holder.row.isBook();
  if (opened.carried) {
    opened.balance(holder.commodity) = Decimal::of(holder.row.beginBalance).value_or(Decimal());
  }
  return *holder.account;
}

JournalChart::Place JournalChart::special(Special which) {
  const std::size_t id = account(std::string(kSpecialNames[static_cast<std::size_t>(which)]));
  if (which == Special::clearing || which == Special::transfers) accounts_[id].carried = true;
  return {id, std::nullopt};
}

JournalChart::Place JournalChart::ofAccount(const ExportRow& row) {
  if (row.account == "_OutsideAccount") return special(Special::outside);
  if (std::ranges::find(kNoAccounts, row.account) != std::end(kNoAccounts)) {
    return special(Special::noAccount);
  }
  Holder& held = holder(row.account, kAccountKind);
  if (balanceSign(held.row, row.type) == 0) {
    return {account(taken_.below("Equity:Untracked", row.account, held.row.title)), held.commodity};
  }
  const std::size_t own = openAccount(held);
  return {row.paid ? own : account(held.name + ":Pending"), held.commodity};
}

JournalChart::Place JournalChart::ofCategory(const ExportRow& row) {
  Holder& book = holder(row.book, kBookKind);
  const std::optional<std::size_t> kept =
      row.book.empty() ? std::nullopt : std::optional<std::size_t>(book.commodity);
  const auto [known, isNew] = filed_.try_emplace(
      fmt::format("{}\n{}\n{}\n{}", row.type, row.book, row.category, row.subcategory), std::size_t{0});
  if (!isNew) return {known->second, kept};
  const int type = row.isIncome() ? kind::kIncome : kind::kExpense;
  const auto titleOf = [&](const std::string& key) {
    const auto category = names_.category(key, type);
    return category ? category->title : key;
  };
  std::string name = fmt::format("{}:{}", row.isIncome() ? "Income" : "Expenses", book.name);
  taken_.below(name, "", "No category");
  name = taken_.below(name, row.category, titleOf(row.category));
  taken_.below(name, "", "Further");
  if (!row.subcategory.empty()) {
    name = taken_.below(name, row.subcategory, titleOf(row.subcategory));
  }
  known->second = account(row.isFurther() ? name + ":Further" : name);
  return {known->second, kept};
}

JournalChart::Place JournalChart::ofBook(const std::string& key) {
  Holder& book = holder(key, kBookKind);
  return {openAccount(book), book.commodity};
}

JournalChart::Place JournalChart::ofPerson(bool lent, const std::string& person) {
  const std::string parent = lent ? "Assets:Lent" : "Liabilities:Borrowed";
  const std::size_t id = account(taken_.below(parent, person, person.empty() ? "Nobody" : person));
  accounts_[id].carried = true;
  return {id, std::nullopt};
}

JournalChart::Place JournalChart::ofGroup(const ExportRow& row) {
  const Place clearing = special(Special::clearing);
  if (commodities_.size() == 1) return {clearing.account, 0};
  // What items and payments come to is the same figure, whatever each is kept in.
  Run run = db_.query(
      "select book from transactions where transferEID = ? and deleted = 0 and bid != 10 and"
      " type in (11, 12) and book != '' order by datetime, eid limit 1",
      {row.group});
  if (run.next()) return {clearing.account, holder(std::string(run.text(0)), kBookKind).commodity};
  return {clearing.account, ownCommodity()};
}

std::size_t JournalChart::ownCommodity() {
  const auto& book = root_.monivaAccount;
  return commodity(book ? book->currency : std::string());
}

const std::string& JournalChart::vendor(const ExportRow& row) {
  const auto [known, isNew] =
      vendors_.try_emplace(fmt::format("{}{}", row.isIncome() ? '+' : '-', row.vendor), std::string());
  if (!isNew || row.vendor.empty()) return known->second;
  const auto found = names_.vendor(row.vendor, row.type);
  if (!found) {
    known->second = journalText(row.vendor);
  } else if (!found->isNoVendor()) {
    known->second = journalText(found->title);
  }
  return known->second;
}

bool JournalChart::isLive(const ExportRow& row) {
  const int type = row.isIncome() ? kind::kIncome : kind::kExpense;
  const auto live = [&](const std::string& key) {
    const auto category = names_.category(key, type);
    return key.empty() || (category && category->deleted == 0);
  };
  return live(row.category) && live(row.subcategory);
}

std::string JournalChart::categoryTitle(const ExportRow& row) {
  const std::string& key = row.subcategory.empty() ? row.category : row.subcategory;
  const auto category = names_.category(key, row.isIncome() ? kind::kIncome : kind::kExpense);
  return category ? journalText(category->title) : "";
}

}  // namespace moniva
