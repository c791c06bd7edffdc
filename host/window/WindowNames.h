#pragma once

// Object names of the reference host's window, for users of its widgets (tests, scripts).
namespace MV {
namespace Host {
namespace WindowNames {

constexpr char kHostMenu[] = "qtHostMenu";
constexpr char kHostToolBar[] = "qtHostToolBar";
constexpr char kPlayingAction[] = "qtPlayingAction";
constexpr char kExpressionEditingAction[] = "qtExpressionEditingAction";
constexpr char kBlendShapeEditingAction[] = "qtBlendShapeEditingAction";
constexpr char kQuitAction[] = "qtQuitAction";
constexpr char kAvatarComboBox[] = "qtCurrentAvatarComboBox";

constexpr char kSceneDock[] = "qtSceneDock";
constexpr char kSceneTree[] = "qtSceneTree";
constexpr char kMessagesList[] = "qtMessagesList";
constexpr char kMeshView[] = "qtMeshView";
constexpr char kProjectionComboBox[] = "qtProjectionComboBox";
constexpr char kPropertiesTable[] = "qtPropertiesTable";

constexpr char kZBrushDock[] = "qtZBrushDock";
constexpr char kZBrushPanel[] = "qtZBrushPanel";
constexpr char kProjectFilesTable[] = "qtProjectFilesTable";
constexpr char kSentMeshesTable[] = "qtSentMeshesTable";
constexpr char kScaleSpinBox[] = "qtScaleSpinBox";
constexpr char kSculptButton[] = "qtSculptAndSendBackButton";
constexpr char kZBrushStatusLabel[] = "qtZBrushStatusLabel";

} // namespace WindowNames
} // namespace Host
} // namespace MV
