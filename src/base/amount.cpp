#include "base/amount.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "base/text.h"

namespace moniva {
namespace {

constexpr std::size_t mostDigits = 15;
constexpr std::string_view minusSign = "\u2212";

enum class Fault { none, empty, notDigits, badGroups, tooManyDigits };

/// A reading without a sentence: surveys read each text twice and expect half of the readings to fail.
struct Reading {
  double value = 0;
  Fault fault = Fault::none;
};

constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

/// The separator of thousands that `text` starts with, or nothing.
std::string_view groupMarkAt(std::string_view text, char decimalMark) {
  constexpr std::array<std::string_view, 6> marks = {"'", " ", "\u2019", "\u00A0", "\u202F", "\u2009"};
  if (text.front() == (decimalMark == ',' ? '.' : ',')) return text.substr(0, 1);
  for (const auto mark : marks) {
    if (text.starts_with(mark)) return text.substr(0, mark.size());
  }
  return {};
}

/// Moves the grouped whole part from the front of `text` to `digits`.
Fault takeWholePart(std::string_view& text, char decimalMark, std::string& digits) {
  std::string_view groupMark;
  std::size_t inGroup = 0;
  while (!text.empty() && text.front() != decimalMark) {
    if (isDigit(text.front())) {
      digits += text.front();
      ++inGroup;
      text.remove_prefix(1);
      continue;
    }
    const auto mark = groupMarkAt(text, decimalMark);
    if (mark.empty()) return Fault::notDigits;
    const bool first = groupMark.empty();
    const bool wellFormed =
        first ? inGroup >= 1 && inGroup <= 3 && digits.front() != '0' : inGroup == 3 && mark == groupMark;
    if (!wellFormed) return Fault::badGroups;
    groupMark = mark;
    inGroup = 0;
    text.remove_prefix(mark.size());
  }
  return groupMark.empty() || inGroup == 3 ? Fault::none : Fault::badGroups;
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

Reading read(std::string_view text, char decimalMark) {
  text = trimBlanks(text);
  if (text.empty()) return {0, Fault::empty};
  std::string number;
  if (const auto fault = takeWholePart(text, decimalMark, number); fault != Fault::none) return {0, fault};
  if (number.empty()) number = "0";
  if (!text.empty()) {
    text.remove_prefix(1);
    if (text.empty() || !std::all_of(text.begin(), text.end(), isDigit)) return {0, Fault::notDigits};
    number += '.';
    number += text;
  }
  if (significantDigits(number) > mostDigits) return {0, Fault::tooManyDigits};
  Reading reading;
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
  const int sign = takeSign(text);
  auto reading = read(text, decimalMark);
  // Only -0 would come of negating a zero, and "-0" on a statement is printed like a typing error.
  if (sign < 0 && reading.value != 0) reading.value = -reading.value;
  return reading;
}

Result<double> sentenceFor(const Reading& reading, std::string_view text, char decimalMark) {
  const auto shown = excerpt(trimBlanks(text));
  switch (reading.fault) {
    case Fault::none:
      return reading.value;
    case Fault::empty:
      return refuse("the amount is empty");
    case Fault::notDigits:
      return refuse("'{}' is not an amount: write digits, with '{}' before a fraction", shown, decimalMark);
    case Fault::badGroups:
      return refuse(
          "'{}' is not an amount: '{}' is the decimal mark here, and thousands go in groups of three", shown,
          decimalMark);
    case Fault::tooManyDigits:
      return refuse("'{}' has more than {} digits, too many to be kept exactly", shown, mostDigits);
  }
  return reading.value;
}

}  // namespace

Result<double> parseAmount(std::string_view text, char decimalMark) {
  auto unsignedText = text;
  if (takeSign(unsignedText) != 0 && read(unsignedText, decimalMark).fault == Fault::none) {
    return refuse("'{}' has a sign: an amount goes without one, its direction comes from the kind of record",
                  excerpt(trimBlanks(text)));
  }
  return sentenceFor(read(text, decimalMark), text, decimalMark);
}

Result<double> parseSignedAmount(std::string_view text, char decimalMark) {
  return sentenceFor(readSigned(text, decimalMark), text, decimalMark);
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
