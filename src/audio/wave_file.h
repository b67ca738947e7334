// Wave files: the one way in which uncompressed samples are read and written.
//
//   auto wave = WaveFile::Open(name);              // or Create(name, format)
//   while (wave->DataSize() > 0) { auto got = wave->Read(buffer); ... }
//
// What is written becomes visible whole, when Close() succeeds; until then the file is as it was.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "audio/wave_layout.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/files/files.h"
#include "platform/files/input_file.h"
#include "platform/media/wave_format.h"

namespace ts5 {

class WaveFile {
 public:
  // For reading. Where no file of that name can be opened, a sound of that name among the resources is taken.
  // SourceFailed: there is none, or samples are promised and there are none. WrongFormat: no wave file.
  // ReadFailed.
  [[nodiscard]] static Result<WaveFile> Open(const std::string& name);
  // The same for a file that is open already, or lies in memory.
  [[nodiscard]] static Result<WaveFile> Read(InputFile file);
  // An AIFF file read as if it were a wave file; see ReadAiffLayout.
  [[nodiscard]] static Result<WaveFile> ReadAiff(InputFile file);
  // The file, or the sound among the resources, of that name.
  [[nodiscard]] static Result<InputFile> OpenSound(const std::string& name);

  // For writing. expectedData: bytes that will come, when that is known; only then can the file become longer
  // than 4 GiB (as RF64). Codes of StagedFile::Create; WriteFailed.
  [[nodiscard]] static Result<WaveFile> Create(const std::string& name, WaveFormat format,
                                               std::uint64_t expectedData = 0);
  // The same into a staged file of the caller's, which stays with him and is not committed here.
  [[nodiscard]] static Result<WaveFile> CreateIn(StagedFile& target, WaveFormat format,
                                                 std::uint64_t expectedData = 0);

  // For reading and writing: samples are changed where they lie, and there stay as many as there are. Reading
  // and writing go on from one place. Codes of Open and of StagedFile::Create; WriteFailed. WrongFormat also
  // for RIFX.
  [[nodiscard]] static Result<WaveFile> Edit(const std::string& name);
  // The same for a wave file that is complete in a staged file of the caller's.
  [[nodiscard]] static Result<WaveFile> EditIn(StagedFile& target);

  [[nodiscard]] const WaveFormat& Format() const { return layout_.format; }
  // Data bytes that are not read yet; for a new file those that were written.
  [[nodiscard]] std::uint64_t DataSize() const {
    return mode_ == Mode::Create ? position_ : layout_.dataSize - position_;
  }

  // Fills the buffer with whole samples, as they lie in a RIFF file, as far as there is data left, and says
  // how far. ReadFailed: an I/O error, or the file has become shorter since.
  [[nodiscard]] Result<std::size_t> Read(std::span<std::uint8_t> buffer);
  // Moves reading to a byte of the data; one behind the end is the end.
  void SeekTo(std::uint64_t dataByte);
  void Reset() { SeekTo(0); }

  // Appends samples, or replaces those of a file that is edited. WriteFailed: also when the file would become
  // longer than its header can say, or than it is.
  [[nodiscard]] Outcome Write(ByteView samples);
  // Completes a new file: sizes, padding, the "fact" value 0; then puts it, or an edited one, in place. Of no
  // effect for one that is read.
  [[nodiscard]] Outcome Close();

 private:
  enum class Mode : std::uint8_t { Read, Create, Edit };

  WaveFile() = default;
  WaveFile(InputFile file, WaveLayout layout);
  [[nodiscard]] StagedFile& Target() { return external_ != nullptr ? *external_ : *own_; }
  [[nodiscard]] Outcome Begin(WaveFormat format, std::uint64_t expectedData);

  WaveLayout layout_;
  std::uint64_t position_ = 0;  // in the data
  std::optional<InputFile> source_;
  std::optional<StagedFile> own_;
  StagedFile* external_ = nullptr;
  std::uint64_t start_ = 0;  // of the header in the target
  Mode mode_ = Mode::Read;
  bool rf64_ = false;
  bool closed_ = false;
};

}  // namespace ts5
