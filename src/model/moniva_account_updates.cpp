#include <algorithm>
#include <boost/json.hpp>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "model/account_balance.h"
#include "model/moniva_account.h"
#include "model/title.h"
#include "model/transaction_type.h"
#include "storage/writes.h"

namespace moniva {
namespace {

std::string_view orderKey(int categoryType) {
  return categoryType == kind::kIncome ? "incomeCategoryOrderType" : "expenseCategoryOrderType";
}

}  // namespace

Result<> MonivaAccount::update(std::string_view sql, const Value& value) {
  auto written = write(*root_, sql, value, root_->editStamp(), root_->itsUDID(), pk);
  if (!written) return written;
  edited = true;
  tellCurrentBook();
  return {};
}

Result<> MonivaAccount::updateOption(std::string_view key, std::string_view value) {
  auto changed = expandOptionDict;
  changed[boost::json::string_view(key.data(), key.size())] =
      boost::json::string_view(value.data(), value.size());
  auto written = update("update account set expandOption = ?, editDate = ?, edit_ipid = ? where oldTitle = ?",
                        boost::json::serialize(changed));
  if (written) expandOptionDict = std::move(changed);
  return written;
}

void MonivaAccount::tellCurrentBook() const {
  const auto& current = root_->monivaAccount;
  if (!current || current->pk != pk) return;
  current->getInfo();
  current->saveToLocal();
}

Result<> MonivaAccount::updateTitle(std::string_view newTitle) {
  if (newTitle == title) return refuse("'{}' is its title already", title);
  if (auto usable = checkTitle(newTitle, isBook() ? phrase("a book") : phrase("a payment account")); !usable)
    return usable;
  const auto other = withTitle(*root_, aKind, newTitle);
  if (other && other->isDeleted == 0 && other->pk != pk)
    return isBook() ? refuse("there is a book '{}' already", newTitle)
                    : refuse("there is an account '{}' already", newTitle);
  auto written =
      update("update account set title = ?, editDate = ?, edit_ipid = ? where oldTitle = ?", newTitle);
  if (written) title = newTitle;
  return written;
}

Result<> MonivaAccount::updateNote(std::string_view newNote) {
  auto written =
      update("update account set note = ?, editDate = ?, edit_ipid = ? where oldTitle = ?", newNote);
  if (written) note = newNote;
  return written;
}

Result<> MonivaAccount::updateBeginBalance(double balance) {
  if (!std::isfinite(balance)) return refuse("an opening balance is a number");
  MonivaAccount changed = *this;
  auto written = atomically(*root_, [&](Connection&) -> Result<> {
    changed.beginBalance = balance;
    auto kept = changed.update(
        "update account set beginBalance = ?, editDate = ?, edit_ipid = ? where oldTitle = ?", balance);
    if (!kept) return kept;
    return countTheTotalBalance(changed);
  });
  if (written) *this = std::move(changed);
  return written;
}

Result<> MonivaAccount::updateType(std::string_view type) {
  MonivaAccount changed = *this;
  changed.setType(type);
  if (isBook() != (type == "_Book") || (isAccount() && changed.isOtherAccount()))
    return isBook() ? refuse("'{}' is no kind of book", type) : refuse("'{}' is no kind of account", type);
  auto written =
      write(*root_,
            "update account set type = ?, expandOption = ?, editDate = ?, edit_ipid = ? where "
            "oldTitle = ?",
            type, boost::json::serialize(changed.expandOptionDict), root_->editStamp(), root_->itsUDID(), pk);
  if (!written) return written;
  *this = std::move(changed);
  edited = true;
  tellCurrentBook();
  return {};
}

Result<> MonivaAccount::updateTrackingType(int code) {
  const bool fits =
      isBook() ? code == 1112 || code == 11 || code == 12 : code == 1050 || code == 2312 || code == 12;
  if (!fits)
    return isBook() ? refuse("{} is no tracking type of a book", code)
                    : refuse("{} is no tracking type of an account", code);
  MonivaAccount changed = *this;
  auto written = atomically(*root_, [&](Connection&) -> Result<> {
    changed.trackingType = code;
    auto kept =
        write(*root_,
              "update account set expandOption = ?, incomeEnabled = ?, editDate = ?, edit_ipid = ? "
              "where oldTitle = ?",
              boost::json::serialize(expandOptionDict), code, root_->editStamp(), root_->itsUDID(), pk);
    if (!kept) return kept;
    return countTheTotalBalance(changed);
  });
  if (!written) return written;
  *this = std::move(changed);
  edited = true;
  tellCurrentBook();
  return {};
}

Result<> MonivaAccount::updateWeekStartsOn(int day) {
  if (day < 1 || day > 7) return refuse("a week begins on weekday 1 (Sunday) to 7 (Saturday), not {}", day);
  auto written =
      update("update account set weekStartsOn = ?, editDate = ?, edit_ipid = ? where oldTitle = ?", day);
  if (written) weekStartsOn = day;
  return written;
}

Result<> MonivaAccount::updateMonthStartsOn(int day) {
  if (day == 0 || std::abs(day) > 31)
    return refuse("a month begins on day 1 to 31, or -1 to -31, not {}", day);
  auto written =
      update("update account set monthStartsOn = ?, editDate = ?, edit_ipid = ? where oldTitle = ?", day);
  if (written) monthStartsOn = day;
  return written;
}

Result<> MonivaAccount::updateYearStartsOn(int month) {
  if (month == 0 || std::abs(month) > 12)
    return refuse("a year begins in month 1 to 12, or -1 to -12, not {}", month);
  auto written =
      update("update account set yearStartsOn = ?, editDate = ?, edit_ipid = ? where oldTitle = ?", month);
  if (written) yearStartsOn = month;
  return written;
}

const std::vector<std::string_view>& MonivaAccount::overviewStyles() {
  static const std::vector<std::string_view> styles = {
      "BookDashboardControllerV1", "BookDashboardModernControllerV1", "BookDashboardModernControllerV2",
      "BookDashboardPadController"};
  return styles;
}

Result<> MonivaAccount::updateOverViewUI(std::string_view style) {
  if (!isBook()) return refuse("'{}' is no book, so it has no dashboard", title);
  if (std::ranges::find(overviewStyles(), style) == overviewStyles().end())
    return refuse("'{}' is no dashboard style", style);
  return updateOption("overviewUI", style);
}

Result<> MonivaAccount::updateShowProfitForSummary(bool shows) {
  auto written = updateOption("showProfitForSummary", shows ? "1" : "0");
  if (written) showProfitForSummary = shows ? "1" : "0";
  return written;
}

bool MonivaAccount::repayNotificationEnabled() const {
  const auto* kept = expandOptionDict.if_contains("notificationEnabled");
  return kept != nullptr && kept->is_string() && kept->get_string() == "1";
}

Result<> MonivaAccount::updateRepayNotificationEnabled(bool on) {
  if (!isDebtAccount())
    return refuse("'{}' is no credit account, so there is no repayment to remind of", title);
  return updateOption("notificationEnabled", on ? "1" : "0");
}

int MonivaAccount::dueDay() const {
  const auto* kept = expandOptionDict.if_contains("dueDay");
  if (kept == nullptr || !kept->is_string()) return 0;
  const std::string_view text = kept->get_string();
  int day = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), day);
  return error == std::errc() && end == text.data() + text.size() && day >= 1 && day <= 31 ? day : 0;
}

Result<> MonivaAccount::updateDueDay(int day) {
  if (!isDebtAccount()) return refuse("'{}' is no credit account, so it has no bills to pay", title);
  if (day < 0 || day > 31) return refuse("bills are due on day 1 to 31, not {}", day);
  return updateOption("dueDay", day == 0 ? "" : std::to_string(day));
}

std::string MonivaAccount::getCategoryOrder(int type) const {
  const std::string key(orderKey(type));
  const auto* mode = expandOptionDict.if_contains(key);
  return mode != nullptr && mode->is_string() ? std::string(mode->get_string()) : "0";
}

Result<> MonivaAccount::setCategoryOrder(std::string_view mode, int type) {
  return updateOption(orderKey(type), mode);
}

bool MonivaAccount::updateTotalBalance(double balance) {
  totalBalance = balance;
  return root_->executeUpdate("update account set totalBalance=? where oldTitle=?", balance, pk);
}

bool MonivaAccount::addToTotalBalance(double amount) {
  totalBalance += amount;
  return root_->executeUpdate("update account set totalBalance=totalBalance+? where oldTitle=?", amount, pk);
}

}  // namespace moniva
