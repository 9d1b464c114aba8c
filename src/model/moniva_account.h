#pragma once

#include <boost/json/object.hpp>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "calendar/book_periods.h"
#include "model/transaction_type.h"
#include "storage/mv_app_root.h"

namespace moniva {

class BookBudget;

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

  // Computed on demand (getAllStatistics, getAllPeriod), in the row's currency.
  double totalIncome = 0;
  double totalExpense = 0;
  double totalTransferIn = 0;
  double totalTransferOut = 0;
  double adjustBalance = 0;
  /// The budget in force, once it was asked for (`getMainBudget`).
  std::shared_ptr<BookBudget> mainBudget;
  std::optional<Date> dateOfFirstTransaction;
  std::optional<Date> dateOfLastTransaction;
  /// Whether this object has changed the row since it was loaded.
  bool edited = false;

  // Entries of pickers that stand for something else than a row; their key is their type text.
  static MonivaAccount getNoneAccount(MVAppRoot& root) { return pseudo(root, "_NoneAccount"); }
  static MonivaAccount getOutsideAccount(MVAppRoot& root) { return pseudo(root, "_OutsideAccount"); }
  static MonivaAccount getMutipleAccount(MVAppRoot& root) { return pseudo(root, "_MutipleAccount"); }
  static MonivaAccount getPendingAccount(MVAppRoot& root) { return pseudo(root, "_PendingAccount"); }
  static bool isNoneAccount(std::string_view key) { return key == "_NoneAccount"; }

  // Lookups; nothing when there is no such row. By title: the live row first, then the one edited last.
  static std::optional<MonivaAccount> getAccountWithPK(MVAppRoot& root, std::string_view pk);
  static std::optional<MonivaAccount> getAccountWithTitle(MVAppRoot& root, std::string_view title);
  static std::optional<MonivaAccount> getBookWithTitle(MVAppRoot& root, std::string_view title);
  enum class Rows { plain, groups, deleted };
  /// The live books or accounts, closed ones too, in the order of the list; or the groups of them; or what
  /// was deleted of both.
  static std::vector<MonivaAccount> list(MVAppRoot& root, int aKind, Rows rows = Rows::plain);
  /// Writes the places of the list into the rows, with the edit stamp.
  static Result<> saveOrder(MVAppRoot& root, const std::vector<MonivaAccount>& list);

  /// Loads the row of `pk`; false when there is none.
  bool getInfo();

  bool isBook() const { return aKind == kBookKind; }
  bool isAccount() const { return aKind != kBookKind; }
  bool isSavingAccount() const { return aType == "_SavingAccount"; }
  bool isDebtAccount() const { return aType == "_DebtAccount"; }
  bool isPrepaidAccount() const { return aType == "_PrepaidAccount"; }
  bool isDiscountAccount() const { return aType == "_DiscountAccount"; }
  bool isOutsideAccount() const { return aType == "_OutsideAccount"; }
  /// An account of none of the kinds above.
  bool isOtherAccount() const;
  /// Whether no record was ever kept in the row, deleted ones included; one that cannot be read is not empty.
  bool isEmpty() const;
  /// How many live rows of `transactions` are kept in the book or account, of whatever kind; seeds of series
  /// and of plans, which only say what records there are to be, are none, nor is what a bill carries over.
  Result<std::int64_t> recordCount() const;
  /// How many live series make records of the book or account.
  Result<std::int64_t> seriesCount() const;

  /// Sets the kind text with the tracking type and the profit display that go with it.
  void setType(std::string_view type);
  /// What `add` did.
  enum class Added { anew, revived };
  /// Adds the row, or revives the newest deleted one of the same title, kind and group flag, with its key and
  /// settings. A title that will not do is refused; so is what the store refuses, and then nothing is
  /// written.
  Result<Added> add();

  // Each writes its column with the edit stamp. Refused in words, with nothing changed: what is out of range,
  // what the store refuses, and a title that is the row's own already or another live row's.
  Result<> updateTitle(std::string_view newTitle);
  Result<> updateNote(std::string_view newNote);
  /// Writes the opening balance and counts the balance afresh.
  Result<> updateBeginBalance(double balance);
  /// Writes the kind text and the profit display that goes with it; `updateTrackingType` writes the code.
  Result<> updateType(std::string_view type);
  /// Writes what the row tracks (1050, 2312 or 12 for accounts; 1112, 11 or 12 for books) and counts the
  /// balance afresh by it.
  Result<> updateTrackingType(int code);
  /// A weekday from 1 (Sunday) to 7.
  Result<> updateWeekStartsOn(int day);
  /// A day from 1 to 31, or from -1 to -31 for that day of the month before.
  Result<> updateMonthStartsOn(int day);
  /// A month from 1 to 12, or from -1 to -12 for that month of the year before.
  Result<> updateYearStartsOn(int month);
  /// Writes the dashboard style of a book, one of `overviewStyles`.
  Result<> updateOverViewUI(std::string_view style);
  static const std::vector<std::string_view>& overviewStyles();
  Result<> updateShowProfitForSummary(bool shows);
  Result<> updateRepayNotificationEnabled(bool enabled);
  bool repayNotificationEnabled() const;
  /// The day of the month on which the bills of a credit account are to be paid, 1 to 31 (in a shorter month
  /// its last day); 0, for twenty days after the closing, where none is set. Kept with the display options.
  int dueDay() const;
  Result<> updateDueDay(int day);
  /// Closes the row, or opens it again. The current book is not to be closed.
  Result<> close(bool closed);
  /// Writes another currency (an ISO 4217 code); the same one changes nothing. Where no open payment account
  /// has that currency, one is added: it is answered. The row leaves all its groups, unless it is one.
  Result<std::optional<MonivaAccount>> updateCurrency(std::string_view code);

  /// Deletes the row and its memberships of groups; its records stay. The current book is not to be deleted.
  Result<> delete_();
  /// Brings back what was deleted under the object's title, books and accounts alike. Refused when nothing
  /// was, or when a live row has the title by now.
  Result<> recoverForTitle();
  /// Removes all live records of the book or account, its series too, and counts again every balance they
  /// were part of. Answers how many records there were. A group is not cleared.
  Result<std::int64_t> clear();

  /// The order mode of the book's categories of a type (11 income, otherwise expense): "0" unless it was set.
  std::string getCategoryOrder(int type) const;
  Result<> setCategoryOrder(std::string_view mode, int type);
  /// Caches the balance; not an edit, so it leaves the stamp alone.
  bool updateTotalBalance(double balance);
  /// The same for what is added to it.
  bool addToTotalBalance(double amount);

  /// Keeps this book as the current one in the user defaults.
  void saveToLocal() const;

  PeriodStarts periodStarts() const { return {weekStartsOn, monthStartsOn, yearStartsOn, dueDay()}; }
  MVAppRoot& root() const { return *root_; }

 private:
  static MonivaAccount pseudo(MVAppRoot& root, std::string_view type);
  static std::optional<MonivaAccount> withTitle(MVAppRoot& root, int aKind, std::string_view title);
  void read(const Run& run);
  Result<std::int64_t> rowCount(std::string_view condition) const;
  /// Runs an update of one column: value, stamp, device, key.
  Result<> update(std::string_view sql, const Value& value);
  /// Writes one of the display options.
  Result<> updateOption(std::string_view key, std::string_view value);
  /// The book in use and what is kept of it locally follow a change of its row.
  void tellCurrentBook() const;

  MVAppRoot* root_;
};

/// Loads the current book: the one kept in the user defaults, else the first of the list; an empty book
/// object when the store has none.
void refreshUsingMonivaAccount(MVAppRoot& root);

/// The condition that selects the transactions of a book, an account, or the members of a group of either.
/// Its one slot takes the row's `pk`.
std::string_view accountQuerySQL(const MonivaAccount& account);

}  // namespace moniva
