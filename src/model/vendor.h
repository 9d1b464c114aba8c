#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/result.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// A payee (row type 6, for expenses) or a payer (row type 9, for income). Transactions refer to it by `pk`;
/// titles are unique within a type. Every write stamps the rows it changes, and is done whole or not at all.
///
/// Refused by all operations that change something, with nothing changed: a title that is blank, too long or
/// kept for no vendor; the entry for no vendor; a key that no vendor has.
class Vendor {
 public:
  explicit Vendor(MVAppRoot& root) : root_(&root) {}

  static constexpr int kPayee = 6;
  static constexpr int kPayer = 9;
  /// Characters of a sort text that are kept: what tells titles apart, without a second copy of long ones.
  static constexpr std::size_t kOrderStringLength = 20;

  std::string title;
  int type = kPayee;
  int usedTimes = 0;
  std::string pk;
  /// The key from before the latest edit; blank when there was none.
  std::string old;
  int orderID = 0;
  /// Not 0: deleted. Its transactions still refer to it.
  int deleted = 0;
  std::string familyUser;
  std::string ipid;

  /// The sort text; kept of a text set are its first `kOrderStringLength` characters.
  const std::string& orderString() const { return orderString_; }
  void setOrderString(std::string_view text);

  /// The row type for a transaction's type: 11, 81 and 13 give 9; 12, 82 and 14 give 6; any other is taken as
  /// it is, so that a row type stands for itself.
  static int typeFor(int transactionType);
  /// The entry that stands for no vendor of that transaction type, its title in the person's language.
  static Vendor noVendor(MVAppRoot& root, int transactionType);
  bool isNoVendor() const;
  /// Whether the title is one of those kept for no vendor, in English or in the person's language.
  static bool isNoVendorTitle(MVAppRoot& root, std::string_view title);

  /// How vendors of that type are listed: "0" in the user's own order, "1" by use, "2" by letter. Else what
  /// the store has.
  static std::string getOrderType(MVAppRoot& root, int transactionType);
  /// Sets it; any other mode is refused. From the main thread, outside every transaction.
  static Result<> setOrderType(MVAppRoot& root, int transactionType, std::string_view mode);

  /// The vendor with the key, deleted ones too; nothing when there is none. Where a payee and a payer share
  /// the key it is the one for the transaction type.
  static std::optional<Vendor> getVendor(MVAppRoot& root, std::string_view key, int transactionType = 0);
  /// The vendor of that title and row type: of several rows the one a clean-up would keep. Its key is blank
  /// where no row has one.
  static std::optional<Vendor> withTitle(MVAppRoot& root, std::string_view title, int type);
  /// How many live rows of its title and type there are: more than one where devices added it apart.
  std::int64_t liveRows() const;
  /// Whether there is a live vendor of the title and type.
  bool isExist() const { return liveRows() > 0; }
  /// How many live transactions refer to it.
  std::int64_t recordCount() const;

  /// Adds the vendor at the end of the list, or takes (revives, when deleted) the row of that title and type;
  /// `pk` is its key afterwards. A type that is none of the two is refused.
  Result<> add();
  /// Takes the vendor out of the lists. Its transactions go on to refer to it.
  Result<> delVendor();
  /// Gives the vendor another title. Where its type has a vendor of that title already the two become one,
  /// which cannot be undone: the transactions go to the other, which this object is then. The present title
  /// is refused.
  Result<> rename(const std::string& newTitle);
  /// Saves title and sort text of the object; with a new title a sort text left as it was is made afresh. A
  /// title that another vendor has, be it a deleted one, is refused.
  Result<> update();
  /// Moves every transaction to another vendor, a live one of the same type.
  Result<> moveDataTo(const Vendor& vendor);
  /// Gives the vendors their places in the user's own order, from 1 on; the entry for no vendor is passed
  /// over. Refused when one is there twice.
  static Result<> updateOrder(MVAppRoot& root, std::span<const Vendor> list);

  /// Counts the uses afresh from the transactions of a type, else from the expenses of a payee and the income
  /// of a payer.
  bool updateUsingCount(int transactionType);
  bool updateUsingCount();
  /// The same for `uses` records more that were just entered, without counting all others again.
  bool addToUsingCount(int uses);
  /// The same for every live vendor of the row type whose count is wrong; answers how many were.
  static Result<int> updateUsingCounts(MVAppRoot& root, int type);

 private:
  /// The row as it is in the store.
  Result<Vendor> stored() const;
  static Result<> usableTitle(MVAppRoot& root, std::string_view text);
  bool markDeleted() const;
  bool revive() const;

  MVAppRoot* root_;
  std::string orderString_;
};

}  // namespace moniva
