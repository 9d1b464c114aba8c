#include "ui/cli/currency_names.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <iterator>
#include <sstream>

#include "base/text.h"
#include "currency/currency_manager.h"
#include "currency/locale_utils.h"
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
  bool isNear = false;  ///< the own one, or of the person's list
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
  const std::size_t near = codes.size();
  for (auto& code : CurrencyManager::currenciesInTender(session.now())) codes.push_back(std::move(code));
  for (const auto& code : CurrencyManager::availableCurrencies()) codes.push_back(code);
  std::vector<Called> list;
  for (std::size_t i = 0; i < codes.size(); ++i) {
    const std::string& code = codes[i];
    if (!isCurrencyCode(code) || std::ranges::find(list, code, &Called::code) != list.end()) continue;
    Called called{code, i < near, currencySign(session, code), {}, {}};
    for (const std::string& locale : {session.calendar().locale(), std::string("en")}) {
      called.names.push_back(withoutAccents(currencyDisplayName(code, locale)));
      for (auto& word : wordsIn(called.names.back())) called.words.push_back(std::move(word));
    }
    list.push_back(std::move(called));
  }
  return list;
}

/// Of the texts by which currencies are called the one nearest to what was typed.
std::optional<std::string> nearestOf(std::string_view wanted, const std::vector<Called>& list,
                                     std::vector<std::string> Called::*texts) {
  std::vector<std::string> all;
  for (const auto& called : list) std::ranges::copy(called.*texts, std::back_inserter(all));
  return didYouMean(wanted, all);
}

}  // namespace

CurrencyName currencyNamed(Session& session, const std::string& code) {
  return {code, currencyDisplayName(code, session.calendar().locale())};
}

std::string currencySign(Session& session, const std::string& code) {
  return symbolOfCurrency(session.calendar().locale(), code);
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
  const auto first = [&](auto&& isMeant) -> std::optional<CurrencyName> {
    const auto found = std::ranges::find_if(list, isMeant);
    return found == list.end() ? std::nullopt : std::optional(currencyNamed(session, found->code));
  };
  const auto has = [](const std::vector<std::string>& texts, const std::string& one) {
    return std::ranges::find(texts, one) != texts.end();
  };
  // A word that several have says nothing where none of them is near.
  const auto byWord = [&](const std::string& word) -> std::optional<CurrencyName> {
    const auto isMeant = [&](const Called& called) { return has(called.words, word); };
    const auto found = std::ranges::find_if(list, isMeant);
    if (found == list.end() || (!found->isNear && std::ranges::count_if(list, isMeant) > 1))
      return std::nullopt;
    return currencyNamed(session, found->code);
  };
  if (auto meant = first([&](const Called& called) { return isSameWord(called.code, wanted); })) return meant;
  if (auto meant = first([&](const Called& called) { return called.sign == trimBlanks(text); })) return meant;
  if (auto meant = first([&](const Called& called) { return has(called.names, wanted); })) return meant;
  if (auto meant = byWord(wanted)) return meant;
  std::vector<std::string> codes;
  for (const auto& called : list) codes.push_back(called.code);
  if (const auto code = didYouMean(wanted, codes)) return currencyNamed(session, *code);
  if (const auto name = nearestOf(wanted, list, &Called::names))
    return first([&](const Called& called) { return has(called.names, *name); });
  const auto word = nearestOf(wanted, list, &Called::words);
  return word ? byWord(*word) : std::nullopt;
}

}  // namespace moniva
