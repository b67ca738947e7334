#include "search/show_hit.h"

#include <initializer_list>

#include "search/texts.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kSequencerOpen = 0xD7E10001;
constexpr std::uint32_t kSequencerPlace = 0xD7E20002;
constexpr std::uint32_t kScoreOpen = 0x0E530001;
constexpr std::uint32_t kScorePosition = 0x0E530009;
constexpr std::uint32_t kScoreRange = 0x0E53000D;
constexpr std::int32_t kScorePositionWidth = 10000;
constexpr std::chrono::milliseconds kPoll{1000};
constexpr std::chrono::milliseconds kRestored{2000};  // a window needs so long to come back

SiblingMessage NameMessage(std::uint32_t id, const std::string& name) {
  SiblingMessage message = {id, Bytes(name.begin(), name.end())};
  message.data.push_back(0);
  return message;
}

SiblingMessage NumbersMessage(std::uint32_t id, std::initializer_list<std::int32_t> numbers) {
  ByteWriter out;
  for (const std::int32_t number : numbers) out.U32Le(static_cast<std::uint32_t>(number));
  return {id, out.Release()};
}

}  // namespace

SiblingMessage SequencerOpenMessage(const SearchHit& hit) {
  return NameMessage(kSequencerOpen, hit.file);
}

SiblingMessage SequencerPlaceMessage(const SearchHit& hit) {
  return NumbersMessage(kSequencerPlace, {hit.bar, hit.track});
}

std::vector<SiblingMessage> ScoreMessages(const SearchHit& hit) {
  return {NameMessage(kScoreOpen, hit.file),
          NumbersMessage(kScorePosition, {0, hit.verticalPosition, kScorePositionWidth}),
          NumbersMessage(
              kScoreRange,
              {hit.firstSystem, hit.track, hit.voice, hit.firstObject, hit.lastSystem, hit.track, hit.voice,
               static_cast<std::int32_t>(static_cast<std::uint32_t>(hit.lastObject) + 1U), -1})};
}

std::optional<TextId> ShowInSequencer(const SearchHit& hit, const SiblingProgram& sequencer,
                                      const SiblingServices& services) {
  if (sequencer.path.empty() || sequencer.windowClass.empty()) return std::nullopt;
  std::vector<SiblingMessage> messages;
  if (services.isThere(sequencer.windowClass)) {
    services.raise(sequencer.windowClass);
    messages.push_back(SequencerOpenMessage(hit));
  } else {
    if (Failed(services.start(sequencer.path, {hit.file}))) return texts::ApplicationNotStarted;
    while (!services.isThere(sequencer.windowClass)) {
      if (!services.sleep(kPoll)) return std::nullopt;
    }
  }
  messages.push_back(SequencerPlaceMessage(hit));
  if (Failed(services.send(sequencer.windowClass, messages))) return texts::HitNotShown;
  return std::nullopt;
}

std::optional<TextId> ShowInScoreEditor(const SearchHit& hit, const std::function<SiblingProgram()>& editor,
                                        const SiblingServices& services) {
  SiblingProgram program = editor();
  if (program.windowClass.empty()) return texts::NotForThisScore;
  if (!services.isThere(program.windowClass)) {
    if (program.path.empty() || Failed(services.start(program.path, {}))) return texts::ApplicationNotStarted;
    while (program.windowClass.empty() || !services.isThere(program.windowClass)) {
      if (!services.sleep(kPoll)) return std::nullopt;
      program = editor();
    }
  }
  if (Failed(services.send(program.windowClass, ScoreMessages(hit)))) return texts::HitNotShown;
  if (services.sleep(kRestored)) services.raise(program.windowClass);
  return std::nullopt;
}

}  // namespace ts5
