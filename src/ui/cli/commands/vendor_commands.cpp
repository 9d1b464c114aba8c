#include <fmt/ranges.h>

#include <algorithm>
#include <boost/json.hpp>
#include <map>
#include <utility>

#include "model/title_order.h"
#include "model/vendor_cleanup.h"
#include "model/vendor_query.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/records.h"
#include "ui/cli/table.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

namespace json = boost::json;

/// What the commands on vendors take, each the part it needs.
struct VendorOptions {
  bool payer = false;
  std::string name;
  std::string other;
  std::vector<std::string> names;
  std::string mode;
  bool merge = false;
  bool sections = false;
  bool byUse = false;
  bool byName = false;
  bool custom = false;

  int type() const { return payer ? Vendor::kPayer : Vendor::kPayee; }
  /// Of two sentences the one for the kind that is meant.
  CommandError either(CommandError ofPayee, CommandError ofPayer) const { return payer ? ofPayer : ofPayee; }
};

const std::map<std::string, std::string> kOrders = {{"custom", "0"}, {"use", "1"}, {"name", "2"}};

/// The live vendors in the user's own order, without the entry for none.
std::vector<Vendor> liveVendors(Session& session, int type) {
  auto list = std::move(VendorQuery(session.root(), type).getVendorList("0").front().cateArrayOfSameLetter);
  list.erase(list.begin());
  return list;
}

/// The vendor of that name, or the end of the command with the nearest name there is.
Vendor vendorNamed(Session& session, const std::string& name, const VendorOptions& options,
                   bool alsoDeleted = false) {
  MVAppRoot& root = session.root();
  auto vendor = Vendor::withTitle(root, wellFormed(name, "the name"), options.type());
  if (vendor && (vendor->deleted == 0 || alsoDeleted)) return std::move(*vendor);
  if (Vendor::isNoVendorTitle(root, name)) {
    throw refused("'{}' stands for no vendor; it is the same for everyone", name);
  }
  std::vector<std::string> titles;
  for (auto& each : liveVendors(session, options.type())) titles.push_back(std::move(each.title));
  const auto other = Vendor::withTitle(root, name, options.payer ? Vendor::kPayee : Vendor::kPayer);
  const auto meant = didYouMean(name, titles);
  Phrase hint = phrase("see: moniva vendor list{}", options.payer ? " --payers" : "");
  if (other && other->deleted == 0) {
    hint = options.payer ? phrase("there is a payee of that name; leave out --payer")
                         : phrase("there is a payer of that name; choose it with --payer");
  } else if (meant) {
    hint = phrase("did you mean '{}'?", printable(*meant));
  } else if (titles.empty()) {
    hint = phrase("add one with: moniva vendor add NAME{}", options.payer ? " --payer" : "");
  }
  throw options.either(refused("there is no payee '{}'; {}", printable(name), hint),
                       refused("there is no payer '{}'; {}", printable(name), hint));
}

/// The same for what is to be changed, of which there has to be one.
Vendor soleVendorNamed(Session& session, const std::string& name, const VendorOptions& options,
                       bool alsoDeleted = false) {
  Vendor vendor = vendorNamed(session, name, options, alsoDeleted);
  if (vendor.liveRows() > 1) throw refused("'{}' stands twice; first: moniva vendor tidy", name);
  if (vendor.pk.empty()) throw refused("'{}' has no key; first: moniva vendor tidy", name);
  return vendor;
}

/// The end of an answer: how many records went along.
std::string followed(Session& session, std::int64_t records) {
  return " " + session.count("{} record followed.", "{} records followed.", records);
}

/// Ends a command that changed the vendor: its JSON, or the sentence.
void answerChange(Session& session, const Vendor& vendor, const std::string& sentence) {
  session.root().markRecentEditDate();
  if (session.options().json) return session.printJson(jsonOf(session, vendor));
  session.answer(sentence);
}

void listVendors(Session& session, const VendorOptions& options) {
  MVAppRoot& root = session.root();
  const std::string mode = options.byUse                        ? "1"
                           : options.custom                     ? "0"
                           : options.byName || options.sections ? "2"
                                                                : Vendor::getOrderType(root, options.type());
  VendorQuery query(root, options.type());
  std::vector<VendorSection> sections;
  if (options.byName) {
    sections.push_back({"", query.getVendorListByName()});
  } else {
    sections = query.getVendorList(mode);
  }
  const bool lettered = mode == "2" && !options.byName;
  if (session.options().json) {
    json::array list;
    for (const auto& section : sections) {
      json::array rows;
      for (const auto& vendor : section.cateArrayOfSameLetter) rows.push_back(jsonOf(session, vendor));
      if (!lettered) return session.printJson(rows);
      list.push_back({{"orderLetter", section.orderLetter}, {"cateArrayOfSameLetter", std::move(rows)}});
    }
    return session.printJson(list);
  }
  std::vector<Column> columns;
  if (lettered) columns.emplace_back();
  columns.push_back({.title = options.payer ? session.text("Payer") : session.text("Payee")});
  columns.push_back({.title = session.text("Uses"), .align = Align::right});
  Table table(std::move(columns));
  bool any = false;
  for (const auto& section : sections) {
    std::string letter = section.orderLetter;
    for (const auto& vendor : section.cateArrayOfSameLetter) {
      std::vector<Cell> row;
      if (lettered) row.emplace_back(std::exchange(letter, ""), ink::bold);
      row.emplace_back(vendor.title, vendor.isNoVendor() ? ink::dim : ink::plain);
      if (!vendor.isNoVendor()) row.emplace_back(std::to_string(vendor.usedTimes));
      table.addRow(std::move(row));
      any = any || !vendor.isNoVendor();
    }
  }
  if (any) {
    session.out() << table.render(session.style(), session.width());
  } else if (mode != "0" && mode != "1" && mode != "2") {
    session.say(
        session.text("The order '{}' is not known; choose one with: moniva vendor order-by custom", mode));
  } else {
    session.say(options.payer
                    ? session.text("There is no payer yet. Add one with: moniva vendor add NAME --payer")
                    : session.text("There is no payee yet. Add one with: moniva vendor add NAME"));
  }
}

void showVendor(Session& session, const VendorOptions& options) {
  const Vendor vendor = vendorNamed(session, options.name, options);
  if (session.options().json) return session.printJson(jsonOf(session, vendor));
  Table table({{.title = ""}, {.title = ""}});
  const auto line = [&](const std::string& what, const std::string& value) {
    table.addRow({Cell(what, ink::dim), value});
  };
  line(options.payer ? session.text("Payer") : session.text("Payee"), vendor.title);
  line(session.text("Records"), std::to_string(vendor.recordCount()));
  line(session.text("Uses"), std::to_string(vendor.usedTimes));
  line(session.text("Filed under"),
       TitleOrder::forLocale(session.calendar().locale())->letterOf(vendor.title));
  line(session.text("Sorted as"), vendor.orderString());
  line(session.text("Place"), std::to_string(vendor.orderID));
  session.out() << table.render(session.style(), session.width());
}

void addVendor(Session& session, const VendorOptions& options) {
  Vendor vendor(session.root());
  vendor.title = wellFormed(options.name, "the name");
  vendor.type = options.type();
  const auto known = Vendor::withTitle(session.root(), vendor.title, vendor.type);
  if (known && known->deleted == 0 && !known->pk.empty()) {
    throw options.either(refused("there is a payee '{}' already", vendor.title),
                         refused("there is a payer '{}' already", vendor.title));
  }
  done(vendor.add());
  if (known && known->deleted == 0) {
    return answerChange(session, vendor,
                        session.text("'{}' was there without a key and has one now.", vendor.title));
  }
  if (known) {
    return answerChange(session, vendor,
                        session.text("Brought back '{}', which was deleted.", vendor.title) + " " +
                            session.count("It has {} record.", "It has {} records.", vendor.recordCount()));
  }
  answerChange(session, vendor,
               options.payer ? session.text("Added the payer '{}'.", vendor.title)
                             : session.text("Added the payee '{}'.", vendor.title));
}

void deleteVendor(Session& session, const VendorOptions& options) {
  Vendor vendor = soleVendorNamed(session, options.name, options);
  const auto records = vendor.recordCount();
  done(vendor.delVendor());
  std::string sentence = session.text("Deleted '{}'.", vendor.title);
  if (records > 0)
    sentence += " " + session.count("{} record keeps the name.", "{} records keep the name.", records);
  answerChange(session, vendor, sentence);
}

void renameVendor(Session& session, const VendorOptions& options) {
  Vendor vendor = soleVendorNamed(session, options.name, options);
  const std::string& title = wellFormed(options.other, "the new name");
  const auto other = Vendor::withTitle(session.root(), title, options.type());
  const bool merges = other && other->pk != vendor.pk;
  if (merges && !options.merge) {
    if (other->deleted == 0) {
      throw options.either(
          refused("there is a payee '{}' already; --merge makes one of the two, which cannot be undone",
                  title),
          refused("there is a payer '{}' already; --merge makes one of the two, which cannot be undone",
                  title));
    }
    throw options.either(
        refused("there was a payee '{}'; --merge brings it back for these records, which cannot be undone",
                title),
        refused("there was a payer '{}'; --merge brings it back for these records, which cannot be undone",
                title));
  }
  const auto records = vendor.recordCount();
  done(vendor.rename(title));
  answerChange(session, vendor,
               (merges ? session.text("Merged '{}' into '{}'.", options.name, title)
                       : session.text("Renamed '{}' to '{}'.", options.name, title)) +
                   followed(session, records));
}

void moveVendorRecords(Session& session, const VendorOptions& options) {
  Vendor from = soleVendorNamed(session, options.name, options, true);
  const Vendor to = soleVendorNamed(session, options.other, options);
  const auto records = from.recordCount();
  done(from.moveDataTo(to));
  answerChange(
      session, *Vendor::getVendor(session.root(), to.pk, to.type),
      session.text("Moved what '{}' had to '{}'.", from.title, to.title) + followed(session, records));
}

std::string orderText(Session& session, const std::string& mode) {
  if (mode == "0") return session.text("Listed in your own order.");
  if (mode == "1") return session.text("Listed by use.");
  if (mode == "2") return session.text("Listed by name.");
  return session.text("Listed in an order that is not known: '{}'.", mode);
}

void orderVendors(Session& session, const VendorOptions& options) {
  MVAppRoot& root = session.root();
  std::vector<Vendor> list;
  std::vector<std::string> shown;
  for (const auto& name : options.names) {
    list.push_back(vendorNamed(session, name, options));
    shown.push_back(fmt::format("'{}'", name));
  }
  for (auto& vendor : liveVendors(session, options.type())) {
    const auto isNamed = std::ranges::find(options.names, vendor.title) != options.names.end();
    if (!isNamed) list.push_back(std::move(vendor));
  }
  done(Vendor::updateOrder(root, list));
  root.markRecentEditDate();
  const auto mode = Vendor::getOrderType(root, options.type());
  if (session.options().json) {
    json::array rows;
    for (const auto& vendor : liveVendors(session, options.type())) rows.push_back(jsonOf(session, vendor));
    return session.printJson(json::object{{"orderType", mode}, {"vendors", std::move(rows)}});
  }
  session.answer(session.text("Put first in your own order: {}.", fmt::join(shown, ", ")) + " " +
                 orderText(session, mode));
}

void orderVendorsBy(Session& session, const VendorOptions& options) {
  MVAppRoot& root = session.root();
  if (!options.mode.empty()) {
    done(Vendor::setOrderType(root, options.type(), kOrders.at(options.mode)));
    root.markRecentEditDate();
  }
  const auto mode = Vendor::getOrderType(root, options.type());
  if (session.options().json) return session.printJson(json::object{{"orderType", mode}});
  session.answer(orderText(session, mode));
}

void recountVendors(Session& session, const VendorOptions& options) {
  const auto wrong = done(Vendor::updateUsingCounts(session.root(), options.type()));
  if (wrong > 0) session.root().markRecentEditDate();
  if (session.options().json) return session.printJson(json::object{{"corrected", wrong}});
  session.answer(wrong == 0 ? session.text("Every use count was right.")
                            : session.count("{} use count was wrong and is right now.",
                                            "{} use counts were wrong and are right now.", wrong));
}

void tidyVendors(Session& session) {
  MVAppRoot& root = session.root();
  const auto cleaned = done(clearDuplicateVendor(root));
  if (cleaned.removed > 0) {
    for (const int type : {Vendor::kPayee, Vendor::kPayer}) done(Vendor::updateUsingCounts(root, type));
  }
  if (cleaned.removed > 0 || cleaned.keys > 0) root.markRecentEditDate();
  if (session.options().json) {
    return session.printJson(json::object{{"titles", cleaned.titles},
                                          {"removed", cleaned.removed},
                                          {"records", cleaned.records},
                                          {"keys", cleaned.keys}});
  }
  if (cleaned.titles == 0 && cleaned.keys == 0)
    return session.answer(session.text("No vendor stands twice; nothing was changed."));
  std::string sentence;
  if (cleaned.titles > 0) {
    sentence = session.count("{} vendor stood more than once and is one now.",
                             "{} vendors stood more than once and are one each now.", cleaned.titles) +
               followed(session, cleaned.records);
  }
  if (cleaned.keys > 0) {
    sentence += (sentence.empty() ? "" : " ") + session.count("{} vendor had no key and has one now.",
                                                              "{} vendors had no key and have one now.",
                                                              cleaned.keys);
  }
  session.answer(sentence);
}

}  // namespace

void addVendorCommands(CommandLine& line) {
  CLI::App* vendor = line.add(line.app(), "vendor");
  vendor->require_subcommand(1);
  const auto command = [&](const char* name, void (*run)(Session&, const VendorOptions&)) {
    CLI::App* added = line.add(*vendor, name);
    auto options = std::make_shared<VendorOptions>();
    added->add_flag("--payer,--payers", options->payer, "Who pays you, instead of whom you pay");
    line.onRun(added, [options, run](Session& session) { run(session, *options); });
    return std::pair(added, options);
  };
  const auto takesName = [](auto& made, const char* what) {
    made.first->add_option("NAME", made.second->name, what)->required();
  };

  auto list = command("list", listVendors);
  auto* sections =
      list.first->add_flag("--sections", list.second->sections, "By name, in sections by letter");
  auto* byName = list.first->add_flag("--by-name", list.second->byName, "By name, in one list");
  auto* byUse = list.first->add_flag("--by-use", list.second->byUse, "Those used most first");
  auto* custom = list.first->add_flag("--custom", list.second->custom, "In your own order");
  for (auto* one : {sections, byName, byUse, custom}) {
    for (auto* other : {sections, byName, byUse, custom}) {
      if (one != other) one->excludes(other);
    }
  }
  auto show = command("show", showVendor);
  takesName(show, "Name of the vendor");
  auto add = command("add", addVendor);
  takesName(add, "Name of the vendor");
  auto remove = command("delete", deleteVendor);
  takesName(remove, "Name of the vendor");
  auto rename = command("rename", renameVendor);
  rename.first->add_option("OLD", rename.second->name, "Its name so far")->required();
  rename.first->add_option("NEW", rename.second->other, "Its new name")->required();
  rename.first->add_flag("--merge", rename.second->merge, "Make it one with the vendor of that name");
  auto move = command("move-records", moveVendorRecords);
  move.first->add_option("FROM", move.second->name, "Whose records; a deleted vendor's too")->required();
  move.first->add_option("TO", move.second->other, "Who has them from now on")->required();
  auto order = command("order", orderVendors);
  order.first->add_option("NAME", order.second->names, "Those that come first in your own order")->required();
  auto by = command("order-by", orderVendorsBy);
  by.first->add_option("MODE", by.second->mode, "What they are listed by")
      ->check(oneOf({"custom", "use", "name"}));
  command("recount", recountVendors);
  line.onRun(line.add(*vendor, "tidy"), tidyVendors);
}

}  // namespace moniva
