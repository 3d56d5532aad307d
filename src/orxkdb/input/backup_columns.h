// The columns of a backup line: what is in them, and what operators and scripts call it.
#pragma once

#include <array>
#include <string_view>

#include "records/backup_layout.h"

namespace orx::orxkdb {

enum class ColumnForm { handle, number, length, data };

struct ColumnText {
  backup_layout::Column column;
  ColumnForm form;
  std::string_view name;   // for operators
  std::string_view field;  // of the record
};

// In the order of the line.
inline constexpr std::array<ColumnText, 9> backupColumns{{
    {backup_layout::parentHandle, ColumnForm::handle, "parent handle", "parentHandle"},
    {backup_layout::objectHandle, ColumnForm::handle, "object handle", "objectHandle"},
    {backup_layout::recn, ColumnForm::number, "record number", "recn"},
    {backup_layout::recType, ColumnForm::number, "record type", "recType"},
    {backup_layout::modelHandle, ColumnForm::handle, "model handle", "modelHandle"},
    {backup_layout::auxValue1, ColumnForm::number, "first auxiliary value", "auxValue1"},
    {backup_layout::dataLength, ColumnForm::length, "data length", "dataLength"},
    {backup_layout::data, ColumnForm::data, "data", "attrText"},
    {backup_layout::auxValue2, ColumnForm::number, "second auxiliary value", "auxValue2"},
}};

// The characters of a column that `line` has, which it is a view of; fewer, or none, of a short
// line.
[[nodiscard]] std::string_view columnOf(std::string_view line, const backup_layout::Column& column);

}  // namespace orx::orxkdb
