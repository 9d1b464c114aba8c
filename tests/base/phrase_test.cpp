#include "base/phrase.h"

#include <gtest/gtest.h>

#include <map>

#include "base/result.h"

namespace moniva {
namespace {

TEST(Phrase, fillsTheTranslation) {
  const Refusal inner = refuse("'{}' is missing", std::string("a.csv")).value();
  const struct {
    Phrase phrase;
    const char* english;
    const char* translation;
    const char* said;
    const char* why;
  } cases[] = {
      {phrase("{} of {} rows", 2, std::size_t{7}), "2 of 7 rows", "von {1} Zeilen {0}", "von 7 Zeilen 2",
       "another order"},
      {phrase("write {:04}-{:02}", 33, 5), "write 0033-05", "{:04}/{:02}", "0033/05", "numbers stay numbers"},
      {phrase("as {:.2f}", 1.5), "as 1.50", "{:.1f}", "1.5", "so do fractions"},
      {phrase("by '{}'", ';'), "by ';'", "'{}'", "';'", "a sign is a text"},
      {phrase("{}: {}", std::string_view("x"), inner), "x: 'a.csv' is missing", "{} - {}",
       "x - „a.csv“ fehlt", "a refusal is translated too"},
      {phrase("the title of {}", Phrase("a book")), "the title of a book", "Titel: {}", "Titel: ein Buch",
       "and a phrase"},
      {phrase("{} left", 1), "1 left", "{} {}", "1 left", "a translation that cannot be filled"},
      {Phrase::quoted("disk {full}"), "disk {full}", "", "disk {full}", "what others said"},
  };
  for (const auto& [text, english, translation, said, why] : cases) {
    bool isOuter = true;
    const Translate translate = [&, form = translation](std::string_view of) -> std::string {
      const std::map<std::string_view, std::string> parts = {{"a book", "ein Buch"},
                                                             {"'{}' is missing", "„{}“ fehlt"}};
      if (const auto part = parts.find(of); part != parts.end()) return part->second;
      return std::exchange(isOuter, false) && *form != '\0' ? form : std::string(of);
    };
    EXPECT_EQ(text.english(), english) << why;
    EXPECT_EQ(text.in(translate), said) << why;
  }
}

}  // namespace
}  // namespace moniva
