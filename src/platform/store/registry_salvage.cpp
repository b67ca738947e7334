#include "platform/store/registry_salvage.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "platform/base/text.h"

namespace ts5 {
namespace {

// The numbers of the file format: how much of a row lies in its own page.
constexpr std::size_t kMostLocal = kRegistryPage - 35;
constexpr std::size_t kLeastLocal = (kRegistryPage - 12) * 32 / 255 - 23;
constexpr std::size_t kLink = 4;  // bytes of the number of the next page
constexpr std::size_t kOverflow = kRegistryPage - kLink;
constexpr std::uint8_t kLeafPage = 0x0D;
constexpr std::size_t kFirstHead = 100;  // the head of the file, before the head of its first page
constexpr std::size_t kCellCount = 3;    // where the head of a page has the number of its rows
constexpr std::size_t kLeafHead = 8;     // bytes of that head
constexpr std::size_t kColumns = 5;
constexpr std::size_t kWalksPerPage = 8;  // honest files need one

std::size_t LocalSize(std::size_t payload) {
  if (payload <= kMostLocal) return payload;
  const std::size_t local = kLeastLocal + (payload - kLeastLocal) % kOverflow;
  return local <= kMostLocal ? local : kLeastLocal;
}

// One to nine bytes of seven bits, the highest first.
std::uint64_t TakeVarint(ByteReader& in) {
  std::uint64_t value = 0;
  for (int i = 0; i < 8; ++i) {
    const std::uint8_t byte = in.U8();
    value = value << 7 | (byte & 0x7FU);
    if ((byte & 0x80U) == 0) return value;
  }
  return value << 8 | in.U8();
}

// The size of a column by its type; nothing for what no column of ours is.
std::optional<std::size_t> SizeOfColumn(std::size_t column, std::uint64_t type) {
  constexpr std::size_t kChecksum = 3;
  constexpr std::size_t kData = 4;
  if (column == kChecksum) {
    constexpr std::array<std::size_t, 10> kIntegers{0, 1, 2, 3, 4, 6, 8, 99, 0, 0};
    if (type >= kIntegers.size() || type == 7) return std::nullopt;
    return kIntegers[type];
  }
  const bool blob = type % 2 == 0;
  if (type < 12 || blob != (column == kData)) return std::nullopt;
  return (type - (blob ? 12 : 13)) / 2;
}

std::int64_t IntegerOf(std::uint64_t type, ByteView bytes) {
  if (type == 8 || type == 9) return static_cast<std::int64_t>(type - 8);
  std::uint64_t value = bytes.empty() || (bytes[0] & 0x80U) == 0 ? 0 : ~std::uint64_t{0};
  for (const std::uint8_t byte : bytes) value = value << 8 | byte;
  return static_cast<std::int64_t>(value);
}

class Salvage {
 public:
  explicit Salvage(ByteView file)
      : file_(file), walksLeft_(kWalksPerPage * (file.size() / kRegistryPage + 1)) {}

  RegistrySalvage Run() {
    for (std::size_t start = 0; start < file_.size(); start += kRegistryPage) {
      const ByteView page = file_.subspan(start, std::min(kRegistryPage, file_.size() - start));
      const std::set<std::size_t> known = KnownCells(page, start == 0 ? kFirstHead : 0);
      for (std::size_t at = 0; at < page.size(); ++at) TryRow(page, at, known.contains(at));
    }
    RegistrySalvage salvage;
    for (auto& [path, found] : rows_) salvage.rows.push_back(std::move(found.row));
    for (const std::string& path : damaged_) {
      if (!rows_.contains(path)) salvage.damaged.push_back(path);
    }
    return salvage;
  }

 private:
  struct Found {
    RegistryRow row;
    bool known = false;  // its page names it as one of its rows
  };

  // Where the page says that its rows are. What it does not name may be left over from an older state.
  static std::set<std::size_t> KnownCells(ByteView page, std::size_t head) {
    std::set<std::size_t> cells;
    ByteReader in(page);
    in.Seek(head);
    if (in.U8() != kLeafPage) return cells;
    in.Seek(head + kCellCount);
    const std::size_t count = in.U16Be();
    in.Seek(head + kLeafHead);
    for (std::size_t i = 0; i < count && in.Remaining() >= 2; ++i) cells.insert(in.U16Be());
    return cells;
  }

  void TryRow(ByteView page, std::size_t at, bool known) {
    ByteReader in(page.subspan(at));
    const std::uint64_t size = TakeVarint(in);
    if (size < kColumns || size > file_.size()) return;
    (void)TakeVarint(in);  // the number of the row
    const ByteView behind = page.subspan(at + in.Position());
    ByteReader head(behind);
    const std::uint64_t headSize = TakeVarint(head);
    std::array<std::uint64_t, kColumns> types{};
    std::array<std::size_t, kColumns> sizes{};
    std::uint64_t total = headSize;
    for (std::size_t column = 0; column < kColumns; ++column) {
      types[column] = TakeVarint(head);
      const auto columnSize = SizeOfColumn(column, types[column]);
      if (!columnSize) return;
      sizes[column] = *columnSize;
      total += *columnSize;
    }
    if (!head.Ok() || head.Position() != headSize || total != size) return;
    const Bytes payload = Payload(behind, static_cast<std::size_t>(size));
    ByteReader body(payload);
    body.Skip(static_cast<std::size_t>(headSize));
    RegistryRow row;
    row.path = AsText(body.Take(sizes[0]));
    row.parent = AsText(body.Take(sizes[1]));
    row.name = AsText(body.Take(sizes[2]));
    const std::int64_t checksum = IntegerOf(types[3], body.Take(sizes[3]));
    if (!body.Ok() || !NamesAgree(row.path, row.parent, row.name)) return;
    const ByteView data = body.Take(sizes[4]);
    if (!body.Ok() || RegistryChecksum(data) != checksum) {
      damaged_.insert(row.path);
      return;
    }
    row.data.assign(data.begin(), data.end());
    Found& found = rows_[row.path];
    if (found.row.path.empty() || (known && !found.known)) found = {std::move(row), known};
  }

  // The row, with what lies of it in other pages; shorter where the pages end.
  Bytes Payload(ByteView behind, std::size_t size) {
    const std::size_t local = std::min(LocalSize(size), behind.size());
    Bytes payload(behind.begin(), behind.begin() + static_cast<std::ptrdiff_t>(local));
    ByteReader link(behind.subspan(local));
    std::uint64_t next = payload.size() < size ? link.U32Be() : 0;
    while (payload.size() < size && next > 0 && next <= file_.size() / kRegistryPage && walksLeft_ > 0) {
      --walksLeft_;
      const ByteView page = file_.subspan(static_cast<std::size_t>(next - 1) * kRegistryPage, kRegistryPage);
      next = ByteReader(page).U32Be();
      const ByteView part = page.subspan(kLink, std::min(kOverflow, size - payload.size()));
      payload.insert(payload.end(), part.begin(), part.end());
    }
    return payload;
  }

  ByteView file_;
  std::size_t walksLeft_;  // a hostile file could send every place through all of its pages
  std::map<std::string, Found> rows_;
  std::set<std::string> damaged_;
};

}  // namespace

std::int64_t RegistryChecksum(ByteView bytes) {
  std::uint64_t sum = 0xCBF29CE484222325;
  for (const std::uint8_t byte : bytes) sum = (sum ^ byte) * 0x100000001B3;
  return static_cast<std::int64_t>(sum);
}

bool NamesAgree(std::string_view path, std::string_view parent, std::string_view name) {
  if (name.empty() || name.find('\\') != std::string_view::npos) return false;
  if (parent.empty()) return path == ToLower(name);
  return path.size() > parent.size() + 1 && path.starts_with(parent) && path[parent.size()] == '\\' &&
         path.substr(parent.size() + 1) == ToLower(name);
}

RegistrySalvage SalvageRegistry(ByteView file) {
  return Salvage(file).Run();
}

}  // namespace ts5
