#include <algorithm>

#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "model/transfer.h"
#include "model/transfer_rows.h"

// What changes transfers that are there already.
namespace moniva {
namespace {

constexpr std::string_view kSetAmount =
    "update transactions set editDate = ?, amount = ?, edit_ipid = ? where eid = ?";
constexpr std::string_view kSetForeign =
    "update transactions set editDate = ?, amount2=?, edit_ipid = ? where eid = ? and amount2 > 0.01";
/// What `kSetForeign` passes over, which the smallest coins of some currencies come to.
constexpr double kLeastForeign = 0.01;
constexpr std::string_view kSetAccount =
    "update transactions set editDate = ?, account = ?, edit_ipid = ? where eid = ?";
constexpr std::string_view kSetOther =
    "update transactions set editDate = ?, vendor = ?, edit_ipid = ? where eid = ?";

/// Writes on a row what the other side's amount has become, which was `before`.
Result<> writeForeign(MVAppRoot& root, const std::string& eid, double before, double amount, double own) {
  if (before > kLeastForeign) return write(root, kSetForeign, root.editStamp(), amount, root.itsUDID(), eid);
  return writeBothAmounts(root, eid, own, amount);
}

}  // namespace

/// Runs the work as one transaction with the transfer as the store has it, and with what depends on its rows.
template <class Work>
Result<> Transfer::change(Work&& work) {
  const RecordScope rows{.eid = eidA, .group = connectUUID, .series = {}};
  auto changed = changeRecords(*root_, rows, [&](Connection&) -> Result<> {
    auto stored = loaded(*root_, connectUUID, eidA, eidB);
    if (!stored) return refuse("the transfer is not in the store");
    return work(*stored);
  });
  edited = edited || changed.has_value();
  return changed;
}

Result<> Transfer::delete_() {
  return change([&](Transfer& stored) -> Result<> {
    if (stored.deletedA_ != 0 && stored.deletedB_ != 0) return refuse("the transfer is deleted already");
    for (const bool isA : {true, false}) {
      // A side that was cleared with its account stays what it is.
      if ((isA ? stored.deletedA_ : stored.deletedB_) != 0) continue;
      auto written =
          write(*root_, "update transactions set deleted = 1, editDate = ?, edit_ipid = ? where eid = ?",
                root_->editStamp(), root_->itsUDID(), isA ? eidA : eidB);
      if (!written) return written;
      (isA ? deletedA_ : deletedB_) = 1;
    }
    isDeleted = std::max({1, stored.deletedA_, stored.deletedB_});
    return {};
  });
}

Result<> Transfer::restore() {
  return change([&](Transfer& stored) -> Result<> {
    if (stored.deletedA_ != 1 && stored.deletedB_ != 1) return refuse("the transfer is not deleted");
    for (const bool isA : {true, false}) {
      if ((isA ? stored.deletedA_ : stored.deletedB_) != 1) continue;
      auto written =
          write(*root_, "update transactions set deleted = 0, editDate = ?, edit_ipid = ? where eid = ?",
                root_->editStamp(), root_->itsUDID(), isA ? eidA : eidB);
      if (!written) return written;
      (isA ? stored.deletedA_ : stored.deletedB_) = 0;
    }
    const auto left = leaveDeletedSeries(*root_, eidA, stored.connectUUID);
    if (!left) return tl::make_unexpected(left.error());
    if (*left) repeatSeed.clear();
    deletedA_ = stored.deletedA_;
    deletedB_ = stored.deletedB_;
    isDeleted = std::max(deletedA_, deletedB_);
    return {};
  });
}

Result<> Transfer::updateAccountA(const std::string& account) {
  return updateAccount(account, true);
}

Result<> Transfer::updateAccountB(const std::string& account) {
  return updateAccount(account, false);
}

Result<> Transfer::updateAccount(const std::string& account, bool ofA) {
  return change([&, key = account](Transfer& stored) -> Result<> {
    const std::string& other = ofA ? stored.accountB : stored.accountA;
    if (key == other) return refuse("a transfer needs two different accounts");
    const auto currency = currencyOfAccount(*root_, key);
    if (!currency) return tl::make_unexpected(currency.error());
    const auto row = MonivaAccount::getAccountWithPK(*root_, key);
    if (!row) return refuse("there is no account with the key '{}'", key);
    if (row->isDeleted != 0) return refuse("the account '{}' is deleted", row->title);
    auto tracked = checkTracked(*row, ofA ? kind::kTransferOut : kind::kTransferIn);
    if (!tracked) return tracked;
    const auto device = root_->itsUDID();
    const std::string& own = ofA ? eidA : eidB;
    auto written = write(*root_, kSetAccount, root_->editStamp(), key, device, own);
    if (written) written = write(*root_, kSetOther, root_->editStamp(), key, device, ofA ? eidB : eidA);
    if (!written) return written;
    // Told by what the accounts keep, not by the rows: an account may have changed its currency since, which
    // left the amounts of its records alone.
    const auto before = currencyOfAccount(*root_, ofA ? stored.accountA : stored.accountB);
    const auto facing = currencyOfAccount(*root_, other);
    const bool across = facing && *currency != *facing;
    const bool wasAcross = before && facing ? *before != *facing : stored.acrossCurrencies;
    if (across != wasAcross && across != stored.acrossCurrencies) {
      stored.acrossCurrencies = across;
      if (!across) stored.amountB = stored.moved();
      written = writeBothAmounts(*root_, eidA, stored.amountA, across ? stored.amountB : 0);
      if (written) written = writeBothAmounts(*root_, eidB, stored.amountB, across ? stored.moved() : 0);
      if (!written) return written;
    }
    (ofA ? accountA : accountB) = key;
    acrossCurrencies = stored.acrossCurrencies;
    amountA = stored.amountA;
    amountB = stored.amountB;
    serviceCharge = stored.serviceCharge;
    return {};
  });
}

Result<> Transfer::updateAmountA(double amount) {
  return change([&](Transfer& stored) -> Result<> {
    if (auto checked = checkAmount(amount); !checked) return checked;
    const bool across = stored.acrossCurrencies;
    const double charge = across ? stored.serviceCharge : difference(amount, stored.amountB);
    if (charge < 0) return refuse("{} arrives, and {} is less than that", stored.amountB, amount);
    const double rest = difference(amount, charge);
    if (rest <= 0) return refuse("a service charge of {} leaves nothing of {} to be moved", charge, amount);
    auto written = write(*root_, kSetAmount, root_->editStamp(), amount, root_->itsUDID(), eidA);
    if (written && across) written = writeForeign(*root_, eidB, stored.moved(), rest, stored.amountB);
    if (!written) return written;
    amountA = amount;
    amountB = stored.amountB;
    serviceCharge = charge;
    return {};
  });
}

Result<> Transfer::updateAmountB(double amount) {
  return change([&](Transfer& stored) -> Result<> {
    if (auto checked = checkAmount(amount); !checked) return checked;
    const bool across = stored.acrossCurrencies;
    const double charge = across ? stored.serviceCharge : difference(stored.amountA, amount);
    if (charge < 0) return refuse("{} leaves, and {} is more than that", stored.amountA, amount);
    auto written = write(*root_, kSetAmount, root_->editStamp(), amount, root_->itsUDID(), eidB);
    if (written && across) written = writeForeign(*root_, eidA, stored.amountB, amount, stored.amountA);
    if (!written) return written;
    amountA = stored.amountA;
    amountB = amount;
    serviceCharge = charge;
    return {};
  });
}

Result<> Transfer::updateMoved(double amount) {
  return change([&](Transfer& stored) -> Result<> {
    const double leaves = withoutNoise(amount + stored.serviceCharge);
    for (const double each : {amount, leaves}) {
      if (auto checked = checkAmount(each); !checked) return checked;
    }
    if (stored.acrossCurrencies) return updateAmountA(leaves);
    auto written = write(*root_, kSetAmount, root_->editStamp(), leaves, root_->itsUDID(), eidA);
    if (written) written = write(*root_, kSetAmount, root_->editStamp(), amount, root_->itsUDID(), eidB);
    if (!written) return written;
    amountA = leaves;
    amountB = amount;
    serviceCharge = stored.serviceCharge;
    return {};
  });
}

Result<> Transfer::updateServiceCharge(double charge) {
  return change([&](Transfer& stored) -> Result<> {
    if (!(charge >= 0)) return refuse("a service charge must not be below zero; {} is", charge);
    const double moved = stored.acrossCurrencies ? stored.moved() : stored.amountB;
    const double leaves = withoutNoise(moved + charge);
    if (auto checked = checkAmount(leaves); !checked) return checked;
    auto written = writeBothAmounts(*root_, eidA, leaves, stored.acrossCurrencies ? stored.amountB : 0);
    if (!written) return written;
    amountA = leaves;
    amountB = stored.amountB;
    serviceCharge = charge;
    return {};
  });
}

Result<> Transfer::updateDate(Date date) {
  return change([&](Transfer&) -> Result<> {
    if (auto checked = checkRecordDate(root_->calendar(), date); !checked) return checked;
    const std::string zone(root_->calendar().zone());
    const bool settled = isPaidAt(date, root_->now());
    for (const auto& eid : {eidA, eidB}) {
      auto written = write(*root_,
                           "update transactions set editDate = ?, datetime=?, sday=?, barcode=?, paid = ?,"
                           " edit_ipid = ? where eid = ?",
                           root_->editStamp(), date, integerDateOfTimeZone(root_->calendar(), date, zone),
                           zone, settled, root_->itsUDID(), eid);
      if (!written) return written;
    }
    datetime = date;
    timeZone = zone;
    paid = settled;
    return {};
  });
}

Result<> Transfer::updateNote(const std::string& text) {
  return change([&, kept = text](Transfer&) -> Result<> {
    for (const auto& eid : {eidA, eidB}) {
      auto written =
          write(*root_, "update transactions set editDate = ?, note = ?, edit_ipid = ? where eid = ?",
                root_->editStamp(), kept, root_->itsUDID(), eid);
      if (!written) return written;
    }
    note = kept;
    return {};
  });
}

}  // namespace moniva
