#include "midi/midi_converter.h"

#include <utility>

#include "midi/converter_fields.h"
#include "midi/format_change.h"
#include "midi/midi_containers.h"
#include "midi/time_base.h"
#include "platform/files/paths.h"

namespace ts5 {

namespace {

// One file on its way through the steps; each reads what the one before made.
class Conversion {
 public:
  Conversion(ByteView file, MidiFileKind kind, const ConverterParameters& parameters, CalendarDate today,
             const WorkWatch& watch)
      : current_(file),
        container_(ContainerOf(file)),
        format0_(kind == MidiFileKind::Format0),
        parameters_(parameters),
        info_{parameters.Attributes(), today},
        watch_(watch) {}

  [[nodiscard]] Result<ConvertedMidi> Run() {
    const std::uint16_t division = DetectMidiKind(current_).header.division;
    if (parameters_.changeContainer && !ChangeContainer()) return Failure(failure_);
    if (parameters_.changeFormat && !ChangeFormat()) return Failure(failure_);
    if (parameters_.changeTimeBase && !ChangeDivision(division)) return Failure(failure_);
    return ConvertedMidi{std::move(bytes_), flags_};
  }

 private:
  [[nodiscard]] bool Take(Result<Bytes> result, ConverterFlag flag) {
    if (!result) {
      failure_ = result.error();
      return false;
    }
    bytes_ = std::move(*result);
    current_ = bytes_;
    flags_ |= flag;
    return true;
  }

  // What is in the chosen container already becomes a plain file.
  [[nodiscard]] bool ChangeContainer() {
    const MidiContainer target = TargetContainer(parameters_, container_);
    const MidiContainer from = std::exchange(container_, target);
    format0_ = false;  // a plain file out of another container counts as one of format 1
    switch (target) {
      case MidiContainer::Smf:
        return Take(from == MidiContainer::Riff ? RiffToSmf(current_) : SequencerToSmf(current_), kToSmf);
      case MidiContainer::Riff:
        return Take(
            from == MidiContainer::Smf ? SmfToRiff(current_, info_) : SequencerToRiff(current_, info_),
            kToRiff);
      case MidiContainer::Sequencer:
        return Take(from == MidiContainer::Smf ? SmfToSequencer(current_) : RiffToSequencer(current_),
                    kToSequencer);
    }
    return false;
  }

  [[nodiscard]] bool ChangeFormat() {
    if (container_ != MidiContainer::Smf) {
      flags_ |= kFormatRefused;
      return true;
    }
    if (format0_) return Take(SplitChannelsToFormat1(current_, watch_), kToFormat1);
    return Take(MergeTracksToFormat0(current_, watch_), kToFormat0);
  }

  [[nodiscard]] bool ChangeDivision(std::uint16_t division) {
    if (division == parameters_.TimeBase()) {
      flags_ |= kSameTimeBase;
      return true;
    }
    return Take(ChangeTimeBase(current_, parameters_.TimeBase(), watch_), kTimeBaseChanged);
  }

  Bytes bytes_;
  ByteView current_;  // the source, then bytes_
  MidiContainer container_;
  bool format0_;
  const ConverterParameters& parameters_;
  RiffFileInfo info_;
  const WorkWatch& watch_;
  std::uint32_t flags_ = 0;
  Outcome failure_ = Outcome::Success;
};

}  // namespace

MidiContainer TargetContainer(const ConverterParameters& parameters, MidiContainer source) {
  if (!parameters.changeContainer) return source;
  const MidiContainer chosen = parameters.toRiff ? MidiContainer::Riff : MidiContainer::Sequencer;
  return source == chosen ? MidiContainer::Smf : chosen;
}

Result<ConvertedMidi> ConvertMidi(ByteView file, MidiFileKind kind, const ConverterParameters& parameters,
                                  CalendarDate today, const WorkWatch& watch) {
  if (kind == MidiFileKind::None) return Failure(Outcome::WrongFormat);
  auto converted = Conversion(file, kind, parameters, today, watch).Run();
  if (converted) converted->fromSequencer = ContainerOf(file) == MidiContainer::Sequencer;
  return converted;
}

TargetRule ConverterTarget(const ConverterParameters& parameters, const std::string& source) {
  if (!parameters.changeContainer) return {std::string(ExtensionOf(source)), true};
  const auto beginning = ReadFileStart(source, kSmfMagic.size());
  const MidiContainer container = beginning ? ContainerOf(*beginning) : MidiContainer::Smf;
  switch (TargetContainer(parameters, container)) {
    case MidiContainer::Riff:
      return {"rmi", false};
    case MidiContainer::Sequencer:
      return {"rdl", false};
    case MidiContainer::Smf:
      break;
  }
  return {"mid", false};
}

}  // namespace ts5
