#include "platform/posix/desktop_notifications.h"

#include <algorithm>
#include <boost/json.hpp>
#include <fstream>

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
/// A line begins with the moment, so that the first one tells whether anything is to be shown.
constexpr std::string_view kLineBegin = R"({"next":")";

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
    if (!next || !trigger || textIn(*object, "identifier").empty()) {
      // What is lost is made again from the records of what is scheduled.
      const auto aside = setFileAside(file_, now_);
      if (!aside) return tl::make_unexpected(aside.error());
      notice_ = phrase("The file of pending notifications '{}' is damaged. It was set aside as '{}'.",
                       file_.string(), aside->filename().string());
      return Requests();
    }
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
  std::ranges::stable_sort(ordered, {}, &Waiting::next);
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

Result<int> DesktopNotifications::deliverDue(const CivilTime& now) {
  const std::scoped_lock guard(mutex_);
  {
    std::string begin(kLineBegin.size() + wallClockText(now).size(), '\0');
    std::ifstream in(file_, std::ios::binary);
    in.read(begin.data(), static_cast<std::streamsize>(begin.size()));
    begin.resize(static_cast<std::size_t>(in.gcount()));
    if (begin.empty()) return 0;
    if (begin.starts_with(kLineBegin) && begin.substr(kLineBegin.size()) > wallClockText(now)) return 0;
  }
  // Held while they are shown, so that two programs do not show the same.
  auto lock = FileLock::acquire(file_.string() + ".lock", FileLock::Mode::exclusive, kFilePatience);
  if (!lock) return tl::make_unexpected(lock.error());
  auto requests = read();
  if (!requests) return tl::make_unexpected(requests.error());
  std::vector<Waiting*> due;
  for (auto& [identifier, waiting] : *requests) {
    if (waiting.next <= now) due.push_back(&waiting);
  }
  if (due.empty()) return 0;
  std::ranges::stable_sort(due, {}, [](const Waiting* waiting) { return waiting->request.trigger; });

  auto service = NotificationService::open(kServicePatience);
  Result<> shown = service ? Result<>() : tl::make_unexpected(service.error());
  std::vector<std::string> done;
  int count = 0;
  for (std::size_t i = 0; i < due.size(); ++i) {
    const auto& request = due[i]->request;
    const bool isSuperseded =
        std::any_of(due.begin() + static_cast<std::ptrdiff_t>(i) + 1, due.end(), [&](const auto* later) {
          return notificationOwner(later->request.identifier) == notificationOwner(request.identifier);
        });
    if (!isSuperseded) {
      if (shown) shown = service->show(request.title, request.body, request.hasDefaultSound);
      if (shown) ++count;
    }
    if (shown) {
      done.push_back(request.identifier);
    } else {
      due[i]->next = plusMinutes(now, kMinutesToNextTry);
    }
  }
  for (const auto& identifier : done) requests->erase(identifier);
  if (auto kept = write(*requests); !kept && shown) shown = std::move(kept);
  if (!shown) return tl::make_unexpected(shown.error());
  return count;
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
