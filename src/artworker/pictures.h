// The pictures of a layout: read once for every size at which they are drawn, and kept as long as they are.
#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <cstdint>
#include <list>
#include <string>

namespace ts5::artworker {

// Larger pictures are refused, so that a small file cannot take the memory.
inline constexpr int kMaxPictureSide = 30'000;
inline constexpr int kMaxPictureMegabytes = 512;

inline constexpr std::int64_t kMostKeptBytes = std::int64_t{256}
                                               << 20;  // of pictures that may be drawn again

class Pictures {
 public:
  // The picture, no larger than most on either side unless most is empty; a null image when there is none
  // that can be shown. Nothing but the file itself is ever opened: a drawing that refers to other files is
  // refused. The image is good until the next call.
  [[nodiscard]] const QImage& Scaled(const std::string& file, QSize most);
  // The same while its size is being changed: as it was drawn before, whatever its size, if it was.
  [[nodiscard]] const QImage& Draft(const std::string& file, QSize most);
  // Width and height in pixels as the file has them; empty when it cannot be shown.
  [[nodiscard]] static QSize SizeOf(const std::string& file);
  // The bytes of a drawing that can be shown, for a device that keeps its lines; empty for all else.
  [[nodiscard]] static QByteArray Drawing(const std::string& file);
  // Whether it has no pixels of its own.
  [[nodiscard]] static bool IsDrawing(const std::string& file);

 private:
  struct Entry {
    std::string file;
    QSize most;         // for which it was made
    std::int64_t time;  // of the file, so that a changed one is read again
    QImage image;
  };
  std::list<Entry> entries_;  // what was drawn last comes first
};

}  // namespace ts5::artworker
