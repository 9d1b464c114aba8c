#include "currency/amount_reader.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "currency/amount_format.h"
#include "currency/currency_codes.h"

namespace moniva {
namespace {

/// What the text comes to, or the sentence that refuses it.
std::string readIn(const char* locale, std::string_view text) {
  const auto amount = AmountReader(locale).readSigned(text);
  return amount ? fmt::format("{}", *amount) : amount.error().why;
}

TEST(AmountReader, readsAmountsAsTheLocaleWritesThem) {
  const struct {
    const char* locale;
    std::string_view text;
    std::string_view says;
    const char* why;
  } cases[] = {
      {"en_US", "1,234.50", "1234.5", "the locale's own form"},
      {"en_US", "1,234", "1234", "thousands, as its comma can be nothing else"},
      {"en_US", "1,5", "'.' is the decimal mark, so write 1.5", "a fraction of elsewhere"},
      {"en_US", "1.234,50", "so write 1234.50", "all of it of elsewhere"},
      {"de_DE", "1.234,50", "1234.5", "the locale's own form"},
      {"de_DE", "12.50", "12.5", "a plain point"},
      {"de_DE", "0.125", "0.125", "nobody groups behind a nought"},
      {"de_DE", "1234.567", "1234.567", "nor in fours"},
      {"de_DE", "1.234", "may be two amounts: write 1234 or 1,234", "neither is guessed"},
      {"de_DE", "-1.234", "write -1234 or -1,234", "nor below zero"},
      {"de_DE", "1.234.567", "1234567", "two marks group"},
      {"de_DE", "1,234.50", "so write 1234,50", "of elsewhere"},
      {"de_AT", "1.234,5", "1234.5", "a point for the space between thousands"},
      {"de_CH", "1\u2019234.50", "1234.5", "the locale's own form"},
      {"de_CH", "1,234", "so write 1.234", "its comma is neither mark"},
      {"fr_FR", "1\u202F234,50", "1234.5", "the locale's own form"},
      {"fr_FR", "1 234,50", "1234.5", "the space of the keyboard"},
      {"fr_FR", "1.234", "write 1234 or 1,234", "both are in use there"},
      {"fr_CH", "1'234.50", "1234.5", "money has another mark than numbers"},
      {"en_IN", "12,34,567.5", "1234567.5", "twos above the thousand"},
      {"en_IN", "1,234,567.5", "1234567.5", "threes as well"},
      {"en_US", "12,34,567", "not grouped", "twos nowhere else"},
      {"ar_EG", "١٬٢٣٤٫٥", "1234.5", "its digits and marks"},
      {"ar_EG", "12.50", "12.5", "a plain point"},
      {"ar_EG", "1,5", "so write 1٫5", "told with the mark of the locale"},
      {"ar_EG", "١2", "digits of several scripts", "perhaps two readings from right and left"},
      {"fa_IR", "\u200e\u2212۱۲٫۵", "-12.5", "its minus, with a mark of direction"},
      {"hi_IN", "१२,३४,५६७", "1234567", "digits it does not print by itself"},
      {"pt_BR", "1.234,50", "1234.5", "the locale's own form"},
      {"C", "1,234.50", "1234.5", "of no country"},
      {"not one", "12.50", "12.5", "an unknown locale is of no country"},
      {"en_US", "12..5", "'12..5' is not an amount: write digits, with '.' before a fraction", "two marks"},
      {"en_US", "1e999", "'1e999' is not an amount", "no exponents"},
      {"en_US", "1234567890.123456", "more than 15 digits", "a double would round it"},
      {"en_US", "\xFF", "is not an amount", "no UTF-8"},
      {"en_US", "\u200e ", "is empty", "nothing to be seen"},
  };
  for (const auto& c : cases) {
    const auto got = readIn(c.locale, c.text);
    const bool isNumber = c.says.find_first_not_of("-.0123456789") == std::string_view::npos;
    EXPECT_TRUE(isNumber ? got == c.says : got.find(c.says) != std::string::npos)
        << c.locale << " '" << c.text << "' (" << c.why << "): " << got;
  }
  const auto negative = AmountReader("en_US").read("\u22125");
  ASSERT_FALSE(negative);
  EXPECT_NE(negative.error().why.find("has a sign"), std::string::npos);
}

/// Whether the text has three digits behind its only mark, so that it may be one between thousands.
bool mayBeGrouped(const std::string& text) {
  int marks = 0;
  int digitsBehind = 0;
  const auto wide = icu::UnicodeString::fromUTF8(text);
  for (int32_t at = 0; at < wide.length(); at = wide.moveIndex32(at, 1)) {
    const UChar32 c = wide.char32At(at);
    if (u_charDigitValue(c) >= 0) {
      ++digitsBehind;
    } else if (u_charType(c) != U_FORMAT_CHAR && c != '-' && c != 0x2212) {
      ++marks;
      digitsBehind = 0;
    }
  }
  return marks == 1 && digitsBehind == 3;
}

RC_GTEST_PROP(AmountReader, readsWhatIsPrinted, ()) {
  const auto locale =
      *rc::gen::element("en_US", "de_DE", "de_AT", "de_CH", "fr_FR", "fr_CH", "en_IN", "ar_EG", "fa_IR",
                        "hi_IN", "mr_IN", "pt_BR", "pt_CV", "en_FI", "sv_SE", "C");
  const auto code = *rc::gen::element("JPY", "EUR", "KWD");
  const auto units = *rc::gen::inRange<std::int64_t>(-1'000'000'000'000, 1'000'000'000'000);
  const auto amount = static_cast<double>(units) / std::pow(10.0, currencyDigits(code));
  const auto text = AmountFormat::make(locale).value().formatPlain(amount, code);
  const auto read = AmountReader(locale).readSigned(text);
  if (!read) {
    RC_ASSERT(read.error().why.find("may be two amounts") != std::string::npos && mayBeGrouped(text));
  } else {
    RC_ASSERT(std::abs(*read - amount) < 1e-9 * std::max(1.0, std::abs(amount)));
  }
}

TEST(AmountReader, takesExpressionsApart) {
  const struct {
    const char* locale;
    std::string_view text;
    std::string_view says;
    const char* why;
  } cases[] = {
      {"en_US", "12.50+3×4", "12.5:2 + 3:0 × 4:0", "no blanks"},
      {"en_US", " 1,234.50 - 0.10 ÷ 3 ", "1234.5:2 - 0.1:2 ÷ 3:0", "blanks anywhere"},
      {"en_US", "2*3/4\u22125", "2:0 * 3:0 / 4:0 \u2212 5:0", "the other signs"},
      {"en_US", "-5+3", "-5:0 + 3:0", "a sign in front"},
      {"de_DE", "12,50+3", "12.5:2 + 3:0", "numbers of the locale"},
      {"fa_IR", "۱۲٫۵×۲", "12.5:1 × 2:0", "digits of the locale"},
      {"en_US", "7", "7:0", "one number is one, too"},
      {"en_US", "3+", "'3+' ends with '+'", "nothing behind"},
      {"en_US", "3+ *4", "'*' at character 4", "two operators"},
      {"en_US", "+*", "'*' at character 2", "a sign and no number"},
      {"en_US", "×4", "'×' at character 1", "nothing in front"},
      {"en_US", "3+-4", "'-' at character 3", "only the first number has a sign"},
      {"en_US", "€+12..5", "'€' is not an amount", "the first fault"},
      {"en_US", "×+12..5", "'×' at character 1", "the first place"},
      {"en_US", "2×12..5",
       "'12..5' is not an amount: write digits, with '.' before a fraction (at character 3",
       "characters, not bytes"},
      {"de_DE", "2+1.234", "write 1234 or 1,234 (at character 3 of '2+1.234')", "two readings"},
      {"en_US", " ", "is empty", "nothing"},
  };
  for (const auto& c : cases) {
    const AmountReader reader(c.locale);
    const auto tokens = reader.tokens(c.text);
    std::string got;
    if (!tokens) {
      got = tokens.error().why;
    } else {
      for (const auto& token : *tokens) {
        const bool isNumber = token.kind == AmountToken::Kind::number;
        got += (got.empty() ? "" : " ") +
               (isNumber ? fmt::format("{}:{}", token.number, token.decimals) : token.text);
      }
      EXPECT_EQ(reader.isExpression(c.text), tokens->size() > 1) << c.text;
    }
    EXPECT_TRUE(tokens ? got == c.says : got.find(c.says) != std::string::npos)
        << "'" << c.text << "' (" << c.why << "): " << got;
  }
}

}  // namespace
}  // namespace moniva
