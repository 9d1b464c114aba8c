#pragma once

#include <filesystem>
#include <locale>
#include <string>
#include <string_view>

#include "platform/localization.h"

namespace moniva {

/// The language of the program's texts for a locale ("de_AT", "zh-Hans-CN"): "en", "de" or "zh-Hans"; English
/// for any other.
std::string languageFor(std::string_view locale);

/// The texts in the language of a locale, from the GNU gettext catalogue of that language below the resources
/// folder. Each object has its own catalogue, whatever the process's locale is. Without a catalogue that can
/// be read the texts are English.
class GettextLocalization final : public Localization {
 public:
  GettextLocalization(const std::filesystem::path& resources, std::string_view locale);

  std::string localized(std::string_view text) const override;
  std::string localized(std::string_view one, std::string_view many, std::int64_t n) const override;
  std::string language() const override { return language_; }

 private:
  std::string language_;
  std::locale catalogue_;
};

}  // namespace moniva
