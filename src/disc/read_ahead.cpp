#include "disc/read_ahead.h"

#include "platform/files/digest.h"

namespace ts5::disc {

ReadAhead::ReadAhead(SoundSource& sound, Crc32* crc)
    : sound_(sound), thread_([this, &sound, crc] {
        for (auto room = pipe_.Room(kPortion); !room.empty(); room = pipe_.Room(kPortion)) {
          const auto got = sound.Read(room);
          if (!got) end_ = got.error();
          if (!got || *got == 0) break;
          if (crc != nullptr) crc->Add(ByteView(room).first(*got));
          pipe_.Add(*got);
        }
        pipe_.CloseWriting();
      }) {}

ReadAhead::~ReadAhead() {
  pipe_.CloseReading();
  sound_.Interrupt();
}

}  // namespace ts5::disc
