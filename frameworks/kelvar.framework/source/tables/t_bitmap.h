/* Group 24: pictures.
 * group     HOST_GROUP_BITMAP
 * class     BaseBitmap */
#ifndef KELVAR_T_BITMAP_H
#define KELVAR_T_BITMAP_H

#include "t_host.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct BaseBitmap BaseBitmap;

/* What Init and its kin answer. */
enum ImageResult {
  IMAGE_RESULT_OK = 1,
  IMAGE_RESULT_NOT_EXISTING = -1,
  IMAGE_RESULT_WRONG_TYPE = -2,
  IMAGE_RESULT_OUT_OF_MEMORY = -3
};

typedef struct HostBitmapGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new picture without pixels.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseBitmap* (*Alloc)(void);

  /* Destroys a picture that the caller owns. Its links are dead at once. Only with the interpreter's lock
   * held, where Python runs.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(BaseBitmap* self);

  /* Points a link at the picture; what the link held before is not looked at. 1, or 0 when memory lacks.
   * owner   the caller, of the link
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetLink)(BaseBitmap* self, HostLink* link);

  /* Whether it is a picture of several layers. Quick.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*IsMultipassBitmap)(const BaseBitmap* self);

  /* Gives the picture a size in pixels and a depth of 1, 4, 8, 16, 24, 32, 36, 48, 64, 96 or 128 bits; it is
   * black then. An ImageResult; a picture that it can't be given to stays as it is.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   -2 */
  int32_t (*Init)(BaseBitmap* self, int32_t width, int32_t height, int32_t depth, int32_t flags);

  /* The width in pixels. Quick.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetBw)(const BaseBitmap* self);

  /* The height in pixels. Quick.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetBh)(const BaseBitmap* self);

  /* The depth in bits of a pixel. Quick.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetBt)(const BaseBitmap* self);

  /* A copy.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseBitmap* (*GetClone)(const BaseBitmap* self);

  /* Makes another picture a copy of this one; 0 when memory lacks.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*CopyTo)(const BaseBitmap* self, BaseBitmap* dst);
} HostBitmapGroup;

#ifdef __cplusplus
}
#endif
#endif
