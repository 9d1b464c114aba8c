#include <gtest/gtest.h>

#include "base/result.h"
#include "platform/gettext_localization.h"
#include "support/temporary_folder.h"

namespace moniva {
namespace {

const std::filesystem::path kResources = std::filesystem::path(MONIVA_TEMPLATE).parent_path();

TEST(GettextLocalization, choosesALanguage) {
  const struct {
    const char* locale;
    const char* language;
    const char* why;
  } cases[] = {
      {"en_US", "en", "English"},
      {"de_DE.UTF-8", "de", "as systems write it"},
      {"de_AT@euro", "de", "another country"},
      {"de-CH-u-ca-gregory", "de", "as people write it"},
      {"zh", "zh-Hans", "no script said"},
      {"zh_CN", "zh-Hans", "the script of the country"},
      {"zh_SG", "zh-Hans", "another country"},
      {"zh_TW", "zh-Hans", "nearer than English"},
      {"zh-Hant-HK", "zh-Hans", "nearer than English"},
      {"fr_FR", "en", "no texts of its own"},
      {"den_CA", "en", "begins like German"},
      {"C", "en", "no language"},
      {"", "en", "nothing"},
      {"no locale at all", "en", "nonsense"},
  };
  for (const auto& [locale, language, why] : cases)
    EXPECT_EQ(languageFor(locale), language) << locale << ": " << why;
}

TEST(GettextLocalization, speaksItsLanguageWhateverOthersSpeak) {
  const GettextLocalization english(kResources, "en_US");
  const GettextLocalization german(kResources, "de_AT");
  const GettextLocalization chinese(kResources, "zh_CN");
  const struct {
    const GettextLocalization& texts;
    const char* refusal;
    const char* one;
    const char* many;
  } cases[] = {{english, "there is no file 'a'", "{} transfer", "{} transfers"},
               {german, "es gibt keine Datei „a“", "{} Überweisung", "{} Überweisungen"},
               {chinese, "没有文件“a”", "{} 笔转账", "{} 笔转账"}};
  const Refusal refusal = refuse("there is no file '{}'", "a").value();
  for (const auto& [texts, said, one, many] : cases) {
    const GettextLocalization& spoken = texts;
    EXPECT_EQ(refusal.phrase->in([&](std::string_view text) { return spoken.localized(text); }), said);
    EXPECT_EQ(texts.localized("{} transfer", "{} transfers", 1), one);
    EXPECT_EQ(texts.localized("{} transfer", "{} transfers", 3'000'000'001), many);
    EXPECT_EQ(texts.localized("nobody ever said this"), "nobody ever said this");
    EXPECT_EQ(texts.localized(""), "") << "where a catalogue keeps its description";
  }
}

TEST(GettextLocalization, isEnglishWithoutACatalogue) {
  const TemporaryFolder folder;
  EXPECT_EQ(GettextLocalization(folder.path(), "de").localized("Year"), "Year");
  const auto place = folder / "locale/de/LC_MESSAGES";
  std::filesystem::create_directories(place);
  const std::string whole = bytesOf(kResources / "locale/de/LC_MESSAGES/moniva.mo");
  for (const auto& broken : {std::string(), std::string("rubbish"), whole.substr(0, 20)}) {
    putBytes(place / "moniva.mo", broken);
    EXPECT_EQ(GettextLocalization(folder.path(), "de").localized("Year"), "Year") << broken.size();
  }
  putBytes(place / "moniva.mo", whole);
  EXPECT_EQ(GettextLocalization(folder.path(), "de").localized("Year"), "Jahr");
}

}  // namespace
}  // namespace moniva
