#pragma once

#include <filesystem>
#include <memory>

#include "calendar/calendar.h"
#include "platform/app_info.h"
#include "platform/background_tasks.h"
#include "platform/clock.h"
#include "platform/cloud_containers.h"
#include "platform/http_client.h"
#include "platform/images.h"
#include "platform/local_notifications.h"
#include "platform/localization.h"
#include "platform/log.h"
#include "platform/notification_center.h"
#include "platform/random_source.h"
#include "platform/user_defaults.h"
#include "platform/work_queue.h"

namespace moniva {

/// Where things lie on this host.
struct Directories {
  /// The user's data folder: the database, the settings, the fault log.
  std::filesystem::path documents;
  /// Files that come with the program: the template store and other resources.
  std::filesystem::path resources;
  /// The folder shared by the editions of the program; empty where there is none.
  std::filesystem::path groupContainer;
};

/// Everything the logic asks of its host, made by the composition root and handed down. Tests put bodies of
/// their own in.
struct Platform {
  AppInfo info;
  Directories directories;
  std::shared_ptr<const Calendar> calendar;
  std::unique_ptr<Clock> clock;
  std::unique_ptr<RandomSource> random;
  std::unique_ptr<UserDefaults> userDefaults;
  std::unique_ptr<CloudContainers> cloud = std::make_unique<NoCloudContainers>();
  std::unique_ptr<BackgroundTasks> backgroundTasks = std::make_unique<UnlimitedBackgroundTasks>();
  std::unique_ptr<HttpClient> http = std::make_unique<NoHttpClient>();
  std::unique_ptr<Images> images = std::make_unique<NoImages>();
  std::unique_ptr<LocalNotifications> localNotifications = std::make_unique<MemoryLocalNotifications>();
  std::unique_ptr<Localization> localization = std::make_unique<Localization>();
  NotificationCenter notifications;
  Log log;
  MainQueue mainQueue;
  /// Declared last: its blocks may use everything above until it has ended.
  WorkQueue backgroundQueue;

  Date now() const { return clock->now(); }
  /// A text of the program in the person's language.
  std::string localized(std::string_view text) const { return localization->localized(text); }
};

}  // namespace moniva
