#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "model/moniva_account.h"
#include "model/order_string.h"

namespace moniva {

/// What a change of a category came to.
struct CategoryChange {
  bool merged = false;             ///< the category went into another one
  std::int64_t records = 0;        ///< records in use that say something else of their category now
  std::int64_t subcategories = 0;  ///< live subcategories that follow
};

/// Rows that a clean-up took away for good.
struct RemovedCategoryRows {
  int untitled = 0;    ///< rows of `category` without a usable title
  int incomplete = 0;  ///< rows of a book without category or book
  int duplicates = 0;  ///< rows of a book beyond the newest of a category
};

/// One expense or income category of the two-level tree that all books share. Transactions refer to it by
/// `pk`: the top-level one in `category`, the chosen one in `subcategory`.
///
/// Changes of a row are refused, with nothing written, for a category that the store does not have in use,
/// for the root, and by what the store itself refuses; they start from the row in the store, not from these
/// fields, and bring the fields up to date.
class MVCategory {
 public:
  explicit MVCategory(MVAppRoot& root) : root_(&root) {}

  std::string title;
  int type = 12;
  /// Key of the parent; "_rootCate" for a top-level category.
  std::string parent = "_rootCate";
  /// The parent itself, where a list or tree loaded it along; null otherwise. Its own children are not
  /// loaded.
  std::shared_ptr<const MVCategory> supcategory;
  /// The book whose view of the tree is asked for (see `isOfBook`); null for none.
  std::shared_ptr<const MonivaAccount> book;
  /// The children, as a tree loaded them: those `book` has, and those switched off in it.
  std::vector<MVCategory> subcategoryArray;
  std::vector<MVCategory> diabledSubcategoryArray;
  std::string orderString;
  /// How often it was used: in `book`, where that has its own view, otherwise in all.
  int usedTimes = 0;
  std::string pk;
  int orderID = 0;
  /// What a report found for it.
  double amount = 0;
  /// Not switched off in `book`.
  bool enabled = true;
  int deleted = 0;
  std::string familyUser;
  std::string ipid;

  /// The in-memory root of the tree of that type.
  static MVCategory rootCateForType(MVAppRoot& root, int type);
  /// The pseudo-category of expenses that are spread over time; no row.
  static MVCategory costCate(MVAppRoot& root);
  /// The category with the key, deleted ones too; nothing when there is none. Where income and expense share
  /// the key it is the one of the type, if one is given, else one in use.
  static std::optional<MVCategory> getCategory(MVAppRoot& root, std::string_view key, int type = 0);
  /// The live category of that title, type and parent key; nothing when there is none. Refused when the read
  /// failed.
  static Result<std::optional<MVCategory>> withTitle(MVAppRoot& root, std::string_view title, int type,
                                                     std::string_view parent);

  bool isRoot() const { return title == "_rootCate"; }
  bool isSuperCate() const { return !isRoot() && parent == "_rootCate"; }
  bool isSubCate() const { return !isRoot() && parent != "_rootCate"; }
  /// Whether `book` has a view of its own: there is one, and the store keeps categories apart by book.
  bool isOfBook() const;
  /// Whether the store keeps categories apart by book at all.
  static bool booksDiffer(MVAppRoot& root);
  /// "Food", or "Food - Bakery" for a subcategory whose title differs from its parent's.
  std::string cateString() const;

  // Live children (top-level categories for the root) in the order of `getOrderSQL`. A read that failed is
  // refused. In a book's view: those that are on, those switched off, and all with `enabled` telling.
  Result<std::vector<MVCategory>> getSubcategoryList() const;
  Result<std::vector<MVCategory>> getDiabledSubcategoryList() const;
  Result<std::vector<MVCategory>> getAllSubcategoryList() const;

  // The same with the children of each in its arrays, read by one statement: all, those that are on, and all
  // with the most used first.
  Result<std::vector<MVCategory>> getAllSubcategoryTree() const;
  Result<std::vector<MVCategory>> getAllAvailabledSubcategoryTree() const;
  Result<std::vector<MVCategory>> getAllSubcategoryTreeUseTimes() const;
  /// The order clause of the lists, by the mode of the book (in its view) or of the type's setting: 0 by
  /// hand, 1 by use, 2 by title. A setting out of that range is put back to "2".
  std::string_view getOrderSQL() const;
  /// The mode of the type's setting; 2 for one out of range.
  static int getOrderType(MVAppRoot& root, int type);
  /// Refused for a mode other than 0, 1 and 2, and for a type that is none of a category.
  static Result<> setOrderType(MVAppRoot& root, int type, int mode);

  /// Adds the category below its parent, last in an order by hand, or revives or touches the row of that
  /// title, type and parent that is there; the fields are those of the row afterwards, `book` stays. Refused:
  /// a title that will not do, a type other than 11 and 12, and a parent that is not in use, is of another
  /// type or has a parent itself.
  Result<> addCate();
  /// Deletes the category and its children, switches it off in all books and takes its budget away. Other
  /// records keep naming it.
  Result<> delCate();
  /// Gives it another title. Where a sibling has that title, the two become one: this one is deleted, what
  /// refers to it or to its children goes to the other, and this object is the other one from then on.
  /// Refused: the title it has, and one that will not do.
  Result<CategoryChange> rename(std::string_view newTitle);
  /// Moves it under another top-level category, or to the top for the root; its records follow. Where that
  /// has a child of the title already, the two become one as by `rename`. Refused: itself, its own child or
  /// another subcategory for a parent, a parent of another type, the one it has, and for one with children.
  Result<CategoryChange> moveTo(const MVCategory& newParent);
  /// Moves the records from `fromDate` to `toDate` (both counted in; none: no limit) to another category of
  /// the type, those of its children too; its budget stays, payments go where all their items went. Answers
  /// how many in use there were.
  Result<std::int64_t> moveDataTo(const MVCategory& other, std::optional<Date> fromDate,
                                  std::optional<Date> toDate);
  /// Writes the positions of the list as the order by hand. Refused with a key that is none.
  static Result<> saveCustomCategoryOrder(MVAppRoot& root, const std::vector<MVCategory>& list);

  // Whether a book has the category; without a row for the book it has. Refused for what is no book.
  Result<> enabledForBook(const MonivaAccount& inBook);
  /// On in that book, off in every other.
  Result<> enabledForBookOnly(const MonivaAccount& inBook);
  /// Also takes the category's budget in that book away.
  Result<> disabledForBook(const MonivaAccount& inBook);
  /// Keys of the books it is switched off in.
  Result<std::vector<std::string>> getBelongBookList() const;

  /// The payment account that goes with the category; a blank key for none. Refused for what is no live
  /// payment account.
  Result<> associateWithAccount(const MonivaAccount& account);
  Result<std::optional<MonivaAccount>> getAssociatedAccount() const;

  /// How many records in use name it, as its own or as the one above.
  Result<std::int64_t> recordCount() const;
  /// Counts uses of the category, in general and in the book; not an edit.
  bool updateUsingCount(const MonivaAccount& inBook, int uses = 1);
  /// Counts the uses afresh, by the records that were entered or edited in the range (both ends counted in);
  /// not an edit. The static one does so for all categories and answers how many counts were wrong.
  Result<> updateUsingCountFromDate(Date from, Date toDate);
  static Result<int> updateUsingCountFromDate(MVAppRoot& root, Date from, Date toDate);
  /// The count as it stands: in `book` in its view, otherwise in all.
  Result<int> getUsingCount() const;

  // Repairs of the whole tree, each one transaction: refused, nothing has changed.

  /// Removes rows nobody can use. With `changeEditDate`, a row of a book that had duplicates gets a new
  /// stamp, so that other devices hear which one is kept.
  static Result<RemovedCategoryRows> clearDuplicatedItemChangeEditDate(MVAppRoot& root, bool changeEditDate);
  /// Makes categories of one type, parent and title one: one in use goes before a deleted one, then the one
  /// edited last. What refers to the others refers to it afterwards; their rows are removed for good. Answers
  /// how many were.
  static Result<int> clearDuplicateCategory(MVAppRoot& root);
  /// Gives categories that share their key with another row of the table a key of their own, all but one
  /// where only categories share it (the one in use, then the first made). Their transactions follow as far
  /// as they can be told apart: by the category above for a subcategory, by income and expense for a
  /// top-level one. Answers how many were.
  static Result<int> clearDuplicateCategoryPK(MVAppRoot& root);

  MVAppRoot& root() const { return *root_; }

 private:
  enum class Part { on, off, all };
  Result<std::vector<MVCategory>> list(Part part) const;
  Result<std::vector<MVCategory>> tree() const;
  Result<> switchForBook(const MonivaAccount& inBook, bool on);

  MVAppRoot* root_;
};

}  // namespace moniva
