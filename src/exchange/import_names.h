#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "model/moniva_account.h"
#include "model/mv_category.h"
#include "model/vendor.h"

namespace moniva {

/// The keys of what a file names: found in the store, or added to it at the first mention. Each name is
/// looked up once. What was added is listed by name, and so are books and accounts that were deleted and
/// came back.
class ImportNames {
 public:
  ImportNames(MVAppRoot& root, std::string currency) : root_(root), currency_(std::move(currency)) {}

  /// Why a book, or an account, of that name takes no records: it is a group, or closed. Nothing for one that
  /// takes them or is still to be made, and for a blank name.
  const std::optional<Phrase>& obstacle(int aKind, const std::string& title);
  /// Why the account of that name takes no records of the type: it does not track them, nor would it if it
  /// was deleted and came back. Nothing for one that does or is still to be made, and for a blank name.
  const std::optional<Phrase>& untracked(const std::string& account, int recordType);
  /// The book; a blank name means the current book (or a first one, made, in a store without any).
  Result<const MonivaAccount*> book(const std::string& title);
  /// The account; `currency` is that of a new one. A blank name gives none (null).
  Result<const MonivaAccount*> account(const std::string& title, const std::string& currency);
  /// The category's key and the chosen one's; both blank for none.
  struct CategoryKeys {
    std::string category;
    std::string subcategory;
  };
  Result<CategoryKeys> category(int type, const std::string& title, const std::string& subtitle);
  /// The vendor's key; blank for none.
  Result<std::string> vendor(int transactionType, const std::string& title);

  std::vector<std::string> newBooks;
  std::vector<std::string> newAccounts;
  std::vector<std::string> revivedBooks;
  std::vector<std::string> revivedAccounts;
  std::vector<std::string> newCategories;
  std::vector<std::string> newVendors;

 private:
  Result<std::string> categoryBelow(int type, const std::string& title, const std::string& parentKey,
                                    const std::string& shownAs);

  MVAppRoot& root_;
  std::string currency_;
  std::map<std::pair<int, std::string>, std::optional<Phrase>> obstacles_;
  std::map<std::pair<int, std::string>, std::optional<Phrase>> untracked_;
  std::map<std::string, MonivaAccount> books_;
  std::map<std::string, MonivaAccount> accounts_;
  std::map<std::pair<int, std::pair<std::string, std::string>>, std::string> categories_;
  std::map<std::pair<int, std::string>, std::string> vendors_;
};

}  // namespace moniva
