#include "storage/transaction.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <map>

#include "support/device.h"

namespace moniva {
namespace {

using Settings = std::map<int, int>;

Settings stored(Device& device) {
  Settings settings;
  auto run = device.connection().query("select key, value from monivaSys where key < 'a'");
  while (run.next()) settings[static_cast<int>(run.integer(0))] = static_cast<int>(run.integer(1));
  return settings;
}

/// Writes at random in scopes nested at random, each kept or not, in the store and in a map alike.
void writeAtRandom(Device& device, Settings& model, int depth) {
  const Settings before = model;
  Transaction scope(device.connection());
  RC_ASSERT(scope.began());
  for (int steps = *rc::gen::inRange(0, 5); steps > 0; --steps) {
    if (depth < 4 && *rc::gen::inRange(0, 3) == 0) {
      writeAtRandom(device, model, depth + 1);
      continue;
    }
    const int key = *rc::gen::inRange(0, 6);
    const int value = *rc::gen::inRange(0, 1000);
    RC_ASSERT(device.sql("delete from monivaSys where key = ?", {std::to_string(key)}));
    RC_ASSERT(device.sql("insert into monivaSys (key, value) values (?, ?)",
                         {std::to_string(key), std::to_string(value)}));
    model[key] = value;
  }
  if (*rc::gen::arbitrary<bool>()) {
    RC_ASSERT(scope.commit());
  } else {
    model = before;
  }
}

RC_GTEST_PROP(Transactions, nestedOnesKeepExactlyWhatTheyCommitted, ()) {
  Device device;
  device.open();
  Settings model;
  writeAtRandom(device, model, 0);
  RC_ASSERT(stored(device) == model);
  RC_ASSERT(!device.connection().inTransaction());
}

TEST(Connection, compilesATextOnceAndRunsItWithinItself) {
  Device device;
  device.open();
  Connection& db = device.connection();
  device.sql("insert into monivaSys (key, value) values ('k', 'a'), ('k', 'b'), ('k', 'c')");
  constexpr std::string_view text = "select value from monivaSys where key = ? order by value";
  EXPECT_EQ(device.rows(text, {"k"}), "a\nb\nc");
  const auto compiled = db.statementsCompiled();
  EXPECT_EQ(device.rows(text, {"none"}), "") << "a run leaves no row and no value behind";
  EXPECT_EQ(db.statementsCompiled(), compiled);
  std::string pairs;
  auto outer = db.query(text, {"k"});
  while (outer.next()) {
    pairs += std::string(outer.text(0)) + device.rows(text, {"k"}).substr(0, 1) + " ";
  }
  EXPECT_EQ(pairs, "aa ba ca ") << "the same text, run inside itself, keeps its place";
  EXPECT_EQ(device.rows(text, {"k"}), "a\nb\nc") << "a run that has ended but not gone is no hindrance";

  auto insert = db.query("insert into monivaSys (key, value) values ('once', '')");
  EXPECT_FALSE(insert.next());
  EXPECT_FALSE(insert.next());
  EXPECT_EQ(device.number("select count(*) from monivaSys where key = 'once'"), 1);
}

TEST(Connection, tellsWhatIsWrongWithAStatement) {
  Device device;
  device.open();
  EXPECT_FALSE(device.sql("select title from nowhere"));
  EXPECT_EQ(device.connection().lastErrorCode(), 1);
  const auto why = device.connection().refusal().why;
  EXPECT_NE(why.find("nowhere"), std::string::npos) << why;
  EXPECT_NE(why.find(device.dataFile().string()), std::string::npos) << why;
  EXPECT_FALSE(device.sql("delete from monivaSys where key = ?")) << "a slot without an argument";
  EXPECT_FALSE(device.root.executeUpdate("delete from monivaSys where key = ?", "a", "b"));
  EXPECT_FALSE(device.root.executeUpdate("insert into transactions (nonsense) values (1)"));
  const auto faults = device.takeFaults();
  for (const char* told :
       {"=== 数据库已损坏[25] ", "=== 数据库已损坏[1] table transactions has no column named nonsense"}) {
    EXPECT_NE(faults.find(told), std::string::npos) << faults;
  }
}

TEST(Connection, bindsEveryKindOfValueBitForBit) {
  Device device;
  device.open();
  const std::string text("a\0'\"?\xc3\xa4", 7);
  auto run = device.connection().query(
      "select ?, ?, ?, ?, ?", {text, 0.1 + 0.2, std::int64_t{1} << 60, Date{1709217005.123456}, nullptr});
  ASSERT_TRUE(run.next());
  EXPECT_EQ(run.text(0), text);
  EXPECT_EQ(run.real(1), 0.1 + 0.2);
  EXPECT_EQ(run.integer(2), std::int64_t{1} << 60);
  EXPECT_EQ(run.date(3), Date{1709217005.123456});
  EXPECT_TRUE(run.isNull(4));
}

TEST(Transactions, whatAFullDiskUndidStaysUndone) {
  Device device;
  device.open();
  ASSERT_TRUE(device.sql("insert into monivaSys (key) values ('before')"));
  device.rows("PRAGMA max_page_count = " + device.rows("PRAGMA page_count"));
  {
    Transaction outer(device.connection());
    ASSERT_TRUE(outer.began());
    ASSERT_TRUE(device.sql("insert into monivaSys (key) values ('first')"));
    {
      Transaction inner(device.connection());
      EXPECT_FALSE(device.sql("insert into photos (photoFull) values (?)", {std::string(1'000'000, 'x')}));
      EXPECT_FALSE(inner.commit());
    }
    // The engine has given the whole up; the rest must not be written on its own.
    EXPECT_FALSE(device.sql("insert into monivaSys (key) values ('last')"));
    Transaction another(device.connection());
    EXPECT_FALSE(another.began());
    EXPECT_FALSE(outer.commit());
    EXPECT_EQ(device.connection().refusal().why,
              "there is no space left to write to the data file '" + device.dataFile().string() + "'");
  }
  EXPECT_EQ(device.rows("select key from monivaSys where value != '1'"), "before");
  device.rows("PRAGMA max_page_count = 1000000");
  EXPECT_TRUE(device.sql("insert into monivaSys (key) values ('after')"));
}

TEST(Transactions, anotherWriterIsWaitedForThenRefused) {
  Device device;
  device.open();
  auto other = Connection::open(device.dataFile(), Connection::Access::readWrite);
  ASSERT_TRUE((*other)->execute("BEGIN IMMEDIATE"));
  device.rows("PRAGMA busy_timeout = 20");
  EXPECT_FALSE(Transaction(device.connection()).began());
  EXPECT_FALSE(device.root.executeUpdate("insert into monivaSys (key) values ('k')"));
  EXPECT_EQ(device.connection().refusal().why, "the data file '" + device.dataFile().string() +
                                                   "' is in use by another program; try again when that has"
                                                   " finished");
  EXPECT_NE(device.takeFaults().find("=== 数据库已损坏[5] database is locked"), std::string::npos);
  EXPECT_EQ(device.number("select count(*) from monivaSys where value != '1'"), 0) << "reading goes on";
  ASSERT_TRUE((*other)->execute("COMMIT"));
  Transaction begun(device.connection());
  EXPECT_TRUE(begun.began() && begun.commit());
}

TEST(Transactions, aReadScopeSeesOneMoment) {
  Device device;
  device.open();
  const auto count = [&] { return device.number("select count(*) from monivaSys where value != '1'"); };
  {
    const ReadTransaction moment(device.connection());
    EXPECT_EQ(count(), 0);
    EXPECT_TRUE(device.root.setObject("0", "AutoBackup")) << "the other connection writes meanwhile";
    EXPECT_EQ(count(), 0);
  }
  EXPECT_EQ(count(), 1);
}

}  // namespace
}  // namespace moniva
