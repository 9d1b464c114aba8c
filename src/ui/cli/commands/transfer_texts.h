#pragma once

#include <string>

#include "model/transfer.h"
#include "ui/cli/session.h"

namespace moniva {

/// How answers and lists name a transfer's accounts and amounts.
struct TransferTexts {
  TransferTexts(Session& session, const Transfer& transfer);

  /// " With the fee of €2.00 €62.00 left Checking."; "" without a fee.
  std::string ofFee() const;

  std::string from;     ///< title of the account the money leaves
  std::string to;       ///< and of the one it arrives in
  std::string amount;   ///< what was moved; across currencies "€60.00 -> $65.10"
  std::string left;     ///< what left, with the fee
  std::string arrived;  ///< what arrived
  std::string fee;      ///< "" for none

 private:
  Session& session_;
};

/// The transfer one of whose records is typed; ends the command for another record and for half a transfer.
Transfer transferTyped(Session& session, const std::string& text);
/// Prints what is known of the transfer.
void showTransfer(Session& session, const Transfer& transfer);

}  // namespace moniva
