#pragma once

#include <CLI/App.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/payment.h"
#include "model/spend.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/record_texts.h"

/// What the commands that enter expenses and income have in common.
namespace moniva {

/// What is typed of a new record beside its amounts, each command the part it needs.
struct EntryFields {
  bool income = false;
  std::string category;
  std::string subcategory;
  std::string vendor;
  std::string account;
  std::vector<std::pair<std::string, std::string>> payments;  ///< account and amount
  std::string book;
  std::string date;
  std::string note;
  bool pending = false;
  bool create = false;
  bool dryRun = false;
  bool remind = false;
  AmountOptions amounts;
};

/// Options for income, vendor, book, date, note, reminders and new categories.
void addEntryFields(CLI::App& command, EntryFields& fields);
void addCategoryFields(CLI::App& command, EntryFields& fields);
/// The account; with `several` payments from several accounts too.
void addAccountFields(CLI::App& command, EntryFields& fields, bool several);
/// Help of an option for what is pending.
inline constexpr const char* kNotPaidYet =
    toTranslate("Not paid yet; what has an account is settled by itself once its day has come");
CLI::Option* addDryRun(CLI::App& command, bool& dryRun);

/// The book and the accounts of a new record, looked up.
struct EntryNames {
  MonivaAccount book;
  std::optional<MonivaAccount> account;
  std::vector<MonivaAccount> payers;  ///< of the payments, in their order
  /// That of the amounts: of the account, of all accounts that pay where they have one in common, else of the
  /// book.
  std::string currency;
};
/// Looks them up; ends the command for names that will not do.
EntryNames namesTyped(Session& session, const EntryFields& fields);
/// Fills in what was typed but for amounts, within the change that writes it; ends the command for names and
/// dates that will not do.
EntryNames fillEntry(Session& session, const EntryFields& fields, Spend& spend);
/// The payments typed; the whole `total` from the one account where that was typed instead.
std::vector<Payment> paymentsTyped(Session& session, const EntryFields& fields, const EntryNames& names,
                                   const Spend& spend, double total);

/// The record typed, which is an expense or income in use or a part of one; `eid` is set to the row typed.
RecordWhole wholeTyped(Session& session, const std::string& text, std::string* eid = nullptr);
/// The editor of the row; ends the command where there is none.
Spend spendOf(Session& session, const std::string& eid);
/// The currency of the record's amounts: the default one where neither account nor book tells.
std::string currencyOf(Session& session, const RecordWhole& whole);

/// What to know of a record marked as pending that the next day's work will settle again: " Its day has come,
/// ..."; "" for one that lies ahead or has no account.
std::string settledSoonText(Session& session, const RecordWhole& whole);

/// Writes a record as `work` does it, which answers the `eid` of one of its rows, and says with `say` what it
/// has come to; for a trial shows it and keeps nothing. Switches its reminders on where that was typed.
void enterRecord(Session& session, const EntryFields& fields, const std::function<std::string()>& work,
                 const std::function<std::string(const RecordTexts&)>& say);

}  // namespace moniva
