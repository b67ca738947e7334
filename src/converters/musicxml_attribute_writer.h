// Clefs, keys, times and transpositions of a part, where each of its staves changes them. Used inside the
// writer only.
#pragma once

#include <optional>
#include <vector>

#include "converters/musicxml_part_to_write.h"
#include "converters/xml_out.h"

namespace ts5::converters::musicxml {

class AttributeWriter {
 public:
  AttributeWriter(XmlOut& out, const PartToWrite& part, Divisions divisions);

  // What a bar begins with.
  void WriteAtBar(std::size_t bar);
  // The changes inside a bar up to a place, that one included.
  void WriteWithin(std::size_t staff, Fraction to);
  // The place of the next change of a staff, where that is before end.
  [[nodiscard]] std::optional<Fraction> NextBefore(std::size_t staff, Fraction end) const;

 private:
  using Changes = std::vector<const ScoreItem*>;

  [[nodiscard]] const std::vector<ScoreChange>& ChangesOf(std::size_t staff) const;
  Changes Take(std::size_t staff, Fraction to);
  void WriteKeys(const std::vector<Changes>& changes, bool start);
  void WriteKey(const ScoreItem& key, const std::string& staff);
  void WriteTime(ScoreTimeSignature time, std::string_view style);
  void WriteClef(const ScoreItem& item, std::size_t staff);
  void WriteTranspositions();

  XmlOut& out_;
  const PartToWrite& part_;
  Divisions divisions_;
  std::vector<std::size_t> next_;  // change of each staff
};

}  // namespace ts5::converters::musicxml
