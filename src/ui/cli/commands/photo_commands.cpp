#include <algorithm>
#include <boost/json.hpp>

#include "model/photos.h"
#include "platform/files.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/records.h"
#include "ui/cli/table.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

namespace fs = std::filesystem;
namespace json = boost::json;

/// What the commands on photos take, each the part it needs.
struct PhotoOptions {
  std::string eid;
  std::vector<std::string> files;
  std::vector<std::string> names;
  std::string to;
};

json::object photoJson(Session& session, const Photo& photo) {
  const auto place = placeOfImage(session.root(), photo.photoFull);
  return {{"eid", photo.eid},
          {"photoFull", photo.photoFull},
          {"photoLite", photo.photoLite},
          {"datetime", isoDate(session, photo.datetime)},
          {"path", place ? json::value(place->string()) : json::value()}};
}

/// The record's photos as JSON; of those names only, when there are any.
json::array photosJson(Session& session, const std::vector<Photo>& photos,
                       const std::vector<std::string>* names = nullptr) {
  json::array rows;
  for (const auto& photo : photos) {
    if (names != nullptr && std::ranges::find(*names, photo.photoFull) == names->end()) continue;
    rows.push_back(photoJson(session, photo));
  }
  return rows;
}

/// The photos typed, by their number in the list or their name, each once.
std::vector<Photo> photosTyped(const std::vector<Photo>& photos, const std::vector<std::string>& typed) {
  std::vector<Photo> chosen;
  for (const auto& text : typed) {
    auto found = std::ranges::find(photos, text, &Photo::photoFull);
    const bool isNumber = !text.empty() && text.size() <= 6 &&
                          std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
    if (found == photos.end() && isNumber) {
      const auto number = std::stoul(text);
      if (number < 1 || number > photos.size()) {
        throw photos.size() == 1 ? refused("there is no photo {}; the record has 1", number)
                                 : refused("there is no photo {}; the record has {}", number, photos.size());
      }
      found = photos.begin() + static_cast<std::ptrdiff_t>(number - 1);
    }
    if (found == photos.end()) {
      std::vector<std::string> names;
      for (const auto& photo : photos) names.push_back(photo.photoFull);
      const auto meant = didYouMean(text, names);
      throw meant ? refused("the record has no photo '{}'; did you mean '{}'?", printable(text), *meant)
                  : refused("the record has no photo '{}'; type its number or name as in: moniva photo list",
                            printable(text));
    }
    if (std::ranges::find(chosen, found->photoFull, &Photo::photoFull) == chosen.end()) {
      chosen.push_back(*found);
    }
  }
  return chosen;
}

/// The record typed and its photos, of which there has to be one.
std::vector<Photo> somePhotos(Session& session, const std::string& typedEid) {
  auto photos = done(photosOf(session.root(), recordTyped(session, typedEid)));
  if (photos.empty()) throw refused("the record has no photo");
  return photos;
}

void addPhotos(Session& session, const PhotoOptions& options) {
  MVAppRoot& root = session.root();
  const std::string eid = recordTyped(session, options.eid);
  const auto before = done(getImagesForTransID(root, eid));
  std::vector<ImageFile> files;
  for (const auto& path : options.files) files.push_back(imageFileTyped(path));
  const auto names = done(saveImages(root, files, eid));
  const auto photos = done(photosOf(root, eid));
  const auto added = photos.size() - std::min(photos.size(), before.size());
  if (added > 0) root.markRecentEditDate();
  if (session.options().json) return session.printJson(photosJson(session, photos, &names));
  const auto known = names.size() - std::min(names.size(), added);
  std::string sentence;
  if (added == 1 && names.size() == 1) {
    sentence = session.text("Attached '{}' to the record.", files.front().title);
  } else if (added > 0) {
    sentence = session.count("Attached {} photo to the record.", "Attached {} photos to the record.",
                             static_cast<std::int64_t>(added));
  }
  if (known == 1 && names.size() == 1) {
    sentence = session.text("The record has '{}' already; nothing was changed.", files.front().title);
  } else if (known > 0) {
    sentence +=
        (sentence.empty() ? "" : " ") +
        session.count("{} was there already.", "{} were there already.", static_cast<std::int64_t>(known));
  }
  session.answer(sentence);
}

void listPhotos(Session& session, const PhotoOptions& options) {
  const auto photos = done(photosOf(session.root(), recordTyped(session, options.eid)));
  if (session.options().json) return session.printJson(photosJson(session, photos));
  if (photos.empty()) {
    return session.say(session.text("The record has no photo. Attach one with: moniva photo add EID FILE"));
  }
  Table table({{.title = "", .align = Align::right},
               {.title = session.text("Photo")},
               {.title = session.text("Size"), .align = Align::right},
               {.title = session.text("Attached")}});
  for (std::size_t i = 0; i < photos.size(); ++i) {
    const auto place = placeOfImage(session.root(), photos[i].photoFull);
    std::error_code error;
    const auto bytes = place ? fs::file_size(*place, error) : 0;
    table.addRow({std::to_string(i + 1), printable(photos[i].photoFull),
                  place && !error ? Cell(session.text("{} kB", (bytes + 999) / 1000))
                                  : Cell(session.text("missing"), ink::red),
                  dateText(session, photos[i].datetime)});
  }
  session.out() << table.render(session.style(), session.width());
}

void exportPhotos(Session& session, const PhotoOptions& options) {
  auto photos = somePhotos(session, options.eid);
  if (!options.names.empty()) photos = photosTyped(photos, options.names);
  const std::string shown = printable(options.to);
  std::error_code error;
  const bool intoFolder = fs::is_directory(options.to, error);
  if (!intoFolder && photos.size() > 1) {
    throw isPresent(options.to)
        ? refused("'{}' is no folder; the record has {} photos, so name a folder or one of them", shown,
                  photos.size())
        : refused("there is no folder '{}'; the record has {} photos, so name a folder or one of them", shown,
                  photos.size());
  }
  struct Copy {
    fs::path from;
    fs::path to;
  };
  std::vector<Copy> copies;
  for (const auto& photo : photos) {
    auto from = placeOfImage(session.root(), photo.photoFull);
    if (!from) throw refused("the file of the photo '{}' is missing", printable(photo.photoFull));
    const fs::path to = intoFolder ? fs::path(options.to) / from->filename() : fs::path(options.to);
    if (isPresent(to)) throw refused("'{}' is there already", printable(to.string()));
    copies.push_back({std::move(*from), to});
  }
  json::array written;
  for (const auto& copy : copies) {
    if (!done(copyFileIfAbsent(copy.from, copy.to))) {
      throw refused("'{}' is there already", printable(copy.to.string()));
    }
    written.push_back({{"photoFull", copy.from.filename().string()}, {"path", copy.to.string()}});
  }
  if (session.options().json) return session.printJson(written);
  session.answer(copies.size() == 1 ? session.text("Wrote '{}'.", printable(copies.front().to.string()))
                                    : session.text("Wrote {} photos to '{}'.", copies.size(), shown));
}

void removePhotos(Session& session, const PhotoOptions& options) {
  MVAppRoot& root = session.root();
  const auto all = somePhotos(session, options.eid);
  const auto chosen = photosTyped(all, options.names);
  std::vector<std::string> names;
  for (const auto& photo : chosen) names.push_back(photo.photoFull);
  const auto aside = done(deleteImages(root, names, chosen.front().eid));
  root.markRecentEditDate();
  if (session.options().json) {
    json::array kept;
    for (const auto& path : aside) kept.push_back(json::value(path.string()));
    return session.printJson(json::object{
        {"eid", chosen.front().eid}, {"photoFull", json::value_from(names)}, {"setAside", std::move(kept)}});
  }
  std::string sentence =
      session.count("Removed {} photo from the record.", "Removed {} photos from the record.",
                    static_cast<std::int64_t>(names.size()));
  if (aside.size() == 1) {
    sentence += " " + session.text("Its file is kept as '{}'.", printable(aside.front().string()));
  } else if (aside.size() > 1) {
    sentence +=
        " " + session.text("Their files are kept in '{}'.", printable(aside.front().parent_path().string()));
  }
  session.answer(sentence);
}

}  // namespace

void addPhotoCommands(CommandLine& line) {
  CLI::App* photo = line.add(line.app(), "photo");
  photo->require_subcommand(1);
  const auto command = [&](const char* name, void (*run)(Session&, const PhotoOptions&)) {
    CLI::App* added = line.add(*photo, name);
    auto options = std::make_shared<PhotoOptions>();
    added->add_option("EID", options->eid, "The record: its eid, or the end of it")->required();
    line.onRun(added, [options, run](Session& session) { run(session, *options); });
    return std::pair(added, options);
  };
  auto add = command("add", addPhotos);
  // What is wrong with a file is told by the command, in words of its own.
  add.first->add_option("FILE", add.second->files, "Image files: JPEG, PNG, GIF or WebP")
      ->type_name("PATH")
      ->required();
  command("list", listPhotos);
  auto write = command("export", exportPhotos);
  write.first->add_option("TO", write.second->to, "A folder, or a new file for one photo")
      ->type_name("PATH")
      ->required();
  write.first->add_option("PHOTO", write.second->names, "Numbers in the list or names (else all)");
  auto remove = command("remove", removePhotos);
  remove.first->add_option("PHOTO", remove.second->names, "Numbers in the list or names")->required();
}

}  // namespace moniva
