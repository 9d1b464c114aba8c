#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"

namespace moniva {
namespace {

/// Whether what is handed in waits behind the lock by itself: files, and markers of data to take over.
bool waitsBehindLock(std::string_view url) {
  return url.starts_with("file:") || url.starts_with("FILE:") ||
         url.find("moniva1") != std::string_view::npos;
}

void open(Session& session, const std::string& url) {
  session.launchLocked();
  if (!waitsBehindLock(url)) session.unlock();
  // A word without a scheme is a quick action.
  if (url.find(':') == std::string::npos) {
    if (!session.app().performActionForShortcutItem(url)) {
      throw refused("there is no quick action '{}'; there are addexpense, addincome and quickadd", url);
    }
    return;
  }
  auto opened = session.app().openURL(url);
  session.tellNotices();
  done(std::move(opened));
  session.unlock();
  if (!session.root().filepathOfMailImport.empty()) session.app().takeDataFromOutside();
  session.tellNotices();
}

}  // namespace

void addOpenCommand(CommandLine& line) {
  CLI::App* open = line.add(line.app(), "open");
  auto url = std::make_shared<std::string>();
  open->add_option("URL", *url, "The URL, or a quick action: addexpense, addincome or quickadd")->required();
  line.onRun(
      open, [url](Session& session) { moniva::open(session, *url); }, false);
}

}  // namespace moniva
