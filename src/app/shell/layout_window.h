// The window of an Artworker job, and what its printing takes from the workbench: the printer that is chosen,
// the shared backgrounds, the disc that the texts speak of.
#pragma once

#include "app/run/job_windows.h"
#include "app/shell/window_links.h"
#include "frame/ui/dialog_host.h"

class QWidget;

namespace ts5 {

class Application;

// As ParameterDialog::open.
[[nodiscard]] QWidget* OpenLayoutWindow(const JobFinder& find, const WindowLinks& links,
                                        Application& application, DialogHost& host, QWidget* owner);
// As ParameterDialog::prepare: puts all of that into the job, and asks for the name of the file that
// "PDF-Datei" is to write.
[[nodiscard]] bool PrepareLayoutPrint(Job& job, Application& application, DialogHost& host, QWidget* owner);

}  // namespace ts5
