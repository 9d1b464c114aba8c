#include "model/moniva_account.h"

#include <boost/json.hpp>

#include "model/title.h"
#include "model/transaction_type.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// What a row is loaded from, in the order in which `read` takes it.
constexpr std::string_view kColumns =
    "title, type, beginBalance, currency, enabled, note, budgetEnabled, incomeEnabled, weekStartsOn, "
    "monthstartsOn,"
    " yearStartsOn, totalBalance, orderID, kind, isGroup, editDate, expandOption, deleted";
constexpr int kColumnCount = 18;

boost::json::object parsedOptions(std::string_view text) {
  boost::system::error_code error;
  auto value = boost::json::parse(boost::json::string_view(text.data(), text.size()), error);
  return !error && value.is_object() ? std::move(value.get_object()) : boost::json::object();
}

/// The dashboard of a new book.
std::string_view overviewUI(Edition edition) {
  switch (edition) {
    case Edition::plus:
      return "BookDashboardModernControllerV2";
    case Edition::firstTablet:
      return "BookDashboardPadController";
    default:
      return "BookDashboardControllerV1";
  }
}

boost::json::string_view orderKey(int categoryType) {
  return categoryType == kind::kIncome ? "incomeCategoryOrderType" : "expenseCategoryOrderType";
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

}  // namespace

std::optional<MonivaAccount> MonivaAccount::getAccountWithPK(MVAppRoot& root, std::string_view pk) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr || pk.empty()) return std::nullopt;
  {
    Run run = db->query("select oldTitle from account where oldTitle = ?", {pk});
    if (!run.next()) return std::nullopt;
  }
  MonivaAccount account(root);
  account.pk = pk;
  if (!account.getInfo()) return std::nullopt;
  return account;
}

std::optional<MonivaAccount> MonivaAccount::withTitle(MVAppRoot& root, int aKind, std::string_view title) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return std::nullopt;
  std::string key;
  {
    // Of several rows of a title the one in use is meant.
    Run run = db->query(
        fmt::format("select oldTitle, isGroup, deleted, enabled from account where kind = {} and title = ?"
                    " order by deleted, isGroup, enabled DESC, editDate DESC",
                    aKind),
        {title});
    if (!run.next()) return std::nullopt;
    key = run.text(0);
  }
  return getAccountWithPK(root, key);
}

std::optional<MonivaAccount> MonivaAccount::getAccountWithTitle(MVAppRoot& root, std::string_view title) {
  return withTitle(root, kAccountKind, title);
}

std::optional<MonivaAccount> MonivaAccount::getBookWithTitle(MVAppRoot& root, std::string_view title) {
  return withTitle(root, kBookKind, title);
}

std::vector<MonivaAccount> MonivaAccount::list(MVAppRoot& root, int aKind) {
  std::vector<MonivaAccount> rows;
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return rows;
  Run run = db->query(fmt::format("select {}, oldTitle from account where kind = ? and deleted = 0 and "
                                  "isGroup = 0 order by orderID, eid",
                                  kColumns),
                      {aKind});
  while (run.next()) {
    MonivaAccount row(root);
    row.read(run);
    row.pk = run.text(kColumnCount);
    rows.push_back(std::move(row));
  }
  return rows;
}

bool MonivaAccount::getInfo() {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return false;
  Run run = db->query(fmt::format("select {} from account where oldTitle = ?", kColumns), {pk});
  if (!run.next()) return false;
  read(run);
  return true;
}

void MonivaAccount::read(const Run& run) {
  title = run.text(0);
  aType = run.text(1);
  beginBalance = run.real(2);
  currency = run.text(3);
  enabled = run.integer(4) != 0;
  note = run.text(5);
  budgetEnabled = run.integer(6) != 0;
  trackingType = static_cast<int>(run.integer(7));
  weekStartsOn = static_cast<int>(run.integer(8));
  monthStartsOn = static_cast<int>(run.integer(9));
  yearStartsOn = static_cast<int>(run.integer(10));
  totalBalance = run.real(11);
  orderID = static_cast<int>(run.integer(12));
  aKind = static_cast<int>(run.integer(13));
  isGroup = run.integer(14) != 0;
  editDate = run.date(15);
  expandOptionDict = parsedOptions(run.text(16));
  isDeleted = static_cast<int>(run.integer(17));
  if (const auto* profit = expandOptionDict.if_contains("showProfitForSummary");
      profit && profit->is_string()) {
    showProfitForSummary = std::string(profit->get_string());
  }
}

void MonivaAccount::setType(std::string_view type) {
  aType = type;
  if (type == "_PrepaidAccount") {
    trackingType = 2312;
  } else if (type == "_DiscountAccount") {
    trackingType = 12;
  } else if (type == "_Book") {
    trackingType = 1112;
  } else {
    trackingType = 1050;
  }
  // What only goes out shows no profit.
  showProfitForSummary = trackingType == 12 || trackingType == 2312 ? "0" : "1";
  expandOptionDict["showProfitForSummary"] = showProfitForSummary;
}

Result<> MonivaAccount::add() {
  if (auto usable = checkTitle(title, isBook() ? "a book" : "a payment account"); !usable) return usable;
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  if (isAccount() && isBlank(aType)) aType = "_SavingAccount";
  if (isBook() && isBlank(aType)) aType = "_Book";
  if (isAccount() && trackingType == 1112) trackingType = 1050;
  if (isBook() && trackingType == 1050) trackingType = 1112;

  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  std::string revived;
  {
    Run run = db->query(
        "select oldTitle, type from account where title = ? and kind = ? and isGroup = ? and deleted = 1"
        " order by editDate DESC",
        {title, aKind, isGroup});
    if (run.next()) revived = run.text(0);
  }
  bool written = false;
  if (!revived.empty()) {
    written = root_->executeUpdate(
        "update account set deleted = 0, enabled = 1, editDate=?, edit_ipid = ? where oldTitle=?",
        root_->editStamp(), root_->itsUDID(), revived);
    const std::string ownNote = note;
    pk = revived;
    getInfo();
    if (isBlank(ownNote)) note = ownNote;
  } else {
    pk = root_->newIdentifier();
    if (orderID == 0) {
      Run run = db->query("select max(orderID) from account where kind = ?", {aKind});
      if (run.next()) orderID = static_cast<int>(run.integer(0)) + 1;
    }
    if (isBook()) expandOptionDict["overviewUI"] = std::string(overviewUI(root_->platform().info.edition));
    expandOptionDict["expenseCategoryOrderType"] = "0";
    expandOptionDict["incomeCategoryOrderType"] = "0";
    expandOptionDict["showProfitForSummary"] = showProfitForSummary;
    written = root_->executeUpdate(
        "insert into account (title, type, beginBalance, currency, enabled, orderID, editDate, kind, deleted,"
        " incomeEnabled, budgetEnabled, note, oldTitle, isGroup, edit_ipid, familyUser, expandOption)"
        " values(?,?,?,?,1,?,?,?,0,?,?,?,?,?,?,'',?)",
        title, aType, beginBalance, currency, orderID, root_->editStamp(), aKind, trackingType, budgetEnabled,
        note, pk, isGroup, root_->itsUDID(), boost::json::serialize(expandOptionDict));
  }
  if (!written || !transaction.commit()) return tl::make_unexpected(db->refusal());
  return {};
}

Result<> MonivaAccount::addWithPeriods(PeriodStarts starts) {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  if (auto added = add(); !added) return added;
  const bool written = (starts.weekStartsOn == 0 || updateWeekStartsOn(starts.weekStartsOn)) &&
                       (starts.monthStartsOn == 0 || updateMonthStartsOn(starts.monthStartsOn)) &&
                       (starts.yearStartsOn == 0 || updateYearStartsOn(starts.yearStartsOn));
  if (!written || !transaction.commit()) return tl::make_unexpected(db->refusal());
  return {};
}

bool MonivaAccount::update(std::string_view sql, const Value& value) {
  return root_->executeUpdate(sql, value, root_->editStamp(), root_->itsUDID(), pk);
}

bool MonivaAccount::updateWeekStartsOn(int day) {
  weekStartsOn = day;
  return update("update account set weekStartsOn = ?, editDate = ?, edit_ipid = ? where oldTitle = ?", day);
}

bool MonivaAccount::updateMonthStartsOn(int day) {
  monthStartsOn = day;
  return update("update account set monthStartsOn = ?, editDate = ?, edit_ipid = ? where oldTitle = ?", day);
}

bool MonivaAccount::updateYearStartsOn(int month) {
  yearStartsOn = month;
  return update("update account set yearStartsOn = ?, editDate = ?, edit_ipid = ? where oldTitle = ?", month);
}

bool MonivaAccount::updateExpandOption() {
  return update("update account set expandOption = ?, editDate = ?, edit_ipid = ? where oldTitle = ?",
                boost::json::serialize(expandOptionDict));
}

std::string MonivaAccount::getCategoryOrder(int type) const {
  const auto* mode = expandOptionDict.if_contains(orderKey(type));
  return mode != nullptr && mode->is_string() ? std::string(mode->get_string()) : "0";
}

bool MonivaAccount::setCategoryOrder(std::string_view mode, int type) {
  expandOptionDict[orderKey(type)] = boost::json::string_view(mode.data(), mode.size());
  return updateExpandOption();
}

bool MonivaAccount::updateTotalBalance(double balance) {
  totalBalance = balance;
  return root_->executeUpdate("update account set totalBalance=? where oldTitle=?", balance, pk);
}

bool MonivaAccount::addToTotalBalance(double amount) {
  totalBalance += amount;
  return root_->executeUpdate("update account set totalBalance=totalBalance+? where oldTitle=?", amount, pk);
}

void MonivaAccount::saveToLocal() const {
  auto& defaults = *root_->platform().userDefaults;
  defaults.setString(pk, "accountPK");
  defaults.setString(title, "accountTitle");
  defaults.setString(aType, "accountType");
}

void refreshUsingMonivaAccount(MVAppRoot& root) {
  auto book = std::make_shared<MonivaAccount>(root);
  book->aKind = kBookKind;
  const auto key = root.platform().userDefaults->stringForKey("accountPK").value_or("");
  if (auto kept = MonivaAccount::getAccountWithPK(root, key); kept && kept->isDeleted == 0) {
    *book = std::move(*kept);
  } else if (auto books = MonivaAccount::list(root, kBookKind); !books.empty()) {
    *book = std::move(books.front());
  }
  root.monivaAccount = std::move(book);
}

std::string_view accountQuerySQL(const MonivaAccount& account) {
  if (account.isBook()) {
    return account.isGroup
               ? "book in (select title from category where parent=? and type = 8 and deleted = 0)"
               : "book=?";
  }
  return account.isGroup
             ? "account in (select title from category where parent=? and type = 7 and deleted = 0)"
             : "account=?";
}

}  // namespace moniva
