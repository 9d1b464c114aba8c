#pragma once

#include <cstdio>
#include <string>

#include "support/temporary_folder.h"

namespace moniva::test {

/// A folder of its own for one test in which scripts are run by real programs.
class Workshop : public TemporaryFolder {
 public:
  /// What the command prints, errors too, when sh runs it in the folder; with "exit N" added on failure.
  std::string run(const std::string& command) const {
    const std::string line = "cd '" + path().string() + "' && { " + command + "; } 2>&1";
    FILE* pipe = popen(line.c_str(), "r");
    if (pipe == nullptr) return "cannot run";
    std::string output;
    char buffer[4096];
    for (std::size_t read = 0; (read = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
      output.append(buffer, read);
    const int status = pclose(pipe);
    return status == 0 ? output : output + "exit " + std::to_string(status);
  }

  void write(const std::string& name, std::string_view text) const { putBytes(*this / name, text); }
  bool has(const std::string& program) const { return run("command -v " + program + " >/dev/null").empty(); }
};

}  // namespace moniva::test
