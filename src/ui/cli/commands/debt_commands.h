#pragma once

#include <boost/json/array.hpp>
#include <string>

#include "reports/debt_history.h"
#include "ui/cli/command_line.h"

/// What the commands for debts have in common.
namespace moniva {

/// The debt whose `eid` was typed, with what was repaid of it; a deleted one where that is asked for. Ends
/// the command for none.
enum class DebtState { inUse, deleted, any };
Debt debtTyped(Session& session, const std::string& eid, DebtState state = DebtState::inUse);
/// A person with debts in use, by name. Ends the command for one without, with the nearest name there is.
std::string debtorNamed(Session& session, const std::string& name);

/// "€50.00 borrowed from Anna".
std::string debtText(const Session& session, const Debt& debt);
/// The title of the account of that key; for none the text that says so.
std::string accountText(Session& session, const std::string& account);
/// "Borrowed €50.00 from Anna, into Cash, on Jun 15, 2024 12:00."
std::string debtSentence(Session& session, const Debt& debt);
/// The debt with its repayments.
boost::json::object jsonOf(Session& session, const Debt& debt);
/// Debts by person and direction, each with its sums.
boost::json::array jsonOf(Session& session, const std::vector<DebtReport>& reports);

/// Prints what is known of the debt, with its repayments.
void showDebt(Session& session, const Debt& debt);

/// The commands that show debts and change nothing.
void addDebtViewCommands(CommandLine& line, CLI::App& debt);
/// The commands that change, delete and restore what is there.
void addDebtEditCommands(CommandLine& line, CLI::App& debt);

}  // namespace moniva
