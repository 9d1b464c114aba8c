#pragma once

#include <boost/json/object.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "calendar/book_periods.h"
#include "model/transaction_type.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// One row of `account`: a book (kind 2), in which expense and income are grouped, or a payment account (kind
/// 1), from which they are paid. Other tables refer to it by `pk`, which never changes; `title` is for
/// people.
class MonivaAccount {
 public:
  explicit MonivaAccount(MVAppRoot& root) : root_(&root) {}

  std::string pk;
  std::string title = "Default Book";
  std::string aType;
  int aKind = 0;
  bool isGroup = false;
  double beginBalance = 0;
  std::string currency;
  bool enabled = true;
  std::string note;
  int orderID = 0;
  bool budgetEnabled = false;
  /// Which kinds of transaction the row tracks: 1050, 2312 or 12 for accounts, 1112 for books.
  int trackingType = 1112;
  int weekStartsOn = 1;
  int monthStartsOn = 1;
  int yearStartsOn = 1;
  double totalBalance = 0;
  boost::json::object expandOptionDict;
  int isDeleted = 0;
  std::string showProfitForSummary = "1";
  Date editDate;

  // Lookups; nothing when there is no such row. By title: the live row first, then the one edited last.
  static std::optional<MonivaAccount> getAccountWithPK(MVAppRoot& root, std::string_view pk);
  static std::optional<MonivaAccount> getAccountWithTitle(MVAppRoot& root, std::string_view title);
  static std::optional<MonivaAccount> getBookWithTitle(MVAppRoot& root, std::string_view title);
  /// The live books or accounts (not groups) in the order of the list.
  static std::vector<MonivaAccount> list(MVAppRoot& root, int aKind);

  /// Loads the row of `pk`; false when there is none.
  bool getInfo();

  bool isBook() const { return aKind == kBookKind; }
  bool isAccount() const { return aKind != kBookKind; }
  bool isSavingAccount() const { return aType == "_SavingAccount"; }
  bool isDebtAccount() const { return aType == "_DebtAccount"; }
  bool isPrepaidAccount() const { return aType == "_PrepaidAccount"; }
  bool isDiscountAccount() const { return aType == "_DiscountAccount"; }

  /// Sets the kind text with the tracking type and the profit display that go with it.
  void setType(std::string_view type);
  /// Adds the row, or revives the newest deleted one of the same title, kind and group flag (with its key and
  /// settings). A blank title is refused; so is what the store refuses, and then nothing is written.
  Result<> add();

  /// The same, setting also when its periods begin; 0 leaves a setting as it is. One transaction with the
  /// adding.
  Result<> addWithPeriods(PeriodStarts starts);

  // Each writes one column with the edit stamp.
  bool updateWeekStartsOn(int day);
  bool updateMonthStartsOn(int day);
  bool updateYearStartsOn(int month);
  /// The order mode of the book's categories of a type (11 income, otherwise expense): "0" unless it was set.
  std::string getCategoryOrder(int type) const;
  bool setCategoryOrder(std::string_view mode, int type);
  /// Caches the balance; not an edit, so it leaves the stamp alone.
  bool updateTotalBalance(double balance);
  /// The same for what is added to it.
  bool addToTotalBalance(double amount);

  /// Keeps this book as the current one in the user defaults.
  void saveToLocal() const;

  PeriodStarts periodStarts() const { return {weekStartsOn, monthStartsOn, yearStartsOn}; }
  MVAppRoot& root() const { return *root_; }

 private:
  static std::optional<MonivaAccount> withTitle(MVAppRoot& root, int aKind, std::string_view title);
  void read(const Run& run);
  bool update(std::string_view sql, const Value& value);
  /// Writes `expandOptionDict` with the edit stamp.
  bool updateExpandOption();

  MVAppRoot* root_;
};

/// Loads the current book: the one kept in the user defaults, else the first of the list; an empty book
/// object when the store has none.
void refreshUsingMonivaAccount(MVAppRoot& root);

/// The condition that selects the transactions of a book, an account, or the members of a group of either.
/// Its one slot takes the row's `pk`.
std::string_view accountQuerySQL(const MonivaAccount& account);

}  // namespace moniva
