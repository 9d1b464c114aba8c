#pragma once

#include <CLI/App.hpp>
#include <memory>
#include <optional>
#include <string>

#include "model/moniva_account.h"
#include "model/mv_category.h"
#include "model/photos.h"
#include "ui/cli/session.h"

/// What the commands for records have in common: amounts, moments, categories, vendors and records as typed.
namespace moniva {

/// How an amount may be typed: "--round" allows more decimals than its currency has.
struct AmountOptions {
  bool round = false;
  /// What one of the foreign currency is in the record's, as typed; "" for the rate known.
  std::string rate;
};
void addRoundOption(CLI::App& command, AmountOptions& options);

/// The amount typed, above zero, in the currency of the code. Ends the command for what is no amount, is
/// zero, or has more decimals than the currency, unless it may be rounded, which the person is told.
double amountTyped(Session& session, const std::string& text, const std::string& currency,
                   const AmountOptions& options = {});
/// The amount of a record that may keep what it was in another currency: "12.50", "10+2.50", "20 USD".
struct EntryAmount {
  double amount = 0;  ///< above zero, in the record's currency
  double foreignAmount = 0;
  std::string foreignCurrency;  ///< "" for none
  double rate = 0;              ///< what one of the foreign currency was taken for; 0 for none
};
/// Reads it; a foreign amount is converted at the rate typed with --rate, else at the rate known, and the
/// person is told. Ends the command as amountTyped does, and where no rate is known.
EntryAmount entryAmountTyped(Session& session, const std::string& text, const std::string& currency,
                             const AmountOptions& options = {});

/// The moment a record is made for: typed with a time, or that day at the present time of day; the present
/// for a blank text. Ends the command for what is no date and for years before 1900 or after 2200.
Date momentTyped(Session& session, const std::string& text);
/// The beginning of a day typed.
Date dayTyped(Session& session, const std::string& text);
/// The moment typed that a period begins or ends with: a day counts as a whole.
Date boundTyped(Session& session, const std::string& text, bool isEnd);
/// "Feb 29, 2024 14:30", with a mark where the record waits for its day.
std::string dayOf(Session& session, Date date, bool paid);

/// The category below `above` (a root for a top-level one) of that title; made when it is new and `create` is
/// set, and on in the book then. Ends the command for none, with the nearest there is.
MVCategory categoryNamed(Session& session, const std::string& title, const MVCategory& above,
                         const MonivaAccount& book, bool create);
/// A category and, below it, a subcategory as typed (`-c Food -s Bakery`); nothing when both are blank. A
/// category may be typed as a path too: "Food/Bakery".
struct ChosenCategory {
  std::string category;     ///< key of the top-level one
  std::string subcategory;  ///< key of the one chosen
  std::string text;         ///< "Food - Bakery"
};
std::optional<ChosenCategory> categoryChosen(Session& session, const std::string& category,
                                             const std::string& subcategory, int type,
                                             const MonivaAccount& book, bool create);
/// The key of the vendor of that title for records of the type, added when it is new; blank for a blank
/// title.
std::string vendorChosen(Session& session, const std::string& title, int type);

/// The content of the image file of that path; ends the command for what is no file that may be one.
ImageFile imageFileTyped(const std::string& path);

/// The `eid` of the record typed: all of it, or its last characters (at least four) where they are those of
/// one record only. Ends the command for none and for several.
std::string recordTyped(Session& session, const std::string& text);
/// How a list shows an `eid`: its last characters, which suffice to type it.
std::string shortEid(const std::string& eid);

/// One transaction for a whole command: names are looked up, checked and written with the write lock in hand.
/// What the work throws undoes it all. The program is told of the change when it was kept.
void changeStore(Session& session, const std::function<void()>& work);
/// The same, but nothing is kept: to show what the work would come to. `show` is called before it is undone.
void tryStore(Session& session, const std::function<void()>& work, const std::function<void()>& show);

}  // namespace moniva
