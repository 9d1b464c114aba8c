#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

struct TransferAddOptions {
  std::string amount;
  std::string from;
  std::string to;
  std::string toAmount;
  std::string date;
  std::string note;
  AmountOptions amounts;
};

void addTransfer(Session& session, const TransferAddOptions& options) {
  MVAppRoot& root = session.root();
  Transfer transfer(root);
  transfer.datetime = momentTyped(session, options.date);
  transfer.note = asTyped(options.note, "the note");
  transfer.paid = isPaidAt(transfer.datetime, session.now());
  MonivaAccount from(root);
  MonivaAccount to(root);
  changeStore(session, [&] {
    from = accountNamed(session, options.from, Meant::open);
    to = accountNamed(session, options.to, Meant::open);
    done(checkTracked(from, kind::kTransferOut));
    done(checkTracked(to, kind::kTransferIn));
    transfer.acrossCurrencies = from.currency != to.currency;
    if (transfer.acrossCurrencies && options.toAmount.empty()) {
      throw refused("'{}' is kept in {} and '{}' in {}; say with --to-amount what arrives",
                    printable(from.title), from.currency, printable(to.title), to.currency);
    }
    transfer.amountA = amountTyped(session, options.amount, from.currency, options.amounts);
    transfer.amountB = options.toAmount.empty()
                           ? transfer.amountA
                           : amountTyped(session, options.toAmount, to.currency, options.amounts);
    if (!transfer.acrossCurrencies && transfer.amountA != transfer.amountB) {
      throw refused("'{}' and '{}' are both kept in {}, so what leaves one arrives in the other",
                    printable(from.title), printable(to.title), from.currency);
    }
    transfer.accountA = from.pk;
    transfer.accountB = to.pk;
    done(recordEntry(root, transfer));
  });

  if (session.options().json) return session.printJson(jsonOf(session, transfer));
  std::string amount = session.amounts().format(transfer.amountA, from.currency);
  if (transfer.acrossCurrencies) amount += " -> " + session.amounts().format(transfer.amountB, to.currency);
  session.answer(session.text("Moved {} from {} to {}, on {}.", amount, printable(from.title),
                              printable(to.title), dayOf(session, transfer.datetime, transfer.paid)));
}

}  // namespace

void addTransferCommands(CommandLine& line) {
  CLI::App* transfer = line.add(line.app(), "transfer");
  transfer->require_subcommand(1);
  CLI::App* add = line.add(*transfer, "add");
  auto options = std::make_shared<TransferAddOptions>();
  add->add_option("AMOUNT", options->amount,
                  "What leaves the first account, such as 12.50 (the decimal mark is '.')")
      ->required();
  add->add_option("FROM", options->from, "Name of the account the money leaves")->required();
  add->add_option("TO", options->to, "Name of the account it arrives in")->required();
  add->add_option("--to-amount", options->toAmount,
                  "What arrives, when the accounts keep different currencies")
      ->type_name("AMOUNT");
  add->add_option("-d,--date", options->date, "When (else now)")->type_name("DATE");
  add->add_option("-n,--note", options->note, "A note")->type_name("TEXT");
  addRoundOption(*add, options->amounts);
  line.onRun(add, [options](Session& session) { addTransfer(session, *options); });
}

}  // namespace moniva
