// Tables of an older store made anew in today's form.

#include <algorithm>
#include <cctype>

#include "app/do_db_updater.h"
#include "app/run_once.h"
#include "app/text_dates.h"
#include "app/upgrade_support.h"
#include "storage/schema_sql.h"

namespace moniva {
namespace {

struct DatedTable {
  std::string_view name;
  std::vector<std::string_view> dates;
  std::string_view key;  ///< the column that no two rows share; blank for none
};

const std::vector<DatedTable>& datedTables() {
  static const std::vector<DatedTable> tables = {
      {"account", {"editDate", "beginDate", "endDate"}, "eid"},
      {"category", {"editDate"}, "pk"},
      {"photos", {"datetime"}, "pid"},
      {"monivaSys", {"editDate"}, ""},
      {"transactions", {"editDate", "datetime", "repeat_end_date", "payDate"}, "eid"},
  };
  return tables;
}

constexpr std::string_view kOfBooks = "categoryofbook";

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
  bool isKey = false;
};

std::vector<FoundColumn> columnsFound(Connection& db, std::string_view table) {
  std::vector<FoundColumn> columns;
  Run run = db.query("select name, type, pk from pragma_table_info(?)", {table});
  while (run.next()) {
    columns.push_back({std::string(run.text(0)), std::string(run.text(1)), run.integer(2) != 0});
  }
  return columns;
}

/// Names compare as the engine compares them.
bool isSameName(std::string_view a, std::string_view b) {
  return std::ranges::equal(
      a, b, [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

bool has(const std::vector<FoundColumn>& columns, std::string_view name) {
  return std::ranges::any_of(columns, [&](const auto& one) { return isSameName(one.name, name); });
}

bool lacksColumns(Connection& db, std::string_view table) {
  const auto found = columnsFound(db, table);
  return !std::ranges::all_of(columnsOfToday(table),
                              [&](const std::string& name) { return has(found, name); });
}

bool isTable(Connection& db, std::string_view name) {
  Run run = db.query("select 1 from sqlite_schema where type = 'table' and name = ? collate nocase", {name});
  return run.next();
}

/// What a rebuild came upon in the tables.
struct Mended {
  std::int64_t dates = 0;    ///< texts that are numbers now
  std::int64_t unread = 0;   ///< texts that stay
  std::int64_t leftOut = 0;  ///< records whose identifier another has
};

/// Makes numbers of the texts in a column of dates.
Result<> readTextDates(MVAppRoot& root, Connection& db, std::string_view table, std::string_view column,
                       Mended& mended) {
  struct Found {
    std::int64_t place;
    double date;
  };
  std::vector<Found> found;
  {
    Run run = db.query(fmt::format("select rowid, {0} from {1} where typeof({0}) = 'text'", column, table));
    while (run.next()) {
      if (const auto date = storedDate(root.calendar(), std::string(run.text(1)))) {
        found.push_back({run.integer(0), *date});
      } else {
        ++mended.unread;
      }
    }
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  const std::string update = fmt::format("update {} set {} = ? where rowid = ?", table, column);
  for (const auto& [place, date] : found) {
    if (auto written = write(root, update, date, place); !written) return written;
  }
  mended.dates += static_cast<std::int64_t>(found.size());
  return {};
}

/// Takes out of the table the records whose identifier another has: of each the one in use, edited last,
/// stays. The log keeps what the others said.
Result<> leaveDoublesOut(MVAppRoot& root, const std::vector<FoundColumn>& found, Mended& mended) {
  std::string order;
  if (has(found, "deleted")) order += "coalesce(deleted, 0) != 0, ";
  if (has(found, "editDate")) order += "typeof(editDate) = 'text', editDate DESC, ";
  const auto doubles = loaded(
      root,
      fmt::format("select place from (select rowid as place, row_number() over (partition by cast(eid as"
                  " text) order by {}rowid) as number from transactions where eid is not NULL) where"
                  " number > 1",
                  order),
      {}, [](const Run& run) { return run.integer(0); });
  if (!doubles) return tl::make_unexpected(doubles.error());
  for (const auto place : *doubles) {
    const auto text = rowAsText(root, "transactions", place);
    if (!text) return tl::make_unexpected(text.error());
    root.db().faultLog().line(fmt::format("== record left out, as another has its identifier: {}", *text));
    if (auto gone = write(root, "delete from transactions where rowid = ?", place); !gone) return gone;
  }
  mended.leftOut += static_cast<std::int64_t>(doubles->size());
  return {};
}

/// What is copied of a table into the columns `names`: its rows. Of rows that share a number the first keeps
/// it; the others, and those whose number is none, are numbered afresh.
std::string rowsToCopy(const DatedTable& table, const std::vector<FoundColumn>& found) {
  std::string names;
  std::string numbered;
  for (const auto& column : found) {
    const std::string name = quotedName(column.name);
    const bool isLoose = isSameName(column.name, table.key) && table.name != "transactions" &&
                         !(column.isKey && isSameName(column.type, "INTEGER"));
    if (isLoose) numbered = name;
    names += names.empty() ? "" : ", ";
    names += isLoose ? fmt::format(
                           "case when typeof({0}) = 'integer' and row_number() over (partition by {0}"
                           " order by rowid) = 1 then {0} end as {0}",
                           name)
                     : name;
  }
  const std::string rows = fmt::format("select {} from {}", names, table.name);
  // The numbers that are taken first.
  return numbered.empty() ? rows : fmt::format("select * from ({}) order by {} is NULL", rows, numbered);
}

/// Where an older program was cut short between its two renamings the table gets its name back.
Result<> takeUpRenaming(Connection& db, std::string_view table) {
  const std::string old = fmt::format("{}_old", table);
  if (!columnsFound(db, table).empty() || columnsFound(db, old).empty()) return {};
  return db.executeScript(fmt::format("ALTER TABLE {} RENAME TO {}", old, table))
             ? Result<>()
             : tl::make_unexpected(db.refusal());
}

Result<> rebuild(MVAppRoot& root, Connection& db, const DatedTable& dated, Mended& mended) {
  const std::string_view table = dated.name;
  const auto run = [&](const std::string& sql) -> Result<> {
    return db.executeScript(sql) ? Result<>() : tl::make_unexpected(db.refusal());
  };
  if (auto back = takeUpRenaming(db, table); !back) return back;
  const auto today = columnsOfToday(table);
  const auto found = columnsFound(db, table);
  if (table == "transactions" && std::ranges::none_of(found, &FoundColumn::isKey) && has(found, "eid")) {
    if (auto left = leaveDoublesOut(root, found, mended); !left) return left;
  }
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
    texts.push_back(fmt::format("insert into {}_temp ({}) {}", table, names, rowsToCopy(dated, found)));
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

/// Whether what is on in which book is to be brought into today's form. While step 0 is due the form with
/// numbers is left to that: keys come first.
bool isOfBooksOlder(Connection& db) {
  const auto found = columnsFound(db, kOfBooks);
  if (!found.empty() && !has(found, "cate")) return hasRun(db, "updateCategoryPK").value_or(false);
  return lacksColumns(db, kOfBooks);
}

Result<> mendOfBooks(MVAppRoot& root, Connection& db, Mended& mended) {
  if (auto back = takeUpRenaming(db, kOfBooks); !back) return back;
  if (!isOfBooksOlder(db)) return {};
  if (const auto found = columnsFound(db, kOfBooks); !has(found, "cate")) return rebuildCategoryOfBook(root);
  return rebuild(root, db, {.name = kOfBooks, .dates = {}, .key = {}}, mended);
}

/// Rebuilds the tables. Records that an older program's rebuild left behind come back.
Result<> rebuildAll(MVAppRoot& root, Connection& db, Mended& mended) {
  if (auto gone = dropViewsInTheWay(root); !gone) return gone;
  const bool hasRecordsLeft = isTable(db, "transactions_temp");
  if (hasRecordsLeft && !db.executeScript("ALTER TABLE transactions_temp RENAME TO transactions_left")) {
    return refusalOfStore(root);
  }
  for (const auto& table : datedTables()) {
    if (auto rebuilt = rebuild(root, db, table, mended); !rebuilt) return rebuilt;
    if (hasRecordsLeft && table.name == "transactions") {
      if (!db.executeScript("ALTER TABLE transactions_left RENAME TO transactions_temp")) {
        return refusalOfStore(root);
      }
      if (auto back = importDataTemp(root); !back) return back;
    }
    for (const auto column : table.dates) {
      if (auto read = readTextDates(root, db, table.name, column, mended); !read) return read;
    }
  }
  if (auto done = mendOfBooks(root, db, mended); !done) return done;
  return root.db().addIndexes() ? Result<>() : refusalOfStore(root);
}

}  // namespace

std::string_view columnsText(std::string_view table) {
  const std::string start = fmt::format("CREATE TABLE {} (", table);
  const auto at = kSchemaSql.find(start) + start.size();
  return kSchemaSql.substr(at, kSchemaSql.find("\n);", at) - at);
}

Result<> dropViewsInTheWay(MVAppRoot& root) {
  struct View {
    std::string name;
    std::string sql;
  };
  const auto views = loaded(
      root,
      "select name, sql from sqlite_schema where type = 'view' and (name like '%\\_temp' escape '\\' or"
      " name like '%\\_old' escape '\\')",
      {}, [](const Run& run) {
        return View{std::string(run.text(0)), std::string(run.text(1))};
      });
  if (!views) return tl::make_unexpected(views.error());
  for (const auto& view : *views) {
    const auto isOurs = [&](std::string_view table) {
      return isSameName(view.name, fmt::format("{}_temp", table)) ||
             isSameName(view.name, fmt::format("{}_old", table));
    };
    if (!isOurs(kOfBooks) && std::ranges::none_of(datedTables(), isOurs, &DatedTable::name)) continue;
    root.db().faultLog().line(fmt::format("== view removed: {}", view.sql));
    if (auto gone = write(root, "DROP VIEW " + quotedName(view.name)); !gone) return gone;
  }
  return {};
}

bool lacksColumns(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return false;
  return isOfBooksOlder(*db) || std::ranges::any_of(datedTables(), [&](const DatedTable& table) {
           return lacksColumns(*db, table.name);
         });
}

Result<> updateStringTypeDateField(MVAppRoot& root) {
  Mended mended;
  auto done = atomically(root, [&](Connection& db) -> Result<> {
    // Renaming is to leave what others say of the table as it is.
    if (!db.executeScript("PRAGMA legacy_alter_table = ON")) return tl::make_unexpected(db.refusal());
    const bool lacked = lacksColumns(root);
    if (auto rebuilt = rebuildAll(root, db, mended); !rebuilt) return rebuilt;
    // A column that was not there may be one that balances are kept in, or counted by.
    const bool counts = lacked || mended.dates > 0 || mended.leftOut > 0;
    return counts ? countAllBalances(root) : Result<>();
  });
  if (Connection* db = root.db().getDatabase()) db->executeScript("PRAGMA legacy_alter_table = OFF");
  if (done && mended.unread > 0) {
    root.addNotice(
        mended.unread == 1
            ? phrase("{} date in the store is a text that cannot be read; it stays as it is.", mended.unread)
            : phrase("{} dates in the store are texts that cannot be read; they stay as they are.",
                     mended.unread));
  }
  return done;
}

}  // namespace moniva
