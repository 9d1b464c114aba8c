#pragma once

#include <vector>

#include "model/record_template.h"
#include "ui/cli/session.h"

namespace moniva {

/// Prints templates as a table, as JSON or as CSV; of none the table says how to keep one.
void printTemplates(Session& session, const std::vector<RecordTemplate>& list, bool csv = false);

}  // namespace moniva
