#include <algorithm>
#include <boost/json.hpp>

#include "calendar/date_texts.h"
#include "model/transaction_type.h"
#include "reports/category_report.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/breakdown_member.h"
#include "ui/cli/commands/breakdown_table.h"
#include "ui/cli/csv_out.h"
#include "ui/cli/records.h"
#include "ui/cli/report_target.h"
#include "ui/cli/transaction_rows.h"

namespace moniva {
namespace {

struct BreakdownOptions {
  std::string period;
  std::vector<std::string> words;    ///< members typed behind the period
  std::vector<std::string> members;  ///< members typed with --of
  HolderOptions of;
  std::string type = "expense";
  std::string by;
  std::int64_t limit = 0;
  bool income = false;
  bool pending = false;
  bool records = false;
  bool empty = false;
  bool csv = false;

  int kind() const { return income || type == "income" ? kind::kIncome : kind::kExpense; }
};

const std::map<std::string, PeriodUnit> kUnits = {{"day", PeriodUnit::day},
                                                  {"week", PeriodUnit::week},
                                                  {"month", PeriodUnit::month},
                                                  {"year", PeriodUnit::year}};

/// One breakdown asked for, from the options to what is printed.
class BreakdownRun {
 public:
  BreakdownRun(Session& session, const BreakdownOptions& options, BreakdownBy by)
      : session_(session),
        options_(options),
        asked_{options.of.chosen(session), by, options.kind(), {}, options.pending} {
    takeWords();
  }

  void run() {
    if (!options_.by.empty()) return printPeriodsOfMember();
    if (options_.records) return printRecords();
    printRows();
  }

 private:
  /// A first word that can be no period is a member; so are the others.
  void takeWords() {
    names_ = options_.members;
    std::string period = options_.period;
    static const std::vector<std::string> days = {"today", "yesterday", "tomorrow"};
    const bool isPeriod = period.empty() || (period[0] >= '0' && period[0] <= '9') ||
                          std::ranges::find(days, period) != days.end();
    if (!isPeriod) names_.push_back(std::exchange(period, std::string()));
    names_.insert(names_.end(), options_.words.begin(), options_.words.end());
    const auto unit = options_.by.empty() ? PeriodUnit::day : kUnits.at(options_.by);
    asked_.period =
        period.empty() ? usualPeriod(session_, asked_.of, unit) : periodTyped(session_, asked_.of, period);
  }

  /// The one member that was named.
  TransReportSummary onlyMember(std::string_view option) const {
    if (names_.size() == 1) return memberNamed(session_, asked_, breakdownOf(asked_), names_.front());
    throw notUnderstood("{} is of one member: name it with --of", option);
  }

  void printRows() {
    TransReportSummary list = breakdownOf(asked_);
    const bool isInOne = asked_.by != BreakdownBy::currency;
    BreakdownHeading heading{headed({}), rowsTitle(), isInOne ? asked_.of.currency : "", isInOne, 0};
    std::vector<TransReportSummary> named;
    for (const auto& name : names_) named.push_back(memberNamed(session_, asked_, list, name));
    std::optional<MVCategory> above;
    const auto isBelow = [](const TransReportSummary& member) {
      return member.category && member.category->isSubCate();
    };
    if (asked_.by == BreakdownBy::category && std::ranges::any_of(named, isBelow)) {
      asked_.by = BreakdownBy::subcategory;
      heading.rows = rowsTitle();
      list = breakdownOf(asked_);
    }
    if (asked_.by == BreakdownBy::category && named.size() == 1 && named[0].category->isSuperCate()) {
      above = named[0].category;
      heading.of = headed(above->title);
      heading.rows = session_.text("Subcategory");
      list = done(getSubCategoryReportFor(*above, asked_.of, asked_.period.first, asked_.period.last,
                                          asked_.pending));
      named.clear();
    }
    heading.whole = list.incomeAmount + list.expenseAmount;
    std::optional<BreakdownGap> gap;
    if (!named.empty()) {
      keepOnly(list, named);
    } else if (isInOne) {
      gap = done(gapOf(asked_.of, asked_.by, asked_.type, asked_.period.first, asked_.period.last,
                       heading.whole, asked_.pending, above ? &*above : nullptr));
    }
    joinOthers(session_, list, options_.limit);
    if (session_.options().json) {
      auto object = jsonOf(session_, list);
      if (gap) object["gap"] = jsonOfGap(*gap);
      return session_.printJson(object);
    }
    if (options_.csv) return printRowsAsCsv(list);
    if (list.listArray.empty() && (!gap || !gap->any())) {
      return sayNothing(names_.size() == 1 && !above ? headed(names_.front()) : heading.of);
    }
    printBreakdown(session_, list, heading);
    if (!gap) return;
    printGap(session_, *gap,
             above || asked_.by == BreakdownBy::subcategory ? session_.text("without a subcategory")
                                                            : session_.text("without a category"),
             asked_.of.currency);
  }

  /// The rows that were named; one that is not among them, having nothing in the period, is left out.
  static void keepOnly(TransReportSummary& list, const std::vector<TransReportSummary>& named) {
    auto rows = std::exchange(list.listArray, {});
    list.incomeAmount = list.expenseAmount = list.maxInSumAmount = list.maxOutSumAmount = 0;
    list.incomeCount = list.expenseCount = 0;
    for (auto& row : rows) {
      if (std::ranges::any_of(named, [&](const auto& member) { return memberKey(member) == memberKey(row); }))
        list.take(std::move(row));
    }
    list.count = static_cast<int>(list.listArray.size());
  }

  void printPeriodsOfMember() {
    const PeriodUnit unit = kUnits.at(options_.by);
    constexpr std::int64_t kMostDays = 50'000;
    const auto days = session_.calendar().dayNumber(asked_.period.last) -
                      session_.calendar().dayNumber(asked_.period.first) + 1;
    const bool isShort = unit == PeriodUnit::day || unit == PeriodUnit::week;
    if (isShort && options_.empty && days / (unit == PeriodUnit::week ? 7 : 1) > kMostDays) {
      throw refused("these are {} days; choose fewer, or leave out --empty", days);
    }
    // Accounts all together have periods as well.
    TransReportSummary member;
    if (asked_.by != BreakdownBy::account || !names_.empty()) member = onlyMember("--by");
    const auto list = periodsOfMember(asked_, member, unit, options_.empty);
    if (session_.options().json) return session_.printJson(jsonOf(session_, list));
    if (options_.csv) return printRowsAsCsv(list);
    if (list.listArray.empty()) return sayNothing(headed(member.title));
    const std::map<PeriodUnit, std::string> units = {{PeriodUnit::day, session_.text("Day")},
                                                     {PeriodUnit::week, session_.text("Week")},
                                                     {PeriodUnit::month, session_.text("Month")},
                                                     {PeriodUnit::year, session_.text("Year")}};
    printBreakdown(session_, list,
                   {headed(member.title), units.at(unit),
                    member.currency.empty() ? asked_.of.currency : member.currency});
  }

  void printRecords() {
    const auto member = onlyMember("--records");
    TransactionRows rows(session_, options_.csv);
    RecordNames names(session_.root());
    double total = 0;
    double foreign = 0;
    std::int64_t count = 0;
    for (const auto& eid : recordsOfMember(asked_, member)) {
      const auto row = MVTransaction::transactionFromEID(session_.root(), eid, &names);
      if (!row) continue;
      total += row->amount;
      foreign += row->foreignAmount;
      if (options_.limit == 0 || count < options_.limit) rows.add(*row);
      ++count;
    }
    const auto counted = session_.count("{} record", "{} records", count);
    rows.addTotal(member.currency.empty()
                      ? counted
                      : fmt::format("{}, {}", counted, session_.amounts().format(foreign, member.currency)),
                  session_.amounts().format(total, asked_.of.currency));
    rows.print(session_.text("There is no such expense or income."));
  }

  void printRowsAsCsv(const TransReportSummary& list) const {
    boost::json::array rows;
    for (const auto& row : list.listArray) rows.push_back(jsonOf(session_, row));
    printCsv(session_, rows);
  }

  static boost::json::object jsonOfGap(const BreakdownGap& gap) {
    return {{"reported", gap.reported},
            {"refunded", gap.refunded},
            {"unfiled", gap.unfiled},
            {"costShares", gap.costShares},
            {"otherMoments", gap.otherMoments}};
  }
  /// "Household · Expenses · Food".
  std::string headed(const std::string& member) const {
    return fmt::format("{} · {}{}{}", asked_.of.title,
                       asked_.type == kind::kIncome ? session_.text("Income") : session_.text("Expenses"),
                       member.empty() ? "" : " · ", member);
  }

  std::string rowsTitle() const {
    switch (asked_.by) {
      case BreakdownBy::category:
        return session_.text("Category");
      case BreakdownBy::subcategory:
        return session_.text("Subcategory");
      case BreakdownBy::vendor:
        return asked_.type == kind::kIncome ? session_.text("Payer") : session_.text("Payee");
      case BreakdownBy::account:
        return session_.text("Account");
      case BreakdownBy::currency:
        break;
    }
    return session_.text("Currency");
  }

  void sayNothing(const std::string& what) {
    const auto text = [&](Date date) { return stringOfDateMediumStyle(session_.calendar(), date); };
    session_.say(session_.text("'{}' has nothing from {} to {}.", what, text(asked_.period.first),
                               text(asked_.period.last)));
  }

  Session& session_;
  const BreakdownOptions& options_;
  BreakdownAsked asked_;
  std::vector<std::string> names_;
};

}  // namespace

void addBreakdownCommand(CommandLine& line) {
  CLI::App* breakdowns = line.add(line.app(), "breakdown");
  breakdowns->require_subcommand(1);
  for (const auto& [name, by] : {std::pair{"category", BreakdownBy::category},
                                 {"subcategory", BreakdownBy::subcategory},
                                 {"vendor", BreakdownBy::vendor},
                                 {"account", BreakdownBy::account},
                                 {"currency", BreakdownBy::currency}}) {
    CLI::App* command = line.add(*breakdowns, name);
    auto options = std::make_shared<BreakdownOptions>();
    command->add_option(
        "PERIOD", options->period,
        "A year 2024 or a month 2024-03 as your calendar and the book count them, a Gregorian day "
        "2024-03-05, or two of these joined by \"..\" (else the present month)");
    command->add_option("MEMBER", options->words,
                        "Only these; a single category is shown by what is below it");
    command->add_option("--of", options->members, "The same for a name that looks like a period")
        ->type_name("MEMBER");
    options->of.addTo(*command);
    auto* type = command->add_option("--type", options->type, "What to count (else expense)")
                     ->type_name("KIND")
                     ->check(oneOf({"expense", "income"}));
    command->add_flag("--income", options->income, "The same as --type income")->excludes(type);
    command->add_flag("--pending", options->pending, "Count what is still to be paid too");
    auto* periods = command->add_option("--by", options->by, "The member's periods instead")
                        ->type_name("UNIT")
                        ->check(oneOf({"day", "week", "month", "year"}));
    command->add_flag("--empty", options->empty, "With --by, show periods without records too")
        ->needs(periods);
    command->add_flag("--records", options->records, "The member's records instead, the latest first")
        ->excludes(periods);
    command
        ->add_option("--limit", options->limit,
                     "How many rows at most, the others added up; 0 for all (else all)")
        ->type_name("N")
        ->check(rowLimit())
        ->excludes(periods);
    addCsv(*command, options->csv);
    line.onRun(command, [options, by = by](Session& session) { BreakdownRun(session, *options, by).run(); });
  }
}

}  // namespace moniva
