#include "ui/cli/json_out.h"

#include <array>
#include <boost/json/serialize.hpp>
#include <charconv>
#include <cmath>
#include <string_view>

#include "ui/cli/text_width.h"

namespace moniva {
namespace {

namespace json = boost::json;

class Printer {
 public:
  explicit Printer(bool isPretty) : isPretty_(isPretty) {}

  void print(const json::value& value) {
    switch (value.kind()) {
      case json::kind::object:
        printObject(value.get_object());
        break;
      case json::kind::array:
        printArray(value.get_array());
        break;
      case json::kind::string:
        printString(value.get_string());
        break;
      case json::kind::double_:
        text_ += jsonNumber(value.get_double());
        break;
      default:
        text_ += json::serialize(value);
        break;
    }
  }

  std::string take() { return std::move(text_); }

 private:
  void printObject(const json::object& object) {
    if (object.empty()) {
      text_ += "{}";
      return;
    }
    open('{');
    bool isFirst = true;
    for (const auto& member : object) {
      beginItem(isFirst);
      printString(member.key());
      text_ += isPretty_ ? ": " : ":";
      print(member.value());
    }
    close('}');
  }

  void printArray(const json::array& array) {
    if (array.empty()) {
      text_ += "[]";
      return;
    }
    open('[');
    bool isFirst = true;
    for (const json::value& item : array) {
      beginItem(isFirst);
      print(item);
    }
    close(']');
  }

  void printString(json::string_view string) {
    text_ += json::serialize(json::string_view(wellFormedUtf8({string.data(), string.size()})));
  }

  void open(char bracket) {
    text_ += bracket;
    ++depth_;
  }

  void beginItem(bool& isFirst) {
    if (!isFirst) text_ += ',';
    isFirst = false;
    beginLine();
  }

  void close(char bracket) {
    --depth_;
    beginLine();
    text_ += bracket;
  }

  void beginLine() {
    if (!isPretty_) return;
    text_ += '\n';
    text_.append(2 * depth_, ' ');
  }

  bool isPretty_;
  std::size_t depth_ = 0;
  std::string text_;
};

}  // namespace

std::string jsonText(const json::value& value, JsonLayout layout) {
  Printer printer(layout == JsonLayout::pretty);
  printer.print(value);
  return printer.take();
}

std::string jsonNumber(double number) {
  if (!std::isfinite(number)) return "null";
  if (number == 0) return "0";
  const double size = std::abs(number);
  const bool isPlain = size >= 1e-6 && size < 1e21;
  std::array<char, 32> text{};
  const auto format = isPlain ? std::chars_format::fixed : std::chars_format::scientific;
  const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), number, format);
  return error == std::errc() ? std::string(text.data(), end) : "null";
}

}  // namespace moniva
