#include "ui/cli/commands/transfer_texts.h"

#include "model/entry_checks.h"
#include "ui/cli/command_error.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/text_width.h"

namespace moniva {

TransferTexts::TransferTexts(Session& session, const Transfer& transfer) : session_(session) {
  MVAppRoot& root = session.root();
  const auto a = MonivaAccount::getAccountWithPK(root, transfer.accountA);
  const auto b = MonivaAccount::getAccountWithPK(root, transfer.accountB);
  const std::string currencyA = a ? a->currency : session.defaultCurrency();
  const std::string currencyB = b ? b->currency : session.defaultCurrency();
  const auto& amounts = session.amounts();
  from = printable(a ? a->title : transfer.accountA);
  to = printable(b ? b->title : transfer.accountB);
  left = amounts.format(transfer.amountA, currencyA);
  arrived = amounts.format(transfer.amountB, currencyB);
  amount = amounts.format(difference(transfer.amountA, transfer.serviceCharge), currencyA);
  if (transfer.acrossCurrencies) amount += " -> " + arrived;
  if (transfer.serviceCharge > 0) fee = amounts.format(transfer.serviceCharge, currencyA);
}

std::string TransferTexts::ofFee() const {
  if (fee.empty()) return {};
  return " " + session_.text("With the fee of {}, {} left {} and {} arrived.", fee, left, from, arrived);
}

Transfer transferTyped(Session& session, const std::string& text) {
  const std::string eid = recordTyped(session, text);
  if (auto transfer = Transfer::transferFromEID(session.root(), eid)) return std::move(*transfer);
  Connection* db = session.root().db().getDatabase();
  Run run = db->query("select type from transactions where eid = ?", {eid});
  const auto type = run.next() ? run.integer(0) : 0;
  if (type == kind::kTransferIn || type == kind::kTransferOut) {
    throw refused("of that transfer only one side is there; see: moniva doctor");
  }
  throw refused("the record '{}' is no transfer", printable(text));
}

}  // namespace moniva
