#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>

#include "exchange/import_record.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// The currency of every account and book that a file names. One that is in the store has its own. A new one
/// has the first that a record states for it; else that of the accounts it exchanges money with one for one,
/// by transfers without an amount that arrives; else the default. All records of a file that tells of
/// currencies are taken note of before the first is asked about, so that the answer does not depend on the
/// order of transfers and other records. A new book has the default one.
class AccountCurrencies {
 public:
  AccountCurrencies(MVAppRoot& root, std::string otherwise) : root_(root), otherwise_(std::move(otherwise)) {}

  void note(const ImportRecord& record);
  /// Takes what was noted as all there is.
  void settle();
  [[nodiscard]] const std::string& of(const std::string& account);
  /// That of a book; of the current one for a blank name.
  [[nodiscard]] const std::string& ofBook(const std::string& book);

 private:
  void noteAccount(const std::string& account, const std::string& stated);

  MVAppRoot& root_;
  std::string otherwise_;
  std::map<std::string, std::string> currencies_;  ///< by title; empty where it is not known yet
  std::map<std::string, std::string> ofBooks_;     ///< by title
  std::map<std::string, std::set<std::string>> oneForOne_;
};

}  // namespace moniva
