#include <gtest/gtest.h>

#include <map>

#include "base/result.h"

namespace moniva {
namespace {

TEST(Phrase, isSaidInAnotherLanguage) {
  const std::map<std::string_view, std::string> german = {
      {"'{}' is missing", "„{}“ fehlt"}, {"a book", "ein Buch"},           {"{}: {}", "{} - {}"},
      {"{} of {} rows", "von {1}: {0}"}, {"{:04}-{:.2f}", "{:03}/{:.1f}"}, {"{} left", "{} {}"}};
  const struct {
    Phrase text;
    const char* said;
    const char* why;
  } cases[] = {
      {phrase("{} of {} rows", 2, std::size_t{7}), "von 7: 2", "in another order"},
      {phrase("{:04}-{:.2f}", 33, 1.5), "033/1.5", "numbers stay numbers"},
      {phrase("{}: {}", ';', refuse("'{}' is missing", "a").value()), "; - „a“ fehlt", "with what is in it"},
      {phrase("{}: {}", std::string_view("x"), Phrase("a book")), "x - ein Buch", "with what is in it"},
      {phrase("{} left", 1), "1 left", "in English where the translation cannot be filled"},
      {Phrase::quoted("disk {full}"), "disk {full}", "as others said it"},
  };
  for (const auto& [text, said, why] : cases) {
    EXPECT_EQ(text.in([&](std::string_view english) {
      const auto found = german.find(english);
      return found == german.end() ? std::string(english) : found->second;
    }),
              said)
        << why;
  }
}

}  // namespace
}  // namespace moniva
