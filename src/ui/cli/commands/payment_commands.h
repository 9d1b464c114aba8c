#pragma once

#include <functional>
#include <string>

#include "model/payment.h"
#include "ui/cli/command_line.h"

namespace moniva {

/// Ends a command that changed the payment: it as JSON, or the sentence that `say` makes of "€10.00 from
/// Cash, on Jun 15, 2024 12:00" and what is still to be paid of the record with the row `ofRecord`.
void answerPayment(Session& session, const Payment& payment, const std::string& ofRecord,
                   const std::function<std::string(const std::string&)>& say);

/// The command below "payment" that enters one by itself.
void addPaymentAlone(CommandLine& line, CLI::App& family);

}  // namespace moniva
