#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "base/amount.h"
#include "ui/cli/session.h"

/// Exchange rates and currencies as commands ask for them.
namespace moniva {

/// Fetches rates where those known are more than half a day old, and waits that long at most, `firstPatience`
/// where there are none yet. Takes what came by then; where nothing did, says so and leaves those known in
/// use. Waits once in a run for services that do not answer. Never with the store locked for a change.
void freshenRates(Session& session, std::chrono::milliseconds patience = std::chrono::seconds(3),
                  std::chrono::milliseconds firstPatience = std::chrono::seconds(15));

/// What one of `from` is in `to` by the rates known; nothing is fetched (`freshenRates` before it does). Says
/// on standard error when they are older than thirty days. Ends the command where no rate is known, with how
/// to go on: by --rate too for a command that takes it.
double rateBetween(Session& session, const std::string& from, const std::string& to, bool takesRate = true);
/// The same; nothing where no rate is known.
std::optional<double> rateKnown(Session& session, const std::string& from, const std::string& to);
/// Says once that the rates are older than thirty days, where they are.
void sayWhereOld(Session& session);

/// "Nov 21, 2026": the day of the rates in use.
std::string ratesDay(Session& session);
/// "0.9206": a rate with that many digits at most (else as many as it has), in the person's locale.
std::string rateText(Session& session, double rate, int digits = kMostAmountDigits);

/// A currency's code as typed. Ends the command for what is none: one in small letters, an unknown one or a
/// currency's name is told with the code that was probably meant.
std::string currencyCodeTyped(Session& session, const std::string& text);

}  // namespace moniva
