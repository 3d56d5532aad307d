// The files of a database by their names, looked at without opening it.
#pragma once

#include <cstdint>
#include <string>

namespace orx::kdb {

// Whether the name `path` ends like one of the files beside a database: ".orx-new", ".orx-old" or
// ".orx-previous". A run on that database replaces or removes what has the name.
[[nodiscard]] bool belongsToDatabase(const std::string& path);

// Which file of the database `name` the file `path` is, by whatever name: the database itself,
// NAME.orx-previous, or NAME.orx-new and NAME.orx-old (successor). A change of the database
// replaces or discards each of them.
enum class Generation : std::int32_t { none, current, previous, successor };
[[nodiscard]] Generation generationOf(const std::string& path, const std::string& name);

// Where the previous generation of the database `name` lies, or would: beside the file that a
// symbolic link leads to, otherwise `name` with ".orx-previous" behind it.
[[nodiscard]] std::string previousName(const std::string& name);

// True when `path` leads to a regular file that begins like a database, whatever its state; false
// also for one that cannot be read.
[[nodiscard]] bool looksLikeDatabase(const char* path);

}  // namespace orx::kdb
