/* What the messages to elements carry: by the message's id the type that `data` points at, or null: scripts
 * may send any message without data, and 5, 1001077, 1023742 and 1026945 never with data of theirs. A message
 * that is not told here carries a HostGeData or null; a sender and a receiver that know one another may agree
 * upon more. All pointers are borrowed for the call. */
#ifndef KELVAR_T_MESSAGES_H
#define KELVAR_T_MESSAGES_H

#include "t_document.h"
#include "t_select.h"

enum HostNodeMessage {
  HOST_MSG_POINTS_CHANGED = 1,           /* HostPointsChanged */
  HOST_MSG_CHANGE = 5,                   /* null: the parameters changed */
  HOST_MSG_EDIT = 9,                     /* BaseContainer */
  HOST_MSG_DRAG = 17,                    /* HostDescriptionDrag */
  HOST_MSG_DESCRIPTION_CHECKUPDATE = 18, /* HostDescriptionMessage, and 24, 25 */
  HOST_MSG_DESCRIPTION_VALIDATE = 24,
  HOST_MSG_DESCRIPTION_COMMAND = 25,
  HOST_MSG_DOCUMENT_INFO = 22,           /* BaseDocument */
  HOST_MSG_RETRIEVE_PRIVATE_DATA = 23,   /* HostPrivateData; of loaders and savers of scenes */
  HOST_MSG_DESCRIPTION_BITMAP = 27,      /* HostDescriptionBitmap */
  HOST_MSG_PYTHON_DATA = 1023742,        /* HostBool, 1: the next message to the element carries a PyObject */
  HOST_MSG_PYTHON_INSTANCE = 1026945,    /* HostPythonInstance */
  HOST_MSG_RENAME_TEXTURES = 1001071,    /* HostTextureInfo */
  HOST_MSG_EVENT_NOTIFICATION = 1001077, /* HostEventNotification */
  HOST_MSG_FILE_FORMAT = 1001078,        /* HostFileFormat */
  HOST_MSG_GET_CUSTOM_ICON = 1001090,    /* HostCustomIcon */
  HOST_MSG_GET_SELECTION = 1021339,      /* HostSelectionAnswer */
  HOST_MSG_GET_ICON_SETTINGS = 1041699,  /* HostIconSettings, all zero: the icon of the type */
  HOST_MSG_GET_REAL_OBJECT = 1028476,    /* HostObjectAnswer, and 1036447 */
  HOST_MSG_GET_VISIBLE_OBJECT = 1036447,
  HOST_MSG_MANAGER_COMMAND = 300001001,   /* HostManagerCommand */
  HOST_MSG_DESCRIPTION_POPUP = 300001046, /* HostDescriptionPopup */
  HOST_MSG_SCALE_FACTOR = 300001069,      /* HostScaleFactor */
  HOST_MSG_TAKE_OVERRIDE = 431000094,     /* HostTakeOverride */
  HOST_MSG_WEIGHTS = 440000230            /* HostWeights */
};

/* `map` tells for each of `mapCount` old points the new one; -1: it is gone. */
typedef struct HostPointsChanged {
  int32_t oldCount, newCount, flags, mapCount;
  const int32_t* map;
} HostPointsChanged;

typedef struct HostDescriptionDrag {
  BaseDocument* document;
  HostDescID id;
  int32_t flags;
  int32_t reserved;
} HostDescriptionDrag;

typedef struct HostDescriptionMessage {
  HostDescID id;
} HostDescriptionMessage;

typedef struct HostPrivateData {
  BaseList2D* node; /* the answer: what the plug-in's settings are read from */
} HostPrivateData;

typedef struct HostDescriptionBitmap {
  HostDescID id;
  int32_t flags;
  int32_t reserved;
  BaseBitmap* bmp; /* the answer; it is the sender's then */
} HostDescriptionBitmap;

/* The Python object behind an element, with a reference of its own; null: there is none. */
typedef struct HostPythonInstance {
  void* object;
} HostPythonInstance;

typedef struct HostTextureInfo {
  HostBool external, animated;
  double start;
} HostTextureInfo;

typedef struct HostFileFormat {
  int32_t type;
  int32_t format;
  HostFilename name; /* the sender's; an answer is stored by Copy and Destroy of group 9 */
} HostFileFormat;

typedef struct HostEventNotification {
  BaseList2D* node; /* what the event happened to */
  int32_t event;
  int32_t flags;
  const BaseContainer* data;
} HostEventNotification;

typedef struct HostCustomIcon {
  HostIcon icon; /* the sender's picture of 32 by 32 pixels, to be drawn upon, or a part of it */
  HostBool filled;
  int32_t reserved;
} HostCustomIcon;

typedef struct HostSelectionAnswer {
  BaseSelect* sel; /* the answer, or null; it is the sender's then */
} HostSelectionAnswer;

typedef struct HostIconSettings {
  HostFilename file; /* of the picture; the sender's then */
  int32_t colorMode; /* 0 as it is, 1 in the object's display color, 2 in `color` */
  int32_t reserved;
  Vector color;
} HostIconSettings;

typedef struct HostObjectAnswer {
  BaseList2D* object;
} HostObjectAnswer;

typedef struct HostManagerCommand {
  int32_t command, group, parent;
} HostManagerCommand;

typedef struct HostDescriptionPopup {
  HostDescID id;
  int32_t chosen; /* 0 while the popup is filled */
  int32_t reserved;
  BaseContainer* popup;
} HostDescriptionPopup;

typedef struct HostScaleFactor {
  double scale;
} HostScaleFactor;

typedef struct HostTakeOverride {
  void* takeData;
  BaseList2D* overrideTake;
  BaseList2D* parent;
  HostDescID id;
  HostDescID parentId; /* the answer */
  HostBool allow;
  HostBool overrideEnabled;
} HostTakeOverride;

/* The weights are the receiver's, and stay until its next message. */
typedef struct HostWeights {
  const double* weight;
  int32_t count;
  int32_t reserved;
} HostWeights;

#endif
