#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "model/spend.h"
#include "model/transfer.h"

namespace moniva {

/// A record kept to be entered again: a template of an expense (type 82), income (81) or a transfer (83). It
/// is a row of `transactions` that moves no money; its title and what has no column lie in `sweek` as JSON.
class RecordTemplate {
 public:
  explicit RecordTemplate(MVAppRoot& root) : root_(&root) {}
  /// What the record says, as a template yet to be titled and added. Refused for a record of several parts
  /// and for what is neither income nor expense.
  static Result<RecordTemplate> of(MVAppRoot& root, const Spend& spend);
  static Result<RecordTemplate> of(MVAppRoot& root, const Transfer& transfer);

  std::string eid;
  /// The shortcut it is found by from outside; blank until it is added.
  std::string templateURL;
  std::string title;
  int type = kind::kExpenseTemplate;
  /// As in the record: a transfer's is what leaves, its charge in it.
  double amount = 0;
  double foreignAmount = 0;
  std::string foreignCurrency;
  std::string note;
  /// Key of the account; of a transfer the one the money leaves.
  std::string account;
  /// Key of the vendor; of a transfer the account the money arrives in.
  std::string vendor;
  std::string category;
  std::string subcategory;
  std::string book;
  /// Of a transfer: what arrives, the charge, and whether the accounts keep different currencies.
  double amountB = 0;
  bool acrossCurrencies = false;
  double serviceCharge = 0;
  int templateUsedTimes = 0;
  int isDeleted = 0;

  bool isTransfer() const { return type == kind::kTransferTemplate; }
  /// Income or expense, as a record of it has it.
  int recordType() const { return type == kind::kIncomeTemplate ? kind::kIncome : kind::kExpense; }

  // Nothing when there is none. By shortcut and by title: live ones alone, by title also the one deleted
  // last.
  static std::optional<RecordTemplate> templateFromEID(MVAppRoot& root, std::string_view eid);
  static std::optional<RecordTemplate> templateFromShortcut(MVAppRoot& root, std::string_view shortcut);
  static std::optional<RecordTemplate> withTitle(MVAppRoot& root, std::string_view title);
  static std::optional<RecordTemplate> deletedWithTitle(MVAppRoot& root, std::string_view title);
  static Result<std::vector<RecordTemplate>> deletedOnes(MVAppRoot& root);

  /// Writes it as a new row with a new shortcut. Refused for a title that will not do or that a live template
  /// has.
  Result<> add();
  /// Writes what it says over its row; the shortcut and the uses stay. Refused as by `add`.
  Result<> update();
  Result<> rename(const std::string& newTitle);
  /// Takes it out of the lists; what was made from it stays.
  Result<> delete_();
  /// Brings it back; refused when a live one has its title by now.
  Result<> restore();

  // The record it makes, yet to be entered, for now and settled. Refused, with the reason, when its book or
  // an account of it takes no records any more, and when what arrives cannot be told since currencies
  // changed.
  Result<Spend> spend() const;
  Result<Transfer> transfer() const;
  // Enters a record made from it, which is marked as such, and counts the use: all or nothing.
  Result<> use(Spend& spend);
  Result<> use(Transfer& transfer);

 private:
  static std::vector<RecordTemplate> where(MVAppRoot& root, std::string_view condition,
                                           std::initializer_list<Value> values);
  void read(const Run& run);
  Result<> checkOwnTitle(std::string_view text) const;
  std::string kept() const;
  template <class Entry>
  Result<> enter(Entry& entry);

  MVAppRoot* root_;

  friend Result<std::vector<RecordTemplate>> transactionTemplates(MVAppRoot& root,
                                                                  const std::array<int, 3>& types);
};

/// Tag of rows that were made from a template.
inline constexpr std::string_view kCreatedByTemplate = "createdByTemplate";
inline constexpr std::array<int, 3> kAllTemplates = {kind::kIncomeTemplate, kind::kExpenseTemplate,
                                                     kind::kTransferTemplate};

/// The live templates of those types, the one used most first.
Result<std::vector<RecordTemplate>> transactionTemplates(MVAppRoot& root,
                                                         const std::array<int, 3>& types = kAllTemplates);
/// The `eid` of the live template of that shortcut; nothing when there is none.
std::optional<std::string> eidOfTemplateShortcut(MVAppRoot& root, std::string_view shortcut);

}  // namespace moniva
