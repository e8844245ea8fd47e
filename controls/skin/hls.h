// Hue, luminance and saturation conversions with the arithmetic of the Windows shell's ColorRGBToHLS/ColorHLSToRGB.
#pragma once

#include <cstdint>

#include "platform/export.h"

namespace uc::skin {

// `colorref` is a GDI COLORREF (0x00BBGGRR). Hue, luminance and saturation run 0-240; a grey has hue 160.
UC_API void ColorRGBToHLS(std::uint32_t colorref, std::uint16_t* hue, std::uint16_t* luminance,
                          std::uint16_t* saturation);
// Inputs are 16-bit like the Windows WORD parameters. A luminance above 240 is not clamped and channels
// outside 0-255 keep their low byte, as the shell function does; hue and saturation are expected in 0-240.
UC_API std::uint32_t ColorHLSToRGB(std::uint16_t hue, std::uint16_t luminance, std::uint16_t saturation);

// ARGB colour with its luminance multiplied by `factor` (truncated to an integer) through the two conversions
// above; the alpha byte is kept.
UC_API std::uint32_t BrightenArgb(std::uint32_t argb, float factor);

}  // namespace uc::skin
