#pragma once

namespace MV {

// Pose in which a character is sent to, or received from, ZBrush.
enum EGozPoseOption : int
{
    None = 0,
    TPose = 1,
    BindPose = 2,
    CurrentPose = 3,
};

} // namespace MV
