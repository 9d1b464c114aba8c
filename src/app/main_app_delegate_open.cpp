// What is handed to the program from outside: URLs, files, quick actions.

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>

#include "app/do_db_updater.h"
#include "app/main_app_delegate.h"
#include "base/percent_decoding.h"
#include "model/moniva_account.h"
#include "platform/files.h"
#include "storage/store_files.h"

namespace moniva {
namespace {

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

struct Request {
  std::string_view host;
  std::string_view key;
};

/// Maintenance requests: the setting each host sets to "1".
constexpr std::array kRequests = {
    Request{"sendlog", "sendLogNow"},
    Request{"fix", "crashNeedFix"},
    Request{"fix2", "updateStringTypeDateField"},
    Request{"fix3", "fixAllRepeat"},
};

}  // namespace

Result<> MainAppDelegate::openURL(std::string_view url) {
  platform().log.line(fmt::format("=========================xxx handle OpenURL {}", url));
  const auto colon = url.find(':');
  if (colon == std::string_view::npos) return refuse("'{}' is no URL: it has no scheme", url);
  std::string scheme(url.substr(0, colon));
  std::ranges::transform(scheme, scheme.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const std::string_view rest = url.substr(colon + 1);

  if (scheme == "file") {
    std::string_view path = rest;
    if (path.starts_with("//")) path.remove_prefix(2);
    if (path.starts_with("localhost/")) path.remove_prefix(std::string_view("localhost").size());
    const std::string file = percentDecoded(path);
    std::error_code error;
    if (!std::filesystem::exists(file, error)) return refuse("there is no file '{}'", file);
    root_.filepathOfMailImport = file;
    platform().log.line(fmt::format("=== application handleOpenURL {}", root_.filepathOfMailImport));
    // Behind the lock it waits for the passcode.
    if (!locked_) importDataFromOutside();
    return {};
  }
  if (scheme != "moniva" && scheme != "moniva2" && scheme != "ledgora") {
    return refuse(
        "the program has nothing to do with '{}': its scheme '{}' is none of moniva, moniva2, ledgora, file",
        url, scheme);
  }
  std::string_view host = rest;
  if (host.starts_with("//")) host.remove_prefix(2);
  host = host.substr(0, host.find_first_of("/?#"));
  for (const Request& request : kRequests) {
    if (host != request.host) continue;
    platform().userDefaults->setString("1", request.key);
    return {};
  }
  if (host == "resetdb") {
    if (locked_) return refuse("the store is locked; it is not emptied without its passcode");
    settle();
    if (auto reset = root_.resetDatabase(); !reset) return reset;
    refreshUsingMonivaAccount(root_);
    root_.databaseFileChangedAfterRestoreDatafile();
    return {};
  }
  if (scheme == "moniva2" && contains(rest, "trans_data_from_moniva1_icloud")) {
    platform().log.line("=== Import data from moniva 1 icloud backup");
    root_.filepathOfMailImport = rest;
    return {};
  }
  // Looked at before the quick actions: their mark is the beginning of this one.
  if (scheme == "moniva2" && contains(rest, "transdate_from_moniva1_group_path")) {
    platform().log.line("=== Import data from moniva 1 group path");
    root_.filepathOfMailImport = rest;
    return {};
  }
  if ((scheme == "ledgora" || scheme == "moniva2") && doWithUserActivityWithType(rest)) {
    return {};
  }
  return refuse("the program has no action for '{}'", url);
}

bool MainAppDelegate::performActionForShortcutItem(std::string_view type) {
  return doWithUserActivityWithType(type);
}

bool MainAppDelegate::doWithUserActivityWithType(std::string_view type) {
  for (const std::string_view form : {"moniva2://", "ledgora://", "//"}) {
    if (type.starts_with(form)) type.remove_prefix(form.size());
  }
  constexpr std::string_view templateForm = "quickadd-";
  const bool isTemplate = type.starts_with(templateForm) && type.size() > templateForm.size();
  if (type != "addexpense" && type != "addincome" && type != "quickadd" && !isTemplate) return false;
  host_.showAddTransaction(type);
  return true;
}

void MainAppDelegate::takeDataFromOutside() {
  const std::string& from = root_.filepathOfMailImport;
  // Nobody is asked about it behind the lock; unlocking comes by here again.
  if (!from.empty() && locked_) return;
  std::error_code error;
  const bool isMarker = contains(from, "trans_data_from_moniva1") || contains(from, "transdate_from_moniva1");
  if (!from.empty() && (isMarker || std::filesystem::exists(from, error))) {
    importDataFromOutside();
  } else {
    host_.importDataFromArrayIfNeedAfterLaunch();
  }
}

void MainAppDelegate::importDataFromOutside() {
  const std::string from = std::exchange(root_.filepathOfMailImport, {});
  const std::string file = std::filesystem::path(from).filename().string();
  platform().log.line(fmt::format("=== 6 appLaunched {}", from));
  if (contains(from, "trans_data_from_moniva1_icloud")) {
    platform().log.line(fmt::format("从iCloud备份恢复Moniva1数据 {}", from));
    root_.addNotice(platform().cloud->isSignedIn()
                        ? phrase("This version cannot take over the first edition's data from the cloud yet; "
                                 "it stays there.")
                        : phrase("Nobody is signed in to a cloud here, so there is no data of the first "
                                 "edition to take over."));
  } else if (contains(from, "transdate_from_moniva1_group_path")) {
    importDataFromMoniva1GroupPath();
  } else if (contains(file, ".mvk") || contains(file, "_data")) {
    host_.showALertWhenImportDataBackup(from);
  } else if (contains(file, ".mvz")) {
    host_.showALertWhenImportSharedData(from);
  } else {
    root_.addNotice("'{}' is no kind of file this program takes in by opening it.", from);
  }
}

void MainAppDelegate::importDataFromMoniva1GroupPath() {
  const auto& folder = platform().directories.groupContainer;
  const auto source = folder / platform().info.kDatabaseName;
  if (folder.empty()) {
    return root_.addNotice(
        "There is no shared folder of the first edition here, so there is no data to take over.");
  }
  if (!isPresent(source)) {
    return root_.addNotice("The shared folder '{}' has no data of the first edition.", folder.string());
  }
  if (!root_.db().isEmpty()) {
    return root_.addNotice(
        "This store has records already, so the first edition's data was not taken over; it stays as '{}'.",
        source.string());
  }
  settle();
  const auto taken = checkKind(source).and_then([&] { return settleDataFile(source); }).and_then([&] {
    return root_.replaceDatabase(source);
  });
  if (!taken) {
    return root_.addNotice("The first edition's data '{}' was not taken over: {}.", source.string(),
                           taken.error());
  }
  // It is not a store that this device made: its categories are its own.
  platform().userDefaults->removeObjectForKey("copyDataFile");
  const auto photos = folder / platform().info.kBackupPhotoDBName;
  if (isPresent(photos)) {
    const auto kept = platform().directories.documents / photos.filename();
    if (auto copied = copyFileIfAbsent(photos, kept); !copied) root_.addNotice(copied.error());
  }
  root_.addNotice("Took over the first edition's data; the empty store is kept as '{}'.",
                  taken->filename().string());
  tellUpgrade(root_, DoDBUpdater(root_).run());
  refreshUsingMonivaAccount(root_);
  root_.databaseFileChangedAfterRestoreDatafile();
}

}  // namespace moniva
