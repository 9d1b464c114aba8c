#include <boost/json.hpp>

#include "model/move_all_data.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/records.h"

namespace moniva {
namespace {

struct MoveOptions {
  std::string from;
  std::string to;
};

void moveRecords(Session& session, int aKind, const MoveOptions& options) {
  const auto named = [&](const std::string& name, Meant meant) {
    if (name.empty()) throw notUnderstood("an empty name means nothing here");
    return aKind == kBookKind ? bookNamed(session, name, meant) : accountNamed(session, name, meant);
  };
  std::int64_t moved = 0;
  std::int64_t series = 0;
  std::optional<MonivaAccount> from;
  std::optional<MonivaAccount> to;
  changeStore(session, [&] {
    from = named(options.from, Meant::single);
    to = named(options.to, Meant::open);
    series = done(from->seriesCount());
    moved = done(moveAllDataTo(*from, *to));
    if (moved + series == 0) throw refused("'{}' has no records", from->title);
  });
  session.root().markRecentEditDate();
  to->getInfo();
  if (session.options().json) return session.printJson(boost::json::object{{"records", moved}});
  session.answer(session.text("Moved {} from '{}' to '{}'; the balance of '{}' is {} now.",
                              recordsText(session, moved, series), from->title, to->title, to->title,
                              session.amounts().format(to->totalBalance, to->currency)));
}

}  // namespace

void addMoveRecords(const RowFamily& family) {
  auto options = std::make_shared<MoveOptions>();
  CLI::App* move = family.line.add(family.app, "move-records");
  move->add_option("FROM", options->from,
                   family.ofBooks() ? "The book they are in" : toTranslate("The account they are in"))
      ->required();
  move->add_option("TO", options->to,
                   family.ofBooks() ? "The book they go to" : toTranslate("The account they go to"))
      ->required();
  family.line.onRun(
      move, [options, aKind = family.aKind](Session& session) { moveRecords(session, aKind, *options); });
}

}  // namespace moniva
