#pragma once

#include <map>
#include <string>
#include <string_view>

#include <boost/json/fwd.hpp>

#include "base/result.h"

namespace moniva {

/// The currency that every rate is based on.
constexpr std::string_view kBaseCurrency = "USD";

/// What one US dollar is in each currency, by ISO 4217 code. Every rate is finite and above zero; the US
/// dollar itself is there with 1.
using RateTable = std::map<std::string, float, std::less<>>;

/// Reads the reply of an exchange-rate service: a JSON object whose member "rates" is an object from code to
/// number. Nothing else of it is read. Names that are no three capital letters are passed over; of a code
/// that is there twice the last counts. Refused as a whole, with the reason: what is no such object, a rate
/// that is no number, is zero, negative or not finite in single precision, a US dollar that is not 1, and a
/// table without any other rate.
Result<RateTable> readRateReply(std::string_view body);

/// One rate of a reply in whatever currency it is based on; of the others nothing is read. Refused as above.
Result<float> readRateOf(std::string_view body, std::string_view code);

/// The currency a text of that form says its rates are of; "" where it says none. What services answer is not
/// asked for it; a file that a person picks may be of any base.
std::string statedBase(std::string_view body);

/// The table as kept in the settings: an object from code to number, and back by the same rules.
boost::json::value jsonOf(const RateTable& table);
Result<RateTable> rateTableOf(const boost::json::value& kept);

/// The shortest decimal that is this rate in single precision, as a double: 0.92 for 0.92f. Amounts are
/// multiplied by that, so that they come to what the rate shown comes to.
double decimalOf(float rate);

}  // namespace moniva
