#include "ui/cli/currency_names.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/ucurr.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <sstream>

#include "base/text.h"
#include "currency/currency_manager.h"
#include "ui/cli/did_you_mean.h"

namespace moniva {
namespace {

/// The text in small letters without their accents.
std::string withoutAccents(std::string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  const auto* normalizer = icu::Normalizer2::getNFDInstance(status);
  icu::UnicodeString apart = icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
  if (U_SUCCESS(status)) apart = normalizer->normalize(apart, status);
  icu::UnicodeString plain;
  for (int32_t at = 0; at < apart.length(); at = apart.moveIndex32(at, 1)) {
    const UChar32 sign = apart.char32At(at);
    if (u_charType(sign) != U_NON_SPACING_MARK) plain.append(sign);
  }
  std::string utf8;
  return plain.foldCase().toUTF8String(utf8);
}

std::vector<std::string> wordsIn(const std::string& name) {
  std::istringstream rest(name);
  std::vector<std::string> words;
  for (std::string word; rest >> word;) words.push_back(word);
  return words;
}

/// What a currency may be called.
struct Called {
  std::string code;
  std::string sign;
  std::vector<std::string> names;
  std::vector<std::string> words;
};

/// All currencies, those a person probably means first.
std::vector<Called> currenciesCalled(Session& session) {
  std::vector<std::string> codes;
  if (session.hasStore()) {
    codes.push_back(session.defaultCurrency());
    codes.emplace_back(CurrencyManager::baseCurrency);
    for (auto& code : DoDB::getCurrencyList(session.root())) codes.push_back(std::move(code));
  }
  for (const auto& code : CurrencyManager::availableCurrencies()) codes.push_back(code);
  std::vector<Called> list;
  for (auto& code : codes) {
    if (!isCurrencyCode(code) || std::ranges::find(list, code, &Called::code) != list.end()) continue;
    Called called{code, currencySign(session, code), {}, {}};
    for (const std::string& locale : {session.calendar().locale(), std::string("en")}) {
      called.names.push_back(withoutAccents(currencyDisplayName(code, locale)));
      for (auto& word : wordsIn(called.names.back())) called.words.push_back(std::move(word));
    }
    list.push_back(std::move(called));
  }
  return list;
}

/// Of the words the one nearest to the text, and whose it is.
std::optional<std::string> nearestOf(std::string_view text, const std::vector<Called>& list,
                                     std::vector<std::string> (*words)(const Called&)) {
  std::vector<std::string> all;
  std::vector<std::string> whose;
  for (const auto& called : list) {
    for (auto& word : words(called)) {
      all.push_back(std::move(word));
      whose.push_back(called.code);
    }
  }
  const auto near = didYouMean(text, all);
  if (!near) return std::nullopt;
  return whose[static_cast<std::size_t>(std::ranges::find(all, *near) - all.begin())];
}

}  // namespace

CurrencyName currencyNamed(Session& session, const std::string& code) {
  return {code, currencyDisplayName(code, session.calendar().locale())};
}

std::string currencySign(Session& session, const std::string& code) {
  UErrorCode status = U_ZERO_ERROR;
  icu::UnicodeString wide(code.c_str(), static_cast<int32_t>(code.size()), US_INV);
  int32_t length = 0;
  const char16_t* sign = ucurr_getName(wide.getTerminatedBuffer(), session.calendar().locale().c_str(),
                                       UCURR_SYMBOL_NAME, nullptr, &length, &status);
  if (U_FAILURE(status) || sign == nullptr) return code;
  std::string utf8;
  return icu::UnicodeString(sign, length).toUTF8String(utf8);
}

std::vector<std::string> currenciesLike(Session& session, const std::vector<std::string>& codes,
                                        std::string_view text) {
  const std::string wanted = withoutAccents(trimBlanks(text));
  std::vector<std::string> found;
  for (const auto& code : codes) {
    const auto isIn = [&](std::string_view named) {
      return withoutAccents(named).find(wanted) != std::string::npos;
    };
    if (isIn(code) || isIn(currencyDisplayName(code, session.calendar().locale())) ||
        isIn(currencyDisplayName(code, "en"))) {
      found.push_back(code);
    }
  }
  return found;
}

std::optional<CurrencyName> currencyMeant(Session& session, std::string_view text) {
  const std::string wanted = withoutAccents(trimBlanks(text));
  if (wanted.empty()) return std::nullopt;
  const auto list = currenciesCalled(session);
  const auto has = [&](const std::vector<std::string>& names) {
    return std::ranges::find(names, wanted) != names.end();
  };
  const std::function<bool(const Called&)> rules[] = {
      [&](const Called& called) { return isSameWord(called.code, wanted); },
      [&](const Called& called) { return called.sign == trimBlanks(text); },
      [&](const Called& called) { return has(called.names); },
      [&](const Called& called) { return has(called.words); }};
  for (const auto& rule : rules) {
    const auto found = std::ranges::find_if(list, rule);
    if (found != list.end()) return currencyNamed(session, found->code);
  }
  auto near = nearestOf(wanted, list, [](const Called& called) { return std::vector{called.code}; });
  if (!near) near = nearestOf(wanted, list, [](const Called& called) { return called.names; });
  if (!near) near = nearestOf(wanted, list, [](const Called& called) { return called.words; });
  return near ? std::optional(currencyNamed(session, *near)) : std::nullopt;
}

}  // namespace moniva
