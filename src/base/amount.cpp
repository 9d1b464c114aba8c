#include "base/amount.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "base/text.h"

namespace moniva {
namespace {

constexpr std::string_view minusSign = "\u2212";

using Fault = AmountFault;
using Reading = AmountReading;

constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

/// '.' and ',' in the two roles.
AmountForm formWith(char decimalMark) {
  const bool comma = decimalMark == ',';
  return {.decimalMark = comma ? "," : ".", .groupMark = comma ? "." : ","};
}

/// The separator of thousands that `text` starts with, or nothing.
std::string_view groupMarkAt(std::string_view text, const AmountForm& form) {
  constexpr std::array<std::string_view, 6> marks = {"'", " ", "\u2019", "\u00A0", "\u202F", "\u2009"};
  if (form.groupSize == 0) return {};
  if (!form.groupMark.empty() && text.starts_with(form.groupMark))
    return text.substr(0, form.groupMark.size());
  for (const auto mark : marks) {
    if (text.starts_with(mark)) return text.substr(0, mark.size());
  }
  return {};
}

/// Moves the grouped whole part from the front of `text` to `digits`.
Fault takeWholePart(std::string_view& text, const AmountForm& form, std::string& digits) {
  const auto lastSize = static_cast<std::size_t>(form.groupSize);
  const auto furtherSize = static_cast<std::size_t>(form.furtherGroupSize);
  std::string_view groupMark;
  std::size_t inGroup = 0;
  while (!text.empty() && !text.starts_with(form.decimalMark)) {
    if (isDigit(text.front())) {
      digits += text.front();
      ++inGroup;
      text.remove_prefix(1);
      continue;
    }
    const auto mark = groupMarkAt(text, form);
    if (mark.empty()) return Fault::notDigits;
    const bool first = groupMark.empty();
    const bool wellFormed = first ? inGroup >= 1 && inGroup <= furtherSize && digits.front() != '0'
                                  : inGroup == furtherSize && mark == groupMark;
    if (!wellFormed) return Fault::badGroups;
    groupMark = mark;
    inGroup = 0;
    text.remove_prefix(mark.size());
  }
  return groupMark.empty() || inGroup == lastSize ? Fault::none : Fault::badGroups;
}

/// How many digits a double has to keep: zeros that only place the number do not count.
std::size_t significantDigits(const std::string& number) {
  auto last = number.size();
  if (number.find('.') != std::string::npos) {
    last = number.find_last_not_of('0') + 1;
  }
  const auto first = std::min(number.find_first_of("123456789"), last);
  const auto counted = std::string_view(number).substr(first, last - first);
  return counted.size() - static_cast<std::size_t>(std::count(counted.begin(), counted.end(), '.'));
}

Reading read(std::string_view text, const AmountForm& form) {
  text = trimBlanks(text);
  if (text.empty()) return {0, Fault::empty};
  std::string number;
  if (const auto fault = takeWholePart(text, form, number); fault != Fault::none) return {0, fault};
  if (number.empty()) number = "0";
  Reading reading;
  if (!text.empty()) {
    text.remove_prefix(form.decimalMark.size());
    reading.decimals = static_cast<int>(std::min<std::size_t>(text.size(), 1'000'000));
    if (text.empty() || !std::all_of(text.begin(), text.end(), isDigit)) return {0, Fault::notDigits};
    number += '.';
    number += text;
  }
  if (significantDigits(number) > kMostAmountDigits) return {0, Fault::tooManyDigits};
  const auto end = number.data() + number.size();
  if (std::from_chars(number.data(), end, reading.value).ec != std::errc{}) {
    return {0, Fault::tooManyDigits};
  }
  return reading;
}

/// Takes a sign off the front: -1, +1, or 0 where there is none.
int takeSign(std::string_view& text) {
  text = trimBlanks(text);
  if (text.starts_with('-') || text.starts_with(minusSign)) {
    text.remove_prefix(text.front() == '-' ? 1 : minusSign.size());
    return -1;
  }
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    return 1;
  }
  return 0;
}

Reading readSigned(std::string_view text, char decimalMark) {
  return readAmount(text, formWith(decimalMark), true);
}

Result<double> numberOf(const Reading& reading, std::string_view text, char decimalMark) {
  if (reading.fault == Fault::none) return reading.value;
  return refusalOfAmount(reading.fault, text, {&decimalMark, 1});
}

}  // namespace

AmountReading readAmount(std::string_view text, const AmountForm& form, bool withSign) {
  const int sign = withSign ? takeSign(text) : 0;
  auto reading = read(text, form);
  // Only -0 would come of negating a zero, and "-0" on a statement is printed like a typing error.
  if (sign < 0 && reading.value != 0) reading.value = -reading.value;
  return reading;
}

Result<double> parseAmount(std::string_view text, char decimalMark) {
  auto unsignedText = text;
  if (takeSign(unsignedText) != 0 && read(unsignedText, formWith(decimalMark)).fault == Fault::none) {
    return refusalOfSign(text);
  }
  return numberOf(read(text, formWith(decimalMark)), text, decimalMark);
}

Result<double> parseSignedAmount(std::string_view text, char decimalMark) {
  return numberOf(readSigned(text, decimalMark), text, decimalMark);
}

tl::unexpected<Refusal> refusalOfAmount(AmountFault fault, std::string_view text,
                                        std::string_view decimalMark) {
  const auto shown = excerpt(trimBlanks(text));
  switch (fault) {
    case Fault::empty:
      return refuse("the amount is empty");
    case Fault::badGroups:
      return refuse(
          "'{}' is not an amount: '{}' is the decimal mark here, and its thousands are not grouped as they "
          "should be",
          shown, decimalMark);
    case Fault::tooManyDigits:
      return refuse("'{}' has more than {} digits, too many to be kept exactly", shown, kMostAmountDigits);
    case Fault::none:
    case Fault::notDigits:
      break;
  }
  return refuse("'{}' is not an amount: write digits, with '{}' before a fraction", shown, decimalMark);
}

tl::unexpected<Refusal> refusalOfSign(std::string_view text) {
  return refuse("'{}' has a sign: an amount goes without one, its direction comes from the kind of record",
                excerpt(trimBlanks(text)));
}

void DecimalMarkSurvey::add(std::string_view text, std::size_t line) {
  const auto withPoint = readSigned(text, '.');
  const auto withComma = readSigned(text, ',');
  const bool point = withPoint.fault == Fault::none;
  const bool comma = withComma.fault == Fault::none;
  if (!point && !comma) return;
  if (point && comma && withPoint.value == withComma.value) return;
  auto& witness = point && comma ? unclear_ : (point ? point_ : comma_);
  if (!witness) witness = Witness{std::string(trimBlanks(text)), line};
}

Result<char> DecimalMarkSurvey::decide() const {
  if (point_ && comma_) {
    return refuse("amounts are written in two ways: '{}' in line {} and '{}' in line {}",
                  excerpt(point_->text), point_->line, excerpt(comma_->text), comma_->line);
  }
  if (point_) return '.';
  if (comma_) return ',';
  if (!unclear_) return '.';
  return refuse("'{}' in line {} may be {} or {}, and no other amount tells: say which decimal mark is used",
                excerpt(unclear_->text), unclear_->line, readSigned(unclear_->text, '.').value,
                readSigned(unclear_->text, ',').value);
}

}  // namespace moniva
