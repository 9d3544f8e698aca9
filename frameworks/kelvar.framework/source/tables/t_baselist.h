/* Group 16: elements of the scene's lists.
 * group     HOST_GROUP_BASE_LIST
 * class     BaseList2D : GeListNode */
#ifndef KELVAR_T_BASELIST_H
#define KELVAR_T_BASELIST_H

#include "t_bitmap.h"
#include "t_container.h"
#include "t_listnode.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct BaseList2D BaseList2D;

typedef struct DynamicDescription DynamicDescription;

/* A part of a picture. */
typedef struct HostIcon {
  BaseBitmap* bmp;
  int32_t x, y, w, h;
} HostIcon;

/* What a layer says of the nodes on it. */
typedef struct HostLayerData {
  HostBool solo, view, render, manager, locked, generators, deformers, expressions, animation, xref;
  Vector color;
} HostLayerData;

typedef struct HostBaseListGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new element of that type; null when no such type can be created.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseList2D* (*Alloc)(int32_t id);

  /* Destroys an element with all below it and all its branches; one that stands in a list is taken out first.
   * All their links are dead at once. Nothing happens to what the host keeps. Only with the interpreter's lock
   * held, where Python runs.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(BaseList2D* self);

  /* The name. Quick.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetName)(const BaseList2D* self);

  /* Sets the name.
   * owner   -
   * thread  main
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetName)(BaseList2D* self, const HostString* name);

  /* The container of the element's parameters.
   * owner   the element
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseContainer* (*GetDataInstance)(BaseList2D* self);

  /* A copy of the node's container.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseContainer* (*GetData)(const BaseList2D* self);

  /* Merges a container into that of the node, or replaces it by a copy.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetData)(BaseList2D* self, const BaseContainer* data, HostBool add);

  /* Sets the bits of the mask.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetBit)(BaseList2D* self, int32_t mask);

  /* Whether all bits of the mask are set.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetBit)(const BaseList2D* self, int32_t mask);

  /* Clears the bits of the mask.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*DelBit)(BaseList2D* self, int32_t mask);

  /* Turns the bits of the mask over.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*ToggleBit)(BaseList2D* self, int32_t mask);

  /* All bits.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetAllBits)(const BaseList2D* self);

  /* Replaces all bits.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetAllBits)(BaseList2D* self, int32_t mask);

  /* The help text of the node's type.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetBubbleHelp)(const BaseList2D* self);

  /* The name of the node's type.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetTypeName)(const BaseList2D* self);

  /* The node that the list belongs to in which this one stands: of a tag the object, of a shader its material,
   * of an object the document.
   * owner   the scene
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseList2D* (*GetMain)(const BaseList2D* self);

  /* The first of the node's shaders.
   * owner   the node
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseList2D* (*GetFirstShader)(const BaseList2D* self);

  /* Puts a shader into the node's list, behind `pred`, or first. The node owns it. 0, and nothing happens,
   * when `pred` isn't in that list, and as in InsertUnder.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsertShader)(BaseList2D* self, BaseList2D* shader, BaseList2D* pred);

  /* The first of the node's tracks.
   * owner   the node
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseList2D* (*GetFirstCTrack)(const BaseList2D* self);

  /* The head of the node's tracks.
   * owner   the node
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  GeListHead* (*GetCTrackRoot)(BaseList2D* self);

  /* The head of the node's motion layers.
   * owner   the node
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  GeListHead* (*GetNLARoot)(BaseList2D* self);

  /* The node's track of that parameter.
   * owner   the node
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseList2D* (*FindCTrack)(const BaseList2D* self, const HostDescID* id);

  /* Puts a track into the node's list, behind those of lower or the same ids. The node owns it. 0, and nothing
   * happens, for what is no track.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*InsertTrackSorted)(BaseList2D* self, BaseList2D* track);

  /* The icon, drawn as now; all zero when it has none.
   * owner   the host, of the picture
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*GetIcon)(const BaseList2D* self, HostIcon* icon);

  /* What the layer of the node says; with `raw` the layer's own word, else with those above it: what one of
   * them switches off is off, and solo or locked is what one of them says. 0 when it has no layer.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetLayerData)(const BaseList2D* self, BaseDocument* document, HostLayerData* data, HostBool raw);

  /* Changes the layer of the node; 0 when it has none.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetLayerData)(BaseList2D* self, BaseDocument* document, const HostLayerData* data);

  /* The layer of the node in that document; null stands for any. That of a layer is itself.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseList2D* (*GetLayerObject)(const BaseList2D* self, BaseDocument* document);

  /* Puts the node onto a layer; null for none. 0 for what is no layer, and on a layer itself.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetLayerObject)(BaseList2D* self, BaseList2D* layer);

  /* Points all links of the node's document that point at the node at `dst` instead, those in containers and,
   * where `dst` is a layer, those to layers. With `undolink` those of undo steps too. 0 without a document, and
   * where `dst` stands in another one.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*TransferGoal)(BaseList2D* self, BaseList2D* dst, HostBool undolink);

  /* Sets a parameter as a track does: to the value between both at `mix`, 0 to 1; of what can't be mixed the
   * first one below 1.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetAnimatedParameter)(BaseList2D* self, BaseList2D* track, const HostDescID* id,
                                   const HostGeData* data1, const HostGeData* data2, double mix, int32_t flags);

  /* Reads a parameter as a track does: the value twice, and 0 for `mix`, unless the element keeps two. Both
   * values are overwritten; on 0 they are no values.
   * owner   the caller, of the values
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetAnimatedParameter)(const BaseList2D* self, const HostDescID* id, HostGeData* data1,
                                   HostGeData* data2, double* mix, int32_t flags);

  /* The description of the parameters that a user added; null when the node can't have such.
   * owner   the node
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  DynamicDescription* (*GetDynamicDescription)(BaseList2D* self);

  /* Lets the node receive message 1001077 (HostEventNotification) behind each message to `node` whose id is
   * `event`, until either is destroyed. One event is notified once: a second call changes flags and data.
   * Message 1001077 itself is no event.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*AddEventNotification)(BaseList2D* self, BaseList2D* node, int32_t event, int32_t flags,
                                   const BaseContainer* data);

  /* Ends what AddEventNotification began; 0 when there is none. The document isn't looked at.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*RemoveEventNotification)(BaseList2D* self, BaseDocument* document, BaseList2D* node,
                                      int32_t event);

  /* Whether the node is notified.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*FindEventNotification)(const BaseList2D* self, BaseDocument* document, BaseList2D* node,
                                    int32_t event);

  /* Whether the parameter is selected for keyframes.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*FindKeyframeSelection)(const BaseList2D* self, const HostDescID* id);

  /* Selects the parameter for keyframes, or no longer; 0 for what is no parameter of the node.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*SetKeyframeSelection)(BaseList2D* self, const HostDescID* id, HostBool selection);

  /* Whether any parameter is selected for keyframes.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*KeyframeSelectionContent)(const BaseList2D* self);

  /* Selects no parameter for keyframes.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*ClearKeyframeSelection)(BaseList2D* self);

  /* Multiplies the parameters of the node that are lengths (DESC_UNIT_LENGTH), as far as their ranges let it.
   * Nothing happens for what is no finite number.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Scale)(BaseList2D* self, double scale);

  /* Opens the node's editor; 0 when it has none.
   * owner   -
   * thread  main
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*Edit)(BaseList2D* self);

  /* What the node's type said when it was registered (OBJECT_, TAG_ ... flags).
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetInfo)(const BaseList2D* self);

  /* The id of the node's icon, or its file; empty when it has none.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetIconEx)(const BaseList2D* self);
} HostBaseListGroup;

#ifdef __cplusplus
}
#endif
#endif
