#include "reports/mv_category_budget.h"

#include <fmt/format.h>

#include "model/entry_checks.h"
#include "reports/breakdown.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// The row of what the category was given; of several the one written last. "" for none.
struct Allocation {
  std::string eid;
  double amount = 0;
};

Result<Allocation> allocationOf(Connection& db, const MVCategory& category, const MonivaAccount& book) {
  Run run = db.query(
      "select eid, amount from transactions where deleted = 0 and type = ? and category = ? and book = ?"
      " order by editDate desc, eid desc",
      {kind::kCategoryAllocation, category.pk, book.pk});
  Allocation found;
  if (run.next()) found = {std::string(run.text(0)), run.real(1)};
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return found;
}

/// What was spent in the category, or in those below it, as the breakdown by category counts it.
Result<double> spentIn(Connection& db, const MVCategory& category, const BookBudget& budget) {
  const Calendar& calendar = budget.book.root().calendar();
  std::vector<Value> slots{calendar.dateBegin(budget.budgetBeginDate), calendar.dateEnd(budget.budgetEndDate),
                           kind::kExpense, furtherKind(kind::kExpense), category.pk};
  if (category.isSubCate()) slots.emplace_back(category.parent);
  slots.emplace_back(budget.book.pk);
  Run run = db.query(
      fmt::format(
          "select sum(amount) from transactions where ? <= datetime and datetime <= ? and (type = ? or"
          " type = ?) and {} and {} and deleted = 0 and paid = 1",
          category.isSubCate()
              ? "case when subcategory = '' then category else subcategory end = ? and category = ?"
              : "category = ?",
          accountQuerySQL(budget.book)),
      slots);
  if (!run.next()) return tl::make_unexpected(db.refusal());
  return run.real(0);
}

}  // namespace

Result<CategoryBudget> getBudget(const MVCategory& category, const BookBudget& budget) {
  Connection* db = budget.book.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const auto allocation = allocationOf(*db, category, budget.book);
  if (!allocation) return tl::make_unexpected(allocation.error());
  const auto spent = spentIn(*db, category, budget);
  if (!spent) return tl::make_unexpected(spent.error());
  return CategoryBudget{category, allocation->amount, budget.amount, *spent, allocation->amount - *spent};
}

Result<std::vector<CategoryBudget>> allocations(const BookBudget& budget) {
  MVAppRoot& root = budget.book.root();
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const auto keys = keysOf(*db,
                           "select category from transactions where deleted = 0 and type = ? and book = ?"
                           " group by category order by max(amount) desc, min(datetime)",
                           {kind::kCategoryAllocation, budget.book.pk});
  if (!keys) return tl::make_unexpected(keys.error());
  std::vector<CategoryBudget> list;
  for (const auto& key : *keys) {
    auto category = MVCategory::getCategory(root, key, kind::kExpense);
    if (!category) {
      category.emplace(root);
      category->pk = category->title = key;
    }
    auto given = getBudget(*category, budget);
    if (!given) return tl::make_unexpected(given.error());
    list.push_back(std::move(*given));
  }
  return list;
}

Result<std::vector<CategoryShare>> allocationsOfCategory(MVAppRoot& root, std::string_view categoryKey) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  MVCategory category(root);
  category.pk = categoryKey;
  const auto books = keysOf(*db,
                            "select book from transactions where deleted = 0 and type = ? and category = ?"
                            " group by book order by min(datetime)",
                            {kind::kCategoryAllocation, category.pk});
  if (!books) return tl::make_unexpected(books.error());
  std::vector<CategoryShare> shares;
  for (const auto& key : *books) {
    const auto book = MonivaAccount::getAccountWithPK(root, key);
    if (!book || book->isDeleted != 0) continue;
    const auto given = allocationOf(*db, category, *book);
    if (!given) return tl::make_unexpected(given.error());
    shares.push_back({*book, given->amount});
  }
  return shares;
}

Result<> updateBudget(const MVCategory& category, const MonivaAccount& book, double amount) {
  if (category.type != kind::kExpense) {
    return refuse("'{}' is a category of income; budgets are of expenses", category.title);
  }
  if (!book.isBook()) return refuse("'{}' is no book; budgets are those of books", book.title);
  if (book.isGroup) return refuse("'{}' is a group; budgets are those of its books", book.title);
  if (auto checked = checkAmount(amount); !checked) return checked;
  MVAppRoot& root = book.root();
  return atomically(root, [&](Connection& db) -> Result<> {
    const auto row = allocationOf(db, category, book);
    if (!row) return tl::make_unexpected(row.error());
    if (!row->eid.empty()) {
      return write(root, "update transactions set amount = ?, editDate = ?, edit_ipid = ? where eid = ?",
                   amount, root.editStamp(), root.itsUDID(), row->eid);
    }
    return write(root,
                 "insert into transactions (amount, category, datetime, editDate, book, type, eid, edit_ipid)"
                 " values (?,?,?,?,?,?,?,?)",
                 amount, category.pk, root.now(), root.editStamp(), book.pk, kind::kCategoryAllocation,
                 root.newIdentifier(), root.itsUDID());
  });
}

Result<> removeBudget(const MVCategory& category, const MonivaAccount& book) {
  MVAppRoot& root = book.root();
  return atomically(root, [&](Connection& db) -> Result<> {
    const auto row = allocationOf(db, category, book);
    if (!row) return tl::make_unexpected(row.error());
    if (row->eid.empty()) return refuse("'{}' has no budget in '{}'", category.title, book.title);
    return write(root,
                 "update transactions set deleted = 4, editDate = ?, edit_ipid = ? where deleted = 0 and type"
                 " = ? and category = ? and book = ?",
                 root.editStamp(), root.itsUDID(), kind::kCategoryAllocation, category.pk, book.pk);
  });
}

}  // namespace moniva
