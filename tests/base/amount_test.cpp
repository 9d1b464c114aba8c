#include "base/amount.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <vector>

namespace moniva {
namespace {

struct AmountCase {
  std::string_view text;
  char mark;
  double value;
  std::string_view why;
};

TEST(ParseAmount, readsWhatPeopleAndFilesWrite) {
  const std::vector<AmountCase> cases = {
      {"0", '.', 0, "zero is for the caller to judge"},
      {"12.50", '.', 12.5, "plain"},
      {"12,50", ',', 12.5, "plain, with a comma"},
      {"007", '.', 7, "leading zeros change nothing"},
      {".5", '.', 0.5, "typed in haste"},
      {" \t12.5\u00A0\u3000", '.', 12.5, "blanks around it, typographic ones too"},
      {"1,234,567.89", '.', 1234567.89, "groups"},
      {"1.234.567,89", ',', 1234567.89, "groups, the other way round"},
      {"1'234.50", '.', 1234.5, "apostrophes"},
      {"1\u2019234,50", ',', 1234.5, "typographic apostrophe"},
      {"1 234 567,5", ',', 1234567.5, "spaces"},
      {"1\u00A0234,5", ',', 1234.5, "no-break space"},
      {"1\u202F234,5", ',', 1234.5, "narrow no-break space"},
      {"999999999999.999", '.', 999999999999.999, "fifteen digits"},
      {"000000000000000000001.50000000000000000", '.', 1.5, "zeros that carry nothing are not counted"},
      {"0.000000000000000123", '.', 1.23e-16, "nor zeros that only place the number"},
  };
  for (const auto& [text, mark, value, why] : cases) {
    const auto amount = parseAmount(text, mark);
    ASSERT_TRUE(amount) << why << ": " << amount.error().why;
    EXPECT_EQ(*amount, value) << why;
  }
}

TEST(ParseAmount, refusesEverythingElse) {
  struct Case {
    std::string_view text;
    char mark;
    std::string_view says;
    std::string_view why;
  };
  const std::vector<Case> cases = {
      {"", '.', "empty", "nothing"},
      {" \u00A0 ", '.', "empty", "blanks only"},
      {"-5", '.', "direction", "the kind of record says which way it goes"},
      {"\u22125", '.', "direction", "typographic minus"},
      {"+5", '.', "direction", "a sign as well"},
      {"--5", '.', "'--5' is not", "two signs"},
      {"12..5", '.', "'12..5' is not", "two marks"},
      {"12.", '.', "'12.' is not", "looks cut off"},
      {".", '.', "'.' is not", "no digit"},
      {"12.5x", '.', "'12.5x' is not", "trailing text"},
      {"12.5 EUR", '.', "is not", "currency"},
      {"inf", '.', "'inf' is not", "std::from_chars would take it"},
      {"nan", '.', "'nan' is not", "std::from_chars would take it"},
      {"1e3", '.', "'1e3' is not", "exponent"},
      {"1e999", '.', "'1e999' is not", "exponent out of range"},
      {"0x1F", '.', "'0x1F' is not", "hexadecimal"},
      {"12,50", '.', "groups of three", "a comma is no decimal mark here"},
      {"1,2345", '.', "groups of three", "group of four"},
      {"1234,567", '.', "groups of three", "first group of four"},
      {",123", '.', "groups of three", "no first group"},
      {"1,,234", '.', "groups of three", "empty group"},
      {"0,125", '.', "groups of three", "no one groups after a zero: it is a fraction"},
      {"1,234 567", '.', "groups of three", "two kinds of separators"},
      {"1.234,567.8", ',', "is not", "a group mark after the fraction started"},
      {"1.5,3", '.', "is not", "a group mark after the fraction started"},
      {"1234567890123456", '.', "more than 15 digits", "a double would round it"},
      {"1234567890.123456", '.', "more than 15 digits", "a double would round it"},
      {"１２", '.', "is not", "wide digits"},
  };
  for (const auto& [text, mark, says, why] : cases) {
    const auto amount = parseAmount(text, mark);
    ASSERT_FALSE(amount) << why << ": '" << text << "' read as " << *amount;
    EXPECT_NE(amount.error().why.find(says), std::string::npos) << why << ": " << amount.error().why;
  }
  const auto tiny = parseAmount("0." + std::string(400, '0') + "1");
  EXPECT_FALSE(tiny) << "below the smallest double";
  const auto endless = parseAmount(std::string(100000, '9'));
  ASSERT_FALSE(endless);
  EXPECT_LT(endless.error().why.size(), 200U) << "a sentence stays a sentence";
}

TEST(ParseSignedAmount, takesTheSignAndNothingMore) {
  EXPECT_EQ(parseSignedAmount("-12.50").value(), -12.5);
  EXPECT_EQ(parseSignedAmount(" \u22121.234,5 ", ',').value(), -1234.5);
  EXPECT_EQ(parseSignedAmount("+3").value(), 3);
  EXPECT_FALSE(std::signbit(parseSignedAmount("-0.00").value()));
  for (const auto* text : {"", "-", "+-3", "- -3", "3-", "(3)"})
    EXPECT_FALSE(parseSignedAmount(text)) << text;
}

RC_GTEST_PROP(ParseAmount, readsEveryCentBackHoweverItIsGrouped, ()) {
  const auto cents = *rc::gen::inRange<std::int64_t>(0, 1'000'000'000'000);
  const bool comma = *rc::gen::arbitrary<bool>();
  const auto group = *rc::gen::element<std::string>("", comma ? "." : ",", "'", " ", "\u202F");
  auto whole = std::to_string(cents / 100);
  for (auto at = static_cast<std::int64_t>(whole.size()) - 3; at > 0; at -= 3) {
    whole.insert(static_cast<std::size_t>(at), group);
  }
  const auto text = fmt::format("{}{}{:02}", whole, comma ? ',' : '.', cents % 100);
  const auto amount = parseAmount(text, comma ? ',' : '.');
  RC_ASSERT(amount.has_value());
  RC_ASSERT(std::llround(*amount * 100) == cents);
  RC_ASSERT(fmt::format("{:.2f}", *amount) == fmt::format("{}.{:02}", cents / 100, cents % 100));
}

TEST(DecimalMarkSurvey, decidesForTheWholeColumn) {
  struct Case {
    std::vector<std::string_view> column;
    std::string_view answer;  ///< the mark, or a part of the refusal
    std::string_view why;
  };
  const std::vector<Case> cases = {
      {{}, ".", "nothing to decide"},
      {{"12", "", "abc"}, ".", "no marks"},
      {{"12.50"}, ".", "two digits after it"},
      {{"12,50"}, ",", "two digits after it"},
      {{"1,234", "5.25"}, ".", "another cell tells"},
      {{"1,234", "-5,25"}, ",", "another cell tells, signed"},
      {{"1.234.567"}, ",", "a mark twice groups"},
      {{"1 234,567"}, ",", "spaces group already"},
      {{"0,125"}, ",", "no group starts with a zero"},
      {{"1234.567"}, ".", "four digits before it"},
      {{"1,234", "7"}, "'1,234' in line 1", "only ambiguous ones"},
      {{"12.50", "7", "12,50"}, "'12,50' in line 3", "they contradict each other"},
  };
  for (const auto& [column, answer, why] : cases) {
    DecimalMarkSurvey survey;
    std::size_t line = 0;
    for (const auto text : column) survey.add(text, ++line);
    const auto mark = survey.decide();
    const auto got = mark ? std::string(1, *mark) : mark.error().why;
    EXPECT_EQ(mark.has_value(), answer.size() == 1) << why << ": " << got;
    EXPECT_NE(got.find(answer), std::string::npos) << why << ": " << got;
  }
}

}  // namespace
}  // namespace moniva
