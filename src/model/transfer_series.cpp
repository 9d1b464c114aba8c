#include <boost/json.hpp>

#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "model/transfer.h"
#include "model/transfer_rows.h"

// Transfers that repeat: the seed of their series, and what is asked of it.
namespace moniva {
namespace {

/// Where a seed keeps what has no column of its own.
constexpr std::string_view kChargeOfSeed = "serviceCharge";

double chargeIn(std::string_view text) {
  boost::json::error_code error;
  const auto value = boost::json::parse(boost::json::string_view(text.data(), text.size()), error);
  if (error || !value.is_object()) return 0;
  const auto* charge =
      value.get_object().if_contains(boost::json::string_view(kChargeOfSeed.data(), kChargeOfSeed.size()));
  return charge != nullptr && charge->is_number() ? charge->to_number<double>(error) : 0;
}

}  // namespace

Result<> Transfer::addSeed(const std::string& eid) const {
  const int firstDay = integerDateOfTimeZone(root_->calendar(), datetime, timeZone) % 100;
  constexpr std::string_view kInsert =
      "insert into transactions (amount, type, note, vendor, datetime, repeat, account, editDate, eid,"
      " repeat_end_date, sday, barcode, syear, edit_ipid) values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?,?)";
  const Value end = repeatEndDate == Date{} ? Value("") : Value(repeatEndDate);
  auto written =
      write(*root_, kInsert, amountA, kind::kRepeatSeed, note, accountB, datetime, repeat, accountA,
            root_->editStamp(), eid, end, firstDay, timeZone, kind::kTransferOut, root_->itsUDID());
  // The row's insert has no slot for it.
  if (written) {
    written = write(*root_, "update transactions set payDate = ?, editDate = ?, edit_ipid = ? where eid = ?",
                    datetime, root_->editStamp(), root_->itsUDID(), eid);
  }
  if (written && acrossCurrencies) written = writeBothAmounts(*root_, eid, amountA, amountB);
  if (written && serviceCharge > 0) {
    const boost::json::object kept{{kChargeOfSeed.data(), serviceCharge}};
    written = write(*root_, "update transactions set sweek = ?, editDate = ?, edit_ipid = ? where eid = ?",
                    boost::json::serialize(kept), root_->editStamp(), root_->itsUDID(), eid);
  }
  return written;
}

Result<> Transfer::addRepeatSeed() {
  if (auto checked = check(); !checked) return checked;
  if (repeat == kNotRepeat) return refuse("a record that does not repeat has no series");
  const std::string seed = root_->newIdentifier();
  auto added = atomically(*root_, [&](Connection&) { return addSeed(seed); });
  if (added) repeatSeed = seed;
  return added;
}

std::optional<Transfer> Transfer::transferFromSeed(MVAppRoot& root, std::string_view eid) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr || eid.empty()) return std::nullopt;
  Run run = db->query(
      "select amount, note, vendor, datetime, repeat, account, repeat_end_date, barcode, amount2, sweek,"
      " deleted, syear from transactions where eid = ? and type = ? and syear in (?, ?)",
      {eid, kind::kRepeatSeed, kind::kTransferOut, kind::kTransferIn});
  if (!run.next()) return std::nullopt;
  Transfer transfer(root);
  transfer.amountA = run.real(0);
  transfer.note = run.text(1);
  transfer.accountB = run.text(2);
  transfer.datetime = run.date(3);
  transfer.repeat = run.text(4);
  transfer.accountA = run.text(5);
  transfer.repeatEndDate = run.date(6);
  transfer.timeZone = run.text(7);
  transfer.acrossCurrencies = run.real(8) > 0;
  transfer.serviceCharge = chargeIn(run.text(9));
  transfer.amountB = transfer.acrossCurrencies ? run.real(8) : transfer.moved();
  transfer.isDeleted = static_cast<int>(run.integer(10));
  transfer.repeatSeed = eid;
  if (run.integer(11) == kind::kTransferIn) {
    // Older stores also have seeds that tell it from the side where the money arrives.
    std::swap(transfer.accountA, transfer.accountB);
    transfer.amountB = run.real(0);
    transfer.amountA =
        transfer.acrossCurrencies ? run.real(8) : withoutNoise(transfer.amountB + transfer.serviceCharge);
  }
  return transfer;
}

Result<> Transfer::updateRepeat(const std::string& rule, Date endDate) {
  if (auto checked = checkRepeatRule(rule); !checked) return checked;
  const bool repeats = rule != kNotRepeat;
  if (repeats && endDate != Date{}) {
    if (auto checked = checkRecordDate(root_->calendar(), endDate); !checked) return checked;
  }
  const auto writeRule = [&](const std::string& eid) {
    return write(*root_,
                 "update transactions set repeat = ?, repeat_end_date = ?, editDate = ?, edit_ipid = ?"
                 " where eid = ?",
                 rule, repeats && endDate != Date{} ? Value(endDate) : Value(""), root_->editStamp(),
                 root_->itsUDID(), eid);
  };
  return atomically(*root_, [&](Connection&) -> Result<> {
    auto stored = loaded(*root_, connectUUID, eidA, eidB);
    if (!stored) return refuse("the transfer is not in the store");
    if (repeats && endDate != Date{} && endDate < stored->datetime) {
      return refuse("a series ends after it begins");
    }
    const auto seed = transferFromSeed(*root_, stored->repeatSeed);
    if (seed && seed->isDeleted == 0) {
      if (auto written = writeRule(stored->repeatSeed); !written) return written;
      if (!repeats) {
        if (auto stopped = stored->stopRecurring(); !stopped) return stopped;
      }
    } else if (!repeats) {
      for (const auto& eid : {eidA, eidB}) {
        if (auto written = writeRule(eid); !written) return written;
      }
    } else {
      stored->repeat = rule;
      stored->repeatEndDate = endDate;
      const std::string made = root_->newIdentifier();
      if (auto added = stored->addSeed(made); !added) return added;
      for (const auto& eid : {eidA, eidB}) {
        auto written = write(
            *root_, "update transactions set repeat_seed = ?, editDate = ?, edit_ipid = ? where eid = ?",
            made, root_->editStamp(), root_->itsUDID(), eid);
        if (!written) return written;
      }
      repeatSeed = made;
    }
    edited = true;
    return {};
  });
}

bool Transfer::isRepeatItem() const {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return false;
  Run run = db->query("select deleted, repeat_seed from transactions where eid = ?", {eidA});
  return run.next() && run.integer(0) == 0 && !run.text(1).empty();
}

bool Transfer::hasDuplicateRepeatSeed() const {
  const auto stored = transferFromSeed(*root_, repeatSeed);
  const Transfer& seed = stored ? *stored : *this;
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return false;
  Run run = db->query(
      "select eid from transactions where deleted = 0 and eid != ? and type = ? and syear = ? and account = ?"
      " and note = ? and amount = ? and repeat = ? and vendor = ? and case ? when 0 then"
      " ifnull(repeat_end_date, '') in ('', 0) else repeat_end_date = ? end limit 1",
      {repeatSeed, kind::kRepeatSeed, kind::kTransferOut, seed.accountA, seed.note, seed.amountA, seed.repeat,
       seed.accountB, seed.repeatEndDate, seed.repeatEndDate});
  return run.next();
}

Result<> Transfer::stopRecurring() {
  const auto seed = transferFromSeed(*root_, repeatSeed);
  if (!seed) return refuse("the transfer does not repeat");
  if (seed->isDeleted != 0) return refuse("its series has been stopped already");
  return write(*root_, "update transactions set deleted = 1, editDate = ?, edit_ipid = ? where eid = ?",
               root_->editStamp(), root_->itsUDID(), repeatSeed);
}

std::vector<std::string> Transfer::getEidBArray() const {
  std::vector<std::string> eids;
  Connection* db = root_->db().getDatabase();
  if (db == nullptr || connectUUID.empty()) return eids;
  Run run = db->query("select eid from transactions where transferEID = ? and type = ?",
                      {connectUUID, kind::kTransferIn});
  while (run.next()) eids.emplace_back(run.text(0));
  return eids;
}

}  // namespace moniva
