#include <gtest/gtest.h>

#include "storage/transaction.h"
#include "support/category_story.h"

namespace moniva {
namespace {

TEST(Categories, areListedAsTheBookHasThem) {
  CategoryStory story;
  for (const char* path : {"Food/Bakery", "Food/Fruit", "Rent", "Fun"}) story.at(path);
  EXPECT_TRUE(story.at("Fun").disabledForBook(*story.home));
  EXPECT_TRUE(story.at("Food/Fruit").disabledForBook(*story.home));
  EXPECT_TRUE(story.at("Rent").updateUsingCount(story.club, 3)) << "a row of another book only";
  story.sql("update categoryofbook set enabled = 'YES' where enabled = 1");
  const auto view = story.top(&*story.home);
  EXPECT_EQ(story.titles(view.getSubcategoryList()), "Food Rent")
      << "no row, or one of another book: it is on";
  EXPECT_EQ(story.titles(view.getDiabledSubcategoryList()), "Fun-");
  EXPECT_EQ(story.titles(view.getAllSubcategoryTree()), "Food/Bakery/Fruit- Rent Fun-");
  EXPECT_EQ(story.titles(view.getAllAvailabledSubcategoryTree()), "Food/Bakery Rent");
  EXPECT_EQ(story.titles(story.top(&story.club).getAllSubcategoryTreeUseTimes()),
            "Rent Food/Bakery/Fruit Fun")
      << "the column's own default is no 0";
  EXPECT_EQ(story.titles(story.top().getAllSubcategoryTree()), "Food/Bakery/Fruit Rent Fun");
  story.sql("insert into categoryofbook (pk, cate, book, enabled) values ('x', ?, '', 1)",
            {story.at("Fun").pk});
  EXPECT_EQ(story.titles(view.getSubcategoryList()), "Food Rent Fun") << "on in all books, and on one list";
  EXPECT_EQ(story.titles(view.getDiabledSubcategoryList()), "");
  story.root.setObject("0", "enabledCategoryForBook");
  EXPECT_EQ(story.titles(view.getSubcategoryList()), "Food Rent Fun")
      << "books have no views of their own now";
  EXPECT_EQ(view.getAllSubcategoryTree()->front().subcategoryArray[1].cateString(), "Food - Fruit");

  story.sql("alter table category rename to gone");
  EXPECT_FALSE(story.top().getAllSubcategoryTree()) << "a failed read is no empty list";
  EXPECT_FALSE(view.getSubcategoryList());
  EXPECT_FALSE(MVCategory::withTitle(story.root, "Food", 12, "_rootCate"));
  story.sql("alter table gone rename to category");
}

TEST(Categories, areOrderedByTheModeThatIsAsked) {
  CategoryStory story;
  std::vector<MVCategory> made;
  for (const char* title : {"Banana", "cherry", "Apple"}) made.push_back(story.at(title));
  EXPECT_TRUE(made[1].updateUsingCount(*story.home, 2));
  EXPECT_TRUE(made[2].updateUsingCount(*story.home, 1));
  EXPECT_TRUE(made[2].updateUsingCount(story.club, 5));
  EXPECT_TRUE(made[0].enabledForBook(*story.home));
  EXPECT_TRUE(MVCategory::saveCustomCategoryOrder(story.root, {made[1], made[2], made[0]}));
  EXPECT_TRUE(saveCustomCategoryOrder(*story.home, {made[2], made[0], made[1]}));
  const struct {
    const char* mode;
    const char* inAll;
    const char* inBook;
    const char* kept;
    const char* why;
  } cases[] = {{"0", "cherry Apple Banana", "Apple Banana cherry", "0", "by hand"},
               {"1", "Apple cherry Banana", "cherry Apple Banana", "1", "by use, in the book by its uses"},
               {"2", "Apple Banana cherry", "Apple Banana cherry", "2", "by title, whatever its case"},
               {"3", "Apple Banana cherry", "", "2", "out of range is put back"},
               {"-1", "Apple Banana cherry", "", "2", "on either side"},
               {"99999999999", "Apple Banana cherry", "", "2", "or of all numbers"}};
  for (const auto& c : cases) {
    story.root.setObject(c.mode, "_ExpenseCategoryOrderType");
    EXPECT_EQ(story.titles(story.top().getSubcategoryList()), c.inAll) << c.why;
    EXPECT_EQ(story.root.objectForKey("_ExpenseCategoryOrderType"), c.kept) << c.why;
    if (*c.inBook == '\0') continue;
    story.home->setCategoryOrder(c.mode, 12);
    EXPECT_EQ(story.titles(story.top(&*story.home).getSubcategoryList()), c.inBook) << c.why;
  }
  story.home->setCategoryOrder("7", 12);
  EXPECT_EQ(story.top(&*story.home).getOrderSQL(), "") << "a book's other modes order nothing";
  const Transaction open(story.connection());
  story.sql("update monivaSys set value = '9' where key = '_ExpenseCategoryOrderType'");
  EXPECT_EQ(story.top().getOrderSQL(), " order by orderString") << "inside a transaction it waits for nobody";
}

TEST(Categories, areSwitchedBookByBook) {
  CategoryStory story;
  auto food = story.at("Food");
  story.record("Food", 62);
  story.record("Food");
  story.sql(
      "insert into categoryofbook (pk, cate, book, enabled, cateOrder) values ('a', ?, ?, 0, 4), ('b', ?,"
      " ?, 1, 4)",
      {food.pk, story.home->pk, food.pk, story.home->pk});
  EXPECT_TRUE(food.enabledForBook(*story.home));
  EXPECT_EQ(story.rows("select pk || enabled from categoryofbook"), "a1") << "duplicates go";
  EXPECT_TRUE(story.at("Rent").enabledForBook(*story.home));
  EXPECT_EQ(story.number("select max(cateOrder) from categoryofbook"), 5) << "after the last of the book";
  EXPECT_TRUE(food.enabledForBookOnly(story.club));
  EXPECT_EQ(food.getBelongBookList(), std::vector<std::string>{story.home->pk});
  EXPECT_EQ(story.rows("select type from transactions"), "12") << "its budget in the book goes, nothing else";

  // Adding it again in a book where it is off: what is tried fails, and nothing else is touched by that.
  {
    Transaction caller(story.connection());
    story.sql("update category set usedTimes = 7 where title = 'Rent'");
    food.book = std::make_shared<MonivaAccount>(*story.home);
    EXPECT_TRUE(food.addCate());
    EXPECT_EQ(story.connection().lastErrorCode(), 0);
    story.sql("update category set usedTimes = 8 where title = 'Food'");
    EXPECT_TRUE(caller.commit());
  }
  EXPECT_NE(story.takeFaults().find("near \"enabled\": syntax error"), std::string::npos);
  EXPECT_EQ(story.rows("select title || usedTimes || deleted from category order by title"),
            "Food80\nRent70");
  EXPECT_EQ(
      story.rows("select enabled from categoryofbook where cate = ? and book = ?", {food.pk, story.home->pk}),
      "0")
      << "it stays off";
}

}  // namespace
}  // namespace moniva
