#pragma once

#include <cstdio>
#include <memory>
#include <mutex>
#include <optional>

#include "calendar/calendar.h"
#include "platform/posix/gd_images.h"
#include "storage/mv_app_root.h"
#include "support/temporary_folder.h"

namespace moniva {

/// One device in a test: a platform with a clock that stands still, and a store and its root on a folder of
/// the test's own. Two of them are two devices, on one folder or on two. A line in the fault log that no test
/// asked for (`takeFaults`) fails the test.
class Device {
 public:
  explicit Device(std::string zone = "Europe/Berlin", const std::filesystem::path& folder = {},
                  std::uint64_t seed = 1)
      : db(described(std::move(zone), folder, seed)), root(platform, db) {}

  ~Device() {
    platform.backgroundQueue.drain();
    db.closeDatabase();
    EXPECT_EQ(takeFaults(), "") << "a fault nobody expected";
  }
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  /// Makes or recovers the data file and opens it.
  void open() {
    const auto copied = root.copyDatabaseIfNeed();
    ASSERT_TRUE(copied) << copied.error().why;
    const auto opened = db.initDatabase();
    ASSERT_TRUE(opened) << opened.error().why;
    db.drain();
  }

  /// The moment "2024-02-29" (midnight) or "2024-02-29 14:30:05" on this device's clock.
  Date on(const std::string& text) const {
    CivilTime at;
    const int read = std::sscanf(text.c_str(), "%d-%d-%d %d:%d:%d", &at.year, &at.month, &at.day, &at.hour,
                                 &at.minute, &at.second);
    EXPECT_TRUE(read == 3 || read == 6) << "no date: " << text;
    return platform.calendar->resolve(at).date;
  }
  void setClock(Date now) { static_cast<FixedClock&>(*platform.clock).set(now); }
  void setClock(const std::string& text) { setClock(on(text)); }

  Connection& connection() { return *db.getDatabase(); }
  bool sql(std::string_view text, std::initializer_list<Value> arguments = {}) {
    return connection().execute(text, arguments);
  }
  /// The first column of all rows, a line a row.
  std::string rows(std::string_view text, std::initializer_list<Value> arguments = {}) {
    std::string shown;
    Run run = connection().query(text, arguments);
    for (bool first = true; run.next(); first = false) shown.append(first ? "" : "\n").append(run.text(0));
    EXPECT_TRUE(run.ok()) << connection().lastErrorMessage();
    return shown;
  }
  double number(std::string_view text, std::initializer_list<Value> arguments = {}) {
    Run run = connection().query(text, arguments);
    EXPECT_TRUE(run.next()) << text;
    return run.real(0);
  }

  /// What the fault log says, taken out of it.
  std::string takeFaults() {
    std::string text = bytesOf(documents() / "log.txt");
    std::filesystem::remove(documents() / "log.txt");
    return text;
  }
  std::vector<std::string> commentary() {
    const std::scoped_lock lock(mutex_);
    return commentary_;
  }

  std::filesystem::path documents() const { return platform.directories.documents; }
  std::filesystem::path dataFile() const { return db.defaultPath(); }

 private:
  std::optional<TemporaryFolder> own_;
  std::mutex mutex_;
  std::vector<std::string> commentary_;

  Platform& described(std::string zone, const std::filesystem::path& folder, std::uint64_t seed) {
    if (folder.empty()) own_.emplace();
    auto calendar = Calendar::make(std::move(zone), "en_US");
    EXPECT_TRUE(calendar);
    platform.calendar = std::move(*calendar);
    platform.info.version = "1.0";
    platform.directories.documents = folder.empty() ? own_->path() : folder;
    platform.directories.resources = std::filesystem::path(MONIVA_TEMPLATE).parent_path();
    platform.clock = std::make_unique<FixedClock>(on("2024-02-29 14:30:05"));
    platform.random = std::make_unique<SeededRandom>(seed);
    platform.images = std::make_unique<GdImages>();
    platform.userDefaults = std::make_unique<MemoryUserDefaults>();
    platform.log.setSink([this](std::string_view line) {
      const std::scoped_lock lock(mutex_);
      commentary_.emplace_back(line);
    });
    return platform;
  }

 public:
  Platform platform;
  DoDB db;
  MVAppRoot root;
};

}  // namespace moniva
