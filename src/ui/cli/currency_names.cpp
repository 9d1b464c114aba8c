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
#include "platform/localization.h"
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

/// "kr": the sign without what tells it from others.
std::string shortSignOf(const std::string& code, const std::string& locale) {
  return withoutAccents(shortSymbolOfCurrency(locale, code));
}

std::vector<std::string> wordsIn(const std::string& name) {
  std::istringstream rest(name);
  std::vector<std::string> words;
  for (std::string word; rest >> word;) words.push_back(word);
  return words;
}

/// How likely a person means a currency.
enum class Standing { near, inTender, former };

/// What a currency may be called.
struct Called {
  std::string code;
  Standing standing = Standing::former;  ///< near: the own one, or of the person's list
  std::string sign;                      ///< in the person's locale
  std::string shortSign;                 ///< as at home, which several may share: "kr"
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
  const std::size_t known = codes.size();
  for (const auto& code : CurrencyManager::availableCurrencies()) codes.push_back(code);
  const std::string& own = session.calendar().locale();
  std::vector<Called> list;
  for (std::size_t i = 0; i < codes.size(); ++i) {
    const std::string& code = codes[i];
    if (!isCurrencyCode(code) || std::ranges::find(list, code, &Called::code) != list.end()) continue;
    const auto standing = i < near ? Standing::near : i < known ? Standing::inTender : Standing::former;
    Called called{code, standing, currencySign(session, code), shortSignOf(code, own), {}, {}};
    for (const std::string& locale : {own, std::string("en")}) {
      called.names.push_back(withoutAccents(currencyDisplayName(code, locale)));
      for (auto& word : wordsIn(called.names.back())) called.words.push_back(std::move(word));
    }
    list.push_back(std::move(called));
  }
  return list;
}

/// Those that are called so: the first one near, else all in tender, else all there were.
template <class IsCalled>
std::vector<std::string> calledSo(const std::vector<Called>& list, const IsCalled& isCalled) {
  std::vector<std::string> codes;
  for (const auto standing : {Standing::near, Standing::inTender, Standing::former}) {
    for (const auto& called : list) {
      if (called.standing != standing || !isCalled(called)) continue;
      codes.push_back(called.code);
      if (standing == Standing::near) break;
    }
    if (!codes.empty()) break;
  }
  return codes;
}

/// Of the texts by which currencies in use are called the one nearest to what was typed.
template <class TextsOf>
std::optional<std::string> nearestOf(std::string_view wanted, const std::vector<Called>& list,
                                     const TextsOf& textsOf) {
  std::vector<std::string> all;
  for (const auto& called : list) {
    if (called.standing != Standing::former) std::ranges::copy(textsOf(called), std::back_inserter(all));
  }
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

CurrenciesMeant currenciesMeant(Session& session, std::string_view text) {
  const std::string wanted = withoutAccents(trimBlanks(text));
  if (wanted.empty()) return {};
  const auto list = currenciesCalled(session);
  const auto has = [](const std::vector<std::string>& texts, const std::string& one) {
    return std::ranges::find(texts, one) != texts.end();
  };
  const auto meant = [&](const std::string& word, auto&& isCalled) {
    CurrenciesMeant found{word, {}};
    for (const auto& code : calledSo(list, isCalled))
      found.currencies.push_back(currencyNamed(session, code));
    return found;
  };
  const auto named = [&](const std::string& word) {
    for (const auto texts : {&Called::names, &Called::words}) {
      auto found = meant(word, [&](const Called& called) { return has(called.*texts, word); });
      if (!found.currencies.empty()) return found;
    }
    return CurrenciesMeant();
  };
  const auto coded = [&](const std::string& code) {
    return meant(wanted, [&](const Called& called) { return isSameWord(called.code, code); });
  };
  if (auto found = coded(wanted); !found.currencies.empty()) return found;
  const auto isSigned = [&](const Called& called) { return called.sign == trimBlanks(text); };
  if (auto found = meant(wanted, isSigned); !found.currencies.empty()) return found;
  if (auto found = named(wanted); !found.currencies.empty()) return found;
  const auto isSignedShort = [&](const Called& called) { return called.shortSign == wanted; };
  if (auto found = meant(wanted, isSignedShort); !found.currencies.empty()) return found;

  const auto codeOf = [](const Called& called) { return std::vector{called.code}; };
  if (const auto code = nearestOf(wanted, list, codeOf)) return coded(*code);
  for (const auto texts : {&Called::names, &Called::words}) {
    const auto textsOf = [&](const Called& called) { return called.*texts; };
    if (const auto word = nearestOf(wanted, list, textsOf)) return named(*word);
  }
  return {};
}

}  // namespace moniva
