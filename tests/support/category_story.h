#pragma once

#include "model/book_categories.h"
#include "support/household.h"

namespace moniva {

/// A household that keeps categories apart by book, with a second book and short ways to say things.
class CategoryStory : public Household {
 public:
  explicit CategoryStory(bool byBook = true) : club(book("Club")) {
    if (byBook) root.setObject("1", "enabledCategoryForBook");
  }
  /// "Food" or "Food/Bakery", made when it is new.
  MVCategory at(const std::string& path, int type = kind::kExpense) {
    const auto slash = path.find('/');
    auto top = category(path.substr(0, slash), type);
    if (slash == std::string::npos) return top;
    MVCategory below(root);
    below.title = path.substr(slash + 1);
    below.type = type;
    below.parent = top.pk;
    EXPECT_TRUE(below.addCate());
    return below;
  }
  /// A record of the category, or with `plain` a row as given.
  std::string record(const std::string& path, int type = kind::kExpense,
                     const std::string& date = "2024-02-29") {
    const auto chosen = at(path);
    Spend made(root);
    made.amount = 1;
    made.datetime = on(date);
    made.book = home->pk;
    made.account = cash->pk;
    made.category = chosen.isSubCate() ? chosen.parent : chosen.pk;
    made.subcategory = chosen.pk;
    EXPECT_TRUE(made.add());
    set(made, "type", type);
    return made.eid;
  }
  /// Every live category with its records: "Food/Bakery 2", and what refers to none of them: "?".
  std::string shown() {
    return rows(
        "select name || ' ' || (select count(*) from transactions where type != 62 and subcategory = key and"
        " category = top) || ' ' || (select count(*) from transactions where type = 62 and category = key) "
        "from"
        " (select c.oldTitle as key, case when p.oldTitle is null then c.oldTitle else p.oldTitle end as top,"
        "  coalesce(p.title || '/', '') || c.title as name from category c left join category p on "
        "p.oldTitle ="
        "  c.parent and p.deleted = 0 where c.deleted = 0 and c.type = 12) union all"
        " select '?' from transactions where category not in (select oldTitle from category where deleted = "
        "0)"
        " order by 1");
  }
  std::string titles(const Result<std::vector<MVCategory>>& list) {
    std::string text;
    for (const auto& category : list.value()) {
      text += (text.empty() ? "" : " ") + category.title + (category.enabled ? "" : "-");
      for (const auto& child : category.subcategoryArray) text += "/" + child.title;
      for (const auto& child : category.diabledSubcategoryArray) text += "/" + child.title + "-";
    }
    return text;
  }
  MVCategory top(const MonivaAccount* inBook = nullptr) {
    auto made = MVCategory::rootCateForType(root, 12);
    if (inBook != nullptr) made.book = std::make_shared<MonivaAccount>(*inBook);
    return made;
  }
  MonivaAccount club;
};

}  // namespace moniva
