#pragma once

#include <string>
#include <string_view>

/// Images of 3 x 2 red pixels.
namespace moniva::pictures {

inline std::string fromHex(std::string_view hex) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
  }
  return bytes;
}

inline std::string png() {
  return fromHex(
      "89504e470d0a1a0a0000000d4948445200000003000000020103000000a7baf45900000003504c5445fc02042eff11f5"
      "000000097048597300000ec400000ec401952b0e1b0000000c49444154089963606060000000040001a30a15e3000000"
      "0049454e44ae426082");
}
inline std::string gif() {
  return fromHex("47494638376103000200800000fc02040000002c0000000003000200000202845f003b");
}
inline std::string webp() {
  return fromHex(
      "52494646340000005745425056503820280000009001009d012a0300020007409625a00274ba00039800fee50af827a9"
      "728ffe378f02bc9763a00000");
}

}  // namespace moniva::pictures
