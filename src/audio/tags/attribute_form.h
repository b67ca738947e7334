// What the attribute dialog works on: every attribute that is offered, of one or several files or of a job,
// with what the user changed, which can be taken back step by step.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "audio/tags/attribute.h"
#include "audio/tags/tag_file.h"

namespace ts5::tags {

struct AttributeRow {
  Attribute attribute;
  bool mixed = false;  // the files differ in it; its value is empty until it is edited
};

class AttributeForm {
 public:
  // Of a job: what is not in its list has no value.
  explicit AttributeForm(const Attributes& job);
  // Of files, one list for each.
  explicit AttributeForm(std::span<const Attributes> files);

  // The known names that can be written in their order, then others that a file has. Binary ones are left
  // out.
  [[nodiscard]] const std::vector<AttributeRow>& Rows() const { return rows_; }

  // An edited value selects its attribute, an emptied one clears the mark. False: the text does not fit the
  // type.
  [[nodiscard]] bool SetValue(std::size_t row, std::string_view text);
  void Select(std::size_t row, bool selected);
  void SelectAll(bool selected);

  [[nodiscard]] bool CanUndo() const { return !undo_.empty(); }
  void Undo();  // the last of these three

  // Something has a value and is not selected: OK asks.
  [[nodiscard]] bool HasUnselectedValues() const;

  // For files: what was edited and is selected, and what was emptied. What is not selected stays as it is.
  [[nodiscard]] AttributeChanges Changes() const;
  // For a job: all that have a value.
  [[nodiscard]] Attributes JobAttributes() const;

 private:
  void Remember() { undo_.push_back(rows_); }

  std::vector<AttributeRow> rows_;
  std::vector<AttributeRow> original_;
  std::vector<std::vector<AttributeRow>> undo_;
};

}  // namespace ts5::tags
