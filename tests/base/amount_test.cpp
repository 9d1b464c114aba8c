#include "base/amount.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <vector>

namespace moniva {
namespace {

TEST(ParseAmount, readsWhatPeopleAndFilesWrite) {
  struct Case {
    std::string_view text;
    double value;
    std::string_view why;
  };
  for (const auto& [text, value, why] : {
           Case{"0", 0, "zero is for the caller to judge"},
           Case{"007", 7, "leading zeros change nothing"},
           Case{".5", 0.5, "typed in haste"},
           Case{" \t12.5\u00A0\u3000", 12.5, "blanks around it, typographic ones too"},
           Case{"999999999999.999", 999999999999.999, "fifteen digits"},
           Case{"000000000000000000001.50000000000000000", 1.5, "zeros that carry nothing are not counted"},
           Case{"0.000000000000000123", 1.23e-16, "nor zeros that only place the number"},
       }) {
    const auto amount = parseAmount(text);
    ASSERT_TRUE(amount) << why << ": " << amount.error().why;
    EXPECT_EQ(*amount, value) << why;
  }
}

TEST(ParseAmount, refusesEverythingElse) {
  struct Case {
    std::string_view text;
    std::string_view says;
    std::string_view why;
  };
  for (const auto& [text, says, why] : {
           Case{" \u00A0 ", "empty", "blanks only"},
           Case{"\u22125", "direction", "the kind of record says which way it goes"},
           Case{"+5", "direction", "a sign as well"},
           Case{"12..5", "'12..5' is not", "two marks"},
           Case{"12.", "'12.' is not", "looks cut off"},
           Case{".", "'.' is not", "no digit"},
           Case{"12.5 EUR", "is not", "trailing text"},
           Case{"inf", "'inf' is not", "std::from_chars would take it"},
           Case{"1e3", "'1e3' is not", "exponent"},
           Case{"0x1F", "'0x1F' is not", "hexadecimal"},
           Case{"１２", "is not", "wide digits"},
           Case{"1.5,3", "is not", "a group mark after the fraction started"},
           Case{"12,50", "not grouped", "a comma is no decimal mark here"},
           Case{"1234,567", "not grouped", "first group of four"},
           Case{",123", "not grouped", "no first group"},
           Case{"1,,234", "not grouped", "empty group"},
           Case{"0,125", "not grouped", "no one groups after a zero: it is a fraction"},
           Case{"1,234 567", "not grouped", "two kinds of separators"},
           Case{"1234567890.123456", "more than 15 digits", "a double would round it"},
       }) {
    const auto amount = parseAmount(text);
    ASSERT_FALSE(amount) << why << ": '" << text << "' read as " << *amount;
    EXPECT_NE(amount.error().why.find(says), std::string::npos) << why << ": " << amount.error().why;
  }
  EXPECT_FALSE(parseAmount("0." + std::string(400, '0') + "1")) << "below the smallest double";
  const auto endless = parseAmount(std::string(100000, '9'));
  ASSERT_FALSE(endless);
  EXPECT_LT(endless.error().why.size(), 200U) << "a sentence stays a sentence";
}

TEST(ParseSignedAmount, takesTheSignAndNothingMore) {
  EXPECT_EQ(parseSignedAmount(" \u22121.234,5 ", ',').value(), -1234.5);
  EXPECT_EQ(parseSignedAmount("+3").value(), 3);
  EXPECT_FALSE(std::signbit(parseSignedAmount("-0.00").value()));
  for (const auto* text : {"-", "+-3", "- -3", "3-", "(3)"}) EXPECT_FALSE(parseSignedAmount(text)) << text;
}

RC_GTEST_PROP(ParseAmount, readsEveryCentBackHoweverItIsGrouped, ()) {
  const auto cents = *rc::gen::inRange<std::int64_t>(0, 1'000'000'000'000);
  const bool comma = *rc::gen::arbitrary<bool>();
  const auto group =
      *rc::gen::element<std::string>("", comma ? "." : ",", "'", "\u2019", " ", "\u00A0", "\u202F");
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
  for (const auto& [column, answer, why] : {
           Case{{"12", "", "abc"}, ".", "nothing to decide"},
           Case{{"12,50"}, ",", "two digits after it"},
           Case{{"1,234", "-5,25"}, ",", "another cell tells, signed"},
           Case{{"1.234.567"}, ",", "a mark twice groups"},
           Case{{"1 234,567"}, ",", "spaces group already"},
           Case{{"0,125"}, ",", "no group starts with a zero"},
           Case{{"1234.567"}, ".", "four digits before it"},
           Case{{"1,234", "7"}, "'1,234' in line 1", "only ambiguous ones"},
           Case{{"12.50", "7", "12,50"}, "'12,50' in line 3", "they contradict each other"},
       }) {
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
