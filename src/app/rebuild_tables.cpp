// Tables of an older store made anew in today's form.

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "app/do_db_updater.h"
#include "calendar/civil_time.h"
#include "storage/schema_sql.h"
#include "storage/writes.h"

namespace moniva {
namespace {

struct DatedTable {
  std::string_view name;
  std::vector<std::string_view> dates;
};

const std::vector<DatedTable>& datedTables() {
  static const std::vector<DatedTable> tables = {
      {"account", {"editDate", "beginDate", "endDate"}},
      {"category", {"editDate"}},
      {"photos", {"datetime"}},
      {"monivaSys", {"editDate"}},
      {"transactions", {"editDate", "datetime", "repeat_end_date", "payDate"}},
  };
  return tables;
}

/// What stands between the parentheses of the table's CREATE statement in today's schema.
std::string_view columnsText(std::string_view table) {
  const std::string start = fmt::format("CREATE TABLE {} (", table);
  const auto at = kSchemaSql.find(start) + start.size();
  return kSchemaSql.substr(at, kSchemaSql.find("\n);", at) - at);
}

/// The names of today's columns, one a line of the schema.
std::vector<std::string> columnsOfToday(std::string_view table) {
  std::vector<std::string> names;
  std::string_view rest = columnsText(table);
  while (!rest.empty()) {
    const auto line = rest.substr(0, rest.find('\n', 1));
    rest.remove_prefix(line.size());
    const auto begin = line.find_first_not_of(" \n");
    if (begin == std::string_view::npos) continue;
    names.emplace_back(line.substr(begin, line.find(' ', begin) - begin));
  }
  return names;
}

struct FoundColumn {
  std::string name;
  std::string type;
};

std::vector<FoundColumn> columnsFound(Connection& db, std::string_view table) {
  std::vector<FoundColumn> columns;
  Run run = db.query("select name, type from pragma_table_info(?)", {table});
  while (run.next()) columns.push_back({std::string(run.text(0)), std::string(run.text(1))});
  return columns;
}

std::string quotedName(std::string_view name) {
  std::string quoted = "\"";
  for (const char c : name) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + "\"";
}

/// Names compare as the engine compares them.
bool isSameName(std::string_view a, std::string_view b) {
  return std::ranges::equal(
      a, b, [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

/// Seconds east of Greenwich that "+0100", "+01:00", "Z", "UTC" or "GMT" stand for.
std::optional<int> offsetOf(std::string_view zone) {
  if (zone == "Z" || zone == "UTC" || zone == "GMT") return 0;
  std::string digits;
  for (const char c : zone.substr(std::min<std::size_t>(1, zone.size()))) {
    if (c != ':') digits += c;
  }
  const bool isOffset = (zone.starts_with('+') || zone.starts_with('-')) && digits.size() == 4 &&
                        digits.find_first_not_of("0123456789") == std::string::npos;
  if (!isOffset) return std::nullopt;
  const int number = std::stoi(digits);
  return (zone[0] == '-' ? -1 : 1) * (number / 100 * 3600 + number % 100 * 60);
}

/// A date that an older program kept as a text.
std::optional<double> storedDate(const Calendar& calendar, const std::string& text) {
  if (text.find_first_not_of(' ') == std::string::npos) return 0.0;
  CivilTime at;
  int read = 0;
  if (std::sscanf(text.c_str(), "%4d-%2d-%2d%n", &at.year, &at.month, &at.day, &read) != 3)
    return std::nullopt;
  double seconds = 0;
  int time = 0;
  if (std::sscanf(text.c_str() + read, "%*1[T ]%2d:%2d:%lf%n", &at.hour, &at.minute, &seconds, &time) == 3) {
    read += time;
  }
  const bool isSound = at.year > 0 && at.month >= 1 && at.month <= 12 && at.day >= 1 &&
                       at.day <= daysInMonth(at.year, at.month) && at.hour >= 0 && at.hour < 24 &&
                       at.minute >= 0 && at.minute < 60 && seconds >= 0 && seconds < 60;
  if (!isSound) return std::nullopt;
  std::string_view zone = std::string_view(text).substr(static_cast<std::size_t>(read));
  while (zone.starts_with(' ')) zone.remove_prefix(1);
  while (zone.ends_with(' ')) zone.remove_suffix(1);
  if (zone.empty()) return calendar.resolve(at).date.secondsSince1970 + seconds;
  const auto offset = offsetOf(zone);
  if (!offset) return std::nullopt;
  const auto minutes = (daysFromCivil(at.year, at.month, at.day) * 24 + at.hour) * 60 + at.minute;
  return static_cast<double>(minutes * 60 - *offset) + seconds;
}

/// Makes numbers of the texts in a column of dates; answers how many could not be read.
Result<std::int64_t> readTextDates(MVAppRoot& root, Connection& db, std::string_view table,
                                   std::string_view column) {
  struct Found {
    std::int64_t place;
    double date;
  };
  std::vector<Found> found;
  std::int64_t unread = 0;
  {
    Run run = db.query(fmt::format("select rowid, {0} from {1} where typeof({0}) = 'text'", column, table));
    while (run.next()) {
      if (const auto date = storedDate(root.calendar(), std::string(run.text(1)))) {
        found.push_back({run.integer(0), *date});
      } else {
        ++unread;
      }
    }
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  const std::string update = fmt::format("update {} set {} = ? where rowid = ?", table, column);
  for (const auto& [place, date] : found) {
    if (auto written = write(root, update, date, place); !written)
      return tl::make_unexpected(written.error());
  }
  return unread;
}

Result<> rebuild(Connection& db, std::string_view table) {
  const auto run = [&](const std::string& sql) -> Result<> {
    return db.executeScript(sql) ? Result<>() : tl::make_unexpected(db.refusal());
  };
  const std::string old = fmt::format("{}_old", table);
  if (columnsFound(db, table).empty() && !columnsFound(db, old).empty()) {
    // An older program was cut short between its two renamings.
    if (auto back = run(fmt::format("ALTER TABLE {} RENAME TO {}", old, table)); !back) return back;
  }
  const auto today = columnsOfToday(table);
  const auto found = columnsFound(db, table);
  // Of a rebuild that an older program did not end these are left; the table itself has all that is in them.
  std::vector<std::string> texts = {
      fmt::format("DROP TABLE IF EXISTS {0}_temp; DROP TABLE IF EXISTS {0}_old", table),
      fmt::format("CREATE TABLE {}_temp ({})", table, columnsText(table))};
  std::string names;
  for (const auto& column : found) {
    const std::string name = quotedName(column.name);
    names += (names.empty() ? "" : ", ") + name;
    if (std::ranges::any_of(today, [&](const auto& one) { return isSameName(one, column.name); })) continue;
    texts.push_back(fmt::format("ALTER TABLE {}_temp ADD COLUMN {} {}", table, name, column.type));
  }
  if (!found.empty()) {
    texts.push_back(fmt::format("insert into {0}_temp ({1}) select {1} from {0}", table, names));
    texts.push_back(fmt::format("ALTER TABLE {0} RENAME TO {0}_old", table));
  }
  texts.push_back(fmt::format("ALTER TABLE {0}_temp RENAME TO {0}", table));
  texts.push_back(fmt::format("DROP TABLE IF EXISTS {}_old", table));
  {
    // Indexes and the like go with the old table.
    Run made = db.query(
        "select sql from sqlite_schema where tbl_name = ? and type in ('index', 'trigger') and sql is not "
        "NULL",
        {table});
    while (made.next()) texts.emplace_back(made.text(0));
  }
  for (const auto& text : texts) {
    if (auto done = run(text); !done) return done;
  }
  return {};
}

}  // namespace

bool lacksColumns(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return false;
  return std::ranges::any_of(datedTables(), [&](const DatedTable& table) {
    const auto found = columnsFound(*db, table.name);
    return !std::ranges::all_of(columnsOfToday(table.name), [&](const std::string& name) {
      return std::ranges::any_of(found, [&](const auto& one) { return isSameName(one.name, name); });
    });
  });
}

Result<> updateStringTypeDateField(MVAppRoot& root) {
  std::int64_t unread = 0;
  auto done = atomically(root, [&](Connection& db) -> Result<> {
    // Renaming is to leave what others say of the table as it is.
    if (!db.executeScript("PRAGMA legacy_alter_table = ON")) return tl::make_unexpected(db.refusal());
    for (const auto& [table, dates] : datedTables()) {
      if (auto rebuilt = rebuild(db, table); !rebuilt) return rebuilt;
      for (const auto column : dates) {
        const auto left = readTextDates(root, db, table, column);
        if (!left) return tl::make_unexpected(left.error());
        unread += *left;
      }
    }
    return root.db().addIndexes() ? Result<>() : refusalOfStore(root);
  });
  if (Connection* db = root.db().getDatabase()) db->executeScript("PRAGMA legacy_alter_table = OFF");
  if (done && unread > 0) {
    root.addNotice(
        unread == 1
            ? phrase("{} date in the store is a text that cannot be read; it stays as it is.", unread)
            : phrase("{} dates in the store are texts that cannot be read; they stay as they are.", unread));
  }
  return done;
}

}  // namespace moniva
