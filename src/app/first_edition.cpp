// Stores of the first edition, which had no books: its records come into a book for each currency, with the
// kinds of today.

#include "app/do_db_updater.h"
#include "app/upgrade_support.h"
#include "currency/locale_utils.h"
#include "model/moniva_account.h"
#include "platform/files.h"
#include "storage/store_files.h"
#include "storage/writes.h"

namespace moniva {
namespace {

constexpr std::string_view kBookOfFirstEdition = "Data from Moniva";

/// The currency of a row of `transactions`: its account's, which it may name by its title, else the foreign
/// one it names, else the one bound.
constexpr std::string_view kCurrencyOfRow =
    "coalesce((select nullif(currency, '') from account where coalesce(nullif(oldTitle, ''), title) ="
    " transactions.account and transactions.account != '' order by coalesce(deleted, 0) != 0, eid limit 1),"
    " nullif(currency2, ''), ?)";

/// Keeps a copy of the store as it is; what is at its place already is set aside.
Result<> keepCopy(MVAppRoot& root, Connection& db) {
  if (db.inTransaction()) return refuse("a store cannot be copied in the middle of a change");
  const auto copy = root.platform().directories.documents / "moniva1Backup.dat";
  if (isPresent(copy)) {
    if (auto aside = setFileAside(copy, root.now()); !aside) return tl::make_unexpected(aside.error());
  }
  return copyStore(db, copy);
}

/// The rows of `account` become payment accounts of today. Records refer to them by title, which becomes the
/// key where only one has it.
Result<> mendAccounts(MVAppRoot& root) {
  auto written =
      write(root,
            "update account set oldTitle = title, editDate = ?, edit_ipid = ? where"
            " ifnull(oldTitle, '') = '' and ifnull(title, '') != '' and (select count(*) from account"
            " as other where other.title = account.title or other.oldTitle = account.title) = 1",
            root.editStamp(), root.itsUDID());
  if (!written) return written;
  return write(root,
               "update account set kind = 1, type = case when substr(type, 1, 1) = '_' then type else"
               " '_SavingAccount' end, editDate = ?, edit_ipid = ? where ifnull(kind, 0) = 0 and"
               " ifnull(isGroup, 0) = 0",
               root.editStamp(), root.itsUDID());
}

/// Currencies by how many of the records that need a book are in them, the commonest first.
Result<std::vector<std::string>> currenciesInUse(Connection& db, std::string_view otherwise) {
  std::vector<std::string> codes;
  Run run =
      db.query(fmt::format("select {} as code from transactions where (type = 1 or type = 0) and deleted = 0"
                           " and (book = '' or book is NULL) group by code order by count(*) desc, code",
                           kCurrencyOfRow),
               {otherwise});
  while (run.next()) codes.emplace_back(run.text(0));
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return codes;
}

/// The commonest currency of rows of `account`: of live books where the store had any, else of all rows, else
/// the one a person here most likely counts in.
Result<std::string> commonestCurrency(MVAppRoot& root, bool hadBooks) {
  const auto codes = loadedTexts(
      root,
      "select currency from account where currency != '' and (? = 0 or (kind = 2 and deleted = 0))"
      " group by currency order by count(*) desc, currency limit 1",
      {hadBooks ? 1 : 0});
  if (!codes) return tl::make_unexpected(codes.error());
  return codes->empty() ? LocaleUtils::guessedCurrency(root.platform()) : codes->front();
}

bool isTitleTaken(Connection& db, std::string_view title, int kind) {
  Run run = db.query("select 1 from account where title = ? and kind = ? and deleted = 0", {title, kind});
  return run.next();
}

/// The name-based keys are the same on every device that converts the store.
std::string keyOf(std::string_view what) {
  return nameBasedUuidV7(0, fmt::format("first edition {}", what));
}

/// Gives the row just inserted its key.
Result<> giveKey(MVAppRoot& root, std::string_view key) {
  return write(root,
               "update account set oldTitle = ?, editDate = ?, edit_ipid = ? where eid = last_insert_rowid()",
               key, root.editStamp(), root.itsUDID());
}

/// The book for that currency, with the title where it is free; answers its key. One that an earlier
/// conversion made is taken again.
Result<std::string> bookFor(MVAppRoot& root, Connection& db, const std::string& code) {
  const std::string key = keyOf(code);
  {
    Run run = db.query("select 1 from account where oldTitle = ?", {key});
    if (run.next()) {
      auto revived =
          write(root, "update account set deleted = 0, editDate = ?, edit_ipid = ? where oldTitle = ?",
                root.editStamp(), root.itsUDID(), key);
      return revived ? Result<std::string>(key) : tl::make_unexpected(revived.error());
    }
  }
  std::string title(kBookOfFirstEdition);
  if (isTitleTaken(db, title, kBookKind)) title += fmt::format(" ({})", code);
  const std::string untaken = title;
  for (int number = 2; isTitleTaken(db, title, kBookKind); ++number) {
    title = fmt::format("{} {}", untaken, number);
  }
  auto written = write(root,
                       "insert into account (title, currency, deleted, kind, type, ipid) values"
                       " (?,?,0,2,'_Book','BookDashboardControllerClassic')",
                       title, code);
  if (written) written = giveKey(root, key);
  if (written) written = write(root, "update account set incomeEnabled = 1112 where oldTitle = ?", key);
  return written ? Result<std::string>(key) : tl::make_unexpected(written.error());
}

/// A "Cash" account, unless there is one of that title. Income and expenses without an account are its own
/// where the store had no account to choose.
Result<> addCash(MVAppRoot& root, Connection& db, const std::string& code, std::string_view otherwise) {
  bool hadAccounts = false;
  {
    Run run = db.query("select 1 from account where kind = 1 and ifnull(isGroup, 0) = 0 limit 1");
    hadAccounts = run.next();
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  if (isTitleTaken(db, "Cash", kAccountKind)) return {};
  const std::string key = keyOf("Cash");
  auto written = write(root,
                       "insert into account (title, currency, deleted, kind, type) values"
                       " (?,?,0,1,'_SavingAccount')",
                       "Cash", code);
  if (written) written = giveKey(root, key);
  if (!written || hadAccounts) return written;
  return write(root,
               fmt::format("update transactions set account = ? where (type = 1 or type = 0) and"
                           " ifnull(account, '') = '' and {} = ?",
                           kCurrencyOfRow),
               key, otherwise, code);
}

/// Sets a value of the store's own table, the only row of its key.
Result<> keep(MVAppRoot& root, std::string_view key, std::string_view value) {
  auto written = write(root, "delete from monivaSys where key = ?", key);
  return written ? write(root, "insert into monivaSys (value,key,editDate) values(?,?,?)", value, key,
                         root.editStamp())
                 : written;
}

/// Books, accounts and what they hold.
Result<> moveIntoBooks(MVAppRoot& root, Connection& db, bool hadBooks) {
  if (auto mended = mendAccounts(root); !mended) return mended;
  const auto known = currenciesInUse(db, "");
  if (!known) return tl::make_unexpected(known.error());
  const auto kept = commonestCurrency(root, hadBooks);
  if (!kept) return tl::make_unexpected(kept.error());
  std::string otherwise = *kept;
  if (const auto used = std::ranges::find_if(*known, [](const auto& code) { return !code.empty(); });
      !hadBooks && used != known->end()) {
    otherwise = *used;
  }
  const auto codes = currenciesInUse(db, otherwise);
  if (!codes) return tl::make_unexpected(codes.error());
  Result<> written;
  if (!hadBooks) written = addCash(root, db, codes->empty() ? otherwise : codes->front(), otherwise);
  if (written) {
    written =
        write(root,
              "update account set currency = ?, editDate = ?, edit_ipid = ? where ifnull(currency, '') = ''"
              " and kind = 1",
              otherwise, root.editStamp(), root.itsUDID());
  }
  for (const auto& code : *codes) {
    if (!written) return written;
    const auto book = bookFor(root, db, code);
    if (!book) return tl::make_unexpected(book.error());
    written =
        write(root,
              fmt::format("update transactions set book = ? where (type = 1 or type = 0) and (book = '' or"
                          " book is NULL) and {} = ?",
                          kCurrencyOfRow),
              *book, otherwise, code);
  }
  return written;
}

/// The kinds of today, which every query selects: 0 was an expense, 1 income, 3 and 4 money that left and
/// arrived.
Result<> giveKindsOfToday(MVAppRoot& root) {
  auto written = write(root,
                       "update transactions set type = case type when 0 then 12 when 1 then 11 when 3 then 33"
                       " else 23 end, editDate = ?, edit_ipid = ? where type in (0, 1, 3, 4)",
                       root.editStamp(), root.itsUDID());
  if (!written) return written;
  // Categories were numbered the same way; rows that are none have parents of their own, like "_currency".
  return write(
      root,
      "update category set type = case type when 0 then 12 else 11 end, editDate = ?, edit_ipid = ?"
      " where type in (0, 1) and (ifnull(parent, '') = '_rootCate' or substr(ifnull(parent, ''), 1, 1)"
      " != '_')",
      root.editStamp(), root.itsUDID());
}

/// What makes a store of today of one without books. Where there are books already, records of the first
/// edition have strayed into it (by a sync, from a file), and all else of it is as its person keeps it.
Result<> convertHoldings(MVAppRoot& root) {
  return writeAll(root, {"update account set incomeEnabled = 1050",
                         // A book does not track what an account does.
                         "update account set incomeEnabled = 1112 where kind = 2",
                         "update category set type = 8 where type = 7",
                         "update photos set downloaded = 0, uploaded = 0, photolite = ''"});
}

Result<> convert(MVAppRoot& root, Connection& db) {
  const auto books = loadedTexts(
      root,
      "select 1 from account where kind = 2 and ifnull(title, '') || ifnull(oldTitle, '') != '' limit 1");
  if (!books) return tl::make_unexpected(books.error());
  const bool hadBooks = !books->empty();
  Result<> written;
  if (!hadBooks) written = write(root, "delete from transactions where deleted = 1");
  if (written) written = moveIntoBooks(root, db, hadBooks);
  if (written) {
    written = writeAll(root, {"update transactions set bid = 10 where type = 3 or type = 4",
                              "update transactions set bid = 20 where type = 0 or type = 1"});
  }
  if (written && !hadBooks) written = convertHoldings(root);
  if (written) written = giveKindsOfToday(root);
  // Transfers name the other account as their vendor now.
  if (written) written = fixedMissingTransferAccount(root);
  if (written) written = keep(root, "appVer", root.platform().info.version);
  if (written) written = keep(root, "appVerMB", "");
  if (written && !hadBooks) written = keep(root, "enabledCategoryForBook", "0");
  if (!written) return written;
  root.markRecentEditDate();
  root.updateRecentEditDateIfNeed();
  return countAllBalances(root);
}

}  // namespace

bool needsFixDataForMoniva1(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return false;
  Run run = db->query(
      "select count(eid) as eidCount from transactions where (type = 1 or type = 0) and deleted = 0 and "
      "(book ="
      " '' or book is NULL) order by editDate");
  return run.next() && run.integer(0) > 0;
}

Result<> fixDataForMoniva1IfNeed(MVAppRoot& root) {
  return needsFixDataForMoniva1(root) ? fixDataForMoniva1(root) : Result<>();
}

Result<> fixDataForMoniva1(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  if (auto kept = keepCopy(root, *db); !kept) return kept;
  return atomically(root, [&](Connection& writing) { return convert(root, writing); });
}

}  // namespace moniva
