#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace moniva::test {

/// A directory of its own for one test, gone with it, in which scripts are run by real programs.
class Workshop {
 public:
  Workshop() {
    std::string pattern = testing::TempDir() + "moniva-XXXXXX";
    if (mkdtemp(pattern.data()) != nullptr) directory_ = pattern;
  }
  Workshop(const Workshop&) = delete;
  Workshop& operator=(const Workshop&) = delete;
  ~Workshop() {
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
  }

  void write(const std::string& name, const std::string& text) const {
    std::ofstream(directory_ / name, std::ios::binary) << text;
  }

  void makeDirectory(const std::string& name) const { std::filesystem::create_directory(directory_ / name); }

  /// What the command prints, errors too, when sh runs it in the directory; with "exit N" added on failure.
  std::string run(const std::string& command) const {
    const std::string line = "cd '" + directory_.string() + "' && { " + command + "; } 2>&1";
    FILE* pipe = popen(line.c_str(), "r");
    if (pipe == nullptr) return "cannot run";
    std::string output;
    char buffer[4096];
    for (std::size_t read = 0; (read = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
      output.append(buffer, read);
    const int status = pclose(pipe);
    return status == 0 ? output : output + "exit " + std::to_string(status);
  }

  bool has(const std::string& program) const { return run("command -v " + program + " >/dev/null").empty(); }

 private:
  std::filesystem::path directory_;
};

}  // namespace moniva::test
