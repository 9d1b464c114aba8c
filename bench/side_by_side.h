#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace moniva::bench {

/// Seconds that one call of `work` takes.
template <class Work>
double secondsFor(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Times `ours` and `theirs` in turn, so that what disturbs the machine disturbs both, and reports the median
/// of the rounds' ratios as `ratio`: below 1, ours is faster. The time shown is that of ours, `items` to a
/// round. The caller has made sure that both come to the same result.
template <class Ours, class Theirs>
void sideBySide(benchmark::State& state, std::int64_t items, const Ours& ours, const Theirs& theirs) {
  std::vector<double> ratios;
  for (auto round : state) {
    static_cast<void>(round);
    const double their = secondsFor(theirs);
    const double our = secondsFor(ours);
    state.SetIterationTime(our);
    ratios.push_back(our / their);
  }
  const auto middle = ratios.begin() + static_cast<std::ptrdiff_t>(ratios.size() / 2);
  std::nth_element(ratios.begin(), middle, ratios.end());
  state.counters["ratio"] = *middle;
  state.SetItemsProcessed(state.iterations() * items);
}

}  // namespace moniva::bench
