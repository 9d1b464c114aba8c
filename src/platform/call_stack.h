#pragma once

#include <string>
#include <vector>

namespace moniva {

/// The frames of the calling thread's stack that belong to this program, innermost first, one text a frame.
/// Empty where the host cannot tell.
std::vector<std::string> programFrames();

}  // namespace moniva
