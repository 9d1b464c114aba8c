#include "currency/rate_table.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <boost/json.hpp>
#include <cmath>

namespace moniva {
namespace {

std::string nested(std::size_t depth) {
  return std::string(depth, '[') + std::string(depth, ']');
}

std::string shown(const Result<RateTable>& table) {
  if (!table) return table.error().why;
  std::string text;
  for (const auto& [code, rate] : *table) text += fmt::format("{} {} ", code, rate);
  return text;
}

TEST(RateReply, isTakenAsAWholeOrNotAtAll) {
  const struct {
    std::string body;
    const char* says;  ///< the table, or a part of the refusal
    const char* why;
  } cases[] = {
      {R"({"rates":{"USD":1,"EUR":0.92}})", "EUR 0.92 USD 1 ", "the plain reply"},
      {R"({"base":"EUR","date":[],"rates":{"JPY":151}})", "JPY 151 USD 1 ", "all else is not read"},
      {"\xEF\xBB\xBF {\"rates\":{\"EUR\":0.92}}\r\n", "EUR 0.92 USD 1 ", "a byte order mark"},
      {R"({"rates":{"EUR":2,"EUR":0.92}})", "EUR 0.92 USD 1 ", "twice: the last counts"},
      {R"({"rates":{"EUR":0.92,"eur":-1,"EURO":"x","":null}})", "EUR 0.92 USD 1 ", "no codes"},
      {" \n", "nothing in it", "nothing"},
      {"<html>", "no JSON", "a page of a hotel's network"},
      {R"({"rates":{"EUR":0.92})", "no JSON", "cut short"},
      {R"({"rates":{"EUR":0.92}} {})", "no JSON", "more than one"},
      {"{\"rates\":{\"EUR\":0.92,\"\xFF\":1}}", "no JSON", "a fault in UTF-8"},
      {nested(100'000), "no JSON", "deep enough to overrun a stack"},
      {R"([{"rates":{"EUR":0.92}}])", "no table", "a list around it"},
      {R"({"Rates":{"EUR":0.92}})", "no table", "another name"},
      {R"({"rates":[0.92]})", "no table", "rates without codes"},
      {R"({"rates":{}})", "no rate", "an empty table"},
      {R"({"rates":{"USD":1}})", "no rate", "the dollar alone"},
      {R"({"rates":{"USD":1.1,"EUR":1}})", "not those of the US dollar", "another base"},
      {R"({"rates":{"EUR":0.92,"GBP":0}})", "rate of GBP is 0", "zero"},
      {R"({"rates":{"EUR":0.92,"GBP":-0.8}})", "rate of GBP is -0.8", "negative"},
      {R"({"rates":{"EUR":0.92,"GBP":"0.8"}})", "rate of GBP is \"0.8\"", "a number as text"},
      {R"({"rates":{"EUR":0.92,"GBP":{"mid":1}}})", "rate of GBP is {\"mid\":1}", "nested"},
      {R"({"rates":{"EUR":0.92,"GBP":null}})", "rate of GBP is null", "unknown to them"},
      {R"({"rates":{"EUR":0.92,"GBP":1e40}})", "rate of GBP is 1e+40", "too large in single precision"},
      {R"({"rates":{"EUR":0.92,"GBP":1e-50}})", "rate of GBP is 1e-50", "too small in single precision"},
      {R"({"rates":{"EUR":0.92,"GBP":1e999}})", "rate of GBP is inf", "too large for any number"},
  };
  for (const auto& c : cases) {
    const auto table = readRateReply(c.body);
    EXPECT_NE(shown(table).find(c.says), std::string::npos) << c.why << ": " << shown(table);
    EXPECT_EQ(table.has_value(), std::string_view(c.says).ends_with(' ')) << c.why;
  }
}

TEST(RateReply, pairIsReadOnWhateverBase) {
  const auto body = R"({"rates":{"EUR":1,"USD":1.08,"JPY":"many"}})";
  EXPECT_FLOAT_EQ(readRateOf(body, "USD").value(), 1.08F);
  EXPECT_FALSE(readRateOf(body, "JPY"));
  EXPECT_FALSE(readRateOf(body, "CHF"));
}

/// Whatever becomes of a good reply on its way, no rate comes of it that cannot be reckoned with.
RC_GTEST_PROP(RateReply, survivesAnyDamage, (const std::vector<std::pair<std::uint16_t, char>>& damage)) {
  std::string body = R"({"base":"USD","rates":{"USD":1,"EUR":0.92,"JPY":151.3,"KWD":0.3071,"IDR":15700}})";
  for (const auto& [at, letter] : damage) {
    const std::size_t place = at % body.size();
    if (at % 3 == 0) {
      body[place] = letter;
    } else if (at % 3 == 1) {
      body.insert(place, 1, "0123456789eE+-.,:\"{}[]\\u"[static_cast<unsigned char>(letter) % 24]);
    } else if (body.size() > 1) {
      body.erase(place, 1);
    }
  }
  const auto table = readRateReply(body);
  if (!table) return RC_ASSERT(!table.error().why.empty());
  for (const auto& [code, rate] : *table) RC_ASSERT(std::isfinite(rate) && rate > 0 && code.size() == 3);
  RC_ASSERT(table->at("USD") == 1.0F);
  RC_ASSERT(rateTableOf(jsonOf(*table)).value() == *table);
}

TEST(RateTable, keepsFourHundredCodesAndTheirShortestDecimals) {
  RateTable table{{"USD", 1.0F}};
  for (int i = 0; i < 400; ++i)
    table.emplace(fmt::format("A{:c}{:c}", 'A' + i / 26, 'A' + i % 26), 0.01F * static_cast<float>(i + 1));
  const auto text = fmt::format(R"({{"rates":{}}})", boost::json::serialize(jsonOf(table)));
  EXPECT_EQ(readRateReply(text).value(), table);
  EXPECT_EQ(decimalOf(0.92F), 0.92);
  EXPECT_EQ(decimalOf(151.3F), 151.3);
}

}  // namespace
}  // namespace moniva
