#include <boost/json.hpp>

#include "exchange/csv_writer.h"
#include "model/record_names.h"
#include "reports/explain.h"
#include "ui/cli/categories.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/breakdown_member.h"
#include "ui/cli/commands/report_source.h"
#include "ui/cli/csv_out.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/json_out.h"
#include "ui/cli/rates.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/records.h"
#include "ui/cli/report_target.h"
#include "ui/cli/table.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

namespace json = boost::json;

struct ExplainOptions {
  std::string period;
  HolderOptions of;
  std::string type = "all";
  std::string category;
  std::string vendor;
  std::string paidFrom;
  std::string currency;
  bool pending = false;
  bool csv = false;
};

const std::map<std::string, int> kFigures = {{"income", kind::kIncome},
                                             {"expense", kind::kExpense},
                                             {"transfers-in", kind::kTransferIn},
                                             {"transfers-out", kind::kTransferOut}};
/// What is typed for the row of a breakdown that has no vendor or account.
constexpr std::string_view kNoneTyped = "none";

/// What is to be explained, and how it is called.
struct Asked {
  ExplainQuery query;
  std::string title;
  std::string currency;
  bool isMember = false;
};

void takeMember(Session& session, const ExplainOptions& options, Asked& asked) {
  ExplainQuery& query = asked.query;
  if (query.transactionType != kind::kIncome) query.transactionType = kind::kExpense;
  const auto member = [&](BreakdownBy by, const std::string& name) {
    const BreakdownAsked of{query.of, by, query.transactionType, {query.from, query.to}, query.pending};
    return memberNamed(session, of, breakdownOf(of), name);
  };
  if (!options.category.empty()) {
    // "Food/none" is what chose none below it.
    constexpr std::string_view kBare = "/none";
    const bool isBare = options.category.size() > kBare.size() && options.category.ends_with(kBare);
    const auto name = options.category.substr(0, options.category.size() - (isBare ? kBare.size() : 0));
    query.category = reportCategory(session, name, options.type);
    query.transactionType = query.category->type;
    asked.title = query.category->cateString();
    if (isBare && !query.category->isSubCate()) {
      query.category->parent = query.category->pk;
      asked.title += fmt::format(" ({})", session.text("without a subcategory"));
    }
  } else if (!options.vendor.empty()) {
    const bool isNone =
        options.vendor == kNoneTyped || Vendor::isNoVendorTitle(session.root(), options.vendor);
    query.vendor = std::string();
    if (!isNone) {
      const auto vendor = member(BreakdownBy::vendor, options.vendor).vendor;
      query.vendor = vendor->pk;
      if (options.type == "all" && vendor->type == Vendor::kPayer) query.transactionType = kind::kIncome;
    }
    asked.title = isNone ? session.text("no vendor") : options.vendor;
  } else if (!options.paidFrom.empty()) {
    const bool isNone = options.paidFrom == kNoneTyped || options.paidFrom == session.text("No account");
    query.paidFrom =
        isNone ? std::string() : member(BreakdownBy::account, options.paidFrom).paymentAccount->pk;
    asked.title = isNone ? session.text("no account") : options.paidFrom;
  } else {
    query.currency = asked.currency = currencyCodeTyped(session, options.currency);
    asked.title = options.currency;
  }
  const bool isIncome = query.transactionType == kind::kIncome;
  asked.title =
      fmt::format("{} · {}", isIncome ? session.text("income") : session.text("expense"), asked.title);
  asked.isMember = true;
}

Asked askedFor(Session& session, const ExplainOptions& options) {
  const MonivaAccount of = options.of.chosen(session);
  const auto period = options.period.empty() ? usualPeriod(session, of, PeriodUnit::day)
                                             : periodTyped(session, of, options.period);
  Asked asked{.query = {of, period.first, period.last}, .title = {}, .currency = of.currency};
  asked.query.pending = options.pending;
  const auto figure = kFigures.find(options.type);
  asked.query.transactionType = figure == kFigures.end() ? wholeReportType(of) : figure->second;
  const auto members = std::ranges::count_if(
      std::array{&options.category, &options.vendor, &options.paidFrom, &options.currency},
      [](const std::string* typedName) { return !typedName->empty(); });
  if (members > 1) {
    throw notUnderstood("one of --category, --vendor, --paid-from and --currency is explained at a time");
  }
  if (members == 1) {
    if (options.type.starts_with("transfers")) {
      throw notUnderstood("transfers have no category, vendor or currency of their own");
    }
    takeMember(session, options, asked);
    return asked;
  }
  if (options.type.starts_with("transfers") && of.isBook()) {
    throw notUnderstood("transfers are of no book; name an account with --account");
  }
  asked.title = asked.query.transactionType == kind::kIncome        ? session.text("income")
                : asked.query.transactionType == kind::kExpense     ? session.text("expense")
                : asked.query.transactionType == kind::kTransferIn  ? session.text("transfers in")
                : asked.query.transactionType == kind::kTransferOut ? session.text("transfers out")
                                                                    : session.text("what is left");
  return asked;
}

/// Prints the rows as they come, so that none of a great many has to be kept.
class ExplainedRows {
 public:
  ExplainedRows(Session& session, const Asked& asked, bool csv)
      : session_(session),
        asked_(asked),
        csv_(csv),
        names_(session.root()),
        table_({{.title = session.text("Record")},
                {.title = session.text("Date")},
                // Its width is that of the first part, and the count of all stands in it.
                {.title = session.text("What"), .maxWidth = 40, .minWidth = 16},
                {.title = session.text("With"), .maxWidth = 30},
                {.title = session.text("Account or book"), .maxWidth = 24},
                {.title = session.text("Amount"), .align = Align::right},
                {.title = ""}}) {
    if (csv_) {
      session_.out() << csvLine(std::vector<std::string>{"eid", "datetime", "type", "amount", "currency",
                                                         "categoryString", "vendorString", "paymentAccount",
                                                         "bookAccount", "note", "paid"});
    } else if (session_.options().json) {
      session_.out() << "{\n  \"listArray\": [";
    }
  }

  void add(const ExplainedRow& row) {
    ++count_;
    if (csv_ || session_.options().json) return addPlain(row);
    const auto what = whatOf(row);
    const auto with = withOf(row);
    table_.addRow({Cell(shortEid(row.eid), ink::dim), shortDate(session_, row.datetime),
                   printable(what.empty() ? session_.text("no category") : what),
                   printable(with.empty() ? row.note : with), printable(holderOf(row)),
                   Cell(amount(row.amount), row.amount < 0 ? ink::plain : ink::green),
                   Cell(row.paid ? "" : session_.text("pending"), ink::dim)});
    // As many as make columns that suit those to come.
    constexpr std::int64_t kHeld = 500;
    if (count_ % kHeld == 0) flush();
  }

  void end(const Explained& explained) {
    if (csv_) return;
    if (session_.options().json) return endJson(explained);
    if (count_ == 0) return;
    table_.addTotal(
        {"", "", session_.count("{} record", "{} records", count_), "", "", amount(explained.rows.amount)});
    flush();
  }
  std::int64_t count() const { return count_; }
  std::string amount(double value) const {
    const bool isLeft = !asked_.isMember && !(asked_.query.transactionType < 100);
    return isLeft ? session_.amounts().formatSigned(value, asked_.currency)
                  : session_.amounts().format(value, asked_.currency);
  }

 private:
  void flush() { session_.out() << table_.renderPart(session_.style(), session_.width()); }

  void addPlain(const ExplainedRow& row) {
    const auto account = names_.holder(row.account);
    const auto book = names_.holder(row.book);
    const auto when = isoDate(session_, row.datetime);
    if (csv_) {
      session_.out() << csvLine(std::vector<std::string>{
          row.eid, std::string(when.as_string()), std::to_string(row.type), jsonNumber(row.amount),
          asked_.currency, whatOf(row), withOf(row), account ? account->title : "", book ? book->title : "",
          row.note, row.paid ? "true" : "false"});
      return;
    }
    const auto titled = [](const std::shared_ptr<const MonivaAccount>& holder) {
      return holder ? json::value{{"pk", holder->pk}, {"title", holder->title}} : json::value();
    };
    const json::object object{{"eid", row.eid},
                              {"datetime", when},
                              {"type", row.type},
                              {"amount", row.amount},
                              {"categoryString", whatOf(row)},
                              {"vendorString", withOf(row)},
                              {"paymentAccount", titled(account)},
                              {"bookAccount", titled(book)},
                              {"note", row.note},
                              {"paid", row.paid}};
    session_.out() << (count_ == 1 ? "\n    " : ",\n    ") << jsonText(object, JsonLayout::compact);
  }

  void endJson(const Explained& explained) {
    const auto part = [](const Explained::Part& of) {
      return json::object{{"count", of.count}, {"amount", of.amount}};
    };
    const json::object rest{
        {"title", asked_.title},
        {"beginDate", isoDate(session_, session_.calendar().dateBegin(asked_.query.from))},
        {"endDate", isoDate(session_, session_.calendar().dateEnd(asked_.query.to))},
        {"transactionType", asked_.query.transactionType},
        {"currency", asked_.currency},
        {"count", explained.rows.count},
        {"sumAmount", explained.rows.amount},
        {"reported", part(explained.reported)},
        {"agrees", explained.agrees()},
        {"pending", part(explained.pending)},
        {"refunds", part(explained.refunds)},
        {"spread", part(explained.spread)},
        {"transfers", part(explained.transfers)}};
    session_.out() << (count_ == 0 ? "]" : "\n  ]");
    for (const auto& [name, value] : rest) {
      session_.out() << fmt::format(",\n  \"{}\": {}", std::string(name),
                                    jsonText(value, JsonLayout::compact));
    }
    session_.out() << "\n}\n";
  }

  static bool isTransfer(const ExplainedRow& row) {
    return row.type == kind::kTransferIn || row.type == kind::kTransferOut;
  }
  std::string titleOf(const std::string& key) {
    const auto holder = names_.holder(key);
    return holder ? holder->title : key;
  }
  std::string holderOf(const ExplainedRow& row) {
    return titleOf(row.account.empty() ? row.book : row.account);
  }
  /// The category, or what else the row is.
  std::string whatOf(const ExplainedRow& row) {
    if (isTransfer(row)) {
      const bool arrives = row.type == kind::kTransferIn;
      return fmt::format("{} > {}", titleOf(arrives ? row.vendor : row.account),
                         titleOf(arrives ? row.account : row.vendor));
    }
    if (row.type > 20) {
      return fmt::format("{} : {}",
                         row.type == kind::kBorrowed ? session_.text("Borrow from")
                         : row.type == kind::kLent   ? session_.text("Lend to")
                                                     : session_.text("Repay"),
                         row.vendor);
    }
    const bool isChosen = !row.subcategory.empty() && row.subcategory != kNoCategory;
    const auto& key = isChosen ? row.subcategory : row.category;
    const auto [known, isNew] = categories_.try_emplace(fmt::format("{} {}", row.type, key));
    if (isNew) {
      const auto category = names_.category(key, row.type);
      known->second = category ? category->cateString() : key == kNoCategory ? "" : key;
    }
    return known->second;
  }
  std::string withOf(const ExplainedRow& row) {
    if (row.type > 20) return {};
    const auto vendor = names_.vendor(row.vendor, row.type);
    return !vendor ? row.vendor : vendor->isNoVendor() ? "" : vendor->title;
  }

  Session& session_;
  const Asked& asked_;
  bool csv_;
  RecordNames names_;
  std::map<std::string, std::string> categories_;
  Table table_;
  std::int64_t count_ = 0;
};

/// What is not in the figure, though one might think so.
std::string leftOut(Session& session, const ExplainedRows& rows, const Explained& explained) {
  std::string line;
  const auto add = [&](const Explained::Part& part, const std::string& what) {
    if (part.count > 0) {
      line += fmt::format("{}{} ({})", line.empty() ? "" : ", ", what, rows.amount(part.amount));
    }
  };
  add(explained.pending, session.count("{} pending record", "{} pending records", explained.pending.count));
  add(explained.refunds, session.count("{} refund", "{} refunds", explained.refunds.count));
  add(explained.spread,
      session.count("{} share of a spread cost", "{} shares of spread costs", explained.spread.count));
  if (explained.transfers.count > 0) {
    line += (line.empty() ? "" : ", ") + session.count("{} transfer between accounts",
                                                       "{} transfers between accounts",
                                                       explained.transfers.count);
  }
  return line.empty() ? line : session.text("Not in it: {}.", line);
}

void runExplain(Session& session, const ExplainOptions& options) {
  const Asked asked = askedFor(session, options);
  const bool isTable = !options.csv && !session.options().json;
  if (isTable) {
    session.out()
        << session.style().bold(printable(fmt::format("{} · {}", asked.query.of.title, asked.title))) << "  "
        << session.style().dim(fmt::format(
               "{}, {}", asked.currency, periodText(session, ParsedPeriod{asked.query.from, asked.query.to})))
        << "\n\n";
  }
  ExplainedRows rows(session, asked, options.csv);
  const auto explained =
      done(explain(session.root(), asked.query, [&](const ExplainedRow& row) { rows.add(row); }));
  rows.end(explained);
  if (!explained.agrees()) {
    throw refused("the {} records come to {}, but the {} says {} for {}", explained.rows.count,
                  rows.amount(explained.rows.amount), asked.isMember ? phrase("breakdown") : phrase("report"),
                  rows.amount(explained.reported.amount), explained.reported.count);
  }
  if (!isTable) return;
  if (rows.count() == 0) session.out() << session.text("No record is in it.") << '\n';
  const auto reported = rows.amount(explained.reported.amount);
  session.out() << session.style().dim(asked.isMember ? session.text("The breakdown says {}, too.", reported)
                                                      : session.text("The report says {}, too.", reported))
                << '\n';
  if (const auto line = leftOut(session, rows, explained); !line.empty()) {
    session.out() << session.style().dim(line) << '\n';
  }
}

}  // namespace

void addExplainCommand(CommandLine& line) {
  CLI::App* command = line.add(line.app(), "explain");
  auto options = std::make_shared<ExplainOptions>();
  command->add_option("PERIOD", options->period,
                      "A year 2024 or a month 2024-03 as your calendar and the book count them, a Gregorian "
                      "day 2024-03-05, or two of these joined by \"..\" (else this month)");
  options->of.addTo(*command);
  command->add_option("--type", options->type, "Which figure (else all: what is left of what came in)")
      ->type_name("KIND")
      ->check(oneOf({"all", "income", "expense", "transfers-in", "transfers-out"}));
  const auto member = [&](const char* name, std::string& value, const char* valueName, const char* what) {
    command->add_option(name, value, what)->type_name(valueName)->check(notEmpty());
  };
  member("-c,--category", options->category, "NAME",
         toTranslate("What the breakdown has for a category, such as Food/Bakery"));
  member("--vendor", options->vendor, "NAME", toTranslate("What it has for a vendor, or \"none\""));
  member("--paid-from", options->paidFrom, "NAME",
         toTranslate("What it has for the account that paid, or \"none\""));
  member("--currency", options->currency, "CODE", toTranslate("What was entered in a foreign currency"));
  command->add_flag("--pending", options->pending, "Count what is still to be paid too");
  addCsv(*command, options->csv);
  line.onRun(command, [options](Session& session) { runExplain(session, *options); });
}

}  // namespace moniva
