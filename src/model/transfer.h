#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "model/repeat_rule.h"
#include "model/transaction_type.h"
#include "storage/connection.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// Which transfers a list has.
struct TransferQuery {
  std::string account;  ///< key of an account on either side; blank for all
  std::optional<Date> from;
  std::optional<Date> to;  ///< the last moment that counts
  bool deleted = false;    ///< those the user deleted instead of those there are
  std::int64_t limit = -1;
};

/// Money moved from account A to account B: two payment rows that share a connection UUID, side A (type 33)
/// and side B (type 23). Accounts are given by key.
///
/// A service charge is part of what leaves A. Between accounts of one currency it is what A's amount is above
/// B's; across currencies each row carries in `amount2` what the other side's money was in its own view, B's
/// without the charge, so it is what A's amount is above B's `amount2`.
class Transfer {
 public:
  explicit Transfer(MVAppRoot& root);

  bool isNew = true;
  /// Tag of the code path that wrote the rows; "createdByTemplate" for one made from a template.
  std::string ipid;
  std::string accountA;
  std::string accountB;
  std::string eidA;
  std::string eidB;
  /// In A's currency, 0 or above.
  double serviceCharge = 0;
  /// Each side in its account's currency, A's with the charge; above zero.
  double amountA = 0;
  double amountB = 0;
  /// Whether the two accounts keep different currencies; each row then carries the other side's amount too.
  bool acrossCurrencies = false;
  Date datetime;
  std::string timeZone;
  std::string note;
  std::string connectUUID;
  int advancedType = advanced::kPlain;
  bool paid = true;
  /// Whether this object has changed the transfer since it was loaded.
  bool edited = false;
  std::string repeat{kNotRepeat};
  /// The seed of the series it belongs to; blank for none.
  std::string repeatSeed;
  Date repeatEndDate;
  /// 0 unless one side at least is deleted.
  int isDeleted = 0;
  /// Whether one side went when its account was cleared, and the other is there.
  bool isHalf() const { return (deletedA_ == 0) != (deletedB_ == 0); }
  /// The template it was made from or saved as; blank for none.
  std::string templateEID;

  // The transfer of that A row, B row, either row, or connection UUID; nothing unless both sides are there.
  // One that is deleted is found where there is no live one.
  static std::optional<Transfer> transferFromEIDA(MVAppRoot& root, std::string_view eid);
  static std::optional<Transfer> transferFromEIDB(MVAppRoot& root, std::string_view eid);
  static std::optional<Transfer> transferFromEID(MVAppRoot& root, std::string_view eid);
  static std::optional<Transfer> transferFromUUID(MVAppRoot& root, std::string_view uuid);
  /// A new transfer as the seed of a series has it, dated as the seed is, with the rule and its end; `add`
  /// makes it an occurrence of the series. Nothing when there is no such seed.
  static std::optional<Transfer> transferFromSeed(MVAppRoot& root, std::string_view eid);
  /// The transfers asked for, the latest first.
  static Result<std::vector<Transfer>> list(MVAppRoot& root, const TransferQuery& query);
  /// How many live sides of transfers the account of that key has.
  static Result<std::int64_t> countOf(MVAppRoot& root, std::string_view account);

  /// Writes both rows or none. Blank identifiers are made. One with a rule and without a seed gets the seed
  /// of its series first and is the first occurrence of it. Refused, with nothing written: accounts that are
  /// no accounts of the store or the same, amounts that are not above zero, a date that is none, a charge
  /// below zero or one that does not fit the amounts, a rule that is none.
  Result<> add();
  /// The same as an occurrence of the series of that seed, or of none when it is blank; no seed is written.
  Result<> add(std::string_view seed);
  /// Writes the seed of its series alone, dated as the transfer is; its `eid` is in `repeatSeed` then.
  /// Refused is what `add` refuses.
  Result<> addRepeatSeed();
  /// What `add` refuses. A charge that follows from the amounts is set.
  Result<> check();
  /// Writes both rows as they are, within the transaction of a caller that has checked them.
  Result<> insert(std::string_view seed);

  /// Deletes what is live of the transfer, both sides together; refused when nothing is.
  Result<> delete_();
  /// Brings back the sides the user deleted; refused when there are none.
  Result<> restore();

  // Each writes its change to both rows, with what depends on it, and keeps it in the object. Refused in
  // words, with nothing changed, is what `add` refuses, and a transfer that is not in the store.

  /// Where the new account makes the two currencies differ, each row gets the other's amount; where it makes
  /// them the same, what left A without the charge arrives in B. Amounts are not converted.
  Result<> updateAccountA(const std::string& account);
  Result<> updateAccountB(const std::string& account);
  /// What leaves A, with the charge: across currencies it stays what it is, in one currency it is what leaves
  /// above what arrives. Refused where the charge would be below zero, or all there is.
  Result<> updateAmountA(double amount);
  /// What arrives in B. In one currency the charge follows, as of `updateAmountA`.
  Result<> updateAmountB(double amount);
  /// What is moved, in A's currency, the charge on top of it as it is: what leaves A and, in one currency,
  /// what arrives in B.
  Result<> updateMoved(double amount);
  /// What arrives stays; A's amount follows.
  Result<> updateServiceCharge(double charge);
  /// The date is in the user's present zone; whether the transfer is settled follows from it.
  Result<> updateDate(Date date);
  Result<> updateNote(const std::string& text);
  /// The rule of its series, with the last date allowed (`Date{}` for none). One without a series becomes the
  /// first occurrence of a new one; "Not Repeat" stops the series there is.
  Result<> updateRepeat(const std::string& rule, Date endDate);

  /// Whether it is a live occurrence of a series, as the store has it.
  bool isRepeatItem() const;
  /// Whether another live seed says the same as the one of this transfer, or as the one it would get.
  bool hasDuplicateRepeatSeed() const;
  /// Ends its series; what the series has made stays. Refused without a series.
  Result<> stopRecurring();
  /// The B rows of its connection UUID.
  std::vector<std::string> getEidBArray() const;

  /// The shortcut ("templateURL") and the title of its template; nothing without one.
  std::optional<std::string> getShortcut() const;
  std::optional<std::string> getTemplateTitle() const;
  /// A new transfer as the live template of that shortcut has it; nothing when there is none.
  static std::optional<Transfer> transferFromTemplateShortcut(MVAppRoot& root, std::string_view shortcut);
  /// Records the transfer, which was made from a template, marks its rows and counts the use.
  Result<> addTransferFromTemplate();
  /// Whether another live template than its own has that title.
  bool hasSameTemplate(std::string_view title) const;
  /// Keeps it as a template; refused for a title that will not do or is another one's.
  Result<> addTemplate(const std::string& title);
  /// Writes it, under that title, over the template it was made from or saved as.
  Result<> updateTemplate(const std::string& title);

 private:
  template <class Work>
  Result<> change(Work&& work);

  static std::optional<Transfer> loaded(MVAppRoot& root, std::string_view uuid, std::string_view eidA,
                                        std::string_view eidB);
  void readSide(const Run& run, bool isA);
  Result<> addSeed(const std::string& eid) const;
  Result<> addSide(int type, const std::string& eid, double amount, const std::string& account,
                   const std::string& other, std::string_view seed) const;
  Result<> updateAccount(const std::string& account, bool ofA);
  /// What was moved, in A's currency: what left A without the charge.
  double moved() const;

  MVAppRoot* root_;
  int deletedA_ = 0;
  int deletedB_ = 0;
};

/// The currency of a payment account that a transfer may name; refused for keys that name none.
Result<std::string> currencyOfAccount(MVAppRoot& root, std::string_view key);

}  // namespace moniva
