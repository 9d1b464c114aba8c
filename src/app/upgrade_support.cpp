#include "app/upgrade_support.h"

#include "base/uuid.h"
#include "model/account_balance.h"
#include "model/transaction_type.h"

namespace moniva {
namespace {

/// A second after the epoch, before anything a person did.
constexpr double kBeforeAll = 1;

}  // namespace

std::string derivedKey(std::initializer_list<std::string_view> parts) {
  std::string name;
  for (const auto part : parts) name.append(part).append("\n");
  return nameBasedUuidV7(kBeforeAll, name);
}

Result<std::vector<std::string>> loadedTexts(MVAppRoot& root, std::string_view sql,
                                             std::initializer_list<Value> slots) {
  return loaded(root, sql, slots, [](const Run& run) { return std::string(run.text(0)); });
}

Result<std::set<std::string, std::less<>>> columnsOf(MVAppRoot& root, std::string_view table) {
  const auto names = loadedTexts(root, "select name from pragma_table_info(?)", {table});
  if (!names) return tl::make_unexpected(names.error());
  return std::set<std::string, std::less<>>(names->begin(), names->end());
}

Result<> writeAll(MVAppRoot& root, std::initializer_list<std::string_view> statements) {
  for (const auto sql : statements) {
    if (auto done = write(root, sql); !done) return done;
  }
  return {};
}

std::string quotedName(std::string_view name) {
  std::string quoted = "\"";
  for (const char c : name) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + "\"";
}

Result<std::string> rowAsText(MVAppRoot& root, std::string_view table, std::int64_t rowid) {
  const auto columns = columnsOf(root, table);
  if (!columns) return tl::make_unexpected(columns.error());
  std::string parts;
  for (const auto& column : *columns) {
    std::string value = fmt::format("quote({})", quotedName(column));
    if (column == "password") {
      value = columns->contains("isGroup") ? "case when isGroup = 1 then quote(password) else '' end" : "''";
    }
    std::string label;
    for (const char c : column) label.append(c == '\'' ? 2 : 1, c);
    parts += fmt::format("{}'{}=' || {}", parts.empty() ? "" : " || ', ' || ", label, value);
  }
  const auto texts =
      loadedTexts(root, fmt::format("select {} from {} where rowid = ?", parts, table), {rowid});
  if (!texts) return tl::make_unexpected(texts.error());
  return texts->empty() ? std::string() : texts->front();
}

Result<> countAllBalances(MVAppRoot& root) {
  const auto keys = loadedTexts(root, "select oldTitle from account where oldTitle != ''");
  if (!keys) return tl::make_unexpected(keys.error());
  return countTheTotalBalances(root, std::set<std::string>(keys->begin(), keys->end()));
}

Result<> removeAccountRow(MVAppRoot& root, std::int64_t eid) {
  const auto text = rowAsText(root, "account", eid);
  if (!text) return tl::make_unexpected(text.error());
  root.db().faultLog().line(fmt::format("== row of account removed: {}", *text));
  return write(root, "delete from account where eid = ?", eid);
}

Result<> repointHolder(MVAppRoot& root, int aKind, bool isGroup, const std::string& from,
                       const std::string& to) {
  using Texts = std::vector<std::string_view>;
  static const Texts ofGroups{
      "update category set parent = ?, editDate = ?, edit_ipid = ? where parent = ? and type in (7, 8)"};
  static const Texts ofBooks{
      "update transactions set book = ?, editDate = ?, edit_ipid = ? where book = ?",
      "update category set title = ?, editDate = ?, edit_ipid = ? where title = ? and type = 8"};
  static const Texts ofAccounts{
      "update transactions set account = ?, editDate = ?, edit_ipid = ? where account = ?",
      // The vendor of a transfer is its other account.
      "update transactions set vendor = ?, editDate = ?, edit_ipid = ? where vendor = ? and (type in (23, 33,"
      " 83) or (type = 85 and syear = 33))",
      "update category set account = ?, editDate = ?, edit_ipid = ? where account = ? and type in (11, 12)",
      "update category set title = ?, editDate = ?, edit_ipid = ? where title = ? and type = 7"};
  const bool isBook = aKind == kBookKind;
  for (const auto sql : isGroup ? ofGroups : isBook ? ofBooks : ofAccounts) {
    if (auto done = write(root, sql, to, root.editStamp(), root.itsUDID(), from); !done) return done;
  }
  const auto columns = columnsOf(root, "categoryofbook");
  if (!columns) return tl::make_unexpected(columns.error());
  // The earlier form of that table knows books by number.
  if (isGroup || !isBook || !columns->contains("cate")) return {};
  return write(root, "update categoryofbook set book = ?, editDate = ?, edit_ipid = ? where book = ?", to,
               root.editStamp(), root.itsUDID(), from);
}

}  // namespace moniva
