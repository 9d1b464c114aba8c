#include "model/default_categories.h"

#include <gtest/gtest.h>

#include "platform/gettext_localization.h"
#include "support/device.h"

namespace moniva {
namespace {

/// A device whose person speaks the language of the locale.
class Speaking : public Device {
 public:
  explicit Speaking(const char* locale, std::uint64_t seed = 1) : Device("Europe/Berlin", {}, seed) {
    platform.localization = std::make_unique<GettextLocalization>(platform.directories.resources, locale);
    open();
  }
  std::string keys() {
    return rows(
        "select oldTitle || ' ' || parent || ' ' || type || ' ' || orderID from category order by pk");
  }
  std::size_t add() {
    const auto added = insertAllCategoryIfNeed(root);
    EXPECT_TRUE(added) << added.error().why;
    return added.value_or(0);
  }
};

TEST(DefaultCategories, areOneSetInEveryLanguage) {
  Speaking english("en_US", 1);
  Speaking german("de_DE", 2);
  Speaking chinese("zh_CN", 3);
  for (Speaking* device : {&english, &german, &chinese}) {
    EXPECT_GT(device->add(), 100U);
    EXPECT_EQ(device->keys(), english.keys());
    EXPECT_EQ(device->number("select count(*) from category where editDate = 1 and edit_ipid = ?",
                             {device->root.itsUDID()}),
              device->number("select count(*) from category"));
    EXPECT_EQ(device->add(), 0U) << "once";
    EXPECT_EQ(insertAllCategory(device->root).value_or(1), 0U) << "their keys are there";
  }
  const std::string eatingOut = english.rows("select oldTitle from category where title = 'Eating out'");
  EXPECT_EQ(german.rows("select title from category where oldTitle = ?", {eatingOut}), "Restaurant");
  // Pinyin orders Chinese titles by their sound.
  EXPECT_EQ(chinese.rows("select orderString from category where title = '外卖'"), "wai mai");
}

TEST(DefaultCategories, leaveAStoreWithCategoriesAlone) {
  Speaking device("en_US");
  ASSERT_TRUE(
      device.sql("insert into category (title, type, oldTitle) values ('Shop', 6, 'v'), ('EUR', 0, '')"));
  ASSERT_TRUE(
      device.sql("insert into category (title, type, oldTitle, deleted) values ('Mine', 12, 'k', 1)"));
  EXPECT_EQ(device.add(), 0U) << "a deleted one says that somebody was here";
  ASSERT_TRUE(device.sql("delete from category where type = 12"));
  EXPECT_GT(device.add(), 0U) << "vendors and currencies are no categories";
}

TEST(DefaultCategories, refuseABrokenFile) {
  const TemporaryFolder resources;
  std::filesystem::create_directories(resources / "categories");
  const auto file = resources / "categories/en.json";
  Speaking device("en_US");
  device.platform.directories.resources = resources.path();
  const struct {
    const char* text;
    const char* where;
    const char* why;
  } cases[] = {
      {nullptr, "is missing", "no file"},
      {"{\n\"expense\": [\n{,", "line 3", "no JSON"},
      {"[]", "'expense'", "no object"},
      {R"({"expense": []})", "'income'", "half of it"},
      {R"({"expense": [], "income": [7]})", "income[0]", "no category"},
      {R"({"expense": [{"id": "a", "title": " ", "subcategories": []}]})",
       "expense[0]: a category needs a title", "blank"},
      {R"({"expense": [{"id": "a", "title": "A"}]})", "expense[0].subcategories", "no list below"},
      {R"({"expense": [{"id": "a", "title": "A", "subcategories": [{"id": "b", "title": "B"}, {"id": "b", "title": "C"}]}]})",
       "expense[0].subcategories[1]", "one key for two"},
  };
  for (const auto& [text, where, why] : cases) {
    if (text != nullptr) putBytes(file, text);
    const auto added = insertAllCategoryIfNeed(device.root);
    ASSERT_FALSE(added) << why;
    EXPECT_NE(added.error().why.find(file.string()), std::string::npos) << added.error().why;
    EXPECT_NE(added.error().why.find(where), std::string::npos) << added.error().why << ": " << why;
    EXPECT_EQ(device.number("select count(*) from category"), 0) << why;
  }
}

}  // namespace
}  // namespace moniva
