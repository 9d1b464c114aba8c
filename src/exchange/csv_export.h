#pragma once

#include <span>
#include <string>

#include "exchange/export_rows.h"

namespace moniva {

/// How a table is written.
struct CsvForm {
  char separator = ',';
  /// Whether it begins with the mark by which spreadsheet programs know UTF-8.
  bool hasMark = false;
};

/// Writes expenses, income, transfers and debts as a table (RFC 4180), its columns named by the fields of
/// records, in the order of their dates. Books, accounts, categories and vendors go by their titles.
///
/// `importFile` reads the table again as far as it takes such records: expenses and income, and transfers
/// without a charge, come back to the same balances and months. An item of a compound record therefore comes
/// with the accounts that paid it, in several lines where there are several; what payments came to beyond
/// the items of their day has lines of its own, of the type "payment" or "refund". Those, debts, and halves
/// of transfers are types that an import passes over.
///
/// Left out, and counted: what waits for its day unless it is asked for, corrections of balances, and what
/// moves no money. Refused as `exportJournal` is.
Result<ExportOutcome> exportCsv(MVAppRoot& root, const ExportRequest& request, const CsvForm& form,
                                const ExportSink& sink);

/// Whether a table with these headings that an import has no use for is one that was exported so.
bool isExportedTable(std::span<const std::string> headings);

}  // namespace moniva
