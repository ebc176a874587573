// A minimal PNG writer (8-bit RGBA, no filtering) for looking at generated artwork.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// `pixels` are 0xAARRGGBB, straight alpha, rows from the top.
bool writePng(const std::string& path, int width, int height,
              const std::vector<std::uint32_t>& pixels);
