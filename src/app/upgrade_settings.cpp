// What is kept in two places, and what an interrupted rebuild left.

#include <charconv>

#include "app/do_db_updater.h"
#include "app/upgrade_support.h"
#include "model/account_balance.h"
#include "storage/device_settings.h"

namespace moniva {
namespace {

/// Whether one time is later than the other: by their numbers where both are, else as texts that begin with
/// the year.
bool isLater(const std::string& one, const std::string& other) {
  const auto number = [](const std::string& text, double& value) {
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    return read.ec == std::errc() && read.ptr == text.data() + text.size();
  };
  double first = 0;
  double second = 0;
  if (number(one, first) && number(other, second)) return first > second;
  return one > other;
}

}  // namespace

Result<> updateSettingCopyToLocal(MVAppRoot& root) {
  return atomically(root, [&](Connection&) -> Result<> {
    const auto localSetting = [&](std::string_view key) {
      return deviceSetting(*root.platform().userDefaults, key);
    };
    const auto stored = [&](std::string_view key) -> Result<std::string> {
      const auto values = loadedTexts(
          root, "select value from monivaSys where key = ? order by editDate DESC limit 1", {key});
      if (!values) return tl::make_unexpected(values.error());
      return values->empty() ? std::string() : values->front();
    };
    const auto keepInStore = [&](std::string_view key) -> Result<> {
      const std::string local = localSetting(key);
      if (auto done = write(root, "delete from monivaSys where key = ?", key); !done) return done;
      return write(root, "insert into monivaSys (value,key,editDate) values(?,?,?)", local, key,
                   root.editStamp());
    };
    for (const std::string_view key : {"lastBackupDate", "lastSyncDate"}) {
      const auto inStore = stored(key);
      if (!inStore) return tl::make_unexpected(inStore.error());
      const bool toStore = isLater(localSetting(key), *inStore);
      if (auto done = toStore ? keepInStore(key) : Result<>(); !done) return done;
      if (key != "lastSyncDate") continue;
      // The outcome goes with the time it is of, unless that side has none.
      const auto state = stored("lastSyncState");
      if (!state) return tl::make_unexpected(state.error());
      const auto local = localSetting("lastSyncState");
      if (local.empty() || local == *state || !(toStore || state->empty())) continue;
      if (auto done = keepInStore("lastSyncState"); !done) return done;
    }
    root.db().saveDBSysInfoToLocal();
    return {};
  });
}

Result<> importDataTemp(MVAppRoot& root) {
  return atomically(root, [&](Connection&) -> Result<> {
    const auto left = columnsOf(root, "transactions_temp");
    const auto today = columnsOf(root, "transactions");
    if (!left || !today) return tl::make_unexpected((left ? today : left).error());
    const auto isTable = loadedTexts(
        root,
        "select 1 from sqlite_schema where name = 'transactions_temp' collate nocase and type = 'table'");
    if (!isTable) return tl::make_unexpected(isTable.error());
    if (isTable->empty() || !left->contains("eid")) return {};
    std::string names;
    for (const auto& name : *left) {
      if (today->contains(name)) names.append(names.empty() ? "" : ", ").append(fmt::format("\"{}\"", name));
    }
    constexpr std::string_view missing =
        "eid != '' and eid not in (select eid from transactions where eid is"
        " not NULL)";
    std::set<std::string> touched;
    for (const char* column : {"account", "book"}) {
      if (!left->contains(column)) continue;
      const auto keys = loadedTexts(
          root, fmt::format("select distinct {} from transactions_temp where {}", column, missing));
      if (!keys) return tl::make_unexpected(keys.error());
      touched.insert(keys->begin(), keys->end());
    }
    // As they were: taking them back is no edit.
    auto done = write(root, fmt::format("insert or ignore into transactions ({0}) select {0} from"
                                        " transactions_temp where {1}",
                                        names, missing));
    if (!done) return done;
    const auto others = loadedTexts(
        root,
        "select 1 from transactions_temp where eid is NULL or eid not in (select eid from transactions where"
        " eid is not NULL) limit 1");
    if (!others) return tl::make_unexpected(others.error());
    if (others->empty()) {
      if (done = write(root, "DROP TABLE transactions_temp"); !done) return done;
    }
    return countTheTotalBalances(root, touched);
  });
}

}  // namespace moniva
