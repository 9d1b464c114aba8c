#pragma once

#include <boost/json/object.hpp>
#include <string>
#include <vector>

#include "model/moniva_account.h"
#include "ui/cli/command_line.h"
#include "ui/cli/table.h"

/// What the commands for books, accounts and groups have in common: words for codes, texts, and the commands
/// themselves where both kinds have them.
namespace moniva {

/// What is kept in the store under a code or a text, and the word a person types for it.
template <class Kept>
struct Word {
  std::string word;
  Kept kept;
};

/// The kinds of account: "saving" for "_SavingAccount".
const std::vector<Word<std::string>>& accountTypeWords();
/// What a row of the kind may track: "everything" for 1050.
const std::vector<Word<int>>& trackingWords(int aKind);

template <class Kept>
std::vector<std::string> wordsOf(const std::vector<Word<Kept>>& list) {
  std::vector<std::string> words;
  for (const auto& one : list) words.push_back(one.word);
  return words;
}

/// What was typed for one of the words; the parser has checked that it is one.
template <class Kept>
Kept keptFor(const std::vector<Word<Kept>>& list, const std::string& word) {
  for (const auto& one : list) {
    if (one.word == word) return one.kept;
  }
  return list.front().kept;
}

// The kind of account, what is tracked, and the dashboard of a book, in the person's language.
std::string typeText(const Session& session, const MonivaAccount& row);
std::string trackingText(const Session& session, const MonivaAccount& row);
std::string dashboardText(const Session& session, const MonivaAccount& book);

/// The title, of a closed one with a mark and dim.
Cell titleCell(const Session& session, const MonivaAccount& row);
/// An amount in the row's currency, red below zero.
Cell amountCell(const Session& session, double amount, const std::string& currency);
/// "12 records", "12 records and 1 series", "1 series".
std::string recordsText(const Session& session, std::int64_t count, std::int64_t series = 0);
/// "its 12 records", or "no records".
std::string ownRecordsText(const Session& session, const MonivaAccount& row);
/// "Cash, Checking".
std::string titlesText(const std::vector<MonivaAccount>& rows);

/// Ends the command when a live book or account has that title. To be asked within the transaction that takes
/// the title.
void requireFreeTitle(Session& session, int aKind, const std::string& title);
/// Changes the currency and says what else that did, beginning with a blank; "" when it did nothing else.
std::string changeCurrency(Session& session, MonivaAccount& row, const std::string& code);

/// The facts of one book, account or group as lines of a name and a value.
class Facts {
 public:
  explicit Facts(Session& session) : session_(session), table_({{.title = ""}, {.title = ""}}) {}
  void add(const std::string& name, const std::string& value);
  /// Note, state and groups, where there are any.
  void addState(const MonivaAccount& row);
  /// What came in and went out, for which `getAllStatistics` has been called.
  void addTotals(const MonivaAccount& row);
  /// The first and the last record, for which `getAllPeriod` has been called.
  void addDates(const MonivaAccount& row);
  void print();

 private:
  std::string amount(const MonivaAccount& row, double value) const;

  Session& session_;
  Table table_;
};

/// The row with its totals, dates and groups as JSON.
boost::json::object jsonWithGroups(Session& session, const MonivaAccount& row);
/// The row as it is in the store by now, with its balance counted and not as it was kept, as JSON.
boost::json::object jsonNow(Session& session, MonivaAccount& row);
/// Prints the books or accounts that were deleted.
void listDeleted(Session& session, int aKind);

/// A family of commands for one kind of row: "book" or "account".
struct RowFamily {
  CommandLine& line;
  CLI::App& app;
  int aKind;

  bool ofBooks() const;
  const char* nameHelp() const { return ofBooks() ? "Name of the book" : "Name of the account"; }
};

/// Looks the row up and makes the change of it as one transaction; prints its sentence, or the row with
/// --json. A blank name is refused.
void changeRow(Session& session, int aKind, const std::string& name,
               const std::function<std::string(MonivaAccount&)>& work);
/// A command that gives the named row a value; the work answers what was done, in a sentence.
CLI::Option* addSetting(const RowFamily& family, const char* command, const char* valueName,
                        const char* valueHelp,
                        const std::function<std::string(Session&, MonivaAccount&, const std::string&)>& work);

/// The commands that change what is told of a row: rename, note, currency, tracking and their like.
void addRowSettings(const RowFamily& family);
/// The commands about its being there and about its records: order, close, delete, clear, recount and their
/// like.
void addRowUpkeep(const RowFamily& family);
/// The command that gives all records of one to another.
void addMoveRecords(const RowFamily& family);

}  // namespace moniva
