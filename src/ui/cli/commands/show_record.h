#pragma once

#include <string>

#include "ui/cli/record_texts.h"

namespace moniva {

/// How much of a record is shown: what was entered, or a plan that is not written yet, whose rows have no
/// identifiers to type.
enum class RecordView { whole, plan };

/// Prints an expense or income as a whole: what is known of it, and its items, instalments, payments and
/// refunds as tables. The row of `eid` is marked. With --json the record as it is.
void showRecord(Session& session, const RecordWhole& whole, const std::string& eid,
                RecordView view = RecordView::whole);
/// Prints the record's payments, or its refunds.
void showPayments(Session& session, const RecordWhole& whole);
void showRefunds(Session& session, const RecordWhole& whole);

}  // namespace moniva
