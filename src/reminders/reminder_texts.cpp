#include "reminders/reminder_texts.h"

#include <initializer_list>
#include <string_view>

#include "base/text.h"
#include "calendar/date_texts.h"
#include "model/record_list.h"

namespace moniva {
namespace {

/// The form with its places ("%@") filled in their order; one that stays blank takes the space after it
/// along.
std::string withPlaces(std::string_view form, std::initializer_list<std::string_view> fillings) {
  std::string text;
  for (const auto filling : fillings) {
    const auto place = form.find("%@");
    if (place == std::string_view::npos) break;
    text.append(form.substr(0, place)).append(filling);
    form.remove_prefix(place + 2);
    if (filling.empty() && form.starts_with(' ')) form.remove_prefix(1);
  }
  return text.append(form);
}

const char* nameOf(const MVTransaction& transaction) {
  if (transaction.isTransfer() || transaction.paymentAccountB) return toTranslate("Transfer");
  if (transaction.isPayment) return toTranslate("Payment");
  const int type =
      transaction.recordKind == RecordKind::repeatSeed ? transaction.advancedType : transaction.type();
  return type == kind::kIncome || type == kind::kFurtherIncome ? toTranslate("Income")
                                                               : toTranslate("Expense");
}

std::string firstOf(std::initializer_list<std::string_view> texts) {
  for (const auto text : texts) {
    if (!text.empty()) return std::string(text);
  }
  return {};
}

}  // namespace

std::string ReminderTexts::money(double amount, const std::string& currency) {
  if (!format_) {
    auto made = AmountFormat::make(root_.calendar().locale());
    if (!made) return fmt::format("{} {}", currency, amount);
    format_.emplace(std::move(*made));
  }
  return format_->format(amount, currency);
}

const ReminderTexts::Record* ReminderTexts::recordOf(const MVTransaction& transaction) {
  const int type = transaction.type();
  if (transaction.transferEID.empty() || (type != kind::kIncome && type != kind::kExpense)) return nullptr;
  const auto [known, isNew] = records_.try_emplace(transaction.transferEID);
  Record& record = known->second;
  if (!isNew) return &record;
  const auto whole = RecordWhole::of(root_, transaction.eid);
  if (!whole || !*whole) return &record;
  record.currency = (*whole)->currency(names_);
  const auto& items = (*whole)->group.items;
  const auto item =
      items.empty() ? std::nullopt : MVTransaction::transactionFromEID(root_, items.front().eid, &names_);
  if (item) {
    record.category = item->categoryString;
    record.book = item->bookAccount;
  }
  return &record;
}

ReminderText ReminderTexts::ofRecord(const MVTransaction& transaction, Date due) {
  const Platform& platform = root_.platform();
  const Record* record = recordOf(transaction);
  const bool isPart = record != nullptr && transaction.isPayment;
  const auto& book = isPart && record->book ? record->book : transaction.bookAccount;
  const auto& holder = book ? book : transaction.paymentAccount;
  // A row with an account has its currency.
  const bool asRecord = record != nullptr && !transaction.paymentAccount && !record->currency.empty();
  const auto& currency = asRecord ? record->currency : transaction.currency;
  const bool hasVendor = transaction.vendor && !transaction.vendor->isNoVendor();
  const std::string vendor = hasVendor ? transaction.vendorString : std::string();
  // Of a debt or transfer this is who and between what.
  const std::string note = excerpt(transaction.noteString);
  const std::string category = firstOf(
      {isPart ? record->category : "", transaction.categoryString, platform.localized(nameOf(transaction))});
  const std::string more = firstOf({vendor, note});
  ReminderText text;
  text.title = holder ? withPlaces(platform.localized("[%@] %@"), {holder->title, category}) : category;
  text.message = withPlaces(
      platform.localized("%@ - %@ %@ on %@"),
      {category, more, money(transaction.amount, currency), stringOfDateMediumStyle(root_.calendar(), due)});
  return text;
}

ReminderText ReminderTexts::ofRepayment(const MonivaAccount& account, Date due, int daysLeft) const {
  const Platform& platform = root_.platform();
  const std::string remaining =
      daysLeft > 0 ? withPlaces(platform.localized("%@ days left."), {std::to_string(daysLeft)})
                   : platform.localized("The repayment must be made today.");
  return {platform.localized("Due Date"),
          withPlaces(platform.localized("[%@] %@：%@"),
                     {account.title, stringOfDateMediumStyle(root_.calendar(), due), remaining})};
}

}  // namespace moniva
