#include <gtest/gtest.h>

#include <set>

#include "platform/gettext_localization.h"
#include "ui/cli/command_line.h"
#include "ui/cli/command_texts.h"

namespace moniva {
namespace {

/// Takes down the texts that the German catalogue does not have.
class Listening final : public Localization {
 public:
  using Localization::localized;
  std::string localized(std::string_view text) const override {
    // A text that is the same in both languages is in neither list.
    static const std::set<std::string_view> alike = {"NAME", ""};
    if (!alike.contains(text) && german_.localized(text) == text) missing_ += "\n" + std::string(text);
    return std::string(text);
  }
  const std::string& missing() const { return missing_; }

 private:
  GettextLocalization german_{std::filesystem::path(MONIVA_TEMPLATE).parent_path(), "de"};
  mutable std::string missing_;
};

TEST(Help, isTranslatedWhole) {
  CommandLine line;
  const Listening listening;
  const CommandInfo program = describeCommand(line.app(), commandTexts(), listening);
  helpText(program, {}, 80, listening);
  for (const auto& list : {exitStatusTexts(), environmentTexts(), fileTexts()}) {
    for (const auto& [name, meaning] : list) listening.localized(meaning);
  }
  EXPECT_EQ(listening.missing(), "");
  EXPECT_GT(program.commands.size(), 8U) << "the commands were there to be asked";
}

}  // namespace
}  // namespace moniva
