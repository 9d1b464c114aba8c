#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "base/result.h"

namespace moniva {

/// The text of a file as valid UTF-8 without byte order mark and without NUL. Read are UTF-8 and UTF-16 of
/// either byte order, with or without a byte order mark; line ends stay as they are.
///
/// Refused, with a sentence that names the file: one that is missing, a directory, unreadable, empty, larger
/// than 1 GB, or in any other encoding (naming line and byte of the first sequence that does not fit).
Result<std::string> readTextFile(const std::filesystem::path& path);

/// The same for bytes already at hand; `name` is what a refusal calls them.
Result<std::string> decodeText(std::string bytes, std::string_view name);

/// The line, counted from 1, on which the byte at `offset` of `text` stands. LF, CRLF and CR end a line.
std::size_t lineAt(std::string_view text, std::size_t offset);

}  // namespace moniva
