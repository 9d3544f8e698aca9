"""What the package is to offer, and what of it is there: qlxpy docs/status.py > docs/status.md

Names stand in the order in which the package adds them. A name that the package gets beyond these is added here.
"""
import importlib

FUNCTIONS = "stdout_write stderr_write stdin_read GePrint WriteConsole"
CONSTANTS = "TAVOR_TARGET_DEBUG DESCID_ROOT DESCID_DYNAMICSUB"

TYPES = """
Description DescLevel DescID CPolygon HandleInfo Vector Vector4d BaseSelect CustomDataType Gradient PriorityData
SplineData SoundEffectorData LayerSet DateTimeData UnitScaleData FontData MatAssignData InExcludeData Matrix BaseTime
BaseContainer QLXAtom CKey GeListNode GeListHead BaseList2D BaseMaterial Material BaseShader CCurve CTrack BaseTag
SelectionTag CustomDataTag TextureTag VariableTag SegmentTag TangentTag PointTag PolygonTag NormalTag UVWTag
VertexColorTag BaseObject CameraObject PointObject PolygonObject LineObject SplineObject BaseView BaseDraw PLAData
ReflectionLayer AliasTrans LayerShader LayerShaderLayer LensGlowStruct BitmapButtonStruct HyperLinkData RangeData
Quaternion FieldList VoronoiFracture LodObject InstanceObject CustomIconSettings IconData
"""

MODULES = {
    "gui": """
        GeDialog SubDialog LinkBoxGui QLXGadget BaseCustomGui InExcludeCustomGui HtmlViewerCustomGui SplineCustomGui
        SoundEffectorCustomGui TreeViewCustomGui GradientCustomGui DescriptionCustomGui BitmapButtonCustomGui
        QuickTabCustomGui DateTimeControl TreeViewFunctions GeUserArea EditorWindow HyperLinkCustomGui
        FontChooserCustomGui RangeCustomGui""",
    "documents": """
        GetActiveDocument GetFirstDocument SetActiveDocument InsertBaseDocument KillDocument LoadFile LoadDocument
        MergeDocument SaveDocument IsolateObjects SetDocumentTime CloseAllDocuments RenderDocument
        InteractiveModeling_Restart RunAnimation StopExternalRenderer GetBatchRender GetAllAssets GetAllAssetsNew
        SaveProject Assemble GetFirstMarker AddMarker GetRecentDocumentsList BaseDocument RenderData LayerObject
        BatchRender BaseVideoPost""",
    "storage": "HyperFile MemoryFileStruct ShowInFinder",
    "bitmaps": """
        ShowBitmap BaseBitmap MultipassBitmap GeClipMap MovieSaver MovieLoader ColorProfile ColorProfileConvert""",
    "modules": "",
    "modules.character": """
        CPyCAMorph_Type CAWeightTag CAWeightMgr CAJointObject CAPoseMorphTag CAMorphNode CAReferencePSD""",
    "modules.clonix": """
        CxData FalloffDataData QLX_Falloff FieldInput FieldCallerStack FieldInfo FieldOutput FieldOutputBlock
        FieldObject FieldLayer FIELD_EXECUTION_BLOCK_SIZE FIELD_EXECUTION_BLOCK_SIZEf""",
    "modules.net": "RenderJob",
    "modules.hair": "HairLibrary HairObject HairGuides HairSelectionTag HairVertexMapTag HairTangentTag",
    "modules.frescoa": """
        PaintBitmap PaintMaterial PaintTexture PaintLayer PaintLayerBmp PaintLayerFolder PaintLayerMask TempUVHandle""",
    "modules.particles": "Particle BaseParticle",
    "modules.driftmotes": "DM_MasterSystem DM_PGroup",
    "modules.render": "",
    "modules.sculpting": "SculptTag",
    "modules.graphview": "GvNodeMaster GvNode GvPort WireletTag",
    "modules.snap": "",
    "modules.takesystem": "TakeData BaseTake BaseOverride BaseOverrideGroup",
    "modules.tokensystem": "",
    "modules.colorchooser": "ColorSwatchGroup ColorSwatchData",
    "modules.substance": "",
    "modules.motiontracker": "MotionTrackerObject",
    "modules.volume": "VolumeObject VolumeBuilder",
    "plugins": """
        GetFirstPlugin BasePlugin GeResource PriorityList BaseDrawHelp BaseData FalloffData CommandData
        BitmapLoaderData BitmapSaverData ToolData SculptBrushToolData MessageData NodeData ObjectData TagData ShaderData
        SceneSaverData SceneLoaderData PreferenceData""",
    "utils": """
        SendModelingCommand noise SplineHelp SplineLengthData Neighbor ViewportSelect GeRayCollider PolygonReduction""",
    "threading": """
        GeThreadLock GeThreadUnlock GeIsMainThread GeIsMainThreadAndNoDrawThread GeGetCPUCount GeGetCurrentThreadCount
        GeGetCurrentThreadId IdentifyThread GeGetCurrentThread GeGetDummyThread GeGetEscTestThread
        GeCheckBackgroundThreadsRunning GeStopBackgroundThreads BaseThread QLXThread""",
    "internals": "CheckOwnership",
}

HEAD = """# What the package offers

What a script finds in `qlx` today, and which of its names are still to come. Generated from the running package:
`build/bin/qlxpy docs/status.py > docs/status.md`. The constants of the host's symbols are not counted.
"""


def listed():
    """Each place in the package with its names, in the package's order."""
    yield "qlx", " ".join((FUNCTIONS, TYPES, CONSTANTS)).split()
    for name, names in MODULES.items():
        yield "qlx." + name, names.split()


def unlisted():
    """Types of the package that no list names."""
    for place, names in listed():
        for name, value in vars(importlib.import_module(place)).items():
            if isinstance(value, type) and not name.startswith("_") and name not in names:
                yield place + "." + name


def text():
    rows, sections, total, present = [], [], 0, 0
    for place, names in listed():
        if not names:
            continue
        module = importlib.import_module(place)
        there = [name for name in names if hasattr(module, name)]
        missing = [name for name in names if name not in there]
        total, present = total + len(names), present + len(there)
        rows.append(f"| `{place}` | {len(there)} | {len(missing)} |")
        sections += ["", f"## {place}"]
        for title, some in (("There", there), ("Not yet", missing)):
            if some:
                sections += ["", f"{title}: {', '.join(f'`{name}`' for name in some)}."]
    rows += [f"| all | {present} | {total - present} |"]
    return "\n".join([HEAD, "| where | there | not yet |", "| --- | --- | --- |"] + rows + sections) + "\n"


if __name__ == "__main__":
    print(text(), end="")
