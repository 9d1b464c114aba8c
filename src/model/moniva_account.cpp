#include "model/moniva_account.h"

#include <algorithm>
#include <boost/json.hpp>

#include "base/text.h"
#include "model/title.h"
#include "model/transaction_type.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// What a row is loaded from, in the order in which `read` takes it.
constexpr std::string_view kAccountColumns =
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

MonivaAccount MonivaAccount::pseudo(MVAppRoot& root, std::string_view type) {
  MonivaAccount account(root);
  account.aKind = kAccountKind;
  account.pk = account.aType = account.title = type;
  return account;
}

std::vector<MonivaAccount> MonivaAccount::list(MVAppRoot& root, int aKind, Rows which) {
  std::vector<MonivaAccount> rows;
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return rows;
  const std::string_view chosen = which == Rows::deleted  ? "deleted != 0"
                                  : which == Rows::groups ? "deleted = 0 and isGroup = 1"
                                                          : "deleted = 0 and isGroup = 0";
  Run run = db->query(fmt::format("select {}, oldTitle from account where kind = ? and {} order by orderID, "
                                  "eid",
                                  kAccountColumns, chosen),
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
  Run run = db->query(fmt::format("select {} from account where oldTitle = ?", kAccountColumns), {pk});
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

bool MonivaAccount::isOtherAccount() const {
  return isAccount() && !isSavingAccount() && !isDebtAccount() && !isPrepaidAccount() && !isDiscountAccount();
}

bool MonivaAccount::isEmpty() const {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return false;
  Run run =
      db->query(isBook() ? "select count(eid) as eid_count from transactions where book = ? and type < 20"
                         : "select count(eid) as eid_count from transactions where account = ? and type < 50",
                {pk});
  return run.next() && run.integer(0) == 0;
}

Result<std::int64_t> MonivaAccount::recordCount() const {
  return rowCount("type not in (64, 85, 86)");
}

Result<std::int64_t> MonivaAccount::seriesCount() const {
  return rowCount("type = 85");
}

Result<std::int64_t> MonivaAccount::rowCount(std::string_view condition) const {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(fmt::format("select count(eid) from transactions where {} and deleted = 0 and {}",
                                  accountQuerySQL(*this), condition),
                      {pk});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return run.integer(0);
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

Result<MonivaAccount::Added> MonivaAccount::add() {
  if (auto usable = checkTitle(title, isBook() ? phrase("a book") : phrase("a payment account")); !usable)
    return tl::make_unexpected(usable.error());
  if (isAccount() && trimBlanks(aType).empty()) aType = "_SavingAccount";
  if (isBook() && trimBlanks(aType).empty()) aType = "_Book";
  if (isAccount() && trackingType == 1112) trackingType = 1050;
  if (isBook() && trackingType == 1050) trackingType = 1112;

  return atomically(*root_, [this](Connection& db) -> Result<Added> {
    std::string revived;
    {
      Run run = db.query(
          "select oldTitle, type from account where title = ? and kind = ? and isGroup = ? and deleted = 1"
          " order by editDate DESC",
          {title, aKind, isGroup});
      if (run.next()) revived = run.text(0);
      if (!run.ok()) return tl::make_unexpected(db.refusal());
    }
    if (!revived.empty()) {
      const auto written = write(
          *root_, "update account set deleted = 0, enabled = 1, editDate=?, edit_ipid = ? where oldTitle=?",
          root_->editStamp(), root_->itsUDID(), revived);
      if (!written) return tl::make_unexpected(written.error());
      const std::string ownNote = note;
      pk = revived;
      getInfo();
      if (trimBlanks(ownNote).empty()) note = ownNote;
      return Added::revived;
    }
    pk = root_->newIdentifier();
    if (orderID == 0) {
      Run run = db.query("select max(orderID) from account where kind = ?", {aKind});
      if (!run.next()) return tl::make_unexpected(db.refusal());
      orderID = static_cast<int>(run.integer(0)) + 1;
    }
    if (isBook()) expandOptionDict["overviewUI"] = std::string(overviewUI(root_->platform().info.edition));
    expandOptionDict["expenseCategoryOrderType"] = "0";
    expandOptionDict["incomeCategoryOrderType"] = "0";
    expandOptionDict["showProfitForSummary"] = showProfitForSummary;
    const auto written = write(
        *root_,
        "insert into account (title, type, beginBalance, currency, enabled, orderID, editDate, kind, deleted,"
        " incomeEnabled, budgetEnabled, note, oldTitle, isGroup, edit_ipid, familyUser, expandOption)"
        " values(?,?,?,?,1,?,?,?,0,?,?,?,?,?,?,'',?)",
        title, aType, beginBalance, currency, orderID, root_->editStamp(), aKind, trackingType, budgetEnabled,
        note, pk, isGroup, root_->itsUDID(), boost::json::serialize(expandOptionDict));
    if (!written) return tl::make_unexpected(written.error());
    return Added::anew;
  });
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
  if (auto kept = MonivaAccount::getAccountWithPK(root, key);
      kept && kept->isDeleted == 0 && kept->isBook()) {
    *book = std::move(*kept);
  } else if (auto books = MonivaAccount::list(root, kBookKind); !books.empty()) {
    // An upgrade may have given the book another key.
    const auto title = root.platform().userDefaults->stringForKey("accountTitle").value_or("");
    auto next = key.empty() ? books.end() : std::ranges::find(books, title, &MonivaAccount::title);
    if (next == books.end()) next = std::ranges::find(books, true, &MonivaAccount::enabled);
    *book = std::move(next != books.end() ? *next : books.front());
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
