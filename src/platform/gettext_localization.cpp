#include "platform/gettext_localization.h"

#include <unicode/locid.h>

#include <algorithm>
#include <boost/locale/gnu_gettext.hpp>

namespace moniva {
namespace {

namespace gettext = boost::locale::gnu_gettext;
using Messages = boost::locale::message_format<char>;

/// The classic locale with the language's catalogue in it, if there is one.
std::locale withCatalogue(const std::filesystem::path& resources, std::string language) {
  // Folders of catalogues are named with underscores.
  std::ranges::replace(language, '-', '_');
  gettext::messages_info info;
  info.language = std::move(language);
  info.encoding = "UTF-8";
  info.domains.emplace_back("moniva");
  info.paths.push_back((resources / "locale").string());
  try {
    Messages* messages = gettext::create_messages_facet<char>(info);
    return messages == nullptr ? std::locale::classic() : std::locale(std::locale::classic(), messages);
  } catch (const std::exception&) {
    return std::locale::classic();  // a catalogue that cannot be read
  }
}

const Messages* messagesOf(const std::locale& catalogue) {
  return std::has_facet<Messages>(catalogue) ? &std::use_facet<Messages>(catalogue) : nullptr;
}

}  // namespace

std::string languageFor(std::string_view locale) {
  const icu::Locale known = icu::Locale::createCanonical(std::string(locale).c_str());
  const std::string_view language = known.getLanguage();
  if (language == "de") return "de";
  if (language == "zh") return "zh-Hans";
  return "en";
}

GettextLocalization::GettextLocalization(const std::filesystem::path& resources, std::string_view locale)
    : language_(languageFor(locale)),
      catalogue_(language_ == "en" ? std::locale::classic() : withCatalogue(resources, language_)) {}

std::string GettextLocalization::localized(std::string_view text) const {
  const Messages* messages = messagesOf(catalogue_);
  // The catalogue keeps its own description under the empty text.
  if (messages == nullptr || text.empty()) return std::string(text);
  std::string english(text);
  const char* found = messages->get(0, nullptr, english.c_str());
  return found == nullptr ? english : found;
}

std::string GettextLocalization::localized(std::string_view one, std::string_view many,
                                           std::int64_t n) const {
  const Messages* messages = messagesOf(catalogue_);
  if (messages != nullptr) {
    // What has a form of its own is small, or repeats with the last digits.
    const auto number = static_cast<int>(n > 1'000'000 ? 1'000'000 + n % 1'000'000 : n);
    if (const char* found = messages->get(0, nullptr, std::string(one).c_str(), number)) return found;
  }
  return Localization::localized(one, many, n);
}

}  // namespace moniva
