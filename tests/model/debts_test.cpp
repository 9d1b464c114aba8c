#include "model/debt.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "model/record_entry.h"
#include "support/household.h"

namespace moniva {
namespace {

class DebtStory : public Household {
 public:
  Debt debt(int type, double amount, const std::string& day = "2024-02-10") {
    Debt made(root);
    made.type = type;
    made.amount = amount;
    made.person = "Anna";
    made.datetime = on(day);
    made.paymentAccount = cash->pk;
    return made;
  }
  Debt owing(int type, double amount, const std::string& day = "2024-02-10") {
    Debt made = debt(type, amount, day);
    EXPECT_TRUE(made.add(Debt::Offsetting::apart));
    return made;
  }
  Result<DebtOutcome> repay(int type, double amount) {
    return Debt::repaidTo(root, "Anna", type, amount, on("2024-02-20"), "", cash->pk);
  }
  void oldRow(const std::string& eid, int type, const std::string& book, double amount) {
    EXPECT_TRUE(
        sql("insert into transactions (eid, type, book, amount, vendor, datetime, bid)"
            " values (?, ?, ?, ?, 'Anna', 1000, 20)",
            {eid, type, book, amount}));
  }
  /// "24 50-20; 34 30 !": the debts in use by date, what was repaid of them, and a mark on settled ones.
  std::string state() {
    return rows(
        "select group_concat(one, '; ') from (select printf('%d %g', type, amount) || (select case when"
        " count(*) then printf('-%g', sum(amount)) else '' end from transactions where transferEID = d.eid"
        " and deleted = 0) || substr(' !', 1, 2 * needReimburse) as one from transactions as d where"
        " deleted = 0 and type in (11, 12, 24, 34) order by datetime, rowid)");
  }
  double kept(const MonivaAccount& account) {
    return number("select totalBalance from account where oldTitle = ?", {account.pk});
  }
};

TEST(Debts, areOpenUntilTheyAreRepaid) {
  struct Case {
    const char* why;
    std::function<void(DebtStory&)> story;
    std::string state;
    double balance;
  };
  for (const auto& [why, story, state, balance] : {
           Case{"a part leaves it open", [](DebtStory& s) { s.owing(24, 50), s.repay(24, 20).value(); },
                "24 50-20", 30},
           Case{"all of it settles it, whatever the figures",
                [](DebtStory& s) {
                  Debt debt = s.owing(34, 0.3);
                  for (int i = 0; i < 3; ++i) ASSERT_TRUE(debt.repaid(0.1, debt.datetime, "", s.cash->pk));
                  EXPECT_TRUE(debt.repaidFinished);
                },
                "34 0.3-0.3 !", 0},
           Case{"the oldest first",
                [](DebtStory& s) {
                  s.owing(24, 30, "2024-02-03"), s.owing(24, 50, "2024-02-01"), s.repay(24, 60).value();
                },
                "24 50-50 !; 24 30-10", 20},
           Case{"one of exactly the amount before it",
                [](DebtStory& s) {
                  s.owing(24, 50, "2024-02-01"), s.owing(24, 30, "2024-02-03"), s.repay(24, 30).value();
                },
                "24 50; 24 30-30 !", 50},
           Case{"unless some of that was repaid",
                [](DebtStory& s) {
                  s.owing(24, 50, "2024-02-01");
                  Debt later = s.owing(24, 30, "2024-02-03");
                  ASSERT_TRUE(later.repaid(5, later.datetime, "", s.cash->pk));
                  s.repay(24, 30).value();
                },
                "24 50-30; 24 30-5", 45},
           Case{"more than is owed is a debt the other way",
                [](DebtStory& s) { s.owing(24, 50), s.repay(24, 80).value(); }, "24 50-50 !; 34 30", -30},
           Case{"but not before all others are repaid",
                [](DebtStory& s) {
                  s.owing(24, 40, "2024-02-01");
                  ASSERT_TRUE(s.owing(24, 50).repaid(100, s.on("2024-02-20"), "", s.cash->pk));
                },
                "24 40-40 !; 24 50-50 !; 34 10", -10},
           Case{"a new debt repays those of the other direction",
                [](DebtStory& s) {
                  s.owing(34, 50, "2024-02-01"), s.owing(34, 30, "2024-02-02");
                  Debt debt = s.debt(24, 100);
                  ASSERT_TRUE(debt.add());
                  EXPECT_EQ(debt.amount, 20);
                },
                "34 50-50 !; 34 30-30 !; 24 20", 20},
           Case{"and is none by itself where it is all used",
                [](DebtStory& s) {
                  s.owing(34, 50);
                  Debt debt = s.debt(24, 20);
                  ASSERT_TRUE(debt.add());
                  EXPECT_EQ(debt.eid, "");
                },
                "34 50-20", -30},
           Case{"dollars repay no euros",
                [](DebtStory& s) {
                  s.owing(34, 50);
                  s.sql("update account set currency = 'USD' where oldTitle = ?", {s.bank->pk});
                  Debt debt = s.debt(24, 20);
                  debt.paymentAccount = s.bank->pk;
                  ASSERT_TRUE(debt.add());
                },
                "34 50; 24 20", -50},
           Case{"what older data lent is repaid too",
                [](DebtStory& s) {
                  s.oldRow("old", 12, "LendBook", 40);
                  ASSERT_TRUE(s.debt(24, 50).add());
                },
                "12 40-40 !; 24 10", 50},
           Case{"an expense of another book is none",
                [](DebtStory& s) {
                  s.oldRow("old", 12, s.home->pk, 40);
                  ASSERT_TRUE(s.debt(24, 50).add());
                },
                "12 40; 24 50", 50},
           Case{"a repayment that is removed opens it again",
                [](DebtStory& s) {
                  Debt debt = s.owing(24, 50);
                  const auto done = s.repay(24, 50);
                  ASSERT_TRUE(debt.deleteRepay(done->repaid.front().eid));
                },
                "24 50", 50},
           Case{"unless others cover it still, as two devices may have it",
                [](DebtStory& s) {
                  Debt debt = s.owing(24, 50);
                  const auto twice = s.repay(24, 50)->repaid.front().eid;
                  s.sql(
                      "insert into transactions (eid, type, amount, vendor, transferEID, bid)"
                      " values ('twin', 35, 50, 'Anna', ?, 10)",
                      {debt.eid});
                  ASSERT_TRUE(debt.deleteRepay(twice));
                  EXPECT_TRUE(debt.repaidFinished);
                },
                "24 50-50 !", 50},
           Case{"so does clearing the account it was repaid from",
                [](DebtStory& s) {
                  Debt debt = s.owing(24, 50);
                  ASSERT_TRUE(debt.repaid(50, debt.datetime, "", s.bank->pk));
                  ASSERT_TRUE(s.bank->clear());
                },
                "24 50", 50},
           Case{"a debt goes with its repayments",
                [](DebtStory& s) {
                  Debt debt = s.owing(24, 50);
                  s.repay(24, 20).value();
                  EXPECT_EQ(debt.delete_(), std::vector{s.cash->pk});
                },
                "", 0},
           Case{"and comes back with them, but not with those removed before",
                [](DebtStory& s) {
                  Debt debt = s.owing(24, 50);
                  const auto removed = s.repay(24, 50)->repaid.front().eid;
                  ASSERT_TRUE(debt.deleteRepay(removed));
                  const auto deleted = s.repay(24, 10)->repaid.front().eid;
                  s.repay(24, 20).value();
                  ASSERT_TRUE(changeRecords(s.root, RecordScope{deleted, "", ""}, [&](Connection&) {
                    return write(s.root, "update transactions set deleted = 1, editDate = ? where eid = ?",
                                 s.root.editStamp(), deleted);
                  }));
                  ASSERT_TRUE(debt.delete_());
                  ASSERT_TRUE(debt.restore());
                  EXPECT_TRUE(checkRepaymentFits(s.root, deleted));
                  EXPECT_TRUE(s.repay(24, 25));
                  EXPECT_FALSE(checkRepaymentFits(s.root, deleted));
                },
                "24 50-45", 5},
       }) {
    DebtStory home;
    story(home);
    EXPECT_EQ(home.state(), state) << why;
    EXPECT_NEAR(home.kept(*home.cash), balance, 1e-9) << why;
    EXPECT_NEAR(getTheTotalBalance(*home.cash), balance, 1e-9) << why;
  }
}

TEST(Debts, ofOlderDataAreListedAndSummedByTheirBooks) {
  DebtStory home;
  home.owing(24, 1);
  home.owing(34, 10);
  home.oldRow("a", 11, "BorrowBook", 2);
  home.oldRow("b", 11, "DebtBook", 4);
  home.oldRow("c", 12, "LendBook", 20);
  EXPECT_EQ(Debt::openDebts(home.root, 24, "Anna")->size(), 2U);
  EXPECT_EQ(Debt::openDebts(home.root, 24, "Anna")->back().eid, "a");
  EXPECT_EQ(Debt::sumOfOpenDebts(home.root, 24, "Anna"), 5);
  EXPECT_EQ(Debt::openDebts(home.root, 34, "Anna")->size(), 2U);
  EXPECT_EQ(Debt::sumOfOpenDebts(home.root, 34, "Anna"), 30);
  EXPECT_EQ(Debt::list(home.root, Debt::Which::all, "Anna")->size(), 5U);
}

TEST(Debts, keepTheNoteWhereItWasMeant) {
  struct Case {
    const char* why;
    double lent, amount;
    bool isRepayment;
    const char* notes;  ///< of the rows that came of it
  };
  for (const auto& [why, lent, amount, isRepayment, notes] : {
           Case{"a repayment has it, not what is beyond", 50, 80, true, "25:n 24:"},
           Case{"but where all is beyond", 0, 80, true, "24:n"},
           Case{"a new debt has it, not what it repays", 50, 80, false, "25: 24:n"},
           Case{"but where nothing is left of it", 50, 30, false, "25:n"},
       }) {
    DebtStory home;
    if (lent > 0) home.owing(34, lent);
    Debt debt = home.debt(24, amount);
    debt.note = "n";
    const auto done = isRepayment
                          ? Debt::repaidTo(home.root, "Anna", 34, amount, debt.datetime, "n", home.cash->pk)
                          : debt.add();
    ASSERT_TRUE(done) << why;
    EXPECT_EQ(home.rows("select group_concat(type || ':' || note, ' ') from (select * from transactions"
                        " where type in (24, 25) order by type desc)"),
              notes)
        << why;
  }
}

TEST(Debts, refuseWhatCannotBe) {
  DebtStory home;
  Debt lent = home.owing(34, 50);
  ASSERT_TRUE(home.repay(34, 20));
  const auto before = home.state();
  const auto changed = [&](auto change) {
    Debt debt = home.debt(24, 50);
    change(debt);
    return debt.add().map([](auto&&) {});
  };
  struct Case {
    const char* why;
    Result<> refused;
  };
  auto& s = home;
  for (const auto& [why, refused] : {
           Case{"no amount", changed([](Debt& debt) { debt.amount = 0; })},
           Case{"nobody", changed([](Debt& debt) { debt.person = " "; })},
           Case{"a day ahead", changed([&](Debt& debt) { debt.datetime = s.on("2024-03-01"); })},
           Case{"an account that is none", changed([](Debt& debt) { debt.paymentAccount = "x"; })},
           Case{"a book", changed([&](Debt& debt) { debt.paymentAccount = s.home->pk; })},
           Case{"an account for expenses only",
                changed([&](Debt& debt) { debt.paymentAccount = s.account("Card", "_DiscountAccount").pk; })},
           Case{"a change of a debt repaid in part", lent.update()},
           Case{"bringing back what is there", lent.restore()},
           Case{"removing what is no repayment", lent.deleteRepay(lent.eid)},
       }) {
    EXPECT_FALSE(refused) << why;
  }
  EXPECT_EQ(home.state(), before);
}

/// Money that came in is owed and money that went out is claimed, so what an account has is what its owner
/// owes less what is owed to him: whatever was borrowed, lent, repaid, removed and brought back.
RC_GTEST_PROP(Debts, areWhatALedgerByHandSays, ()) {
  DebtStory home;
  std::int64_t expected = 0;
  std::map<std::string, std::int64_t> deleted;
  const auto cents = [](double amount) { return std::llround(amount * 100); };
  const auto signedOwed = [&](const Debt& debt) { return cents(debt.owed()) * (debt.isBorrowed() ? 1 : -1); };
  const int steps = *rc::gen::inRange(1, 25);
  for (int step = 0; step < steps; ++step) {
    const int type = *rc::gen::element(24, 34);
    const auto sum = *rc::gen::inRange<std::int64_t>(1, 3000);
    const std::int64_t change = type == 24 ? sum : -sum;
    const double amount = static_cast<double>(sum) / 100;
    auto debts = Debt::list(home.root, Debt::Which::all, "Anna").value();
    Debt* chosen = debts.empty() ? nullptr : &debts[*rc::gen::inRange<std::size_t>(0, debts.size())];
    switch (*rc::gen::inRange(0, 6)) {
      case 0: {
        Debt debt = home.debt(type, amount, fmt::format("2024-02-{:02}", *rc::gen::inRange(1, 28)));
        RC_ASSERT(debt.add(*rc::gen::element(Debt::Offsetting::apart, Debt::Offsetting::againstOpenDebts)));
        expected += change;
        break;
      }
      case 1:
        RC_ASSERT(home.repay(type, amount));
        expected -= change;
        break;
      case 2:
        if (chosen == nullptr) break;
        RC_ASSERT(chosen->repaid(amount, chosen->datetime, "", home.cash->pk));
        expected -= chosen->isBorrowed() ? sum : -sum;
        break;
      case 3:
        if (chosen == nullptr || chosen->repaidList.empty()) break;
        expected -= signedOwed(*chosen);
        RC_ASSERT(chosen->deleteRepay(chosen->repaidList.front().eid));
        expected += signedOwed(*chosen);
        break;
      case 4:
        if (chosen == nullptr) break;
        expected -= deleted[chosen->eid] = signedOwed(*chosen);
        RC_ASSERT(chosen->delete_());
        break;
      default:
        if (deleted.empty()) break;
        const auto [eid, owed] = *deleted.begin();
        RC_ASSERT(Debt::debtFromEID(home.root, eid)->restore());
        expected += owed;
        deleted.erase(eid);
    }
    std::int64_t owed = 0;
    const auto all = Debt::list(home.root, Debt::Which::all);
    for (const auto& debt : *all) {
      RC_ASSERT(cents(debt.repaidAmount) <= cents(debt.amount));
      RC_ASSERT(debt.repaidFinished == (cents(debt.repaidAmount) == cents(debt.amount)));
      owed += signedOwed(debt);
    }
    RC_ASSERT(owed == expected);
    RC_ASSERT(cents(home.kept(*home.cash)) == expected);
    RC_ASSERT(cents(getTheTotalBalance(*home.cash)) == expected);
  }
}

}  // namespace
}  // namespace moniva
