#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <mutex>
#include <optional>
#include <string>

#include "ui/cli/style.h"

namespace moniva {

/// Where a progress line is drawn and what it looks like there.
struct ProgressPlace {
  std::ostream& out;
  bool shown = false;      ///< the stream is a terminal and the person has not asked for quiet
  std::size_t width = 80;  ///< of the terminal, in cells
  Style style;
  std::mutex* mutex = nullptr;  ///< held while something is drawn, where other threads write there too
};

/// A line that tells how far a long task has come, drawn over itself and gone when the task ends:
///
///     Importing  ███████▌              37 %  3,700 of 10,000
///
/// It is drawn at most ten times a second, so that telling it of every row costs next to nothing, and not at
/// all where nobody would see it. Errors must be printed after finish(), or they land in the line.
class Progress {
 public:
  /// Seconds that only ever grow, from any beginning.
  using Clock = std::function<double()>;

  /// `total` counts the steps of the whole task; 0 when nobody knows, which draws a count without a bar.
  Progress(ProgressPlace place, Clock clock, std::string label, std::uint64_t total);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  /// That many more steps are done.
  void advance(std::uint64_t steps = 1) { moveTo(done_ + steps); }
  /// So many steps are done in all; more than the total counts as the total.
  void moveTo(std::uint64_t done);
  /// Clears the line; nothing is drawn any more.
  void finish();

 private:
  void draw();
  void write(const std::string& text);

  ProgressPlace place_;
  Clock clock_;
  std::string label_;
  std::uint64_t total_;
  std::uint64_t done_ = 0;
  std::optional<double> drawnAt_;
  bool finished_ = false;
};

}  // namespace moniva
