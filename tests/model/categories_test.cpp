#include <gtest/gtest.h>

#include <set>

#include "model/book_categories.h"
#include "storage/transaction.h"
#include "support/household.h"

namespace moniva {
namespace {

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
  story.root.setObject("0", "enabledCategoryForBook");
  EXPECT_EQ(story.titles(view.getSubcategoryList()), "Food Rent Fun")
      << "books have no views of their own now";
  EXPECT_EQ(view.getAllSubcategoryTree()->front().subcategoryArray[1].cateString(), "Food - Fruit");

  story.sql("alter table category rename to gone");
  EXPECT_FALSE(story.top().getAllSubcategoryTree()) << "a failed read is no empty list";
  EXPECT_FALSE(view.getSubcategoryList());
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
               {"-1", "Apple Banana cherry", "", "2", "on either side"}};
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

TEST(Categories, thatBecomeOneLeaveNothingBehind) {
  const auto rename = [](MVCategory from, const char* to) { return from.rename(to); };
  const struct {
    std::vector<const char*> records;
    const char* allocation;
    const char* from;
    const char* newTitle;  ///< null: moved under `to`
    const char* to;
    const char* shown;
    int counted;
    const char* why;
  } cases[] = {{{"Food", "Food/Bakery", "Meals/Fruit"},
                "Food",
                "Food",
                "Meals",
                "",
                "Meals 1 1\nMeals/Bakery 1 0\nMeals/Fruit 1 0",
                2,
                "tops: children follow"},
               {{"Food/Bakery", "Food/Fruit", "Meals/Bakery"},
                "Food/Bakery",
                "Food",
                "Meals",
                "",
                "Meals 0 0\nMeals/Bakery 2 1\nMeals/Fruit 1 0",
                2,
                "children of one title become one too"},
               {{"Food/Bakery", "Food/Bread"},
                "Food/Bakery",
                "Food/Bakery",
                "Bread",
                "",
                "Food 0 0\nFood/Bread 2 1",
                1,
                "siblings"},
               {{"Food/Bakery", "Food"},
                "Food",
                "Food",
                "Meals",
                "",
                "Meals 1 1\nMeals/Bakery 1 0",
                2,
                "a title nobody has"},
               {{"Food/Bakery", "Meals"},
                "Food/Bakery",
                "Food/Bakery",
                nullptr,
                "Meals",
                "Food 0 0\nMeals 1 0\nMeals/Bakery 1 1",
                1,
                "a subcategory moves with its records and its budget"},
               {{"Food/Bakery", "Meals/Bakery"},
                "Food/Bakery",
                "Food/Bakery",
                nullptr,
                "Meals",
                "Food 0 0\nMeals 0 0\nMeals/Bakery 2 1",
                1,
                "and meets one of its title there"},
               {{"Food/Bakery", "Food"},
                "Food/Bakery",
                "Food/Bakery",
                nullptr,
                "",
                "Bakery 1 1\nFood 1 0",
                1,
                "to the top"},
               {{"Food/Bakery", "Bakery"},
                "Food/Bakery",
                "Food/Bakery",
                nullptr,
                "",
                "Bakery 2 1\nFood 0 0",
                1,
                "where its title is taken"},
               {{"Bakery", "Food"},
                "Bakery",
                "Bakery",
                nullptr,
                "Food",
                "Food 1 0\nFood/Bakery 1 1",
                1,
                "a top without children becomes one"},
               {{"Bakery", "Food/Bakery"},
                "Bakery",
                "Bakery",
                nullptr,
                "Food",
                "Food 0 0\nFood/Bakery 2 1",
                1,
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
    EXPECT_EQ(change->merged ? change->records : c.counted, c.counted) << c.why;
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

  const auto last = getLastUsedCategory(*story.home, 12).value();
  ASSERT_TRUE(last);
  EXPECT_EQ(last->title, "Bakery");
  EXPECT_EQ(getLastUsedPayment(*story.home, 12).value()->title, "Cash");
  EXPECT_FALSE(getLastUsedCategory(story.club, 12).value());
}

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
