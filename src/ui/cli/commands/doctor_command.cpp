#include "app/doctor.h"

#include <boost/json.hpp>

#include "storage/store_files.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/table.h"

namespace moniva {
namespace {

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
  auto aside = std::make_shared<bool>(false);
  doctor->add_flag("--set-aside", *aside,
                   "Set a damaged data file aside, so that the next command begins a new store");
  line.onRun(
      doctor,
      [aside](Session& session) {
        if (*aside) return setAside(session);
        session.launch();
        examine(session);
      },
      false);
}

}  // namespace moniva
