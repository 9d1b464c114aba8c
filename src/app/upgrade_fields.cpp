// Columns that earlier versions filled in another way, or not at all.

#include <algorithm>
#include <boost/json.hpp>

#include "app/do_db_updater.h"
#include "app/run_once.h"
#include "app/upgrade_support.h"
#include "base/text.h"
#include "calendar/date_texts.h"
#include "calendar/zone.h"
#include "model/account_balance.h"
#include "model/moniva_account.h"

namespace moniva {
namespace {

Result<bool> hasAny(MVAppRoot& root, std::string_view condition) {
  const auto found = loadedTexts(root, fmt::format("select 1 from transactions where {} limit 1", condition));
  if (!found) return tl::make_unexpected(found.error());
  return !found->empty();
}

/// The options that a text of an earlier version says, as JSON; blank for one that says nothing known: the
/// style of a dashboard alone, or names and values ("overviewUI = ...; showProfitForSummary = 1;").
std::string optionsOf(std::string_view text) {
  text = trimBlanks(text);
  if (text.starts_with('{') && text.ends_with('}')) text = text.substr(1, text.size() - 2);
  boost::json::object options;
  const auto& styles = MonivaAccount::overviewStyles();
  while (!text.empty()) {
    const auto end = std::min(text.find_first_of(";\n&"), text.size());
    const auto part = trimBlanks(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (part.empty()) continue;
    const auto sign = part.find('=');
    if (sign == std::string_view::npos) {
      if (std::ranges::find(styles, part) == styles.end() && part != "BookDashboardControllerClassic")
        return "";
      options["overviewUI"] = part;
      continue;
    }
    const auto plain = [](std::string_view word) {
      word = trimBlanks(word);
      return word.size() > 1 && word.front() == '"' && word.back() == '"' ? word.substr(1, word.size() - 2)
                                                                          : word;
    };
    const auto name = plain(part.substr(0, sign));
    const auto value = plain(part.substr(sign + 1));
    constexpr std::string_view marks = "{}\"";
    if (name.empty() || name.find_first_of(marks) != std::string_view::npos ||
        value.find_first_of(marks) != std::string_view::npos) {
      return "";
    }
    options[name] = value;
  }
  return options.empty() ? std::string() : boost::json::serialize(options);
}

Result<> convertOptions(MVAppRoot& root) {
  struct Row {
    std::int64_t eid;
    std::string text;
  };
  const auto rows =
      loaded(root, "select eid, expandOption from account where expandOption != ''", {}, [](const Run& run) {
        return Row{run.integer(0), std::string(run.text(1))};
      });
  if (!rows) return tl::make_unexpected(rows.error());
  for (const auto& row : *rows) {
    boost::system::error_code error;
    boost::json::parse(row.text, error);
    if (!error) continue;
    const std::string options = optionsOf(row.text);
    if (options.empty()) {
      root.platform().log.line(fmt::format("== options of an account not understood: {}", excerpt(row.text)));
      continue;
    }
    auto done = write(root, "update account set expandOption = ?, editDate = ?, edit_ipid = ? where eid = ?",
                      options, root.editStamp(), root.itsUDID(), row.eid);
    if (!done) return done;
  }
  return {};
}

/// The zone of a record was kept as the user of shared data for a while.
Result<> moveZones(MVAppRoot& root) {
  constexpr std::string_view which =
      "type < 50 and familyUser like '%/%' and (barcode = '' or barcode is NULL)";
  const auto names =
      loadedTexts(root, fmt::format("select distinct familyUser from transactions where {}", which));
  if (!names) return tl::make_unexpected(names.error());
  for (const auto& name : *names) {
    if (!Zone::make(name)) continue;
    auto done =
        write(root,
              fmt::format("update transactions set barcode = familyUser, familyUser = '', editDate = ?,"
                          " edit_ipid = ? where {} and familyUser = ?",
                          which),
              root.editStamp(), root.itsUDID(), name);
    if (!done) return done;
  }
  return {};
}

}  // namespace

Result<> updateNOCategoryTitle(MVAppRoot& root) {
  return atomically(root, [&](Connection&) -> Result<> {
    constexpr std::string_view which =
        "(category = '' or category is NULL) and (book = '' or book is NULL) and subcategory != ''"
        " and subcategory != '#NOMVCATEGORY' and typeof(subcategory) = 'text'";
    const auto chosen =
        loadedTexts(root, fmt::format("select distinct subcategory from transactions where {}", which));
    if (!chosen) return tl::make_unexpected(chosen.error());
    for (const auto& key : *chosen) {
      // One that is below another keeps its place below it.
      const auto parent =
          loadedTexts(root,
                      "select parent from category where oldTitle = ? and type in (11, 12) and"
                      " parent != '_rootCate' and parent != '' order by deleted, pk limit 1",
                      {key});
      if (!parent) return tl::make_unexpected(parent.error());
      const bool isBelow = !parent->empty();
      auto done = write(root,
                        fmt::format("update transactions set category = ?, subcategory = ?, editDate = ?,"
                                    " edit_ipid = ? where {} and subcategory = ?",
                                    which),
                        isBelow ? parent->front() : key, isBelow ? std::string_view(key) : kNoCategory,
                        root.editStamp(), root.itsUDID(), key);
      if (!done) return done;
    }
    return {};
  });
}

Result<> updateFixData(MVAppRoot& root) {
  return atomically(root, [&](Connection&) -> Result<> {
    const auto any =
        hasAny(root,
               "syear = 1000 or syear is NULL or (syear > 1900 and type < 51) or account is NULL"
               " or book is NULL or transferEID is NULL or category is NULL or currency2 is NULL or"
               " subcategory is NULL or (subcategory = '' and type < 50)");
    if (!any) return tl::make_unexpected(any.error());
    if (!*any) return {};
    const Date now = root.now();
    auto marked = write(root, "delete from monivaSys where key = 'crashNeedFix_updateFixDataDate'");
    if (marked) {
      marked = write(
          root, "insert into monivaSys (value,key,editDate) values(?,'crashNeedFix_updateFixDataDate',?)",
          stringOfDatetime(root.calendar(), now), root.editStamp());
    }
    if (!marked) return marked;
    return writeAll(
        root,
        {("update transactions set syear = 0 where syear = 1000 or syear is NULL or (syear > 1900 and type"
          " < 51)"),
         "update transactions set account = '' where account is NULL",
         "update transactions set book = '' where book is NULL",
         "update transactions set transferEID = '' where transferEID is NULL",
         "update transactions set category = '' where category is NULL",
         "update transactions set currency2 = '' where currency2 is NULL",
         "update transactions set subcategory = '#NOMVCATEGORY' where subcategory is NULL",
         "update transactions set subcategory = '#NOMVCATEGORY' where subcategory = '' and type < 50",
         // By value: the row of the key tells when it was last done.
         "delete from monivaSys where value = 'crashNeedFix_updateFixDataDate'"});
  });
}

Result<> updateDataFiled202102(MVAppRoot& root) {
  return atomically(root, [&](Connection&) -> Result<> {
    if (auto done = convertOptions(root); !done) return done;
    auto done = write(root,
                      "update monivaSys set value = '0', editDate = ?, edit_ipid = ? where key ="
                      " 'enabledCategoryForBook' and value != '0'",
                      root.editStamp(), root.itsUDID());
    if (!done) return done;
    // A plain record says in its one row which account paid it. Where payments say so the account of the
    // item would count the money twice.
    constexpr std::string_view paidTwice =
        "bid = 20 and type = 12 and account != '' and transferEID != '' and deleted = 0 and exists (select 1"
        " from transactions as payment where payment.transferEID = transactions.transferEID and payment.bid ="
        " 10 and payment.type = 12 and payment.deleted = 0)";
    const auto accounts =
        loadedTexts(root, fmt::format("select distinct account from transactions where {}", paidTwice));
    if (!accounts) return tl::make_unexpected(accounts.error());
    if (!accounts->empty()) {
      done = write(root,
                   fmt::format("update transactions set account = '', editDate = ?, edit_ipid = ? where {}",
                               paidTwice),
                   root.editStamp(), root.itsUDID());
      if (!done) return done;
    }
    done =
        write(root,
              "update transactions set vendor = '', editDate = ?, edit_ipid = ? where bid = 20 and type = 14"
              " and vendor != ''",
              root.editStamp(), root.itsUDID());
    if (!done) return done;
    if (done = moveZones(root); !done) return done;
    return countTheTotalBalances(root, std::set<std::string>(accounts->begin(), accounts->end()));
  });
}

Result<> updateDataFiled2(MVAppRoot& root) {
  return runOnce(root, "updateDataFiled2", [&](Connection&) -> Result<> {
    // What is NULL was not written; the column's default is meant. NULL would be in no list and no sum.
    constexpr std::string_view unwritten = "deleted is NULL or paid is NULL";
    const auto holders =
        loadedTexts(root, fmt::format("select account from transactions where {0} union select book from"
                                      " transactions where {0}",
                                      unwritten));
    if (!holders) return tl::make_unexpected(holders.error());
    for (const auto& [table, column, value] :
         {std::tuple("transactions", "deleted", 0), std::tuple("transactions", "paid", 1),
          std::tuple("account", "deleted", 0), std::tuple("account", "enabled", 1),
          std::tuple("category", "deleted", 0)}) {
      auto done = write(
          root,
          fmt::format("update {0} set {1} = ?, editDate = ?, edit_ipid = ? where {1} is NULL", table, column),
          value, root.editStamp(), root.itsUDID());
      if (!done) return done;
    }
    return countTheTotalBalances(root, std::set<std::string>(holders->begin(), holders->end()));
  });
}

}  // namespace moniva
