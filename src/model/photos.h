#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "storage/mv_app_root.h"

/// Photos of records: rows of `photos`, and the files they name in the folder "photos" of the data folder. A
/// record that was copied shares the files of the one it was copied from. A file is there before a row names
/// it and as long as a row in use does; one that no row names does no harm.
namespace moniva {

/// A row of `photos`.
struct Photo {
  std::string photoFull;  ///< name of the image's file
  std::string photoLite;  ///< name of the file of its reduced form; blank where there is none
  std::string eid;        ///< the record
  Date datetime;          ///< when the row was last changed
};

/// The content of a file that is to become a photo, and what a refusal calls it ("bill.jpg").
struct ImageFile {
  std::string bytes;
  std::string title;
};

/// The photos in use of a record, in the order they were attached.
Result<std::vector<Photo>> photosOf(MVAppRoot& root, const std::string& eid);
/// The names of their files.
Result<std::vector<std::string>> getImagesForTransID(MVAppRoot& root, const std::string& eid);

/// Attaches images to a record, all or none; answers the names of their files, in order. One whose bytes are
/// those of a photo the record has already is not attached again; its answer is the name of that one. Refused
/// when there is no such record, when a content is no image that can be read, and when a file cannot be
/// written. Within a transaction of the caller that is given up later the files stay, unused.
Result<std::vector<std::string>> saveImages(MVAppRoot& root, const std::vector<ImageFile>& images,
                                            const std::string& eid);

/// Takes photos from a record, all or none; refused when the record has no such photo. Files that nobody uses
/// any more are set aside, unless a transaction of the caller is open: then they stay until the caller,
/// having committed, calls `setUnusedImagesAside`. Answers where the files are kept that were set aside.
Result<std::vector<std::filesystem::path>> deleteImages(MVAppRoot& root,
                                                        const std::vector<std::string>& names,
                                                        const std::string& eid);
Result<std::vector<std::filesystem::path>> deleteImage(MVAppRoot& root, const std::string& name,
                                                       const std::string& eid);
/// Sets those of the files aside that no photo in use names; their reduced forms, which can be made again,
/// are removed. Files that are in use, or gone already, are passed over. Refused within a transaction.
Result<std::vector<std::filesystem::path>> setUnusedImagesAside(MVAppRoot& root,
                                                                const std::vector<std::string>& names);

/// Lets a record that is a copy share the photos of the one it was copied from.
Result<> sharePhotos(MVAppRoot& root, const std::string& fromEid, const std::string& toEid);

/// Where the file of that name belongs. Refused for a name that is no plain file name: names come from other
/// devices too, and none may lead out of the folder.
Result<std::filesystem::path> getImagePath(MVAppRoot& root, const std::string& name);
/// Where the file of that name is: in its folder, or in the data folder itself, where older editions kept
/// files of images. Nothing when it is at neither place.
std::optional<std::filesystem::path> placeOfImage(MVAppRoot& root, const std::string& name);
/// The file's content, from its folder; nothing when there is no such file.
Result<std::optional<std::string>> getNewImageFromFile(MVAppRoot& root, const std::string& name);
/// The same from where older editions kept it.
Result<std::optional<std::string>> getOldImageFromFile(MVAppRoot& root, const std::string& name);

/// Names of the files in the folder of photos that no photo in use names, sorted; files that were set aside
/// are not among them.
Result<std::vector<std::string>> unusedImageFiles(MVAppRoot& root);

}  // namespace moniva
