// Loads the clock into the smallest framework, and prints the time at each full hour:
//
//   loader PLUGIN [--hours N] [KEY=VALUE]...
//
// --hours: ends after N hours, which pass at once; without it, the hours take their time.
// KEY=VALUE: a stored setting.
#include <dlfcn.h>

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "ClockServiceIfc.h"
#include "HourPrinter.h"
#include "PluginFactories.h"
#include "Service.h"
#include "framework/Clock.h"
#include "framework/Framework.h"
#include "framework/Settings.h"

using example::Clock::Milliseconds;

namespace {

// The plug-in stays loaded: its code is needed until the last of its objects is deleted. A name
// without a folder would be looked for among the system's libraries.
ServiceFactory findFactory(const char* plugin) {
  void* const library = dlopen(std::filesystem::absolute(plugin).c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const factory = library != nullptr ? dlsym(library, "createClockService") : nullptr;
  if (factory == nullptr) {
    std::fprintf(stderr, "loader: %s\n", dlerror());
  }
  return reinterpret_cast<ServiceFactory>(factory);
}

// A service from other headers or with another C++ library is no clock.
ClockServiceIfc* clockOf(Service* service, const char* plugin) {
  auto* const clock = dynamic_cast<ClockServiceIfc*>(service);
  if (clock == nullptr) {
    std::fprintf(stderr, "loader: %s has no ClockServiceIfc; %s\n", plugin,
                 "build it with the headers and the C++ library of the loader");
  }
  return clock;
}

struct Options {
  const char* plugin = nullptr;
  Milliseconds end = Milliseconds::max();
};

bool readHours(const std::string& word, Milliseconds& end) {
  unsigned hours = 0;
  const char* const stop = word.data() + word.size();
  const auto [rest, error] = std::from_chars(word.data(), stop, hours);
  example::Clock::startSkipping();
  end = example::Clock::uptime() + std::chrono::hours(hours);
  return error == std::errc() && rest == stop;
}

bool read(int count, char** words, Options& options, example::Settings& settings) {
  for (int i = 1; i < count; ++i) {
    const std::string word = words[i];
    const std::size_t equals = word.find('=');
    if (word == "--hours" && i + 1 < count) {
      if (!readHours(words[++i], options.end)) {
        return false;
      }
    } else if (options.plugin == nullptr) {
      options.plugin = words[i];
    } else if (equals != std::string::npos) {
      settings.set(word.substr(0, equals), word.substr(equals + 1));
    } else {
      return false;
    }
  }
  return options.plugin != nullptr;
}

}  // namespace

int main(int count, char** words) {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // each hour at once, also into a file
  example::Settings settings;
  Options options;
  if (!read(count, words, options, settings)) {
    std::fputs("usage: loader PLUGIN [--hours N] [KEY=VALUE]...; N is a whole number, 0 or more\n",
               stderr);
    return 2;
  }
  example::Framework framework(settings);
  const ServiceFactory factory = findFactory(options.plugin);
  if (factory == nullptr) {
    return 1;
  }
  const std::unique_ptr<Service> service(factory());
  ClockServiceIfc* const clock = clockOf(service.get(), options.plugin);
  if (clock == nullptr) {
    return 1;
  }

  service->init(framework);
  HourPrinter printer;
  clock->observeTimeEvents(&printer);
  std::printf("%s %s\n", clock->getDate().c_str(), clock->getTime().c_str());
  framework.runUntil(options.end);
  clock->unobserveTimeEvents(&printer);
  service->shutdown();
}
