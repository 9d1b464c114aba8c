#include <boost/json.hpp>

#include "model/mv_category.h"
#include "model/vendor_query.h"
#include "ui/cli/categories.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/entry_fields.h"
#include "ui/cli/commands/spend_commands.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/records.h"
#include "ui/cli/table.h"
#include "ui/cli/text_width.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

struct ListOptions {
  std::string book;
  std::string account;
  std::string category;
  std::string vendor;
  std::string from;
  std::string to;
  std::int64_t limit = 20;
  bool income = false;
  bool expense = false;
  bool pending = false;
  bool deleted = false;
};

/// The key of a vendor that is there; of a payee unless only a payer has the name or income is asked for.
std::string vendorToList(Session& session, const std::string& typedName, bool income) {
  const std::string name = wellFormed(typedName, "the vendor");
  const int types[] = {income ? Vendor::kPayer : Vendor::kPayee, income ? Vendor::kPayee : Vendor::kPayer};
  for (const int type : types) {
    const auto vendor = Vendor::withTitle(session.root(), name, type);
    if (vendor && vendor->deleted == 0) return vendor->pk;
  }
  std::vector<std::string> titles;
  for (const int type : types) {
    for (const auto& vendor : VendorQuery(session.root(), type).getVendorListByName()) {
      if (!vendor.isNoVendor()) titles.push_back(vendor.title);
    }
  }
  if (const auto meant = didYouMean(name, titles)) {
    throw refused("there is no vendor '{}'; did you mean '{}'?", printable(name), printable(*meant));
  }
  throw refused("there is no vendor '{}'; see: moniva vendor list", printable(name));
}

RecordQuery queryTyped(Session& session, const ListOptions& options) {
  RecordQuery query;
  if (!options.book.empty()) query.book = bookNamed(session, options.book).pk;
  if (!options.account.empty()) query.account = accountNamed(session, options.account).pk;
  if (!options.category.empty()) {
    query.category =
        categoryTyped(session, options.category, options.income ? kind::kIncome : kind::kExpense).pk;
    query.type = options.income ? kind::kIncome : kind::kExpense;
  }
  if (!options.vendor.empty()) query.vendor = vendorToList(session, options.vendor, options.income);
  if (!options.from.empty()) query.from = boundTyped(session, options.from, false);
  if (!options.to.empty()) query.to = boundTyped(session, options.to, true);
  if (query.from && query.to && *query.to < *query.from) {
    throw notUnderstood("the list ends before it begins");
  }
  if (options.income) query.type = kind::kIncome;
  if (options.expense) query.type = kind::kExpense;
  query.pending = options.pending;
  query.deleted = options.deleted;
  return query;
}

/// Prints the records one a line; says so where there are more than asked for.
void printRecords(Session& session, RecordQuery query, std::int64_t limit, const std::string& none) {
  // One more tells whether there is more.
  query.limit = limit > 0 ? limit + 1 : -1;
  RecordNames names(session.root());
  boost::json::array list;
  Table table({{.title = session.text("Record")},
               {.title = session.text("Date")},
               {.title = session.text("Category")},
               {.title = session.text("Vendor or note"), .maxWidth = 60},
               {.title = session.text("Amount"), .align = Align::right},
               {.title = session.text("Account")},
               {.title = ""}});
  std::int64_t shown = 0;
  bool more = false;
  done(listRecords(session.root(), query, [&](const RecordWhole& whole) {
    if (limit > 0 && shown == limit) {
      more = true;
      return;
    }
    ++shown;
    if (session.options().json) return void(list.push_back(jsonOf(session, names, whole)));
    const RecordTexts texts(session, names, whole);
    const bool isIncome = whole.type() == kind::kIncome;
    const auto amount = isIncome ? session.amounts().formatSigned(whole.total(), whole.currency(names))
                                 : texts.money(whole.total());
    table.addRow({Cell(shortEid(whole.head.eid), ink::dim), shortDate(session, whole.head.datetime),
                  texts.categories(), texts.vendorOrNote(), Cell(amount, isIncome ? ink::green : ink::plain),
                  texts.accounts(), Cell(texts.marks(), ink::dim)});
  }));
  if (session.options().json) return session.printJson(list);
  if (table.empty()) return session.say(none);
  session.out() << table.render(session.style(), session.width());
  if (more) session.say(session.text("There are more; --limit 0 lists all of them."));
}

void addLimit(CLI::App& command, std::int64_t& limit) {
  command.add_option("--limit", limit, "How many at most; 0 for all (else 20)")
      ->type_name("N")
      ->check(CLI::Validator(
          [](const std::string& text) {
            const bool isCount = !text.empty() && text.size() < 10 &&
                                 text.find_first_not_of("0123456789") == std::string::npos;
            return isCount ? std::string() : "it is a whole number; 0 lists all";
          },
          ""));
}

}  // namespace

void addSpendList(CommandLine& line, CLI::App& spend) {
  CLI::App* list = line.add(spend, "list");
  auto options = std::make_shared<ListOptions>();
  list->add_option("-b,--book", options->book, "Of that book only")->type_name("NAME");
  list->add_option("-a,--account", options->account, "Paid from or into that account")->type_name("NAME");
  list->add_option("-c,--category", options->category, "Of that category, such as Food or Food/Bakery")
      ->type_name("NAME");
  list->add_option("--vendor,--payee,--payer", options->vendor, "Of that vendor")->type_name("NAME");
  list->add_option("--from", options->from, "From that day or moment on")->type_name("DATE");
  list->add_option("--to", options->to, "Up to that day, itself included, or moment")->type_name("DATE");
  addLimit(*list, options->limit);
  auto* income = list->add_flag("--income", options->income, "Income only");
  list->add_flag("--expense", options->expense, "Expenses only")->excludes(income);
  list->add_flag("--pending", options->pending, "Only those of which something is still to be paid");
  list->add_flag("--deleted", options->deleted, "Those that were deleted");
  line.onRun(list, [options](Session& session) {
    const auto query = queryTyped(session, *options);
    printRecords(session, query, options->limit,
                 options->deleted ? session.text("No such expense or income was deleted.")
                                  : session.text("There is no such expense or income."));
  });
}

void addCompoundList(CommandLine& line, CLI::App& family, int advancedType) {
  CLI::App* list = line.add(family, "list");
  auto options = std::make_shared<ListOptions>();
  list->add_option("-b,--book", options->book, "Of that book only")->type_name("NAME");
  addLimit(*list, options->limit);
  list->add_flag("--pending", options->pending, "Only those of which something is still to be paid");
  line.onRun(list, [options, advancedType](Session& session) {
    auto query = queryTyped(session, *options);
    query.advancedType = advancedType;
    printRecords(session, query, options->limit,
                 advancedType == advanced::kCart ? session.text("There is no cart.")
                 : advancedType == advanced::kInstallment
                     ? session.text("There is no instalment plan.")
                     : session.text("There is no cost spread over months."));
  });
}

}  // namespace moniva
