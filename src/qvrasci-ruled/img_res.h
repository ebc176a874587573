// The editor's built-in pictures, drawn at build time (tools/bannerc).
#pragma once

// The About banner: a 475 × 258 picture resource with its close mark at (451, 6).
extern const unsigned char kAboutBanner[];
extern const unsigned kAboutBannerSize;
