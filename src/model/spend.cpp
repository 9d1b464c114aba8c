#include "model/spend.h"

#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "storage/writes.h"

namespace moniva {
namespace {

constexpr std::string_view kSpendColumns =
    "select amount, note, category, subcategory, datetime, type, repeat, currency2, amount2, account, vendor,"
    " book, repeat_end_date, paid, repeat_seed, barcode, payDate, transferEID, deleted, syear, ipid,"
    " needReimburse, bid from transactions where eid = ?";

std::string currencyOfRecord(Connection& db, const Spend& spend) {
  for (const auto* holder : {&spend.account, &spend.book}) {
    if (holder->empty()) continue;
    Run run = db.query("select currency from account where oldTitle = ?", {*holder});
    if (run.next()) return std::string(run.text(0));
  }
  return {};
}

}  // namespace

Spend::Spend(MVAppRoot& root) : datetime(root.now()), timeZone(root.calendar().zone()), root_(&root) {}

std::optional<Spend> Spend::spendFromEID(MVAppRoot& root, std::string_view eid) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return std::nullopt;
  Spend spend(root);
  {
    Run run = db->query(kSpendColumns, {eid});
    if (!run.next()) return std::nullopt;
    spend.isNewOne = false;
    spend.eid = eid;
    spend.amount = run.real(0);
    spend.note = run.text(1);
    spend.category = run.text(2);
    spend.subcategory = run.text(3) == kNoCategory ? std::string_view() : run.text(3);
    spend.datetime = run.date(4);
    spend.type = static_cast<int>(run.integer(5));
    spend.repeat = run.text(6);
    spend.foreignCurrency = run.text(7);
    spend.foreignAmount = run.real(8);
    spend.account = run.text(9);
    spend.vendor = run.text(10);
    spend.book = run.text(11);
    spend.repeatEndDate = run.date(12);
    spend.paid = run.integer(13) != 0;
    spend.repeatSeedID = run.text(14);
    spend.timeZone = run.text(15);
    spend.payDate = run.date(16);
    spend.connectionUUID = run.text(17);
    spend.isDeleted = static_cast<int>(run.integer(18));
    spend.advancedType = static_cast<int>(run.integer(19));
    spend.ipid = run.text(20);
    spend.createdByTemplate = spend.ipid == "createdByTemplate";
    spend.needReimburse = run.integer(21) != 0;
    spend.bid = static_cast<int>(run.integer(22));
  }
  spend.currency = currencyOfRecord(*db, spend);
  return spend;
}

Result<> Spend::insertRow() {
  if (auto checked = checkAmount(amount); !checked) return checked;
  if (auto checked = checkRecordDate(root_->calendar(), datetime); !checked) return checked;
  if (type != kind::kIncome && type != kind::kExpense)
    return refuse("{} is neither income nor expense", type);
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  if (book.empty()) root_->platform().log.line("Empty Book : Spend 205");
  if (eid.empty()) eid = root_->newIdentifier();
  if (payDate == Date{}) payDate = datetime;
  if (repeat == kNotRepeat) repeatEndDate = Date{};
  bid = kItemRow;
  // The row's insert has no slot for an end of its series; only with one are there two writes to keep
  // together.
  std::optional<Transaction> both;
  if (repeatEndDate != Date{}) both.emplace(*db);
  bool written =
      (!both || both->began()) &&
      root_->executeUpdate(
          "insert into transactions (amount, type, note, category, subcategory, datetime, repeat, account, "
          "currency2, amount2,"
          " editDate, eid, vendor, book, paid, needReimburse, sday, repeat_seed, barcode, transferEID, bid, "
          "payDate, ipid,"
          " syear, edit_ipid) values (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,20,?,?,?,?)",
          amount, type, note, category, subcategory.empty() ? kNoCategory : std::string_view(subcategory),
          datetime, repeat, account, foreignCurrency, foreignAmount, root_->editStamp(), eid, vendor, book,
          paid, needReimburse, integerDateOfTimeZone(root_->calendar(), datetime, timeZone), repeatSeedID,
          timeZone, connectionUUID, payDate, ipid, advancedType, root_->itsUDID());
  if (written && both) {
    written = root_->executeUpdate(
                  "update transactions set repeat_end_date = ?, editDate = ?, edit_ipid = ? where eid = ?",
                  repeatEndDate, root_->editStamp(), root_->itsUDID(), eid) &&
              both->commit();
  }
  if (!written) return tl::make_unexpected(db->refusal());
  isNewOne = false;
  return {};
}

Result<> Spend::add() {
  return insertRow();
}

Result<> Spend::add(int asPartOf) {
  if (connectionUUID.empty()) return refuse("a row of a compound record needs its UUID");
  advancedType = asPartOf;
  return insertRow();
}

Result<> Spend::addRepeatSeed() {
  if (auto checked = checkAmount(amount); !checked) return checked;
  if (auto checked = checkRecordDate(root_->calendar(), datetime); !checked) return checked;
  if (repeat.empty() || repeat == kNotRepeat) return refuse("a record that does not repeat has no series");
  const Date begun = payDate == Date{} ? datetime : payDate;
  const std::string seed = root_->newIdentifier();
  const bool openEnded = repeatEndDate == Date{};
  auto written = atomically(*root_, [&](Connection&) -> Result<> {
    auto inserted = write(
        *root_,
        "insert into transactions (bid, amount, type, note, category, subcategory, datetime, repeat, account,"
        " editDate, eid, repeat_end_date, vendor, book, sday, syear, payDate, edit_ipid)"
        " values (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)",
        bid, amount, kind::kRepeatSeed, note, category,
        subcategory.empty() ? kNoCategory : std::string_view(subcategory), datetime, repeat, account,
        root_->editStamp(), seed, openEnded ? Value("") : Value(repeatEndDate), vendor, book,
        integerDateOfTimeZone(root_->calendar(), begun, timeZone) % 100, type, begun, root_->itsUDID());
    if (!inserted) return inserted;
    // The row's insert has no slot for these.
    return write(*root_,
                 "update transactions set currency2 = ?, amount2 = ?, needReimburse = ?, barcode = ?,"
                 " editDate = ?, edit_ipid = ? where eid = ?",
                 foreignCurrency, foreignAmount, needReimburse, timeZone, root_->editStamp(),
                 root_->itsUDID(), seed);
  });
  if (written) repeatSeedID = seed;
  return written;
}

void Spend::setConnectionUUID(const std::string& uuid) {
  connectionUUID = uuid;
  for (auto* rows : {&items, &payments}) {
    for (auto& row : *rows) row.connectionUUID = uuid;
  }
}

}  // namespace moniva
