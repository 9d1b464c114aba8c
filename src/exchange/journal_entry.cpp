#include "exchange/journal_entry.h"

#include <algorithm>

#include "currency/currency_codes.h"
#include "model/transaction_type.h"

namespace moniva {
namespace {

using Special = JournalChart::Special;
using Place = JournalChart::Place;

Decimal magnitude(const Decimal& amount) {
  return amount < Decimal() ? -amount : amount;
}

/// Adds what comes to `to` and leaves `from`: the same figure, each in its own commodity.
void move(JournalChart& chart, const Decimal& amount, const Place& from, const Place& to,
          JournalEntry& entry) {
  const std::size_t given = from.commodity ? *from.commodity : to.commodity.value_or(chart.ownCommodity());
  const std::size_t taken = to.commodity.value_or(given);
  entry.postings.push_back({from.account, -amount, given});
  entry.postings.push_back({to.account, amount, taken});
  if (given != taken && !amount.isZero()) entry.postings.back().cost = {magnitude(amount), given};
}

void postSpend(JournalChart& chart, const ExportRow& row, const Decimal& in, JournalEntry& entry) {
  const bool isPart = !row.group.empty() && !row.isFurther();
  const Place filed =
      isPart && row.isPayment && row.book.empty() ? chart.ofGroup(row) : chart.ofCategory(row);
  const Place paid = !row.account.empty()       ? chart.ofAccount(row)
                     : row.isFurther()          ? chart.special(Special::untracked)
                     : isPart && !row.isPayment ? chart.ofGroup(row)
                                                : chart.special(Special::noAccount);
  move(chart, in, filed, paid, entry);
}

/// Both sides of a transfer, with what it costs; false where they have to be told apart.
bool postTransfer(JournalChart& chart, const ExportRow& a, const ExportRow& b, JournalEntry& entry) {
  const Place from = chart.ofAccount(a);
  const Place to = chart.ofAccount(b);
  const std::size_t given = from.commodity ? *from.commodity : to.commodity.value_or(chart.ownCommodity());
  const std::size_t taken = to.commodity.value_or(given);
  // Across currencies side B keeps what its money was in the other one, the charge taken off.
  const Decimal arrived = given == taken ? b.amount : Decimal::of(b.amount2).value_or(Decimal());
  const Decimal moved = given != taken && arrived.isZero() ? a.amount : arrived;
  if (given != taken && (b.amount.isZero() || moved <= Decimal())) return false;
  entry.postings.push_back({from.account, -a.amount, given});
  if (moved != a.amount) {
    entry.postings.push_back({chart.special(Special::charges).account, a.amount - moved, given});
  }
  entry.postings.push_back({to.account, b.amount, taken});
  if (given != taken) entry.postings.back().cost = {moved, given};
  return true;
}

Place otherSideOf(JournalChart& chart, const ExportRow& row) {
  switch (row.type) {
    case kind::kTransferIn:
    case kind::kTransferOut:
      return chart.special(Special::transfers);
    case kind::kBorrowed:
    case kind::kRepaidByUs:
      return chart.ofPerson(false, row.vendor);
    case kind::kLent:
    case kind::kRepaidToUs:
      return chart.ofPerson(true, row.vendor);
    default:
      return chart.special(Special::other);
  }
}

std::string_view fallbackDescription(const ExportRow& row) {
  switch (row.type) {
    case kind::kTransferIn:
    case kind::kTransferOut:
      return "Transfer";
    case kind::kBorrowed:
      return "Borrowed";
    case kind::kLent:
      return "Lent";
    case kind::kRepaidByUs:
    case kind::kRepaidToUs:
      return "Repayment";
    case kind::kBalanceCorrection:
      return "Correction";
    default:
      return !row.isPayment ? "Record" : row.amount < Decimal() ? "Refund" : "Payment";
  }
}

}  // namespace

void post(JournalChart& chart, const ExportRow& row, const ExportRow* otherSide, JournalEntry& entry) {
  entry.postings.clear();
  const Decimal in = directionOf(row.type) < 0 ? -row.amount : row.amount;
  if (row.isSpend()) return postSpend(chart, row, in, entry);
  if (row.type == kind::kBalanceCorrection) {
    const Place corrections = chart.special(Special::corrections);
    if (!row.book.empty()) move(chart, in, corrections, chart.ofBook(row.book), entry);
    if (!row.account.empty() || row.book.empty()) move(chart, in, corrections, chart.ofAccount(row), entry);
    return;
  }
  if (otherSide != nullptr) {
    if (postTransfer(chart, row, *otherSide, entry)) return;
    move(chart, -row.amount, chart.special(Special::transfers), chart.ofAccount(row), entry);
    return move(chart, otherSide->amount, chart.special(Special::transfers), chart.ofAccount(*otherSide),
                entry);
  }
  Place own = chart.ofAccount(row);
  if (row.account.empty() && row.type < kind::kBorrowed) own = chart.special(Special::outside);
  move(chart, in, otherSideOf(chart, row), own, entry);
}

void describe(JournalChart& chart, const ExportRow& row, const ExportRow* otherSide, JournalEntry& entry) {
  std::string who = row.isSpend() ? chart.vendor(row)
                    : row.type == kind::kTransferIn || row.type == kind::kTransferOut
                        ? std::string()
                        : journalText(row.vendor);
  // The one bar there is parts who it was from what is noted.
  std::ranges::replace(who, '|', '/');
  std::string note = journalText(row.note);
  std::ranges::replace(note, '|', '/');
  if (who.empty() && note.empty() && row.isSpend()) note = chart.categoryTitle(row);
  if (who.empty() && note.empty()) note = fallbackDescription(row);
  entry.description = who.empty() || note.empty() ? who + note : fmt::format("{} | {}", who, note);

  entry.tags.clear();
  entry.tags.emplace_back("eid", journalText(row.eid));
  if (otherSide != nullptr) entry.tags.emplace_back("eidB", journalText(otherSide->eid));
  const auto second = Decimal::of(row.amount2);
  if (!row.isSpend() || !second || second->isZero()) return;
  if (!row.currency2.empty()) {
    entry.tags.emplace_back("foreign", fmt::format("{} {}", second->text(currencyDigits(row.currency2)),
                                                   journalText(row.currency2)));
  } else if (row.isPayment) {
    entry.tags.emplace_back("fee", second->text(2));
  }
}

}  // namespace moniva
