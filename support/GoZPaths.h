#pragma once

#include <QString>

// Where the GoZ exchange lives below the public Pixologic folder.
namespace MV {
namespace GoZPaths {

// The "public" environment variable (default C:\users\public) followed by "/Pixologic/".
// Separators are left mixed as they come.
QString PixologicRoot();

// Below the Pixologic root.
constexpr char kProjectsDefault[] = "GoZProjects/Default/";
constexpr char kFigmoraApp[] = "GoZApps/Figmora/";
constexpr char kZBrushFromApp[] = "GoZBrush/GoZBrushFromApp.exe";
constexpr char kApplicationFile[] = "GoZBrush/GoZ_Application.txt";

// Deliberately fixed rather than PixologicRoot(): some exchange files are always looked up here.
constexpr char kFixedPixologicRoot[] = "C:/Users/Public/Pixologic/";

} // namespace GoZPaths
} // namespace MV
