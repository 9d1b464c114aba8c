#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "model/group_balance.h"
#include "model/spend.h"
#include "model/spend_change.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// The categories of the items that go from one book to another are used in that one.
void noteMove(EntryUpkeep& upkeep, MVAppRoot& root, const TransactionItem& row, const TransactionGroup& group,
              const std::string& newBook) {
  std::vector<TransactionItem> moved;
  if (row.isSpend() && !row.isPayment()) moved.push_back(row);
  for (const auto& item : group.items) {
    if (item.eid != row.eid && item.book == row.book && !row.book.empty()) moved.push_back(item);
  }
  for (const auto& item : moved) {
    Spend use(root);
    use.type = item.type;
    use.category = item.category;
    use.subcategory = item.subcategory;
    use.book = item.book;
    upkeep.noteUses(use, -1);
    use.book = newBook;
    upkeep.noteUses(use, newBook.empty() ? 0 : 1);
  }
}

/// A payment of a record, which `Payment` edits.
bool isPaymentOfRecord(const TransactionItem& row) {
  return row.isPayment() && row.isSpend() && !row.connectionUUID.empty();
}

/// The amount of a row in its place: the only payment of a record follows, so does an instalment's payment.
Result<> settleAmount(MVAppRoot& root, const TransactionItem& row, double amount) {
  if (row.connectionUUID.empty() || !row.isSpend()) return {};
  const auto group = TransactionGroup::of(root, row.connectionUUID);
  if (!group) return tl::make_unexpected(group.error());
  if (row.advancedType == advanced::kInstallment) {
    if (const auto payment = partnerOf(*group, row)) {
      if (auto written = writeAmount(root, payment->eid, amount); !written) return written;
    }
  }
  if (auto counted = recountSeed(root, *group); !counted) return counted;
  return settlePayments(root, row.connectionUUID, SolePayment::follows);
}

}  // namespace

Result<> Spend::updateAmount(double newAmount) {
  if (auto checked = checkAmount(newAmount); !checked) return checked;
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    if (isPaymentOfRecord(row)) {
      auto payment = Payment::paymentFromEID(*root_, eid);
      auto changed = payment ? payment->updateAmount(newAmount) : refuse("there is no payment '{}'", eid);
      if (changed) amount = newAmount;
      return changed;
    }
    if (isSeed()) {
      if (advancedType != advanced::kCost)
        return refuse("the amounts of a plan are those of its instalments");
      if (auto written = writeAmount(*root_, eid, newAmount); !written) return written;
      amount = newAmount;
      return updateApportionedCost(payDate, repeatEndDate);
    }
    if (auto written = writeAmount(*root_, eid, newAmount); !written) return written;
    amount = newAmount;
    return settleAmount(*root_, row, newAmount);
  });
}

Result<> Spend::updateAmount(double newAmount, double newForeignAmount,
                             const std::string& newForeignCurrency) {
  if (!newForeignCurrency.empty()) {
    if (auto checked = checkAmount(newForeignAmount); !checked) return checked;
  }
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    if (isSeed()) return refuse("what is divided into shares is kept in one currency");
    if (isPaymentOfRecord(row)) return refuse("a payment is kept in the currency of its account");
    if (row.amount != newAmount) {
      if (auto written = updateAmount(newAmount); !written) return written;
    }
    foreignCurrency = newForeignCurrency;
    foreignAmount = newForeignCurrency.empty() ? 0 : newForeignAmount;
    return write(*root_,
                 "update transactions set amount = ?, currency2 = ?, amount2 = ?, ipid = '', editDate = ?,"
                 " edit_ipid = ? where eid = ?",
                 newAmount, foreignCurrency, foreignAmount, root_->editStamp(), root_->itsUDID(), eid);
  });
}

Result<> Spend::updateAccount(std::string newAccount) {
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    if (isPaymentOfRecord(row)) {
      auto payment = Payment::paymentFromEID(*root_, eid);
      auto changed = payment ? payment->updateAccount(newAccount) : refuse("there is no payment '{}'", eid);
      if (changed) account = newAccount;
      return changed;
    }
    const auto group = TransactionGroup::of(*root_, row.connectionUUID);
    if (!group) return tl::make_unexpected(group.error());
    if (auto checked = checkAccountKey(*root_, newAccount, kindInGroup(*this, *group)); !checked)
      return checked;
    if (!row.isPayment() && !row.connectionUUID.empty() && row.isSpend()) {
      const TransactionItem* sole = nullptr;
      int regulars = 0;
      for (const auto& payment : group->payments) {
        if (payment.isRefund()) continue;
        sole = &payment;
        ++regulars;
      }
      const auto partner = row.advancedType == advanced::kInstallment ? partnerOf(*group, row) : std::nullopt;
      if (!partner && regulars != 1)
        return refuse("the record has {} payments; change their accounts", regulars);
      auto payment = Payment::paymentFromEID(*root_, partner ? partner->eid : sole->eid);
      if (!payment) return refuse("the record's payment cannot be read");
      return payment->updateAccount(newAccount);
    }
    auto written = write(
        *root_, "update transactions set account = ?, ipid = '', editDate = ?, edit_ipid = ? where eid = ?",
        newAccount, root_->editStamp(), root_->itsUDID(), eid);
    if (!written) return written;
    account = newAccount;
    if (!isSeed()) return {};
    // The seed names the account for the plan as a whole.
    return write(
        *root_,
        "update transactions set account = ?, editDate = ?, edit_ipid = ? where transferEID = ? and bid = 10"
        " and deleted = 0",
        newAccount, root_->editStamp(), root_->itsUDID(), connectionUUID);
  });
}

Result<> Spend::updateBook(std::string newBook) {
  if (!newBook.empty()) {
    if (auto checked = checkBookKey(*root_, newBook); !checked) return checked;
  }
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    const std::string oldBook = row.book;
    const bool grouped = !row.connectionUUID.empty();
    const auto group = TransactionGroup::of(*root_, row.connectionUUID);
    if (!group) return tl::make_unexpected(group.error());
    EntryUpkeep upkeep(*root_);
    noteMove(upkeep, *root_, row, *group, newBook);
    if (isSeriesSeed()) {
      const auto made = itemsWhere(*root_, "repeat_seed = ? and bid = 20 and deleted = 0", {eid});
      if (!made) return tl::make_unexpected(made.error());
      for (const auto& one : *made) noteMove(upkeep, *root_, one, {}, newBook);
    }
    if (auto kept = upkeep.write(EntryUpkeep::Balances::byAmount); !kept) return kept;
    if (newBook.empty() && grouped) {
      return refuse("a record with payments stays in a book; take its payments away first");
    }
    if (grouped && row.isPayment()) return refuse("a payment of a record has the book of what it pays for");
    constexpr std::string_view intoBook =
        "update transactions set book = ?, ipid = '', bid = 20, editDate = ?, edit_ipid = ? where eid = ?";
    constexpr std::string_view outOfBooks =
        "update transactions set book='', ipid = '', bid = 10, category = '', subcategory = '#NOMVCATEGORY',"
        " editDate = ?, edit_ipid = ? where eid = ?";
    auto written = newBook.empty()
                       ? write(*root_, outOfBooks, root_->editStamp(), root_->itsUDID(), eid)
                       : write(*root_, intoBook, newBook, root_->editStamp(), root_->itsUDID(), eid);
    if (!written) return written;
    book = newBook;
    bid = newBook.empty() ? kPaymentRow : kItemRow;
    if (newBook.empty()) {
      category.clear();
      subcategory.clear();
    }
    if (isSeriesSeed()) {
      // Payments of compound occurrences stay payments.
      return newBook.empty()
                 ? write(*root_,
                         "update transactions set book='', ipid = '', bid = 10, category = '', subcategory ="
                         " '#NOMVCATEGORY', editDate = ?, edit_ipid = ? where repeat_seed = ? and "
                         "transferEID = ''",
                         root_->editStamp(), root_->itsUDID(), eid)
                 : write(*root_,
                         "update transactions set book = ?, ipid = '', bid = 20, editDate = ?, edit_ipid = ? "
                         "where"
                         " repeat_seed = ? and (bid = 20 or transferEID = '')",
                         newBook, root_->editStamp(), root_->itsUDID(), eid);
    }
    if (!grouped || oldBook.empty()) return {};
    written =
        write(*root_,
              "update transactions set book = ?, ipid = '', editDate = ?, edit_ipid = ? where transferEID = ?"
              " and book = ?",
              newBook, root_->editStamp(), root_->itsUDID(), row.connectionUUID, oldBook);
    if (!written) return written;
    // Payments of older stores name the book in the place of a category.
    return write(*root_,
                 "update transactions set category = ?, editDate = ?, edit_ipid = ? where transferEID = ? and"
                 " category = ?",
                 newBook, root_->editStamp(), root_->itsUDID(), row.connectionUUID, oldBook);
  });
}

Result<> Spend::updateDate(Date date) {
  if (auto checked = checkRecordDate(root_->calendar(), date); !checked) return checked;
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    if (isSeed()) return refuse("a plan is dated by its parts");
    datetime = date;
    paid = settledAt(row, date, root_->now());
    if (row.payDate == row.datetime) payDate = date;
    if (isPaymentOfRecord(row)) {
      auto payment = Payment::paymentFromEID(*root_, eid);
      if (!payment) return refuse("there is no payment '{}'", eid);
      payment->timeZone = timeZone;
      return payment->updateDate(date);
    }
    const auto group = TransactionGroup::of(*root_, row.connectionUUID);
    if (!group) return tl::make_unexpected(group.error());
    TransactionItem own = row;
    own.timeZone = timeZone;
    if (auto written = writeDate(*root_, own, date); !written) return written;
    // A share of a cost is dated alone, an instalment with its payment.
    if (!row.isSpend() || row.advancedType == advanced::kCost) return {};
    if (row.advancedType == advanced::kInstallment) {
      const auto partner = partnerOf(*group, row);
      return partner ? writeDate(*root_, *partner, date) : Result<>();
    }
    const int day = integerDateOfTimeZone(root_->calendar(), row.datetime, row.timeZone);
    for (const auto* rows : {&group->items, &group->payments}) {
      for (const auto& other : *rows) {
        if (other.eid == eid || other.isRefund()) continue;
        if (integerDateOfTimeZone(root_->calendar(), other.datetime, other.timeZone) != day) continue;
        if (auto written = writeDate(*root_, other, date); !written) return written;
      }
    }
    return {};
  });
}

Result<> Spend::updateRepeat(const std::string& rule, Date endDate) {
  const bool repeats = !rule.empty() && rule != kNotRepeat;
  const bool openEnded = !repeats || endDate == Date{};
  if (repeats) {
    if (auto checked = checkRepeatRule(rule); !checked) return checked;
  }
  if (!openEnded) {
    if (auto checked = checkRecordDate(root_->calendar(), endDate); !checked) return checked;
  }
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    if (!openEnded && root_->calendar().isBeforeDay(endDate, row.datetime)) {
      return refuse("a series ends after it begins");
    }
    auto written =
        write(*root_,
              "update transactions set repeat = ?, repeat_end_date = ?, ipid = '', editDate = ?,"
              " edit_ipid = ? where eid = ?",
              rule, openEnded ? Value("") : Value(endDate), root_->editStamp(), root_->itsUDID(), eid);
    if (!written) return written;
    repeat = rule;
    repeatEndDate = openEnded ? Date{} : endDate;
    if (repeats || !isSeriesSeed()) return {};
    // A series that repeats no more is over; what it has made stays.
    written = write(*root_,
                    "update transactions set deleted = 1, ipid = 'stopRepeat by user', editDate = ?,"
                    " edit_ipid = ? where eid = ?",
                    root_->editStamp(), root_->itsUDID(), eid);
    if (written) isDeleted = 1;
    return written;
  });
}

Result<> Spend::updateRepeat(const std::string& rule) {
  return updateRepeat(rule, repeatEndDate);
}

Result<> Spend::updateRepeatEndDate(Date endDate) {
  return updateRepeat(repeat, endDate);
}

Result<> Spend::updateNote(const std::string& newNote) {
  return changeSpend(*this, [&](const TransactionItem&) {
    note = newNote;
    return write(*root_,
                 "update transactions set note = ?, ipid = '', editDate = ?, edit_ipid = ? where eid = ?",
                 newNote, root_->editStamp(), root_->itsUDID(), eid);
  });
}

Result<> Spend::updateReimburse(bool isToBeReimbursed) {
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    if (!row.isSpend()) return refuse("only an expense is reimbursed");
    needReimburse = isToBeReimbursed;
    return write(
        *root_,
        "update transactions set needReimburse = ?, ipid = '', editDate = ?, edit_ipid = ? where eid = ?",
        needReimburse, root_->editStamp(), root_->itsUDID(), eid);
  });
}

}  // namespace moniva
