#include <boost/json.hpp>

#include "model/account_balance.h"
#include "model/account_dates.h"
#include "model/account_groups.h"
#include "model/transaction_type.h"
#include "storage/writes.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/records.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

struct GroupOptions {
  std::string title;
  std::string newTitle;
  std::vector<std::string> members;
  bool ofBooks = false;
};

std::string membersText(const Session& session, const MonivaAccount& group, std::size_t count) {
  const auto n = static_cast<std::int64_t>(count);
  return group.isBook() ? session.count("{} book", "{} books", n)
                        : session.count("{} account", "{} accounts", n);
}

std::vector<MonivaAccount> membersNamed(Session& session, const std::vector<std::string>& names, int aKind) {
  std::vector<MonivaAccount> members;
  for (const auto& name : names) {
    if (name.empty()) throw notUnderstood("the name is empty");
    members.push_back(aKind == kBookKind ? bookNamed(session, name) : accountNamed(session, name));
  }
  return members;
}

boost::json::object jsonOfGroup(Session& session, const MonivaAccount& group) {
  auto object = jsonWithTotals(session, group);
  boost::json::array members;
  for (const auto& member : done(getGroupMembers(group))) {
    members.push_back({{"pk", member.pk}, {"title", member.title}});
  }
  object["members"] = std::move(members);
  return object;
}

/// The group as JSON, or the sentence, after a change of it.
void answerForGroup(Session& session, MonivaAccount& group, const std::string& sentence) {
  session.root().markRecentEditDate();
  if (!session.options().json) return session.answer(sentence);
  group.getInfo();
  done(getAllStatistics(group));
  done(getAllPeriod(group));
  session.printJson(jsonOfGroup(session, group));
}

Result<> includeAll(MonivaAccount& group, const std::vector<MonivaAccount>& members) {
  for (const auto& member : members) {
    if (auto added = addToGroup(group, member); !added) return added;
  }
  return {};
}

void addGroup(Session& session, const GroupOptions& options) {
  auto& root = session.root();
  MonivaAccount group(root);
  group.aKind = options.ofBooks ? kBookKind : kAccountKind;
  group.title = wellFormed(options.title, "the name");
  group.isGroup = true;
  group.setType(groupType(group.aKind));
  bool isBack = false;
  std::string also;
  done(atomically(root, [&](Connection&) -> Result<> {
    requireFreeTitle(session, group.aKind, group.title);
    const auto members = membersNamed(session, options.members, group.aKind);
    const std::string currency = members.front().currency;
    group.currency = currency;
    isBack = done(group.add()) == MonivaAccount::Added::revived;
    // One of the title that was deleted comes back with the currency it had.
    also = changeCurrency(session, group, currency);
    return includeAll(group, members);
  }));
  const std::string count = membersText(session, group, options.members.size());
  answerForGroup(
      session, group,
      isBack
          ? session.text("The deleted group '{}' is back, of {} in {}.", group.title, count, group.currency) +
                also
          : session.text("Added the group '{}' of {} in {}.", group.title, count, group.currency));
}

void includeInGroup(Session& session, const GroupOptions& options) {
  MonivaAccount group(session.root());
  done(atomically(session.root(), [&](Connection&) {
    group = groupNamed(session, options.title, options.ofBooks);
    return includeAll(group, membersNamed(session, options.members, group.aKind));
  }));
  answerForGroup(session, group,
                 session.text("'{}' has {} now; its balance is {}.", group.title,
                              membersText(session, group, done(getGroupMembers(group)).size()),
                              session.amounts().format(group.totalBalance, group.currency)));
}

void removeOfGroup(Session& session, const GroupOptions& options) {
  MonivaAccount group(session.root());
  done(atomically(session.root(), [&](Connection&) -> Result<> {
    group = groupNamed(session, options.title, options.ofBooks);
    for (const auto& member : membersNamed(session, options.members, group.aKind)) {
      if (auto removed = removeFromGroup(group, member); !removed) return removed;
    }
    return {};
  }));
  answerForGroup(session, group,
                 session.text("'{}' has {} left; its balance is {}.", group.title,
                              membersText(session, group, done(getGroupMembers(group)).size()),
                              session.amounts().format(group.totalBalance, group.currency)));
}

void renameGroup(Session& session, const GroupOptions& options) {
  MonivaAccount group(session.root());
  const std::string title = wellFormed(options.newTitle, "the name");
  done(atomically(session.root(), [&](Connection&) {
    group = groupNamed(session, options.title, options.ofBooks);
    return group.updateTitle(title);
  }));
  answerForGroup(session, group, session.text("'{}' is called '{}' now.", options.title, group.title));
}

void deleteGroup(Session& session, const GroupOptions& options) {
  MonivaAccount group(session.root());
  std::string members;
  done(atomically(session.root(), [&](Connection&) {
    group = groupNamed(session, options.title, options.ofBooks);
    members = membersText(session, group, done(getGroupMembers(group)).size());
    return group.delete_();
  }));
  answerForGroup(session, group,
                 session.text("Deleted the group '{}', but none of its {}.", group.title, members));
}

void listGroups(Session& session, const GroupOptions& options) {
  boost::json::array list;
  Table table({{.title = session.text("Group")},
               {.title = session.text("Kind")},
               {.title = session.text("Members")},
               {.title = session.text("Currency")},
               {.title = session.text("Balance"), .align = Align::right}});
  for (const int aKind : {kAccountKind, kBookKind}) {
    if (options.ofBooks && aKind == kAccountKind) continue;
    for (auto& group : MonivaAccount::list(session.root(), aKind, MonivaAccount::Rows::groups)) {
      done(getAllStatistics(group));
      if (session.options().json) {
        done(getAllPeriod(group));
        list.push_back(jsonOfGroup(session, group));
        continue;
      }
      table.addRow({group.title,
                    Cell(group.isBook() ? session.text("books") : session.text("accounts"), ink::dim),
                    titlesText(done(getGroupMembers(group))), group.currency,
                    amountCell(session, group.totalBalance, group.currency)});
    }
  }
  if (session.options().json) return session.printJson(list);
  if (table.empty()) {
    return session.say(session.text("There is no group yet. Add one with: moniva group add TITLE MEMBER..."));
  }
  session.out() << table.render(session.style(), session.width());
}

void showGroup(Session& session, const GroupOptions& options) {
  MonivaAccount group = groupNamed(session, options.title, options.ofBooks);
  done(getAllStatistics(group));
  done(getAllPeriod(group));
  if (session.options().json) return session.printJson(jsonOfGroup(session, group));
  Facts facts(session);
  facts.add(session.text("Group"), group.title);
  facts.add(session.text("Currency"), group.currency);
  facts.addState(group);
  facts.addTotals(group);
  facts.addDates(group);
  facts.print();
  Table members({{.title = group.isBook() ? session.text("Book") : session.text("Account")},
                 {.title = session.text("Balance"), .align = Align::right}});
  for (const auto& member : done(getGroupMembers(group))) {
    members.addRow(
        {titleCell(session, member), amountCell(session, getTheTotalBalance(member), member.currency)});
  }
  if (!members.empty()) session.out() << '\n' << members.render(session.style(), session.width());
}

}  // namespace

void addGroupCommands(CommandLine& line) {
  CLI::App* groups = line.add(line.app(), "group");
  groups->require_subcommand(1);
  using Work = void (*)(Session&, const GroupOptions&);
  struct Shape {
    const char* name;
    bool titled;
    bool renamed;
    bool withMembers;
    Work run;
  };
  for (const Shape& shape : {Shape{"add", true, false, true, addGroup},
                             {"include", true, false, true, includeInGroup},
                             {"remove", true, false, true, removeOfGroup},
                             {"list", false, false, false, listGroups},
                             {"show", true, false, false, showGroup},
                             {"rename", true, true, false, renameGroup},
                             {"delete", true, false, false, deleteGroup}}) {
    CLI::App* command = line.add(*groups, shape.name);
    auto options = std::make_shared<GroupOptions>();
    if (shape.titled) command->add_option("TITLE", options->title, "Title of the group")->required();
    if (shape.renamed) command->add_option("NEW", options->newTitle, "The new title")->required();
    if (shape.withMembers) {
      command->add_option("MEMBER", options->members, "Names of the accounts, or books")->required();
    }
    command->add_flag("--books", options->ofBooks, "A group of books");
    line.onRun(command, [options, run = shape.run](Session& session) { run(session, *options); });
  }
}

}  // namespace moniva
