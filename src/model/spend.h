#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/result.h"
#include "model/payment.h"
#include "model/photos.h"
#include "model/transaction_item.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// The editor of expenses (type 12) and income (type 11). A plain one is a single item row. A compound one is
/// a group of rows that share a connection UUID: items (what was bought or earned, in which book) and
/// payments (which account paid how much); what the items come to is what the payments come to. Compound are:
///
/// - 1001, a cart: several items, paid together;
/// - 1002, a cost: an expense spread over a range of dates; a share for each month, paid as it was;
/// - 1003, an instalment plan: a share for each month, each with its own payment;
/// - 1004, with payments: one item that is paid by several payments, or was refunded.
///
/// A cost and a plan have a seed besides, the record as a whole (type 86, which counts nowhere).
///
/// Categories, vendor, book and account are given by key. Every change is one transaction and brings the
/// balances of the books and accounts concerned up to date. Refused, with nothing written: amounts and dates
/// that are none, what would leave items and payments apart, and what the store refuses.
class Spend {
 public:
  explicit Spend(MVAppRoot& root);

  std::string eid;
  bool isNewOne = true;
  std::string ipid;
  int bid = kItemRow;
  /// The group's `transferEID`; empty for a plain row.
  std::string connectionUUID;
  bool createdByTemplate = false;
  int type = kind::kExpense;
  /// Above zero; in the currency of the account, or of the book without one. What was refunded is taken off.
  double amount = 0;
  /// The code of that currency; set when a record is loaded.
  std::string currency;
  std::string foreignCurrency;
  double foreignAmount = 0;
  Date datetime;
  /// IANA name of the zone in which the record was made; its day (`sday`) is taken there.
  std::string timeZone;
  std::string note;
  std::string account;
  /// The group's rows as the lists last read them: `getPaymentArray`, `getItemArray`, `getCostItemsArray`.
  std::vector<TransactionItem> payments;
  std::vector<TransactionItem> items;
  std::vector<TransactionItem> costItems;
  /// Key of the top-level category and of the chosen one; both empty for none.
  std::string category;
  std::string subcategory;
  std::string vendor;
  bool paid = true;
  bool needReimburse = false;
  std::string book;
  /// Images that `recordEntry` attaches, and the names of their files then; `photosOf` tells those of a
  /// record.
  std::vector<std::string> images;
  std::vector<ImageFile> addImages;
  std::string repeat{kNotRepeat};
  std::string repeatSeedID;
  Date repeatEndDate;
  Date payDate;
  bool edited = false;
  int isDeleted = 0;
  int advancedType = advanced::kPlain;

  // Finding; nothing when there is none.

  /// The record of that `eid`.
  static std::optional<Spend> spendFromEID(MVAppRoot& root, std::string_view eid);
  /// The item of a group, a live one first. A group that has payments but no item is removed.
  static std::optional<Spend> spendFromPaymentUUID(MVAppRoot& root, std::string_view uuid);
  /// The record that stands for the group as a whole: the seed of an instalment plan, else the item.
  static std::optional<Spend> spendSeedFromUUID(MVAppRoot& root, std::string_view uuid, int advancedType);
  static std::optional<Spend> spendSeedFromCart(MVAppRoot& root, std::string_view uuid);
  static std::optional<Spend> spendSeedFromInstallment(MVAppRoot& root, std::string_view uuid);
  static std::optional<Spend> spendSeedFromCost(MVAppRoot& root, std::string_view uuid);

  // The group's rows by date, those a person deleted too; kept in `items`, `payments`, `costItems` as well.

  Result<std::vector<TransactionItem>> getItemArray();
  /// Shares of a cost and of an instalment plan.
  Result<std::vector<TransactionItem>> getSplitItemsArray();
  /// Live shares of a cost.
  Result<std::vector<TransactionItem>> getCostItemsArray();
  /// The payments. Those that can be of no item of the group are put right: one of another direction, or
  /// where all items pay for themselves, becomes a payment by itself, or is removed where no other account
  /// was charged; one that is marked paid and lies ahead is pending again. A healthy group is only read.
  Result<std::vector<TransactionItem>> getPaymentArray();
  Result<std::vector<TransactionItem>> getInstallmentPaymentArray(
      int advancedTypeOfPayments = advanced::kInstallment) const;
  Result<std::vector<TransactionItem>> getInstallmentRefundArray(
      int advancedTypeOfPayments = advanced::kInstallment) const;

  // Writing.

  /// Writes a plain record as one item row; a blank `eid` is given an identifier, a `payDate` never set the
  /// record's date, and an end without a repeat is dropped. Balances are the caller's (see `recordEntry`).
  Result<> add();
  /// The same for one row of a compound record, whose UUID is set.
  Result<> add(int asPartOf);
  /// Writes the seed of a repeating record: type 85, the kind of what it makes in `syear`. Its `eid` is in
  /// `repeatSeedID` then.
  Result<> addRepeatSeed();
  /// A record that is paid by payments: 1004. They come to the amount, or what is missing is the rest.
  Result<> addWithPayments(std::vector<Payment>& toPay);
  /// A cart of items with its payments: 1001. Answers its UUID; `eid`s and UUID are set in items and
  /// payments.
  static Result<std::string> addCart(MVAppRoot& root, std::vector<Spend>& cartItems,
                                     std::vector<Payment>& toPay);
  /// One more item for the cart this record is in. What it costs is paid by the only payment, else by the
  /// rest.
  Result<> addToCart(Spend& item);
  /// Takes the item out of its cart: it is deleted, and restored it would be a plain record without an
  /// account.
  Result<> removeFromCart();

  /// Deletes the record: all rows of its group. A fault of one payment is logged, and the rest goes on.
  Result<> delete_();
  Result<> restore();

  // Texts are taken by value: what a change begins with is that the object is read again, and a caller may
  // hand in one of its own members.

  Result<> updateAmount(double newAmount);
  /// A blank currency for none.
  Result<> updateAmount(double newAmount, double newForeignAmount, const std::string& newForeignCurrency);
  /// Blank for none. Of a group with one payment that one's account.
  Result<> updateAccount(std::string newAccount);
  /// A blank book takes the record out of every book: it becomes a bare payment. The items of a group that
  /// were in the same book follow, and so does the series of a seed.
  Result<> updateBook(std::string newBook);
  /// The date, its day, and whether the record is pending. Rows of a cart and payments on the same day
  /// follow; of a plan the instalment's payment does, and a share of a cost is dated alone.
  Result<> updateDate(Date date);
  /// Both blank for none. The shares of a plan and the series of a seed follow.
  Result<> updateCategory(std::string newCategory, std::string newSubcategory);
  /// Blank for none. Rows of the group with the former vendor follow.
  Result<> updateVendor(std::string newVendor);
  Result<> updateRepeat(const std::string& rule, Date endDate);
  Result<> updateRepeat(const std::string& rule);
  Result<> updateRepeatEndDate(Date endDate);
  Result<> updateNote(const std::string& newNote);
  Result<> updateReimburse(bool isToBeReimbursed);
  /// Writes another group's UUID to the record's row.
  Result<> updateConnectionUUID(std::string uuid);
  /// Makes every row of the group one by itself.
  Result<> clearConnectionUUID();
  /// Sets the UUID on the object and on its `items` and `payments`; nothing is written.
  void setConnectionUUID(const std::string& uuid);
  /// Marks the record paid, with the rows of its group of the same type; of a plan the instalment with its
  /// payment. Refused for what lies ahead.
  Result<> paidIt();
  Result<> unpaidIt();

  // Refunds: payments below zero. What is refunded is taken off the item.

  /// Gives back part or all of the expense to an account (blank for none); answers the refund's `eid`.
  /// Refused above what is left of the expense, and for parts of a cost or a plan.
  Result<std::string> refund(double refunded, Date date, std::string toAccount);
  Result<> deleteRefund(std::string_view refundEid);
  /// Another sum; the date and the account stay.
  Result<> updateRefund(std::string_view refundEid, double refunded);
  Result<> updateRefund(std::string_view refundEid, double refunded, Date date, const std::string& toAccount);
  Result<bool> hasRefund();
  /// The refunds of this record, oldest first.
  Result<std::vector<TransactionItem>> refunds() const;

  // Other books.

  /// Writes the record, whole, into another book under new identifiers; its photos are shared. Answers the
  /// copy's `eid`.
  Result<std::string> copyToBook(const std::string& otherBook);
  Result<> moveToBook(const std::string& otherBook);

  // Instalments and spread costs.

  /// What `n` instalments of this record would be, dated a month apart; the first takes what rounding leaves.
  /// Nothing is written.
  std::vector<Spend> installmentByPaymentFor(int n) const;
  /// Makes the record, new or plain, the seed of a plan of `n` instalments (1 to 60), each at least a cent.
  Result<> saveInstallment(int n);
  /// Makes the plan a plain record of what its instalments come to.
  Result<> cancelInstallment();
  /// What the shares of this record would be, one for each month from the first day to the last (both counted
  /// in), in proportion where the last is cut short. Refused for more than 60 and for shares below a cent.
  Result<std::vector<Spend>> apportionCostFrom(Date from, Date to) const;
  /// Makes the record, new, plain or with payments, the seed of a cost spread over the range.
  Result<> saveApportionedCost(Date from, Date to);
  /// Spreads the cost over another range.
  Result<> updateApportionedCost(Date from, Date to);
  /// Makes the cost one record again.
  Result<> combineApportionedCost();
  /// Brings seed and payments of a cost to what its shares come to; nothing is written when they are.
  Result<> recountCostIfNeed();

  MVAppRoot& root() const { return *root_; }

 private:
  Result<> insertRow();
  bool isSeed() const { return type == kind::kInstallmentSeed; }
  bool isSeriesSeed() const { return type == kind::kRepeatSeed; }

  MVAppRoot* root_;
};

}  // namespace moniva
