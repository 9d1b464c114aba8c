#include "reports/keyword_forms.h"
#include "reports/search.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// The rows stand among the categories. No list of these, of vendors, of groups or of currencies has rows of
/// this type and parent.
constexpr int kTypeOfSearches = 0;

/// Runs a deletion and answers how many rows it took.
Result<std::int64_t> forget(MVAppRoot& root, std::string_view sql, std::initializer_list<Value> arguments) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  if (!root.executeUpdate(sql, std::span<const Value>(arguments.begin(), arguments.size()))) {
    return tl::make_unexpected(db->refusal());
  }
  return db->changes();
}

}  // namespace

Result<> saveSearch(MVAppRoot& root, const std::string& text) {
  if (text.empty()) return refuse("there is no text to keep");
  if (auto checked = checkKeyword(text); !checked) return checked;
  return write(root,
               "insert into category (title, parent, type, editDate, edit_ipid) values"
               " (?,'_searchHistory',?,?,?)",
               text, kTypeOfSearches, root.editStamp(), root.itsUDID());
}

Result<std::vector<std::string>> getSearchList(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select title from category where deleted = 0 and parent = '_searchHistory' order by pk DESC");
  std::vector<std::string> texts;
  while (run.next()) texts.emplace_back(run.text(0));
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return texts;
}

Result<std::int64_t> deleteSearch(MVAppRoot& root, const std::string& text) {
  return forget(root, "delete from category where title=? and parent = '_searchHistory'", {text});
}

Result<std::int64_t> clearAllSearchHistory(MVAppRoot& root) {
  return forget(root, "delete from category where parent = '_searchHistory'", {});
}

}  // namespace moniva
