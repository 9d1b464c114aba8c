#include "currency/amount_format.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>

#include "currency/currency_codes.h"

namespace moniva {
namespace {

/// No-break spaces stand as "_" in the tables below, so that the expected text can be read.
std::string visible(std::string text) {
  for (const std::string space : {"\u00A0", "\u202F"}) {
    for (auto at = text.find(space); at != std::string::npos; at = text.find(space)) {
      text.replace(at, space.size(), "_");
    }
  }
  return text;
}

TEST(AmountFormat, printsEveryForm) {
  const struct {
    const char* locale;
    double amount;
    const char* code;
    const char* symbol;
    const char* signedSymbol;
    const char* withCode;
    const char* plain;
    const char* why;
  } cases[] = {
      {"en_US", 1234.5, "USD", "$1,234.50", "+$1,234.50", "USD_1,234.50", "1,234.50", "symbol leads"},
      {"de_DE", -1234.5, "EUR", "-1.234,50_€", "-1.234,50_€", "-1.234,50_EUR", "-1.234,50", "symbol follows"},
      {"hi_IN", 1234567, "INR", "₹12,34,567.00", "+₹12,34,567.00", "INR_12,34,567.00", "12,34,567.00",
       "groups of two after the thousand"},
      {"ja_JP", 1180.5, "JPY", "￥1,181", "+￥1,181", "JPY_1,181", "1,181", "no decimals, half rounds up"},
      {"en_US", 1.2345, "KWD", "KWD_1.235", "+KWD_1.235", "KWD_1.235", "1.235", "three decimals"},
      {"en_US", 1.005, "USD", "$1.01", "+$1.01", "USD_1.01", "1.01", "rounds the decimal that was typed"},
      {"en_US", -2.675, "USD", "-$2.68", "-$2.68", "-USD_2.68", "-2.68", "halves go away from zero"},
      {"en_US", -0.001, "USD", "$0.00", "$0.00", "USD_0.00", "0.00", "rounded to zero, so no sign"},
      {"en_US", 12.5, "POINTS", "12.50_POINTS", "+12.50_POINTS", "12.50_POINTS", "12.50", "not ISO's form"},
      {"en_US", 12.5, "", "12.50", "+12.50", "12.50", "12.50", "no currency"},
      {"sv_SE", 3.5, "SEK", "3,50_kr", "+3,50_kr", "3,50_SEK", "3,50", "cash has no öre, accounts do"},
      {"C", 1234.5, "EUR", "€_1,234.50", "+€_1,234.50", "EUR_1,234.50", "1,234.50", "locale of no country"},
      {"en_US", std::nan(""), "USD", "NaN", "NaN", "NaN", "NaN", "no figure at all"},
  };
  for (const auto& c : cases) {
    const AmountFormat amounts = AmountFormat::make(c.locale).value();
    EXPECT_EQ(visible(amounts.format(c.amount, c.code)), c.symbol) << c.why;
    EXPECT_EQ(visible(amounts.formatSigned(c.amount, c.code)), c.signedSymbol) << c.why;
    EXPECT_EQ(visible(amounts.formatWithCode(c.amount, c.code)), c.withCode) << c.why;
    EXPECT_EQ(visible(amounts.formatPlain(c.amount, c.code)), c.plain) << c.why;
  }
}

RC_GTEST_PROP(AmountFormat, aCentIsNeverLost, (int cents)) {
  static const AmountFormat amounts = AmountFormat::make("en_US").value();
  RC_ASSERT(amounts.formatPlain(7, "JPY") == "7");  // formatters are kept, and stay apart
  std::string digits;
  for (const char c : amounts.formatPlain(cents / 100.0, "USD")) {
    if (c != ',' && c != '.') digits += c;
  }
  RC_ASSERT(std::stoll(digits) == cents);
}

TEST(AmountFormat, refusesALocaleOfNoLanguage) {
  const auto refused = AmountFormat::make("no such place");
  ASSERT_FALSE(refused.has_value());
  EXPECT_NE(refused.error().why.find("'no such place'"), std::string::npos);
}

TEST(Currency, codesAndTheirDigits) {
  const struct {
    const char* code;
    bool known;
    int digits;
    const char* why;
  } cases[] = {
      {"USD", true, 2, "the usual"},
      {"JPY", true, 0, "no smaller coin"},
      {"KWD", true, 3, "a thousand fils"},
      {"DEM", true, 2, "former currencies stay in old books"},
      {"QQQ", false, 2, "nobody's"},
      {"", false, 2, "nothing"},
      {"€", false, 2, "three bytes, no letters"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(isCurrencyCode(c.code), c.known) << c.why;
    EXPECT_EQ(currencyDigits(c.code), c.digits) << c.why;
  }
}

}  // namespace
}  // namespace moniva
