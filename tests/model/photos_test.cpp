#include "model/photos.h"

#include <gtest/gtest.h>

#include "storage/writes.h"
#include "support/household.h"
#include "support/pictures.h"

namespace moniva {
namespace {

using Names = std::vector<std::string>;

/// Two expenses, of which one has photos.
class WithPhotos : public Household {
 public:
  WithPhotos()
      : lunch(spend("Lunch", 12, on("2024-02-01")).eid), copy(spend("Copy", 12, on("2024-02-02")).eid) {}

  Names save(const Names& images) {
    std::vector<ImageFile> files;
    for (const auto& bytes : images) files.push_back({bytes, "bill"});
    auto names = saveImages(root, files, lunch);
    EXPECT_TRUE(names) << names.error().why;
    return names.value_or(Names());
  }
  Names of(const std::string& eid) { return getImagesForTransID(root, eid).value(); }
  /// The files in the folder of photos.
  Names files() {
    return std::filesystem::exists(documents() / "photos") ? namesIn(documents() / "photos") : Names();
  }

  std::string lunch;
  std::string copy;
};

TEST(Photos, areKeptAsTheyCameAndOnlyOnce) {
  WithPhotos store;
  const auto names = store.save({pictures::png(), pictures::gif(), pictures::png()});
  ASSERT_EQ(names.size(), 3U);
  EXPECT_EQ(names[2], names[0]) << "the record has it already";
  EXPECT_EQ(store.save({pictures::gif()}), Names{names[1]});
  EXPECT_EQ(store.of(store.lunch), (Names{names[0], names[1]}));
  EXPECT_EQ(*getNewImageFromFile(store.root, names[1]).value(), pictures::gif());
  EXPECT_EQ(store.files().size(), 4U) << "two images and their reduced forms";
  const auto photo = photosOf(store.root, store.lunch)->front();
  EXPECT_TRUE(std::filesystem::exists(store.documents() / "photos" / photo.photoLite));
  EXPECT_EQ(store.rows("select edit_ipid from photos limit 1"), store.root.itsUDID());
}

TEST(Photos, thatCannotBeSavedLeaveNothing) {
  WithPhotos store;
  const std::vector<ImageFile> good{{pictures::png(), "good"}, {pictures::gif(), "too"}};
  EXPECT_FALSE(saveImages(store.root, {good[0], {"no image", "bad.txt"}}, store.lunch));
  EXPECT_FALSE(saveImages(store.root, good, "nobody"));
  EXPECT_EQ(store.files(), Names());

  // The second row is refused when its files are there already.
  store.sql(
      "create trigger no before insert on photos when exists (select 1 from photos)"
      " begin select raise(abort, 'no'); end");
  EXPECT_FALSE(saveImages(store.root, good, store.lunch));
  EXPECT_NE(store.takeFaults(), "");
  EXPECT_EQ(store.files(), Names());
  EXPECT_EQ(store.of(store.lunch), Names());
}

TEST(Photos, shareAFileUntilTheLastRecordLetsItGo) {
  WithPhotos store;
  const auto name = store.save({pictures::png()}).front();
  ASSERT_TRUE(sharePhotos(store.root, store.lunch, store.copy));
  ASSERT_TRUE(sharePhotos(store.root, store.lunch, store.copy)) << "again, to no effect";
  EXPECT_EQ(store.of(store.copy), Names{name});
  EXPECT_EQ(store.rows("select count(distinct photoLite) || ' of ' || count(*) from photos"), "1 of 2");

  EXPECT_TRUE(deleteImage(store.root, name, store.lunch).value().empty());
  EXPECT_EQ(*getNewImageFromFile(store.root, name).value(), pictures::png()) << "the copy has it still";
  EXPECT_FALSE(deleteImage(store.root, name, store.lunch)) << "it has been removed";

  const auto aside = deleteImage(store.root, name, store.copy).value();
  ASSERT_EQ(aside.size(), 1U);
  EXPECT_EQ(bytesOf(aside.front()), pictures::png());
  EXPECT_EQ(store.files(), Names{aside.front().filename()}) << "the reduced form is gone";
  EXPECT_EQ(store.rows("select deleted from photos"), "1\n1");
  EXPECT_EQ(unusedImageFiles(store.root).value(), Names());
}

TEST(Photos, keepTheirFileUntilARemovalIsForGood) {
  WithPhotos store;
  const auto name = store.save({pictures::png()}).front();
  const auto before = store.files();
  for (const bool isKept : {false, true}) {
    const auto done = atomically(store.root, [&](Connection&) -> Result<> {
      EXPECT_TRUE(deleteImage(store.root, name, store.lunch));
      EXPECT_FALSE(setUnusedImagesAside(store.root, {name}));
      EXPECT_EQ(store.files(), before);
      if (!isKept) return refuse("changed my mind");
      return {};
    });
    EXPECT_EQ(done.has_value(), isKept);
    EXPECT_EQ(setUnusedImagesAside(store.root, {name})->size(), isKept ? 1U : 0U);
    EXPECT_EQ(store.of(store.lunch).size(), isKept ? 0U : 1U);
  }
}

TEST(Photos, namesFromElsewhereLeadNowhereElse) {
  WithPhotos store;
  ASSERT_FALSE(store.save({pictures::png()}).empty());
  putBytes(store.documents() / "old.JPG", "from an older edition");
  const struct {
    const char* name;
    bool isFound;
  } cases[] = {{"../settings.json", false}, {"..", false}, {".", false},      {"moniva.dat", false},
               {"/etc/passwd", false},      {"", false},   {"old.JPG", true}, {"a\\b.jpg", false}};
  putBytes(store.documents() / "settings.json", "{}");
  for (const auto& c : cases) {
    EXPECT_EQ(placeOfImage(store.root, c.name).has_value(), c.isFound) << c.name;
    EXPECT_EQ(getOldImageFromFile(store.root, c.name).value_or(std::nullopt).has_value(), c.isFound)
        << c.name;
    EXPECT_FALSE(getNewImageFromFile(store.root, c.name).value_or(std::nullopt)) << c.name;
    store.sql("insert into photos (eid, photoFull) values (?, ?)", {store.copy, c.name});
    // Such a row can be got rid of, and that touches no file.
    EXPECT_EQ(deleteImage(store.root, c.name, store.copy).value().size(), 0U) << c.name;
  }
  EXPECT_EQ(bytesOf(store.documents() / "settings.json"), "{}");
  EXPECT_TRUE(std::filesystem::exists(store.dataFile()));
  EXPECT_TRUE(std::filesystem::exists(store.documents() / "old.JPG"));
}

}  // namespace
}  // namespace moniva
