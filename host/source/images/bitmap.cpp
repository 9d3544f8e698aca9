#include "images/bitmap.h"

#include <unistd.h>

#include <algorithm>
#include <memory>
#include <new>

#include "boundary/host.h"

namespace {

constexpr int32_t kDepths[] = {1, 4, 8, 16, 24, 32, 36, 48, 64, 96, 128};

}  // namespace

// The copy of the pixels is all that can fail; the rest follows it.
void BaseBitmap::TakePixelsOf(const BaseBitmap& other) {
  pixels = std::vector<uint8_t>(other.pixels);
  width = other.width;
  height = other.height;
  depth = other.depth;
}

namespace host::bitmap {

BaseBitmap* Alloc() { return new BaseBitmap; }

void Free(BaseBitmap* self) { DestroyNow(self); }

HostBool SetLink(BaseBitmap* self, HostLink* link) {
  if (!self || !link) return 0;
  self->Link(*link);
  return 1;
}

HostBool IsMultipassBitmap(const BaseBitmap*) noexcept { return 0; }

int32_t Init(BaseBitmap* self, int32_t width, int32_t height, int32_t depth, int32_t) {
  const bool known = std::find(std::begin(kDepths), std::end(kDepths), depth) != std::end(kDepths);
  if (!self || width < 1 || height < 1 || !known) return IMAGE_RESULT_WRONG_TYPE;
  const uint64_t rowBytes = (uint64_t(width) * uint64_t(depth) + 7) / 8;
  // The system promises more memory than there is: the promise would end the process later.
  const uint64_t most = uint64_t(sysconf(_SC_PHYS_PAGES)) * uint64_t(sysconf(_SC_PAGESIZE)) / 2;
  if (rowBytes > most / uint64_t(height)) return IMAGE_RESULT_OUT_OF_MEMORY;
  try {
    self->pixels = std::vector<uint8_t>(rowBytes * uint64_t(height));
  } catch (const std::bad_alloc&) {
    return IMAGE_RESULT_OUT_OF_MEMORY;
  }
  self->width = width;
  self->height = height;
  self->depth = depth;
  return IMAGE_RESULT_OK;
}

int32_t GetBw(const BaseBitmap* self) noexcept { return self ? self->width : 0; }

int32_t GetBh(const BaseBitmap* self) noexcept { return self ? self->height : 0; }

int32_t GetBt(const BaseBitmap* self) noexcept { return self ? self->depth : 0; }

BaseBitmap* GetClone(const BaseBitmap* self) {
  if (!self) return nullptr;
  auto clone = std::make_unique<BaseBitmap>();
  clone->TakePixelsOf(*self);
  return clone.release();
}

HostBool CopyTo(const BaseBitmap* self, BaseBitmap* dst) {
  if (!self || !dst) return 0;
  if (self != dst) dst->TakePixelsOf(*self);
  return 1;
}

}  // namespace host::bitmap
