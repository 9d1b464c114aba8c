#include "model/category_rows.h"

namespace moniva {
namespace {

/// A row of a book, as far as a merge asks.
struct BookRow {
  std::int64_t place = 0;
  std::string book;
  bool isOfWinner = false;
  std::int64_t used = 0;
};

/// One row a book for the winner, its own newest where it has one, with the uses of all. A row that comes
/// from the loser is on: that the loser was off, or deleted, says nothing of the winner.
bool repointBookRows(MVAppRoot& root, const std::string& loser, const std::string& winner) {
  std::vector<BookRow> rows;
  {
    Run run = root.db().getDatabase()->query(
        "select rowid, coalesce(book, ''), cate = ?, used from categoryofbook where cate in (?, ?) order by"
        " 2, 3 DESC, typeof(editDate) = 'text', editDate DESC, rowid DESC",
        {winner, winner, loser});
    while (run.next()) {
      rows.push_back({run.integer(0), std::string(run.text(1)), run.integer(2) != 0, run.integer(3)});
    }
    if (!run.ok()) return false;
  }
  bool written = true;
  for (auto kept = rows.begin(); written && kept != rows.end();) {
    auto row = kept + 1;
    std::int64_t used = kept->used;
    for (; written && row != rows.end() && row->book == kept->book; ++row) {
      used += row->used;
      written = root.executeUpdate("delete from categoryofbook where rowid = ?", row->place);
    }
    if (written && used != kept->used) {
      written = root.executeUpdate("update categoryofbook set used = ? where rowid = ?", used, kept->place);
    }
    if (written && !kept->isOfWinner) {
      written = root.executeUpdate(
          "update categoryofbook set cate = ?, editDate = ?, edit_ipid=?, enabled = 1 where rowid = ?",
          winner, root.editStamp(), root.itsUDID(), kept->place);
    }
    kept = row;
  }
  return written;
}

/// A book has one budget for a category: where the winner has one, the loser's is removed.
bool mergeBudgets(MVAppRoot& root, const std::string& loser, const std::string& winner,
                  std::string_view kinds) {
  return root.executeUpdate(
      fmt::format("update transactions set category = ?, deleted = 3, ipid = 'delete by merge of categories',"
                  " editDate = ?, edit_ipid = ? where category = ? and type = ? and deleted = 0 and book in"
                  " (select book from transactions where category = ? and type = ? and deleted = 0){}",
                  kinds),
      winner, root.editStamp(), root.itsUDID(), loser, kind::kCategoryAllocation, winner,
      kind::kCategoryAllocation);
}

}  // namespace

bool chooseTopItself(MVAppRoot& root, const MVCategory& top, std::string_view chosen) {
  const auto kinds = kindsOf(root, top.pk, top.type);
  return kinds && root.executeUpdate(
                      fmt::format("update transactions set subcategory = ?, editDate = ?, edit_ipid=?, ipid ="
                                  " 'batchEdit' where category = ? and (subcategory = '' or subcategory ="
                                  " '#NOMVCATEGORY') and bid is not '10' and type != ?{}",
                                  *kinds),
                      chosen, root.editStamp(), root.itsUDID(), top.pk, kind::kCategoryAllocation);
}

bool retopCategory(MVAppRoot& root, const MVCategory& category, std::string_view top) {
  const auto kinds = kindsOf(root, category.pk, category.type);
  return kinds &&
         root.executeUpdate(
             fmt::format("update transactions set category = ?, editDate = ?, edit_ipid=?, ipid = 'batchEdit'"
                         " where category = ? and type != ?{}",
                         *kinds),
             top, root.editStamp(), root.itsUDID(), category.pk, kind::kCategoryAllocation) &&
         root.executeUpdate(
             "update category set parent = ?, editDate = ?, edit_ipid=? where parent = ? and type = ?", top,
             root.editStamp(), root.itsUDID(), category.pk, category.type);
}

bool paymentsFollow(MVAppRoot& root, std::string_view items, const std::vector<Value>& values,
                    std::string_view fromTop, std::string_view toTop) {
  std::vector<Value> all{toTop, root.editStamp(), root.itsUDID(), fromTop};
  all.insert(all.end(), values.begin(), values.end());
  all.insert(all.end(), values.begin(), values.end());
  return root.executeUpdate(
      fmt::format(
          "update transactions set category = ?, editDate = ?, ipid = 'batchEdit', edit_ipid = ?"
          " where bid = '10' and category = ? and transferEID in (select transferEID from transactions"
          " where transferEID != '' and bid is not '10' and {0}) and transferEID not in (select"
          " transferEID from transactions where transferEID != '' and bid is not '10' and deleted < 2"
          " and not ({0}))",
          items),
      std::span<const Value>(all));
}

bool repointCategory(MVAppRoot& root, const MVCategory& loser, const MVCategory& winner) {
  const std::string& udid = root.itsUDID();
  const auto shared = kindsOf(root, loser.pk, loser.type);
  if (!shared) return false;
  const std::string& kinds = *shared;
  const bool loserIsTop = !loser.isSubCate();
  if (loserIsTop && winner.isSubCate() &&
      !(chooseTopItself(root, loser, winner.pk) && retopCategory(root, loser, topKey(winner)))) {
    return false;
  }
  if (topKey(loser) != topKey(winner) &&
      !(paymentsFollow(root, fmt::format("subcategory = ?{}", kinds), {loser.pk}, topKey(loser),
                       topKey(winner)) &&
        root.executeUpdate(
            fmt::format("update transactions set category = ?, editDate = ?, ipid = 'batchEdit', edit_ipid"
                        " = ? where subcategory=?{}",
                        kinds),
            topKey(winner), root.editStamp(), udid, loser.pk))) {
    return false;
  }
  for (const char* column : {"category", "subcategory"}) {
    if ((*column == 'c' && !mergeBudgets(root, loser.pk, winner.pk, kinds)) ||
        !root.executeUpdate(fmt::format("update transactions set {0} = ?, editDate = ?, edit_ipid=?, ipid ="
                                        " 'batchEdit' where {0} = ?{1}",
                                        column, kinds),
                            winner.pk, root.editStamp(), udid, loser.pk)) {
      return false;
    }
  }
  // Rows of books whose key income and expense share belong to either, and stay.
  return root.executeUpdate(
             "update category set parent = ?, editDate = ?, edit_ipid=? where parent = ? and type = ?",
             topKey(winner), root.editStamp(), udid, loser.pk, loser.type) &&
         root.executeUpdate(
             "update category set oldParent = ?, editDate = ?, edit_ipid=? where oldParent = ? and type = ?",
             topKey(winner), root.editStamp(), udid, loser.pk, loser.type) &&
         root.executeUpdate(
             "update category set account = (select account from category where oldTitle = ?1 and type = ?2),"
             " editDate = ?3, edit_ipid = ?4 where oldTitle = ?5 and type = ?2 and coalesce(account, '') = ''"
             " and exists (select 1 from category where oldTitle = ?1 and type = ?2 and account != '')",
             loser.pk, loser.type, root.editStamp(), udid, winner.pk) &&
         (!kinds.empty() || repointBookRows(root, loser.pk, winner.pk)) &&
         root.executeUpdate("update category set usedTimes = usedTimes+? where oldTitle=? and type = ?",
                            loser.usedTimes, winner.pk, winner.type);
}

}  // namespace moniva
