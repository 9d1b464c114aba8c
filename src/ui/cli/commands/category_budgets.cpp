#include "ui/cli/commands/category_budgets.h"

#include <algorithm>

#include "ui/cli/command_error.h"

namespace moniva {
namespace {

bool hasShareIn(const std::vector<CategoryShare>& shares, const MonivaAccount& book) {
  return std::ranges::any_of(shares, [&](const auto& share) { return share.book.pk == book.pk; });
}

}  // namespace

CategoryBudgets::CategoryBudgets(Session& session, const MVCategory& category,
                                 const std::optional<MVCategory>& into)
    : session_(session) {
  if (category.type != kind::kExpense) return;
  take(category, "", into);
  if (category.isSubCate()) return;
  for (const auto& child : done(category.getAllSubcategoryList())) {
    take(child, child.title,
         into ? done(MVCategory::withTitle(session.root(), child.title, child.type, into->pk)) : into);
  }
}

void CategoryBudgets::take(const MVCategory& category, const std::string& title,
                           const std::optional<MVCategory>& into) {
  std::vector<CategoryShare> others;
  if (into) others = done(allocationsOfCategory(session_.root(), into->pk));
  auto own = done(allocationsOfCategory(session_.root(), category.pk));
  std::ranges::sort(own, {}, [](const CategoryShare& share) { return share.book.title; });
  for (auto& share : own) {
    if (into && !hasShareIn(others, share.book)) continue;
    shares_.push_back({category.pk, title, std::move(share)});
  }
}

std::vector<CategoryBudgets::Share> CategoryBudgets::lost() {
  std::vector<Share> gone;
  for (const auto& share : shares_) {
    const auto now = done(allocationsOfCategory(session_.root(), share.key));
    if (!hasShareIn(now, share.share.book)) gone.push_back(share);
  }
  return gone;
}

std::string CategoryBudgets::lostText() {
  std::string text;
  for (const auto& [key, title, share] : lost()) {
    const auto amount = session_.amounts().format(share.amount, share.book.currency);
    text += " ";
    text += title.empty()
                ? session_.text("With it went its budget of {} in '{}'.", amount, share.book.title)
                : session_.text("With '{}' went its budget of {} in '{}'.", title, amount, share.book.title);
  }
  return text;
}

boost::json::array CategoryBudgets::lostJson() {
  boost::json::array list;
  for (const auto& [key, title, share] : lost()) {
    list.push_back({{"category", key},
                    {"book", {{"pk", share.book.pk}, {"title", share.book.title}}},
                    {"categoryBudgetAmount", share.amount}});
  }
  return list;
}

}  // namespace moniva
