#include "reports/search.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>

#include "model/spend_plan.h"
#include "reports/keyword_forms.h"
#include "storage/transaction.h"
#include "support/compound_story.h"

namespace moniva {
namespace {

class Search : public Compound {
 public:
  /// An expense of Food - Bakery with that note.
  std::string noted(const std::string& note, double amount = 1, const std::string& day = "2024-01-01") {
    Spend spend = expense(amount);
    spend.note = note;
    spend.datetime = on(day);
    EXPECT_TRUE(spend.add());
    return spend.eid;
  }
  std::vector<std::string> eids(const SearchQuery& query) {
    const auto page = searchPage(root, query);
    EXPECT_TRUE(page) << page.error().why;
    return page ? page->found : std::vector<std::string>{};
  }
  /// The notes of what is found, in order.
  std::string notes(const SearchQuery& query) {
    std::string text;
    for (const auto& eid : eids(query)) {
      text += (text.empty() ? "" : "|") + rows("select note from transactions where eid = ?", {eid});
    }
    return text;
  }
};

TEST(KeywordForms, areCaseWidthAndScript) {
  const struct {
    std::string keyword;
    std::vector<std::string> forms;
    const char* why;
    const char* locale = "de_DE";
  } cases[] = {
      {"", {}, "nothing typed"},
      {"Tea 5%", {"Tea 5%", "Ｔｅａ　５％", "ｔｅａ　５％"}, "LIKE takes both cases of plain letters only"},
      {"Café", {"Café", "CAFÉ"}, "small letters would be the same pattern"},
      {"кофе", {"кофе", "КОФЕ", "Кофе"}, "notes begin with a capital"},
      {"Ыı", {"Ыı", "ыı", "ЫI"}, "a language with two kinds of i", "tr_TR"},
      {"ＡＢ", {"ＡＢ", "ａｂ", "AB"}, "back to plain width"},
      {"ｶﾌｪ", {"ｶﾌｪ", "カフェ"}, "signs of two widths"},
      {"記帳", {"記帳", "记帐"}, "traditional"},
      {"买书", {"买书", "買書"}, "simplified"},
      {"кофе 3", {"кофе 3", "КОФЕ 3", "Кофе 3"}, "not all of it has a full width"},
  };
  for (const auto& c : cases) EXPECT_EQ(keywordForms(c.keyword, c.locale), c.forms) << c.why;
}

TEST(Search, looksAtNotesCategoriesVendorsAndAmounts) {
  Search store;
  store.noted("bread 12.50", 3, "2024-01-09");
  store.noted("rolls", 12.5, "2024-01-08");
  store.noted("100% rye_flour\\bag", 1234, "2024-01-07");
  store.noted("Кофе ＡＢ", 1.234, "2024-01-06");
  store.sql("update transactions set subcategory = category, vendor = '' where note like 'Кофе%'");
  store.sql("insert into category (title, type) values ('a shop without a key', 6)");
  store.sql(
      "insert into category (title, oldTitle, type) select 'Twin', oldTitle, 6 from category where title"
      " = 'Bakery'");
  const std::string all = "bread 12.50|rolls|100% rye_flour\\bag|Кофе ＡＢ";
  const std::string below = "bread 12.50|rolls|100% rye_flour\\bag";
  const struct {
    std::string keyword, found;
    const char* why;
  } cases[] = {
      {"", all, "anything"},
      {"12.5", "bread 12.50|rolls", "the text, or exactly the amount"},
      {"12,5", "rolls", "the amount with a comma"},
      {"1,234", "100% rye_flour\\bag|Кофе ＡＢ", "a number with two meanings"},
      {"BAKERY", below, "the category"},
      {"food", all, "the category, or the one above it"},
      {"lang", below, "the vendor"},
      {"twin", below, "a key that two rows share doubles nothing"},
      {"shop", "", "a vendor without a key is nobody's"},
      {store.bakery.substr(store.bakery.size() - 6), "", "keys are no text"},
      {"_rootCate", "", "nor is the mark of what stands at the top"},
      {"0%", "100% rye_flour\\bag", "the sign itself"},
      {"e_f", "100% rye_flour\\bag", "it as well"},
      {"d_1", "", "which stands for no other"},
      {"r\\b", "100% rye_flour\\bag", "and the sign that takes its meaning away"},
      {"КОФЕ", "Кофе ＡＢ", "the other case of letters that are not plain"},
      {"ab", "Кофе ＡＢ", "full width"},
      {"' or 1 = 1 --", "", "quotes"},
      {"🍞", "", "an emoji"},
  };
  for (const auto& c : cases) EXPECT_EQ(store.notes({SearchIn::records, c.keyword}), c.found) << c.why;

  SearchQuery query{SearchIn::records};
  query.amount = 12.5;
  EXPECT_EQ(store.notes(query), "rolls");
  query = {SearchIn::records};
  query.from = store.on("2024-01-07");
  query.to = store.on("2024-01-08");
  EXPECT_EQ(store.notes(query), "rolls|100% rye_flour\\bag");
  store.sql("update transactions set familyUser = 'somebody' where note = 'rolls'");
  EXPECT_EQ(store.notes(query), "100% rye_flour\\bag") << "another member's";
  store.sql("update transactions set subcategory = '#NOMVCATEGORY', category = ''");
  EXPECT_EQ(store.notes({SearchIn::records}), "");
  query.uncategorised = true;
  EXPECT_EQ(store.notes(query), "100% rye_flour\\bag");
}

TEST(Search, knowsTheKinds) {
  Search store;
  const std::string bread = store.noted("bread");
  store.earn("Salary", 900, store.on("2024-01-02"));
  const auto moved = store.move(20, *store.cash, *store.bank, store.on("2024-01-03"));
  const auto cart = store.cart({3, 4}, 0, 7);
  store.sql(
      "insert into transactions (eid, type, bid, vendor, datetime) values ('debt', 24, 10, 'Anna', 9e8)");
  store.sql(
      "insert into transactions (eid, type, bid, subcategory, datetime, syear, transferEID) values"
      " ('seed', 86, 20, ?, 8e8, 1002, 'g'), ('share', 12, 20, ?, 8e8, 1002, 'g')",
      {store.bakery, store.bakery});
  store.sql(
      "insert into transactions (eid, type, bid, vendor, datetime) values ('out', 33, 10,"
      " '_OutsideAccount', 7e8)");
  const auto count = [&](SearchIn in, const std::string& keyword = "", const MonivaAccount* of = nullptr) {
    SearchQuery query{in, keyword};
    if (of != nullptr) query.account = *of;
    const auto found = searchCount(store.root, query);
    EXPECT_TRUE(found) << found.error().why;
    EXPECT_EQ(*found, store.eids(query).size());
    return *found;
  };
  EXPECT_EQ(count(SearchIn::records), 4) << "the share of a cost is found by its seed";
  EXPECT_EQ(count(SearchIn::expenses), 3);
  EXPECT_EQ(store.eids({SearchIn::transfers}), (std::vector<std::string>{moved.eidB, "out"}));
  EXPECT_EQ(store.eids({SearchIn::debts, "ANNA"}), std::vector<std::string>{"debt"});
  EXPECT_EQ(count(SearchIn::payments), 1);
  EXPECT_EQ(store.eids({SearchIn::costs, "bakery"}), std::vector<std::string>{"seed"});
  EXPECT_EQ(count(SearchIn::all), 9);
  EXPECT_EQ(count(SearchIn::all, "bakery"), 4);
  EXPECT_EQ(count(SearchIn::records, "", &*store.bank), 2) << "items of a cart that it paid";
  EXPECT_EQ(count(SearchIn::transfers, "", &*store.cash), 1) << "either side";
  EXPECT_EQ(count(SearchIn::all, "", &*store.home), 4);
  const auto both = store.group("Both", {*store.cash, *store.bank});
  EXPECT_EQ(count(SearchIn::all, "", &both), 6);
}

TEST(Search, refusesWhatCannotBeLookedFor) {
  Search store;
  const auto refusal = [&](SearchQuery query) {
    const auto page = searchPage(store.root, query);
    return page ? std::string("found") : page.error().why;
  };
  EXPECT_EQ(refusal({SearchIn::all, std::string(1'000'000, 'a')}),
            "the text to look for has 1000000 bytes; 16000 are the most");
  EXPECT_EQ(refusal({SearchIn::all, std::string(kLongestKeyword, '%')}), "found") << "with all its forms";
  EXPECT_EQ(refusal({SearchIn::all, " \t\u3000"}), "the text to look for is blank");
  EXPECT_EQ(refusal({SearchIn::all, std::string("a\0b", 3)}), "the text to look for has a NUL in it");
  EXPECT_EQ(refusal({SearchIn::all, "a\xff"}), "the text to look for is not UTF-8");
  EXPECT_EQ(refusal({SearchIn::all, "", {}, Date{2}, Date{1}}), "the search ends before it begins");
  EXPECT_NE(refusal({SearchIn::all, "", {}, {}, {}, {}, -1}), "found");
  EXPECT_NE(refusal({SearchIn::all, "", {}, {}, {}, {}, 0, 0}), "found");
  EXPECT_EQ(refusal({SearchIn::all, "", {}, {}, {}, {}, INT64_MAX, INT64_MAX}), "found");
}

TEST(Search, keepsTexts) {
  Search store;
  const auto categories = store.rows("select count(*) from category");
  for (const char* text : {"tea", "bread", "tea"}) EXPECT_TRUE(saveSearch(store.root, text));
  EXPECT_EQ(*getSearchList(store.root), (std::vector<std::string>{"tea", "bread", "tea"}));
  EXPECT_EQ(store.rows("select count(*) from category where parent = '_searchHistory' and editDate > 1e9 and"
                       " edit_ipid = ?",
                       {store.root.itsUDID()}),
            "3");
  EXPECT_TRUE(MVCategory::clearDuplicateCategory(store.root));
  EXPECT_EQ(*deleteSearch(store.root, "tea"), 2);
  EXPECT_EQ(*getSearchList(store.root), std::vector<std::string>{"bread"});
  EXPECT_EQ(*clearAllSearchHistory(store.root), 1);
  EXPECT_EQ(store.rows("select count(*) from category"), categories);
  EXPECT_FALSE(saveSearch(store.root, ""));
}

// What LIKE takes for the same, letter by letter.
std::string folded(std::string text) {
  for (char& c : text) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  return text;
}

RC_GTEST_PROP(SearchProperty, findsWhatLookingAtEachNoteFindsPageByPage, ()) {
  static Search store;
  static const std::string category = store.category("Zoo").pk;
  store.sql("delete from transactions");
  const auto text =
      rc::gen::map(rc::gen::container<std::vector<std::string>>(rc::gen::element<std::string>(
                       "a", "A", "b", "%", "_", "\\", "é", "É", "ａ", "Ａ", "ｂ", "％", "к", "К", "1", " ")),
                   [](const std::vector<std::string>& signs) {
                     std::string joined;
                     for (const auto& sign : signs) joined += sign;
                     return joined;
                   });
  struct Row {
    double when;
    std::string eid, note;
  };
  std::vector<Row> rows;
  for (const auto& note : *rc::gen::container<std::vector<std::string>>(text)) {
    rows.push_back({*rc::gen::element(1.0, 2.0, 3.0), std::to_string(rows.size()), note});
    store.sql(
        "insert into transactions (eid, type, bid, note, datetime, subcategory) values (?, 12, 20, ?, ?,"
        " ?)",
        {rows.back().eid, note, rows.back().when, category});
  }
  const std::string keyword = *rc::gen::suchThat(
      text, [](const std::string& typed) { return typed.find_first_not_of(' ') != std::string::npos; });
  const auto forms = keywordForms(keyword, "en_US");
  std::ranges::reverse(rows);
  std::ranges::stable_sort(rows, std::greater<>(), &Row::when);
  std::vector<std::string> expected;
  for (const Row& row : rows) {
    if (std::ranges::any_of(forms, [&](const std::string& form) {
          return folded(row.note).find(folded(form)) != std::string::npos;
        })) {
      expected.push_back(row.eid);
    }
  }

  const auto pageMax = *rc::gen::inRange<std::int64_t>(3, 9);
  std::vector<std::string> byNumber;
  std::vector<std::string> byPlace;
  SearchQuery query{SearchIn::all, keyword};
  query.pageMax = pageMax;
  for (std::int64_t page = 0;; ++page) {
    RC_ASSERT(searchTransactions(store.root, keyword, {}, {}, {}, page, pageMax, byNumber));
    const auto next = *searchPage(store.root, query);
    byPlace.insert(byPlace.end(), next.found.begin(), next.found.end());
    RC_ASSERT(byNumber == byPlace);
    query.after = next.last;
    if (!next.more) break;
  }
  RC_ASSERT(byPlace == expected);
}

}  // namespace
}  // namespace moniva
