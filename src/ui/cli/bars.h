#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace moniva {

/// Small drawings of figures for a terminal line, made of block signs; without colour, which is the caller's.

/// A bar for `value` on a scale from 0 to `max`, at most `cells` long and fine to an eighth of a cell. It has
/// no spaces at its end. Above zero something always shows; a value beyond `max` fills the bar. Empty for
/// what is not above zero or not a number, and on a scale that is not.
std::string bar(double value, double max, std::size_t cells);

/// Two bars from an axis in the middle, `left` growing to the left and `right` to the right, each on the same
/// scale and at most `cells` long: "   ▐██│████▌". The left side is filled up with spaces, so that the axes
/// of several lines stand below each other; it is fine to half a cell. For a figure that may be negative pass
/// it as one side or the other.
std::string pairedBars(double left, double right, double max, std::size_t cells);

/// One block for each value, as high as it is between the smallest (but at most 0) and the largest of them:
/// "▁▃▅█". A space stands for what is not a finite number.
std::string sparkline(std::span<const double> values);

}  // namespace moniva
