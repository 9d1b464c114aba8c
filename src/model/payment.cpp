#include "model/payment.h"

#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "model/group_balance.h"
#include "model/record_entry.h"
#include "storage/writes.h"

namespace moniva {
namespace {

constexpr std::string_view kDeleted =
    "update transactions set deleted = 1, editDate = ?, edit_ipid = ? where eid = ?";
constexpr std::string_view kRemoved =
    "update transactions set deleted = 3, editDate = ?, edit_ipid = ? where eid = ?";

Payment paymentOf(MVAppRoot& root, const TransactionItem& row) {
  Payment payment(root);
  payment.isNewOne = false;
  payment.eid = row.eid;
  payment.book = row.book;
  payment.type = row.type;
  payment.amount = row.amount;
  payment.datetime = row.datetime;
  payment.timeZone = row.timeZone;
  payment.account = row.account;
  payment.note = row.note;
  payment.paid = row.paid;
  payment.connectionUUID = row.connectionUUID;
  payment.advancedType = row.advancedType;
  payment.serviceFeeAmount = row.amount2;
  payment.repeatSeed = row.repeatSeed;
  payment.category = row.category;
  payment.payDate = row.payDate;
  payment.isDeleted = row.isDeleted;
  return payment;
}

Result<> checkFee(double fee, double amount) {
  if (fee >= 0 && fee <= amount) return {};
  return refuse("a fee is part of the payment; {} is none of {}", fee, amount);
}

/// The group of a payment has items that it pays for.
Result<TransactionGroup> groupToPay(MVAppRoot& root, const Payment& payment) {
  auto group = TransactionGroup::of(root, payment.connectionUUID);
  if (!group) return group;
  if (group->items.empty())
    return refuse("there is no record to pay with the UUID '{}'", payment.connectionUUID);
  if (group->items.front().type != payment.type)
    return refuse("income and expenses are not paid for each other");
  return group;
}

}  // namespace

Payment::Payment(MVAppRoot& root) : datetime(root.now()), timeZone(root.calendar().zone()), root_(&root) {}

std::optional<Payment> Payment::paymentFromEID(MVAppRoot& root, std::string_view eid) {
  const auto row = TransactionItem::fromEID(root, eid);
  if (!row) return std::nullopt;
  if (row->bid == 0) root.platform().userDefaults->setString("1", "crashNeedFix");
  if (!row->isPayment() || !row->isSpend()) return std::nullopt;
  return paymentOf(root, *row);
}

std::optional<Payment> Payment::paymentFromUUID(MVAppRoot& root, std::string_view uuid) {
  const auto group = TransactionGroup::of(root, uuid);
  if (!group || group->payments.empty()) return std::nullopt;
  return paymentOf(root, group->payments.front());
}

Result<bool> Payment::hasPendingPayment(MVAppRoot& root, std::string_view uuid) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select amount from transactions where bid = 10 and deleted = 0 and transferEID = ? and paid = 0 and"
      " (account = '' or account is NULL)",
      {uuid});
  const bool found = run.next();
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return found;
}

Result<> Payment::insert() {
  if (auto checked = checkAmount(amount); !checked) return checked;
  if (auto checked = checkFee(serviceFeeAmount, amount); !checked) return checked;
  if (auto checked = checkRecordDate(root_->calendar(), datetime); !checked) return checked;
  if (eid.empty()) eid = root_->newIdentifier();
  if (payDate == Date{}) payDate = datetime;
  auto written = write(*root_,
                       "insert into transactions (amount, amount2, type, account, editDate, eid, paid, "
                       "datetime, sday, barcode,"
                       " transferEID, note, subcategory, category, syear, bid, payDate, edit_ipid, "
                       "repeat_seed) values (?, ?, ?, ?,"
                       " ?, ?,?,?, ?,?,?,?,'#NOMVCATEGORY',?,?,10, ?,?,?)",
                       amount, serviceFeeAmount, type, account, root_->editStamp(), eid, paid, datetime,
                       integerDateOfTimeZone(root_->calendar(), datetime, timeZone), timeZone, connectionUUID,
                       note, category, advancedType, payDate, root_->itsUDID(), repeatSeed);
  if (!written) return written;
  isNewOne = false;
  if (book.empty()) {
    root_->platform().log.line("Empty Book : Payment 133");
    return {};
  }
  return write(*root_, "update transactions set book = ? where eid = ?", book, eid);
}

Result<> Payment::add() {
  if (auto checked = checkAccountKey(*root_, account, type); !checked) return checked;
  if (eid.empty()) eid = root_->newIdentifier();
  if (!isPaidAt(datetime, root_->now())) paid = false;
  return changeRecords(*root_, RecordScope{eid, connectionUUID, {}}, [&](Connection&) -> Result<> {
    if (connectionUUID.empty()) return insert();
    const auto group = groupToPay(*root_, *this);
    if (!group) return tl::make_unexpected(group.error());
    if (group->items.front().advancedType == advanced::kInstallment) {
      return refuse("an instalment plan has a payment for each instalment already");
    }
    book.clear();
    advancedType = group->items.front().advancedType;
    if (auto inserted = insert(); !inserted) return inserted;
    return settlePayments(*root_, connectionUUID, SolePayment::stays);
  });
}

Result<> Payment::addNew(std::string_view itemEid) {
  return atomically(*root_, [&](Connection&) -> Result<> {
    const auto item = TransactionItem::fromEID(*root_, itemEid);
    if (!item || item->isDeleted != 0) return refuse("there is no record '{}'", itemEid);
    if (item->isPayment() || item->bid != kItemRow) return refuse("a payment is not paid by another one");
    type = item->type == kind::kInstallmentSeed ? type : item->type;
    connectionUUID = item->connectionUUID;
    if (!connectionUUID.empty()) return add();
    if (type != kind::kIncome && type != kind::kExpense)
      return refuse("only expenses and income have payments");
    if (!item->account.empty()) {
      return refuse("the record is paid from its own account already; take that off first");
    }
    connectionUUID = root_->newIdentifier();
    auto grouped =
        write(*root_,
              "update transactions set transferEID = ?, syear = ?, ipid = 'batchEdit', editDate = ?,"
              " edit_ipid = ? where eid = ?",
              connectionUUID, advanced::kSpendWithPayment, root_->editStamp(), root_->itsUDID(), itemEid);
    if (!grouped) return grouped;
    return add();
  });
}

Result<> Payment::save() {
  return isNewOne ? add() : update();
}

template <class Work>
Result<> Payment::change(Work work) {
  return changeRecords(*root_, RecordScope{eid, connectionUUID, {}}, [&](Connection&) -> Result<> {
    const auto row = TransactionItem::fromEID(*root_, eid);
    if (!row || row->isDeleted > 1 || !row->isPayment()) return refuse("there is no payment '{}'", eid);
    if (row->isDeleted == 1) return refuse("the payment is deleted; restore it first");
    if (row->isRefund()) return refuse("this is a refund; it is changed as one");
    auto group = TransactionGroup::of(*root_, row->connectionUUID);
    if (!group) return tl::make_unexpected(group.error());
    auto changed = work(*row, *group);
    if (changed) edited = true;
    return changed;
  });
}

Result<> Payment::delete_() {
  return change([&](const TransactionItem& row, const TransactionGroup& group) -> Result<> {
    const bool byItself = row.connectionUUID.empty() || group.items.empty();
    if (!byItself && row.isRest()) {
      return refuse("this is what is still to be paid; it goes when payments cover it, or with the record");
    }
    if (!byItself && row.advancedType == advanced::kInstallment) {
      return refuse("an instalment is not taken away alone; change the plan");
    }
    auto written = write(*root_, byItself ? kDeleted : kRemoved, root_->editStamp(), root_->itsUDID(), eid);
    if (!written) return written;
    isDeleted = byItself ? 1 : 3;
    return byItself ? Result<>() : settlePayments(*root_, row.connectionUUID, SolePayment::stays);
  });
}

Result<> Payment::restore() {
  return changeRecords(*root_, RecordScope{eid, {}, {}}, [&](Connection&) -> Result<> {
    const auto row = TransactionItem::fromEID(*root_, eid);
    if (!row || row->isDeleted != 1) return refuse("there is no deleted payment '{}'", eid);
    const auto group = TransactionGroup::of(*root_, row->connectionUUID, true);
    if (!group) return tl::make_unexpected(group.error());
    if (!group->items.empty()) return refuse("a payment comes back with the record it is part of");
    auto written =
        write(*root_, "update transactions set deleted = 0, editDate = ?, edit_ipid = ? where eid = ?",
              root_->editStamp(), root_->itsUDID(), eid);
    if (!written) return written;
    const auto left = leaveDeletedSeries(*root_, eid, {});
    if (!left) return tl::make_unexpected(left.error());
    if (*left) repeatSeed.clear();
    isDeleted = 0;
    return {};
  });
}

Result<> Payment::updateAmount(double newAmount) {
  if (auto checked = checkAmount(newAmount); !checked) return checked;
  return change([&](const TransactionItem& row, const TransactionGroup& group) -> Result<> {
    auto written =
        write(*root_, "update transactions set amount = ?, editDate = ?, edit_ipid = ? where eid = ?",
              newAmount, root_->editStamp(), root_->itsUDID(), eid);
    if (!written) return written;
    amount = newAmount;
    if (row.advancedType != advanced::kInstallment) {
      return settlePayments(*root_, row.connectionUUID, SolePayment::stays);
    }
    if (const auto item = partnerOf(group, row)) {
      if (auto followed = writeAmount(*root_, item->eid, newAmount); !followed) return followed;
    }
    const auto now = TransactionGroup::of(*root_, row.connectionUUID);
    if (!now) return tl::make_unexpected(now.error());
    if (auto counted = recountSeed(*root_, *now); !counted) return counted;
    return settlePayments(*root_, row.connectionUUID, SolePayment::stays);
  });
}

Result<> Payment::updateAccount(const std::string& newAccount) {
  if (auto checked = checkAccountKey(*root_, newAccount, type); !checked) return checked;
  return change([&](const TransactionItem&, const TransactionGroup&) {
    account = newAccount;
    return write(*root_, "update transactions set account = ?, editDate = ?, edit_ipid = ? where eid = ?",
                 newAccount, root_->editStamp(), root_->itsUDID(), eid);
  });
}

Result<> Payment::updateNote(const std::string& newNote) {
  return change([&](const TransactionItem&, const TransactionGroup&) {
    note = newNote;
    return write(*root_, "update transactions set note = ?, editDate = ?, edit_ipid = ? where eid = ?",
                 newNote, root_->editStamp(), root_->itsUDID(), eid);
  });
}

Result<> Payment::updateBook(const std::string& newBook) {
  if (!newBook.empty()) {
    if (auto checked = checkBookKey(*root_, newBook); !checked) return checked;
  }
  return change([&](const TransactionItem& row, const TransactionGroup& group) -> Result<> {
    if (!row.connectionUUID.empty()) {
      category = commonCategory(group.items);
      return write(*root_, "update transactions set category = ?, edit_ipid = ?, editDate = ? where eid = ?",
                   category, root_->itsUDID(), root_->editStamp(), eid);
    }
    book = newBook;
    category.clear();
    return write(*root_,
                 "update transactions set book = ?, category = ?, edit_ipid = ?, editDate = ? where eid = ?",
                 book, category, root_->itsUDID(), root_->editStamp(), eid);
  });
}

Result<> Payment::updateDate(Date date) {
  if (auto checked = checkRecordDate(root_->calendar(), date); !checked) return checked;
  return change([&](const TransactionItem& row, const TransactionGroup& group) -> Result<> {
    TransactionItem moved = row;
    moved.timeZone = timeZone;
    if (auto written = writeDate(*root_, moved, date); !written) return written;
    datetime = date;
    paid = settledAt(row, date, root_->now());
    if (row.advancedType != advanced::kInstallment) return {};
    const auto item = partnerOf(group, row);
    return item ? writeDate(*root_, *item, date) : Result<>();
  });
}

Result<> Payment::setPaid(bool isPaid) {
  return change([&](const TransactionItem& row, const TransactionGroup& group) -> Result<> {
    if (isPaid && !isPaidAt(row.datetime, root_->now())) {
      return refuse("the payment lies ahead; change its date first");
    }
    constexpr std::string_view sql =
        "update transactions set paid = ?, editDate = ?, edit_ipid = ? where eid = ?";
    if (auto written = write(*root_, sql, isPaid, root_->editStamp(), root_->itsUDID(), eid); !written) {
      return written;
    }
    paid = isPaid;
    if (row.advancedType != advanced::kInstallment) return {};
    const auto item = partnerOf(group, row);
    return item ? write(*root_, sql, isPaid, root_->editStamp(), root_->itsUDID(), item->eid) : Result<>();
  });
}

Result<> Payment::paidIt() {
  return setPaid(true);
}

Result<> Payment::unpaidIt() {
  return setPaid(false);
}

Result<> Payment::update() {
  const Payment wanted = *this;
  return change([&](const TransactionItem& row, const TransactionGroup&) -> Result<> {
    const Payment stored = paymentOf(*root_, row);
    if (auto checked = checkFee(serviceFeeAmount, amount); !checked) return checked;
    Result<> written;
    if (stored.datetime != wanted.datetime) written = updateDate(wanted.datetime);
    if (written && stored.amount != wanted.amount) written = updateAmount(wanted.amount);
    if (written && stored.account != wanted.account) written = updateAccount(wanted.account);
    if (written && stored.note != wanted.note) written = updateNote(wanted.note);
    if (written && stored.book != wanted.book) written = updateBook(wanted.book);
    if (written && stored.serviceFeeAmount != wanted.serviceFeeAmount) {
      written =
          write(*root_, "update transactions set amount2 = ?, editDate = ?, edit_ipid = ? where eid = ?",
                wanted.serviceFeeAmount, root_->editStamp(), root_->itsUDID(), eid);
    }
    if (written && stored.payDate != wanted.payDate) {
      written =
          write(*root_, "update transactions set payDate = ?, editDate = ?, edit_ipid = ? where eid = ?",
                wanted.payDate, root_->editStamp(), root_->itsUDID(), eid);
    }
    // The date may have settled it, or made it pending, already.
    return written && stored.paid != wanted.paid ? setPaid(wanted.paid) : written;
  });
}

}  // namespace moniva
