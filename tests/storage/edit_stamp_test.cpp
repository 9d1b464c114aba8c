#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "support/device.h"

namespace moniva {
namespace {

/// Leaves a row with that stamp in a table, as a merge by another program would.
void leaveStamp(const std::filesystem::path& file, const std::string& table, double stamp) {
  auto other = Connection::open(file, Connection::Access::readWrite);
  ASSERT_TRUE(other);
  const std::string column = table == "photos" ? "datetime" : "editDate";
  ASSERT_TRUE((*other)->execute("insert into " + table + " (" + column + ") values (?)", {stamp}));
}

RC_GTEST_PROP(EditStamps, riseWhateverTheClockAndTheStoreSay, ()) {
  Device device;
  device.open();
  double last = 0;
  for (int steps = *rc::gen::inRange(1, 15); steps > 0; --steps) {
    switch (*rc::gen::inRange(0, 5)) {
      case 0:
        device.setClock(Date{*rc::gen::inRange(0, 2'000'000'000) + *rc::gen::inRange(0, 1000) / 1000.0});
        break;
      case 1: {
        // Doubles lie further apart the later the date; years up to 2900.
        const double ahead = *rc::gen::inRange(0, 29'000) * 1'000'000.0;
        leaveStamp(device.dataFile(),
                   *rc::gen::element<std::string>("transactions", "account", "category", "categoryofbook",
                                                  "photos", "monivaSys"),
                   ahead);
        last = std::max(last, ahead);
        break;
      }
      case 2:
        device.open();
        break;
      default: {
        Date stamp;
        if (*rc::gen::arbitrary<bool>()) {
          stamp = device.root.editStamp();
        } else {
          RC_ASSERT(device.db.inDatabase("Test", [&](Connection&) { stamp = device.root.editStamp(); }));
        }
        RC_ASSERT(stamp.secondsSince1970 > last);
        RC_ASSERT(stamp >= device.platform.now());
        last = stamp.secondsSince1970;
      }
    }
  }
}

TEST(EditStamps, areAboveRowsMergedOnTheSameConnection) {
  Device device;
  device.open();
  Date theirs = device.on("2031-01-01");
  const auto merge = [&](Connection& db) {
    device.root.editStamp();
    theirs = theirs.plusSeconds(60);
    device.root.sawEditStamp(theirs);
    ASSERT_TRUE(db.execute("insert into transactions (eid, editDate) values (?, ?)",
                           {device.root.newIdentifier(), theirs}));
    EXPECT_GT(device.root.editStamp(), theirs);
  };
  merge(device.connection());
  EXPECT_TRUE(device.db.inDatabase("Test", merge));
}

TEST(EditStamps, passOverWhatIsNoDate) {
  Device device;
  device.open();
  leaveStamp(device.dataFile(), "transactions", 4e11);
  ASSERT_TRUE(device.sql("insert into transactions (eid, editDate) values ('t', '2031-01-01')"));
  EXPECT_EQ(device.root.editStamp(), device.platform.now());
}

}  // namespace
}  // namespace moniva
