#include "platform/posix/desktop_notifications.h"

#include <algorithm>
#include <boost/json.hpp>
#include <fstream>
#include <set>

#include "platform/file_lock.h"
#include "platform/files.h"
#include "platform/posix/notification_service.h"

namespace moniva {
namespace {

namespace json = boost::json;

/// Less than programs that wait for the file are patient.
constexpr std::chrono::milliseconds kServicePatience{2000};
constexpr double kFilePatience = 5.0;
constexpr int kMinutesToNextTry = 10;
/// Many times what a life of reminders takes.
constexpr std::size_t kMostBytes = std::size_t{16} << 20;
/// A line begins with its moments, and the first triggers come first, so that few lines tell whether anything
/// is to be shown.
constexpr std::string_view kLineBegin = R"({"next":")";
constexpr std::string_view kTriggerBegin = R"(","trigger":")";

std::optional<CivilTime> momentIn(const json::object& object, std::string_view key) {
  const auto* value = object.if_contains(key);
  if (value == nullptr || !value->is_string()) return std::nullopt;
  return wallClockFrom(value->get_string());
}

std::string textIn(const json::object& object, std::string_view key) {
  const auto* value = object.if_contains(key);
  return value != nullptr && value->is_string() ? std::string(value->get_string()) : std::string();
}

CivilTime plusMinutes(const CivilTime& at, int minutes) {
  const std::int64_t seconds = at.hour * 3600 + (at.minute + minutes) * 60 + at.second;
  const auto ofDay = static_cast<int>(floorRemainder(seconds, kSecondsPerDay));
  CivilTime later =
      civilFromDays(daysFromCivil(at.year, at.month, at.day) + floorDivide(seconds, kSecondsPerDay));
  later.hour = ofDay / 3600;
  later.minute = ofDay / 60 % 60;
  later.second = ofDay % 60;
  return later;
}

struct NotificationTimes {
  CivilTime trigger;
  CivilTime next;
};

/// Those of a line that write() made.
std::optional<NotificationTimes> timesOf(std::string_view line) {
  constexpr std::size_t kMoment = std::string_view("2026-11-22 10:00:00").size();
  constexpr std::size_t kTrigger = kLineBegin.size() + kMoment;
  if (!line.starts_with(kLineBegin) || line.size() < kTrigger) return std::nullopt;
  if (!line.substr(kTrigger).starts_with(kTriggerBegin)) return std::nullopt;
  const auto next = wallClockFrom(line.substr(kLineBegin.size(), kMoment));
  const auto trigger = wallClockFrom(line.substr(kTrigger + kTriggerBegin.size(), kMoment));
  if (!next || !trigger) return std::nullopt;
  return NotificationTimes{*trigger, *next};
}

bool isToBeShown(const NotificationTimes& times, const CivilTime& now, NotificationTry which) {
  if (times.next <= now) return true;
  if (times.trigger > now) return false;
  // A clock that was ahead for a while puts the next try off for as long.
  return which == NotificationTry::allThatWait || times.next > plusMinutes(now, kMinutesToNextTry);
}

}  // namespace

Result<> DesktopNotifications::add(const NotificationRequest& request) {
  return make({request.identifier, request});
}

Result<> DesktopNotifications::removePending(std::string_view identifier) {
  return identifier.empty() ? Result<>() : make({std::string(identifier), std::nullopt});
}

Result<> DesktopNotifications::removeAllPending() {
  return make({});
}

Result<> DesktopNotifications::make(Change change) {
  NotificationChanges changes(*this);
  {
    const std::scoped_lock lock(mutex_);
    changes_.push_back(std::move(change));
  }
  return changes.end();
}

void DesktopNotifications::beginChanges() {
  const std::scoped_lock lock(mutex_);
  begins_.push_back(changes_.size());
}

Result<> DesktopNotifications::endChanges() {
  const std::scoped_lock lock(mutex_);
  begins_.pop_back();
  if (!begins_.empty()) return {};
  auto made = flush();
  changes_.clear();
  return made;
}

void DesktopNotifications::dropChanges() {
  const std::scoped_lock lock(mutex_);
  changes_.resize(begins_.back());
  begins_.pop_back();
}

Result<> DesktopNotifications::flush() {
  if (changes_.empty()) return {};
  {
    auto requests = read();
    if (!requests) return tl::make_unexpected(requests.error());
    if (!apply(*requests)) return {};
  }
  auto lock = FileLock::acquire(file_.string() + ".lock", FileLock::Mode::exclusive, kFilePatience);
  if (!lock) return tl::make_unexpected(lock.error());
  auto requests = read();
  if (!requests) return tl::make_unexpected(requests.error());
  return apply(*requests) ? write(*requests) : Result<>();
}

bool DesktopNotifications::apply(Requests& requests) const {
  bool changed = false;
  for (const auto& [identifier, request] : changes_) {
    if (request) {
      requests.insert_or_assign(identifier, Waiting{*request, request->trigger});
      changed = true;
    } else if (identifier.empty()) {
      changed = changed || !requests.empty();
      requests.clear();
    } else {
      changed = requests.erase(identifier) > 0 || changed;
    }
  }
  return changed;
}

Result<DesktopNotifications::Requests> DesktopNotifications::read() {
  const auto setAside = [&]() -> Result<Requests> {
    // What is lost is made again from the records of what is scheduled.
    const auto aside = setFileAside(file_, now_);
    if (!aside) return tl::make_unexpected(aside.error());
    notice_ = phrase("The file of pending notifications '{}' is damaged. It was set aside as '{}'.",
                     file_.string(), aside->filename().string());
    return Requests();
  };
  std::error_code unknown;
  if (const auto size = std::filesystem::file_size(file_, unknown); !unknown && size > kMostBytes)
    return setAside();
  const auto text = readFileIfPresent(file_);
  if (!text) return tl::make_unexpected(text.error());
  Requests requests;
  if (!text->has_value()) return requests;
  std::string_view rest = **text;
  while (!rest.empty()) {
    const auto end = rest.find('\n');
    boost::system::error_code error;
    const auto value = json::parse(rest.substr(0, end), error);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    const auto* object = error ? nullptr : value.if_object();
    const auto next = object != nullptr ? momentIn(*object, "next") : std::nullopt;
    const auto trigger = object != nullptr ? momentIn(*object, "trigger") : std::nullopt;
    if (!next || !trigger || textIn(*object, "identifier").empty()) return setAside();
    NotificationRequest request{.identifier = textIn(*object, "identifier"),
                                .title = textIn(*object, "title"),
                                .body = textIn(*object, "body"),
                                .hasDefaultSound = !textIn(*object, "sound").empty(),
                                .userInfo = {},
                                .trigger = *trigger};
    if (const auto* info = object->if_contains("userInfo"); info != nullptr && info->is_object()) {
      for (const auto& [key, kept] : info->get_object()) {
        if (kept.is_string()) request.userInfo.emplace(key, kept.get_string());
      }
    }
    auto identifier = request.identifier;
    requests.insert_or_assign(std::move(identifier), Waiting{std::move(request), *next});
  }
  return requests;
}

Result<> DesktopNotifications::write(const Requests& requests) const {
  std::vector<const Waiting*> ordered;
  for (const auto& [identifier, waiting] : requests) ordered.push_back(&waiting);
  std::ranges::stable_sort(ordered, {}, [](const Waiting* waiting) { return waiting->request.trigger; });
  std::string lines;
  for (const auto* waiting : ordered) {
    const auto& request = waiting->request;
    json::object info;
    for (const auto& [key, kept] : request.userInfo) info[key] = kept;
    lines += json::serialize(json::object{{"next", wallClockText(waiting->next)},
                                          {"trigger", wallClockText(request.trigger)},
                                          {"identifier", request.identifier},
                                          {"title", request.title},
                                          {"body", request.body},
                                          {"sound", request.hasDefaultSound ? "default" : ""},
                                          {"userInfo", std::move(info)}});
    lines += '\n';
  }
  if (lines.size() > kMostBytes) return refuse("there are more reminders than '{}' can hold", file_.string());
  removeLeftovers(file_);
  return writeFileWhole(file_, lines);
}

Result<std::vector<NotificationRequest>> DesktopNotifications::pending() {
  const std::scoped_lock lock(mutex_);
  auto requests = read();
  if (!requests) return tl::make_unexpected(requests.error());
  apply(*requests);
  std::vector<NotificationRequest> list;
  for (auto& [identifier, waiting] : *requests) list.push_back(std::move(waiting.request));
  std::ranges::stable_sort(list, {}, &NotificationRequest::trigger);
  return list;
}

bool DesktopNotifications::mayHaveDue(const CivilTime& now, NotificationTry which) const {
  std::error_code unknown;
  if (const auto size = std::filesystem::file_size(file_, unknown); !unknown && size > kMostBytes)
    return true;
  std::ifstream in(file_, std::ios::binary);
  if (!in.is_open()) return isPresent(file_);
  for (std::string line; std::getline(in, line);) {
    const auto times = timesOf(line);
    if (!times || isToBeShown(*times, now, which)) return true;
    if (times->trigger > now) return false;
  }
  return in.bad();
}

NotificationDelivery DesktopNotifications::deliverDue(const CivilTime& now, NotificationTry which) {
  const std::scoped_lock guard(mutex_);
  if (!mayHaveDue(now, which)) return {};
  // Held while they are shown, so that two programs do not show the same.
  auto lock = FileLock::acquire(file_.string() + ".lock", FileLock::Mode::exclusive, kFilePatience);
  if (!lock) return {.refused = lock.error()};
  auto requests = read();
  if (!requests) return {.refused = requests.error()};
  return deliver(*requests, now, which);
}

NotificationDelivery DesktopNotifications::deliver(Requests& requests, const CivilTime& now,
                                                   NotificationTry which) const {
  std::vector<Waiting*> due;
  for (auto& [identifier, waiting] : requests) {
    if (isToBeShown({.trigger = waiting.request.trigger, .next = waiting.next}, now, which))
      due.push_back(&waiting);
  }
  NotificationDelivery delivery;
  if (due.empty()) return delivery;
  std::ranges::stable_sort(due, {}, [](const Waiting* waiting) { return waiting->request.trigger; });
  const auto ownerOf = [](const Waiting* waiting) { return notificationOwner(waiting->request.identifier); };
  std::set<std::string_view> owners;
  std::vector<const Waiting*> lasts;
  for (auto at = due.rbegin(); at != due.rend(); ++at) {
    if (owners.insert(ownerOf(*at)).second) lasts.push_back(*at);
  }

  auto service = NotificationService::open(kServicePatience);
  if (!service) delivery.refused = service.error();
  std::set<std::string_view> shown;
  for (auto at = lasts.rbegin(); at != lasts.rend() && service && !service->isLost(); ++at) {
    const auto& request = (*at)->request;
    if (auto done = service->show(request.title, request.body, request.hasDefaultSound)) {
      shown.insert(ownerOf(*at));
    } else if (!delivery.refused) {
      delivery.refused = done.error();
    }
  }
  delivery.shown = static_cast<int>(shown.size());
  std::vector<std::string> done;
  for (auto* waiting : due) {
    // What another took the place of shares its fate.
    if (shown.contains(ownerOf(waiting))) {
      done.push_back(waiting->request.identifier);
    } else {
      waiting->next = plusMinutes(now, kMinutesToNextTry);
    }
  }
  for (const auto& identifier : done) requests.erase(identifier);
  if (auto kept = write(requests); !kept && !delivery.refused) delivery.refused = kept.error();
  return delivery;
}

Result<> DesktopNotifications::showNow(const std::string& title, const std::string& body) {
  auto service = NotificationService::open(kServicePatience);
  return service ? service->show(title, body, true) : tl::make_unexpected(service.error());
}

std::optional<Phrase> DesktopNotifications::takeNotice() {
  const std::scoped_lock lock(mutex_);
  return std::exchange(notice_, std::nullopt);
}

}  // namespace moniva
