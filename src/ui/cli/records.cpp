#include "ui/cli/records.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "calendar/date_texts.h"
#include "currency/locale_utils.h"
#include "model/entry_checks.h"
#include "model/mv_category.h"
#include "model/transaction_type.h"
#include "model/vendor_query.h"
#include "ui/cli/command_error.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/rates.h"
#include "ui/cli/text_width.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

namespace json = boost::json;

std::vector<std::string> titlesOf(const std::vector<MonivaAccount>& rows) {
  std::vector<std::string> titles;
  for (const auto& row : rows) titles.push_back(row.title);
  return titles;
}

[[noreturn]] void noSuch(Session& session, int aKind, const std::string& name, Meant asked) {
  const bool isBook = aKind == kBookKind;
  auto titles = titlesOf(MonivaAccount::list(session.root(), aKind));
  if (asked == Meant::groupsToo) {
    std::ranges::move(titlesOf(MonivaAccount::list(session.root(), aKind, MonivaAccount::Rows::groups)),
                      std::back_inserter(titles));
  }
  if (titles.empty()) {
    throw isBook ? refused("there is no book yet; add one with: moniva book add NAME")
                 : refused("there is no account yet; add one with: moniva account add NAME");
  }
  const auto meant = didYouMean(name, titles);
  if (!meant) {
    throw isBook ? refused("there is no book '{}'; see: moniva book list", name)
                 : refused("there is no account '{}'; see: moniva account list", name);
  }
  throw isBook ? refused("there is no book '{}'; did you mean '{}'?", name, *meant)
               : refused("there is no account '{}'; did you mean '{}'?", name, *meant);
}

MonivaAccount asMeant(MonivaAccount row, Meant meant) {
  if (row.isGroup && meant != Meant::groupsToo) {
    throw row.isBook() ? refused("'{}' is a group of books; name one of them", row.title)
                       : refused("'{}' is a group of accounts; name one of them", row.title);
  }
  if (meant == Meant::open && !row.enabled) {
    throw row.isBook()
        ? refused("the book '{}' is closed; open it with: moniva book reopen NAME", row.title)
        : refused("the account '{}' is closed; open it with: moniva account reopen NAME", row.title);
  }
  return row;
}

/// The key and the title of a category or vendor, as an object; null for none.
template <class Row>
json::value named(const std::optional<Row>& row, std::string_view key) {
  if (key.empty()) return nullptr;
  json::object object{{"pk", key}};
  if (row) object["title"] = row->title;
  return object;
}

}  // namespace

json::value isoDate(Session& session, std::optional<Date> date) {
  if (!date) return nullptr;
  const auto instant = static_cast<std::int64_t>(std::floor(date->secondsSince1970));
  const auto written = [](const CivilTime& civil, std::string_view offset) {
    return json::string(fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}{}", civil.year, civil.month,
                                    civil.day, civil.hour, civil.minute, civil.second, offset));
  };
  const CivilTime civil = session.calendar().civilTime(*date);
  const auto asUtc = daysFromCivil(civil.year, civil.month, civil.day) * kSecondsPerDay +
                     std::int64_t{civil.hour} * 3600 + std::int64_t{civil.minute} * 60 + civil.second;
  const auto offset = asUtc - instant;
  if (offset % 60 != 0) {
    CivilTime utc = civilFromDays(floorDivide(instant, kSecondsPerDay));
    const auto time = static_cast<int>(floorRemainder(instant, kSecondsPerDay));
    utc.hour = time / 3600;
    utc.minute = time / 60 % 60;
    utc.second = time % 60;
    return written(utc, "Z");
  }
  const auto minutes = std::abs(offset) / 60;
  return written(civil, fmt::format("{}{:02}:{:02}", offset < 0 ? '-' : '+', minutes / 60, minutes % 60));
}

json::object jsonOf(Session&, const MonivaAccount& account) {
  json::object object{{"pk", account.pk},
                      {"title", account.title},
                      {"aType", account.aType},
                      {"aKind", account.aKind},
                      {"isGroup", account.isGroup},
                      {"beginBalance", account.beginBalance},
                      {"totalBalance", withoutNoise(account.totalBalance)},
                      {"currency", account.currency},
                      {"enabled", account.enabled},
                      {"note", account.note},
                      {"orderID", account.orderID},
                      {"budgetEnabled", account.budgetEnabled},
                      {"trackingType", account.trackingType},
                      {"weekStartsOn", account.weekStartsOn},
                      {"monthStartsOn", account.monthStartsOn},
                      {"yearStartsOn", account.yearStartsOn},
                      {"expandOptionDict", account.expandOptionDict},
                      {"isDeleted", account.isDeleted}};
  if (account.isDebtAccount()) object["dueDay"] = account.dueDay();
  return object;
}

json::object jsonWithTotals(Session& session, const MonivaAccount& account) {
  json::object object = jsonOf(session, account);
  object["totalIncome"] = account.totalIncome;
  object["totalExpense"] = account.totalExpense;
  object["totalTransferIn"] = account.totalTransferIn;
  object["totalTransferOut"] = account.totalTransferOut;
  object["adjustBalance"] = account.adjustBalance;
  object["dateOfFirstTransaction"] = isoDate(session, account.dateOfFirstTransaction);
  object["dateOfLastTransaction"] = isoDate(session, account.dateOfLastTransaction);
  return object;
}

json::object jsonOf(Session&, const Vendor& vendor) {
  return {{"pk", vendor.pk},
          {"title", vendor.title},
          {"type", vendor.type},
          {"orderString", vendor.orderString()},
          {"usedTimes", vendor.usedTimes},
          {"orderID", vendor.orderID},
          {"deleted", vendor.deleted},
          {"familyUser", vendor.familyUser},
          {"ipid", vendor.ipid}};
}

json::object jsonOf(Session& session, const Spend& spend) {
  auto& root = session.root();
  // The store has the first moment of 1970 for none, and a record of that moment is paid then.
  std::optional<Date> payDate = spend.payDate;
  if (payDate == Date{} && spend.datetime != Date{}) payDate.reset();
  return {{"eid", spend.eid},
          {"type", spend.type},
          {"amount", spend.amount},
          {"foreignCurrency", spend.foreignCurrency},
          {"foreignAmount", spend.foreignAmount},
          {"datetime", isoDate(session, spend.datetime)},
          {"timeZone", spend.timeZone},
          {"note", spend.note},
          {"account", named(MonivaAccount::getAccountWithPK(root, spend.account), spend.account)},
          {"book", named(MonivaAccount::getAccountWithPK(root, spend.book), spend.book)},
          {"category", named(MVCategory::getCategory(root, spend.category), spend.category)},
          {"subcategory", named(MVCategory::getCategory(root, spend.subcategory), spend.subcategory)},
          {"vendor", named(Vendor::getVendor(root, spend.vendor, spend.type), spend.vendor)},
          {"paid", spend.paid},
          {"needReimburse", spend.needReimburse},
          {"repeat", spend.repeat},
          {"repeatSeedID", spend.repeatSeedID},
          {"payDate", isoDate(session, payDate)},
          {"connectionUUID", spend.connectionUUID},
          {"advancedType", spend.advancedType}};
}

json::object jsonOf(Session& session, const Transfer& transfer) {
  auto& root = session.root();
  return {{"connectUUID", transfer.connectUUID},
          {"eidA", transfer.eidA},
          {"eidB", transfer.eidB},
          {"accountA", named(MonivaAccount::getAccountWithPK(root, transfer.accountA), transfer.accountA)},
          {"accountB", named(MonivaAccount::getAccountWithPK(root, transfer.accountB), transfer.accountB)},
          {"amountA", transfer.amountA},
          {"amountB", transfer.amountB},
          {"serviceCharge", transfer.serviceCharge},
          {"datetime", isoDate(session, transfer.datetime)},
          {"timeZone", transfer.timeZone},
          {"note", transfer.note},
          {"paid", transfer.paid},
          {"repeat", transfer.repeat},
          {"repeatSeed", transfer.repeatSeed},
          {"repeatEndDate",
           transfer.repeatEndDate == Date{} ? json::value() : isoDate(session, transfer.repeatEndDate)},
          {"advancedType", transfer.advancedType},
          {"ipid", transfer.ipid},
          {"isDeleted", transfer.isDeleted}};
}

json::object jsonOf(Session& session, const RecordTemplate& kept) {
  auto& root = session.root();
  const auto account = [&](const std::string& key) {
    return named(MonivaAccount::getAccountWithPK(root, key), key);
  };
  json::object object{{"eid", kept.eid},
                      {"templateURL", kept.templateURL},
                      {"title", kept.title},
                      {"type", kept.type},
                      {"templateUsedTimes", kept.templateUsedTimes},
                      {"note", kept.note},
                      {"isDeleted", kept.isDeleted}};
  if (kept.isTransfer()) {
    object["accountA"] = account(kept.account);
    object["accountB"] = account(kept.vendor);
    object["amountA"] = kept.amount;
    object["amountB"] = kept.amountB;
    object["serviceCharge"] = kept.serviceCharge;
    return object;
  }
  object["amount"] = kept.amount;
  object["foreignCurrency"] = kept.foreignCurrency;
  object["foreignAmount"] = kept.foreignAmount;
  object["account"] = account(kept.account);
  object["book"] = account(kept.book);
  object["category"] = named(MVCategory::getCategory(root, kept.category), kept.category);
  object["subcategory"] = named(MVCategory::getCategory(root, kept.subcategory), kept.subcategory);
  object["vendor"] = named(Vendor::getVendor(root, kept.vendor, kept.recordType()), kept.vendor);
  return object;
}

json::object jsonOf(Session& session, const TransReportSummary& summary) {
  json::object object{{"title", summary.title},
                      {"year", summary.year},
                      {"month", summary.month},
                      {"day", summary.day},
                      {"beginDate", isoDate(session, session.calendar().dateBegin(summary.beginDate))},
                      {"endDate", isoDate(session, session.calendar().dateEnd(summary.endDate))},
                      {"transactionType", summary.transactionType},
                      {"count", summary.count},
                      {"incomeCount", summary.incomeCount},
                      {"expenseCount", summary.expenseCount},
                      {"transferinCount", summary.transferinCount},
                      {"transferoutCount", summary.transferoutCount},
                      {"incomeAmount", summary.incomeAmount},
                      {"expenseAmount", summary.expenseAmount},
                      {"transferinAmount", summary.transferinAmount},
                      {"transferoutAmount", summary.transferoutAmount},
                      {"maxInSumAmount", summary.maxInSumAmount},
                      {"maxOutSumAmount", summary.maxOutSumAmount}};
  if (summary.category) {
    object["category"] = {{"pk", summary.category->pk}, {"title", summary.category->title}};
  }
  if (summary.vendor) object["vendor"] = {{"pk", summary.vendor->pk}, {"title", summary.vendor->title}};
  if (summary.paymentAccount) {
    object["paymentAccount"] = {{"pk", summary.paymentAccount->pk}, {"title", summary.paymentAccount->title}};
  }
  if (!summary.currency.empty()) object["currency"] = summary.currency;
  if (summary.unnamed) object["unnamed"] = true;
  if (!summary.listArray.empty()) {
    json::array list;
    for (const auto& child : summary.listArray) list.push_back(jsonOf(session, child));
    object["listArray"] = std::move(list);
  }
  return object;
}

std::string dateText(Session& session, Date date) {
  const CivilTime civil = session.calendar().civilTime(date);
  return fmt::format("{} {:02}:{:02}", stringOfDateMediumStyle(session.calendar(), date), civil.hour,
                     civil.minute);
}

std::string currencyTyped(Session& session, const std::string& code) {
  return code.empty() ? session.defaultCurrency() : currencyCodeTyped(session, code);
}

std::string takenCurrencyText(Session& session, const std::string& typedCode, const std::string& code) {
  if (!typedCode.empty() || !session.guessesCurrency()) return code;
  using By = LocaleUtils::Guess::By;
  switch (LocaleUtils::guess(session.platform()).by) {
    case By::locale:
      return session.text("{} (by your locale's country)", code);
    case By::zone:
      return session.text("{} (by your time zone's country)", code);
    case By::language:
    case By::nothing:
      break;
  }
  return session.text("{} (a guess)", code);
}

MonivaAccount bookNamed(Session& session, const std::string& name, Meant meant) {
  if (name.empty()) {
    const auto& current = session.root().monivaAccount;
    if (!current || current->pk.empty()) noSuch(session, kBookKind, name, meant);
    // Another program may have changed it since this one started.
    MonivaAccount book = *current;
    if (!book.getInfo() || book.isDeleted != 0) noSuch(session, kBookKind, name, meant);
    return asMeant(std::move(book), meant);
  }
  auto book = MonivaAccount::getBookWithTitle(session.root(), name);
  if (!book || book->isDeleted != 0) noSuch(session, kBookKind, name, meant);
  return asMeant(std::move(*book), meant);
}

MonivaAccount accountNamed(Session& session, const std::string& name, Meant meant) {
  auto account = MonivaAccount::getAccountWithTitle(session.root(), name);
  if (!account || account->isDeleted != 0) noSuch(session, kAccountKind, name, meant);
  return asMeant(std::move(*account), meant);
}

void requireOpen(const MonivaAccount& row) {
  if (row.enabled) return;
  throw row.isBook()
      ? refused("the book '{}' is closed; open it with: moniva book reopen NAME", row.title)
      : refused("the account '{}' is closed; open it with: moniva account reopen NAME", row.title);
}

MonivaAccount groupNamed(Session& session, const std::string& name, bool ofBooks) {
  std::vector<std::string> titles;
  for (const int aKind : {kAccountKind, kBookKind}) {
    if (ofBooks && aKind == kAccountKind) continue;
    for (auto& group : MonivaAccount::list(session.root(), aKind, MonivaAccount::Rows::groups)) {
      if (group.title == name) return std::move(group);
      titles.push_back(std::move(group.title));
    }
  }
  if (titles.empty()) throw refused("there is no group yet; add one with: moniva group add TITLE MEMBER...");
  if (const auto near = didYouMean(name, titles)) {
    throw refused("there is no group '{}'; did you mean '{}'?", name, *near);
  }
  throw refused("there is no group '{}'; see: moniva group list", name);
}

Vendor vendorNamed(Session& session, const std::string& typedName, bool income) {
  const std::string name = wellFormed(typedName, "the vendor");
  const int types[] = {income ? Vendor::kPayer : Vendor::kPayee, income ? Vendor::kPayee : Vendor::kPayer};
  for (const int type : types) {
    auto vendor = Vendor::withTitle(session.root(), name, type);
    if (vendor && vendor->deleted == 0) return std::move(*vendor);
  }
  std::vector<std::string> titles;
  for (const int type : types) {
    for (const auto& vendor : VendorQuery(session.root(), type).getVendorListByName()) {
      if (!vendor.isNoVendor()) titles.push_back(vendor.title);
    }
  }
  if (const auto meant = didYouMean(name, titles)) {
    throw refused("there is no vendor '{}'; did you mean '{}'?", printable(name), printable(*meant));
  }
  throw refused("there is no vendor '{}'; see: moniva vendor list", printable(name));
}

}  // namespace moniva
