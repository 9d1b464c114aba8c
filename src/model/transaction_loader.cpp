#include "base/uuid.h"
#include "model/entry_checks.h"
#include "model/mv_transaction.h"
#include "model/record_entry.h"
#include "storage/transaction.h"
#include "storage/writes.h"

namespace moniva {
namespace {

constexpr std::string_view kRole =
    "select type, account, book, bid, transfereid, syear, subcategory, amount from transactions where eid = "
    "?";
constexpr std::string_view kFullSet =
    "amount, amount2, currency2, type, note, account, category, subcategory, datetime, barcode, "
    "repeat,"
    " repeat_end_date, repeat_seed, book, transfereid, paid, vendor, syear, bid, editDate, payDate, deleted, "
    "ipid,"
    " needReimburse, eid";

/// What the row is, before the rest of it is read.
struct Role {
  int type = 0;
  int advancedType = 0;
  bool isPayment = false;
  bool isBlank = false;
  std::string group;
};

bool isPlanPaid(Connection& db, std::string_view group) {
  Run run = db.query(
      "select 1 from transactions where transferEID = ? and bid = 10 and syear = 1003 and deleted < 2 limit "
      "1",
      {group});
  return run.next();
}

/// A payment by itself may have a UUID of its own.
bool hasItem(Connection& db, std::string_view group) {
  if (group.empty()) return false;
  Run run = db.query("select 1 from transactions where transferEID = ? and bid = 20 limit 1", {group});
  return run.next();
}

RecordKind kindOfPayment(Connection& db, const Role& role) {
  switch (role.advancedType) {
    case advanced::kInstallment:
      return RecordKind::installmentPayment;
    case advanced::kCart:
      return RecordKind::cartPayment;
    case advanced::kSpendWithPayment:
      return RecordKind::spendPayment;
    case advanced::kCost:
      return RecordKind::costPayment;
    case advanced::kPlain:
      return hasItem(db, role.group) ? RecordKind::unknownPayment : RecordKind::purePayment;
    default:
      return role.group.empty() ? RecordKind::purePayment : RecordKind::unknownPayment;
  }
}

RecordKind kindOf(Connection& db, const Role& role) {
  switch (role.type) {
    case kind::kIncomeTemplate:
    case kind::kExpenseTemplate:
    case kind::kTransferTemplate:
      return RecordKind::recordTemplate;
    case kind::kInstallmentSeed:
      return RecordKind::installmentSeed;
    case kind::kRepeatSeed:
      return RecordKind::repeatSeed;
    // Whatever their role: one that had none was taken for an item.
    case kind::kBorrowed:
    case kind::kLent:
    case kind::kRepaidToUs:
    case kind::kRepaidByUs:
      return RecordKind::debt;
    case kind::kTransferIn:
    case kind::kTransferOut:
      return RecordKind::transfer;
    case kind::kOverpayment:
      return RecordKind::plain;
    default:
      break;
  }
  if (role.isPayment) return kindOfPayment(db, role);
  if (role.type > kind::kFurtherExpense || role.group.empty()) return RecordKind::plain;
  switch (role.advancedType) {
    case advanced::kCost:
      return isPlanPaid(db, role.group) ? RecordKind::costInstallmentItem : RecordKind::costItem;
    case advanced::kCart:
      return RecordKind::cartItem;
    case advanced::kInstallment:
      return RecordKind::installmentItem;
    default:
      return RecordKind::singleItem;
  }
}

std::string titleOf(const std::shared_ptr<const MonivaAccount>& holder) {
  return holder ? holder->title : std::string();
}

/// A version 7 identifier begins with the moment it was made at; one made of another's knows none and has 0.
std::optional<Date> madeAt(std::string_view eid) {
  constexpr std::size_t kVersionPlace = 14;
  if (eid.size() != 36 || eid[kVersionPlace] != '7') return std::nullopt;
  std::uint64_t milliseconds = 0;
  for (std::size_t place = 0; place < 13; ++place) {
    if (place == 8) continue;
    const char digit = eid[place];
    const int value = digit >= '0' && digit <= '9'   ? digit - '0'
                      : digit >= 'a' && digit <= 'f' ? digit - 'a' + 10
                                                     : -1;
    if (value < 0) return std::nullopt;
    milliseconds = milliseconds * 16 + static_cast<std::uint64_t>(value);
  }
  if (milliseconds == 0) return std::nullopt;
  return Date{static_cast<double>(milliseconds) / 1000};
}

bool lacksRole(const Role& role) {
  return role.isBlank && (role.type < 50 || role.type == kind::kInstallmentSeed);
}

void mendRole(MVAppRoot& root, const std::string& eid) {
  root.platform().userDefaults->setString("1", "crashNeedFix");
  (void)write(root, "update transactions set bid = 20, edit_ipid = ?, editDate = ? where eid=?",
              root.itsUDID(), root.editStamp(), eid);
}

}  // namespace

/// Fills a transaction from its row: the columns, the display texts of its kind, and what reading mends.
class TransactionLoader {
 public:
  TransactionLoader(MVAppRoot& root, RecordNames& names, MVTransaction& into)
      : root_(root), names_(names), into_(into) {}

  /// Reads the row that stands in the run of kFullSet.
  void read(Connection& db, const Run& run, const Role& role) {
    into_.recordKind = kindOf(db, role);
    readAll(run);
    showTexts();
  }

  static Role roleIn(const Run& run) {
    return {.type = static_cast<int>(run.integer(3)),
            .advancedType = static_cast<int>(run.integer(17)),
            .isPayment = run.integer(18) == kPaymentRow,
            .isBlank = run.text(18).empty(),
            .group = std::string(run.text(14))};
  }

  /// Whether the row says that it is settled and cannot be: a plain record of a day that lies ahead.
  bool isSettledAhead() const {
    const bool isItem = into_.type_ == kind::kIncome || into_.type_ == kind::kExpense;
    return into_.recordKind == RecordKind::plain && isItem && into_.paid && into_.transferEID.empty() &&
           into_.deleted == 0 && liesAhead(root_.calendar(), into_.datetime, into_.timeZone, root_.now());
  }

  void mendPaid() {
    const auto mended = changeRecords(root_, RecordScope{into_.eid, {}, {}}, [&](Connection&) {
      return write(root_, "update transactions set paid = 0, editDate = ?, edit_ipid = ? where eid = ?",
                   root_.editStamp(), root_.itsUDID(), into_.eid);
    });
    if (mended) into_.paid = false;
  }

 private:
  void readAll(const Run& run) {
    into_.eid = run.text(24);
    into_.type_ = static_cast<int>(run.integer(3));
    into_.amount = run.real(0);
    into_.foreignAmount = run.real(1);
    into_.foreignCurrency = run.text(2);
    into_.note = run.text(4);
    into_.paymentAccount = names_.holder(run.text(5));
    const int type = typeOfNames(static_cast<int>(run.integer(17)));
    const auto chosen = run.text(7);
    into_.mvCategory = names_.category(chosen.empty() || chosen == kNoCategory ? run.text(6) : chosen, type);
    into_.datetime = run.date(8);
    into_.timeZone = run.text(9);
    into_.repeat = run.text(10);
    into_.repeatEndDate = run.date(11);
    into_.repeatSeed = run.text(12);
    into_.bookAccount = names_.holder(run.text(13));
    into_.transferEID = run.text(14);
    into_.paid = run.integer(15) != 0;
    readVendor(run.text(16), type);
    into_.advancedType = static_cast<int>(run.integer(17));
    into_.isPayment = run.integer(18) == kPaymentRow;
    into_.editedDate = run.date(19);
    into_.addedDate = madeAt(into_.eid).value_or(into_.editedDate);
    into_.payDate = run.date(20);
    into_.deleted = static_cast<int>(run.integer(21));
    into_.createdByTemplate = run.text(22) == "createdByTemplate";
    if (into_.recordKind == RecordKind::recordTemplate)
      into_.templateUsedTimes = static_cast<int>(run.integer(23));
    if (into_.recordKind == RecordKind::repeatSeed) into_.repeatBeginDate = into_.payDate;
    const auto& holder = into_.paymentAccount ? into_.paymentAccount : into_.bookAccount;
    into_.currency = holder ? holder->currency : std::string();
  }

  /// The kind by which categories and vendors are told apart: of a seed that of what it makes.
  int typeOfNames(int advancedType) const {
    switch (into_.type_) {
      case kind::kIncomeTemplate:
        return kind::kIncome;
      case kind::kExpenseTemplate:
      case kind::kInstallmentSeed:
        return kind::kExpense;
      case kind::kRepeatSeed:
        return advancedType;
      default:
        return into_.type_;
    }
  }

  void readVendor(std::string_view key, int type) {
    switch (into_.recordKind) {
      case RecordKind::debt:
        into_.people = key;
        return;
      case RecordKind::transfer:
        into_.paymentAccountB = names_.holder(key);
        return;
      default:
        break;
    }
    if (type == kind::kTransferOut || into_.type_ == kind::kTransferTemplate) {
      into_.paymentAccountB = names_.holder(key);
      return;
    }
    into_.vendor = names_.vendor(key, type);
  }

  void showTexts() {
    if (into_.mvCategory) into_.categoryString = into_.mvCategory->cateString();
    if (into_.vendor) into_.vendorString = into_.vendor->title;
    into_.noteString = into_.note;
    if (into_.type_ == kind::kOverpayment) {
      into_.noteString = root_.platform().localized(toTranslate("Payoff more last month"));
    } else if (into_.recordKind == RecordKind::debt) {
      into_.noteString = fmt::format("{} : {}", root_.platform().localized(headingOfDebt()), into_.people);
    } else if (into_.paymentAccountB) {
      const bool arrives = into_.type_ == kind::kTransferIn;
      into_.noteString =
          fmt::format("{} > {}", titleOf(arrives ? into_.paymentAccountB : into_.paymentAccount),
                      titleOf(arrives ? into_.paymentAccount : into_.paymentAccountB));
    } else if (into_.recordKind == RecordKind::unknownPayment) {
      into_.noteString = fmt::format(
          "[Error] {} / {} / {} / {} / {} / {} / {}", into_.type_, into_.advancedType, into_.eid,
          into_.transferEID, titleOf(into_.paymentAccount), titleOf(into_.bookAccount), into_.deleted);
    }
  }

  const char* headingOfDebt() const {
    if (into_.type_ == kind::kBorrowed) return toTranslate("Borrow from");
    return into_.type_ == kind::kLent ? toTranslate("Lend to") : toTranslate("Repay");
  }

  MVAppRoot& root_;
  RecordNames& names_;
  MVTransaction& into_;
};

bool MVTransaction::getAllValue(RecordNames& names) {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return false;
  Role role;
  {
    Run run = db->query(kRole, {eid});
    if (!run.next()) return false;
    role.type = static_cast<int>(run.integer(0));
    role.isBlank = run.text(3).empty();
    role.isPayment = run.integer(3) == kPaymentRow;
    role.group = run.text(4);
    role.advancedType = static_cast<int>(run.integer(5));
  }
  if (lacksRole(role)) mendRole(*root_, eid);
  TransactionLoader loader(*root_, names, *this);
  {
    Run run = db->query(fmt::format("select {} from transactions where eid = ?", kFullSet), {eid});
    if (!run.next()) return false;
    loader.read(*db, run, role);
  }
  if (loader.isSettledAhead()) loader.mendPaid();
  return true;
}

Result<> MVTransaction::transactionsWhere(MVAppRoot& root, std::string_view condition,
                                          std::span<const Value> arguments,
                                          const std::function<void(MVTransaction)>& take,
                                          RecordNames* names) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::optional<RecordNames> own;
  if (names == nullptr) names = &own.emplace(root);
  std::vector<std::string> withoutRole;
  std::vector<std::string> settledAhead;
  {
    const ReadTransaction snapshot(*db);
    const MVTransaction blank(root);
    Run run = db->query(fmt::format("select {} from transactions where {}", kFullSet, condition), arguments);
    while (run.next()) {
      MVTransaction row = blank;
      TransactionLoader loader(root, *names, row);
      const Role role = TransactionLoader::roleIn(run);
      loader.read(*db, run, role);
      if (lacksRole(role)) withoutRole.push_back(row.eid);
      if (loader.isSettledAhead()) {
        settledAhead.push_back(row.eid);
        row.paid = false;
      }
      take(std::move(row));
    }
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  // What reading mends is written when nothing is being read.
  for (const auto& eid : withoutRole) mendRole(root, eid);
  for (const auto& eid : settledAhead) (void)transactionFromEID(root, eid, names);
  return {};
}

}  // namespace moniva
