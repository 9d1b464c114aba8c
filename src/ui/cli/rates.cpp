#include "ui/cli/rates.h"

#include <chrono>

#include "calendar/date_texts.h"
#include "currency/currency_manager.h"
#include "ui/cli/command_error.h"
#include "ui/cli/currency_names.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

using std::chrono::milliseconds;

bool asksNobody(Session& session) {
  const auto services = RateServices::of(*session.platform().userDefaults);
  return services.primary.empty() && services.secondary.empty();
}

/// Why there is no rate between them, and how to go on: by --rate too for a command that takes it.
Refusal noRate(Session& session, const std::string& from, const std::string& to, bool takesRate) {
  const CurrencyManager& rates = session.rates();
  Phrase goOn = asksNobody(session) ? phrase("take rates from a file with: moniva rate load FILE")
                                    : phrase("fetch rates with: moniva rate refresh");
  if (takesRate) goOn = phrase("give the rate with --rate, or {}", goOn);
  const auto& table = rates.exchangeRates();
  if (table.contains(from) && table.contains(to)) {
    return Refusal(
        phrase("the rate between {} and {} is beyond what can be calculated with; {}", from, to, goOn));
  }
  if (!table.empty()) {
    const bool isFromMissing = !table.contains(from);
    return Refusal(phrase("no exchange rate of {} is known; {}", isFromMissing ? from : to, goOn));
  }
  if (rates.isRefreshing())
    return Refusal(phrase("no exchange rates are known (the services did not answer in time); {}", goOn));
  const auto& failure = rates.refreshFailure();
  return Refusal(failure ? phrase("no exchange rates are known ({}); {}", *failure, goOn)
                         : phrase("no exchange rates are known; {}", goOn));
}

}  // namespace

void freshenRates(Session& session, milliseconds patience, milliseconds firstPatience) {
  CurrencyManager& rates = session.rates();
  const bool isFirst = rates.exchangeRates().empty();
  // One that failed in this run, or did not answer, would only be waited for once more.
  if (rates.refreshFailure()) return;
  if (!isFirst) rates.refreshIfNeeded();
  if (!rates.isAwaited()) return;
  const auto most = isFirst ? firstPatience : patience;
  constexpr std::chrono::seconds kSecond{1};
  constexpr milliseconds kSlice{100};
  Progress progress(session.progressPlace(), Session::watch, session.text("Fetching exchange rates"),
                    static_cast<std::uint64_t>(most / kSecond));
  for (auto waited = kSlice; waited <= most && !rates.waitForRefresh(kSlice); waited += kSlice)
    progress.moveTo(static_cast<std::uint64_t>(waited / kSecond));
  progress.finish();
  if (rates.takeWhatCame() || isFirst) return;
  session.sayOnce(session.text("The exchange rates could not be brought up to date; those of {} are used.",
                               ratesDay(session)));
}

std::string ratesDay(Session& session) {
  return stringOfDateMediumStyle(session.calendar(), session.rates().lastRefresh());
}

void sayWhereOld(Session& session) {
  const CurrencyManager& rates = session.rates();
  // Where they were tried to be brought up to date in vain, that was said.
  const bool isTold = rates.refreshFailure() && !asksNobody(session);
  if (isTold || !rates.isOld(session.now())) return;
  session.sayOnce(
      session.text("The exchange rates are of {}; newer ones: moniva rate refresh", ratesDay(session)));
}

std::optional<double> rateKnown(Session& session, const std::string& from, const std::string& to) {
  if (from == to) return 1.0;
  CurrencyManager& rates = session.rates();
  if (!rates.knowsRate(from, to)) return std::nullopt;
  sayWhereOld(session);
  return decimalOf(rates.exchangeRateFromCurrency(from, to));
}

double rateBetween(Session& session, const std::string& from, const std::string& to, bool takesRate) {
  if (const auto rate = rateKnown(session, from, to)) return *rate;
  throw CommandError(CommandError::kRefused, noRate(session, from, to, takesRate));
}

std::string rateText(Session& session, double rate, int digits) {
  return session.amounts().formatSignificant(rate, digits);
}

std::string currencyCodeTyped(Session& session, const std::string& text) {
  if (isCurrencyCode(text)) return text;
  constexpr std::size_t kMostListed = 5;
  const auto meant = currenciesMeant(session, text);
  const auto& list = meant.currencies;
  if (list.size() == 1) {
    throw notUnderstood("'{}' is no currency's code; did you mean {} ({})?", printable(text), list[0].code,
                        list[0].name);
  }
  if (list.size() > kMostListed) {
    throw notUnderstood(
        "'{}' is no currency's code; several are called so, see: moniva currency list --all {}",
        printable(text), printable(meant.word));
  }
  if (!list.empty()) {
    std::string others;
    for (std::size_t i = 0; i + 1 < list.size(); ++i)
      others += fmt::format("{}{} ({})", i == 0 ? "" : ", ", list[i].code, list[i].name);
    throw notUnderstood("'{}' is no currency's code; it may be {} or {} ({})", printable(text), others,
                        list.back().code, list.back().name);
  }
  throw notUnderstood(
      "'{}' is no currency; codes have three capital letters, such as EUR (see: moniva currency list --all)",
      printable(text));
}

}  // namespace moniva
