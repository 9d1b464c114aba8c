#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "exchange/export_rows.h"
#include "exchange/journal_names.h"
#include "model/record_names.h"
#include "storage/connection.h"

namespace moniva {

/// An account of a journal, with what its transactions come to so far.
struct JournalAccount {
  std::string name;
  std::size_t width = 0;  ///< of the name, in characters
  /// Whether it is an account of the store with all its records: every posting then tells the balance.
  bool asserted = false;
  /// Whether a journal that begins later takes over its balance.
  bool carried = false;
  std::vector<std::pair<std::size_t, Decimal>> balances;  ///< by commodity

  Decimal& balance(std::size_t commodity);
};

/// The accounts and commodities of a journal:
///
///     Assets:Cash, Liabilities:Card      accounts; Liabilities those of debt
///     Expenses:Home:Food:Bakery          by book, category and subcategory; Income alike
///     Expenses:Home:Food:Further         shares of a record that is counted already
///     Assets:Lent:Ann, Liabilities:Borrowed:Ann
///     Assets:Cash:Pending                what waits for its day
///     Equity:...                         what stands between these, one by one in `Special`
///
/// Each is made when it is first asked for. Accounts and commodities are numbers, places in the two lists.
class JournalChart {
 public:
  enum class Special {
    opening,      ///< balances at the beginning
    corrections,  ///< of a balance
    clearing,     ///< between the items of a record and its payments
    transfers,    ///< between the sides of a transfer that are told apart
    outside,      ///< where transfers lead that leave the accounts
    noAccount,    ///< money of no account
    untracked,    ///< what its account does not track; below it the accounts
    other,        ///< the other side of kinds that only move a balance
    charges,      ///< what a transfer costs
  };

  JournalChart(MVAppRoot& root, Connection& db, const ExportRequest& request);
  /// Reads the books and accounts; the live ones get their names first.
  Result<> load();

  std::vector<JournalAccount>& accounts() { return accounts_; }
  JournalAccount& at(std::size_t account) { return accounts_[account]; }
  /// How the commodity is written, and with how many decimals at least.
  struct Commodity {
    std::string symbol;
    int places = 2;
  };
  const std::vector<Commodity>& commodities() const { return commodities_; }
  std::size_t commodity(const std::string& code);

  /// An account and the commodity it is kept in; nothing for those that take any.
  struct Place {
    std::size_t account = 0;
    std::optional<std::size_t> commodity;
  };
  Place special(Special which);
  /// Where what the row does to its account goes.
  Place ofAccount(const ExportRow& row);
  /// Where the row is filed as expense or income.
  Place ofCategory(const ExportRow& row);
  /// What a book holds that is neither income nor expense.
  Place ofBook(const std::string& key);
  Place ofPerson(bool lent, const std::string& person);
  /// Between the rows of the row's group, in one commodity for all of them.
  Place ofGroup(const ExportRow& row);
  /// The commodity of money that goes through no account and belongs to no book.
  std::size_t ownCommodity();
  /// Who the row names as vendor; blank for nobody.
  const std::string& vendor(const ExportRow& row);
  /// Whether the categories it names are in use: these get their names before others of the same titles.
  bool isLive(const ExportRow& row);
  /// The title of its category; blank for none.
  std::string categoryTitle(const ExportRow& row);

 private:
  struct Holder {
    MonivaAccount row;
    std::string name;  ///< of an account all of it, of a book the part below Expenses
    std::optional<std::size_t> account;
    std::size_t commodity = 0;
  };
  Holder& holder(const std::string& key, int aKind);
  std::size_t account(const std::string& name);
  std::size_t openAccount(Holder& holder);
  bool isCovered(const Holder& holder) const;

  MVAppRoot& root_;
  Connection& db_;
  const ExportRequest& request_;
  RecordNames names_;
  JournalNames taken_;
  std::vector<std::string>
      members_;  ///< keys of the book or account asked for, of a group those of its members
  std::vector<JournalAccount> accounts_;
  std::unordered_map<std::string, std::size_t> byName_;
  std::vector<Commodity> commodities_;
  std::unordered_map<std::string, std::size_t> byCode_;
  std::unordered_map<std::string, Holder> payers_;
  std::unordered_map<std::string, Holder> books_;
  std::unordered_map<std::string, std::size_t> filed_;  ///< by type, book, category and subcategory
  std::unordered_map<std::string, std::string> vendors_;
};

}  // namespace moniva
