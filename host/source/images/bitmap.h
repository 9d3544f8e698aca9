// A picture in memory.
#ifndef HOST_IMAGES_BITMAP_H
#define HOST_IMAGES_BITMAP_H

#include <cstdint>
#include <vector>

#include "kelvar.framework/source/tables/t_bitmap.h"
#include "scene/links.h"

struct BaseBitmap : host::Linkable {
  int32_t width = 0;
  int32_t height = 0;
  int32_t depth = 0;
  std::vector<uint8_t> pixels;  // rows from the top, each padded to whole bytes

  void TakePixelsOf(const BaseBitmap& other);
};

#endif
