#include "currency/amount_reader.h"

#include <unicode/dcfmtsym.h>
#include <unicode/decimfmt.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <utility>

#include "base/text.h"
#include "currency/amount_format.h"

namespace moniva {
namespace {

using Symbols = icu::DecimalFormatSymbols;

/// The text with the digits of any one script as ASCII and without marks of direction; nothing for digits of
/// several scripts.
std::optional<std::string> withPlainDigits(std::string_view text) {
  std::string plain;
  std::optional<UChar32> zero;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<std::int32_t>(text.size());
  for (std::int32_t at = 0; at < length;) {
    const auto begin = at;
    UChar32 c = 0;
    U8_NEXT(bytes, at, length, c);
    const int digit = c < 0 ? -1 : u_charDigitValue(c);
    if (digit >= 0) {
      if (zero.value_or(c - digit) != c - digit) return std::nullopt;
      zero = c - digit;
      plain += static_cast<char>('0' + digit);
    } else if (c < 0 || !isDirectionMark(static_cast<char32_t>(c))) {
      plain += text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(at - begin));
    }
  }
  return plain;
}

struct Operator {
  std::string_view text;
  AmountToken::Kind kind;
};

constexpr std::array<Operator, 7> operators = {{{"+", AmountToken::Kind::add},
                                                {"-", AmountToken::Kind::subtract},
                                                {"\u2212", AmountToken::Kind::subtract},
                                                {"*", AmountToken::Kind::multiply},
                                                {"\u00D7", AmountToken::Kind::multiply},
                                                {"/", AmountToken::Kind::divide},
                                                {"\u00F7", AmountToken::Kind::divide}}};

struct Found {
  std::size_t at = std::string_view::npos;
  Operator sign{};
};

Found nextOperator(std::string_view text, std::size_t from) {
  for (std::size_t at = from; at < text.size(); ++at) {
    for (const auto& sign : operators) {
      if (text.substr(at).starts_with(sign.text)) return {at, sign};
    }
  }
  return {};
}

/// Where the sign before the first number ends, and the blanks and marks around it; 0 where there is none.
std::size_t endOfSign(std::string_view text) {
  const auto first = nextOperator(text, 0);
  if (first.at == std::string_view::npos || first.sign.kind == AmountToken::Kind::multiply ||
      first.sign.kind == AmountToken::Kind::divide) {
    return 0;
  }
  const auto before = withPlainDigits(text.substr(0, first.at));
  return before && trimBlanks(*before).empty() ? first.at + first.sign.text.size() : 0;
}

/// The place of a byte as a person counts.
std::size_t placeOf(std::string_view text, std::size_t at) {
  return characterCount(text.substr(0, at)) + 1;
}

}  // namespace

bool isDirectionMark(char32_t c) {
  return c == 0x61C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) ||
         (c >= 0x2066 && c <= 0x2069);
}

AmountReader::AmountReader(std::string_view localeName) {
  icu::Locale locale = localeNamed(localeName);
  if (locale.isBogus()) locale = icu::Locale::getRoot();
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::NumberFormat> format(icu::NumberFormat::createInstance(locale, status));
  const auto* decimal = dynamic_cast<const icu::DecimalFormat*>(format.get());
  const Symbols* symbols = decimal != nullptr ? decimal->getDecimalFormatSymbols() : nullptr;
  if (symbols != nullptr) {
    const auto symbol = [&](Symbols::ENumberFormatSymbol which) {
      std::string text;
      symbols->getConstSymbol(which).toUTF8String(text);
      return text;
    };
    // "C" groups nothing of its own; people who use it do.
    const int size = decimal->getGroupingSize() > 0 ? decimal->getGroupingSize() : 3;
    const int further = decimal->getSecondaryGroupingSize() > 0 ? decimal->getSecondaryGroupingSize() : size;
    addForm(symbol(Symbols::kDecimalSeparatorSymbol), symbol(Symbols::kGroupingSeparatorSymbol), size,
            further);
    // Some countries write money in another way than numbers.
    addForm(symbol(Symbols::kMonetarySeparatorSymbol), symbol(Symbols::kMonetaryGroupingSeparatorSymbol),
            size, further);
  }
  forms_.push_back({".", "", 0, 0});
  decimalMark_ = forms_.front().decimalMark;
}

void AmountReader::addForm(std::string decimalMark, std::string groupMark, int groupSize,
                           int furtherGroupSize) {
  // Cape Verde has its currency's sign before the cents.
  if (decimalMark == "$") return;
  // Where a space goes between thousands a point is often written.
  const bool isSpace = trimBlanks(groupMark).empty() || groupMark == "\u2019";
  if (isSpace) groupMark = decimalMark == "," ? "." : "";
  const auto isKnown = [&](const Form& form) {
    return form.decimalMark == decimalMark && form.groupMark == groupMark;
  };
  if (std::ranges::any_of(forms_, isKnown)) return;
  forms_.push_back({decimalMark, groupMark, groupSize, furtherGroupSize});
  if (furtherGroupSize != groupSize) forms_.push_back({decimalMark, groupMark, groupSize, groupSize});
}

AmountReading AmountReader::readAs(const Form& form, std::string_view digits, bool withSign) const {
  return readAmount(digits,
                    {.decimalMark = form.decimalMark,
                     .groupMark = form.groupMark,
                     .groupSize = form.groupSize,
                     .furtherGroupSize = form.furtherGroupSize},
                    withSign);
}

std::string AmountReader::written(const AmountReading& reading) const {
  std::string text = fmt::format("{:.{}f}", reading.value, std::min(reading.decimals, kMostAmountDigits));
  if (const auto point = text.find('.'); point != std::string::npos) text.replace(point, 1, decimalMark_);
  return text;
}

tl::unexpected<Refusal> AmountReader::refusalOf(std::string_view text, std::string_view digits,
                                                bool withSign) const {
  const auto shown = excerpt(trimBlanks(text));
  const auto readsAs = [&](const Form& form, bool sign) {
    return readAs(form, digits, sign).fault == AmountFault::none;
  };
  if (!withSign && std::ranges::any_of(forms_, [&](const Form& form) { return readsAs(form, true); })) {
    return refuse("'{}' has a sign: an amount goes without one, its direction comes from the kind of record",
                  shown);
  }
  for (const auto& form : forms_) {
    const auto fault = readAs(form, digits, withSign).fault;
    if (fault == AmountFault::empty) return refuse("the amount is empty");
    if (fault == AmountFault::tooManyDigits) {
      return refuse("'{}' has more than {} digits, too many to be kept exactly", shown, kMostAmountDigits);
    }
  }
  for (const bool comma : {true, false}) {
    const Form elsewhere{comma ? "," : ".", comma ? "." : ",", 3, 3};
    if (!readsAs(elsewhere, withSign)) continue;
    return refuse("'{}' is not an amount here: '{}' is the decimal mark, so write {}", shown, decimalMark_,
                  written(readAs(elsewhere, digits, withSign)));
  }
  if (readAs(forms_.front(), digits, withSign).fault == AmountFault::badGroups) {
    return refuse(
        "'{}' is not an amount: '{}' is the decimal mark here, and its thousands are not grouped as they "
        "should be",
        shown, decimalMark_);
  }
  return refuse("'{}' is not an amount: write digits, with '{}' before a fraction", shown, decimalMark_);
}

Result<AmountToken> AmountReader::number(std::string_view text, bool withSign) const {
  const auto digits = withPlainDigits(text);
  if (!digits) return refuse("'{}' has digits of several scripts", excerpt(trimBlanks(text)));
  std::optional<AmountReading> found;
  for (const auto& form : forms_) {
    const auto reading = readAs(form, *digits, withSign);
    if (reading.fault != AmountFault::none) continue;
    if (!found) found = reading;
    if (reading.value == found->value) continue;
    return refuse("'{}' may be two amounts: write {} or {}", excerpt(trimBlanks(text)), written(*found),
                  written(reading));
  }
  if (!found) return refusalOf(text, *digits, withSign);
  return AmountToken{
      .number = found->value, .text = std::string(trimBlanks(text)), .decimals = found->decimals};
}

Result<double> AmountReader::read(std::string_view text) const {
  return number(text, false).map([](const AmountToken& token) { return token.number; });
}

Result<double> AmountReader::readSigned(std::string_view text) const {
  return number(text, true).map([](const AmountToken& token) { return token.number; });
}

bool AmountReader::isExpression(std::string_view text) const {
  return nextOperator(text, endOfSign(text)).at != std::string_view::npos;
}

Result<std::vector<AmountToken>> AmountReader::tokens(std::string_view text) const {
  std::vector<AmountToken> tokens;
  const auto shown = [&] { return excerpt(trimBlanks(text)); };
  const auto sign = endOfSign(text);
  for (std::size_t from = 0;;) {
    const auto next = nextOperator(text, from == 0 ? sign : from);
    const auto piece = text.substr(from, next.at == std::string_view::npos ? next.at : next.at - from);
    const bool isBlank = trimBlanks(from == 0 ? text.substr(sign, piece.size() - sign) : piece).empty();
    if (isBlank) {
      if (next.at == std::string_view::npos && tokens.empty()) return refuse("the amount is empty");
      if (next.at == std::string_view::npos) {
        return refuse("'{}' ends with '{}', where an amount should follow", shown(), tokens.back().text);
      }
      return refuse("'{}' has '{}' at character {}, where an amount should be", shown(), next.sign.text,
                    placeOf(text, next.at));
    }
    auto token = number(piece, tokens.empty());
    if (!token && piece.size() == text.size()) return tl::make_unexpected(token.error());
    if (!token) {
      const auto begin = from + static_cast<std::size_t>(trimBlanks(piece).data() - piece.data());
      return refuse("{} (at character {} of '{}')", token.error(), placeOf(text, begin), shown());
    }
    tokens.push_back(std::move(*token));
    if (next.at == std::string_view::npos) return tokens;
    tokens.push_back({.kind = next.sign.kind, .text = std::string(next.sign.text)});
    from = next.at + next.sign.text.size();
  }
}

}  // namespace moniva
