#include "currency/amount_format.h"

#include <cmath>
#include <utility>

#include "calendar/locale_name.h"
#include "currency/currency_codes.h"

namespace moniva {
namespace {

using icu::number::Notation;
using icu::number::NumberFormatter;
using icu::number::Precision;

}  // namespace

Result<AmountFormat> AmountFormat::make(std::string_view localeName) {
  return localeNamed(localeName).map([](icu::Locale locale) { return AmountFormat(std::move(locale)); });
}

AmountFormat::AmountFormat(icu::Locale locale) : locale_(std::move(locale)) {}

std::string AmountFormat::format(double amount, std::string_view currencyCode) const {
  return print(amount, currencyCode, Form::symbol);
}

std::string AmountFormat::formatSigned(double amount, std::string_view currencyCode) const {
  return print(amount, currencyCode, Form::signedSymbol);
}

std::string AmountFormat::formatNumber(double number, int decimals) const {
  return printNumber(number, Count::decimals, decimals);
}

std::string AmountFormat::formatSignificant(double number, int digits) const {
  return printNumber(number, Count::significantDigits, digits);
}

std::string AmountFormat::formatPercent(double percent, bool isSigned) const {
  UErrorCode status = U_ZERO_ERROR;
  std::string text;
  icu::number::NumberFormatter::withLocale(locale_)
      .roundingMode(UNUM_ROUND_HALFUP)
      .precision(icu::number::Precision::fixedFraction(1))
      .sign(isSigned ? UNUM_SIGN_EXCEPT_ZERO : UNUM_SIGN_NEGATIVE)
      .formatDouble(percent, status)
      .toString(status)
      .toUTF8String(text);
  return text + " %";
}

std::string AmountFormat::formatWithCode(double amount, std::string_view currencyCode) const {
  return print(amount, currencyCode, Form::code);
}

std::string AmountFormat::formatPlain(double amount, std::string_view currencyCode) const {
  return print(amount, currencyCode, Form::plain);
}

std::string AmountFormat::print(double amount, std::string_view currencyCode, Form form) const {
  if (!std::isfinite(amount)) {
    form = Form::plain;
    currencyCode = "";
  }
  auto& known = formatters_[static_cast<std::size_t>(form)];
  auto found = known.find(currencyCode);
  if (found == known.end()) found = known.emplace(currencyCode, build(currencyCode, form)).first;

  const Formatter& formatter = found->second;
  UErrorCode status = U_ZERO_ERROR;
  std::string text;
  formatter.number.formatDouble(amount, status).toString(status).toUTF8String(text);
  if (U_FAILURE(status)) return fmt::format("{}{}", amount, formatter.suffix);
  return text + formatter.suffix;
}

std::string AmountFormat::printNumber(double number, Count count, int digits) const {
  auto found = numbers_.find({count, digits});
  if (found == numbers_.end()) {
    const auto base =
        NumberFormatter::withLocale(locale_).roundingMode(UNUM_ROUND_HALFUP).sign(UNUM_SIGN_NEGATIVE);
    found = numbers_
                .emplace(std::pair(count, digits),
                         count == Count::decimals ? base.precision(Precision::fixedFraction(digits))
                                                  : base.precision(Precision::maxSignificantDigits(digits)))
                .first;
  }
  UErrorCode status = U_ZERO_ERROR;
  std::string text;
  found->second.formatDouble(number, status).toString(status).toUTF8String(text);
  return U_FAILURE(status) ? fmt::format("{}", number) : text;
}

AmountFormat::Formatter AmountFormat::build(std::string_view currencyCode, Form form) const {
  const auto sign = form == Form::signedSymbol ? UNUM_SIGN_EXCEPT_ZERO : UNUM_SIGN_NEGATIVE;
  const auto base = NumberFormatter::withLocale(locale_).roundingMode(UNUM_ROUND_HALFUP).sign(sign);
  const auto iso = isoText(currencyCode);
  if (form == Form::plain || !iso) {
    const bool placesCode = form != Form::plain && !currencyCode.empty();
    return {base.precision(Precision::fixedFraction(currencyDigits(currencyCode))),
            placesCode ? fmt::format("\u00A0{}", currencyCode) : std::string()};
  }
  UErrorCode status = U_ZERO_ERROR;
  const icu::CurrencyUnit unit(iso->data(), status);
  const auto width = form == Form::code ? UNUM_UNIT_WIDTH_ISO_CODE : UNUM_UNIT_WIDTH_SHORT;
  return {base.unit(unit).unitWidth(width), ""};
}

}  // namespace moniva
