#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "model/transaction_item.h"

namespace moniva {

/// The editor of one payment: which account pays how much and when, and whether it is paid yet. It is part of
/// a group, whose items say what it pays for, or stands by itself.
///
/// What the items of a group come to and what its payments come to is the same at all times. What no payment
/// covers is held by the group's rest: one pending payment without an account, which gives way to the
/// payments that are added and takes up what others leave. Changes are refused, with nothing written, where
/// the payments would come to more than the items, for amounts and dates that are none, and by what the store
/// refuses.
class Payment {
 public:
  explicit Payment(MVAppRoot& root);

  bool edited = false;
  bool isNewOne = true;
  std::string eid;
  /// Of a payment that stands by itself; one of a group has none, as its items have theirs.
  std::string book;
  int type = kind::kExpense;
  double amount = 0;
  Date datetime;
  std::string timeZone;
  /// Blank while no account is chosen.
  std::string account;
  std::string note;
  bool paid = true;
  std::string connectionUUID;
  int advancedType = advanced::kPlain;
  /// How much of the amount is a fee.
  double serviceFeeAmount = 0;
  std::string repeatSeed;
  /// Key of the category that all items of the group have in common.
  std::string category;
  /// When it is due; the payment's date unless it is set.
  Date payDate;
  int isDeleted = 0;

  /// The payment of that `eid`; nothing when there is none or it is no payment. A row of no role is left to
  /// the repairs, which are asked for.
  static std::optional<Payment> paymentFromEID(MVAppRoot& root, std::string_view eid);
  /// The first payment of the group.
  static std::optional<Payment> paymentFromUUID(MVAppRoot& root, std::string_view uuid);
  /// Whether the group has a pending payment without an account.
  static Result<bool> hasPendingPayment(MVAppRoot& root, std::string_view uuid);

  /// Writes the payment by itself or as one of its group, whose rest it takes; more than that is refused.
  Result<> add();
  /// The same for the payment of an expense or income that may be a plain one yet: that becomes a group.
  Result<> addNew(std::string_view itemEid);
  /// `add` for a new one, else `update`.
  Result<> save();
  /// Takes the payment away: one by itself can be restored; what one of a group paid is the group's rest
  /// again. The rest itself and instalments are not to be taken away.
  Result<> delete_();
  /// Brings back one that stood by itself.
  Result<> restore();

  Result<> updateAmount(double newAmount);
  /// Blank for none.
  Result<> updateAccount(const std::string& newAccount);
  Result<> updateNote(const std::string& newNote);
  /// The book of a payment that stands by itself; for one of a group only the category follows its items.
  Result<> updateBook(const std::string& newBook);
  /// The date with its day, and pending where it lies ahead.
  Result<> updateDate(Date date);
  /// Marks it paid; refused for one that lies ahead.
  Result<> paidIt();
  Result<> unpaidIt();
  /// Writes all fields.
  Result<> update();

  /// Writes the row as it is, for callers that see to its group and to the balances.
  Result<> insert();

  MVAppRoot& root() const { return *root_; }

 private:
  Result<> setPaid(bool isPaid);
  template <class Work>
  Result<> change(Work work);

  MVAppRoot* root_;
};

}  // namespace moniva
