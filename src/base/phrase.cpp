#include "base/phrase.h"

#include <fmt/args.h>

namespace moniva {

std::string Phrase::in(const Translate& translate) const {
  fmt::dynamic_format_arg_store<fmt::format_context> slots;
  for (const Part& part : parts_) {
    std::visit(
        [&](const auto& value) {
          if constexpr (requires { value->in(translate); }) {
            slots.push_back(value->in(translate));
          } else {
            slots.push_back(value);
          }
        },
        part);
  }
  try {
    return fmt::vformat(translate(form_), slots);
  } catch (const fmt::format_error&) {
    return english_;
  }
}

}  // namespace moniva
