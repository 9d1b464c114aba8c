#pragma once

#include <string>
#include <string_view>

#include "base/result.h"

namespace moniva {

enum class ImageKind { jpeg, png, gif, webp };

/// The end of a file name by which programs know the kind: ".jpg".
std::string_view extensionOf(ImageKind kind);

/// What an image says of itself at its beginning.
struct ImageHead {
  ImageKind kind = ImageKind::jpeg;
  int width = 0;  ///< in pixels, as they are stored
  int height = 0;
  int orientation = 1;  ///< how a JPEG is to be turned: 1 to 8 as in Exif, 1 for as it is
};

constexpr std::size_t kMostImageBytes = 50'000'000;
constexpr std::int64_t kMostImagePixels = 100'000'000;

/// Refused, in words that go on from "it ...": more bytes than an image may have.
Result<> checkImageBytes(std::size_t bytes);

/// Reads the head of an image without decoding anything, so that a small file cannot ask for much memory.
/// Refused, in words that go on from "it ...": nothing, too much, no image of a known kind, a moving WebP
/// (nothing shows one picture of it), no sound head, a JPEG or GIF that ends too soon, too many pixels.
Result<ImageHead> readImageHead(std::string_view bytes);

/// An image that could be read, and its reduced form.
struct Image {
  ImageHead head;
  /// A JPEG that fits a square of kReducedSide pixels, upright, on white.
  std::string reduced;
};
constexpr int kReducedSide = 480;

/// The host's images.
class Images {
 public:
  virtual ~Images() = default;
  /// Decodes the bytes of a file; refused as by `readImageHead`, and when they cannot be decoded.
  virtual Result<Image> read(std::string_view bytes) = 0;
};

/// A host that shows no images.
class NoImages final : public Images {
 public:
  Result<Image> read(std::string_view) override { return refuse("it cannot be read: no images here"); }
};

}  // namespace moniva
