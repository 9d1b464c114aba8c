#pragma once

#include <boost/json/object.hpp>
#include <string>
#include <vector>

#include "model/record_list.h"
#include "ui/cli/session.h"

namespace moniva {

/// How answers and lists name what an expense or income is, in the person's language.
class RecordTexts {
 public:
  /// Both have to outlive the object.
  RecordTexts(Session& session, RecordNames& names, const RecordWhole& whole);
  /// The same with amounts in that currency; a blank one stands for the default one.
  RecordTexts(Session& session, RecordNames& names, const RecordWhole& whole, std::string currency);

  const RecordWhole& whole() const { return whole_; }
  /// An amount in the record's currency: "€12.50".
  std::string money(double amount) const;
  /// What the record comes to, with what it was in another currency: "€18.40 (USD 20.00)".
  std::string amount() const;
  // Of all items, each once; blank for none: "Food - Bakery, Rent".
  std::string categories() const;
  std::string vendors() const;
  std::string books(std::string_view quote) const;
  /// "Cash"; "" for no account.
  std::string account(const std::string& key) const;
  /// "Cash, Checking"; the rest is no account.
  std::string accounts() const;
  /// The text beside the amount of a list: the vendor, or the note.
  std::string vendorOrNote() const;
  /// "pending", "cart, 3 items", "3/12 paid", "refunded €5.00", as far as they apply: "cart, 3 items; €5.00
  /// open".
  std::string marks() const;

  /// "an expense €12.50", "a cart of 3 items, €30.00".
  std::string noun() const;
  /// What follows it, up to the full stop: ", Food, paid from Cash, on Jun 15, 2024 12:00, in 'Home'."
  std::string details() const;
  /// " €5.00 is still to be paid."; "" where nothing is.
  std::string stillOpen() const;
  /// " 'Home' is kept in EUR; the amount counts there as it stands.", for each book and account of another
  /// currency.
  std::string currencyNotes() const;
  /// noun() and details().
  std::string described() const { return noun() + details(); }
  /// What the row of that `eid` is: one item, instalment or share, and what the whole comes to; else the
  /// whole. With what is still to be paid.
  std::string now(const std::string& eid) const;

 private:
  std::string day() const;
  std::string dates() const;
  std::string paidFrom() const;

  Session& session_;
  RecordNames& names_;
  const RecordWhole& whole_;
  std::string currency_;
};

/// The record that the row typed is part of, by its `eid`; ends the command where there is none, with what it
/// is instead.
RecordWhole wholeRecord(Session& session, const std::string& eid);
/// " (USD 20.00)": what an amount was in another currency; "" for none.
std::string foreignText(Session& session, double amount, const std::string& code);
/// "Jun 15, 2024".
std::string shortDate(Session& session, Date date);

/// The row under the names of its fields as an item or as a payment.
boost::json::object jsonOf(Session& session, RecordNames& names, const TransactionItem& row);
/// The record: the row that stands for it, its photos, and of a compound one its items and payments.
boost::json::object jsonOf(Session& session, RecordNames& names, const RecordWhole& whole);

/// Ends a command that has changed the record of that row: its JSON, or the sentence that `say` makes of the
/// record as it is now.
void answerChanged(Session& session, const std::string& eid,
                   const std::function<std::string(const RecordTexts&)>& say);

}  // namespace moniva
