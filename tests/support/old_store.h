#pragma once

#include "support/device.h"

namespace moniva {

/// A device whose data file an earlier version left behind: tests/stores/NAME.sql builds it, today's code
/// opens it. A script finds the tables of today and no flags; those it wants in an older shape it drops and
/// creates itself.
class OldStore : public Device {
 public:
  explicit OldStore(const std::string& name, const std::string& zone = "Europe/Berlin") : Device(zone) {
    putBytes(dataFile(), "");
    {
      auto connection = Connection::open(dataFile(), Connection::Access::readWrite);
      EXPECT_TRUE(connection) << connection.error().why;
      const std::filesystem::path sources = MONIVA_SOURCE_DIR;
      for (const std::string& script :
           {bytesOf(sources / "resources" / "schema.sql"), std::string("delete from monivaSys"),
            bytesOf(sources / "tests" / "stores" / (name + ".sql"))}) {
        EXPECT_FALSE(script.empty()) << "no store '" << name << "'";
        EXPECT_TRUE((*connection)->executeScript(script)) << (*connection)->lastErrorMessage();
      }
    }
    open();
  }

  /// Runs the step, which must not refuse, and answers how many rows it changed.
  std::int64_t changedBy(Result<> (*step)(MVAppRoot&)) {
    const auto before = connection().totalChanges();
    const auto done = step(root);
    EXPECT_TRUE(done) << done.error().why;
    return connection().totalChanges() - before;
  }
};

}  // namespace moniva
