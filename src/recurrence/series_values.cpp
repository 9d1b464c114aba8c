#include "recurrence/series_values.h"

#include "model/entry_checks.h"
#include "model/group_balance.h"
#include "model/mv_category.h"
#include "model/spend.h"
#include "model/transfer.h"
#include "recurrence/spend_repeat.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// What a series makes is told by its seed.
bool makesTransfers(const MVTransaction& seed) {
  return seed.advancedType == kind::kTransferOut || seed.advancedType == kind::kTransferIn;
}

/// Runs the steps in their order up to the first that refuses.
template <class... Steps>
Result<> inTurn(Steps&&... steps) {
  Result<> result;
  (void)((result = steps()).has_value() && ...);
  return result;
}

template <class Value, class Write>
auto ifSet(const std::optional<Value>& value, const Write& write) {
  return [&value, &write]() -> Result<> { return value ? write(*value) : Result<>(); };
}

Result<> changeTransfer(Transfer& transfer, const SeriesChange& change) {
  const auto from = [&](const std::string& key) { return transfer.updateAccountA(key); };
  const auto to = [&](const std::string& key) { return transfer.updateAccountB(key); };
  const auto moved = [&](double amount) { return transfer.updateMoved(amount); };
  const auto arrives = [&](double amount) {
    return transfer.amountB == amount ? Result<>() : transfer.updateAmountB(amount);
  };
  const auto note = [&](const std::string& text) { return transfer.updateNote(text); };
  // The one that makes room for the other goes first.
  const bool toFirst = change.account && *change.account == transfer.accountB;
  return inTurn([&] { return toFirst ? ifSet(change.to, to)() : ifSet(change.account, from)(); },
                [&] { return toFirst ? ifSet(change.account, from)() : ifSet(change.to, to)(); },
                ifSet(change.amount, moved), ifSet(change.arrives, arrives), ifSet(change.note, note));
}

Result<> changePayment(Payment& payment, const SeriesChange& change) {
  const auto account = [&](const std::string& key) { return payment.updateAccount(key); };
  const auto amount = [&](double wanted) { return payment.updateAmount(wanted); };
  const auto note = [&](const std::string& text) { return payment.updateNote(text); };
  return inTurn(ifSet(change.account, account), ifSet(change.amount, amount), ifSet(change.note, note));
}

Result<> changeSpendRecord(Spend& spend, const SeriesChange& change) {
  const auto account = [&](const std::string& key) { return spend.updateAccount(key); };
  const auto amount = [&](double wanted) {
    // What it was in another currency was of the former amount.
    return spend.foreignCurrency.empty() && change.foreignCurrency.empty()
               ? spend.updateAmount(wanted)
               : spend.updateAmount(wanted, change.foreignAmount, change.foreignCurrency);
  };
  const auto book = [&](const std::string& key) { return spend.updateBook(key); };
  const auto category = [&](const std::pair<std::string, std::string>& keys) {
    return spend.updateCategory(keys.first, keys.second);
  };
  const auto vendor = [&](const std::string& key) { return spend.updateVendor(key); };
  const auto note = [&](const std::string& text) { return spend.updateNote(text); };
  return inTurn(ifSet(change.account, account), ifSet(change.amount, amount), ifSet(change.book, book),
                ifSet(change.category, category), ifSet(change.vendor, vendor), ifSet(change.note, note));
}

Result<> checkCategory(MVAppRoot& root, const std::pair<std::string, std::string>& keys, int type) {
  for (const auto* key : {&keys.first, &keys.second}) {
    if (key->empty()) continue;
    const auto category = MVCategory::getCategory(root, *key, type);
    if (!category || category->deleted != 0) return refuse("there is no category with the key '{}'", *key);
    if (category->type != type)
      return refuse("'{}' is no category for records of this kind", category->title);
  }
  return {};
}

/// A series of transfers keeps its currencies: amounts are not converted.
Result<> checkSide(MVAppRoot& root, const std::string& former, const std::string& account, int type) {
  if (former == account) return {};
  if (account.empty()) return refuse("a transfer needs an account on each side");
  if (auto checked = checkAccountKey(root, account, type); !checked) return checked;
  const auto before = currencyOfAccount(root, former);
  const auto now = currencyOfAccount(root, account);
  if (!now) return tl::make_unexpected(now.error());
  if (before && *before != *now) {
    return refuse("the series is kept in {}, and the account in {}", *before, *now);
  }
  return {};
}

Result<> changeTransferSeed(MVAppRoot& root, const std::string& eid, const SeriesChange& change) {
  const auto stored = Transfer::transferFromSeed(root, eid);
  if (!stored) return refuse("the series of transfers cannot be read");
  const std::string from = change.account.value_or(stored->accountA);
  const std::string to = change.to.value_or(stored->accountB);
  if (from == to) return refuse("a transfer needs two different accounts");
  auto checked = checkSide(root, stored->accountA, from, kind::kTransferOut);
  if (checked) checked = checkSide(root, stored->accountB, to, kind::kTransferIn);
  if (!checked) return checked;
  const double leaves =
      change.amount ? withoutNoise(*change.amount + stored->serviceCharge) : stored->amountA;
  if (checked = checkAmount(leaves); !checked) return checked;
  if (change.arrives && !stored->acrossCurrencies) {
    return refuse("both accounts are kept in one currency, so what leaves one arrives in the other");
  }
  const double other = stored->acrossCurrencies ? change.arrives.value_or(stored->amountB) : 0;
  return write(root,
               "update transactions set account = ?, vendor = ?, amount = ?, amount2 = ?, note = ?, ipid = "
               "case when deleted = 0 then '' else ipid end,"
               " editDate = ?, edit_ipid = ? where eid = ?",
               from, to, leaves, other, change.note.value_or(stored->note), root.editStamp(), root.itsUDID(),
               eid);
}

}  // namespace

Result<> checkChange(const MVTransaction& seed, const SeriesChange& change) {
  const Calendar& calendar = seed.root().calendar();
  for (const auto& amount : {change.amount, change.arrives}) {
    if (!amount) continue;
    if (auto checked = checkAmount(*amount); !checked) return checked;
  }
  if (!change.foreignCurrency.empty()) {
    if (auto checked = checkAmount(change.foreignAmount); !checked) return checked;
    if (makesTransfers(seed) || seed.isPayment) {
      return refuse("only expenses and income keep what they were in another currency");
    }
  }
  for (const auto& date : {change.date, change.end}) {
    if (!date || *date == Date{}) continue;
    if (auto checked = checkRecordDate(calendar, *date); !checked) return checked;
  }
  if (change.rule && !repeatRuleFrom(*change.rule))
    return refuse("'{}' is no rule of repeating", *change.rule);
  const bool files = change.book || change.category || change.vendor;
  if (makesTransfers(seed)) {
    if (files) return refuse("a transfer has no book, category or vendor");
    return {};
  }
  if (change.to || change.arrives) return refuse("only a transfer goes to another account");
  if (seed.isPayment && files)
    return refuse("a payment by itself keeps its book, and has no category or vendor");
  if (change.book && change.book->empty()) return refuse("the records of a series stay in a book");
  return {};
}

Result<> changeOccurrence(MVAppRoot& root, const SeriesOccurrence& one, const SeriesChange& change) {
  if (one.type == kind::kTransferOut || one.type == kind::kTransferIn) {
    auto transfer = Transfer::transferFromEID(root, one.eid);
    return transfer ? changeTransfer(*transfer, change) : refuse("of a transfer one side is missing");
  }
  if (one.isPayment) {
    auto payment = Payment::paymentFromEID(root, one.eid);
    return payment ? changePayment(*payment, change) : refuse("there is no payment '{}'", one.eid);
  }
  auto spend = Spend::spendFromEID(root, one.eid);
  return spend ? changeSpendRecord(*spend, change) : refuse("there is no record '{}'", one.eid);
}

Result<> dateOccurrence(MVAppRoot& root, const SeriesOccurrence& one, Date day) {
  const Calendar& calendar = root.calendar();
  const Date date = calendar.dateWithTime(day, one.datetime);
  if (one.type == kind::kTransferOut || one.type == kind::kTransferIn) {
    auto transfer = Transfer::transferFromEID(root, one.eid);
    return transfer ? transfer->updateDate(date) : refuse("of a transfer one side is missing");
  }
  auto spend = Spend::spendFromEID(root, one.eid);
  if (!spend) return refuse("there is no record '{}'", one.eid);
  spend->timeZone = calendar.zone();
  return spend->updateDate(date);
}

Result<> changeSeed(MVAppRoot& root, const MVTransaction& seed, const std::string& eid,
                    const SeriesChange& change) {
  if (!change.hasValues()) return {};
  if (makesTransfers(seed)) return changeTransferSeed(root, eid, change);
  const int type = seed.advancedType;
  // One statement a column: each has its own text, and compiles once.
  const auto set = [&](std::string_view sql, const auto& value) {
    return write(root, sql, value, root.editStamp(), root.itsUDID(), eid);
  };
  const auto amount = [&](double wanted) {
    return write(
        root,
        "update transactions set amount = ?, amount2 = ?, currency2 = ?, ipid = case when deleted = 0 "
        "then '' else ipid end, editDate = ?, edit_ipid = ? where eid = ?",
        wanted, change.foreignCurrency.empty() ? 0 : change.foreignAmount, change.foreignCurrency,
        root.editStamp(), root.itsUDID(), eid);
  };
  const auto account = [&](const std::string& key) -> Result<> {
    if (auto checked = checkAccountKey(root, key, type); !checked) return checked;
    return set(
        "update transactions set account = ?, ipid = case when deleted = 0 then '' else ipid end, editDate = "
        "?, edit_ipid = ? where eid = ?",
        key);
  };
  const auto book = [&](const std::string& key) -> Result<> {
    if (auto checked = checkBookKey(root, key); !checked) return checked;
    return set(
        "update transactions set book = ?, ipid = case when deleted = 0 then '' else ipid end, editDate = ?, "
        "edit_ipid = ? where eid = ?",
        key);
  };
  const auto category = [&](const std::pair<std::string, std::string>& keys) -> Result<> {
    if (auto checked = checkCategory(root, keys, type); !checked) return checked;
    return write(root,
                 "update transactions set category = ?, subcategory = ?, ipid = case when deleted = 0 then "
                 "'' else ipid end, editDate = ?, edit_ipid ="
                 " ? where eid = ?",
                 keys.first, keys.second.empty() ? kNoCategory : std::string_view(keys.second),
                 root.editStamp(), root.itsUDID(), eid);
  };
  const auto vendor = [&](const std::string& key) {
    return set(
        "update transactions set vendor = ?, ipid = case when deleted = 0 then '' else ipid end, editDate = "
        "?, edit_ipid = ? where eid = ?",
        key);
  };
  const auto note = [&](const std::string& text) {
    return set(
        "update transactions set note = ?, ipid = case when deleted = 0 then '' else ipid end, editDate = ?, "
        "edit_ipid = ? where eid = ?",
        text);
  };
  return inTurn(ifSet(change.amount, amount), ifSet(change.account, account), ifSet(change.book, book),
                ifSet(change.category, category), ifSet(change.vendor, vendor), ifSet(change.note, note));
}

}  // namespace moniva
