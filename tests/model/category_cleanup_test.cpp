#include <gtest/gtest.h>

#include "support/category_story.h"

namespace moniva {
namespace {

TEST(Categories, areCleanedUp) {
  CategoryStory story;
  const auto row = [&](const char* title, const char* parent, int type, const char* key, int deleted,
                       int stamp) {
    story.sql("insert into category (title, parent, type, oldTitle, deleted, editDate) values (?,?,?,?,?,?)",
              {title, parent, type, key, deleted, stamp});
  };
  const auto spent = [&](const char* eid, int type, const char* category, const char* subcategory) {
    story.sql("insert into transactions (eid, type, category, subcategory, bid) values (?,?,?,?,20)",
              {eid, type, category, subcategory});
  };
  const auto names = [&] {
    return story.rows(
        "select eid || ' ' || coalesce(c.title, '?') || '/' || coalesce(s.title, '?') || s.type from"
        " transactions t left join category c on c.oldTitle = t.category left join category s on s.oldTitle ="
        " t.subcategory order by eid");
  };
  row("Other", "_rootCate", 12, "Other", 0, 5);
  row("Other", "_rootCate", 11, "Other", 0, 5);
  row("Other", "Food", 12, "Other", 0, 5);
  row("Food", "_rootCate", 12, "Food", 0, 5);
  row("Food", "", 6, "Food", 0, 5);
  spent("a", 12, "Other", "Other");
  spent("b", 11, "Other", "Other");
  spent("c", 12, "Food", "Other");
  const std::string wanted = "a Other/Other12\nb Other/Other11\nc Food/Other12";
  EXPECT_EQ(MVCategory::clearDuplicateCategoryPK(story.root).value(), 3) << "a vendor keeps its key";
  EXPECT_EQ(names(), wanted);
  EXPECT_EQ(story.number("select count(distinct subcategory) from transactions"), 3);
  EXPECT_EQ(MVCategory::clearDuplicateCategoryPK(story.root).value(), 0);

  row("House", "_rootCate", 12, "House", 0, 5);
  row("House", "_rootCate", 11, "House", 0, 5);
  story.sql("insert into account (title, oldTitle, kind, isGroup) values ('House', 'House', 1, 1)");
  EXPECT_EQ(MVCategory::clearDuplicateCategoryPK(story.root).value(), 2) << "an account group keeps its key";
  story.sql("delete from category where title = 'House'");

  // Two of everything: tops and, by that, children. The deleted one is newer, and still no winner.
  const auto food = story.rows("select oldTitle from category where title = 'Food' and type = 12");
  row("Food", "_rootCate", 12, "food2", 1, 9);
  row("Other", "food2", 12, "other2", 0, 9);
  row("Fun", "_rootCate", 12, "fun1", 0, 1);
  row("Fun", "_rootCate", 12, "fun2", 0, 2);
  spent("d", 12, "food2", "other2");
  spent("e", 12, "fun1", "fun1");
  story.sql(
      "insert into categoryofbook (pk, cate, book, used, editDate) values ('1', 'fun1', 'b', 3, 1), ('2',"
      " 'fun2', 'b', 4, 2), ('3', 'fun2', 'b', 0, 4), ('4', 'fun2', 'b', 0, '')");
  const auto merged = MVCategory::clearDuplicateCategory(story.root);
  EXPECT_EQ(merged.value(), 3);
  EXPECT_EQ(names(), wanted + "\nd Food/Other12\ne Fun/Fun12");
  EXPECT_EQ(story.rows("select oldTitle from category where title = 'Fun'"), "fun2");
  EXPECT_EQ(story.rows("select oldTitle from category where title = 'Food' and type = 12"), food);

  story.sql(
      "insert into categoryofbook (pk, cate, book, editDate) values ('5', 'fun2', 'b', 0), ('6', '', 'b', "
      "1)");
  story.sql("insert into category (title, type) values (null, 12), ('', 12), ('_rootCate', 12)");
  const auto removed = MVCategory::clearDuplicatedItemChangeEditDate(story.root, true);
  ASSERT_TRUE(removed);
  EXPECT_EQ(removed->untitled, 3);
  EXPECT_EQ(removed->incomplete, 1);
  EXPECT_EQ(story.number("select count(*) from categoryofbook where cate = 'fun2' and edit_ipid != ''"), 1);
  EXPECT_EQ(story.number("select count(*) from categoryofbook"), 1);
}

}  // namespace
}  // namespace moniva
