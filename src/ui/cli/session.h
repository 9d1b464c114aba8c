#pragma once

#include <fmt/format.h>

#include <filesystem>
#include <iosfwd>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <tuple>

#include "app/main_app_delegate.h"
#include "currency/amount_format.h"
#include "currency/amount_reader.h"
#include "currency/currency_manager.h"
#include "platform/posix/desktop_notifications.h"
#include "ui/cli/progress.h"
#include "ui/cli/style.h"

namespace moniva {

/// What every command takes.
struct GlobalOptions {
  std::string data;
  std::string now;
  std::string timezone;
  std::string locale;
  std::string passcode;
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  ColorMode color = ColorMode::automatic;
};

/// The streams a command writes to, and what is known of them.
struct Terminal {
  std::ostream& out;
  std::ostream& err;
  bool outIsTerminal = false;
  bool errIsTerminal = false;
  std::size_t width = 0;      ///< cells of a line of `out`; 0 where lines may be as long as they like
  std::size_t errWidth = 80;  ///< cells of a line of `err`
};

/// The message as it is safe on a terminal, its lines kept: see printable().
std::string printableLines(std::string_view message);

/// The program's texts in the language of a locale; a blank one means that of the environment. A locale
/// nobody knows gives English.
std::unique_ptr<Localization> textsFor(const std::string& locale);

/// One run of the program from the command line: the platform by the options, the store once it is asked for,
/// and the ways to print. Every command that uses the store is a launch and ends as entering the background.
class Session {
 public:
  Session(GlobalOptions options, Terminal terminal);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Reads the options that need understanding (the moment, the zone, the locale); ends the command where one
  /// is not understood. What only the environment says is never refused: where it is not known the host's own
  /// zone and the default locale are used, and the person is told. Touches no file.
  void prepare();
  /// The folder the store is in; ends the command when nobody says which.
  const std::filesystem::path& dataFolder();
  /// The settings of the device, which are kept there, read anew; ends the command where they cannot be.
  std::unique_ptr<UserDefaults> settingsOfDevice();
  /// Leaves what belongs to the day to a later launch: the command is about the store as it is.
  void holdDaysWorkBack() { holdsDaysWorkBack_ = true; }
  /// Launches: makes or opens the store and does what is due.
  void launch();
  /// Launches up to the lock and leaves it to the caller to unlock.
  void launchLocked();
  /// Gives the passcode of the options to a locked store; ends the command when it is missing or wrong.
  void unlock();
  /// Enters the background; safe to call when nothing was launched. The end of the session does it as well.
  void leave();

  const GlobalOptions& options() const { return options_; }
  Platform& platform() { return *platform_; }
  MVAppRoot& root() { return *root_; }
  /// Shows the reminders that have come due, also those that were tried in vain a moment ago. Answers how
  /// many were shown since the launch, and why others were not.
  NotificationDelivery deliverReminders();
  /// How bills stood when the command got the store, for refreshReminders; null where that is not known.
  const BillBasis* billsAtLaunch() const;
  /// Whether this command has a store: some have none.
  bool hasStore() const { return root_ != nullptr; }
  MainAppDelegate& app() { return *app_; }
  const Calendar& calendar() const { return *platform_->calendar; }
  Date now() const { return platform_->now(); }

  const Terminal& terminal() const { return terminal_; }
  std::ostream& out() { return terminal_.out; }
  /// Cells there are for a line of output; as many as there can be when it goes to no terminal.
  std::size_t width() const {
    return terminal_.width > 0 ? terminal_.width : std::numeric_limits<std::size_t>::max();
  }
  const Style& style() const { return style_; }
  const AmountFormat& amounts() const { return *amounts_; }
  /// Reads amounts by the marks and digits of the person's locale.
  const AmountReader& amountReader();
  /// How this session says the program's texts.
  Translate translate() const {
    return [this](std::string_view english) { return platform_->localized(english); };
  }
  /// A text in the person's language, its slots filled: text("Added the book '{}'.", title).
  template <class... Arguments>
  std::string text(fmt::format_string<Arguments...> english, Arguments&&... arguments) const {
    const fmt::string_view form = english;
    return filled(platform_->localized({form.data(), form.size()}), form,
                  fmt::make_format_args(arguments...));
  }
  /// The same for a text that counts `n` things: count("{} book", "{} books", n). Its one slot takes `n`.
  std::string count(fmt::format_string<std::int64_t&> one, fmt::format_string<std::int64_t&> many,
                    std::int64_t n) const {
    const fmt::string_view single = one;
    const fmt::string_view several = many;
    return filled(platform_->localization->localized({single.data(), single.size()},
                                                     {several.data(), several.size()}, n),
                  n == 1 ? single : several, fmt::make_format_args(n));
  }
  /// The same with more slots than the number's, all of which are given in their order.
  template <class First, class... Rest>
  std::string count(fmt::format_string<First, Rest...> one, fmt::format_string<First, Rest...> many,
                    std::int64_t n, First&& first, Rest&&... rest) const {
    const fmt::string_view single = one;
    const fmt::string_view several = many;
    return filled(platform_->localization->localized({single.data(), single.size()},
                                                     {several.data(), several.size()}, n),
                  n == 1 ? single : several, fmt::make_format_args(first, rest...));
  }
  /// The currency of new books and accounts, and of money that goes through no account and belongs to no
  /// book, when none is named: the current book's, else the one a person here most likely counts in.
  std::string defaultCurrency() const;
  /// Whether that is a guess, for want of a book.
  bool guessesCurrency() const;
  /// The exchange rates of this device. To be asked for by a command that needs them only: where there are
  /// none yet, they begin to be fetched, unless the first to ask says otherwise.
  CurrencyManager& rates(FirstFetch first = FirstFetch::atOnce);
  /// The answer of a command that changed something: one line on standard output.
  void answer(std::string_view line);
  /// A line for the person on standard error; nothing with --quiet.
  void say(std::string_view message);
  /// The same once in a run.
  void sayOnce(const std::string& message);
  /// A line about what is wrong, on standard error, with --quiet too.
  void complain(std::string_view message);
  /// Prints one JSON value to standard output.
  void printJson(const boost::json::value& value);
  ProgressPlace progressPlace();
  /// Seconds of the real clock, for progress only.
  static double watch();

  /// The notices of the start-up and of the store go to standard error.
  void tellNotices();

 private:
  class Host;

  /// The translation with its slots filled; the English text when a translation's slots are not sound.
  static std::string filled(const std::string& translation, fmt::string_view english, fmt::format_args slots);

  std::string zone();
  std::string locale();
  /// The store as it is now: connection, its own writes, those of others.
  std::tuple<std::uint64_t, std::int64_t, std::int64_t> storeState() const;
  /// Takes note of how the store is as the command gets it.
  void noteStore();
  NotificationDelivery deliverDue(NotificationTry which);
  /// Brings reminders up to date where the command wrote, and shows what is due.
  void keepReminders();

  GlobalOptions options_;
  Terminal terminal_;
  /// Of terminal_.err: requests under way write their log from threads of their own.
  std::mutex errMutex_;
  Style style_;
  Style errStyle_;
  std::unique_ptr<Platform> platform_;
  std::optional<AmountFormat> amounts_;
  std::optional<AmountReader> amountReader_;
  std::unique_ptr<CurrencyManager> rates_;
  std::set<std::string> said_;
  std::unique_ptr<DoDB> db_;
  std::unique_ptr<Host> host_;
  std::unique_ptr<MVAppRoot> root_;
  std::unique_ptr<MainAppDelegate> app_;
  DesktopNotifications* desktop_ = nullptr;  ///< the platform's, once there is a store
  std::tuple<std::uint64_t, std::int64_t, std::int64_t> stateAtLaunch_{};
  std::optional<BillBasis> billsAtLaunch_;
  NotificationDelivery delivered_;  ///< by the launch
  bool launched_ = false;
  bool holdsDaysWorkBack_ = false;
};

}  // namespace moniva
