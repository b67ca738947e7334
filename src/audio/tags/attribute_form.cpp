#include "audio/tags/attribute_form.h"

#include <algorithm>

#include "audio/tags/attribute_names.h"

namespace ts5::tags {
namespace {

bool IsOffered(const Attribute& attribute) {
  return !attribute.readOnly && !IsBinary(attribute.type);
}

std::vector<AttributeRow> OfferedRows(std::span<const Attributes> lists) {
  std::vector<AttributeRow> rows;
  for (const AttributeName& name : AttributeNames()) {
    if (!name.readOnly) rows.push_back({NewAttribute(name.name)});
  }
  const std::size_t known = rows.size();
  for (const Attributes& list : lists) {
    for (const Attribute& attribute : list) {
      const bool there = std::ranges::any_of(
          rows, [&](const AttributeRow& row) { return row.attribute.name == attribute.name; });
      if (!there && IsOffered(attribute))
        rows.push_back({{attribute.type, attribute.name, "", false, false}});
    }
  }
  std::ranges::sort(rows.begin() + static_cast<std::ptrdiff_t>(known), rows.end(), {},
                    [](const AttributeRow& row) { return row.attribute.name; });
  return rows;
}

// Takes the value that all lists have, or marks the row.
void Fill(AttributeRow& row, std::span<const Attributes> lists) {
  bool first = true;
  for (const Attributes& list : lists) {
    const Attribute* const found = FindAttribute(list, row.attribute.name);
    const Attribute here = found != nullptr && IsOffered(*found)
                               ? *found
                               : Attribute{row.attribute.type, row.attribute.name, "", false, false};
    if (first) {
      row.attribute = here;
    } else if (here.value != row.attribute.value) {
      row.mixed = true;
    }
    first = false;
  }
  if (row.mixed) {
    row.attribute.value.clear();
    row.attribute.selected = true;
  }
}

}  // namespace

AttributeForm::AttributeForm(const Attributes& job) : AttributeForm(std::span(&job, 1)) {}

AttributeForm::AttributeForm(std::span<const Attributes> files) : rows_(OfferedRows(files)) {
  for (AttributeRow& row : rows_) Fill(row, files);
  original_ = rows_;
}

bool AttributeForm::SetValue(std::size_t row, std::string_view text) {
  AttributeRow edited = rows_.at(row);
  auto value = ValueFromText(edited.attribute.type, text);
  if (!value) return false;
  if (*value == edited.attribute.value && !edited.mixed) return true;
  edited.attribute.value = *std::move(value);
  edited.attribute.selected = edited.attribute.HasValue();
  edited.mixed = false;
  Remember();
  rows_[row] = std::move(edited);
  return true;
}

void AttributeForm::Select(std::size_t row, bool selected) {
  if (rows_.at(row).attribute.selected == selected) return;
  Remember();
  rows_[row].attribute.selected = selected;
}

void AttributeForm::SelectAll(bool selected) {
  Remember();
  for (AttributeRow& row : rows_) row.attribute.selected = selected;
}

void AttributeForm::Undo() {
  if (undo_.empty()) return;
  rows_ = std::move(undo_.back());
  undo_.pop_back();
}

bool AttributeForm::HasUnselectedValues() const {
  return std::ranges::any_of(rows_, [](const AttributeRow& row) {
    return (row.attribute.HasValue() || row.mixed) && !row.attribute.selected;
  });
}

AttributeChanges AttributeForm::Changes() const {
  AttributeChanges changes;
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    const auto& [attribute, mixed] = rows_[i];
    const AttributeRow& before = original_[i];
    if (mixed || (attribute.value == before.attribute.value && !before.mixed)) continue;
    if (attribute.ToBeWritten()) {
      changes.set.push_back(attribute);
    } else if (!attribute.HasValue()) {
      changes.remove.push_back(attribute.name);
    }
  }
  return changes;
}

Attributes AttributeForm::JobAttributes() const {
  Attributes attributes;
  for (const AttributeRow& row : rows_) {
    if (row.attribute.HasValue()) attributes.push_back(row.attribute);
  }
  return attributes;
}

}  // namespace ts5::tags
