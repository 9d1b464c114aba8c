#include <gtest/gtest.h>

#include "app/do_db_updater.h"
#include "support/category_story.h"
#include "support/old_store.h"

namespace moniva {
namespace {

/// Records with the titles of what they name; "?" for a name that is no key.
constexpr const char* kShown =
    "select t.eid || ' ' || coalesce(c.title, category) || '/' || coalesce(s.title || s.type, "
    "subcategory)"
    " || ' ' || coalesce(v.title || v.type, vendor, '-') || ' ' || coalesce(a.title || a.currency, '') || ' '"
    " || coalesce(b.title || b.kind, '') from transactions t left join category c on c.oldTitle ="
    " nullif(category, '') left join category s on s.oldTitle = nullif(subcategory, '') left join category v "
    "on"
    " v.oldTitle = nullif(vendor, '') left join account a on a.oldTitle = t.account left join account b on"
    " b.oldTitle = book where t.eid != 'bad' order by t.eid";

TEST(StoresWithoutKeys, getThem) {
  OldStore store("before_keys");
  const auto bytes =
      "select quote(bid) || quote(amount) || quote(vendor) from transactions where eid = 'bad'";
  const auto bad = store.rows(bytes);
  EXPECT_GT(store.changedBy(updateCategoryPK), 0);
  EXPECT_NE(store.takeFaults().find("beginBalance=100"), std::string::npos) << "a row that goes is logged";
  EXPECT_EQ(store.rows(kShown),
            "bare /Bakery12 -  Home2\n"
            "below Food/Bakery12 NoPayee CashEUR Cash2\n"
            "debt / Lang CashEUR \n"
            "in / Cash VisaEUR \n"
            "income Food/#NOMVCATEGORY Lang9 CashEUR Home2\n"
            "out / Visa CashEUR \n"
            "paid Home/#NOMVCATEGORY  CashEUR \n"
            "same Fun/Fun12  VisaEUR Home2\n"
            "top Food/Food12 Lang6 CashEUR Home2\n"
            "twice Fun/Other12  VisaEUR Home2\n"
            "unknown Old/Older Nobody  Home2");
  EXPECT_EQ(store.rows(bytes), bad) << "what cannot be understood stays";
  EXPECT_EQ(store.rows("select title || type || ' ' || coalesce((select title || type from category where"
                       " oldTitle = c.parent), parent) from category c where type in (11, 12) order by 1"),
            "12 Food12\nBakery12 Food12\nFood11 _rootCate\nFood12 _rootCate\nFun12 Fun12\nFun12 _rootCate\n"
            "Gone12 Lost\nOther12 Food12\nOther12 Fun12");
  EXPECT_EQ(
      store.rows("select coalesce(title, '?') || kind || ' ' || beginBalance || ' ' || totalBalance || ' '"
                 " || coalesce(oldTitle = title, 0) from account order by eid"),
      "Home2 0.0 -49.0 1\nCash1 100.0 26.0 1\nCash2 0.0 -2.0 0\nVisa1 0.0 2.0 1\nVisa1 7.0 7.0 0\n?2 0.0 "
      "0.0 0")
      << "the second Cash was the first";
  EXPECT_EQ(
      store.rows("select coalesce(c.title, cate) || ' ' || coalesce(a.title, book) || ' ' || cateOrder ||"
                 " ' ' || quote(b.enabled) || ' ' || quote(b.editDate) from categoryofbook b left join"
                 " category c on c.oldTitle = cate left join account a on a.oldTitle = book order by"
                 " b.rowid"),
      "Food Home 3 0 5.0\nBakery Cash 1 1 ''\n77 Home 0 X'31' NULL\nFun  0 'YES' 5.0");
  store.db.initDatabase();
  store.db.drain();
  EXPECT_TRUE(store.db.missingIndexes().empty());
  EXPECT_EQ(store.changedBy(updateCategoryPK), 0) << "nothing is left for a second time";

  OldStore other("before_keys");
  other.changedBy(updateCategoryPK);
  other.takeFaults();
  for (const char* keys :
       {"select group_concat(oldTitle) from (select oldTitle from category where title != '' order by pk)",
        "select group_concat(oldTitle) from (select oldTitle from account where title != '' order by eid)",
        "select group_concat(pk) from (select pk from categoryofbook order by rowid)"}) {
    EXPECT_EQ(store.rows(keys), other.rows(keys)) << "two devices make the same keys";
  }
}

TEST(StoresWithoutKeys, keepTitlesThatAreKeys) {
  CategoryStory story(false);
  story.record("Food/Bakery");
  story.sql("update transactions set category = 'Food', subcategory = 'Snacks'");
  story.sql("update category set oldTitle = 'Food' where title = 'Food'");
  story.sql("update category set oldTitle = 'Snacks', parent = 'Food' where title = 'Bakery'");
  const auto before = story.connection().totalChanges();
  ASSERT_TRUE(updateCategoryPK(story.root));
  EXPECT_EQ(story.connection().totalChanges(), before);
}

TEST(StoresWithoutKeys, getThemAlikeWhateverWasEditedLast) {
  const auto keys = [](double first, double second) {
    OldStore store("before_keys");
    store.sql("update account set editDate = iif(eid = 5, ?, ?) where title = 'Visa'", {first, second});
    store.changedBy(updateCategoryPK);
    store.takeFaults();
    EXPECT_EQ(store.number("select editDate from category where title = 'USD'"), 5) << "no key, no edit";
    return store.rows("select eid || oldTitle from account order by eid");
  };
  EXPECT_EQ(keys(5, 6), keys(6, 5)) << "of two currencies, and without a title";
}

TEST(AccountsOfOneKey, areOneOrTold) {
  Household home;
  home.spend("Food", 5, home.on("2024-02-01"));
  home.sql("update account set oldTitle = 'Shared' where title in ('Home', 'Cash')");
  home.sql("update transactions set book = 'Shared', account = 'Shared'");
  home.sql(
      "insert into account (title, oldTitle, kind, editDate, deleted, beginBalance) values ('Old', 'Shared', "
      "1, 1,"
      " 0, 100), ('Newer', 'Shared', 1, 9e10, 1, 7), ('', '', 1, 1, 0, 0), ('', '', 1, 1, 0, 0)");
  home.sql(
      "insert into account (oldTitle, title, kind, isGroup, password) values ('all', 'All', 1, 1, 'Shared')");
  ASSERT_TRUE(updateDataFiled20210305(home.root));
  EXPECT_EQ(home.number("select count(*) from category where parent = 'all' and title = 'Shared'"), 1)
      << "two rows of one key are one member";
  const auto cleared = clearDuplicateAccountWithSamePK(home.root);
  ASSERT_TRUE(cleared) << cleared.error().why;
  const auto log = home.takeFaults();
  EXPECT_NE(log.find("'Old'"), std::string::npos);
  EXPECT_NE(log.find("'Newer'"), std::string::npos);
  EXPECT_EQ(
      home.rows("select coalesce(a.title, '') || b.title || a.totalBalance || b.totalBalance from"
                " transactions join account a on a.oldTitle = account join account b on b.oldTitle = book"),
      "CashHome95.0-5.0")
      << "with the opening balance of the one that goes";
  EXPECT_EQ(home.number("select count(*) from account where oldTitle = ''"), 2)
      << "no key is none that two share";
  const auto before = home.connection().totalChanges();
  ASSERT_TRUE(clearDuplicateAccountWithSamePK(home.root));
  EXPECT_EQ(home.connection().totalChanges(), before);
}

}  // namespace
}  // namespace moniva
