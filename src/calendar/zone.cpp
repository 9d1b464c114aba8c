#include "calendar/zone.h"

#include <unicode/basictz.h>
#include <unicode/strenum.h>
#include <unicode/tztrans.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "calendar/civil_time.h"

namespace moniva {
namespace {

constexpr std::int64_t kDistantPast = std::numeric_limits<std::int64_t>::min() / 4;
constexpr std::int64_t kDistantFuture = std::numeric_limits<std::int64_t>::max() / 4;
constexpr std::int64_t kTableEnd = daysFromCivil(2200, 1, 1) * kSecondsPerDay;
// Before any zone's first change.
constexpr std::int64_t kTableBegin = daysFromCivil(1, 1, 1) * kSecondsPerDay;

constexpr std::size_t kLongestId = 64;

std::int64_t secondsOf(UDate milliseconds) {
  return std::llround(milliseconds / 1000);
}
UDate millisecondsOf(std::int64_t seconds) {
  return static_cast<UDate>(seconds) * 1000;
}

std::int64_t offsetAfter(const icu::TimeZoneTransition& change) {
  const auto* rule = change.getTo();
  return (rule->getRawOffset() + rule->getDSTSavings()) / 1000;
}

std::string lowered(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (c == ' ') c = '_';
  }
  return out;
}

/// The number of letters to add, drop or change to turn one text into the other. Ids have at most 64.
std::size_t lettersApart(std::string_view a, std::string_view b) {
  std::array<std::size_t, kLongestId + 1> row{};
  std::iota(row.begin(), row.end(), std::size_t{0});
  b = b.substr(0, kLongestId);
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
    }
  }
  return row[b.size()];
}

/// The known id nearest to what was typed: the same but for a few letters, or the one whose city was named.
std::string nearestZone(std::string_view typed) {
  constexpr std::size_t kTooFar = 4;
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::StringEnumeration> ids(icu::TimeZone::createTimeZoneIDEnumeration(
      UCAL_ZONE_TYPE_CANONICAL_LOCATION, nullptr, nullptr, status));
  if (U_FAILURE(status)) return {};
  const std::string wanted = lowered(typed);
  std::string nearest;
  std::size_t distance = kTooFar;
  while (const char* id = ids->next(nullptr, status)) {
    const std::string known = lowered(id);
    const std::size_t apart =
        std::min(lettersApart(wanted, known), lettersApart(wanted, known.substr(known.rfind('/') + 1)));
    if (apart < std::min(distance, wanted.size())) {
      distance = apart;
      nearest = id;
    }
  }
  return nearest;
}

}  // namespace

Zone::Zone(std::string_view id, std::unique_ptr<icu::BasicTimeZone> zone) : id_(id), zone_(std::move(zone)) {}
Zone::~Zone() = default;

Result<std::unique_ptr<const Zone>> Zone::make(std::string_view id) {
  const bool plausible = !id.empty() && id.size() <= kLongestId;
  if (plausible) {
    const auto name = icu::UnicodeString::fromUTF8({id.data(), static_cast<std::int32_t>(id.size())});
    std::unique_ptr<icu::TimeZone> made(icu::TimeZone::createTimeZone(name));
    const bool known = made != nullptr && *made != icu::TimeZone::getUnknown();
    if (auto* basic = dynamic_cast<icu::BasicTimeZone*>(made.get()); basic != nullptr && known) {
      static_cast<void>(made.release());
      return std::unique_ptr<const Zone>(new Zone(id, std::unique_ptr<icu::BasicTimeZone>(basic)));
    }
  }
  const std::string nearest = plausible ? nearestZone(id) : std::string();
  if (nearest.empty()) return refuse("'{}' is not a known time zone; one looks like 'Europe/Berlin'", id);
  return refuse("'{}' is not a known time zone; did you mean '{}'?", id, nearest);
}

Zone::Table Zone::makeTable() const {
  Table table;
  table.at.push_back(kDistantPast);
  table.offset.push_back(askIcu(kTableBegin).offset);
  table.end = kDistantFuture;
  icu::TimeZoneTransition change;
  UDate at = millisecondsOf(kTableBegin);
  while (zone_->getNextTransition(at, false, change)) {
    at = change.getTime();
    if (secondsOf(at) >= kTableEnd) {
      table.end = secondsOf(at);
      break;
    }
    // Some changes only rename the time or turn summer time into standard time; the clock is not touched.
    if (offsetAfter(change) == table.offset.back()) continue;
    table.at.push_back(secondsOf(at));
    table.offset.push_back(offsetAfter(change));
  }
  return table;
}

Zone::Stretch Zone::askIcu(std::int64_t instant) const {
  UErrorCode status = U_ZERO_ERROR;
  std::int32_t raw = 0;
  std::int32_t summer = 0;
  zone_->getOffset(millisecondsOf(instant), false, raw, summer, status);
  Stretch stretch{kDistantPast, kDistantFuture, (raw + summer) / 1000};
  icu::TimeZoneTransition change;
  if (zone_->getPreviousTransition(millisecondsOf(instant), true, change))
    stretch.begin = secondsOf(change.getTime());
  if (zone_->getNextTransition(millisecondsOf(instant), false, change))
    stretch.end = secondsOf(change.getTime());
  return stretch;
}

Zone::Stretch Zone::stretchAt(std::int64_t instant) const {
  const Table& table = table_.get([this] { return makeTable(); });
  if (instant >= table.end) return askIcu(instant);
  const auto next = std::upper_bound(table.at.begin() + 1, table.at.end(), instant);
  const auto index = static_cast<std::size_t>(next - table.at.begin()) - 1;
  return {table.at[index], next != table.at.end() ? *next : table.end, table.offset[index]};
}

Zone::Wall Zone::wall(std::int64_t wallSeconds) const {
  using Kind = Wall::Kind;
  const auto holds = [](const Stretch& stretch, std::int64_t instant) {
    return stretch.begin <= instant && instant < stretch.end;
  };
  // Far from any change the wall time read as UTC finds the right stretch at once: no offset is that wide.
  constexpr std::int64_t kWidestOffset = 2 * kSecondsPerDay;
  const Stretch near = stretchAt(wallSeconds);
  const std::int64_t likely = wallSeconds - near.offset;
  if (wallSeconds - near.begin > kWidestOffset && near.end - wallSeconds > kWidestOffset)
    return {Kind::once, likely, likely, likely};

  // Close to one, it is this stretch or a neighbour of it.
  const Stretch here = stretchAt(likely);
  const std::int64_t mine = wallSeconds - here.offset;
  const bool mineHolds = holds(here, mine);
  if (here.begin > kDistantPast) {
    const Stretch before = stretchAt(here.begin - 1);
    const std::int64_t other = wallSeconds - before.offset;
    if (holds(before, other))
      return mineHolds ? Wall{Kind::twice, other, mine, other} : Wall{Kind::once, other, other, other};
    if (!mineHolds && mine < here.begin) return {Kind::skipped, mine, other, here.begin};
  }
  if (here.end < kDistantFuture) {
    const Stretch after = stretchAt(here.end);
    const std::int64_t other = wallSeconds - after.offset;
    if (holds(after, other))
      return mineHolds ? Wall{Kind::twice, mine, other, mine} : Wall{Kind::once, other, other, other};
    if (!mineHolds) return {Kind::skipped, other, mine, here.end};
  }
  return {Kind::once, mine, mine, mine};
}

}  // namespace moniva
