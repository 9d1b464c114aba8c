#pragma once

#include <unicode/alphaindex.h>
#include <unicode/coll.h>
#include <unicode/uscript.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace moniva {

/// How titles are ordered, and under which letter each is filed, where the user lives. Threads may share one.
class TitleOrder {
 public:
  /// The order of a locale, made once and kept. For a locale whose rules cannot be had the order is that of
  /// the bytes.
  static std::shared_ptr<const TitleOrder> forLocale(const std::string& locale);
  explicit TitleOrder(const std::string& locale);

  /// What titles are filed under that do not begin with a letter.
  static constexpr std::string_view kNoLetter = "#";

  /// The letter a title is filed under, a capital where its script has them. An accented letter counts as the
  /// plain one unless it is one of its own to the user ("Ä": "A" in German, "Ä" in Swedish); Chinese goes by
  /// its sound; other scripts have their own letters, by the customs of a language written in them. What the
  /// language takes for one letter is one ("Ch" in Czech). Blanks before it do not count.
  std::string letterOf(std::string_view title) const;

  /// Whether `left` stands before `right` (-1), after it (1) or in the same place (0).
  int compare(std::string_view left, std::string_view right) const;

 private:
  using Letters = icu::AlphabeticIndex::ImmutableIndex;

  std::string findLetter(std::string_view beginning, UChar32 first) const;
  const Letters* lettersOf(UScriptCode script) const;

  icu::Locale locale_;
  /// The plain letters that are not always filed under themselves: the "c" of the Czech "ch".
  std::string unsettled_;
  std::unique_ptr<icu::Collator> collator_;
  mutable std::mutex mutex_;
  mutable std::map<UScriptCode, std::unique_ptr<Letters>> letters_;
  mutable std::unordered_map<std::string, std::string> known_;
};

}  // namespace moniva
