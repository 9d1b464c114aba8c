#include "platform/images.h"

#include <cstdint>
#include <optional>

namespace moniva {
namespace {

/// The bytes of a file as numbers; 0 beyond the end, which no size and no length may be.
class FileBytes {
 public:
  explicit FileBytes(std::string_view bytes) : bytes_(bytes) {}

  std::size_t size() const { return bytes_.size(); }
  std::string_view text(std::size_t at, std::size_t count) const {
    return at < size() ? bytes_.substr(at, count) : std::string_view();
  }
  std::uint32_t byte(std::size_t at) const {
    return at < size() ? static_cast<unsigned char>(bytes_[at]) : 0;
  }
  std::uint32_t big(std::size_t at, std::size_t count) const {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < count; ++i) number = number << 8 | byte(at + i);
    return number;
  }
  std::uint32_t little(std::size_t at, std::size_t count) const {
    std::uint32_t number = 0;
    for (std::size_t i = count; i-- > 0;) number = number << 8 | byte(at + i);
    return number;
  }

 private:
  std::string_view bytes_;
};

struct PixelSize {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

tl::unexpected<Refusal> damaged() {
  return refuse("it is damaged or ends too soon");
}

/// The size within the limit, or why not.
Result<ImageHead> headOf(ImageKind kind, PixelSize size, int orientation = 1) {
  if (size.width == 0 || size.height == 0) return damaged();
  if (size.width > kMostImagePixels || size.height > kMostImagePixels ||
      std::int64_t{size.width} * size.height > kMostImagePixels) {
    return refuse("it has {} x {} pixels, more than {} million", size.width, size.height,
                  kMostImagePixels / 1'000'000);
  }
  return ImageHead{kind, static_cast<int>(size.width), static_cast<int>(size.height), orientation};
}

/// The orientation in an Exif segment, whose text begins with "Exif" and two zeros.
int orientationIn(std::string_view segment) {
  const FileBytes exif(segment.substr(6));
  const bool little = exif.text(0, 2) == "II";
  const auto number = [&](std::size_t at, std::size_t count) {
    return little ? exif.little(at, count) : exif.big(at, count);
  };
  const std::size_t table = number(4, 4);
  const std::size_t entries = number(table, 2);
  for (std::size_t i = 0; i < entries; ++i) {
    constexpr std::uint32_t kOrientation = 0x0112;
    const std::size_t entry = table + 2 + 12 * i;
    if (entry >= exif.size()) break;
    if (number(entry, 2) != kOrientation) continue;
    const auto value = number(entry + 8, 2);
    return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
  }
  return 1;
}

Result<ImageHead> jpegHead(const FileBytes& file) {
  PixelSize size;
  int orientation = 1;
  std::size_t at = 2;
  while (at + 4 <= file.size()) {
    const auto marker = file.byte(at + 1);
    if (file.byte(at) != 0xFF) break;
    if (marker == 0xFF) {
      ++at;
      continue;
    }
    const std::size_t length = file.big(at + 2, 2);
    if (length < 2) break;
    const bool isFrame =
        marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
    const auto segment = file.text(at + 4, length - 2);
    if (isFrame) size = {file.big(at + 7, 2), file.big(at + 5, 2)};
    if (marker == 0xE1 && segment.starts_with(std::string_view("Exif\0\0", 6))) {
      orientation = orientationIn(segment);
    }
    at += 2 + length;
    constexpr std::uint32_t kScan = 0xDA;
    if (marker != kScan) continue;
    // Within a scan the mark of the end cannot stand for anything else. A decoder would make up the rest.
    const bool ends = file.text(at, file.size()).find("\xFF\xD9") != std::string_view::npos;
    return ends ? headOf(ImageKind::jpeg, size, orientation) : damaged();
  }
  return damaged();
}

/// Past the blocks of data that begin there; nothing when the file ends before they do.
std::optional<std::size_t> afterGifBlocks(const FileBytes& file, std::size_t at) {
  while (at < file.size()) {
    const std::size_t length = file.byte(at);
    at += 1 + length;
    if (length == 0) return at;
  }
  return std::nullopt;
}

Result<ImageHead> gifHead(const FileBytes& file) {
  const auto colours = [&](std::size_t flagsAt) {
    const auto flags = file.byte(flagsAt);
    return (flags & 0x80U) != 0 ? std::size_t{3} << ((flags & 7U) + 1) : 0;
  };
  auto screen = headOf(ImageKind::gif, {file.little(6, 2), file.little(8, 2)});
  if (!screen) return screen;
  std::size_t at = 13 + colours(10);
  while (at < file.size()) {
    if (file.byte(at) == '!') {
      const auto next = afterGifBlocks(file, at + 2);
      if (!next) break;
      at = *next;
    } else if (file.byte(at) == ',') {
      const auto picture = headOf(ImageKind::gif, {file.little(at + 5, 2), file.little(at + 7, 2)});
      if (!picture) return picture;
      // A decoder would make up the rest here too.
      return afterGifBlocks(file, at + 10 + colours(at + 9) + 1) ? screen : damaged();
    } else {
      break;
    }
  }
  return damaged();
}

Result<ImageHead> webpHead(const FileBytes& file) {
  const auto chunk = file.text(12, 4);
  PixelSize size;
  if (chunk == "VP8 ") {
    size = {file.little(26, 2) & 0x3FFFU, file.little(28, 2) & 0x3FFFU};
  } else if (chunk == "VP8L") {
    const auto bits = file.little(21, 4);
    size = {(bits & 0x3FFFU) + 1, (bits >> 14 & 0x3FFFU) + 1};
  } else if (chunk == "VP8X") {
    if ((file.byte(20) & 2U) != 0) return refuse("it is a moving image; only still ones can be read");
    size = {file.little(24, 3) + 1, file.little(27, 3) + 1};
  }
  return headOf(ImageKind::webp, size);
}

}  // namespace

std::string_view extensionOf(ImageKind kind) {
  switch (kind) {
    case ImageKind::jpeg:
      return ".jpg";
    case ImageKind::png:
      return ".png";
    case ImageKind::gif:
      return ".gif";
    case ImageKind::webp:
      return ".webp";
  }
  return "";
}

Result<> checkImageBytes(std::size_t bytes) {
  if (bytes == 0) return refuse("the image file is empty");
  if (bytes > kMostImageBytes) return refuse("it has more than {} MB", kMostImageBytes / 1'000'000);
  return {};
}

Result<ImageHead> readImageHead(std::string_view bytes) {
  if (auto checked = checkImageBytes(bytes.size()); !checked) return tl::make_unexpected(checked.error());
  const FileBytes file(bytes);
  if (bytes.starts_with("\xFF\xD8\xFF")) return jpegHead(file);
  if (bytes.starts_with("\x89PNG\r\n\x1A\n")) {
    if (file.text(12, 4) != "IHDR") return damaged();
    return headOf(ImageKind::png, {file.big(16, 4), file.big(20, 4)});
  }
  if (bytes.starts_with("GIF87a") || bytes.starts_with("GIF89a")) return gifHead(file);
  if (bytes.starts_with("RIFF") && file.text(8, 4) == "WEBP") return webpHead(file);
  return refuse("it is no JPEG, PNG, GIF or WebP image");
}

}  // namespace moniva
