#include "platform/disc/scsi_trace.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <thread>

#include "platform/base/descriptor.h"
#include "platform/base/text.h"
#include "platform/disc/mmc_commands.h"
#include "platform/disc/sense.h"
#include "platform/files/digest.h"
#include "platform/files/files.h"
#include "platform/files/json_value.h"

namespace ts5 {
namespace {

constexpr std::size_t kHeadBytes = 256;
constexpr std::int64_t kMostMilliseconds = 3'600'000;
constexpr std::uint64_t kMostFaultBytes = 1 << 20;

std::string Hex(ByteView bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes.first(std::min(bytes.size(), kHeadBytes))) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0F];
  }
  return text;
}

std::optional<std::uint8_t> HexByte(std::string_view text) {
  unsigned value = 0;
  const auto end = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (text.empty() || end.ec != std::errc{} || end.ptr != text.data() + text.size() || value > 0xFF)
    return std::nullopt;
  return static_cast<std::uint8_t>(value);
}

std::optional<Bytes> HexBytes(std::string_view text) {
  Bytes bytes;
  for (; !text.empty(); text.remove_prefix(std::min<std::size_t>(2, text.size()))) {
    const auto byte = HexByte(text.substr(0, 2));
    if (!byte || text.size() == 1) return std::nullopt;
    bytes.push_back(*byte);
  }
  return bytes;
}

std::optional<SenseData> SenseOf(std::string_view text) {
  const auto parts = Split(text, '/');
  if (parts.size() != 3) return std::nullopt;
  const auto key = HexByte(parts[0]);
  const auto code = HexByte(parts[1]);
  const auto qualifier = HexByte(parts[2]);
  if (!key || !code || !qualifier) return std::nullopt;
  return SenseData{*key, *code, *qualifier};
}

// The sectors that a command reads or writes.
std::optional<std::pair<std::int32_t, std::uint32_t>> SectorsOf(std::span<const std::uint8_t> cdb) {
  ByteReader in(cdb);
  const auto code = static_cast<MmcCommand>(in.U8());
  in.Skip(1);
  const auto address = static_cast<std::int32_t>(in.U32Be());
  if (code == MmcCommand::ReadCd) return std::pair{address, in.U24Be()};
  if (code != MmcCommand::Write10 && code != MmcCommand::PlayAudio10) return std::nullopt;
  in.Skip(1);
  return std::pair{address, std::uint32_t{in.U16Be()}};
}

class FaultyDrive final : public ScsiTransport {
 public:
  FaultyDrive(std::unique_ptr<ScsiTransport> drive, std::vector<ScsiFault> faults)
      : drive_(std::move(drive)), faults_(std::move(faults)) {}

  ScsiReply Send(const ScsiCommand& command) override {
    for (ScsiFault& fault : faults_) {
      if (!Fits(fault, command)) continue;
      if (fault.skip > 0) {
        --fault.skip;
        continue;
      }
      --fault.times;
      std::this_thread::sleep_for(std::min(fault.delay, command.patience));
      // A drive that takes longer than it may has not answered at all.
      if (fault.delay > command.patience) return {};
      if (fault.sense) return {false, *fault.sense, 0};
      if (fault.reply) {
        const std::size_t count = std::min(fault.reply->size(), command.in.size());
        std::copy_n(fault.reply->begin(), count, command.in.begin());
        return {true, {}, count};
      }
      break;
    }
    return drive_->Send(command);
  }

 private:
  static bool Fits(const ScsiFault& fault, const ScsiCommand& command) {
    if (fault.times == 0 || command.cdb.empty() || command.cdb[0] != fault.operation) return false;
    if (!fault.address) return true;
    const auto sectors = SectorsOf(command.cdb);
    return sectors && *fault.address >= sectors->first &&
           std::int64_t{*fault.address} < std::int64_t{sectors->first} + sectors->second;
  }

  std::unique_ptr<ScsiTransport> drive_;
  std::vector<ScsiFault> faults_;
};

class TracedDrive final : public ScsiTransport {
 public:
  TracedDrive(std::unique_ptr<ScsiTransport> drive, std::string name, FileDescriptor file)
      : drive_(std::move(drive)), name_(std::move(name)), file_(std::move(file)) {}

  ScsiReply Send(const ScsiCommand& command) override {
    const ScsiReply reply = drive_->Send(command);
    JsonValue::Object line{
        {"drive", name_}, {"cdb", Hex(command.cdb)}, {"status", reply.good ? "good" : "refused"}};
    if (!command.out.empty()) {
      line.emplace_back("out", JsonValue::Object{{"length", static_cast<std::int64_t>(command.out.size())},
                                                 {"sha256", Sha256Hex(command.out)},
                                                 {"head", Hex(command.out)}});
    }
    if (!command.in.empty()) {
      const auto got = command.in.first(std::min(reply.transferred, command.in.size()));
      line.emplace_back(
          "in", JsonValue::Object{{"length", static_cast<std::int64_t>(got.size())}, {"head", Hex(got)}});
    }
    line.emplace_back("sense", reply.good ? JsonValue() : JsonValue(SenseText(reply.sense)));
    const std::string text = JsonValue(std::move(line)).Text() + "\n";
    // One call for the line, so that those of several programs do not mix. A trace that is full ends nothing.
    if (::write(file_.Get(), text.data(), text.size()) < 0) file_ = FileDescriptor();
    return reply;
  }

 private:
  std::unique_ptr<ScsiTransport> drive_;
  std::string name_;
  FileDescriptor file_;
};

std::string Variable(const char* name) {
  const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody changes it
  return value == nullptr ? std::string() : std::string(value);
}

}  // namespace

Result<std::vector<ScsiFault>> ParseScsiFaults(std::string_view text) {
  const auto json = JsonValue::Parse(text);
  if (!json) return Failure(json.error());
  std::vector<ScsiFault> faults;
  for (const JsonValue& item : json->Items()) {
    const auto operation = HexByte(item["op"].String());
    if (!operation) return Failure(Outcome::WrongFormat);
    ScsiFault fault;
    fault.drive = item["drive"].String();
    fault.operation = *operation;
    if (const auto address = item["lba"].Whole(INT32_MIN, INT32_MAX))
      fault.address = static_cast<std::int32_t>(*address);
    fault.skip = static_cast<std::uint32_t>(item["skip"].Whole(0, UINT32_MAX).value_or(0));
    fault.times = static_cast<std::uint32_t>(item["times"].Whole(0, UINT32_MAX).value_or(1));
    fault.delay = std::chrono::milliseconds(item["delayMs"].Whole(0, kMostMilliseconds).value_or(0));
    if (!item["sense"].IsNull()) {
      fault.sense = SenseOf(item["sense"].String());
      if (!fault.sense) return Failure(Outcome::WrongFormat);
    }
    if (!item["reply"].IsNull()) {
      fault.reply = HexBytes(item["reply"].String());
      if (!fault.reply) return Failure(Outcome::WrongFormat);
    }
    faults.push_back(std::move(fault));
  }
  return faults;
}

std::unique_ptr<ScsiTransport> WithFaults(std::unique_ptr<ScsiTransport> drive,
                                          std::vector<ScsiFault> faults) {
  if (faults.empty()) return drive;
  return std::make_unique<FaultyDrive>(std::move(drive), std::move(faults));
}

std::unique_ptr<ScsiTransport> WithTrace(std::unique_ptr<ScsiTransport> drive, std::string name,
                                         const std::string& file) {
  FileDescriptor log(::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
  if (!log) return drive;
  return std::make_unique<TracedDrive>(std::move(drive), std::move(name), std::move(log));
}

std::unique_ptr<ScsiTransport> WithSupport(std::unique_ptr<ScsiTransport> drive, const std::string& name,
                                           bool isVirtual) {
  if (const std::string file = Variable("STAVORA_SCSI_FAULTS"); isVirtual && !file.empty()) {
    const auto text = ReadFile(file, kMostFaultBytes);
    auto faults = text ? ParseScsiFaults(AsText(*text)) : Failure(text.error());
    if (faults) {
      std::erase_if(*faults,
                    [&](const ScsiFault& fault) { return !fault.drive.empty() && fault.drive != name; });
      drive = WithFaults(std::move(drive), *std::move(faults));
    }
  }
  if (const std::string file = Variable("STAVORA_SCSI_TRACE"); !file.empty())
    drive = WithTrace(std::move(drive), name, file);
  return drive;
}

}  // namespace ts5
