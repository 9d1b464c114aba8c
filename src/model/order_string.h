#pragma once

#include <string>
#include <string_view>

namespace moniva {

/// The text a title is ordered by: its Latin transliteration, folded, so that Chinese titles order by their
/// sound and accented ones beside plain ones.
std::string orderStringOf(std::string_view title);

/// The capital letter that the reading (pinyin) of a Chinese title begins with: "Z" for "中国". Empty for a
/// title that does not begin with a Chinese sign, or with one whose reading is not known. Each sign is read
/// by itself: of a sign with several readings the commonest one counts.
std::string pinyinFirstLetter(std::string_view title);

}  // namespace moniva
