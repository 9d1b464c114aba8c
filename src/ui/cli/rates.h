#pragma once

#include <optional>
#include <string>

#include "base/amount.h"
#include "ui/cli/session.h"

/// Exchange rates and currencies as commands ask for them.
namespace moniva {

/// What one of `from` is in `to` for a person who asked for a conversion. Rates more than half a day old are
/// fetched first where that takes no more than a moment; where it does, and where there is no network, those
/// known are used. Says on standard error when they are older than thirty days. Ends the command, with how to
/// go on (--rate, rate refresh), where no rate is known.
double rateBetween(Session& session, const std::string& from, const std::string& to);

/// The same for the commands about rates themselves: nothing where no rate is known.
std::optional<double> rateKnown(Session& session, const std::string& from, const std::string& to);
/// Why there is no rate between them, and how to go on: by --rate too for a command that takes it.
Refusal noRate(Session& session, const std::string& from, const std::string& to, bool takesRate = false);
/// Fetches rates where those known are more than half a day old, as `rateBetween` does.
void freshenRates(Session& session);
/// Says once that the rates are older than thirty days, where they are.
void sayWhereOld(Session& session);

/// "0.9206": a rate with that many digits at most (else as many as it has), in the person's locale.
std::string rateText(Session& session, double rate, int digits = kMostAmountDigits);

/// A currency's code as typed. Ends the command for what is none: one in small letters, an unknown one or a
/// currency's name is told with the code that was probably meant.
std::string currencyCodeTyped(Session& session, const std::string& text);

}  // namespace moniva
