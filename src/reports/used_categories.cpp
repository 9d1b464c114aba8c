#include "reports/used_categories.h"

#include <algorithm>
#include <set>

#include "model/category_rows.h"
#include "model/record_names.h"
#include "reports/breakdown.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// A top-level category and those below it, as far as they are asked for.
struct Branch {
  MVCategory top;
  std::vector<MVCategory> below;
};

bool holds(const std::vector<MVCategory>& list, std::string_view key) {
  return std::ranges::find(list, key, &MVCategory::pk) != list.end();
}

std::vector<MVCategory> flattened(std::vector<Branch> branches) {
  std::vector<MVCategory> list;
  for (auto& branch : branches) {
    list.push_back(std::move(branch.top));
    std::ranges::move(branch.below, std::back_inserter(list));
  }
  return list;
}

/// Records that name a subcategory where its parent should be name the parent. Its budget is its own. What
/// cannot be written now is left for another time.
void mendCategoryColumn(MVAppRoot& root, const std::vector<MVCategory>& misplaced) {
  static_cast<void>(atomically(root, [&](Connection&) -> Result<> {
    for (const auto& sub : misplaced) {
      const auto kinds = kindsOf(root, sub.pk, sub.type);
      if (!kinds) return tl::make_unexpected(kinds.error());
      if (!chooseTopItself(root, sub, sub.pk)) return refusalOfStore(root);
      const auto written = write(
          root,
          fmt::format("update transactions set category = ?, editDate = ?, edit_ipid = ? where category = ?"
                      " and type != ?{}",
                      *kinds),
          sub.parent, root.editStamp(), root.itsUDID(), sub.pk, kind::kCategoryAllocation);
      if (!written) return written;
    }
    return {};
  }));
}

class UsedCategories {
 public:
  UsedCategories(Connection& db, const MonivaAccount& book, int type, Date from, Date to)
      : db_(db),
        book_(book),
        type_(type),
        begin_(book.root().calendar().dateBegin(from)),
        end_(book.root().calendar().dateEnd(to)),
        names_(book.root()) {}

  Result<std::vector<Branch>> read() {
    const auto tops = keys("category", nullptr);
    if (!tops) return tl::make_unexpected(tops.error());
    std::vector<MVCategory> misplaced;
    for (const auto& key : *tops) {
      const auto named = names_.category(key, type_);
      if (!named) continue;
      if (!named->isSubCate()) {
        branchOf(*named);
        continue;
      }
      const auto parent = names_.category(named->parent, named->type);
      if (!parent || !parent->isSuperCate()) continue;
      addBelow(branchOf(*parent), *named);
      misplaced.push_back(*named);
    }
    for (auto& branch : branches_) {
      const auto subs = keys("subcategory", &branch.top.pk);
      if (!subs) return tl::make_unexpected(subs.error());
      for (const auto& key : *subs) {
        if (const auto named = names_.category(key, type_); named && named->isSubCate())
          addBelow(branch, *named);
      }
      std::ranges::stable_sort(branch.below, {}, &MVCategory::orderString);
    }
    std::ranges::stable_sort(branches_, {}, [](const Branch& branch) { return branch.top.orderString; });
    if (!misplaced.empty()) mendCategoryColumn(book_.root(), misplaced);
    return std::move(branches_);
  }

 private:
  /// The keys records of the period have in the column, of those of one category where `top` is given.
  Result<std::vector<std::string>> keys(std::string_view column, const std::string* top) {
    std::vector<Value> slots = {type_, furtherKind(type_), begin_, end_};
    if (top != nullptr) slots.emplace_back(*top);
    slots.emplace_back(book_.pk);
    return keysOf(db_,
                  fmt::format("select {0} from transactions where (type = ? or type = ?) and ? <= datetime"
                              " and datetime <= ?{1} and {2} and deleted = 0 and paid = 1 group by {0}",
                              column, top != nullptr ? " and category = ?" : "", accountQuerySQL(book_)),
                  slots);
  }

  Branch& branchOf(const MVCategory& top) {
    const auto known =
        std::ranges::find(branches_, top.pk, [](const Branch& branch) { return branch.top.pk; });
    return known != branches_.end() ? *known : branches_.emplace_back(Branch{top, {}});
  }

  void addBelow(Branch& branch, const MVCategory& sub) {
    const bool isKnown =
        std::ranges::any_of(branches_, [&](const Branch& other) { return holds(other.below, sub.pk); });
    if (!isKnown) branch.below.push_back(sub);
  }

  Connection& db_;
  const MonivaAccount& book_;
  int type_;
  Date begin_;
  Date end_;
  RecordNames names_;
  std::vector<Branch> branches_;
};

Result<std::vector<Branch>> usedBranches(const MonivaAccount& book, int type, Date from, Date to) {
  Connection* db = book.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  return UsedCategories(*db, book, type, from, to).read();
}

}  // namespace

Result<std::vector<MVCategory>> usedCategoriesOf(const MonivaAccount& book, int type, Date from,
                                                 Date toDate) {
  return usedBranches(book, type, from, toDate).map(flattened);
}

Result<std::vector<MVCategory>> enabledCategoriesAndUsedCategoriesOf(const MonivaAccount& book, int type,
                                                                     Date from, Date toDate) {
  auto used = usedBranches(book, type, from, toDate);
  if (!used) return tl::make_unexpected(used.error());
  MVCategory all = MVCategory::rootCateForType(book.root(), type);
  all.book = std::make_shared<const MonivaAccount>(book);
  auto enabled = all.getAllAvailabledSubcategoryTree();
  if (!enabled) return tl::make_unexpected(enabled.error());
  for (auto& top : *enabled) {
    auto below = std::move(top.subcategoryArray);
    top.subcategoryArray.clear();
    auto known = std::ranges::find(*used, top.pk, [](const Branch& branch) { return branch.top.pk; });
    if (known == used->end()) {
      used->push_back({std::move(top), {}});
      known = used->end() - 1;
    }
    for (auto& sub : below) {
      if (!holds(known->below, sub.pk)) known->below.push_back(std::move(sub));
    }
  }
  return flattened(std::move(*used));
}

Result<std::vector<MVCategory>> enabledCategoriesAndUsedCategoriesOf(const MonivaAccount& book, int type,
                                                                     Date forMonthOf) {
  const BookPeriods periods(book.root().calendar(), book.periodStarts(), book.root().now());
  return enabledCategoriesAndUsedCategoriesOf(book, type, periods.firstDateOfMonth(forMonthOf),
                                              periods.lastDateOfMonth(forMonthOf));
}

Result<std::vector<MVCategory>> budgetCategories(const MonivaAccount& book) {
  Connection* db = book.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const auto keys =
      keysOf(*db,
             fmt::format("select category from transactions where type = ? and {} and deleted = 0 group by"
                         " category",
                         accountQuerySQL(book)),
             {kind::kCategoryAllocation, book.pk});
  if (!keys) return tl::make_unexpected(keys.error());
  const std::set<std::string> budgeted(keys->begin(), keys->end());
  auto tree = MVCategory::rootCateForType(book.root(), kind::kExpense).getAllSubcategoryTree();
  if (!tree) return tree;
  std::vector<MVCategory> list;
  for (auto& top : *tree) {
    auto below = std::move(top.subcategoryArray);
    top.subcategoryArray.clear();
    if (budgeted.contains(top.pk)) list.push_back(std::move(top));
    for (auto& sub : below) {
      if (budgeted.contains(sub.pk)) list.push_back(std::move(sub));
    }
  }
  return list;
}

Result<std::vector<MVCategory>> getLatestUsedCategory(const MonivaAccount& book, int type) {
  constexpr double kNinetyDays = 90 * 86400.0;
  MVAppRoot& root = book.root();
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const Date now = root.now();
  // Templates are the one kind of row of a book that its other conditions let pass and that is no use.
  const auto keys = keysOf(
      *db,
      "select oldTitle, title, max(datetime) as datetime, sday from category join transactions on"
      " category.oldTitle = transactions.subcategory where category.type = ? and transactions.type != ? and"
      " transactions.deleted = 0 and category.deleted = 0 and datetime > ? and datetime < ? and"
      " transactions.book = ? and (repeat_seed = '' or repeat_seed is NULL) and (syear = 0 or syear is NULL)"
      " group by title order by datetime DESC",
      {type, type == kind::kIncome ? kind::kIncomeTemplate : kind::kExpenseTemplate,
       now.plusSeconds(-kNinetyDays), now, book.pk});
  if (!keys) return tl::make_unexpected(keys.error());
  std::vector<MVCategory> list;
  for (const auto& key : *keys) {
    if (auto named = MVCategory::getCategory(root, key, type)) list.push_back(std::move(*named));
  }
  return list;
}

}  // namespace moniva
