// The table of volumes: which letters the places of this machine have, and what a path with a letter means
// here.
//
//   const VolumeTable volumes = VolumeTable::OfThisMachine();
//   volumes.FindPath("C:\\Musik\\Chor\\LIED.MID")   // "/home/anna/Musik/Chor/Lied.mid"
//
// c: is the user's home, d: the root of the file system; mounted media and optical drives follow in the order
// in which the system lists them, and the virtual CD drive at the end. A drive index is the letter counted
// from c (c: is 0, d: 1), -1 is no drive.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/outcome.h"

namespace ts5 {

inline constexpr int kNoDrive = -1;
inline constexpr int kMaxDrives = 24;  // c: to z:

[[nodiscard]] constexpr char LetterOfDrive(int index) {
  return static_cast<char>('c' + index);
}

struct Volume {
  enum class Kind : unsigned char { Home, Root, Medium, Optical };
  Kind kind = Kind::Medium;
  std::string name;    // what the user calls it, e.g. "Persönlicher Ordner", "USBSTICK"
  std::string path;    // where its files are; the device file of an optical drive without a mounted disc
  std::string device;  // "/dev/sr0"; "" where it does not matter

  bool operator==(const Volume&) const = default;
};

class VolumeTable {
 public:
  VolumeTable() = default;
  // mountInfo: as /proc/self/mountinfo gives it; opticalDevices: their device files, e.g. "/dev/sr0".
  [[nodiscard]] static VolumeTable Of(std::string_view home, std::string_view mountInfo,
                                      const std::vector<std::string>& opticalDevices);
  [[nodiscard]] static VolumeTable OfThisMachine();
  // One more drive behind the last, which stands for discs; nothing when there are too many.
  void AddVirtualCd(const std::string& directory);
  void AddVirtualRecorder(const std::string& directory);

  // The place in the list is the drive index.
  [[nodiscard]] const std::vector<Volume>& Volumes() const { return volumes_; }
  [[nodiscard]] const Volume* Find(int drive) const;  // nullptr when there is no such drive
  // "Persönlicher Ordner (c:)"; "" when there is no such drive.
  [[nodiscard]] std::string DisplayText(int drive) const;
  // The drive with the longest path that holds the native path; kNoDrive for a relative one.
  [[nodiscard]] int DriveOfPath(std::string_view nativePath) const;

  // The native path that is meant. "X:\a\b" is looked for below its volume: every part exactly as it is
  // written, else without regard to case (the first in the order of names); parts that do not exist are
  // taken over as they are written, so that a target can be named too. Nothing when the letter has no place.
  // A path without a letter comes back as it is.
  [[nodiscard]] std::optional<std::string> NativePath(std::string_view path) const;
  // The same for a file or directory that must exist; nothing when it does not.
  [[nodiscard]] std::optional<std::string> FindPath(std::string_view path) const;

 private:
  std::vector<Volume> volumes_;
};

}  // namespace ts5
