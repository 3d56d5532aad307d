// A locale whose code page is neither ASCII nor UTF-8; no system has one of its own accord.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include "encoding/code_pages.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace orx::test {

// Makes ISO 8859-1 the local code page, for a process that has not asked for it yet. The C
// library's compiler of locales gets along with an empty description of the locale.
[[nodiscard]] inline bool useLatin1Locale() {
  const TempDir directory;
  std::string charmap = "<code_set_name> ISO-8859-1\n<escape_char> /\nCHARMAP\n";
  for (int code = 0; code < 256; ++code) {
    char line[32];
    (void)std::snprintf(line, sizeof line, "<U%04X> /x%02x C\n", code, code);
    charmap += line;
  }
  writeFile(directory / "charmap", charmap + "END CHARMAP\n");
  writeFile(directory / "source", "LC_CTYPE\nEND LC_CTYPE\n");
  (void)runProgram({.file = "/usr/bin/localedef",
                    .arguments = {"--force", "-i", "./source", "-f", "./charmap", "./latin1"},
                    .directory = directory.path()});  // its result tells of warnings
  (void)setenv("LOCPATH", directory.path().c_str(), 1);
  (void)setenv("LC_ALL", "latin1", 1);
  return UTF8GetLocaleDefaultCodePageID() == 819;
}

}  // namespace orx::test
