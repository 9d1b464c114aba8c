#pragma once

#include <fmt/format.h>

#include <span>
#include <string>
#include <vector>

#include "storage/value.h"

namespace moniva {

/// The values of a statement's slots in order. Slots are numbered, so that one value serves in several places
/// and conditions may be put together in any order. Texts are viewed, as by every Value.
class NumberedSlots {
 public:
  /// The slot of a value: "?1".
  std::string add(const Value& value) {
    values_.push_back(value);
    return fmt::format("?{}", values_.size());
  }
  std::span<const Value> values() const { return values_; }

 private:
  std::vector<Value> values_;
};

/// The condition with its one slot numbered.
inline std::string withSlot(std::string_view condition, std::string_view slot) {
  std::string numbered(condition);
  return numbered.replace(numbered.find('?'), 1, slot);
}

/// The condition with all its slots numbered, in the order of the values they take.
inline std::string withSlots(std::string_view condition, std::span<const Value> values,
                             NumberedSlots& slots) {
  std::string numbered;
  for (const Value& value : values) {
    const auto end = condition.find('?');
    numbered.append(condition.substr(0, end)).append(slots.add(value));
    condition.remove_prefix(end + 1);
  }
  return numbered.append(condition);
}

}  // namespace moniva
