#pragma once

#include <map>
#include <memory>
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
  explicit ReminderTexts(MVAppRoot& root) : root_(root), names_(root) {}

  /// "[Home] Food", "Food - Bakery €12.50 on Nov 27, 2026". What a transaction lacks is left out.
  /// What stands on no row of a record with payments is taken from the others: the currency from its
  /// accounts; book and category of a payment from the first item.
  ReminderText ofRecord(const MVTransaction& transaction, Date due);
  /// "Due Date", "[Visa] Nov 27, 2026：5 days left."
  ReminderText ofRepayment(const MonivaAccount& account, Date due, int daysLeft) const;

 private:
  /// What the rows of a record have in common.
  struct Record {
    std::string currency;
    std::string category;
    std::shared_ptr<const MonivaAccount> book;
  };

  std::string money(double amount, const std::string& currency);
  /// Null for a row that stands by itself.
  const Record* recordOf(const MVTransaction& transaction);

  MVAppRoot& root_;
  RecordNames names_;
  std::map<std::string, Record> records_;  ///< by the UUID that joins the rows
  std::optional<AmountFormat> format_;
};

}  // namespace moniva
