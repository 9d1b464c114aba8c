#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "exchange/journal_chart.h"

namespace moniva {

/// A line of a journal's transaction.
struct JournalPosting {
  std::size_t account = 0;
  Decimal amount;
  std::size_t commodity = 0;
  /// What it comes to in all in the commodity of the other side, where that is another one; above zero.
  std::optional<std::pair<Decimal, std::size_t>> cost = {};
};

/// A transaction of a journal: what one row of the store, or the two sides of a transfer, did. Its postings
/// come to nothing.
struct JournalEntry {
  std::vector<JournalPosting> postings;
  std::string description;
  std::vector<std::pair<std::string_view, std::string>> tags;
};

/// Fills the postings alone.
void post(JournalChart& chart, const ExportRow& row, const ExportRow* otherSide, JournalEntry& entry);
/// Fills the description and what is to be found again: "eid", of a transfer's side B "eidB"; "foreign" with
/// what was paid in a foreign currency, and "fee" with what a payment contains of it.
void describe(JournalChart& chart, const ExportRow& row, const ExportRow* otherSide, JournalEntry& entry);
/// The tags there may be.
inline constexpr std::string_view kJournalTags[] = {"eid", "eidB", "foreign", "fee"};

}  // namespace moniva
