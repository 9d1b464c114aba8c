#include <gtest/gtest.h>

#include <set>

#include "support/category_story.h"

namespace moniva {
namespace {

TEST(Categories, thatBecomeOneLeaveNothingBehind) {
  const auto rename = [](MVCategory from, const char* to) { return from.rename(to); };
  const struct {
    std::vector<const char*> records;
    const char* allocation;
    const char* from;
    const char* newTitle;  ///< null: moved under `to`
    const char* to;
    const char* shown;
    const char* change;  ///< merged, records, subcategories
    const char* why;
  } cases[] = {{{"Food", "Food/Bakery", "Meals/Fruit"},
                "Food",
                "Food",
                "Meals",
                "",
                "Meals 1 1\nMeals/Bakery 1 0\nMeals/Fruit 1 0",
                "1 2 1",
                "tops: children follow"},
               {{"Food/Bakery", "Food/Fruit", "Meals/Bakery"},
                "Food/Bakery",
                "Food",
                "Meals",
                "",
                "Meals 0 0\nMeals/Bakery 2 1\nMeals/Fruit 1 0",
                "1 2 2",
                "children of one title become one too"},
               {{"Food/Bakery", "Food/Bread"},
                "Food/Bakery",
                "Food/Bakery",
                "Bread",
                "",
                "Food 0 0\nFood/Bread 2 1",
                "1 1 0",
                "siblings"},
               {{"Food/Bakery", "Food"},
                "Food",
                "Food",
                "Meals",
                "",
                "Meals 1 1\nMeals/Bakery 1 0",
                "0 0 0",
                "a title nobody has"},
               {{"Food/Bakery", "Meals"},
                "Food/Bakery",
                "Food/Bakery",
                nullptr,
                "Meals",
                "Food 0 0\nMeals 1 0\nMeals/Bakery 1 1",
                "0 1 0",
                "a subcategory moves with its records and its budget"},
               {{"Food/Bakery", "Meals/Bakery"},
                "Food/Bakery",
                "Food/Bakery",
                nullptr,
                "Meals",
                "Food 0 0\nMeals 0 0\nMeals/Bakery 2 1",
                "1 1 0",
                "and meets one of its title there"},
               {{"Food/Bakery", "Food"},
                "Food/Bakery",
                "Food/Bakery",
                nullptr,
                "",
                "Bakery 1 1\nFood 1 0",
                "0 1 0",
                "to the top"},
               {{"Food/Bakery", "Bakery"},
                "Food/Bakery",
                "Food/Bakery",
                nullptr,
                "",
                "Bakery 2 1\nFood 0 0",
                "1 1 0",
                "where its title is taken"},
               {{"Bakery", "Food"},
                "Bakery",
                "Bakery",
                nullptr,
                "Food",
                "Food 1 0\nFood/Bakery 1 1",
                "0 1 0",
                "a top without children becomes one"},
               {{"Bakery", "Food/Bakery"},
                "Bakery",
                "Bakery",
                nullptr,
                "Food",
                "Food 0 0\nFood/Bakery 2 1",
                "1 1 0",
                "also where its title is taken"}};
  for (const auto& c : cases) {
    CategoryStory story;
    for (const char* path : c.records) story.record(path);
    story.record(c.allocation, 62);
    story.sql("update transactions set category = subcategory, subcategory = '' where type = 62");
    auto from = story.at(c.from);
    for (const auto& category : std::set{from.pk, story.at(c.records[1]).pk}) {
      story.sql("insert into categoryofbook (pk, cate, book, used, enabled) values (?, ?, ?, 2, 1)",
                {story.root.newIdentifier(), category, story.home->pk});
    }
    const auto before = story.number("select max(editDate) from transactions");
    const auto change = c.newTitle != nullptr ? rename(from, c.newTitle)
                                              : from.moveTo(*c.to == '\0' ? story.top() : story.at(c.to));
    ASSERT_TRUE(change) << c.why << ": " << change.error().why;
    EXPECT_EQ(story.shown(), c.shown) << c.why;
    EXPECT_EQ(fmt::format("{:d} {} {}", change->merged, change->records, change->subcategories), c.change)
        << c.why;
    EXPECT_EQ(
        story.rows("select cate || book from categoryofbook where cate in (select oldTitle from category"
                   " where deleted = 1) union all select cate from categoryofbook group by cate, book"
                   " having count(*) > 1 union all select title from category where deleted = 0 and"
                   " oldParent in (select oldTitle from category where deleted = 1)"),
        "")
        << c.why;
    EXPECT_EQ(story.number("select count(*) from transactions where (ipid = 'batchEdit') != (editDate > ?)",
                           {before}),
              0)
        << c.why;
  }
}

TEST(Categories, changeAsAWholeOrNotAtAll) {
  CategoryStory story;
  story.record("Food/Bakery");
  story.record("Meals/Bakery");
  auto food = story.at("Food");
  ASSERT_TRUE(food.enabledForBook(*story.home));
  const auto before = story.shown();
  for (const char* write : {"update on categoryofbook", "update of deleted on category"}) {
    story.sql("create temp trigger stop before " + std::string(write) +
              " begin select raise(abort, 'no'); end");
    EXPECT_FALSE(food.rename("Meals")) << write;
    EXPECT_FALSE(food.delCate()) << write;
    story.sql("drop trigger stop");
    EXPECT_EQ(story.shown(), before) << write;
    EXPECT_EQ(food.title + std::to_string(food.deleted), "Food0") << write;
  }
  EXPECT_NE(story.takeFaults(), "");
}

TEST(Categories, keepTheChoiceOfItemsAndPaymentsWhenTheyMoveDown) {
  CategoryStory story;
  auto bakery = story.at("Bakery");
  story.record("Bakery");
  story.sql("update transactions set subcategory = '#NOMVCATEGORY'");
  story.record("Bakery");
  story.sql("update transactions set subcategory = '#NOMVCATEGORY', bid = 10 where subcategory = category");
  auto food = story.at("Food");
  ASSERT_TRUE(bakery.moveTo(food));
  EXPECT_EQ(
      story.rows("select (category = ?) || (subcategory = ?) || (subcategory like '#%') from transactions"
                 " order by bid",
                 {food.pk, bakery.pk}),
      "101\n110")
      << "the payment stays without a subcategory, the item says what it was for";
}

TEST(Categories, areRefusedWhatMakesNoSense) {
  CategoryStory story;
  auto bakery = story.at("Food/Bakery");
  auto food = *MVCategory::getCategory(story.root, bakery.parent);
  auto rent = story.at("Rent");
  auto salary = story.at("Salary", kind::kIncome);
  auto stranger = rent;
  stranger.pk = "nobody";
  auto gone = story.at("Gone");
  ASSERT_TRUE(gone.delCate());
  auto root = story.top();
  auto newcomer = [&](const char* title, const std::string& parent, int type) {
    MVCategory made(story.root);
    made.title = title;
    made.parent = parent;
    made.type = type;
    return made.addCate();
  };
  const auto before = story.rows("select group_concat(title || deleted || parent || editDate) from category");
  const std::pair<bool, const char*> attempts[] = {
      {rent.rename("Rent").has_value(), "the same title"},
      {rent.rename(" ").has_value(), "a blank title"},
      {rent.rename(std::string(121, 'x')).has_value(), "a title too long"},
      {rent.rename("_rootCate").has_value(), "the root's title"},
      {newcomer("#NOMVCATEGORY", "_rootCate", 12).has_value(), "the text for no category"},
      {newcomer("A", "_rootCate", 6).has_value(), "a vendor's type"},
      {newcomer("A", bakery.pk, 12).has_value(), "a third level"},
      {newcomer("A", salary.pk, 12).has_value(), "a parent of another type"},
      {newcomer("A", "nobody", 12).has_value(), "a parent nobody has"},
      {food.moveTo(food).has_value(), "under itself"},
      {food.moveTo(bakery).has_value(), "under its own child"},
      {food.moveTo(rent).has_value(), "with children"},
      {rent.moveTo(bakery).has_value(), "under a subcategory"},
      {rent.moveTo(salary).has_value(), "under another type"},
      {rent.moveTo(stranger).has_value(), "under nobody"},
      {rent.moveTo(gone).has_value(), "under a deleted one"},
      {rent.moveTo(root).has_value(), "where it is"},
      {rent.moveDataTo(rent, {}, {}).has_value(), "records to itself"},
      {rent.moveDataTo(salary, {}, {}).has_value(), "records to another type"},
      {rent.moveDataTo(food, story.on("2024-02-02"), story.on("2024-02-01")).has_value(),
       "a range backwards"},
      {stranger.rename("A").has_value(), "a key nobody has"},
      {gone.delCate().has_value(), "deleting twice"},
      {root.delCate().has_value(), "deleting the root"},
      {rent.disabledForBook(*story.cash).has_value(), "an account for a book"},
      {rent.associateWithAccount(*story.home).has_value(), "a book for an account"},
      {MVCategory::saveCustomCategoryOrder(story.root, {rent, stranger}).has_value(), "half an order"},
      {saveCustomCategoryOrder(*story.home, {rent, stranger}).has_value(), "half an order of a book"}};
  for (const auto& [done, why] : attempts) EXPECT_FALSE(done) << why;
  EXPECT_EQ(story.rows("select group_concat(title || deleted || parent || editDate) from category"), before);
  EXPECT_EQ(story.number("select count(*) from categoryofbook"), 0);
}

TEST(Categories, giveTheirRecordsOfARangeAway) {
  CategoryStory story;
  for (const char* date : {"2024-01-31", "2024-02-01", "2024-02-29", "2024-03-01"})
    story.record("Food/Bakery", 12, date);
  story.record("Food/Bakery", 62);
  story.sql("update transactions set edit_ipid = 'other'");
  auto food = story.at("Food");
  EXPECT_EQ(food.moveDataTo(story.at("Rent/Flat"), story.on("2024-02-01"), story.on("2024-02-29")).value(),
            2);
  EXPECT_EQ(story.shown(), "Food 0 1\nFood/Bakery 2 0\nRent 0 0\nRent/Flat 2 0");
  EXPECT_EQ(
      story.number("select count(*) from transactions where ipid = 'batchEdit' and edit_ipid = 'other'"), 2)
      << "the device is not named";
  EXPECT_EQ(story.at("Food/Bakery").moveDataTo(story.at("Food"), {}, story.on("2024-02-15")).value(), 1);
}

TEST(Categories, goWithTheirBudgetAndComeBackUnused) {
  CategoryStory story;
  auto bakery = story.at("Food/Bakery");
  auto food = *MVCategory::getCategory(story.root, bakery.parent);
  story.record("Food");
  story.record("Food", 62);
  ASSERT_TRUE(food.associateWithAccount(*story.bank));
  EXPECT_EQ(story.at("Food/Fruit").getAssociatedAccount().value()->title, "Bank")
      << "a new child inherits it";
  ASSERT_TRUE(food.enabledForBook(*story.home));
  ASSERT_TRUE(food.delCate());
  EXPECT_EQ(story.number("select sum(deleted = 1 and account = '') from category"), 3);
  EXPECT_EQ(story.number("select count(*) from categoryofbook where enabled = 0"), 1);
  EXPECT_EQ(story.rows("select type from transactions"), "12") << "records keep naming it";

  // Uses are counted by what was entered last, without an edit.
  story.at("Food/Bakery");
  story.record("Food/Bakery");
  const auto stamps = story.rows("select group_concat(editDate) from category");
  EXPECT_GT(MVCategory::updateUsingCountFromDate(story.root, Date{0}, Date{4e9}).value(), 0);
  EXPECT_EQ(MVCategory::updateUsingCountFromDate(story.root, Date{0}, Date{4e9}).value(), 0);
  EXPECT_EQ(food.getUsingCount().value(), 2);
  bakery.book = std::make_shared<MonivaAccount>(*story.home);
  EXPECT_EQ(bakery.getUsingCount().value(), 1);
  EXPECT_TRUE(bakery.updateUsingCountFromDate(Date{0}, Date{1}));
  EXPECT_EQ(bakery.usedTimes, 0);
  EXPECT_EQ(story.rows("select group_concat(editDate) from category"), stamps);
  EXPECT_EQ(story.number("select count(*) from categoryofbook where typeof(editDate) = 'text'"), 0);

  story.sql(
      "insert into categoryofbook (pk, cate, book, used) select 'twice', cate, book, used from"
      " categoryofbook limit 1");
  story.sql(
      "insert into category (title, type, oldTitle, usedTimes) select title, 11, oldTitle, usedTimes from"
      " category");
  EXPECT_GT(MVCategory::updateUsingCountFromDate(story.root, Date{0}, Date{4e9}).value(), 0);
  EXPECT_EQ(MVCategory::updateUsingCountFromDate(story.root, Date{0}, Date{4e9}).value(), 0)
      << "rows of one key and of one book settle";
  story.sql("delete from category where type = 11");

  MVCategory again(story.root);
  again.title = "Bakery";
  again.parent = bakery.parent;
  ASSERT_TRUE(again.addCate());
  EXPECT_EQ(again.orderString + std::to_string(again.orderID) + std::to_string(again.usedTimes), "bakery11");
  EXPECT_EQ(story.at("Food/Last").orderID, 3) << "the last by hand";

  const auto last = getLastUsedCategory(*story.home, 12).value();
  ASSERT_TRUE(last);
  EXPECT_EQ(last->title, "Bakery");
  EXPECT_EQ(getLastUsedPayment(*story.home, 12).value()->title, "Cash");
  EXPECT_FALSE(getLastUsedCategory(story.club, 12).value());
}

TEST(Categories, leaveOthersOfTheirKeyAlone) {
  const struct {
    int type;
    int change;
    const char* changed;
    const char* why;
  } cases[] = {{12, 0, "12", "an expense renamed"}, {11, 0, "11", "an income renamed"},
               {12, 1, "12", "an expense merged"},  {11, 1, "11", "an income merged"},
               {12, 2, "12", "an expense moved"},   {11, 2, "11", "an income moved"},
               {12, 3, "12", "an expense deleted"}, {11, 3, "11", "an income deleted"}};
  for (const auto& c : cases) {
    CategoryStory story;
    auto other = story.at("New", c.type);
    // A category of each type, a vendor, a group with a member, and a child of each category.
    for (const char* row : {"11", "12", "6"}) {
      story.sql(
          "insert into category (title, parent, type, oldTitle, oldParent) values ('Other', '_rootCate', ?,"
          " 'Other', 'Other')",
          {row});
    }
    story.sql("insert into category (title, parent, type, oldTitle) values ('m', 'Other', 7, 'm')");
    story.sql(
        "insert into transactions (eid, type, category, subcategory, bid, book) values ('a', 11, 'Other',"
        " 'Other', 20, 'b'), ('b', 12, 'Other', 'Other', 20, 'b'), ('c', 62, 'Other', '', '', 'b')");
    auto own = *MVCategory::getCategory(story.root, "Other", c.type);
    ASSERT_EQ(own.type, c.type);
    EXPECT_TRUE(c.change == 0   ? own.rename("Else").has_value()
                : c.change == 1 ? own.rename("New").has_value()
                : c.change == 2 ? own.moveTo(other).has_value()
                                : own.delCate().has_value())
        << c.why;
    EXPECT_EQ(story.rows("select type from category where editDate > 0 and oldTitle = 'Other'"), c.changed)
        << c.why;
    EXPECT_EQ(story.number("select count(*) from category where type = 7 and parent = 'Other'"), 1) << c.why;
    EXPECT_EQ(story.rows("select type from transactions where type in (11,12) and category != 'Other'"),
              c.change == 1 || c.change == 2 ? c.changed : "")
        << c.why;
    EXPECT_EQ(story.number("select count(*) from transactions where type = 62"),
              c.change == 3 && c.type == 12 ? 0 : 1)
        << c.why;
  }
}

TEST(Categories, becomeOneWithoutSwitchingOffOrLosingABudget) {
  CategoryStory story;
  auto food = story.at("Food");
  auto meals = story.at("Meals");
  ASSERT_TRUE(food.associateWithAccount(*story.bank));
  const auto row = [&](const char* pk, const MVCategory& of, const std::string& book, int used, int enabled,
                       int stamp) {
    story.sql("insert into categoryofbook (pk, cate, book, used, enabled, editDate) values (?,?,?,?,?,?)",
              {pk, of.pk, book, used, enabled, stamp});
  };
  row("1", food, story.home->pk, 2, 0, 5);
  row("2", food, story.home->pk, 3, 1, 4);
  row("3", food, story.club.pk, 1, 1, 9);
  row("4", meals, story.club.pk, 4, 0, 8);
  row("5", meals, story.club.pk, 5, 1, 7);
  const auto budget = [&](const char* eid, const MVCategory& of, const MonivaAccount& in) {
    story.sql("insert into transactions (eid, type, category, book) values (?, 62, ?, ?)",
              {eid, of.pk, in.pk});
  };
  budget("a", food, *story.home);
  budget("b", meals, *story.home);
  budget("c", food, story.club);
  ASSERT_TRUE(food.rename("Meals"));
  EXPECT_EQ(story.rows("select pk || enabled || used from categoryofbook order by pk"), "115\n4010")
      << "on where nobody switched the winner off; its own newest state stays";
  EXPECT_EQ(story.rows("select eid || deleted || (ipid = 'delete by merge of categories') from transactions"
                       " order by eid"),
            "a31\nb00\nc00");
  EXPECT_EQ(food.getAssociatedAccount().value()->title, "Bank");
}

TEST(Categories, takePaymentsAndCountsAlong) {
  for (const bool byMove : {true, false}) {
    CategoryStory story;
    // Two records paid on their own; of one an item stays.
    for (const char* group : {"g", "h"}) {
      story.record("Food/Bakery");
      story.record("Food");
      story.sql("update transactions set transferEID = ? where transferEID = ''", {group});
      if (*group == 'g') story.sql("update transactions set deleted = 2 where category = subcategory");
    }
    const auto food = story.at("Food");
    story.sql(
        "insert into transactions (eid, bid, type, category, subcategory, transferEID) values ('p', 10,"
        " 12, ?1, '#NOMVCATEGORY', 'g'), ('q', 10, 12, ?1, '#NOMVCATEGORY', 'h')",
        {food.pk});
    auto meals = story.at("Meals");
    auto bakery = story.at("Food/Bakery");
    ASSERT_TRUE(MVCategory::updateUsingCountFromDate(story.root, Date{0}, Date{4e9}));
    const auto stamps = story.rows("select group_concat(editDate) from category where title != 'Bakery'");
    if (byMove) {
      ASSERT_TRUE(bakery.moveTo(meals));
    } else {
      ASSERT_TRUE(bakery.moveDataTo(meals, {}, {}));
    }
    EXPECT_EQ(story.rows(
                  "select eid || (category = ?) || subcategory from transactions where bid = 10 order by eid",
                  {meals.pk}),
              "p1#NOMVCATEGORY\nq0#NOMVCATEGORY");
    EXPECT_EQ(story.rows("select title || usedTimes from category order by title"),
              byMove ? "Bakery2\nFood1\nMeals2" : "Bakery0\nFood1\nMeals2");
    EXPECT_EQ(story.rows("select group_concat(editDate) from category where title != 'Bakery'"), stamps);
  }
}

}  // namespace
}  // namespace moniva
