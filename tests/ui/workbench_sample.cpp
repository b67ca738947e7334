#include "workbench_sample.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include "app/shell/command_table.h"
#include "frame/ui/qt_text.h"

namespace ts5 {
namespace {

void ProcessFor(int milliseconds, const std::function<bool()>& done) {
  QElapsedTimer time;
  time.start();
  while (time.elapsed() < milliseconds && !done()) QApplication::processEvents(QEventLoop::AllEvents, 20);
}

}  // namespace

SampleWorkbench::SampleWorkbench(const std::string& demo, SkinLayout layout, bool list) {
  const QDir home(directory_.path());
  for (const char* name :
       {"Musik/Chor/Alt", "Musik/Chor/Sopran", "Musik/Klavier", "Musik/Orgel", "Partituren"}) {
    home.mkpath(name);
  }
  const QString music = home.filePath("Musik/Klavier");
  for (const QFileInfo& file : QDir(ToQt(demo)).entryInfoList({"*.mid", "*.rmi", "*.rdl"}, QDir::Files)) {
    QFile::copy(file.filePath(), music + "/" + file.fileName());
  }
  StartOptions options;
  options.registryPath = kRegistryInMemory;
  options.devices = DeviceLists{};
  options.devices->midiOutputs = {"Stavora-Synthesizer"};
  options.volumes = VolumeTable::Of(FromQt(directory_.path()), "", {});
  application_ = std::make_unique<Application>(options);
  application_->GetSettings().skinLayout = layout;
  Jobs& jobs = application_->GetJobs();
  jobs[0].directory.path = FromQt(music);
  (void)jobs.Create({"Chorprobe", "Midi-Dateien der Chorprobe"});
  (void)jobs.Create({"Orgel", "Orgelstimmen ins Format 0"});
  window_ = std::make_unique<MainWindow>(*application_);
  window_->Begin();
  window_->setWindowState(Qt::WindowNoState);
  window_->resize(1280, 820);
  window_->show();
  ProcessFor(5000, [this] { return window_->Source().Model().Size() > 0; });
  if (list) {
    std::vector<std::string> files;
    for (std::size_t i = 0; i < window_->Source().Model().Size(); ++i)
      files.push_back(window_->Source().Model().At(i).path);
    window_->Actions().Trigger(CommandId::SwitchListMode);
    emit window_->Source().Files()->FilesDropped(files);
  }
  window_->Source().Files()->SelectRows({0, 1}, 0);
  window_->Active().Settle();
  window_->Active().SwitchFilter(FilterId::MidiConverter);
  ProcessFor(300, [] { return false; });
}

SampleWorkbench::~SampleWorkbench() {
  window_->EndWithoutQuestion();
}

}  // namespace ts5
