#pragma once

#include <unicode/locid.h>

#include <string>
#include <string_view>

#include "base/result.h"

namespace moniva {

/// ICU's name of a locale written as people and systems write it: BCP 47 ("zh-Hans-CN",
/// "fa-IR-u-ca-persian"), POSIX ("en_US.UTF-8", "C") or ICU itself ("fa_IR@calendar=persian"). Unknown
/// languages, scripts, countries and calendars are refused: a typing error would otherwise change how every
/// date is read.
Result<std::string> localeName(std::string_view typed);
/// The locale of such a name, for what is of a country: the portable ones, "C" and "POSIX", are the neutral
/// one, though ICU takes them for American. Refused as above.
Result<icu::Locale> localeNamed(std::string_view typed);

}  // namespace moniva
