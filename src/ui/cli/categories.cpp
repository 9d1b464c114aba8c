#include "ui/cli/categories.h"

#include <fmt/ranges.h>

#include "model/transaction_type.h"
#include "ui/cli/command_error.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

using CategoryTree = std::vector<MVCategory>;

/// What a name can mean in a tree.
struct CategoryMatch {
  const MVCategory* exact = nullptr;
  std::vector<const MVCategory*> below;  ///< subcategories of that title
};

CategoryMatch meantBy(const CategoryTree& tree, std::string_view name) {
  CategoryMatch meant;
  for (const auto& top : tree) {
    if (top.title == name) meant.exact = &top;
  }
  for (const auto& top : tree) {
    for (const auto& child : top.subcategoryArray) {
      if (meant.exact == nullptr && (pathOf(child) == name || child.cateString() == name) &&
          child.title != name) {
        meant.exact = &child;
      }
      if (child.title == name) meant.below.push_back(&child);
    }
  }
  return meant;
}

CategoryTree treeOf(Session& session, int type) {
  return done(MVCategory::rootCateForType(session.root(), type).getAllSubcategoryTree());
}

}  // namespace

boost::json::object jsonOf(Session& session, const MVCategory& category) {
  boost::json::object object{{"pk", category.pk},
                             {"title", category.title},
                             {"type", category.type},
                             {"supcategory", nullptr},
                             {"orderString", category.orderString},
                             {"orderID", category.orderID},
                             {"usedTimes", category.usedTimes},
                             {"enabled", category.enabled},
                             {"deleted", category.deleted},
                             {"familyUser", category.familyUser},
                             {"ipid", category.ipid}};
  if (category.isSubCate()) {
    const auto above =
        category.supcategory
            ? *category.supcategory
            : MVCategory::getCategory(session.root(), category.parent).value_or(MVCategory(session.root()));
    object["supcategory"] = {{"pk", category.parent}, {"title", above.title}};
    return object;
  }
  const auto below = [&](const CategoryTree& children) {
    boost::json::array list;
    for (const auto& child : children) list.push_back(jsonOf(session, child));
    return list;
  };
  object["subcategoryArray"] = below(category.subcategoryArray);
  object["diabledSubcategoryArray"] = below(category.diabledSubcategoryArray);
  return object;
}

std::string pathOf(const MVCategory& category) {
  if (!category.isSubCate()) return category.title;
  const auto above =
      category.supcategory
          ? *category.supcategory
          : MVCategory::getCategory(category.root(), category.parent).value_or(MVCategory(category.root()));
  return fmt::format("{}/{}", above.title, category.title);
}

MVCategory categoryTyped(Session& session, const std::string& name, int type) {
  const bool isIncome = type == kind::kIncome;
  const auto tree = treeOf(session, type);
  const auto meant = meantBy(tree, name);
  if (meant.exact != nullptr) return *meant.exact;
  if (meant.below.size() == 1) return *meant.below.front();
  if (!meant.below.empty()) {
    std::vector<std::string> paths;
    for (const auto* category : meant.below) paths.push_back(fmt::format("'{}'", pathOf(*category)));
    throw refused("there are several categories '{}': {}", name, fmt::format("{}", fmt::join(paths, ", ")));
  }
  std::vector<std::string> names;
  for (const auto& top : tree) {
    names.push_back(top.title);
    for (const auto& child : top.subcategoryArray) {
      names.push_back(child.title);
      names.push_back(pathOf(child));
    }
  }
  const auto others = treeOf(session, isIncome ? kind::kExpense : kind::kIncome);
  Phrase hint =
      names.empty() ? phrase("add it with: moniva category add NAME") : phrase("see: moniva category list");
  if (const auto other = meantBy(others, name); other.exact != nullptr || !other.below.empty()) {
    hint = isIncome ? phrase("there is one of expenses: leave out --income")
                    : phrase("there is one of income: add --income");
  } else if (const auto near = didYouMean(name, names)) {
    hint = phrase("did you mean '{}'?", *near);
  }
  throw isIncome ? refused("there is no income category '{}'; {}", name, hint)
                 : refused("there is no category '{}'; {}", name, hint);
}

}  // namespace moniva
