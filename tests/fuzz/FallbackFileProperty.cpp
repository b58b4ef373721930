// Start-up with a file in the place where older software kept the time: it is gone afterwards, its
// first word becomes the saved time when it has 25 characters, and the clock starts at a saved time
// that is one.

#include <ctime>
#include <filesystem>
#include <fstream>

#include "ClockUtils.h"
#include "DevicePaths.h"
#include "framework/XmlText.h"
#include "fuzz/Property.h"
#include "plugin/Telephone.h"

namespace {

using fuzz::hold;

constexpr const char* kSaved = "2020-05-05T17:18:19+00:00";
constexpr const char* kKey = "FallbackDateTime";
constexpr std::string_view kBlanks = " \t\n\v\f\r";

// Up to the first blank, as far as 127 bytes go; a zero ends it as it ends every text of C.
std::string firstWord(std::string_view content) {
  content.remove_prefix(std::min(content.find_first_not_of(kBlanks), content.size()));
  const std::string_view word = content.substr(0, content.find_first_of(kBlanks)).substr(0, 127);
  return std::string(word.substr(0, word.find('\0')));
}

std::string expectedSaved(std::string_view content) {
  const std::string word = firstWord(content);
  return word.size() == 25 && host::isXmlText(word) ? word : kSaved;
}

void holdClock(plugin::Telephone& telephone, const std::string& saved) {
  tm record{};
  if (!ClockUtils::convertTimeStringToTimeStruct(saved, record)) return;
  const time_t seconds = timegm(&record);
  constexpr auto kLast = std::chrono::floor<std::chrono::seconds>(host::VirtualClock::kLastWall);
  if (seconds < 0 || seconds >= kLast.count()) return;
  hold(telephone.wallSeconds() == seconds, "the clock starts at the saved time", saved);
}

}  // namespace

void fuzz::property(std::string_view input) {
  plugin::Telephone telephone;
  telephone.store(kKey, kSaved);
  std::ofstream(DevicePaths::kFallbackTimeFile, std::ios::binary) << input;
  telephone.switchOn();
  const std::string saved = telephone.stored(kKey);
  hold(!std::filesystem::exists(DevicePaths::kFallbackTimeFile), "the file is used once", input);
  hold(saved == expectedSaved(input), "25 characters are taken over, and nothing else", input);
  holdClock(telephone, saved);
  hold(telephone.managed("time").size() == 25, "the clock answers", saved);
}
