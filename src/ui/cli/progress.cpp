#include "ui/cli/progress.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "ui/cli/bars.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

constexpr double secondsBetweenDrawings = 0.1;
constexpr std::size_t longestBar = 24;
constexpr const char* clearLine = "\r\x1b[K";

std::string grouped(std::uint64_t number) {
  std::string digits = std::to_string(number);
  for (auto at = static_cast<int>(digits.size()) - 3; at > 0; at -= 3)
    digits.insert(static_cast<std::size_t>(at), ",");
  return digits;
}

}  // namespace

Progress::Progress(ProgressPlace place, Clock clock, std::string label, std::uint64_t total)
    : place_(place), clock_(std::move(clock)), label_(std::move(label)), total_(total) {}

Progress::~Progress() {
  finish();
}

void Progress::moveTo(std::uint64_t done) {
  done_ = total_ > 0 ? std::min(done, total_) : done;
  if (!place_.shown || finished_) return;
  const double now = clock_();
  if (drawnAt_ && now - *drawnAt_ < secondsBetweenDrawings) return;
  drawnAt_ = now;
  draw();
}

void Progress::finish() {
  if (drawnAt_ && !finished_) write(clearLine);
  finished_ = true;
}

void Progress::draw() {
  std::string figures = grouped(done_);
  std::string drawing;
  if (total_ > 0) {
    const double share = static_cast<double>(done_) / static_cast<double>(total_);
    figures = padLeft(std::to_string(static_cast<int>(share * 100)), 3) + " %  " + figures + " of " +
              grouped(total_);
    const std::size_t others =
        displayWidth(label_) + displayWidth(figures) + 5;  // with gaps and a free last cell
    const std::size_t cells = place_.width > others ? std::min(longestBar, place_.width - others) : 0;
    if (cells > 0) drawing = padRight(bar(share, 1, cells), cells) + "  ";
  }
  // A line as wide as the terminal would wrap, and then no longer be drawn over.
  const std::size_t room = place_.width > 1 ? place_.width - 1 : 1;
  const std::string line = truncateToWidth(label_ + "  " + drawing + figures, room);
  write(clearLine + place_.style.dim(line));
}

void Progress::write(const std::string& text) {
  const auto lock =
      place_.mutex != nullptr ? std::unique_lock(*place_.mutex) : std::unique_lock<std::mutex>();
  place_.out << text << std::flush;
}

}  // namespace moniva
