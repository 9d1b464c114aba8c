#pragma once

#include "model/account_balance.h"
#include "model/account_groups.h"
#include "model/mv_category.h"
#include "model/spend.h"
#include "model/transfer.h"
#include "model/vendor.h"
#include "support/device.h"

namespace moniva {

/// What a story is told with: a book, two accounts, and records in them. A record is named by what it was
/// for; its category is made when it is new.
class Household : public Device {
 public:
  explicit Household(const std::string& zone = "Europe/Berlin") : Device(zone) {
    open();
    home.emplace(book("Home"));
    cash.emplace(account("Cash"));
    bank.emplace(account("Bank"));
  }

  MonivaAccount book(const std::string& title) { return added(title, kBookKind, "_Book"); }
  MonivaAccount account(const std::string& title, const std::string& type = "_SavingAccount") {
    return added(title, kAccountKind, type);
  }
  MonivaAccount group(const std::string& title, const std::vector<MonivaAccount>& members) {
    MonivaAccount made(root);
    made.title = title;
    made.aKind = members.front().aKind;
    made.isGroup = true;
    made.aType = groupType(made.aKind);
    made.currency = members.front().currency;
    EXPECT_TRUE(made.add());
    for (const auto& member : members) EXPECT_TRUE(addToGroup(made, member));
    return made;
  }
  MVCategory category(const std::string& title, int type = kind::kExpense) {
    MVCategory made(root);
    made.title = title;
    made.type = type;
    EXPECT_TRUE(made.addCate());
    return made;
  }

  Spend spend(const std::string& what, double amount, Date when) { return record(what, 12, amount, when); }
  Spend earn(const std::string& what, double amount, Date when) { return record(what, 11, amount, when); }
  Transfer move(double amount, const MonivaAccount& from, const MonivaAccount& to, Date when) {
    Transfer transfer(root);
    transfer.accountA = from.pk;
    transfer.accountB = to.pk;
    transfer.amountA = transfer.amountB = amount;
    transfer.datetime = when;
    const auto done = transfer.add();
    EXPECT_TRUE(done) << done.error().why;
    return transfer;
  }
  void set(const Spend& record, const std::string& column, const Value& value) {
    EXPECT_TRUE(sql("update transactions set " + column + " = ? where eid = ?", {value, record.eid}));
  }

  std::optional<MonivaAccount> home;
  std::optional<MonivaAccount> cash;
  std::optional<MonivaAccount> bank;

 private:
  MonivaAccount added(const std::string& title, int aKind, const std::string& type) {
    MonivaAccount row(root);
    row.title = title;
    row.aKind = aKind;
    row.setType(type);
    row.currency = "EUR";
    const auto done = row.add();
    EXPECT_TRUE(done) << done.error().why;
    return row;
  }
  Spend record(const std::string& what, int type, double amount, Date when) {
    Spend spend(root);
    spend.type = type;
    spend.amount = amount;
    spend.datetime = when;
    spend.book = home->pk;
    spend.account = cash->pk;
    spend.category = spend.subcategory = category(what, type).pk;
    const auto done = spend.add();
    EXPECT_TRUE(done) << done.error().why;
    return spend;
  }
};

/// A household with a category, one below it and a vendor, and an expense for them that is not yet entered.
class Recording : public Household {
 public:
  Recording() {
    food = category("Food").pk;
    MVCategory below(root);
    below.title = "Bakery";
    below.parent = food;
    EXPECT_TRUE(below.addCate());
    bakery = below.pk;
    Vendor payee(root);
    payee.title = "Lang";
    EXPECT_TRUE(payee.add());
    vendor = payee.pk;
  }

  Spend expense(double amount) {
    Spend spend(root);
    spend.amount = amount;
    spend.book = home->pk;
    spend.account = cash->pk;
    spend.category = food;
    spend.subcategory = bakery;
    spend.vendor = vendor;
    return spend;
  }
  Transfer transfer(double leaves, double arrives) {
    Transfer made(root);
    made.accountA = cash->pk;
    made.accountB = bank->pk;
    made.amountA = leaves;
    made.amountB = arrives;
    made.acrossCurrencies = leaves != arrives;
    return made;
  }

  std::string food;
  std::string bakery;
  std::string vendor;
};

}  // namespace moniva
