<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name>ExpressionZBrushToFMDlg</name>
    <message>
        <source>Expression from ZBrush</source>
        <translation>Expression from ZBrush</translation>
    </message>
    <message>
        <source>Adjust eye occlusion</source>
        <translation>Fit the eye occlusion to the new face</translation>
    </message>
    <message>
        <source>Adjust tear line</source>
        <translation>Fit the tear line to the new face</translation>
    </message>
    <message>
        <source>Apply the sculpted expression to the character.</source>
        <translation>Apply the expression sculpted in ZBrush to the character.</translation>
    </message>
    <message>
        <source>Import</source>
        <translation>Import</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>FMtoZBrushDlg</name>
    <message>
        <source>Send to ZBrush</source>
        <translation>Send to ZBrush</translation>
    </message>
    <message>
        <source>Meshes to send</source>
        <translation>Meshes to send to ZBrush</translation>
    </message>
    <message>
        <source>Mesh</source>
        <translation>Mesh</translation>
    </message>
    <message>
        <source>Action</source>
        <translation>Action</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>Note</translation>
    </message>
    <message>
        <source>Action for all meshes:</source>
        <translation>Action for all meshes:</translation>
    </message>
    <message>
        <source>Create</source>
        <translation>Create new</translation>
    </message>
    <message>
        <source>Relink</source>
        <translation>Relink</translation>
    </message>
    <message>
        <source>Mixed</source>
        <translation>Mixed</translation>
    </message>
    <message>
        <source>Split body parts into meshes of their own</source>
        <translation>Send these body parts as meshes of their own</translation>
    </message>
    <message>
        <source>Eye winker</source>
        <translation>Eye winker</translation>
    </message>
    <message>
        <source>Eye socket</source>
        <translation>Eye socket</translation>
    </message>
    <message>
        <source>Tear ducts</source>
        <translation>Tear ducts</translation>
    </message>
    <message>
        <source>Mouth</source>
        <translation>Mouth</translation>
    </message>
    <message>
        <source>Finger nails</source>
        <translation>Finger nails</translation>
    </message>
    <message>
        <source>Toe nails</source>
        <translation>Toe nails</translation>
    </message>
    <message>
        <source>Skin: head</source>
        <translation>Skin: head</translation>
    </message>
    <message>
        <source>Skin: body</source>
        <translation>Skin: body</translation>
    </message>
    <message>
        <source>Skin: arms</source>
        <translation>Skin: arms</translation>
    </message>
    <message>
        <source>Skin: legs</source>
        <translation>Skin: legs</translation>
    </message>
    <message>
        <source>Pose</source>
        <translation>Pose to send the character in</translation>
    </message>
    <message>
        <source>Bind pose</source>
        <translation>Bind pose</translation>
    </message>
    <message>
        <source>T-pose</source>
        <translation>T-pose</translation>
    </message>
    <message>
        <source>Current pose</source>
        <translation>Current pose</translation>
    </message>
    <message>
        <source>Meshes go to the public GoZ project folder.</source>
        <translation>The meshes are written to the public GoZ project folder, where ZBrush picks them up.</translation>
    </message>
    <message>
        <source>GoZ</source>
        <translation>GoZ</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>GoZPlugin</name>
    <message>
        <source>GoZ</source>
        <translation>GoZ</translation>
    </message>
    <message>
        <source>File</source>
        <translation>File</translation>
    </message>
    <message>
        <source>Export to</source>
        <translation>Export to</translation>
    </message>
    <message>
        <source>Send the selected character or objects to ZBrush</source>
        <translation>Send the selected character or objects to ZBrush to sculpt them there.</translation>
    </message>
    <message>
        <source>Expression GoZ</source>
        <translation>Expression GoZ</translation>
    </message>
    <message>
        <source>Send the face of the character being expression-edited to ZBrush</source>
        <translation>Send the face of the character whose expression you are editing to ZBrush to sculpt it there.</translation>
    </message>
</context>
<context>
    <name>MV::CGoZBrushPlugin</name>
    <message>
        <source>[MVGoZBursh] Unsupport Avatar</source>
        <translation>GoZ cannot send this character: the host does not support GoZ for its kind of character. Select another character or props, then try GoZ again.</translation>
    </message>
    <message>
        <source>[MVGoZBursh] Please install ZBrush</source>
        <translation>ZBrush was not found on this computer. Install ZBrush, start it once, then try GoZ again.</translation>
    </message>
    <message>
        <source>[MVGoZBursh] Fail to create dir</source>
        <translation>The GoZ folder for this application could not be created in the public Pixologic folder. Make sure you may write to that folder, then try GoZ again.</translation>
    </message>
    <message>
        <source>[MVGoZBursh] Fail to copy necessary files</source>
        <translation>The GoZ bridge files could not be copied into the public Pixologic folder. Close ZBrush, make sure you may write to that folder, then try GoZ again.</translation>
    </message>
</context>
<context>
    <name>MV::ExpressionZBrushToFMDlg</name>
    <message>
        <source>[MVGOZBursh] Expression GoZ: Please return all Mesh</source>
        <translation>Expression GoZ: not every face mesh of the character came back from ZBrush. In ZBrush, send all of the face meshes back, then try again.</translation>
    </message>
    <message>
        <source>[MVGOZBursh] Expression GoZ: Please return Avatar Mesh</source>
        <translation>Expression GoZ: the meshes that came back from ZBrush are not the face meshes of the character being edited. Send the character&apos;s face meshes back from ZBrush.</translation>
    </message>
    <message>
        <source>[MVGOZBursh] Expression GoZ: Not in Edit Expression Mode.</source>
        <comment>Expression goz</comment>
        <translation>These meshes came back from Expression GoZ, but no expression is being edited. Open the character&apos;s expression for editing, then send the meshes back from ZBrush again.</translation>
    </message>
    <message>
        <source>[MVGOZBursh] Expression GoZ: No Expression Goz.</source>
        <comment>Expression goz</comment>
        <translation>An expression is being edited, but the meshes that came back were not sent with Expression GoZ. Send the face with Expression GoZ first, sculpt it, then send it back.</translation>
    </message>
    <message>
        <source>[MVGoZBursh] Error target</source>
        <translation>Some meshes have no target. Choose a face mesh for every row, then press Import.</translation>
    </message>
</context>
<context>
    <name>MV::FMToZBrushDlg</name>
    <message>
        <source>[MVGoZBursh] Create</source>
        <translation>Create new</translation>
    </message>
    <message>
        <source>[MVGoZBursh] Relink</source>
        <translation>Relink</translation>
    </message>
    <message>
        <source>[MVGoZBursh] Skip</source>
        <translation>Skip</translation>
    </message>
    <message>
        <source>[MVGoZBursh] It will auto rename.</source>
        <translation>ZBrush already has a mesh of this name from an earlier send. Create new sends a copy under a new name; choose Relink to update the one ZBrush has.</translation>
    </message>
    <message>
        <source>[MVGoZBursh] This content has some name mesh. It will auto rename.</source>
        <translation>Another mesh in this send has the same name, so this one will be sent under a new name.</translation>
    </message>
    <message>
        <source>[MVGoZBursh] Mesh contain polygon that side of numbers more than 4, goz does not support.</source>
        <translation>This mesh has polygons with more than four sides, which GoZ cannot carry, so it will not be sent. Split those polygons into triangles or quads, then send it again.</translation>
    </message>
    <message>
        <source>[MVGoZBursh] Mesh name has characters that GoZ can not carry. Rename the mesh to send it.</source>
        <translation>The mesh name has characters that GoZ cannot carry (GoZ takes Western European letters only), so it will not be sent. Rename the mesh, then send it again.</translation>
    </message>
    <message>
        <source>[MVGoZBursh] Lod mesh will remove.</source>
        <translation>Some of these objects have level-of-detail (LOD) meshes, which GoZ cannot send. They will be removed from the scene before the meshes go to ZBrush.</translation>
    </message>
</context>
<context>
    <name>MV::ZBrushToFMDlg</name>
    <message>
        <source>[MVGoZBursh] Please Select</source>
        <translation>Choose a target</translation>
    </message>
    <message>
        <source>Custom</source>
        <translation>Custom size</translation>
    </message>
    <message>
        <source>[MVGoZBursh] Error target</source>
        <translation>Some meshes set to Update have no target. Choose a target in every Update row, or another action, then press Import.</translation>
    </message>
</context>
<context>
    <name>ZBrushToFMDlg</name>
    <message>
        <source>Receive from ZBrush</source>
        <translation>Receive from ZBrush</translation>
    </message>
    <message>
        <source>Adjust eye occlusion</source>
        <translation>Fit the eye occlusion to the new face</translation>
    </message>
    <message>
        <source>Adjust tear line</source>
        <translation>Fit the tear line to the new face</translation>
    </message>
    <message>
        <source>Rig automatically</source>
        <translation>Rig the character automatically</translation>
    </message>
    <message>
        <source>Custom</source>
        <translation>Custom</translation>
    </message>
    <message>
        <source>Mesh and texture</source>
        <translation>Mesh and texture</translation>
    </message>
    <message>
        <source>Mesh only</source>
        <translation>Mesh only</translation>
    </message>
    <message>
        <source>Texture only</source>
        <translation>Texture only</translation>
    </message>
    <message>
        <source>Pose</source>
        <translation>Pose the meshes were sculpted in</translation>
    </message>
    <message>
        <source>Bind pose</source>
        <translation>Bind pose</translation>
    </message>
    <message>
        <source>Current pose</source>
        <translation>Current pose</translation>
    </message>
    <message>
        <source>T-pose</source>
        <translation>T-pose</translation>
    </message>
    <message>
        <source>Take for all rows:</source>
        <translation>Take for all rows:</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Import</source>
        <translation>Import</translation>
    </message>
    <message>
        <source>Mesh</source>
        <translation>Mesh</translation>
    </message>
    <message>
        <source>Action</source>
        <translation>Action</translation>
    </message>
    <message>
        <source>Target</source>
        <translation>Target</translation>
    </message>
    <message>
        <source>Texture</source>
        <translation>Texture</translation>
    </message>
    <message>
        <source>Texture size</source>
        <translation>Texture size</translation>
    </message>
</context>
</TS>
