#include "model/transfer.h"

#include <algorithm>

#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "model/transfer_rows.h"

namespace moniva {
namespace {

/// The columns of one side, as `readSide` takes them.
constexpr std::string_view kSide =
    "select eid, amount, note, datetime, repeat, transferEID, currency2, amount2, barcode, account, vendor,"
    " book, repeat_end_date, paid, repeat_seed, syear, deleted, ipid from transactions";

std::string groupOf(MVAppRoot& root, std::string_view eid, int side) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return {};
  Run run = db->query("select transferEID from transactions where eid = ? and type = ?", {eid, side});
  return run.next() ? std::string(run.text(0)) : std::string();
}

}  // namespace

Transfer::Transfer(MVAppRoot& root) : datetime(root.now()), timeZone(root.calendar().zone()), root_(&root) {}

double Transfer::moved() const {
  return difference(amountA, serviceCharge);
}

void Transfer::readSide(const Run& run, bool isA) {
  (isA ? eidA : eidB) = run.text(0);
  (isA ? amountA : amountB) = run.real(1);
  (isA ? accountA : accountB) = run.text(9);
  (isA ? deletedA_ : deletedB_) = static_cast<int>(run.integer(16));
  isDeleted = std::max(deletedA_, deletedB_);
  if (isA) {
    note = run.text(2);
    datetime = run.date(3);
    repeat = run.text(4).empty() ? kNotRepeat : run.text(4);
    connectUUID = run.text(5);
    acrossCurrencies = run.real(7) > 0;
    timeZone = run.text(8);
    repeatEndDate = run.date(12);
    paid = run.integer(13) != 0;
    repeatSeed = run.text(14);
    advancedType = static_cast<int>(run.integer(15));
    ipid = run.text(17);
  } else {
    // A row that another program left without the other side's amount tells of no charge.
    const double arrived = acrossCurrencies ? run.real(7) : amountB;
    serviceCharge = arrived > 0 ? std::max(0.0, difference(amountA, arrived)) : 0;
  }
}

std::optional<Transfer> Transfer::loaded(MVAppRoot& root, std::string_view uuid, std::string_view eidA,
                                         std::string_view eidB) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr || uuid.empty()) return std::nullopt;
  Transfer transfer(root);
  transfer.isNew = false;
  for (const bool isA : {true, false}) {
    const std::string_view eid = isA ? eidA : eidB;
    const int type = isA ? kind::kTransferOut : kind::kTransferIn;
    Run run = eid.empty()
                  ? db->query(fmt::format("{} where transferEID = ? and type = ? order by deleted", kSide),
                              {uuid, type})
                  : db->query(fmt::format("{} where eid = ? and transferEID = ? and type = ?", kSide),
                              {eid, uuid, type});
    if (!run.next()) return std::nullopt;
    transfer.readSide(run, isA);
  }
  return transfer;
}

std::optional<Transfer> Transfer::transferFromUUID(MVAppRoot& root, std::string_view uuid) {
  return loaded(root, uuid, {}, {});
}

std::optional<Transfer> Transfer::transferFromEIDA(MVAppRoot& root, std::string_view eid) {
  return loaded(root, groupOf(root, eid, kind::kTransferOut), eid, {});
}

std::optional<Transfer> Transfer::transferFromEIDB(MVAppRoot& root, std::string_view eid) {
  return loaded(root, groupOf(root, eid, kind::kTransferIn), {}, eid);
}

std::optional<Transfer> Transfer::transferFromEID(MVAppRoot& root, std::string_view eid) {
  auto transfer = transferFromEIDA(root, eid);
  return transfer ? transfer : transferFromEIDB(root, eid);
}

Result<std::vector<Transfer>> Transfer::list(MVAppRoot& root, const TransferQuery& query) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  // One of which a side was cleared with its account is live by the other. "+" keeps to the index by group.
  constexpr std::string_view kPairs =
      "select a.transferEID, a.eid, b.eid from transactions as a join transactions as b on"
      " b.transferEID = a.transferEID and +b.type = 23 where a.type = 33 and a.transferEID != ''"
      " and a.datetime >= ? and a.datetime <= ? and min(a.deleted, b.deleted) = ?"
      " and (? = '' or a.account = ? or b.account = ?) order by a.datetime desc, a.eid desc limit ?";
  struct Pair {
    std::string uuid, eidA, eidB;
  };
  std::vector<Pair> pairs;
  {
    Run run =
        db->query(kPairs, {query.from.value_or(Date{-1e15}), query.to.value_or(Date{1e15}),
                           query.deleted ? 1 : 0, query.account, query.account, query.account, query.limit});
    while (run.next())
      pairs.push_back({std::string(run.text(0)), std::string(run.text(1)), std::string(run.text(2))});
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  std::vector<Transfer> transfers;
  for (const auto& [uuid, eidA, eidB] : pairs) {
    if (auto transfer = loaded(root, uuid, eidA, eidB)) transfers.push_back(std::move(*transfer));
  }
  return transfers;
}

Result<std::int64_t> Transfer::countOf(MVAppRoot& root, std::string_view account) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select count(*) from transactions where account = ? and deleted = 0 and type in (23, 33)", {account});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return run.integer(0);
}

Result<std::string> currencyOfAccount(MVAppRoot& root, std::string_view key) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select currency from account where oldTitle = ? and kind = 1 and isGroup = 0 order by deleted limit 1",
      {key});
  if (run.next()) return std::string(run.text(0));
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return refuse("there is no account with the key '{}'", key);
}

Result<> Transfer::check() {
  if (accountA.empty() || accountB.empty()) return refuse("a transfer needs an account on each side");
  if (accountA == accountB) return refuse("a transfer needs two different accounts");
  for (const double amount : {amountA, amountB}) {
    if (auto checked = checkAmount(amount); !checked) return checked;
  }
  if (auto checked = checkRecordDate(root_->calendar(), datetime); !checked) return checked;
  if (auto checked = checkRepeatRule(repeat); !checked) return checked;
  const double above = difference(amountA, amountB);
  const double charge = !acrossCurrencies && serviceCharge == 0 ? above : serviceCharge;
  if (!(charge >= 0)) return refuse("a service charge must not be below zero; {} is", charge);
  if (difference(amountA, charge) <= 0)
    return refuse("a service charge of {} leaves nothing of {} to be moved", charge, amountA);
  if (!acrossCurrencies && difference(amountA, amountB + charge) != 0) {
    return refuse("{} leaves with a charge of {} in it, so {} arrives; {} does not", amountA, charge,
                  difference(amountA, charge), amountB);
  }
  for (const auto& account : {accountA, accountB}) {
    if (auto known = currencyOfAccount(*root_, account); !known) return tl::make_unexpected(known.error());
  }
  serviceCharge = charge;
  return {};
}

Result<> Transfer::addSide(int type, const std::string& eid, double amount, const std::string& account,
                           const std::string& other, std::string_view seed) const {
  return write(*root_,
               "insert into transactions (amount, type, note, vendor, datetime, repeat, account, editDate, "
               "eid, repeat_end_date, paid, sday, repeat_seed, transferEID, barcode, bid, payDate, edit_ipid)"
               " values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?,10,?,?)",
               amount, type, note, other, datetime, kNotRepeat, account, root_->editStamp(), eid, "", paid,
               integerDateOfTimeZone(root_->calendar(), datetime, timeZone), seed, connectUUID, timeZone,
               datetime, root_->itsUDID());
}

Result<> Transfer::add() {
  if (repeat == kNotRepeat || !repeatSeed.empty()) return add(repeatSeed);
  return atomically(*root_, [&](Connection&) -> Result<> {
    if (auto checked = check(); !checked) return checked;
    const std::string seed = root_->newIdentifier();
    if (auto added = addSeed(seed); !added) return added;
    return add(seed);
  });
}

Result<> Transfer::insert(std::string_view seed) {
  for (std::string* identifier : {&connectUUID, &eidA, &eidB}) {
    if (identifier->empty()) *identifier = root_->newIdentifier();
  }
  auto written = addSide(kind::kTransferOut, eidA, amountA, accountA, accountB, seed);
  if (written) written = addSide(kind::kTransferIn, eidB, amountB, accountB, accountA, seed);
  if (written && acrossCurrencies) {
    // The row's insert has no slot for the other side's amount.
    written = writeBothAmounts(*root_, eidA, amountA, amountB);
    if (written) written = writeBothAmounts(*root_, eidB, amountB, moved());
  }
  if (written && !ipid.empty()) {
    constexpr std::string_view mark =
        "update transactions set ipid = ?, editDate = ?, edit_ipid = ? where eid = ?";
    for (const auto& eid : {eidA, eidB}) {
      if (written) written = write(*root_, mark, ipid, root_->editStamp(), root_->itsUDID(), eid);
    }
  }
  return written;
}

Result<> Transfer::add(std::string_view seed) {
  if (auto checked = check(); !checked) return checked;
  auto added = atomically(*root_, [&](Connection&) { return insert(seed); });
  if (!added) return added;
  repeatSeed = seed;
  repeat = kNotRepeat;
  repeatEndDate = {};
  isNew = false;
  return {};
}

}  // namespace moniva
