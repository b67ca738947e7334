#include "disc/read_ahead.h"

#include "platform/disc/cd_drive.h"
#include "platform/files/digest.h"

namespace ts5::disc {

ReadAhead::ReadAhead(SoundSource& sound, Crc32* crc)
    : sound_(sound),
      thread_([this, &sound, crc, portion = Bytes(kSectorsPerCommand * kAudioSectorBytes)]() mutable {
        auto got = sound.Read(portion);
        for (; got && *got > 0; got = sound.Read(portion)) {
          const ByteView data = ByteView(portion).first(*got);
          if (crc != nullptr) crc->Add(data);
          if (!pipe_.Write(data)) break;
        }
        if (!got) end_ = got.error();
        pipe_.CloseWriting();
      }) {}

ReadAhead::~ReadAhead() {
  pipe_.CloseReading();
  sound_.Interrupt();
}

}  // namespace ts5::disc
