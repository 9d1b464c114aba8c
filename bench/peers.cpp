// A household's pages by moniva, and by hledger and ledger on the journal that moniva writes of the same
// store: how many times as fast as the faster of the two, and which part of its memory. Whole processes are
// measured, with what it takes them to start and to read their files; of some rounds the quickest.
//
//     peers MONIVA [RECORDS [ROUNDS]]

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "ten_years.h"

namespace moniva {
namespace {

struct Cost {
  double seconds = 1e9;
  double mebibytes = 0;
};

/// Runs the words as a process whose output nobody reads; nothing when it did not end well.
std::optional<Cost> runOnce(const std::vector<std::string>& words) {
  std::vector<char*> arguments;
  for (const auto& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = ::fork();
  if (child == 0) {
    const int nowhere = ::open("/dev/null", O_WRONLY);
    ::dup2(nowhere, STDOUT_FILENO);
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
  }
  int status = 0;
  rusage used{};
  if (child < 0 || ::wait4(child, &status, 0, &used) != child || !WIFEXITED(status) ||
      WEXITSTATUS(status) != 0) {
    return std::nullopt;
  }
  return Cost{std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
              static_cast<double>(used.ru_maxrss) / 1024};
}

Cost quickest(const std::vector<std::string>& words, int rounds) {
  Cost best;
  for (int round = 0; round < rounds; ++round) {
    const auto cost = runOnce(words);
    if (!cost) {
      fmt::print(stderr, "failed: {}\n", fmt::join(words, " "));
      std::exit(1);
    }
    if (cost->seconds < best.seconds) best = *cost;
  }
  return best;
}

struct Page {
  const char* name;
  std::vector<std::string> moniva;
  std::vector<std::string> hledger;
  std::vector<std::string> ledger;
};

std::vector<std::string> joined(std::vector<std::string> first, const std::vector<std::string>& rest) {
  first.insert(first.end(), rest.begin(), rest.end());
  return first;
}

int compare(const std::string& program, int records, int rounds) {
  ::setenv("LC_ALL", "C.UTF-8", 1);
  ::setenv("TZ", "Europe/Berlin", 1);
  bench::TenYears store(records);
  if (!store.ready) return 1;
  const auto folder = store.file().parent_path();
  const std::string journal = folder / "all.journal";
  const std::vector<std::string> moniva{program, "--quiet", "--data", folder, "--now", "2024-01-01 12:00"};
  const auto exported = runOnce(joined(moniva, {"export", "journal", journal}));
  if (!exported) return 1;
  fmt::print("{} records; written as a journal in {:.2f} s\n", records, exported->seconds);
  fmt::print("{:22} {:>10} {:>10} {:>10} {:>8} {:>9}\n", "", "moniva", "hledger", "ledger", "faster",
             "memory");
  double slowest = 1e9;
  double largest = 0;
  for (const auto& [name, own, one, other] : std::initializer_list<Page>{
           {"months of ten years",
            {"report", "month", "2014..2023"},
            {"balance", "-M", "Expenses", "Income"},
            {"register", "-M", "Expenses", "Income"}},
           {"a year by category",
            {"breakdown", "category", "2019"},
            {"balance", "-p", "2019", "Expenses"},
            {"balance", "-p", "2019", "Expenses"}},
           {"a month's register",
            {"explain", "2019-03", "--account", "Account 0"},
            {"register", "-p", "2019-03", "Account 0"},
            {"register", "-p", "2019-03", "Account 0"}},
           {"search", {"search", "needle"}, {"register", "desc:needle"}, {"register", "@needle"}},
           {"balances", {"account", "list"}, {"balance", "Assets"}, {"balance", "Assets"}}}) {
    const Cost ours = quickest(joined(moniva, own), rounds);
    const Cost first = quickest(joined({"hledger", "-f", journal}, one), std::max(1, rounds / 3));
    const Cost second = quickest(joined({"ledger", "-f", journal}, other), std::max(1, rounds / 3));
    const Cost& best = first.seconds < second.seconds ? first : second;
    const double faster = best.seconds / ours.seconds;
    const double memory = ours.mebibytes / best.mebibytes;
    slowest = std::min(slowest, faster);
    largest = std::max(largest, memory);
    fmt::print("{:22} {:8.1f}ms {:8.0f}ms {:8.0f}ms {:7.0f}x {:9.3f}\n", name, ours.seconds * 1000,
               first.seconds * 1000, second.seconds * 1000, faster, memory);
  }
  fmt::print("at least {:.0f} times as fast, at most {:.3f} of the memory\n", slowest, largest);
  return 0;
}

}  // namespace
}  // namespace moniva

int main(int count, char** words) {
  if (count < 2) {
    fmt::print(stderr, "usage: peers MONIVA [RECORDS [ROUNDS]]\n");
    return 2;
  }
  return moniva::compare(words[1], count > 2 ? std::atoi(words[2]) : 100'000,
                         count > 3 ? std::atoi(words[3]) : 5);
}
