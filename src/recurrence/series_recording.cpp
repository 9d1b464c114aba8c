#include "model/entry_checks.h"
#include "model/moniva_account.h"
#include "model/record_entry.h"
#include "recurrence/occurrence_maker.h"
#include "recurrence/series_days.h"
#include "recurrence/spend_repeat.h"

// Records that repeat, as they are entered: the seed, the record as the first occurrence, and what is due
// since.
namespace moniva {
namespace {

/// Refused: a rule or an end that makes no series. The end counts as a whole day.
template <class Entry>
Result<> checkSeries(MVAppRoot& root, Entry& entry) {
  const Calendar& calendar = root.calendar();
  if (auto known = checkRepeatRule(entry.repeat); !known) return known;
  if (entry.repeat == kNotRepeat) return refuse("a record that does not repeat has no series");
  if (auto dated = checkSeriesDate(calendar, entry.datetime); !dated) return dated;
  if (entry.repeatEndDate == Date{}) return {};
  if (auto dated = checkRecordDate(calendar, entry.repeatEndDate); !dated) return dated;
  const auto home = homeCalendar(calendar, entry.timeZone);
  entry.repeatEndDate = home->endOfDay(calendar.dayNumber(entry.repeatEndDate));
  if (home->isBeforeDay(entry.repeatEndDate, entry.datetime)) return refuse("a series ends after it begins");
  return {};
}

/// Writes the record as an occurrence of the seed, with what depends on it. It keeps its time of day.
Result<> writeFirst(MVAppRoot& root, Spend& spend) {
  const auto home = homeCalendar(root.calendar(), spend.timeZone);
  const auto identifier = [&](std::string_view part) {
    return occurrenceIdentifier(*home, spend.repeatSeedID, spend.datetime, part);
  };
  spend.repeat = kNotRepeat;
  spend.repeatEndDate = {};
  spend.eid = identifier("");
  if (spend.bid != kPaymentRow) return recordEntry(root, spend);
  Payment payment = paymentOf(spend);
  payment.eid = spend.eid;
  payment.connectionUUID = identifier("P");
  payment.paid = spend.paid = spend.paid && !spend.account.empty();
  if (auto inserted = insertPaymentOfSeries(payment); !inserted) return inserted;
  spend.connectionUUID = payment.connectionUUID;
  if (!spend.addImages.empty()) {
    auto names = saveImages(root, spend.addImages, spend.eid);
    if (!names) return tl::make_unexpected(names.error());
    spend.images = std::move(*names);
  }
  EntryUpkeep upkeep(root);
  upkeep.note(payment);
  if (payment.paid) upkeep.noteChange(payment.book, payment.type, payment.amount);
  return upkeep.write(EntryUpkeep::Balances::byAmount);
}

Result<> writeFirst(MVAppRoot& root, Transfer& transfer) {
  const auto home = homeCalendar(root.calendar(), transfer.timeZone);
  const auto identifier = [&](std::string_view part) {
    return occurrenceIdentifier(*home, transfer.repeatSeed, transfer.datetime, part);
  };
  transfer.eidA = identifier("A");
  transfer.eidB = identifier("B");
  transfer.connectUUID = identifier("AB");
  return recordEntry(root, transfer);
}

Result<> checkEntry(MVAppRoot&, const Spend& spend) {
  if (spend.advancedType != advanced::kPlain || !spend.connectionUUID.empty() || !spend.payments.empty()) {
    return refuse("a record with payments or of several parts does not repeat");
  }
  if (spend.type != kind::kIncome && spend.type != kind::kExpense) {
    return refuse("{} is neither income nor expense", spend.type);
  }
  return checkHolders(spend, spend.type);
}

Result<> checkEntry(MVAppRoot&, Transfer& transfer) {
  return transfer.check();
}

const std::string& seedOf(const Spend& spend) {
  return spend.repeatSeedID;
}
const std::string& seedOf(const Transfer& transfer) {
  return transfer.repeatSeed;
}

Result<> makeDue(MVAppRoot& root, const std::string& seed, Date from) {
  const auto stored = MVTransaction::transactionFromEID(root, seed);
  if (!stored) return refuse("there is no series '{}'", seed);
  const auto progress = createRepeatItemsFrom(*stored, from, root.calendar().dateEnd(root.now()));
  if (!progress) return tl::make_unexpected(progress.error());
  if (!progress->more) return {};
  return refuse("a series that begins on that day has more than {} records by today; begin it later",
                kMostOccurrencesAtOnce);
}

template <class Entry>
Result<std::string> recordSeries(MVAppRoot& root, Entry& entry) {
  const Entry asGiven = entry;
  // The current book keeps its balance in memory too, where no transaction takes it back.
  const auto book = root.monivaAccount;
  const double balance = book ? book->totalBalance : 0;
  auto recorded = atomically(root, [&](Connection&) -> Result<std::string> {
    Result<> done = checkSeries(root, entry);
    if (done) done = checkEntry(root, entry);
    const bool isDue = isPaidByDate(root.calendar(), entry.datetime, root.now());
    if constexpr (std::is_same_v<Entry, Spend>) {
      if (done && !isDue && !entry.addImages.empty()) {
        done = refuse("there is no record yet to attach an image to; the series begins later");
      }
    }
    if (done) done = entry.addRepeatSeed();
    if (done && isDue) done = writeFirst(root, entry);
    if (done && isDue) done = makeDue(root, seedOf(entry), entry.datetime);
    if (!done) return tl::make_unexpected(done.error());
    return seedOf(entry);
  });
  if (!recorded) {
    entry = asGiven;
    if (book) book->totalBalance = balance;
  }
  return recorded;
}

}  // namespace

Result<std::string> recordRepeating(MVAppRoot& root, Spend& spend) {
  return recordSeries(root, spend);
}

Result<std::string> recordRepeating(MVAppRoot& root, Transfer& transfer) {
  return recordSeries(root, transfer);
}

}  // namespace moniva
