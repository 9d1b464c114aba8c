#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "currency/amount_reader.h"
#include "currency/calculate_number_pad_view.h"

namespace moniva {

/// What the keypad shows after one key.
struct KeypadStep {
  std::string key;      ///< as of press()
  std::string display;  ///< its display text
  double result = 0;
};

/// Presses the key of that name: "0" to "9", "•", "+", "-", "×", "÷", "⌫" (deletes a character), "C" (deletes
/// all of them), "=" (evaluates). Whether there is one.
bool press(CalculateNumberPadView& pad, std::string_view key);

/// How many decimals of the number count: noughts at its end do not.
int decimalsThatCount(const AmountToken& number);

/// Presses the keys of the expression on the pad, which has been set up and is empty, and evaluates it ("=",
/// the last of the steps): the value. Each key is added to `steps` where they are asked for. Noughts
/// at the end of a number are pressed as far as the pad has decimals. Refused before any key is pressed: a
/// number with more decimals that count than the pad takes, or more digits than a double keeps.
/// The value may be infinite or no number after a division by zero; that is the caller's to refuse.
Result<double> pressed(CalculateNumberPadView& pad, std::span<const AmountToken> tokens,
                       std::vector<KeypadStep>* steps = nullptr);

}  // namespace moniva
