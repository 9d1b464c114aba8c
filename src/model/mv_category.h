#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "model/moniva_account.h"
#include "model/order_string.h"

namespace moniva {

/// One expense or income category of the two-level tree that all books share. Transactions refer to it by
/// `pk`: the top-level one in `category`, the chosen one in `subcategory`.
class MVCategory {
 public:
  explicit MVCategory(MVAppRoot& root) : root_(&root) {}

  std::string title;
  int type = 12;
  /// Key of the parent; "_rootCate" for a top-level category.
  std::string parent = "_rootCate";
  std::string orderString;
  std::string pk;
  int deleted = 0;

  /// The in-memory root of the tree of that type.
  static MVCategory rootCateForType(MVAppRoot& root, int type);
  /// The category with the key, deleted ones too; nothing when there is none.
  static std::optional<MVCategory> getCategory(MVAppRoot& root, std::string_view key);
  /// The live category of that title, type and parent key.
  static std::optional<MVCategory> withTitle(MVAppRoot& root, std::string_view title, int type,
                                             std::string_view parent);

  bool isRoot() const { return title == "_rootCate"; }
  bool isSuperCate() const { return !isRoot() && parent == "_rootCate"; }
  bool isSubCate() const { return !isRoot() && parent != "_rootCate"; }

  /// Live children by their sort text (top-level categories for the root).
  std::vector<MVCategory> getAllSubcategoryList() const;
  /// "Food", or "Food - Bakery" for a subcategory whose title differs from its parent's.
  std::string cateString() const;

  /// Adds the category below its parent, or revives or touches the row of that title, type and parent that is
  /// there; `pk` is its key afterwards. A blank title is refused.
  Result<> addCate();
  /// Counts uses of the category, in general and in the book; not an edit.
  bool updateUsingCount(const MonivaAccount& book, int uses = 1);

  MVAppRoot& root() const { return *root_; }

 private:
  MVAppRoot* root_;
};

}  // namespace moniva
