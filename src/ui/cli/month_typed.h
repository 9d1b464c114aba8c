#pragma once

#include <optional>
#include <string>

#include "model/moniva_account.h"
#include "ui/cli/command_error.h"
#include "ui/cli/session.h"

/// Months as people type them: by the label that bills and budgets are called after.
namespace moniva {

struct MonthTyped {
  int year = 0;
  int month = 0;
};

/// The label "2026-02" or "2026/2", without asking when such a month begins anywhere. Nothing for a text of
/// another form; ends the command for a month or a year that no calendar has.
std::optional<MonthTyped> monthLabelTyped(const Session& session, const std::string& text);
/// The same; ends the command for other texts too.
MonthTyped monthTyped(Session& session, const std::string& text);
/// A label, or another text for the days of one month of the book or account, "2024-06-01..2024-06-30". Ends
/// the command for other texts, and for a month in which no record can be.
MonthTyped monthTypedOf(Session& session, const MonivaAccount& of, const std::string& text);

/// What is told of a month to come; `name` is what it is called, `begin` its first day.
CommandError monthAhead(Session& session, const MonivaAccount& of, const std::string& name, Date begin);

}  // namespace moniva
