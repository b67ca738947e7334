#include "audio/media_kind.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "audio/texts.h"
#include "frame/texts.h"

namespace ts5 {
namespace {

using C = MediaCodec;
using F = MediaContainer;

// The first row that a file is like tells its kind.
struct Sign {
  std::optional<MediaContainer> container;  // nothing: any
  std::optional<MediaCodec> codec;
  MediaKind kind;
};
constexpr Sign kSigns[] = {
    {std::nullopt, C::Ape, MediaKind::MonkeysAudio},
    {std::nullopt, C::Flac, MediaKind::Flac},
    {std::nullopt, C::Opus, MediaKind::Opus},
    {std::nullopt, C::Aac, MediaKind::Aac},
    {std::nullopt, C::Alac, MediaKind::Aac},
    {F::Ogg, C::Vorbis, MediaKind::OggVorbis},
    {std::nullopt, C::Vorbis, MediaKind::None},
    {F::WindowsMedia, std::nullopt, MediaKind::WindowsMedia},
    {std::nullopt, C::WindowsMedia, MediaKind::Wave},
    {F::Wave, std::nullopt, MediaKind::Wave},
    {F::Aiff, std::nullopt, MediaKind::Wave},
    {F::Mpeg, C::MpegLayer1, MediaKind::MpegLayer1},
    {F::Mpeg, C::MpegLayer2, MediaKind::MpegLayer2},
    {F::Mpeg, C::MpegLayer3, MediaKind::MpegLayer3},
};

struct Name {
  MediaKind kind;
  TextId text;
};
constexpr Name kNames[] = {
    {MediaKind::Wave, texts::AudioKindWave},         {MediaKind::MpegLayer1, texts::AudioKindLayer1},
    {MediaKind::MpegLayer2, texts::AudioKindLayer2}, {MediaKind::MpegLayer3, texts::AudioKindLayer3},
    {MediaKind::Aiff, texts::AudioKindAiff},         {MediaKind::WindowsMedia, texts::AudioKindWindowsMedia},
    {MediaKind::OggVorbis, texts::AudioKindOgg},     {MediaKind::MonkeysAudio, texts::AudioKindApe},
    {MediaKind::Flac, texts::AudioKindFlac},         {MediaKind::Opus, texts::AudioKindOpus},
    {MediaKind::Aac, texts::AudioKindAac},
};

struct NamedCodec {
  MediaCodec codec;
  TextId text;
};
constexpr NamedCodec kCodecs[] = {
    {C::MpegLayer1, texts::CodecMpegLayer1},
    {C::MpegLayer2, texts::CodecMpegLayer2},
    {C::MpegLayer3, texts::WaveTagMpegLayer3},
    {C::WindowsMedia, texts::CodecWindowsMedia},
    {C::Vorbis, texts::CodecVorbis},
    {C::Ape, texts::CodecApe},
    {C::Flac, texts::CodecFlac},
    {C::Opus, texts::CodecOpus},
    {C::Aac, texts::CodecAac},
    {C::Alac, texts::CodecAlac},
};

}  // namespace

MediaKind KindOf(const MediaInfo& info) {
  const auto* const sign = std::ranges::find_if(kSigns, [&](const Sign& row) {
    return (!row.container || *row.container == info.container) && (!row.codec || *row.codec == info.codec);
  });
  return sign == std::end(kSigns) ? MediaKind::None : sign->kind;
}

TextId KindName(MediaKind kind) {
  const auto* const name = std::ranges::find(kNames, kind, &Name::kind);
  return name == std::end(kNames) ? TextId{texts::UnknownFileFormat} : name->text;
}

std::optional<TextId> CodecName(MediaCodec codec) {
  const auto* const name = std::ranges::find(kCodecs, codec, &NamedCodec::codec);
  return name == std::end(kCodecs) ? std::nullopt : std::optional(name->text);
}

}  // namespace ts5
