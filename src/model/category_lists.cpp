#include <algorithm>
#include <charconv>
#include <span>
#include <unordered_map>

#include "model/category_rows.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

using CategoryList = Result<std::vector<MVCategory>>;

/// The columns of a list in a book's view: a category's own, and what the book's row says. Without a row the
/// category is on; of several rows of a book, one that is on counts.
constexpr std::string_view kOfBook =
    "category LEFT OUTER JOIN categoryofbook on category.oldTitle = categoryofbook.cate and (book = ? or book"
    " = '' or book is NULL)";
constexpr std::string_view kBookColumns = ", coalesce(used, 0), max(enabled is not 0)";

/// The whole number a text begins with; 0 for none, -1 for one too large.
int leadingNumber(std::string_view text) {
  int value = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
  return read.ec == std::errc::result_out_of_range ? -1 : value;
}

std::string_view orderClause(std::string_view byHand, std::string_view byUse, int mode) {
  switch (mode) {
    case 0:
      return byHand;
    case 1:
      return byUse;
    case 2:
      return " order by orderString";
    default:
      return {};
  }
}

/// The order of a list: by the clause, and where that leaves it open, by hand as all books have it, then as
/// the categories were made.
std::string inOrder(std::string_view clause) {
  return clause.empty() ? std::string() : fmt::format("{}, orderID, category.pk", clause);
}

CategoryList rowsOf(const MVCategory& above, const std::string& sql, std::initializer_list<Value> arguments,
                    bool hasBookColumns) {
  Connection* db = above.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(sql, arguments);
  std::vector<MVCategory> rows;
  while (run.next()) {
    MVCategory& row = rows.emplace_back(categoryOfRow(above.root(), run));
    row.book = above.book;
    if (!hasBookColumns) continue;
    row.usedTimes = static_cast<int>(run.integer(kCategoryColumnCount));
    row.enabled = run.integer(kCategoryColumnCount + 1) != 0;
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return rows;
}

void mostUsedFirst(std::vector<MVCategory>& categories) {
  std::ranges::stable_sort(categories, std::greater<>(), &MVCategory::usedTimes);
}

}  // namespace

bool MVCategory::booksDiffer(MVAppRoot& root) {
  return root.objectForKey(kPerBookSetting) == "1";
}

bool MVCategory::isOfBook() const {
  return book && !book->pk.empty() && booksDiffer(*root_);
}

int MVCategory::getOrderType(MVAppRoot& root, int type) {
  const int mode = leadingNumber(root.objectForKey(orderSetting(type)));
  return mode < 0 || mode > 2 ? 2 : mode;
}

Result<> MVCategory::setOrderType(MVAppRoot& root, int type, int mode) {
  if (!isCategoryType(type)) return refuse("{} is neither the type of income nor of expenses", type);
  if (mode < 0 || mode > 2) return refuse("{} is no order of categories: 0, 1 and 2 are", mode);
  if (!root.setObject(std::to_string(mode), orderSetting(type))) {
    return refuse("the order of the categories could not be written to the store");
  }
  return {};
}

std::string_view MVCategory::getOrderSQL() const {
  if (isOfBook()) {
    const std::string mode = book->getCategoryOrder(type);
    return orderClause(" order by cateOrder", " order by used DESC", mode.size() == 1 ? mode[0] - '0' : -1);
  }
  const std::string_view key = orderSetting(type);
  int mode = leadingNumber(root_->objectForKey(key));
  if (mode < 0 || mode > 2) {
    mode = 2;
    // Where a transaction is open, another time will do: the list must not fail for it.
    Connection* db = root_->db().getDatabase();
    if (db != nullptr && !db->inTransaction()) {
      Transaction transaction(*db);
      static_cast<void>(transaction.began() &&
                        root_->executeUpdate("delete from monivaSys where key = ?", key) &&
                        root_->executeUpdate("insert into monivaSys (value,key,editDate) values(?,?,?)", "2",
                                             key, root_->editStamp()) &&
                        transaction.commit());
    }
  }
  return orderClause(" order by orderID", " order by usedTimes DESC", mode);
}

CategoryList MVCategory::list(Part part) const {
  const std::string_view above = isRoot() ? kRootKey : std::string_view(pk);
  const std::string order = inOrder(getOrderSQL());
  CategoryList rows;
  if (!isOfBook()) {
    if (part == Part::off) return rows;
    rows = rowsOf(*this,
                  fmt::format("select {} from category where deleted = 0 and type = ? and parent = ? and"
                              " deleted = 0{}",
                              kCategoryColumns, order),
                  {type, above}, false);
  } else {
    // A row of another book says nothing of this one, so the book is part of the join.
    constexpr std::string_view kHaving[] = {" having max(enabled is not 0) = 1",
                                            " having max(enabled is not 0) = 0", ""};
    rows = rowsOf(
        *this,
        fmt::format("select {}{} from {} where type = ? and parent = ? and deleted = 0 group by oldTitle{}{}",
                    kCategoryColumns, kBookColumns, kOfBook, kHaving[static_cast<std::size_t>(part)], order),
        {book->pk, type, above}, true);
  }
  if (rows && !isRoot() && !rows->empty()) {
    auto shared = std::make_shared<MVCategory>(*this);
    shared->subcategoryArray.clear();
    shared->diabledSubcategoryArray.clear();
    for (auto& row : *rows) row.supcategory = shared;
  }
  return rows;
}

CategoryList MVCategory::getSubcategoryList() const {
  return list(Part::on);
}

CategoryList MVCategory::getDiabledSubcategoryList() const {
  return list(Part::off);
}

CategoryList MVCategory::getAllSubcategoryList() const {
  return list(Part::all);
}

CategoryList MVCategory::tree() const {
  if (!isRoot()) return list(Part::all);
  const std::string order = inOrder(getOrderSQL());
  auto rows = isOfBook() ? rowsOf(*this,
                                  fmt::format("select {}{} from {} where type = ? and deleted = 0 group by"
                                              " oldTitle{}",
                                              kCategoryColumns, kBookColumns, kOfBook, order),
                                  {book->pk, type}, true)
                         : rowsOf(*this,
                                  fmt::format("select {} from category where deleted = 0 and type = ?{}",
                                              kCategoryColumns, order),
                                  {type}, false);
  if (!rows) return rows;
  // The rows come in the order of all, which is also the order below each.
  const auto below =
      std::stable_partition(rows->begin(), rows->end(), [](const auto& row) { return row.isSuperCate(); });
  std::vector<MVCategory> tops(std::make_move_iterator(rows->begin()), std::make_move_iterator(below));
  std::unordered_map<std::string_view, std::size_t> places;
  for (std::size_t place = 0; place < tops.size(); ++place) places.emplace(tops[place].pk, place);
  std::vector<std::shared_ptr<const MVCategory>> shared(tops.size());
  for (MVCategory& row : std::span(below, rows->end())) {
    const auto above = places.find(row.parent);
    if (!row.isSubCate() || above == places.end()) continue;
    MVCategory& top = tops[above->second];
    auto& own = shared[above->second];
    if (!own) own = std::make_shared<const MVCategory>(top);
    row.supcategory = own;
    (row.enabled ? top.subcategoryArray : top.diabledSubcategoryArray).push_back(std::move(row));
  }
  return tops;
}

CategoryList MVCategory::getAllSubcategoryTree() const {
  return tree();
}

CategoryList MVCategory::getAllAvailabledSubcategoryTree() const {
  auto all = tree();
  if (!all) return all;
  std::erase_if(*all, [](const MVCategory& top) { return !top.enabled; });
  for (auto& top : *all) top.diabledSubcategoryArray.clear();
  return all;
}

CategoryList MVCategory::getAllSubcategoryTreeUseTimes() const {
  auto all = tree();
  if (!all) return all;
  mostUsedFirst(*all);
  for (auto& top : *all) {
    mostUsedFirst(top.subcategoryArray);
    mostUsedFirst(top.diabledSubcategoryArray);
  }
  return all;
}

}  // namespace moniva
