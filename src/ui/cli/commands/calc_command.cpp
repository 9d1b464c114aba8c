#include <unicode/uchar.h>
#include <unicode/utf8.h>
#include <unistd.h>

#include <algorithm>
#include <boost/json.hpp>
#include <map>
#include <optional>

#include "base/text.h"
#include "currency/amount_expression.h"
#include "platform/posix/file_user_defaults.h"
#include "platform/posix/key_input.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/rates.h"
#include "ui/cli/table.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

struct CalcOptions {
  std::vector<std::string> words;
  std::string currency;
  std::optional<int> decimals;
  bool steps = false;
  bool autoFill = false;
  bool noAutoFill = false;
};

/// A run of the calculator: the keypad, how what it shows is said, and the keys pressed so far.
struct Calculation {
  Session& session;
  const CalcOptions& options;
  CalculateNumberPadView pad;
  std::string decimalMark;
  std::vector<KeypadStep> steps;

  bool showsEachKey() const { return !options.steps && !session.options().json; }
};

/// The keypad as the settings of the device have it, where there are any. No store is needed.
CalculateNumberPadView padOfDevice(Session& session) {
  try {
    const auto defaults = FileUserDefaults::open(session.dataFolder() / "settings.json", session.now());
    if (!defaults) return {};
    if (!(*defaults)->notice().empty()) session.say((*defaults)->notice());
    return CalculateNumberPadView(**defaults);
  } catch (const CommandError&) {
    return {};  // nobody says where the data is
  }
}

std::string amountText(const Calculation& run, double amount) {
  const auto& amounts = run.session.amounts();
  return run.options.currency.empty() ? amounts.formatNumber(amount, run.pad.decimalDigits())
                                      : amounts.format(amount, run.options.currency);
}

/// The display as a person reads it, with the signs of the keys and the locale's decimal mark.
std::string displayText(const Calculation& run, const std::string& display) {
  std::string text;
  for (const char c : display)
    text += c == '*' ? "×" : c == '/' ? "÷" : c == '.' ? run.decimalMark : std::string(1, c);
  return text;
}

/// "12.50+3 = 15.50", and the display alone where it is no expression yet.
std::string lineOf(const Calculation& run) {
  const auto& pad = run.pad;
  const auto shown = displayText(run, pad.displayText());
  return pad.rightOperand().empty() ? shown
                                    : fmt::format("{} = {}", shown, amountText(run, pad.resultAmount()));
}

void pressKey(Calculation& run, std::string_view key) {
  press(run.pad, key);
  run.steps.push_back({std::string(key), run.pad.displayText(), run.pad.resultAmount()});
}

/// The key that a typed sign, or what a terminal sends for a key, stands for; "" for none.
std::string keyMeant(std::string_view typed, std::string_view decimalMark) {
  static const std::map<std::string_view, std::string_view> kKeys = {
      {".", "•"}, {",", "•"},    {"•", "•"},  {"+", "+"},  {"-", "-"},      {"−", "-"},
      {"*", "×"}, {"x", "×"},    {"X", "×"},  {"×", "×"},  {"/", "÷"},      {":", "÷"},
      {"÷", "÷"}, {"=", "="},    {"\r", "="}, {"\n", "="}, {"\x7f", "⌫"},   {"\b", "⌫"},
      {"⌫", "⌫"}, {"\x15", "C"}, {"c", "C"},  {"C", "C"},  {"\x1b[3~", "C"}};
  if (typed == decimalMark) return "•";
  if (const auto found = kKeys.find(typed); found != kKeys.end()) return std::string(found->second);
  std::int32_t at = 0;
  UChar32 sign = 0;
  U8_NEXT(reinterpret_cast<const std::uint8_t*>(typed.data()), at, static_cast<std::int32_t>(typed.size()),
          sign);
  const int digit = sign < 0 || static_cast<std::size_t>(at) < typed.size() ? -1 : u_charDigitValue(sign);
  return digit < 0 ? "" : std::to_string(digit);
}

/// Presses a key of the input, which stands at that place; ends the command where it is none.
void pressTyped(Calculation& run, std::string_view typed, std::size_t place) {
  if (typed == " " || typed == "\t") return;
  const auto key = keyMeant(typed, run.decimalMark);
  if (key.empty())
    throw notUnderstood("'{}' is no key of the calculator (character {})", printable(typed), place);
  pressKey(run, key);
}

/// The text without as many of its first signs.
std::string_view withoutFirst(std::string_view text, std::size_t count) {
  for (; count > 0 && !text.empty(); --count) {
    do text.remove_prefix(1);
    while (!text.empty() && (text.front() & 0xC0) == 0x80);
  }
  return text;
}

/// Keys from a terminal: one line that is drawn anew after each, until q, Ctrl-D or Ctrl-C.
void useOnTerminal(Calculation& run, KeyInput& input, std::ostream& out, std::size_t width) {
  const std::size_t room = std::max<std::size_t>(width, 20) - 1;
  std::size_t drawn = 0;
  const auto draw = [&] {
    std::string line = lineOf(run);
    // Where there is no room for the result, the end of the display, where keys go.
    if (characterCount(line) > room) line = displayText(run, run.pad.displayText());
    if (const auto count = characterCount(line); count > room)
      line = fmt::format("…{}", withoutFirst(line, count - room + 1));
    out << '\r' << padRight(line, drawn) << '\r' << line << std::flush;
    drawn = displayWidth(line);
  };
  run.session.say(
      run.session.text("Digits, + - × ÷, = or Enter; Backspace takes one back, Delete all; q ends."));
  int exitCode = 0;
  while (const auto typed = input.next()) {
    if (*typed == "q" || *typed == "Q" || *typed == "\x04") break;
    if (*typed == "\x03") {
      exitCode = CommandError::kInterrupted;
      break;
    }
    const auto key = keyMeant(*typed, run.decimalMark);
    if (key.empty()) continue;
    pressKey(run, key);
    draw();
  }
  out << '\n' << std::flush;
  if (exitCode != 0) throw CommandError(exitCode, Refusal(phrase("interrupted")));
}

/// Keys from a file or another program: a line for each.
void readKeys(Calculation& run, KeyInput& input) {
  for (std::size_t place = 1;; ++place) {
    const auto typed = input.next();
    if (!typed) break;
    const auto before = run.steps.size();
    pressTyped(run, *typed, place);
    if (run.showsEachKey() && run.steps.size() > before) run.session.out() << lineOf(run) << std::endl;
  }
  if (run.steps.empty()) throw notUnderstood("there is nothing to calculate; see: moniva calc --help");
}

/// An expression as typed: its numbers as the locale writes them.
void calculate(Calculation& run, const std::string& expression) {
  if (run.options.autoFill) {
    std::string_view left = expression;
    for (std::size_t place = 1; !left.empty(); ++place) {
      const auto rest = withoutFirst(left, 1);
      pressTyped(run, left.substr(0, left.size() - rest.size()), place);
      left = rest;
    }
    pressKey(run, "=");
    return;
  }
  const auto tokens = typed(AmountReader(run.session.calendar().locale()).tokens(expression));
  const auto most = std::ranges::max(tokens, {}, &AmountToken::decimals).decimals;
  const auto value = pressed(run.pad, tokens, &run.steps);
  if (!value && run.options.currency.empty() && most > run.pad.decimalDigits() &&
      most <= CalculateNumberPadView::kMostDigits) {
    throw notUnderstood("{}; --decimals {} calculates with as many", value.error(), most);
  }
  typed(Result<double>(value));
}

void printSteps(Calculation& run) {
  Session& session = run.session;
  Table table({{.title = session.text("Key")},
               {.title = session.text("Display"), .align = Align::right},
               {.title = session.text("Result"), .align = Align::right}});
  for (const auto& step : run.steps)
    table.addRow({step.key, displayText(run, step.display), amountText(run, step.result)});
  session.out() << table.render(session.style(), session.width());
}

boost::json::object jsonOf(const Calculation& run, const std::string& currency) {
  boost::json::array steps;
  for (const auto& step : run.steps) {
    steps.push_back({{"key", step.key}, {"displayText", step.display}, {"resultAmount", step.result}});
  }
  return {{"displayText", run.pad.displayText()},
          {"resultAmount", run.pad.resultAmount()},
          {"currency", currency},
          {"decimalDigits", run.pad.decimalDigits()},
          {"steps", std::move(steps)}};
}

void runCalc(Session& session, const CalcOptions& options) {
  Calculation run{
      session, options, padOfDevice(session), AmountReader(session.calendar().locale()).decimalMark(), {}};
  std::string currency = options.currency.empty() ? "" : currencyCodeTyped(session, options.currency);
  if (options.decimals) {
    run.pad.setDecimalDigits(*options.decimals);
  } else {
    if (currency.empty()) currency = session.defaultCurrency();
    run.pad.setCurrency(currency);
  }
  if (options.autoFill || options.noAutoFill) run.pad.setAutoFillDecimalEnable(options.autoFill);

  if (!options.words.empty()) {
    calculate(run, fmt::format("{}", fmt::join(options.words, " ")));
    if (run.showsEachKey()) session.answer(amountText(run, run.pad.resultAmount()));
  } else {
    // With --json the line is drawn beside the answer, which stays whole.
    const auto& terminal = session.terminal();
    const bool json = session.options().json;
    KeyInput input(STDIN_FILENO, json ? terminal.errIsTerminal : terminal.outIsTerminal);
    if (input.isKeyByKey()) {
      useOnTerminal(run, input, json ? terminal.err : terminal.out,
                    json ? terminal.errWidth : session.width());
    } else {
      readKeys(run, input);
    }
  }
  if (session.options().json) {
    session.printJson(jsonOf(run, currency));
  } else if (options.steps) {
    printSteps(run);
  }
}

}  // namespace

void addCalcCommand(CommandLine& line) {
  CLI::App* calc = line.add(line.app(), "calc");
  auto options = std::make_shared<CalcOptions>();
  calc->add_option("EXPRESSION", options->words, "What to calculate, such as 12.50+3; else keys are read");
  auto* currency = calc->add_option("--currency", options->currency, "Calculate in that currency")
                       ->type_name("CODE")
                       ->check(notEmpty());
  calc->add_option("--decimals", options->decimals, "Calculate with as many decimals")
      ->type_name("N")
      ->check(oneOf({"0", "1", "2", "3", "4", "5", "6"}))
      ->excludes(currency);
  calc->add_flag("--steps", options->steps, "Show display and result after each key");
  auto* fills = calc->add_flag(
      "--auto-fill", options->autoFill,
      "Have digits fill the decimals from the right: 5 is 0.05 (else by the setting AutoFillDecimalDot)");
  calc->add_flag("--no-auto-fill", options->noAutoFill, "Take keys as they are, whatever the setting says")
      ->excludes(fills);
  line.onRun(
      calc, [options](Session& session) { runCalc(session, *options); }, false);
}

}  // namespace moniva
