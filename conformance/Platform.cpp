#include "Platform.h"

#include <cstdlib>
#include <stdexcept>

#include "Promise.h"

namespace conformance {
namespace {

[[noreturn]] void lack(const std::string& operation) {
  throw std::logic_error(kLack + operation + "(): implement it, or name this test in leftOut()");
}

}  // namespace

void Platform::restart() {
  lack("restart");
}

std::filesystem::path Platform::storageFolder() {
  lack("storageFolder");
}

std::filesystem::path Platform::deviceFile(const std::string& path) {
  return path;
}

std::filesystem::path Platform::plugin() {
  const char* const file = std::getenv("CLOCK_PLUGIN");  // NOLINT(concurrency-mt-unsafe)
  if (file == nullptr)
    throw std::runtime_error("no plug-in: name its file in the environment variable CLOCK_PLUGIN");
  return std::filesystem::absolute(file);  // a name without a folder would be looked up elsewhere
}

void Platform::refuseSettings(bool /*refused*/) {
  lack("refuseSettings");
}

void Platform::setDeviceValue(const std::string& /*key*/, const std::string& /*value*/) {
  lack("setDeviceValue");
}

std::optional<std::string> Platform::deviceValue(const std::string& /*key*/) {
  lack("deviceValue");
}

std::optional<std::string> Platform::managed(const std::string& /*key*/) {
  lack("managed");
}

bool Platform::manage(const std::string& /*key*/, const std::string& /*value*/) {
  lack("manage");
}

bool Platform::resetUserData() {
  lack("resetUserData");
}

int Platform::itemState(const std::string& /*key*/) {
  lack("itemState");
}

void Platform::setUserData(const std::string& /*key*/, bool /*isUserData*/) {
  lack("setUserData");
}

std::vector<std::pair<std::string, std::string>> Platform::reports() {
  lack("reports");
}

void Platform::plugJack(int /*plug*/, int /*status*/) {
  lack("plugJack");
}

std::vector<SecurityRecord> Platform::securityRecords() {
  lack("securityRecords");
}

void Platform::setLogLevel(int /*level*/) {
  lack("setLogLevel");
}

std::vector<LogEntry> Platform::logEntries() {
  lack("logEntries");
}

std::vector<std::string> Platform::systemLogTexts() {
  lack("systemLogTexts");
}

FrameworkContext& Platform::remote() {
  lack("remote");
}

void Platform::serve(Executable& /*service*/, Invoker& /*invoker*/,
                     std::function<Proxy*()> /*makeProxy*/) {
  lack("serve");
}

std::vector<std::string> Platform::codecs() {
  lack("codecs");
}

int Platform::connect() {
  lack("connect");
}

std::optional<Method> Platform::call(int /*client*/, Method& /*request*/) {
  lack("call");
}

std::vector<Method> Platform::events(int /*client*/) {
  lack("events");
}

void Platform::disconnect(int /*client*/) {
  lack("disconnect");
}

void Platform::dropService() {
  lack("dropService");
}

}  // namespace conformance
