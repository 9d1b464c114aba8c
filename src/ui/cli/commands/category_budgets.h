#pragma once

#include <boost/json/array.hpp>
#include <string>
#include <vector>

#include "model/mv_category.h"
#include "reports/mv_category_budget.h"
#include "ui/cli/session.h"

namespace moniva {

/// What a category and those below it have of budgets, read before a change that may take it from them.
class CategoryBudgets {
 public:
  /// What has gone into `into` after the change is not lost, unless that one had a budget in the book itself.
  explicit CategoryBudgets(Session& session, const MVCategory& category,
                           const std::optional<MVCategory>& into = std::nullopt);

  /// After the change: " With it went its budget of €150.00 in 'Home'." for each that is gone.
  std::string lostText();
  boost::json::array lostJson();

 private:
  struct Share {
    std::string key;    ///< of the category
    std::string title;  ///< of one below; blank for the category itself
    CategoryShare share;
  };
  void take(const MVCategory& category, const std::string& title, const std::optional<MVCategory>& into);
  std::vector<Share> lost();

  Session& session_;
  std::vector<Share> shares_;
};

}  // namespace moniva
