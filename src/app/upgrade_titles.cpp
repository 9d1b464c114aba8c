// Categories and vendors that older stores know by their titles, and the records that do.

#include <map>

#include "app/upgrade_support.h"
#include "model/category_rows.h"
#include "model/vendor_cleanup.h"
#include "model/vendor_rows.h"

namespace moniva {
namespace {

struct TitledRow {
  std::int64_t row = 0;
  std::string key;
  std::string title;
  std::string parent;
  int type = 0;

  bool isTop() const { return parent == kRootKey; }
};

/// Of several rows of one title the one that is meant comes first: in use, then edited last.
Result<std::vector<TitledRow>> titledRows(MVAppRoot& root) {
  return loaded(root,
                "select pk, oldTitle, title, parent, type from category where type in (6, 9, 11, 12) order by"
                " coalesce(deleted, 0) != 0, typeof(editDate) = 'text', editDate DESC, pk",
                {}, [](const Run& run) {
                  return TitledRow{run.integer(0), std::string(run.text(1)), std::string(run.text(2)),
                                   std::string(run.text(3)), static_cast<int>(run.integer(4))};
                });
}

/// The titles and keys of categories and vendors, for looking names up.
class Titles {
 public:
  void add(const TitledRow& row) {
    if (!row.key.empty()) keys_.emplace(std::pair(row.type, row.key), row);
    if (row.title.empty() || row.key.empty()) return;
    below_.emplace(std::tuple(row.type, row.parent, row.title), row.key);
    auto& [key, equals] = anywhere_[{row.type, row.title}];
    if (equals++ == 0) key = row.key;
  }
  const TitledRow* withKey(int type, const std::string& key) const {
    const auto found = keys_.find({type, key});
    return found == keys_.end() ? nullptr : &found->second;
  }
  /// The key of that title below the parent; blank for none.
  std::string below(int type, std::string_view parent, const std::string& title) const {
    const auto found = below_.find({type, std::string(parent), title});
    return found == below_.end() ? std::string() : found->second;
  }
  /// The key of the one row of that title; blank where there is none or several.
  std::string only(int type, const std::string& title) const {
    const auto found = anywhere_.find({type, title});
    return found == anywhere_.end() || found->second.second > 1 ? std::string() : found->second.first;
  }

 private:
  std::map<std::pair<int, std::string>, TitledRow> keys_;
  std::map<std::tuple<int, std::string, std::string>, std::string> below_;
  std::map<std::pair<int, std::string>, std::pair<std::string, int>> anywhere_;
};

/// The keys there are, and how many were made of each type, parent and title.
struct TakenKeys {
  std::set<std::string> keys;
  std::map<std::tuple<int, std::string, std::string>, int> equals;
};

Result<> writeTitledKey(MVAppRoot& root, TitledRow& row, const std::string& parentTitle, TakenKeys& taken) {
  // Equal rows have keys of their own until they are made one.
  int& equals = taken.equals[{row.type, parentTitle, row.title}];
  while (row.key.empty()) {
    const std::string key =
        derivedKey({"category", fmt::format("{} {}", row.type, ++equals), parentTitle, row.title});
    if (taken.keys.insert(key).second) row.key = key;
  }
  return write(root, "update category set oldTitle = ? where pk = ?", row.key, row.row);
}

Result<TakenKeys> takenKeys(MVAppRoot& root) {
  const auto keys = loadedTexts(root, "select oldTitle from category where oldTitle != ''");
  if (!keys) return tl::make_unexpected(keys.error());
  return TakenKeys{.keys = {keys->begin(), keys->end()}, .equals = {}};
}

/// What a record names: a pair of columns as it stands.
struct Named {
  std::string category;
  std::string subcategory;
  bool operator==(const Named&) const = default;
};

/// The keys that a record of the type means with the titles it names. A title that is nothing's stays.
Named keysMeant(const Titles& titles, int type, const Named& named) {
  Named meant = named;
  if (!named.category.empty() && titles.withKey(type, named.category) == nullptr) {
    auto key = titles.below(type, kRootKey, named.category);
    if (key.empty()) key = titles.only(type, named.category);
    if (!key.empty()) meant.category = key;
  }
  if (named.subcategory.empty() || named.subcategory == kNoCategory) return meant;
  const TitledRow* top = titles.withKey(type, meant.category);
  const TitledRow* chosen = titles.withKey(type, named.subcategory);
  if (top == nullptr) {
    const auto key = chosen == nullptr ? titles.only(type, named.subcategory) : std::string();
    if (!key.empty()) meant.subcategory = key;
  } else if (chosen == nullptr || (chosen->key != top->key && chosen->parent != top->key)) {
    // The key of one category may be the title of another.
    const auto key = titles.below(type, top->key, named.subcategory);
    if (!key.empty()) {
      meant.subcategory = key;
    } else if (top->title == named.subcategory || named.category == named.subcategory) {
      meant.subcategory = top->key;
    }
  }
  return meant;
}

/// Records of expenses, or of income. Payments of older stores may name their book in the place of a
/// category.
constexpr std::string_view kExpenses = "(type in (12, 14, 62, 82, 86) or (type = 85 and syear = 12))";
constexpr std::string_view kIncomes = "(type in (11, 13, 81) or (type = 85 and syear = 11))";
constexpr std::string_view kNamesBook =
    "(bid is '10' and category in (select oldTitle from account where kind = 2))";

Result<> nameCategoriesByKeys(MVAppRoot& root, const Titles& titles, int type) {
  const std::string_view kinds = type == kind::kIncome ? kIncomes : kExpenses;
  const auto combinations =
      loaded(root,
             fmt::format("select distinct category, subcategory from transactions where {} and not {} and"
                         " typeof(category) in ('text', 'null') and typeof(subcategory) in ('text', 'null')",
                         kinds, kNamesBook),
             {}, [](const Run& run) {
               return Named{std::string(run.text(0)), std::string(run.text(1))};
             });
  if (!combinations) return tl::make_unexpected(combinations.error());
  // Each by an index.
  const std::string withTop = fmt::format(
      "update transactions set category = ?, subcategory = ?, editDate = ?, edit_ipid = ? where category = ?"
      " and coalesce(subcategory, '') = ? and {} and not {}",
      kinds, kNamesBook);
  const std::string withoutTop = fmt::format(
      "update transactions set category = ?, subcategory = ?, editDate = ?, edit_ipid = ? where"
      " (category = ? or category is NULL) and subcategory = ? and {}",
      kinds);
  for (const auto& named : *combinations) {
    const Named meant = keysMeant(titles, type, named);
    if (meant == named) continue;
    auto done = write(root, named.category.empty() ? withoutTop : withTop, meant.category, meant.subcategory,
                      root.editStamp(), root.itsUDID(), named.category, named.subcategory);
    if (!done) return done;
  }
  return {};
}

/// Persons of debts and accounts of transfers stand in the same column and stay.
Result<> nameVendorsByKeys(MVAppRoot& root, const Titles& titles, int type) {
  const std::string which =
      fmt::format("{} and coalesce(book, '') not in ('BorrowBook', 'DebtBook', 'LendBook')",
                  type == Vendor::kPayer ? kIncomes : kExpenses);
  const auto names = loadedTexts(
      root, fmt::format("select distinct vendor from transactions where vendor != '' and vendor not in"
                        " ('NoVendor', 'NoPayee', 'NoPayer') and typeof(vendor) = 'text' and {}",
                        which));
  if (!names) return tl::make_unexpected(names.error());
  const std::string sql = fmt::format(
      "update transactions set vendor = ?, editDate = ?, edit_ipid = ? where vendor = ? and {}", which);
  for (const auto& name : *names) {
    if (titles.withKey(type, name) != nullptr) continue;
    const auto key = titles.only(type, name);
    if (key.empty()) continue;
    if (auto done = write(root, sql, key, root.editStamp(), root.itsUDID(), name); !done) return done;
  }
  return {};
}

}  // namespace

Result<> giveCategoryKeys(MVAppRoot& root, std::set<std::string>& given) {
  auto rows = titledRows(root);
  if (!rows) return tl::make_unexpected(rows.error());
  auto taken = takenKeys(root);
  if (!taken) return tl::make_unexpected(taken.error());
  Titles tops;
  for (auto& row : *rows) {
    if (!isCategoryType(row.type)) continue;
    const bool isBare = row.key.empty() && !row.title.empty();
    if (isBare && row.parent.empty()) {
      row.parent = kRootKey;
      if (auto done = write(root, "update category set parent = '_rootCate' where pk = ?", row.row); !done)
        return done;
    }
    if (!row.isTop()) continue;
    if (isBare) {
      if (auto done = writeTitledKey(root, row, "", *taken); !done) return done;
      given.insert(row.key);
    }
    tops.add(row);
  }
  for (auto& row : *rows) {
    if (!isCategoryType(row.type) || row.isTop() || row.parent.empty()) continue;
    std::string parentTitle = row.parent;
    bool changes = row.key.empty() && !row.title.empty();
    if (const TitledRow* parent = tops.withKey(row.type, row.parent)) {
      parentTitle = parent->title;
    } else if (const auto key = tops.below(row.type, kRootKey, row.parent); !key.empty()) {
      auto done =
          write(root, "update category set parent = ?, oldParent = ? where pk = ?", key, row.parent, row.row);
      if (!done) return done;
      changes = true;
    }
    if (row.key.empty() && !row.title.empty()) {
      if (auto done = writeTitledKey(root, row, parentTitle, *taken); !done) return done;
    }
    if (changes && !row.key.empty()) given.insert(row.key);
  }
  return {};
}

Result<> giveVendorKeys(MVAppRoot& root, std::set<std::string>& given) {
  auto rows = titledRows(root);
  if (!rows) return tl::make_unexpected(rows.error());
  auto taken = takenKeys(root);
  if (!taken) return tl::make_unexpected(taken.error());
  for (auto& row : *rows) {
    if (isCategoryType(row.type) || !row.key.empty() || row.title.empty()) continue;
    if (auto done = writeTitledKey(root, row, "", *taken); !done) return done;
    given.insert(row.key);
  }
  if (auto cleared = clearDuplicateVendor(root); !cleared) return tl::make_unexpected(cleared.error());
  return {};
}

Result<> nameByKeys(MVAppRoot& root) {
  const auto rows = titledRows(root);
  if (!rows) return tl::make_unexpected(rows.error());
  Titles titles;
  for (const auto& row : *rows) titles.add(row);
  for (const int type : {kind::kIncome, kind::kExpense}) {
    if (auto done = nameCategoriesByKeys(root, titles, type); !done) return done;
  }
  for (const int type : {Vendor::kPayee, Vendor::kPayer}) {
    if (auto done = nameVendorsByKeys(root, titles, type); !done) return done;
  }
  return {};
}

}  // namespace moniva
