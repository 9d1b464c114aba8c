#pragma once

#include <map>
#include <optional>
#include <string>

#include "currency/amount_format.h"
#include "model/mv_transaction.h"

// What reminders say, in the person's language.
namespace moniva {

struct ReminderText {
  std::string title;
  std::string message;
};

/// The texts of reminders; what several have in common is made once.
class ReminderTexts {
 public:
  explicit ReminderTexts(MVAppRoot& root) : root_(root) {}

  /// "[Home] Food", "Food - Bakery €12.50 on Nov 27, 2026". What a transaction lacks is left out.
  ReminderText ofBill(const MVTransaction& transaction, Date due);
  /// "Due Date", "[Visa] Nov 27, 2026：5 days left."
  ReminderText ofRepayment(const MonivaAccount& account, Date due, int daysLeft) const;

 private:
  std::string money(double amount, const std::string& currency);

  MVAppRoot& root_;
  std::optional<AmountFormat> format_;
};

}  // namespace moniva
