#include "ui/cli/commands/account_rows.h"

#include <fmt/ranges.h>

#include <boost/json.hpp>

#include "model/account_balance.h"
#include "model/account_groups.h"
#include "model/transaction_type.h"
#include "storage/writes.h"
#include "ui/cli/command_error.h"
#include "ui/cli/records.h"

namespace moniva {

const std::vector<Word<std::string>>& accountTypeWords() {
  static const std::vector<Word<std::string>> words = {{"saving", "_SavingAccount"},
                                                       {"debt", "_DebtAccount"},
                                                       {"prepaid", "_PrepaidAccount"},
                                                       {"discount", "_DiscountAccount"}};
  return words;
}

const std::vector<Word<int>>& trackingWords(int aKind) {
  static const std::vector<Word<int>> ofAccounts = {
      {"everything", 1050}, {"prepaid", 2312}, {"expenses", 12}};
  static const std::vector<Word<int>> ofBooks = {{"both", 1112}, {"income", 11}, {"expenses", 12}};
  return aKind == kBookKind ? ofBooks : ofAccounts;
}

std::string typeText(const Session& session, const MonivaAccount& row) {
  if (row.isGroup) return session.text("group");
  if (row.isSavingAccount()) return session.text("saving");
  if (row.isDebtAccount()) return session.text("debt");
  if (row.isPrepaidAccount()) return session.text("prepaid");
  if (row.isDiscountAccount()) return session.text("discount");
  return row.aType;
}

std::string trackingText(const Session& session, const MonivaAccount& row) {
  switch (row.trackingType) {
    case 11:
      return session.text("income");
    case 12:
      return session.text("expenses");
    case 2312:
      return session.text("prepaid");
    default:
      return row.isBook() ? session.text("income and expenses") : session.text("everything");
  }
}

std::string dashboardText(const Session& session, const MonivaAccount& book) {
  const auto* kept = book.expandOptionDict.if_contains("overviewUI");
  const std::string style = kept != nullptr && kept->is_string() ? std::string(kept->get_string()) : "";
  const auto& styles = MonivaAccount::overviewStyles();
  if (style.empty() || style == styles[0]) return session.text("standard");
  if (style == styles[1]) return session.text("modern");
  if (style == styles[2]) return session.text("modern2");
  return style == styles[3] ? session.text("tablet") : style;
}

Cell titleCell(const Session& session, const MonivaAccount& row) {
  if (row.enabled) return {row.title};
  return {session.text("{} (closed)", row.title), ink::dim};
}

Cell amountCell(const Session& session, double amount, const std::string& currency) {
  return {session.amounts().formatPlain(amount, currency), amount < 0 ? ink::red : ink::plain};
}

std::string recordsText(const Session& session, std::int64_t count, std::int64_t series) {
  const auto records = session.count("{} record", "{} records", count);
  if (series == 0) return records;
  const auto seeds = session.count("{} series", "{} series", series);
  return count == 0 ? seeds : session.text("{} and {}", records, seeds);
}

std::string titlesText(const std::vector<MonivaAccount>& rows) {
  std::vector<std::string> titles;
  for (const auto& row : rows) titles.push_back(row.title);
  return fmt::format("{}", fmt::join(titles, ", "));
}

void requireFreeTitle(Session& session, int aKind, const std::string& title) {
  const auto existing = aKind == kBookKind ? MonivaAccount::getBookWithTitle(session.root(), title)
                                           : MonivaAccount::getAccountWithTitle(session.root(), title);
  if (!existing || existing->isDeleted != 0) return;
  if (existing->isGroup) throw refused("there is a group '{}' already", title);
  throw existing->isBook() ? refused("there is a book '{}' already", title)
                           : refused("there is an account '{}' already", title);
}

std::string ownRecordsText(const Session& session, const MonivaAccount& row) {
  const auto count = done(row.recordCount());
  return count == 0 ? session.text("no records") : session.count("its {} record", "its {} records", count);
}

std::string changeCurrency(Session& session, MonivaAccount& row, const std::string& code) {
  const auto groups = row.isGroup ? std::vector<MonivaAccount>() : done(getFatherGroup(row));
  const auto added = done(row.updateCurrency(code));
  std::string also;
  if (!groups.empty()) also += " " + session.text("It left its groups: {}.", titlesText(groups));
  if (added) also += " " + session.text("The account '{}' was added: no other is in {}.", added->title, code);
  return also;
}

void Facts::add(const std::string& name, const std::string& value) {
  table_.addRow({Cell(name, ink::dim), value});
}

void Facts::addState(const MonivaAccount& row) {
  if (!row.note.empty()) add(session_.text("Note"), row.note);
  if (!row.enabled) add(session_.text("State"), session_.text("closed"));
  if (const auto groups = done(getFatherGroup(row)); !groups.empty()) {
    add(session_.text("Groups"), titlesText(groups));
  }
}

std::string Facts::amount(const MonivaAccount& row, double value) const {
  return session_.amounts().format(value, row.currency);
}

void Facts::addTotals(const MonivaAccount& row) {
  add(session_.text("Income"), amount(row, row.totalIncome));
  add(session_.text("Expense"), amount(row, row.totalExpense));
  if (row.isAccount()) {
    add(session_.text("Transfers in"), amount(row, row.totalTransferIn));
    add(session_.text("Transfers out"), amount(row, row.totalTransferOut));
  }
  if (row.adjustBalance != 0) add(session_.text("Corrections"), amount(row, row.adjustBalance));
  add(session_.text("Balance"), amount(row, row.totalBalance));
}

void Facts::addDates(const MonivaAccount& row) {
  if (const auto& first = row.dateOfFirstTransaction)
    add(session_.text("First record"), dateText(session_, *first));
  if (const auto& last = row.dateOfLastTransaction)
    add(session_.text("Last record"), dateText(session_, *last));
}

void Facts::print() {
  session_.out() << table_.render(session_.style(), session_.width());
}

boost::json::object jsonWithGroups(Session& session, const MonivaAccount& row) {
  auto object = jsonWithTotals(session, row);
  boost::json::array groups;
  for (const auto& group : done(getFatherGroup(row)))
    groups.push_back({{"pk", group.pk}, {"title", group.title}});
  object["groups"] = std::move(groups);
  return object;
}

boost::json::object jsonNow(Session& session, MonivaAccount& row) {
  row.getInfo();
  done(getAllStatistics(row));
  return jsonOf(session, row);
}

void listDeleted(Session& session, int aKind) {
  auto rows = MonivaAccount::list(session.root(), aKind, MonivaAccount::Rows::deleted);
  if (session.options().json) {
    boost::json::array list;
    for (auto& row : rows) list.push_back(jsonNow(session, row));
    return session.printJson(list);
  }
  if (rows.empty()) {
    return session.say(aKind == kBookKind ? session.text("No book is deleted.")
                                          : session.text("No account is deleted."));
  }
  Table table({{.title = aKind == kBookKind ? session.text("Deleted book") : session.text("Deleted account")},
               {.title = session.text("Currency")},
               {.title = session.text("Records"), .align = Align::right},
               {.title = ""}});
  for (const auto& row : rows) {
    table.addRow({row.title, row.currency, fmt::format("{}", done(row.recordCount())),
                  Cell(row.isGroup ? session.text("group") : "", ink::dim)});
  }
  session.out() << table.render(session.style(), session.width());
}

bool RowFamily::ofBooks() const {
  return aKind == kBookKind;
}

void changeRow(Session& session, int aKind, const std::string& name,
               const std::function<std::string(MonivaAccount&)>& work) {
  // A variable that was not set must not lead to the current book.
  if (name.empty()) throw notUnderstood("the name is empty");
  MonivaAccount row(session.root());
  const std::string sentence = done(atomically(session.root(), [&](Connection&) -> Result<std::string> {
    row = aKind == kBookKind ? bookNamed(session, name) : accountNamed(session, name);
    return work(row);
  }));
  session.root().markRecentEditDate();
  if (!session.options().json) return session.answer(sentence);
  session.printJson(jsonNow(session, row));
}

CLI::Option* addSetting(
    const RowFamily& family, const char* command, const char* valueName, const char* valueHelp,
    const std::function<std::string(Session&, MonivaAccount&, const std::string&)>& work) {
  struct Typed {
    std::string name;
    std::string value;
  };
  auto words = std::make_shared<Typed>();
  CLI::App* app = family.line.add(family.app, command);
  app->add_option("NAME", words->name, family.nameHelp())->required();
  CLI::Option* value = app->add_option(valueName, words->value, valueHelp)->required();
  family.line.onRun(app, [words, work, aKind = family.aKind](Session& session) {
    changeRow(session, aKind, words->name,
              [&](MonivaAccount& row) { return work(session, row, words->value); });
  });
  return value;
}

}  // namespace moniva
