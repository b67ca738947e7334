// The values of one key as one packed block, the form in which the store keeps them.
//
// Values follow each other in the order of their names, each as
//   kind          1 byte: 0 text, 1 binary
//   name, data    each: how many bytes it shares with the start of the one before (1 byte), the number of
//                 further bytes (1 to 5 bytes of seven bits, lowest first, high bit: more), those bytes
// so that a thousand numbered paths of one directory take little more than their file names.
#pragma once

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/store/registry_values.h"

namespace ts5 {

// A key whose values take more than this in memory is refused (hostile blocks share long beginnings).
inline constexpr std::size_t kMaxValuesInMemory = std::size_t{256} << 20;

// About what the values take in memory.
[[nodiscard]] std::size_t SizeInMemory(const RegistryValues& values);
[[nodiscard]] Bytes PackValues(const RegistryValues& values);
// WrongFormat: breaks off, unknown kinds, or more than kMaxValuesInMemory.
[[nodiscard]] Result<RegistryValues> UnpackValues(ByteView block);

}  // namespace ts5
