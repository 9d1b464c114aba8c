#pragma once

#include <boost/json/array.hpp>

#include "ui/cli/command_line.h"

namespace moniva {

/// Adds --csv to a command that answers with rows; the flag has to outlive the command.
void addCsv(CLI::App& command, bool& csv);

/// Prints rows as comma-separated values (RFC 4180, UTF-8, lines ended by CR LF) under the names of their
/// fields, as --json has them: an object in a field gives a column for each of its own, "category.title";
/// lists are left out, null is empty. Fields that only some rows have are empty in the others.
void printCsv(Session& session, const boost::json::array& rows);

}  // namespace moniva
