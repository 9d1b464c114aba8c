#include "ui/cli/json_out.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <boost/json.hpp>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace moniva {
namespace {

namespace json = boost::json;

TEST(JsonOut, printsNumbersPlainly) {
  const std::pair<double, const char*> cases[] = {
      {0.1 + 0.2, "0.30000000000000004"},
      {100000, "100000"},
      {1e21, "1e+21"},
      {-0.0, "0"},
      {std::nan(""), "null"},
  };
  for (const auto& [number, text] : cases) EXPECT_EQ(jsonNumber(number), text);
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
  EXPECT_EQ(jsonText(json::object{{"k\xc3", "a\xff\x1b"}}, JsonLayout::compact),
            "{\"k\uFFFD\":\"a\uFFFD\\u001b\"}")
      << "no text, yet UTF-8";
  EXPECT_EQ(json::parse(jsonText(value, JsonLayout::pretty)), value);
}

}  // namespace
}  // namespace moniva
