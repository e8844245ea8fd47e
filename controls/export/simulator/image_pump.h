// Streams an image on a worker thread into a small ring of buffers, so reading the sources overlaps writing the medium.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "export/simulator/iso_image.h"

namespace uc::disc {

// Hands `sink` consecutive pieces of `image` (from its start, `total` bytes, zero-filled past the image's
// end) on the calling thread, while a worker reads ahead. Stops early when `sink` returns false. Returns
// false with `error` filled when a source could not be read; the pieces before it were delivered.
bool PumpImage(IsoImage& image, std::uint64_t total, std::size_t chunk,
               const std::function<bool(std::uint8_t* data, std::size_t size)>& sink, StreamError& error);

}  // namespace uc::disc
