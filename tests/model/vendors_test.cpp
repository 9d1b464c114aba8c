#include <gtest/gtest.h>

#include <chrono>

#include "model/vendor_cleanup.h"
#include "model/vendor_query.h"
#include "platform/gettext_localization.h"
#include "storage/transaction.h"
#include "support/household.h"

namespace moniva {
namespace {

class Shops : public Household {
 public:
  Vendor vendor(const std::string& title, int type = Vendor::kPayee) {
    Vendor made(root);
    made.title = title;
    made.type = type;
    const auto done = made.add();
    EXPECT_TRUE(done) << done.error().why;
    return made;
  }
  void paid(const Vendor& to, double amount) {
    set(spend("Things", amount, on("2024-02-29")), "vendor", to.pk);
  }
  /// Everything vendors and records are made of.
  std::string everything() {
    return rows(
        "select json_array(title, type, deleted, orderID, orderString, usedTimes, editDate, oldTitle) from"
        " category union all select json_array(eid, vendor, editDate, ipid) from transactions");
  }
  /// "Letter: title title | ..."
  std::string shown(const std::vector<VendorSection>& sections) {
    std::string text;
    for (const auto& section : sections) {
      text += (text.empty() ? "" : " | ") + section.orderLetter + ":";
      for (const auto& each : section.cateArrayOfSameLetter) text += " " + each.title;
    }
    return text;
  }
};

TEST(Vendors, renamedKeepTheirRecordsWhoeverHasTheTitle) {
  struct Case {
    bool taken;
    int otherDeleted;
    const char* rows;
    int uses;
    const char* why;
  };
  for (const auto& [taken, otherDeleted, rows, uses, why] :
       {Case{false, 0, "New 0 own 1 1", 1, "free: the row itself"},
        Case{true, 0, "New 0 other 2 2\nOld 1 own 0 0", 2, "a live one takes the records"},
        Case{true, 1, "New 0 other 2 2\nOld 1 own 0 0", 2, "a deleted one comes back for them"}}) {
    Shops home;
    auto own = home.vendor("Old");
    home.vendor("New", Vendor::kPayer);
    home.paid(own, 1);
    own.updateUsingCount();
    std::string otherKey;
    if (taken) {
      const auto other = home.vendor("New");
      otherKey = other.pk;
      home.paid(other, 2);
      home.sql("update category set deleted = ? where oldTitle = ?", {otherDeleted, otherKey});
    }
    const std::string ownKey = own.pk;
    home.sql("update transactions set editDate = 1");
    ASSERT_TRUE(own.rename("New")) << why;
    EXPECT_EQ(
        home.rows("select title || ' ' || deleted || ' ' || iif(oldTitle = ?, 'own ', 'other ') ||"
                  " (select count(*) from transactions where vendor = oldTitle) || ' ' || usedTimes from"
                  " category where type = 6 order by title",
                  {ownKey}),
        rows)
        << why;
    EXPECT_EQ(own.pk, taken ? otherKey : ownKey) << why;
    EXPECT_EQ(own.old, ownKey) << why;
    EXPECT_EQ(own.orderString(), "new") << why;
    EXPECT_EQ(own.usedTimes, uses) << why;
    EXPECT_EQ(home.rows("select ipid || (editDate > 1) || (edit_ipid = ?) from transactions where amount = 1",
                        {home.root.itsUDID()}),
              taken ? "batchEdit11" : "01")
        << why << ": only records that were relabelled are edits";
  }
}

TEST(Vendors, whatMakesNoSenseIsRefusedWithNothingChanged) {
  Shops home;
  home.platform.localization =
      std::make_unique<GettextLocalization>(home.platform.directories.resources, "de");
  const auto shop = home.vendor("Shop");
  const auto other = home.vendor("Other");
  const auto payer = home.vendor("Work", Vendor::kPayer);
  auto gone = home.vendor("Gone");
  ASSERT_TRUE(gone.delVendor());
  Vendor unknown(home.root);
  unknown.title = "Unknown";
  unknown.pk = "unknown";
  auto category = unknown;
  category.pk = home.category("Food").pk;
  const auto none = Vendor::noVendor(home.root, kind::kExpense);
  home.paid(shop, 1);
  const auto titled = [](Vendor vendor, std::string title) {
    vendor.title = std::move(title);
    return vendor;
  };
  struct Case {
    const char* why;
    std::function<Result<>()> attempt;
  };
  const std::vector<Case> cases = {
      {"a blank title", [&] { return Vendor(shop).rename(" "); }},
      {"a title without end", [&] { return Vendor(shop).rename(std::string(121, 'x')); }},
      {"one for no vendor", [&] { return titled(unknown, " NoPayer").add(); }},
      {"one for no vendor, by a change", [&] { return titled(shop, "NoVendor").update(); }},
      {"one for no vendor, in the person's language", [&] { return titled(unknown, "Kein Zahler").add(); }},
      {"a type of no vendor",
       [&] {
         auto made = unknown;
         made.type = kind::kExpense;
         return made.add();
       }},
      {"a vendor without a key", [&] { return Vendor(home.root).delVendor(); }},
      {"a rename onto itself", [&] { return Vendor(shop).rename("Shop"); }},
      {"a title of a deleted one", [&] { return titled(shop, "Gone").update(); }},
      {"a title that is taken", [&] { return titled(shop, "Other").update(); }},
      {"no vendor, renamed", [&] { return Vendor(none).rename("Some"); }},
      {"no vendor, deleted", [&] { return Vendor(none).delVendor(); }},
      {"records of no vendor", [&] { return Vendor(none).moveDataTo(shop); }},
      {"an unknown key", [&] { return Vendor(unknown).delVendor(); }},
      {"an unknown key, renamed onto one that is there", [&] { return Vendor(unknown).rename("Shop"); }},
      {"the key of a category", [&] { return Vendor(category).rename("Shop"); }},
      {"records to where they are", [&] { return Vendor(shop).moveDataTo(shop); }},
      {"records of a payee to a payer", [&] { return Vendor(shop).moveDataTo(payer); }},
      {"records to a deleted one", [&] { return Vendor(shop).moveDataTo(gone); }},
      {"two places",
       [&] {
         return Vendor::updateOrder(home.root, std::vector<Vendor>{other, shop, other});
       }},
      {"an order unheard of", [&] { return Vendor::setOrderType(home.root, kind::kExpense, "3"); }},
  };
  const auto before = home.everything();
  for (const auto& [why, attempt] : cases) {
    const auto done = attempt();
    ASSERT_FALSE(done) << why;
    EXPECT_NE(done.error().why, "") << why;
    EXPECT_EQ(home.everything(), before) << why;
  }
  Transaction transaction(home.connection());
  EXPECT_FALSE(Vendor::setOrderType(home.root, kind::kExpense, "1")) << "it would wait for itself";
}

TEST(Vendors, theirRecordsAndPlacesCanBeMoved) {
  Shops home;
  const auto a = home.vendor("A");
  const auto b = home.vendor("B");
  home.paid(a, 1);
  home.paid(a, 2);
  home.paid(b, 4);
  EXPECT_EQ(Vendor::updateUsingCounts(home.root, Vendor::kPayee).value(), 2);
  EXPECT_EQ(Vendor::updateUsingCounts(home.root, Vendor::kPayee).value(), 0) << "all are right";
  ASSERT_TRUE(Vendor(a).moveDataTo(b));
  EXPECT_EQ(home.rows("select title || usedTimes from category where type = 6 order by title"), "A0\nB3");
  EXPECT_EQ(home.number("select count(*) from transactions where vendor = ? and ipid = ''", {b.pk}), 3);

  const auto stamp = home.number("select max(editDate) from category");
  const std::vector<Vendor> wanted = {Vendor::noVendor(home.root, kind::kExpense), b, a};
  ASSERT_TRUE(Vendor::updateOrder(home.root, wanted));
  VendorQuery query(home.root);
  EXPECT_EQ(home.shown(query.getVendorList()), ": NoPayee B A");
  EXPECT_EQ(home.number("select count(*) from category where type = 6 and editDate > ?", {stamp}), 2);
  EXPECT_EQ(home.shown(query.getVendorList("1")), ": NoPayee B A");
  EXPECT_EQ(home.shown(query.getVendorList("7")), ": NoPayee");
  ASSERT_TRUE(Vendor::setOrderType(home.root, kind::kExpense, "2"));
  EXPECT_EQ(home.shown(query.getVendorList()), "A: A | B: B") << "by letter no entry for no vendor";
  EXPECT_EQ(Vendor::getOrderType(home.root, Vendor::kPayer), "0") << "payers have a setting of their own";

  ASSERT_TRUE(Vendor(b).delVendor());
  EXPECT_EQ(home.shown(query.getVendorList()), "A: A");
  EXPECT_EQ(Vendor::getVendor(home.root, b.pk)->recordCount(), 3) << "its records keep it";
}

TEST(Vendors, areFiledUnderTheLettersOfTheUser) {
  struct Case {
    const char* locale;
    std::vector<std::string> titles;
    const char* sections;
    const char* why;
  };
  for (const auto& [locale, titles, sections, why] : {
           Case{"de_DE",
                {"7-Elf", "Öl", "Zoo", "apo", "Ähre", "Axt", "€uro", "Ost", "»Ei«"},
                "A: Ähre apo Axt | O: Öl Ost | Z: Zoo | #: »Ei« €uro 7-Elf",
                "an umlaut is its vowel"},
           Case{"sv_SE",
                {"Öl", "Zoo", "Ähre", "Axt"},
                "A: Axt | Z: Zoo | Ä: Ähre | Ö: Öl",
                "in Swedish it is a letter"},
           Case{"de_DE",
                {"中国", "Zoo", "阿里", "北京", "Bio"},
                "A: 阿里 | B: Bio 北京 | Z: Zoo 中国",
                "Chinese goes by its sound"},
           Case{"en_US",
                {"Магазин", "ёлка", "Zoo", "Ελλάς", "Ευα", "いぬ", "가게"},
                "Z: Zoo | Ε: Ελλάς Ευα | Е: ёлка | М: Магазин | ㄱ: 가게 | あ: いぬ",
                "each script by its own letters"},
           Case{"ru_RU",
                {"Zoo", "Ясно", "арбуз"},
                "А: арбуз | Я: Ясно | Z: Zoo",
                "the user's own script comes first"},
           Case{"cs_CZ",
                {"Ivan", "Chleba", "CHODBA", "Hora", "Cukr", "Čas"},
                "C: Cukr | Č: Čas | H: Hora | CH: Chleba CHODBA | I: Ivan",
                "two signs can be one letter"},
           Case{"tr_TR",
                {"izmir", "Isparta", "Irmak"},
                "I: Irmak Isparta | İ: izmir",
                "with the dot it is another"},
           Case{"en_US",
                {"  Zoo", "æon", "straße", "A\u0308hre", "𠮷野", "ﬁsh"},
                "A: æon A\u0308hre | F: ﬁsh | S: straße | Z:   Zoo | #: 𠮷野",
                "blanks, ligatures, and a sign whose reading is not known"},
       }) {
    Shops home;
    home.platform.calendar = *Calendar::make("Europe/Berlin", locale);
    for (const auto& title : titles) home.vendor(title);
    EXPECT_EQ(home.shown(VendorQuery(home.root).getVendorListByAlpha()), sections) << why;
  }
}

TEST(Vendors, areListedByNameAsTheUserOrdersThem) {
  Shops home;
  home.platform.calendar = *Calendar::make("Europe/Berlin", "cs_CZ");
  for (const char* title : {"7-Elf", "Ivan", "Chleba", "Hora", "Cukr"}) home.vendor(title);
  std::string shown;
  for (const auto& vendor : VendorQuery(home.root).getVendorListByName()) shown += vendor.title + " ";
  EXPECT_EQ(shown, "Cukr Hora Chleba Ivan 7-Elf ");
  auto changed = *Vendor::withTitle(home.root, "Hora", Vendor::kPayee);
  changed.title = "Bor";
  ASSERT_TRUE(changed.update());
  EXPECT_EQ(changed.orderString(), "bor") << "a new title is sorted by itself";
}

TEST(Vendors, aMissingSortTextIsMadeOnce) {
  Shops home;
  for (const char* title : {"Market", "中国", "Магазин", "7-Elf", "A very long title of a shop"})
    home.vendor(title);
  EXPECT_EQ(home.rows("select orderString from category where title like 'A %'"), "a very long title of");
  home.sql(
      "update category set orderString = iif(title = '7-Elf', null, ''), editDate = 1 where title not like "
      "'A %'");
  VendorQuery query(home.root);
  auto elsewhere = *Connection::open(home.connection().path(), Connection::Access::readWrite);
  ASSERT_TRUE(elsewhere->execute("begin immediate"));
  const auto started = std::chrono::steady_clock::now();
  EXPECT_EQ(query.getVendorListByName().size(), 5U);
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(2)) << "a list waits for nobody";
  elsewhere.reset();
  home.root.recentEditDate.reset();
  query.getVendorListByAlpha();
  EXPECT_TRUE(home.root.recentEditDate);
  EXPECT_EQ(home.rows("select orderString || (editDate > 1) from category order by orderString"),
            "#1\na very long title of1\nm1\nm1\nz1");
  const auto before = home.everything();
  query.getVendorListByAlpha();
  EXPECT_EQ(home.everything(), before) << "a list that is complete is only read";
}

TEST(Vendors, ofOneTitleBecomeOne) {
  struct Case {
    int newerDeleted;
    bool changeEditDate;
    const char* stays;
    const char* why;
  };
  for (const auto& [newerDeleted, changeEditDate, stays, why] :
       {Case{0, true, "newer", "the newest live one"},
        Case{1, true, "first", "a live one before a deleted one"},
        Case{0, false, "newer", "and nobody is told"}}) {
    Shops home;
    const std::string first = home.vendor("Shop").pk;
    home.vendor("Shop", Vendor::kPayer);
    home.sql(
        "insert into category (title, type, deleted, editDate, oldTitle) values ('Shop', 6, ?, 4e9, 'newer'),"
        " ('Shop', 6, ?1, 4e9, 'same age'), ('Shop', 6, 0, 6e9, ''), ('Shop', 6, 1, 5e9, 'gone'),"
        " ('Shop', 6, 0, 1, 'shared'), ('Other', 9, 0, 1, 'shared')",
        {newerDeleted});
    for (const auto& key : {first, std::string("newer"), std::string("gone"), std::string("shared")})
      home.set(home.spend("Things", 1, home.on("2024-02-29")), "vendor", key);
    home.set(home.earn("Pay", 1, home.on("2024-02-29")), "vendor", "shared");
    home.sql("update transactions set editDate = 1");
    EXPECT_EQ(home.shown(VendorQuery(home.root).getVendorListByAlpha()), "S: Shop") << "listed once";
    const auto done = clearDuplicatedItemChangeEditDate(home.root, changeEditDate);
    ASSERT_TRUE(done) << why;
    EXPECT_EQ(done->titles, 1) << why;
    EXPECT_EQ(done->removed, 5) << why;
    EXPECT_EQ(done->records, 3) << why;
    EXPECT_EQ(home.rows("select replace(oldTitle, ?, 'first') from category where type = 6", {first}), stays)
        << why;
    EXPECT_EQ(home.number("select count(*) from category where type = 9"), 2)
        << "a payer of the same key stays";
    EXPECT_EQ(home.rows("select replace(vendor, ?, 'first') || count(*) || (max(editDate) > 1) from"
                        " transactions group by vendor order by 1",
                        {first}),
              stays + std::string(changeEditDate ? "41" : "40") + "\nshared10")
        << why;
    EXPECT_EQ(clearDuplicateVendor(home.root)->titles, 0) << why;
  }
}

TEST(Vendors, withoutAKeyGetOne) {
  struct Case {
    const char* others;
    const char* left;
    const char* why;
  };
  for (const auto& [others, left, why] :
       {Case{"('Bare', 6, 0, 9, '')", "Bare 0 new", "it alone"},
        Case{"('Bare', 6, 0, 9, ''), ('Bare', 6, 0, 8, null)", "Bare 0 new", "two of them become one"},
        Case{"('Bare', 6, 0, 9, ''), ('Bare', 6, 1, 8, 'key')", "Bare 0 key",
             "a key that was there stays, and the vendor in use"}}) {
    Shops home;
    home.sql(std::string("insert into category (title, type, deleted, editDate, oldTitle) values"
                         " ('EUR', 0, 0, 1, ''), ") +
             others);
    home.set(home.spend("Things", 1, home.on("2024-02-29")), "vendor", "");
    EXPECT_EQ(home.shown(VendorQuery(home.root).getVendorList("0")), ": NoPayee") << why;
    EXPECT_EQ(Vendor::updateUsingCounts(home.root, Vendor::kPayee).value(), 0) << why;
    ASSERT_TRUE(clearDuplicateVendor(home.root)) << why;
    EXPECT_EQ(
        home.rows("select title || ' ' || deleted || iif(oldTitle = 'key', ' key', ' new') from category"
                  " where type = 6 and oldTitle != '' and editDate > 9"),
        left)
        << why;
    EXPECT_EQ(home.rows("select editDate || oldTitle from category where type = 0 and title = 'EUR' and"
                        " parent = ''"),
              "1.0")
        << why;
    EXPECT_EQ(home.rows("select vendor from transactions"), "") << why;
  }
  Shops home;
  home.sql("insert into category (title, type, orderID) values ('Bare', 6, 9000000000)");
  auto shop = home.vendor("Shop");
  EXPECT_EQ(shop.orderID, std::numeric_limits<int>::max()) << "no number beyond";
  ASSERT_TRUE(shop.rename("Bare"));
  EXPECT_EQ(
      home.number("select count(*) from category where type = 6 and deleted = 0 and oldTitle = ?", {shop.pk}),
      1);
}

TEST(Vendors, ofASharedKeyOnlyTheOneMeantChanges) {
  const std::vector<std::pair<const char*, std::function<Result<>(Vendor, Vendor)>>> changes = {
      {"deleted", [](Vendor shared, const Vendor&) { return shared.delVendor(); }},
      {"renamed", [](Vendor shared, const Vendor&) { return shared.rename("New"); }},
      {"merged", [](Vendor shared, const Vendor& other) { return shared.rename(other.title); }},
      {"moved", [](Vendor shared, const Vendor& other) { return shared.moveDataTo(other); }},
      {"counted",
       [](Vendor shared, const Vendor&) { return shared.updateUsingCount() ? Result<>() : refuse("not"); }},
  };
  for (const auto& [why, change] : changes) {
    Shops home;
    const auto other = home.vendor("Other");
    home.vendor("Work", Vendor::kPayer);
    home.category("Food");
    home.vendor("Shop");
    home.sql("update category set oldTitle = 'k', editDate = 1 where title in ('Work', 'Food', 'Shop')");
    home.set(home.spend("Things", 1, home.on("2024-02-29")), "vendor", "k");
    home.set(home.earn("Pay", 1, home.on("2024-02-29")), "vendor", "k");
    const auto others = [&] {
      return home.rows(
          "select json_array(title, type, deleted, usedTimes, orderID, editDate) from category where type != "
          "6"
          " union all select vendor from transactions where type = 11");
    };
    const auto before = others();
    const auto stamps = home.number("select max(editDate) from category");
    const auto shared = *Vendor::withTitle(home.root, "Shop", Vendor::kPayee);
    EXPECT_EQ(shared.recordCount(), 1);
    const auto done = change(shared, other);
    ASSERT_TRUE(done) << why << ": " << done.error().why;
    EXPECT_TRUE(Vendor::updateOrder(home.root, std::vector{shared})) << why;
    EXPECT_EQ(others(), before) << why;
    EXPECT_GT(home.number("select max(editDate) from category"), stamps) << why;
  }
}

TEST(Vendors, areNeitherFriendsNorAccounts) {
  Shops home;
  const auto other = home.vendor("Other");
  auto shop = home.vendor("Anna");
  home.sql("update category set oldTitle = 'Anna' where title = 'Anna'");
  home.sql(
      "insert into transactions (eid, type, syear, vendor) values ('debt', 24, 0, 'Anna'),"
      " ('paid', 35, 0, 'Anna'), ('moved', 33, 0, 'Anna'), ('monthly', 85, 33, 'Anna'),"
      " ('spent', 12, 0, 'Anna'), ('rent', 85, 12, 'Anna')");
  shop = *Vendor::withTitle(home.root, "Anna", Vendor::kPayee);
  EXPECT_EQ(shop.recordCount(), 2);
  ASSERT_TRUE(shop.moveDataTo(other));
  EXPECT_EQ(home.rows("select eid from transactions where vendor != 'Anna'"), "spent\nrent");
}

}  // namespace
}  // namespace moniva
