#include "manual/ManualFiles.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "apps/OptionParser.h"
#include "base/PrintableText.h"
#include "base/StandardOutput.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

constexpr ExitStatus kStatuses[] = {
    {0, "done"},
    {1, "a file could not be written"},
    {2, "wrong command line"},
};

// Failure: std::ios_base::failure.
void write(const std::filesystem::path& path, const std::string& text) {
  std::ofstream file;
  file.exceptions(std::ios::badbit | std::ios::failbit);
  file.open(path);
  file << text << std::flush;
}

void writeAll(const std::filesystem::path& folder, const Manual& manual) {
  const std::string& name = manual.words.name;
  write(folder / (name + ".1"), manual.page);
  write(folder / (name + ".bash"), bashCompletion(manual.words));
  write(folder / ('_' + name), zshCompletion(manual.words));
  write(folder / (name + ".fish"), fishCompletion(manual.words));
}

}  // namespace

int writeManuals(const std::vector<std::string>& words, const char* name,
                 const std::function<std::vector<Manual>(const std::string& date)>& manuals) try {
  OptionParser parser({name,
                       "Writes manual pages and completions into FOLDER; DATE is that of the "
                       "pages.",
                       "FOLDER DATE", kStatuses});
  if (!parser.readToRun(words, std::cout)) return outputArrived(name) ? 0 : 1;
  if (parser.arguments().size() != 2) {
    throw UsageError("two words are needed: " + std::string(name) + " FOLDER DATE");
  }
  for (const Manual& manual : manuals(parser.arguments().back())) {
    writeAll(parser.arguments().front(), manual);
  }
  return 0;
} catch (const UsageError& error) {
  std::cerr << errorLine(name, error.what());
  return 2;
} catch (const std::exception& error) {
  std::cerr << errorLine(name, error.what());
  return 1;
}

}  // namespace host
