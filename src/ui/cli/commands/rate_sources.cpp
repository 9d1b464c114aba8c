#include <boost/json.hpp>
#include <filesystem>

#include "currency/currency_manager.h"
#include "platform/files.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/commands/rate_commands.h"
#include "ui/cli/rates.h"
#include "ui/cli/records.h"
#include "ui/cli/stop_on_interrupt.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

namespace json = boost::json;

/// What a file of rates may have at most; one of all currencies has a few thousand bytes.
constexpr std::uintmax_t kMostBytes = 1 << 20;
constexpr const char* kOff = "off";

/// Makes sure that the rates just taken are kept, which the manager itself only tries, and tells of them;
/// `failure` is why one service gave none.
void answerNewRates(Session& session, const std::optional<Refusal>& failure, const std::string& sentence) {
  done(session.platform().userDefaults->synchronize());
  if (!session.options().json) return session.answer(sentence);
  auto object = jsonOfSource(session);
  object["failure"] = failure ? failure->why : "";
  object["exchangeRates"] = moniva::jsonOf(session.rates().exchangeRates());
  session.printJson(object);
}

void refreshRates(Session& session) {
  CurrencyManager& rates = session.rates();
  const StopOnInterrupt stop;
  rates.forceRefresh();
  {
    const auto most = HttpLimits().total;
    const double begin = Session::watch();
    Progress progress(session.progressPlace(), Session::watch, session.text("Fetching exchange rates"),
                      static_cast<std::uint64_t>(most / std::chrono::seconds(1)));
    while (!rates.waitForRefresh(std::chrono::milliseconds(100))) {
      progress.moveTo(static_cast<std::uint64_t>(Session::watch() - begin));
      if (!StopOnInterrupt::flag()) continue;
      session.platform().http->cancel();
      throw CommandError(CommandError::kInterrupted, Refusal(phrase("stopped; the rates known stay")));
    }
  }
  if (const auto& failure = rates.refreshFailure()) {
    throw rates.exchangeRates().empty()
        ? refused("no exchange rates could be fetched: {}", *failure)
        : refused("no exchange rates could be fetched: {}; those of {} stay", *failure, ratesDay(session));
  }
  const auto& failure = rates.partFailure();
  if (failure)
    session.say(session.text("One service gave no rates: {}.", failure->phrase->in(session.translate())));
  const auto number = static_cast<std::int64_t>(rates.exchangeRates().size());
  answerNewRates(session, failure,
                 session.count("Fetched {} exchange rate.", "Fetched {} exchange rates.", number));
}

void loadRates(Session& session, const std::string& path) {
  const std::string shown = printable(path);
  std::error_code error;
  // Looked at before it is read: a device or a pipe might never end.
  if (!std::filesystem::exists(path, error)) throw refused("there is no file '{}'", shown);
  if (!std::filesystem::is_regular_file(path, error)) throw refused("'{}' is no ordinary file", shown);
  if (const auto size = std::filesystem::file_size(path, error); !error && size > kMostBytes)
    throw refused("'{}' is too large for a file of exchange rates", shown);
  const auto bytes = done(readFileIfPresent(path));
  if (!bytes) throw refused("there is no file '{}'", shown);
  auto table = readRateReply(*bytes);
  if (!table) throw refused("'{}' has no exchange rates: {}", shown, table.error());
  if (const auto base = statedBase(*bytes); !base.empty() && base != kBaseCurrency)
    throw refused("the rates in '{}' are those of {}, not of the US dollar", shown, printable(base));
  CurrencyManager& rates = session.rates(FirstFetch::whenAsked);
  rates.finishRefreshWithExchangeRates(*std::move(table), std::filesystem::absolute(path, error).string());
  const auto number = static_cast<std::int64_t>(rates.exchangeRates().size());
  answerNewRates(session, {},
                 session.count("Took {} exchange rate from '{}'.", "Took {} exchange rates from '{}'.",
                               number, number, shown));
}

struct ServiceOptions {
  std::string primary;
  std::string secondary;
  bool off = false;
  bool usual = false;
};

/// Changes one service where something was typed for it; whether it was.
bool setService(Session& session, const ServiceOptions& options, std::string_view key,
                const std::string& typedOne) {
  auto& defaults = *session.platform().userDefaults;
  if (options.usual) {
    defaults.removeObjectForKey(key);
  } else if (options.off || typedOne == kOff) {
    defaults.setString("", key);
  } else if (!typedOne.empty()) {
    defaults.setString(typedOne, key);
  } else {
    return false;
  }
  return true;
}

void changeServices(Session& session, const ServiceOptions& options) {
  // Nothing is kept before both were found sound.
  for (const auto* address : {&options.primary, &options.secondary}) {
    if (!address->empty() && *address != kOff) typed(RateServices::check(*address));
  }
  const bool first = setService(session, options, RateServices::kPrimaryKey, options.primary);
  const bool second = setService(session, options, RateServices::kSecondaryKey, options.secondary);
  if (first || second) done(session.platform().userDefaults->synchronize());
  const auto set = RateServices::of(*session.platform().userDefaults);
  if (session.options().json)
    return session.printJson(json::object{{"primary", set.primary}, {"secondary", set.secondary}});
  if (set.primary.empty() && set.secondary.empty())
    return session.answer(session.text("No service is asked for exchange rates."));
  Facts facts(session);
  const auto line = [&](const std::string& name, const std::string& address) {
    facts.add(name, address.empty() ? session.text("off") : printable(address));
  };
  line(session.text("First service"), set.primary);
  line(session.text("Second service"), set.secondary);
  facts.print();
}

}  // namespace

json::object jsonOfSource(Session& session) {
  auto& rates = session.rates();
  return {{"lastRefresh", isoDate(session, rates.lastRefresh())},
          {"isOld", rates.isOld(session.now())},
          {"file", rates.file()}};
}

std::string sourceText(Session& session) {
  const auto when = dateText(session, session.rates().lastRefresh());
  const auto file = session.rates().file();
  return file.empty() ? session.text("Fetched on {}.", when)
                      : session.text("Taken from '{}' on {}.", printable(file), when);
}

void addRateSources(CommandLine& line, CLI::App& rate) {
  line.onRun(line.add(rate, "refresh"), refreshRates);

  CLI::App* taken = line.add(rate, "load");
  auto path = std::make_shared<std::string>();
  taken->add_option("FILE", *path, "The answer of an exchange-rate service")->required();
  line.onRun(taken, [path](Session& session) { loadRates(session, *path); });

  CLI::App* asked = line.add(rate, "services");
  auto options = std::make_shared<ServiceOptions>();
  asked->add_option("--primary", options->primary, "Address of the first service, or off")
      ->type_name("URL")
      ->check(notEmpty());
  asked->add_option("--secondary", options->secondary, "Address of the second service, or off")
      ->type_name("URL")
      ->check(notEmpty());
  auto* off = asked->add_flag("--off", options->off, "Ask no service");
  auto* usual = asked->add_flag("--usual", options->usual, "Ask the usual ones");
  for (auto* flag : {off, usual}) {
    for (const char* other : {"--primary", "--secondary"}) flag->excludes(asked->get_option(other));
  }
  off->excludes(usual);
  line.onRun(asked, [options](Session& session) { changeServices(session, *options); });
}

}  // namespace moniva
