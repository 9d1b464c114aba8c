// Builds the template store from SQL files, at build time: make_template FILE.sql... OUTPUT
// The result is in write-ahead-log mode, carries the application id and the store version, and holds no
// records.

#include <sqlite3.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

int run(sqlite3* db, const std::string& sql, const std::string& what) {
  char* error = nullptr;
  const int rc = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error);
  if (rc != SQLITE_OK) std::fprintf(stderr, "make_template: %s: %s\n", what.c_str(), error);
  sqlite3_free(error);
  return rc;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: make_template FILE.sql... OUTPUT\n");
    return 2;
  }
  const std::string output = argv[argc - 1];
  const std::string building = output + ".building";
  std::filesystem::remove(building);
  sqlite3* db = nullptr;
  int rc = sqlite3_open(building.c_str(), &db);
  if (rc == SQLITE_OK) {
    rc = run(db,
             "PRAGMA page_size = 4096; PRAGMA journal_mode = WAL; PRAGMA application_id = 1297043017;"
             "PRAGMA user_version = 1; BEGIN;",
             building);
  }
  for (int i = 1; rc == SQLITE_OK && i < argc - 1; ++i) {
    std::ifstream file(argv[i]);
    std::stringstream text;
    text << file.rdbuf();
    if (!file) {
      std::fprintf(stderr, "make_template: cannot read %s\n", argv[i]);
      rc = SQLITE_CANTOPEN;
    } else {
      rc = run(db, text.str(), argv[i]);
    }
  }
  if (rc == SQLITE_OK) rc = run(db, "COMMIT; PRAGMA wal_checkpoint(TRUNCATE);", building);
  if (sqlite3_close(db) != SQLITE_OK || rc != SQLITE_OK) return 1;
  std::filesystem::rename(building, output);
  return 0;
}
