// What is kept in two places, and what an interrupted rebuild left.

#include <charconv>

#include "app/do_db_updater.h"
#include "app/upgrade_support.h"
#include "model/account_balance.h"

namespace moniva {
namespace {

/// The setting of this device as a text; dates as their seconds.
std::string localSetting(MVAppRoot& root, std::string_view key) {
  const auto& defaults = *root.platform().userDefaults;
  if (const auto date = defaults.dateForKey(key)) return fmt::format("{}", date->secondsSince1970);
  return defaults.stringForKey(key).value_or("");
}

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
    const auto stored = [&](std::string_view key) -> Result<std::string> {
      const auto values = loadedTexts(
          root, "select value from monivaSys where key = ? order by editDate DESC limit 1", {key});
      if (!values) return tl::make_unexpected(values.error());
      return values->empty() ? std::string() : values->front();
    };
    const auto copy = [&](std::string_view key, bool toStore) -> Result<> {
      const auto inStore = stored(key);
      if (!inStore) return tl::make_unexpected(inStore.error());
      const std::string local = localSetting(root, key);
      if ((toStore ? local : *inStore).empty() || local == *inStore) return {};
      if (!toStore) {
        root.platform().userDefaults->setString(*inStore, key);
        return {};
      }
      if (auto done = write(root, "delete from monivaSys where key = ?", key); !done) return done;
      return write(root, "insert into monivaSys (value,key,editDate) values(?,?,?)", local, key,
                   root.editStamp());
    };
    for (const std::string_view key : {"lastBackupDate", "lastSyncDate"}) {
      const auto inStore = stored(key);
      if (!inStore) return tl::make_unexpected(inStore.error());
      const bool toStore = isLater(localSetting(root, key), *inStore);
      if (auto done = copy(key, toStore); !done) return done;
      if (key != "lastSyncDate") continue;
      // The outcome goes with the time it is of, unless that side has none.
      const auto state = stored("lastSyncState");
      if (!state) return tl::make_unexpected(state.error());
      const bool localState = !localSetting(root, "lastSyncState").empty();
      if (auto done = copy("lastSyncState", localState && (toStore || state->empty())); !done) return done;
    }
    return {};
  });
}

Result<> importDataTemp(MVAppRoot& root) {
  return atomically(root, [&](Connection&) -> Result<> {
    const auto left = columnsOf(root, "transactions_temp");
    const auto today = columnsOf(root, "transactions");
    if (!left || !today) return tl::make_unexpected((left ? today : left).error());
    if (!left->contains("eid")) return {};
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
