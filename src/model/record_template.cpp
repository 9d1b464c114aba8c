#include "model/record_template.h"

#include <boost/json.hpp>

#include "base/text.h"
#include "model/entry_checks.h"
#include "model/title.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// The columns of a template, as `RecordTemplate::read` takes them.
constexpr std::string_view kTemplate =
    "select eid, amount, amount2, currency2, type, note, account, subcategory, book, vendor, needReimburse,"
    " category, sweek, deleted from transactions";
/// What the JSON text of a template says under a key; nothing where it is no JSON.
constexpr std::string_view kSaid = "case when json_valid(sweek) then json_extract(sweek, '$.{}') end";

boost::json::object jsonIn(std::string_view text) {
  boost::json::error_code error;
  auto value = boost::json::parse(boost::json::string_view(text.data(), text.size()), error);
  return !error && value.is_object() ? std::move(value.get_object()) : boost::json::object();
}

std::string textAt(const boost::json::object& object, const char* key) {
  const auto* value = object.if_contains(key);
  if (value == nullptr || !value->is_string()) return {};
  return {value->get_string().data(), value->get_string().size()};
}

double numberAt(const boost::json::object& object, const char* key) {
  const auto* value = object.if_contains(key);
  boost::json::error_code error;
  return value != nullptr && value->is_number() ? value->to_number<double>(error) : 0;
}

}  // namespace

Result<RecordTemplate> RecordTemplate::of(MVAppRoot& root, const Spend& spend) {
  if (spend.type != kind::kIncome && spend.type != kind::kExpense) {
    return refuse("only an expense, income or a transfer can be kept as a template");
  }
  if (spend.advancedType != advanced::kPlain || spend.bid == kPaymentRow) {
    return refuse("a record of several parts cannot be kept as a template");
  }
  RecordTemplate made(root);
  made.type = spend.type == kind::kIncome ? kind::kIncomeTemplate : kind::kExpenseTemplate;
  made.amount = spend.amount;
  made.foreignAmount = spend.foreignAmount;
  made.foreignCurrency = spend.foreignCurrency;
  made.note = spend.note;
  made.account = spend.account;
  made.vendor = spend.vendor;
  made.category = spend.category;
  made.subcategory = spend.subcategory;
  made.book = spend.book;
  return made;
}

Result<RecordTemplate> RecordTemplate::of(MVAppRoot& root, const Transfer& transfer) {
  for (const double amount : {transfer.amountA, transfer.amountB}) {
    if (auto checked = checkAmount(amount); !checked) return tl::make_unexpected(checked.error());
  }
  RecordTemplate made(root);
  made.type = kind::kTransferTemplate;
  made.amount = transfer.amountA;
  made.amountB = transfer.amountB;
  made.serviceCharge = transfer.serviceCharge;
  made.acrossCurrencies = transfer.acrossCurrencies;
  made.note = transfer.note;
  made.account = transfer.accountA;
  made.vendor = transfer.accountB;
  return made;
}

void RecordTemplate::read(const Run& run) {
  eid = run.text(0);
  amount = run.real(1);
  foreignAmount = run.real(2);
  foreignCurrency = run.text(3);
  type = static_cast<int>(run.integer(4));
  note = run.text(5);
  account = run.text(6);
  subcategory = run.text(7) == kNoCategory ? std::string_view() : run.text(7);
  book = run.text(8);
  vendor = run.text(9);
  templateUsedTimes = static_cast<int>(run.integer(10));
  category = run.text(11);
  const auto said = jsonIn(run.text(12));
  templateURL = textAt(said, "templateURL");
  title = textAt(said, "title");
  serviceCharge = numberAt(said, "serviceCharge");
  amountB = numberAt(said, "amountB");
  acrossCurrencies = amountB > 0;
  if (!acrossCurrencies) amountB = difference(amount, serviceCharge);
  isDeleted = static_cast<int>(run.integer(13));
}

std::string RecordTemplate::kept() const {
  boost::json::object object{{"templateURL", templateURL}, {"title", title}};
  if (isTransfer()) {
    if (acrossCurrencies) object["amountB"] = amountB;
    if (serviceCharge > 0) object["serviceCharge"] = serviceCharge;
  }
  return boost::json::serialize(object);
}

std::vector<RecordTemplate> RecordTemplate::where(MVAppRoot& root, std::string_view condition,
                                                  std::initializer_list<Value> values) {
  std::vector<RecordTemplate> found;
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return found;
  Run run = db->query(fmt::format("{} where type in (81, 82, 83) and {}", kTemplate, condition), values);
  while (run.next()) found.emplace_back(root).read(run);
  return found;
}

std::optional<RecordTemplate> RecordTemplate::templateFromEID(MVAppRoot& root, std::string_view eid) {
  auto found = where(root, "eid = ?", {eid});
  if (found.empty()) return std::nullopt;
  return std::move(found.front());
}

std::optional<RecordTemplate> RecordTemplate::templateFromShortcut(MVAppRoot& root,
                                                                   std::string_view shortcut) {
  if (shortcut.empty()) return std::nullopt;
  auto found = where(root,
                     fmt::format("deleted = 0 and {} = ? order by editDate desc",
                                 fmt::format(fmt::runtime(kSaid), "templateURL")),
                     {shortcut});
  if (found.empty()) return std::nullopt;
  return std::move(found.front());
}

std::optional<RecordTemplate> RecordTemplate::withTitle(MVAppRoot& root, std::string_view title) {
  auto found =
      where(root, fmt::format("deleted = 0 and {} = ?", fmt::format(fmt::runtime(kSaid), "title")), {title});
  if (found.empty()) return std::nullopt;
  return std::move(found.front());
}

std::optional<RecordTemplate> RecordTemplate::deletedWithTitle(MVAppRoot& root, std::string_view title) {
  auto found = where(
      root,
      fmt::format("deleted = 1 and {} = ? order by editDate desc", fmt::format(fmt::runtime(kSaid), "title")),
      {title});
  if (found.empty()) return std::nullopt;
  return std::move(found.front());
}

Result<std::vector<RecordTemplate>> RecordTemplate::deletedOnes(MVAppRoot& root) {
  if (root.db().getDatabase() == nullptr) return refuse("the store is not open");
  return where(root, "deleted = 1 order by editDate desc", {});
}

Result<> RecordTemplate::checkOwnTitle(std::string_view text) const {
  if (auto checked = checkTitle(text, "a template"); !checked) return checked;
  const auto other = withTitle(*root_, text);
  if (other && other->eid != eid) return refuse("there is a template '{}' already", excerpt(text));
  return {};
}

Result<> RecordTemplate::add() {
  return atomically(*root_, [&](Connection&) -> Result<> {
    if (auto checked = checkOwnTitle(title); !checked) return checked;
    if (auto checked = checkAmount(amount); !checked) return checked;
    eid = root_->newIdentifier();
    templateURL = root_->newIdentifier();
    if (isTransfer()) {
      return write(*root_,
                   "insert into transactions (amount, type, note, repeat, account, editDate, eid, vendor, "
                   "sweek, edit_ipid) values (?, ?, ?, 'Not Repeat', ?, ?, ?, ?, ?,?)",
                   amount, type, note, account, root_->editStamp(), eid, vendor, kept(), root_->itsUDID());
    }
    return write(
        *root_,
        "insert into transactions (amount, type, note, repeat, account, editDate, eid, vendor, sweek,"
        " edit_ipid, category, subcategory, book, currency2, amount2)"
        " values (?, ?, ?, 'Not Repeat', ?, ?, ?, ?, ?,?, ?, ?, ?, ?, ?)",
        amount, type, note, account, root_->editStamp(), eid, vendor, kept(), root_->itsUDID(), category,
        subcategory.empty() ? kNoCategory : std::string_view(subcategory), book, foreignCurrency,
        foreignAmount);
  });
}

Result<> RecordTemplate::update() {
  return atomically(*root_, [&](Connection&) -> Result<> {
    const auto stored = templateFromEID(*root_, eid);
    if (!stored || stored->isDeleted != 0) return refuse("the template is not in the store");
    if (auto checked = checkOwnTitle(title); !checked) return checked;
    if (auto checked = checkAmount(amount); !checked) return checked;
    templateURL = stored->templateURL;
    return write(*root_,
                 "update transactions set amount = ?, type = ?, note = ?, account = ?, vendor = ?, sweek = ?,"
                 " category = ?, subcategory = ?, book = ?, currency2 = ?, amount2 = ?, editDate = ?,"
                 " edit_ipid = ? where eid = ?",
                 amount, type, note, account, vendor, kept(), category,
                 subcategory.empty() && !isTransfer() ? kNoCategory : std::string_view(subcategory), book,
                 foreignCurrency, foreignAmount, root_->editStamp(), root_->itsUDID(), eid);
  });
}

Result<> RecordTemplate::rename(const std::string& newTitle) {
  return atomically(*root_, [&](Connection&) -> Result<> {
    auto stored = templateFromEID(*root_, eid);
    if (!stored || stored->isDeleted != 0) return refuse("the template is not in the store");
    if (stored->title == newTitle) return refuse("'{}' is its title already", excerpt(newTitle));
    if (auto checked = checkOwnTitle(newTitle); !checked) return checked;
    stored->title = newTitle;
    auto written =
        write(*root_, "update transactions set sweek = ?, editDate = ?, edit_ipid = ? where eid = ?",
              stored->kept(), root_->editStamp(), root_->itsUDID(), eid);
    if (written) title = newTitle;
    return written;
  });
}

Result<> RecordTemplate::delete_() {
  return atomically(*root_, [&](Connection&) -> Result<> {
    const auto stored = templateFromEID(*root_, eid);
    if (!stored || stored->isDeleted != 0) return refuse("the template is not in the store");
    auto written =
        write(*root_, "update transactions set deleted = 1, editDate = ?, edit_ipid = ? where eid = ?",
              root_->editStamp(), root_->itsUDID(), eid);
    if (written) isDeleted = 1;
    return written;
  });
}

Result<> RecordTemplate::restore() {
  return atomically(*root_, [&](Connection&) -> Result<> {
    const auto stored = templateFromEID(*root_, eid);
    if (!stored || stored->isDeleted != 1) return refuse("the template is not deleted");
    if (auto checked = checkOwnTitle(stored->title); !checked) return checked;
    auto written =
        write(*root_, "update transactions set deleted = 0, editDate = ?, edit_ipid = ? where eid = ?",
              root_->editStamp(), root_->itsUDID(), eid);
    if (written) isDeleted = 0;
    return written;
  });
}

Result<std::vector<RecordTemplate>> transactionTemplates(MVAppRoot& root, const std::array<int, 3>& types) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(fmt::format("{} where deleted = 0 and (type = ? or type = ? or type = ?)"
                                  " order by needReimburse DESC, eid",
                                  kTemplate),
                      {types[0], types[1], types[2]});
  std::vector<RecordTemplate> found;
  while (run.next()) found.emplace_back(root).read(run);
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return found;
}

std::optional<std::string> eidOfTemplateShortcut(MVAppRoot& root, std::string_view shortcut) {
  auto found = RecordTemplate::templateFromShortcut(root, shortcut);
  if (!found) return std::nullopt;
  return std::move(found->eid);
}

}  // namespace moniva
