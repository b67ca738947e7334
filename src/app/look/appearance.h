// The three appearances of the program, each for a light and a dark desktop: a palette and a style sheet for
// every window. Which one is shown is a setting, whether it is the dark one follows the desktop.
//
//   ApplyAppearance(application, settings.skinLayout, DesktopIsDark());
//
// Labels and fields with a meaning of their own bear it in the dynamic property "role", and the skins colour
// them: "explanation" (green), "warning" (red), "note" (quiet), "title" (large), "count" (black on white).
#pragma once

#include "frame/settings.h"

class QApplication;
class QString;

namespace ts5 {

// Palette, style and style sheet of the application. May be called again to change from light to dark.
void ApplyAppearance(QApplication& application, SkinLayout layout, bool dark);

// The style sheet of an appearance with all its colours filled in; empty colours never occur (tested).
[[nodiscard]] QString StyleSheet(SkinLayout layout, bool dark);

// Whether the desktop asks for dark windows: by its settings portal where there is one, else by the palette
// that its theme gives. To be asked before the first ApplyAppearance.
[[nodiscard]] bool DesktopIsDark();

// From now on the appearance changes with the desktop between light and dark, while the program runs.
void FollowDesktop(QApplication& application, SkinLayout layout);

}  // namespace ts5
