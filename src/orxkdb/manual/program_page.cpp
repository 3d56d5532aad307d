#include "orxkdb/manual/program_page.h"

#include <algorithm>
#include <cctype>

#include "orxkdb/manual/help_text.h"
#include "orxkdb/manual/roff_writer.h"

namespace orx::orxkdb {

namespace {

constexpr const char* examplesTitle = "Examples";

// "orxkdb makes ... work on." becomes "makes ... work on".
std::string purposeOf(const CommandTree& tree) {
  std::string purpose = tree.description;
  if (purpose.starts_with(tree.name + " ")) purpose.erase(0, tree.name.size() + 1);
  if (purpose.ends_with('.')) purpose.pop_back();
  return purpose;
}

std::string termOf(const CommandOption& option) {
  std::string term;
  for (const std::string& name : option.names) {
    term.append(term.empty() ? "" : ", ").append(RoffWriter::bold(name));
  }
  if (!option.value.empty()) term.append(" ").append(RoffWriter::plain(option.value));
  return term;
}

std::string wordsOf(const CommandOption& option) {
  std::string words = option.description;
  if (!option.range.empty()) words.append("; ").append(option.range);
  if (!option.defaultValue.empty()) words.append("; default ").append(option.defaultValue);
  return words;
}

void writeItems(RoffWriter& roff, const std::vector<CommandOption>& options) {
  for (const CommandOption& option : options) {
    roff.item(termOf(option), RoffWriter::plain(wordsOf(option)));
  }
}

void writeCommand(RoffWriter& roff, const std::string& program, const CommandTree& command) {
  roff.subsection(program + " " + command.name);
  for (const std::string& synopsis : command.synopses) {
    roff.line(RoffWriter::bold(program + " " + command.name) + " " + RoffWriter::plain(synopsis));
  }
  roff.paragraph(RoffWriter::plain(command.description + "."));
  writeItems(roff, command.arguments);
  writeItems(roff, command.options);
  for (const HelpParagraph& paragraph : helpParagraphs(command.footer)) {
    if (paragraph.title.empty()) {
      roff.paragraph(RoffWriter::plain(paragraph.flowing()));
    } else {
      roff.paragraph(RoffWriter::plain(paragraph.title + ":"));
      roff.literal(paragraph.lines);
    }
  }
}

void writeTitled(RoffWriter& roff, const HelpParagraph& paragraph) {
  if (paragraph.title == examplesTitle) {
    roff.section("EXAMPLES");
    return roff.literal(paragraph.lines);
  }
  roff.section("EXIT STATUS");
  for (const std::string& line : paragraph.lines) {
    const auto [term, words] = termAndWords(line);
    roff.item(RoffWriter::bold(term), RoffWriter::plain(words));
  }
  roff.item(RoffWriter::bold("129, 130, 143"),
            RoffWriter::plain("ended by a hangup, Ctrl-C or kill; one line on standard error says "
                              "whether anything was changed"));
}

void writeTerms(RoffWriter& roff, const char* section, const std::vector<ManualTerm>& terms) {
  roff.section(section);
  for (const ManualTerm& entry : terms) {
    roff.item(RoffWriter::bold(entry.term), RoffWriter::plain(entry.words));
  }
}

void writeFooter(RoffWriter& roff, const std::vector<HelpParagraph>& paragraphs) {
  roff.section("NOTES");
  for (const HelpParagraph& paragraph : paragraphs) {
    if (paragraph.title.empty()) roff.paragraph(RoffWriter::plain(paragraph.flowing()));
  }
  for (const HelpParagraph& paragraph : paragraphs) {
    if (!paragraph.title.empty()) writeTitled(roff, paragraph);
  }
}

}  // namespace

std::string programPage(const CommandTree& tree, const ProgramNotes& notes) {
  RoffWriter roff(tree.name, 1, "User Commands");
  roff.section("NAME");
  roff.line(RoffWriter::plain(tree.name) + " \\- " + RoffWriter::plain(purposeOf(tree)));
  roff.section("SYNOPSIS");
  for (const std::string& synopsis : tree.synopses) {
    roff.line(RoffWriter::bold(tree.name) + " " + RoffWriter::plain(synopsis));
  }
  roff.section("DESCRIPTION");
  roff.paragraph(RoffWriter::plain(tree.description));
  roff.section("OPTIONS");
  writeItems(roff, tree.options);
  if (!tree.commands.empty()) roff.section("SUBCOMMANDS");
  for (const CommandTree& command : tree.commands) writeCommand(roff, tree.name, command);
  writeFooter(roff, helpParagraphs(tree.footer));
  writeTerms(roff, "FILES", notes.files);
  writeTerms(roff, "ENVIRONMENT", notes.environment);
  roff.section("SEE ALSO");
  roff.paragraph(RoffWriter::plain(notes.seeAlso));
  return roff.page();
}

}  // namespace orx::orxkdb
