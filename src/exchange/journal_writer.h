#pragma once

#include "exchange/export_rows.h"

namespace moniva {

/// Writes records as plain-text accounting that hledger and ledger take with their strict checks on. After
/// every posting to an account stands its balance, reckoned here in exact decimals, so that another program
/// reckons the same or says where not. JournalChart tells which accounts there are.
///
/// Written are settled records, in the order of their dates in the user's zone, each with its `eid` as a tag.
/// What waits for its day is marked "!" where it is asked for, and stands in an account below the one it is
/// for, out of every balance. A journal that begins later begins with the balances of that day. One of a book
/// tells no balances of accounts, whose other records it has not.
///
/// The same store gives the same bytes. Rows are streamed: the memory it takes is that of the accounts.
/// Refused when the store cannot be read and when `sink` refuses; what was written until then is no journal.
Result<ExportOutcome> exportJournal(MVAppRoot& root, const ExportRequest& request, const ExportSink& sink);

}  // namespace moniva
