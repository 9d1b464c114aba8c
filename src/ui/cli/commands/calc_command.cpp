#include <unicode/uchar.h>
#include <unicode/utf8.h>
#include <unistd.h>

#include <algorithm>
#include <boost/json.hpp>
#include <map>
#include <optional>
#include <span>

#include "base/text.h"
#include "currency/amount_expression.h"
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
  std::vector<KeypadStep> steps;

  bool showsEachKey() const { return !options.steps && !session.options().json; }
};

/// The keypad as the settings of the device have it, where there are any. No store is needed.
CalculateNumberPadView padOfDevice(Session& session) {
  try {
    return CalculateNumberPadView(*session.settingsOfDevice());
  } catch (const CommandError&) {
    return {};  // nobody says where the data is, or it cannot be read
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
  const auto& mark = run.session.amountReader().decimalMark();
  for (const char c : display) text += c == '*' ? "×" : c == '/' ? "÷" : c == '.' ? mark : std::string(1, c);
  return text;
}

/// "12.50+3 = 15.50": the display and what it comes to, once where the two are the same; "0" for nothing.
std::string lineOf(const Calculation& run) {
  const auto shown = displayText(run, run.pad.displayText());
  if (shown.empty()) return "0";
  const auto result = amountText(run, run.pad.resultAmount());
  return shown == result ? shown : fmt::format("{} = {}", shown, result);
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

/// Presses keys that come from a file, another program or the command line, where nobody watches what becomes
/// of them: each line is an expression of its own, and a key that would be dropped ends the command.
class KeysTyped {
 public:
  explicit KeysTyped(Calculation& run) : run_(run), reader_(run.session.amountReader()) {}

  void take(std::string_view typed) {
    ++character_;
    if (typed == "\n") return endLine();
    if (typed == " " || typed == "\t" || typed == "\r") return;
    if ((typed == "." || typed == ",") && !reader_.isDecimalMark(typed)) {
      throw notUnderstood("'{}' is no key here, where '{}' is the decimal mark (line {}, character {})",
                          typed, reader_.decimalMark(), line_, character_);
    }
    const auto key = keyMeant(typed, reader_.decimalMark());
    if (key.empty()) {
      throw notUnderstood("'{}' is no key of the calculator (line {}, character {})", printable(typed), line_,
                          character_);
    }
    if (isLineNew_ && !run_.steps.empty()) pressKey(run_, "C");
    isLineNew_ = false;
    const auto before = run_.pad.displayText();
    pressKey(run_, key);
    if (isMissed(key, before)) {
      throw notUnderstood("the calculator has no place for '{}' there (line {}, character {})",
                          printable(typed), line_, character_);
    }
  }

  void endLine() {
    if (!isLineNew_ && run_.steps.back().key != "=") pressKey(run_, "=");
    isLineNew_ = true;
    ++line_;
    character_ = 0;
  }

 private:
  /// Whether the key did not do what who typed it meant. Noughts before a number are nothing to miss, nor is
  /// an operator that is there already; a point means something else where digits fill the decimals.
  bool isMissed(std::string_view key, std::string_view before) const {
    const auto& pad = run_.pad;
    if (key == "⌫" || key == "C" || key == "=") return false;
    if (key == "•" && pad.autoFillDecimalEnable()) return true;
    if (pad.displayText() != before) return false;
    const auto& operand = pad.operatorText().empty() ? pad.leftOperand() : pad.rightOperand();
    if (key == "0") return operand.find_first_of("123456789") != std::string::npos;
    const bool isOperator = key == "+" || key == "-" || key == "×" || key == "÷";
    return !isOperator || pad.operatorText().empty();
  }

  Calculation& run_;
  const AmountReader& reader_;
  bool isLineNew_ = true;
  std::size_t line_ = 1;
  std::size_t character_ = 0;
};

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
  draw();
  int exitCode = 0;
  while (const auto typed = input.next()) {
    if (*typed == "q" || *typed == "Q" || *typed == "\x04") break;
    if (*typed == "\x03") {
      exitCode = CommandError::kInterrupted;
      break;
    }
    const auto key = keyMeant(*typed, run.session.amountReader().decimalMark());
    if (key.empty()) continue;
    pressKey(run, key);
    draw();
  }
  out << '\n' << std::flush;
  if (exitCode != 0) throw CommandError(exitCode, Refusal(phrase("interrupted")));
}

/// Keys from a file or another program: a line for each.
void readKeys(Calculation& run, KeyInput& input) {
  KeysTyped keys(run);
  while (const auto typed = input.next()) {
    const auto before = run.steps.size();
    keys.take(*typed);
    if (run.showsEachKey() && run.steps.size() > before) run.session.out() << lineOf(run) << std::endl;
  }
}

/// Says what of an expression was calculated where operators took the place of others.
void tellReplaced(Session& session, const std::string& expression, std::span<const AmountToken> tokens) {
  std::string kept;
  bool isReplaced = false;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const bool isOperator = tokens[i].kind != AmountToken::Kind::number;
    if (isOperator && tokens[i + 1].kind != AmountToken::Kind::number) {
      isReplaced = true;
    } else {
      kept += tokens[i].text;
    }
  }
  if (isReplaced)
    session.say(session.text("{} is calculated as {}.", printable(expression), printable(kept)));
}

/// An expression as typed: its numbers as the locale writes them.
void calculate(Calculation& run, const std::string& expression) {
  if (run.options.autoFill) {
    KeysTyped keys(run);
    for (std::string_view left = expression; !left.empty();) {
      const auto rest = withoutFirst(left, 1);
      keys.take(left.substr(0, left.size() - rest.size()));
      left = rest;
    }
    return keys.endLine();
  }
  const auto tokens = typed(run.session.amountReader().tokens(expression, ExpressionForm::keys));
  tellReplaced(run.session, expression, tokens);
  const int most = decimalsThatCount(*std::ranges::max_element(tokens, {}, decimalsThatCount));
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
  Calculation run{session, options, padOfDevice(session), {}};
  std::string currency = options.currency.empty() ? "" : currencyCodeTyped(session, options.currency);
  if (options.decimals) {
    run.pad.setDecimalDigits(*options.decimals);
  } else {
    if (currency.empty()) currency = session.defaultCurrency();
    run.pad.setCurrency(currency);
  }
  if (options.autoFill || options.noAutoFill) run.pad.setAutoFillDecimalEnable(options.autoFill);

  bool onTerminal = false;
  if (!options.words.empty()) {
    calculate(run, fmt::format("{}", fmt::join(options.words, " ")));
  } else {
    // With --json the line is drawn beside the answer, which stays whole.
    const auto& terminal = session.terminal();
    const bool json = session.options().json;
    KeyInput input(STDIN_FILENO, json ? terminal.errIsTerminal : terminal.outIsTerminal);
    onTerminal = input.isKeyByKey();
    if (onTerminal) {
      useOnTerminal(run, input, json ? terminal.err : terminal.out,
                    json ? terminal.errWidth : session.width());
    } else {
      readKeys(run, input);
    }
  }
  if (run.steps.empty() && !onTerminal) {
    throw notUnderstood("there is nothing to calculate; see: moniva calc --help");
  }
  if (!options.words.empty() && run.showsEachKey()) session.answer(amountText(run, run.pad.resultAmount()));
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
