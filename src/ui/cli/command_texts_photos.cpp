#include "ui/cli/command_texts.h"

namespace moniva {

std::vector<CommandText> photoTexts() {
  return {
      {"photo",
       "photos of records",
       "Receipts and other images, kept beside the data file in the folder \"photos\". A record is named by "
       "its eid, which --json tells, or by the last characters of it.",
       {{"moniva photo add 5f0c1a2b receipt.jpg", "attach an image to a record"},
        {"moniva photo list 5f0c1a2b", "see the photos of a record"},
        {"moniva photo export 5f0c1a2b ~/Desktop", "copy them out"}}},
      {"photo add",
       "attach images to a record",
       "JPEG, PNG, GIF and WebP files of up to 50 MB and 100 million pixels. The file is copied as it is; an "
       "image the record has already is not attached twice.",
       {{"moniva photo add 5f0c1a2b receipt.jpg", ""},
        {"moniva photo add 5f0c1a2b front.png back.png", "two at once, both or none"}}},
      {"photo list", "list the photos of a record", "", {{"moniva photo list 5f0c1a2b", ""}}},
      {"photo export",
       "copy photos of a record out",
       "No file is ever overwritten.",
       {{"moniva photo export 5f0c1a2b ~/Desktop", "all photos into a folder"},
        {"moniva photo export 5f0c1a2b receipt.jpg 2", "the second of the list, under a name of your own"}}},
      {"photo remove",
       "take photos from a record",
       "A file that no other record shares is kept under a dated name in the folder of photos.",
       {{"moniva photo remove 5f0c1a2b 1", "the first of the list"}}}};
}

}  // namespace moniva
