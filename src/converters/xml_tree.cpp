#include "converters/xml_tree.h"

#include <algorithm>
#include <cstdlib>

namespace ts5::converters {
namespace {

constexpr std::size_t kMostTree = std::size_t{2} << 30;  // bytes

// What the parser of this thread may still do.
struct ParseWatch {
  const CancelCheck* cancelled = nullptr;
  std::size_t left = 0;
  bool stopped = false;
};
thread_local ParseWatch* watch = nullptr;

void* Allocate(std::size_t size) {
  if (watch != nullptr) {
    watch->stopped = watch->stopped || (*watch->cancelled && (*watch->cancelled)());
    if (watch->stopped || size > watch->left) return nullptr;
    watch->left -= size;
  }
  return std::malloc(size);
}

}  // namespace

XmlParse ParseXml(pugi::xml_document& tree, std::string& text, const CancelCheck& cancelled) {
  // Pages that the library's own functions took can be given back with these, too.
  [[maybe_unused]] static const bool installed = [] {
    pugi::set_memory_management_functions(Allocate, std::free);
    return true;
  }();
  constexpr unsigned kOptions = pugi::parse_default | pugi::parse_embed_pcdata;
  ParseWatch own{&cancelled, kMostTree};
  watch = &own;
  const pugi::xml_parse_result parsed =
      tree.load_buffer_inplace(text.data(), text.size(), kOptions, pugi::encoding_utf8);
  watch = nullptr;
  if (parsed) return {};
  if (own.stopped) return {Outcome::Cancelled};
  if (parsed.status == pugi::status_out_of_memory) return {Outcome::OutOfMemory};
  return {Outcome::SourceFailed, static_cast<std::size_t>(std::max<std::ptrdiff_t>(parsed.offset, 0))};
}

}  // namespace ts5::converters
