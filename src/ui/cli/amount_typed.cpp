#include "ui/cli/amount_typed.h"

#include <algorithm>
#include <cmath>

#include "base/decimal.h"
#include "base/text.h"
#include "currency/amount_expression.h"
#include "currency/currency_codes.h"
#include "model/entry_checks.h"
#include "ui/cli/command_error.h"
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

/// Takes a code off the end or the beginning. Letters that touch the number are one only when there are
/// three.
TextOfMoney textOfMoney(std::string_view text) {
  text = trimBlanks(text);
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

/// How many decimals the number has, noughts at the end aside.
int decimalsOf(const AmountToken& token) {
  int decimals = token.decimals;
  while (decimals > 0 && rounded(token.number, decimals - 1) == token.number) --decimals;
  return decimals;
}

CommandError tooManyDecimals(const std::string& text, const std::string& currency, bool mayRound) {
  const int digits = currencyDigits(currency);
  return mayRound ? notUnderstood("{} is counted in {} decimals, and '{}' has more; --round rounds it",
                                  currency, digits, printable(text))
                  : notUnderstood("{} is counted in {} decimals, and '{}' has more", currency, digits,
                                  printable(text));
}

/// The value of an expression on a keypad with those decimals; with more where they may be rounded.
double calculated(const AmountReader& reader, const std::string& text, const std::string& currency,
                  bool rounds, bool mayRound) {
  auto tokens = typed(reader.tokens(text));
  CalculateNumberPadView pad;
  int digits = currencyDigits(currency);
  for (auto& token : tokens) {
    token.decimals = decimalsOf(token);
    if (token.decimals <= digits) continue;
    if (!rounds) throw tooManyDecimals(token.text, currency, mayRound);
    digits = std::min(token.decimals, CalculateNumberPadView::kMostDigits);
  }
  pad.setDecimalDigits(digits);
  const double value = typed(pressed(pad, tokens));
  if (!std::isfinite(value)) throw notUnderstood("{} comes to no amount", printable(text));
  return value;
}

/// The value of a number or an expression, without a code.
double valueTyped(Session& session, const std::string& text, const std::string& currency, Sign sign,
                  const AmountOptions& options) {
  const AmountReader& reader = session.amountReader();
  const bool isExpression = reader.isExpression(text);
  const bool mayRound = sign != Sign::any;
  const double amount = isExpression        ? calculated(reader, text, currency, options.round, mayRound)
                        : sign == Sign::any ? typed(reader.readSigned(text))
                                            : typed(reader.read(text));
  const double taken = rounded(amount, currencyDigits(currency));
  const auto plain = [&] { return session.amounts().formatPlain(taken, currency); };
  if (sign == Sign::aboveZero && amount <= 0) {
    throw isExpression ? notUnderstood("an amount must be above zero; {} is {}", printable(text), plain())
                       : notUnderstood("an amount must be above zero; '{}' is not", printable(text));
  }
  if (sign == Sign::zeroToo && amount < 0) {
    throw notUnderstood("the amount must not be below zero; {} is {}", printable(text), plain());
  }
  const bool isExact = taken == amount;
  if (!isExact && !options.round) throw tooManyDecimals(text, currency, mayRound);
  if (taken <= 0 && amount > 0) throw notUnderstood("'{}' rounds to nothing", printable(text));
  if (isExpression) {
    session.say(session.text("{} is {}.", printable(text), plain()));
  } else if (!isExact) {
    session.say(session.text("{} is taken for {}.", session.amounts().formatWithCode(taken, currency),
                             printable(text)));
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

double rateTyped(Session& session, const std::string& text) {
  const double rate = typed(session.amountReader().read(text));
  if (rate <= 0) throw notUnderstood("a rate must be above zero; '{}' is not", printable(text));
  return rate;
}

}  // namespace

void addRoundOption(CLI::App& command, AmountOptions& options) {
  command.add_flag("--round", options.round, "Round an amount with more decimals than its currency has");
}

void addRateOption(CLI::App& command, AmountOptions& options) {
  command
      .add_option("--rate", options.rate,
                  "What one of the foreign currency is in the record's (else the rate known)")
      ->type_name("RATE");
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
  return valueTyped(session, inCurrency(session, text, currency), currency, Sign::any, {});
}

double figureTyped(Session& session, const std::string& text) {
  const AmountReader& reader = session.amountReader();
  if (!reader.isExpression(text)) return typed(reader.read(text));
  const double value = calculated(reader, text, "", true, false);
  session.say(session.text("{} is {}.", printable(text), session.amounts().formatPlain(value, "")));
  return value;
}

std::string EntryAmount::note(Session& session, const std::string& currency) const {
  if (!isForeign()) return {};
  const auto paid = session.amounts().formatWithCode(foreignAmount, foreignCurrency);
  const auto comesTo = session.amounts().formatWithCode(amount, currency);
  const auto each = rateText(session, rate);
  return " " + (atOwnRate ? session.text("{} at the record's own rate of {} is {}.", paid, each, comesTo)
                          : session.text("{} at {} is {}.", paid, each, comesTo));
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
    entry.amount = amountTyped(session, money.number, currency, options);
    return entry;
  }
  entry.foreignAmount = amountTyped(session, money.number, code, options);
  entry.foreignCurrency = code;
  entry.atOwnRate = options.rate.empty() && before.foreignCurrency == code && before.foreignAmount > 0;
  entry.rate = entry.atOwnRate        ? before.amount / before.foreignAmount
               : options.rate.empty() ? rateBetween(session, code, currency)
                                      : rateTyped(session, options.rate);
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

void prepareRates(Session& session, const std::string& amount, const AmountOptions& options,
                  const std::function<bool(const std::string& code)>& needsRate) {
  const auto code = textOfMoney(amount).code;
  if (options.rate.empty() && isCurrencyCode(code) && needsRate(code)) freshenRates(session);
}

}  // namespace moniva
