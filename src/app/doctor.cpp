#include "app/doctor.h"

#include <array>

#include "storage/transaction.h"

namespace moniva {
namespace {

/// A query that counts rows that should not be. What they are is told as "3 transfers of which ...": the name
/// of one, which takes an s where there are more, and what is wrong with each.
struct Count {
  std::string_view check;
  std::string_view sql;
  std::string_view one;
  std::string_view wrong;
};

constexpr std::array kCounts = {
    Count{"amounts",
          "select count(*) from transactions where typeof(amount) not in ('real', 'integer') or"
          " (amount < 0 and type != 50) or abs(amount) > 1e15",
          "transaction", "whose amount is no number, negative or beyond all measure"},
    Count{"dates",
          "select count(*) from transactions where typeof(datetime) not in ('real', 'integer') and type < 50",
          "transaction", "whose date is a text or missing"},
    Count{"books",
          "select count(*) from transactions where deleted = 0 and book != '' and book not in"
          " (select oldTitle from account where kind = 2)",
          "transaction", "of a book that does not exist"},
    Count{"accounts",
          "select count(*) from transactions where deleted = 0 and account != '' and account not in"
          " (select oldTitle from account where kind = 1)",
          "transaction", "of an account that does not exist"},
    Count{"categories",
          "select count(*) from transactions where deleted = 0 and category != '' and"
          " category != '#NOMVCATEGORY' and category not in (select oldTitle from category)",
          "transaction", "of a category that does not exist"},
    Count{"vendors",
          "select count(*) from transactions where deleted = 0 and vendor != '' and type in (11, 12) and"
          " vendor not in ('NoVendor', 'NoPayee', 'NoPayer') and vendor not in"
          " (select oldTitle from category where type in (6, 9))",
          "transaction", "of a vendor that does not exist"},
    Count{"transfers",
          "select count(*) from transactions as side where side.deleted = 0 and side.type in (23, 33) and"
          " not exists (select 1 from transactions as other where other.transferEID = side.transferEID"
          " and (other.deleted = 0 or other.ipid like 'delete by clear %') and other.type = 56 - side.type)",
          "transfer", "of which only one side is there"},
    Count{"keys of books and accounts",
          "select count(*) from (select oldTitle from account group by oldTitle having count(*) > 1)", "key",
          "that two books or accounts share"},
    Count{"keys of categories",
          "select count(*) from (select oldTitle from category where oldTitle != '' group by oldTitle having"
          " count(*) > 1)",
          "key", "that two categories or vendors share"},
    Count{"settings", "select count(*) from (select key from monivaSys group by key having count(*) > 1)",
          "setting", "with more than one value (the newest counts)"},
};

}  // namespace

std::vector<DoctorFinding> examineStore(MVAppRoot& root) {
  std::vector<DoctorFinding> findings;
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return {{"store", false, "the store is not open"}};
  const ReadTransaction snapshot(*db);
  {
    DoctorFinding file{"file", true, {}};
    Run run = db->query("PRAGMA integrity_check(20)");
    while (run.next()) {
      if (run.text(0) == "ok") continue;
      file.well = false;
      if (!file.found.empty()) file.found += "; ";
      file.found += run.text(0);
    }
    if (!run.ok()) file = {"file", false, db->lastErrorMessage()};
    findings.push_back(std::move(file));
  }
  for (const Count& count : kCounts) {
    Run run = db->query(count.sql);
    if (!run.next()) {
      findings.push_back({std::string(count.check), false, db->lastErrorMessage()});
      continue;
    }
    const auto number = run.integer(0);
    findings.push_back(
        {std::string(count.check), number == 0,
         number == 0 ? std::string()
                     : fmt::format("{} {}{} {}", number, count.one, number == 1 ? "" : "s", count.wrong)});
  }
  {
    const auto missing = root.db().missingIndexes();
    findings.push_back({"indexes", missing.empty(),
                        missing.empty() ? std::string() : fmt::format("{} missing", missing.size())});
  }
  return findings;
}

}  // namespace moniva
