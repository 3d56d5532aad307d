// The manual page of the formats, from the document about them.
//
// The document is Markdown of a plain kind: one "# " title, "## " headings, paragraphs, "- " lists,
// "|" tables with a head, fenced blocks and blocks indented by four, and in texts `code`,
// **strong** and [text](address). Anything else is taken as text.
#pragma once

#include <string>
#include <vector>

namespace orx::orxkdb {

// Section 5. `lines` are those of the document.
[[nodiscard]] std::string formatsPage(const std::vector<std::string>& lines);

}  // namespace orx::orxkdb
