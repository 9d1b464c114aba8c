#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "model/photos.h"
#include "model/record_names.h"
#include "model/transaction_type.h"
#include "storage/value.h"

namespace moniva {

/// How a row was understood when it was loaded.
enum class RecordKind {
  plain,
  recordTemplate,
  installmentSeed,  ///< a plan or a spread cost as a whole
  repeatSeed,
  costItem,
  costInstallmentItem,  ///< a share of a cost that is paid in instalments
  cartItem,
  installmentItem,
  singleItem,  ///< the one item of a record with payments
  debt,        ///< money lent or borrowed, or a repayment
  transfer,
  installmentPayment,
  cartPayment,
  spendPayment,
  costPayment,
  purePayment,    ///< of no record
  unknownPayment  ///< of a group that is none of those; its note says what is known
};

/// The uniform view of one row of `transactions`, for lists, reports and search. Editing is for the class of
/// its kind (`Spend`, `Transfer`, `Payment`, `Debt`).
class MVTransaction {
 public:
  explicit MVTransaction(MVAppRoot& root);

  int deleted = 0;
  bool createdByTemplate = false;
  bool paid = true;
  bool isPayment = false;
  int advancedType = advanced::kPlain;
  std::string eid;
  Date editedDate;
  /// When it was entered, as far as its identifier tells; else when it was edited last.
  Date addedDate;
  double amount = 0;
  /// Of the account, or of the book without one.
  std::string currency;
  std::string foreignCurrency;
  double foreignAmount = 0;
  Date datetime;
  std::string timeZone;
  std::string note;
  /// Null for none; so are the others.
  std::shared_ptr<const MonivaAccount> paymentAccount;
  Date payDate;
  std::shared_ptr<const MVCategory> mvCategory;
  std::shared_ptr<const MonivaAccount> bookAccount;
  std::shared_ptr<const Vendor> vendor;
  std::string transferEID;
  /// The other side of a transfer.
  std::shared_ptr<const MonivaAccount> paymentAccountB;
  std::string repeat{kNotRepeat};
  std::string repeatSeed;
  Date repeatEndDate;
  Date repeatBeginDate;
  /// Who borrowed or lent.
  std::string people;
  // As lists show it, in the person's language: "Food - Bakery"; the note, "Cash > Bank", "Lend to : Ann";
  // the vendor's title.
  std::string categoryString;
  std::string noteString;
  std::string vendorString;
  int templateUsedTimes = 0;
  RecordKind recordKind = RecordKind::plain;

  int type() const { return type_; }
  /// Where no vendor is set it becomes the entry for no vendor of that type.
  void setType(int type);

  // Loading; nothing when there is no such row. Names that are given serve many loads. Reading mends what
  // cannot be: an item without a role gets it, and a plain record of a day ahead is pending.
  static std::optional<MVTransaction> transactionFromEID(MVAppRoot& root, std::string_view eid,
                                                         RecordNames* names = nullptr);
  static std::optional<MVTransaction> transactionFromTemplateShortcut(MVAppRoot& root, std::string_view url);
  /// The item of that group.
  static std::optional<MVTransaction> transactionFromConnectUUID(MVAppRoot& root, std::string_view uuid);
  /// Hands the rows that a condition on `transactions` selects, in the order it gives, to `take` one by one,
  /// loaded by one statement: "book = ? and deleted = 0 order by datetime". Refused when it cannot be read.
  static Result<> transactionsWhere(MVAppRoot& root, std::string_view condition,
                                    std::span<const Value> arguments,
                                    const std::function<void(MVTransaction)>& take,
                                    RecordNames* names = nullptr);
  /// Fills the object from the row of `eid`; false when there is none.
  bool getAllValue(RecordNames& names);

  /// Deletes the record the row belongs to, and brings it back: by `Debt`, `Transfer` or `Spend`. A debt
  /// follows what becomes of its repayments.
  Result<> delete_();
  Result<> restore();
  /// Not for a debt that has repayments.
  bool editable() const;
  bool isTransfer() const { return type_ == kind::kTransferIn || type_ == kind::kTransferOut; }
  bool isDebt() const { return type_ == kind::kBorrowed || type_ == kind::kLent; }
  bool isRepayment() const { return type_ == kind::kRepaidToUs || type_ == kind::kRepaidByUs; }
  bool repeats() const { return !repeat.empty() && repeat != kNotRepeat; }
  /// Whether it makes records of a series, or is one of them.
  bool isRepeatSeed() const { return repeats() && repeatSeed.empty(); }
  bool isRepeatItem() const { return !repeatSeed.empty(); }

  // Photos of a record; see photos.h.
  static Result<std::vector<std::string>> getImagesForTransID(MVAppRoot& root, const std::string& eid);
  static Result<std::vector<std::string>> saveImages(MVAppRoot& root, const std::vector<ImageFile>& images,
                                                     const std::string& eid);
  static Result<> deleteImages(MVAppRoot& root, const std::vector<std::string>& names,
                               const std::string& eid);
  static Result<> deleteImage(MVAppRoot& root, const std::string& name, const std::string& eid);

  MVAppRoot& root() const { return *root_; }

 private:
  friend class TransactionLoader;

  MVAppRoot* root_;
  int type_ = kind::kExpense;
};

}  // namespace moniva
