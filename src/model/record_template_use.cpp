#include "base/text.h"
#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "model/record_template.h"

// Records made from templates, and templates made from transfers.
namespace moniva {
namespace {

/// The book or account of a template, if it takes records of the type.
Result<MonivaAccount> takingRecords(MVAppRoot& root, const std::string& key, int recordType) {
  auto row = MonivaAccount::getAccountWithPK(root, key);
  if (!row || row->isDeleted != 0) {
    if (!row) return refuse("a book or account of the template is gone");
    return row->isBook() ? refuse("the book '{}' of the template is deleted", excerpt(row->title))
                         : refuse("the account '{}' of the template is deleted", excerpt(row->title));
  }
  if (!row->enabled) {
    return row->isBook() ? refuse("the book '{}' of the template is closed", excerpt(row->title))
                         : refuse("the account '{}' of the template is closed", excerpt(row->title));
  }
  if (row->isAccount()) {
    if (auto tracked = checkTracked(*row, recordType); !tracked) return tl::make_unexpected(tracked.error());
  }
  return std::move(*row);
}

}  // namespace

Result<Spend> RecordTemplate::spend() const {
  if (isTransfer()) return refuse("'{}' is a template of a transfer", excerpt(title));
  Spend made(*root_);
  made.type = recordType();
  made.ipid = kCreatedByTemplate;
  made.amount = amount;
  made.foreignAmount = foreignAmount;
  made.foreignCurrency = foreignCurrency;
  made.note = note;
  made.account = account;
  made.vendor = vendor;
  made.category = category;
  made.subcategory = subcategory;
  made.book = book;
  for (const auto& key : {book, account}) {
    if (key.empty()) continue;
    if (auto row = takingRecords(*root_, key, made.type); !row) return tl::make_unexpected(row.error());
  }
  return made;
}

Result<Transfer> RecordTemplate::transfer() const {
  if (!isTransfer()) return refuse("'{}' is no template of a transfer", excerpt(title));
  const auto from = takingRecords(*root_, account, kind::kTransferOut);
  if (!from) return tl::make_unexpected(from.error());
  const auto to = takingRecords(*root_, vendor, kind::kTransferIn);
  if (!to) return tl::make_unexpected(to.error());
  Transfer made(*root_);
  made.ipid = kCreatedByTemplate;
  made.accountA = account;
  made.accountB = vendor;
  made.amountA = amount;
  made.serviceCharge = serviceCharge;
  made.acrossCurrencies = from->currency != to->currency;
  if (made.acrossCurrencies && !acrossCurrencies) {
    return refuse(
        "'{}' and '{}' keep different currencies by now, and the template does not say what arrives",
        excerpt(from->title), excerpt(to->title));
  }
  made.amountB = made.acrossCurrencies ? amountB : difference(amount, serviceCharge);
  made.note = note;
  made.templateEID = eid;
  return made;
}

template <class Entry>
Result<> RecordTemplate::enter(Entry& entry) {
  return atomically(*root_, [&](Connection&) -> Result<> {
    const auto stored = templateFromEID(*root_, eid);
    if (!stored || stored->isDeleted != 0) return refuse("the template is not in the store");
    entry.ipid = kCreatedByTemplate;
    if (auto recorded = recordEntry(*root_, entry); !recorded) return recorded;
    auto counted = write(*root_,
                         "update transactions set needReimburse = needReimburse + 1, editDate = ?, edit_ipid "
                         "= ? where eid = ?",
                         root_->editStamp(), root_->itsUDID(), eid);
    if (counted) templateUsedTimes = stored->templateUsedTimes + 1;
    return counted;
  });
}

Result<> RecordTemplate::use(Spend& spend) {
  return enter(spend);
}

Result<> RecordTemplate::use(Transfer& transfer) {
  return enter(transfer);
}

std::optional<std::string> Transfer::getShortcut() const {
  const auto kept = RecordTemplate::templateFromEID(*root_, templateEID);
  if (!kept) return std::nullopt;
  return kept->templateURL;
}

std::optional<std::string> Transfer::getTemplateTitle() const {
  const auto kept = RecordTemplate::templateFromEID(*root_, templateEID);
  if (!kept) return std::nullopt;
  return kept->title;
}

std::optional<Transfer> Transfer::transferFromTemplateShortcut(MVAppRoot& root, std::string_view shortcut) {
  const auto kept = RecordTemplate::templateFromShortcut(root, shortcut);
  if (!kept) return std::nullopt;
  auto made = kept->transfer();
  if (!made) return std::nullopt;
  return std::move(*made);
}

Result<> Transfer::addTransferFromTemplate() {
  auto kept = RecordTemplate::templateFromEID(*root_, templateEID);
  if (!kept) return refuse("the template is not in the store");
  return kept->use(*this);
}

bool Transfer::hasSameTemplate(std::string_view title) const {
  const auto other = RecordTemplate::withTitle(*root_, title);
  return other && other->eid != templateEID;
}

Result<> Transfer::addTemplate(const std::string& title) {
  auto made = RecordTemplate::of(*root_, *this);
  if (!made) return tl::make_unexpected(made.error());
  made->title = title;
  auto added = made->add();
  if (added) templateEID = made->eid;
  return added;
}

Result<> Transfer::updateTemplate(const std::string& title) {
  auto made = RecordTemplate::of(*root_, *this);
  if (!made) return tl::make_unexpected(made.error());
  made->eid = templateEID;
  made->title = title;
  return made->update();
}

}  // namespace moniva
