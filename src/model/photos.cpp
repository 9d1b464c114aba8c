#include "model/photos.h"

#include <algorithm>
#include <set>
#include <system_error>

#include "platform/files.h"
#include "platform/images.h"
#include "storage/writes.h"

namespace moniva {
namespace {

namespace fs = std::filesystem;

fs::path photosFolder(MVAppRoot& root) {
  return root.platform().directories.documents / "photos";
}

bool isPlainFileName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of(std::string("/\\\0", 3)) == std::string::npos;
}

/// "0192-full.png" -> "0192-lite.jpg", "old.jpg" -> "old-lite.jpg".
std::string reducedNameFor(const std::string& name) {
  std::string stem = name.substr(0, name.rfind('.'));
  if (stem.ends_with("-full")) stem.resize(stem.size() - 5);
  return stem + "-lite.jpg";
}

/// Where older editions kept the file. The data file lies in the same folder, so only names of images count.
std::optional<fs::path> oldPlaceOf(MVAppRoot& root, const std::string& name) {
  const auto dot = name.rfind('.');
  if (!isPlainFileName(name) || dot == std::string::npos) return std::nullopt;
  std::string ending = name.substr(dot);
  std::ranges::transform(ending, ending.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  if (ending == ".jpeg") ending = ".jpg";
  for (const auto kind : {ImageKind::jpeg, ImageKind::png, ImageKind::gif, ImageKind::webp}) {
    if (ending == extensionOf(kind)) return root.platform().directories.documents / name;
  }
  return std::nullopt;
}

bool isImageFile(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

Result<> requireRecordOfPhotos(Connection& db, const std::string& eid) {
  Run run = db.query("select 1 from transactions where eid = ? and deleted < 2", {eid});
  if (run.next()) return {};
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return refuse("there is no record '{}'", eid);
}

/// The photo of the record whose file has these bytes.
Result<std::optional<std::string>> attachedAlready(MVAppRoot& root, const std::string& eid,
                                                   const std::string& bytes) {
  const auto names = getImagesForTransID(root, eid);
  if (!names) return tl::make_unexpected(names.error());
  for (const auto& name : *names) {
    const auto place = placeOfImage(root, name);
    std::error_code error;
    if (!place || fs::file_size(*place, error) != bytes.size() || error) continue;
    const auto content = readFileIfPresent(*place);
    if (content && *content && **content == bytes) return std::optional(name);
  }
  return std::optional<std::string>();
}

/// Files on the way: those of a save that is not kept are removed again.
class FreshFiles {
 public:
  explicit FreshFiles(MVAppRoot& root) : folder_(photosFolder(root)) {}
  ~FreshFiles() {
    std::error_code ignored;
    for (const auto& path : written_) fs::remove(path, ignored);
  }
  FreshFiles(const FreshFiles&) = delete;
  FreshFiles& operator=(const FreshFiles&) = delete;

  Result<> write(const std::string& name, std::string_view bytes) {
    auto done = writeFileWhole(folder_ / name, bytes);
    if (done) written_.push_back(folder_ / name);
    return done;
  }
  void keep() { written_.clear(); }

 private:
  fs::path folder_;
  std::vector<fs::path> written_;
};

/// Writes the files of an image and then its row, unless the record has it already; answers its name.
Result<std::string> saveImage(MVAppRoot& root, FreshFiles& files, const std::string& bytes,
                              const Image& image, const std::string& eid) {
  auto known = attachedAlready(root, eid, bytes);
  if (!known) return tl::make_unexpected(known.error());
  if (*known) return std::move(**known);
  const std::string name = root.newIdentifier() + "-full" + std::string(extensionOf(image.head.kind));
  const std::string reducedName = reducedNameFor(name);
  if (auto done = files.write(name, bytes); !done) return tl::make_unexpected(done.error());
  if (auto done = files.write(reducedName, image.reduced); !done) return tl::make_unexpected(done.error());
  if (auto done = write(
          root, "insert into photos (eid, photoFull, datetime, edit_ipid, photoLite) values (?, ?, ?,?,?)",
          eid, name, root.editStamp(), root.itsUDID(), reducedName);
      !done) {
    return tl::make_unexpected(done.error());
  }
  return name;
}

/// Whether the query finds a row.
Result<bool> findsPhotoRow(Connection& db, std::string_view sql, std::initializer_list<Value> arguments) {
  Run run = db.query(sql, arguments);
  const bool found = run.next();
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return found;
}

/// Whether any record has the photo in use. None is left out: whoever asks may have undone a removal since.
Result<bool> isImageInUse(Connection& db, const std::string& name) {
  Run run =
      db.query("select count(eid) as photoCount from photos where deleted = 0 and photoFull = ? and eid != ?",
               {name, ""});
  if (!run.next()) return tl::make_unexpected(db.refusal());
  return run.integer(0) > 0;
}

}  // namespace

Result<std::vector<Photo>> photosOf(MVAppRoot& root, const std::string& eid) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::vector<Photo> photos;
  Run run = db->query(
      "select photoFull, photoLite, eid, datetime from photos where deleted = 0 and eid = ? and photoFull != "
      "''"
      " order by pid",
      {eid});
  while (run.next()) {
    photos.push_back(
        {std::string(run.text(0)), std::string(run.text(1)), std::string(run.text(2)), run.date(3)});
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return photos;
}

Result<std::vector<std::string>> getImagesForTransID(MVAppRoot& root, const std::string& eid) {
  auto photos = photosOf(root, eid);
  if (!photos) return tl::make_unexpected(photos.error());
  std::vector<std::string> names;
  for (auto& photo : *photos) names.push_back(std::move(photo.photoFull));
  return names;
}

Result<std::vector<std::string>> saveImages(MVAppRoot& root, const std::vector<ImageFile>& images,
                                            const std::string& eid) {
  // Reading images takes its time, so it comes before the store is kept from others.
  std::vector<Image> readImages;
  for (const auto& file : images) {
    auto image = root.platform().images->read(file.bytes);
    if (!image) return refuse("cannot take '{}': {}", file.title, image.error());
    readImages.push_back(std::move(*image));
  }
  FreshFiles files(root);
  auto saved = atomically(root, [&](Connection& db) -> Result<std::vector<std::string>> {
    if (auto found = requireRecordOfPhotos(db, eid); !found) return tl::make_unexpected(found.error());
    if (auto made = makeWritableFolder(photosFolder(root)); !made) return tl::make_unexpected(made.error());
    std::vector<std::string> names;
    for (std::size_t i = 0; i < images.size(); ++i) {
      auto name = saveImage(root, files, images[i].bytes, readImages[i], eid);
      if (!name) return tl::make_unexpected(name.error());
      names.push_back(std::move(*name));
    }
    return names;
  });
  if (saved) files.keep();
  return saved;
}

Result<std::vector<fs::path>> deleteImages(MVAppRoot& root, const std::vector<std::string>& names,
                                           const std::string& eid) {
  auto marked = atomically(root, [&](Connection& db) -> Result<bool> {
    for (const auto& name : names) {
      const auto found = findsPhotoRow(
          db, "select 1 from photos where deleted = 0 and photoFull = ? and eid = ?", {name, eid});
      if (!found) return tl::make_unexpected(found.error());
      if (!*found) return refuse("the record has no photo '{}'", name);
      if (auto done = write(
              root,
              "update photos set deleted = 1, datetime = ?, edit_ipid = ? where photoFull = ? and eid = ?",
              root.editStamp(), root.itsUDID(), name, eid);
          !done) {
        return tl::make_unexpected(done.error());
      }
    }
    return true;
  });
  if (!marked) return tl::make_unexpected(marked.error());
  if (root.db().getDatabase()->inTransaction()) return std::vector<fs::path>();
  auto aside = setUnusedImagesAside(root, names);
  if (aside) return aside;
  // The photos are gone from the record, which is what was asked for; a file that stays does no harm.
  root.addNotice(aside.error());
  return std::vector<fs::path>();
}

Result<std::vector<fs::path>> deleteImage(MVAppRoot& root, const std::string& name, const std::string& eid) {
  return deleteImages(root, {name}, eid);
}

Result<std::vector<fs::path>> setUnusedImagesAside(MVAppRoot& root, const std::vector<std::string>& names) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  if (db->inTransaction()) return refuse("files cannot be set aside before the change is kept");
  // With the write lock in hand, so that no other program comes to share a file between look and move.
  return atomically(root, [&](Connection&) -> Result<std::vector<fs::path>> {
    std::vector<fs::path> aside;
    for (const auto& name : names) {
      const auto inUse = isImageInUse(*db, name);
      if (!inUse) return tl::make_unexpected(inUse.error());
      const auto path = getImagePath(root, name);
      if (*inUse || !path || !isImageFile(*path)) continue;
      auto moved = setFileAside(*path, root.now());
      if (!moved) return tl::make_unexpected(moved.error());
      aside.push_back(std::move(*moved));
      const std::string reducedName = reducedNameFor(name);
      const auto needed =
          findsPhotoRow(*db, "select 1 from photos where photoFull = ? or (photoLite = ? and deleted = 0)",
                        {reducedName, reducedName});
      std::error_code ignored;
      if (needed && !*needed) fs::remove(photosFolder(root) / reducedName, ignored);
    }
    return aside;
  });
}

Result<> sharePhotos(MVAppRoot& root, const std::string& fromEid, const std::string& toEid) {
  return atomically(root, [&](Connection& db) -> Result<> {
    if (auto found = requireRecordOfPhotos(db, toEid); !found) return found;
    const auto photos = photosOf(root, fromEid);
    if (!photos) return tl::make_unexpected(photos.error());
    const auto known = getImagesForTransID(root, toEid);
    if (!known) return tl::make_unexpected(known.error());
    for (const auto& photo : *photos) {
      if (std::ranges::find(*known, photo.photoFull) != known->end()) continue;
      const Date stamp = root.editStamp();
      if (auto done =
              write(root, "insert into photos (eid, photoFull, datetime, edit_ipid) values (?, ?, ?,?)",
                    toEid, photo.photoFull, stamp, root.itsUDID());
          !done) {
        return done;
      }
      if (photo.photoLite.empty()) continue;
      if (auto done = write(root,
                            "update photos set photoLite = ?, datetime = ?, edit_ipid = ?"
                            " where photoFull = ? and eid = ? and deleted = 0",
                            photo.photoLite, stamp, root.itsUDID(), photo.photoFull, toEid);
          !done) {
        return done;
      }
    }
    return {};
  });
}

Result<fs::path> getImagePath(MVAppRoot& root, const std::string& name) {
  if (!isPlainFileName(name)) return refuse("'{}' is no name of a photo", name);
  return photosFolder(root) / name;
}

std::optional<fs::path> placeOfImage(MVAppRoot& root, const std::string& name) {
  if (auto path = getImagePath(root, name); path && isImageFile(*path)) return std::move(*path);
  if (auto path = oldPlaceOf(root, name); path && isImageFile(*path)) return path;
  return std::nullopt;
}

Result<std::optional<std::string>> getNewImageFromFile(MVAppRoot& root, const std::string& name) {
  const auto path = getImagePath(root, name);
  if (!path) return tl::make_unexpected(path.error());
  return readFileIfPresent(*path);
}

Result<std::optional<std::string>> getOldImageFromFile(MVAppRoot& root, const std::string& name) {
  if (!isPlainFileName(name)) return refuse("'{}' is no name of a photo", name);
  const auto path = oldPlaceOf(root, name);
  return path ? readFileIfPresent(*path) : std::optional<std::string>();
}

Result<std::vector<std::string>> unusedImageFiles(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::set<std::string> files;
  std::error_code error;
  for (fs::directory_iterator each(photosFolder(root), error), end; !error && each != end;
       each.increment(error)) {
    std::string name = each->path().filename().string();
    if (name.find(".set-aside-") == std::string::npos) files.insert(std::move(name));
  }
  if (error && error != std::errc::no_such_file_or_directory) {
    return refuse("cannot read '{}': {}", photosFolder(root).string(), error.message());
  }
  Run run = db->query("select photoFull, photoLite from photos where deleted = 0");
  while (run.next()) {
    for (const int column : {0, 1}) files.erase(std::string(run.text(column)));
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return std::vector<std::string>(files.begin(), files.end());
}

}  // namespace moniva
