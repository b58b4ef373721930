#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "apps/OptionParser.h"
#include "base/PrintableText.h"
#include "base/StandardOutput.h"
#include "manual/Completion.h"
#include "manual/ManPage.h"
#include "verbs/UsageError.h"

namespace {

// Failure: std::ios_base::failure.
void write(const std::filesystem::path& path, const std::string& text) {
  std::ofstream file;
  file.exceptions(std::ios::badbit | std::ios::failbit);
  file.open(path);
  file << text << std::flush;
}

void writeAll(const std::filesystem::path& folder, const std::string& date) {
  write(folder / "clockhost.1", host::clockHostPage(date));
  write(folder / "clockctl.1", host::clockCtlPage(date));
  for (const host::ProgramWords& program : {host::hostWords(), host::ctlWords()}) {
    write(folder / (program.name + ".bash"), host::bashCompletion(program));
    write(folder / ('_' + program.name), host::zshCompletion(program));
    write(folder / (program.name + ".fish"), host::fishCompletion(program));
  }
}

constexpr host::ExitStatus kStatuses[] = {
    {0, "done"},
    {1, "a file could not be written"},
    {2, "wrong command line"},
};

void run(const std::vector<std::string>& words) {
  host::OptionParser parser({"clock-manual",
                             "Writes the manual pages and completions of clockhost and clockctl "
                             "into FOLDER; DATE is that of the pages.",
                             "FOLDER DATE", kStatuses});
  if (!parser.readToRun(words, std::cout)) return;
  if (parser.arguments().size() != 2) {
    throw host::UsageError("two words are needed: clock-manual FOLDER DATE");
  }
  writeAll(parser.arguments().front(), parser.arguments().back());
}

}  // namespace

int main(int argc, char** argv) try {
  run({argv + 1, argv + argc});
  return host::outputArrived("clock-manual") ? 0 : 1;
} catch (const host::UsageError& error) {
  std::cerr << host::errorLine("clock-manual", error.what());
  return 2;
} catch (const std::exception& error) {
  std::cerr << host::errorLine("clock-manual", error.what());
  return 1;
}
