#pragma once

#include <CLI/App.hpp>
#include <string>

#include "base/phrase.h"

namespace moniva {

/// Why the parser does not take a line, as a sentence of this program in the person's language. The parser
/// tells its reasons in English texts alone; one that is not known here stays as the parser put it. Of `app`
/// it uses the commands that were typed, to say which ones there are below them.
std::string parserSays(const CLI::ParseError& error, const CLI::App& app, const Translate& translate);

}  // namespace moniva
