#include "ui/cli/session.h"

#include <boost/json.hpp>
#include <chrono>
#include <ostream>

#include "app/crash_record.h"
#include "app/refresh_reminders.h"
#include "calendar/locale_name.h"
#include "calendar/parse_date.h"
#include "calendar/zone.h"
#include "currency/locale_utils.h"
#include "model/moniva_account.h"
#include "platform/files.h"
#include "platform/gettext_localization.h"
#include "platform/posix/curl_http_client.h"
#include "platform/posix/file_user_defaults.h"
#include "platform/posix/gd_images.h"
#include "platform/posix/host.h"
#include "storage/store_files.h"
#include "ui/cli/command_error.h"
#include "ui/cli/json_out.h"
#include "ui/cli/text_width.h"
#include "version.h"

namespace moniva {
namespace {

namespace fs = std::filesystem;

constexpr const char* kDefaultLocale = "en";

std::string stringOr(std::optional<std::string> value) {
  return value.value_or("");
}

/// The data folder: as told, else where programs of this host keep data.
Result<fs::path> dataFolderFor(const std::string& told) {
  if (!told.empty()) {
    std::error_code error;
    auto folder = fs::absolute(told, error);
    if (error) return refuse("the data folder '{}' cannot be reached from here: {}", told, error.message());
    return folder;
  }
  // A relative one would be another folder in every folder.
  if (const fs::path folder = stringOr(environment("XDG_DATA_HOME")); folder.is_absolute())
    return folder / "moniva";
  if (const fs::path home = stringOr(environment("HOME")); home.is_absolute())
    return home / ".local/share/moniva";
  return refuse(
      "where to keep data is not known, because HOME names no folder; name one with --data or MONIVA_DATA");
}

fs::path resourcesFolder() {
  return fs::path(programFolder()) / "../share/moniva";
}

Style styleFor(ColorMode mode, bool isTerminal) {
  const std::string noColor = stringOr(environment("NO_COLOR"));
  const std::string term = stringOr(environment("TERM"));
  const std::string colorTerm = stringOr(environment("COLORTERM"));
  return Style(mode, {.isTerminal = isTerminal, .noColor = noColor, .term = term, .colorTerm = colorTerm});
}

}  // namespace

std::unique_ptr<Localization> textsFor(const std::string& locale) {
  return std::make_unique<GettextLocalization>(resourcesFolder(), locale.empty() ? systemLocale() : locale);
}

std::string printableLines(std::string_view message) {
  std::string lines;
  for (;;) {
    const auto end = message.find('\n');
    lines += printable(message.substr(0, end));
    if (end == std::string_view::npos) return lines;
    lines += '\n';
    message.remove_prefix(end + 1);
  }
}

/// The front end of a terminal: it has no screens, and says so where one is asked for.
class Session::Host final : public AppHost {
 public:
  explicit Host(Session& session) : session_(session) {}

  void showProgressAlert(std::string_view) override {
    session_.say(session_.text("Bringing the store up to date ..."));
  }
  void deliverReminders() override {
    // A desktop without the service is no news at every command; what is due waits, and lists show it.
    session_.delivered_ = session_.deliverDue(NotificationTry::due);
  }
  void showAddTransaction(std::string_view type) override {
    session_.say(type == "addincome" ? session_.text("To add income: moniva spend add AMOUNT --income")
                                     : session_.text("To add an expense: moniva spend add AMOUNT"));
  }
  void showALertWhenImportDataBackup(const fs::path& path) override {
    session_.root().addNotice("'{}' is a backup; the command line cannot restore it. Nothing was changed.",
                              path.string());
  }
  void showALertWhenImportSharedData(const fs::path& path) override {
    session_.root().addNotice("'{}' is shared data; the command line cannot restore it. Nothing was changed.",
                              path.string());
  }

 private:
  Session& session_;
};

Session::Session(GlobalOptions options, Terminal terminal)
    : options_(std::move(options)), terminal_(terminal) {}

Session::~Session() {
  try {
    leave();
    // Blocks in the background use what goes before their queue does.
    if (app_) app_->settle();
  } catch (const CommandError& error) {
    complain(fmt::format("moniva: {}", error.in(translate())));
  } catch (const std::exception& error) {
    complain(fmt::format("moniva: {}", error.what()));
  }
}

void Session::prepare() {
  style_ = styleFor(options_.color, terminal_.outIsTerminal);
  errStyle_ = styleFor(options_.color, terminal_.errIsTerminal);
  platform_ = std::make_unique<Platform>();
  // First, so that what is refused below is said in the person's language.
  platform_->localization = textsFor(options_.locale);
  platform_->directories.resources = resourcesFolder();
  platform_->info.version = kVersion;
  platform_->calendar = typed(Calendar::make(zone(), locale()));
  amounts_ = typed(AmountFormat::make(platform_->calendar->locale()));
  platform_->clock = std::make_unique<SystemClock>();
  if (!options_.now.empty()) {
    const auto moment = typed(parseDate(options_.now, *platform_->calendar, platform_->clock->now()));
    platform_->clock = std::make_unique<FixedClock>(moment.date);
  }
  platform_->random = std::make_unique<SystemRandom>();
  platform_->images = std::make_unique<GdImages>();
  platform_->http = std::make_unique<CurlHttpClient>();
  if (options_.verbose) {
    platform_->log.setSink([this](std::string_view line) {
      const std::scoped_lock lock(errMutex_);
      terminal_.err << errStyle_.dim(printable(line)) << '\n';
    });
  }
}

std::string Session::zone() {
  if (!options_.timezone.empty()) return options_.timezone;
  const auto wanted = environmentZone();
  if (wanted && Zone::make(*wanted)) return *wanted;
  const std::string known = Zone::make(systemZone()) ? systemZone() : "UTC";
  if (wanted) say(text("The time zone '{}' of TZ is not known here; {} is used.", *wanted, known));
  return known;
}

std::string Session::locale() {
  if (!options_.locale.empty()) return options_.locale;
  const std::string wanted = systemLocale();
  if (localeName(wanted)) return wanted;
  say(text("The locale '{}' of the environment is not known here; {} is used.", wanted, kDefaultLocale));
  return kDefaultLocale;
}

const fs::path& Session::dataFolder() {
  auto& documents = platform_->directories.documents;
  if (documents.empty()) documents = done(dataFolderFor(options_.data));
  return documents;
}

std::unique_ptr<UserDefaults> Session::settingsOfDevice() {
  auto defaults = done(FileUserDefaults::open(dataFolder() / "settings.json", now()));
  if (!defaults->notice().empty()) say(defaults->notice());
  return defaults;
}

void Session::launchLocked() {
  const auto& documents = dataFolder();
  done(makeWritableFolder(documents));
  platform_->userDefaults = settingsOfDevice();
  auto desktop = std::make_unique<DesktopNotifications>(documents / "notifications.json", now());
  desktop_ = desktop.get();
  platform_->localNotifications = std::move(desktop);
  installUncaughtExceptionHandler(documents, [] { return SystemClock().now(); });
  db_ = std::make_unique<DoDB>(*platform_);
  host_ = std::make_unique<Host>(*this);
  root_ = std::make_unique<MVAppRoot>(*platform_, *db_);
  app_ = std::make_unique<MainAppDelegate>(*root_, *host_);
  app_->holdsDaysWorkBack = holdsDaysWorkBack_;
  if (options_.verbose) {
    app_->onStep = [this](std::string_view step) { platform_->log.line(fmt::format("== step {}", step)); };
  }
  auto started = app_->applicationDidFinishLaunching();
  tellNotices();
  if (!started) {
    std::string why;
    const auto path = db_->defaultPath();
    if (availabilityOf(path, why) == Availability::damaged) {
      started = refuse("{} (moniva doctor --set-aside keeps it under another name and begins a new store)",
                       started.error());
    }
  }
  done(std::move(started));
  launched_ = true;
  app_->settle();
  noteStore();
}

void Session::unlock() {
  if (!app_->isLocked()) return;
  if (options_.passcode.empty()) {
    throw refused("the store is locked; give its passcode with --passcode or MONIVA_PASSCODE");
  }
  if (!app_->unlock(options_.passcode)) throw refused("that is not the passcode");
  app_->settle();
  noteStore();
}

void Session::launch() {
  launchLocked();
  unlock();
  tellNotices();
}

void Session::leave() {
  // What is still asked of a network is not waited for.
  if (platform_) platform_->http->cancel();
  if (!launched_) return;
  launched_ = false;
  const std::string fault = db_->fileFault();
  if (fault.empty() && db_->isOpen() && !app_->isLocked()) keepReminders();
  app_->applicationDidEnterBackground();
  app_->applicationWillTerminate();
  tellNotices();
  db_->closeDatabase();
  if (!fault.empty()) {
    throw refused("the data file '{}' is damaged ({}); do not trust what was shown, and see: moniva doctor",
                  db_->databasePath().string(), fault);
  }
}

std::tuple<std::uint64_t, std::int64_t, std::int64_t> Session::storeState() const {
  Connection* db = db_->isOpen() ? db_->getDatabase() : nullptr;
  if (db == nullptr) return {};
  return {db->serial(), db->totalChanges(), db->dataVersion()};
}

void Session::noteStore() {
  stateAtLaunch_ = storeState();
  billsAtLaunch_.reset();
  if (!db_->isOpen()) return;
  if (auto basis = billBasis(*root_, now())) billsAtLaunch_ = std::move(*basis);
}

const BillBasis* Session::billsAtLaunch() const {
  // Another file has bills of its own.
  const bool isSameFile = std::get<0>(storeState()) == std::get<0>(stateAtLaunch_);
  return billsAtLaunch_ && isSameFile ? &*billsAtLaunch_ : nullptr;
}

NotificationDelivery Session::deliverDue(NotificationTry which) {
  return desktop_->deliverDue(calendar().civilTime(now()), which);
}

NotificationDelivery Session::deliverReminders() {
  auto delivery = deliverDue(NotificationTry::allThatWait);
  // What the launch could not show may be settled since, and then waits no more.
  if (!delivery.refused && delivery.shown == 0) delivery.refused = delivered_.refused;
  delivery.shown += delivered_.shown;
  delivered_ = {};
  return delivery;
}

void Session::keepReminders() {
  const auto refresh = [&](const BillBasis* basis) {
    if (auto kept = refreshReminders(*root_, basis); !kept) {
      root_->addNotice("Reminders could not be brought up to date: {}", kept.error());
    }
  };
  // What a damaged file had is scheduled again.
  const auto remakeWhatIsLost = [&] {
    const auto notice = desktop_->takeNotice();
    if (notice) root_->addNotice(*notice);
    if (notice) refresh(nullptr);
    return notice.has_value();
  };
  if (!remakeWhatIsLost() && storeState() != stateAtLaunch_) refresh(billsAtLaunch());
  host_->deliverReminders();
  remakeWhatIsLost();
}

std::string Session::filled(const std::string& translation, fmt::string_view english,
                            fmt::format_args slots) {
  try {
    return fmt::vformat(translation, slots);
  } catch (const fmt::format_error&) {
    return fmt::vformat(english, slots);
  }
}

const AmountReader& Session::amountReader() {
  if (!amountReader_) amountReader_.emplace(platform_->calendar->locale());
  return *amountReader_;
}

std::string Session::defaultCurrency() const {
  return guessesCurrency() ? LocaleUtils::guessedCurrency(*platform_) : root_->monivaAccount->currency;
}

bool Session::guessesCurrency() const {
  return !root_ || !root_->monivaAccount || root_->monivaAccount->currency.empty();
}

CurrencyManager& Session::rates(FirstFetch first) {
  if (!rates_) rates_ = std::make_unique<CurrencyManager>(*platform_, first);
  return *rates_;
}

void Session::answer(std::string_view line) {
  out() << printable(line) << '\n';
}

void Session::say(std::string_view message) {
  if (!options_.quiet) complain(message);
}

void Session::sayOnce(const std::string& message) {
  if (said_.insert(message).second) say(message);
}

void Session::complain(std::string_view message) {
  const std::scoped_lock lock(errMutex_);
  terminal_.err << printableLines(message) << '\n';
}

void Session::printJson(const boost::json::value& value) {
  out() << jsonText(value, JsonLayout::pretty) << '\n';
}

ProgressPlace Session::progressPlace() {
  return {.out = terminal_.err,
          .shown = terminal_.errIsTerminal && !options_.quiet,
          .width = terminal_.errWidth,
          .style = errStyle_,
          .mutex = &errMutex_};
}

double Session::watch() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void Session::tellNotices() {
  if (!root_) return;
  for (const auto& notice : root_->takeNotices()) say(notice);
}

}  // namespace moniva
