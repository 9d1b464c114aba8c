#pragma once

#include <string>
#include <vector>

namespace moniva {

/// The editions of the program. They share the form of the data and differ in where they look for it.
enum class Edition { first, firstTablet, second, plus };

/// What the program is told about itself: the configuration that comes with a build, not with the data.
struct AppInfo {
  Edition edition = Edition::second;
  std::string version;
  std::string bundleIdentifier = "moniva";
  /// File name of the database in the Documents folder.
  std::string kDatabaseName = "moniva.dat";
  /// File name of the first edition's photo database.
  std::string kBackupPhotoDBName = "monivaPhoto.dat";
  /// Cloud containers of the editions.
  std::string containerOfFirst = "moniva1";
  std::string containerOfSecond = "moniva2";
  std::string containerOfPlus = "monivaPlus";
};

}  // namespace moniva
