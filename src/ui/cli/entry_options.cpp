#include "ui/cli/entry_options.h"

#include <cmath>

#include "base/amount.h"
#include "base/text.h"
#include "calendar/parse_date.h"
#include "currency/amount_format.h"
#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "model/vendor.h"
#include "platform/files.h"
#include "platform/images.h"
#include "storage/transaction.h"
#include "ui/cli/command_error.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

Refusal noCategory(const std::string& title, const std::optional<std::string>& meant) {
  return Refusal(meant ? phrase("there is no category '{}'; did you mean '{}'? (--create makes a new one)",
                                printable(title), printable(*meant))
                       : phrase("there is no category '{}'; --create makes it", printable(title)));
}

Refusal noSubcategory(const std::string& title, const std::string& above,
                      const std::optional<std::string>& meant) {
  return Refusal(
      meant ? phrase("'{}' has no subcategory '{}'; did you mean '{}'? (--create makes a new one)",
                     printable(above), printable(title), printable(*meant))
            : phrase("'{}' has no subcategory '{}'; --create makes it", printable(above), printable(title)));
}

}  // namespace

void addRoundOption(CLI::App& command, AmountOptions& options) {
  command.add_flag("--round", options.round, "Round an amount with more decimals than its currency has");
}

double amountTyped(Session& session, const std::string& text, const std::string& currency,
                   const AmountOptions& options) {
  const double amount = typed(parseAmount(text));
  if (amount <= 0) throw notUnderstood("an amount must be above zero; '{}' is not", printable(text));
  const int digits = currencyDigits(currency);
  const double scale = std::pow(10.0, digits);
  const double rounded = std::round(amount * scale) / scale;
  if (std::abs(rounded - amount) > 1e-9 * std::max(1.0, amount)) {
    if (!options.round) {
      throw notUnderstood("{} is counted in {} decimals, and '{}' has more; --round rounds it", currency,
                          digits, printable(text));
    }
    if (rounded <= 0) throw notUnderstood("'{}' rounds to nothing", printable(text));
    session.say(session.text("{} is taken for {}.", session.amounts().formatWithCode(rounded, currency),
                             printable(text)));
    return rounded;
  }
  if (auto checked = checkAmount(amount); !checked) throw CommandError(CommandError::kUsage, checked.error());
  return amount;
}

Date momentTyped(Session& session, const std::string& text) {
  if (text.empty()) return session.now();
  const auto parsed = typed(parseDate(text, session.calendar(), session.now()));
  if (!parsed.hasTime && parsed.movedByClockChange) {
    throw refused("there is no {} in {}: the calendar went past that day there", printable(text),
                  session.calendar().zone());
  }
  const Date moment =
      parsed.hasTime ? parsed.date : session.calendar().dateWithTime(parsed.date, session.now());
  if (auto checked = checkRecordDate(session.calendar(), moment); !checked) {
    throw CommandError(CommandError::kUsage, checked.error());
  }
  if (parsed.hasTime && parsed.movedByClockChange) {
    session.say(session.text("The clock skips that time of day; {} is taken.", dateText(session, moment)));
  }
  if (parsed.hasTime && parsed.ambiguous) {
    session.say(session.text("The clock shows that time twice on that day; the first is taken."));
  }
  return moment;
}

Date dayTyped(Session& session, const std::string& text) {
  return session.calendar().dateBegin(momentTyped(session, text));
}

Date boundTyped(Session& session, const std::string& text, bool isEnd) {
  const auto parsed = typed(parseDate(text, session.calendar(), session.now()));
  if (parsed.hasTime || !isEnd) return parsed.date;
  return session.calendar().dateEnd(parsed.date);
}

std::string dayOf(Session& session, Date date, bool paid) {
  return paid ? dateText(session, date) : session.text("{} (pending)", dateText(session, date));
}

MVCategory categoryNamed(Session& session, const std::string& title, const MVCategory& above,
                         const MonivaAccount& book, bool create) {
  MVAppRoot& root = session.root();
  if (auto found = done(MVCategory::withTitle(root, title, above.type, above.pk))) return *found;
  if (!create) {
    std::vector<std::string> titles;
    const auto known = done(above.getAllSubcategoryList());
    for (const auto& category : known) titles.push_back(category.title);
    const auto meant = didYouMean(title, titles);
    throw CommandError(CommandError::kRefused,
                       above.isRoot() ? noCategory(title, meant) : noSubcategory(title, above.title, meant));
  }
  MVCategory made(root);
  made.title = title;
  made.type = above.type;
  made.parent = above.pk;
  done(made.addCate());
  // One that comes back may be off in the book that uses it now.
  if (MVCategory::booksDiffer(root)) done(made.enabledForBook(book));
  return made;
}

std::optional<ChosenCategory> categoryChosen(Session& session, const std::string& category,
                                             const std::string& subcategory, int type,
                                             const MonivaAccount& book, bool create) {
  if (category.empty()) {
    if (!subcategory.empty()) throw notUnderstood("a subcategory needs its --category");
    return std::nullopt;
  }
  MVAppRoot& root = session.root();
  const auto rootCate = MVCategory::rootCateForType(root, type);
  std::string top = wellFormed(category, "the category");
  std::string below = wellFormed(subcategory, "the subcategory");
  const auto cut = top.find('/');
  // A title may hold the mark of a path; one that is there is meant as it stands.
  if (cut != std::string::npos && below.empty() &&
      !done(MVCategory::withTitle(root, top, type, rootCate.pk)).has_value()) {
    below = std::string(trimBlanks(std::string_view(top).substr(cut + 1)));
    top = std::string(trimBlanks(std::string_view(top).substr(0, cut)));
    if (top.empty() || below.empty()) throw notUnderstood("'{}' is no category", printable(category));
  }
  const auto above = categoryNamed(session, top, rootCate, book, create);
  const auto chosen = below.empty() ? above : categoryNamed(session, below, above, book, create);
  return ChosenCategory{above.pk, chosen.pk, chosen.cateString()};
}

std::string vendorChosen(Session& session, const std::string& title, int type) {
  if (title.empty()) return {};
  Vendor vendor(session.root());
  vendor.title = wellFormed(title, "the vendor");
  vendor.type = Vendor::typeFor(type);
  done(vendor.add());
  return vendor.pk;
}

ImageFile imageFileTyped(const std::string& path) {
  const std::string shown = printable(path);
  std::error_code error;
  // Looked at before it is read: a device or a pipe might never end.
  const auto status = std::filesystem::status(path, error);
  if (!std::filesystem::exists(status)) {
    throw error && error != std::errc::no_such_file_or_directory
        ? refused("cannot read '{}': {}", shown, error.message())
        : refused("there is no file '{}'", shown);
  }
  if (std::filesystem::is_directory(status))
    throw refused("'{}' is a folder; name the image files in it", shown);
  if (!std::filesystem::is_regular_file(status)) throw refused("'{}' is no ordinary file", shown);
  const auto size = std::filesystem::file_size(path, error);
  if (const auto checked = checkImageBytes(error ? 1 : size); !checked) {
    throw refused("cannot take '{}': {}", shown, checked.error());
  }
  auto bytes = done(readFileIfPresent(path));
  if (!bytes) throw refused("there is no file '{}'", shown);
  return {std::move(*bytes), shown};
}

std::string recordTyped(Session& session, const std::string& text) {
  constexpr std::size_t kLeast = 4;
  Connection* db = session.root().db().getDatabase();
  if (db == nullptr) throw refused("the store is not open");
  {
    Run run = db->query("select 1 from transactions where eid = ?", {text});
    if (run.next()) return text;
  }
  std::vector<std::string> found;
  if (text.size() >= kLeast) {
    Run run = db->query("select eid from transactions where substr(eid, ?) = ? and deleted < 2 limit 2",
                        {-static_cast<std::int64_t>(text.size()), text});
    while (run.next()) found.emplace_back(run.text(0));
    if (!run.ok()) throw CommandError(CommandError::kRefused, db->refusal());
  }
  if (found.size() == 1) return found.front();
  if (found.empty()) throw refused("there is no record '{}'", printable(text));
  throw refused("several records end with '{}'; type more of the one you mean, such as {}", printable(text),
                found.front());
}

std::string shortEid(const std::string& eid) {
  constexpr std::size_t kShown = 8;
  return eid.size() > kShown ? eid.substr(eid.size() - kShown) : eid;
}

void changeStore(Session& session, const std::function<void()>& work) {
  Connection* db = session.root().db().getDatabase();
  if (db == nullptr) throw refused("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) throw CommandError(CommandError::kRefused, db->refusal());
  work();
  if (!transaction.commit()) throw CommandError(CommandError::kRefused, db->refusal());
  entriesChanged(session.root());
}

void tryStore(Session& session, const std::function<void()>& work, const std::function<void()>& show) {
  Connection* db = session.root().db().getDatabase();
  if (db == nullptr) throw refused("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) throw CommandError(CommandError::kRefused, db->refusal());
  work();
  show();
}

}  // namespace moniva
