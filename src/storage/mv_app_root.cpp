#include "storage/mv_app_root.h"

#include <algorithm>
#include <utility>

#include "calendar/date_texts.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

struct Default {
  std::string_view key;
  std::string_view value;
};

/// Settings whose default is not empty.
constexpr std::array kDefaults = {
    Default{"AutoFillDecimalDot", "0"},
    Default{"keyBoardSoundEnabled", "1"},
    Default{"SavePhotosToCameraRoll", "0"},
    Default{"recordTransactionsTime", "1"},
    Default{"numberKeypadStyle", "0"},
    Default{"useLastCategoryWhenAddNewTransactions", "1"},
    Default{"expenseAmountFontColor", "#FF3333"},
    Default{"incomeAmountFontColor", "#4E980D"},
    Default{"enabledTemplateAdded", "0"},
    Default{"_VendorCategoryOrderType", "0"},
    Default{"_PayerCategoryOrderType", "0"},
    Default{"weeklyReportType", "0"},
    Default{"monthlyReportType", "0"},
    Default{"yearlyReportType", "0"},
    Default{"allDateReportType", "0"},
    Default{"otherDateReportType", "0"},
    Default{"iCloudSyncEnabled", "0"},
    Default{"enabledPrivateCKSync", "0"},
    Default{"accountListType", "0"},
    Default{"bookListType", "0"},
    Default{"AddExpenseLikeShoppingCart", "0"},
    Default{"RemindMeBackup", "0"},
    Default{"RemindMeSync", "0"},
    Default{"dailyTransactionCellType", "0"},
    Default{"enabledIndividualPayDate", "0"},
    Default{"themeNaviBarStyleForDark", "0"},
    Default{"themeNaviBarStyleForLight", "0"},
    Default{"themeTintColor", "#2470D8"},
    Default{"themeAddTransBarStyle", "#005AB0"},
    Default{"themeAddTransViewStyle", "0"},
    Default{"themeAppStyle", "0"},
    Default{"_enabledTouchID", "0"},
    Default{"AutoBackup", "0"},
    Default{"enabledCategoryForBook", "0"},
};

}  // namespace

MVAppRoot::MVAppRoot(Platform& platform, DoDB& db) : platform_(platform), db_(db) {}

MVAppRoot::~MVAppRoot() = default;

const std::string& MVAppRoot::itsUDID() {
  std::call_once(udidMade_, [this] {
    auto& defaults = *platform_.userDefaults;
    udid_ = defaults.stringForKey("itsUDID").value_or("");
    if (!udid_.empty()) return;
    const std::string made = newIdentifier();
    auto kept = defaults.stringForKeyOrSet("itsUDID", made);
    if (!kept) addNotice(kept.error());
    udid_ = kept.value_or(made);
  });
  return udid_;
}

Date MVAppRoot::editStamp() {
  Connection* db = db_.getDatabase();
  return db != nullptr ? stamps_.next(*db, now()) : now();
}

std::string MVAppRoot::newIdentifier() {
  std::array<std::uint8_t, 10> bytes{};
  platform_.random->fill(bytes);
  return identifiers_.next(now().secondsSince1970, bytes);
}

bool MVAppRoot::executeUpdate(std::string_view sql, std::span<const Value> arguments) {
  Connection* db = db_.getDatabase();
  if (db == nullptr) return false;
  if (db->execute(sql, arguments)) return true;
  // A store that is only read is not damaged.
  if (db->isReadOnly()) return false;
  db_.faultLog().line(
      fmt::format("=== 数据库已损坏[{}] {}", db->lastErrorCode() & 0xFF, db->lastErrorMessage()));
  return false;
}

void MVAppRoot::markRecentEditDate() {
  // Taken from the stamps, so that the row that keeps it never goes back either.
  recentEditDate = editStamp();
  platform_.log.line("markRecentEditDate");
}

void MVAppRoot::updateRecentEditDateIfNeed() {
  if (!recentEditDate) return;
  Connection* db = db_.getDatabase();
  if (db == nullptr) return;
  Transaction transaction(*db);
  if (transaction.began() && executeUpdate("delete from monivaSys where key = ?", "recentEditDate") &&
      executeUpdate("insert into monivaSys (value, key,editDate,ipid) values (?,'recentEditDate',?,?)",
                    stringOfDatetime(calendar(), *recentEditDate), *recentEditDate, itsUDID()) &&
      transaction.commit()) {
    return;
  }
  platform_.log.line(fmt::format("== recentEditDate not written: {}", db->lastErrorMessage()));
}

std::string MVAppRoot::defaultForKey(std::string_view key) {
  const auto* found = std::ranges::find(kDefaults, key, &Default::key);
  return found == kDefaults.end() ? std::string() : std::string(found->value);
}

std::string MVAppRoot::objectForKey(std::string_view key) {
  Connection* db = db_.getDatabase();
  if (db != nullptr) {
    Run run = db->query("select value from monivaSys where key = ? order by editDate DESC limit 1", {key});
    if (run.next()) return std::string(run.text(0));
  }
  return defaultForKey(key);
}

bool MVAppRoot::setObject(std::string_view value, std::string_view key) {
  bool written = false;
  const bool ran = db_.inDatabase("MVAppRoot", [&](Connection& connection) {
    Transaction transaction(connection);
    written =
        transaction.began() && executeUpdate("delete from monivaSys where key = ?", key) &&
        executeUpdate("insert into monivaSys (value,key,editDate) values(?,?,?)", value, key, editStamp()) &&
        transaction.commit();
  });
  return ran && written;
}

std::vector<std::string> MVAppRoot::takeNotices() {
  const std::scoped_lock lock(noticesMutex_);
  return std::exchange(notices_, {});
}

void MVAppRoot::addNotice(const Phrase& text) {
  auto notice = text.in([this](std::string_view english) { return platform_.localized(english); });
  const std::scoped_lock lock(noticesMutex_);
  if (told_.insert(notice).second) notices_.push_back(std::move(notice));
}

}  // namespace moniva
