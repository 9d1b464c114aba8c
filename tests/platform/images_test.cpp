#include "platform/images.h"

#include <gtest/gtest.h>

#include "platform/posix/gd_images.h"
#include "support/pictures.h"

namespace moniva {
namespace {

std::string jpeg() {
  return GdImages().read(pictures::png()).value().reduced;
}
/// With an orientation, as cameras write it, in either order of bytes.
std::string jpegOf(int orientation, bool little) {
  const std::string exif = little ? pictures::fromHex(
                                        "457869660000"
                                        "49492a0008000000"
                                        "0100"
                                        "12010300010000000" +
                                        std::to_string(orientation) +
                                        "000000"
                                        "00000000")
                                  : pictures::fromHex(
                                        "457869660000"
                                        "4d4d002a00000008"
                                        "0001"
                                        "01120003000000010"
                                        "00" +
                                        std::to_string(orientation) +
                                        "0000"
                                        "00000000");
  const std::string segment = pictures::fromHex("ffe1") + '\0' + static_cast<char>(exif.size() + 2) + exif;
  return jpeg().insert(2, segment);
}
std::string with(std::string bytes, std::size_t at, std::string_view hex) {
  const std::string other = pictures::fromHex(hex);
  return bytes.replace(at, other.size(), other);
}
std::string halfOf(const std::string& bytes, std::size_t lacks) {
  return bytes.substr(0, bytes.size() - lacks);
}

TEST(Images, areReadWhateverTheirKind) {
  const struct {
    std::string bytes;
    std::string_view extension;
  } cases[] = {
      {pictures::png(), ".png"}, {pictures::gif(), ".gif"}, {pictures::webp(), ".webp"}, {jpeg(), ".jpg"}};
  for (const auto& c : cases) {
    const auto image = GdImages().read(c.bytes);
    ASSERT_TRUE(image) << c.extension << ": " << image.error().why;
    EXPECT_EQ(extensionOf(image->head.kind), c.extension);
    EXPECT_EQ(image->head.width, 3) << c.extension;
    EXPECT_EQ(image->head.height, 2) << c.extension;
    EXPECT_EQ(readImageHead(image->reduced)->width, 3) << "small ones are not enlarged";
  }
}

TEST(Images, refuseInWordsWhatCannotBeRead) {
  const struct {
    const char* why;
    std::string bytes;
    std::string_view says;
  } cases[] = {
      {"nothing", "", "empty"},
      {"a text named .jpg", "Dear diary, this is no image", "no JPEG, PNG, GIF or WebP"},
      {"a mark alone", "GIF89a", "damaged"},
      {"a PNG that asks for gigabytes", with(pictures::png(), 16, "0000ea600000ea60"), "60000 x 60000"},
      {"sides whose product overflows", with(pictures::png(), 16, "ffffffffffffffff"), "4294967295"},
      {"no height", with(pictures::png(), 20, "00000000"), "damaged"},
      {"a GIF whose screen is large", with(pictures::gif(), 6, "ffffffff"), "65535 x 65535"},
      {"a GIF whose picture is large", with(pictures::gif(), 24, "ffffffff"), "65535 x 65535"},
      {"a moving WebP", pictures::fromHex("524946460a000000574542505650385802000000020000000200000100"),
       "moving"},
      {"a PNG cut short", halfOf(pictures::png(), 20), "damaged"},
      {"a PNG with a flipped bit", with(pictures::png(), 40, "00"), "damaged"},
      {"a GIF cut short", halfOf(pictures::gif(), 5), "damaged"},
      {"a WebP cut short", halfOf(pictures::webp(), 20), "damaged"},
      {"a JPEG cut short", halfOf(jpeg(), 6), "damaged"},
      {"too many bytes", std::string(kMostImageBytes + 1, 'x'), "50 MB"},
  };
  for (const auto& c : cases) {
    const auto image = GdImages().read(c.bytes);
    ASSERT_FALSE(image) << c.why;
    EXPECT_NE(image.error().why.find(c.says), std::string::npos) << c.why << ": " << image.error().why;
  }
}

TEST(Images, anyCutOfAFileIsRefusedOrRead) {
  for (const auto& whole : {pictures::png(), pictures::gif(), pictures::webp(), jpegOf(6, true)}) {
    for (std::size_t size = 0; size < whole.size(); ++size) {
      const auto image = GdImages().read(whole.substr(0, size));
      EXPECT_TRUE(!image || size + 1 == whole.size()) << size << " of " << whole.size();
    }
  }
}

TEST(Images, standUprightInTheirReducedForm) {
  for (const bool little : {true, false}) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
      const auto image = GdImages().read(jpegOf(orientation, little));
      ASSERT_TRUE(image) << image.error().why;
      EXPECT_EQ(image->head.orientation, orientation);
      EXPECT_EQ(readImageHead(image->reduced)->height, orientation >= 5 ? 3 : 2) << orientation;
    }
  }
}

}  // namespace
}  // namespace moniva
