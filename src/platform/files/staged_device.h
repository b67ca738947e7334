// A device of the toolkit whose bytes go into a staged file, for writers that know devices only.
#pragma once

#include <QIODevice>

#include "platform/files/files.h"

namespace ts5 {

class StagedDevice : public QIODevice {
 public:
  explicit StagedDevice(StagedFile& file) : file_(file) { open(QIODevice::WriteOnly); }
  [[nodiscard]] bool isSequential() const override { return true; }
  // A write has failed: the file must not appear.
  [[nodiscard]] bool Broken() const { return broken_; }

 protected:
  qint64 readData(char* /*data*/, qint64 /*size*/) override { return -1; }
  qint64 writeData(const char* data, qint64 size) override {
    const ByteView bytes(reinterpret_cast<const std::uint8_t*>(data), static_cast<std::size_t>(size));
    broken_ = broken_ || Failed(file_.Write(bytes));
    return broken_ ? -1 : size;
  }

 private:
  StagedFile& file_;
  bool broken_ = false;
};

}  // namespace ts5
