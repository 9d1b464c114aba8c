#include "ui/cli/command_texts.h"

namespace moniva {

std::vector<CommandText> vendorTexts() {
  return {
      {"vendor",
       "vendors: whom you pay, and who pays you",
       "Payees are for expenses, payers for income; --payer chooses the payers. New ones are made as records "
       "name them.",
       {{"moniva vendor list", "see the payees"},
        {"moniva vendor rename Bakery \"Bäckerei Lang\"", "its records follow"},
        {"moniva vendor list --payers --by-use", "who pays you most often"}}},
      {"vendor list",
       "list the vendors",
       "In the order chosen with 'moniva vendor order-by', unless an option names another. By name goes by "
       "your language; Chinese names are filed under the letter their reading begins with.",
       {{"moniva vendor list", "the payees in the order you chose"},
        {"moniva vendor list --payers --sections", "the payers by letter"}}},
      {"vendor show", "show a vendor", "", {{"moniva vendor show Lang", ""}}},
      {"vendor add",
       "add a vendor, or bring a deleted one back",
       "",
       {{"moniva vendor add Lang", "a payee"}, {"moniva vendor add Weber --payer", "a payer"}}},
      {"vendor delete",
       "take a vendor out of the lists",
       "Its records keep it; 'moniva vendor add' brings it back.",
       {{"moniva vendor delete Lang", ""}}},
      {"vendor rename",
       "give a vendor another name, or make it one with another",
       "Its records follow. Where there is a vendor of the new name the two can be made one with --merge; "
       "that "
       "cannot be undone.",
       {{"moniva vendor rename Lang \"Bäckerei Lang\"", "another name"},
        {"moniva vendor rename \"Lang & Co\" Lang --merge", "one vendor of two"}}},
      {"vendor move-records",
       "hand all records of a vendor to another",
       "A vendor in the lists stays there.",
       {{"moniva vendor move-records Lang \"Bäckerei Nord\"", ""}}},
      {"vendor order",
       "put vendors in an order of your own",
       "The vendors named come first, the others after them as before.",
       {{"moniva vendor order Lang Stadtwerke", "these two first"}}},
      {"vendor order-by",
       "say what vendors are listed by",
       "In your own order (custom), by use, or by name in sections by letter. Without a mode the command "
       "tells "
       "how it is.",
       {{"moniva vendor order-by use", "those used most first, from now on"},
        {"moniva vendor order-by", "see which order it is"}}},
      {"vendor recount", "count afresh how often each vendor was used", "", {{"moniva vendor recount", ""}}},
      {"vendor tidy",
       "make one of vendors that stand twice",
       "Two devices that added the same vendor apart leave it twice, payee or payer. The one changed last "
       "stays, a deleted one only where all are; the records of the others go to it. A vendor without a key "
       "gets one.",
       {{"moniva vendor tidy", ""}}}};
}

}  // namespace moniva
