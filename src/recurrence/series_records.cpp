#include "recurrence/series_records.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "model/transaction_type.h"
#include "recurrence/series_days.h"

namespace moniva {
namespace {

// The columns as `SeriesGatherer::take` reads them, and which rows.
constexpr std::string_view kRecordColumns =
    "select eid, bid, type, transferEID, deleted, datetime, editDate, sday, barcode, syear, amount, ipid,"
    " repeat_seed from transactions where ";
constexpr int kSeedColumn = 12;
constexpr std::string_view kOfSeries = "repeat_seed = ? order by datetime, editDate DESC";
constexpr std::string_view kOfDay =
    "repeat_seed = ? and datetime > ? and datetime < ? order by editDate DESC";
constexpr std::string_view kOfAll = "repeat_seed > '' order by repeat_seed, datetime";

/// Dates and stamps up to here were never set.
constexpr Date kNeverSet{1'000'000};
/// Reason of rows that a repair of their series removed.
constexpr std::string_view kByRepair = "delete by fixDuplicateRecurringItem";

class SeriesGatherer {
 public:
  explicit SeriesGatherer(const Calendar& calendar) : days_(calendar) {}

  void take(const Run& run);
  /// What was taken since the last time.
  SeriesRecords finish();

 private:
  void count(const Run& run, bool byRepair);
  static void join(SeriesRecord& whole, SeriesRecord&& row);

  OwnDays days_;
  SeriesRecords records_;
  std::unordered_map<std::string, std::size_t> groups_;
  std::map<std::pair<double, double>, int> copies_;
};

void SeriesGatherer::count(const Run& run, bool byRepair) {
  const auto deleted = run.integer(4);
  const Date date = run.date(5);
  if (date > kNeverSet) records_.latest = std::max(records_.latest, date);
  if (deleted < 2) ++records_.present;
  if (deleted < 2) return;
  if (byRepair) records_.byRepair.note(date);
  if (run.text(11).empty()) records_.otherwise.note(date);
}

void SeriesGatherer::take(const Run& run) {
  const int type = static_cast<int>(run.integer(2));
  if (type == kind::kRepeatSeed) return;
  const int deleted = static_cast<int>(run.integer(4));
  const bool byRepair = deleted > 1 && run.text(11).find(kByRepair) != std::string_view::npos;
  count(run, byRepair);
  if (deleted > 2) ++copies_[{run.real(5), run.real(6)}];
  SeriesRecord row;
  row.eid = run.text(0);
  row.isItem = run.integer(1) == kItemRow;
  row.group = run.text(3);
  // A payment of a record goes with the items; one by itself is what the series makes.
  const bool isPaymentOfRecord = !row.isItem && run.integer(9) >= advanced::kCart;
  if (isPaymentOfRecord && row.group.empty()) return;
  row.type = isPaymentOfRecord ? 0 : type == kind::kTransferIn ? kind::kTransferOut : type;
  row.rows = 1;
  row.deleted = deleted;
  row.byRepair = byRepair && deleted == 3;
  row.datetime = run.date(5);
  row.edited = run.date(6);
  row.amount = run.real(10);
  if (row.datetime > kNeverSet) row.day = days_.of(row.datetime, run.text(8), run.integer(7));
  if (row.group.empty()) {
    records_.occurrences.push_back(std::move(row));
    return;
  }
  const auto [known, isNew] = groups_.emplace(row.group, records_.occurrences.size());
  if (isNew) {
    records_.occurrences.push_back(std::move(row));
  } else {
    join(records_.occurrences[known->second], std::move(row));
  }
}

void SeriesGatherer::join(SeriesRecord& whole, SeriesRecord&& row) {
  ++whole.rows;
  // What is there of a record is what counts of it.
  if (row.deleted <= whole.deleted) {
    whole.edited = row.deleted < whole.deleted ? row.edited : std::max(whole.edited, row.edited);
    whole.deleted = row.deleted;
  }
  whole.byRepair = whole.byRepair || row.byRepair;
  if (row.isItem && !whole.isItem) {
    whole.eid = std::move(row.eid);
    whole.isItem = true;
    whole.type = row.type;
    whole.amount = row.amount;
    whole.day = row.day;
    return;
  }
  if (row.isItem) {
    whole.amount += row.amount;
    whole.day = std::min(whole.day, row.day);
  }
  if (whole.isTransfer() && whole.other.empty()) whole.other = std::move(row.eid);
}

SeriesRecords SeriesGatherer::finish() {
  // Payments whose items are not of the series are left to those.
  std::erase_if(records_.occurrences, [](const auto& one) { return one.type == 0; });
  for (const auto& [dates, rows] : copies_) {
    if (rows > 1) records_.copies.push_back({Date{dates.first}, Date{dates.second}, rows});
  }
  groups_.clear();
  copies_.clear();
  return std::exchange(records_, {});
}

template <class... Arguments>
Result<SeriesRecords> seriesRecordsWhere(MVAppRoot& root, std::string_view which,
                                         const Arguments&... arguments) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  SeriesGatherer gatherer(root.calendar());
  Run run = db->query(fmt::format("{}{}", kRecordColumns, which), {arguments...});
  while (run.next()) gatherer.take(run);
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return gatherer.finish();
}

}  // namespace

bool SeriesRecord::isTransfer() const {
  return type == kind::kTransferOut;
}

void RemovedRows::note(Date date) {
  first = rows == 0 ? date : std::min(first, date);
  last = rows == 0 ? date : std::max(last, date);
  ++rows;
}

Result<SeriesRecords> recordsOfSeries(MVAppRoot& root, std::string_view seed) {
  return seriesRecordsWhere(root, kOfSeries, Value(seed));
}

Result<SeriesRecords> recordsOfSeries(MVAppRoot& root, std::string_view seed, Date day) {
  const Calendar& calendar = root.calendar();
  const auto number = calendar.dayNumber(day);
  return seriesRecordsWhere(root, kOfDay, Value(seed), Value(calendar.endOfDay(number - 1)),
                            Value(calendar.beginOfDay(number + 1)));
}

Result<> recordsOfAllSeries(
    MVAppRoot& root, const std::function<void(const std::string& seed, const SeriesRecords& records)>& take) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  SeriesGatherer gatherer(root.calendar());
  std::string seed;
  Run run = db->query(fmt::format("{}{}", kRecordColumns, kOfAll));
  while (run.next()) {
    if (run.text(kSeedColumn) != seed) {
      if (!seed.empty()) take(seed, gatherer.finish());
      seed = run.text(kSeedColumn);
    }
    gatherer.take(run);
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  if (!seed.empty()) take(seed, gatherer.finish());
  return {};
}

}  // namespace moniva
