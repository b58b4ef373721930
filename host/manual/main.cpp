// clock-manual FOLDER DATE: writes manual pages and completions there.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>

#include "manual/Completion.h"
#include "manual/ManPage.h"

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

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 3) {
    std::fputs("usage: clock-manual FOLDER DATE\n", stderr);
    return 2;
  }
  writeAll(argv[1], argv[2]);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "clock-manual: %s\n", error.what());
  return 1;
}
