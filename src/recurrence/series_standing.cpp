#include "recurrence/series_standing.h"

#include "recurrence/occurrence_maker.h"
#include "recurrence/series_seed.h"

namespace moniva {
namespace {

/// Dates up to here, in the year 1970, were never set.
constexpr Date kEarliestBegin{31'536'000};

Result<std::vector<MVTransaction>> liveSeriesWhere(MVAppRoot& root, std::string_view where) {
  std::vector<MVTransaction> series;
  const Value arguments[] = {kind::kRepeatSeed, advanced::kInstallment};
  auto read = MVTransaction::transactionsWhere(
      root, where, arguments, [&](MVTransaction seed) { series.push_back(std::move(seed)); });
  if (!read) return tl::make_unexpected(read.error());
  return series;
}

}  // namespace

Result<> checkMakes(const MVTransaction& seed) {
  MVAppRoot& root = seed.root();
  const auto stored = SeriesSeed::of(root, seed.eid);
  if (!stored) return tl::make_unexpected(stored.error());
  if (const auto rule = ruleOf(*stored); !rule) return tl::make_unexpected(rule.error());
  Result<> checked = stored->checkKind();
  if (checked) {
    checked =
        checkSeriesDate(root.calendar(), stored->datetime <= kEarliestBegin ? Date{} : stored->datetime);
  }
  if (!checked) return checked;
  const auto maker = OccurrenceMaker::of(root, *stored);
  return maker ? Result<>() : tl::make_unexpected(maker.error());
}

Result<std::vector<MVTransaction>> seriesWithoutRule(MVAppRoot& root) {
  return liveSeriesWhere(root,
                         "deleted = 0 and type = ? and (syear != ? or syear is NULL) and ifnull(repeat, '')"
                         " not in ('Daily', 'Weekly', 'Biweekly', 'Monthly', 'Bimonthly', 'Quarterly',"
                         " 'Half-yearly', 'Yearly') order by datetime, eid");
}

Result<std::vector<MVTransaction>> seriesWithoutDate(MVAppRoot& root) {
  return liveSeriesWhere(root,
                         "deleted = 0 and type = ? and (syear != ? or syear is NULL) and typeof(datetime) not"
                         " in ('real', 'integer') order by eid");
}

Result<std::optional<Date>> latestRecordOf(MVAppRoot& root, std::string_view seed) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select datetime from transactions where repeat_seed = ? and deleted = 0 and typeof(datetime) in"
      " ('real', 'integer') order by datetime desc limit 1",
      {seed});
  if (run.next()) return run.date(0);
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return std::nullopt;
}

Result<std::int64_t> pendingRecordsOf(MVAppRoot& root, std::string_view seed) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select count(distinct ifnull(nullif(transferEID, ''), eid)) from transactions where repeat_seed = ? "
      "and"
      " deleted = 0 and paid = 0",
      {seed});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return run.integer(0);
}

Result<std::int64_t> seriesBehind(MVAppRoot& root, std::string_view key) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select count(*) from transactions where type = ? and deleted = 0 and (syear != ? or syear is NULL) and"
      " datetime <= ? and (account = ? or book = ? or (syear in (23, 33) and vendor = ?))",
      {kind::kRepeatSeed, advanced::kInstallment, root.calendar().dateEnd(root.now()), key, key, key});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return run.integer(0);
}

}  // namespace moniva
