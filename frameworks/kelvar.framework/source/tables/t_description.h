/* Group 22: descriptions of an object's parameters.
 * group     HOST_GROUP_DESCRIPTION
 * class     Description */
#ifndef KELVAR_T_DESCRIPTION_H
#define KELVAR_T_DESCRIPTION_H

#include "t_atom.h"
#include "t_container.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What the settings of a parameter tell. Of a container, the entries that matter are there. */
enum HostDescSetting {
  DESC_NAME = 1,       /* text */
  DESC_SHORT_NAME = 2, /* text */
  DESC_IDENT = 3,      /* text: the name of the constant with the parameter's number */
  DESC_DATATYPE = 4,   /* number: DTYPE_ */
  DESC_DEFAULT = 5,    /* a value of the parameter's type */
  DESC_MIN = 6,        /* number; of a vector that of each component */
  DESC_MAX = 7,
  DESC_STEP = 8,
  DESC_UNIT = 9,     /* number: DESC_UNIT_ */
  DESC_CYCLE = 10,   /* container: the values of a choice, each with its text */
  DESC_ANIMATE = 11, /* truth: whether tracks may animate it */
  DESC_HELP = 12     /* text */
};

enum HostDescUnit {
  DESC_UNIT_NONE = 0,
  DESC_UNIT_LENGTH = 1,  /* units of the scene */
  DESC_UNIT_ANGLE = 2,   /* radians */
  DESC_UNIT_PERCENT = 3, /* 1 is shown as 100 % */
  DESC_UNIT_PIXEL = 4,
  DESC_UNIT_TIME = 5 /* seconds */
};

/* The types of parameters, in the levels of their ids. Values of the type that has the same number in
 * HostDataType, unless said otherwise. */
enum HostDescType {
  DTYPE_GROUP = 1,        /* no value */
  DTYPE_SUBCONTAINER = 5, /* HOST_DATA_CONTAINER */
  DTYPE_LONG = 15,
  DTYPE_REAL = 19,
  DTYPE_TIME = 22,
  DTYPE_VECTOR = 23,
  DTYPE_MATRIX = 25,
  DTYPE_LLONG = 26,
  DTYPE_STRING = 130,
  DTYPE_FILENAME = 131,
  DTYPE_BASELISTLINK = 133,
  DTYPE_BOOL = 400006001, /* HOST_DATA_INT32 */
  DTYPE_COLOR = 400006002 /* HOST_DATA_VECTOR */
};

/* The components of a vector, as the level below it. */
enum HostVectorComponent { VECTOR_X = 1000, VECTOR_Y = 1001, VECTOR_Z = 1002 };

/* The first level of the parameters that a user added; their number is the second. */
enum { ID_USERDATA = 700 };

typedef struct HostDescriptionGroup {
  uint32_t size;
  uint32_t reserved;

  /* Ends a description that the caller owns.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(Description* self);

  /* The number of its parameters and groups.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetCount)(const Description* self);

  /* The full id of the parameter or group at a position, and that of the group that it stands in, of no level
   * for none. Parents come ahead of what is in them.
   * owner   the description
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetIndex)(const Description* self, int32_t index, HostDescID* id, HostDescID* group);

  /* How the parameter at a position is to be shown: by the ids DESC_NAME, DESC_UNIT, DESC_MIN and so on.
   * owner   the description
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  const BaseContainer* (*GetSettings)(const Description* self, int32_t index);

  /* The position of a parameter by the numbers of its levels; -1 when there is none. A level below that of the
   * parameter, such as one component of a vector, finds the parameter.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   -1 */
  int32_t (*Find)(const Description* self, const HostDescID* id);
} HostDescriptionGroup;

#ifdef __cplusplus
}
#endif
#endif
