#include "app/doctor.h"

#include <boost/json.hpp>
#include <cmath>

#include "platform/internet_date.h"
#include "storage/store_files.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/records.h"
#include "ui/cli/table.h"

namespace moniva {
namespace {

/// Seconds between two clocks that mean nothing: what a server says is whole seconds old when it arrives.
constexpr double kSameTime = 2;
/// Seconds from which a clock puts records on the wrong day too often.
constexpr double kWrongTime = 60;

struct DoctorOptions {
  bool aside = false;
  bool clock = false;
  std::string server;
};

void examine(Session& session) {
  const auto findings = examineStore(session.root());
  std::size_t ill = 0;
  boost::json::array list;
  Table table({{.title = ""}, {.title = session.text("Looked at")}, {.title = session.text("Found")}});
  for (const auto& finding : findings) {
    ill += finding.well ? 0 : 1;
    list.push_back(
        {{"check", finding.check.english()}, {"well", finding.well}, {"found", finding.found.english()}});
    table.addRow(
        {finding.well ? Cell("✓", ink::green) : Cell("✗", ink::red), finding.check.in(session.translate()),
         finding.well && finding.found.english().empty() ? Cell(session.text("well"), ink::dim)
                                                         : Cell(finding.found.in(session.translate()))});
  }
  const std::string file = session.root().db().databasePath().string();
  if (session.options().json) {
    session.printJson(boost::json::object{{"file", file}, {"findings", std::move(list)}});
  } else {
    session.answer(session.text("The store {}", file));
    session.out() << '\n' << table.render(session.style(), session.width());
  }
  if (ill > 0) {
    throw refused("{} of {} checks found something wrong", ill, findings.size());
  }
}

/// "3 minutes": a span of time in the unit that suits it.
std::string spanText(Session& session, double seconds) {
  const auto in = [seconds](double unit) { return std::int64_t{std::llround(seconds / unit)}; };
  if (seconds < 60) return session.count("{} second", "{} seconds", in(1));
  if (seconds < 3'600) return session.count("{} minute", "{} minutes", in(60));
  if (seconds < 2 * 86'400) return session.count("{} hour", "{} hours", in(3'600));
  return session.count("{} day", "{} days", in(86'400));
}

/// Compares the clock with that of a web server, which is asked from then on if it was named and answers.
void examineClock(Session& session, const std::string& server) {
  auto& platform = session.platform();
  const auto check = done(checkInternetDate(platform, server));
  if (!server.empty()) {
    platform.userDefaults->setString(server, kNetworkTimeServerKey);
    done(platform.userDefaults->synchronize());
  }
  const double ahead = check.seconds();
  const std::string span = spanText(session, std::abs(ahead));
  if (session.options().json) {
    session.printJson(boost::json::object{{"server", check.server},
                                          {"internetDate", isoDate(session, check.internetDate)},
                                          {"deviceDate", isoDate(session, check.deviceDate)},
                                          {"seconds", ahead}});
  } else if (std::abs(ahead) <= kSameTime) {
    session.answer(session.text("The clock of this device is right, says {}.", check.server));
  } else if (ahead > 0) {
    session.answer(session.text("The clock of this device is {} fast, says {}.", span, check.server));
  } else {
    session.answer(session.text("The clock of this device is {} slow, says {}.", span, check.server));
  }
  if (std::abs(ahead) > kWrongTime) throw refused("the clock of this device is wrong; set it right");
}

/// Sets a data file that cannot be used aside, without opening it as a store first; the next start makes a
/// new one.
void setAside(Session& session) {
  const auto path = session.dataFolder() / session.platform().info.kDatabaseName;
  std::string why;
  std::error_code error;
  if (!std::filesystem::exists(path, error)) {
    throw refused("there is no data file '{}'", path.string());
  }
  switch (availabilityOf(path, why)) {
    case Availability::available:
      throw refused("the data file '{}' can be read; it stays in its place", path.string());
    case Availability::unknown:
      throw refused("whether '{}' is damaged cannot be told now: {}", path.string(), why);
    case Availability::damaged:
      break;
  }
  const auto aside = done(setDataFileAside(path, session.now()));
  session.answer(
      session.text("The data file is kept as '{}'. The next command begins a new store.", aside.string()));
}

}  // namespace

void addDoctorCommand(CommandLine& line) {
  CLI::App* doctor = line.add(line.app(), "doctor");
  auto options = std::make_shared<DoctorOptions>();
  CLI::Option* aside =
      doctor->add_flag("--set-aside", options->aside,
                       "Set a damaged data file aside, so that the next command begins a new store");
  CLI::Option* clock =
      doctor->add_flag("--clock", options->clock, "Compare the clock of this device with a web server's")
          ->excludes(aside);
  doctor
      ->add_option("--server", options->server,
                   "The address of the web server to ask; it is kept for the next time if it answers")
      ->needs(clock)
      ->type_name("URL");
  line.onRun(
      doctor,
      [options](Session& session) {
        if (options->aside) return setAside(session);
        if (options->clock && !session.options().now.empty())
          throw notUnderstood("--clock looks at the clock of this device; leave out --now");
        session.launch();
        if (options->clock) return examineClock(session, options->server);
        examine(session);
      },
      false);
}

}  // namespace moniva
