#include "ui/cli/commands/entry_fields.h"

#include <algorithm>

#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/reminder_fields.h"
#include "ui/cli/commands/show_record.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/typed_text.h"

namespace moniva {

void addEntryFields(CLI::App& command, EntryFields& fields) {
  command.add_flag("--income", fields.income, "Income instead of an expense");
  command.add_option("--vendor,--payee,--payer", fields.vendor, "Who was paid, or who paid; added when new")
      ->type_name("NAME");
  command.add_option("-b,--book", fields.book, "The book (else the current one)")->type_name("NAME");
  command
      .add_option("-d,--date", fields.date,
                  "When, such as 2024-02-29, \"2024-02-29 14:30\" or yesterday (else now)")
      ->type_name("DATE");
  command.add_option("-n,--note", fields.note, "A note")->type_name("TEXT");
  command.add_flag("--create", fields.create, "Make the category or subcategory when it is new");
  addRoundOption(command, fields.amounts);
  addRemindOption(command, fields.remind);
}

void addCategoryFields(CLI::App& command, EntryFields& fields) {
  command.add_option("-c,--category", fields.category, "The category")->type_name("NAME");
  command.add_option("-s,--subcategory", fields.subcategory, "The subcategory")->type_name("NAME");
}

void addAccountFields(CLI::App& command, EntryFields& fields, bool several) {
  auto* one = command.add_option("-a,--account", fields.account, "The account it was paid from, or into")
                  ->type_name("NAME");
  if (!several) return;
  command.add_option("--pay", fields.payments, "An account and what it paid, such as Cash 10")
      ->type_name("ACCOUNT AMOUNT")
      ->allow_extra_args(false)
      ->excludes(one);
}

CLI::Option* addDryRun(CLI::App& command, bool& dryRun) {
  return command.add_flag("--dry-run", dryRun, "Show what it would be, and write nothing");
}

EntryNames namesTyped(Session& session, const EntryFields& fields) {
  EntryNames names{bookNamed(session, fields.book, Meant::open), std::nullopt, {}, {}};
  const auto open = [&](const std::string& title) {
    auto account = accountNamed(session, title, Meant::open);
    done(checkTracked(account, fields.income ? kind::kIncome : kind::kExpense));
    return account;
  };
  if (!fields.account.empty()) {
    names.account = open(fields.account);
    names.currency = names.account->currency;
  }
  bool common = true;
  for (const auto& [title, amount] : fields.payments) {
    names.payers.push_back(open(title));
    common = common && names.payers.back().currency == names.payers.front().currency;
  }
  if (!names.payers.empty() && common) names.currency = names.payers.front().currency;
  if (names.currency.empty()) names.currency = names.book.currency;
  return names;
}

EntryNames fillEntry(Session& session, const EntryFields& fields, Spend& spend) {
  auto names = namesTyped(session, fields);
  spend.type = fields.income ? kind::kIncome : kind::kExpense;
  spend.book = names.book.pk;
  if (names.account) spend.account = names.account->pk;
  const auto category =
      categoryChosen(session, fields.category, fields.subcategory, spend.type, names.book, fields.create);
  if (category) {
    spend.category = category->category;
    spend.subcategory = category->subcategory;
  }
  spend.vendor = vendorChosen(session, fields.vendor, spend.type);
  return names;
}

std::vector<Payment> paymentsTyped(Session& session, const EntryFields& fields, const EntryNames& names,
                                   const Spend& spend, double total) {
  std::vector<Payment> payments;
  const auto add = [&](const MonivaAccount& account, double amount) {
    Payment payment(session.root());
    payment.type = spend.type;
    payment.amount = amount;
    payment.account = account.pk;
    payment.datetime = spend.datetime;
    payment.timeZone = spend.timeZone;
    payment.paid = spend.paid;
    payments.push_back(std::move(payment));
  };
  if (names.account) add(*names.account, total);
  for (std::size_t i = 0; i < names.payers.size(); ++i) {
    add(names.payers[i], amountTyped(session, fields.payments[i].second, names.currency, fields.amounts));
  }
  return payments;
}

RecordWhole wholeTyped(Session& session, const std::string& text, std::string* eid) {
  const std::string found = recordTyped(session, text);
  if (eid != nullptr) *eid = found;
  auto whole = wholeRecord(session, found);
  if (whole.head.isDeleted != 0) {
    throw refused("the record is deleted; bring it back with: moniva restore {}", shortEid(found));
  }
  return whole;
}

Spend spendOf(Session& session, const std::string& eid) {
  auto spend = Spend::spendFromEID(session.root(), eid);
  if (!spend) throw refused("there is no record '{}'", eid);
  return std::move(*spend);
}

std::string currencyOf(Session& session, const RecordWhole& whole) {
  RecordNames names(session.root());
  auto currency = whole.currency(names);
  return currency.empty() ? session.defaultCurrency() : currency;
}

std::string settledSoonText(Session& session, const RecordWhole& whole) {
  const auto isDue = [&](const TransactionItem& row) {
    return !row.paid && !row.account.empty() && isPaidAt(row.datetime, session.now());
  };
  if (std::ranges::none_of(whole.group.items, isDue) && std::ranges::none_of(whole.group.payments, isDue)) {
    return {};
  }
  return " " + session.text(
                   "As its day has come, it will be settled again on the next day; take its account off to "
                   "keep it open.");
}

void enterRecord(Session& session, const EntryFields& fields, const std::function<std::string()>& work,
                 const std::function<std::string(const RecordTexts&)>& say) {
  std::string eid;
  if (!fields.dryRun) {
    changeStore(session, [&] { eid = work(); });
    answerChanged(session, eid, say);
    if (fields.remind) remindOfNew(session, eid);
    return;
  }
  tryStore(
      session, [&] { eid = work(); },
      [&] {
        showRecord(session, wholeRecord(session, eid), "", RecordView::plan);
        session.say(session.text("Nothing was written."));
      });
}

}  // namespace moniva
