// The toolkit's own words in German: file dialogs, the menus of text fields, standard buttons. The program
// brings them along, so that it speaks one language on every desktop.
#pragma once

class QCoreApplication;

namespace ts5 {

void InstallToolkitTexts(QCoreApplication& application);

}  // namespace ts5
