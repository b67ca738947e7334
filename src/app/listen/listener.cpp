#include "app/listen/listener.h"

#include <algorithm>
#include <utility>

#include "app/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/player_choice.h"
#include "frame/player_parameters.h"
#include "frame/ui/qt_text.h"

namespace ts5 {
namespace {

// What the start of a run has to say.
class StartWords : public JobDialogs {
 public:
  bool Confirm(std::string_view /*question*/, MessageIcon /*icon*/, Answer preset) override {
    return preset == Answer::Yes;
  }
  void Tell(std::string_view text, MessageIcon /*icon*/) override { words_ = ToQt(text); }
  [[nodiscard]] const QString& Words() const { return words_; }

 private:
  QString words_;
};

// Whether it was not the title that failed, but the place where it was to sound.
bool HadNoSound(const RunResult& result) {
  return std::ranges::any_of(result.items, [](const RunItem& item) {
    return item.code == Code(Outcome::TargetFailed) || item.code == Code(Outcome::MidiDeviceFailed);
  });
}

}  // namespace

Listener::Listener(ModuleFinder modules, std::function<SoundPlaces()> findPlaces,
                   std::shared_ptr<PracticeBook> practices, QObject* parent)
    : QObject(parent),
      modules_(std::move(modules)),
      findPlaces_(std::move(findPlaces)),
      practices_(std::move(practices)),
      runner_(modules_) {}

Listener::~Listener() {
  Close();
}

void Listener::Close() {
  looking_ = again_ = false;
  worker_.DropAll();
  if (going_) going_->host->Close();
  (void)runner_.Shutdown();
  going_.reset();
}

PlayerControl* Listener::Control() const {
  return going_ ? &going_->job->run->player : nullptr;
}

void Listener::Play(const FileListEntry& entry, const Settings& settings) {
  title_ = entry;
  settings_ = settings;
  emit Asked();
  if (going_) {
    again_ = true;
    (void)runner_.Stop(*going_->job);
  } else {
    Begin();
  }
  emit Changed();
}

void Listener::Stop() {
  again_ = looking_ = false;
  worker_.DropAll();
  if (going_) (void)runner_.Stop(*going_->job);
  emit Changed();
}

void Listener::SetVolume(std::int32_t hundredths) {
  volume_ = hundredths;
  if (PlayerControl* const control = Control()) control->SetSound({volume_, 0});
}

// Devices may have come or gone since the last title.
void Listener::Begin() {
  again_ = false;
  looking_ = true;
  worker_.DropAll();
  worker_.Start([this, find = findPlaces_]() -> BackgroundWorker::Done {
    return [this, places = find()] {
      looking_ = false;
      Launch(places);
      emit Changed();
    };
  });
}

void Listener::Launch(const SoundPlaces& places) {
  const FilterId player = PlayerOf(*title_);
  const FilterModule* const module = modules_(player);
  if (module == nullptr) return emit Refused(QtText(texts::ListenNoPlayer));
  const bool samples = Has(player, kPlaysSamples);
  const auto& place = samples ? places.audio : places.midi;
  if (!place) {
    const bool noFont = places.audio.has_value();
    return emit Refused(QtText(noFont ? texts::ListenNoSoundFont : texts::ListenNoSound));
  }

  Going going{std::make_unique<Job>(), nullptr};
  Job& job = *going.job;
  job.sourceDrive = kListModeDrive;
  job.files.Append(*title_);
  job.filter = player;
  job.parameters = module->create();
  if (auto* const options = dynamic_cast<PlayerOptions*>(job.parameters.Get())) options->volume = volume_;
  going.host = std::make_shared<DesktopRunHost>(this, [this](RunNews news) { Take(std::move(news)); });
  RunRequest request;
  request.settings = settings_;
  request.devices.output = *place;
  request.practices = practices_;
  StartWords words;
  if (!runner_.Start(job, std::move(request), going.host, words)) return emit Refused(words.Words());
  going_ = std::move(going);
}

void Listener::Take(RunNews news) {
  if (!again_) {
    for (const auto& [text, icon] : news.notices) emit Refused(ToQt(text));
    if (news.result && HadNoSound(*news.result)) emit Refused(QtText(texts::ListenNoSound));
  }
  if (news.result) {
    going_.reset();
    if (again_) Begin();
  }
  if (news.result || news.state) emit Changed();
}

}  // namespace ts5
