#pragma once

#include <span>
#include <vector>

#include "ui/cli/command_tree.h"
#include "ui/cli/man_page.h"

namespace moniva {

/// What is told of each command beyond its options: the one source of help, completion and manual page.
std::span<const CommandText> commandTexts();
// Those of the families of commands.
std::vector<CommandText> bookTexts();
std::vector<CommandText> categoryTexts();
std::vector<CommandText> vendorTexts();
std::vector<CommandText> photoTexts();
std::vector<CommandText> transferTexts();
std::vector<CommandText> repeatTexts();
std::vector<CommandText> debtTexts();
std::vector<CommandText> billTexts();
std::vector<CommandText> currencyTexts();
std::vector<CommandText> spendTexts();
std::vector<CommandText> planTexts();
std::vector<CommandText> listTexts();
std::vector<CommandText> breakdownTexts();
std::vector<CommandText> budgetTexts();
std::vector<CommandText> reportTexts();
std::vector<CommandText> searchTexts();

std::vector<ManualEntry> exitStatusTexts();
std::vector<ManualEntry> environmentTexts();
std::vector<ManualEntry> fileTexts();

}  // namespace moniva
