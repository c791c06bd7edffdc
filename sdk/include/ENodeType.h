#pragma once

namespace MV {

// Node types as the host reports them; the plug-in mostly compares raw values.
enum ENodeType : int
{
    NODE_TYPE_NONE = 0,
    CHARACTER_G1_SERIES = 1,
    CHARACTER_G2_SERIES = 2,
    CHARACTER_NON_STANDARD = 3,
    CHARACTER_STANDARD_SERIES = 4,
    PROP_COLLECTION = 5,
    MESH_GROUP = 6,
    HAIR = 35,
    TEETH = 36,
    EYE_OCCLUSION = 49,
    TEAR_LINE = 50,
    SPRING_CONTROLLER = 51,
    PHYSICS_CONTROLLER = 52,
};

} // namespace MV
