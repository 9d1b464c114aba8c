#include "calendar/text_formats.h"

#include <unicode/basictz.h>
#include <unicode/fpositer.h>
#include <unicode/smpdtfmt.h>

#include <utility>

namespace moniva {
namespace {

const char16_t* patternOf(DateForm form) {
  switch (form) {
    case DateForm::dayNumber:
      return u"yyyyMMdd";
    case DateForm::monthNumber:
      return u"yyyyMM";
    case DateForm::csvDay:
      return u"yyyy/MM/dd";
    case DateForm::dayAndTime:
      return u"yyyy-MM-dd HH:mm:ss";
    case DateForm::zoneName:
      return u"zzzz";
    case DateForm::monthAndDay:
      return u"MMM, dd";
    case DateForm::monthName:
      return u"LLLL";
    case DateForm::weekdayName:
      return u"cccc";
    default:
      return nullptr;
  }
}

/// The locale's style of a day, and of the time beside it if there is one.
std::pair<icu::DateFormat::EStyle, icu::DateFormat::EStyle> stylesOf(DateForm form) {
  using icu::DateFormat;
  switch (form) {
    case DateForm::mediumDay:
      return {DateFormat::kMedium, DateFormat::kNone};
    case DateForm::longDay:
      return {DateFormat::kLong, DateFormat::kNone};
    case DateForm::fullDay:
      return {DateFormat::kFull, DateFormat::kNone};
    case DateForm::shortDayAndTime:
      return {DateFormat::kShort, DateFormat::kShort};
    case DateForm::mediumDayAndTime:
      return {DateFormat::kMedium, DateFormat::kMedium};
    case DateForm::longDayAndTime:
      return {DateFormat::kLong, DateFormat::kLong};
    case DateForm::fullDayAndTime:
      return {DateFormat::kFull, DateFormat::kFull};
    default:
      return {DateFormat::kShort, DateFormat::kNone};
  }
}

void dropYear(icu::SimpleDateFormat& format) {
  icu::UnicodeString pattern;
  format.toPattern(pattern);
  for (const auto* year : {u"yyyy", u"yy/", u"y/", u"/yy", u"/y", u"yy"}) {
    const icu::UnicodeString text(year);
    const std::int32_t at = pattern.indexOf(text);
    if (at < 0) continue;
    pattern.remove(at, text.length());
    format.applyPattern(pattern);
    return;
  }
}

/// Fields that every day of a month has alike.
bool isOfMonth(std::int32_t field) {
  switch (field) {
    case UDAT_ERA_FIELD:
    case UDAT_YEAR_FIELD:
    case UDAT_EXTENDED_YEAR_FIELD:
    case UDAT_MONTH_FIELD:
    case UDAT_STANDALONE_MONTH_FIELD:
      return true;
    default:
      return false;
  }
}

std::string utf8Of(const icu::UnicodeString& text) {
  std::string utf8;
  return text.toUTF8String(utf8);
}

}  // namespace

TextFormats::TextFormats(std::string icuLocale, const Zone& zone)
    : locale_(std::move(icuLocale)), zone_(zone) {}
TextFormats::~TextFormats() = default;

icu::SimpleDateFormat* TextFormats::format(DateForm form) const {
  auto& slot = formats_.at(static_cast<std::size_t>(form));
  if (slot) return slot.get();

  const icu::Locale locale = icu::Locale::createFromName(locale_.c_str());
  if (const char16_t* pattern = patternOf(form)) {
    UErrorCode status = U_ZERO_ERROR;
    auto made = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString(pattern), locale, status);
    if (U_SUCCESS(status)) slot = std::move(made);
  } else {
    const auto [day, time] = stylesOf(form);
    std::unique_ptr<icu::DateFormat> made(icu::DateFormat::createDateTimeInstance(day, time, locale));
    if (auto* simple = dynamic_cast<icu::SimpleDateFormat*>(made.get())) {
      static_cast<void>(made.release());
      slot.reset(simple);
    }
  }
  if (!slot) return nullptr;
  slot->setTimeZone(zone_.icuZone());
  if (form == DateForm::tinyDay) dropYear(*slot);
  return slot.get();
}

const Zone* TextFormats::otherZone(std::string_view id) const {
  if (id.empty() || id == zone_.id()) return nullptr;
  auto found = otherZones_.find(id);
  if (found == otherZones_.end())
    found = otherZones_.emplace(std::string(id), Zone::make(id).value_or(nullptr)).first;
  return found->second.get();
}

std::string TextFormats::write(DateForm form, Date date, std::string_view zoneId) const {
  const std::scoped_lock lock(mutex_);
  icu::SimpleDateFormat* format = this->format(form);
  if (format == nullptr) return {};
  const Zone* other = otherZone(zoneId);
  if (other != nullptr) format->setTimeZone(other->icuZone());
  icu::UnicodeString text;
  format->format(date.secondsSince1970 * 1000, text);
  if (other != nullptr) format->setTimeZone(zone_.icuZone());
  return utf8Of(text);
}

std::optional<TextFormats::AroundDay> TextFormats::writeAroundDay(DateForm form, Date date) const {
  const std::scoped_lock lock(mutex_);
  const icu::SimpleDateFormat* format = this->format(form);
  if (format == nullptr) return std::nullopt;
  icu::UnicodeString text;
  icu::FieldPositionIterator fields;
  UErrorCode status = U_ZERO_ERROR;
  format->format(date.secondsSince1970 * 1000, text, &fields, status);
  icu::FieldPosition field;
  std::optional<icu::FieldPosition> day;
  while (fields.next(field)) {
    if (isOfMonth(field.getField())) continue;
    if (field.getField() != UDAT_DATE_FIELD || day) return std::nullopt;
    day = field;
  }
  if (U_FAILURE(status) || !day) return std::nullopt;
  return AroundDay{utf8Of(text.tempSubStringBetween(0, day->getBeginIndex())),
                   utf8Of(text.tempSubStringBetween(day->getBeginIndex(), day->getEndIndex())),
                   utf8Of(text.tempSubStringBetween(day->getEndIndex()))};
}

}  // namespace moniva
