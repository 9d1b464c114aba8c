#include "ui/cli/record_texts.h"

#include <fmt/ranges.h>

#include <algorithm>

#include "calendar/date_texts.h"
#include "ui/cli/command_error.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

/// Texts that are not blank, each once, in their order.
class TextsOnce {
 public:
  void add(std::string text) {
    if (!text.empty() && std::ranges::find(texts_, text) == texts_.end()) texts_.push_back(std::move(text));
  }
  std::string joined(std::string_view by = ", ") const { return fmt::format("{}", fmt::join(texts_, by)); }

 private:
  std::vector<std::string> texts_;
};

std::string titleOf(const std::shared_ptr<const MonivaAccount>& holder) {
  return holder ? printable(holder->title) : std::string();
}

}  // namespace

RecordTexts::RecordTexts(Session& session, RecordNames& names, const RecordWhole& whole)
    : RecordTexts(session, names, whole, whole.currency(names)) {}

RecordTexts::RecordTexts(Session& session, RecordNames& names, const RecordWhole& whole, std::string currency)
    : session_(session),
      names_(names),
      whole_(whole),
      currency_(currency.empty() ? session.defaultCurrency() : std::move(currency)) {}

std::string RecordTexts::money(double amount) const {
  return session_.amounts().format(amount, currency_);
}

std::string RecordTexts::amount() const {
  std::string text = money(whole_.total());
  if (const auto& row = whole_.head; whole_.group.items.size() == 1) {
    text += foreignText(session_, row.amount2, row.foreignCurrency);
  }
  return text;
}

std::string RecordTexts::categories() const {
  TextsOnce texts;
  for (const auto& item : whole_.group.items) {
    const auto category =
        names_.category(item.subcategory.empty() ? item.category : item.subcategory, item.type);
    if (category) texts.add(printable(category->cateString()));
  }
  return texts.joined();
}

std::string RecordTexts::vendors() const {
  TextsOnce texts;
  for (const auto& item : whole_.group.items) {
    const auto vendor = names_.vendor(item.vendor, item.type);
    if (vendor && !vendor->isNoVendor()) texts.add(printable(vendor->title));
  }
  return texts.joined();
}

std::string RecordTexts::books(std::string_view quote) const {
  TextsOnce texts;
  for (const auto& item : whole_.group.items) {
    const auto title = titleOf(names_.holder(item.book));
    if (!title.empty()) texts.add(fmt::format("{0}{1}{0}", quote, title));
  }
  return texts.joined();
}

std::string RecordTexts::account(const std::string& key) const {
  return titleOf(names_.holder(key));
}

std::string RecordTexts::accounts() const {
  TextsOnce texts;
  for (const auto& key : whole_.accounts()) texts.add(account(key));
  return texts.joined();
}

std::string RecordTexts::vendorOrNote() const {
  const auto vendor = vendors();
  return vendor.empty() ? printable(whole_.head.note) : vendor;
}

std::string RecordTexts::marks() const {
  TextsOnce texts;
  const auto& group = whole_.group;
  const auto items = static_cast<std::int64_t>(group.items.size());
  if (whole_.isBarePayment()) texts.add(session_.text("payment"));
  if (whole_.isPlan()) {
    const auto paid = std::ranges::count(group.items, true, &TransactionItem::paid);
    texts.add(session_.text("{}/{} paid", paid, items));
  } else if (whole_.isSpread()) {
    texts.add(session_.count("spread over {} month", "spread over {} months", items));
  } else if (whole_.isCart()) {
    texts.add(session_.count("cart, {} item", "cart, {} items", items));
  }
  if (!whole_.isCompound() && !whole_.head.paid) texts.add(session_.text("pending"));
  if (whole_.isCompound() && whole_.open() > 0) texts.add(session_.text("{} open", money(whole_.open())));
  if (const double back = whole_.refunded(); back > 0) texts.add(session_.text("refunded {}", money(back)));
  if (std::ranges::any_of(group.items, &TransactionItem::needReimburse)) {
    texts.add(session_.text("to be reimbursed"));
  }
  return texts.joined("; ");
}

std::string RecordTexts::noun() const {
  const auto items = static_cast<std::int64_t>(whole_.group.items.size());
  if (whole_.isBarePayment()) return session_.text("a payment {}", amount());
  if (whole_.isPlan()) {
    return session_.count("a plan of {} instalment", "a plan of {} instalments", items) + ", " + amount();
  }
  if (whole_.isSpread()) {
    return session_.count("a cost spread over {} month", "a cost spread over {} months", items) + ", " +
           amount();
  }
  if (whole_.isCart()) {
    return session_.count("a cart of {} item", "a cart of {} items", items) + ", " + amount();
  }
  return whole_.type() == kind::kIncome ? session_.text("income {}", amount())
                                        : session_.text("an expense {}", amount());
}

std::string RecordTexts::paidFrom() const {
  TextsOnce texts;
  if (whole_.isPlan() || whole_.isSpread() || !whole_.isCompound()) {
    texts.add(accounts());
  } else {
    const auto payments = whole_.regularPayments();
    const bool apart = payments.size() > 1 || whole_.open() > 0;
    for (const auto& key : whole_.accounts()) {
      double paid = 0;
      for (const auto& payment : payments) {
        if (payment.paid && payment.account == key) paid += payment.amount;
      }
      const auto from = account(key);
      if (from.empty() || paid <= 0) continue;
      texts.add(apart ? fmt::format("{} ({})", from, money(paid)) : from);
    }
  }
  const auto from = texts.joined();
  if (from.empty()) return {};
  return whole_.type() == kind::kIncome ? session_.text(", to {}", from)
                                        : session_.text(", paid from {}", from);
}

std::string RecordTexts::day() const {
  return dayOf(session_, whole_.head.datetime, whole_.isCompound() || whole_.head.paid);
}

std::string RecordTexts::dates() const {
  if (whole_.isPlan() && !whole_.group.items.empty()) {
    return session_.text(", from {} to {}", shortDate(session_, whole_.group.items.front().datetime),
                         shortDate(session_, whole_.group.items.back().datetime));
  }
  return session_.text(", on {}", day());
}

std::string RecordTexts::details() const {
  const bool isIncome = whole_.type() == kind::kIncome;
  std::string line;
  if (const auto text = categories(); !text.empty()) line += ", " + text;
  if (const auto text = vendors(); !text.empty()) {
    line += isIncome ? session_.text(", from {}", text) : ", " + text;
  }
  line += paidFrom();
  const auto plainly = books("");
  const auto quoted = books("'");
  if (!whole_.isPlan() && quoted == fmt::format("'{}'", plainly)) {
    return line + session_.text(", on {}, in '{}'.", day(), plainly);
  }
  line += dates();
  if (!quoted.empty()) line += session_.text(", in {}", quoted);
  return line + ".";
}

std::string RecordTexts::stillOpen() const {
  if (!whole_.isCompound() || whole_.open() <= 0) return {};
  return " " + session_.text("{} is still to be paid.", money(whole_.open()));
}

std::string RecordTexts::now(const std::string& eid) const {
  const auto& items = whole_.group.items;
  const auto part = std::ranges::find(items, eid, &TransactionItem::eid);
  if (part == items.end() || (items.size() == 1 && !whole_.group.seed)) return described() + stillOpen();
  const auto place = part - items.begin() + 1;
  const auto count = items.size();
  const auto date = dayOf(session_, part->datetime, part->paid);
  if (whole_.isPlan()) {
    return session_.text("instalment {} of {}, {}, on {}.", place, count, money(part->amount), date) + " " +
           session_.text("The plan comes to {}.", amount()) + stillOpen();
  }
  if (whole_.isSpread()) {
    return session_.text("share {} of {}, {}, on {}.", place, count, money(part->amount), date) + " " +
           session_.text("The cost comes to {}.", amount()) + stillOpen();
  }
  RecordWhole alone;
  alone.head = *part;
  alone.head.connectionUUID.clear();
  alone.group.items.push_back(*part);
  // What paid for the cart tells the currency of its items.
  return RecordTexts(session_, names_, alone, currency_).described() + " " +
         session_.text("Its cart comes to {}.", amount()) + stillOpen();
}

std::string RecordTexts::currencyNotes() const {
  std::vector<std::string> keys = whole_.accounts();
  for (const auto& refund : whole_.refunds()) keys.push_back(refund.account);
  for (const auto& item : whole_.group.items) keys.push_back(item.book);
  TextsOnce texts;
  for (const auto& key : keys) {
    const auto holder = names_.holder(key);
    if (!holder || holder->currency == currency_) continue;
    texts.add(session_.text("'{}' is kept in {}; the amount counts there as it stands.",
                            printable(holder->title), holder->currency));
  }
  const auto notes = texts.joined(" ");
  return notes.empty() ? notes : " " + notes;
}

std::string foreignText(Session& session, double amount, const std::string& code) {
  return code.empty() ? std::string() : fmt::format(" ({})", session.amounts().formatWithCode(amount, code));
}

RecordWhole wholeRecord(Session& session, const std::string& eid) {
  if (auto whole = done(RecordWhole::of(session.root(), eid))) return std::move(*whole);
  const auto row = TransactionItem::fromEID(session.root(), eid);
  if (!row || row->isDeleted > 1) throw refused("there is no record '{}'", eid);
  throw refused("'{}' is neither an expense nor income; see it with: moniva show {}", shortEid(eid),
                shortEid(eid));
}

std::string shortDate(Session& session, Date date) {
  return stringOfDateMediumStyle(session.calendar(), date);
}

void answerChanged(Session& session, const std::string& eid,
                   const std::function<std::string(const RecordTexts&)>& say) {
  RecordNames names(session.root());
  const auto whole = wholeRecord(session, eid);
  if (session.options().json) return session.printJson(jsonOf(session, names, whole));
  const RecordTexts texts(session, names, whole);
  session.answer(say(texts) + texts.currencyNotes());
}

}  // namespace moniva
