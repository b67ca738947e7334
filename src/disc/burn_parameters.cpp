#include "disc/burn_parameters.h"

namespace ts5::disc {
namespace {

constexpr std::size_t kMostPath = 259;
constexpr std::size_t kMostText = 159;
constexpr std::int32_t kMostDevices = 9999;

// A number of the MIDI-to-wave parameters under a name of the burner's.
void MidiNumber(FieldTable<BurnParameters>& table, std::string name,
                std::int32_t MidiToWaveParameters::*member, std::int32_t least, std::int32_t most) {
  table.Single(
      std::move(name), std::to_string(least) + ".." + std::to_string(most),
      [member](const BurnParameters& p) { return std::to_string(p.midi.*member); },
      [member, least, most](BurnParameters& p, std::string_view text) {
        const auto value = ParseInteger(Trim(text));
        if (!value || *value < least || *value > most) return false;
        p.midi.*member = static_cast<std::int32_t>(*value);
        return true;
      });
}

}  // namespace

NormaliseMode BurnParameters::Normalising() const {
  const auto mode = static_cast<NormaliseMode>(normalise);
  return mode == NormaliseMode::Project && !atOnce ? NormaliseMode::Each : mode;
}

RecordingMode BurnParameters::Mode(bool testWrite) const {
  RecordingMode mode;
  mode.atOnce = atOnce;
  mode.testWrite = testWrite;
  mode.underrunProtection = underrunProtection;
  mode.copyProtected = copyProtected;
  mode.preEmphasis = preEmphasis;
  mode.gapless = gapless && atOnce;
  mode.catalogue = kBurnerCatalogue;
  return mode;
}

std::string DefaultPrefix(std::size_t jobNumber) {
  return Format("Job%04i_", jobNumber + 1);
}

std::vector<ParameterField> BurnFields() {
  using P = BurnParameters;
  FieldTable<P> table;
  table.Text("BurnUserTempPath", &P::folder, kMostPath)
      .Integer("BurnNormalize", &P::normalise, 0, 2)
      .Flag("BurnSysTempPath", &P::systemFolder)
      .Text("BurnPrefix", &P::prefix, kMostPrefixCharacters)
      .Flag("BurnDisc-at-Once", &P::atOnce)
      .Integer("BurnActionIfFailed", &P::onFailed, 0, 2)
      .Flag("BurnOpenTray", &P::eject)
      .Flag("BurnDeleteWaves", &P::deleteIntermediate)
      .Integer("BurnMode", &P::action, 0, 2)
      .Integer("BurnSpeed", &P::speed, kLeastSpeed, kMostSpeed)
      .Integer("BurnCopies", &P::copies, 1, kMostCopies)
      .Integer("BurnBreakForAllTracks", &P::pauseScope, 0, 2)
      .Flag("BurnBurnProof", &P::underrunProtection)
      .Flag("BurnNoCopy", &P::copyProtected)
      .Flag("BurnPreemphasis", &P::preEmphasis);
  MidiNumber(table, "BurnMIDWAVMethod", &MidiToWaveParameters::method, 0, 1);
  MidiNumber(table, "BurnMidiDevice", &MidiToWaveParameters::midiDevice, -1, kMostDevices);
  MidiNumber(table, "BurnWaveDevice", &MidiToWaveParameters::waveDevice, 0, kMostDevices);
  MidiNumber(table, "BurnConvNormalize", &MidiToWaveParameters::normalise, 0, 2);
  table.Flag("BurnVerify", &P::verify)
      .Flag("BurnCdText", &P::cdText)
      .Flag("BurnGapless", &P::gapless)
      .Text("BurnTitle", &P::title, kMostText)
      .Text("BurnPerformer", &P::performer, kMostText)
      .Row(TrackTextsField(&P::texts));
  return table.Build();
}

}  // namespace ts5::disc
