#pragma once

#include <map>
#include <memory>
#include <random>

#include "bench_store.h"
#include "model/moniva_account.h"
#include "model/mv_category.h"
#include "model/transaction_type.h"
#include "model/vendor.h"
#include "storage/transaction.h"

namespace moniva::bench {

/// A household's years from 2014 on, of so many records spread evenly: two books, eight accounts, twenty
/// categories with eight below each, 300 vendors; expenses, one income in twenty, and a few transfers,
/// foreign, refunded, pending and deleted ones. The same numbers each time.
class TenYears : public BenchStore {
 public:
  explicit TenYears(int records, int years = 10) : book(root), account(root), years_(years), random_(1) {
    if (!ready) return;
    Transaction transaction(connection());
    ready = addNames();
    for (int i = 0; i < records && ready; ++i) ready = addRecord(i, records);
    ready = ready && transaction.commit() && connection().checkpoint();
  }

  /// The first and the last moment.
  Date begin() const { return calendar().dateWithYear(2014, 1, 1); }
  Date end() const { return calendar().dateWithYear(2014 + years_, 1, 1).plusSeconds(-1); }
  /// A month and a year within it.
  Date monthBegin() const { return calendar().dateWithYear(2014, 3, 1); }
  Date monthEnd() const { return calendar().dateWithYear(2014, 4, 1).plusSeconds(-1); }
  Date yearBegin() const { return calendar().dateWithYear(2014 + years_ / 2, 1, 1); }
  Date yearEnd() const { return calendar().dateWithYear(2015 + years_ / 2, 1, 1).plusSeconds(-1); }

  MonivaAccount book;
  MonivaAccount account;

 private:
  std::size_t any(std::size_t count) { return random_() % count; }
  bool oneIn(std::size_t n) { return any(n) == 0; }

  bool addHolder(MonivaAccount& row, int aKind, std::string title) {
    row.aKind = aKind;
    row.title = std::move(title);
    row.currency = "EUR";
    return row.add().has_value();
  }

  bool addNames() {
    bool done = addHolder(book, kBookKind, "Household");
    MonivaAccount other(root);
    done = done && addHolder(other, kBookKind, "Trips");
    books_ = {book.pk, other.pk};
    for (int i = 0; i < 8 && done; ++i) {
      MonivaAccount row(root);
      done = addHolder(row, kAccountKind, fmt::format("Account {}", i));
      accounts_.push_back(row.pk);
      if (i == 0) account = row;
    }
    Connection& db = connection();
    const auto addName = [&](const std::string& title, int type, const std::string& parent) {
      auto key = root.newIdentifier();
      done =
          done &&
          db.execute("insert into category (title, type, parent, oldTitle, orderString) values (?,?,?,?,?)",
                     {title, type, parent, key, title});
      return key;
    };
    for (int i = 0; i < 20; ++i) {
      categories_.push_back(addName(fmt::format("Category {}", i), kind::kExpense, ""));
      for (int j = 0; j < 8; ++j) {
        subcategories_.push_back(
            addName(fmt::format("Part {} of {}", j, i), kind::kExpense, categories_.back()));
      }
    }
    wage_ = addName("Wage", kind::kIncome, "");
    for (int i = 0; i < 300; ++i) vendors_.push_back(addName(fmt::format("Shop {}", i), Vendor::kPayee, ""));
    return done;
  }

  std::string words() {
    static constexpr std::array kWords = {"coffee", "lunch", "with Ann", "train", "ticket", "rent", "bread",
                                          "milk",   "gift",  "for Bob",  "taxi",  "book",   "牛奶", "phone"};
    std::string note;
    for (int i = 0; i < 3; ++i) note.append(note.empty() ? "" : " ").append(kWords.at(any(kWords.size())));
    return note;
  }

  bool addRecord(int number, int records) {
    const double span = end().secondsSince1970 - begin().secondsSince1970;
    const double moment =
        std::min(end().secondsSince1970,
                 begin().secondsSince1970 + span * number / records + static_cast<double>(any(2 * 86'400)));
    const double amount = static_cast<double>(any(20'000) + 1) / 100;
    const std::string& from = accounts_.at(any(accounts_.size()));
    if (oneIn(33)) return addTransfer(moment, amount, from);
    const bool isIncome = oneIn(20);
    const auto category = any(categories_.size());
    const bool isForeign = oneIn(50);
    return connection().execute(
        "insert into transactions (eid, bid, amount, type, note, category, subcategory, vendor, datetime, "
        "sday,"
        " barcode, account, book, paid, deleted, editDate, edit_ipid, currency2, amount2, repeat) values"
        " (?,20,?,?,?,?,?,?,?,20240101,'Europe/Berlin',?,?,?,?,?,'bench',?,?,'Not Repeat')",
        {root.newIdentifier(), amount, isIncome ? kind::kIncome : kind::kExpense,
         number == records / 3 ? std::string("the needle") : words(),
         isIncome ? wage_ : categories_[category],
         isIncome ? wage_ : subcategories_.at(category * 8 + any(8)),
         isIncome || oneIn(5) ? std::string() : vendors_.at(any(vendors_.size())), moment, from,
         books_.at(oneIn(7) ? 1 : 0), oneIn(500) ? 0 : 1, oneIn(200) ? 1 : 0, moment, isForeign ? "USD" : "",
         isForeign ? amount * 1.25 : 0.0});
  }

  bool addTransfer(double moment, double amount, const std::string& from) {
    const std::string group = root.newIdentifier();
    const std::string& to = accounts_.at(any(accounts_.size()));
    const auto side = [&](int type, const std::string& account, const std::string& other) {
      return connection().execute(
          "insert into transactions (eid, bid, amount, type, note, vendor, datetime, sday, barcode, account,"
          " transferEID, paid, editDate, edit_ipid, repeat) values"
          " (?,10,?,?,'',?,?,20240101,'Europe/Berlin',?,?,1,?,'bench','Not Repeat')",
          {root.newIdentifier(), amount, type, other, moment, account, group, moment});
    };
    return side(kind::kTransferOut, from, to) && side(kind::kTransferIn, to, from);
  }

  int years_;
  std::mt19937 random_;
  std::vector<std::string> books_, accounts_, categories_, subcategories_, vendors_;
  std::string wage_;
};

/// The store of so many records, made once a program.
inline TenYears& tenYears(std::int64_t records, int years = 10) {
  static std::map<std::pair<std::int64_t, int>, std::unique_ptr<TenYears>> stores;
  auto& store = stores[{records, years}];
  if (!store) store = std::make_unique<TenYears>(static_cast<int>(records), years);
  return *store;
}

}  // namespace moniva::bench
