#include "frame/playback_form.h"

#include <cstdlib>

#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

using std::chrono::milliseconds;

std::string BalanceText(std::int32_t balance) {
  const std::int32_t percent = std::abs(balance) / (kFarBalance / 100);
  if (percent == 0) return std::string(Text(texts::PlaybackBalanceMiddle));
  return Format(Text(balance < 0 ? texts::PlaybackBalanceLeft : texts::PlaybackBalanceRight), percent);
}

}  // namespace

milliseconds PositionStep(PositionKey key, bool control) {
  const milliseconds step(key == PositionKey::Left || key == PositionKey::Right ? 10 : 1000);
  const milliseconds width = control ? step * 10 : step;
  return key == PositionKey::Left || key == PositionKey::PageDown ? -width : width;
}

std::string PositionText(std::chrono::nanoseconds position, const std::optional<BarBeat>& place,
                         bool inBars) {
  if (inBars && place) return Format(Text(texts::PlaybackTimeBars), place->bar, place->beat);
  const auto total = std::chrono::duration_cast<milliseconds>(position).count();
  return Format(Text(texts::PlaybackTimeMinutes), total / 60'000, total / 1000 % 60, total % 1000);
}

std::string ListenTimeText(const PlayerStatus& status) {
  const auto seconds = [](std::chrono::nanoseconds time) {
    return std::chrono::duration_cast<std::chrono::seconds>(time).count();
  };
  const auto position = seconds(status.position);
  const auto duration = seconds(status.duration);
  std::string text =
      Format(Text(texts::ListenTime), position / 60, position % 60, duration / 60, duration % 60);
  if (status.place) text = Format(Text(texts::ListenBarBeat), status.place->bar, status.place->beat) + text;
  return text;
}

PlaybackForm PlaybackFormOf(FilterId filter, const PlayerOptions& options, RunState state,
                            const PlayerStatus& status) {
  PlaybackForm form;
  const bool playing = !status.title.empty();
  form.playEnabled = state != RunState::Waiting;
  form.optionsEnabled = MayChangeJob(state);
  form.shortSecondsEnabled = form.optionsEnabled && options.shortPlay;
  form.barsEnabled = form.optionsEnabled && !Has(filter, kPlaysSamples);
  form.positionEnabled = playing && status.duration.count() > 0;
  form.meterShown = Has(filter, kPlaysSamples);
  if (!playing) {
    form.title = Text(texts::PlaybackNothing);
  } else {
    form.title = status.name.empty() ? FileNameOf(status.title) : status.name;
  }
  const std::string_view none = Text(texts::PlaybackZeroTime);
  form.elapsed =
      playing ? PositionText(status.position, status.place, options.timeInBars) : std::string(none);
  form.duration = playing ? PositionText(status.duration, {}, false) : std::string(none);
  form.volume = Format(Text(texts::PlaybackVolumeValue), options.volume / 100);
  form.balance = BalanceText(options.balance);
  return form;
}

}  // namespace ts5
