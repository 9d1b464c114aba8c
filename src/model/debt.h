#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "model/transaction_type.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// A row that repays a debt, wholly or in part; in the debt's currency.
struct DebtRepayment {
  std::string eid;
  double amount = 0;
  Date datetime;
  std::string note;
  std::string account;  ///< key; blank for none
};

/// What became of money that changed hands with a person: it repaid open debts, one row each, and what was
/// left of it is a debt by itself.
struct DebtOutcome {
  struct Part {
    std::string eid;   ///< of the repayment
    std::string debt;  ///< of the debt it repays
    double amount = 0;
    bool settles = false;
  };
  std::vector<Part> repaid;
  double repaidAmount = 0;
  double remainder = 0;
  std::string debt;  ///< `eid` of the debt the remainder is; blank where there is none
};

/// Money borrowed from a person (type 24) or lent to one (34), and what was paid back of it. Older data keeps
/// debts as income or expense of certain books; such a row is found and repaid like any other.
class Debt {
 public:
  explicit Debt(MVAppRoot& root);

  std::string eid;
  bool repaidFinished = false;
  /// Whether it is yet to be added.
  bool isNewOne = true;
  /// Above zero, in `currency`.
  double amount = 0;
  /// With `repaidList`, as `getRepaid` found them.
  double repaidAmount = 0;
  int type = kind::kBorrowed;
  /// When the money changed hands: never later than today.
  Date datetime;
  /// That of the account; of a debt without one that of the current book. Follows from them, is not written.
  std::string currency;
  /// Key of the account the money went into or came from; blank for none.
  std::string paymentAccount;
  std::string note;
  std::string person;
  std::vector<DebtRepayment> repaidList;
  std::string timeZone;
  int isDeleted = 0;

  /// The debt of that `eid`, a deleted one too; nothing for a row that is no debt.
  static std::optional<Debt> debtFromEID(MVAppRoot& root, std::string_view eid);
  /// The debt that the repayment of that `eid` is for.
  static std::optional<Debt> debtOfRepayment(MVAppRoot& root, std::string_view repayment);
  /// The debts in use, with what was repaid of each, by direction (borrowed first), person and date: of all
  /// persons for a blank one.
  enum class Which { open, settled, all };
  static Result<std::vector<Debt>> list(MVAppRoot& root, Which which, std::string_view person = {});
  /// How many of them there are, of all persons.
  static Result<std::int64_t> count(MVAppRoot& root, Which which);
  /// The names of all persons with debts in use.
  static Result<std::vector<std::string>> people(MVAppRoot& root);

  /// Whether the person has an open debt of the type.
  static bool hasDebt(MVAppRoot& root, int type, std::string_view with);
  /// The person's open debts of a direction, the latest first, and the sum of their full amounts. Of what is
  /// borrowed the list takes in older rows of "BorrowBook", the sum those of "DebtBook".
  struct Open {
    std::string eid;
    double amount = 0;
  };
  static Result<std::vector<Open>> openDebts(MVAppRoot& root, int type, std::string_view person);
  static Result<double> sumOfOpenDebts(MVAppRoot& root, int type, std::string_view person);

  bool isBorrowed() const { return type == kind::kBorrowed || type == kind::kIncome; }
  /// What is still to be repaid, by `repaidAmount`.
  double owed() const;

  /// Whether a new debt is set against what the person owes the other way.
  enum class Offsetting { againstOpenDebts, apart };
  /// Adds the debt. What the person owes the other way, in the same currency, is repaid with it first, oldest
  /// first; only what is left is a debt, and `eid` and `amount` are its own then. Refused: an amount, a
  /// person or a date that will not do, an account that is not there or does not track debts.
  Result<DebtOutcome> add(Offsetting offsetting = Offsetting::againstOpenDebts);
  /// Writes amount, note, person, date and account. Refused as by `add`, and for one that was repaid in part.
  Result<> update();
  /// Whether it may be changed: nothing of it was repaid. Reads the repayments.
  bool editable();
  /// Deletes the debt with its repayments; answers the keys of the accounts touched.
  Result<std::vector<std::string>> delete_();
  /// Brings a deleted debt back with the repayments that went with it.
  Result<> restore();

  /// Reads `repaidList`, oldest first, and `repaidAmount`; false when they cannot be read.
  bool getRepaid();
  /// Repays this debt; what is beyond it goes to the person's other open debts of the type and currency,
  /// oldest first, and what is beyond those becomes a debt of the other direction. The account, by key, may
  /// be blank; one in another currency is refused.
  Result<DebtOutcome> repaid(double sum, Date date, const std::string& remark, const std::string& account);
  /// The same without naming the debt: one of exactly the amount of which nothing was repaid comes first.
  /// Refused without an account when the person's debts are in several currencies.
  static Result<DebtOutcome> repaidTo(MVAppRoot& root, const std::string& person, int type, double amount,
                                      Date date, const std::string& note, const std::string& account);
  /// Removes a repayment of this debt, which is open again then.
  Result<> deleteRepay(std::string_view repayment);

 private:
  MVAppRoot* root_;
};

/// Makes the settled flag of a debt what its repayments in use say; writes only when that changes it.
Result<> recountSettled(MVAppRoot& root, std::string_view debtEid);
/// Refused when bringing back a deleted repayment would repay more than is owed, or its debt is not there.
Result<> checkRepaymentFits(MVAppRoot& root, std::string_view repaymentEid);

}  // namespace moniva
