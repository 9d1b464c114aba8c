// Stores in which rows are known by their titles, or by numbers, get the keys of today.

#include "app/do_db_updater.h"
#include "app/upgrade_support.h"
#include "model/account_balance.h"
#include "model/mv_category.h"

namespace moniva {

Result<> rebuildCategoryOfBook(MVAppRoot& root) {
  const auto columns = columnsOf(root, "categoryofbook");
  if (!columns) return tl::make_unexpected(columns.error());
  if (columns->contains("cate")) return {};
  const std::string create = fmt::format("CREATE TABLE categoryofbook{} ({})",
                                         columns->empty() ? "" : "_temp", columnsText("categoryofbook"));
  if (columns->empty()) return write(root, create);
  if (auto gone = dropViewsInTheWay(root); !gone) return gone;
  std::string names;
  for (const char* kept : {"cateOrder", "used", "enabled", "editDate", "edit_ipid"}) {
    if (columns->contains(kept)) names.append(", ").append(kept);
  }
  const std::string copy = fmt::format(
      "insert into categoryofbook_temp (cate, book{0}) select"
      " coalesce((select oldTitle from category where category.pk = categoryofbook.pk and oldTitle != ''),"
      " cast(pk as text), ''), case when coalesce(book, 0) in (0, '') then '' else coalesce((select oldTitle"
      " from account where eid = book and oldTitle != ''), cast(book as text)) end{0} from categoryofbook"
      " order by rowid",
      names);
  for (const std::string_view sql :
       {std::string_view("DROP TABLE IF EXISTS categoryofbook_temp"),
        std::string_view("DROP TABLE IF EXISTS categoryofbook_old"), std::string_view(create),
        std::string_view(copy), std::string_view("ALTER TABLE categoryofbook RENAME TO categoryofbook_old"),
        std::string_view("ALTER TABLE categoryofbook_temp RENAME TO categoryofbook"),
        std::string_view("DROP TABLE categoryofbook_old")}) {
    if (auto done = write(root, sql); !done) return done;
  }
  struct Row {
    std::int64_t place;
    std::string key;
  };
  const auto rows = loaded(root, "select rowid, cate, book from categoryofbook", {}, [](const Run& run) {
    return Row{run.integer(0), derivedKey({"categoryofbook", run.text(1), run.text(2)})};
  });
  if (!rows) return tl::make_unexpected(rows.error());
  for (const auto& row : *rows) {
    if (auto done = write(root, "update categoryofbook set pk = ? where rowid = ?", row.key, row.place);
        !done)
      return done;
  }
  return {};
}

Result<> updateCategoryPK(MVAppRoot& root) {
  return atomically(root, [&](Connection&) -> Result<> {
    std::vector<std::int64_t> doubles;
    std::set<std::string> touched;
    std::set<std::string> given;
    if (auto done = giveAccountKeys(root, doubles, touched); !done) return done;
    if (auto done = giveCategoryKeys(root, given); !done) return done;
    // While all rows that had numbers are there.
    if (auto done = rebuildCategoryOfBook(root); !done) return done;
    for (const auto eid : doubles) {
      if (auto done = removeAccountRow(root, eid); !done) return done;
    }
    // Keys that rows share first: merging goes by keys.
    if (auto done = MVCategory::clearDuplicateCategoryPK(root); !done)
      return tl::make_unexpected(done.error());
    if (auto done = MVCategory::clearDuplicateCategory(root); !done) return tl::make_unexpected(done.error());
    if (auto done = giveVendorKeys(root, given); !done) return done;
    for (const auto& key : given) {
      auto done = write(root, "update category set editDate = ?, edit_ipid = ? where oldTitle = ?",
                        root.editStamp(), root.itsUDID(), key);
      if (!done) return done;
    }
    if (auto done = nameByKeys(root); !done) return done;
    return countTheTotalBalances(root, touched);
  });
}

}  // namespace moniva
