#pragma once

#include "platform/images.h"

namespace moniva {

/// Images read by libgd. The library is loaded with the first image: with all that it brings along it takes
/// longer to load than most commands take.
class GdImages final : public Images {
 public:
  Result<Image> read(std::string_view bytes) override;
};

}  // namespace moniva
