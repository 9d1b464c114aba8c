#include "reports/search.h"

#include <algorithm>
#include <limits>
#include <span>
#include <utility>

#include "base/amount.h"
#include "model/vendor.h"
#include "reports/keyword_forms.h"
#include "reports/numbered_slots.h"

namespace moniva {
namespace {

/// One kind of rows a search goes through. The signs keep the walk on the index of dates, where the kind is
/// most of the store.
struct Searched {
  std::string_view rows;
  bool hasCategory = false;
  bool hasPerson = false;
  bool hasOtherSide = false;
};

constexpr Searched kRecords{
    .rows =
        "+deleted = 0 and (+type = 11 or +type = 12 or +type = 13 or +type = 14) and syear != 1002 and"
        " bid = 20",
    .hasCategory = true};
constexpr Searched kExpenses{.rows = "+deleted = 0 and +type in (12,14) and syear != 1002 and bid = 20",
                             .hasCategory = true};
constexpr Searched kTransfers{
    .rows = "+deleted = 0 and (type = 23 or (type = 33 and +vendor = '_OutsideAccount'))",
    .hasOtherSide = true};
constexpr Searched kDebts{.rows = "+deleted = 0 and type in (24,34)", .hasPerson = true};
constexpr Searched kPayments{
    .rows =
        "+deleted = 0 and bid = 10 and (+transferEID = '' or syear > 1000) and (+type = 11 or"
        " +type = 12)"};
constexpr Searched kCosts{.rows = "+deleted = 0 and type = 86", .hasCategory = true};

std::vector<Searched> kindsOf(SearchIn in) {
  switch (in) {
    case SearchIn::records:
      return {kRecords};
    case SearchIn::expenses:
      return {kExpenses};
    case SearchIn::transfers:
      return {kTransfers};
    case SearchIn::debts:
      return {kDebts};
    case SearchIn::payments:
      return {kPayments};
    case SearchIn::costs:
      return {kCosts};
    case SearchIn::all:
      break;
  }
  return {kRecords, kTransfers, kDebts, kPayments, kCosts};
}

/// The amounts that the text may mean: "12,5" one, "1,234" two.
std::vector<double> amountsIn(const SearchQuery& query) {
  std::vector<double> amounts;
  const auto add = [&](double amount) {
    if (std::ranges::find(amounts, amount) == amounts.end()) amounts.push_back(amount);
  };
  if (query.keywordAmount) add(*query.keywordAmount);
  for (const char mark : {'.', ','}) {
    if (const auto amount = parseAmount(query.keyword, mark)) add(*amount);
  }
  return amounts;
}

/// The condition of a search and what its slots hold. Not to be moved: the values view the texts beside them.
class SearchCondition {
 public:
  SearchCondition(MVAppRoot& root, const SearchQuery& query)
      : user_(root.objectForKey("userRecordID")), query_(query) {
    for (const auto& form : keywordForms(query.keyword, root.calendar().locale())) {
      patterns_.push_back(likePattern(form));
    }
    for (const auto& pattern : patterns_) patternSlots_.push_back(slot(pattern));
    for (const double amount : amountsIn(query)) amountSlots_.push_back(slot(amount));
    if (query.account) accountSlot_ = slot(query.account->pk);
    compose();
  }
  SearchCondition(const SearchCondition&) = delete;
  SearchCondition& operator=(const SearchCondition&) = delete;

  std::string slot(const Value& value) { return slots_.add(value); }
  /// "select ... from transactions where ..." of these columns.
  std::string select(std::string_view columns) const {
    return fmt::format("{}select {} from transactions where {}", titled(), columns, sql_);
  }
  std::span<const Value> values() const { return slots_.values(); }

 private:
  void compose() {
    const auto kinds = kindsOf(query_.in);
    for (const Searched& kind : kinds) {
      sql_ += fmt::format("{}({})", sql_.empty() ? "" : " or ", ofKind(kind));
    }
    if (kinds.size() > 1) sql_ = fmt::format("({})", sql_);
    // Without another member there is one comparison for all.
    sql_ += user_.empty() ? " and +familyUser = ''"
                          : fmt::format(" and (+familyUser = '' or +familyUser = {})", slot(user_));
    if (query_.amount) sql_ += fmt::format(" and (amount = {0} or amount = -{0})", slot(*query_.amount));
    if (query_.from) sql_ += fmt::format(" and datetime >= {}", slot(*query_.from));
    // Of two upper bounds the engine might walk from the later one.
    const auto& after = query_.after;
    if (after && (!query_.to || after->datetime <= *query_.to)) {
      sql_ += fmt::format(
          " and datetime <= {0} and (datetime < {0} or +rowid < (select rowid from transactions where eid ="
          " {1}))",
          slot(after->datetime), slot(after->eid));
    } else if (query_.to) {
      sql_ += fmt::format(" and datetime <= {}", slot(*query_.to));
    }
  }

  std::string ofKind(const Searched& kind) const {
    std::string sql(kind.rows);
    if (!patternSlots_.empty()) sql += fmt::format(" and ({})", textTest(kind));
    if (query_.account) sql += fmt::format(" and ({})", accountTest(kind));
    if (kind.hasCategory && !query_.uncategorised) {
      // Asked last and once a row, so that keys which rows of `category` share do not double a record.
      sql += " and subcategory != '' and exists (select 1 from category where oldTitle = subcategory)";
    }
    return sql;
  }

  std::string like(std::string_view column) const {
    std::string test;
    for (const auto& pattern : patternSlots_) {
      test += fmt::format("{}{} like {} escape '\\'", test.empty() ? "" : " or ", column, pattern);
    }
    return test;
  }

  /// The keys of the categories and vendors whose titles hold the text, looked for once. A vendor without a
  /// key would stand for all records without a vendor.
  std::string titled() const {
    if (patternSlots_.empty()) return {};
    return fmt::format(
        "with titled as materialized (select oldTitle, type from category where oldTitle != '' and ({})) ",
        like("title"));
  }

  std::string textTest(const Searched& kind) const {
    // Records without a note are spared the patterns.
    std::string test = fmt::format("(note != '' and ({}))", like("note"));
    if (kind.hasPerson) test += " or " + like("vendor");
    if (kind.hasCategory) {
      // The one above is known by its key; where that names nothing, as in older stores, it is a title.
      test += fmt::format(
          " or subcategory in (select oldTitle from titled union all select c.oldTitle from category c where"
          " c.oldTitle != '' and c.parent != '' and (c.parent in (select oldTitle from titled) or c.oldParent"
          " in (select oldTitle from titled) or (c.oldParent not in ('', '_rootCate') and ({}) and not exists"
          " (select 1 from category a where a.oldTitle = c.oldParent))))",
          like("c.oldParent"));
    }
    // What came back is below zero.
    for (const auto& amount : amountSlots_) test += fmt::format(" or amount = {0} or amount = -{0}", amount);
    test += fmt::format(" or vendor in (select oldTitle from titled where type in ({},{}))", Vendor::kPayee,
                        Vendor::kPayer);
    return test;
  }

  std::string accountTest(const Searched& kind) const {
    const auto own = withSlot(accountQuerySQL(*query_.account), accountSlot_);
    if (query_.account->isBook()) return "+" + own;
    if (kind.hasOtherSide) return fmt::format("+{} or +vendor{}", own, own.substr(own.find_first_of("= ")));
    // Items of a compound record have no account; their payments do.
    return fmt::format(
        "+{0} or (transferEID != '' and bid = 20 and exists (select 1 from transactions p where"
        " p.transferEID = transactions.transferEID and p.bid = 10 and p.deleted = 0 and p.{0}))",
        own);
  }

  std::string user_;
  const SearchQuery& query_;
  std::vector<std::string> patterns_;
  std::vector<std::string> patternSlots_;
  std::vector<std::string> amountSlots_;
  std::string accountSlot_;
  NumberedSlots slots_;
  std::string sql_;
};

Result<> checkSearch(const SearchQuery& query) {
  if (auto checked = checkKeyword(query.keyword); !checked) return checked;
  if (query.from && query.to && *query.to < *query.from) return refuse("the search ends before it begins");
  if (query.page < 0 || query.pageMax < 1) return refuse("a page is the first or a later one, and has room");
  return {};
}

Result<> appendPage(MVAppRoot& root, SearchQuery query, std::vector<std::string>& found) {
  const auto page = searchPage(root, query);
  if (!page) return tl::make_unexpected(page.error());
  found.insert(found.end(), page->found.begin(), page->found.end());
  return {};
}

}  // namespace

Result<SearchPage> searchPage(MVAppRoot& root, const SearchQuery& query) {
  if (auto checked = checkSearch(query); !checked) return tl::make_unexpected(checked.error());
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  SearchPage page;
  constexpr auto kMost = std::numeric_limits<std::int64_t>::max() - 1;
  const std::int64_t pageMax = std::min(query.pageMax, kMost);
  if (query.page > kMost / pageMax) return page;
  SearchCondition condition(root, query);
  // One more tells whether there are more.
  const auto offset = condition.slot(query.page * pageMax);
  const auto limit = condition.slot(pageMax + 1);
  Run run = db->query(fmt::format("{} order by datetime DESC, rowid DESC limit {},{}",
                                  condition.select("eid, datetime"), offset, limit),
                      condition.values());
  while (run.next()) {
    page.more = std::cmp_equal(page.found.size(), pageMax);
    if (page.more) break;
    page.found.emplace_back(run.text(0));
    page.last = SearchPlace{run.date(1), page.found.back()};
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return page;
}

Result<std::int64_t> searchCount(MVAppRoot& root, const SearchQuery& query) {
  if (auto checked = checkSearch(query); !checked) return tl::make_unexpected(checked.error());
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const SearchCondition condition(root, query);
  Run run = db->query(condition.select("count(*)"), condition.values());
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return run.integer(0);
}

Result<SearchPlace> searchPlaceOf(MVAppRoot& root, const std::string& eid) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query("select datetime from transactions where eid = ?", {eid});
  if (run.next()) return SearchPlace{run.date(0), eid};
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return refuse("there is no record '{}'", eid);
}

Result<> searchTransactions(MVAppRoot& root, const std::string& keyword, std::optional<Date> fromDate,
                            std::optional<Date> toDate, const SearchAccount& account, std::int64_t page,
                            std::int64_t pageMax, std::vector<std::string>& uuidArray) {
  return appendPage(root, {SearchIn::records, keyword, {}, fromDate, toDate, account, page, pageMax},
                    uuidArray);
}
Result<> searchTransfer(MVAppRoot& root, const std::string& keyword, std::optional<Date> fromDate,
                        std::optional<Date> toDate, const SearchAccount& account, std::int64_t page,
                        std::int64_t pageMax, std::vector<std::string>& uuidArray) {
  return appendPage(root, {SearchIn::transfers, keyword, {}, fromDate, toDate, account, page, pageMax},
                    uuidArray);
}
Result<> searchDebt(MVAppRoot& root, const std::string& keyword, std::optional<Date> fromDate,
                    std::optional<Date> toDate, const SearchAccount& account, std::int64_t page,
                    std::int64_t pageMax, std::vector<std::string>& uuidArray) {
  return appendPage(root, {SearchIn::debts, keyword, {}, fromDate, toDate, account, page, pageMax},
                    uuidArray);
}
Result<> searchPayment(MVAppRoot& root, const std::string& keyword, std::optional<Date> fromDate,
                       std::optional<Date> toDate, const SearchAccount& account, std::int64_t page,
                       std::int64_t pageMax, std::vector<std::string>& uuidArray) {
  return appendPage(root, {SearchIn::payments, keyword, {}, fromDate, toDate, account, page, pageMax},
                    uuidArray);
}
Result<> searchCostSeed(MVAppRoot& root, const std::string& keyword, std::optional<Date> fromDate,
                        std::optional<Date> toDate, const SearchAccount& account, std::int64_t page,
                        std::int64_t pageMax, std::vector<std::string>& uuidArray) {
  return appendPage(root, {SearchIn::costs, keyword, {}, fromDate, toDate, account, page, pageMax},
                    uuidArray);
}
Result<> searchSpend(MVAppRoot& root, const std::string& keyword, std::optional<Date> fromDate,
                     std::optional<Date> toDate, const SearchAccount& account, std::int64_t page,
                     std::int64_t pageMax, std::vector<std::string>& uuidArray) {
  return appendPage(root, {SearchIn::expenses, keyword, {}, fromDate, toDate, account, page, pageMax},
                    uuidArray);
}

}  // namespace moniva
