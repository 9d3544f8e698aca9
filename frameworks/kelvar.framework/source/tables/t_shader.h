/* Group 31: shaders.
 * group     HOST_GROUP_SHADER
 * class     BaseShader : BaseList2D */
#ifndef KELVAR_T_SHADER_H
#define KELVAR_T_SHADER_H

#include "t_baselist.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct BaseShader BaseShader;

typedef struct HostShaderGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new shader of that type; null when it is none.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseShader* (*Alloc)(int32_t type);
} HostShaderGroup;

#ifdef __cplusplus
}
#endif
#endif
