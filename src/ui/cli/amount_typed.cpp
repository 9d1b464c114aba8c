#include "ui/cli/amount_typed.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <cmath>

#include "base/decimal.h"
#include "base/text.h"
#include "currency/amount_expression.h"
#include "currency/currency_codes.h"
#include "currency/currency_manager.h"
#include "model/entry_checks.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/rates.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

/// What may be typed as an amount.
enum class Sign { aboveZero, zeroToo, any };

constexpr std::size_t kCodeLength = 3;

/// An amount and the code that stands beside it.
struct TextOfMoney {
  std::string number;
  std::string code;  ///< as typed; "" for none
};

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Amounts that were printed may have marks of direction around them.
std::string withoutDirectionMarks(std::string_view text) {
  std::string plain;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<std::int32_t>(text.size());
  for (std::int32_t at = 0; at < length;) {
    const auto begin = at;
    UChar32 c = 0;
    U8_NEXT(bytes, at, length, c);
    if (c < 0 || !isDirectionMark(static_cast<char32_t>(c)))
      plain += text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(at - begin));
  }
  return plain;
}

/// Takes a code off the end or the beginning. Letters that touch the number are one only when there are
/// three.
TextOfMoney textOfMoney(std::string_view typedText) {
  const auto plain = withoutDirectionMarks(typedText);
  const auto text = trimBlanks(plain);
  const auto isCode = [](std::string_view letters, std::string_view number) {
    const bool isApart = trimBlanks(number) != number;
    return !letters.empty() && !number.empty() && (isApart || isCurrencyCode(letters));
  };
  const auto money = [](std::string_view letters, std::string_view number) {
    return TextOfMoney{std::string(trimBlanks(number)), std::string(letters)};
  };
  const auto behind =
      static_cast<std::size_t>(std::find_if_not(text.rbegin(), text.rend(), isLetter).base() - text.begin());
  if (isCode(text.substr(behind), text.substr(0, behind)))
    return money(text.substr(behind), text.substr(0, behind));
  const auto before =
      static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isLetter) - text.begin());
  if (isCode(text.substr(0, before), text.substr(before)))
    return money(text.substr(0, before), text.substr(before));
  return money("", text);
}

/// The text typed as messages show it: a sum may be as long as it likes.
std::string shownSum(const std::string& text) {
  return printable(excerpt(text));
}

CommandError tooManyDecimals(const std::string& text, const std::string& currency, bool mayRound) {
  const int digits = currencyDigits(currency);
  return mayRound ? notUnderstood("{} is counted in {} decimals, and '{}' has more; --round rounds it",
                                  currency, digits, shownSum(text))
                  : notUnderstood("{} is counted in {} decimals, and '{}' has more", currency, digits,
                                  shownSum(text));
}

/// The number with the most decimals that count.
const AmountToken& finest(const std::vector<AmountToken>& tokens) {
  return *std::ranges::max_element(tokens, {}, decimalsThatCount);
}

/// The value of an expression on a keypad with so many decimals.
double calculated(const std::string& text, const std::vector<AmountToken>& tokens, int digits) {
  CalculateNumberPadView pad;
  pad.setDecimalDigits(digits);
  const double value = typed(pressed(pad, tokens));
  if (!std::isfinite(value)) throw notUnderstood("{} comes to no amount", shownSum(text));
  return value;
}

/// The value of a number or an expression, without a code.
double valueTyped(Session& session, const std::string& text, const std::string& currency, Sign sign,
                  const AmountOptions& options) {
  const AmountReader& reader = session.amountReader();
  const bool isExpression = reader.isExpression(text);
  const bool mayRound = sign != Sign::any;
  const int digits = currencyDigits(currency);
  double amount = 0;
  if (isExpression) {
    const auto tokens = typed(reader.tokens(text));
    const auto& number = finest(tokens);
    if (!options.round && decimalsThatCount(number) > digits)
      throw tooManyDecimals(number.text, currency, mayRound);
    // What is rounded in the end is not rounded on the way.
    amount = calculated(text, tokens, options.round ? CalculateNumberPadView::kMostDigits : digits);
  } else {
    amount = typed(sign == Sign::any ? reader.readSigned(text) : reader.read(text));
  }
  const double taken = rounded(amount, digits);
  const auto plain = [&] { return session.amounts().formatPlain(taken, currency); };
  if (sign == Sign::aboveZero && amount <= 0) {
    throw isExpression ? notUnderstood("an amount must be above zero; {} is {}", shownSum(text), plain())
                       : notUnderstood("an amount must be above zero; '{}' is not", shownSum(text));
  }
  if (sign == Sign::zeroToo && amount < 0) {
    throw notUnderstood("the amount must not be below zero; {} is {}", shownSum(text), plain());
  }
  const bool isExact = taken == amount;
  if (!isExact && !options.round) throw tooManyDecimals(text, currency, mayRound);
  if (taken <= 0 && amount > 0) throw notUnderstood("'{}' rounds to nothing", shownSum(text));
  if (isExpression) {
    session.say(session.text("{} is {}.", shownSum(text), plain()));
  } else if (!isExact) {
    session.say(session.text("{} is rounded to {}.", shownSum(text),
                             session.amounts().formatWithCode(taken, currency)));
  }
  return taken;
}

void requireSound(double amount) {
  if (auto checked = checkAmount(amount); !checked) throw CommandError(CommandError::kUsage, checked.error());
}

/// The number typed without the code of its currency; ends the command for the code of another.
std::string inCurrency(Session& session, const std::string& text, const std::string& currency) {
  auto money = textOfMoney(text);
  if (money.code.empty()) return std::move(money.number);
  const auto code = currencyCodeTyped(session, money.code);
  if (code == currency) return std::move(money.number);
  throw refused(
      "'{}' is in {}, and this amount is kept in {}; what it comes to: moniva rate convert {} {} {}",
      printable(text), code, currency, printable(money.number), code, currency);
}

/// A rate may be a calculation too ("1÷1.08"), from left to right; nothing of it is rounded.
double rateTyped(Session& session, const std::string& text) {
  using Kind = AmountToken::Kind;
  const auto tokens = typed(session.amountReader().tokens(text));
  double rate = tokens.front().number;
  for (std::size_t at = 2; at < tokens.size(); at += 2) {
    const double next = tokens[at].number;
    const Kind kind = tokens[at - 1].kind;
    rate = kind == Kind::add        ? rate + next
           : kind == Kind::subtract ? rate - next
           : kind == Kind::multiply ? rate * next
                                    : rate / next;
  }
  if (!std::isfinite(rate)) throw notUnderstood("{} comes to no rate", printable(text));
  if (rate <= 0) throw notUnderstood("a rate must be above zero; '{}' is not", printable(text));
  return rate;
}

/// The rate between the two figures of the record: the one known, where it makes one of the other, as it has
/// more digits than two rounded amounts have between them. Ends the command where they say too little for
/// the new figure.
double ownRate(Session& session, const EntryAmount& before, double figure, const std::string& currency) {
  constexpr double kUnitsEnough = 100;
  constexpr double kTimesNear = 10;
  const auto& code = before.foreignCurrency;
  const int digits = currencyDigits(currency);
  CurrencyManager& rates = session.rates(FirstFetch::whenAsked);
  if (rates.knowsRate(code, currency)) {
    const double known = decimalOf(rates.exchangeRateFromCurrency(code, currency));
    if (converted(before.foreignAmount, known, digits) == before.amount) return known;
  }
  const bool saysEnough = before.amount * std::pow(10, digits) >= kUnitsEnough;
  if (saysEnough || figure <= kTimesNear * before.foreignAmount) return before.amount / before.foreignAmount;
  const auto& amounts = session.amounts();
  throw refused("{} for {} is too little to tell a rate for {}; give one with --rate",
                amounts.formatWithCode(before.amount, currency),
                amounts.formatWithCode(before.foreignAmount, code), amounts.formatWithCode(figure, code));
}

}  // namespace

void addRoundOption(CLI::App& command, AmountOptions& options) {
  command.add_flag("--round", options.round, "Round an amount with more decimals than its currency has");
}

void addRateOption(CLI::App& command, AmountOptions& options) {
  command
      .add_option("--rate", options.rate,
                  "What one of the foreign currency is in the record's (else the rate known)")
      ->type_name("RATE")
      ->check(notEmpty());
}

double amountTyped(Session& session, const std::string& text, const std::string& currency,
                   const AmountOptions& options) {
  const double amount =
      valueTyped(session, inCurrency(session, text, currency), currency, Sign::aboveZero, options);
  requireSound(amount);
  return amount;
}

double amountOrNothingTyped(Session& session, const std::string& text, const std::string& currency,
                            const AmountOptions& options) {
  const double amount =
      valueTyped(session, inCurrency(session, text, currency), currency, Sign::zeroToo, options);
  if (amount != 0) requireSound(amount);
  return amount;
}

double signedAmountTyped(Session& session, const std::string& text, const std::string& currency) {
  const double amount = valueTyped(session, inCurrency(session, text, currency), currency, Sign::any, {});
  if (amount != 0) requireSound(std::abs(amount));
  return amount;
}

double figureTyped(Session& session, const std::string& text) {
  const AmountReader& reader = session.amountReader();
  if (!reader.isExpression(text)) return typed(reader.read(text));
  const auto tokens = typed(reader.tokens(text));
  const int digits = std::max(currencyDigits(""), decimalsThatCount(finest(tokens)));
  const double value = calculated(text, tokens, digits);
  session.say(session.text("{} is {}.", shownSum(text), rateText(session, value)));
  return value;
}

std::string EntryAmount::note(Session& session) const {
  if (!isForeign()) return {};
  const auto shown = rateText(session, rate);
  switch (rateBy) {
    case RateBy::record:
      return " " + session.text("The rate is {}, the record's own.", shown);
    case RateBy::person:
      return " " + session.text("The rate is {}, as given.", shown);
    case RateBy::table:
      break;
  }
  return " " + session.text("The rate of {} is {}.", ratesDay(session), shown);
}

EntryAmount entryAmountTyped(Session& session, const std::string& text, const std::string& currency,
                             const AmountOptions& options, const EntryAmount& before) {
  const auto money = textOfMoney(text);
  const auto code = money.code.empty() ? currency : currencyCodeTyped(session, money.code);
  EntryAmount entry;
  if (code == currency) {
    if (!options.rate.empty()) {
      throw notUnderstood(
          "--rate belongs to an amount in another currency than {}, such as: --amount \"20 {}\"", currency,
          currency == "USD" ? "EUR" : "USD");
    }
    entry.amount = valueTyped(session, money.number, currency, Sign::aboveZero, options);
    requireSound(entry.amount);
    return entry;
  }
  entry.foreignAmount = valueTyped(session, money.number, code, Sign::aboveZero, options);
  requireSound(entry.foreignAmount);
  entry.foreignCurrency = code;
  if (!options.rate.empty()) {
    entry.rateBy = RateBy::person;
    entry.rate = rateTyped(session, options.rate);
  } else if (before.hasRateOf(code)) {
    entry.rateBy = RateBy::record;
    entry.rate = ownRate(session, before, entry.foreignAmount, currency);
  } else {
    entry.rate = rateBetween(session, code, currency);
  }
  entry.amount = converted(entry.foreignAmount, entry.rate, currencyDigits(currency));
  if (entry.amount == 0) {
    throw refused("{} at {} comes to nothing in {}",
                  session.amounts().formatWithCode(entry.foreignAmount, code), rateText(session, entry.rate),
                  currency);
  }
  requireSound(entry.amount);
  return entry;
}

bool isThreeLetters(const std::string& word) {
  return word.size() == kCodeLength && std::ranges::all_of(word, isLetter);
}

std::string amountWithCode(const std::string& amount, const std::string& word) {
  if (word.empty()) return amount;
  const auto isLetters = [](const std::string& text) { return std::ranges::all_of(text, isLetter); };
  if (amount.empty() || (!isLetters(amount) && !isLetters(word))) {
    throw notUnderstood(
        "'{}' is no currency's code; an amount is one word, such as 12.50, or two, such as 20 USD",
        printable(word));
  }
  return fmt::format("{} {}", amount, word);
}

std::string foreignTyped(Session& session, const std::string& text, const std::string& currency) {
  auto code = currencyCodeTyped(session, text);
  if (code == currency) throw notUnderstood("--foreign is for another currency than {}", currency);
  return code;
}

void takeCode(std::string& name, std::string& code, std::string& amount) {
  if (code.empty()) return;
  const auto likeness = [](const std::string& word) {
    return isCurrencyCode(word) ? 2 : isThreeLetters(word) ? 1 : 0;
  };
  if (likeness(name) > likeness(code)) std::swap(name, code);
  if (amount.empty()) throw notUnderstood("'{}' goes with --amount", printable(code));
  amount = amountWithCode(amount, code);
}

void prepareRates(Session& session, const std::string& amount, const AmountOptions& options,
                  const std::function<bool(const std::string& code)>& needsRate) {
  const auto money = textOfMoney(amount);
  if (!options.rate.empty() || !isCurrencyCode(money.code)) return;
  // What is no amount is told before anything is waited for.
  typed(session.amountReader().tokens(money.number));
  if (needsRate(money.code)) freshenRates(session);
}

}  // namespace moniva
