#include "platform/posix/gd_images.h"

#include <gd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "platform/posix/loaded_library.h"

namespace moniva {
namespace {

constexpr const char* kLibrary = "libgd.so.3";
constexpr int kWhite = 0xFFFFFF;
constexpr int kQuality = 85;

/// The functions of the library that are used.
struct GdLibrary : LoadedLibrary {
  decltype(&gdSetErrorMethod) setErrorMethod = nullptr;
  decltype(&gdImageCreateFromJpegPtr) fromJpeg = nullptr;
  decltype(&gdImageCreateFromPngPtr) fromPng = nullptr;
  decltype(&gdImageCreateFromGifPtr) fromGif = nullptr;
  decltype(&gdImageCreateFromWebpPtr) fromWebp = nullptr;
  decltype(&gdImageCreateTrueColor) createTrueColor = nullptr;
  decltype(&gdImageFilledRectangle) filledRectangle = nullptr;
  decltype(&gdImageCopyResampled) copyResampled = nullptr;
  decltype(&gdImageJpegPtr) jpegOf = nullptr;
  decltype(&gdImageDestroy) destroy = nullptr;
  decltype(&gdFree) release = nullptr;

  GdLibrary() : LoadedLibrary(kLibrary) {
    find("gdSetErrorMethod", setErrorMethod);
    find("gdImageCreateFromJpegPtr", fromJpeg);
    find("gdImageCreateFromPngPtr", fromPng);
    find("gdImageCreateFromGifPtr", fromGif);
    find("gdImageCreateFromWebpPtr", fromWebp);
    find("gdImageCreateTrueColor", createTrueColor);
    find("gdImageFilledRectangle", filledRectangle);
    find("gdImageCopyResampled", copyResampled);
    find("gdImageJpegPtr", jpegOf);
    find("gdImageDestroy", destroy);
    find("gdFree", release);
    // What is wrong is told by the answers; the library would print it as well.
    if (missing().empty()) setErrorMethod([](int, const char*, va_list) {});
  }
};

const GdLibrary& gd() {
  static const GdLibrary loaded;
  return loaded;
}

struct DestroyPicture {
  void operator()(gdImage* picture) const { gd().destroy(picture); }
};
using Picture = std::unique_ptr<gdImage, DestroyPicture>;

Picture decoded(ImageKind kind, std::string_view bytes) {
  const int size = static_cast<int>(bytes.size());
  void* data = const_cast<char*>(bytes.data());
  switch (kind) {
    case ImageKind::jpeg:
      return Picture(gd().fromJpeg(size, data));
    case ImageKind::png:
      return Picture(gd().fromPng(size, data));
    case ImageKind::gif:
      return Picture(gd().fromGif(size, data));
    case ImageKind::webp:
      return Picture(gd().fromWebp(size, data));
  }
  return nullptr;
}

/// The picture within the square, each pixel the mean of those it stands for.
Picture reducedOf(gdImage& picture) {
  const double scale = std::min(1.0, double{kReducedSide} / std::max(picture.sx, picture.sy));
  const int width = std::max(1, static_cast<int>(std::lround(picture.sx * scale)));
  const int height = std::max(1, static_cast<int>(std::lround(picture.sy * scale)));
  Picture reduced(gd().createTrueColor(width, height));
  if (!reduced) return nullptr;
  gd().filledRectangle(reduced.get(), 0, 0, width - 1, height - 1, kWhite);
  gd().copyResampled(reduced.get(), &picture, 0, 0, 0, 0, width, height, picture.sx, picture.sy);
  return reduced;
}

/// The picture turned as cameras ask for.
Picture upright(Picture picture, int orientation) {
  if (orientation == 1) return picture;
  const int width = picture->sx;
  const int height = picture->sy;
  const bool lies = orientation >= 5;
  Picture turned(gd().createTrueColor(lies ? height : width, lies ? width : height));
  if (!turned) return nullptr;
  const bool fromRight = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
  const bool fromBelow = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int along = fromRight ? width - 1 - x : x;
      const int down = fromBelow ? height - 1 - y : y;
      (lies ? turned->tpixels[along][down] : turned->tpixels[down][along]) = picture->tpixels[y][x];
    }
  }
  return turned;
}

}  // namespace

Result<Image> GdImages::read(std::string_view bytes) {
  const auto head = readImageHead(bytes);
  if (!head) return tl::make_unexpected(head.error());
  if (!gd().missing().empty()) return refuse("it cannot be read: {}", gd().missing());
  const Picture picture = decoded(head->kind, bytes);
  if (!picture) return refuse("it is damaged or ends too soon");
  Picture reduced = reducedOf(*picture);
  if (reduced) reduced = upright(std::move(reduced), head->orientation);
  if (!reduced) return refuse("there is no memory to read it");
  int size = 0;
  const std::unique_ptr<void, decltype(&gdFree)> jpeg(gd().jpegOf(reduced.get(), &size, kQuality),
                                                      gd().release);
  if (!jpeg) return refuse("there is no memory to read it");
  return Image{*head, std::string(static_cast<const char*>(jpeg.get()), static_cast<std::size_t>(size))};
}

}  // namespace moniva
