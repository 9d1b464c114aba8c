#include "ui/cli/json_out.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <boost/json.hpp>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace moniva {
namespace {

namespace json = boost::json;

TEST(JsonOut, printsNumbersPlainly) {
  const struct {
    double number;
    const char* text;
    const char* why;
  } cases[] = {
      {0.1 + 0.2, "0.30000000000000004", "nothing is rounded away"},
      {100000, "100000", "not 1e+05, though that is shorter"},
      {1e21, "1e+21", "too long to read"},
      {1e-7, "1e-07", "too small to read"},
      {-0.0, "0", "no sign on zero"},
      {std::numeric_limits<double>::quiet_NaN(), "null", "JSON has no NaN"},
  };
  for (const auto& c : cases) EXPECT_EQ(jsonNumber(c.number), c.text) << c.why;
}

RC_GTEST_PROP(JsonOut, numbersReadBackTheSame, (std::uint64_t bits)) {
  double number = 0;
  static_assert(sizeof number == sizeof bits);
  std::memcpy(&number, &bits, sizeof bits);
  RC_PRE(std::isfinite(number));
  RC_ASSERT(std::strtod(jsonNumber(number).c_str(), nullptr) == number);
}

TEST(JsonOut, laysOut) {
  const json::value value = {{"title", "食費 \"x\"\n"},
                             {"amount", 12.5},
                             {"list", {1, nullptr, true, json::object{}}},
                             {"empty", json::array{}},
                             {"inner", {{"b", 1}, {"a", 18446744073709551615U}}}};
  EXPECT_EQ(jsonText(value, JsonLayout::compact),
            R"({"title":"食費 \"x\"\n","amount":12.5,"list":[1,null,true,{}],"empty":[],)"
            R"("inner":{"b":1,"a":18446744073709551615}})");
  EXPECT_EQ(jsonText(value.at("list"), JsonLayout::pretty), "[\n  1,\n  null,\n  true,\n  {}\n]");
  EXPECT_EQ(jsonText(value.at("inner"), JsonLayout::pretty),
            "{\n  \"b\": 1,\n  \"a\": 18446744073709551615\n}");
  EXPECT_EQ(json::parse(jsonText(value, JsonLayout::pretty)), value);
}

TEST(JsonOut, keepsToUtf8) {
  EXPECT_EQ(jsonText(json::value("a\xff\x1b"), JsonLayout::compact), "\"a\uFFFD\\u001b\"");
  EXPECT_EQ(jsonText(json::object{{"k\xc3", 1}}, JsonLayout::compact), "{\"k\uFFFD\":1}");
}

}  // namespace
}  // namespace moniva
