#pragma once

#include <CLI/App.hpp>
#include <functional>
#include <string>

#include "ui/cli/session.h"

/// Amounts as typed: by the marks and digits of the person's locale, as a number or as an expression, which
/// is evaluated from left to right as on the keypad. What an expression comes to is said on standard error.
namespace moniva {

/// How an amount may be typed: "--round" allows more decimals than its currency has.
struct AmountOptions {
  bool round = false;
  /// What one of the foreign currency is in the record's, as typed, as an expression too; "" for the rate
  /// known.
  std::string rate;
};
void addRoundOption(CLI::App& command, AmountOptions& options);
void addRateOption(CLI::App& command, AmountOptions& options);

/// The amount typed, above zero, in the currency of the code, which may stand beside it ("20 EUR"). Ends the
/// command for what is no amount, comes to none (7÷0), is not above zero, is in another currency, or has more
/// decimals than the currency, unless it may be rounded, which the person is told.
double amountTyped(Session& session, const std::string& text, const std::string& currency,
                   const AmountOptions& options = {});
/// The same where nothing is an amount, too, such as a fee.
double amountOrNothingTyped(Session& session, const std::string& text, const std::string& currency,
                            const AmountOptions& options = {});
/// The same for what may be below zero: balances. They have the bound of amounts.
double signedAmountTyped(Session& session, const std::string& text, const std::string& currency);
/// A figure to compare with, of no currency.
double figureTyped(Session& session, const std::string& text);

/// Where a rate is from: those known, the person, or the figures the record had.
enum class RateBy { table, person, record };

/// The amount of a record that may keep what it was in another currency: "12.50", "10+2.50", "20 USD".
struct EntryAmount {
  double amount = 0;  ///< above zero, in the record's currency
  double foreignAmount = 0;
  std::string foreignCurrency;  ///< "" for none
  double rate = 0;              ///< what one of the foreign currency was taken for; 0 for none
  RateBy rateBy = RateBy::table;

  bool isForeign() const { return !foreignCurrency.empty(); }
  /// Whether the two figures have a rate of that currency between them.
  bool hasRateOf(const std::string& code) const {
    return foreignCurrency == code && foreignAmount > 0 && amount > 0;
  }
  /// " The rate is 0.92, as given.", for the answer of the command; "" for no foreign amount.
  std::string note(Session& session) const;
};
/// Reads it; a foreign amount is converted at the rate typed with --rate, else at that of `before`, which is
/// what the record has had (before anything came back), where the currency is the same, else at the rate
/// known. Ends the command as amountTyped does, for a --rate of no foreign amount, and where no rate is
/// known.
EntryAmount entryAmountTyped(Session& session, const std::string& text, const std::string& currency,
                             const AmountOptions& options = {}, const EntryAmount& before = {});

/// Whether the word is three letters, capitals or not, as currencies' codes are; no record can be typed like
/// that.
bool isThreeLetters(const std::string& word);
/// The amount with the word typed behind it: "20 USD"; that may be blank. Ends the command where none of the
/// two is a code.
std::string amountWithCode(const std::string& amount, const std::string& word);
/// The code of --foreign, which is for another currency than the record's; ends the command for that one.
std::string foreignTyped(Session& session, const std::string& text, const std::string& currency);
/// Puts the code behind --amount to it: "--amount 20 USD NAME". The parser cannot know which word is which,
/// so the two change places where the name is more like a code. Ends the command for a code without an
/// amount.
void takeCode(std::string& name, std::string& code, std::string& amount);
/// To be called before the store is changed: fetches exchange rates where the amount is in a currency that
/// will be converted at the rate known, so that nobody waits for the network with the store locked.
void prepareRates(Session& session, const std::string& amount, const AmountOptions& options,
                  const std::function<bool(const std::string& code)>& needsRate);

}  // namespace moniva
