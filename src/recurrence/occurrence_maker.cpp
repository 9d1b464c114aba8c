#include "recurrence/occurrence_maker.h"

#include "base/text.h"
#include "model/entry_checks.h"
#include "model/group_balance.h"
#include "model/record_entry.h"
#include "storage/writes.h"

namespace moniva {
namespace {

Result<> checkOpen(MVAppRoot& root, const std::string& key) {
  const auto row = MonivaAccount::getAccountWithPK(root, key);
  if (!row || row->enabled) return {};
  return row->isBook() ? refuse("the book '{}' is closed", excerpt(row->title))
                       : refuse("the account '{}' is closed", excerpt(row->title));
}

Result<> checkAccount(MVAppRoot& root, const std::string& key, int type) {
  if (auto known = checkAccountKey(root, key, type); !known) return known;
  return checkOpen(root, key);
}

/// An occurrence as the seed has it, still without day and identifier.
Result<Spend> spendOf(MVAppRoot& root, const SeriesSeed& seed) {
  auto spend = Spend::spendFromEID(root, seed.eid);
  if (!spend) return refuse("there is no series '{}'", seed.eid);
  if (auto checked = checkHolders(*spend, seed.makes); !checked) return tl::make_unexpected(checked.error());
  spend->type = seed.makes;
  spend->advancedType = advanced::kPlain;
  spend->repeat = kNotRepeat;
  spend->repeatEndDate = {};
  spend->repeatSeedID = seed.eid;
  spend->timeZone = root.calendar().zone();
  spend->connectionUUID.clear();
  spend->ipid.clear();
  return std::move(*spend);
}

Result<Transfer> transferOf(MVAppRoot& root, const SeriesSeed& seed) {
  auto transfer = Transfer::transferFromSeed(root, seed.eid);
  if (!transfer) return refuse("there is no series '{}'", seed.eid);
  transfer->repeat = kNotRepeat;
  transfer->repeatEndDate = {};
  transfer->timeZone = root.calendar().zone();
  if (auto checked = transfer->check(); !checked) return tl::make_unexpected(checked.error());
  for (const auto& [key, type] : {std::pair(&transfer->accountA, kind::kTransferOut),
                                  std::pair(&transfer->accountB, kind::kTransferIn)}) {
    if (auto checked = checkAccount(root, *key, type); !checked) return tl::make_unexpected(checked.error());
  }
  return std::move(*transfer);
}

}  // namespace

Payment paymentOf(const Spend& spend) {
  Payment payment(spend.root());
  payment.type = spend.type;
  payment.amount = spend.amount;
  // Money in another currency leaves no room for a fee, as both have one column.
  payment.serviceFeeAmount = spend.foreignCurrency.empty() ? spend.foreignAmount : 0;
  payment.account = spend.account;
  payment.book = spend.book;
  payment.category = spend.category;
  payment.note = spend.note;
  payment.datetime = spend.datetime;
  payment.timeZone = spend.timeZone;
  payment.repeatSeed = spend.repeatSeedID;
  return payment;
}

Result<> insertPaymentOfSeries(Payment& payment) {
  if (auto inserted = payment.insert(); !inserted) return inserted;
  MVAppRoot& root = payment.root();
  // The row's insert has no slot for it.
  return write(root, "update transactions set repeat = ?, editDate = ?, edit_ipid = ? where eid = ?",
               kNotRepeat, root.editStamp(), root.itsUDID(), payment.eid);
}

Result<> checkHolders(const Spend& spend, int type) {
  MVAppRoot& root = spend.root();
  if (!spend.book.empty()) {
    if (auto known = checkBookKey(root, spend.book); !known) return known;
    if (auto open = checkOpen(root, spend.book); !open) return open;
  }
  return checkAccount(root, spend.account, type);
}

Result<OccurrenceMaker> OccurrenceMaker::of(MVAppRoot& root, const SeriesSeed& seed) {
  if (seed.makesTransfers()) {
    auto transfer = transferOf(root, seed);
    if (!transfer) return tl::make_unexpected(transfer.error());
    return OccurrenceMaker(root, seed, std::move(*transfer));
  }
  auto spend = spendOf(root, seed);
  if (!spend) return tl::make_unexpected(spend.error());
  if (seed.isPayment) return OccurrenceMaker(root, seed, paymentOf(*spend));
  return OccurrenceMaker(root, seed, std::move(*spend));
}

Result<std::optional<int>> OccurrenceMaker::deletedOf(const std::string& eid) const {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query("select deleted from transactions where eid = ?", {eid});
  if (run.next()) return static_cast<int>(run.integer(0));
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return std::nullopt;
}

Result<bool> OccurrenceMaker::make(std::int64_t number) {
  const Calendar& calendar = root_->calendar();
  const bool isTransfer = std::holds_alternative<Transfer>(entry_);
  Identifiers of;
  of.eid = identifierOfDay(seed_, number, isTransfer ? "A" : "");
  if (isTransfer) of.eidB = identifierOfDay(seed_, number, "B");
  bool isFree = true;
  for (const auto* eid : {&of.eid, &of.eidB}) {
    if (eid->empty()) continue;
    const auto deleted = deletedOf(*eid);
    if (!deleted) return tl::make_unexpected(deleted.error());
    if (*deleted && **deleted < 2) return false;
    isFree = isFree && !*deleted;
  }
  if (isTransfer || std::holds_alternative<Payment>(entry_)) {
    of.uuid = identifierOfDay(seed_, number, isTransfer ? "AB" : "P");
  }
  if (!isFree) {
    for (std::string* identifier : {&of.eid, &of.eidB, &of.uuid}) *identifier = root_->newIdentifier();
  }
  const Date datetime = calendar.beginOfDay(number);
  bool paid = isPaidByDate(calendar, datetime, root_->now());
  const auto written = std::visit(
      [&](auto& entry) {
        if constexpr (std::is_same_v<decltype(entry), Payment&>) paid = paid && !entry.account.empty();
        entry.datetime = datetime;
        entry.paid = paid;
        return insert(entry, std::move(of));
      },
      entry_);
  if (!written) return tl::make_unexpected(written.error());
  ++made_;
  if (paid) ++settled_;
  return true;
}

Result<> OccurrenceMaker::insert(Spend& spend, Identifiers of) {
  spend.eid = std::move(of.eid);
  spend.payDate = spend.datetime;
  return spend.add();
}

Result<> OccurrenceMaker::insert(Payment& payment, Identifiers of) {
  payment.eid = std::move(of.eid);
  payment.connectionUUID = std::move(of.uuid);
  payment.payDate = payment.datetime;
  return insertPaymentOfSeries(payment);
}

Result<> OccurrenceMaker::insert(Transfer& transfer, Identifiers of) {
  transfer.eidA = std::move(of.eid);
  transfer.eidB = std::move(of.eidB);
  transfer.connectUUID = std::move(of.uuid);
  return transfer.insert(seed_);
}

Result<> OccurrenceMaker::finish() {
  EntryUpkeep upkeep(*root_);
  if (const auto* transfer = std::get_if<Transfer>(&entry_)) {
    upkeep.noteChange(transfer->accountA, kind::kTransferOut, settled_ * transfer->amountA);
    upkeep.noteChange(transfer->accountB, kind::kTransferIn, settled_ * transfer->amountB);
  } else if (const auto* payment = std::get_if<Payment>(&entry_)) {
    upkeep.noteChange(payment->account, payment->type, settled_ * payment->amount);
    upkeep.noteChange(payment->book, payment->type, settled_ * payment->amount);
  } else if (const auto* spend = std::get_if<Spend>(&entry_)) {
    upkeep.noteUses(*spend, made_);
    upkeep.noteChange(spend->account, spend->type, settled_ * spend->amount);
    upkeep.noteChange(spend->book, spend->type, settled_ * spend->amount);
  }
  return upkeep.write(EntryUpkeep::Balances::byAmount);
}

}  // namespace moniva
