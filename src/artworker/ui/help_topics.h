// The help pages of this room's windows.
#pragma once

#include <QString>

namespace ts5::artworker {

inline const QString kHelpEditor = QStringLiteral("parm_artworker.htm");
inline const QString kHelpPrinting = QStringLiteral("parm_artworker_drucken.htm");
inline const QString kHelpElements = QStringLiteral("parm_artworker_elemente.htm");

}  // namespace ts5::artworker
