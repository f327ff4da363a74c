#pragma once

#include <string>
#include <string_view>

namespace recorder {

// Cells of CSV files (RFC 4180) that no spreadsheet takes for a formula. A formula begins with one of = + - @ (or the
// full-width form of one, a tab or a carriage return) where a cell begins. That is also behind a separator within a
// cell, since spreadsheets may split lines at another one than the file's. An apostrophe before the sign is the guard:
// it makes a text of the cell. The page writes and reads the same.

/// `text` as a cell in quotes, with a guard wherever a formula could begin. Pure.
std::string ToCsvCell(std::string_view text);

/// The text of a cell without its guards. They count as such where each sign that needs one has one; any other cell
/// stays as it is. Pure.
std::string WithoutGuards(std::string_view cell);

}  // namespace recorder
