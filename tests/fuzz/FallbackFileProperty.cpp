// Start-up with a file in the place where older software kept the time: the service deletes it,
// saves its first word if that has 25 characters, and starts the clock at the saved time if that is
// a valid time.

#include <ctime>
#include <filesystem>
#include <fstream>

#include "ClockUtils.h"
#include "DevicePaths.h"
#include "framework/XmlText.h"
#include "fuzz/Property.h"
#include "support/Telephone.h"

namespace {

using fuzz::hold;

constexpr const char* kSaved = "2020-05-05T17:18:19+00:00";
constexpr const char* kKey = "FallbackDateTime";
constexpr std::string_view kBlanks = " \t\n\v\f\r";

// Up to the first blank, at most 127 bytes. A zero byte ends it, as in every C string.
std::string firstWord(std::string_view content) {
  content.remove_prefix(std::min(content.find_first_not_of(kBlanks), content.size()));
  const std::string_view word = content.substr(0, content.find_first_of(kBlanks)).substr(0, 127);
  return std::string(word.substr(0, word.find('\0')));
}

std::string expectedSaved(std::string_view content) {
  const std::string word = firstWord(content);
  return word.size() == 25 && host::isXmlText(word) ? word : kSaved;
}

void holdClock(support::Telephone& telephone, const std::string& saved) {
  tm record{};
  if (!ClockUtils::convertTimeStringToTimeStruct(saved, record)) return;
  const time_t seconds = timegm(&record);
  constexpr auto kLast = std::chrono::floor<std::chrono::seconds>(host::VirtualClock::kLastWall);
  if (seconds < 0 || seconds >= kLast.count()) return;
  hold(telephone.wallSeconds() == seconds, "the clock starts at the saved time", saved);
}

}  // namespace

void fuzz::property(std::string_view input) {
  support::Telephone telephone;
  telephone.store(kKey, kSaved);
  std::ofstream(DevicePaths::kFallbackTimeFile, std::ios::binary) << input;
  telephone.switchOn();
  const std::string saved = telephone.stored(kKey);
  hold(!std::filesystem::exists(DevicePaths::kFallbackTimeFile), "the file is deleted", input);
  hold(saved == expectedSaved(input), "only a word of 25 characters is saved", input);
  holdClock(telephone, saved);
  hold(telephone.managed("time").size() == 25, "the clock answers with a UTC text", saved);
}
